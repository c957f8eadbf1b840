#include "frame/preset_file.h"

#include "frame/atomic_write.h"
#include "frame/host.h"

#include <QDir>
#include <QFileInfo>

#include <stdexcept>

namespace cobaltrig::files {

void writePresetThroughHost(const QString& preset) {
    // The host writes the nodes by name, so it fills the replacement's temporary beside the preset;
    // the preset is replaced only once that temporary holds something, and a failed or killed
    // write leaves the old preset whole and, at the next write, no temporary behind.
    FileReplacement replacement(preset);
    host::nodeCopy(QDir::toNativeSeparators(replacement.temporaryPath()).toStdString());
    if (QFileInfo(replacement.temporaryPath()).size() <= 0)
        throw std::runtime_error(
            QStringLiteral("The preset '%1' was not written: the host wrote nothing.")
                .arg(preset)
                .toStdString());
    replacement.commit();
}

} // namespace cobaltrig::files
