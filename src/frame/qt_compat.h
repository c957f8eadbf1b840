#pragma once
// The few things that differ between Qt 5.15 and Qt 6, so that every other file is written once in
// API both share. The build names the Python binding (PySide2/shiboken2 for Qt 5, PySide6/shiboken6
// for Qt 6); the module only ever talks to the binding it was compiled against.

#include <QtGlobal>

#ifndef COBALTRIG_PYSIDE
#error "COBALTRIG_PYSIDE and COBALTRIG_SHIBOKEN come from the build"
#endif

class QEvent;
class QEnterEvent;

namespace cobaltrig {

// QWidget::enterEvent takes a QEnterEvent in Qt 6 and a plain QEvent in Qt 5.
#if QT_VERSION_MAJOR >= 6
using EnterEvent = QEnterEvent;
#else
using EnterEvent = QEvent;
#endif

// The binding's Python modules.
inline constexpr const char* kPySideCore = COBALTRIG_PYSIDE ".QtCore";
inline constexpr const char* kPySideGui = COBALTRIG_PYSIDE ".QtGui";
inline constexpr const char* kPySideWidgets = COBALTRIG_PYSIDE ".QtWidgets";
inline constexpr const char* kShiboken = COBALTRIG_SHIBOKEN;

}  // namespace cobaltrig
