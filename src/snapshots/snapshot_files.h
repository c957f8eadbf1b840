#pragma once
// The snapshot triad on disk: an image, the script beside it and its metadata document, sharing one
// stem. The image alone makes a snapshot; the script and the metadata may be missing at any time.
// Nothing here knows a window: the thumbnail and the browser call in and show what comes back.

#include <QSize>
#include <QString>
#include <QStringList>

#include <stdexcept>
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

/// `image_size` for a whole listing: whether the package's own reader is in place is asked once,
/// when made, so that a long list pays no crossing into Python per image.
class ImageSizes {
public:
    ImageSizes();
    QSize operator()(const QString& src) const;
    /// The sizes of all of `srcs`, in their order. The package's own reader reads the headers on
    /// several threads; a replaced reader is called for each, one after the other, on this one.
    std::vector<QSize> all(const QStringList& srcs) const;

private:
    bool native_;
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
