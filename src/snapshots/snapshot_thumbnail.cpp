// The thumbnail of one snapshot: its marks, its context menu, and the file actions it offers on
// the browser's selection.

#include "snapshots/snapshot_thumbnail.h"

#include "frame/guarded.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"
#include "snapshots/snapshot_browser.h"
#include "snapshots/snapshot_files.h"
#include "snapshots/snapshot_preview.h"

#include <QAction>
#include <QColor>
#include <QComboBox>
#include <QCoreApplication>
#include <QCursor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QMenu>
#include <QPainter>
#include <QPaintEvent>
#include <QPointer>
#include <QTableWidget>

#include <algorithm>

#include <stdexcept>
#include <string>
#include <vector>

namespace cobaltrig {

namespace py = pybind11;

namespace {

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

py::object browserObject(SnapshotBrowser* browser) {
    return py::cast(browser, py::return_value_policy::reference);
}

// The "r,g,b" of a flag entry as a colour; false when it isn't three whole numbers from 0 to 255.
bool parseColour(const QString& text, QColor& colour) {
    const std::optional<QColor> parsed = snapshot_files::flag_colour(text);
    if (parsed)
        colour = *parsed;
    return parsed.has_value();
}

// The thumbnails of the top rows of the table's selected ranges, as the table stands now.
std::vector<QPointer<SnapshotThumbnail>> selectedSnapshots(QTableWidget* table) {
    std::vector<QPointer<SnapshotThumbnail>> thumbs;
    for (const QTableWidgetSelectionRange& range : table->selectedRanges()) {
        auto* thumb = qobject_cast<SnapshotThumbnail*>(table->cellWidget(range.topRow(), 0));
        if (!thumb)
            throw std::runtime_error("row " + std::to_string(range.topRow()) +
                                     " of the snapshot list holds no snapshot");
        thumbs.emplace_back(thumb);
    }
    return thumbs;
}

void removeRowOf(QTableWidget* table, SnapshotThumbnail* thumb) {
    for (int row = 0; row < table->rowCount(); ++row)
        if (table->cellWidget(row, 0) == thumb) {
            table->removeRow(row);
            return;
        }
}

// Empties the preview when the remembered snapshot is gone; the setting itself stays.
void clearPreviewIfGone(SnapshotBrowser* browser) {
    const std::optional<std::string> preview =
        siblings::load_settings().get("current_snapshot_preview");
    if (!preview || !QFileInfo(qs(*preview)).isFile())
        browser->preview_image->set_image(std::nullopt);
}

// How tall a row may be against its width, either way: an image of strange shape (a header that
// claims 1 x 65,500 pixels) would otherwise make a row millions of pixels high.
constexpr int kMaxTallness = 4;
constexpr int kMaxFlatness = 8;

// Why an image of the size its header claims is refused unread; empty when it may be read.
QString refusal(QSize claimed) {
    if (!claimed.isValid() || claimed.isEmpty())
        return QString();
    if (static_cast<qint64>(claimed.width()) * claimed.height() <= kMaxImagePixels)
        return QString();
    return QStringLiteral("its header claims %1 x %2 pixels, more than %3 megapixels")
        .arg(claimed.width())
        .arg(claimed.height())
        .arg(kMaxImagePixels / 1000000);
}

// Why the image at `src` can't be read, from its header alone; empty when it can.
QString probe(const QString& src) {
    if (!QFileInfo(src).isFile())
        return QStringLiteral("it is not a regular file");
    QImageReader reader(src);
    const QSize claimed = reader.size();
    if (!claimed.isValid() || claimed.isEmpty())
        return reader.errorString();
    return refusal(claimed);
}

} // namespace

ShownImage read_shown_image(const QString& src, QSize size, Qt::AspectRatioMode mode) {
    // A pipe or a device under an image's name would block the reader for good.
    if (!QFileInfo(src).isFile())
        return {QImage(), QStringLiteral("it is not a regular file")};
    QImageReader reader(src);
    const QSize claimed = reader.size();
    if (!claimed.isValid() || claimed.isEmpty())
        return {QImage(), reader.errorString()};
    if (QString refused = refusal(claimed); !refused.isEmpty())
        return {QImage(), refused};
    if (size.isValid() && !size.isEmpty()) {
        // Decoded at the size shown: the jpeg decoder scales while it decodes, so the full
        // picture is never in memory.
        const QSize fitted = claimed.scaled(size, mode);
        reader.setScaledSize(fitted.expandedTo(QSize(1, 1)));
    }
    QImage image = reader.read();
    if (image.isNull())
        return {QImage(), reader.errorString()};
    return {std::move(image), QString()};
}

void paint_scaled_pixmap(QLabel& label, const QRect& exposed) {
    const QPixmap pixmap = label.pixmap(Qt::ReturnByValue);
    const QRect target = label.contentsRect();
    const QRect area = exposed & target;
    if (pixmap.isNull() || area.isEmpty())
        return;
    const double sx = pixmap.width() / static_cast<double>(target.width());
    const double sy = pixmap.height() / static_cast<double>(target.height());
    const QRectF source((area.x() - target.x()) * sx, (area.y() - target.y()) * sy,
                        area.width() * sx, area.height() * sy);
    QPainter painter(&label);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(QRectF(area), pixmap, source);
}

SnapshotThumbnail::SnapshotThumbnail(const QString& src, SnapshotBrowser* snapshotbrowser)
    : SnapshotThumbnail(src, snapshotbrowser,
                        !src.isEmpty() && QFileInfo(src).isFile() ? snapshot_files::image_size(src)
                                                                  : QSize(1, 1)) {}

SnapshotThumbnail::SnapshotThumbnail(const QString& src, SnapshotBrowser* snapshotbrowser,
                                     QSize size)
    : QLabel(), src(src), snapshotbrowser(snapshotbrowser), w(size.width()), h(size.height()) {
    // Every new widget asks to be styled at the next turn of the event loop; a thumbnail is
    // styled when first shown instead, so that the rows never in view cost no styling.
    QCoreApplication::removePostedEvents(this, QEvent::PolishRequest);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect_guarded(this, &QLabel::customContextMenuRequested, this, "thumbnail menu",
                    [this] { show_right_click_menu(); });
    judge_size();
}

void SnapshotThumbnail::judge_size() {
    // A header read as 1 by 1 is either an image that can't be read or a real one-pixel image:
    // only a second look tells them apart. An image that claims too much is never read.
    if (w == 1 && h == 1)
        cannot_read = probe(src);
    else
        cannot_read = refusal(QSize(w, h));
    if (!cannot_read.isEmpty()) {
        w = 1;
        h = 1;
    }
}

int SnapshotThumbnail::shown_height(int width) const {
    // An unreadable image stands as a tile of the usual snapshot shape.
    if (!cannot_read.isEmpty() || w <= 0)
        return std::max(width / 2, 1);
    const qint64 height = static_cast<qint64>(h) * width / w;
    return static_cast<int>(std::clamp<qint64>(height, std::max(width / kMaxFlatness, 1),
                                               std::max<qint64>(width, 1) * kMaxTallness));
}

bool SnapshotThumbnail::needs_loading(int width) const {
    return !seen_ || (cannot_read.isEmpty() && pixels_width_ != width);
}

void SnapshotThumbnail::release_pixels() {
    if (pixmap.isNull())
        return;
    pixmap = QPixmap();
    pixels_width_ = 0;
    setPixmap(pixmap);
}

ShownImage SnapshotThumbnail::read_pixels(int width) const {
    if (!cannot_read.isEmpty())
        return {QImage(), cannot_read};
    // The row is the image at the column's width, its height rounded down: filled exactly. Only
    // a shape the row's bounds cut keeps its own aspect inside the row.
    const int height = shown_height(width);
    const bool exact = w > 0 && static_cast<qint64>(h) * width / w == height;
    return read_shown_image(src, QSize(width, height),
                            exact ? Qt::IgnoreAspectRatio : Qt::KeepAspectRatio);
}

void SnapshotThumbnail::show_cannot_read(const QString& reason) {
    cannot_read = reason;
    pixmap = QPixmap();
    pixels_width_ = 0;
    setPixmap(pixmap);
    setAlignment(Qt::AlignCenter);
    setText(QStringLiteral("cannot read"));
    update_tool_tip();
}

void SnapshotThumbnail::update_tool_tip() {
    // The comment comes first; a tile that can't be read says which file and why below it.
    QStringList lines;
    if (!comment_.isEmpty())
        lines << comment_;
    if (!cannot_read.isEmpty())
        lines << QStringLiteral("cannot read %1: %2").arg(QFileInfo(src).fileName(), cannot_read);
    setToolTip(lines.join(QLatin1Char('\n')));
}

QLabel* SnapshotThumbnail::comment_mark() {
    if (!label_comment) {
        label_comment = new QLabel(QStringLiteral("C"), this);
        label_comment->setObjectName(QStringLiteral("comment"));
        label_comment->hide();
    }
    return label_comment;
}

QLabel* SnapshotThumbnail::flag_mark() {
    if (!label_flag) {
        label_flag = new QLabel(this);
        label_flag->setObjectName(QStringLiteral("flag"));
        label_flag->hide();
    }
    return label_flag;
}

void SnapshotThumbnail::ensure_meta_ui_elements() {
    if (!meta_read_)
        set_meta_ui_elements();
}

void SnapshotThumbnail::set_meta_ui_elements() {
    // Most snapshots carry no mark: a mark is made when first shown, so that a long list holds
    // one widget per row, and the window's style has that much less to apply.
    const snapshot_files::Metadata metadata = snapshot_files::load_metadata(src);
    if (snapshotbrowser)
        snapshotbrowser->note_metadata(src, metadata);
    meta_read_ = true;
    comment_ = metadata.comment;
    if (!metadata.comment.isEmpty()) {
        comment_mark()->setText(QStringLiteral("c"));
        label_comment->show();
    } else if (label_comment) {
        label_comment->hide();
    }
    if (!metadata.comment.isEmpty() || !cannot_read.isEmpty())
        update_tool_tip();
    if (!metadata.flag.isEmpty()) {
        show_flag(metadata.flag);
        label_flag->show();
        if (label_comment)
            label_comment->move(20, 0);
    } else {
        if (label_flag)
            label_flag->hide();
        if (label_comment)
            label_comment->move(0, 0);
    }
}

void SnapshotThumbnail::show_flag(const QString& flag) {
    // A style sheet of its own on each flagged label costs a style of its own per label, and a
    // directory may hold thousands: the mark shows a swatch of the colour instead, shared by all
    // marks of that colour, at the size the common style gives the mark. A value that isn't three
    // numbers still shows as a style sheet would take it.
    flag_mark();
    QColor colour;
    if (!parseColour(flag, colour)) {
        label_flag->clear();
        label_flag->setStyleSheet(QStringLiteral("QLabel{background-color: rgb(%1);}").arg(flag));
        return;
    }
    static QHash<QRgb, QPixmap> swatches;
    QPixmap& swatch = swatches[colour.rgb()];
    if (swatch.isNull()) {
        swatch = QPixmap(20, 20);
        swatch.fill(colour);
    }
    if (!label_flag->styleSheet().isEmpty())
        label_flag->setStyleSheet(QString());
    label_flag->setScaledContents(true);
    label_flag->setPixmap(swatch);
}

QIcon SnapshotThumbnail::icon(const char* key) const {
    auto it = icons.find(key);
    return it == icons.end() ? QIcon() : QIcon(qs(it->second));
}

void SnapshotThumbnail::show_right_click_menu() {
    // Built anew each time, so the flags, the icons and the directories are those of this moment.
    icons = siblings::load_icons();
    const siblings::Settings settings = siblings::load_settings();
    delete menu_main;
    menu_main = new QMenu(this);
    const std::string source = src.toStdString();

    action_preview = menu_main->addAction(icon("icon_eye"), QStringLiteral("preview snapshot"));
    connect_guarded(action_preview, &QAction::triggered, this, "preview snapshot",
                    [this] { set_to_preview(); });
    action_compare =
        menu_main->addAction(icon("icon_half"), QStringLiteral("compare with preview"));
    connect_guarded(action_compare, &QAction::triggered, this, "compare with preview",
                    [this] { snapshotbrowser->preview_image->compare_with(src); });

    menu_flags = menu_main->addMenu(icon("icon_flag"), QStringLiteral("flag"));
    action_unflag = menu_flags->addAction(icon("icon_nocolor"), QString());
    connect_guarded(action_unflag, &QAction::triggered, this, "unflag", [this, source] {
        siblings::set_flag(browserObject(snapshotbrowser), source, std::nullopt);
    });
    for (const std::string& flag : settings.flags) {
        QColor colour;
        // One bad entry in the settings costs its own swatch, not the whole menu.
        if (!parseColour(qs(flag), colour)) {
            snapshot_files::report_once(
                QStringLiteral("flag colour ") + qs(flag),
                QStringLiteral("the flag colour '%1' in the settings is not three whole numbers "
                               "from 0 to 255 joined by commas; it is left out of the flag menu")
                    .arg(qs(flag)));
            continue;
        }
        QPixmap swatch(100, 100);
        swatch.fill(colour);
        std::vector<std::string> parts;
        for (const QString& part : qs(flag).split(QLatin1Char(',')).mid(0, 3))
            parts.push_back(part.toStdString());
        QAction* action = menu_flags->addAction(QIcon(swatch), QString());
        connect_guarded(action, &QAction::triggered, this, "flag", [this, source, parts] {
            siblings::set_flag(browserObject(snapshotbrowser), source, parts);
        });
    }

    action_comment = menu_main->addAction(icon("icon_comment"), QStringLiteral("comment"));
    connect_guarded(action_comment, &QAction::triggered, this, "comment", [this, source] {
        slots::module().attr("show_comment_window")(source, browserObject(snapshotbrowser));
    });

    menu_move = menu_main->addMenu(icon("icon_reveal"), QStringLiteral("move to"));
    for (const std::string& name : siblings::get_snapshot_dirs()) {
        // Names come as the file system's bytes. One that isn't text in this system's encoding
        // can't be spelled back to reach the directory: it shows, but takes no snapshots.
        const QByteArray bytes = QByteArray::fromStdString(name);
        const QString dest = QFile::decodeName(bytes);
        QAction* action = menu_move->addAction(dest);
        if (QFile::encodeName(dest) != bytes) {
            action->setEnabled(false);
            action->setToolTip(QStringLiteral("The name of this directory is not valid text; "
                                              "snapshots can't be moved into it from here."));
            continue;
        }
        connect_guarded(action, &QAction::triggered, this, "move snapshot",
                        [this, dest] { move_snapshot(dest); });
    }

    action_reveal =
        menu_main->addAction(icon("icon_explorer"),
                             QStringLiteral("reveal in %1").arg(qs(siblings::get_explorer_name())));
    const std::string folder = QFileInfo(src).absolutePath().toStdString();
    connect_guarded(action_reveal, &QAction::triggered, this, "reveal",
                    [this, folder] { siblings::open_in_explorer(folder, this); });

    sep2 = menu_main->addSeparator();
    action_delete =
        menu_main->addAction(icon("icon_delete_selected"), QStringLiteral("delete snapshot"));
    connect_guarded(action_delete, &QAction::triggered, this, "delete snapshot",
                    [this] { delete_snapshot(); });
    action_delete_all =
        menu_main->addAction(icon("icon_delete_all"), QStringLiteral("delete all snapshots"));
    connect_guarded(action_delete_all, &QAction::triggered, this, "delete all snapshots",
                    [this] { delete_snapshots_all(); });

    menu_main->popup(QCursor::pos());
}

void SnapshotThumbnail::reuse(QSize size) {
    // The files may have changed under the same name (a snapshot taken again within the second,
    // a comment saved): the size is the listing's, the pixels and the marks are read anew.
    w = size.width();
    h = size.height();
    judge_size();
    pixmap = QPixmap();
    pixels_width_ = 0;
    setPixmap(pixmap);
    if (!seen_) {
        meta_read_ = false;
        return;
    }
    // A row in view reads its pixels again on the next pass; a tile says so at once.
    if (cannot_read.isEmpty())
        setText(QString());
    else
        show_cannot_read(cannot_read);
    set_meta_ui_elements();
}

void SnapshotThumbnail::set_to_preview() {
    snapshotbrowser->preview_image->set_image(src);
}

void SnapshotThumbnail::load_thumbnail() {
    const int width = snapshotbrowser->table_thumbs->columnWidth(0);
    load_thumbnail(read_pixels(width), width);
}

void SnapshotThumbnail::load_thumbnail(ShownImage shown, int width) {
    // Only the pixels shown are kept, read at the row's size: a row of a 2K snapshot holds a
    // picture of a few tens of kilobytes, not the nine megabytes of the full image.
    if (shown.image.isNull()) {
        show_cannot_read(shown.reason.isEmpty() ? QStringLiteral("no pixels") : shown.reason);
    } else {
        pixmap = QPixmap::fromImage(std::move(shown.image));
        pixels_width_ = width;
        setPixmap(pixmap);
    }
    setScaledContents(true);
    if (!seen_) {
        seen_ = true;
        if (style_changed_) {
            QEvent change(QEvent::StyleChange);
            QLabel::event(&change);
        }
        show();
        ensure_meta_ui_elements();
    }
}

void SnapshotThumbnail::paintEvent(QPaintEvent* event) {
    if (pixmap.isNull()) {
        QLabel::paintEvent(event);
        return;
    }
    QFrame::paintEvent(event);
    paint_scaled_pixmap(*this, event->rect());
}

void SnapshotThumbnail::setVisible(bool visible) {
    // Showing a widget styles it, which is most of what a row costs: until its row comes into
    // view the thumbnail stays explicitly hidden, so neither the table nor the window brings it up.
    QLabel::setVisible(visible && seen_);
}

bool SnapshotThumbnail::event(QEvent* event) {
    // Joining the table gives the thumbnail the window's style, and a label works out its margins
    // and frame from it at once, a good part of what adding a row costs. An unseen row has no use
    // for them: it takes up the change when it is first shown.
    if (event->type() == QEvent::StyleChange && !seen_) {
        style_changed_ = true;
        return true;
    }
    return QLabel::event(event);
}

void SnapshotThumbnail::delete_snapshot() {
    // The selection is read once: every range stands for the snapshot in its top row as the
    // table stands now, whatever the removals below do to row numbers.
    delete_thumbnails(snapshotbrowser, selectedSnapshots(snapshotbrowser->table_thumbs));
}

void SnapshotThumbnail::delete_thumbnails(SnapshotBrowser* browser,
                                          const std::vector<QPointer<SnapshotThumbnail>>& thumbs) {
    QTableWidget* table = browser->table_thumbs;
    for (const QPointer<SnapshotThumbnail>& thumb : thumbs) {
        if (!thumb)
            continue;
        snapshot_files::remove_snapshot(thumb->get_src());
        removeRowOf(table, thumb);
    }
    clearPreviewIfGone(browser);
}

void SnapshotThumbnail::delete_snapshots_all() {
    // The question runs a nested event loop, in which the browser may be refreshed or replaced
    // and this thumbnail deleted: nothing of either is touched after it unless it still exists.
    const QPointer<SnapshotBrowser> browser(snapshotbrowser);
    const QString cur_dir = browser->combo_snapshot_dir->currentText();
    // The directory named in the question is the one flushed, whatever happens meanwhile.
    const std::optional<std::string> directory =
        siblings::load_settings().get("current_snapshot_dir");
    if (!siblings::ask_dialog(
            "Flush snapshot directory",
            QStringLiteral("Flush the current snapshot directory '%1'? This can't be undone!")
                .arg(cur_dir)
                .toStdString(),
            QStringLiteral("flush '%1'").arg(cur_dir).toStdString(), "45,0,0"))
        return;
    if (!directory)
        throw std::runtime_error("no snapshot directory is current");
    snapshot_files::flush_directory(qs(*directory));
    if (!browser) {
        // Replaced during the question: the window that took its place lists what is left.
        py::object current = slots::get("snapshotbrowser");
        if (!current.is_none())
            current.attr("populate_table_thumbs")();
        return;
    }
    if (!browser->built())
        return;
    QTableWidget* table = browser->table_thumbs;
    // The table lets go of its widgets later, so this thumbnail outlives its own reaction.
    table->clear();
    table->setRowCount(0);
    clearPreviewIfGone(browser);
}

void SnapshotThumbnail::move_snapshot(const QString& dest) {
    // The root as saved now: the settings panel may have changed it since the window was built,
    // and the menu lists the directories of the saved root.
    const std::optional<std::string> root = siblings::load_settings().get("snapshotbrowser_root");
    const QString src_root_new =
        QDir(root && !root->empty() ? qs(*root) : snapshotbrowser->snapshotbrowser_root)
            .filePath(dest);
    QTableWidget* table = snapshotbrowser->table_thumbs;
    std::vector<QPointer<SnapshotThumbnail>> moved;
    for (const QPointer<SnapshotThumbnail>& thumb : selectedSnapshots(table)) {
        if (!thumb)
            continue;
        // Compared as real paths: a link or an alias names the same directory too.
        if (snapshot_files::same_directory(QFileInfo(thumb->get_src()).path(), src_root_new))
            continue;
        snapshot_files::move_snapshot(thumb->get_src(), src_root_new);
        moved.push_back(thumb);
    }
    // Rows go only once every move is done, so a failure leaves the table as it was.
    for (const QPointer<SnapshotThumbnail>& thumb : moved)
        if (thumb)
            removeRowOf(table, thumb);
}

void SnapshotThumbnail::mouseDoubleClickEvent(QMouseEvent* event) {
    QLabel::mouseDoubleClickEvent(event);
    guarded("thumbnail double click", [this] { set_to_preview(); });
}

void SnapshotThumbnail::enterEvent(EnterEvent* event) {
    QLabel::enterEvent(event);
    snapshotbrowser->current_thumb_src = src;
    snapshotbrowser->hover_thumbnails = true;
}

void SnapshotThumbnail::leaveEvent(QEvent* event) {
    QLabel::leaveEvent(event);
    snapshotbrowser->hover_thumbnails = false;
}

} // namespace cobaltrig
