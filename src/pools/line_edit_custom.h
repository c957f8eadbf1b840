#pragma once
// The name field of the export window: a line edit that saves the preset on Return.

#include <QLineEdit>

namespace cobaltrig {

class ExportWindow;

class QLineEditCustom : public QLineEdit {
    Q_OBJECT
public:
    /// `exportwindow` owns the field and is the one that saves.
    explicit QLineEditCustom(ExportWindow* exportwindow);

    ExportWindow* exportwindow;

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace cobaltrig
