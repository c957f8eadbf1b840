#pragma once
// One row of the browser's thumbnail table: the picture of one snapshot with its comment and flag
// marks, and the actions on it in a context menu. Cheap to make: the constructor reads the image's
// size and the metadata only; the pixels come with `load_thumbnail`, when the row is in view.

#include "frame/qt_compat.h"

#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QString>

#include <map>
#include <string>

class QAction;
class QMenu;

namespace cobaltrig {

class SnapshotBrowser;

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
    /// Reads the image and shows it at the width of the table's column.
    void load_thumbnail();
    /// Shows `image`, the pixels of this snapshot read already, as `load_thumbnail` does.
    void load_thumbnail(QImage image);
    /// Takes the thumbnail into a refreshed table: its size as listed now, its pixels read again
    /// when its row is in view, its marks read again.
    void reuse(QSize size);
    /// The comment and the flag mark, made hidden on first use.
    QLabel* comment_mark();
    QLabel* flag_mark();

    /// Deletes the snapshots of the table's selection: one per selected range, its top row.
    void delete_snapshot();
    /// Asks, then removes every file of the current snapshot directory.
    void delete_snapshots_all();
    /// Moves the snapshots of the table's selection to the snapshot directory `dest`.
    void move_snapshot(const QString& dest);

    QString src;
    SnapshotBrowser* snapshotbrowser = nullptr;
    int w = 1;
    int h = 1;
    QPixmap pixmap;
    /// The marks, made when first needed (see comment_mark and flag_mark).
    QLabel* label_comment = nullptr;
    QLabel* label_flag = nullptr;
    std::map<std::string, std::string> icons;

    QMenu* menu_main = nullptr;
    QMenu* menu_flags = nullptr;
    QMenu* menu_move = nullptr;
    QAction* action_preview = nullptr;
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
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void enterEvent(EnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    bool seen_ = false;
    bool meta_read_ = false;
    bool style_changed_ = false;
    void show_flag(const QString& flag);
    QIcon icon(const char* key) const;
};

} // namespace cobaltrig
