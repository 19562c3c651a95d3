// The floor under the report of all PICPWRs. This program makes the report's platform calls in the
// same order, composes the text in one buffer, and writes the text before each call. The
// instructions that zolt_test takes beyond this program's are the cost of its structure. The
// program needs a board whose slots are all occupied and whose registers can all be read; on any
// other board it ends with exit status 1.
#include "bench/floor_text.h"
#include "platform/cpld_driver.h"
#include "platform/hal.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

struct Flag {
    std::string_view suffix;
    std::string_view label;
};

constexpr Flag flags[] = {
    {"_DBYP", " DBYP               = "},
    {"_DPEN", " DPEN               = "},
    {"_APEN", " APEN               = "},
    {"_ASTAT", " ASTAT              = "},
};

constexpr std::string_view dstatLines[] = {
    "",
    " DSTAT              = 01b\n",
    " DSTAT              = 10b\n",
    " DSTAT              = 11b\n",
};

class Report {
public:
    bool run() {
        std::array<char, 16> answer;
        text_.add("Enter the PICPWR ID: (Enter 0 for all PICPWRs)");
        if (!text_.handOut() || read(STDIN_FILENO, answer.data(), answer.size()) <= 0) {
            return false;
        }
        for (unsigned n = 1; n <= 63; ++n) {
            if (!addSlot(n)) {
                return false;
            }
        }
        return text_.handOut();
    }

private:
    bool readNamed(unsigned n, std::string_view suffix, std::size_t size) {
        std::array<char, 32> name;
        char* end = name.data() + std::string_view("PICPWR_").copy(name.data(), name.size());
        end = std::to_chars(end, end + 2, n).ptr;
        end += suffix.copy(end, suffix.size());
        std::uint32_t delivered = 0;
        value_.clear();
        return text_.handOut() && ReadIO_Str({name.data(), end}, value_, &delivered) == 0 &&
               value_.size() >= size;
    }

    void addHead(unsigned n) {
        text_.add("PICPWR ");
        text_.addTwoDigits(n);
    }

    bool addSlot(unsigned n) {
        if (!readNamed(n, "_DSTAT", 1) || value_[0] == 0 || value_[0] > 3) {
            return false;
        }
        text_.add("\n");
        addHead(n);
        text_.add(dstatLines[value_[0]]);
        for (const Flag& flag : flags) {
            if (!readNamed(n, flag.suffix, 1)) {
                return false;
            }
            addHead(n);
            text_.add(flag.label);
            text_.addDecimal(value_[0]);
            text_.add("\n");
        }
        return addModule(n) && addDsls(n);
    }

    bool addModule(unsigned n) {
        if (!readNamed(n, "_MOD_CLASS", 1)) {
            return false;
        }
        addHead(n);
        text_.add(" Module Class       = 0x");
        text_.addHexadecimalByte(value_[0]);
        text_.add("\n");
        if (!readNamed(n, "_MOD_CLASS_IDX", 1)) {
            return false;
        }
        addHead(n);
        text_.add(" Module Class Index = ");
        text_.addDecimal(value_[0]);
        text_.add("\n");
        if (!readNamed(n, "_PAYLOAD_OFFSET", 2)) {
            return false;
        }
        addHead(n);
        text_.add(" Payload Offset     = ");
        text_.addDecimal(static_cast<unsigned>(value_[0] | value_[1] << 8));
        text_.add("\n");
        return true;
    }

    bool addDsls(unsigned n) {
        for (unsigned k = 1; k <= 8; ++k) {
            std::uint8_t id = 0;
            if (!text_.handOut() || cpld_read_device(&id, 0x1000 + 14 * (n - 1) + 5 + k, 1) != 0) {
                return false;
            }
            addHead(n);
            text_.add(" DSL");
            text_.addDecimal(k);
            text_.add("_ID            = ");
            text_.addDecimal(id);
            text_.add("\n");
        }
        return true;
    }

    floor_program::Text text_;
    std::vector<std::uint8_t> value_;
};

} // namespace

int main() {
    Report report;
    return report.run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
