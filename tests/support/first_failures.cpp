// Repeats the first failures of a test program at the end of its output: Meson shows no more than
// the last 100 lines of the output, and standard error after standard output. A program with many
// tests would otherwise hide its first failure behind the tests that pass.

#include <cstddef>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

constexpr std::size_t mostLines = 90;
constexpr std::size_t mostLinesOfOne = 45;

class FirstFailures : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& test) override {
        test_ = std::string(test.test_suite_name()) + "." + test.name();
    }
    void OnTestPartResult(const testing::TestPartResult& result) override {
        if (result.failed()) {
            const std::string file = result.file_name() == nullptr ? "" : result.file_name();
            show("FAILED: " + test_ + "\n" + file + ":" + std::to_string(result.line_number()) +
                 "\n" + result.message());
        }
    }
    void OnTestProgramEnd(const testing::UnitTest& /*unused*/) override {
        if (isatty(STDERR_FILENO) == 0) { // a terminal shows everything
            std::cerr << shown_ << std::flush;
        }
    }

    void show(const std::string& failure) {
        std::istringstream lines(failure);
        std::string line;
        for (std::size_t of = 0; lines_ < mostLines && std::getline(lines, line); ++of, ++lines_) {
            if (of == mostLinesOfOne || lines_ == mostLines - 1) {
                shown_ += "(cut off; see testlog.txt)\n";
                ++lines_;
                return;
            }
            shown_ += line + "\n";
        }
    }

    std::string test_;
    std::string shown_;
    std::size_t lines_ = 0;
};

[[maybe_unused]] const bool registered = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new FirstFailures);
    return true;
}();

} // namespace
