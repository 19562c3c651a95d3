#include "zolt_board/arguments.h"

#include "board/board_files.h"
#include "board/message_text.h"
#include "zolt_board/verb.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace zolt_board {

namespace {

// One option: all that the program knows of it.
struct Option {
    zolt::OptionForm form;
    void (*take)(Arguments& arguments, const char* value);
};

void takeColour(Arguments& arguments, const char* value) {
    constexpr std::array<std::pair<std::string_view, Colour>, 3> times{{
        {"auto", Colour::automatic},
        {"always", Colour::always},
        {"never", Colour::never},
    }};
    for (const auto& [name, colour] : times) {
        if (value == name) {
            arguments.colour = colour;
            return;
        }
    }
    throw ArgumentsError("--color " + board::inQuotes(value) + ": is not auto, always or never");
}

constexpr Option options[] = {
    {.form = {.name = "tree", .help = "draw slots, end points, I2C nodes and objects as a tree"},
     .take = [](Arguments& arguments, const char*) { arguments.tree = true; }},
    {.form = {.name = "json", .help = "print one JSON document"},
     .take = [](Arguments& arguments, const char*) { arguments.json = true; }},
    {.form = {.name = "list", .help = "list all findings with severity, meaning and remedy"},
     .take = [](Arguments& arguments, const char*) { arguments.list = true; }},
    {.form = {.name = "color",
              .argument = "WHEN",
              .help = "auto (on a terminal, unless NO_COLOR is set), always,\nor never"},
     .take = takeColour},
    {.form = {.name = "help", .help = "print this and exit"},
     .take = [](Arguments& arguments, const char*) { arguments.help = true; }},
    {.form = {.name = "version", .help = "print the version and exit"},
     .take = [](Arguments& arguments, const char*) { arguments.version = true; }},
};

// The options of a verb; without a verb, those of the program.
std::vector<const Option*> optionsOf(const Verb* verb) {
    constexpr std::string_view always[] = {"help", "version"};
    std::vector<const Option*> found;
    for (const Option& option : options) {
        const auto isNamed = [&](std::span<const std::string_view> names) {
            return std::ranges::find(names, option.form.name) != names.end();
        };
        if (isNamed(always) || (verb != nullptr && isNamed(verb->options))) {
            found.push_back(&option);
        }
    }
    return found;
}

const Verb* verbNamed(std::string_view name) {
    std::vector<std::string> names;
    for (const Verb* const verb : verbs()) {
        if (verb->name == name) {
            return verb;
        }
        names.emplace_back(verb->name);
    }
    throw ArgumentsError("there is no verb " + board::inQuotes(name) +
                         board::suggestion(name, names));
}

// Tells an option of the table that has a value from a word that is no option.
[[noreturn]] void refuse(const std::string& word, std::span<const Option* const> known) {
    const std::string name = word.substr(0, word.find('='));
    std::vector<std::string> names;
    for (const Option* const option : known) {
        names.push_back(std::string("--").append(option->form.name));
        if (names.back().starts_with(name) && name != word) {
            throw ArgumentsError(names.back() + " takes no value");
        }
    }
    throw ArgumentsError(board::printable(name) + " is not an option" +
                         board::suggestion(name, names));
}

void readOptions(zolt::OptionReader& reader, std::span<const Option* const> known,
                 Arguments& arguments) {
    try {
        while (const auto option = reader.next()) {
            known[*option]->take(arguments, reader.value());
            if (arguments.help || arguments.version) {
                return;
            }
        }
    } catch (const zolt::UnknownOption& error) {
        refuse(error.word(), known);
    }
}

void takeBoards(std::span<char* const> words, Arguments& arguments) {
    arguments.boards.assign(words.begin(), words.end());
    const Verb& verb = *arguments.verb;
    if (arguments.list) {
        if (!words.empty()) {
            throw ArgumentsError("--list takes no board " + board::inQuotes(words[0]));
        }
        return;
    }
    if (words.size() < verb.fewestBoards) {
        throw ArgumentsError(words.empty()
                                 ? std::string(verb.name).append(" needs a board")
                                 : std::string(verb.name).append(" needs one more board"));
    }
    if (words.size() > verb.mostBoards) {
        throw ArgumentsError(std::string(verb.name)
                                 .append(" takes no board ")
                                 .append(board::inQuotes(words[verb.mostBoards])));
    }
    if (std::ranges::count(arguments.boards, "-") > 1) {
        throw ArgumentsError("- stands for standard input, which can be read once");
    }
}

void appendColumns(std::string& text, std::string_view left, std::string_view right) {
    constexpr std::size_t width = 7;
    text.append("  ").append(left).append(width - std::min(left.size(), width), ' ');
    text.append("  ").append(right).append("\n");
}

// The boards that come with the tools: ": demo, hostile." A copy of the program alone has none.
std::string boardList() {
    std::string text;
    try {
        for (const std::string& name : board::boardNames()) {
            text.append(text.empty() ? ": " : ", ").append(board::printable(name));
        }
    } catch (const std::runtime_error&) {
        return ".";
    }
    return text.append(".");
}

} // namespace

Arguments parseArguments(int argc, char* const argv[]) {
    Arguments arguments;
    const bool hasVerb = argc > 1 && (argv[1][0] != '-' || argv[1][1] == '\0');
    if (hasVerb) {
        arguments.verb = verbNamed(argv[1]);
        --argc;
        ++argv;
    }
    const std::vector<const Option*> known = optionsOf(arguments.verb);
    std::vector<zolt::OptionForm> forms;
    forms.reserve(known.size());
    for (const Option* const option : known) {
        forms.push_back(option->form);
    }
    zolt::OptionReader reader(argc, argv, std::move(forms));
    readOptions(reader, known, arguments);
    if (arguments.help || arguments.version) {
        return arguments;
    }
    if (!hasVerb) {
        throw ArgumentsError("there is no verb");
    }
    if (arguments.json && arguments.tree) {
        throw ArgumentsError("--tree and --json exclude each other");
    }
    takeBoards(reader.operands(), arguments);
    return arguments;
}

std::string usage(const Verb* verb) {
    constexpr std::size_t column = 16;
    std::string text;
    for (const Verb* const each : verbs()) {
        if (verb == nullptr || verb == each) {
            text.append(text.empty() ? "usage: zolt_board " : "       zolt_board ")
                .append(each->name)
                .append(" ")
                .append(each->arguments)
                .append("\n");
        }
    }
    text += "\n";
    if (verb != nullptr) {
        text.append(verb->help).append("\n");
    } else {
        text += "Works on board descriptions alone:\n\n";
        for (const Verb* const each : verbs()) {
            appendColumns(text, each->name, each->summary);
        }
        text += "\n'zolt_board VERB --help' tells the options of a verb.\n\n";
    }
    text += "BOARD is a file, - for standard input, or the name of a board that comes with\n"
            "the tools" +
            boardList() + "\n\n";
    for (const Option* const option : optionsOf(verb)) {
        text.append(zolt::helpOf(option->form, column));
    }
    text.append("\n").append(
        verb != nullptr ? verb->status
                        : "Exit status: 2 for a wrong option or board; each verb says what "
                          "0 and 1 mean.\n");
    return text;
}

} // namespace zolt_board
