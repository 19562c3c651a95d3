// The floor under the report of all control registers. This program makes the report's platform
// calls in the same order, composes the text in one buffer, and writes the text before each call.
// It needs a board whose registers can all be read; on any other board it ends with exit status 1.
#include "bench/floor_text.h"
#include "platform/cpld_driver.h"
#include "platform/hal.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <vector>

namespace {

enum class Kind : std::uint8_t { decimal, hexadecimal, word, rawOnly };

struct Row {
    std::string_view suffix; // of the name
    std::string_view label;  // behind the number of the instance
    Kind kind = Kind::decimal;
    std::uint8_t offset = 0; // rawOnly: byte of the block, and its bits
    std::uint8_t shift = 0;
    std::uint8_t mask = 0;
};

struct ModuleClass {
    std::string_view prefix; // of the names
    std::string_view label;  // in front of the number of the instance
    std::span<const Row> rows;
    unsigned instances; // 0: a single unit without a number
    std::uint16_t base = 0;
    std::uint16_t distance = 0;
};

constexpr Row connector1c[] = {
    {"1C_CARD_PRES", "1C Card Presence                  = "},
    {"1C_CONNECTOR_PCARD_PAYLOAD_OFFSET", "1C Connector PCARD Payload Offset = ", Kind::word},
};
constexpr Row connector4cPlus[] = {
    {"4C+_CONNECTOR_PCARD_MOD_CLASS", "4C+ Connector PCARD Module Class   = 0x", Kind::hexadecimal},
    {"4C+_CONNECTOR_PCARD_PAYLOAD_OFFSET", "4C+ Connector PCARD Payload Offset = ", Kind::word},
};
constexpr Row downstreamCard[] = {
    {"_FLOP_IDX", " FLOP Index        = "},
    {"_PAYLOAD_OFFSET", " Payload Offset    = ", Kind::word},
    {"_FRU_WP", " FRU Write Protect = "},
};
constexpr Row downstreamTulm[] = {
    {"_BP_IDX", " Backplane Index   = "},
    {"_PAYLOAD_OFFSET", " Payload Offset    = ", Kind::word},
    {"_FRU_WP", " FRU Write Protect = "},
};
constexpr Row backplane[] = {
    {"", " Power Policy          = ", Kind::rawOnly, 0, 6, 3},
    {"_VWIRE_SMBUS_RST", " SMBus Reset vWire     = "},
    {"", " BP Reset Vwire        = ", Kind::rawOnly, 0, 2, 1},
    {"_VWIRE_RDY", " ready register vWire  = "},
    {"_VWIRE_DOWNSTREAM_MODE", " vWire Downstream Mode = "},
    {"_PICPWR_INDEX", " PICPWR Index          = "},
};
constexpr Row cemRiser[] = {
    {"_PWR_POLICY", " Power Policy      = "},
    {"_FRU_WP", " FRU Write Protect = "},
    {"_BMC_PWR_EN", " BMC Power Enable  = "},
    {"_PICPWR_INDEX", " PICPWR Index      = "},
};
constexpr Row card[] = {
    {"_PWR_POLICY", " Power Policy      = "},
    {"_FRU_WP", " FRU Write Protect = "},
    {"_PICPWR_INDEX", " PICPWR Index      = "},
};
constexpr Row remoteFan[] = {
    {"REMOTE_FAN_PWR_POLICY", "RFC Power Policy = "},
    {"REMOTE_FAN_PICPWR_INDEX", "RFC PICPWR Index = "},
};
constexpr Row flop[] = {
    {"_PWR_POLICY", " Power Policy      = "},
    {"_FRU_WP", " FRU Write Protect = "},
    {"_OCP_PRES", " OCP Presence      = "},
    {"_UNHIDE", " Unhide            = "},
    {"", " Number of links   = ", Kind::rawOnly, 1, 4, 3},
    {"_PRSNTB", " Card Type         = "},
    {"_PICPWR_INDEX", " PICPWR Index      = "},
};
constexpr Row batteryInterposer[] = {
    {"_PWR_POLICY", " Power Policy     = "},
    {"_BMC_PWR_EN", " BMC Power Enable = "},
    {"_BATT_RDY", " Battery Ready    = "},
    {"_PICPWR_INDEX", " PICPWR Index     = "},
};

constexpr ModuleClass moduleClasses[] = {
    {"", "", connector1c, 0},
    {"", "", connector4cPlus, 0},
    {"DOWNSTREAM_KARN_", "Downstream KARN", downstreamCard, 2},
    {"DOWNSTREAM_M.2_CARD_", "Downstream M.2 Card", downstreamCard, 2},
    {"DOWNSTREAM_TULM_", "Downstream TULM", downstreamTulm, 2},
    {"BP_", "Backplane ", backplane, 8, 0x1400, 9},
    {"CEM_RISER_", "CEM Riser ", cemRiser, 24},
    {"KARN_", "KARN ", card, 2},
    {"M.2_INTERPOSER_", "M.2 Interposer ", card, 2},
    {"RIDA_", "RIDA ", card, 2},
    {"PUCK_", "PUCK ", card, 16},
    {"", "", remoteFan, 0},
    {"FLOP_", "FLOP ", flop, 16, 0x2400, 4},
    {"BAT_INTRPSR_", "Battery Interposer ", batteryInterposer, 2},
};

class Report {
public:
    bool run() {
        for (const ModuleClass& shown : moduleClasses) {
            const unsigned last = shown.instances == 0 ? 1 : shown.instances;
            for (unsigned instance = 1; instance <= last; ++instance) {
                for (const Row& row : shown.rows) {
                    if (!addRegister(shown, instance, row)) {
                        return false;
                    }
                }
                if (shown.instances != 0) {
                    text_.add("\n");
                }
            }
            text_.add("\n");
        }
        return text_.handOut();
    }

private:
    bool readNamed(const ModuleClass& shown, unsigned instance, const Row& row) {
        std::array<char, 48> name;
        char* end = name.data() + shown.prefix.copy(name.data(), name.size());
        if (shown.instances != 0) {
            end = std::to_chars(end, end + 2, instance).ptr;
        }
        end += row.suffix.copy(end, row.suffix.size());
        std::uint32_t delivered = 0;
        value_.clear();
        return ReadIO_Str({name.data(), end}, value_, &delivered) == 0 &&
               value_.size() >= (row.kind == Kind::word ? 2 : 1);
    }

    bool addRegister(const ModuleClass& shown, unsigned instance, const Row& row) {
        std::uint8_t raw = 0;
        const auto address = shown.base + shown.distance * (instance - 1) + row.offset;
        if (!text_.handOut()) {
            return false;
        }
        if (row.kind == Kind::rawOnly ? cpld_read_device(&raw, address, 1) != 0
                                      : !readNamed(shown, instance, row)) {
            return false;
        }
        text_.add(shown.label);
        if (shown.instances != 0) {
            text_.addDecimal(instance);
        }
        text_.add(row.label);
        switch (row.kind) {
        case Kind::decimal:
            text_.addDecimal(value_[0]);
            break;
        case Kind::hexadecimal:
            text_.addHexadecimalByte(value_[0]);
            break;
        case Kind::word:
            text_.addDecimal(static_cast<unsigned>(value_[0] | value_[1] << 8));
            break;
        case Kind::rawOnly:
            text_.addDecimal(static_cast<unsigned>(raw >> row.shift & row.mask));
        }
        text_.add("\n");
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
