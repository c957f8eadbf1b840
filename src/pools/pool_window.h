#pragma once
// What the export and the import window share: a name field over the icon-size slider, the combo
// box of pools, the tree of the pool on show and its folder items, the icon table, the reactions
// to these widgets, and the way both windows report to the user. Each window adds its own buttons,
// its tree's menu and what its name field does.

#include "frame/siblings.h"
#include "pools/pool_tree.h"

#include <pybind11/pybind11.h>

#include <QString>
#include <QWidget>

#include <functional>
#include <map>
#include <string>

class QAction;
class QComboBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QSlider;
class QVBoxLayout;

namespace cobaltrig::pools {

class PoolWindow : public QWidget {
    Q_OBJECT
public:
    ~PoolWindow() override;

    /// `populate_tree()` without arguments.
    virtual void refreshTree() = 0;
    /// The menu for the tree's current item.
    virtual void create_tree_right_click_menu() = 0;
    /// The window as Python sees it, for the sibling panel that adds a pool.
    pybind11::object pythonWindow();

    /// The settings store as the window read it when it was built.
    siblings::Settings settings;

    QLabel* label_name = nullptr;
    QLineEdit* input_name = nullptr;
    QSlider* slider_size = nullptr;
    /// The combo box of pool names; its tool tip is the path of the pool on show.
    QComboBox* combo_pool = nullptr;
    PoolTreeWidget* tree = nullptr;
    /// The tree's folder items, and how many there are below the pool item.
    DirItems dirlist;
    int count_dirItem = 0;
    QHBoxLayout* layout_top = nullptr;
    QVBoxLayout* layout_master = nullptr;
    QMenu* tree_menu = nullptr;
    /// Icon key to image path, for the menus.
    std::map<std::string, std::string> icons;

protected:
    /// `class_name` names the window's reactions in the console ("ExportWindow.close"). Reads the
    /// settings and the icon table.
    PoolWindow(const char* class_name, const QString& title);

    /// Makes the shared widgets in this order: the name label, `make_name_field()` as the name
    /// field, the slider on `icon_size`, the combo box of pools (ending in "-- new pool --" when
    /// `offer_new_pool`) on the stored pool, and the tree (one column, a menu on request), empty.
    void create_pool_widgets(const std::function<QLineEdit*()>& make_name_field, int icon_size,
                             bool offer_new_pool);
    /// The name row over the combo box and the tree; the window adds what goes below.
    void create_pool_layouts();
    /// Connects `close_button`, the combo box, the tree's menu request and the slider.
    void create_pool_signals(QPushButton* close_button);
    /// An action for the tree's menu with the icon of `icon_key` (none when the table lacks it).
    QAction* make_action(const char* icon_key, const QString& text);
    /// The name under which `reaction` reports a failure, kept for the module's life.
    const char* reaction_name(const char* reaction) const;
    void message(const QString& text);

    void keyPressEvent(QKeyEvent* event) override;

private:
    const char* class_name_;
    const char* key_press_name_;
};

} // namespace cobaltrig::pools
