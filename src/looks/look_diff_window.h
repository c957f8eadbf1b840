#pragma once
// What a look changes: a table of the knobs that differ between a node and its stored looks, side by
// side for all looks at once. The stored copies are read where they stand in the look container;
// comparing never pastes, selects or changes anything in the script.

#include "frame/host.h"
#include "frame/py_owned.h"

#include <pybind11/pybind11.h>

#include <QString>
#include <QWidget>

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

class QAction;
class QHBoxLayout;
class QLabel;
class QMenu;
class QPushButton;
class QTableWidget;
class QVBoxLayout;

namespace cobaltrig::looks {

/// The knobs of one node that an artist compares: their script text (what is compared) and the
/// text shown for it, in the node's knob order. Look widgets, hidden knobs, buttons and the
/// bookkeeping knobs (name, position, selection, the label that holds a copy's uid) are left out.
struct ComparedKnobs {
    std::vector<std::string> names;
    std::unordered_map<std::string, std::string> script;
    std::unordered_map<std::string, QString> shown;
};

ComparedKnobs compared_knobs(const host::Node& node);

/// The text a panel would show for a knob's script text: numbers to three decimals, colours by
/// component, "animated (N keys)" for a curve, an expression as its text.
QString shown_value(const std::string& script, const std::string& knob_class);

/// One look of a node: the look knob's index and uid, and either the stored copy's knobs or the
/// reason it cannot be compared.
struct LookColumn {
    std::string index;
    std::string uid;
    std::string reason;
    ComparedKnobs knobs;
};

/// The looks of `node` in the order of their numbers, each with its stored copy read or refused.
std::vector<LookColumn> read_looks(const host::Node& node);

/// How many knobs applying the look `uid` would change on `node`; nothing, and the reason, when its
/// stored copy cannot be compared.
std::optional<int> count_changed_knobs(const host::Node& node, const std::string& uid,
                                       std::string* reason = nullptr);

class LookDiffWindow : public QWidget {
    Q_OBJECT
public:
    explicit LookDiffWindow(const host::Node& node);

    /// Reads the node and its looks anew and refills the table. A node that was replaced since
    /// (a look applied from its button) is found again by its name.
    void refresh();
    /// Applies the look of that table column to the node, as its look button does; one undo step.
    void apply_look(int column);
    /// Sets the knob of that row on the node to the value of the look in that column; one undo step.
    void set_value_from_look(int row, int column);

    /// The node the table compares, or None when it no longer exists.
    pybind11::object node();
    /// The knob name of each row, top down.
    std::vector<std::string> row_knobs() const { return rows_; }

    QLabel* label_node = nullptr;
    QPushButton* push_refresh = nullptr;
    QTableWidget* table_looks = nullptr;
    QMenu* menu_cell = nullptr;
    QAction* action_set_value = nullptr;
    QVBoxLayout* layout_master = nullptr;
    QHBoxLayout* layout_top = nullptr;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build_ui();
    void create_widgets();
    void create_layouts();
    void create_signals();
    std::optional<host::Node> live_node();
    void fill_table();
    void size_columns();
    void open_cell_menu(const QPoint& viewport_pos);

    PyOwned node_;
    std::string node_name_;
    std::vector<LookColumn> looks_;
    ComparedKnobs now_;
    std::vector<std::string> rows_;
    int menu_row_ = -1;
    int menu_column_ = -1;
};

/// Opens the comparison for the selected node, replacing one that is open; gives the window, or
/// None (with a message) when nothing is selected.
pybind11::object show_look_diff();

} // namespace cobaltrig::looks
