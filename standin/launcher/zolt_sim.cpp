// zolt_sim: runs a command on a described board.
//
// All files of a run lie in one private directory. The command finds the directory and the
// platform's libraries through its environment.
#include "board/board_loader.h"
#include "board/fault_order.h"
#include "board/message_text.h"
#include "standin/i2c_bus/server/bus_server.h"
#include "standin/image/image.h"
#include "standin/image/image_writer.h"
#include "standin/launcher/arguments.h"
#include "standin/launcher/command.h"
#include "standin/launcher/i2c_side.h"
#include "standin/launcher/loader_path.h"
#include "standin/launcher/places.h"
#include "standin/launcher/private_directory.h"
#include "standin/launcher/service_side.h"
#include "standin/lib/log_file.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
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
    board::Board board = board::loadBoard(boardFile(arguments.board), boardFile);
    for (const std::string& rule : arguments.faults) {
        try {
            board::orderFault(board, rule);
        } catch (const board::FaultRuleError& error) {
            throw ArgumentsError("--fault " + board::inQuotes(rule) + ": " + error.what());
        }
    }
    return board;
}

// Empties a log, or creates it with the caller's umask. The log stays open for the whole run, so
// that the reader of a named pipe gets everything.
Descriptor openLog(const std::string& path) {
    if (path.empty()) {
        return Descriptor();
    }
    Descriptor log(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (log.number() < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return log;
}

// Tells the command of a log. The path is absolute, because the command may change directories.
void addLog(Environment& environment, const char* variable, const std::string& path) {
    if (!path.empty()) {
        environment.emplace_back(variable, std::filesystem::absolute(path));
    }
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

Ended runOnBoard(const board::Board& board, const Arguments& arguments) {
    const std::array logs{openLog(arguments.debugLog), openLog(arguments.callLog),
                          openLog(arguments.i2cLog)};
    Environment environment;
    addLog(environment, debugLogVariable, arguments.debugLog);
    addLog(environment, callLogVariable, arguments.callLog);

    const Inherited inherited = prepareProcess();
    const PrivateDirectory directory;
    writeImage(board, directory.file(imageFileName));
    sd_event* loop = nullptr;
    if (const int result = sd_event_new(&loop); result < 0) {
        throw std::system_error(-result, std::generic_category(), "cannot make an event loop");
    }
    const std::unique_ptr<sd_event, decltype(&sd_event_unref)> owned(loop, sd_event_unref);
    const ServiceSide service(loop, directory.path(), board);
    const I2cSide i2c(loop, directory.path(), board, arguments.i2cLog);

    environment.emplace_back("LD_LIBRARY_PATH", librarySearchPath(directory.path()));
    environment.emplace_back(boardDirectoryVariable, directory.path());
    add(environment, service.environment());
    add(environment, i2c.environment());

    const Started command = startCommand(arguments.command, environment, inherited);
    if (command.pid < 0) {
        std::fprintf(stderr, "zolt_sim: %s: %s\n", arguments.command[0],
                     std::strerror(command.failure.error));
        return {.exitStatus = command.failure.exitStatus};
    }
    return superviseCommand(loop, command.pid, inherited);
}

// Prints the errors of each board. Returns the exit status.
int checkBoards(char* const* boards) {
    int status = EXIT_SUCCESS;
    for (; *boards != nullptr; ++boards) {
        for (const std::string& error : board::errorsInFile(boardFile(*boards), boardFile)) {
            std::fprintf(stderr, "zolt_sim: %s\n", error.c_str());
            status = exitWrongInput;
        }
    }
    return status;
}

int run(int argc, char* argv[]) {
    const Arguments arguments = parseArguments(argc, argv);
    if (arguments.help) {
        std::fputs(usage(), stdout);
        return EXIT_SUCCESS;
    }
    if (arguments.version) {
        std::puts("zolt_sim " PROJECT_VERSION);
        return EXIT_SUCCESS;
    }
    if (arguments.check) {
        return checkBoards(arguments.command);
    }
    const Ended ended = runOnBoard(boardFor(arguments), arguments);
    if (ended.interrupted) {
        endByInterrupt();
    }
    return ended.exitStatus;
}

} // namespace

int main(int argc, char* argv[]) {
    holdStandardStreams();
    try {
        return run(argc, argv);
    } catch (const ArgumentsError& error) {
        std::fprintf(stderr, "zolt_sim: %s\n'zolt_sim --help' tells more.\n", error.what());
        return exitWrongInput;
    } catch (const board::BoardError& error) {
        std::fprintf(stderr, "zolt_sim: %s\n", error.what());
        return exitWrongInput;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zolt_sim: %s\n", error.what());
        return exitOwnFailure;
    }
}
