// The floor under the report of the riser slot mapping. This program reads the blob once by name,
// composes the text in one buffer, and writes the text at the end. It needs a complete blob with
// links of known types; on any other blob it ends with exit status 1.
#include "bench/floor_text.h"
#include "platform/hal.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace {

class Report {
public:
    bool run() {
        std::uint32_t delivered = 0;
        if (ReadIO_Str("RISER_SLOT_AMP_BLOB", blob_, &delivered) != 0 || blob_.size() < 60) {
            return false;
        }
        text_.add("\n\nCONFIG DETAILS :\n\n");
        addByte("RISER CONFIG# MAJOR            = ", 0);
        addByte("RISER CONFIG# MINOR            = ", 1);
        addText("RISER CONFIG DESCRIPTION       = ", 2, 48);
        text_.add("\n\nNON PICPWR SLOT INFORMATION :\n\n");
        addByte("KARN CARD PRESENCE             = ", 50);
        addHexadecimal("KARN HWUID MSB                 = 0x", 51);
        addHexadecimal("KARN HWUID LSB                 = 0x", 52);
        addByte("KARN SLOT NUMBER               = ", 53);
        addByte("KARN SLOT TYPE                 = ", 54);
        addByte("EMBEDDED OCP NIC CARD PRESENCE = ", 55);
        addByte("EMBEDDED OCP NIC SLOT NUMBER   = ", 56);
        addByte("EMBEDDED OCP NIC SLOT TYPE     = ", 57);
        addByte("NUMBER OF PICPWR SLOT DETAILS  = ", 58);
        std::size_t at = 59;
        for (unsigned record = 1; record <= blob_[58]; ++record) {
            if (!addRecord(record, at)) {
                return false;
            }
            at += blob_[at + 1];
        }
        if (at >= blob_.size()) {
            return false;
        }
        addByte("\n\nCHECKSUM                       = ", at);
        text_.add("\n\n");
        return text_.handOut();
    }

private:
    void addNumber(unsigned value) {
        text_.addDecimal(value);
        text_.add("\n");
    }
    void addByte(std::string_view label, std::size_t at) {
        text_.add(label);
        addNumber(blob_[at]);
    }
    void addHexadecimal(std::string_view label, std::size_t at) {
        text_.add(label);
        text_.addHexadecimalByte(blob_[at]);
        text_.add("\n");
    }
    void addText(std::string_view label, std::size_t at, std::size_t length) {
        const auto* const field = reinterpret_cast<const char*>(blob_.data() + at);
        text_.add(label);
        text_.add({field, strnlen(field, length)});
        text_.add("\n");
    }
    void addNumbered(std::string_view label, unsigned number, std::string_view rest,
                     std::size_t at) {
        text_.add(label);
        text_.addDecimal(number);
        addByte(rest, at);
    }

    bool addRecord(unsigned record, std::size_t at) {
        if (at + 23 > blob_.size()) {
            return false;
        }
        const unsigned links = blob_[at + 20];
        const std::size_t slotCount = at + 21 + links;
        if (slotCount >= blob_.size()) {
            return false;
        }
        const std::size_t routeCount = slotCount + 1 + std::size_t{2} * blob_[slotCount];
        if (routeCount + std::size_t{4} * links >= blob_.size()) {
            return false;
        }
        text_.add("\n\nPICPWR ");
        text_.addDecimal(record);
        text_.add(" SLOT INFORMATION :\n\n");
        addByte("PICPWR ID                      = ", at);
        addByte("PAYLOAD SIZE                   = ", at + 1);
        addText("RISER PHYSICAL LOCATION        = ", at + 2, 8);
        addText("MECH ASSY XPN                  = ", at + 10, 8);
        addHexadecimal("HWUID MSB                      = 0x", at + 18);
        addHexadecimal("HWUID LSB                      = 0x", at + 19);
        addByte("NO OF DSLs                     = ", at + 20);
        for (unsigned k = 1; k <= links; ++k) {
            addNumbered("DSL", k, "                           = ", at + 20 + k);
        }
        addByte("NO OF SLOTS                    = ", slotCount);
        for (unsigned j = 1; j <= blob_[slotCount]; ++j) {
            const std::size_t slot = slotCount + 1 + std::size_t{2} * (j - 1);
            addNumbered("SLOT", j, " NUMBER                   = ", slot);
            addNumbered("SLOT", j, " TYPE                     = ", slot + 1);
        }
        addByte("NO OF DSL PAYLOADS             = ", routeCount);
        for (unsigned k = 1; k <= links; ++k) {
            if (!addRoute(k, routeCount + 1 + std::size_t{4} * (k - 1))) {
                return false;
            }
        }
        return true;
    }

    bool addRoute(unsigned k, std::size_t at) {
        addNumbered("DSL ", k, " type                     = ", at);
        switch (blob_[at]) {
        case 1:
            addNumbered("DSL ", k, " SL index                 = ", at + 1);
            return true;
        case 2:
            addNumbered("DSL ", k, " OCP index                = ", at + 1);
            addNumbered("DSL ", k, " OCP lane index           = ", at + 2);
            return true;
        case 3:
            addNumbered("DSL ", k, " switched riser index     = ", at + 1);
            addNumbered("DSL ", k, " SL index                 = ", at + 2);
            return true;
        default:
            return false;
        }
    }

    floor_program::Text text_;
    std::vector<std::uint8_t> blob_;
};

} // namespace

int main() {
    Report report;
    return report.run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
