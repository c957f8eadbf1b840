#pragma once
// Applying a look: the node is replaced by a fresh copy of one of its stored looks, and the new
// node takes over everything the rest of the graph and the artist see of the old one: name,
// position, label, connections up and down, open panel and the full row of look buttons.

#include "frame/host.h"

#include <optional>
#include <string>

namespace cobaltrig::looks {

/// Replaces `node_orig` by a copy of the stored look `preset_uid` and gives the new node; the old
/// handle is dead afterwards. Gives nothing, and leaves the node as it was, when the script has no
/// look container (silently) or no stored copy with that uid (the user is told).
/// `look_preset_index` is remembered on the new node as the look it shows.
/// One undo step. The node may sit in any group: its own group's container holds its looks.
std::optional<host::Node> apply_preset(host::Node& node_orig, const std::string& preset_uid,
                                       const std::string& look_preset_index);

/// `apply_preset` without an undo step of its own, for callers that gather several applies into
/// one step.
std::optional<host::Node> replace_with_look(host::Node& node_orig, const std::string& preset_uid,
                                            const std::string& look_preset_index);

/// The name of the undo step that applies that look.
std::string apply_step_name(const std::string& look_preset_index);

} // namespace cobaltrig::looks
