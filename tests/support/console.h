// Runs code with standard input and output in the hands of the test.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace zolt::test {

/// Runs @p operation with @p input as its whole standard input. Returns its standard output.
[[nodiscard]] std::string outputOf(const std::function<void()>& operation,
                                   std::string_view input = "");

/// The part of it that has been handed out so far, while the operation still runs.
[[nodiscard]] std::string handedOut();

} // namespace zolt::test
