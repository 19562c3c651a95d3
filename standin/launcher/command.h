// The command that runs on the board.
#pragma once

#include <csignal>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <systemd/sd-event.h>
#include <utility>
#include <vector>

namespace standin {

using Environment = std::vector<std::pair<std::string, std::string>>;

/// Why a command did not start, and what a shell would exit with.
struct NotStarted {
    int exitStatus; ///< 127 when there is no such command, else 126
    int error;      ///< errno of exec
};

struct Started {
    pid_t pid = -1;
    NotStarted failure{}; ///< when pid is -1
};

/// What a process takes over from the one that started it, and is to hand on unchanged.
struct Inherited {
    sigset_t signals{}; ///< blocked ones
    mode_t umask = 0;
};

/// Puts /dev/null, for this process alone, where the caller closed one of the standard streams: no
/// file that is opened later can be taken for one. The command finds them closed as they were.
void holdStandardStreams();

/// Makes this process fit to hold a board: the signals of superviseCommand() wait, and the files
/// that it makes are its own, whatever the caller's umask hides.
[[nodiscard]] Inherited prepareProcess();

/// Starts a command with additions to this process's environment. It is hung up should this
/// process end before it, and kept from the machine's I2C buses.
/// @throw std::system_error when it cannot be kept from them
[[nodiscard]] Started startCommand(char* const* command, const Environment& additions,
                                   const Inherited& inherited);

/// Runs an event loop until the command has ended. Signals that this process gets reach the
/// command; those of the terminal have reached it already.
/// @return the command's exit status, 128 + N when signal N ended it
[[nodiscard]] int superviseCommand(sd_event* loop, pid_t pid);

} // namespace standin
