#pragma once
// The resolution slider: a small frameless window under the cursor that sets the active viewer's
// reduced-resolution mode, as a slider and as a two-digit field that follow each other.

#include <pybind11/pybind11.h>

#include <QWidget>

#include <map>
#include <string>

class QHBoxLayout;
class QKeyEvent;
class QLineEdit;
class QSlider;

namespace cobaltrig::resolution {

/// Sets the active viewer's `downrez` knob to `rez`, a key such as "2.0", as text.
void set_resolution(const std::string& rez);

class RezSlider : public QWidget {
    Q_OBJECT
public:
    RezSlider();

    /// Brings field, slider and viewer in line after `sender` ("input_rez" or "slider") changed.
    void update_widgets(const std::string& sender);

    /// The viewer's `downrez` value in text form to the factor it stands for: "2.0" is 4.
    std::map<std::string, int> resolutions;

    QLineEdit* input_rez = nullptr;
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

    void input_changed();
    void slider_changed();
};

/// Opens the resolution slider at the viewer's present step, replacing one that is open; gives the
/// window, or None when the viewer gives no value to work on.
pybind11::object showRezSlider();

} // namespace cobaltrig::resolution
