#include "standin/image/image_reader.h"
#include "standin/image/image_writer.h"

#include "board/board_loader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace standin {
namespace {

class Image : public testing::Test {
public:
    Image() {
        std::string pattern = testing::TempDir() + "/imageXXXXXX";
        directory_ = mkdtemp(pattern.data());
    }
    ~Image() override { std::filesystem::remove_all(directory_); }

protected:
    [[nodiscard]] std::string path() const { return directory_ + "/board"; }

    ImageReader mapped(const std::string& description) {
        writeImage(board::parseBoard(description, "b"), path());
        auto reader = ImageReader::map(path().c_str());
        EXPECT_TRUE(reader.has_value());
        return reader.value();
    }

    // Returns the status and the bytes of a named read, or status -404 for an unknown name.
    static std::pair<std::int32_t, board::Bytes> named(const ImageReader& image,
                                                       std::string_view name) {
        const ImageName* const entry = image.findName(name);
        if (entry == nullptr) {
            return {-404, {}};
        }
        const auto value = image.value(*entry);
        return {image.strike(entry->fault), board::Bytes(value.begin(), value.end())};
    }

private:
    std::string directory_;
};

using Read = std::pair<std::int32_t, board::Bytes>;

TEST_F(Image, findsEveryNameAndNoOther) {
    const auto image = mapped("[[slot]]\nid = 7\ndstat = 3\n[override.named]\nA = []\nZZ = [1, 2]");
    EXPECT_EQ(named(image, "PICPWR_7_DSTAT"), Read(0, {3}));
    EXPECT_EQ(named(image, "PICPWR_63_DSTAT"), Read(0, {0}));
    EXPECT_EQ(named(image, "A"), Read(0, {}));
    EXPECT_EQ(named(image, "ZZ"), Read(0, {1, 2}));
    for (const char* const unknown : {"", "B", "ZZZ", "PICPWR_7_DSTA", "PICPWR_7_DSTATT"}) {
        EXPECT_EQ(image.findName(unknown), nullptr) << unknown;
    }
}

TEST_F(Image, holdsTheRawRegisters) {
    const auto image = mapped("[override.raw]\n0x0 = 1\n0xFFFF = 2");
    EXPECT_EQ(image.raw(0, 1)[0], 1);
    EXPECT_EQ(image.raw(0xFFFE, 2)[1], 2);
}

TEST_F(Image, faultStrikesWhatItNames) {
    const auto image = mapped("faults = ['named-read PICPWR_[12]_D* status 7']");
    EXPECT_EQ(named(image, "PICPWR_1_DSTAT").first, 7);
    EXPECT_EQ(named(image, "PICPWR_2_DBYP").first, 7);
    EXPECT_EQ(named(image, "PICPWR_3_DSTAT").first, 0);
    EXPECT_EQ(named(image, "PICPWR_1_APEN").first, 0);
    EXPECT_EQ(named(image, "PICPWR_1_DSTAT").first, 7);
}

TEST_F(Image, faultThatStrikesOnceIsUsedUpForAllMappings) {
    const auto image = mapped("faults = ['named-read PICPWR_1_* once']");
    const auto other = ImageReader::map(path().c_str()).value();
    EXPECT_EQ(named(other, "PICPWR_1_DSTAT").first, -1);
    EXPECT_EQ(named(image, "PICPWR_1_DSTAT").first, 0);
    EXPECT_EQ(named(image, "PICPWR_1_DBYP").first, 0);
    EXPECT_EQ(named(other, "PICPWR_1_DSTAT").first, 0);
}

TEST_F(Image, lastMatchingRuleWins) {
    const auto image = mapped("faults = ['named-read * status 1', 'named-read PICPWR_1_* status 2',"
                              "'raw-read 0-9 status 3', 'raw-read 5 status 4']");
    EXPECT_EQ(named(image, "PICPWR_1_DSTAT").first, 2);
    EXPECT_EQ(named(image, "PICPWR_2_DSTAT").first, 1);
    EXPECT_EQ(image.strikeRaw(4, 1), 3);
    EXPECT_EQ(image.strikeRaw(5, 1), 4);
}

TEST_F(Image, lastRuleThatABlockTouchesWins) {
    const auto image = mapped("faults = ['raw-read 3 status 1', 'raw-read 4 status 2',"
                              "'raw-read 2 status 3', 'raw-read 7 status 4', 'raw-read 6 once']");
    EXPECT_EQ(image.strikeRaw(3, 2), 2);
    EXPECT_EQ(image.strikeRaw(2, 3), 3);
    EXPECT_EQ(image.strikeRaw(3, 1), 1);
    EXPECT_EQ(image.strikeRaw(0, 2), 0);
    EXPECT_EQ(image.strikeRaw(6, 2), -1);
    EXPECT_EQ(image.strikeRaw(6, 2), 0); // the same rule wins, but is used up
    EXPECT_EQ(image.strikeRaw(7, 1), 4);
}

TEST_F(Image, rawFaultStrikesEveryBlockThatTouchesIt) {
    const auto image = mapped("faults = ['raw-read 0x1003-0x1004 status 9']");
    EXPECT_EQ(image.strikeRaw(0x1002, 1), 0);
    EXPECT_EQ(image.strikeRaw(0x1002, 2), 9);
    EXPECT_EQ(image.strikeRaw(0x1004, 2), 9);
    EXPECT_EQ(image.strikeRaw(0x1005, 2), 0);
}

TEST_F(Image, objectIsAWindowOnThePayloadBlock) {
    const auto image = mapped("faults = ['hal-object PICPWR_PAYLOADS once',"
                              "'hal-read PICPWR_PAYLOADS status 6']\n"
                              "[hal.PICPWR_PAYLOADS]\ninterrupt_callback = true\n"
                              "unregister_status = 8\nmost_bytes = 9");
    const ImageObject* const object = image.findObject("PICPWR_PAYLOADS");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(image.nameOf(*object), "PICPWR_PAYLOADS");
    EXPECT_EQ(object->firstAddress, 0x2A00U);
    EXPECT_EQ(object->length, 0x6000U);
    EXPECT_EQ(object->interruptCallback, 1U);
    EXPECT_EQ(object->unregisterStatus, 8);
    EXPECT_EQ(object->mostBytes, 9U);
    EXPECT_EQ(image.strike(object->missingFault), -1);
    EXPECT_EQ(image.strike(object->missingFault), 0);
    EXPECT_EQ(image.strike(object->readFault), 6);
    EXPECT_EQ(image.findObject("OTHER"), nullptr);
}

TEST_F(Image, isNotWrittenOverAnotherFile) {
    std::ofstream(path()) << "mine";
    EXPECT_THROW(writeImage({}, path()), std::system_error);
}

TEST_F(Image, damagedOrMissingImageIsNotMapped) {
    EXPECT_FALSE(ImageReader::map(path().c_str()));
    writeImage({}, path());
    const auto size = std::filesystem::file_size(path());
    const auto damage = [&](std::streamoff at, char byte) {
        std::fstream file(path(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(at);
        file.put(byte);
        file.close();
        return ImageReader::map(path().c_str()).has_value();
    };
    EXPECT_TRUE(damage(0, 'Z'));
    EXPECT_FALSE(damage(0, 'X')); // magic
    EXPECT_TRUE(damage(0, 'Z'));
    EXPECT_FALSE(damage(offsetof(ImageHeader, names) + 7, '\x7F')); // more names than fit
    EXPECT_TRUE(damage(offsetof(ImageHeader, names) + 7, '\0'));
    std::filesystem::resize_file(path(), size - 1);
    EXPECT_FALSE(ImageReader::map(path().c_str()));
    std::filesystem::resize_file(path(), 0);
    EXPECT_FALSE(ImageReader::map(path().c_str()));
}

TEST_F(Image, notesTheFirstErrorOfEachLog) {
    const auto image = mapped("");
    const auto another = ImageReader::map(path().c_str());
    EXPECT_EQ(image.logError(LibraryLog::debug), 0);
    EXPECT_EQ(image.logError(LibraryLog::calls), 0);
    image.noteLogError(LibraryLog::calls, ENOSPC);
    image.noteLogError(LibraryLog::calls, EIO);
    EXPECT_EQ(another->logError(LibraryLog::calls), ENOSPC);
    EXPECT_EQ(another->logError(LibraryLog::debug), 0);
}

} // namespace
} // namespace standin
