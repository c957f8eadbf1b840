#include "looks/storing.h"

#include "frame/siblings.h"
#include "looks/look_knobs.h"
#include "looks/node_transfer.h"

#include <algorithm>
#include <string>
#include <vector>

namespace cobaltrig::looks {

namespace py = pybind11;

namespace {

// 0x089AFDFF: the blue that tells the container apart in the graph.
constexpr long long kContainerColor = 144375295;

// Split at every comma and nothing else: the entries are compared as they stand, blanks included,
// and an empty setting gives one empty entry that matches no class.
std::vector<std::string> split_at_commas(const std::string& text) {
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    for (;;) {
        const auto comma = text.find(',', start);
        parts.push_back(text.substr(start, comma - start));
        if (comma == std::string::npos)
            return parts;
        start = comma + 1;
    }
}

std::vector<std::string> ignored_classes() {
    const siblings::Settings settings = siblings::load_settings();
    const std::optional<std::string> value = settings.get("presetnodes_ignore");
    if (!value)
        throw py::key_error("presetnodes_ignore: the settings store gives no list of node classes "
                            "to leave out of looks");
    return split_at_commas(*value);
}

// Everything the name holds besides the marker, read as Python reads a whole number.
long long index_of_look_knob(const std::string& name) {
    std::string rest = name;
    const std::string marker = kLookKnobMarker;
    for (auto at = rest.find(marker); at != std::string::npos; at = rest.find(marker, at))
        rest.erase(at, marker.size());
    return read_look_index(rest, "look knob " + name);
}

host::Node make_look_container() {
    host::Node container = host::createNode("Group", false);
    try {
        // Another node may carry the name already; the container then takes the host's next free
        // one. It is found by its hidden knob, never by its name.
        container.setName("looks", true);
        container["tile_color"].setValue(py::int_(kContainerColor));
        host::Knob tab = host::Tab_Knob("looks");
        host::Knob notice =
            host::Text_Knob("notice", "", "looks container. Don't delete this node");
        container.addKnob(tab);
        container.addKnob(notice);
        host::Knob marker = host::Text_Knob("looks_group");
        container.addKnob(marker);
        marker.setVisible(false);
        const auto [x, y] = siblings::get_topleft_coordinates();
        container.setXYpos(x, y);
    } catch (...) {
        // A half-made container is not recognised as one, so every retry would leave another
        // empty Group behind: take it away again before the failure goes on.
        try {
            host::deleteNode(container);
        } catch (py::error_already_set& e) {
            e.discard_as_unraisable("removing a half-made look container");
        }
        throw;
    }
    return container;
}

// Stores one look; runs in the group that holds the node, which the caller has entered.
void store_look(host::Node& node_to_process) {
    node_to_process.selectOnly();
    // The widgets go on before the copy is taken, so that the stored copy carries them too.
    create_looks_widgets(node_to_process);
    NodeTransfer transfer;
    transfer.copySelected();
    const long long presets_index_next = get_next_preset_index(node_to_process);
    host::Node look_group = get_look_container();

    std::string preset_uid;
    {
        host::GroupContext inside(look_group);
        host::Node node = transfer.paste();
        const int input_count = node.inputs();
        for (int i = 0; i < input_count; ++i)
            node.setInput(i, std::nullopt);
        preset_uid = siblings::create_uid();
        node["label"].setValue(preset_uid);
        remove_preset_knobs(node);
    }

    const std::string id_preset = std::to_string(presets_index_next);
    host::Knob look_preset_new = host::PyScript_Knob(look_knob_name(id_preset), id_preset);
    look_preset_new.setTooltip(preset_uid);
    look_preset_new.setCommand(look_knob_command(look_preset_new.tooltip(), id_preset));
    node_to_process.addKnob(look_preset_new);
}

bool is_ignored(const host::Node& node, const std::vector<std::string>& nodes_ignore) {
    return std::find(nodes_ignore.begin(), nodes_ignore.end(), node.Class()) != nodes_ignore.end();
}

} // namespace

std::optional<host::Node> find_look_container() {
    // One lookup for every look operation: the sibling function, which a studio may replace.
    const py::object found = siblings::find_looks_group();
    if (found.is_none() || !py::bool_(found))
        return std::nullopt;
    return host::Node(found);
}

host::Node get_look_container() {
    if (std::optional<host::Node> found = find_look_container())
        return *found;
    return make_look_container();
}

long long get_next_preset_index(const host::Node& node) {
    std::vector<long long> indices;
    for (const auto& [name, knob] : node.knobs())
        if (is_look_knob_name(name))
            indices.push_back(index_of_look_knob(name));
    if (indices.empty())
        return 1;
    const long long largest = *std::max_element(indices.begin(), indices.end());
    if (largest >= kMaxLookIndex)
        throw py::value_error(node.name() + ": no look number is left after " +
                              std::to_string(largest) +
                              "; delete or rename that look knob to store more looks");
    return largest + 1;
}

void set_look(host::Node& node_to_process) {
    const std::vector<std::string> nodes_ignore = ignored_classes();
    if (is_ignored(node_to_process, nodes_ignore))
        return;
    host::UndoGroup step("Store look");
    // The copy, the index, the container and the paste all belong to the graph that holds the node.
    host::GroupContext here(host::parentGroup(node_to_process));
    store_look(node_to_process);
}

void batch_set_look() {
    const std::vector<std::string> nodes_ignore = ignored_classes();
    host::UndoGroup step("Store looks");
    // The list is taken once: every store changes the selection.
    for (host::Node& node : host::selectedNodes()) {
        if (is_ignored(node, nodes_ignore))
            continue;
        host::GroupContext here(host::parentGroup(node));
        store_look(node);
    }
}

} // namespace cobaltrig::looks
