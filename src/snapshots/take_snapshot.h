#pragma once
// Taking a snapshot: what the active viewer shows is rendered, scaled to the configured width, into
// `<epoch>_<script>.jpg` in the current snapshot directory, and the node graph (or part of it) is
// saved beside it as `.nk`. One synchronous call on the host's UI thread.

#include <string>

namespace cobaltrig::snapshots {

/// The public entry point and the browser's camera button. Failures the user can cause end in a
/// message and leave the graph as it was; a host failure elsewhere propagates to the caller.
void snapshot();

/// Renders what the active viewer shows now into `image` (a jpg path) exactly as `snapshot` renders
/// it, after the same checks, and nothing else: no graph is saved, no setting changes, and the
/// graph, its selection and the proxy mode are as they were, in one undo step at most. False after
/// a message that says why there is no image.
bool render_current(const std::string& image);

} // namespace cobaltrig::snapshots
