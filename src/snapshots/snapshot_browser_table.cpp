// The snapshot browser's list of the snapshots of the current directory.

#include "snapshots/snapshot_browser.h"

#include <QDir>
#include <QFileInfo>
#include <QTableWidget>

#include <stdexcept>

namespace cobaltrig {

void SnapshotBrowser::populate_table_thumbs() {
    if (!built())
        throw std::runtime_error("the snapshot browser has no table: it stopped while building");
    table_thumbs->setRowCount(0);
    if (!current_snapshot_dir)
        return;
    // A snapshot is its image; the stem starts with the epoch seconds, so the names in reverse
    // order put the newest first.
    const QFileInfoList images =
        QDir(*current_snapshot_dir)
            .entryInfoList({QStringLiteral("*.jpg")}, QDir::Files, QDir::Name | QDir::Reversed);
    table_thumbs->setRowCount(images.size());
    int row = 0;
    for (const QFileInfo& image : images) {
        auto* item = new QTableWidgetItem(image.completeBaseName());
        item->setData(Qt::UserRole, image.absoluteFilePath());
        table_thumbs->setItem(row++, 0, item);
    }
}

QStringList SnapshotBrowser::row_sources() const {
    QStringList sources;
    if (!built())
        return sources;
    for (int row = 0; row < table_thumbs->rowCount(); ++row)
        if (const QTableWidgetItem* item = table_thumbs->item(row, 0))
            sources << item->data(Qt::UserRole).toString();
    return sources;
}

} // namespace cobaltrig
