#include "board/description_chain.h"

#include "board/message_text.h"
#include "board/overlay.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace board {

namespace {

/// A description of the chain.
struct Link {
    std::string file;
    FileIdentity identity;
    toml::table table;
};

class ChainReader {
public:
    explicit ChainReader(const BoardFinder& find) : find_(&find) {}

    void read(const DescriptionFile& description, const std::string& name) {
        add(description, name);
        while (addBase()) {
        }
    }

    [[nodiscard]] DescriptionChain merge(Errors* errors) {
        DescriptionChain chain;
        refuseChanges(links_.back().table, errors);
        for (auto link = links_.rbegin(); link != links_.rend(); ++link) {
            if (link != links_.rbegin()) {
                layOver(link->table, std::move(chain.table), errors);
            }
            chain.table = std::move(link->table);
            chain.files.push_back(std::move(link->file));
        }
        return chain;
    }

private:
    void add(const DescriptionFile& description, const std::string& name) {
        checkBounds(description.text, name, size_);
        try {
            links_.push_back({name, description.identity, toml::parse(description.text, name)});
        } catch (const toml::parse_error& error) {
            Place{name, error.source().begin.line}.refuse(shortened(error.description()));
        }
    }

    // Reads the base of the last link. Returns whether there is one.
    bool addBase() {
        Link& last = links_.back();
        const Reading reading{.files = {last.file}};
        TomlTable root(last.table, "board", reading);
        const auto base = root.text(baseKey);
        if (!base) {
            return false;
        }
        const Place place = root.place(baseKey);
        last.table.erase(baseKey);
        if (links_.size() == mostDescriptions) {
            place.refuse("board: more than " + std::to_string(mostDescriptions) +
                         " descriptions take over one another");
        }
        const std::string path = pathOf(*base, last.file, place);
        const DescriptionFile description = open(path, *base, place);
        const auto same = std::ranges::find_if(links_, [&](const Link& link) {
            return link.identity && link.identity == description.identity;
        });
        if (same != links_.end()) {
            place.refuse("board: the base " + inQuotes(*base) + " leads back to " +
                         inQuotes(same->file));
        }
        add(description, path);
        return true;
    }

    std::string pathOf(const std::string& base, const std::string& file, const Place& place) const {
        if (!isBoardName(base)) {
            return std::filesystem::path(file).parent_path() / base;
        }
        if (!*find_) {
            place.refuse("board: there is no board " + inQuotes(base) + " here");
        }
        try {
            return (*find_)(base);
        } catch (const BoardError& error) {
            place.refuse(std::string("board: ").append(error.what()));
        }
    }

    static DescriptionFile open(const std::string& path, const std::string& base,
                                const Place& place) {
        try {
            return readDescription(path);
        } catch (const BoardError& error) {
            place.refuse("board: the base " + inQuotes(base) + " cannot be read: " + error.what());
        }
    }

    const BoardFinder* find_;
    std::vector<Link> links_; ///< each takes over the next one
    DescriptionSize size_;
};

} // namespace

bool isBoardName(std::string_view text) {
    return text.find('/') == std::string_view::npos && !text.ends_with(".toml");
}

DescriptionChain readChain(const DescriptionFile& description, const std::string& name,
                           const BoardFinder& find, Errors* errors) {
    ChainReader chain(find);
    chain.read(description, name);
    return chain.merge(errors);
}

} // namespace board
