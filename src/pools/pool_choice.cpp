#include "pools/pool_choice.h"

#include "frame/settings_file.h"
#include "frame/siblings.h"
#include "pools/pool_window.h"

#include <QComboBox>
#include <QSize>
#include <QSlider>
#include <QTreeWidget>

namespace cobaltrig::pools {

namespace py = pybind11;

namespace {

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

} // namespace

void set_current_pool(PoolWindow& window) {
    QComboBox* combo = window.combo_pool;
    const siblings::Settings& settings = window.settings;
    const int index = combo->findText(qs(settings.text("current_pool")));
    if (index == -1)
        return;
    combo->setCurrentIndex(index);
    // The name may match an entry that is no pool ("-- new pool --"): then no tool tip.
    if (auto path = settings.poolPath(settings.text("current_pool")))
        combo->setToolTip(qs(*path));
}

void update_pool_combo(PoolWindow& window) {
    if (window.combo_pool->currentText() == QLatin1String(kNewPoolEntry)) {
        siblings::show_panel_new_pool(window.pythonWindow());
        return;
    }
    change_combo_tooltip(window);
    change_current_pool(window);
}

void change_combo_tooltip(PoolWindow& window) {
    // A fresh reading: a pool added since the window opened must be found.
    const siblings::Settings fresh = siblings::load_settings();
    QComboBox* combo = window.combo_pool;
    const std::string name = combo->currentText().toStdString();
    for (const auto& [pool, path] : fresh.pools)
        if (pool == name)
            combo->setToolTip(qs(path));
    window.refreshTree();
}

void change_current_pool(PoolWindow& window) {
    siblings::rewrite_settings({{"current_pool", window.combo_pool->currentText().toStdString()}});
}

void set_tree_icon_size(QSlider* slider, QTreeWidget* tree) {
    // Parsing first means a broken settings file fails the change before anything moves.
    py::object parsed = siblings::parse_settings_file();
    const int size = slider->value();
    tree->setIconSize(QSize(size, size));
    siblings::write_settings_file(parsed, {{"icon_size", std::to_string(size)}});
}

int stored_icon_size() {
    bool ok = false;
    const int size = qs(siblings::load_settings().text("icon_size")).trimmed().toInt(&ok);
    return ok ? size : 16;
}

} // namespace cobaltrig::pools
