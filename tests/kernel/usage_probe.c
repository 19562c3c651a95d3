// Runs a command, and prints what it used: its peak memory in KiB, its page faults, and the
// instructions that its programs executed outside the kernel. Arguments: the command.
#include <linux/perf_event.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// Counts the instructions of this process's future children; -1 when the machine cannot.
static int openCounter(void) {
    struct perf_event_attr counter = {
        .type = PERF_TYPE_HARDWARE,
        .size = sizeof(counter),
        .config = PERF_COUNT_HW_INSTRUCTIONS,
        .disabled = 1,
        .inherit = 1,
        .enable_on_exec = 1,
        .exclude_kernel = 1,
        .exclude_hv = 1,
    };
    return (int)syscall(SYS_perf_event_open, &counter, 0, -1, -1, PERF_FLAG_FD_CLOEXEC);
}

int main(int argc, char* argv[]) {
    struct rusage usage;
    uint64_t instructions = 0;
    int status = 0;
    if (argc < 2) {
        return EXIT_FAILURE;
    }
    const int events = openCounter();
    const pid_t child = fork();
    if (child == 0) {
        execvp(argv[1], argv + 1);
        _exit(127);
    }
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status)) {
        return EXIT_FAILURE;
    }
    if (events < 0 || read(events, &instructions, sizeof(instructions)) != sizeof(instructions)) {
        instructions = 0;
    }
    (void)fprintf(stderr, "usage: %ld %ld %llu\n", usage.ru_maxrss,
                  usage.ru_minflt + usage.ru_majflt, (unsigned long long)instructions);
    return WEXITSTATUS(status);
}
