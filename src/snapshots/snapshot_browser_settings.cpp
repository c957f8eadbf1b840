// The snapshot browser's settings panel (its widgets and layout) and the size modes of the window.

#include "snapshots/snapshot_browser.h"

#include "frame/siblings.h"
#include "frame/window_slots.h"

#include <QCheckBox>
#include <QComboBox>
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

namespace cobaltrig {

namespace py = pybind11;

namespace {

QLabel* plainLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QStringLiteral("plain"));
    return label;
}

} // namespace

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
    close();
    if (!mode.isEmpty())
        slots::module().attr("show_snapshot_browser")();
}

} // namespace cobaltrig
