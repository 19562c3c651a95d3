// Runs the whole tool, with arguments, an operator, a console and a board that the input makes up.
//
// An input has three lengths of a byte each: of the arguments, of what the operator types, and of
// the console's results. These parts follow, and then the results of the board's calls. Blanks
// separate the arguments; without any, the tool shows its menu.
//
// Of each run, the fuzzer requires:
//   - The tool ends. Only at the end of the input does it repeat its last option without end.
//   - It prints only its own lines, and no more prompts than the operator answers.
//   - It has handed out all text before it calls the board.
//   - It leaves no descriptor, no memory, no tree and no object of the platform.
#include "console/output.h"
#include "tests/fuzz/bus_reply.h"
#include "tests/fuzz/target.h"
#include "tests/fuzz/whole_tool/known_lines.h"
#include "tests/fuzz/whole_tool/session.h"

#include <bitset>
#include <cstdio>
#include <cstring>
#include <fcntl.h>

#if defined(__SANITIZE_ADDRESS__)
#define COUNTS_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define COUNTS_MEMORY 1
#endif
#endif
#ifdef COUNTS_MEMORY
#include <sanitizer/allocator_interface.h>
#endif

int zoltTestMain(int argc, char* argv[]); // the main() of app/main.cpp

namespace zolt::fuzz {

namespace {

std::size_t allocated() {
#ifdef COUNTS_MEMORY
    return __sanitizer_get_current_allocated_bytes();
#else
    return 0;
#endif
}

std::bitset<64> openDescriptors() {
    std::bitset<64> open;
    for (std::size_t i = 0; i < open.size(); ++i) {
        open[i] = fcntl(static_cast<int>(i), F_GETFD) != -1;
    }
    return open;
}

// The complaints of getopt, which go to standard error.
class Complaints {
public:
    Complaints() : usual_(stderr) {
        stderr = fmemopen(text_.data(), text_.size(), "w");
        require(stderr != nullptr);
    }
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;
    ~Complaints() {
        (void)std::fclose(stderr);
        stderr = usual_;
        std::string_view rest(text_.data());
        while (!rest.empty()) {
            constexpr std::string_view start = "zolt_test: ";
            require(rest.starts_with(start));
            rest.remove_prefix(start.size());
            require(rest.starts_with("invalid option -- '") ||
                    rest.starts_with("option requires an argument -- '"));
            // The letter may be any byte, even a newline.
            rest.remove_prefix(std::min(rest.find("'\n", rest.find('\'') + 1), rest.size() - 2) +
                               2);
        }
    }

private:
    FILE* usual_;
    std::array<char, 16384> text_{};
};

// The words of a command line, as exec would pass them.
class Arguments {
public:
    explicit Arguments(std::string text) : text_("zolt_test " + std::move(text)) {
        for (char* word = std::strtok(text_.data(), " "); word != nullptr;
             word = std::strtok(nullptr, " ")) {
            words_.push_back(word);
        }
        words_.push_back(nullptr);
    }

    [[nodiscard]] int count() const { return static_cast<int>(words_.size()) - 1; }
    [[nodiscard]] char** words() { return words_.data(); }

private:
    std::string text_;
    std::vector<char*> words_;
};

// The first message opens the connection of the messages, which stays.
void prepareBus() {
    Bytes none;
    (void)Reply(none).finished();
}

struct Input {
    std::string arguments;
    std::string typed;
    Bytes console;
    Bytes board;
};

Input inputOf(Bytes bytes) {
    const std::size_t arguments = bytes.take();
    const std::size_t typed = bytes.take();
    const std::size_t console = bytes.take();
    Input input;
    input.arguments = bytes.takeText(arguments);
    input.typed = bytes.takeText(typed);
    input.console = bytes.part(console);
    input.board = bytes;
    std::erase(input.arguments, '\0');
    return input;
}

void run(const Input& input) {
    Session current{.typed = input.typed, .console = input.console, .board = input.board};
    Arguments arguments(input.arguments);
    session = &current;
    {
        const TypedInput operatorInput;
        const Complaints complaints;
        require(zoltTestMain(arguments.count(), arguments.words()) == 0);
        zolt::flush(); // as at the end of the program
    }
    session = nullptr;
    require(current.trees == 0 && current.objects == 0);

    // Each prompt takes a byte of what is typed at least, unless the input has ended or is not a
    // number. A menu then follows with at most six questions of its option, also behind the end.
    constexpr std::size_t promptsOfPass = 7;
    constexpr std::size_t passes = 5;
    constexpr std::size_t longestReport = std::size_t{3} << 20;
    const std::size_t prompts = checkLines(current.printed);
    require(prompts <= input.typed.size() + passes * promptsOfPass);
    require(current.printed.size() <= (prompts + 1) * longestReport);
}

} // namespace

} // namespace zolt::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zolt::fuzz;
    prepareBus();
    const Input input = inputOf(Bytes(data, size));
    const auto open = openDescriptors();
    // Libraries may keep memory when they run for the first time. A run that leaves memory leaves
    // it each time.
    constexpr int mostRuns = 3;
    for (int runs = 1;; ++runs) {
        const std::size_t before = allocated();
        run(input);
        require(openDescriptors() == open);
        if (allocated() <= before) {
            return 0;
        }
        require(runs < mostRuns);
    }
}
