// The objects of a service model, by path.
#pragma once

#include "board/service_model.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace standin {

/// One object with its interfaces in the model's order.
struct ObjectNode {
    std::string path;
    bool manager = false;
    std::vector<const board::PublishedInterface*> interfaces;

    /// The interface of that name; null when the object has none.
    [[nodiscard]] const board::PublishedInterface* find(std::string_view interface) const;
};

/// An index of a model's objects. The model must outlive it.
class ObjectTree {
public:
    explicit ObjectTree(const board::ServiceModel& model);

    /// The object at @p path; null when there is none.
    [[nodiscard]] const ObjectNode* find(std::string_view path) const;

    /// All objects in the order in which the model first names them.
    [[nodiscard]] const std::vector<ObjectNode>& nodes() const { return nodes_; }

    /// The XML that introspection of @p path returns: its interfaces, and the path elements below
    /// it. Empty when no object has this path or lies below it.
    [[nodiscard]] std::string introspection(std::string_view path) const;

private:
    ObjectNode& nodeAt(const std::string& path);

    std::vector<ObjectNode> nodes_;
    std::unordered_map<std::string, std::size_t> index_;
};

/// Whether @p path lies below @p ancestor.
[[nodiscard]] bool isBelow(std::string_view path, std::string_view ancestor);

} // namespace standin
