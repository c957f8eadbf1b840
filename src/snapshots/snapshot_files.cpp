// The snapshot triad on disk: listing, sizes, metadata, delete, move and flush.

#include "snapshots/snapshot_files.h"

#include "frame/siblings.h"

#include "frame/atomic_write.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QRegularExpression>
#include <QSet>
#include <QSysInfo>
#include <QThread>
#include <QUrl>
#include <QXmlStreamReader>

#include <algorithm>
#include <atomic>
#include <exception>
#include <functional>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <csignal>
#endif

namespace cobaltrig::snapshot_files {

namespace py = pybind11;

namespace {

QString plain(const QString& path) {
    return QDir::toNativeSeparators(path);
}

[[noreturn]] void refuse(const QString& metaxml, const QString& reason) {
    throw FileError(
        QStringLiteral("Cannot read '%1': %2").arg(plain(metaxml), reason).toStdString());
}

// The bytes of a metadata document, refused before reading when the file is too large to be one.
QByteArray metadataBytes(const QString& metaxml) {
    const QString too_large = QStringLiteral("it is larger than 1 MB, far more than snapshot "
                                             "metadata holds");
    if (QFileInfo(metaxml).size() > metadata_max_bytes)
        refuse(metaxml, too_large);
    QFile file(metaxml);
    if (!file.open(QIODevice::ReadOnly))
        refuse(metaxml, file.errorString());
    const QByteArray bytes = file.read(metadata_max_bytes + 1);
    if (bytes.size() > metadata_max_bytes)
        refuse(metaxml, too_large);
    return bytes;
}

struct Scan {
    bool has_metadata = false;
    std::optional<QString> comment;
    std::optional<QString> flag;
};

// One pass over the whole document, without recursion and within the limits: the first comment and
// flag of the first `metadata` element, text as written (blanks included). A damaged document,
// one nested too deeply and one with a document type (the only way to entities) are refused.
Scan scanMetadata(const QString& metaxml) {
    const QByteArray bytes = metadataBytes(metaxml);
    QXmlStreamReader xml(bytes);
    Scan scan;
    int depth = 0;
    bool in_metadata = false;
    std::optional<QString>* capturing = nullptr;
    QString text;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::DTD:
        case QXmlStreamReader::EntityReference:
            refuse(metaxml, QStringLiteral("it declares a document type or entities, which "
                                           "snapshot metadata never does"));
        case QXmlStreamReader::StartElement:
            if (++depth > metadata_max_depth)
                refuse(metaxml, QStringLiteral("its elements are nested more than %1 levels deep")
                                    .arg(metadata_max_depth));
            if (depth == 2 && !scan.has_metadata && xml.name() == QLatin1String("metadata")) {
                scan.has_metadata = in_metadata = true;
            } else if (in_metadata && depth == 3 && xml.name() == QLatin1String("meta")) {
                const auto name = xml.attributes().value(QLatin1String("name"));
                if (name == QLatin1String("comment") && !scan.comment)
                    capturing = &scan.comment;
                else if (name == QLatin1String("flag") && !scan.flag)
                    capturing = &scan.flag;
                text.clear();
            }
            break;
        case QXmlStreamReader::Characters:
            if (capturing)
                text += xml.text();
            break;
        case QXmlStreamReader::EndElement:
            if (depth == 3 && capturing) {
                *capturing = text;
                capturing = nullptr;
            }
            if (depth == 2)
                in_metadata = false;
            --depth;
            break;
        default:
            break;
        }
    }
    if (xml.hasError())
        refuse(metaxml,
               QStringLiteral("%1 (line %2)").arg(xml.errorString()).arg(xml.lineNumber()));
    return scan;
}

QDomElement parseMetadata(const QString& metaxml, QDomDocument& document) {
    // Checked first: the tree below is then small and shallow, and holds no entities.
    if (!scanMetadata(metaxml).has_metadata)
        refuse(metaxml, QStringLiteral("it holds no metadata"));
    QString error;
    int line = 0;
    if (!document.setContent(metadataBytes(metaxml), &error, &line))
        refuse(metaxml, QStringLiteral("%1 (line %2)").arg(error).arg(line));
    return document.documentElement().firstChildElement(QStringLiteral("metadata"));
}

// Each `meta` element of `metadata`, in document order.
void forEachMeta(const QDomElement& metadata, const std::function<void(QDomElement)>& visit) {
    for (QDomElement meta = metadata.firstChildElement(QStringLiteral("meta")); !meta.isNull();
         meta = meta.nextSiblingElement(QStringLiteral("meta")))
        visit(meta);
}

} // namespace

QString sibling(const QString& src, const QString& extension) {
    const int dot = src.lastIndexOf(QLatin1Char('.'));
    const int slash =
        std::max(src.lastIndexOf(QLatin1Char('/')), src.lastIndexOf(QLatin1Char('\\')));
    return (dot > slash ? src.left(dot) : src) + extension;
}

QStringList triad(const QString& src) {
    return {sibling(src, QStringLiteral(".nk")), sibling(src, QStringLiteral(".jpg")),
            sibling(src, QStringLiteral(".xml"))};
}

Listing list_directory(const QString& directory) {
    const QDir dir(directory);
    if (!dir.exists())
        throw FileError(QStringLiteral("Cannot list the snapshot directory '%1'")
                            .arg(plain(directory))
                            .toStdString());
    // The name filter is case-insensitive; the names counted end exactly in ".jpg".
    Listing listing;
    const QFileInfoList entries =
        dir.entryInfoList({QStringLiteral("*.jpg")},
                          QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                          QDir::Unsorted);
    listing.images.reserve(entries.size());
    for (const QFileInfo& entry : entries) {
        if (!entry.fileName().endsWith(QLatin1String(".jpg")))
            continue;
        ++listing.jpg_entries;
        if (entry.isFile())
            listing.images << entry.filePath();
    }
    // Stems start with the epoch seconds: the paths in descending order put the newest first.
    std::sort(listing.images.begin(), listing.images.end(), std::greater<QString>());
    return listing;
}

QStringList list_images(const QString& directory) {
    return list_directory(directory).images;
}

QSize image_size(const QString& src) {
    return ImageSizes()(src);
}

ImageSizes::ImageSizes() : native_(siblings::is_original("get_image_size")) {}

void in_parallel(int count, int per_thread, const std::function<void(int)>& work) {
    const int threads = std::clamp((count + per_thread - 1) / std::max(per_thread, 1), 1,
                                   std::clamp(QThread::idealThreadCount(), 1, 8));
    std::atomic<int> next{0};
    std::vector<std::exception_ptr> failures(threads);
    auto share = [&](int slot) {
        try {
            for (int i = next++; i < count; i = next++)
                work(i);
        } catch (...) {
            failures[slot] = std::current_exception();
        }
    };
    // A reader may report a damaged file through Qt's message handler, which the host can hand
    // to Python: the interpreter is let go meanwhile, so that no thread ever waits on it.
    std::optional<py::gil_scoped_release> python_free;
    if (Py_IsInitialized() && PyGILState_Check())
        python_free.emplace();
    std::vector<std::thread> workers;
    try {
        for (int slot = 1; slot < threads; ++slot)
            workers.emplace_back(share, slot);
    } catch (const std::system_error&) {
        // No more threads to be had: those started and this one share the work.
    }
    share(0);
    for (std::thread& worker : workers)
        worker.join();
    for (const std::exception_ptr& failure : failures)
        if (failure)
            std::rethrow_exception(failure);
}

SizesAhead::SizesAhead(const QStringList& srcs)
    : srcs_(srcs), sizes_(srcs.size()), failures_(srcs.size()),
      ready_(new std::atomic<bool>[srcs.size()]) {
    for (int i = 0; i < srcs_.size(); ++i)
        ready_[i] = false;
    // A replaced reader is Python: it runs here, when asked. Short lists aren't worth a thread;
    // this thread is busy with the sizes it takes, so it counts as one of the machine's.
    if (!reader_.native() || srcs_.size() < 64)
        return;
    const int threads = std::clamp(QThread::idealThreadCount() - 1, 1, 7);
    try {
        for (int t = 0; t < threads; ++t)
            workers_.emplace_back([this] {
                for (int i = next_++; i < srcs_.size(); i = next_++)
                    read(i);
            });
    } catch (const std::system_error&) {
        // No more threads to be had: those started and this one share the list.
    }
}

SizesAhead::~SizesAhead() {
    stop();
}

void SizesAhead::stop() {
    next_ = srcs_.size();
    if (workers_.empty())
        return;
    // A reader may be reporting a damaged file through Qt's message handler, which the host can
    // hand to Python: the interpreter is let go while waiting, so the reader is never stuck on it.
    std::optional<py::gil_scoped_release> python_free;
    if (Py_IsInitialized() && PyGILState_Check())
        python_free.emplace();
    for (std::thread& worker : workers_)
        worker.join();
    workers_.clear();
}

void SizesAhead::read(int i) {
    try {
        sizes_[i] = reader_(srcs_[i]);
    } catch (...) {
        failures_[i] = std::current_exception();
    }
    ready_[i].store(true, std::memory_order_release);
}

QSize SizesAhead::at(int i) {
    while (!ready_[i].load(std::memory_order_acquire)) {
        const int unread = next_++;
        if (unread < srcs_.size()) {
            read(unread);
            continue;
        }
        // All taken, this one still being read elsewhere: wait without holding Python (see stop).
        std::optional<py::gil_scoped_release> python_free;
        if (Py_IsInitialized() && PyGILState_Check())
            python_free.emplace();
        while (!ready_[i].load(std::memory_order_acquire))
            std::this_thread::yield();
    }
    if (failures_[i])
        std::rethrow_exception(failures_[i]);
    return sizes_[i];
}

std::vector<QImage> read_images(const QStringList& srcs) {
    std::vector<QImage> images(srcs.size());
    in_parallel(srcs.size(), 1, [&](int i) { images[i] = QImage(srcs[i]); });
    return images;
}

QSize ImageSizes::operator()(const QString& src) const {
    // The sibling is the replaceable way in; while it is the package's own, the header is read
    // here, which spares a crossing into Python for every row of a large directory.
    if (!native_) {
        const auto [width, height] = siblings::get_image_size(src.toStdString());
        return QSize(width, height);
    }
    // Told the format, the reader goes straight to the jpeg decoder, a good part faster over a
    // long list; a file of another kind under that name is then read the general way.
    QSize size = QImageReader(src, QByteArrayLiteral("jpg")).size();
    if (!size.isValid())
        size = QImageReader(src).size();
    if (!size.isValid() || size.width() <= 0 || size.height() <= 0)
        return QSize(1, 1);
    return size;
}

Metadata load_metadata(const QString& src) {
    if (!siblings::is_original("load_metadata")) {
        py::object mapping = siblings::load_metadata(src.toStdString());
        auto text = [&](const char* key) {
            py::object value = mapping[key];
            return value.is_none() ? QString()
                                   : QString::fromStdString(py::str(value).cast<std::string>());
        };
        return {text("comment"), text("flag")};
    }
    try {
        return read_metadata(src);
    } catch (const FileError& error) {
        // Shown without comment and flag; the file itself is left for the artist to mend.
        report_once(sibling(src, QStringLiteral(".xml")), QString::fromStdString(error.what()));
        return Metadata();
    }
}

Metadata read_metadata(const QString& src) {
    const QString metaxml = sibling(src, QStringLiteral(".xml"));
    // A pipe or a device under that name is no document, and reading it could wait forever.
    if (!QFileInfo(metaxml).isFile())
        return Metadata();
    const Scan scan = scanMetadata(metaxml);
    return {scan.comment.value_or(QString()), scan.flag.value_or(QString())};
}

QString load_comment(const QString& metaxml) {
    if (!QFileInfo::exists(metaxml))
        return QString();
    if (!QFileInfo(metaxml).isFile())
        refuse(metaxml, QStringLiteral("it is not a regular file"));
    const Scan scan = scanMetadata(metaxml);
    if (!scan.has_metadata)
        refuse(metaxml, QStringLiteral("it holds no metadata"));
    return scan.comment.value_or(QString());
}

void save_comment(const QString& metaxml, const QString& text) {
    QDomDocument document;
    const QDomElement metadata = parseMetadata(metaxml, document);
    forEachMeta(metadata, [&](QDomElement meta) {
        if (meta.attribute(QStringLiteral("name")) != QLatin1String("comment"))
            return;
        while (meta.hasChildNodes())
            meta.removeChild(meta.firstChild());
        if (!text.isEmpty())
            meta.appendChild(document.createTextNode(text));
    });
    QByteArray bytes = document.toByteArray(2);
    if (!bytes.startsWith("<?xml"))
        bytes.prepend("<?xml version='1.0' encoding='UTF-8'?>\n");
    // Written beside the target and renamed over it: a failed write leaves the old document.
    files::writeFileAtomically(metaxml, bytes);
}

std::optional<QColor> flag_colour(const QString& text) {
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() < 3)
        return std::nullopt;
    int rgb[3];
    for (int i = 0; i < 3; ++i) {
        bool ok = false;
        rgb[i] = parts[i].trimmed().toInt(&ok);
        if (!ok || rgb[i] < 0 || rgb[i] > 255)
            return std::nullopt;
    }
    return QColor(rgb[0], rgb[1], rgb[2]);
}

void report_once(const QString& key, const QString& text) {
    static QSet<QString> reported;
    if (reported.contains(key))
        return;
    reported.insert(key);
    try {
        py::gil_scoped_acquire gil;
        py::module_::import("sys").attr("stderr").attr("write")(
            QStringLiteral("cobaltRig: %1\n").arg(text).toStdString());
    } catch (...) {
        // The console itself failed; there is nowhere left to report to.
    }
}

bool same_directory(const QString& a, const QString& b) {
    const QString real_a = QFileInfo(a).canonicalFilePath();
    if (real_a.isEmpty())
        return QDir::cleanPath(QFileInfo(a).absoluteFilePath()) ==
               QDir::cleanPath(QFileInfo(b).absoluteFilePath());
    return real_a == QFileInfo(b).canonicalFilePath();
}

void remove_snapshot(const QString& src) {
    QStringList removed;
    for (const QString& path : triad(src)) {
        if (!QFileInfo(path).isFile())
            continue;
        QFile file(path);
        if (!file.remove()) {
            QStringList stayed;
            for (const QString& other : triad(src))
                if (QFileInfo(other).isFile())
                    stayed << plain(other);
            throw FileError(
                QStringLiteral("Cannot delete '%1': %2. Deleted: %3. Still there: %4.")
                    .arg(plain(path), file.errorString(),
                         removed.isEmpty() ? QStringLiteral("nothing") : removed.join(", "),
                         stayed.join(", "))
                    .toStdString());
        }
        removed << plain(path);
    }
}

namespace {

// Renames `from` to `to`, replacing a file there. On failure `reason` says why.
bool moveFile(const QString& from, const QString& to, QString& reason) {
    if (QFileInfo(to).isFile() && !QFile::remove(to)) {
        reason = QStringLiteral("'%1' is in the way and can't be replaced").arg(plain(to));
        return false;
    }
    QFile file(from);
    if (!file.rename(to)) {
        reason = file.errorString();
        return false;
    }
    return true;
}

// The note of a move in progress. It names this machine and process, so that a browser opened
// elsewhere leaves a move that is still running alone; each process has one, rewritten for each
// snapshot, and removed once its files are all across.
const QString kJournalPrefix = QStringLiteral(".snapshot-move.");
const QString kJournalSuffix = QStringLiteral(".journal");
const QByteArray kJournalHeader = QByteArrayLiteral("cobaltRig snapshot move");
constexpr qint64 kJournalStaleSeconds = 3600;

QString machineName() {
    QString name = QSysInfo::machineHostName();
    name.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9-]")), QStringLiteral("_"));
    name.truncate(40);
    return name.isEmpty() ? QStringLiteral("machine") : name;
}

QString journalPath(const QString& directory) {
    const QString folder =
        QFileInfo(QDir::cleanPath(QFileInfo(directory).absoluteFilePath())).path();
    return QDir(folder).filePath(kJournalPrefix + machineName() + QLatin1Char('.') +
                                 QString::number(QCoreApplication::applicationPid()) +
                                 kJournalSuffix);
}

// Best effort: a folder that takes no note still lets the move run, as it always did.
bool writeJournal(const QString& path, const QString& from, const QString& to,
                  const QString& stem) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    const QByteArray text = kJournalHeader + '\n' + machineName().toUtf8() + '\n' +
                            QByteArray::number(QCoreApplication::applicationPid()) + '\n' +
                            QUrl::toPercentEncoding(from) + '\n' + QUrl::toPercentEncoding(to) +
                            '\n' + QUrl::toPercentEncoding(stem) + '\n';
    return file.write(text) == text.size() && file.flush();
}

bool writerRunning(const QString& machine, qint64 pid, const QFileInfo& journal) {
    if (machine != machineName())
        return journal.lastModified().secsTo(QDateTime::currentDateTime()) < kJournalStaleSeconds;
    // Moves are synchronous: a note of this process found now was left by an earlier one.
    if (pid == QCoreApplication::applicationPid())
        return false;
#ifdef Q_OS_UNIX
    return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH;
#else
    return journal.lastModified().secsTo(QDateTime::currentDateTime()) < kJournalStaleSeconds;
#endif
}

} // namespace

void move_snapshot(const QString& src, const QString& directory) {
    const QString src_dir = QFileInfo(src).absolutePath();
    // The same directory under another name (a link, an alias of the root): replacing a file
    // "there" would delete the file itself.
    if (same_directory(src_dir, directory))
        return;
    const QDir dest(directory);
    const QString journal = journalPath(directory);
    const bool noted = writeJournal(journal, src_dir, dest.absolutePath(),
                                    QFileInfo(sibling(src, QString())).fileName());
    std::vector<std::pair<QString, QString>> moved;
    for (const QString& path : triad(src)) {
        if (!QFileInfo(path).isFile())
            continue;
        const QString target = dest.filePath(QFileInfo(path).fileName());
        QString reason;
        if (moveFile(path, target, reason)) {
            moved.emplace_back(path, target);
            continue;
        }
        // Put back what went ahead, so a script or metadata never stays apart from its image.
        QStringList where;
        for (auto it = moved.rbegin(); it != moved.rend(); ++it) {
            if (QFile(it->second).rename(it->first))
                where << QStringLiteral("'%1' was put back").arg(plain(it->first));
            else
                where << QStringLiteral("'%1' is now at '%2'")
                             .arg(plain(QFileInfo(it->first).fileName()), plain(it->second));
        }
        where << QStringLiteral("'%1' stayed where it was").arg(plain(path));
        if (noted)
            QFile::remove(journal);
        throw FileError(QStringLiteral("Cannot move '%1' to '%2': %3. %4.")
                            .arg(plain(path), plain(directory), reason, where.join("; "))
                            .toStdString());
    }
    if (noted)
        QFile::remove(journal);
}

void recover_moves(const QString& root) {
    const QDir folder(root);
    const QStringList notes =
        folder.entryList({kJournalPrefix + QLatin1Char('*') + kJournalSuffix},
                         QDir::Files | QDir::Hidden | QDir::System);
    for (const QString& name : notes) {
        const QString path = folder.filePath(name);
        const QFileInfo info(path);
        QFile file(path);
        if (!info.isFile() || info.size() > 64 * 1024 || !file.open(QIODevice::ReadOnly))
            continue;
        const QList<QByteArray> lines = file.readAll().split('\n');
        file.close();
        // A note cut short was being written when its process died, before any file moved.
        if (lines.size() < 6 || lines[0] != kJournalHeader) {
            QFile::remove(path);
            continue;
        }
        bool pid_ok = false;
        const qint64 pid = lines[2].toLongLong(&pid_ok);
        if (pid_ok && writerRunning(QString::fromUtf8(lines[1]), pid, info))
            continue;
        const QString from = QUrl::fromPercentEncoding(lines[3]);
        const QString to = QUrl::fromPercentEncoding(lines[4]);
        const QString stem = QUrl::fromPercentEncoding(lines[5]);
        if (QFileInfo(to).isDir() && !same_directory(from, to) && !stem.isEmpty()) {
            QStringList finished, stayed;
            for (const QString& path_from : triad(QDir(from).filePath(stem + ".jpg"))) {
                if (!QFileInfo(path_from).isFile())
                    continue;
                const QString target = QDir(to).filePath(QFileInfo(path_from).fileName());
                QString reason;
                if (moveFile(path_from, target, reason))
                    finished << QFileInfo(path_from).fileName();
                else
                    stayed << QStringLiteral("'%1' (%2)").arg(plain(path_from), reason);
            }
            if (!finished.isEmpty() || !stayed.isEmpty())
                report_once(path, QStringLiteral("finished moving the snapshot '%1' from '%2' to "
                                                 "'%3', which was interrupted: %4 moved%5")
                                      .arg(stem, plain(from), plain(to),
                                           finished.isEmpty() ? QStringLiteral("nothing")
                                                              : finished.join(", "),
                                           stayed.isEmpty()
                                               ? QString()
                                               : QStringLiteral("; still in place: ") +
                                                     stayed.join(", ")));
            if (!stayed.isEmpty())
                continue;  // the note stays, for the next opening to try again
        }
        QFile::remove(path);
    }
}

void flush_directory(const QString& directory) {
    const QDir dir(directory);
    if (!dir.exists())
        throw FileError(QStringLiteral("Cannot list the snapshot directory '%1'")
                            .arg(plain(directory))
                            .toStdString());
    for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden | QDir::System))
        QFile::remove(dir.filePath(name));
}

} // namespace cobaltrig::snapshot_files
