// The C++ types of the service's replies.
//
// A variant of a reply is read into the first alternative whose signature equals the variant's. A
// variant that equals none becomes the first alternative's default value. The printers rely on the
// order of PropertyValue.
#pragma once

#include <sdbusplus/message.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

// The using-directive below names this namespace. This declaration creates the namespace where
// sdbusplus does not have it.
namespace sdbusplus::message {}

namespace zolt {

/// sdbusplus's type of an object path. Present versions call it sdbusplus::object_path, older ones
/// sdbusplus::message::object_path. A lookup through both namespaces finds the one that exists.
namespace either_library {

using namespace sdbusplus;
using namespace sdbusplus::message;
using ObjectPath = object_path;

} // namespace either_library

using either_library::ObjectPath;

/// An endpoint's six bytes in the order of the message, signature "(yyyyyy)".
using EndpointDescriptor =
    std::tuple<std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t>;

/// The value of one property: "(yyyyyy)", "q", "y" or "b".
using PropertyValue = std::variant<EndpointDescriptor, std::uint16_t, std::uint8_t, bool>;

/// The properties of one interface by name, the reply of Properties.GetAll.
using PropertyMap = std::map<std::string, PropertyValue>;

/// The value of one property in a reply of GetManagedObjects: a string, a number or a boolean, or
/// an array of one of these types.
using ManagedObjectValue =
    std::variant<std::string, std::int64_t, std::uint64_t, double, std::int32_t, std::uint32_t,
                 std::int16_t, std::uint16_t, std::uint8_t, bool, std::vector<std::string>,
                 std::vector<std::int64_t>, std::vector<std::uint64_t>, std::vector<double>,
                 std::vector<std::int32_t>, std::vector<std::uint32_t>, std::vector<std::int16_t>,
                 std::vector<std::uint16_t>, std::vector<std::uint8_t>, std::vector<bool>>;

/// Objects by path, with their interfaces and properties by name: the reply of GetManagedObjects.
using ManagedObjects =
    std::map<ObjectPath, std::map<std::string, std::map<std::string, ManagedObjectValue>>>;

} // namespace zolt
