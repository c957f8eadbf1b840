#pragma once
// The window in which a node or a set of nodes becomes a preset: pick a pool and a folder, give a
// name, save. The tree steers the user by enabling, selecting and expanding the folders that fit
// what is being exported.

#include "frame/siblings.h"
#include "pools/pool_choice.h"
#include "pools/pool_tree.h"

#include <pybind11/pybind11.h>

#include <QString>
#include <QWidget>

#include <map>
#include <string>

class QAction;
class QComboBox;
class QHBoxLayout;
class QLabel;
class QMenu;
class QPushButton;
class QSlider;
class QTreeWidget;
class QVBoxLayout;

namespace cobaltrig {

class QLineEditCustom;

class ExportWindow : public QWidget, public pools::PoolWindow {
    Q_OBJECT
public:
    /// `node` is a host node, or the text "toolsets" for the host's selection of several nodes.
    explicit ExportWindow(pybind11::object node);
    ~ExportWindow() override;

    /// "toolsets", or the class of the exported node.
    QString get_nodeclass_name() const;
    /// "toolsets" or "nodes".
    QString get_mode() const;
    /// Rebuilds the tree from the pool that the combo box's tool tip names.
    void populate_tree();
    /// Makes sure the exported node's class folder exists in the pool on show.
    void build_nodes_dir();
    /// Copies a clicked preset's name into the name field.
    void set_input_name();
    /// Offers "new category" when a toolsets folder is current.
    void create_tree_right_click_menu();
    /// Asks for a category name and makes the folder below `current_path`.
    void create_new_category(const QString& current_path);
    /// Writes what is exported into the chosen folder under the entered name.
    void write_node_as_preset();

    QComboBox* poolCombo() const override { return combo_pool; }
    const siblings::Settings& poolSettings() const override { return settings; }
    void refreshTree() override { populate_tree(); }
    pybind11::object pythonWindow() override;

    pybind11::object node;
    siblings::Settings settings;
    std::map<std::string, std::string> icons;
    pools::DirItems dirlist;
    int count_dirItem = 0;
    QString mode;

    QLabel* label_name = nullptr;
    QLineEditCustom* input_name = nullptr;
    QSlider* slider_size = nullptr;
    QComboBox* combo_pool = nullptr;
    QTreeWidget* tree = nullptr;
    QPushButton* push_save = nullptr;
    QPushButton* push_cancel = nullptr;
    QHBoxLayout* layout_top = nullptr;
    QHBoxLayout* layout_push = nullptr;
    QVBoxLayout* layout_master = nullptr;
    QMenu* tree_menu = nullptr;
    QAction* action_new_category = nullptr;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void build_ui();
    void create_widgets();
    void create_layouts();
    void create_signals();
    void message(const QString& text);
};

} // namespace cobaltrig
