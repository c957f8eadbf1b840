#include "pools/export_window.h"

#include "frame/guarded.h"
#include "frame/host.h"
#include "frame/preset_file.h"
#include "pools/line_edit_custom.h"
#include "pools/pool_choice.h"
#include "pools/pool_paths.h"

#include <QAction>
#include <QComboBox>
#include <QCursor>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <optional>
#include <stdexcept>

namespace cobaltrig {

namespace py = pybind11;
using namespace pools;

namespace {

// "toolsets", or the class of the exported node.
QString nodeClassName(const py::object& node) {
    if (py::isinstance<py::str>(node) && node.cast<std::string>() == "toolsets")
        return QStringLiteral("toolsets");
    return QString::fromStdString(host::Node(node).Class());
}

} // namespace

ExportWindow::ExportWindow(py::object node_)
    : PoolWindow("ExportWindow", QStringLiteral("Export %1 look").arg(nodeClassName(node_))),
      node(std::move(node_)) {
    build_ui();
    build_nodes_dir();
}

QString ExportWindow::get_nodeclass_name() const {
    return nodeClassName(node.get());
}

QString ExportWindow::get_mode() const {
    return get_nodeclass_name() == QLatin1String("toolsets") ? QStringLiteral("toolsets")
                                                             : QStringLiteral("nodes");
}

void ExportWindow::build_ui() {
    // The export tree keeps Qt's icon size until the slider moves; the slider shows the stored one.
    create_pool_widgets([this] { return new QLineEditCustom(this); }, stored_icon_size(), true);
    populate_tree();
    push_save = new QPushButton(QStringLiteral("save"), this);
    push_save->setObjectName(QStringLiteral("actionButton"));
    push_cancel = new QPushButton(QStringLiteral("cancel"), this);

    create_pool_layouts();
    layout_push = new QHBoxLayout();
    layout_push->addWidget(push_save);
    layout_push->addWidget(push_cancel);
    layout_master->addLayout(layout_push);
    siblings::set_style_sheet(this);

    create_pool_signals(push_cancel);
    connect_guarded(push_save, &QPushButton::clicked, this, "ExportWindow.write_node_as_preset",
                    [this] { write_node_as_preset(); });
    connect_guarded(tree, &QTreeWidget::itemClicked, this, "ExportWindow.set_input_name",
                    [this] { set_input_name(); });
}

void ExportWindow::populate_tree() {
    mode = get_mode();
    const QString node_class = mode == QLatin1String("nodes") ? get_nodeclass_name() : QString();
    const bool hide_disabled = settings.isTrue("hide_disabled_items");
    count_dirItem = fill_pool_tree(
        tree, this, dirlist, combo_pool->toolTip(),
        [&](const QString& name, const QString& root) -> std::optional<DirState> {
            const DirState state = exportDirState(name, root, mode, node_class);
            if (hide_disabled && state.disabled)
                return std::nullopt;
            return state;
        },
        icons);
}

void ExportWindow::build_nodes_dir() {
    const QString node_class = get_nodeclass_name();
    const QString pool = combo_pool->toolTip();
    if (node_class == QLatin1String("toolsets"))
        return;
    // Without a pool on show (the stored pool is gone) or with a pool directory that isn't there
    // (an unmounted share), a class folder would land somewhere the user never chose.
    if (pool.isEmpty() || !QFileInfo(pool).isDir())
        return;
    const QString folder = join({pool, QStringLiteral("nodes"), node_class});
    if (QFileInfo(folder).isDir())
        return;
    const QString error = makeDirectories(folder);
    if (!error.isEmpty()) {
        message(QStringLiteral("Cannot create preset folder. %1").arg(error));
        return;
    }
    // The tree was filled a moment ago; only a new folder makes it stale.
    populate_tree();
}

void ExportWindow::set_input_name() {
    QTreeWidgetItem* item = tree->currentItem();
    if (!item)
        return;
    const QString path = item->data(0, Qt::UserRole).toString();
    if (QFileInfo(path).isFile() && extension(path) == QLatin1String(".nk"))
        input_name->setText(item->text(0));
}

void ExportWindow::create_tree_right_click_menu() {
    QTreeWidgetItem* item = tree->currentItem();
    if (!item)
        return;
    const QString path = item->data(0, Qt::UserRole).toString();

    // The menu of the previous request goes; each request builds its own.
    if (tree_menu)
        tree_menu->deleteLater();
    if (action_new_category)
        action_new_category->deleteLater();
    tree_menu = new QMenu(this);
    action_new_category = make_action("icon_folder_white", QStringLiteral("new category"));
    tree_menu->addAction(action_new_category);
    connect_guarded(action_new_category, &QAction::triggered, this,
                    "ExportWindow.create_new_category",
                    [this, path] { create_new_category(path); });

    // Categories live directly below a toolsets folder; nowhere else is there a menu.
    if (lastPiece(path) == QLatin1String("toolsets"))
        tree_menu->popup(QCursor::pos());
}

void ExportWindow::create_new_category(const QString& current_path) {
    // The dialog runs its own event loop, in which the window may be replaced and deleted.
    const QPointer<ExportWindow> alive(this);
    bool ok = false;
    const QString name = QInputDialog::getText(this, QStringLiteral("new category"),
                                               QStringLiteral("new category name:"),
                                               QLineEdit::Normal, QString(), &ok);
    if (!alive || !ok || name.isEmpty())
        return;
    if (name == QLatin1String("toolsets") || name == QLatin1String("nodes")) {
        message(
            QStringLiteral("%1 is a reserved keyword. Please choose a different name.").arg(name));
        return;
    }
    const QString folder = join(current_path, name);
    if (QFileInfo(folder).isDir()) {
        message(
            QStringLiteral("The category name '%1' already exists. Please choose a different name.")
                .arg(name));
        return;
    }
    QString error = makeDirectories(folder);
    if (error.isEmpty()) {
        try {
            populate_tree();
        } catch (py::error_already_set& e) {
            error = QString::fromStdString(py::str(e.value()));
        }
    }
    if (!error.isEmpty())
        message(QStringLiteral("Error creating category folder: %1").arg(error));
}

void ExportWindow::write_node_as_preset() {
    const QString name = input_name->text().trimmed();
    if (name.isEmpty()) {
        message(QStringLiteral("Please enter a name"));
        return;
    }
    // Refused before anything is written: the file must land in the chosen folder, and be seen.
    const QString problem = presetNameProblem(name);
    if (!problem.isEmpty()) {
        message(problem);
        return;
    }
    const QString node_class = get_nodeclass_name();

    QTreeWidgetItem* item = tree->currentItem();
    if (!item) {
        message(QStringLiteral("Please select a folder"));
        return;
    }
    const QString item_path = item->data(0, Qt::UserRole).toString();
    const QString target = targetFolder(item_path, QFileInfo(item_path).isDir());

    // The pool directory and its two top folders hold folders, not presets. Tree paths have
    // forward slashes and the pool's own path the platform's, so both are compared normalised.
    const QString pool = combo_pool->toolTip();
    const QStringList refused = {normalise(pool), normalise(join(pool, QStringLiteral("nodes"))),
                                 normalise(join(pool, QStringLiteral("toolsets")))};
    if (target.isEmpty() || refused.contains(normalise(target))) {
        message(QStringLiteral("Please select a folder"));
        return;
    }

    // Tree paths start at the pool's path, so the target is the folder itself.
    const QString preset = join(target, name + QStringLiteral(".nk"));
    if (QFileInfo(preset).isFile()) {
        const QPointer<ExportWindow> alive(this);
        const bool overwrite = siblings::ask_dialog(
            "Overwrite preset?",
            QStringLiteral("The preset '%1' already exists in the pool '%2'. Do you want to "
                           "overwrite it?")
                .arg(name, combo_pool->currentText())
                .toStdString(),
            QStringLiteral("overwrite %1").arg(name).toStdString(), "45,0,0");
        if (!overwrite || !alive)
            return;
    }

    const QString folder = dirName(preset);
    if (!folder.isEmpty() && !QFileInfo(folder).isDir()) {
        const QString error = makeDirectories(folder);
        // The host's copy reports for itself if the folder is really unusable.
        if (!error.isEmpty())
            message(QStringLiteral("Cannot create directory under this path. %1").arg(error));
    }

    {
        // A node is copied in the group that holds it, whatever group the host shows; a toolset
        // is the selection of this moment in the host's current group.
        std::optional<host::Node> exported;
        std::optional<host::GroupContext> context;
        if (node_class != QLatin1String("toolsets")) {
            exported.emplace(node.get());
            context.emplace(host::parentGroup(*exported));
            exported->selectOnly();
        }
        host::nodeCopy(host::cut_paste_file());
        try {
            files::writePresetThroughHost(preset);
        } catch (const std::runtime_error& error) {
            message(QString::fromUtf8(error.what()));
            return;
        }
    }
    close();
    message(QStringLiteral("Successfully exported preset."));
}

} // namespace cobaltrig
