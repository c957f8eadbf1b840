#include "looks/updating.h"

#include "frame/host.h"
#include "looks/look_knobs.h"
#include "looks/node_transfer.h"
#include "looks/storing.h"

#include <pybind11/pybind11.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace cobaltrig::looks {

namespace py = pybind11;

namespace {

host::Node pressed_node(const char* operation) {
    std::optional<host::Node> node = host::thisNode();
    if (!node)
        throw py::value_error(std::string(operation) +
                              ": no node; it runs from a button on a node's looks tab");
    return *node;
}

// The look indices of the node as the pulldown lists them: sorted as texts, one blank between.
std::string enumeration_of(const host::Node& node) {
    std::vector<std::string> labels;
    for (const host::Knob& knob : get_preset_knobs(node))
        labels.push_back(knob.label());
    std::sort(labels.begin(), labels.end());
    std::string items;
    for (const std::string& label : labels)
        items += (items.empty() ? "" : " ") + label;
    return items;
}

// Shows the panel and gives the look knob the user chose, or nothing when the panel was cancelled
// or the choice names no knob of the node.
std::optional<host::Knob> choose_look(const host::Node& node, const std::string& title,
                                      const std::string& pulldown) {
    host::Panel panel(title);
    panel.addEnumerationPulldown(pulldown, enumeration_of(node));
    if (!panel.show())
        return std::nullopt;
    const std::string wanted = look_knob_name(panel.value(pulldown).value_or(""));
    for (const auto& [name, knob] : node.knobs())
        if (name == wanted)
            return knob;
    return std::nullopt;
}

} // namespace

void update_preset() {
    host::Node node = pressed_node("update_preset");
    std::optional<host::Knob> look =
        choose_look(node, "Update preset", "Select a preset to update");
    if (!look)
        return;
    host::UndoGroup step("Update look " + look->label());
    // The node's own group holds the container of its looks.
    host::GroupContext here(host::parentGroup(node));
    const std::string preset_uid = look->tooltip();
    node.selectOnly();
    NodeTransfer transfer;
    transfer.copySelected();

    host::GroupContext inside(get_look_container());
    for (host::Node& stored : host::allNodes()) {
        if (stored["label"].getText() != preset_uid)
            continue;
        host::deleteNode(stored);
        host::Node preset_node_new = transfer.paste();
        remove_preset_knobs(preset_node_new);
        preset_node_new["label"].setValue(preset_uid);
    }
}

void delete_preset() {
    host::Node node = pressed_node("delete_preset");
    std::optional<host::Knob> look =
        choose_look(node, "Delete preset", "Select a preset to delete");
    if (!look)
        return;
    host::UndoGroup step("Delete look " + look->label());
    host::GroupContext here(host::parentGroup(node));
    const std::string preset_uid = look->tooltip();
    node.removeKnob(*look);

    host::GroupContext inside(get_look_container());
    for (host::Node& stored : host::allNodes())
        if (stored["label"].getText() == preset_uid)
            host::deleteNode(stored);
}

} // namespace cobaltrig::looks
