// Runs code against a console of the test's own.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace zolt::test {

/// What @p operation prints to standard output when standard input holds @p input and then ends.
[[nodiscard]] std::string outputOf(const std::function<void()>& operation,
                                   std::string_view input = "");

/// The part of it that has been handed out so far, while the operation still runs.
[[nodiscard]] std::string handedOut();

} // namespace zolt::test
