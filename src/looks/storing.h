#pragma once
// Storing a look: a full copy of a node goes into the look container, the one hidden Group of the
// script that holds every look, and the node gets a button that leads back to that copy.

#include "frame/host.h"

#include <optional>

namespace cobaltrig::looks {

/// The look container of the current group context, or nothing. Each graph level keeps its own:
/// a look is stored beside its node, so the operations enter the node's group first. The lookup is
/// `helper.find_looks_group()`, so the sibling API and this code can never disagree.
std::optional<host::Node> find_look_container();

/// The look container of the current group context; made, named, coloured and placed when there is
/// none. A container that cannot be finished is removed again before the failure goes on.
host::Node get_look_container();

/// The index for the next look of `node`: one more than the largest index among its look knobs, 1
/// when it has none. Gaps below the largest are never filled. Fails with a clear message when a
/// knob's number is out of range or no larger number is left.
long long get_next_preset_index(const host::Node& node);

/// Stores the node's present state as a new look and adds its look knob. Nodes of a class named in
/// the setting `presetnodes_ignore` are left alone. The artist's clipboard stays as it was.
/// One undo step.
void set_look(host::Node& node_to_process);

/// `set_look` for each node selected at the start, in the host's order; one undo step for all.
void batch_set_look();

} // namespace cobaltrig::looks
