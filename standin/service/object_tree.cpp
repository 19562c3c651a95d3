#include "standin/service/object_tree.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace standin {

namespace {

constexpr std::string_view head =
    "<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\"\n"
    "\"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n"
    "<node>\n"
    " <interface name=\"org.freedesktop.DBus.Introspectable\">\n"
    "  <method name=\"Introspect\"><arg name=\"xml\" type=\"s\" direction=\"out\"/></method>\n"
    " </interface>\n"
    " <interface name=\"org.freedesktop.DBus.Properties\">\n"
    "  <method name=\"Get\">\n"
    "   <arg name=\"interface\" direction=\"in\" type=\"s\"/>\n"
    "   <arg name=\"property\" direction=\"in\" type=\"s\"/>\n"
    "   <arg name=\"value\" direction=\"out\" type=\"v\"/>\n"
    "  </method>\n"
    "  <method name=\"GetAll\">\n"
    "   <arg name=\"interface\" direction=\"in\" type=\"s\"/>\n"
    "   <arg name=\"properties\" direction=\"out\" type=\"a{sv}\"/>\n"
    "  </method>\n"
    " </interface>\n";

constexpr std::string_view managerXml =
    " <interface name=\"org.freedesktop.DBus.ObjectManager\">\n"
    "  <method name=\"GetManagedObjects\">\n"
    "   <arg type=\"a{oa{sa{sv}}}\" name=\"objects\" direction=\"out\"/>\n"
    "  </method>\n"
    " </interface>\n";

// Names come from the board description and may hold any character.
std::string xmlText(std::string_view text) {
    std::string safe;
    for (const char c : text) {
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += c;
        }
    }
    return safe;
}

void describe(std::string& xml, const board::PublishedInterface& interface) {
    xml.append(" <interface name=\"").append(xmlText(interface.interface)).append("\">\n");
    for (const board::Property& property : interface.properties) {
        xml.append("  <property name=\"").append(xmlText(property.name));
        xml.append("\" type=\"").append(xmlText(property.signature));
        xml += "\" access=\"read\">"
               "<annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\" "
               "value=\"false\"/></property>\n";
    }
    xml += " </interface>\n";
}

} // namespace

const board::PublishedInterface* ObjectNode::find(std::string_view interface) const {
    const auto found =
        std::ranges::find(interfaces, interface, &board::PublishedInterface::interface);
    return found != interfaces.end() ? *found : nullptr;
}

ObjectTree::ObjectTree(const board::ServiceModel& model) {
    for (const std::string& path : model.managers) {
        nodeAt(path).manager = true;
    }
    for (const board::PublishedInterface& interface : model.interfaces) {
        nodeAt(interface.path).interfaces.push_back(&interface);
    }
}

const ObjectNode* ObjectTree::find(std::string_view path) const {
    const auto found = index_.find(std::string(path));
    return found != index_.end() ? &nodes_[found->second] : nullptr;
}

ObjectNode& ObjectTree::nodeAt(const std::string& path) {
    const auto [entry, isNew] = index_.try_emplace(path, nodes_.size());
    if (isNew) {
        nodes_.push_back({.path = path, .manager = false, .interfaces = {}});
    }
    return nodes_[entry->second];
}

std::string ObjectTree::introspection(std::string_view path) const {
    const ObjectNode* node = find(path);
    const std::size_t prefix = path == "/" ? 1 : path.size() + 1;
    std::set<std::string_view> children;
    for (const ObjectNode& other : nodes_) {
        if (isBelow(other.path, path)) {
            const std::string_view rest = std::string_view(other.path).substr(prefix);
            children.insert(rest.substr(0, rest.find('/')));
        }
    }
    if (node == nullptr && children.empty()) {
        return {};
    }
    std::string xml(head);
    if (node != nullptr) {
        xml += node->manager ? managerXml : "";
        for (const board::PublishedInterface* interface : node->interfaces) {
            describe(xml, *interface);
        }
    }
    for (const std::string_view child : children) {
        xml.append(" <node name=\"").append(child).append("\"/>\n");
    }
    return xml + "</node>\n";
}

bool isBelow(std::string_view path, std::string_view ancestor) {
    return ancestor == "/" ? path.size() > 1
                           : path.size() > ancestor.size() && path.starts_with(ancestor) &&
                                 path[ancestor.size()] == '/';
}

} // namespace standin
