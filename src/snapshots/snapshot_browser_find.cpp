// Finding snapshots in the browser's list: the field and the flag chips above it, and the rows
// they leave shown. The comments and flags come from the find index, read after the first paint.

#include "snapshots/snapshot_browser.h"

#include "frame/guarded.h"
#include "snapshots/snapshot_find.h"
#include "snapshots/snapshot_thumbnail.h"

#include <QAbstractItemModel>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSlider>
#include <QTableWidget>
#include <QTimer>
#include <QToolButton>

#include <algorithm>

namespace cobaltrig {

namespace {

QPixmap swatch(const QColor& colour) {
    QPixmap pixmap(12, 12);
    pixmap.fill(colour);
    return pixmap;
}

} // namespace

void SnapshotBrowser::create_find_widgets() {
    find_index_ = new FindIndex(this);
    input_find = new QLineEdit(this);
    input_find->setObjectName(QStringLiteral("find"));
    input_find->setPlaceholderText(QStringLiteral("comment or name"));
    input_find->setClearButtonEnabled(true);
    label_find_state = new QLabel(QStringLiteral("reading comments and flags..."), this);
    label_find_state->setObjectName(QStringLiteral("find_state"));
    label_find_state->hide();
    // One chip per colour the flag menus offer, in their order; an entry that is no colour is
    // left out here as it is there.
    for (const std::string& flag : settings.flags) {
        const QString text = QString::fromStdString(flag);
        const std::optional<QColor> colour = snapshot_files::flag_colour(text.trimmed());
        if (!colour)
            continue;
        auto* chip = new QToolButton(this);
        chip->setObjectName(QStringLiteral("find_flag"));
        chip->setProperty("flag", text);
        chip->setCheckable(true);
        chip->setAutoRaise(true);
        // A chip leaves the focus where it was: typing goes on in the field.
        chip->setFocusPolicy(Qt::NoFocus);
        chip->setIcon(swatch(*colour));
        chip->setToolTip(QStringLiteral("only snapshots flagged %1").arg(text));
        find_chips.push_back(chip);
    }
}

QVBoxLayout* SnapshotBrowser::create_find_layout() {
    // The chips go under the field: beside it, in a list a couple of hundred pixels wide, they
    // would leave too little of the field to read what is typed.
    layout_find = new QVBoxLayout();
    layout_find->setSpacing(2);
    layout_find->addWidget(input_find);
    layout_find_flags = new QHBoxLayout();
    layout_find_flags->setSpacing(2);
    for (QToolButton* chip : find_chips)
        layout_find_flags->addWidget(chip);
    layout_find_flags->addStretch();
    layout_find->addLayout(layout_find_flags);
    return layout_find;
}

void SnapshotBrowser::create_find_signals() {
    connect_guarded(input_find, &QLineEdit::textChanged, this, "find", [this] { apply_find(); });
    for (QToolButton* chip : find_chips)
        connect_guarded(chip, &QToolButton::clicked, this, "find flag", [this, chip] {
            // One flag at a time; the chip that is on clears it.
            const QString flag = chip->property("flag").toString();
            find_flag_ = find_flag_ == flag ? QString() : flag;
            for (QToolButton* other : find_chips)
                other->setChecked(!find_flag_.isEmpty() &&
                                  other->property("flag").toString() == find_flag_);
            apply_find();
        });
    connect_guarded(find_index_, &FindIndex::changed, this, "find index", [this] {
        if (finding() || find_applied_)
            apply_find();
        else
            label_find_state->hide();
    });
    find_index_->start_after_first_paint(table_thumbs->viewport());
}

bool SnapshotBrowser::finding() const {
    return built() && (!input_find->text().trimmed().isEmpty() || !find_flag_.isEmpty());
}

QString SnapshotBrowser::find_state() const {
    if (!find_index_)
        return QStringLiteral("waiting");
    if (find_index_->ready())
        return QStringLiteral("ready");
    return find_index_->reading() ? QStringLiteral("reading") : QStringLiteral("waiting");
}

int SnapshotBrowser::row_beside(int row, int step) const {
    const int rows = table_thumbs->rowCount();
    row += step;
    while (row >= 0 && row < rows && table_thumbs->isRowHidden(row))
        row += step;
    return row;
}

void SnapshotBrowser::note_metadata(const QString& src, const snapshot_files::Metadata& meta) {
    if (find_index_)
        find_index_->set(src, meta);
}

void SnapshotBrowser::refresh_find(const QString& directory, const QStringList& srcs) {
    if (!find_index_->directory().isEmpty() && find_index_->directory() != directory) {
        // Another directory: what was being found there means nothing here.
        const QSignalBlocker quiet(input_find);
        input_find->clear();
        find_flag_.clear();
        for (QToolButton* chip : find_chips)
            chip->setChecked(false);
        // The rows come back at the top of the new list, not where the old one was left.
        find_scroll_ = 0;
    }
    find_index_->update(directory, srcs);
    find_srcs_ = srcs;
    find_generation_ = 0;
    apply_find();
}

void SnapshotBrowser::apply_find() {
    if (!built())
        return;
    const bool wanted = finding();
    // Until the index is read, the rows stay as they are and the field says why.
    const bool waiting = wanted && !find_index_->ready();
    label_find_state->setVisible(waiting);
    if (waiting || (!wanted && !find_applied_))
        return;
    QTableWidget* table = table_thumbs;
    QScrollBar* scroll = table->verticalScrollBar();
    if (wanted && !find_applied_) {
        find_scroll_ = scroll->value();
        find_slider_max_ = slider_versions->maximum();
    }
    const QString folded = input_find->text().trimmed().toCaseFolded();
    std::optional<QRgb> flag;
    if (const std::optional<QColor> colour = snapshot_files::flag_colour(find_flag_.trimmed()))
        flag = colour->rgb();

    // The rows run as the table was last filled; asking the table for each row's widget would
    // cost more than all the matching.
    const int rows = table->rowCount();
    if (find_srcs_.size() != rows) {
        find_srcs_.clear();
        for (const SnapshotThumbnail* thumb : get_thumbnails_list())
            find_srcs_ << (thumb ? thumb->src : QString());
        find_generation_ = 0;
    }
    // Each row's entry is looked up once per change of the index, not at every key.
    if (wanted && find_generation_ != find_index_->generation()) {
        find_entries_.assign(rows, nullptr);
        for (int row = 0; row < rows; ++row)
            if (!find_srcs_[row].isEmpty())
                find_entries_[row] = find_index_->find(find_srcs_[row]);
        find_generation_ = find_index_->generation();
    }
    // Only the rows whose state changes are touched, with the header's updates and signals
    // held: each would otherwise have the header place every section again, and the table every
    // row's widget. The table learns of all of them at once below.
    QHeaderView* header = table->verticalHeader();
    shown_rows_.clear();
    bool changed = false;
    header->setUpdatesEnabled(false);
    {
        const QSignalBlocker one_layout(header);
        for (int row = 0; row < rows; ++row) {
            bool show = true;
            if (wanted) {
                const QString& src = find_srcs_[row];
                if (src.isEmpty()) {
                    show = false;
                } else if (const FindEntry* entry = find_entries_[row]) {
                    show = find_matches(*entry, folded, flag);
                } else {
                    // Listed since the index was read, and still being read: known by its name.
                    show = find_matches(find_entry(src, {}), folded, flag);
                }
            }
            if (table->isRowHidden(row) == show) {
                table->setRowHidden(row, !show);
                changed = true;
            }
            if (show && wanted)
                shown_rows_.push_back(row);
        }
    }
    header->setUpdatesEnabled(true);
    if (changed)
        table->doItemsLayout();

    if (!wanted) {
        find_applied_ = false;
        find_key_.clear();
        // Every row again, where the artist left the list before finding.
        scroll->setValue(find_scroll_);
        const QSignalBlocker quiet(slider_versions);
        slider_versions->setMaximum(find_slider_max_);
        slider_versions->setValue(table->currentRow() + 1);
        load_thumbs_visible_top_bottom();
        return;
    }
    find_applied_ = true;
    // What the selection acts on (delete, move) is only ever what the artist can see.
    QItemSelectionModel* selection = table->selectionModel();
    if (selection->hasSelection()) {
        QItemSelection hidden;
        for (const QModelIndex& index : selection->selectedRows())
            if (table->isRowHidden(index.row()))
                hidden.select(index, index);
        selection->select(hidden, QItemSelectionModel::Deselect);
    }
    {
        const QSignalBlocker quiet(slider_versions);
        slider_versions->setMaximum(std::max<int>(1, static_cast<int>(shown_rows_.size())));
        const auto at = std::find(shown_rows_.begin(), shown_rows_.end(), table->currentRow());
        slider_versions->setValue(at == shown_rows_.end()
                                      ? 0
                                      : static_cast<int>(at - shown_rows_.begin()) + 1);
    }
    // A new text or flag shows its first rows; the same again (a refresh, the index read anew)
    // leaves the list where the artist is.
    const QString key = folded + QLatin1Char('\n') + find_flag_;
    if (key != find_key_) {
        find_key_ = key;
        table->scrollToTop();
    }
    // The pictures of the rows in view come before the list is painted; those a little below
    // are read after, so that a keystroke shows its rows at once.
    load_visible_thumbs(true, 0);
    QTimer::singleShot(0, this, [this] {
        guarded("find read ahead", [this] { load_thumbs_visible_top_bottom(); });
    });
}

} // namespace cobaltrig
