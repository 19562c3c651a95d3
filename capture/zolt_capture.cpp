// zolt_capture: reads what a board shows, and writes it as a board description.
#include "capture/arguments.h"
#include "capture/date.h"
#include "capture/describe.h"
#include "capture/mask.h"
#include "capture/output_file.h"
#include "capture/read_board.h"
#include "console/standard_streams.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace capture;

enum ExitStatus : int { allRead = 0, somethingRefused = 1, nothingWritten = 2 };

constexpr std::size_t mostShown = 20; ///< failures on standard error

// Shows on a terminal how far the program is, on one line.
class ProgressLine {
public:
    ProgressLine() : isTerminal_(isatty(STDERR_FILENO) != 0) {}
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { clear(); }

    void show(std::string_view part, unsigned done, unsigned all) {
        if (isTerminal_) {
            (void)std::fprintf(stderr, "\r\033[Kreading %.*s: %u of %u",
                               static_cast<int>(part.size()), part.data(), done, all);
            isShown_ = true;
        }
    }

    void clear() {
        if (isShown_) {
            (void)std::fputs("\r\033[K", stderr);
            isShown_ = false;
        }
    }

private:
    bool isTerminal_;
    bool isShown_ = false;
};

void complain(std::string_view text) {
    (void)std::fprintf(stderr, "zolt_capture: %.*s\n", static_cast<int>(text.size()), text.data());
}

void showFailures(const std::vector<std::string>& failures) {
    if (failures.empty()) {
        return;
    }
    complain(std::to_string(failures.size())
                 .append(failures.size() == 1 ? " read" : " reads")
                 .append(" failed:"));
    for (std::size_t i = 0; i < std::min(mostShown, failures.size()); ++i) {
        (void)std::fprintf(stderr, "  %s\n", failures[i].c_str());
    }
    if (failures.size() > mostShown) {
        (void)std::fprintf(stderr, "  and %zu more\n", failures.size() - mostShown);
    }
}

Observation readWithProgress(const Arguments& arguments) {
    ProgressLine line;
    Observation observation =
        readBoard(arguments.properties, [&](std::string_view part, unsigned done, unsigned all) {
            line.show(part, done, all);
        });
    return arguments.mask ? masked(std::move(observation)) : std::move(observation);
}

int run(const Arguments& arguments, bool hasStandardOutput) {
    const auto date = dateOf(std::getenv("SOURCE_DATE_EPOCH"));
    if (!date) {
        throw ArgumentsError("SOURCE_DATE_EPOCH is not a number of seconds");
    }
    if (arguments.output.empty() && !hasStandardOutput) {
        throw OutputError("standard output is closed");
    }
    // The file is created first: a directory that cannot be written should cost no time.
    std::optional<OutputFile> file;
    if (!arguments.output.empty()) {
        file.emplace(arguments.output, arguments.force);
    }
    const Observation observation = readWithProgress(arguments);
    const std::string description = describe(
        observation, {.date = *date, .version = PROJECT_VERSION, .masked = arguments.mask});
    if (file) {
        file->finish(description);
    } else {
        writeToStandardOutput(description);
    }
    const std::vector<std::string> failures = failuresIn(observation);
    showFailures(failures);
    return failures.empty() ? allRead : somethingRefused;
}

} // namespace

int main(int argc, char* argv[]) {
    const bool hasStandardOutput = zolt::isOpen(STDOUT_FILENO);
    zolt::holdStandardStreams();
    // A write that fails is reported, and removes the temporary file.
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGXFSZ, SIG_IGN);
    try {
        const Arguments arguments = parseArguments(argc, argv);
        if (arguments.help || arguments.version) {
            writeToStandardOutput(arguments.help ? usage() : "zolt_capture " PROJECT_VERSION "\n");
            return allRead;
        }
        return run(arguments, hasStandardOutput);
    } catch (const ArgumentsError& error) {
        complain(error.what());
        (void)std::fputs("Try 'zolt_capture --help'.\n", stderr);
    } catch (const std::exception& error) {
        complain(error.what());
    } catch (...) {
        complain("a library of the platform threw an exception of an unknown type");
    }
    return nothingWritten;
}
