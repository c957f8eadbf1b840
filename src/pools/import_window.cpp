#include "pools/import_window.h"

#include "frame/guarded.h"
#include "frame/host.h"
#include "pools/pool_choice.h"
#include "pools/pool_paths.h"

#include <QAction>
#include <QComboBox>
#include <QCursor>
#include <QDrag>
#include <QFile>
#include <QFileInfo>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace cobaltrig {

namespace py = pybind11;
using namespace pools;

namespace {

QString currentPath(QTreeWidget* tree) {
    QTreeWidgetItem* item = tree->currentItem();
    return item ? item->data(0, Qt::UserRole).toString() : QString();
}

// The text of a failure as the user should read it: the Python error's own words, or the C++ one's.
QString failureText() {
    try {
        throw;
    } catch (py::error_already_set& e) {
        return QString::fromStdString(py::str(e.value()));
    } catch (const std::exception& e) {
        return QString::fromUtf8(e.what());
    } catch (...) {
        return QStringLiteral("unknown error");
    }
}

// The file name of an item's path (its last piece), which the search looks in.
QString fileName(const QTreeWidgetItem* item) {
    const QString path = item->data(0, Qt::UserRole).toString();
    auto slash = path.lastIndexOf(QLatin1Char('/'));
    if (separator() != QLatin1Char('/'))
        slash = std::max(slash, path.lastIndexOf(separator()));
    return path.mid(slash + 1);
}

} // namespace

ImportWindow::ImportWindow() : PoolWindow("ImportWindow", QStringLiteral("Import node/toolset")) {
    advanced_settings = siblings::parse_advanced_settings();
    build_ui();
    if (siblings::advanced_text(advanced_settings.get(), "import_window_transparent", "False") ==
        "True")
        setStyleSheet(QStringLiteral("QWidget{ background-color: transparent; }"));
}

void ImportWindow::build_ui() {
    const int icon_size = stored_icon_size();
    create_pool_widgets([this] { return new QLineEdit(this); }, icon_size, false);
    tree->setDragEnabled(true);
    tree->setSelectionMode(QAbstractItemView::SingleSelection);
    tree->setIconSize(QSize(icon_size, icon_size));
    populate_tree();
    push_close = new QPushButton(QStringLiteral("close"), this);

    create_pool_layouts();
    layout_master->addWidget(push_close);
    siblings::set_style_sheet(this);

    create_pool_signals(push_close);
    connect_guarded(tree, &QTreeWidget::doubleClicked, this, "ImportWindow.insert_in_dag",
                    [this] { insert_in_dag(currentPath(tree)); });
    connect_guarded(input_name, &QLineEdit::textChanged, this, "ImportWindow.search_item",
                    [this] { search_item(); });
}

void ImportWindow::populate_tree(const QStringList& expand_list) {
    search_indexed = false;
    search_rows.clear();
    search_categories.clear();
    count_dirItem = fill_pool_tree(
        tree, this, dirlist, combo_pool->toolTip(),
        [&](const QString& name, const QString& root) -> std::optional<DirState> {
            DirState state;
            state.disabled = false;
            state.expanded = name == QLatin1String("nodes") || name == QLatin1String("toolsets") ||
                             expand_list.contains(normalise(join(root, name)));
            return state;
        },
        // The icon table once per build: the tree shows a handful of icons on thousands of items.
        siblings::load_icons());
}

void ImportWindow::index_search() {
    search_rows.clear();
    search_categories.clear();
    search_roots[0] = search_roots[1] = nullptr;
    search_indexed = true;
    QTreeWidgetItem* pool = tree->topLevelItem(0);
    if (!pool)
        return;
    for (int index : {0, 1}) {
        QTreeWidgetItem* root = pool->child(index);
        search_roots[index] = root;
        if (!root)
            continue;
        for (int c = 0; c < root->childCount(); ++c) {
            QTreeWidgetItem* category = root->child(c);
            const std::size_t first = search_rows.size();
            for (int k = 0; k < category->childCount(); ++k) {
                QTreeWidgetItem* child = category->child(k);
                search_rows.push_back({child, fileName(child), child->isHidden()});
            }
            search_categories.push_back({category, first, search_rows.size()});
        }
    }
}

void ImportWindow::search_item() {
    const QString text = input_name->text();
    // The filter works on three fixed levels: the first two folders of the pool (normally nodes
    // and toolsets), their folders, and what those hold. An empty tree, or a pool with fewer than
    // two folders, simply has less to filter: the levels that exist are filtered, and a search
    // never fails on the ones that don't.
    if (!search_indexed)
        index_search();
    // Each keystroke decides every item of a pool of thousands. An item is told only when its
    // state really changes, and the view lays the changes out together once the walk is done.
    bool deferred = false;
    auto change = [&] {
        if (!deferred)
            tree->deferLayout();
        deferred = true;
    };
    auto setHidden = [&](QTreeWidgetItem* item, bool hidden) {
        if (item->isHidden() != hidden) {
            change();
            item->setHidden(hidden);
        }
    };
    auto setExpanded = [&](QTreeWidgetItem* item, bool expanded) {
        if (item->isExpanded() != expanded) {
            change();
            item->setExpanded(expanded);
        }
    };
    for (const SearchCategory& category : search_categories) {
        std::size_t matches = 0;
        for (std::size_t k = category.first; k < category.end; ++k) {
            SearchRow& row = search_rows[k];
            // The file name, extension included: a search for "nk" matches every preset.
            const bool match = text.isEmpty() || row.file_name.contains(text);
            if (row.hidden == match) {
                change();
                row.item->setHidden(!match);
                row.hidden = !match;
            }
            matches += match ? 1 : 0;
        }
        if (text.isEmpty()) {
            // An empty search shows everything again and closes what the search opened.
            setHidden(category.item, false);
            setExpanded(category.item, false);
        } else {
            // A category stays exactly when something in it matches; an item directly below a
            // root has no children and goes with any search.
            setHidden(category.item, matches == 0);
            if (matches > 0)
                setExpanded(category.item, true);
        }
    }
    if (!text.isEmpty())
        for (QTreeWidgetItem* root : search_roots)
            if (root)
                setHidden(root, false);
}

void ImportWindow::set_data() {
    QTreeWidgetItem* item = tree->currentItem();
    if (!item)
        return;
    auto* mime = new QMimeData();
    mime->setText(item->data(0, Qt::UserRole).toString());
    auto* drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->exec(Qt::MoveAction);
}

void ImportWindow::drop_menu() {
    for (QObject* old : std::initializer_list<QObject*>{
             tree_menu, action_insert, action_reveal, action_refresh, action_rename, action_delete})
        if (old)
            old->deleteLater();
    tree_menu = nullptr;
    action_insert = action_reveal = action_refresh = action_rename = action_delete = nullptr;
}

void ImportWindow::create_tree_right_click_menu() {
    // The current item, not the one under the cursor; without one there is nothing to act on.
    if (!tree->currentItem())
        return;
    const QString path = currentPath(tree);

    drop_menu();
    tree_menu = new QMenu(this);
    action_insert = make_action("icon_insert", QStringLiteral("insert in dag"));
    action_reveal = make_action(
        "icon_explorer",
        QStringLiteral("reveal in %1").arg(QString::fromStdString(siblings::get_explorer_name())));
    action_refresh = make_action("icon_refresh", QStringLiteral("refresh"));
    action_rename = make_action("icon_edit", QStringLiteral("rename"));
    action_delete = make_action("icon_delete", QStringLiteral("delete"));

    tree_menu->addAction(action_insert);
    tree_menu->addAction(action_reveal);
    tree_menu->addAction(action_refresh);
    if (siblings::advanced_text(advanced_settings.get(), "items_rename", "True") == "True")
        tree_menu->addAction(action_rename);
    if (siblings::advanced_text(advanced_settings.get(), "items_delete", "True") == "True")
        tree_menu->addAction(action_delete);

    connect_guarded(action_insert, &QAction::triggered, this, "ImportWindow.insert_in_dag",
                    [this, path] { insert_in_dag(path); });
    connect_guarded(action_reveal, &QAction::triggered, this, "ImportWindow.reveal", [this, path] {
        siblings::open_in_explorer(dirName(path).toStdString(), this);
    });
    connect_guarded(action_refresh, &QAction::triggered, this, "ImportWindow.populate_tree",
                    [this] { populate_tree(); });
    connect_guarded(action_rename, &QAction::triggered, this, "ImportWindow.rename_item",
                    [this, path] { rename_item(path); });
    connect_guarded(action_delete, &QAction::triggered, this, "ImportWindow.delete_item",
                    [this, path] { delete_item(path); });

    // Folders get no menu: the test is whether ".nk" stands anywhere in the path.
    if (path.contains(QLatin1String(".nk")))
        tree_menu->popup(QCursor::pos());
}

void ImportWindow::insert_in_dag(const QString& path) {
    if (!QFileInfo(path).isFile()) {
        message(QStringLiteral("The file wasn't found. It doesn't exist anymore."));
        return;
    }
    try {
        // One step of the host's undo however many nodes the preset holds.
        host::UndoGroup step("Insert preset " + QFileInfo(path).completeBaseName().toStdString());
        std::optional<host::GroupContext> context;
        if (paste_group && !paste_group.get().is_none())
            context.emplace(host::Node(paste_group.get()));
        host::nodePaste(path.toStdString());
    } catch (...) {
        message(QStringLiteral("An error occurred. %1").arg(failureText()));
    }
}

void ImportWindow::rename_item(const QString& path) {
    const QString folder = dirName(path);
    const QString current = stem(baseName(path));
    // The dialogs run their own event loops, in which the window may be replaced and deleted.
    const QPointer<ImportWindow> alive(this);
    bool ok = false;
    const QString text =
        QInputDialog::getText(this, QStringLiteral("rename"), QStringLiteral("Rename item: "),
                              QLineEdit::Normal, current, &ok);
    if (!alive || !ok || text.isEmpty())
        return;
    // Refused before anything moves: the preset must stay in its folder, and stay listed.
    const QString problem = presetNameProblem(text);
    if (!problem.isEmpty()) {
        message(problem);
        return;
    }
    // Everything from the first dot on goes: the extension stays ".nk" and no dot is left.
    const QString target =
        join(folder, text.section(QLatin1Char('.'), 0, 0) + QStringLiteral(".nk"));
    try {
        if (target != path) {
            // QFile refuses to rename onto an existing file, so a rename never costs the user
            // another preset; unlike a test of the name beforehand, it still lets "warm" become
            // "Warm" where the file system ignores case.
            QFile file(path);
            if (!file.rename(target))
                throw std::runtime_error(
                    QStringLiteral("%1: '%2'").arg(file.errorString(), path).toStdString());
        }
        populate_tree({folder});
    } catch (...) {
        message(QStringLiteral("An error occured. %1").arg(failureText()));
    }
}

void ImportWindow::delete_item(const QString& path) {
    const QString folder = dirName(path);
    const QString name = stem(baseName(path));
    const QPointer<ImportWindow> alive(this);
    if (!siblings::ask_dialog("Confirm deletion",
                              QStringLiteral("Delete '%1'?").arg(name).toStdString(),
                              QStringLiteral("delete %1").arg(name).toStdString(), "45,0,0") ||
        !alive)
        return;
    try {
        const QFileInfo info(path);
        if (info.isDir())
            throw std::runtime_error(
                QStringLiteral("Is a directory: '%1'").arg(path).toStdString());
        QFile file(path);
        if (!file.remove())
            throw std::runtime_error(
                QStringLiteral("%1: '%2'").arg(file.errorString(), path).toStdString());
        populate_tree({folder});
    } catch (...) {
        message(QStringLiteral("An error occured. %1").arg(failureText()));
    }
}

} // namespace cobaltrig
