#pragma once
// The comment editor of one snapshot: a free window over the browser that loads the stored
// comment, saves it into the snapshot's metadata and refreshes the browser's marks.

#include <QPointer>
#include <QString>
#include <QWidget>

class QHBoxLayout;
class QPushButton;
class QTextEdit;
class QVBoxLayout;

namespace cobaltrig {

class SnapshotBrowser;

class CommentWindow : public QWidget {
    Q_OBJECT
public:
    CommentWindow(const QString& src, SnapshotBrowser* snapshotbrowser);

    /// The stored comment; empty without a metadata file.
    QString load_comments() const;
    /// Saves the editor's text as the comment, rebuilds the browser's thumbnails and closes.
    void set_comment();

    QString metaxml;
    /// Watched: the browser may close while the editor is open.
    QPointer<SnapshotBrowser> snapshotbrowser;
    QTextEdit* text_comment = nullptr;
    QPushButton* push_save = nullptr;
    QPushButton* push_cancel = nullptr;
    QHBoxLayout* layout_push = nullptr;
    QVBoxLayout* layout_main = nullptr;
};

} // namespace cobaltrig
