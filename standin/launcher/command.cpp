#include "standin/launcher/command.h"

#include "standin/launcher/machine_buses.h"
#include "standin/launcher/pipe.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <system_error>
#include <systemd/sd-event.h>
#include <unistd.h>

namespace standin {

namespace {

constexpr std::array passedOn{SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2};

void checkResult(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), what);
    }
}

// The child's report of why it did not become the command.
struct Obstacle {
    int error;                      // errno; 0: there is none
    std::array<char, 1024> buses{}; // the step that failed to shut off the machine's buses
};

[[noreturn]] void giveUp(int failure, const Obstacle& obstacle) {
    (void)!write(failure, &obstacle, sizeof obstacle);
    _exit(EXIT_FAILURE);
}

// Waits in the child until the parent holds signals back. A signal that comes earlier ends the
// parent, and the child with it.
void awaitPermission(const Pipe& permission) {
    close(permission.writeEnd);
    char byte = 0;
    ssize_t count = 0;
    while ((count = read(permission.readEnd, &byte, 1)) < 0 && errno == EINTR) {
    }
    if (count != 1) {
        _exit(EXIT_FAILURE);
    }
}

void holdSignalsBack() {
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGCHLD);
    for (const int signal : passedOn) {
        sigaddset(&held, signal);
    }
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
}

[[noreturn]] void become(char* const* command, const Environment& additions,
                         const Inherited& inherited, const std::set<std::uint32_t>& boardBuses,
                         pid_t parent, int failure) {
    try {
        keepFromMachineBuses(boardBuses);
    } catch (const std::system_error& error) {
        Obstacle obstacle{.error = error.code().value()};
        std::string(error.what()).copy(obstacle.buses.data(), obstacle.buses.size() - 1);
        giveUp(failure, obstacle);
    }
    prctl(PR_SET_PDEATHSIG, SIGHUP);
    if (getppid() != parent) { // the parent ended before prctl()
        _exit(EXIT_FAILURE);
    }
    for (const auto& [name, value] : additions) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): a process after fork() has one thread.
        setenv(name.c_str(), value.c_str(), 1);
    }
    umask(inherited.umask);
    sigaction(SIGCHLD, &inherited.children, nullptr);
    sigaction(SIGXFSZ, &inherited.longFile, nullptr);
    execvp(command[0], command);
    giveUp(failure, {.error = errno});
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

int noteEnd(sd_event_source* source, const siginfo_t* info, void* ended) {
    const bool exited = info->si_code == CLD_EXITED;
    *static_cast<Ended*>(ended) = {
        .exitStatus = exited ? info->si_status : 128 + info->si_status,
        .interrupted = !exited && info->si_status == SIGINT,
    };
    return sd_event_exit(sd_event_source_get_event(source), 0);
}

struct UnrefSource {
    void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};

} // namespace

void holdStandardStreams() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            (void)open("/dev/null", O_RDWR | O_CLOEXEC); // takes the lowest free number: this one
        }
    }
}

Inherited prepareProcess() {
    Inherited inherited{.umask = umask(S_IRWXG | S_IRWXO)};
    pthread_sigmask(SIG_SETMASK, nullptr, &inherited.signals);
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &standard, &inherited.children);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &ignore, &inherited.longFile);
    return inherited;
}

Started startCommand(char* const* command, const Environment& additions, const Inherited& inherited,
                     const std::set<std::uint32_t>& boardBuses) {
    const Pipe failure;
    const Pipe permission;
    const pid_t parent = getpid();
    Started started{.pid = fork()};
    if (started.pid == 0) {
        awaitPermission(permission);
        become(command, additions, inherited, boardBuses, parent, failure.writeEnd);
    }
    Obstacle obstacle{.error = started.pid < 0 ? errno : 0};
    holdSignalsBack();
    (void)!write(permission.writeEnd, "", 1);
    close(permission.readEnd);
    close(permission.writeEnd);
    close(failure.writeEnd);
    if (started.pid > 0 && read(failure.readEnd, &obstacle, sizeof obstacle) != sizeof obstacle) {
        obstacle.error = 0; // exec succeeded and closed the pipe
    }
    close(failure.readEnd);
    if (obstacle.error != 0 && started.pid > 0) {
        waitpid(started.pid, nullptr, 0);
    }
    if (obstacle.error != 0 && obstacle.buses.front() != '\0') {
        throw std::runtime_error(
            std::string("cannot keep the command away from the machine's I2C buses: ") +
            obstacle.buses.data());
    }
    if (obstacle.error != 0) {
        started = {.failure = {obstacle.error == ENOENT ? 127 : 126, obstacle.error}};
    }
    return started;
}

Ended superviseCommand(sd_event* loop, pid_t pid, const Inherited& inherited) {
    for (const int signal : passedOn) {
        checkResult(sd_event_add_signal(loop, nullptr, signal, passOn, &pid),
                    "cannot watch for signals");
    }
    Ended ended;
    sd_event_source* raw = nullptr;
    checkResult(sd_event_add_child(loop, &raw, pid, WEXITED, noteEnd, &ended),
                "cannot watch the command");
    const std::unique_ptr<sd_event_source, UnrefSource> child(raw);
    // Handle pending signals before the child's exit event.
    checkResult(sd_event_source_set_priority(raw, SD_EVENT_PRIORITY_NORMAL + 1),
                "cannot watch the command");
    checkResult(sd_event_loop(loop), "the event loop failed");
    pthread_sigmask(SIG_SETMASK, &inherited.signals, nullptr);
    return ended;
}

void endByInterrupt() {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    (void)signal(SIGINT, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr);
    (void)raise(SIGINT);
    _exit(128 + SIGINT);
}

} // namespace standin
