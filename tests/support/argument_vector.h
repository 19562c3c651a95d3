// The arguments of a program, as its main() gets them.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace zolt::test {

/// Calls a function with the number of words and a pointer to them. A null pointer follows the
/// words.
template <typename Function>
auto withArguments(std::vector<std::string> words, Function function) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    return function(static_cast<int>(words.size()), pointers.data());
}

} // namespace zolt::test
