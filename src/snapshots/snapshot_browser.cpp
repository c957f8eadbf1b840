// The snapshot browser's construction: constants, widgets, layouts, connections, tool tips, and the
// help menu.

#include "snapshots/snapshot_browser.h"

#include "frame/guarded.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"
#include "snapshots/snapshot_preview.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCursor>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSizeGrip>
#include <QSlider>
#include <QSplitter>
#include <QTableWidget>
#include <QTimer>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include <stdexcept>

// The support address is a build setting (CMake's COBALTRIG_SUPPORT_URL), kept in one place there.
#ifndef COBALTRIG_SUPPORT_URL
#error "COBALTRIG_SUPPORT_URL is defined by the build"
#endif

namespace cobaltrig {

namespace py = pybind11;

namespace {

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

std::optional<QString> optionalText(const std::optional<std::string>& value) {
    if (!value)
        return std::nullopt;
    return qs(*value);
}

// "width,height" as two whole numbers; anything else is refused with the value in the message.
QSize parseSize(const std::string& key, const std::string& text) {
    const QStringList parts = qs(text).split(QLatin1Char(','));
    bool ok_width = false, ok_height = false;
    const int width = parts.value(0).trimmed().toInt(&ok_width);
    const int height = parts.value(1).trimmed().toInt(&ok_height);
    if (parts.size() < 2 || !ok_width || !ok_height)
        throw std::invalid_argument("the setting " + key + " is not a width and a height: '" +
                                    text + "'");
    return QSize(width, height);
}

} // namespace

namespace help {

QUrl documentation_url() {
    // The guide lies in the package folder, beside the sibling modules (the compiled module has no
    // `__file__` yet while it loads, when this address is first needed).
    const QString package_file =
        qs(py::str(siblings::helper().attr("__file__")).cast<std::string>());
    return QUrl::fromLocalFile(QFileInfo(package_file).absolutePath() +
                               QStringLiteral("/docs/user_guide.html"));
}

QUrl support_url() {
    return QUrl(QStringLiteral(COBALTRIG_SUPPORT_URL));
}

} // namespace help

SnapshotBrowser::SnapshotBrowser() : QWidget(nullptr) {
    // The window has no title bar: its own close and size buttons, the size grip and dragging by
    // the preview stand in for one.
    // Invisible until the fade-in that the construction starts.
    setWindowOpacity(0);
    setWindowTitle(QStringLiteral("snapshot browser"));
    setWindowFlags(Qt::WindowStaysOnTopHint | Qt::FramelessWindowHint);
    setObjectName(QStringLiteral("snapshotbrowser"));

    settings = siblings::load_settings();
    icons = siblings::load_icons();
    timer_fade = new QTimer(this);

    resize(
        parseSize("snapshotbrowser_size_current", settings.text("snapshotbrowser_size_current")));

    if (!make_directories())
        return;
    cur_snapshot_preview = optionalText(settings.get("current_snapshot_preview"));
    window_resized = 0;

    build_ui();

    preview_image->scroll_area->setWidgetResizable(true);
    preview_image->normal_size();
    preview_image->scroll_area->setWidgetResizable(false);
    preview_image->set_image(cur_snapshot_preview);

    // Selecting the current directory in the box is what fills the table.
    populate_combo_pool();
    // The first step comes once control is back in the event loop, after the window is shown.
    fade();
    splitter->setSizes({220, 900});

    // The label keeps the size the resizable scroll area gives it, while the scroll area itself
    // stays fixed so that zooming can grow the label past the view.
    preview_image->scroll_area->setWidgetResizable(true);
    const QSize fitted = preview_image->image_label->size();
    preview_image->scroll_area->setWidgetResizable(false);
    preview_image->image_label->resize(fitted);
}

SnapshotBrowser::~SnapshotBrowser() {
    // The settings mapping is a Python object and Qt deletes windows outside the GIL.
    if (!Py_IsInitialized()) {
        settings.mapping.release();
        keep_alive_during_fade_.release();
        return;
    }
    py::gil_scoped_acquire gil;
    settings.mapping = py::object();
    keep_alive_during_fade_ = py::object();
}

bool SnapshotBrowser::make_directories() {
    std::optional<std::string> root = settings.get("snapshotbrowser_root");
    snapshotbrowser_root = qs(root.value_or(""));
    if (snapshotbrowser_root.isEmpty()) {
        snapshotbrowser_root = qs(siblings::get_default_snapshot_root_dir());
        siblings::update_xml("snapshotbrowser_root", snapshotbrowser_root.toStdString());
    }
    if (!QFileInfo(snapshotbrowser_root).isDir() && !QDir().mkpath(snapshotbrowser_root)) {
        siblings::show_message_box(
            this, QStringLiteral("Cannot create snapshot browser root directory at: '%1'. Please "
                                 "choose a different path")
                      .arg(snapshotbrowser_root)
                      .toStdString());
        return false;
    }
    current_snapshot_dir = optionalText(settings.get("current_snapshot_dir"));
    if (current_snapshot_dir && !QFileInfo(*current_snapshot_dir).isDir() &&
        (current_snapshot_dir->isEmpty() || !QDir().mkpath(*current_snapshot_dir))) {
        siblings::show_message_box(
            this, QStringLiteral("Cannot create current snapshot directory at: '%1'.")
                      .arg(*current_snapshot_dir)
                      .toStdString());
        return false;
    }
    return true;
}

QIcon SnapshotBrowser::icon(const char* key) const {
    auto it = icons.find(key);
    return it == icons.end() ? QIcon() : QIcon(qs(it->second));
}

QToolButton* SnapshotBrowser::tool_button(const char* icon_key) {
    auto* button = new QToolButton(this);
    button->setIcon(icon(icon_key));
    return button;
}

void SnapshotBrowser::build_ui() {
    create_widgets();
    create_layouts();
    create_signals();
    if (siblings::load_settings().isTrue("tooltips")) {
        create_tooltips();
        siblings::load_tooltips(this, "snapshot_browser");
    }
    route_keys();
}

void SnapshotBrowser::create_widgets() {
    splitter = new QSplitter(Qt::Horizontal, this);
    combo_snapshot_dir = new QComboBox(this);

    table_thumbs = create_thumbnail_table();
    table_thumbs->setObjectName(QStringLiteral("table_thumbs"));
    table_thumbs->setColumnCount(1);
    table_thumbs->verticalHeader()->hide();
    table_thumbs->horizontalHeader()->hide();
    table_thumbs->installEventFilter(this);
    table_thumbs->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table_thumbs->setEditTriggers(QAbstractItemView::NoEditTriggers);

    slider_versions = new QSlider(Qt::Horizontal, this);
    if (settings.get("snapshotbrowser_thumbnail_scrollbar") == std::string("False"))
        table_thumbs->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    preview_image = new SnapshotPreviewImage(this);
    preview_image->setObjectName(QStringLiteral("preview_image"));
    preview_empty = new SnapshotPreviewEmpty(this);
    preview_empty->setObjectName(QStringLiteral("empty"));
    preview_empty->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    auto logo = icons.find("icon_logo_grey");
    if (logo != icons.end())
        preview_empty->setPixmap(QPixmap::fromImage(QImage(qs(logo->second))));
    preview_empty->setVisible(true);

    push_snapshot = tool_button("icon_snapshot");
    push_settings = tool_button("icon_settings");
    push_help = tool_button("icon_help");
    push_custom_size = tool_button("icon_half");
    push_maximize = tool_button("icon_maximize");
    push_close = tool_button("icon_x");

    create_find_widgets();
    create_settings_widgets();
}

void SnapshotBrowser::create_layouts() {
    layout_main = new QVBoxLayout();

    layout_top = new QHBoxLayout();
    layout_top->addWidget(push_snapshot);
    layout_top->addWidget(push_settings);
    layout_top->addWidget(push_help);
    layout_top->addStretch();
    layout_top->addWidget(push_custom_size);
    layout_top->addWidget(push_maximize);
    layout_top->addWidget(push_close);
    layout_main->addLayout(layout_top, 10);

    group_thumbs = new QGroupBox(this);
    group_thumbs->setObjectName(QStringLiteral("thumbs_list"));
    group_thumbs->setMinimumWidth(130);
    layout_preview_list = new QVBoxLayout(group_thumbs);
    layout_preview_list->setContentsMargins(0, 0, 10, 0);
    layout_preview_list->addWidget(combo_snapshot_dir);
    layout_preview_list->addLayout(create_find_layout());
    layout_preview_list->addWidget(label_find_state);
    layout_preview_list->addWidget(table_thumbs);
    layout_preview_list->addWidget(slider_versions);

    group_preview_image = new QGroupBox(this);
    group_preview_image->setObjectName(QStringLiteral("preview_image"));
    layout_preview_image = new QVBoxLayout(group_preview_image);
    layout_preview_image->setContentsMargins(0, 0, 0, 0);
    layout_preview_image->addWidget(preview_image);
    layout_preview_image->addWidget(preview_empty);

    group_settings = new QGroupBox(this);
    group_settings->setObjectName(QStringLiteral("settings"));
    group_settings->hide();
    group_settings->installEventFilter(this);
    create_settings_layouts();

    splitter->addWidget(group_thumbs);
    splitter->addWidget(group_preview_image);
    splitter->addWidget(group_settings);
    layout_main->addWidget(splitter, 10);
    layout_main->addWidget(new QSizeGrip(this), 0, Qt::AlignBottom | Qt::AlignRight);

    splitter->setCollapsible(0, false);
    splitter->setCollapsible(1, false);
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(1, 40);
    setLayout(layout_main);
    siblings::set_style_sheet(this);
}

void SnapshotBrowser::create_signals() {
    // The camera button reaches the module's entry by name, so a replaced `snapshot` is the one
    // that runs.
    connect_guarded(push_snapshot, &QToolButton::clicked, this, "snapshot",
                    [] { slots::module().attr("snapshot")(); });
    connect_guarded(push_custom_size, &QToolButton::clicked, this, "custom size",
                    [this] { resize_look_browser(QStringLiteral("custom")); });
    connect_guarded(push_maximize, &QToolButton::clicked, this, "maximize",
                    [this] { resize_look_browser(QStringLiteral("maximized")); });
    connect_guarded(push_close, &QToolButton::clicked, this, "close",
                    [this] { resize_look_browser(QString()); });
    connect_guarded(push_help, &QToolButton::clicked, this, "help", [this] { show_help_menu(); });
    create_dir_signals();
    create_settings_signals();
    create_table_signals();
    create_find_signals();
}

void SnapshotBrowser::create_tooltips() {
    const std::pair<QObject*, const char*> keys[] = {
        {push_snapshot, "snapshot"},
        {push_settings, "settings"},
        {push_custom_size, "custom_size"},
        {label_custom_width, "custom_size"},
        {input_custom_width, "custom_size"},
        {label_custom_height, "custom_size"},
        {input_custom_height, "custom_size"},
        {push_maximize, "maximize"},
        {push_close, "close"},
        {combo_snapshot_dir, "switch_snapshot_dir"},
        {label_snapshot_selection, "snapshot_selection"},
        {combo_snapshot_selection, "snapshot_selection"},
        {label_snapshot_render_width, "snapshot_render_width"},
        {input_snapshot_render_width, "snapshot_render_width"},
        {label_snapshotbrowser_root, "snapshot_browser_root"},
        {input_snapshotbrowser_root, "snapshot_browser_root"},
        {check_thumbnail_scrollbar, "thumbnails_scrollbar"},
        {label_thumbnail_scrollbar, "thumbnails_scrollbar"},
        {push_save_settings, "save_settings"},
    };
    for (const auto& [widget, key] : keys)
        widget->setProperty("tt", QString::fromLatin1(key));
}

void SnapshotBrowser::show_help_menu() {
    delete menu_help;
    menu_help = new QMenu(QStringLiteral("Help"), this);
    action_browse_online_docs = menu_help->addAction(QStringLiteral("Browse online documentation"));
    action_show_changelog = menu_help->addAction(QStringLiteral("Show changelog"));
    action_support = menu_help->addAction(QStringLiteral("Support"));
    action_about = menu_help->addAction(QStringLiteral("About"));
    connect_guarded(action_browse_online_docs, &QAction::triggered, this, "documentation",
                    [this] { browse_online_docs(); });
    connect_guarded(action_show_changelog, &QAction::triggered, this, "changelog",
                    [this] { show_changelog(); });
    connect_guarded(action_support, &QAction::triggered, this, "support",
                    [this] { browse_support(); });
    connect_guarded(action_about, &QAction::triggered, this, "about", [this] { show_about(); });
    menu_help->popup(QCursor::pos());
}

void SnapshotBrowser::browse_online_docs() {
    // Read at call time: a studio may point the module's constant at its own pages.
    const QUrl url(qs(py::str(slots::module().attr("TOOL_TUTORIAL")).cast<std::string>()));
    if (!QDesktopServices::openUrl(url))
        siblings::show_message_box(this, "Cannot open the documentation at " +
                                             url.toDisplayString().toStdString());
}

void SnapshotBrowser::show_changelog() {
    siblings::show_changelog();
}

void SnapshotBrowser::browse_support() {
    const QUrl url = help::support_url();
    if (!QDesktopServices::openUrl(url))
        siblings::show_message_box(this, "Cannot open the support page at " +
                                             url.toDisplayString().toStdString());
}

void SnapshotBrowser::show_about() {
    siblings::show_about_window();
}

} // namespace cobaltrig
