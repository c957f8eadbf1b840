#pragma once
// The snapshot triad on disk: an image, the script beside it and its metadata document, sharing one
// stem. The image alone makes a snapshot; the script and the metadata may be missing at any time.
// Nothing here knows a window: the thumbnail and the browser call in and show what comes back.

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
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

/// One listing of a snapshot directory: its images (regular files, or links to them, whose names
/// end exactly in ".jpg"), full paths, newest first; and how many entries of any kind, folders
/// too, have such a name, which is what the version slider counts. A pipe or a device under such a
/// name is no image: opening it could wait forever.
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
/// Comment and flag of the snapshot `src`; empty texts without a metadata file. A document that
/// can't be read, or that breaks the limits below, gives empty texts and is named once on the
/// console.
Metadata load_metadata(const QString& src);
/// The same from the metadata file itself, whatever `helper.load_metadata` is: a damaged document
/// raises FileError, naming it. Touches no Python, so it may run on any thread.
Metadata read_metadata(const QString& src);

/// What a metadata document may be: no larger than this, nested no deeper, and without a document
/// type (so without entities, whose expansion could take the host's memory). The files written
/// here are a few hundred bytes, three levels deep.
constexpr qint64 metadata_max_bytes = 1024 * 1024;
constexpr int metadata_max_depth = 32;

/// The stored comment of a metadata file, blanks and all; empty when the file is missing. A
/// document that can't be read, breaks the limits or has no `metadata` element raises, naming it.
QString load_comment(const QString& metaxml);
/// Sets every comment entry of an existing metadata file to `text`, keeping everything else.
void save_comment(const QString& metaxml, const QString& text);

/// The colour of a flag entry "r,g,b": three whole numbers from 0 to 255; none otherwise.
std::optional<QColor> flag_colour(const QString& text);

/// Writes "cobaltRig: `text`" to the host's console, once per `key` in a session.
void report_once(const QString& key, const QString& text);

/// Whether two paths name the same directory, through links and aliases alike.
bool same_directory(const QString& a, const QString& b);

/// Removes the files of the snapshot that exist. A failure names what is gone and what stayed.
void remove_snapshot(const QString& src);

/// Moves the files of the snapshot that exist into `directory`, replacing files of the same
/// names there. Either all of them arrive or, after a failure, those already moved are put back;
/// the error then says where each file is. A `directory` that is the snapshot's own, under
/// whatever name, changes nothing. While the files travel, a note in the folder that holds
/// `directory` (the browser root) names the snapshot, so that `recover_moves` can finish a move
/// that a killed process left half done.
void move_snapshot(const QString& src, const QString& directory);

/// Finishes the moves noted in `root` whose process is gone: every file of such a snapshot still
/// in its old directory joins the others in the new one. Each is named on the console.
void recover_moves(const QString& root);

/// Removes every file of `directory` (not its subdirectories); a file that can't be removed is
/// passed over. Raises when the directory can't be listed.
void flush_directory(const QString& directory);

} // namespace cobaltrig::snapshot_files
