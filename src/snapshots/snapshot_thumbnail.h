#pragma once
// One row of the browser's thumbnail table: the picture of one snapshot with its comment and flag
// marks, and the actions on it in a context menu. Cheap to make: the constructor reads the image's
// size and the metadata only; the pixels come with `load_thumbnail`, when the row is in view.

#include "frame/qt_compat.h"

#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QPointer>
#include <QString>

#include <map>
#include <string>
#include <vector>

class QAction;
class QMenu;
class QPaintEvent;

namespace cobaltrig {

class SnapshotBrowser;

/// The most pixels an image may claim in its header and still be read: decoding more would take
/// gigabytes for a picture that is shown a few hundred pixels wide.
constexpr qint64 kMaxImagePixels = 100'000'000;

/// What reading a snapshot's image gave: its pixels, or, with a null image, why there are none.
struct ShownImage {
    QImage image;
    QString reason;
};

/// Reads the image at `src`, decoded straight to `size` when that is valid (scaled by `mode`, so
/// that a large image never exists in full), whole otherwise. Refuses what is no regular file and
/// what claims more than `kMaxImagePixels`. Touches neither Python nor a widget: safe on any
/// thread.
ShownImage read_shown_image(const QString& src, QSize size = QSize(),
                            Qt::AspectRatioMode mode = Qt::KeepAspectRatio);

/// Paints `label`'s pixmap stretched over its contents, only where `exposed` asks: what QLabel's
/// scaled contents show, without the scaled copy of the whole label that QLabel keeps, which for
/// a zoomed preview runs to hundreds of megabytes.
void paint_scaled_pixmap(QLabel& label, const QRect& exposed);

class SnapshotThumbnail : public QLabel {
    Q_OBJECT
public:
    SnapshotThumbnail(const QString& src, SnapshotBrowser* snapshotbrowser);
    /// For a listing that read the image's size already (see snapshot_files::SizesAhead).
    SnapshotThumbnail(const QString& src, SnapshotBrowser* snapshotbrowser, QSize size);

    QString get_src() const { return src; }
    /// Reads the metadata and shows the comment mark (with the comment as tool tip) and the flag
    /// mark in its colour.
    void set_meta_ui_elements();
    /// The marks as the metadata last read gives them; the first call reads it. A row shows its
    /// marks only once in view, so a long list reads the metadata of the rows seen.
    void ensure_meta_ui_elements();
    void show_right_click_menu();
    void set_to_preview();
    /// Reads the image at the size its row shows and shows it there.
    void load_thumbnail();
    /// Shows `shown`, this snapshot's image read already at the size of the column `width`, or the
    /// "cannot read" tile when it has no pixels.
    void load_thumbnail(ShownImage shown, int width);
    /// Reads the pixels for a column `width` wide; touches no widget, so it may run on any thread.
    ShownImage read_pixels(int width) const;
    /// The row's height in a column `width` wide: the image's height at that width, kept within
    /// sane bounds for strange shapes, or the tile's height for an image that can't be read.
    int shown_height(int width) const;
    /// Whether the row needs a pass of `load_thumbnail` for a column `width` wide: it was never
    /// shown, or holds pixels for another width.
    bool needs_loading(int width) const;
    /// Lets go of the pixels; the next pass over the row in view reads them again.
    void release_pixels();
    /// Why the image can't be shown (it is then a "cannot read" tile); empty when it can.
    QString cannot_read;
    /// Takes the thumbnail into a refreshed table: its size as listed now (a "cannot read" tile
    /// again, or no more), its pixels read again when its row is in view, its marks read again.
    void reuse(QSize size);
    /// The comment and the flag mark, made hidden on first use.
    QLabel* comment_mark();
    QLabel* flag_mark();

    /// Deletes the snapshots of the table's selection: one per selected range, its top row.
    void delete_snapshot();
    /// Deletes the snapshots of `thumbs` with their rows, then empties the preview if its snapshot
    /// went. The rows are named before anything goes, so no removal shifts what else goes.
    static void delete_thumbnails(SnapshotBrowser* browser,
                                  const std::vector<QPointer<SnapshotThumbnail>>& thumbs);
    /// Asks, then removes every file of the current snapshot directory.
    void delete_snapshots_all();
    /// Moves the snapshots of the table's selection to the snapshot directory `dest`.
    void move_snapshot(const QString& dest);

    QString src;
    SnapshotBrowser* snapshotbrowser = nullptr;
    int w = 1;
    int h = 1;
    /// The pixels shown, at the size of the row: never the full image.
    QPixmap pixmap;
    /// The marks, made when first needed (see comment_mark and flag_mark).
    QLabel* label_comment = nullptr;
    QLabel* label_flag = nullptr;
    std::map<std::string, std::string> icons;

    QMenu* menu_main = nullptr;
    QMenu* menu_flags = nullptr;
    QMenu* menu_move = nullptr;
    QAction* action_preview = nullptr;
    QAction* action_compare = nullptr;
    QAction* action_unflag = nullptr;
    QAction* action_comment = nullptr;
    QAction* action_reveal = nullptr;
    QAction* action_delete = nullptr;
    QAction* action_delete_all = nullptr;
    QAction* sep2 = nullptr;

    /// The table shows every row's widget; a thumbnail comes up only once its row was in view
    /// (`load_thumbnail`), so rows never scrolled to cost no styling and no pixels.
    void setVisible(bool visible) override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void enterEvent(EnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    bool seen_ = false;
    bool meta_read_ = false;
    bool style_changed_ = false;
    /// The column width the pixels were read for; 0 while none are held.
    int pixels_width_ = 0;
    void show_cannot_read(const QString& reason);
    /// Whether the image of size `w` x `h` can be shown; sets `cannot_read` and, for an image that
    /// can't, makes the size 1 x 1.
    void judge_size();
    void update_tool_tip();
    QString comment_;
    void show_flag(const QString& flag);
    QIcon icon(const char* key) const;
};

} // namespace cobaltrig
