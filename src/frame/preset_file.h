#pragma once
// Writing a preset file through the host's copy without ever losing the preset it replaces.

#include <QString>

namespace cobaltrig::files {

/// Has the host write its selection (of the current group) to `preset` through a temporary file
/// beside it that replaces `preset` in one rename only once it holds something, so an existing
/// preset is whole until the new one is. A link at `preset` is followed, so a shared preset stays
/// shared. Fails with std::runtime_error naming the file when the host wrote nothing or the
/// replacement fails; a failure of the host's copy itself passes on as it is. The temporary goes
/// on every path.
void writePresetThroughHost(const QString& preset);

} // namespace cobaltrig::files
