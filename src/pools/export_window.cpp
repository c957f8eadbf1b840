#include "pools/export_window.h"

#include "frame/guarded.h"
#include "frame/host.h"
#include "frame/preset_file.h"
#include "pools/line_edit_custom.h"
#include "pools/pool_paths.h"

#include <QAction>
#include <QComboBox>
#include <QCursor>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QIcon>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSlider>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <optional>
#include <stdexcept>

namespace cobaltrig {

namespace py = pybind11;
using namespace pools;

namespace {

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

std::string iconPath(const std::map<std::string, std::string>& icons, const char* key) {
    auto it = icons.find(key);
    return it == icons.end() ? std::string() : it->second;
}

} // namespace

ExportWindow::ExportWindow(py::object node_) : node(std::move(node_)) {
    setMinimumWidth(600);
    setWindowFlags(Qt::WindowStaysOnTopHint);
    setWindowTitle(QStringLiteral("Export %1 look").arg(get_nodeclass_name()));
    settings = siblings::load_settings();
    icons = siblings::load_icons();
    build_ui();
    build_nodes_dir();
}

ExportWindow::~ExportWindow() {
    // Qt may delete the window from its event loop, where the GIL is not held, or after the
    // interpreter has gone; the Python objects are let go accordingly.
    if (!Py_IsInitialized()) {
        node.release();
        settings.mapping.release();
        dirlist.abandon();
        return;
    }
    py::gil_scoped_acquire gil;
    if (tree)
        clear_pool_tree(tree);
    node = py::object();
    settings.mapping = py::object();
    dirlist.clear();
}

py::object ExportWindow::pythonWindow() {
    return py::cast(this, py::return_value_policy::reference);
}

QString ExportWindow::get_nodeclass_name() const {
    if (py::isinstance<py::str>(node) && node.cast<std::string>() == "toolsets")
        return QStringLiteral("toolsets");
    return qs(host::Node(node).Class());
}

QString ExportWindow::get_mode() const {
    return get_nodeclass_name() == QLatin1String("toolsets") ? QStringLiteral("toolsets")
                                                             : QStringLiteral("nodes");
}

void ExportWindow::build_ui() {
    create_widgets();
    create_layouts();
    create_signals();
}

void ExportWindow::create_widgets() {
    label_name = new QLabel(QStringLiteral("name: "), this);
    input_name = new QLineEditCustom(this);

    slider_size = new QSlider(Qt::Horizontal, this);
    slider_size->setMinimum(5);
    slider_size->setMaximum(40);
    slider_size->setFixedHeight(20);
    slider_size->setValue(stored_icon_size());

    combo_pool = new QComboBox(this);
    for (const auto& [name, path] : settings.pools)
        combo_pool->addItem(qs(name));
    combo_pool->addItem(QLatin1String(kNewPoolEntry));
    set_current_pool(*this);

    // The export tree keeps Qt's icon size until the slider moves; the slider shows the stored one.
    tree = new QTreeWidget(this);
    tree->setColumnCount(1);
    tree->setContextMenuPolicy(Qt::CustomContextMenu);
    populate_tree();

    push_save = new QPushButton(QStringLiteral("save"), this);
    push_save->setObjectName(QStringLiteral("actionButton"));
    push_cancel = new QPushButton(QStringLiteral("cancel"), this);
}

void ExportWindow::create_layouts() {
    layout_top = new QHBoxLayout();
    layout_top->addWidget(label_name, 1);
    layout_top->addWidget(input_name, 6);
    layout_top->addWidget(slider_size, 2);

    layout_push = new QHBoxLayout();
    layout_push->addWidget(push_save);
    layout_push->addWidget(push_cancel);

    layout_master = new QVBoxLayout(this);
    layout_master->addLayout(layout_top);
    layout_master->addWidget(combo_pool);
    layout_master->addWidget(tree);
    layout_master->addLayout(layout_push);
    siblings::set_style_sheet(this);
}

void ExportWindow::create_signals() {
    // Connected only now, after the stored pool was chosen, so that opening the window stores
    // nothing.
    connect_guarded(push_cancel, &QPushButton::clicked, this, "ExportWindow.close",
                    [this] { close(); });
    connect_guarded(combo_pool, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                    "ExportWindow.update_pool_combo", [this] { update_pool_combo(*this); });
    connect_guarded(push_save, &QPushButton::clicked, this, "ExportWindow.write_node_as_preset",
                    [this] { write_node_as_preset(); });
    connect_guarded(tree, &QTreeWidget::customContextMenuRequested, this,
                    "ExportWindow.create_tree_right_click_menu",
                    [this] { create_tree_right_click_menu(); });
    connect_guarded(tree, &QTreeWidget::itemClicked, this, "ExportWindow.set_input_name",
                    [this] { set_input_name(); });
    connect_guarded(slider_size, &QSlider::valueChanged, this, "ExportWindow.set_tree_icon_size",
                    [this] { set_tree_icon_size(slider_size, tree); });
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
    action_new_category = new QAction(QIcon(qs(iconPath(icons, "icon_folder_white"))),
                                      QStringLiteral("new category"), this);
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
            error = qs(py::str(e.value()));
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
            exported.emplace(node);
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

void ExportWindow::keyPressEvent(QKeyEvent* event) {
    guarded("ExportWindow.keyPressEvent", [&] {
        if (event->key() == Qt::Key_Escape)
            close();
    });
}

void ExportWindow::message(const QString& text) {
    siblings::show_message_box(this, text.toStdString());
}

} // namespace cobaltrig
