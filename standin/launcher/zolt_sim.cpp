// zolt_sim: runs a command on a described board.
//
// All files of a run lie in one private directory. The command finds the directory and the
// platform's libraries through its environment.
#include "board/board_files.h"
#include "board/board_loader.h"
#include "board/fault_order.h"
#include "board/message_text.h"
#include "standin/image/image.h"
#include "standin/image/image_writer.h"
#include "standin/launcher/arguments.h"
#include "standin/launcher/command.h"
#include "standin/launcher/i2c_side.h"
#include "standin/launcher/lists.h"
#include "standin/launcher/loader_path.h"
#include "standin/launcher/logs.h"
#include "standin/launcher/places.h"
#include "standin/launcher/private_directory.h"
#include "standin/launcher/service_side.h"
#include "standin/log/log_line.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <system_error>
#include <systemd/sd-event.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace standin;

constexpr int exitWrongInput = 2;
constexpr int exitOwnFailure = 125;

board::Board boardFor(const Arguments& arguments) {
    board::Board board = board::loadBoard(board::boardFile(arguments.board), board::boardFile);
    for (const std::string& rule : arguments.faults) {
        try {
            board::orderFault(board, rule);
        } catch (const board::FaultRuleError& error) {
            throw ArgumentsError("--fault " + board::inQuotes(rule) + ": " + error.what());
        }
    }
    return board;
}

std::string librarySearchPath(const std::string& directory) {
    std::string path = loaderPath(libraryDirectory(), directory, "lib");
    const char* const inherited = std::getenv("LD_LIBRARY_PATH");
    if (inherited != nullptr && *inherited != '\0') {
        path.append(":").append(inherited);
    }
    return path;
}

void add(Environment& environment, const Environment& more) {
    environment.insert(environment.end(), more.begin(), more.end());
}

// Tells which logs have lost lines. A command that succeeded then counts as a failure of the
// stand-in.
void tellLosses(const std::vector<std::string>& losses, Ended& ended) {
    for (const std::string& loss : losses) {
        (void)std::fprintf(stderr, "zolt_sim: %s\n", loss.c_str());
    }
    if (!losses.empty() && ended.exitStatus == EXIT_SUCCESS) {
        ended.exitStatus = exitOwnFailure;
    }
}

Ended runOnBoard(const board::Board& board, const Arguments& arguments, std::int64_t start) {
    const Logs logs(arguments.logs, start);
    Environment environment = logs.environment();

    const Inherited inherited = prepareProcess();
    const PrivateDirectory directory;
    writeImage(board, directory.file(imageFileName));
    sd_event* loop = nullptr;
    if (const int result = sd_event_new(&loop); result < 0) {
        throw std::system_error(-result, std::generic_category(), "cannot make an event loop");
    }
    const std::unique_ptr<sd_event, decltype(&sd_event_unref)> owned(loop, sd_event_unref);
    const ServiceSide service(loop, directory.path(), board, logs.bus());
    const I2cSide i2c(loop, directory.path(), board, logs.i2c(), arguments.kernelBuses);

    environment.emplace_back("LD_LIBRARY_PATH", librarySearchPath(directory.path()));
    environment.emplace_back(boardDirectoryVariable, directory.path());
    add(environment, service.environment());
    add(environment, i2c.environment());

    const Started command =
        startCommand(arguments.command, environment, inherited, i2c.busesInKernel());
    if (command.pid < 0) {
        (void)std::fprintf(stderr, "zolt_sim: %s: %s\n", arguments.command[0],
                           std::generic_category().message(command.failure.error).c_str());
        return {.exitStatus = command.failure.exitStatus};
    }
    Ended ended = superviseCommand(loop, command.pid, inherited);
    tellLosses(logs.losses(directory.file(imageFileName)), ended);
    return ended;
}

std::vector<std::string> errorsOf(const char* board) {
    try {
        return board::errorsInFile(board::boardFile(board), board::boardFile);
    } catch (const board::BoardError& error) { // there is no such board
        return {error.what()};
    }
}

// Prints the errors of each board. Returns the exit status.
int checkBoards(char* const* boards) {
    int status = EXIT_SUCCESS;
    for (; *boards != nullptr; ++boards) {
        for (const std::string& error : errorsOf(*boards)) {
            (void)std::fprintf(stderr, "zolt_sim: %s\n", error.c_str());
            status = exitWrongInput;
        }
    }
    return status;
}

void print(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) == EOF) {
        throw std::system_error(errno, std::generic_category(), "standard output");
    }
}

// Prints the named lists, or all. If there are several, each line starts with the name of its list.
void printLists(char* const* wanted, const std::string& board) {
    std::vector<std::string> names;
    for (; *wanted != nullptr; ++wanted) {
        names.emplace_back(*wanted);
    }
    if (names.empty()) {
        names = listNames();
    }
    std::string text;
    for (const std::string& name : names) {
        for (const std::string& line : listNamed(name, board)) {
            text.append(names.size() == 1 ? "" : name + "\t").append(line).append("\n");
        }
    }
    print(text);
}

int run(int argc, char* argv[], std::int64_t start) {
    const Arguments arguments = parseArguments(argc, argv);
    if (arguments.help) {
        print(usage());
        return EXIT_SUCCESS;
    }
    if (arguments.version) {
        print("zolt_sim " PROJECT_VERSION "\n");
        return EXIT_SUCCESS;
    }
    if (arguments.list) {
        printLists(arguments.command, arguments.board);
        return EXIT_SUCCESS;
    }
    if (arguments.check) {
        return checkBoards(arguments.command);
    }
    const Ended ended = runOnBoard(boardFor(arguments), arguments, start);
    if (ended.interrupted) {
        endByInterrupt();
    }
    return ended.exitStatus;
}

} // namespace

int main(int argc, char* argv[]) {
    const std::int64_t start = monotonicTime();
    holdStandardStreams();
    try {
        return run(argc, argv, start);
    } catch (const ArgumentsError& error) {
        (void)std::fprintf(stderr, "zolt_sim: %s\n'zolt_sim --help' tells more.\n", error.what());
        return exitWrongInput;
    } catch (const board::BoardError& error) {
        (void)std::fprintf(stderr, "zolt_sim: %s\n", error.what());
        return exitWrongInput;
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "zolt_sim: %s\n", error.what());
        return exitOwnFailure;
    }
}
