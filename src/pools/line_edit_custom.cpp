#include "pools/line_edit_custom.h"

#include "frame/guarded.h"
#include "pools/export_window.h"

#include <QKeyEvent>

namespace cobaltrig {

QLineEditCustom::QLineEditCustom(ExportWindow* exportwindow)
    : QLineEdit(exportwindow), exportwindow(exportwindow) {}

void QLineEditCustom::keyPressEvent(QKeyEvent* event) {
    // The field edits as usual first, so a save sees the text as it stands after this key.
    QLineEdit::keyPressEvent(event);
    guarded("QLineEditCustom.keyPressEvent", [&] {
        // Only the main Return key saves; the keypad's Enter is a different key and does not.
        if (event->key() == Qt::Key_Return)
            exportwindow->write_node_as_preset();
    });
}

} // namespace cobaltrig
