#include "looks/node_transfer.h"

#include <QDir>

#include <stdexcept>

namespace cobaltrig::looks {

NodeTransfer::NodeTransfer() {
    if (!dir_.isValid())
        throw std::runtime_error("cannot make a temporary folder for the look's nodes: " +
                                 dir_.errorString().toStdString());
    path_ = QDir::toNativeSeparators(dir_.filePath(QStringLiteral("look.nk"))).toStdString();
}

bool NodeTransfer::copySelected() { return host::nodeCopy(path_); }

host::Node NodeTransfer::paste() { return host::nodePaste(path_); }

} // namespace cobaltrig::looks
