// What stands in for the frameless browser's title bar: keys, dragging the window by the pointer,
// and the opacity fades that open and close it.

#include "snapshots/snapshot_browser.h"

#include "frame/guarded.h"
#include "frame/siblings.h"
#include "snapshots/snapshot_preview.h"
#include "snapshots/snapshot_thumbnail.h"

#include <QCursor>
#include <QComboBox>
#include <QEvent>
#include <QFileInfo>
#include <QGroupBox>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLineEdit>
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

// What "d" deletes: the thumbnail under the pointer; the whole selection when the pointer is on a
// selected row. Nothing when the pointer is on no thumbnail: a key must not delete what the artist
// isn't pointing at.
std::vector<QPointer<SnapshotThumbnail>> pointed_snapshots(SnapshotBrowser& browser) {
    std::vector<QPointer<SnapshotThumbnail>> thumbs;
    if (!browser.hover_thumbnails || browser.current_thumb_src.isEmpty())
        return thumbs;
    QTableWidget* table = browser.table_thumbs;
    const QItemSelectionModel* selection = table->selectionModel();
    for (int row = 0; row < table->rowCount(); ++row) {
        auto* thumb = qobject_cast<SnapshotThumbnail*>(table->cellWidget(row, 0));
        if (!thumb || thumb->src != browser.current_thumb_src)
            continue;
        if (!selection->isSelected(table->model()->index(row, 0))) {
            thumbs.emplace_back(thumb);
            return thumbs;
        }
        for (int selected = 0; selected < table->rowCount(); ++selected)
            if (!table->isRowHidden(selected) &&
                selection->isSelected(table->model()->index(selected, 0)))
                if (auto* one = qobject_cast<SnapshotThumbnail*>(table->cellWidget(selected, 0)))
                    thumbs.emplace_back(one);
        return thumbs;
    }
    return thumbs;
}

// Deletes what the pointer is on, after one question that says how much goes.
void delete_pointed(SnapshotBrowser& browser) {
    const std::vector<QPointer<SnapshotThumbnail>> thumbs = pointed_snapshots(browser);
    if (thumbs.empty())
        return;
    const int count = static_cast<int>(thumbs.size());
    const QString message =
        count == 1 ? QStringLiteral("Delete the snapshot '%1'? This can't be undone!")
                         .arg(QFileInfo(thumbs.front()->src).completeBaseName())
                   : QStringLiteral("Delete the %1 selected snapshots? This can't be undone!")
                         .arg(count);
    const QString label = count == 1 ? QStringLiteral("delete 1 snapshot")
                                     : QStringLiteral("delete %1 snapshots").arg(count);
    if (!siblings::ask_dialog("Delete snapshots", message.toStdString(), label.toStdString(),
                              "45,0,0"))
        return;
    SnapshotThumbnail::delete_thumbnails(&browser, thumbs);
}

// Shows the row `step` away from the table's current one. Runs before the table's own handling
// of the arrow, which then moves the current cell onto the row shown; past either end there is
// nothing to show and the preview stays. Rows that finding hid are passed over.
void preview_row_beside_current(SnapshotBrowser& browser, int step) {
    const int row = browser.row_beside(browser.table_thumbs->currentRow(), step);
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
    const bool key = event->type() == QEvent::KeyPress;
    // The host's application shortcuts come first unless the key is claimed: the browser's own
    // keys are its own while the focus is in it.
    const bool claim = event->type() == QEvent::ShortcutOverride;
    if ((key || claim) && built() && watched->isWidgetType()) {
        auto* keyEvent = static_cast<QKeyEvent*>(event);
        bool handled = false;
        guarded("browser key", [&] {
            handled = claim ? claims_key(*keyEvent, watched) : browser_key(*keyEvent, watched);
        });
        if (handled) {
            event->accept();
            return true;
        }
        // The directory box takes neither letters nor arrows: a letter there would pick a
        // command ("d" the deletion of the whole directory), an arrow would open its dialogs.
        if (watched == combo_snapshot_dir && key)
            return true;
    }
    // Never swallowed otherwise: the table and the panel handle their own events as usual.
    return QWidget::eventFilter(watched, event);
}

bool SnapshotBrowser::claims_key(const QKeyEvent& event, QObject* watched) const {
    // The find field takes what is typed into it; only Escape stays the browser's.
    if (watched == input_find)
        return event.key() == Qt::Key_Escape;
    const QString text = event.text();
    if (event.key() == Qt::Key_Escape || text == QLatin1String("d"))
        return true;
    if (text == QLatin1String("c") && hover_thumbnails && !current_thumb_src.isEmpty())
        return true;
    if (built() && preview_image->comparing() &&
        (text.compare(QLatin1String("w"), Qt::CaseInsensitive) == 0 ||
         text.compare(QLatin1String("s"), Qt::CaseInsensitive) == 0))
        return true;
    if (hover_preview && (text == QLatin1String("+") || text == QLatin1String("=") ||
                          text == QLatin1String("-") || text == QLatin1String("h")))
        return true;
    const bool arrow = event.key() == Qt::Key_Up || event.key() == Qt::Key_Down ||
                       event.key() == Qt::Key_Left || event.key() == Qt::Key_Right;
    return arrow && (hover_preview || watched != table_thumbs);
}

bool SnapshotBrowser::browser_key(QKeyEvent& event, QObject* watched) {
    // While comparing, Escape ends the compare; the next one closes the window as ever.
    if (event.key() == Qt::Key_Escape && built() && preview_image->comparing()) {
        preview_image->end_compare();
        return true;
    }
    if (event.key() == Qt::Key_Escape) {
        fade_method = QStringLiteral("out");
        fade();
        return true;
    }
    if (!built())
        return false;
    if (watched == input_find) {
        // Return takes the artist from the field to the rows found; the field keeps every other
        // key, and those it doesn't use (Up, Down) reach the browser through the window.
        if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter)
            return false;
        table_thumbs->setFocus();
        return true;
    }
    const QString text = event.text();
    // "d" acts on the thumbnail under the pointer, wherever the focus is; never on a row the
    // pointer has left.
    if (text == QLatin1String("d")) {
        delete_pointed(*this);
        return true;
    }
    // "c" compares the preview with the thumbnail under the pointer, as "d" acts on it.
    if (text == QLatin1String("c") && hover_thumbnails && !current_thumb_src.isEmpty()) {
        preview_image->compare_with(current_thumb_src);
        return true;
    }
    if (preview_image->comparing()) {
        if (text.compare(QLatin1String("w"), Qt::CaseInsensitive) == 0) {
            preview_image->toggle_wipe();
            return true;
        }
        if (text.compare(QLatin1String("s"), Qt::CaseInsensitive) == 0) {
            preview_image->swap_compare();
            return true;
        }
    }
    if (hover_preview) {
        QScrollBar* vertical = preview_image->scroll_area->verticalScrollBar();
        QScrollBar* horizontal = preview_image->scroll_area->horizontalScrollBar();
        if (text == QLatin1String("+") || text == QLatin1String("="))
            preview_image->zoom_in();
        else if (text == QLatin1String("-"))
            preview_image->zoom_out();
        else if (text == QLatin1String("h"))
            preview_image->normal_size();
        // Up raises the vertical value and Down lowers it: the image moves with the arrow, the
        // way artists push a plate around in a viewer.
        else if (event.key() == Qt::Key_Up)
            vertical->setValue(vertical->value() + kScrollStep);
        else if (event.key() == Qt::Key_Down)
            vertical->setValue(vertical->value() - kScrollStep);
        else if (event.key() == Qt::Key_Left)
            horizontal->setValue(horizontal->value() - kScrollStep);
        else if (event.key() == Qt::Key_Right)
            horizontal->setValue(horizontal->value() + kScrollStep);
        else
            return false;
        return true;
    }
    // Up and Down step through the list wherever the focus is. In the list itself the preview
    // follows before the table moves its current cell, which it then does as usual.
    if (event.key() == Qt::Key_Down || event.key() == Qt::Key_Up) {
        const int step = event.key() == Qt::Key_Down ? 1 : -1;
        preview_row_beside_current(*this, step);
        if (watched == table_thumbs)
            return false;
        const int row = row_beside(table_thumbs->currentRow(), step);
        if (row >= 0 && row < table_thumbs->rowCount())
            table_thumbs->setCurrentCell(row, 0);
        return true;
    }
    return false;
}

void SnapshotBrowser::keyPressEvent(QKeyEvent* event) {
    // The keys are the window's alone; unknown ones are dropped, not handed to the base class.
    guarded("browser key", [&] { browser_key(*event, this); });
}

void SnapshotBrowser::route_keys() {
    // Every widget of the main view that can hold the focus hands the browser its keys first, so
    // that they mean the same wherever the artist last clicked. The settings panel's fields keep
    // theirs, and so does the directory box's open list, a window of its own.
    for (QWidget* widget : findChildren<QWidget*>()) {
        if (widget->window() != this || widget->focusPolicy() == Qt::NoFocus ||
            group_settings->isAncestorOf(widget))
            continue;
        widget->installEventFilter(this);
    }
    combo_snapshot_dir->installEventFilter(this);
    // The box takes the focus only when its list is open; the list takes it at opening.
    combo_snapshot_dir->setFocusPolicy(Qt::NoFocus);
    table_thumbs->setFocus();
}

void SnapshotBrowser::mousePressEvent(QMouseEvent* event) {
    QWidget::mousePressEvent(event);
    // Where a drag begins decides who moves the window for the whole drag, wherever the pointer
    // goes until the release.
    drag_from_ = childAt(event->pos());
    dragging_ = true;
}

void SnapshotBrowser::mouseReleaseEvent(QMouseEvent* event) {
    QWidget::mouseReleaseEvent(event);
    dragging_ = false;
}

void SnapshotBrowser::mouseMoveEvent(QMouseEvent* event) {
    QWidget::mouseMoveEvent(event);
    // A move that the preview, its placeholder or the settings panel passed up has placed the
    // window already, with the pointer at its centre. A drag that began on the window itself
    // goes on moving it when the pointer crosses them: what counts is where the drag began.
    const QWidget* under = dragging_ ? drag_from_.data() : childAt(event->pos());
    if (under) {
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
