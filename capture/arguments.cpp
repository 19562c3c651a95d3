#include "capture/arguments.h"

#include "board/i2c_model.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>

namespace capture {

namespace {

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
    constexpr std::array<std::uint32_t, 3> highest{board::highestBus, highestNumber, highestNumber};
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
    zolt::OptionForm form;
    void (*take)(Arguments& arguments, const char* argument);
};

constexpr Option options[] = {
    {.form = {.letter = 'o',
              .argument = "FILE",
              .help = "write the description to FILE, which must not exist\n"
                      "(default: standard output)"},
     .take =
         [](Arguments& arguments, const char* file) {
             if (*file == '\0') {
                 throw ArgumentsError("-o: the name is empty"); // of a variable that is not set
             }
             arguments.output = file;
         }},
    {.form = {.name = "force", .help = "overwrite FILE if it exists"},
     .take = [](Arguments& arguments, const char*) { arguments.force = true; }},
    {.form = {.name = "mask", .help = "replace texts that may identify a machine or a customer"},
     .take = [](Arguments& arguments, const char*) { arguments.mask = true; }},
    {.form = {.name = "property",
              .argument = "BUS:TARGET:ID",
              .isRepeated = true,
              .help = "read a property of a node, too; TARGET 0 is the\n"
                      "bus itself; numbers are decimal, or 0x..."},
     .take = [](Arguments& arguments,
                const char* property) { arguments.properties.push_back(propertyIn(property)); }},
    {.form = {.name = "help", .help = "print this and exit"},
     .take = [](Arguments& arguments, const char*) { arguments.help = true; }},
    {.form = {.name = "version", .help = "print the version and exit"},
     .take = [](Arguments& arguments, const char*) { arguments.version = true; }},
};

std::vector<zolt::OptionForm> forms() {
    std::vector<zolt::OptionForm> forms;
    forms.reserve(std::size(options));
    for (const Option& each : options) {
        forms.push_back(each.form);
    }
    return forms;
}

} // namespace

Arguments parseArguments(int argc, char* const argv[]) {
    zolt::OptionReader reader(argc, argv, forms());
    Arguments arguments;
    while (const auto option = reader.next()) {
        options[*option].take(arguments, reader.value());
        if (arguments.help || arguments.version) {
            return arguments;
        }
    }
    if (!reader.operands().empty()) {
        throw ArgumentsError(std::string(reader.operands().front()) + " is not an option");
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
    for (const Option& each : options) {
        text.append(zolt::helpOf(each.form, 32));
    }
    text += "\nExit status: 0 if everything was read; 1 if something was refused, which the\n"
            "description records; 2 if nothing was written.\n";
    return text;
}

} // namespace capture
