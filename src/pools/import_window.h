#pragma once
// The window in which a pool is browsed, searched by name, and its presets are inserted into the
// host's graph, renamed and deleted. It shows the whole pool: nothing is disabled or hidden.

#include "frame/py_owned.h"
#include "pools/pool_window.h"

#include <pybind11/pybind11.h>

#include <QString>
#include <QStringList>

#include <vector>

class QAction;
class QPushButton;
class QTreeWidgetItem;

namespace cobaltrig {

class ImportWindow : public pools::PoolWindow {
    Q_OBJECT
public:
    ImportWindow();

    /// Rebuilds the tree from the pool that the combo box's tool tip names; the folders in
    /// `expand_list` (forward slashes) open besides the pool, `nodes` and `toolsets`.
    void populate_tree(const QStringList& expand_list = {});
    void refreshTree() override { populate_tree(); }
    /// Filters the presets by the text of the search field.
    void search_item();
    /// Starts a drag of the current item's path.
    void set_data();
    /// The menu of insert, reveal, refresh, rename and delete for the current preset.
    void create_tree_right_click_menu() override;
    void insert_in_dag(const QString& path);
    void rename_item(const QString& path);
    void delete_item(const QString& path);

    PyOwned advanced_settings;
    /// The group that holds the node whose look tab opened the window: presets are pasted there.
    /// None when the window was opened from a menu, where they go into the host's current group.
    PyOwned paste_group;

    QPushButton* push_close = nullptr;
    QAction* action_insert = nullptr;
    QAction* action_reveal = nullptr;
    QAction* action_refresh = nullptr;
    QAction* action_rename = nullptr;
    QAction* action_delete = nullptr;

private:
    void build_ui();
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
