#include "standin/launcher/machine_buses.h"

#include "standin/launcher/bus_nodes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <filesystem>
#include <linux/capability.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace standin {

namespace {

namespace fs = std::filesystem;

// Capabilities that open a way to a bus round the mounts.
constexpr std::array<unsigned, 4> waysRound{
    CAP_SYS_ADMIN,       // unmounts a node's cover, joins other mounts
    CAP_MKNOD,           // makes a new node for the bus
    CAP_SYS_PTRACE,      // reaches /dev through another process's root directory
    CAP_DAC_READ_SEARCH, // opens a file by its handle, past any mount
};

void checkStep(long result, const std::string& step) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), step);
    }
}

bool canBeOpened(const std::string& node) {
    return faccessat(AT_FDCWD, node.c_str(), R_OK, AT_EACCESS) == 0 ||
           faccessat(AT_FDCWD, node.c_str(), W_OK, AT_EACCESS) == 0;
}

bool isBusOf(const std::string& node, const std::set<std::uint32_t>& buses) {
    struct stat status {};
    return stat(node.c_str(), &status) == 0 && buses.contains(minor(status.st_rdev));
}

template <typename Condition>
void closeDescriptors(Condition toBeClosed) {
    std::vector<int> descriptors;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        const std::string name = entry.path().filename();
        std::from_chars(name.data(), name.data() + name.size(), descriptors.emplace_back());
    }
    for (const int descriptor : descriptors) {
        struct stat status {};
        if (fstat(descriptor, &status) == 0 && toBeClosed(status)) {
            close(descriptor);
        }
    }
}

void writeFile(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    checkStep(file, path);
    checkStep(write(file, text.data(), text.size()), path);
    close(file);
}

// An ordinary user can mount only in a user namespace. User and group keep their numbers in it.
void getOwnMounts() {
    if (unshare(CLONE_NEWNS) == 0) {
        checkStep(mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr),
                  "cannot detach its mounts");
        return;
    }
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    checkStep(unshare(CLONE_NEWUSER | CLONE_NEWNS), "cannot get mounts of its own");
    writeFile("/proc/self/uid_map", user + " " + user + " 1");
    writeFile("/proc/self/setgroups", "deny");
    writeFile("/proc/self/gid_map", group + " " + group + " 1");
}

void closeNode(const std::string& node) {
    mount_attr noDevices{};
    noDevices.attr_set = MOUNT_ATTR_NODEV;
    // A removed node that is still mounted alone takes no cover. Its own mount is closed then.
    if (mount(node.c_str(), node.c_str(), nullptr, MS_BIND, nullptr) != 0 && errno != ENOENT) {
        checkStep(-1, node);
    }
    checkStep(mount_setattr(AT_FDCWD, node.c_str(), 0, &noDevices, sizeof noDevices), node);
}

// The loss is final, because PR_SET_NO_NEW_PRIVS keeps later programs from gaining privileges.
void giveUpWaysRound() {
    __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
    checkStep(syscall(SYS_capget, &header, sets.data()), "cannot get its capabilities");
    for (const unsigned capability : waysRound) {
        __user_cap_data_struct& set = sets.at(CAP_TO_INDEX(capability));
        set.effective &= ~CAP_TO_MASK(capability);
        set.permitted &= ~CAP_TO_MASK(capability);
        set.inheritable &= ~CAP_TO_MASK(capability);
    }
    checkStep(syscall(SYS_capset, &header, sets.data()), "cannot give up capabilities");
}

} // namespace

void keepFromMachineBuses(const std::set<std::uint32_t>& boardBuses) {
    closeDescriptors(isBusNode);
    std::vector<std::string> nodes = busNodes();
    std::erase_if(nodes, [&](const std::string& node) { return isBusOf(node, boardBuses); });
    if (nodes.empty()) {
        return;
    }
    checkStep(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), "cannot refuse privileges");
    std::erase_if(nodes, [](const std::string& node) { return !canBeOpened(node); });
    if (nodes.empty()) {
        return;
    }
    getOwnMounts();
    // A directory that was opened before leads to the old mounts.
    closeDescriptors([](const struct stat& status) { return S_ISDIR(status.st_mode); });
    std::ranges::for_each(nodes, closeNode);
    giveUpWaysRound();
}

} // namespace standin
