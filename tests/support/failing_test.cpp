// Tests that fail, for first_failures_test.py.

#include <gtest/gtest.h>

#include <iostream>
#include <string>

class Failing : public testing::TestWithParam<int> {};

TEST_P(Failing, hasManyLines) {
    std::string lines;
    for (int line = 1; line <= 60; ++line) {
        lines += "line " + std::to_string(line) + "\n";
    }
    std::cout << "output of the code under test\n";
    FAIL() << lines;
}

INSTANTIATE_TEST_SUITE_P(Some, Failing, testing::Range(0, 10));

TEST(Passing, isNotShown) {
    SUCCEED() << "success";
}
