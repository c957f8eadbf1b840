#include "looks/applying.h"

#include "looks/look_knobs.h"
#include "looks/storing.h"

#include <map>

namespace cobaltrig::looks {

namespace py = pybind11;

namespace {

constexpr const char* kClipboard = "%clipboard%";

// Puts the stored copy with that uid on the clipboard; several matches leave the last one there.
bool copy_stored_look(const host::Node& container, const std::string& preset_uid) {
    host::GroupContext inside(container);
    bool found = false;
    for (host::Node& node : host::allNodes()) {
        if (node["label"].getValueText() == preset_uid) {
            found = true;
            node.selectOnly();
            host::nodeCopy(kClipboard);
        }
    }
    return found;
}

} // namespace

// The order below matters: the downstream connections have to leave the old node before it is
// deleted, its look knobs are read after the paste, and its name is free only once it is gone.
std::optional<host::Node> replace_with_look(host::Node& node_orig, const std::string& preset_uid,
                                            const std::string& look_preset_index) {
    // The Dot, the paste and the container all belong to the graph that holds the node.
    host::GroupContext here(host::parentGroup(node_orig));
    node_orig.selectOnly();
    const std::optional<host::Node> look_container = find_look_container();
    if (!look_container)
        return std::nullopt;

    if (!copy_stored_look(*look_container, preset_uid)) {
        host::message("cannot find preset node");
        return std::nullopt;
    }

    // A Dot below the old node collects its downstream connections, to hand them to the new one.
    // Positions stay Python numbers: they only go back to the host, whatever their size.
    host::Node dot_tmp = host::createNodeDefault("Dot");
    const py::int_ xpos = node_orig["xpos"].getValueWhole();
    const py::int_ ypos = node_orig["ypos"].getValueWhole();
    dot_tmp["xpos"].setValue(xpos + py::float_(node_orig.screenWidth() * 0.5));
    dot_tmp["ypos"].setValue(ypos + py::int_(50));

    // With nothing selected, the paste connects to nothing.
    host::clear_selection_recursive();
    host::Node node_preset = host::nodePaste(kClipboard);
    if (node_orig.shown())
        node_preset.showControlPanel();

    dot_tmp.setInput(0, node_preset);
    host::deleteNode(dot_tmp);

    // Inputs are handed over in the order of the dependencies, which have no gaps; what the host
    // answers for an input the new node lacks is not our concern.
    int i = 0;
    for (const host::Node& upstream : node_orig.dependencies())
        node_preset.setInput(i++, upstream);

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
    node_preset["label"].setValue(node_orig["label"].getValue());
    const std::string orig_name = node_orig.name();
    host::deleteNode(node_orig);
    node_preset["name"].setValue(orig_name);

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
