#pragma once
// A tiny C++ window that exists only for the module's own tests (`cobaltRig_w._testing`): it proves
// that widgets made in C++ reach Python as PySide objects and that a failing reaction is reported
// without taking the host down.

#include "frame/py_owned.h"

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

namespace cobaltrig {

class BridgeProbe : public QWidget {
    Q_OBJECT
public:
    BridgeProbe();

    /// A Python callable run after each press of `push_apply`, with the entered text.
    void set_reaction(pybind11::object reaction) { reaction_ = std::move(reaction); }

    QLineEdit* input_text = nullptr;
    QPushButton* push_apply = nullptr;
    QLabel* label_result = nullptr;

private:
    void apply();
    PyOwned reaction_;
};

} // namespace cobaltrig
