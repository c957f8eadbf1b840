#pragma once
// The look slider: a small frameless window under the cursor that steps the selected nodes through
// their looks. Every change of the slider applies the look of that number to all selected nodes.

#include "frame/host.h"
#include "frame/py_owned.h"

#include <pybind11/pybind11.h>

#include <QWidget>

#include <vector>

class QHBoxLayout;
class QKeyEvent;
class QLineEdit;
class QSlider;

namespace cobaltrig::looks {

/// The selected nodes of the current group and of every Group inside it, each group's own first;
/// the stored copies inside look containers are left out. The slider steps all of them.
std::vector<host::Node> selected_nodes_at_any_depth();

/// The most look knobs any selected node has, at least 1: the slider's maximum.
int get_max_look_version();

class LooksSlider : public QWidget {
    Q_OBJECT
public:
    LooksSlider();

    /// Applies the look of the slider's number to each selected node that has it, and selects the
    /// new nodes again so that the next step finds them. One undo step.
    void update_widgets();
    /// The look the node shows, as its `looks` tab remembers it; 1 when it remembers none.
    int get_current_preset_index(const host::Node& node) const;
    /// Moves the slider; a real change of value is a full step.
    void set_slider_index(int index);
    /// The same for a Python number of any size, kept within the slider's range as Qt keeps it.
    void set_slider_index(const pybind11::int_& index);

    /// The settings mapping as read when the window was built.
    pybind11::object settings() const { return settings_.get(); }
    bool auto_release = false;

    QLineEdit* input_look = nullptr;
    QSlider* slider = nullptr;
    QHBoxLayout* layout_slider = nullptr;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    void build_ui();
    void create_widgets();
    void create_layouts();
    void create_signals();

    PyOwned settings_;
};

/// Opens the look slider for the selected nodes, replacing one that is open; gives the window, or
/// None when nothing is selected.
pybind11::object show_looks_slider();

} // namespace cobaltrig::looks
