#include "capture/mask.h"

#include "capture/riser_map_layout.h"
#include "capture/text_mask.h"
#include "payload/riser_slot_map.h"
#include "tests/support/console.h"
#include "tests/support/random_cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <string>
#include <string_view>

namespace capture {
namespace {

constexpr const char* riserBlob = "RISER_SLOT_AMP_BLOB";

// Whether each character has a replacement of its own kind.
bool hasShapeOf(const std::string& replacement, const std::string& text) {
    return std::ranges::equal(replacement, text, [](unsigned char left, unsigned char right) {
        const auto isChanged = std::isalnum(right) != 0 || right > 0x7F;
        return isChanged ? std::isdigit(left) == std::isdigit(right) &&
                               std::isupper(left) == std::isupper(right) && std::isalnum(left) != 0
                         : left == right;
    });
}

TEST(TextMask, aReplacementHasTheShapeOfItsText) {
    TextMask mask;
    for (const std::string text :
         {"PN 4711-0815 rev.b", "", "...", "\x01\x1b[31mRed", "Stra\xC3\x9F\x65",
          "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"}) {
        const std::string replacement = mask.replacementOf(text);
        EXPECT_TRUE(hasShapeOf(replacement, text)) << text << " became " << replacement;
    }
}

TEST(TextMask, theSameTextHasTheSameReplacementAndAnotherTextAnother) {
    TextMask mask;
    std::set<std::string> replacements;
    for (int number = 100; number < 200; ++number) {
        const std::string text = "PN" + std::to_string(number);
        const std::string replacement = mask.replacementOf(text);
        EXPECT_EQ(mask.replacementOf(text), replacement);
        replacements.insert(replacement);
    }
    EXPECT_EQ(replacements.size(), 100U);
}

TEST(TextMask, aReplacementTellsNothingOfItsText) {
    TextMask first;
    TextMask second;
    EXPECT_EQ(first.replacementOf("ACME 42"), second.replacementOf("EMCA 17"));
    EXPECT_NE(first.replacementOf("ACME 43"), "ACME 43");
}

TEST(TextMask, moreTextsThanReplacementsEnd) {
    TextMask mask;
    for (char digit = '0'; digit <= '9'; ++digit) {
        const std::string text(1, digit);
        EXPECT_TRUE(hasShapeOf(mask.replacementOf(text), text));
    }
}

void put(Bytes& blob, std::size_t offset, const std::string& text) {
    if (blob.size() < offset + text.size()) {
        blob.resize(offset + text.size());
    }
    std::ranges::copy(text, blob.begin() + static_cast<std::ptrdiff_t>(offset));
}

std::string textAt(const Bytes& blob, std::size_t offset, std::size_t length) {
    const auto first = blob.begin() + static_cast<std::ptrdiff_t>(offset);
    return {first, first + static_cast<std::ptrdiff_t>(length)};
}

unsigned sumOf(const Bytes& blob) {
    unsigned sum = 0;
    for (const std::uint8_t byte : blob) {
        sum += byte;
    }
    return sum % 256;
}

// A blob with two records. The first has one DSL and two slots: 23 + 1 + 4 + 4 bytes.
constexpr std::size_t firstRecord = 59;
constexpr std::size_t secondRecord = firstRecord + 32;
constexpr std::size_t checksum = secondRecord + 23;

Bytes riserMap(std::uint8_t checksumError = 0) {
    Bytes blob(1024);
    blob[0] = 7;
    put(blob, 2, "ACME server 12");
    put(blob, 17, "REST"); // behind the text's NUL
    blob[50] = 'K';        // a number that looks like a letter
    blob[58] = 2;
    blob[firstRecord] = 'P';
    blob[firstRecord + 1] = 32;
    put(blob, firstRecord + 2, "SLOT  12");
    put(blob, firstRecord + 10, "PN123456");
    put(blob, firstRecord + 18, "HW");
    blob[firstRecord + 20] = 1;
    blob[firstRecord + 21] = 'D';
    blob[firstRecord + 22] = 2;
    put(blob, firstRecord + 23, "abcd\x01");
    put(blob, firstRecord + 28, "\x01XYZ");
    blob[secondRecord + 1] = 23;
    put(blob, secondRecord + 10, "PN123456");
    blob[checksum] = static_cast<std::uint8_t>(0U - sumOf(blob) + checksumError);
    return blob;
}

Bytes maskedBlob(const Bytes& blob) {
    Observation observation;
    observation.named[riserBlob].bytes = blob;
    return masked(std::move(observation)).named.at(riserBlob).bytes;
}

TEST(Mask, descriptionAndPartNumbersOfTheRiserMapChange) {
    const Bytes before = riserMap();
    const Bytes after = maskedBlob(before);
    ASSERT_EQ(after.size(), before.size());
    const std::string description = textAt(after, 2, 48);
    EXPECT_NE(description, textAt(before, 2, 48));
    EXPECT_TRUE(hasShapeOf(description, textAt(before, 2, 48)));
    EXPECT_NE(textAt(after, 17, 4), "REST");
    const std::string partNumber = textAt(after, firstRecord + 10, 8);
    EXPECT_NE(partNumber, "PN123456");
    EXPECT_TRUE(hasShapeOf(partNumber, "PN123456"));
    EXPECT_EQ(textAt(after, secondRecord + 10, 8), partNumber);
    EXPECT_EQ(sumOf(after), 0U);

    // Nothing else changes.
    Bytes rest = after;
    put(rest, 2, textAt(before, 2, 48));
    put(rest, firstRecord + 10, "PN123456");
    put(rest, secondRecord + 10, "PN123456");
    rest[checksum] = before[checksum];
    EXPECT_EQ(rest, before);
}

TEST(Mask, aWrongChecksumStaysAsWrongAsItIs) {
    const Bytes before = riserMap(5);
    const Bytes after = maskedBlob(before);
    EXPECT_EQ(sumOf(before), 5U);
    EXPECT_EQ(sumOf(after), 5U);
    EXPECT_NE(after, before);
}

// The lines of a listing, each up to the sign in front of its value.
std::string labelsOf(const Bytes& blob) {
    const std::string listing = zolt::test::outputOf(
        [&] { zolt::printRiserSlotMap(blob, static_cast<std::uint32_t>(blob.size()), 2); });
    std::string labels;
    for (std::string_view rest = listing; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        labels.append(line.substr(0, line.find('='))).append("\n");
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    return labels;
}

TEST(Mask, theListingOfARiserMapKeepsItsLayoutWhateverItsBytes) {
    unsigned state = 1;
    const unsigned rounds = zolt::test::randomCases(500);
    for (unsigned round = 0; round < rounds; ++round) {
        Bytes blob(std::size_t{round} * 1000 / rounds); // of all sizes up to that of a riser map
        for (std::uint8_t& byte : blob) {
            state = state * 1664525 + 1013904223;
            byte = static_cast<std::uint8_t>(state >> 24);
            byte = byte == '\n' ? 'n' : byte; // a text with an end of a line looks like a label
        }
        if (blob.size() > 58) {
            blob[58] = static_cast<std::uint8_t>(round % 7);
        }
        const Bytes after = maskedBlob(blob);
        ASSERT_EQ(after.size(), blob.size());
        ASSERT_EQ(labelsOf(after), labelsOf(blob)) << "round " << round;
        const auto layout = riserMapLayout(blob);
        for (std::size_t i = 0; i < blob.size(); ++i) {
            if (layout.isNumber[i]) {
                ASSERT_EQ(after[i], blob[i]) << "round " << round << " byte " << i;
            }
        }
    }
}

TEST(Mask, recordsOfLengthZeroChangeOnce) {
    Bytes blob = riserMap();
    blob[58] = 255;
    blob[firstRecord + 1] = 0;
    const Bytes once = maskedBlob(blob);
    blob[58] = 1;
    const Bytes one = maskedBlob(blob);
    EXPECT_EQ(textAt(once, firstRecord + 10, 8), textAt(one, firstRecord + 10, 8));
}

TEST(Mask, theRawRegistersOfARiserMapChangeInTheSameWay) {
    const Bytes blob = riserMap();
    Observation observation;
    observation.named[riserBlob].status = -1;
    observation.rawBytes[0x89FF].bytes = {'A'}; // in front of the blob
    observation.rawBytes[0x8E00].bytes = {'A'}; // behind the blob
    std::uint16_t address = 0x8A00;
    for (const std::uint8_t byte : blob) {
        observation.rawBytes[address++].bytes = {byte};
    }
    const Observation after = masked(std::move(observation));
    Bytes registers;
    for (unsigned i = 0; i < 1024; ++i) {
        registers.push_back(after.rawBytes.at(static_cast<std::uint16_t>(0x8A00 + i)).bytes.at(0));
    }
    EXPECT_EQ(registers, maskedBlob(blob));
    EXPECT_EQ(after.rawBytes.at(0x89FF).bytes, Bytes{'A'});
    EXPECT_EQ(after.rawBytes.at(0x8E00).bytes, Bytes{'A'});
}

TEST(Mask, theRegistersInFrontOfARefusedOneChange) {
    const Bytes blob = riserMap();
    Observation observation;
    for (std::uint16_t i = 0; i < 30; ++i) {
        observation.rawBytes[static_cast<std::uint16_t>(0x8A00 + i)].bytes = {blob[i]};
    }
    observation.rawBytes[0x8A00 + 30].status = 5;
    const Observation after = masked(std::move(observation));
    EXPECT_EQ(after.rawBytes.at(0x8A00).bytes, Bytes{7});
    EXPECT_NE(after.rawBytes.at(0x8A02).bytes, Bytes{'A'});
    EXPECT_EQ(after.rawBytes.at(0x8A00 + 30).bytes, Bytes{});
}

const std::string& textIn(const board::Value& value, std::size_t index) {
    return std::get<std::string>(std::get<board::Value::List>(value.content).at(index).content);
}

TEST(Mask, textsOfPropertiesChangeWhereverTheyStand) {
    Observation observation;
    auto& service = observation.service;
    service.info.emplace();
    service.info->properties = {{"Owner", "s", "ACME"}, {"Flag", "b", true}};
    service.managers.push_back({});
    service.managers[0].interfaces = {
        {"/com/ACME", "com.ACME", {{"List", "as", board::listOf("ACME", "Other")}}}};
    service.objects.push_back({});
    service.objects[0].properties = {
        {"Variant", "v", board::listOf("s", "ACME")},
        {"Structure", "(sos)", board::listOf("ACME", "/ACME", "ACME")},
        {"Dictionary", "a{ss}", board::listOf(board::listOf("ACME", "ACME"))},
        {"Empty", "a(as)", board::listOf()},
        {"Behind", "(a{sv}s)", board::listOf(board::listOf(), "ACME")},
        {"Signature", "g", "s"},
        {"Number", "q", 7},
    };
    const Observation after = masked(observation);
    const std::string acme = std::get<std::string>(after.service.info->properties[0].value.content);
    EXPECT_NE(acme, "ACME");
    EXPECT_TRUE(hasShapeOf(acme, "ACME"));
    EXPECT_TRUE(std::get<bool>(after.service.info->properties[1].value.content));

    const auto& manager = after.service.managers[0].interfaces[0];
    EXPECT_EQ(manager.path, "/com/ACME");
    EXPECT_EQ(manager.interface, "com.ACME");
    EXPECT_EQ(textIn(manager.properties[0].value, 0), acme);
    EXPECT_NE(textIn(manager.properties[0].value, 1), "Other");

    const auto& object = after.service.objects[0].properties;
    EXPECT_EQ(textIn(object[0].value, 0), "s"); // the variant's type
    EXPECT_EQ(textIn(object[0].value, 1), acme);
    EXPECT_EQ(textIn(object[1].value, 0), acme);
    EXPECT_EQ(textIn(object[1].value, 1), "/ACME");
    EXPECT_EQ(textIn(object[1].value, 2), acme);
    const auto& entry = std::get<board::Value::List>(object[2].value.content).at(0);
    EXPECT_EQ(textIn(entry, 0), "ACME"); // the key
    EXPECT_EQ(textIn(entry, 1), acme);
    EXPECT_EQ(textIn(object[4].value, 1), acme);
    EXPECT_EQ(std::get<std::string>(object[5].value.content), "s");
    EXPECT_EQ(std::get<std::int64_t>(object[6].value.content), 7);
}

} // namespace
} // namespace capture
