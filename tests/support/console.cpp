#include "tests/support/console.h"

#include "console/output.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <unistd.h>

namespace zolt::test {

namespace {

// Replaces a standard descriptor by an anonymous file until the object is destroyed.
class Redirected {
public:
    Redirected(int descriptor, std::string_view content)
        : descriptor_(descriptor), saved_(dup(descriptor)), file_(memfd_create("console", 0)) {
        if (saved_ < 0 || file_ < 0 ||
            ::write(file_, content.data(), content.size()) !=
                static_cast<ssize_t>(content.size())) {
            std::abort();
        }
        lseek(file_, 0, SEEK_SET);
        dup2(file_, descriptor_);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;
    ~Redirected() {
        dup2(saved_, descriptor_);
        close(saved_);
        close(file_);
    }

    [[nodiscard]] std::string content() const {
        std::string text(static_cast<std::size_t>(lseek(file_, 0, SEEK_END)), '\0');
        if (pread(file_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
            std::abort();
        }
        return text;
    }

private:
    int descriptor_;
    int saved_;
    int file_;
};

void forgetInput() {
    __fpurge(stdin);
    clearerr(stdin);
}

} // namespace

std::string outputOf(const std::function<void()>& operation, std::string_view input) {
    flush();
    forgetInput();
    const Redirected in(STDIN_FILENO, input);
    const Redirected out(STDOUT_FILENO, "");
    operation();
    flush();
    forgetInput();
    return out.content();
}

std::string handedOut() {
    const off_t size = lseek(STDOUT_FILENO, 0, SEEK_CUR); // none for a pipe or a terminal
    std::string text(static_cast<std::size_t>(std::max<off_t>(size, 0)), '\0');
    const ssize_t length = pread(STDOUT_FILENO, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return text;
}

} // namespace zolt::test
