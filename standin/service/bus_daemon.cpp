#include "standin/service/bus_daemon.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace standin {

namespace {

// A D-Bus address writes all other bytes as %XX. The result is safe in XML, too.
std::string escaped(const std::string& path) {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::string_view plain =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-_/.";
    std::string text;
    for (const char c : path) {
        if (plain.contains(c)) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text.append({'%', digits[byte >> 4], digits[byte & 0xF]});
        }
    }
    return text;
}

// Everybody may do everything that `policy` does not forbid. The limits let the largest object tree
// pass.
std::string configuration(const std::string& address, std::string_view policy) {
    return std::string("<busconfig>\n <listen>")
        .append(address)
        .append("</listen>\n"
                " <auth>EXTERNAL</auth>\n"
                " <policy context=\"default\">\n"
                "  <allow user=\"*\"/>\n"
                "  <allow own=\"*\"/>\n"
                "  <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
                "  <allow eavesdrop=\"true\"/>\n")
        .append(policy)
        .append(" </policy>\n"
                " <limit name=\"max_incoming_bytes\">1000000000</limit>\n"
                " <limit name=\"max_outgoing_bytes\">1000000000</limit>\n"
                " <limit name=\"max_message_size\">1000000000</limit>\n"
                "</busconfig>\n");
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path);
    if (!(file << text << std::flush)) {
        throw std::system_error(errno, std::generic_category(), path.string());
    }
}

// How the daemon ended, by the status of waitpid().
std::string endOf(int status) {
    if (WIFEXITED(status)) {
        return "it ended with status " + std::to_string(WEXITSTATUS(status));
    }
    const int signal = WTERMSIG(status);
    return signal == SIGKILL ? "it was killed, or it closed its output"
                             : "signal " + std::to_string(signal) + " ended it";
}

// Says why the daemon did not start: with its own error output, else with the failed step of its
// start or with its end.
std::string complaint(const std::filesystem::path& log, const std::string& failedStep, int status) {
    std::ifstream file(log);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    text.erase(text.find_last_not_of('\n') + 1);
    if (text.empty()) {
        text = failedStep.empty() ? endOf(status) : failedStep;
    }
    return "dbus-daemon does not start: " + text;
}

// Runs in the child after fork(), where only certain calls are safe.
[[noreturn]] void become(const char* configurationFile, const char* log, int addressPipe,
                         pid_t parent) {
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The daemon prints its address to standard output, and complaint() reads its error output. The
    // daemon holds no stream of the caller's open.
    const int input = open("/dev/null", O_RDONLY);
    const int errors = open(log, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (getppid() == parent && dup2(input, STDIN_FILENO) >= 0 &&
        dup2(addressPipe, STDOUT_FILENO) >= 0 && dup2(errors, STDERR_FILENO) >= 0) {
        execlp("dbus-daemon", "dbus-daemon", configurationFile, "--nofork", "--nopidfile",
               "--nosyslog", "--print-address=1", nullptr);
    }
    const char* const reason =
        errno == ENOENT ? "no directory of PATH has it" : strerrordesc_np(errno);
    (void)!write(addressPipe, reason, std::strlen(reason));
    _exit(127);
}

enum class Start { listens, ended, late };

// Waits until the daemon prints a line, its address. What it prints is added to @p output.
Start startOf(int descriptor, std::chrono::milliseconds patience, std::string& output) {
    using std::chrono::steady_clock;
    const steady_clock::time_point end = steady_clock::now() + patience;
    std::array<char, 256> piece;
    while (true) {
        pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
        const int ready = left.count() < 0 ? 0 : poll(&waiting, 1, static_cast<int>(left.count()));
        if (ready == 0) {
            return Start::late;
        }
        const ssize_t count = ready < 0 ? -1 : read(descriptor, piece.data(), piece.size());
        if (count > 0) {
            output.append(piece.data(), static_cast<std::size_t>(count));
        }
        if (output.ends_with('\n')) {
            return Start::listens;
        }
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return Start::ended;
        }
    }
}

} // namespace

BusDaemon::BusDaemon(const std::filesystem::path& directory, std::string_view policy,
                     std::chrono::milliseconds patience)
    : address_("unix:path=" + escaped((directory / "bus").string())) {
    const std::filesystem::path file = directory / "bus.conf";
    writeFile(file, configuration(address_, policy));
    const std::filesystem::path log = directory / "bus.log";
    const std::string option = "--config-file=" + file.string();

    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        become(option.c_str(), log.c_str(), pipe[1], parent);
    }
    const int failure = errno;
    close(pipe[1]);
    // The daemon prints its address once it listens. address_ lacks the daemon's identifier, so it
    // also fits a daemon that is started later in the same place.
    std::string output;
    const Start start = process_ > 0 ? startOf(pipe[0], patience, output) : Start::ended;
    close(pipe[0]);
    if (process_ < 0) {
        throw std::system_error(failure, std::generic_category(), "cannot start a process");
    }
    if (start == Start::late) {
        stop();
        throw std::runtime_error("dbus-daemon has not printed its address within " +
                                 std::to_string(patience.count()) + " ms");
    }
    if (start == Start::ended) {
        throw std::runtime_error(complaint(log, output, stop()));
    }
}

int BusDaemon::stop() {
    int status = 0;
    if (process_ > 0) {
        // The daemon has nothing to tidy up: its files lie in the caller's directory.
        kill(process_, SIGKILL);
        while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
        }
        process_ = -1;
    }
    return status;
}

} // namespace standin
