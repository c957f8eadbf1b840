#include "snapshots/snapshot_preview.h"

#include "frame/guarded.h"
#include "frame/host.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"
#include "snapshots/snapshot_browser.h"
#include "snapshots/snapshot_compare.h"
#include "snapshots/snapshot_thumbnail.h"
#include "snapshots/take_snapshot.h"

#include <pybind11/stl.h>

#include <QAction>
#include <QColor>
#include <QCursor>
#include <QDir>
#include <QFileInfo>
#include <QHideEvent>
#include <QIcon>
#include <QImage>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QVBoxLayout>

#include <algorithm>
#include <stdexcept>

namespace cobaltrig {

namespace py = pybind11;

namespace {

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

std::optional<QString> rememberedPreview() {
    std::optional<std::string> value = siblings::load_settings().get("current_snapshot_preview");
    if (!value)
        return std::nullopt;
    return qs(*value);
}

bool isFile(const std::optional<QString>& path) {
    return path && !path->isEmpty() && QFileInfo(*path).isFile();
}

} // namespace

QPoint centred_under_pointer(const QWidget* window) {
    return QCursor::pos() + QPoint(static_cast<int>(window->width() * -0.5),
                                   static_cast<int>(window->height() * -0.5));
}

// --- SnapshotPreviewImage ---

SnapshotPreviewImage::SnapshotPreviewImage(SnapshotBrowser* browser) : snapshotbrowser(browser) {
    setMinimumSize(50, 50);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect_guarded(this, &QWidget::customContextMenuRequested, this, "preview menu",
                    [this] { show_right_click_menu(); });
    icons = siblings::load_icons();

    wipe_label_ = new PreviewLabel(this);
    image_label = wipe_label_;
    image_label->setBackgroundRole(QPalette::Base);
    image_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    image_label->setScaledContents(true);

    scroll_area = new QScrollArea(this);
    scroll_area->setBackgroundRole(QPalette::Dark);
    scroll_area->setWidget(image_label);
    // A fitted image smaller than the pane stands in its middle.
    scroll_area->setAlignment(Qt::AlignCenter);

    layout_main = new QVBoxLayout(this);
    layout_main->addWidget(scroll_area);
    setLayout(layout_main);

    // Over the pane's corners, out of the layout, and never in the way of a drag.
    for (QLabel** corner : {&label_compare_a, &label_compare_b}) {
        *corner = new QLabel(this);
        (*corner)->setObjectName(corner == &label_compare_a ? QStringLiteral("compare_a")
                                                            : QStringLiteral("compare_b"));
        (*corner)->setStyleSheet(QStringLiteral(
            "QLabel {background-color: rgba(0, 0, 0, 150); color: rgb(230, 230, 230); "
            "padding: 2px 6px;}"));
        (*corner)->setAttribute(Qt::WA_TransparentForMouseEvents);
        (*corner)->hide();
    }
}

SnapshotPreviewImage::~SnapshotPreviewImage() {
    // The label paints from the compare; it goes after this, with the other children.
    if (wipe_label_)
        wipe_label_->set_compare(nullptr);
}

QIcon SnapshotPreviewImage::icon(const char* key) const {
    auto it = icons.find(key);
    return it == icons.end() ? QIcon() : QIcon(qs(it->second));
}

void SnapshotPreviewImage::message(const std::string& text) {
    siblings::show_message_box(this, text);
}

void SnapshotPreviewImage::set_image(const std::optional<QString>& src, bool update_xml) {
    drop_compare();
    if (!isFile(src)) {
        snapshotbrowser->preview_empty->setVisible(true);
        snapshotbrowser->preview_image->setVisible(false);
        return;
    }
    image = *src;
    snapshotbrowser->preview_image->setVisible(true);
    snapshotbrowser->preview_empty->setVisible(false);
    // The one full image the browser keeps; one that claims more pixels than any snapshot has, or
    // can't be decoded, shows as a pane that says so instead.
    ShownImage shown = read_shown_image(image);
    preview_pixmap = QPixmap::fromImage(std::move(shown.image));
    image_label->setPixmap(preview_pixmap);
    if (preview_pixmap.isNull()) {
        image_label->setAlignment(Qt::AlignCenter);
        image_label->setText(QStringLiteral("cannot read"));
        image_label->setToolTip(QStringLiteral("cannot read %1: %2")
                                    .arg(QFileInfo(image).fileName(), shown.reason));
        image_label->setFixedSize(scroll_area->maximumViewportSize());
    } else {
        image_label->setToolTip(QString());
    }
    normal_size();
    if (update_xml)
        siblings::update_xml("current_snapshot_preview", image.toStdString());
}

void SnapshotPreviewImage::clear_image() {
    set_image(std::nullopt);
    siblings::update_xml("current_snapshot_preview", std::nullopt);
}

void SnapshotPreviewImage::zoom_in() {
    scroll_area->setWidgetResizable(false);
    scaleImage(1.25);
}

void SnapshotPreviewImage::zoom_out() {
    scroll_area->setWidgetResizable(false);
    scaleImage(0.8);
}

QSize SnapshotPreviewImage::fitted_size() const {
    if (preview_pixmap.isNull())
        return QSize();
    const QSize room = scroll_area->maximumViewportSize().expandedTo(QSize(1, 1));
    return preview_pixmap.size().scaled(room, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

void SnapshotPreviewImage::show_at_zoom() {
    const QSize fitted = fitted_size();
    if (fitted.isEmpty())
        return;
    image_label->setFixedSize(
        QSize(std::max(1, static_cast<int>(fitted.width() * scaleFactor + 0.5)),
              std::max(1, static_cast<int>(fitted.height() * scaleFactor + 0.5))));
}

void SnapshotPreviewImage::scaleImage(double factor) {
    // Zoom steps from the fitted size and stays within bounds of it: past them a key does
    // nothing, where before each step made the picture larger without end.
    const double next = scaleFactor * factor;
    constexpr double tolerance = 1e-9;
    if (preview_pixmap.isNull() || next > kMaxZoom * (1 + tolerance) ||
        next < kMinZoom * (1 - tolerance))
        return;
    scaleFactor = next;
    show_at_zoom();
    adjust_scrollbar(scroll_area->horizontalScrollBar(), factor);
    adjust_scrollbar(scroll_area->verticalScrollBar(), factor);
}

void SnapshotPreviewImage::adjust_scrollbar(QScrollBar* scrollbar, double factor) {
    // Keeps the point in the middle of the view where it is: the half page is counted in whole
    // pixels, the rest in fractions that are cut off at the end.
    const double page_step = (factor - 1) * (scrollbar->pageStep() / 2);
    scrollbar->setValue(static_cast<int>(factor * scrollbar->value() + page_step));
}

void SnapshotPreviewImage::normal_size() {
    // The whole image in the pane, whatever its shape; the label keeps its own size, so that a
    // zoom can grow it past the view.
    scroll_area->setWidgetResizable(false);
    scaleFactor = 1.0;
    show_at_zoom();
}

void SnapshotPreviewImage::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    // The pane's new size gives a new fitted size; the zoom stays what it was relative to it.
    guarded("preview resized", [this] {
        show_at_zoom();
        show_compare_labels();
    });
}

void SnapshotPreviewImage::show_right_click_menu() {
    // Built anew each time, so the flags and the path the entries act on are those of this moment.
    delete menu_main;
    menu_main = new QMenu(this);

    menu_view = menu_main->addMenu(icon("icon_eye"), QStringLiteral("view"));
    action_zoom_in = menu_view->addAction(icon("icon_plus"), QStringLiteral("zoom in"));
    action_zoom_in->setShortcut(QKeySequence(QStringLiteral("+")));
    action_zoom_out = menu_view->addAction(icon("icon_minus"), QStringLiteral("zoom out"));
    action_zoom_out->setShortcut(QKeySequence(QStringLiteral("-")));
    action_fit = menu_view->addAction(icon("icon_maximize"), QStringLiteral("fit"));
    action_fit->setShortcut(QKeySequence(QStringLiteral("H")));
    // The shortcuts are only shown; the keys themselves reach the browser.
    for (QAction* action : {action_zoom_in, action_zoom_out, action_fit})
        action->setShortcutContext(Qt::WidgetShortcut);
    connect_guarded(action_zoom_in, &QAction::triggered, this, "zoom in", [this] { zoom_in(); });
    connect_guarded(action_zoom_out, &QAction::triggered, this, "zoom out", [this] { zoom_out(); });
    connect_guarded(action_fit, &QAction::triggered, this, "fit", [this] { normal_size(); });

    action_insert_snapshot =
        menu_main->addAction(icon("icon_insert_nk"), QStringLiteral("insert snapshot"));
    connect_guarded(action_insert_snapshot, &QAction::triggered, this, "insert snapshot",
                    [this] { ask_insert_snapshot(); });
    action_insert_preview =
        menu_main->addAction(icon("icon_insert_img"), QStringLiteral("insert preview"));
    connect_guarded(action_insert_preview, &QAction::triggered, this, "insert preview",
                    [this] { insert_preview(); });

    const siblings::Settings settings = siblings::load_settings();
    menu_flags = menu_main->addMenu(icon("icon_flag"), QStringLiteral("flag"));
    auto add_flag = [this](QAction* action, std::optional<std::vector<std::string>> colour) {
        const std::optional<QString> path = rememberedPreview();
        action->setEnabled(path.has_value());
        const std::string src = path ? path->toStdString() : std::string();
        connect_guarded(action, &QAction::triggered, this, "flag", [this, src, colour] {
            siblings::set_flag(py::cast(snapshotbrowser, py::return_value_policy::reference), src,
                               colour);
        });
    };
    action_unflag = menu_flags->addAction(icon("icon_nocolor"), QString());
    add_flag(action_unflag, std::nullopt);
    for (const std::string& flag : settings.flags) {
        const QStringList parts = qs(flag).split(QLatin1Char(','));
        if (parts.size() != 3)
            continue;
        QPixmap swatch(100, 100);
        swatch.fill(QColor(parts[0].trimmed().toInt(), parts[1].trimmed().toInt(),
                           parts[2].trimmed().toInt()));
        std::vector<std::string> colour;
        for (const QString& part : parts)
            colour.push_back(part.trimmed().toStdString());
        add_flag(menu_flags->addAction(QIcon(swatch), QString()), colour);
    }

    action_comment = menu_main->addAction(icon("icon_comment"), QStringLiteral("comment"));
    const std::optional<QString> comment_path = rememberedPreview();
    action_comment->setEnabled(comment_path.has_value());
    const std::string comment_src = comment_path ? comment_path->toStdString() : std::string();
    connect_guarded(action_comment, &QAction::triggered, this, "comment", [this, comment_src] {
        slots::module().attr("show_comment_window")(
            comment_src, py::cast(snapshotbrowser, py::return_value_policy::reference));
    });

    action_compare_current =
        menu_main->addAction(icon("icon_snapshot"), QStringLiteral("compare with current"));
    connect_guarded(action_compare_current, &QAction::triggered, this, "compare with current",
                    [this] { compare_with_current(); });
    if (comparing()) {
        action_end_compare = menu_main->addAction(icon("icon_x"), QStringLiteral("end compare"));
        connect_guarded(action_end_compare, &QAction::triggered, this, "end compare",
                        [this] { end_compare(); });
    } else {
        action_end_compare = nullptr;
    }

    sep = menu_main->addSeparator();
    action_clear = menu_main->addAction(icon("icon_x"), QStringLiteral("clear"));
    connect_guarded(action_clear, &QAction::triggered, this, "clear", [this] { clear_image(); });

    menu_main->popup(QCursor::pos());
}

void SnapshotPreviewImage::insert_preview() {
    const std::optional<QString> cur_preview = rememberedPreview();
    if (!isFile(cur_preview)) {
        message("Cannot find current preview image");
        return;
    }
    host::Node preview = host::createNodeDefault("Read");
    preview["file"].setValue(cur_preview->toStdString());
}

void SnapshotPreviewImage::ask_insert_snapshot() {
    const std::optional<QString> cur_preview = rememberedPreview();
    QString snapshot_nk;
    if (cur_preview) {
        const QFileInfo info(*cur_preview);
        snapshot_nk = info.path() + QLatin1Char('/') + info.completeBaseName() + ".nk";
    }
    if (!isFile(snapshot_nk)) {
        message("Cannot find snapshot nuke file.");
        return;
    }

    QMessageBox box(QMessageBox::Question, QStringLiteral("Append to DAG or overwrite?"),
                    QStringLiteral("Overwrite your node graph by the snapshot or append the "
                                   "snapshot to your node graph? <b>NOTE:</b> Overwrite is "
                                   "undoable."),
                    QMessageBox::NoButton);
    box.setWindowFlags(box.windowFlags() | Qt::WindowStaysOnTopHint);
    QPushButton* overwrite = box.addButton(QStringLiteral("overwrite"), QMessageBox::AcceptRole);
    overwrite->setStyleSheet(
        QStringLiteral("QPushButton {background-color: rgb(45,0,0); padding: 5px 10px;}"));
    QPushButton* append = box.addButton(QStringLiteral("append"), QMessageBox::ResetRole);
    append->setStyleSheet(QStringLiteral(
        "QPushButton {background-color: rgba(51, 204, 255, 100); padding: 5px 10px;}"));
    box.addButton(QStringLiteral("cancel"), QMessageBox::RejectRole);
    overwrite->clearFocus();
    box.setFocus();
    // Return appends, which keeps the artist's graph: replacing it takes a click of its own.
    overwrite->setAutoDefault(false);
    box.setDefaultButton(append);
    box.exec();

    const std::string path = snapshot_nk.toStdString();
    if (box.clickedButton() == append) {
        host::nodePaste(path);
    } else if (box.clickedButton() == overwrite) {
        // One undo step for the deletions and the paste: one undo brings the old graph back, as
        // the question promises, even when the paste fails half-way.
        host::UndoGroup undo("insert snapshot");
        for (const host::Node& node : host::allNodes())
            host::deleteNode(node);
        host::nodePaste(path);
    }
}

void SnapshotPreviewImage::mousePressEvent(QMouseEvent* event) {
    QWidget::mousePressEvent(event);
    alt_hold = event->modifiers().testFlag(Qt::AltModifier);
}

void SnapshotPreviewImage::mouseMoveEvent(QMouseEvent* event) {
    QWidget::mouseMoveEvent(event);
    // Alt is read from each event: released while another window had the keys, it would
    // otherwise stay held here and turn every later drag of the window into one of the image.
    alt_hold = event->modifiers().testFlag(Qt::AltModifier);
    // Placed here, the window must not be placed again by the browser, the event's next stop.
    event->accept();
    if (alt_hold) {
        xy = QCursor::pos() + QPoint(image_label->width() * -1 + event->pos().x(),
                                     image_label->height() * -1 + event->pos().y());
        image_label->move(xy);
    } else {
        xy = centred_under_pointer(snapshotbrowser);
        snapshotbrowser->move(xy);
    }
}

void SnapshotPreviewImage::keyPressEvent(QKeyEvent* event) {
    QWidget::keyPressEvent(event);
    if (event->key() == Qt::Key_Alt)
        alt_hold = true;
}

void SnapshotPreviewImage::keyReleaseEvent(QKeyEvent* event) {
    QWidget::keyReleaseEvent(event);
    if (event->key() == Qt::Key_Alt)
        alt_hold = false;
}

void SnapshotPreviewImage::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    // The browser closing ends a compare and takes the render of "now" with it; the settings
    // panel taking the pane's place does not. A window being deleted hides too, with its other
    // panes possibly gone already: nothing but this pane's own parts is touched here.
    guarded("preview hidden", [&] {
        if (comparing() && !event->spontaneous() && !window()->isVisible())
            drop_compare();
    });
}

void SnapshotPreviewImage::enterEvent(EnterEvent* event) {
    QWidget::enterEvent(event);
    snapshotbrowser->hover_preview = true;
}

void SnapshotPreviewImage::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    snapshotbrowser->hover_preview = false;
}

// --- Compare ---

namespace {

constexpr const char* kNothingToCompare =
    "There is no snapshot in the preview to compare with. Show one there first.";

} // namespace

std::optional<double> SnapshotPreviewImage::wipe_split() const {
    if (!compare_)
        return std::nullopt;
    return compare_->split;
}

bool SnapshotPreviewImage::start_compare(const QString& b, const QString& caption_b) {
    if (isHidden() || preview_pixmap.isNull()) {
        message(kNothingToCompare);
        return false;
    }
    // B is read whole, as A is: the pane shows both at the same zoom.
    ShownImage shown = read_shown_image(b);
    if (shown.image.isNull()) {
        message(QStringLiteral("Cannot compare with %1: %2")
                    .arg(QFileInfo(b).fileName(), shown.reason)
                    .toStdString());
        return false;
    }
    const QString base = compare_ ? compare_->base : image;
    drop_compare();
    compare_ = std::make_unique<WipeCompare>();
    compare_->base = base;
    compare_->a = image;
    compare_->caption_a = compare_caption(image);
    compare_->b = b;
    compare_->caption_b = caption_b;
    compare_->pixmap_b = QPixmap::fromImage(std::move(shown.image));
    wipe_label_->set_compare(compare_.get());
    show_compare_labels();
    return true;
}

void SnapshotPreviewImage::compare_with(const QString& src) {
    start_compare(src, compare_caption(src));
}

void SnapshotPreviewImage::compare_with_current() {
    const std::optional<QString> remembered = rememberedPreview();
    if (!isFile(remembered)) {
        message(kNothingToCompare);
        return;
    }
    // "Now" is compared with the remembered snapshot, whatever the pane showed last.
    if (comparing() || image != *remembered || isHidden())
        set_image(remembered, false);
    if (preview_pixmap.isNull()) {
        message(kNothingToCompare);
        return;
    }
    auto now_dir = std::make_unique<QTemporaryDir>(
        QDir(QDir::tempPath()).filePath(QStringLiteral("cobaltRig_compare_XXXXXX")));
    if (!now_dir->isValid()) {
        message(QStringLiteral("Cannot make a temporary file to render the viewer into: %1")
                    .arg(now_dir->errorString())
                    .toStdString());
        return;
    }
    const QString now = now_dir->filePath(QStringLiteral("now.jpg"));
    // The checks and their messages are those of taking a snapshot.
    if (!snapshots::render_current(now.toStdString()))
        return;
    if (!QFileInfo(now).isFile()) {
        message("The render of the viewer wrote no image; there is nothing to compare with.");
        return;
    }
    if (start_compare(now, QStringLiteral("now")))
        compare_->now_dir = std::move(now_dir);
}

void SnapshotPreviewImage::drop_compare() {
    if (!compare_)
        return;
    wipe_label_->set_compare(nullptr);
    label_compare_a->hide();
    label_compare_b->hide();
    compare_.reset();
}

void SnapshotPreviewImage::end_compare() {
    if (!compare_)
        return;
    const QString base = compare_->base;
    drop_compare();
    set_image(base, false);
}

void SnapshotPreviewImage::toggle_wipe() {
    if (!compare_)
        return;
    compare_->wipe = !compare_->wipe;
    wipe_label_->update();
    show_compare_labels();
}

void SnapshotPreviewImage::swap_compare() {
    if (!compare_)
        return;
    std::swap(compare_->a, compare_->b);
    std::swap(compare_->caption_a, compare_->caption_b);
    std::swap(preview_pixmap, compare_->pixmap_b);
    image = compare_->a;
    image_label->setPixmap(preview_pixmap);
    // Same zoom and offset: the label takes the new A's shape at the zoom it had.
    show_at_zoom();
    wipe_label_->update();
    show_compare_labels();
}

void SnapshotPreviewImage::show_compare_labels() {
    if (!compare_)
        return;
    QWidget* viewport = scroll_area->viewport();
    const QRect view(viewport->mapTo(this, QPoint(0, 0)), viewport->size());
    constexpr int margin = 6;
    const int room = std::max(20, view.width() / 2 - 2 * margin);
    auto place = [&](QLabel* label, const QString& text, bool right) {
        label->setText(label->fontMetrics().elidedText(text, Qt::ElideRight, room));
        label->setToolTip(text);
        label->adjustSize();
        const int x = right ? view.right() + 1 - margin - label->width() : view.left() + margin;
        label->move(x, view.top() + margin);
        label->raise();
        label->show();
    };
    place(label_compare_a, compare_->caption_a, false);
    if (compare_->wipe)
        place(label_compare_b, compare_->caption_b, true);
    else
        label_compare_b->hide();
}

// --- SnapshotPreviewEmpty ---

SnapshotPreviewEmpty::SnapshotPreviewEmpty(SnapshotBrowser* browser) : snapshotbrowser(browser) {
    resize(QSize(900, 500));
}

void SnapshotPreviewEmpty::mouseMoveEvent(QMouseEvent* event) {
    QLabel::mouseMoveEvent(event);
    event->accept();
    xy = centred_under_pointer(snapshotbrowser);
    snapshotbrowser->move(xy);
}

} // namespace cobaltrig
