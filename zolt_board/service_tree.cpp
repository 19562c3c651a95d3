#include "zolt_board/service_tree.h"

#include "board/bus_names.h"
#include "board/published_board.h"

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zolt_board {

namespace {

// A name without the part that all names of the service share.
std::string_view withoutPrefix(std::string_view name, std::string_view prefix) {
    return name.starts_with(prefix) ? name.substr(prefix.size()) : name;
}

std::string interfaceText(const board::PublishedInterface& published, const Output& output) {
    const std::size_t count = published.properties.size();
    return output.safe(withoutPrefix(published.interface, board::serviceInterfacePrefix))
        .append(", ")
        .append(std::to_string(count))
        .append(count == 1 ? " property" : " properties");
}

std::string answerText(const board::ServiceOrder& order, const Output& output) {
    using Action = board::ServiceOrder::Action;
    switch (order.action) {
    case Action::answer:
        return "answers late";
    case Action::error:
        return "answers " + output.safe(order.name);
    case Action::reply:
        return "answers with another value";
    case Action::leave:
        return "leaves the bus";
    }
    return "";
}

} // namespace

void addService(const board::Board& board, const Output& output, Branch& root) {
    const board::ServiceModel model = board::publishBoard(board);
    Branch& service = root.add(output.painted(Part::heading, "service"));
    std::vector<std::pair<std::string_view, Branch>> objects; // in the order of the service
    std::map<std::string_view, std::size_t> places;
    for (const board::PublishedInterface& published : model.interfaces) {
        const std::string_view path = published.path;
        const auto [place, isNew] = places.emplace(path, objects.size());
        if (isNew) {
            const std::string name = output.safe(withoutPrefix(path, board::servicePathPrefix));
            objects.emplace_back(path, Branch(output.painted(Part::name, name)));
        }
        objects[place->second].second.add(interfaceText(published, output));
    }
    for (auto& [path, branch] : objects) {
        // Most objects have one interface, which fits on the line of the object.
        if (branch.branches.size() == 1) {
            branch.text.append(": ").append(branch.branches.front().text);
            branch.branches.clear();
        }
        service.branches.push_back(std::move(branch));
    }
    for (const board::ServiceOrder& order : board.service.orders) {
        const std::string path(withoutPrefix(order.path, board::servicePathPrefix));
        service.add(output.painted(Part::wrong,
                                   "order: " + (path.empty() ? "any object" : output.safe(path)) +
                                       " " + answerText(order, output)));
    }
}

} // namespace zolt_board
