#include "console/options.h"

#include <algorithm>
#include <getopt.h>

namespace zolt {

namespace {

// The number of a long option in getopt's answer. Options are numbered above all letters.
constexpr int firstNumber = 256;

std::string shortForms(std::span<const OptionForm> forms) {
    // Behind a colon, getopt tells a missing argument from a wrong option, and prints nothing.
    std::string letters(":");
    for (const OptionForm& each : forms) {
        if (each.letter != '\0') {
            letters.append(1, each.letter).append(each.argument != nullptr ? ":" : "");
        }
    }
    return letters;
}

std::vector<option> longForms(std::span<const OptionForm> forms) {
    std::vector<option> names;
    for (std::size_t i = 0; i < forms.size(); ++i) {
        if (forms[i].name != nullptr) {
            names.push_back(
                {.name = forms[i].name,
                 .has_arg = forms[i].argument != nullptr ? required_argument : no_argument,
                 .flag = nullptr,
                 .val = firstNumber + static_cast<int>(i)});
        }
    }
    names.push_back({});
    return names;
}

std::string textOf(const OptionForm& form) {
    std::string text = form.name != nullptr ? std::string("--").append(form.name)
                                            : std::string("-").append(1, form.letter);
    if (form.argument != nullptr) {
        text.append(" ").append(form.argument);
    }
    return text;
}

} // namespace

OptionReader::OptionReader(int argc, char* const argv[], std::vector<OptionForm> forms)
    : argc_(argc),
      argv_(argv),
      forms_(std::move(forms)),
      letters_(shortForms(forms_)),
      names_(longForms(forms_)) {
    optind = 0;
}

OptionReader::~OptionReader() = default;

std::optional<std::size_t> OptionReader::next() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread reads arguments.
    const int answer = getopt_long(argc_, argv_, letters_.c_str(), names_.data(), nullptr);
    if (answer == -1) {
        return std::nullopt;
    }
    if (answer == ':') {
        throw OptionError(refused() + " needs a value");
    }
    if (answer >= firstNumber) {
        return static_cast<std::size_t>(answer - firstNumber);
    }
    const auto form =
        std::ranges::find_if(forms_, [&](const OptionForm& each) { return each.letter == answer; });
    if (form == forms_.end()) { // getopt answers '?', which no option has for a letter
        throw UnknownOption(refused());
    }
    return static_cast<std::size_t>(form - forms_.begin());
}

const char* OptionReader::value() const {
    return optarg;
}

std::span<char* const> OptionReader::operands() const {
    return {argv_ + optind, static_cast<std::size_t>(std::max(0, argc_ - optind))};
}

// The option that getopt refuses: a letter, or else the last word that it took.
std::string OptionReader::refused() const {
    return optopt > 0 && optopt < firstNumber
               ? std::string("-").append(1, static_cast<char>(optopt))
               : std::string(argv_[optind - 1]);
}

std::string helpOf(const OptionForm& form, std::size_t column) {
    std::string text;
    std::string line = std::string("  ").append(textOf(form)).append(form.isRepeated ? "..." : "");
    for (std::string_view help = form.help; !help.empty();) {
        const std::size_t end = std::min(help.find('\n'), help.size());
        line.resize(std::max(column, line.size() + 1), ' ');
        text.append(line).append(help.substr(0, end)).append("\n");
        help.remove_prefix(std::min(end + 1, help.size()));
        line.clear();
    }
    return text;
}

} // namespace zolt
