#include "board/description_text.h"

#include "board/toml_table.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace board {

namespace {

class File {
public:
    // Opening must not wait: the file may have become a FIFO since it was looked at.
    explicit File(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }

    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

// Walks over the text of a TOML file. Strings and comments count for nothing. The walk need not
// notice errors: the parser reads the same text, and ends at the first one.
class BoundsCheck {
public:
    // @param entries  of the descriptions in front; gets those of the text added
    BoundsCheck(std::string_view text, const std::string& name, std::size_t& entries)
        : text_(text), name_(&name), before_(entries), entries_(&entries) {}

    void run() {
        while (at_ < text_.size()) {
            step(text_[at_]);
        }
    }

private:
    void step(char character) {
        const bool startsLine = startsLine_;
        startsLine_ = character == '\n' || (startsLine_ && (character == ' ' || character == '\t'));
        switch (character) {
        case '#':
            at_ = std::min(text_.find('\n', at_), text_.size());
            return;
        case '"':
        case '\'':
            skipString(character);
            return;
        case '\n':
            ++line_;
            dots_ = 0;
            break;
        case '[':
        case '{':
            openBracket(character == '{' || (startsLine && depth_ == 0));
            break;
        case ']':
        case '}':
            depth_ -= depth_ > 0 ? 1 : 0;
            dots_ = 0;
            break;
        case '=':
            addEntry();
            dots_ = 0;
            break;
        case ',':
            dots_ = 0;
            break;
        case '.':
            require(++dots_ < mostKeyParts, "a key has more than", mostKeyParts, "parts");
            break;
        default:
            break;
        }
        ++at_;
    }

    void openBracket(bool isTable) {
        if (isTable) {
            addEntry();
        }
        dots_ = 0;
        require(++depth_ <= deepestBrackets, "brackets are nested more than", deepestBrackets,
                "deep");
    }

    void addEntry() {
        require(++*entries_ <= mostEntries,
                before_ == 0 ? "the description has more than"
                             : "the description and those that take it over have more than",
                mostEntries, "keys and tables");
    }

    void skipString(char quote) {
        const std::string delimiter(text_.substr(at_, 3) == std::string(3, quote) ? 3 : 1, quote);
        const bool hasEscapes = quote == '"';
        at_ += delimiter.size();
        while (at_ < text_.size()) {
            if (text_.substr(at_, delimiter.size()) == delimiter) {
                endString(delimiter);
                return;
            }
            if (text_[at_] == '\n') {
                if (delimiter.size() == 1) {
                    return; // an error: the parser goes no further
                }
                ++line_;
            } else if (hasEscapes && text_[at_] == '\\' && text_.substr(at_ + 1, 1) != "\n") {
                ++at_;
            }
            ++at_;
        }
    }

    // Up to two quotes in front of the closing ones belong to a string of several lines.
    void endString(const std::string& delimiter) {
        at_ += delimiter.size();
        for (int more = 0; delimiter.size() == 3 && more < 2 && at_ < text_.size() &&
                           text_[at_] == delimiter.front();
             ++more) {
            ++at_;
        }
    }

    void require(bool holds, const char* limited, std::size_t limit, const char* unit) const {
        if (!holds) {
            Place{*name_, line_}.refuse(std::string(limited) + " " + std::to_string(limit) + " " +
                                        unit);
        }
    }

    std::string_view text_;
    const std::string* name_;
    std::size_t at_ = 0;
    unsigned line_ = 1;
    bool startsLine_ = true;
    std::size_t depth_ = 0;
    std::size_t dots_ = 0; ///< since the start of the key
    std::size_t before_;
    std::size_t* entries_;
};

// Returns the number of bytes read; 0 at the end.
std::size_t readPiece(int descriptor, char* to, std::size_t size, const Place& place) {
    for (;;) {
        const ssize_t count = read(descriptor, to, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno == EAGAIN) { // whoever shares standard input may have set it so
            pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
            (void)poll(&waiting, 1, -1);
        } else if (errno != EINTR) {
            place.refuse(std::generic_category().message(errno));
        }
    }
}

std::string readAll(int descriptor, const Place& place) {
    constexpr std::size_t piece = 65'536;
    std::string text;
    for (std::size_t length = 0; length <= longestDescription;) {
        text.resize(length + piece);
        const std::size_t count = readPiece(descriptor, text.data() + length, piece, place);
        length += count;
        if (count == 0) {
            text.resize(length);
            return text;
        }
    }
    place.refuse("has more than " + std::to_string(longestDescription) + " bytes");
}

} // namespace

DescriptionFile readDescription(const std::string& path) {
    const Place place{path};
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        place.refuse(std::generic_category().message(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        place.refuse(S_ISDIR(status.st_mode) ? std::generic_category().message(EISDIR)
                                             : "is not a regular file");
    }
    const File file(path);
    if (file.descriptor() < 0 || fstat(file.descriptor(), &status) != 0) {
        place.refuse(std::generic_category().message(errno));
    }
    return {readAll(file.descriptor(), place), {{status.st_dev, status.st_ino}}};
}

DescriptionFile readDescription(int descriptor, const std::string& name) {
    const Place place{name};
    std::string text = readAll(descriptor, place);
    if (text.empty()) {
        place.refuse("is empty");
    }
    return {std::move(text)};
}

void checkBounds(std::string_view text, const std::string& name, DescriptionSize& chain) {
    const bool isFirst = chain.bytes == 0;
    chain.bytes += text.size();
    if (chain.bytes > longestDescription) {
        const std::string bound = std::to_string(longestDescription) + " bytes";
        Place{name}.refuse(isFirst ? "has more than " + bound
                                   : "has, with the descriptions that take it over, more than " +
                                         bound);
    }
    BoundsCheck(text, name, chain.entries).run();
}

} // namespace board
