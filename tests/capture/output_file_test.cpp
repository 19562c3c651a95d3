#include "capture/output_file.h"

#include "tests/support/private_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace capture {
namespace {

namespace fs = std::filesystem;

class Output : public testing::Test {
protected:
    [[nodiscard]] fs::path at(const char* name) const { return directory_.path() / name; }

    [[nodiscard]] std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : fs::directory_iterator(directory_.path())) {
            all.insert(entry.path().filename());
        }
        return all;
    }

    static void write(const fs::path& path, const std::string& text) {
        std::ofstream(path) << text;
    }
    static std::string textOf(const fs::path& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // What refuses the file.
    static std::string refusal(const fs::path& path, bool mayExist) {
        try {
            OutputFile file(path, mayExist);
            file.finish("text");
        } catch (const OutputError& error) {
            return error.what();
        }
        return "";
    }

    zolt::test::PrivateDirectory directory_;
};

using Names = std::set<std::string>;

TEST_F(Output, theFileAppearsWhenItIsFinished) {
    {
        OutputFile file(at("board"), false);
        EXPECT_EQ(names().size(), 1U);
        EXPECT_FALSE(fs::exists(at("board")));
        file.finish("a text");
        EXPECT_EQ(names(), Names{"board"});
    }
    EXPECT_EQ(names(), Names{"board"});
    EXPECT_EQ(textOf(at("board")), "a text");
}

TEST_F(Output, itsPermissionsAreThoseOfNewFiles) {
    const mode_t before = umask(027);
    OutputFile(at("board"), false).finish("");
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat(at("board").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(Output, aFileThatIsNotFinishedLeavesNothing) {
    { const OutputFile file(at("board"), false); }
    EXPECT_EQ(names(), Names{});
}

TEST_F(Output, anExistingFileStaysUnlessItMayBeReplaced) {
    write(at("board"), "old");
    EXPECT_EQ(refusal(at("board"), false),
              at("board").string() + ": exists already (--force overwrites it)");
    EXPECT_EQ(textOf(at("board")), "old");
    EXPECT_EQ(refusal(at("board"), true), "");
    EXPECT_EQ(textOf(at("board")), "text");
    EXPECT_EQ(names(), Names{"board"});
}

TEST_F(Output, aFileThatAppearsMeanwhileStays) {
    {
        OutputFile file(at("board"), false);
        write(at("board"), "other");
        EXPECT_THROW(file.finish("text"), OutputError);
    }
    EXPECT_EQ(textOf(at("board")), "other");
    EXPECT_EQ(names(), Names{"board"});
}

TEST_F(Output, onlyARegularFileIsReplaced) {
    fs::create_directory(at("directory"));
    EXPECT_EQ(refusal(at("directory"), true), at("directory").string() + ": is not a regular file");
    EXPECT_EQ(refusal("/dev/null", true), "/dev/null: is not a regular file");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(Output, aSymbolicLinkLeadsToItsFile) {
    write(at("target"), "old");
    fs::create_symlink("target", at("link"));
    EXPECT_NE(refusal(at("link"), false), "");
    EXPECT_EQ(refusal(at("link"), true), "");
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_EQ(textOf(at("target")), "text");
    EXPECT_EQ(names(), (Names{"link", "target"}));

    fs::create_symlink("nowhere", at("broken"));
    EXPECT_EQ(refusal(at("broken"), true), at("broken").string() + ": No such file or directory");
}

TEST_F(Output, aMissingDirectoryIsTold) {
    EXPECT_EQ(refusal(at("missing/board"), false),
              at("missing/board").string() + ": No such file or directory");
    write(at("file"), "");
    EXPECT_EQ(refusal(at("file/board"), false), at("file/board").string() + ": Not a directory");
    EXPECT_EQ(refusal(directory_.path() / std::string(5000, 'x'), false),
              (directory_.path() / std::string(5000, 'x')).string() + ": File name too long");
}

TEST_F(Output, aPathWithoutADirectoryIsInTheWorkingDirectory) {
    const fs::path before = fs::current_path();
    fs::current_path(directory_.path());
    OutputFile("board", false).finish("text");
    fs::current_path(before);
    EXPECT_EQ(names(), Names{"board"});
}

} // namespace
} // namespace capture
