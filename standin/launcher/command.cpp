#include "standin/launcher/command.h"

#include "standin/launcher/machine_buses.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <system_error>
#include <systemd/sd-event.h>
#include <unistd.h>

namespace standin {

namespace {

constexpr std::array passedOn{SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2};

void check(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), what);
    }
}

// The child's report of why it did not become the command.
struct Obstacle {
    bool isBuses; ///< true: the machine's buses could not be shut off; false: exec failed
    int error;
};

[[noreturn]] void giveUp(int failure, const Obstacle& obstacle) {
    (void)!write(failure, &obstacle, sizeof obstacle);
    _exit(EXIT_FAILURE);
}

[[noreturn]] void become(char* const* command, const Environment& additions,
                         const Inherited& inherited, pid_t parent, int failure) {
    try {
        keepFromMachineBuses();
    } catch (const std::system_error& error) {
        giveUp(failure, {true, error.code().value()});
    }
    prctl(PR_SET_PDEATHSIG, SIGHUP);
    if (getppid() != parent) { // the parent ended before prctl()
        _exit(EXIT_FAILURE);
    }
    for (const auto& [name, value] : additions) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    umask(inherited.umask);
    sigprocmask(SIG_SETMASK, &inherited.signals, nullptr);
    execvp(command[0], command);
    giveUp(failure, {false, errno});
}

// The kernel sends a signal of the keyboard to the command as well as to this process. It tells the
// leader of the session alone that the terminal has hung up.
bool reachesCommand(const signalfd_siginfo& info) {
    const bool isHangUp = info.ssi_signo == SIGHUP && getsid(0) == getpid();
    return info.ssi_code == SI_KERNEL && !isHangUp;
}

int passOn(sd_event_source* /*source*/, const signalfd_siginfo* info, void* pid) {
    if (reachesCommand(*info)) {
        return 0;
    }
    const pid_t command = *static_cast<pid_t*>(pid);
    kill(command, static_cast<int>(info->ssi_signo));
    if (info->ssi_signo == SIGHUP && info->ssi_code == SI_KERNEL) {
        kill(command, SIGCONT); // as the kernel does: a stopped process takes no hangup
    }
    return 0;
}

int noteEnd(sd_event_source* source, const siginfo_t* info, void* /*unused*/) {
    const int status = info->si_code == CLD_EXITED ? info->si_status : 128 + info->si_status;
    return sd_event_exit(sd_event_source_get_event(source), status);
}

} // namespace

void holdStandardStreams() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            (void)open("/dev/null", O_RDWR | O_CLOEXEC); // takes the lowest free number: this one
        }
    }
}

Inherited prepareProcess() {
    sigset_t waiting;
    sigemptyset(&waiting);
    sigaddset(&waiting, SIGCHLD);
    for (const int signal : passedOn) {
        sigaddset(&waiting, signal);
    }
    Inherited inherited{.umask = umask(S_IRWXG | S_IRWXO)};
    sigprocmask(SIG_BLOCK, &waiting, &inherited.signals);
    return inherited;
}

Started startCommand(char* const* command, const Environment& additions,
                     const Inherited& inherited) {
    std::array<int, 2> failure{};
    if (pipe2(failure.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    const pid_t parent = getpid();
    Started started{.pid = fork()};
    if (started.pid == 0) {
        become(command, additions, inherited, parent, failure[1]);
    }
    close(failure[1]);
    Obstacle obstacle{false, errno};
    if (started.pid > 0 && read(failure[0], &obstacle, sizeof obstacle) != sizeof obstacle) {
        obstacle = {}; // exec succeeded and closed the pipe
    }
    close(failure[0]);
    if (obstacle.error != 0 && started.pid > 0) {
        waitpid(started.pid, nullptr, 0);
    }
    if (obstacle.isBuses) {
        throw std::system_error(obstacle.error, std::generic_category(),
                                "cannot keep the command away from the machine's I2C buses");
    }
    if (obstacle.error != 0) {
        started = {.failure = {obstacle.error == ENOENT ? 127 : 126, obstacle.error}};
    }
    return started;
}

int superviseCommand(sd_event* loop, pid_t pid) {
    for (const int signal : passedOn) {
        check(sd_event_add_signal(loop, nullptr, signal, passOn, &pid), "cannot watch for signals");
    }
    check(sd_event_add_child(loop, nullptr, pid, WEXITED, noteEnd, nullptr),
          "cannot watch the command");
    const int status = sd_event_loop(loop);
    check(status, "the event loop failed");
    return status;
}

} // namespace standin
