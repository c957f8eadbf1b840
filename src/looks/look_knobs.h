#pragma once
// The knobs a node with looks carries: the `looks` tab with its fixed row of buttons, and one
// script button per stored look (`look_preset_<n>`). The knobs live in the host's script; this code
// keeps no record of them.

#include "frame/host.h"

#include <string>
#include <vector>

namespace cobaltrig::looks {

/// Part of every look knob's name; a knob counts as a look knob when its name contains it anywhere.
inline constexpr const char* kLookKnobMarker = "look_preset_";

/// True for the name of a look knob.
bool is_look_knob_name(const std::string& name);
/// "look_preset_<index>".
std::string look_knob_name(const std::string& index);
/// The command stored in a look knob: it applies the look with the uid and the index. Both stand
/// between single quotes as Python string literals, escaped where needed, so that whatever text a
/// tooltip or label holds reaches `apply_preset` as that text and never runs as code.
std::string look_knob_command(const std::string& preset_uid, const std::string& index);

/// The largest look number the add-on counts with; the slider and the next index stay in C++ ints.
inline constexpr long long kMaxLookIndex = 2147483647;

/// A look number from the script (what a look knob's name holds after the marker, a tooltip of the
/// `looks` tab), read as Python's int() reads it, whatever its size. Fails with Python's error for
/// a text that is no number, and with a message naming `where` when the number is beyond
/// +-kMaxLookIndex.
long long read_look_index(const std::string& text, const std::string& where);

/// Gives `node` the look tab and its buttons, unless its class is refused or it has a `looks` tab
/// already. Never fails: whatever goes wrong is swallowed and the knobs added so far stay.
void create_looks_widgets(host::Node& node);

/// The look knobs of `node`, in the host's knob order.
std::vector<host::Knob> get_preset_knobs(const host::Node& node);

/// Removes every look knob from `node`.
void remove_preset_knobs(host::Node& node);

/// Removes the look tab, its buttons and the look knobs from every selected node.
void delete_look_widgets(host::Node& node);

/// `delete_look_widgets` for each selected node; one undo step.
void delete_selected_nodes_looks();

} // namespace cobaltrig::looks
