#pragma once
// Moving nodes between a graph and the look container without the artist's clipboard: the host
// copies and pastes through a file of our own, so whatever the artist had copied is still there
// after any look operation.

#include "frame/host.h"

#include <QTemporaryDir>

#include <string>

namespace cobaltrig::looks {

class NodeTransfer {
public:
    /// Fails with a clear message when no temporary folder can be made.
    NodeTransfer();
    NodeTransfer(const NodeTransfer&) = delete;
    NodeTransfer& operator=(const NodeTransfer&) = delete;

    /// `nuke.nodeCopy` of the selected nodes of the current group into the transfer file; a later
    /// copy replaces an earlier one. False when nothing was selected.
    bool copySelected();
    /// `nuke.nodePaste` of what was copied last, into the current group.
    host::Node paste();

private:
    QTemporaryDir dir_;
    std::string path_;
};

} // namespace cobaltrig::looks
