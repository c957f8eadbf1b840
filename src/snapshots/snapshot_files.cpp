// The snapshot triad on disk: listing, sizes, metadata, delete, move and flush.

#include "snapshots/snapshot_files.h"

#include "frame/siblings.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QSaveFile>
#include <QThread>
#include <QXmlStreamReader>

#include <algorithm>
#include <atomic>
#include <exception>
#include <functional>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

namespace cobaltrig::snapshot_files {

namespace py = pybind11;

namespace {

QString plain(const QString& path) {
    return QDir::toNativeSeparators(path);
}

QDomElement parseMetadata(const QString& metaxml, QDomDocument& document) {
    QFile file(metaxml);
    if (!file.open(QIODevice::ReadOnly))
        throw FileError(QStringLiteral("Cannot read '%1': %2")
                            .arg(plain(metaxml), file.errorString())
                            .toStdString());
    QString error;
    int line = 0;
    if (!document.setContent(&file, &error, &line))
        throw FileError(QStringLiteral("Cannot read '%1': %2 (line %3)")
                            .arg(plain(metaxml), error)
                            .arg(line)
                            .toStdString());
    QDomElement metadata = document.documentElement().firstChildElement(QStringLiteral("metadata"));
    if (metadata.isNull())
        throw FileError(QStringLiteral("Cannot read '%1': it holds no metadata")
                            .arg(plain(metaxml))
                            .toStdString());
    return metadata;
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
        if (!entry.isDir())
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
    // A streaming read: the list reads one document per row, and a tree is not needed for two
    // values.
    Metadata result;
    QFile file(sibling(src, QStringLiteral(".xml")));
    if (!file.open(QIODevice::ReadOnly))
        return result;
    QXmlStreamReader xml(&file);
    bool comment_found = false, flag_found = false;
    int depth = 0, metadata_depth = -1;
    bool metadata_done = false;
    while (!xml.atEnd() && !metadata_done) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            ++depth;
            if (metadata_depth < 0 && depth == 2 && xml.name() == QLatin1String("metadata")) {
                metadata_depth = depth;
            } else if (metadata_depth > 0 && depth == metadata_depth + 1 &&
                       xml.name() == QLatin1String("meta")) {
                const auto name = xml.attributes().value(QLatin1String("name"));
                const bool comment = name == QLatin1String("comment") && !comment_found;
                const bool flag = name == QLatin1String("flag") && !flag_found;
                const QString text = xml.readElementText(QXmlStreamReader::IncludeChildElements);
                --depth;
                if (comment) {
                    comment_found = true;
                    result.comment = text;
                } else if (flag) {
                    flag_found = true;
                    result.flag = text;
                }
            }
            break;
        case QXmlStreamReader::EndElement:
            if (depth == metadata_depth)
                metadata_done = true;
            --depth;
            break;
        default:
            break;
        }
    }
    // A damaged document shows no marks, as the package's own reader answers.
    if (xml.hasError() && !metadata_done)
        return Metadata();
    return result;
}

QString load_comment(const QString& metaxml) {
    if (!QFileInfo(metaxml).isFile())
        return QString();
    QDomDocument document;
    const QDomElement metadata = parseMetadata(metaxml, document);
    for (QDomElement meta = metadata.firstChildElement(QStringLiteral("meta")); !meta.isNull();
         meta = meta.nextSiblingElement(QStringLiteral("meta")))
        if (meta.attribute(QStringLiteral("name")) == QLatin1String("comment"))
            return meta.text();
    return QString();
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
    // Written beside the target and renamed over it: a failed write leaves the old document.
    QSaveFile file(metaxml);
    if (!file.open(QIODevice::WriteOnly))
        throw FileError(QStringLiteral("Cannot write '%1': %2")
                            .arg(plain(metaxml), file.errorString())
                            .toStdString());
    QByteArray bytes = document.toByteArray(2);
    if (!bytes.startsWith("<?xml"))
        bytes.prepend("<?xml version='1.0' encoding='UTF-8'?>\n");
    file.write(bytes);
    if (!file.commit())
        throw FileError(QStringLiteral("Cannot write '%1': %2")
                            .arg(plain(metaxml), file.errorString())
                            .toStdString());
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

} // namespace

void move_snapshot(const QString& src, const QString& directory) {
    const QDir dest(directory);
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
        throw FileError(QStringLiteral("Cannot move '%1' to '%2': %3. %4.")
                            .arg(plain(path), plain(directory), reason, where.join("; "))
                            .toStdString());
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
