#include "standin/launcher/bus_nodes.h"

#include "standin/i2c_bus/device.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>
#include <sys/sysmacros.h>

namespace standin {

namespace {

namespace fs = std::filesystem;

struct Mount {
    std::string point;
    std::string options;
    std::string type;
};

// File systems in memory. A /dev is one of these, and all of its files are quickly listed.
constexpr std::array<std::string_view, 3> listed{"devtmpfs", "tmpfs", "ramfs"};

// A look at such a mount can wait for ever, because its server may be gone.
constexpr std::array<std::string_view, 9> remote{"9p",   "afs", "autofs", "ceph",    "cifs",
                                                 "fuse", "nfs", "smb3",   "virtiofs"};

bool opensDevices(const Mount& mount) {
    return ("," + mount.options + ",").find(",nodev,") == std::string::npos;
}

bool isRemote(const Mount& mount) {
    return std::ranges::any_of(remote,
                               [&](std::string_view type) { return mount.type.starts_with(type); });
}

// Spaces and the like stand as a backslash and three octal digits.
std::string unescaped(const std::string& field) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            text += static_cast<char>(std::stoi(field.substr(i + 1, 3), nullptr, 8));
            i += 3;
        } else {
            text += field[i];
        }
    }
    return text;
}

// The mounts of this process, as /proc/self/mountinfo tells them.
std::vector<Mount> mounts() {
    std::vector<Mount> all;
    std::ifstream file("/proc/self/mountinfo");
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        std::string skipped;
        Mount mount;
        fields >> skipped >> skipped >> skipped >> skipped >> mount.point >> mount.options;
        while (fields >> skipped && skipped != "-") { // fields of any number
        }
        fields >> mount.type;
        mount.point = unescaped(mount.point);
        all.push_back(mount);
    }
    return all;
}

// Adds the nodes below a directory. If @p device is given, mounts of other devices are left out.
void addNodesBelow(const fs::path& directory, std::optional<dev_t> device,
                   std::vector<std::string>& nodes) {
    std::error_code closed; // ignored: the directory is unreadable, or gone by now
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, closed)) {
        std::error_code gone;
        const bool isDirectory = !entry.is_symlink(gone) && entry.is_directory(gone);
        struct stat status {};
        if ((!isDirectory && !entry.is_character_file(gone)) ||
            lstat(entry.path().c_str(), &status) != 0) {
            continue;
        }
        if (isBusNode(status)) {
            nodes.push_back(entry.path());
        } else if (S_ISDIR(status.st_mode) && status.st_dev == device.value_or(status.st_dev)) {
            addNodesBelow(entry.path(), device, nodes);
        }
    }
}

void addNodesOf(const Mount& mount, std::vector<std::string>& nodes) {
    struct stat status {};
    if (!opensDevices(mount) || isRemote(mount) || lstat(mount.point.c_str(), &status) != 0) {
        return;
    }
    if (isBusNode(status)) {
        nodes.push_back(mount.point);
    } else if (std::ranges::find(listed, mount.type) != listed.end()) {
        addNodesBelow(mount.point, status.st_dev, nodes);
    }
}

} // namespace

bool isBusNode(const struct stat& status) {
    return S_ISCHR(status.st_mode) && major(status.st_rdev) == I2C_DEVICE_MAJOR;
}

std::vector<std::string> busNodes() {
    std::vector<std::string> nodes;
    addNodesBelow("/dev", {}, nodes);
    for (const Mount& mount : mounts()) {
        addNodesOf(mount, nodes);
    }
    std::ranges::sort(nodes);
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    return nodes;
}

} // namespace standin
