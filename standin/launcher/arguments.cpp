#include "standin/launcher/arguments.h"

#include "board/fault_rule.h"

#include <array>
#include <getopt.h>

namespace standin {

namespace {

enum Letter : int {
    board = 'b',
    fault = 'f',
    debugLog = 'd',
    callLog = 'c',
    i2cLog = 'i',
    busLog = 's',
    logTimes = 't',
    kernelBuses = 'n',
    check = 'k',
    list = 'l',
    help = 'h',
    version = 'v'
};

constexpr std::array<option, 13> longOptions{{
    {"board", required_argument, nullptr, Letter::board},
    {"fault", required_argument, nullptr, Letter::fault},
    {"debug-log", required_argument, nullptr, Letter::debugLog},
    {"call-log", required_argument, nullptr, Letter::callLog},
    {"i2c-log", required_argument, nullptr, Letter::i2cLog},
    {"bus-log", required_argument, nullptr, Letter::busLog},
    {"log-times", no_argument, nullptr, Letter::logTimes},
    {"kernel-buses", no_argument, nullptr, Letter::kernelBuses},
    {"check", no_argument, nullptr, Letter::check},
    {"list", no_argument, nullptr, Letter::list},
    {"help", no_argument, nullptr, Letter::help},
    {"version", no_argument, nullptr, Letter::version},
    {nullptr, 0, nullptr, 0},
}};

// The value of an option. An empty value is refused: it comes from a variable that is not set.
std::string named(const char* option) {
    if (*optarg == '\0') {
        throw ArgumentsError(std::string("--") + option + ": the name is empty");
    }
    return optarg;
}

} // namespace

Arguments parseArguments(int argc, char* const argv[]) {
    Arguments arguments;
    opterr = 0;
    optind = 0;
    // '+' stops at the command, whose options are its own. ':' tells a missing value from a wrong
    // option.
    for (int letter = 0;
         // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread reads arguments.
         (letter = getopt_long(argc, argv, "+:", longOptions.data(), nullptr)) != -1;) {
        switch (letter) {
        case Letter::board:
            arguments.board = named("board");
            break;
        case Letter::fault:
            arguments.faults.emplace_back(optarg);
            break;
        case Letter::debugLog:
            arguments.logs.debug = named("debug-log");
            break;
        case Letter::callLog:
            arguments.logs.calls = named("call-log");
            break;
        case Letter::i2cLog:
            arguments.logs.i2c = named("i2c-log");
            break;
        case Letter::busLog:
            arguments.logs.bus = named("bus-log");
            break;
        case Letter::logTimes:
            arguments.logs.times = true;
            break;
        case Letter::kernelBuses:
            arguments.kernelBuses = true;
            break;
        case Letter::check:
            arguments.check = true;
            break;
        case Letter::list:
            arguments.list = true;
            break;
        case Letter::help:
            arguments.help = true;
            return arguments;
        case Letter::version:
            arguments.version = true;
            return arguments;
        case ':':
            throw ArgumentsError(std::string(argv[optind - 1]) + " needs a value");
        default:
            throw ArgumentsError(std::string(argv[optind - 1]) + " is not an option");
        }
    }
    arguments.command = argv + optind;
    if (arguments.list) {
        return arguments;
    }
    if (optind >= argc) {
        throw ArgumentsError(arguments.check ? "there is no board to check"
                                             : "there is no command to run");
    }
    if (arguments.check && !arguments.faults.empty()) {
        throw ArgumentsError("--check takes no --fault");
    }
    return arguments;
}

std::string usage() {
    std::string rules;
    for (const board::FaultRuleHelp& rule : board::faultRuleHelp()) {
        rules.append("                      ").append(rule.usage).append("\n");
    }
    rules += "                    TIMING is any of:\n";
    for (const board::FaultRuleHelp& timing : board::faultTimingHelp()) {
        rules.append("                      ").append(timing.usage).append("\n");
    }
    return "usage: zolt_sim [option]... [--] command [argument]...\n"
           "       zolt_sim --check BOARD...\n"
           "       zolt_sim --list [LIST]...\n"
           "\n"
           "Runs a command on a described board: the platform's libraries, the system bus\n"
           "and the I2C buses answer from a board description. The exit status is the\n"
           "command's.\n"
           "\n"
           "  --board FILE      the board description, or the name of one that comes with\n"
           "                    the tool (default: demo)\n"
           "  --fault RULE      make calls fail or take long; may be given more than once:\n" +
           rules +
           "  --debug-log FILE  write the platform's debug log to a file\n"
           "  --call-log FILE   write every call of the platform's libraries to a file\n"
           "  --i2c-log FILE    write every transaction on the I2C buses to a file\n"
           "  --bus-log FILE    write every call that reaches the service to a file\n"
           "  --log-times       start each line of the logs with the time since the start\n"
           "  --kernel-buses    put the I2C buses into the kernel, by the module zolt_bus\n"
           "  --check           run nothing: print all errors of the board descriptions\n"
           "  --list            run nothing: list boards, device-types, interfaces,\n"
           "                    properties, faults and the board's registers, or the\n"
           "                    named lists of these\n"
           "  --help            print this and exit\n"
           "  --version         print the version and exit\n"
           "\n"
           "Exit status: 2 for a wrong option, fault or board description; 125 when the\n"
           "stand-in itself fails, or when a log has lost lines and the command succeeded;\n"
           "126 and 127 when the command cannot be started or found; 128 + N when signal N\n"
           "ended it.\n";
}

} // namespace standin
