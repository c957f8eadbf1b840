#pragma once
// Filling a tree widget from a pool directory: the part the export and the import tree share. The
// windows decide how each folder is marked; the walk, the items and the window height are here.

#include "pools/pool_walk.h"

#include <pybind11/pybind11.h>

#include <QHash>
#include <QString>

#include <functional>
#include <map>
#include <optional>
#include <string>

class QTreeWidget;
class QWidget;

namespace cobaltrig::pools {

/// The directory items of a tree by normalised path, as PySide2 items.
using DirItems = QHash<QString, pybind11::object>;

/// The marks of the subdirectory `name` of `root`, or nothing when it gets no item.
using DirRule = std::function<std::optional<DirState>(const QString& name, const QString& root)>;

/// The icon paths by key, read when a directory item is made.
using IconSource = std::function<std::map<std::string, std::string>()>;

/// Clears `tree` and fills it from the directory `pool_path`: the pool item (expanded), then every
/// directory that `rule` gives an item to, below a directory that has one, and every preset file in
/// such a directory. `window` is resized to width 600 and height 400 plus 10 per directory item.
/// Returns the number of directory items below the pool item; nothing happens to `window` when the
/// pool path is no directory, and the tree stays empty.
int fill_pool_tree(QTreeWidget* tree, QWidget* window, DirItems& dirlist, const QString& pool_path,
                   const DirRule& rule, const IconSource& icons);

/// Python's view of the directory items.
pybind11::dict dir_items_to_python(const DirItems& dirlist);

} // namespace cobaltrig::pools
