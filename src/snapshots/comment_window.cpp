// The comment editor of a snapshot.

#include "snapshots/comment_window.h"

#include "frame/guarded.h"
#include "frame/siblings.h"
#include "snapshots/snapshot_browser.h"
#include "snapshots/snapshot_files.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

namespace cobaltrig {

CommentWindow::CommentWindow(const QString& src, SnapshotBrowser* snapshotbrowser)
    : QWidget(nullptr), snapshotbrowser(snapshotbrowser) {
    setWindowTitle(QStringLiteral("comment snapshot"));
    setWindowFlags(Qt::WindowStaysOnTopHint);
    setMinimumSize(300, 200);
    resize(300, 200);
    metaxml = snapshot_files::sibling(src, QStringLiteral(".xml"));

    text_comment = new QTextEdit(this);
    // Plain text in, plain text out: a comment that looks like markup stays as typed.
    text_comment->setAcceptRichText(false);
    text_comment->setPlainText(load_comments());
    push_save = new QPushButton(QStringLiteral("save"), this);
    push_save->setObjectName(QStringLiteral("actionButton"));
    push_cancel = new QPushButton(QStringLiteral("cancel"), this);

    layout_push = new QHBoxLayout();
    layout_push->addWidget(push_save);
    layout_push->addWidget(push_cancel);
    layout_main = new QVBoxLayout();
    layout_main->addWidget(text_comment);
    layout_main->addLayout(layout_push);
    setLayout(layout_main);
    siblings::set_style_sheet(this);

    connect_guarded(push_cancel, &QPushButton::clicked, this, "cancel comment",
                    [this] { close(); });
    connect_guarded(push_save, &QPushButton::clicked, this, "save comment",
                    [this] { set_comment(); });
}

QString CommentWindow::load_comments() const {
    return snapshot_files::load_comment(metaxml);
}

void CommentWindow::set_comment() {
    if (!QFileInfo(metaxml).isFile())
        siblings::create_metaxml(metaxml.toStdString());
    snapshot_files::save_comment(metaxml, text_comment->toPlainText());
    if (snapshotbrowser && snapshotbrowser->built())
        snapshotbrowser->populate_table_thumbs();
    close();
}

} // namespace cobaltrig
