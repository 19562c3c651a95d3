#include "standin/image/image_reader.h"
#include "standin/image/image_writer.h"

#include "board/board_loader.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
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
        return {image.endOf(entry->faults).status, board::Bytes(value.begin(), value.end())};
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

TEST_F(Image, faultAppliesToTheNamesThatFit) {
    const auto image = mapped("faults = ['named-read PICPWR_[12]_D* status 7']");
    EXPECT_EQ(named(image, "PICPWR_1_DSTAT").first, 7);
    EXPECT_EQ(named(image, "PICPWR_2_DBYP").first, 7);
    EXPECT_EQ(named(image, "PICPWR_3_DSTAT").first, 0);
    EXPECT_EQ(named(image, "PICPWR_1_APEN").first, 0);
    EXPECT_EQ(named(image, "PICPWR_1_DSTAT").first, 7);
}

TEST_F(Image, faultThatAppliesOnceIsUsedUpForAllMappings) {
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
    EXPECT_EQ(image.endOfRawRead(4, 1).status, 3);
    EXPECT_EQ(image.endOfRawRead(5, 1).status, 4);
}

TEST_F(Image, lastRuleThatABlockTouchesWins) {
    const auto image = mapped("faults = ['raw-read 3 status 1', 'raw-read 4 status 2',"
                              "'raw-read 2 status 3', 'raw-read 7 status 4', 'raw-read 6 once']");
    EXPECT_EQ(image.endOfRawRead(3, 2).status, 2);
    EXPECT_EQ(image.endOfRawRead(2, 3).status, 3);
    EXPECT_EQ(image.endOfRawRead(3, 1).status, 1);
    EXPECT_EQ(image.endOfRawRead(0, 2).status, 0);
    EXPECT_EQ(image.endOfRawRead(6, 2).status, -1);
    EXPECT_EQ(image.endOfRawRead(6, 2).status, 4); // it is used up, and the rule before it applies
    EXPECT_EQ(image.endOfRawRead(7, 1).status, 4);
}

TEST_F(Image, rawFaultAppliesToEveryBlockThatTouchesIt) {
    const auto image = mapped("faults = ['raw-read 0x1003-0x1004 status 9']");
    EXPECT_EQ(image.endOfRawRead(0x1002, 1).status, 0);
    EXPECT_EQ(image.endOfRawRead(0x1002, 2).status, 9);
    EXPECT_EQ(image.endOfRawRead(0x1004, 2).status, 9);
    EXPECT_EQ(image.endOfRawRead(0x1005, 2).status, 0);
}

// The statuses of so many reads of a name.
std::vector<std::int32_t> statusesOf(const ImageReader& image, std::string_view name, int reads) {
    std::vector<std::int32_t> statuses;
    statuses.reserve(static_cast<std::size_t>(reads));
    for (int i = 0; i < reads; ++i) {
        statuses.push_back(image.endOf(image.findName(name)->faults).status);
    }
    return statuses;
}

std::string description(const std::vector<std::string>& rules) {
    std::string text = "faults = [";
    for (const std::string& rule : rules) {
        text.append("'").append(rule).append("',");
    }
    return text + "]";
}

TEST_F(Image, rulesCountTheirCallsAndLetEarlierRulesApply) {
    const struct {
        std::vector<std::string> rules;
        std::vector<std::int32_t> statuses; // of the first reads
    } cases[] = {
        {{"named-read BLOB once"}, {-1, 0, 0}},
        {{"named-read BLOB 2 times status 3"}, {3, 3, 0, 0}},
        {{"named-read BLOB after 2 status 3"}, {0, 0, 3, 3, 3}},
        {{"named-read BLOB after 2 once status 3"}, {0, 0, 3, 0, 0}},
        {{"named-read BLOB after 3 2 times"}, {0, 0, 0, -1, -1, 0}},
        // The earlier rule applies while the last one lets calls pass, and after it is used up.
        {{"named-read BLOB status 1", "named-read BLOB after 1 2 times status 2"}, {1, 2, 2, 1, 1}},
        // A call to which the last rule applies does not count for the earlier one.
        {{"named-read BLOB after 1 status 1", "named-read BLOB 2 times status 2"}, {2, 2, 0, 1, 1}},
        {{"named-read BLOB 1 times status 1", "named-read BLOB 1 times status 2"}, {2, 1, 0}},
        // A call that the last rule lets pass counts for both.
        {{"named-read BLOB after 1 status 1", "named-read BLOB after 2 status 2"}, {0, 1, 2, 2}},
        // A rule that always applies hides all earlier ones.
        {{"named-read BLOB status 1", "named-read BLOB status 2", "named-read BLOB once status 3"},
         {3, 2, 2}},
        // A delay alone is a rule, too: the call does not fail.
        {{"named-read BLOB status 1", "named-read BLOB delay 1ms once"}, {0, 1, 1}},
    };
    for (const auto& [rules, statuses] : cases) {
        std::filesystem::remove(path());
        const auto image = mapped(description(rules) + "\n[override.named]\nBLOB = 1");
        EXPECT_EQ(statusesOf(image, "BLOB", static_cast<int>(statuses.size())), statuses)
            << description(rules);
    }
}

TEST_F(Image, rawRulesCountABlockOnce) {
    const auto image =
        mapped(description({"raw-read 0-3 status 1", "raw-read 2-5 after 1 once status 2",
                            "raw-read 9 delay 7ms", "raw-read 9 status 4 once"}));
    EXPECT_EQ(image.endOfRawRead(2, 4).status, 1); // passes the later rule, with all four bytes
    EXPECT_EQ(image.endOfRawRead(4, 2).status, 2);
    EXPECT_EQ(image.endOfRawRead(4, 2).status, 0);
    EXPECT_EQ(image.endOfRawRead(3, 1).status, 1);
    EXPECT_EQ(image.endOfRawRead(0xFFFF, 1).status, 0);
    EXPECT_EQ(image.endOfRawRead(9, 0).status, 0); // touches no address
    EXPECT_EQ(image.endOfRawRead(9, 1).status, 4);
    EXPECT_EQ(image.endOfRawRead(9, 1).status, 0);
    EXPECT_EQ(image.endOfRawRead(8, 2).delay, 7U);
}

TEST_F(Image, rulesHaveADelay) {
    const auto image = mapped(
        description({"named-read BLOB delay 2s", "named-read BLOB delay 250ms status 6 once",
                     "hal-object PICPWR_PAYLOADS delay forever",
                     "hal-read PICPWR_PAYLOADS delay 1s fail", "sysinfo 164 delay 3ms once"}) +
        "\n[override.named]\nBLOB = 1");
    const auto expectEnd = [](const CallEnd& end, std::int32_t status, std::uint32_t delay) {
        EXPECT_EQ(end.status, status);
        EXPECT_EQ(end.delay, delay);
    };
    expectEnd(image.endOf(image.findName("BLOB")->faults), 6, 250);
    expectEnd(image.endOf(image.findName("BLOB")->faults), 0, 2000);
    expectEnd(image.endOf(image.findName("PICPWR_1_DSTAT")->faults), 0, 0);
    const ImageObject* const object = image.findObject("PICPWR_PAYLOADS");
    expectEnd(image.endOf(object->missingFaults), 0, ImageFault::forever);
    expectEnd(image.endOfBulkRead(*object, 1, 375), -1, 1000);
    expectEnd(image.endOfParsing(163), 0, 0);
    expectEnd(image.endOfParsing(164), 0, 3);
    expectEnd(image.endOfParsing(164), 0, 0);
}

TEST_F(Image, processesCountEachCallOnce) {
    constexpr int processes = 4;
    constexpr int reads = 5000;
    constexpr int passing = 3000;
    constexpr int failing = 7000;
    writeImage(
        board::parseBoard(description({"raw-read 1 status 1", "raw-read 1 after 3000 7000 times "
                                                              "status 2"}),
                          "b"),
        path());
    std::array<int, 2> counts{};
    ASSERT_EQ(pipe(counts.data()), 0);
    for (int process = 0; process < processes; ++process) {
        if (fork() == 0) {
            const auto image = ImageReader::map(path().c_str());
            int count = 0;
            for (int i = 0; i < reads; ++i) {
                count += image->endOfRawRead(1, 1).status == 2 ? 1 : 0;
            }
            (void)!write(counts[1], &count, sizeof count);
            _exit(0);
        }
    }
    int all = 0;
    for (int process = 0; process < processes; ++process) {
        int count = 0;
        ASSERT_EQ(read(counts[0], &count, sizeof count), static_cast<ssize_t>(sizeof count));
        all += count;
        wait(nullptr);
    }
    close(counts[0]);
    close(counts[1]);
    EXPECT_EQ(all, failing);
    static_assert(passing + failing < processes * reads);
}

TEST_F(Image, bulkReadsThatTouchAByteFail) {
    const auto image = mapped(description(
        {"hal-read PICPWR_PAYLOADS status 1", "hal-read PICPWR_PAYLOADS 0x10-0x1F status 2",
         "hal-read PICPWR_PAYLOADS 0x18 status 3 once", "raw-read 0x10 status 4"}));
    const ImageObject* const object = image.findObject("PICPWR_PAYLOADS");
    const auto statusOf = [&](std::uint32_t first, std::uint32_t count) {
        return image.endOfBulkRead(*object, first, count).status;
    };
    EXPECT_EQ(statusOf(0x18, 1), 3);
    EXPECT_EQ(statusOf(0x18, 1), 2);
    EXPECT_EQ(statusOf(0x0F, 1), 1);
    EXPECT_EQ(statusOf(0x0F, 2), 2);
    EXPECT_EQ(statusOf(0x1F, 1), 2);
    EXPECT_EQ(statusOf(0x20, 375), 1);
    EXPECT_EQ(statusOf(0x6000, 0), 1);
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
    EXPECT_EQ(image.endOf(object->missingFaults).status, -1);
    EXPECT_EQ(image.endOf(object->missingFaults).status, 0);
    EXPECT_EQ(image.endOfBulkRead(*object, 1, 375).status, 6);
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
