// The snapshot browser's thumbnail table: filling it, loading the images of the rows in view,
// keeping rows and preview in step with the window, and the version slider.

#include "snapshots/snapshot_browser.h"

#include "frame/guarded.h"
#include "frame/siblings.h"
#include "snapshots/snapshot_files.h"
#include "snapshots/snapshot_preview.h"
#include "snapshots/snapshot_thumbnail.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QHash>
#include <QLabel>
#include <QPointer>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QSet>
#include <QSlider>
#include <QSplitter>
#include <QTableWidget>

#include <algorithm>
#include <exception>
#include <stdexcept>

namespace cobaltrig {

namespace {

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

// Every row holds a thumbnail widget. A table places all of its cell widgets after every change
// of rows (a find, a resize), and paints each one while thousands of siblings are shown: on a
// long list, most of a keystroke in the find field. Only the widgets of the rows in view are
// shown and placed here; the rest stay hidden until scrolling brings them into view.
class ThumbnailTable : public QTableWidget {
public:
    using QTableWidget::QTableWidget;

    /// Shows and places the widgets of the rows in view, and hides every other one shown.
    void place_rows_in_view() {
        QSet<QWidget*> in_view;
        const int top = rowAt(0);
        if (top >= 0) {
            int lowest = rowAt(viewport()->height() - 1);
            if (lowest < 0)
                lowest = rowCount() - 1;
            for (int row = top; row <= lowest; ++row) {
                if (isRowHidden(row))
                    continue;
                QWidget* widget = cellWidget(row, 0);
                if (!widget)
                    continue;
                widget->setGeometry(visualRect(model()->index(row, 0)));
                widget->show();
                in_view.insert(widget);
            }
        }
        // Hiding changes the record of what is shown: the widgets to hide are gathered first.
        std::vector<QWidget*> out_of_view;
        for (auto it = shown_.begin(); it != shown_.end();) {
            if (!it.value()) {
                it = shown_.erase(it);
                continue;
            }
            if (!in_view.contains(it.key()))
                out_of_view.push_back(it.key());
            ++it;
        }
        for (QWidget* widget : out_of_view)
            widget->hide();
    }

protected:
    void updateEditorGeometries() override {
        // A layout still pending would place the widgets by rows that are about to move; it
        // runs first, and comes back here.
        executeDelayedItemsLayout();
        place_rows_in_view();
    }

    void scrollContentsBy(int dx, int dy) override {
        QTableWidget::scrollContentsBy(dx, dy);
        place_rows_in_view();
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        // What is shown elsewhere (a thumbnail that has read its first pixels) is known here,
        // so that it is hidden again once out of view.
        if (event->type() == QEvent::ShowToParent) {
            auto* widget = qobject_cast<QWidget*>(watched);
            if (widget && widget->parent() == viewport())
                shown_.insert(widget, widget);
        } else if (event->type() == QEvent::HideToParent) {
            shown_.remove(static_cast<QWidget*>(watched));
        }
        return QTableWidget::eventFilter(watched, event);
    }

private:
    // The cell widgets shown now; a widget deleted meanwhile leaves a null pointer behind.
    QHash<QWidget*, QPointer<QWidget>> shown_;
};

} // namespace

snapshot_files::Listing SnapshotBrowser::listing(const QString& directory) {
    const QString key = QDir::cleanPath(QFileInfo(directory).absoluteFilePath());
    if (shared_listing_ && shared_listing_->directory == key)
        return shared_listing_->listing;
    snapshot_files::Listing fresh = snapshot_files::list_directory(directory);
    if (listing_scopes_ > 0)
        shared_listing_ = SharedListing{key, fresh};
    return fresh;
}

QTableWidget* SnapshotBrowser::create_thumbnail_table() {
    return new ThumbnailTable(this);
}

void SnapshotBrowser::create_table_signals() {
    connect_guarded(splitter, &QSplitter::splitterMoved, this, "splitter moved",
                    [this] { adjust_splitter_sizes(); });
    connect_guarded(table_thumbs->verticalScrollBar(), &QScrollBar::valueChanged, this,
                    "thumbnails scrolled", [this] { load_thumbs_visible_top_bottom(); });
    connect_guarded(slider_versions, &QSlider::valueChanged, this, "versions slider",
                    [this] { slide_versions(); });
}

void SnapshotBrowser::populate_table_thumbs() {
    if (!built())
        throw std::runtime_error("the snapshot browser has no table: it stopped while building");
    // The directory is listed first: the thumbnail of a snapshot that is still listed stays the
    // same object through the refresh, so what holds it (a script, its own open menu) goes on
    // working. Only the rows of snapshots that are gone go.
    QStringList thumbs_list;
    std::exception_ptr unlisted;
    if (current_snapshot_dir) {
        // An absolute directory replaces the root in the join.
        const QString look_dir = QDir(snapshotbrowser_root).filePath(*current_snapshot_dir);
        try {
            thumbs_list = listing(look_dir).images;
        } catch (...) {
            unlisted = std::current_exception();
        }
    }
    const QSet<QString> listed(thumbs_list.begin(), thumbs_list.end());
    QSet<QString> kept_sources;
    QSet<SnapshotThumbnail*> kept;
    // The old thumbnails go before the style is set again, or each would be restyled on its way
    // out. Most are deleted at once; one whose menu was opened may be running that menu's action
    // (a flag can refresh the table), so those few wait for the event loop, outside the window.
    QWidget* retired = nullptr;
    for (SnapshotThumbnail* thumb : get_thumbnails_list()) {
        if (!thumb)
            continue;
        if (listed.contains(thumb->get_src()) && !kept_sources.contains(thumb->get_src())) {
            kept_sources.insert(thumb->get_src());
            kept.insert(thumb);
            continue;
        }
        if (!thumb->menu_main) {
            delete thumb;
            continue;
        }
        if (!retired) {
            retired = new QWidget;
            retired->hide();
        }
        thumb->hide();
        thumb->setParent(retired);
    }
    if (retired)
        retired->deleteLater();
    if (kept.isEmpty()) {
        table_thumbs->clear();
    } else {
        // Rows of what went are removed in runs, from the bottom, so the rows kept keep their
        // order.
        auto keeps = [&](int row) {
            return kept.contains(
                qobject_cast<SnapshotThumbnail*>(table_thumbs->cellWidget(row, 0)));
        };
        for (int row = table_thumbs->rowCount() - 1; row >= 0;) {
            if (keeps(row)) {
                --row;
                continue;
            }
            const int last = row;
            while (row >= 0 && !keeps(row))
                --row;
            table_thumbs->model()->removeRows(row + 1, last - row);
        }
    }
    // New thumbnails take the window's style from their parent; setting it again restyles every
    // widget of the window, which only a list made anew (no row kept) can afford.
    if (kept.isEmpty())
        siblings::set_style_sheet(this);
    if (unlisted)
        std::rethrow_exception(unlisted);
    if (!current_snapshot_dir)
        return;
    if (kept.isEmpty())
        table_thumbs->setRowCount(thumbs_list.size());
    snapshot_files::SizesAhead sizes(thumbs_list);

    QHeaderView* header = table_thumbs->verticalHeader();
    header->setUpdatesEnabled(false);
    table_thumbs->setColumnWidth(0, 200);
    // Every listed snapshot keeps its row: one whose image can't be read shows as a tile that
    // says so, and can still be deleted or moved like any other.
    const int width = table_thumbs->columnWidth(0);
    for (int row = 0; row < thumbs_list.size(); ++row) {
        // Both lists run newest first, so a kept row is met where its snapshot stands now.
        auto* existing = qobject_cast<SnapshotThumbnail*>(table_thumbs->cellWidget(row, 0));
        SnapshotThumbnail* thumb = existing;
        if (existing && kept.contains(existing) && existing->get_src() == thumbs_list[row]) {
            thumb->reuse(sizes.at(row));
        } else {
            thumb = new SnapshotThumbnail(thumbs_list[row], this, sizes.at(row));
            if (!kept.isEmpty())
                table_thumbs->insertRow(row);
            table_thumbs->setCellWidget(row, 0, thumb);
        }
        header->resizeSection(row, thumb->shown_height(width));
    }
    if (!kept.isEmpty())
        table_thumbs->setRowCount(thumbs_list.size());
    header->setUpdatesEnabled(true);
    refresh_find(QDir(snapshotbrowser_root).filePath(*current_snapshot_dir), thumbs_list);
    load_thumbs_visible_top_bottom();
}

std::vector<SnapshotThumbnail*> SnapshotBrowser::get_thumbnails_list() const {
    std::vector<SnapshotThumbnail*> thumbs;
    if (!built())
        return thumbs;
    thumbs.reserve(table_thumbs->rowCount());
    for (int row = 0; row < table_thumbs->rowCount(); ++row)
        thumbs.push_back(qobject_cast<SnapshotThumbnail*>(table_thumbs->cellWidget(row, 0)));
    return thumbs;
}

QStringList SnapshotBrowser::row_sources() const {
    QStringList sources;
    for (const SnapshotThumbnail* thumb : get_thumbnails_list())
        if (thumb)
            sources << thumb->get_src();
    return sources;
}

void SnapshotBrowser::load_thumbs_visible_top_bottom() {
    load_visible_thumbs(true);
}

void SnapshotBrowser::load_visible_thumbs(bool only_missing, int extra_items_to_load) {
    if (!built())
        return;
    const int visible_top = table_thumbs->rowAt(0);
    // Below the last row `rowAt` finds none: then the last row is the lowest in view, so a list
    // scrolled to its end, or shorter than the view, still shows every picture.
    int lowest = table_thumbs->rowAt(table_thumbs->viewport()->height() - 1);
    if (lowest < 0)
        lowest = table_thumbs->rowCount() - 1;
    // Rows that hold their pixels at this width already cost nothing: a wheel notch over rows
    // seen before reads no file.
    const int width = table_thumbs->columnWidth(0);
    std::vector<SnapshotThumbnail*> thumbs;
    const int rows = table_thumbs->rowCount();
    int ahead = extra_items_to_load;
    for (int row = std::max(visible_top, 0); row < rows && (row <= lowest || ahead > 0); ++row) {
        // Rows that finding hid are neither in view nor among the few read ahead.
        if (table_thumbs->isRowHidden(row))
            continue;
        if (row > lowest)
            --ahead;
        if (auto* thumb = qobject_cast<SnapshotThumbnail*>(table_thumbs->cellWidget(row, 0)))
            if (!only_missing || thumb->needs_loading(width))
                thumbs.push_back(thumb);
    }
    // A screenful of pictures is decoded side by side, each straight to the size of its row;
    // only showing them needs this thread.
    std::vector<ShownImage> images(thumbs.size());
    snapshot_files::in_parallel(static_cast<int>(thumbs.size()), 1, [&](int i) {
        images[i] = thumbs[i]->read_pixels(width);
    });
    for (std::size_t i = 0; i < thumbs.size(); ++i)
        thumbs[i]->load_thumbnail(std::move(images[i]), width);
    // A thumbnail shows itself once it has its first pixels, in view or among those read ahead
    // below it, where it would stand where its row stood when last placed.
    if (!thumbs.empty())
        static_cast<ThumbnailTable*>(table_thumbs)->place_rows_in_view();
}

void SnapshotBrowser::adjust_splitter_sizes() {
    if (!built())
        return;
    table_thumbs->horizontalHeader()->setStretchLastSection(true);
    QHeaderView* header = table_thumbs->verticalHeader();
    header->setUpdatesEnabled(false);
    // The header's updates come back on whatever happens below.
    struct Resume {
        QHeaderView* header;
        ~Resume() { header->setUpdatesEnabled(true); }
    } resume{header};


    const int width = table_thumbs->columnWidth(0);
    int row = 0;
    for (SnapshotThumbnail* thumb : get_thumbnails_list()) {
        if (thumb) {
            const int height = thumb->shown_height(width);
            thumb->resize(QSize(width, height));
            header->resizeSection(row, height);
            // A row keeps only the pixels it shows: pixels read for another width go, and the
            // rows in view read theirs afresh from the file at the new size.
            if (thumb->needs_loading(width))
                thumb->release_pixels();
        }
        ++row;
    }
    load_visible_thumbs(true);
}

void SnapshotBrowser::setup_version_slider() {
    if (!built())
        return;
    // The range is the directory shown. The preview to find is the copy taken at construction,
    // not the store: the remembered preview has to survive the slider's own first moves, which
    // store row 0 over it.
    const std::optional<std::string> preview = settings.get("current_snapshot_preview");
    if (!current_snapshot_dir || !QFileInfo(*current_snapshot_dir).isDir()) {
        slider_versions->setVisible(false);
        return;
    }
    slider_versions->setMinimum(1);
    slider_versions->setMaximum(listing(*current_snapshot_dir).jpg_entries);
    int row = 0;
    for (SnapshotThumbnail* thumb : get_thumbnails_list()) {
        if (thumb && preview && thumb->get_src() == qs(*preview))
            slider_versions->setValue(row + 1);
        ++row;
    }
    slider_versions->setVisible(true);
    // While finding, the slider steps through the rows shown.
    if (finding()) {
        find_slider_max_ = slider_versions->maximum();
        apply_find();
    }
}

void SnapshotBrowser::slide_versions() {
    if (!built())
        return;
    int slider_cur_value = slider_versions->value() - 1;
    if (finding())
        slider_cur_value = slider_cur_value >= 0 && slider_cur_value < int(shown_rows().size())
                               ? shown_rows()[slider_cur_value]
                               : -1;
    auto* current_cell =
        qobject_cast<SnapshotThumbnail*>(table_thumbs->cellWidget(slider_cur_value, 0));
    if (!current_cell)
        return;
    preview_image->set_image(current_cell->get_src(), false);
    table_thumbs->setCurrentCell(slider_cur_value, 0);
    siblings::update_xml("current_snapshot_preview", current_cell->get_src().toStdString());
}

void SnapshotBrowser::resizeEvent(QResizeEvent*) {
    // The base class's handler does nothing a frameless window needs.
    guarded("snapshot browser resized", [this] {
        // The table was filled before the window had its size: rows that have come into view
        // since get their pictures, and none is read twice.
        load_visible_thumbs(true);
        const auto follow = [this] {
            if (!built())
                return;
            const std::optional<std::string> cur_snapshot =
                siblings::load_settings().get("current_snapshot_preview");
            if (!cur_snapshot || cur_snapshot->empty() || !QFileInfo::exists(qs(*cur_snapshot))) {
                // No preview to follow: the rows still follow the column.
                adjust_splitter_sizes();
                return;
            }
            QLabel* label = preview_image->image_label;
            const QPixmap pixmap = label->pixmap(Qt::ReturnByValue);
            if (label->width() == 0 || pixmap.width() == 0)
                return;
            // The preview fits itself to its pane; the rows follow the column here.
            if (window_resized > 0)
                adjust_splitter_sizes();
            ++window_resized;
        };
        follow();
        // Stored on every pass, preview or none, so the window opens next time as it was left.
        siblings::update_xml(
            "snapshotbrowser_size_current",
            QStringLiteral("%1,%2").arg(this->width()).arg(height()).toStdString());
    });
}

} // namespace cobaltrig
