// The snapshot browser's directory box: the list of snapshot directories under the root, and the
// two commands that make and delete a directory.

#include "snapshots/snapshot_browser.h"

#include "frame/guarded.h"
#include "frame/host.h"
#include "frame/siblings.h"
#include "snapshots/snapshot_files.h"
#include "snapshots/snapshot_preview.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QSlider>
#include <QTableWidget>

#include <stdexcept>

namespace cobaltrig {

namespace {

const QString kTitle = QStringLiteral("snapshot directory");
const QString kNew = QStringLiteral("new snapshot directory");
const QString kDelete = QStringLiteral("delete snapshot directory");
const QString kDivider = QStringLiteral("---------------");

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

// The last component of a stored path, whichever separator it was written with.
QString lastComponent(const QString& path) {
    return QFileInfo(QDir::fromNativeSeparators(path)).fileName();
}

QString joined(const QString& root, const QString& name) {
    return name.isEmpty() ? root : QDir(root).filePath(name);
}

} // namespace

void SnapshotBrowser::create_dir_signals() {
    connect_guarded(combo_snapshot_dir, qOverload<int>(&QComboBox::currentIndexChanged), this,
                    "snapshot directory", [this] { switch_snapshot_dir(); });
}

void SnapshotBrowser::populate_combo_pool() {
    // The box stays connected throughout: clearing it and selecting the current directory both
    // run `switch_snapshot_dir`, and the selection is what fills the table.
    const ListingScope one_listing(*this);
    combo_snapshot_dir->clear();

    const py::object advanced = siblings::parse_advanced_settings();
    combo_snapshot_dir->addItem(kTitle);
    if (siblings::advanced_text(advanced, "new_snapshot_directory", "True") == "True")
        combo_snapshot_dir->addItem(kNew);
    if (siblings::advanced_text(advanced, "delete_snapshot_directory", "True") == "True")
        combo_snapshot_dir->addItem(kDelete);
    combo_snapshot_dir->addItem(kDivider);

    const QDir root(snapshotbrowser_root);
    if (!root.exists() || !QFileInfo(snapshotbrowser_root).isReadable())
        throw std::runtime_error("Cannot list the snapshot browser root '" +
                                 snapshotbrowser_root.toStdString() + "'.");
    // A move that a killed process left half done is finished before anything is listed.
    snapshot_files::recover_moves(snapshotbrowser_root);
    // In the file system's own order: artists know their directories by it. A name that isn't
    // valid text can't be spelled back to reach its directory, so it isn't offered.
    QStringList names;
    for (const QString& name :
         root.entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Unsorted)) {
        if (QFileInfo(root.filePath(name)).isDir())
            names << name;
        else
            snapshot_files::report_once(
                root.filePath(name),
                QStringLiteral("the snapshot directory '%1' in '%2' has a name that is not valid "
                               "text; it is left out of the snapshot browser")
                    .arg(name, QDir::toNativeSeparators(snapshotbrowser_root)));
    }
    combo_snapshot_dir->addItems(names);

    try {
        const std::optional<std::string> current =
            siblings::load_settings().get("current_snapshot_dir");
        if (current && !current->empty()) {
            const QString name = lastComponent(qs(*current));
            if (names.contains(name))
                combo_snapshot_dir->setCurrentIndex(combo_snapshot_dir->findText(name));
        }
    } catch (const py::error_already_set&) {
        // A box left on its title is the answer to any trouble finding the current directory.
    } catch (const std::exception&) {
    }
    setup_version_slider();
}

void SnapshotBrowser::switch_snapshot_dir() {
    const QString text = combo_snapshot_dir->currentText();
    if (text == kDivider || text == kTitle)
        return;
    if (text == kNew) {
        create_new_snapshot_directory();
        return;
    }
    if (text == kDelete) {
        ask_delete_snapshot_dir();
        return;
    }
    const ListingScope one_listing(*this);
    const QString root = qs(siblings::load_settings().text("snapshotbrowser_root"));
    current_snapshot_dir = joined(root, text);
    siblings::update_xml("current_snapshot_dir", current_snapshot_dir->toStdString());
    populate_table_thumbs();
    setup_version_slider();
    slider_versions->setValue(0);
    // The preview follows the directory shown: the slider's snapshot, or nothing in an empty one.
    const QStringList rows = row_sources();
    const bool shows_own = !preview_image->isHidden() && rows.contains(preview_image->image);
    if (rows.isEmpty())
        preview_image->set_image(std::nullopt);
    else if (!shows_own)
        slide_versions();
    // Once the column follows the table's width, the rows just made for a column of 200 take the
    // width it has, not only after a later resize.
    if (table_thumbs->horizontalHeader()->stretchLastSection())
        adjust_splitter_sizes();
}

void SnapshotBrowser::ask_delete_snapshot_dir() {
    const std::optional<std::string> stored = siblings::load_settings().get("current_snapshot_dir");
    if (!stored || stored->empty())
        return;
    const QString path = qs(*stored);
    const QString name = lastComponent(path);

    // Only a directory directly under the root is a snapshot directory. Anything else (the root
    // itself, which the setting names for a moment while the box is rebuilt, or a path from
    // elsewhere) would take far more than one directory of snapshots with it.
    const QFileInfo info(path);
    const QString root = QFileInfo(snapshotbrowser_root).canonicalFilePath();
    // Judged by where the entry itself lies: a link in the root is one of its directories, and
    // where it leads is no concern of this command.
    const QString parent = QFileInfo(info.absolutePath()).canonicalFilePath();
    if ((info.exists() || info.isSymLink()) && (root.isEmpty() || parent != root)) {
        siblings::show_message_box(
            this, QStringLiteral("'%1' is not a snapshot directory of the snapshot browser root "
                                 "'%2'; nothing was deleted.")
                      .arg(path, snapshotbrowser_root)
                      .toStdString());
        return;
    }

    if (!siblings::ask_dialog(
            "Delete snapshot directory",
            QStringLiteral("Are you sure to delete the current snapshot directory '%1'? The "
                           "directory including all snapshots will be removed. This can't be "
                           "undone!")
                .arg(name)
                .toStdString(),
            QStringLiteral("delete '%1'").arg(name).toStdString(), "45,0,0"))
        return;

    QString failure;
    if (info.isSymLink()) {
        // A link goes by itself; following it would empty the directory it leads to.
        if (!QFile::remove(path) && !QDir().rmdir(path))
            failure = QStringLiteral("Cannot remove the link '%1'; it is still there, and so is "
                                     "everything it leads to.")
                          .arg(path);
    } else if (!info.isDir())
        failure = QStringLiteral("No such directory.");
    else if (!QDir(path).removeRecursively())
        failure = QStringLiteral("Cannot delete everything in the snapshot directory '%1'; what "
                                 "could not be removed is still there.")
                      .arg(path);
    if (!failure.isEmpty())
        siblings::show_message_box(this, failure.toStdString());

    populate_combo_pool();
    combo_snapshot_dir->setCurrentIndex(0);
    // A preview from the deleted directory is no file any more, and the pane goes empty.
    const std::optional<std::string> preview =
        siblings::load_settings().get("current_snapshot_preview");
    preview_image->set_image(preview ? std::optional<QString>(qs(*preview)) : std::nullopt);
    siblings::update_xml("current_snapshot_dir", std::nullopt);
}

void SnapshotBrowser::create_new_snapshot_directory() {
    const QString root = qs(siblings::load_settings().text("snapshotbrowser_root"));
    if (root.isEmpty()) {
        siblings::show_message_box(this, "Please set your snapshot browser root first.");
        return;
    }
    // The script's name is the likely name of the shot; an unsaved script suggests nothing.
    QString script_name = QFileInfo(qs(host::root().name())).completeBaseName();
    if (script_name == QLatin1String("Root"))
        script_name.clear();

    bool ok = false;
    QString name = QInputDialog::getText(this, QStringLiteral("Create new snapshot directory"),
                                         QStringLiteral("New snapshot directory name:"),
                                         QLineEdit::Normal, script_name, &ok);
    if (!ok || name.isEmpty())
        return;
    name.replace(QLatin1Char(' '), QLatin1Char('_'));

    const QString new_snapshot_dir = joined(root, name);
    if (QFileInfo(new_snapshot_dir).isDir()) {
        siblings::show_message_box(
            this, QStringLiteral("The snapshot directory '%1' already exists. Please choose "
                                 "another name.")
                      .arg(name)
                      .toStdString());
        return;
    }

    try {
        if (!QDir().mkpath(new_snapshot_dir))
            throw std::runtime_error("Cannot make the directory '" +
                                     new_snapshot_dir.toStdString() + "'.");
        siblings::update_xml("current_snapshot_dir", new_snapshot_dir.toStdString());
        populate_combo_pool();
        combo_snapshot_dir->setCurrentIndex(combo_snapshot_dir->findText(name));
        siblings::show_message_box(
            this,
            QStringLiteral("Successfully create snapshot directory '%1'").arg(name).toStdString());
        current_snapshot_dir = new_snapshot_dir;
        populate_table_thumbs();
    } catch (const py::error_already_set& error) {
        siblings::show_message_box(this, std::string("Cannot create snapshot directory. ") +
                                             error.what());
    } catch (const std::exception& error) {
        siblings::show_message_box(this, std::string("Cannot create snapshot directory. ") +
                                             error.what());
    }
}

} // namespace cobaltrig
