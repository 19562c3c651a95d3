#include "capture/arguments.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <getopt.h>
#include <iterator>
#include <optional>
#include <string_view>

namespace capture {

namespace {

constexpr std::uint32_t highestBus = 0x7FFFFFFF;
constexpr std::uint32_t highestNumber = 0xFFFFFFFF;

// A decimal number, or a hexadecimal one behind 0x.
std::optional<std::uint32_t> numberIn(std::string_view text, std::uint32_t highest) {
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(isHexadecimal ? 2 : 0);
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, isHexadecimal ? 16 : 10);
    if (error != std::errc() || rest != end || number > highest) {
        return std::nullopt;
    }
    return number;
}

NodeProperty propertyIn(std::string_view text) {
    constexpr std::array<std::uint32_t, 3> highest{highestBus, highestNumber, highestNumber};
    std::array<std::uint32_t, 3> numbers{};
    std::string_view rest = text;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const bool isLast = i + 1 == numbers.size();
        const std::size_t colon = isLast ? rest.size() : rest.find(':');
        const auto number = colon == std::string_view::npos
                                ? std::nullopt
                                : numberIn(rest.substr(0, colon), highest[i]);
        if (!number) {
            throw ArgumentsError(std::string("--property ")
                                     .append(text)
                                     .append(": is not BUS:TARGET:ID, three numbers"));
        }
        numbers[i] = *number;
        rest.remove_prefix(isLast ? colon : colon + 1);
    }
    return {.bus = numbers[0], .target = numbers[1], .id = numbers[2]};
}

// One option: all that the program knows of it.
struct Option {
    char letter = '\0';             ///< short form, or none
    const char* name = nullptr;     ///< long form, or none
    const char* argument = nullptr; ///< its name in the help, or none
    bool isRepeated = false;
    std::string_view help; ///< lines, without indentation
    void (*take)(Arguments& arguments, const char* argument);
};

constexpr Option options[] = {
    {.letter = 'o',
     .argument = "FILE",
     .help = "write the description to FILE, which must not exist\n"
             "(default: standard output)",
     .take =
         [](Arguments& arguments, const char* file) {
             if (*file == '\0') {
                 throw ArgumentsError("-o: the name is empty"); // of a variable that is not set
             }
             arguments.output = file;
         }},
    {.name = "force",
     .help = "overwrite FILE if it exists",
     .take = [](Arguments& arguments, const char*) { arguments.force = true; }},
    {.name = "mask",
     .help = "replace texts that may identify a machine or a customer",
     .take = [](Arguments& arguments, const char*) { arguments.mask = true; }},
    {.name = "property",
     .argument = "BUS:TARGET:ID",
     .isRepeated = true,
     .help = "read a property of a node, too; TARGET 0 is the\n"
             "bus itself; numbers are decimal, or 0x...",
     .take = [](Arguments& arguments,
                const char* property) { arguments.properties.push_back(propertyIn(property)); }},
    {.name = "help",
     .help = "print this and exit",
     .take = [](Arguments& arguments, const char*) { arguments.help = true; }},
    {.name = "version",
     .help = "print the version and exit",
     .take = [](Arguments& arguments, const char*) { arguments.version = true; }},
};

// The number of an option in getopt's answer. Options are numbered above all letters.
constexpr int firstNumber = 256;

std::string shortForms() {
    std::string forms(":"); // tells a missing argument from a wrong option
    for (const Option& each : options) {
        if (each.letter != '\0') {
            forms.append(1, each.letter).append(each.argument != nullptr ? ":" : "");
        }
    }
    return forms;
}

std::vector<option> longForms() {
    std::vector<option> forms;
    for (std::size_t i = 0; i < std::size(options); ++i) {
        if (options[i].name != nullptr) {
            forms.push_back(
                {.name = options[i].name,
                 .has_arg = options[i].argument != nullptr ? required_argument : no_argument,
                 .flag = nullptr,
                 .val = firstNumber + static_cast<int>(i)});
        }
    }
    forms.push_back({});
    return forms;
}

const Option* found(int answer) {
    if (answer >= firstNumber) {
        return &options[answer - firstNumber];
    }
    const auto* const option =
        std::ranges::find_if(options, [&](const Option& each) { return each.letter == answer; });
    return option == std::end(options) ? nullptr : option;
}

// The option that getopt refuses: a letter, or else the last word that it took.
std::string refused(char* const argv[]) {
    return optopt > 0 && optopt < firstNumber
               ? std::string("-").append(1, static_cast<char>(optopt))
               : std::string(argv[optind - 1]);
}

std::string formOf(const Option& option) {
    std::string form = option.name != nullptr ? std::string("--").append(option.name)
                                              : std::string("-").append(1, option.letter);
    if (option.argument != nullptr) {
        form.append(" ").append(option.argument);
    }
    return form;
}

} // namespace

Arguments parseArguments(int argc, char* const argv[]) {
    const std::string letters = shortForms();
    const std::vector<option> names = longForms();
    Arguments arguments;
    opterr = 0;
    optind = 0;
    for (int answer = 0;
         (answer = getopt_long(argc, argv, letters.c_str(), names.data(), nullptr)) != -1;) {
        if (answer == ':') {
            throw ArgumentsError(refused(argv) + " needs a value");
        }
        const Option* const option = answer == '?' ? nullptr : found(answer);
        if (option == nullptr) {
            throw ArgumentsError(refused(argv) +
                                 " is not an option, or has a value it does not take");
        }
        option->take(arguments, optarg);
        if (arguments.help || arguments.version) {
            return arguments;
        }
    }
    if (optind < argc) {
        throw ArgumentsError(std::string(argv[optind]) + " is not an option");
    }
    if (arguments.force && arguments.output.empty()) {
        throw ArgumentsError("--force needs -o FILE");
    }
    return arguments;
}

std::string usage() {
    std::string text = "usage: zolt_capture [option]...\n"
                       "\n"
                       "Reads what this board shows, and writes it as a board description for\n"
                       "zolt_sim. Only reads from the hardware.\n"
                       "\n";
    constexpr std::size_t column = 32;
    for (const Option& each : options) {
        std::string line = std::string("  ").append(formOf(each));
        line.append(each.isRepeated ? "..." : "");
        for (std::string_view help = each.help; !help.empty();) {
            const std::size_t end = std::min(help.find('\n'), help.size());
            line.resize(std::max(column, line.size() + 1), ' ');
            text.append(line).append(help.substr(0, end)).append("\n");
            help.remove_prefix(std::min(end + 1, help.size()));
            line.clear();
        }
    }
    text += "\nExit status: 0 if everything was read; 1 if something was refused, which the\n"
            "description records; 2 if nothing was written.\n";
    return text;
}

} // namespace capture
