#pragma once
// Writing a preset file through the host's copy without ever losing the preset it replaces.

#include "frame/host.h"

#include <QString>

#include <optional>

namespace cobaltrig::pools {

/// Has the host write its selection (of the current group) to `preset`. The host writes a
/// temporary file in the same folder, which replaces `preset` in one rename only once it holds
/// something, so an existing preset is whole until the new one is: a failed or killed write
/// leaves it as it was. A link at `preset` is followed, so a shared preset stays shared. Fails
/// with std::runtime_error naming the file when the host wrote nothing or the rename fails; a
/// failure of the host's copy itself passes on as it is. The temporary file goes on every path.
void writePresetThroughHost(const QString& preset);

/// The group that holds `node` (the root for a node at the top), where its presets are copied
/// from and pasted to; nothing when the host can't find it.
std::optional<host::Node> holdingGroup(const host::Node& node);

} // namespace cobaltrig::pools
