// Prints the keys that the loader of board descriptions asks for while it reads the given files:
//   key PATH KIND LOWEST HIGHEST
// the tables in which a description can change its base:
//   layout PATH KIND IDENTITY...
// and the names of the device types:
//   device_type NAME
#include "board/board_loader.h"
#include "board/description_layout.h"

#include "i2c/device_types.h"

#include <cstdio>
#include <exception>
#include <set>
#include <string>

namespace {

using namespace board;

class Keys final : public KeyObserver {
public:
    void asked(const std::string& path, std::string_view kind, std::int64_t lowest,
               std::int64_t highest) override {
        lines_.insert("key " + path + " " + std::string(kind) + " " + std::to_string(lowest) + " " +
                      std::to_string(highest));
    }
    void print() const {
        for (const std::string& line : lines_) {
            std::puts(line.c_str());
        }
    }

private:
    std::set<std::string> lines_;
};

const char* nameOf(Layout::Kind kind) {
    using enum Layout::Kind;
    switch (kind) {
    case table:
        return "table";
    case list:
        return "tables";
    case texts:
        return "texts";
    default:
        return "names";
    }
}

void printLayout(const Layout& layout, const std::string& parent) {
    for (const Layout& member : layout.members) {
        std::string path = parent;
        path.append(path.empty() ? "" : ".").append(member.key);
        std::printf("layout %s %s", path.c_str(), nameOf(member.kind));
        for (const IdentityKey& identity : member.identity) {
            std::printf(" %.*s", static_cast<int>(identity.key.size()), identity.key.data());
        }
        std::puts("");
        printLayout(member, path);
    }
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        Keys keys;
        for (int at = 1; at < argc; ++at) {
            observeKeys(readDescription(argv[at]).text, argv[at], keys);
        }
        keys.print();
        printLayout(boardLayout(), "");
        for (unsigned code = 0; code < zolt::deviceTypeCount; ++code) {
            std::printf("device_type %s\n", zolt::deviceTypeName(code).c_str());
        }
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
