// What stands in for the frameless browser's title bar: keys, dragging the window by the pointer,
// and the opacity fades that open and close it.

#include "snapshots/snapshot_browser.h"

#include "frame/guarded.h"
#include "snapshots/snapshot_preview.h"
#include "snapshots/snapshot_thumbnail.h"

#include <QCursor>
#include <QEvent>
#include <QGroupBox>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableWidget>
#include <QTimer>

namespace cobaltrig {

namespace {

// How far one arrow key scrolls the preview, in pixels.
constexpr int kScrollStep = 30;
// How much of the opacity one step of a fade changes.
constexpr double kFadeStep = 0.1;

// Deletes through the thumbnail the pointer entered last, if its row is still listed. What goes is
// the table's selection: the thumbnail only says that the key was meant for the list.
void delete_through_last_entered(SnapshotBrowser& browser) {
    if (browser.current_thumb_src.isEmpty())
        return;
    for (SnapshotThumbnail* thumb : browser.get_thumbnails_list()) {
        if (thumb && thumb->src == browser.current_thumb_src) {
            thumb->delete_snapshot();
            return;
        }
    }
}

// Shows the row `step` away from the table's current one. Runs before the table's own handling
// of the arrow, which then moves the current cell onto the row shown; past either end, or onto
// the empty row of an unreadable image, there is nothing to show and the preview stays.
void preview_row_beside_current(SnapshotBrowser& browser, int step) {
    const int row = browser.table_thumbs->currentRow() + step;
    if (row < 0)
        return;
    if (auto* thumb = qobject_cast<SnapshotThumbnail*>(browser.table_thumbs->cellWidget(row, 0)))
        browser.preview_image->set_image(thumb->get_src());
}

} // namespace

void SnapshotBrowser::drag_to(const QPoint& pointer, const QPoint& offset) {
    xy = pointer + offset;
    move(xy);
}

bool SnapshotBrowser::eventFilter(QObject* watched, QEvent* event) {
    // The panel has no preview to drag by, so the window follows the pointer with its centre.
    if (event->type() == QEvent::MouseMove && watched == group_settings && group_settings)
        drag_to(QCursor::pos(),
                QPoint(static_cast<int>(width() * -0.5), static_cast<int>(height() * -0.5)));
    if (event->type() == QEvent::KeyPress && watched == table_thumbs && built()) {
        guarded("thumbnail list key", [&] {
            const auto* key = static_cast<QKeyEvent*>(event);
            // The pointer may have left the list since: the key still means the thumbnail
            // entered last, as the table has the focus.
            if (key->text() == QLatin1String("d"))
                delete_through_last_entered(*this);
            if (key->key() == Qt::Key_Down)
                preview_row_beside_current(*this, 1);
            else if (key->key() == Qt::Key_Up)
                preview_row_beside_current(*this, -1);
        });
    }
    // Never swallowed: the table and the panel handle their own events as usual.
    return QWidget::eventFilter(watched, event);
}

void SnapshotBrowser::keyPressEvent(QKeyEvent* event) {
    // The keys are the window's alone; unknown ones are dropped, not handed to the base class.
    guarded("browser key", [&] {
        if (event->key() == Qt::Key_Escape) {
            fade_method = QStringLiteral("out");
            fade();
        }
        if (!built())
            return;
        // With the focus elsewhere in the window, "d" reaches the list only under the pointer.
        if (event->text() == QLatin1String("d") && hover_thumbnails)
            delete_through_last_entered(*this);
        if (!hover_preview)
            return;
        QScrollBar* vertical = preview_image->scroll_area->verticalScrollBar();
        QScrollBar* horizontal = preview_image->scroll_area->horizontalScrollBar();
        const QString text = event->text();
        if (text == QLatin1String("+") || text == QLatin1String("="))
            preview_image->zoom_in();
        else if (text == QLatin1String("-"))
            preview_image->zoom_out();
        else if (text == QLatin1String("h"))
            preview_image->normal_size();
        // Up raises the vertical value and Down lowers it: the image moves with the arrow, the
        // way artists push a plate around in a viewer.
        else if (event->key() == Qt::Key_Up)
            vertical->setValue(vertical->value() + kScrollStep);
        else if (event->key() == Qt::Key_Down)
            vertical->setValue(vertical->value() - kScrollStep);
        else if (event->key() == Qt::Key_Left)
            horizontal->setValue(horizontal->value() - kScrollStep);
        else if (event->key() == Qt::Key_Right)
            horizontal->setValue(horizontal->value() + kScrollStep);
    });
}

void SnapshotBrowser::mouseMoveEvent(QMouseEvent* event) {
    QWidget::mouseMoveEvent(event);
    // A move that the preview, its placeholder or the settings panel passed up has placed the
    // window already, with the pointer at its centre.
    if (const QWidget* under = childAt(event->pos())) {
        for (const QWidget* dragged : {static_cast<const QWidget*>(preview_image),
                                       static_cast<const QWidget*>(preview_empty),
                                       static_cast<const QWidget*>(group_settings)})
            if (dragged && (under == dragged || dragged->isAncestorOf(under)))
                return;
    }
    // Held in the middle of its width, just below the top edge, like a title bar.
    drag_to(QCursor::pos(), QPoint(static_cast<int>(width() * -0.5), -30));
}

void SnapshotBrowser::set_hover_thumbnails(bool has_hover) {
    hover_thumbnails = has_hover;
}

void SnapshotBrowser::fade() {
    timer_fade->start(fade_time);
    // Each call adds a step per tick, so a close after the opening fade runs twice as fast, and
    // an impatient second Escape faster still.
    QObject::connect(timer_fade, &QTimer::timeout, this,
                     [this] { guarded("fade", [this] { fade_(); }); });
    ++fade_connections_;
    // A window replaced in its slot while it fades out must live until its last step: the
    // window keeps its own Python object until then, so its holder cannot delete it earlier.
    if (fade_method == QLatin1String("out") && !keep_alive_during_fade_) {
        try {
            keep_alive_during_fade_ = py::cast(this, py::return_value_policy::reference);
        } catch (const std::exception&) {
            // Made from C++ alone: nothing in Python can drop it.
        }
    }
}

void SnapshotBrowser::fade_() {
    // The end is found on the opacity the window reports, not on a sum of steps: platforms keep
    // opacity in coarse steps (1/255 on some), and only the clamped value read back is sure to
    // reach exactly 0 or 1.
    const double cur_opacity = windowOpacity();
    if (fade_method == QLatin1String("in")) {
        setWindowOpacity(cur_opacity + kFadeStep);
        if (cur_opacity >= 1.0) {
            timer_fade->stop();
            fade_method.clear();
        }
    } else if (fade_method == QLatin1String("out")) {
        setWindowOpacity(cur_opacity - kFadeStep);
        if (cur_opacity <= 0.0) {
            timer_fade->stop();
            fade_method.clear();
            close();
            // Last: dropping the reference may hand the window to its holder for deletion, which
            // happens once control is back in the event loop.
            keep_alive_during_fade_ = py::object();
        }
    }
}

} // namespace cobaltrig
