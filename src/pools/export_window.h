#pragma once
// The window in which a node or a set of nodes becomes a preset: pick a pool and a folder, give a
// name, save. The tree steers the user by enabling, selecting and expanding the folders that fit
// what is being exported.

#include "frame/py_owned.h"
#include "pools/pool_window.h"

#include <pybind11/pybind11.h>

#include <QString>

class QAction;
class QHBoxLayout;
class QPushButton;

namespace cobaltrig {

class ExportWindow : public pools::PoolWindow {
    Q_OBJECT
public:
    /// `node` is a host node, or the text "toolsets" for the host's selection of several nodes.
    explicit ExportWindow(pybind11::object node);

    /// "toolsets", or the class of the exported node.
    QString get_nodeclass_name() const;
    /// "toolsets" or "nodes".
    QString get_mode() const;
    /// Rebuilds the tree from the pool that the combo box's tool tip names.
    void populate_tree();
    void refreshTree() override { populate_tree(); }
    /// Makes sure the exported node's class folder exists in the pool on show.
    void build_nodes_dir();
    /// Copies a clicked preset's name into the name field.
    void set_input_name();
    /// Offers "new category" when a toolsets folder is current.
    void create_tree_right_click_menu() override;
    /// Asks for a category name and makes the folder below `current_path`.
    void create_new_category(const QString& current_path);
    /// Writes what is exported into the chosen folder under the entered name.
    void write_node_as_preset();

    PyOwned node;
    QPushButton* push_save = nullptr;
    QPushButton* push_cancel = nullptr;
    QHBoxLayout* layout_push = nullptr;
    QAction* action_new_category = nullptr;
    /// "nodes" or "toolsets", as the tree was last filled.
    QString mode;

private:
    void build_ui();
};

} // namespace cobaltrig
