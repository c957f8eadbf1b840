// The snapshot browser's settings panel (its widgets and layout) and the size modes of the window.

#include "snapshots/snapshot_browser.h"

#include "frame/guarded.h"
#include "frame/siblings.h"
#include "frame/window_slots.h"
#include "frame/settings_file.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <stdexcept>

namespace cobaltrig {

namespace py = pybind11;

namespace {

QLabel* plainLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QStringLiteral("plain"));
    return label;
}

// A whole number typed into a size field; anything else stops the save with the field named.
int wholeNumber(const QLineEdit* field, const char* what) {
    bool ok = false;
    const int value = field->text().trimmed().toInt(&ok);
    if (!ok)
        throw std::invalid_argument(std::string("the snapshot browser's custom ") + what + " '" +
                                    field->text().toStdString() +
                                    "' is not a whole number; nothing was saved");
    return value;
}

} // namespace

void SnapshotBrowser::create_settings_signals() {
    connect_guarded(push_settings, &QToolButton::clicked, this, "settings",
                    [this] { toggle_preview_settings(); });
    connect_guarded(push_save_settings, &QPushButton::clicked, this, "save settings",
                    [this] { save_settings(); });
    connect_guarded(push_browser_snapshot_root, &QToolButton::clicked, this, "choose snapshot root",
                    [this] { browser_snapshotbrowser_root(); });
    // The root as the window was built with it: the reveal shows the directory the browser lists,
    // not a path typed since and not saved yet.
    const std::string root = input_snapshotbrowser_root->text().toStdString();
    connect_guarded(push_reveal_snapshot_root, &QToolButton::clicked, this, "reveal snapshot root",
                    [this, root] { siblings::open_in_explorer(root, this); });
}

void SnapshotBrowser::toggle_preview_settings() {
    show_settings = !show_settings;
    group_thumbs->setVisible(!show_settings);
    group_preview_image->setVisible(!show_settings);
    group_settings->setVisible(show_settings);
}

void SnapshotBrowser::browser_snapshotbrowser_root() {
    QFileDialog dialog(this);
    dialog.setWindowFlags(dialog.windowFlags() | Qt::WindowStaysOnTopHint);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    if (dialog.exec() == QDialog::Accepted) {
        const QStringList chosen = dialog.selectedFiles();
        if (!chosen.isEmpty())
            input_snapshotbrowser_root->setText(chosen.first());
    }
}

void SnapshotBrowser::save_settings() {
    // Everything is read before anything is written: a size that is no number leaves the file as
    // it was and the panel open with what was typed.
    const int width = std::max(600, wholeNumber(input_custom_width, "width"));
    const int height = std::max(400, wholeNumber(input_custom_height, "height"));
    siblings::rewrite_settings({
        {"snapshotbrowser_root", input_snapshotbrowser_root->text().toStdString()},
        {"snapshotbrowser_size_custom",
         QStringLiteral("%1,%2").arg(width).arg(height).toStdString()},
        {"snapshot_selection", combo_snapshot_selection->currentText().toStdString()},
        {"snapshotbrowser_thumbnail_scrollbar",
         check_thumbnail_scrollbar->isChecked() ? "True" : "False"},
        {"snapshot_render_width", input_snapshot_render_width->text().toStdString()},
    });
    toggle_preview_settings();
}

void SnapshotBrowser::create_settings_widgets() {
    const siblings::Settings fresh = siblings::load_settings();

    label_snapshot_selection = plainLabel(QStringLiteral("save snapshot nodes"), this);
    combo_snapshot_selection = new QComboBox(this);
    combo_snapshot_selection->addItems({QStringLiteral("all nodes"),
                                        QStringLiteral("upstream nodes"),
                                        QStringLiteral("node selection")});
    combo_snapshot_selection->setMinimumWidth(250);
    combo_snapshot_selection->setCurrentIndex(combo_snapshot_selection->findText(
        QString::fromStdString(fresh.text("snapshot_selection"))));

    label_snapshot_render_width = plainLabel(QStringLiteral("snapshot render width"), this);
    input_snapshot_render_width =
        new QLineEdit(QString::fromStdString(fresh.text("snapshot_render_width")), this);
    input_snapshot_render_width->setValidator(new QIntValidator(100, 2048, this));
    input_snapshot_render_width->setMaximumWidth(247);

    const QStringList custom = QString::fromStdString(settings.text("snapshotbrowser_size_custom"))
                                   .split(QLatin1Char(','));
    label_custom_width = plainLabel(QStringLiteral("snapshot browser custom width"), this);
    input_custom_width = new QLineEdit(custom.value(0), this);
    input_custom_width->setMaximumWidth(150);
    label_custom_height = plainLabel(QStringLiteral("height"), this);
    input_custom_height = new QLineEdit(custom.value(1), this);
    input_custom_height->setMaximumWidth(150);

    label_snapshotbrowser_root = plainLabel(QStringLiteral("snapshot browser root"), this);
    input_snapshotbrowser_root =
        new QLineEdit(QString::fromStdString(fresh.text("snapshotbrowser_root")), this);
    push_browser_snapshot_root = tool_button("icon_folder");
    push_reveal_snapshot_root = tool_button("icon_reveal");

    check_thumbnail_scrollbar = new QCheckBox(this);
    check_thumbnail_scrollbar->setChecked(settings.isTrue("snapshotbrowser_thumbnail_scrollbar"));
    label_thumbnail_scrollbar = plainLabel(QStringLiteral("Show thumbnail list scroolbar"), this);

    push_save_settings = new QPushButton(QStringLiteral("save"), this);
    push_save_settings->setObjectName(QStringLiteral("actionButton"));
}

void SnapshotBrowser::create_settings_layouts() {
    layout_settings_main = new QVBoxLayout(group_settings);
    layout_settings_main->setContentsMargins(0, 0, 0, 0);

    layout_settings_snapshot_selection = new QHBoxLayout();
    layout_settings_snapshot_selection->addWidget(label_snapshot_selection);
    layout_settings_snapshot_selection->addWidget(combo_snapshot_selection);
    layout_settings_snapshot_selection->addStretch();

    layout_snapshot_render_width = new QHBoxLayout();
    layout_snapshot_render_width->addWidget(label_snapshot_render_width);
    layout_snapshot_render_width->addWidget(input_snapshot_render_width);
    layout_snapshot_render_width->addStretch();

    layout_settings_default_size = new QHBoxLayout();
    layout_settings_default_size->addWidget(label_custom_width);
    layout_settings_default_size->addWidget(input_custom_width);
    layout_settings_default_size->addWidget(label_custom_height);
    layout_settings_default_size->addWidget(input_custom_height);
    layout_settings_default_size->addStretch();

    layout_settings_snapshotbrowser_root = new QHBoxLayout();
    layout_settings_snapshotbrowser_root->addWidget(label_snapshotbrowser_root);
    layout_settings_snapshotbrowser_root->addWidget(input_snapshotbrowser_root);
    layout_settings_snapshotbrowser_root->addWidget(push_browser_snapshot_root);
    layout_settings_snapshotbrowser_root->addWidget(push_reveal_snapshot_root);

    layout_settings_thumbnail_scrollbar = new QHBoxLayout();
    layout_settings_thumbnail_scrollbar->addWidget(check_thumbnail_scrollbar, 1);
    layout_settings_thumbnail_scrollbar->addWidget(label_thumbnail_scrollbar, 99);

    layout_settings_main->addLayout(layout_settings_snapshot_selection);
    layout_settings_main->addLayout(layout_snapshot_render_width);
    layout_settings_main->addLayout(layout_settings_default_size);
    layout_settings_main->addLayout(layout_settings_snapshotbrowser_root);
    layout_settings_main->addLayout(layout_settings_thumbnail_scrollbar);
    layout_settings_main->addStretch();
    layout_settings_main->addWidget(push_save_settings);
}

void SnapshotBrowser::resize_look_browser(const QString& mode) {
    if (mode == QLatin1String("custom")) {
        siblings::update_xml("snapshotbrowser_size_current",
                             siblings::load_settings().get("snapshotbrowser_size_custom"));
    } else if (mode == QLatin1String("maximized")) {
        // The whole screen, task bars included; the new window is centred on it.
        const QScreen* screen = QGuiApplication::primaryScreen();
        const QRect geometry = screen ? screen->geometry() : QRect(0, 0, width(), height());
        siblings::update_xml(
            "snapshotbrowser_size_current",
            QStringLiteral("%1,%2").arg(geometry.width()).arg(geometry.height()).toStdString());
    }
    fade_method = QStringLiteral("out");
    fade();
    // The new window doesn't wait for this one's fade: it opens at once at the stored size.
    if (!mode.isEmpty())
        slots::module().attr("show_snapshot_browser")();
}

} // namespace cobaltrig
