// zolt_board: shows, checks and compares board descriptions. It needs no board and no stand-in.
#include "console/standard_streams.h"
#include "zolt_board/arguments.h"
#include "zolt_board/output.h"
#include "zolt_board/verb.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <unistd.h>

namespace {

using namespace zolt_board;

void complain(const char* text) {
    (void)std::fprintf(stderr, "zolt_board: %s\n", text);
}

int run(const Arguments& arguments) {
    if (arguments.help || arguments.version) {
        Output output{.text = arguments.help ? usage(arguments.verb)
                                             : "zolt_board " PROJECT_VERSION "\n"};
        print(output);
        return nothingFound;
    }
    Output output = standardOutput(arguments.colour);
    const int status = arguments.verb->run(arguments, output);
    print(output);
    return status;
}

} // namespace

int main(int argc, char* argv[]) {
    const bool hasStandardOutput = zolt::isOpen(STDOUT_FILENO);
    zolt::holdStandardStreams();
    (void)std::signal(SIGXFSZ, SIG_IGN); // the write fails instead, and is told
    try {
        const Arguments arguments = parseArguments(argc, argv);
        if (!hasStandardOutput) {
            complain("standard output is closed");
            return failed;
        }
        return run(arguments);
    } catch (const ArgumentsError& error) {
        complain(error.what());
        (void)std::fputs("Try 'zolt_board --help'.\n", stderr);
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return failed;
}
