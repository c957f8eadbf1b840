#pragma once
// Storing a look: a full copy of a node goes into the look container, the one hidden Group of the
// script that holds every look, and the node gets a button that leads back to that copy.

#include "frame/host.h"

namespace cobaltrig::looks {

/// The script's look container; made, named, coloured and placed when the script has none.
host::Node get_look_container();

/// The index for the next look of the selected node: one more than the largest index among its look
/// knobs, 1 when it has none. Gaps below the largest are never filled. `node` is the node that gets
/// the look; callers select it first, and it is the selected node's knobs that count.
int get_next_preset_index(const host::Node& node);

/// Stores the node's present state as a new look and adds its look knob. Nodes of a class named in
/// the setting `presetnodes_ignore` are left alone. Uses the host's clipboard.
void set_look(host::Node& node_to_process);

/// `set_look` for each node selected at the start, in the host's order.
void batch_set_look();

} // namespace cobaltrig::looks
