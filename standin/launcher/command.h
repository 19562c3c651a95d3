// The command that runs on the board.
#pragma once

#include <csignal>
#include <cstdint>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <systemd/sd-event.h>
#include <utility>
#include <vector>

namespace standin {

using Environment = std::vector<std::pair<std::string, std::string>>;

/// Why a command did not start, and the exit status that a shell would give.
struct NotStarted {
    int exitStatus; ///< 127 when there is no such command, else 126
    int error;      ///< errno of exec
};

struct Started {
    pid_t pid = -1;
    NotStarted failure{}; ///< holds when pid is -1
};

/// How a command has ended.
struct Ended {
    int exitStatus = 0;       ///< 128 + N when signal N ended it
    bool interrupted = false; ///< SIGINT ended it
};

/// Attributes that this process inherited from its caller. The command gets them unchanged.
struct Inherited {
    sigset_t signals{}; ///< blocked signals
    mode_t umask = 0;
    struct sigaction children {}; ///< reaction to SIGCHLD
    struct sigaction longFile {}; ///< reaction to SIGXFSZ
};

/// Opens /dev/null in place of each standard stream that the caller closed. A file that is opened
/// later could otherwise get the number of a standard stream. The command finds the streams closed
/// as they were.
void holdStandardStreams();

/// Prepares this process to hold a board. Sets a umask that gives new files to this user alone,
/// and the default reaction to SIGCHLD: the kernel keeps no exit status for a process that ignores
/// this signal. A file that gets too long no longer ends this process; the write fails.
/// @return what the caller had set, for the command
[[nodiscard]] Inherited prepareProcess();

/// Starts a command with additions to this process's environment. The command cannot reach the
/// machine's I2C buses except those of the board, and it gets SIGHUP when this process ends first.
///
/// A signal that arrives before the command exists ends this process. Later signals stay blocked
/// until superviseCommand() passes them on.
/// @throw std::runtime_error when the machine's buses cannot be shut off, or for lack of a pipe
[[nodiscard]] Started startCommand(char* const* command, const Environment& additions,
                                   const Inherited& inherited,
                                   const std::set<std::uint32_t>& boardBuses);

/// Runs an event loop until the command has ended. Passes signals on to the command, except those
/// from the terminal that the kernel sends to the command itself. Afterwards signals again do to
/// this process what the caller set.
[[nodiscard]] Ended superviseCommand(sd_event* loop, pid_t pid, const Inherited& inherited);

/// Ends this process by SIGINT, so that a shell ends the loop that it runs.
[[noreturn]] void endByInterrupt();

} // namespace standin
