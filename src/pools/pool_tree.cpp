#include "pools/pool_tree.h"

#include "frame/qt_bridge.h"
#include "frame/siblings.h"
#include "pools/pool_paths.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QTreeWidget>
#include <QTreeWidgetItem>

namespace cobaltrig::pools {

namespace py = pybind11;

namespace {

std::string icon_for(const QString& name, const std::map<std::string, std::string>& icons) {
    const char* key = name == QLatin1String("nodes")      ? "icon_nodes"
                      : name == QLatin1String("toolsets") ? "icon_toolsets"
                                                          : nullptr;
    if (!key)
        return {};
    auto it = icons.find(key);
    return it == icons.end() ? std::string() : it->second;
}

std::string icon_value(const std::map<std::string, std::string>& icons, const char* key) {
    auto it = icons.find(key);
    return it == icons.end() ? std::string() : it->second;
}

} // namespace

int fill_pool_tree(QTreeWidget* tree, QWidget* window, DirItems& dirlist, const QString& pool_path,
                   const DirRule& rule, const IconSource& icons) {
    tree->clear();
    tree->header()->close();
    dirlist.clear();
    if (!QFileInfo(pool_path).isDir())
        return 0;

    const QString pool = normalise(pool_path);
    py::object top = siblings::build_tree_item(bridge::wrap(tree), lastPiece(pool).toStdString(),
                                               pool.toStdString(), false, false, std::nullopt, true,
                                               icon_value(icons(), "icon_pool"));
    if (QTreeWidgetItem* item = bridge::unwrapTreeItem(top))
        item->setExpanded(true);
    tree->setRootIsDecorated(false);
    dirlist.insert(pool, top);

    int count = 0;
    walk(pool, [&](const WalkStep& step) {
        const QString root = normalise(step.root);
        const auto parent = dirlist.constFind(root);
        QStringList descend;
        // A directory without an item has nothing to show below it (the walk is pruned there).
        if (parent == dirlist.constEnd())
            return descend;
        const py::object parent_item = parent.value();
        for (const QString& name : step.dirs) {
            if (isHiddenDir(name))
                continue;
            const std::optional<DirState> state = rule(name, root);
            if (!state)
                continue;
            const QString path = normalise(join(root, name));
            py::object item = siblings::build_tree_item(
                parent_item, name.toStdString(), path.toStdString(), state->disabled,
                state->selected, state->expanded, true, icon_for(name, icons()));
            // When several folders are selected, the last one visited stays current.
            if (state->selected)
                tree->setCurrentItem(bridge::unwrapTreeItem(item));
            dirlist.insert(path, item);
            ++count;
            descend << name;
        }
        for (const QString& file : step.files)
            if (isPresetFile(file))
                siblings::build_tree_item(parent_item, presetLabel(file).toStdString(),
                                          join(root, file).toStdString(), false, false,
                                          std::nullopt, std::nullopt, std::nullopt);
        return descend;
    });
    window->resize(600, 400 + 10 * count);
    return count;
}

py::dict dir_items_to_python(const DirItems& dirlist) {
    py::dict result;
    for (auto it = dirlist.constBegin(); it != dirlist.constEnd(); ++it)
        result[py::str(it.key().toStdString())] = it.value();
    return result;
}

} // namespace cobaltrig::pools
