#include "board/description_text.h"

#include "tests/board/refusal.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace board {
namespace {

std::string repeated(const std::string& text, int count) {
    std::string all;
    while (count-- > 0) {
        all += text;
    }
    return all;
}

// A large description must not take long. The bound leaves room for a sanitizer; other programs on
// the machine do not count.
std::string promptRefusal(const std::string& description) {
    constexpr std::clock_t mostSeconds = 10;
    const std::clock_t start = std::clock();
    std::string refusal = test::refusalOf(description);
    EXPECT_LT(std::clock() - start, mostSeconds * CLOCKS_PER_SEC);
    return refusal;
}

TEST(DescriptionText, refusesDeepNesting) {
    const std::string brackets = "b.toml:1: brackets are nested more than 64 deep";
    const std::string parts = "b.toml:1: a key has more than 16 parts";
    const std::pair<std::string, std::string> cases[] = {
        {"x = " + repeated("[", 100'000), brackets},
        {"x = " + repeated("{x = ", 100'000), brackets},
        {"x = " + repeated("[", 65), brackets},
        {repeated("[", 100'000), brackets},
        {repeated("a.", 40'000) + "a = 1", parts},
        {"[" + repeated("a.", 40'000) + "a]", parts},
        {"[[" + repeated("'a' . ", 40'000) + "a]]", parts},
        {"x = { " + repeated("a.", 40'000) + "a = 1 }", parts},
        {repeated("a.", 16) + "a = 1", parts},
        {"x = '''\n'\n''''' # [[[\n[[slot]]\n" + repeated("a.", 16) + "a = 1",
         "b.toml:5: a key has more than 16 parts"},
        {"x = 'a\\'\ny = \"\\\"\" # '\n" + repeated("a.", 16) + "a = 1",
         "b.toml:3: a key has more than 16 parts"},
        {"x = \"\"\"\\\n\\\"\"\"\"\n" + repeated("a.", 16) + "a = 1",
         "b.toml:3: a key has more than 16 parts"},
    };
    for (const auto& [description, refusal] : cases) {
        EXPECT_EQ(promptRefusal(description), refusal) << description.substr(0, 50);
    }
}

TEST(DescriptionText, acceptsBracketsAndDotsOfTextsAndComments) {
    const std::string many = repeated("[{.=", 100);
    EXPECT_EQ(test::refusalOf("name = '" + many + "' # " + many), "");
    EXPECT_EQ(test::refusalOf("name = \"\\\"" + many + "\""), "");
    EXPECT_EQ(test::refusalOf("name = \"\"\"" + many + "\"\n\\\"\"\"" + many + "\"\"\"\"\""), "");
    EXPECT_EQ(test::refusalOf("name = '''" + many + "''\n" + many + "''''"), "");
    EXPECT_EQ(test::refusalOf("[override.named]\n'" + many + "' = " + "[1,\n 2]"), "");
}

TEST(DescriptionText, boundsTheNumberOfEntries) {
    const auto names = [](int count) {
        std::string text = "[override.named]\n"; // is an entry, too
        for (int i = 0; i < count; ++i) {
            text += "N" + std::to_string(i) + " = 1\n";
        }
        return text;
    };
    DescriptionSize size;
    EXPECT_NO_THROW(checkBounds(names(262'143), "b.toml", size));
    EXPECT_EQ(promptRefusal(names(262'144)),
              "b.toml:262145: the description has more than 262144 keys and tables");
    EXPECT_EQ(promptRefusal(repeated("[[slot]]\n", 262'145)),
              "b.toml:262145: the description has more than 262144 keys and tables");
    EXPECT_EQ(promptRefusal("slot = [\n" + repeated("{},", 262'144)),
              "b.toml:2: the description has more than 262144 keys and tables");
}

TEST(DescriptionText, boundsTheLength) {
    const std::string line = "# " + std::string(1021, 'x') + "\n";
    EXPECT_EQ(promptRefusal(repeated(line, 16'384)), "");
    EXPECT_EQ(promptRefusal(repeated(line, 16'384) + " "), "b.toml: has more than 16777216 bytes");
}

TEST(DescriptionText, refusesAHugeUnknownKeyAtOnce) {
    const std::string key(5'000'000, 'k');
    EXPECT_EQ(promptRefusal(key + " = 1"),
              "b.toml:1: board: '" + key.substr(0, 200) + "...' is not a key here");
}

TEST(DescriptionText, checksManyFaultsAgainstManyNamesAtOnce) {
    std::string text =
        "faults = [" + repeated("'named-read PICPWR_*',", 256) + "]\n[override.named]\n";
    for (int i = 0; i < 20'000; ++i) {
        text += "N" + std::to_string(i) + " = 1\n";
    }
    EXPECT_EQ(promptRefusal(text), "");
}

std::string reasonFor(const std::string& path) {
    try {
        (void)readDescription(path);
        return {};
    } catch (const BoardError& error) {
        return error.what();
    }
}

TEST(DescriptionText, readsOnlyRegularFiles) {
    std::string place = "/tmp/description.XXXXXX";
    ASSERT_NE(mkdtemp(place.data()), nullptr);
    const std::string fifo = place + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(reasonFor(fifo), fifo + ": is not a regular file");
    EXPECT_EQ(reasonFor(place), place + ": Is a directory");
    EXPECT_EQ(reasonFor("/dev/zero"), "/dev/zero: is not a regular file");
    EXPECT_EQ(reasonFor(place + "/none"), place + "/none: No such file or directory");
    const std::string huge = place + "/huge";
    EXPECT_EQ(close(creat(huge.c_str(), 0600)), 0);
    EXPECT_EQ(truncate(huge.c_str(), 1'000'000'000'000), 0);
    EXPECT_EQ(reasonFor(huge), huge + ": has more than 16777216 bytes");
    EXPECT_EQ(truncate(huge.c_str(), 16'777'216), 0);
    std::string zeros;
    zeros.resize(16'777'216);
    EXPECT_EQ(readDescription(huge).text, zeros);
    EXPECT_EQ(truncate(huge.c_str(), 0), 0);
    EXPECT_EQ(readDescription(huge).text, "");
    unlink(huge.c_str());
    unlink(fifo.c_str());
    rmdir(place.c_str());
}

} // namespace
} // namespace board
