// Runs the tool once for each cell, in a fork made before main(): neither the loader nor the board
// starts anew.
//
// The program reads orders from standard input. An order is one line of fields separated by tabs:
//
//     first call to fail, number of calls to fail, way, amount, allocation to fail, seconds,
//     answers with "," for each line's end, arguments of the tool with " " between them
//
// It answers each order with a line: the wait status of the run. FAULTS names the directory that
// receives the log, the output ("out") and the complaints ("err") of the last run.
#include "tests/faults/cell.h"
#include "tests/faults/console.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Main = int(int, char**, char**);

constexpr std::size_t logSize = std::size_t{16} << 20;
constexpr int mostDescriptors = 64;

Main* toolMain = nullptr;

struct Order {
    faults::Cell cell;
    unsigned seconds = 0;
    std::string answers;
    std::string arguments;
};

[[noreturn]] void stop(const char* complaint) {
    std::perror(complaint);
    _exit(120);
}

std::string place(const char* name) {
    const char* const directory = std::getenv("FAULTS");
    return std::string(directory == nullptr ? "." : directory) + "/" + name;
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char letter : text) {
        if (letter == separator) {
            parts.emplace_back();
        } else {
            parts.back().push_back(letter);
        }
    }
    return parts;
}

long number(const std::string& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}

bool nextOrder(Order& order) {
    order = {};
    static char* line = nullptr;
    static std::size_t room = 0;
    const ssize_t length = getline(&line, &room, stdin);
    if (length <= 0) {
        return false;
    }
    const auto fields = split(std::string(line, static_cast<std::size_t>(length) - 1), '\t');
    if (fields.size() != 8) {
        return false;
    }
    order.cell.call = number(fields[0]);
    order.cell.calls = number(fields[1]);
    fields[2].copy(order.cell.way, sizeof order.cell.way - 1);
    order.cell.amount = static_cast<int>(number(fields[3]));
    order.cell.allocation = number(fields[4]);
    order.seconds = static_cast<unsigned>(number(fields[5]));
    order.answers = fields[6];
    std::ranges::replace(order.answers, ',', '\n');
    order.arguments = fields[7];
    return true;
}

void redirect(const char* path, int flags, int descriptor) {
    const int file = open(path, flags, 0600);
    if (file < 0 || dup2(file, descriptor) < 0) {
        stop(path);
    }
    if (file != descriptor) {
        (void)close(file);
    }
}

unsigned long long openDescriptors() {
    unsigned long long open = 0;
    for (int descriptor = 0; descriptor < mostDescriptors; ++descriptor) {
        open |= fcntl(descriptor, F_GETFD) == -1 ? 0 : 1ULL << descriptor;
    }
    return open;
}

int runTool(const Order& order, char** environment) {
    redirect("/dev/null", O_RDONLY, STDIN_FILENO);
    redirect(place("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, STDOUT_FILENO);
    redirect(place("err").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, STDERR_FILENO);
    faults::cell = order.cell;
    faults::setAnswers(order.answers.c_str());
    std::vector<std::string> words{"zolt_test"};
    if (!order.arguments.empty()) {
        std::ranges::copy(split(order.arguments, ' '), std::back_inserter(words));
    }
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    const unsigned long long before = openDescriptors();
    (void)alarm(order.seconds);
    faults::startTool();
    const int status = toolMain(static_cast<int>(words.size()), pointers.data(), environment);
    {
        const faults::Quiet quiet;
        faults::logAllocationsLeft();
        faults::log("end\t%llu\t%ld\t%llx\t%d\n", static_cast<unsigned long long>(faults::printed),
                    faults::allocationsSoFar(), openDescriptors() & ~before, status);
    }
    return status;
}

int serve(int /*unused*/, char** /*unused*/, char** environment) {
    const int file = open(place("log").c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
    if (file < 0 || ftruncate(file, logSize) != 0) {
        stop("log");
    }
    void* const log = mmap(nullptr, logSize, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (log == MAP_FAILED) {
        stop("log");
    }
    (void)close(file);
    Order order;
    while (nextOrder(order)) {
        faults::beginLog(static_cast<char*>(log), logSize);
        const pid_t child = fork();
        if (child == 0) {
            return runTool(order, environment);
        }
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) != child) {
            stop("run");
        }
        std::printf("%d\n", status);
        (void)std::fflush(stdout);
    }
    return 0;
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the C library's function.
extern "C" int __libc_start_main(Main* main, int argc, char** argv, void (*init)(), void (*fini)(),
                                 void (*loaderFini)(), void* stackEnd) {
    toolMain = main;
    const auto real =
        faults::next<int(Main*, int, char**, void (*)(), void (*)(), void (*)(), void*)>(
            "__libc_start_main");
    return real(serve, argc, argv, init, fini, loaderFini, stackEnd);
}
// NOLINTEND(bugprone-reserved-identifier)
