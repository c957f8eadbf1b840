#pragma once
// The snapshot triad on disk: an image, the script beside it and its metadata document, sharing one
// stem. The image alone makes a snapshot; the script and the metadata may be missing at any time.
// Nothing here knows a window: the thumbnail and the browser call in and show what comes back.

#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace cobaltrig::snapshot_files {

/// A file operation that stopped part-way; the message says which file is where.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// `src` without its extension, plus `extension` (with its dot).
QString sibling(const QString& src, const QString& extension);
/// The script, the image and the metadata path of the snapshot `src`, in this order.
QStringList triad(const QString& src);

/// One listing of a snapshot directory: its images (entries other than folders whose names end
/// exactly in ".jpg"), full paths, newest first; and how many entries of any kind, folders too,
/// have such a name, which is what the version slider counts.
struct Listing {
    QStringList images;
    int jpg_entries = 0;
};
Listing list_directory(const QString& directory);
/// The images of `directory` as `list_directory` gives them.
QStringList list_images(const QString& directory);

/// The image's size from its header; 1 by 1 when it cannot be read.
QSize image_size(const QString& src);

/// Runs `work` for each of 0 to `count` - 1, shared out among up to as many threads as the
/// machine runs at once, each taking at least `per_thread` items; Python is let go meanwhile, so
/// `work` must not touch it. The first failure is raised once all have stopped.
void in_parallel(int count, int per_thread, const std::function<void(int)>& work);

/// The pixels of each of `srcs`, decoded side by side; a null image where one can't be read.
std::vector<QImage> read_images(const QStringList& srcs);

/// `image_size` for a whole listing: whether the package's own reader is in place is asked once,
/// when made, so that a long list pays no crossing into Python per image.
class ImageSizes {
public:
    ImageSizes();
    QSize operator()(const QString& src) const;
    bool native() const { return native_; }

private:
    bool native_;
};

/// The sizes of a listing's images, taken in order with `at` while other threads read ahead, so
/// that reading the headers overlaps what the caller does with each size. This thread reads too
/// whenever the next size isn't there yet. A replaced reader is called for each on this thread.
class SizesAhead {
public:
    explicit SizesAhead(const QStringList& srcs);
    /// Stops the readers and waits for them.
    ~SizesAhead();
    SizesAhead(const SizesAhead&) = delete;
    SizesAhead& operator=(const SizesAhead&) = delete;

    /// The size of `srcs[i]`; a failure to read it is raised here.
    QSize at(int i);

private:
    void read(int i);
    void stop();

    const ImageSizes reader_;
    const QStringList srcs_;
    std::vector<QSize> sizes_;
    std::vector<std::exception_ptr> failures_;
    std::unique_ptr<std::atomic<bool>[]> ready_;
    std::atomic<int> next_{0};
    std::vector<std::thread> workers_;
};

struct Metadata {
    QString comment;
    QString flag;
};
/// Comment and flag of the snapshot `src`; empty texts without a metadata file.
Metadata load_metadata(const QString& src);

/// The stored comment of a metadata file; empty when the file is missing. A document that can't
/// be read, or has no `metadata` element, raises.
QString load_comment(const QString& metaxml);
/// Sets every comment entry of an existing metadata file to `text`, keeping everything else.
void save_comment(const QString& metaxml, const QString& text);

/// Removes the files of the snapshot that exist. A failure names what is gone and what stayed.
void remove_snapshot(const QString& src);

/// Moves the files of the snapshot that exist into `directory`, replacing files of the same
/// names there. Either all of them arrive or, after a failure, those already moved are put back;
/// the error then says where each file is.
void move_snapshot(const QString& src, const QString& directory);

/// Removes every file of `directory` (not its subdirectories); a file that can't be removed is
/// passed over. Raises when the directory can't be listed.
void flush_directory(const QString& directory);

} // namespace cobaltrig::snapshot_files
