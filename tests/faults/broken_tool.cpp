// A tool for the tests of the fault matrix. It reports the control registers of module class 12, as
// the contract demands. The environment variable BROKEN names a defect that it has then.
#include "platform/cpld_driver.h"
#include "platform/hal.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

struct Register {
    const char* name;
    std::uint32_t address;
    unsigned shift;
    const char* label;
};

constexpr Register registers[] = {
    {"REMOTE_FAN_PWR_POLICY", 0x2200, 6, "RFC Power Policy"},
    {"REMOTE_FAN_PICPWR_INDEX", 0x2201, 0, "RFC PICPWR Index"},
};

std::string text; // not yet printed
void* volatile lost = nullptr;

bool has(std::string_view defect) {
    const char* const broken = std::getenv("BROKEN");
    return broken != nullptr && broken == defect;
}

void print() {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written >= 0) {
            text.erase(0, static_cast<std::size_t>(written));
        } else if ((errno != EINTR && errno != EAGAIN) || has("gives up")) {
            text.clear();
        }
    }
}

// What the tool does wrong once a named read has failed.
void breakOnFailure() {
    if (has("crash")) {
        std::abort();
    }
    while (has("hang")) {
        pause();
    }
    if (has("memory")) {
        lost = std::malloc(77);
    }
    if (has("descriptor")) {
        (void)open("/dev/null", O_RDONLY);
    }
    if (has("complaint")) {
        (void)std::fputs("something went wrong\n", stderr);
    }
    if (has("status")) {
        print();
        std::exit(1);
    }
}

void report(const Register& shown) {
    std::vector<std::uint8_t> value;
    std::uint32_t size = 0;
    if (!has("late")) {
        print();
    }
    if (has("one call more")) {
        (void)ReadIO_Str(shown.name, value, &size);
        value.clear();
    }
    if (ReadIO_Str(shown.name, value, &size) != 0) {
        value.assign(1, 0);
        breakOnFailure();
        const std::int32_t status = cpld_read_device(value.data(), shown.address, 1);
        value[0] = static_cast<std::uint8_t>(value[0] >> shown.shift);
        if (status != 0) {
            text.append(has("wrong text") ? "Cannot read " : "Unable to read ")
                .append(shown.name)
                .append(" using CPLD raw API, status ")
                .append(std::to_string(has("wrong status") ? 1 : status))
                .append("\n");
            return;
        }
    }
    if (!value.empty() || has("reads too far")) {
        text.append(shown.label).append(" = ").append(std::to_string(*value.data())).append("\n");
    }
}

} // namespace

int main() {
    try {
        text.reserve(1024);
        for (const Register& shown : registers) {
            report(shown);
        }
    } catch (const std::exception& error) {
        text.append("Exception : ").append(error.what()).append("\n");
        if (has("swallows")) {
            text.clear();
        }
    }
    print();
    text.shrink_to_fit();
    return 0;
}
