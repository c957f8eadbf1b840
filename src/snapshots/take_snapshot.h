#pragma once
// Taking a snapshot: what the active viewer shows is rendered, scaled to the configured width, into
// `<epoch>_<script>.jpg` in the current snapshot directory, and the node graph (or part of it) is
// saved beside it as `.nk`. One synchronous call on the host's UI thread.

namespace cobaltrig::snapshots {

/// The public entry point and the browser's camera button. Failures the user can cause end in a
/// message and leave the graph as it was; a host failure elsewhere propagates to the caller.
void snapshot();

} // namespace cobaltrig::snapshots
