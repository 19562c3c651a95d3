// A file descriptor with an owner.
#pragma once

#include <unistd.h>

namespace standin {

/// Owns a file descriptor and closes it.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }

    [[nodiscard]] int number() const { return number_; }

private:
    int number_;
};

} // namespace standin
