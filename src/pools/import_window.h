#pragma once
// The window in which a pool is browsed, searched by name, and its presets are inserted into the
// host's graph, renamed and deleted. It shows the whole pool: nothing is disabled or hidden.

#include "frame/siblings.h"
#include "pools/pool_choice.h"
#include "pools/pool_tree.h"

#include <pybind11/pybind11.h>

#include <QString>
#include <QStringList>
#include <QWidget>

#include <map>
#include <string>
#include <vector>

class QAction;
class QComboBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QSlider;
class QTreeWidget;
class QTreeWidgetItem;
class QVBoxLayout;

namespace cobaltrig {

class ImportWindow : public QWidget, public pools::PoolWindow {
    Q_OBJECT
public:
    ImportWindow();
    ~ImportWindow() override;

    /// Rebuilds the tree from the pool that the combo box's tool tip names; the folders in
    /// `expand_list` (forward slashes) open besides the pool, `nodes` and `toolsets`.
    void populate_tree(const QStringList& expand_list = {});
    /// Filters the presets by the text of the search field.
    void search_item();
    /// Starts a drag of the current item's path.
    void set_data();
    /// The menu of insert, reveal, refresh, rename and delete for the current preset.
    void create_tree_right_click_menu();
    void insert_in_dag(const QString& path);
    void rename_item(const QString& path);
    void delete_item(const QString& path);

    QComboBox* poolCombo() const override { return combo_pool; }
    const siblings::Settings& poolSettings() const override { return settings; }
    void refreshTree() override { populate_tree(); }
    pybind11::object pythonWindow() override;

    siblings::Settings settings;
    pybind11::object advanced_settings;
    /// The group that holds the node whose look tab opened the window: presets are pasted there.
    /// None when the window was opened from a menu, where they go into the host's current group.
    pybind11::object paste_group;
    std::map<std::string, std::string> icons;
    pools::DirItems dirlist;
    int count_dirItem = 0;

    QLabel* label_name = nullptr;
    QLineEdit* input_name = nullptr;
    QSlider* slider_size = nullptr;
    QComboBox* combo_pool = nullptr;
    pools::PoolTreeWidget* tree = nullptr;
    QPushButton* push_close = nullptr;
    QHBoxLayout* layout_top = nullptr;
    QVBoxLayout* layout_master = nullptr;
    QMenu* tree_menu = nullptr;
    QAction* action_insert = nullptr;
    QAction* action_reveal = nullptr;
    QAction* action_refresh = nullptr;
    QAction* action_rename = nullptr;
    QAction* action_delete = nullptr;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void build_ui();
    void create_widgets();
    void create_layouts();
    void create_signals();
    void message(const QString& text);
    QAction* make_action(const char* icon_key, const QString& text);
    void drop_menu();
    void index_search();

    // What the search reads of every item below the categories, gathered once per tree: the file
    // name of its path and whether the search has hidden it. Asking the items themselves costs a
    // model lookup each (and a copy of the path), thousands of times per keystroke; only the search
    // hides these items, so their hidden state can be kept here.
    struct SearchRow {
        QTreeWidgetItem* item;
        QString file_name;
        bool hidden;
    };
    struct SearchCategory {
        QTreeWidgetItem* item;
        std::size_t first; // its rows in search_rows
        std::size_t end;
    };
    std::vector<SearchRow> search_rows;
    std::vector<SearchCategory> search_categories;
    /// The two roots whose categories are searched (null where the pool has fewer folders).
    QTreeWidgetItem* search_roots[2] = {nullptr, nullptr};
    bool search_indexed = false;
};

} // namespace cobaltrig
