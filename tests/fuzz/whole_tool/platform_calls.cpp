// The platform's libraries. Each call ends as the input says, within the contract: a status, bytes
// of any number, an exception, a tree of any shape. The calls also hold the tool to its part of the
// contract.
#include "platform/cpld_driver.h"
#include "platform/debug_log.h"
#include "platform/hal.h"
#include "platform/sysinfo.h"
#include "tests/fuzz/whole_tool/session.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <deque>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

namespace zolt::fuzz {

namespace {

using Answer = std::vector<std::uint8_t>;

constexpr std::size_t longestArea = 2048; // of a delivery that the input makes up
constexpr unsigned mostNodes = 4;

std::int32_t failure(Bytes& answer) {
    const auto status = static_cast<std::int32_t>(answer.take32());
    return status == 0 ? -1 : status;
}

// The standard exceptions of an allocation.
void throwOf(Bytes& answer) {
    if (answer.take() % 2 == 0) {
        throw std::bad_alloc();
    }
    throw std::length_error("vector::_M_default_append");
}

enum class Ending : std::uint8_t { usual, longer, failed, failedWithBytes, thrown };

Ending endingOf(std::uint8_t how) {
    constexpr std::array endings{Ending::longer, Ending::failed, Ending::failedWithBytes,
                                 Ending::thrown};
    return goesWell(how) ? Ending::usual : endings[how % endings.size()];
}

// A read of the HAL. Instead of the @p usual number of bytes, the HAL may deliver any number.
std::int32_t readHal(std::size_t usual, Answer& value) {
    Bytes& answer = nextAnswer();
    switch (endingOf(answer.take())) {
    case Ending::usual:
        value = answer.takeBytes(usual);
        return 0;
    case Ending::longer: // or shorter
        value = answer.takeBytes(answer.take16() % (longestArea + 1));
        return 0;
    case Ending::failedWithBytes:
        value = answer.takeBytes(answer.take());
        break;
    case Ending::thrown:
        throwOf(answer);
        break;
    case Ending::failed:
        break;
    }
    return failure(answer);
}

std::size_t usualSize(std::string_view name) {
    if (name == "RISER_SLOT_MAP_BLOB") {
        return 256;
    }
    return name.ends_with("_OFFSET") ? 2 : 1;
}

class Object : public HAL_i2c {
public:
    Object(std::string name, std::uint8_t how) : name_(std::move(name)), registered_(how % 2 != 0) {
        ++session->objects;
    }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object() override {
        // An object that threw when it was asked may keep its callback.
        require(!registered_ || threw_);
        (void)nextAnswer();
        --session->objects;
    }

    std::int32_t ReadIO(Answer& buffer, std::uint32_t length, std::uint32_t offset) override {
        require(length <= longestArea && offset <= 0xFFFF + 2);
        return readHal(length, buffer);
    }
    [[nodiscard]] bool IsInterruptCallbackRegistered() const override {
        throwIfTold();
        return registered_;
    }
    std::int32_t UnregisterInterruptCallback() override {
        require(registered_);
        throwIfTold();
        registered_ = false;
        return static_cast<std::int32_t>(nextAnswer().take());
    }
    [[nodiscard]] const std::string& Name() const override {
        throwIfTold();
        return name_;
    }

private:
    void throwIfTold() const {
        Bytes& answer = nextAnswer();
        if (endingOf(answer.take()) == Ending::thrown) {
            threw_ = true;
            throwOf(answer);
        }
    }

    std::string name_;
    bool registered_;
    mutable bool threw_ = false;
};

std::int32_t readCpld(std::uint8_t* buffer, std::uint32_t length) {
    Bytes& answer = nextAnswer();
    if (!goesWell(answer.take())) {
        return failure(answer);
    }
    std::ranges::copy(answer.takeBytes(length), buffer);
    return 0;
}

struct Tree {
    SysInfoTree root;
    std::deque<IndexNodeInfo> nodes;
    std::deque<SubIndexNodeInfo> subNodes;
};

template <std::size_t Size>
void setName(char (&name)[Size], Bytes& answer) {
    std::ranges::copy(answer.takeText(answer.take() % (Size + 1)), name);
}

const SubIndexNodeInfo* addSubNodes(Tree& tree, Bytes& answer) {
    const SubIndexNodeInfo* first = nullptr;
    for (unsigned count = answer.take() % mostNodes; count > 0; --count) {
        SubIndexNodeInfo& node = tree.subNodes.emplace_back();
        node.discoverable = answer.take();
        node.subIndex = static_cast<std::int32_t>(answer.take32());
        node.subNodeCount = static_cast<std::int32_t>(answer.take32());
        setName(node.name, answer);
        node.next = std::exchange(first, &node);
    }
    return first;
}

void addNode(Tree& tree, Bytes& answer) {
    IndexNodeInfo& node = tree.nodes.emplace_back();
    node.discoverable = answer.take() % 3;
    node.picpwrId = answer.take();
    node.hwUid = answer.take16();
    node.index = static_cast<std::int32_t>(answer.take()) - 1;
    node.physicalBus = static_cast<std::int32_t>(answer.take32());
    setName(node.name, answer);
    node.subNodes = addSubNodes(tree, answer);
    node.next = std::exchange(tree.root.indexNodes, &node);
}

} // namespace

} // namespace zolt::fuzz

using zolt::fuzz::Ending;
using zolt::fuzz::endingOf;
using zolt::fuzz::nextAnswer;
using zolt::fuzz::require;
using zolt::fuzz::session;

// NOLINTBEGIN(performance-unnecessary-value-param): the platform's contract.

std::int32_t ReadIO_Str(std::string name, std::vector<std::uint8_t>& value, std::uint32_t* size) {
    require(value.empty() && *size == 0 && name.size() < 64);
    const std::int32_t status = zolt::fuzz::readHal(zolt::fuzz::usualSize(name), value);
    zolt::fuzz::Bytes& answer = session->board;
    // The stated size may differ from the number of bytes.
    const bool isTrue = status == 0 && zolt::fuzz::goesWell(answer.take());
    *size = isTrue ? static_cast<std::uint32_t>(value.size()) : answer.take32();
    return status;
}

HAL_cfgbase* HAL_cfgdata::ReadHALConfig(std::string name) {
    zolt::fuzz::Bytes& answer = nextAnswer();
    const std::uint8_t how = answer.take();
    switch (endingOf(how)) {
    case Ending::failed:
    case Ending::failedWithBytes:
        return nullptr;
    case Ending::thrown:
        zolt::fuzz::throwOf(answer);
        return nullptr;
    default:
        return new zolt::fuzz::Object(std::move(name), how);
    }
}

// NOLINTEND(performance-unnecessary-value-param)

extern "C" {

std::int32_t cpld_read_device(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length) {
    require(length == 1 && (address <= 0xFFFF || address >= 0xFFFF8000));
    return zolt::fuzz::readCpld(buffer, length);
}

std::int32_t cpld_read_block_device(std::uint8_t* buffer, std::uint32_t /*address*/,
                                    std::uint32_t length, std::uint32_t stride) {
    require(length <= zolt::fuzz::longestArea && stride == 1);
    return zolt::fuzz::readCpld(buffer, length);
}

int dlog_printf(int level, int module, const char* format, ...) {
    require((level == 2 || level == 5) && module == 273);
    std::array<char, 512> text;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    require(length > 0 && static_cast<std::size_t>(length) < text.size());
    return zolt::fuzz::goesWell(session->board.take()) ? 0 : -1;
}

int i2c_parse_sysinfo(int deviceType, SysInfoTree** root) {
    require(deviceType >= 0 && deviceType <= 164 && *root == nullptr);
    zolt::fuzz::Bytes& answer = nextAnswer();
    const std::uint8_t how = answer.take();
    if (how % 2 == 0) { // a listing of all types asks 165 times
        return how == 0 ? -1 : how - 2;
    }
    auto* const tree = new zolt::fuzz::Tree;
    for (unsigned count = how / 2 % zolt::fuzz::mostNodes; count > 0; --count) {
        zolt::fuzz::addNode(*tree, answer);
    }
    ++session->trees;
    *root = &tree->root;
    return zolt::fuzz::goesWell(how) ? 0 : zolt::fuzz::failure(answer);
}

void free_sysinfo(SysInfoTree* root) {
    (void)nextAnswer();
    if (root == nullptr) {
        return;
    }
    require(session->trees > 0);
    --session->trees;
    // A tree begins with its root.
    delete reinterpret_cast<zolt::fuzz::Tree*>(root);
}
}
