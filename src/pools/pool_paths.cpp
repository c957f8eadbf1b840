#include "pools/pool_paths.h"

#include <QDir>

#include <filesystem>
#include <system_error>

namespace cobaltrig::pools {

namespace {

bool isSeparator(QChar c) {
    return c == QLatin1Char('/') || c == separator();
}

bool isAbsolute(const QString& path) {
    if (path.startsWith(QLatin1Char('/')) || path.startsWith(separator()))
        return true;
#ifdef Q_OS_WIN
    // A drive letter makes a piece absolute for the join, as the platform's own join treats it.
    return path.size() >= 2 && path.at(1) == QLatin1Char(':');
#else
    return false;
#endif
}

int lastSeparator(const QString& path) {
    for (int i = path.size() - 1; i >= 0; --i)
        if (isSeparator(path.at(i)))
            return i;
    return -1;
}

} // namespace

QChar separator() {
    return QDir::separator();
}

QString join(const QString& left, const QString& right) {
    if (isAbsolute(right) || left.isEmpty())
        return right;
    if (isSeparator(left.back()))
        return left + right;
    return left + separator() + right;
}

QString join(std::initializer_list<QString> pieces) {
    QString path;
    bool first = true;
    for (const QString& piece : pieces) {
        path = first ? piece : join(path, piece);
        first = false;
    }
    return path;
}

QString normalise(const QString& path) {
    QString result = path;
    return result.replace(separator(), QLatin1Char('/'));
}

QString baseName(const QString& path) {
    return path.mid(lastSeparator(path) + 1);
}

QString dirName(const QString& path) {
    const int at = lastSeparator(path);
    return at < 0 ? QString() : path.left(at);
}

QString extension(const QString& file_name) {
    const QString name = baseName(file_name);
    int first = 0;
    while (first < name.size() && name.at(first) == QLatin1Char('.'))
        ++first;
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    // A dot counts only with something other than dots before it.
    return dot > first ? name.mid(dot) : QString();
}

QString stem(const QString& file_name) {
    const QString name = baseName(file_name);
    return name.left(name.size() - extension(name).size());
}

bool isPresetFile(const QString& file_name) {
    return extension(file_name) == QLatin1String(".nk");
}

bool isHiddenDir(const QString& dir_name) {
    return dir_name.startsWith(QLatin1Char('.'));
}

QString presetLabel(const QString& file_name) {
    QString label = file_name;
    return label.remove(QStringLiteral(".nk"));
}

QString lastPiece(const QString& path) {
    return path.section(QLatin1Char('/'), -1);
}

QString targetFolder(const QString& item_path, bool is_dir) {
    // A click on a preset means "beside this one", on every platform.
    return is_dir ? item_path : dirName(item_path);
}

QString presetNameProblem(const QString& name) {
    if (name.contains(QLatin1Char('/')) || name.contains(separator()) || isAbsolute(name)) {
        const QString separators = separator() == QLatin1Char('/')
                                       ? QStringLiteral("'/'")
                                       : QStringLiteral("'/' or '%1'").arg(separator());
        return QStringLiteral("The name '%1' can't be used: a preset name can't contain %2.")
            .arg(name, separators);
    }
    if (name.startsWith(QLatin1Char('.')))
        return QStringLiteral("The name '%1' can't be used: a preset name can't begin with a dot.")
            .arg(name);
    return {};
}

QString makeDirectories(const QString& path) {
    // std::filesystem rather than QDir::mkpath: the user is told why a folder could not be made,
    // and QDir only says that it failed.
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::u8path(path.toStdString()), error);
    if (!error)
        return {};
    return QStringLiteral("%1: '%2'").arg(QString::fromStdString(error.message()), path);
}

} // namespace cobaltrig::pools
