#include "pools/atomic_write.h"

#include <QFileInfo>
#include <QSaveFile>

#include <stdexcept>

namespace cobaltrig::pools {

void writeFileAtomically(const QString& path, const QByteArray& data) {
    const QFileInfo info(path);
    const QString target = info.isSymLink() && info.exists() ? info.canonicalFilePath() : path;
    QSaveFile file(target);
    // Without this fallback Qt writes in place where it can't make a temporary file beside the
    // target, which is exactly the truncation this function exists to avoid.
    file.setDirectWriteFallback(false);
    auto fail = [&](const char* what) {
        const QString reason = file.errorString();
        file.cancelWriting();
        throw std::runtime_error(QStringLiteral("Cannot %1 '%2': %3")
                                     .arg(QLatin1String(what), path, reason)
                                     .toStdString());
    };
    if (!file.open(QIODevice::WriteOnly))
        fail("open for writing");
    if (file.write(data) != data.size())
        fail("write");
    if (!file.commit())
        throw std::runtime_error(
            QStringLiteral("Cannot write '%1': %2").arg(path, file.errorString()).toStdString());
}

} // namespace cobaltrig::pools
