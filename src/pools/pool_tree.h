#pragma once
// Filling a tree widget from a pool directory: the part the export and the import tree share. The
// windows decide how each folder is marked; the walk, the items and the window height are here.
//
// Pools shared by whole teams hold tens of thousands of presets, so the items are made here in C++
// and never cross into Python one by one. `helper.build_tree_widget_item` stays the public way to
// make such an item: it dresses its item through `dress_tree_item` below, and when a studio has
// replaced it, the trees call the replacement for every item instead.

#include "pools/pool_walk.h"

#include <pybind11/pybind11.h>

#include <QHash>
#include <QString>
#include <QTreeWidget>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

class QIcon;
class QTreeWidgetItem;
class QWidget;

namespace cobaltrig::pools {

/// A tree widget that can be told a batch of changes is coming. Qt keeps a view's layout up to date
/// item by item, and opening one folder of a visible tree moves every row below it; a search that
/// opens two hundred folders and hides thousands of presets asks for one layout afterwards instead.
class PoolTreeWidget : public QTreeWidget {
public:
    using QTreeWidget::QTreeWidget;
    /// Until the next layout, changes to items are recorded only, and laid out together.
    void deferLayout() { scheduleDelayedItemsLayout(); }
};

/// The directory items of a tree by normalised path.
struct DirItems {
    QHash<QString, QTreeWidgetItem*> items;
    /// The Python objects of items that a replaced `helper.build_tree_widget_item` made, held as
    /// long as the tree holds their items.
    std::vector<pybind11::object> python_items;

    void clear();
    /// Lets go of the Python objects without touching Python (after the interpreter has gone).
    void abandon();
};

/// The marks of the subdirectory `name` of `root`, or nothing when it gets no item.
using DirRule = std::function<std::optional<DirState>(const QString& name, const QString& root)>;

/// Icon key to image path, as `helper.load_icons()` gives it.
using IconTable = std::map<std::string, std::string>;

/// Sets what a pool tree item shows and carries: `path` as its data, its icon, and whether it is
/// disabled, selected and expanded. The one place that decides how a pool tree item looks; a
/// disabled directory disables what lies below it, as Qt does.
void dress_tree_item(QTreeWidgetItem* item, const QString& path, bool disabled, bool selected,
                     bool expanded, const QIcon& icon);

/// Clears `tree` and fills it from the directory `pool_path`: the pool item (expanded), then every
/// directory that `rule` gives an item to, below a directory that has one, and every preset file in
/// such a directory. `icons` is the table read for this build. `window` is resized to width 600
/// and height 400 plus 10 per directory item. Returns the number of directory items below the pool
/// item; nothing happens to `window` when the pool path is no directory, and the tree stays empty.
int fill_pool_tree(QTreeWidget* tree, QWidget* window, DirItems& dirlist, const QString& pool_path,
                   const DirRule& rule, const IconTable& icons);

/// Empties `tree`. Python objects that still stand for its items are told their items are gone, so
/// that a script holding one gets Python's "already deleted" error instead of freed memory.
void clear_pool_tree(QTreeWidget* tree);

/// The PySide object of an item (the same object each time while the item lives).
pybind11::object wrap_item(QTreeWidgetItem* item);

/// Python's view of the directory items.
pybind11::dict dir_items_to_python(const DirItems& dirlist);

} // namespace cobaltrig::pools
