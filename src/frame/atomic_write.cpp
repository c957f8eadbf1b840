#include "frame/atomic_write.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSysInfo>

#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <csignal>
#include <unistd.h>
#endif

namespace cobaltrig::files {

namespace {

// Temporaries older than this are swept whoever made them: no write takes an hour.
constexpr qint64 staleSeconds = 3600;

[[noreturn]] void failFor(const QString& path, const QString& reason) {
    throw std::runtime_error(
        QStringLiteral("cobaltRig: cannot save '%1': %2").arg(path, reason).toStdString());
}

QString machineTag() {
    QString tag = QSysInfo::machineHostName();
    tag.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9-]")), QStringLiteral("_"));
    tag.truncate(40);
    return tag.isEmpty() ? QStringLiteral("machine") : tag;
}

qint64 processId() {
    return QCoreApplication::applicationPid();
}

bool processRunning(qint64 pid) {
    // Writes are synchronous: a temporary of this process found before a write is left over.
    if (pid == processId())
        return false;
#ifdef Q_OS_UNIX
    return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH;
#else
    return true; // no cheap, safe check here; the age rule sweeps these
#endif
}

QString randomTag() {
    static const char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    QString tag;
    for (int i = 0; i < 6; ++i)
        tag += QLatin1Char(letters[QRandomGenerator::global()->bounded(int(sizeof letters) - 1)]);
    return tag;
}

long nameMax(const QString& folder) {
#ifdef Q_OS_UNIX
    const long limit = ::pathconf(QFile::encodeName(folder).constData(), _PC_NAME_MAX);
    if (limit > 0)
        return limit;
#else
    Q_UNUSED(folder);
#endif
    return 255;
}

// The name part of a temporary of `name`: the name itself, or, where a temporary of it would be
// longer than the folder's file system allows, its start and a digest of all of it. The sibling
// module's writer shortens names the same way, so each sweeps the other's temporaries.
QString temporaryStem(const QString& folder, const QString& name) {
    const QString fixed =
        QStringLiteral(".%1.99999999.xxxxxx.tmp").arg(machineTag());
    const long limit = nameMax(folder) - QFile::encodeName(fixed).size() - 1;
    if (QFile::encodeName(name).size() <= limit)
        return name;
    const QString digest =
        QLatin1Char('~') +
        QString::fromLatin1(
            QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha1).toHex().left(8));
    const long budget = limit - digest.size();
    QString start = name;
    while (!start.isEmpty() && QFile::encodeName(start).size() > budget)
        start.chop(start.size() > 1 && start.at(start.size() - 1).isLowSurrogate() ? 2 : 1);
    return start + digest;
}

std::filesystem::path fsPath(const QString& path) {
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}

} // namespace

QString replaceTarget(const QString& path) {
    const QFileInfo info(path);
    QString target = info.absoluteFilePath();
    if (info.isSymLink()) {
        if (!info.exists())
            failFor(path, QStringLiteral("it is a link to '%1', which does not exist")
                              .arg(info.symLinkTarget()));
        target = info.canonicalFilePath();
    }
    if (QFileInfo(target).isDir())
        failFor(path, QStringLiteral("a folder of that name is in the way"));
    return target;
}

int sweepStaleTemporaries(const QString& target) {
    const QFileInfo info(target);
    const QDir folder = info.absoluteDir();
    // Ours: ".<name>.<machine>.<pid>.<6 random>.tmp"; the earlier Python writer's:
    // ".<name>.<8 random>.tmp".
    const QRegularExpression pattern(
        QStringLiteral(
            "^\\.%1\\.(?:([A-Za-z0-9_-]+)\\.(\\d+)\\.[A-Za-z0-9]{6}|[a-z0-9_]{8})\\.tmp$")
            .arg(QRegularExpression::escape(temporaryStem(info.absolutePath(), info.fileName()))));
    const QString machine = machineTag();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    int removed = 0;
    const QStringList candidates =
        folder.entryList({QLatin1Char('.') + temporaryStem(info.absolutePath(), info.fileName()) +
                          QStringLiteral(".*.tmp")},
                         QDir::Files | QDir::Hidden | QDir::System);
    for (const QString& name : candidates) {
        const QRegularExpressionMatch match = pattern.match(name);
        if (!match.hasMatch())
            continue;
        const QString path = folder.filePath(name);
        const bool deadWriter =
            match.captured(1) == machine && !processRunning(match.captured(2).toLongLong());
        const bool old = QFileInfo(path).lastModified().secsTo(now) > staleSeconds;
        if ((deadWriter || old) && QFile::remove(path))
            ++removed;
    }
    return removed;
}

FileReplacement::FileReplacement(const QString& path) : path_(path), target_(replaceTarget(path)) {
    sweepStaleTemporaries(target_);
    const QFileInfo info(target_);
    const QString stem =
        QStringLiteral(".%1.%2.%3.")
            .arg(temporaryStem(info.absolutePath(), info.fileName()), machineTag(),
                 QString::number(processId()));
    for (int attempt = 0; attempt < 16; ++attempt) {
        const QString candidate =
            info.absoluteDir().filePath(stem + randomTag() + QStringLiteral(".tmp"));
        QFile file(candidate);
        // NewOnly: never reuse a name someone else holds; the umask decides the mode, as for any
        // file the user makes.
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            temporary_ = candidate;
            return;
        }
        if (!QFile::exists(candidate)) {
            const QFileInfo folder(info.absolutePath());
            fail(folder.isDir() && !folder.isWritable()
                     ? QStringLiteral("the folder '%1' is not writable").arg(info.absolutePath())
                     : file.errorString());
        }
    }
    fail(QStringLiteral("no free temporary name"));
}

FileReplacement::~FileReplacement() {
    if (!committed_ && !temporary_.isEmpty())
        QFile::remove(temporary_);
}

void FileReplacement::fail(const QString& reason) const {
    failFor(path_, reason);
}

void FileReplacement::write(const QByteArray& data) {
    QFile file(temporary_);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        fail(file.errorString());
    if (file.write(data) != data.size() || !file.flush())
        fail(file.errorString());
}

void FileReplacement::commit() {
    {
        // The bytes reach the disk before the name does, so a crash of the machine cannot leave
        // the new name on empty contents.
        QFile file(temporary_);
        if (!file.open(QIODevice::ReadWrite))
            fail(file.errorString());
#ifdef Q_OS_UNIX
        if (::fsync(file.handle()) != 0)
            fail(QString::fromLocal8Bit(std::strerror(errno)));
#endif
    }
    if (QFile::exists(target_) && !QFile::setPermissions(temporary_, QFile::permissions(target_)))
        fail(QStringLiteral("cannot give the new file the permissions of the old one"));
    std::error_code error;
    std::filesystem::rename(fsPath(temporary_), fsPath(target_), error);
    if (error)
        fail(QString::fromStdString(error.message()));
    committed_ = true;
}

void writeFileAtomically(const QString& path, const QByteArray& data) {
    FileReplacement replacement(path);
    replacement.write(data);
    replacement.commit();
}

} // namespace cobaltrig::files
