"""The two pool windows written in PySide (PySide2 or PySide6, as the build), as the yardstick for
the compiled ones.

Same widgets, same settings reads, same walk, marking rules, labels, icons and search results. Two
ways of writing it:

* plain (`ImportWindow`, `ExportWindow`): the steps as a PySide developer writes them down,
  each item made in the visible tree and told its state at once, each search step applied as it
  comes (an item may be hidden and shown again within one keystroke);
* tuned (`TunedImportWindow`, `TunedExportWindow`): the same techniques as the compiled module, a
  detached tree handed to the view in one insertion, an item told only when its state changes, one
  layout per keystroke.

Both read the icon table once per build and share one QIcon per image. `bench/pools.py` prints
the compiled module against both, so what the language gains and what the technique gains can be
told apart. Not a product file: no menus, no actions, no writing.
"""

import os

from cobaltRig.qt import QtCore, QtGui, QtWidgets

from cobaltRig import helper


def _normalise(path):
    return path.replace(os.sep, "/")


def _last_piece(path):
    return path.split("/")[-1]


def _is_preset(name):
    return os.path.splitext(name)[1] == ".nk"


class _Maker:
    """Items of one build, made detached; expansion and selection once they are in the view."""

    def __init__(self, tree, icons):
        self.tree = tree
        self.folder = icons.get("icon_folder", "")
        self.preset = icons.get("icon_preset", "")
        self.icons = {}
        self.top = None
        self.expanded, self.current = [], []

    def icon(self, path):
        icon = self.icons.get(path)
        if icon is None:
            icon = self.icons[path] = QtGui.QIcon(path)
        return icon

    def make(self, parent, label, path, disabled, expanded=False, is_dir=False, icon=None, selected=False):
        if parent is None:
            item = self.top = QtWidgets.QTreeWidgetItem([label])
        else:
            item = QtWidgets.QTreeWidgetItem(parent, [label])
        item.setData(0, QtCore.Qt.UserRole, path)
        item.setIcon(0, self.icon(icon or (self.folder if is_dir else self.preset)))
        item.setDisabled(disabled)
        if expanded:
            self.expanded.append(item)
        if selected:
            self.current.append(item)
        return item

    def expand(self, item):
        self.expanded.append(item)

    def make_current(self, item):
        pass  # made current in finish(), with the selection

    def finish(self):
        # Rows of one height, as the compiled module has them when every image has one size.
        sizes = set((icon.actualSize(QtCore.QSize(40, 40)).width(), icon.actualSize(QtCore.QSize(40, 40)).height())
                    for icon in self.icons.values())
        self.tree.setUniformRowHeights(len(sizes) == 1)
        self.tree.addTopLevelItem(self.top)
        for item in self.expanded:
            item.setExpanded(True)
        for item in self.current:
            item.setSelected(True)
            self.tree.setCurrentItem(item)


class _PlainMaker(_Maker):
    """Items made straight in the tree, each told its state as it is made."""

    def make(self, parent, label, path, disabled, expanded=False, is_dir=False, icon=None, selected=False):
        item = QtWidgets.QTreeWidgetItem(self.tree if parent is None else parent, [label])
        item.setData(0, QtCore.Qt.UserRole, path)
        item.setIcon(0, self.icon(icon or (self.folder if is_dir else self.preset)))
        item.setDisabled(disabled)
        item.setSelected(selected)
        item.setExpanded(expanded)
        return item

    def expand(self, item):
        item.setExpanded(True)

    def make_current(self, item):
        self.tree.setCurrentItem(item)

    def finish(self):
        pass


def fill_pool_tree(window, rule, icons):
    """The walk and the items both windows share; returns the number of folder items."""
    tree = window.tree
    tree.clear()
    tree.header().close()
    window.dirlist = {}
    pool_path = window.combo_pool.toolTip()
    if not os.path.isdir(pool_path):
        return 0
    maker = (_Maker if window.tuned else _PlainMaker)(tree, icons)
    pool = _normalise(pool_path)
    top = maker.make(None, _last_piece(pool), pool, False, is_dir=True, icon=icons.get("icon_pool"))
    maker.expand(top)
    tree.setRootIsDecorated(False)
    window.dirlist[pool] = top
    count = 0
    for walked, dirs, files in os.walk(pool):
        root = _normalise(walked)
        parent = window.dirlist.get(root)
        descend = []
        if parent is not None:
            for name in dirs:
                if name.startswith("."):
                    continue
                state = rule(name, root)
                if state is None:
                    continue
                disabled, selected, expanded = state
                path = _normalise(os.path.join(root, name))
                icon = {"nodes": icons.get("icon_nodes"), "toolsets": icons.get("icon_toolsets")}.get(name)
                item = maker.make(parent, name, path, disabled, expanded, True, icon, selected)
                if selected:
                    maker.make_current(item)
                window.dirlist[path] = item
                count += 1
                descend.append(name)
            for name in files:
                if _is_preset(name):
                    maker.make(parent, name.replace(".nk", ""), os.path.join(root, name), False)
        dirs[:] = [name for name in dirs if name in descend and not os.path.islink(os.path.join(walked, name))]
    maker.finish()
    window.resize(600, 400 + 10 * count)
    return count


class _Tree(QtWidgets.QTreeWidget):
    def defer_layout(self):
        self.scheduleDelayedItemsLayout()


class _PoolWindow(QtWidgets.QWidget):
    title = ""
    tuned = False

    def __init__(self):
        super().__init__()
        self.setMinimumWidth(600)
        self.setWindowFlags(QtCore.Qt.WindowStaysOnTopHint)
        self.dirlist, self.count_dirItem = {}, 0
        self.setWindowTitle(self.title)
        self.settings = helper.load_settings()
        self.icons = helper.load_icons()

    def build_ui(self):
        self.label_name = QtWidgets.QLabel("name: ", self)
        self.input_name = QtWidgets.QLineEdit(self)
        self.slider_size = QtWidgets.QSlider(QtCore.Qt.Horizontal, self)
        self.slider_size.setMinimum(5)
        self.slider_size.setMaximum(40)
        self.slider_size.setFixedHeight(20)
        self.slider_size.setValue(int(helper.load_settings().get("icon_size") or 16))
        self.combo_pool = QtWidgets.QComboBox(self)
        pools = self.settings.get("pools") or {}
        for name in pools:
            self.combo_pool.addItem(name)
        index = self.combo_pool.findText(self.settings.get("current_pool") or "")
        if index >= 0:
            self.combo_pool.setCurrentIndex(index)
            self.combo_pool.setToolTip(pools.get(self.combo_pool.currentText(), ""))
        self.tree = _Tree(self)
        self.tree.setColumnCount(1)
        self.tree.setContextMenuPolicy(QtCore.Qt.CustomContextMenu)
        self.configure_tree()
        self.populate_tree()
        self.push_close = QtWidgets.QPushButton("close", self)
        self.layout_top = QtWidgets.QHBoxLayout()
        self.layout_top.addWidget(self.label_name, 1)
        self.layout_top.addWidget(self.input_name, 6)
        self.layout_top.addWidget(self.slider_size, 2)
        self.layout_master = QtWidgets.QVBoxLayout(self)
        self.layout_master.addLayout(self.layout_top)
        self.layout_master.addWidget(self.combo_pool)
        self.layout_master.addWidget(self.tree)
        self.layout_master.addWidget(self.push_close)
        helper.set_style_sheet(self)

    def configure_tree(self):
        pass


class ImportWindow(_PoolWindow):
    title = "Import node/toolset"

    def __init__(self):
        super().__init__()
        self.advanced_settings = helper.parse_advanced_settings()
        self.build_ui()
        self.input_name.textChanged.connect(self.search_item)

    def configure_tree(self):
        size = self.slider_size.value()
        self.tree.setDragEnabled(True)
        self.tree.setSelectionMode(QtWidgets.QAbstractItemView.SingleSelection)
        self.tree.setIconSize(QtCore.QSize(size, size))

    def populate_tree(self, expand_list=()):
        def rule(name, root):
            expanded = name in ("nodes", "toolsets") or _normalise(os.path.join(root, name)) in expand_list
            return False, False, expanded

        self.count_dirItem = fill_pool_tree(self, rule, helper.load_icons())

    def search_item(self, *args):
        text = self.input_name.text()
        pool = self.tree.topLevelItem(0)
        if pool is None:
            return
        if self.tuned:
            return self._tuned_search(text, pool)
        for index in (0, 1):
            root = pool.child(index)
            if root is None:
                continue
            if text:
                for c in range(root.childCount()):
                    category = root.child(c)
                    count = 0
                    for k in range(category.childCount()):
                        child = category.child(k)
                        if text in os.path.basename(child.data(0, QtCore.Qt.UserRole)):
                            category.setHidden(False)
                            child.setHidden(False)
                            count += 1
                        else:
                            category.setHidden(True)
                            child.setHidden(True)
                    if count == 0:
                        category.setHidden(True)
                    else:
                        category.setHidden(False)
                        category.setExpanded(True)
                root.setHidden(False)
            else:
                for c in range(root.childCount()):
                    category = root.child(c)
                    for k in range(category.childCount()):
                        category.child(k).setHidden(False)
                    category.setHidden(False)
                    category.setExpanded(False)

    def _tuned_search(self, text, pool):
        deferred = []

        def change():
            if not deferred:
                self.tree.defer_layout()
                deferred.append(True)

        def set_hidden(item, hidden):
            if item.isHidden() != hidden:
                change()
                item.setHidden(hidden)

        def set_expanded(item, expanded):
            if item.isExpanded() != expanded:
                change()
                item.setExpanded(expanded)

        for index in (0, 1):
            root = pool.child(index)
            if root is None:
                continue
            for c in range(root.childCount()):
                category = root.child(c)
                matches = 0
                for k in range(category.childCount()):
                    child = category.child(k)
                    match = not text or text in os.path.basename(child.data(0, QtCore.Qt.UserRole))
                    set_hidden(child, not match)
                    matches += match
                if not text:
                    set_hidden(category, False)
                    set_expanded(category, False)
                else:
                    set_hidden(category, matches == 0)
                    if matches:
                        set_expanded(category, True)
            if text:
                set_hidden(root, False)


class ExportWindow(_PoolWindow):
    def __init__(self, node):
        self.node = node
        self.title = "Export {} look".format(node.Class())
        super().__init__()
        self.build_ui()

    def populate_tree(self):
        node_class = self.node.Class()
        hide = self.settings.get("hide_disabled_items") == "True"

        def rule(name, root):
            disabled, selected, expanded = name not in ("nodes", "toolsets"), False, False
            if name == "nodes":
                disabled, expanded = False, True
            if name == node_class:
                disabled, selected, expanded = False, True, True
            if _last_piece(root) == "toolsets":
                disabled = False
            if hide and disabled:
                return None
            return disabled, selected, expanded

        self.count_dirItem = fill_pool_tree(self, rule, self.icons)



class TunedImportWindow(ImportWindow):
    tuned = True


class TunedExportWindow(ExportWindow):
    tuned = True
