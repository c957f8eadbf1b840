#include "looks/applying.h"

#include "looks/look_knobs.h"
#include "looks/node_transfer.h"
#include "looks/storing.h"

#include <map>
#include <vector>

namespace cobaltrig::looks {

namespace py = pybind11;

namespace {

// Copies the stored copy with that uid into `transfer`; several matches leave the last one there.
bool copy_stored_look(const host::Node& container, const std::string& preset_uid,
                      NodeTransfer& transfer) {
    host::GroupContext inside(container);
    bool found = false;
    for (host::Node& node : host::allNodes()) {
        if (node["label"].getText() == preset_uid) {
            found = true;
            node.selectOnly();
            transfer.copySelected();
        }
    }
    return found;
}

struct Downstream {
    host::Node node;
    int input;
};

// Every input of the graph that the node feeds, before anything changes.
std::vector<Downstream> downstream_of(const host::Node& node) {
    std::vector<Downstream> found;
    for (host::Node& other : host::allNodes()) {
        const int count = other.inputs();
        for (int i = 0; i < count; ++i) {
            const std::optional<host::Node> source = other.input(i);
            if (source && source->is(node))
                found.push_back({other, i});
        }
    }
    return found;
}

} // namespace

// The order below matters: the downstream connections are read before anything changes, the old
// node's look knobs are read after the paste, and its name is free only once it is gone.
std::optional<host::Node> replace_with_look(host::Node& node_orig, const std::string& preset_uid,
                                            const std::string& look_preset_index) {
    // The paste and the container belong to the graph that holds the node.
    host::GroupContext here(host::parentGroup(node_orig));
    node_orig.selectOnly();
    const std::optional<host::Node> look_container = find_look_container();
    if (!look_container)
        return std::nullopt;

    NodeTransfer transfer;
    if (!copy_stored_look(*look_container, preset_uid, transfer)) {
        host::message("cannot find preset node");
        return std::nullopt;
    }

    // Recorded now and given back explicitly after the delete: whether or not the host hands a
    // deleted node's outputs to its input, each of them ends on the new node.
    std::vector<Downstream> downstream = downstream_of(node_orig);

    // With nothing selected, the paste connects to nothing.
    host::clear_selection_recursive();
    host::Node node_preset = transfer.paste();
    if (node_orig.shown())
        node_preset.showControlPanel();

    // Input by input, so that each keeps its number: a Merge with only A connected keeps B empty.
    // Nodes that the old node only names in an expression are no input of it and stay unconnected.
    const int input_count = node_orig.inputs();
    for (int i = 0; i < input_count; ++i)
        node_preset.setInput(i, node_orig.input(i));

    // Stored copies carry no look buttons, so all of them are rebuilt from the old node: also those
    // stored after this look. Keyed by label and ordered as texts.
    std::map<std::string, std::string> presets_dict;
    for (const auto& [name, knob] : node_orig.knobs())
        if (is_look_knob_name(name))
            presets_dict[knob.label()] = knob.tooltip();
    for (const auto& [index, uid] : presets_dict) {
        host::Knob preset_knob = host::PyScript_Knob(look_knob_name(index), index);
        preset_knob.setTooltip(uid);
        preset_knob.setCommand(look_knob_command(preset_knob.tooltip(), index));
        node_preset.addKnob(preset_knob);
    }

    node_preset.setXYpos(node_orig["xpos"].getValueWhole(), node_orig["ypos"].getValueWhole());
    // The label as typed: `[value name] v2` must stay an expression, not become today's text.
    node_preset["label"].setValue(node_orig["label"].getText());
    const std::string orig_name = node_orig.name();
    host::deleteNode(node_orig);
    node_preset["name"].setValue(orig_name);
    for (Downstream& link : downstream)
        link.node.setInput(link.input, node_preset);

    // The `looks` tab remembers which look the node shows. A node of a class that gets no look tab
    // has nowhere to keep it; its look was applied all the same.
    if (std::optional<host::Knob> tab = node_preset.knob("looks"))
        tab->setTooltip(look_preset_index);
    return node_preset;
}

std::string apply_step_name(const std::string& look_preset_index) {
    return "Apply look " + look_preset_index;
}

std::optional<host::Node> apply_preset(host::Node& node_orig, const std::string& preset_uid,
                                       const std::string& look_preset_index) {
    host::UndoGroup step(apply_step_name(look_preset_index));
    return replace_with_look(node_orig, preset_uid, look_preset_index);
}

} // namespace cobaltrig::looks
