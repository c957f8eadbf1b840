#include "pools/preset_file.h"

#include "frame/host.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QUuid>

#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace cobaltrig::pools {

namespace {

// Temporaries are named ".<preset file name>.<random>.tmp": hidden, never ending in ".nk", so the
// tree never lists one. A write killed between the copy and the rename leaves its temporary behind;
// the next write of the same preset takes it away. Only old ones go: a teammate may be writing this
// very preset on a shared pool.
void sweepStale(const QFileInfo& target) {
    const QDir folder = target.absoluteDir();
    const QDateTime old = QDateTime::currentDateTimeUtc().addSecs(-3600);
    const QString prefix = QStringLiteral(".%1.").arg(target.fileName());
    for (const QFileInfo& file :
         folder.entryInfoList({prefix + QStringLiteral("*.tmp")}, QDir::Files | QDir::Hidden)) {
        if (file.lastModified().toUTC() < old)
            QFile::remove(file.absoluteFilePath());
    }
}

// Removes the temporary on every way out unless it became the preset.
class TemporaryGuard {
public:
    explicit TemporaryGuard(QString path) : path_(std::move(path)) {}
    ~TemporaryGuard() {
        if (!path_.isEmpty())
            QFile::remove(path_);
    }
    TemporaryGuard(const TemporaryGuard&) = delete;
    TemporaryGuard& operator=(const TemporaryGuard&) = delete;
    void release() { path_.clear(); }

private:
    QString path_;
};

} // namespace

void writePresetThroughHost(const QString& preset) {
    const QFileInfo link(preset);
    const QFileInfo target(link.isSymLink() && link.exists() ? link.canonicalFilePath() : preset);
    sweepStale(target);

    // The host makes the temporary itself, so it gets the permissions a preset written in place
    // would get; a replaced preset keeps its own.
    QString path;
    do {
        path = target.absoluteDir().filePath(
            QStringLiteral(".%1.%2.tmp")
                .arg(target.fileName(), QUuid::createUuid().toString(QUuid::Id128).left(12)));
    } while (QFileInfo::exists(path));
    TemporaryGuard guard(path);
    host::nodeCopy(QDir::toNativeSeparators(path).toStdString());

    if (QFileInfo(path).size() <= 0)
        throw std::runtime_error(
            QStringLiteral("The preset '%1' was not written: the host wrote nothing.")
                .arg(preset)
                .toStdString());
    if (target.exists())
        QFile::setPermissions(path, target.permissions());
    std::error_code error;
    std::filesystem::rename(std::filesystem::u8path(path.toStdString()),
                            std::filesystem::u8path(target.filePath().toStdString()), error);
    if (error)
        throw std::runtime_error(QStringLiteral("Cannot write the preset '%1': %2")
                                     .arg(preset, QString::fromStdString(error.message()))
                                     .toStdString());
    guard.release();
}

std::optional<host::Node> holdingGroup(const host::Node& node) {
    // A full name is the dotted path from the root, whatever group the host is in at the moment.
    const std::string full = node.fullName();
    const auto dot = full.rfind('.');
    return host::toNode(dot == std::string::npos ? std::string("root")
                                                 : "root." + full.substr(0, dot));
}

} // namespace cobaltrig::pools
