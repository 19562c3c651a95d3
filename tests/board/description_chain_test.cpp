#include "board/description_chain.h"

#include "board/board_loader.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace board {
namespace {

namespace fs = std::filesystem;

// Descriptions in files of a directory. In messages, {} stands for the directory.
class DescriptionChain : public testing::Test {
public:
    DescriptionChain() {
        std::string place = (fs::temp_directory_path() / "chain.XXXXXX").string();
        directory_ = mkdtemp(place.data());
    }
    ~DescriptionChain() override { fs::remove_all(directory_); }
    DescriptionChain(const DescriptionChain&) = delete;
    DescriptionChain& operator=(const DescriptionChain&) = delete;

protected:
    void write(const std::string& name, const std::string& text) const {
        fs::create_directories(fs::path(pathOf(name)).parent_path());
        std::ofstream(pathOf(name)) << text;
    }

    [[nodiscard]] std::string pathOf(const std::string& name) const {
        return directory_ + "/" + name;
    }

    // Boards of the tool are the files in the directory "boards".
    [[nodiscard]] BoardFinder finder() const {
        return [this](const std::string& name) { return pathOf("boards/" + name + ".toml"); };
    }

    [[nodiscard]] Board load(const std::string& name) const {
        return loadBoard(pathOf(name), finder());
    }

    [[nodiscard]] std::string shown(std::string message) const {
        for (std::size_t at = 0; (at = message.find(directory_, at)) != std::string::npos;) {
            message.replace(at, directory_.size(), "{}");
        }
        return message;
    }

    [[nodiscard]] std::string refusalOf(const std::string& name) const {
        try {
            (void)load(name);
            return {};
        } catch (const BoardError& error) {
            return shown(error.what());
        }
    }

    // The refusal of over.toml, which takes over base.toml.
    [[nodiscard]] std::string refusalOf(const std::string& over, const std::string& base) const {
        write("base.toml", base);
        const std::string wholeOver = "base = 'base.toml'\n" + over;
        write("over.toml", wholeOver);
        std::string refusal = refusalOf("over.toml");
        if (refusal.starts_with("{}/base.toml")) {
            test::record(base, refusal);
        } else {
            test::record(base, "");
            test::record(wholeOver, refusal);
        }
        return refusal;
    }

private:
    std::string directory_;
};

TEST_F(DescriptionChain, readsABaseByPathOrName) {
    write("boards/demo.toml", "name = 'demo'\n[[slot]]\nid = 1\ndstat = 1");
    write("boards/small.toml", "base = 'demo'\nname = 'small'");
    write("up.toml", "base = 'boards/demo.toml'\n[[slot]]\nid = 1\ndbyp = true");
    write("sub/one.toml", "base = '../up.toml'");
    const std::string absolute = "base = '" + pathOf("boards/demo.toml") + "'";
    write("sub/two.toml", absolute);
    write("sub/three.toml", "base = 'demo'");
    write("sub/four.toml", "base = 'small'");
    for (const char* const name : {"up.toml", "sub/one.toml", "sub/two.toml", "sub/three.toml"}) {
        const Board board = load(name);
        EXPECT_EQ(board.name, "demo") << name;
        EXPECT_EQ(board.slots.at(0).dstat, 1) << name;
    }
    EXPECT_TRUE(load("sub/one.toml").slots.at(0).dbyp);
    EXPECT_EQ(load("sub/four.toml").name, "small");
    EXPECT_EQ(load("sub/four.toml").slots.at(0).dstat, 1);
}

TEST_F(DescriptionChain, readsABaseOfAText) {
    write("boards/demo.toml", "name = 'demo'");
    EXPECT_EQ(parseBoard("base = 'demo'", "b", finder()).name, "demo");
    EXPECT_EQ(errorsIn("base = 'demo'", "b", finder()), Errors());
    EXPECT_EQ(parseBoard("base = 'boards/demo.toml'", pathOf("b")).name, "demo");
    EXPECT_EQ(errorsIn("base = 'demo'", "b"), Errors{"b:1: board: there is no board 'demo' here"});
}

TEST_F(DescriptionChain, refusesABaseThatCannotBeRead) {
    ASSERT_EQ(mkdir(pathOf("directory").c_str(), 0700), 0);
    ASSERT_EQ(mkfifo(pathOf("fifo.toml").c_str(), 0600), 0);
    write("wrong.toml", "\nname = \n");
    const std::pair<const char*, const char*> cases[] = {
        {"base = 7", "{}/b.toml:2: board: 'base' must be a text"},
        {"base = 'none.toml'", "{}/b.toml:2: board: the base 'none.toml' cannot be read: "
                               "{}/none.toml: No such file or directory"},
        {"base = 'none'", "{}/b.toml:2: board: the base 'none' cannot be read: "
                          "{}/boards/none.toml: No such file or directory"},
        {"base = './directory'", "{}/b.toml:2: board: the base './directory' cannot be read: "
                                 "{}/./directory: Is a directory"},
        {"base = 'fifo.toml'", "{}/b.toml:2: board: the base 'fifo.toml' cannot be read: "
                               "{}/fifo.toml: is not a regular file"},
        {"base = '/dev/zero'", "{}/b.toml:2: board: the base '/dev/zero' cannot be read: "
                               "/dev/zero: is not a regular file"},
        {"base = \"\\u0000.toml\"", "{}/b.toml:2: board: 'base' has a NUL character"},
    };
    for (const auto& [line, message] : cases) {
        write("b.toml", std::string("\n") + line);
        EXPECT_EQ(refusalOf("b.toml"), message);
    }
    write("b.toml", "base = 'wrong.toml'");
    EXPECT_TRUE(refusalOf("b.toml").starts_with("{}/wrong.toml:2: Error while parsing"));
}

TEST_F(DescriptionChain, refusesACircle) {
    write("self.toml", "name = 'x'\nbase = 'self.toml'");
    EXPECT_EQ(refusalOf("self.toml"),
              "{}/self.toml:2: board: the base 'self.toml' leads back to '{}/self.toml'");
    write("one.toml", "base = './two.toml'");
    write("two.toml", "base = 'one.toml'");
    EXPECT_EQ(refusalOf("one.toml"),
              "{}/./two.toml:1: board: the base 'one.toml' leads back to '{}/one.toml'");
    write("entry.toml", "base = 'one.toml'");
    EXPECT_EQ(refusalOf("entry.toml"),
              "{}/./two.toml:1: board: the base 'one.toml' leads back to '{}/one.toml'");
    write("linked.toml", "base = 'link.toml'");
    fs::create_symlink("linked.toml", pathOf("link.toml"));
    EXPECT_EQ(refusalOf("linked.toml"),
              "{}/linked.toml:1: board: the base 'link.toml' leads back to '{}/linked.toml'");
    write("hard.toml", "base = 'harder.toml'");
    fs::create_hard_link(pathOf("hard.toml"), pathOf("harder.toml"));
    EXPECT_EQ(refusalOf("hard.toml"),
              "{}/hard.toml:1: board: the base 'harder.toml' leads back to '{}/hard.toml'");
    write("boards/mine.toml", "base = 'mine'");
    EXPECT_EQ(refusalOf("boards/mine.toml"),
              "{}/boards/mine.toml:1: board: the base 'mine' leads back to '{}/boards/mine.toml'");
}

TEST_F(DescriptionChain, boundsItsLength) {
    write("1.toml", "[[slot]]\nid = 1\ndstat = 1");
    for (int file = 2; file <= 9; ++file) {
        write(std::to_string(file) + ".toml", "base = '" + std::to_string(file - 1) +
                                                  ".toml'\n[[slot]]\nid = " + std::to_string(file));
    }
    EXPECT_EQ(load("8.toml").slots.size(), 8U);
    EXPECT_EQ(load("8.toml").slots.front().id, 1);
    EXPECT_EQ(load("8.toml").slots.back().id, 8);
    EXPECT_EQ(refusalOf("9.toml"),
              "{}/2.toml:1: board: more than 8 descriptions take over one another");
}

TEST_F(DescriptionChain, boundsAllDescriptionsTogether) {
    const std::string comment(16'777'216 - 100, '#');
    EXPECT_EQ(refusalOf("", comment), "");
    EXPECT_EQ(
        refusalOf("#" + std::string(100, '#'), comment),
        "{}/base.toml: has, with the descriptions that take it over, more than 16777216 bytes");
    std::string names = "[override.named]\n";
    for (int i = 0; i < 262'143 - 4; ++i) {
        names += "N" + std::to_string(i) + " = 1\n";
    }
    EXPECT_EQ(refusalOf("name = 'x'\n[service]\n[hal]", names), "");
    EXPECT_EQ(
        refusalOf("name = 'x'\n[service]\n[hal]\n[i2c]", names),
        "{}/base.toml:262140: the description and those that take it over have more than 262144 "
        "keys and tables");
    EXPECT_EQ(refusalOf("", "a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a = 1"),
              "{}/base.toml:1: a key has more than 16 parts");
}

TEST_F(DescriptionChain, namesFileAndLineOfTheErrors) {
    struct Case {
        const char* base;
        const char* over; ///< from line 2 on
        const char* message;
    };
    const char* const backplane = "[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x2A";
    const char* const card = "[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x11\n"
                             "[[slot.module.end_point]]\ndsl_index_lower = 1";
    const Case cases[] = {
        // errors of the base
        {"\n[[slot]]\nid = 64", "",
         "{}/base.toml:3: slot: 'id' must be a whole number from 1 to 63"},
        {"nmae = 1", "", "{}/base.toml:1: board: 'nmae' is not a key here; did you mean 'name'?"},
        {"\n[override.named]\n\"A\\u0000\" = 1", "",
         "{}/base.toml:3: named: 'A\\x00' has a NUL character"},
        {"faults = [\n'raw-read x']", "faults = ['raw-read 1']",
         "{}/base.toml:2: fault 'raw-read x': 'x' is not a raw address or a range of addresses "
         "(0x0000 to 0xFFFF)"},
        {"[override.raw]\n0x1000 = [1,\n256]", "[override.raw]\n1 = 1",
         "{}/base.toml:3: raw: '0x1000' must be a whole number from 0 to 255"},
        {"[override.raw]\n0x1000 = [1, 2]\n0x1001 = 1", "[override.raw]\n1 = 1",
         "{}/base.toml:3: raw: 0x1001 is described already, at line 2"},
        // errors of the description
        {"[[slot]]\nid = 5", "[[slot]]\nid = 5\ndstat = 4",
         "{}/over.toml:4: slot: 'dstat' must be a whole number from 0 to 3"},
        {"[[slot]]\nid = 5", "[[slot]]\nid = 5\ndsatt = 4",
         "{}/over.toml:4: slot: 'dsatt' is not a key here; did you mean 'dstat'?"},
        {"", "bsae = 'x'", "{}/over.toml:2: board: 'bsae' is not a key here; did you mean 'base'?"},
        {"[[karn]]\nid = 1", "[[karn]]\nfru_wp = true", "{}/over.toml:2: karn: 'id' is missing"},
        {"[[slot]]\nid = 5", "[[slot]]\nid = 5\n[[slot]]\nid = 5",
         "{}/over.toml:4: slot: 5 is described already, at line 2"},
        {"", "[[slot]]\nid = 5\n[[slot]]\nid = 5",
         "{}/over.toml:5: slot: 5 is described already, at line 3"},
        {"", "faults = ['raw-read x']",
         "{}/over.toml:2: fault 'raw-read x': 'x' is not a raw address or a range of addresses "
         "(0x0000 to 0xFFFF)"},
        // errors of both
        {"[[slot]]\nid = 1\nmodule = { type = 'bp', object = 'a' }",
         "[[slot]]\nid = 2\nmodule = { type = 'bp', object = 'a' }",
         "{}/over.toml:4: object: bp/a is described already, at {}/base.toml:3"},
        {"[[slot]]\nid = 1\npayload_offset = 3\npayload = '01 02 03'",
         "[[slot]]\nid = 2\npayload_offset = 5\npayload = 1",
         "{}/over.toml:4: slot: the bytes at offset 5 overlap bytes of slot 1"},
        {"[[i2c.index_node]]\ndevice_type = 1\nphysical_bus = 7\nparent = 1\n[[i2c.bus]]\nnumber = "
         "1",
         "[[i2c.index_node]]\ndevice_type = 1\nremove = ['physical_bus']",
         "{}/over.toml:2: index_node: a node with 'parent' needs 'physical_bus'"},
        {"[[i2c.index_node]]\ndevice_type = 1\nphysical_bus = 7\nparent = 1\n[[i2c.bus]]\nnumber = "
         "1",
         "[[i2c.bus]]\nnumber = 1\nremove = true",
         "{}/base.toml:4: index_node: 'parent' must be a bus that is described before it"},
        {"faults = ['named-read MINE']\n[override.named]\nMINE = 1",
         "[override]\nremove = ['named']",
         "{}/base.toml:1: fault 'named-read MINE': no register has a name like 'MINE'"},
        // keys of another kind
        {backplane, "[[slot]]\nid = 1\n[[slot.module.end_point]]\ntype = 1",
         "{}/over.toml:4: module: 'end_point' is a key only where 'device_class' is not 0x1A, 0x1B "
         "or "
         "0x2A"},
        {card, "[[slot]]\nid = 1\n[slot.module.backplane]\nbay_id = 1",
         "{}/over.toml:4: module: 'backplane' is a key only where 'device_class' is 0x2A"},
        {card, "[[slot]]\nid = 1\n[[slot.module.end_point]]\nposition = 1\npcie_order_lower = 1",
         "{}/over.toml:6: end_point: 'pcie_order_lower' is a key only where 'indirect' is true"},
        {"[[slot]]\nid = 1\n[[slot.module.end_point]]\nindirect = true\ndsl_index_lower = 1",
         "[[slot]]\nid = 1",
         "{}/base.toml:5: end_point: 'dsl_index_lower' is a key only where 'indirect' is not true"},
        {"[[service.order]]\naction = 'answer'", "[[service.order]]\nposition = 1\nsignature = 'y'",
         "{}/over.toml:4: order: 'signature' is a key only where 'action' is 'reply'"},
        {"", "[[slot]]\nid = 1\npayload = 1\n[slot.module]",
         "{}/over.toml:5: slot: 'module' cannot stand beside 'payload' or 'oem_area'"},
        // things that are not there
        {"[[slot]]\nid = 5", "[[slot]]\nid = 6\nremove = true",
         "{}/over.toml:2: slot: the base has no slot 6"},
        {"[[slot]]\nid = 5\n[[slot.module.end_point]]",
         "[[slot]]\nid = 5\n[[slot.module.end_point]]\nposition = 2",
         "{}/over.toml:4: end_point: the base has no end_point 2"},
        {"[[service.order]]", "[[service.order]]\nposition = 0\nremove = true",
         "{}/over.toml:2: order: the base has no order 0"},
        {"[[slot]]\nid = 5\ndstat = 1", "[[slot]]\nid = 5\nremove = [\n'dsatt']",
         "{}/over.toml:5: slot: the base has no 'dsatt' here; did you mean 'dstat'?"},
        {"[[slot]]\nid = 5", "[[slot]]\nid = 6\nremove = ['dstat']",
         "{}/over.toml:4: slot: the base has no 'dstat' here"},
        {"[[slot]]\nid = 5", "[[slot]]\nid = 5\n[slot.module]\nremove = true",
         "{}/over.toml:4: slot: the base has no 'module' here"},
        {"name = 'x'", "remove = ['base']",
         "{}/over.toml:2: board: the base has no 'base' here; did you mean 'name'?"},
        {"[override.named]\nAB = 1", "[override.named]\nABC = { remove = true }",
         "{}/over.toml:3: named: the base has no 'ABC' here; did you mean 'AB'?"},
        {"[override.raw]\n0x1000 = 1", "[override.raw]\n0x1001 = { remove = true }",
         "{}/over.toml:3: raw: the base has no '0x1001' here; did you mean '0x1000'?"},
        {"[[i2c.bus]]\nnumber = 1\nproperties = { 8 = 1 }",
         "[[i2c.bus]]\nnumber = 1\nproperties = { 9 = { remove = true } }",
         "{}/over.toml:4: properties: the base has no '9' here"},
        // things that stand more than once in the base
        {"[[riser_map.record]]\n[[riser_map.record]]", "[[riser_map.record]]\nhwuid = 1",
         "{}/over.toml:2: record: 0 stands more than once in the base, at {}/base.toml:1 and "
         "{}/base.toml:2"},
        // malformed removals and positions
        {"[[slot]]\nid = 5", "[[slot]]\nid = 5\nremove = true\ndstat = 1",
         "{}/over.toml:5: slot: 'dstat' cannot stand beside 'remove = true'"},
        {"[[slot]]\nid = 5", "[[slot]]\nid = 5\nremove = false",
         "{}/over.toml:4: slot: 'remove' must be true or an array of keys"},
        {"[[slot]]\nid = 5", "[[slot]]\nid = 5\nremove = [7]",
         "{}/over.toml:4: slot: 'remove' must be true or an array of keys"},
        {"[[slot]]\nid = 5", "[[slot]]\nremove = true",
         "{}/over.toml:2: slot: a table with 'remove = true' needs 'id'"},
        {"[[service.order]]", "[[service.order]]\nremove = true",
         "{}/over.toml:2: order: a table with 'remove = true' needs 'position'"},
        {"[[service.order]]", "[[service.order]]\nposition = '1'",
         "{}/over.toml:3: order: 'position' must be a whole number"},
        {"[[slot]]\nid = 5", "[[slot]]\nid = 5\nposition = 1",
         "{}/over.toml:4: slot: 'position' is not a key here"},
        {"[riser_map]", "[riser_map]\nremove = true\nrecords = 1",
         "{}/over.toml:4: riser_map: 'records' cannot stand beside 'remove = true'"},
        // changes in a base that has none itself
        {"[[slot]]\nid = 5\nremove = true", "",
         "{}/base.toml:3: slot: 'remove' is a key only where 'base' is given"},
        {"[[slot]]\nid = 5\nremove = ['dstat']", "",
         "{}/base.toml:3: slot: 'remove' is a key only where 'base' is given"},
        {"[[slot]]\nid = 5\ndstat = { remove = true }", "",
         "{}/base.toml:3: dstat: 'remove' is a key only where 'base' is given"},
        {"[override.named]\nA = { remove = true }", "",
         "{}/base.toml:2: A: 'remove' is a key only where 'base' is given"},
        {"[[service.order]]\nposition = 1", "",
         "{}/base.toml:2: order: 'position' is a key only where 'base' is given"},
    };
    for (const auto& [base, over, message] : cases) {
        EXPECT_EQ(refusalOf(over, base), message) << "base: " << base << "\nover: " << over;
    }
}

// A description that changes the kind of a thing drops the keys that the new kind does not have.
TEST_F(DescriptionChain, dropsKeysOfTheFormerKind) {
    const std::pair<const char*, const char*> cases[] = {
        {"[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x11\n[[slot.module.end_point]]\ntype = "
         "1",
         "[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x2A"},
        {"[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x2A\n[slot.module.backplane]\nbay_id = "
         "1",
         "[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x1A"},
        {"[[slot]]\nid = 1\n[[slot.module.end_point]]\ndsl_index_lower = 1",
         "[[slot]]\nid = 1\n[[slot.module.end_point]]\nposition = 1\nindirect = true"},
        {"[[slot]]\nid = 1\n[[slot.module.oem]]\ntype = 1\nsrc_id = 1",
         "[[slot]]\nid = 1\n[[slot.module.oem]]\nposition = 1\ntype = 9\ndata = 1"},
        {"[[riser_map.record]]\ndsl = [{ type = 1, sl_index = 1 }]",
         "[[riser_map.record]]\ndsl = [{ type = 2, ocp_index = 1 }]"},
        {"[[service.order]]\naction = 'reply'\nsignature = 'y'\nvalue = 1",
         "[[service.order]]\nposition = 1\naction = 'leave'"},
    };
    for (const auto& [base, over] : cases) {
        EXPECT_EQ(refusalOf(over, base), "") << base;
    }
}

TEST_F(DescriptionChain, collectsTheErrorsOfAllFiles) {
    write("base.toml", "[[slot]]\nid = 1\ndstat = 9\n[[slot]]\nid = 2\ndbyp = 1");
    write("over.toml", "base = 'base.toml'\n[[slot]]\nid = 1\nremove = ['colour']\n"
                       "[[slot]]\nid = 3\nremove = true\n[[slot]]\nid = 4\nid2 = 1\n"
                       "[override.named]\nX = { remove = true }");
    Errors errors = errorsInFile(pathOf("over.toml"), finder());
    for (std::string& error : errors) {
        error = shown(error);
    }
    EXPECT_EQ(errors, (Errors{
                          "{}/over.toml:12: named: the base has no 'X' here",
                          "{}/over.toml:4: slot: the base has no 'colour' here",
                          "{}/over.toml:5: slot: the base has no slot 3",
                          "{}/base.toml:3: slot: 'dstat' must be a whole number from 0 to 3",
                          "{}/base.toml:6: slot: 'dbyp' must be true or false",
                          "{}/over.toml:10: slot: 'id2' is not a key here; did you mean 'id'?",
                      }));
    EXPECT_EQ(errorsInFile(pathOf("none"), finder()).size(), 1U);
    write(
        "many.toml", "base = 'base.toml'\n" + [] {
            std::string text;
            for (int i = 0; i < 200; ++i) {
                text += "[[slot]]\nid = 50\nremove = true\n";
            }
            return text;
        }());
    EXPECT_EQ(errorsInFile(pathOf("many.toml"), finder()).size(), 100U);
}

// Offsets are computed for the whole board; an offset that the base gives stays.
TEST_F(DescriptionChain, placesPayloadsOfAllFiles) {
    write("base.toml", "[[slot]]\nid = 1\npayload = '01 02 03'\n[[slot]]\nid = 2\npayload = '04'\n"
                       "[[slot]]\nid = 3\npayload_offset = 100\npayload = '05'");
    write("over.toml", "base = 'base.toml'\n[[slot]]\nid = 1\npayload = '01'\n"
                       "[[slot]]\nid = 4\npayload = '06'");
    const Board board = load("over.toml");
    ASSERT_EQ(board.slots.size(), 4U);
    EXPECT_EQ(board.slots[0].payloadOffset, 0);
    EXPECT_EQ(board.slots[1].payloadOffset, 2);
    EXPECT_EQ(board.slots[2].payloadOffset, 100);
    EXPECT_EQ(board.slots[3].payloadOffset, 102);
}

} // namespace
} // namespace board
