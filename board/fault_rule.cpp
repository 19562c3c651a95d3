#include "board/fault_rule.h"

#include "board/bus_names.h"
#include "board/device_type.h"
#include "board/fault_words.h"
#include "board/message_text.h"
#include "board/number.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fnmatch.h>
#include <iterator>
#include <limits>
#include <span>
#include <vector>

namespace board {

namespace {

using Words = std::span<const std::string_view>;

void takeSubject(FaultRule& rule, std::string_view word) {
    rule.subject = word;
}

// Without a range of bytes, the rule is for all of the object's.
void takeReadObject(FaultRule& rule, std::string_view word) {
    rule.subject = word;
    rule.last = lastByte;
}

// The comparison of a name with a pattern calls itself for each star.
void takePattern(FaultRule& rule, std::string_view word) {
    constexpr std::size_t longest = 255;
    if (word.size() > longest) {
        throw FaultRuleError("a name pattern has at most " + std::to_string(longest) +
                             " characters");
    }
    rule.subject = word;
}

void takeObject(FaultRule& rule, std::string_view word) {
    rule.subject = word;
    if (!isObjectPath(fullPath(rule.subject))) {
        throw FaultRuleError(inQuotes(word) + " is no object path of D-Bus");
    }
}

// @param what  the word must be, for messages
void takeRange(FaultRule& rule, std::string_view word, const char* what) {
    constexpr auto highest = std::numeric_limits<std::uint16_t>::max();
    const std::size_t dash = word.find('-');
    const auto first = numberIn(word.substr(0, dash), 0, highest);
    const auto last =
        dash == std::string_view::npos ? first : numberIn(word.substr(dash + 1), 0, highest);
    if (!first || !last) {
        throw FaultRuleError(inQuotes(word) + " is not " + what + " (0x0000 to 0xFFFF)");
    }
    if (*last < *first) {
        throw FaultRuleError("address range " + inQuotes(word) + " runs backwards");
    }
    rule.first = static_cast<std::uint16_t>(*first);
    rule.last = static_cast<std::uint16_t>(*last);
}

void takeAddresses(FaultRule& rule, std::string_view word) {
    takeRange(rule, word, "a raw address or a range of addresses");
}

void takeAbsent(FaultRule& rule, std::string_view word) {
    if (word != "absent") {
        throw FaultRuleError(inQuotes(word) + " is not understood here, only 'absent' is");
    }
    rule.subject = word;
}

void takeBus(FaultRule& rule, std::string_view word) {
    const auto bus = numberIn(word, 0, BUS_CORE_HIGHEST_BUS);
    if (!bus) {
        throw FaultRuleError(inQuotes(word) + " is no bus number");
    }
    rule.bus = static_cast<std::uint32_t>(*bus);
    rule.operation = BUS_CORE_OPEN;
    rule.status = EIO;
}

void takeDeviceType(FaultRule& rule, std::string_view word) {
    const auto code = deviceTypeCode(word);
    if (!code) {
        throw FaultRuleError(noDeviceType(word));
    }
    rule.deviceType = *code;
}

// The words that may follow the subject. Only the command is required.
enum Options : unsigned {
    none = 0,
    status = 1,
    error = 2,
    errnoName = 4,
    command = 8,
    count = 16, // 'once' or 'N times'
    after = 32,
    delay = 64,
    fail = 128,
    recovery = 256,
    wholeRun = 512, // no words: the rule describes the whole run
    range = 1024,   // a byte of the object, or a range of bytes
    timing = count | after | delay | fail,
};

struct RuleKind {
    FaultKind kind;
    std::string_view subject; ///< what the second word must be
    void (*takeSubject)(FaultRule& rule, std::string_view word);
    unsigned options;
};

constexpr RuleKind kinds[] = {
    {FaultKind::namedRead, "a name pattern", takePattern, status | timing},
    {FaultKind::rawRead, "an address or a range of addresses", takeAddresses, status | timing},
    {FaultKind::halObject, "an object's name", takeSubject, timing},
    {FaultKind::halRead, "an object's name", takeReadObject, status | timing | range},
    {FaultKind::bus, "'absent'", takeAbsent, wholeRun},
    {FaultKind::service, "'absent'", takeAbsent, wholeRun},
    {FaultKind::object, "an object's path", takeObject, error | timing},
    {FaultKind::i2cOpen, "a bus number", takeBus, errnoName | timing | recovery},
    {FaultKind::i2cIoctl, "a bus number", takeBus, errnoName | command | timing | recovery},
    {FaultKind::sysinfo, "a device type", takeDeviceType, status | timing},
};

template <typename Rows>
std::string wordsIn(const Rows& rows) {
    std::string text;
    for (const auto& row : rows) {
        text.append(text.empty() ? "" : ", ").append(row.word);
    }
    return text;
}

std::vector<std::string_view> wordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    constexpr std::string_view blanks = " \t";
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
        if (text.empty()) {
            return words;
        }
        const std::size_t end = std::min(text.find_first_of(blanks), text.size());
        words.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
}

std::int32_t statusOf(Words words) {
    const auto status = words.size() < 2
                            ? std::nullopt
                            : numberIn(words[1], std::numeric_limits<std::int32_t>::min(),
                                       std::numeric_limits<std::int32_t>::max());
    if (!status || *status == 0) {
        throw FaultRuleError("'status' needs a number from -2147483648 to 2147483647, and not 0");
    }
    return static_cast<std::int32_t>(*status);
}

std::string errorOf(Words words) {
    if (words.size() < 2) {
        throw FaultRuleError("'error' needs a name");
    }
    return std::string(words[1]);
}

int errnoNamed(Words words) {
    constexpr int last = EHWPOISON; // the highest errno of Linux
    std::vector<std::string> names;
    for (int number = 1; words.size() >= 2 && number <= last; ++number) {
        const char* const name = strerrorname_np(number);
        if (name == nullptr) {
            continue;
        }
        if (words[1] == name) {
            return number;
        }
        names.emplace_back(name);
    }
    throw FaultRuleError("'error' needs the name of an errno, like EIO" +
                         (names.empty() ? "" : suggestion(words[1], names)));
}

// Whether the words begin with "N times", right or wrong.
bool isCount(Words words) {
    return words.size() >= 2 && words[1] == "times";
}

// Takes the command and, if it is given, the selector. Returns the words behind them.
Words takeCommand(FaultRule& rule, Words words) {
    const auto* const found =
        std::ranges::find(commandWords, words.empty() ? "" : words[0], &CommandWord::word);
    if (found == std::end(commandWords)) {
        throw FaultRuleError("i2c-ioctl needs one of: " + wordsIn(commandWords));
    }
    rule.operation = found->operation;
    words = words.subspan(1);
    const auto selector = words.empty() || isCount(words)
                              ? std::nullopt
                              : numberIn(words[0], 0, std::numeric_limits<std::uint32_t>::max());
    if (!selector) {
        return words;
    }
    rule.selector = static_cast<std::uint32_t>(*selector);
    return words.subspan(1);
}

// Takes the range, if it is given. Returns the words behind it.
Words takeRange(FaultRule& rule, Words words) {
    const bool isGiven =
        !words.empty() && !isCount(words) && words[0][0] >= '0' && words[0][0] <= '9';
    if (!isGiven) {
        return words;
    }
    takeRange(rule, words[0], "a byte or a range of bytes");
    return words.subspan(1);
}

std::uint32_t numberOfCalls(std::string_view word, const char* complaint) {
    const auto number = numberIn(word, 1, mostCalls);
    if (!number) {
        throw FaultRuleError(complaint);
    }
    return static_cast<std::uint32_t>(*number);
}

std::uint32_t delayOf(std::string_view word) {
    if (word == "forever") {
        return delayForever;
    }
    const bool hasMilliseconds = word.ends_with("ms");
    const std::int64_t unit = hasMilliseconds ? 1 : 1000;
    const std::string_view digits = word.substr(0, word.size() - (hasMilliseconds ? 2 : 1));
    const auto number =
        word.ends_with('s') ? numberIn(digits, 1, longestDelay / unit) : std::nullopt;
    if (!number) {
        throw FaultRuleError("'delay' needs a time from 1ms to 3600000ms or from 1s to 3600s, or "
                             "'forever'");
    }
    return static_cast<std::uint32_t>(*number * unit);
}

void takeRecovery(FaultRule& rule, Words words) {
    if (words.size() < 2 || words[1] != "recovery") {
        throw FaultRuleError("'until' needs the word 'recovery'");
    }
    rule.untilRecovery = true;
}

struct Option {
    std::string_view word;
    Options option;
    std::size_t words; ///< how many words it takes, its own included
    void (*take)(FaultRule& rule, Words words);
};

constexpr Option optionRows[] = {
    {"status", status, 2, [](FaultRule& rule, Words words) { rule.status = statusOf(words); }},
    {"error", error, 2, [](FaultRule& rule, Words words) { rule.error = errorOf(words); }},
    {"error", errnoName, 2, [](FaultRule& rule, Words words) { rule.status = errnoNamed(words); }},
    {"once", count, 1, [](FaultRule& rule, Words) { rule.times = 1; }},
    // The number stands in front of this word.
    {"times", count, 2,
     [](FaultRule& rule, Words words) {
         rule.times = numberOfCalls(isCount(words) ? words[0] : "",
                                    "'times' needs a number from 1 to 2147483647 in front of it");
     }},
    {"after", after, 2,
     [](FaultRule& rule, Words words) {
         rule.after = numberOfCalls(words.size() < 2 ? "" : words[1],
                                    "'after' needs a number from 1 to 2147483647");
     }},
    {"until", recovery, 2, takeRecovery},
    {"delay", delay, 2,
     [](FaultRule& rule, Words words) { rule.delay = delayOf(words.size() < 2 ? "" : words[1]); }},
    {"fail", fail, 1, [](FaultRule&, Words) {}},
};

[[noreturn]] void refuseWord(const FaultRule& rule, std::string_view word, unsigned options) {
    std::vector<std::string> understood;
    bool isTiming = false;
    for (const Option& option : optionRows) {
        if ((options & option.option) != 0) {
            understood.emplace_back(option.word);
        }
        isTiming = isTiming || (option.word == word && (option.option & (timing | recovery)) != 0);
    }
    if (isTiming && (options & wholeRun) != 0) {
        throw FaultRuleError(std::string("'")
                                 .append(rule.kind == FaultKind::bus ? "bus" : "service")
                                 .append(" absent' describes the whole run, and takes no ")
                                 .append(inQuotes(word)));
    }
    if (isTiming) {
        throw FaultRuleError("'until recovery' is for i2c-open and i2c-ioctl: only a bus can be "
                             "recovered");
    }
    throw FaultRuleError(inQuotes(word) + " is not understood here" + suggestion(word, understood));
}

// Returns the options that the words give.
unsigned takeOptions(FaultRule& rule, Words words, unsigned options) {
    if ((options & command) != 0) {
        words = takeCommand(rule, words);
    }
    if ((options & range) != 0) {
        words = takeRange(rule, words);
    }
    unsigned taken = none;
    while (!words.empty()) {
        const std::string_view word = isCount(words) ? words[1] : words[0];
        const auto row = std::ranges::find_if(optionRows, [&](const Option& option) {
            return option.word == word && (options & option.option) != 0;
        });
        if (row == std::ranges::end(optionRows)) {
            refuseWord(rule, word, options);
        }
        if ((taken & row->option) != 0) {
            throw FaultRuleError(row->option == count ? "'once' or 'times' is given twice"
                                                      : inQuotes(word).append(" is given twice"));
        }
        row->take(rule, words);
        taken |= row->option;
        words = words.subspan(row->words);
    }
    return taken;
}

// A rule with a delay alone takes long and does not fail.
void settleDelay(FaultRule& rule, unsigned taken) {
    const unsigned failing = taken & (status | error | errnoName | fail);
    if ((taken & delay) == 0) {
        if ((taken & fail) != 0) {
            throw FaultRuleError("'fail' has no effect: a rule without 'delay' always fails");
        }
        return;
    }
    if (rule.delay == delayForever && failing != 0) {
        throw FaultRuleError("a call with 'delay forever' never comes back, so it cannot fail");
    }
    if (failing == 0) {
        rule.status = 0;
    }
}

// A recovery ends with a successful request of its last step, on a bus that is open.
void refuseEndlessWait(const FaultRule& rule) {
    const bool letsAllPass = rule.status == 0 && rule.delay != delayForever;
    if (!rule.untilRecovery || letsAllPass || rule.after != 0 || rule.times != 0) {
        return;
    }
    if (rule.kind == FaultKind::i2cOpen) {
        throw FaultRuleError("a bus that never opens cannot be recovered: 'until recovery' needs "
                             "'after N' or 'N times' here");
    }
    if (rule.operation == CONTROL_RECOVER_BUS &&
        rule.selector.value_or(RECOVERY_CLOCK_UNRAVEL) == RECOVERY_CLOCK_UNRAVEL) {
        throw FaultRuleError("recover-bus 98 recovers the bus: 'until recovery' needs another "
                             "mode, 'after N' or 'N times' here");
    }
}

} // namespace

FaultRule parseFaultRule(std::string_view text) {
    const auto words = wordsOf(text);
    const auto* const named =
        std::ranges::find(faultWords, words.empty() ? "" : words[0], &FaultWord::word);
    if (named == std::end(faultWords)) {
        throw FaultRuleError("a fault begins with one of: " + wordsIn(faultWords));
    }
    const auto* const kind = std::ranges::find(kinds, named->kind, &RuleKind::kind);
    if (words.size() < 2) {
        throw FaultRuleError(std::string(named->word).append(" needs ").append(kind->subject));
    }
    FaultRule rule{.kind = kind->kind, .status = noAnswer};
    kind->takeSubject(rule, words[1]);
    const unsigned taken = takeOptions(rule, Words(words).subspan(2), kind->options);
    settleDelay(rule, taken);
    refuseEndlessWait(rule);
    if (!rule.error.empty() && !isInterfaceName(rule.error)) {
        throw FaultRuleError(inQuotes(rule.error) + " is no error name of D-Bus");
    }
    return rule;
}

bool fits(const FaultRule& rule, const std::string& name) {
    return rule.kind == FaultKind::namedRead ? fnmatch(rule.subject.c_str(), name.c_str(), 0) == 0
                                             : rule.subject == name;
}

} // namespace board
