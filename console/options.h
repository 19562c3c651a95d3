// Reads the options of a command line, and lays out their help. A program has one table of options
// for both.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct option; // of the C library

namespace zolt {

/// An option as people type it.
struct OptionForm {
    char letter = '\0';             ///< short form, or none
    const char* name = nullptr;     ///< long form, or none
    const char* argument = nullptr; ///< its name in the help; none: the option takes no value
    bool isRepeated = false;
    std::string_view help{}; ///< lines, without indentation
};

/// A wrong command line; what() says what is wrong.
class OptionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An option that is not in the table, or that has a value and takes none.
class UnknownOption : public OptionError {
public:
    explicit UnknownOption(std::string word)
        : OptionError(word + " is not an option, or has a value it does not take"),
          word_(std::move(word)) {}

    /// The option as it was typed.
    [[nodiscard]] const std::string& word() const { return word_; }

private:
    std::string word_;
};

/// Takes the options of a command line one by one, with the rules of getopt_long. A program may
/// have one such object at a time.
class OptionReader {
public:
    /// @param argv   begins with a word that is no option
    /// @param forms  of all options; OptionReader::next() gives the place of an option in it
    OptionReader(int argc, char* const argv[], std::vector<OptionForm> forms);
    OptionReader(const OptionReader&) = delete;
    OptionReader& operator=(const OptionReader&) = delete;
    ~OptionReader();

    /// The place of the next option in the table; none behind the last option.
    /// @throw OptionError for an option without its value; UnknownOption
    [[nodiscard]] std::optional<std::size_t> next();

    /// The value of the option that next() gave; null when the option takes none.
    [[nodiscard]] const char* value() const;

    /// The words that are no options. Call it behind the last option.
    [[nodiscard]] std::span<char* const> operands() const;

private:
    [[nodiscard]] std::string refused() const;

    int argc_;
    char* const* argv_;
    std::vector<OptionForm> forms_;
    std::string letters_;
    std::vector<option> names_;
};

/// The lines of --help about an option, indented.
[[nodiscard]] std::string helpOf(const OptionForm& form, std::size_t column);

} // namespace zolt
