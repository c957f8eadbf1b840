#pragma once
// The browser's large view of one snapshot, and the logo label that stands in for it while there is
// nothing to show. Only one of the two is visible at a time; `set_image` decides which.

#include "frame/qt_compat.h"

#include <QLabel>
#include <QPixmap>
#include <QPoint>
#include <QString>
#include <QWidget>

#include <map>
#include <memory>
#include <optional>
#include <string>

class QAction;
class QMenu;
class QScrollArea;
class QScrollBar;
class QVBoxLayout;

namespace cobaltrig {

class SnapshotBrowser;
class PreviewLabel;
struct WipeCompare;

class SnapshotPreviewImage : public QWidget {
    Q_OBJECT
public:
    explicit SnapshotPreviewImage(SnapshotBrowser* snapshotbrowser);
    ~SnapshotPreviewImage() override;

    /// Shows the image at `src` at the pane's width, or the empty pane when there is no such file;
    /// `update_xml` also makes it the remembered preview.
    void set_image(const std::optional<QString>& src, bool update_xml = true);
    /// Shows the empty pane and forgets the remembered preview.
    void clear_image();
    void zoom_in();
    void zoom_out();
    /// Zooms by `factor` relative to the current zoom, keeping the middle of the view in place;
    /// a step past the bounds of the zoom does nothing.
    void scaleImage(double factor);
    static void adjust_scrollbar(QScrollBar* scrollbar, double factor);
    /// Shows the whole image, as large as the pane allows.
    void normal_size();
    /// The size of the whole image fitted into the pane, the size that zoom 1 shows; empty
    /// without an image.
    QSize fitted_size() const;
    void show_right_click_menu();
    /// Inserts the remembered preview image as a Read node.
    void insert_preview();
    /// Inserts the remembered snapshot's node graph, beside the current graph or in its place.
    void ask_insert_snapshot();

    // Compare: the shown image (A) left of a wipe line, another (B) right of it. Showing any
    // single image ends a compare.
    /// Compares the image shown with the snapshot at `src`; a message when either can't be shown.
    void compare_with(const QString& src);
    /// Compares the remembered preview with what the viewer shows now, rendered as a snapshot
    /// would be but into a temporary file that goes when the compare ends.
    void compare_with_current();
    /// Shows again the single image shown before the compare.
    void end_compare();
    /// Off shows A alone.
    void toggle_wipe();
    void swap_compare();
    bool comparing() const { return compare_ != nullptr; }
    /// Where the wipe line stands, as a part of the image's width; none without a compare.
    std::optional<double> wipe_split() const;

    SnapshotBrowser* snapshotbrowser;
    QString image;
    std::map<std::string, std::string> icons;
    bool alt_hold = false;
    /// Zoom relative to the fitted size: 1 shows the whole image.
    double scaleFactor = 0.0;
    QLabel* image_label = nullptr;
    QPixmap preview_pixmap;
    QScrollArea* scroll_area = nullptr;
    QVBoxLayout* layout_main = nullptr;
    QPoint xy;

    QMenu* menu_main = nullptr;
    QMenu* menu_view = nullptr;
    QMenu* menu_flags = nullptr;
    QAction* action_zoom_in = nullptr;
    QAction* action_zoom_out = nullptr;
    QAction* action_fit = nullptr;
    QAction* action_insert_snapshot = nullptr;
    QAction* action_insert_preview = nullptr;
    QAction* action_unflag = nullptr;
    QAction* action_comment = nullptr;
    QAction* sep = nullptr;
    QAction* action_clear = nullptr;
    QAction* action_compare_current = nullptr;
    QAction* action_end_compare = nullptr;
    /// The names of A and B in the pane's top corners while comparing.
    QLabel* label_compare_a = nullptr;
    QLabel* label_compare_b = nullptr;

    /// How far the zoom goes either way from the fitted size.
    static constexpr double kMinZoom = 1.0 / 8;
    static constexpr double kMaxZoom = 16.0;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void enterEvent(EnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QIcon icon(const char* key) const;
    void message(const std::string& text);
    /// Sizes the label to the fitted size times the zoom.
    void show_at_zoom();
    /// Starts a compare of the shown image with `b`, read whole; false after a message.
    bool start_compare(const QString& b, const QString& caption_b);
    /// Forgets the compare and removes the render of "now"; the image shown stays.
    void drop_compare();
    void show_compare_labels();
    PreviewLabel* wipe_label_ = nullptr;
    std::unique_ptr<WipeCompare> compare_;
};

class SnapshotPreviewEmpty : public QLabel {
    Q_OBJECT
public:
    explicit SnapshotPreviewEmpty(SnapshotBrowser* snapshotbrowser);

    SnapshotBrowser* snapshotbrowser;
    QPoint xy;

protected:
    void mouseMoveEvent(QMouseEvent* event) override;
};

/// Where a window dragged by the pointer goes: its centre under the pointer.
QPoint centred_under_pointer(const QWidget* window);

} // namespace cobaltrig
