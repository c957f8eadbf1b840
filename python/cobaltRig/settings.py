"""The settings window of cobaltRig and the panel that adds a preset pool.

Both edit the settings store through ``helper``; the snapshot browser keeps its own settings on
its own panel.
"""

import os

from .qt import QtCore, QtGui, QtWidgets, exec_dialog

from . import helper

NEW_POOL_ENTRY = "-- new pool --"

# Switches of the settings store that this window edits, with their labels.
SWITCHES = (
    ("look_icons", "pictures on new look buttons"),
    ("release_hotkey_closes_slider", "releasing E closes the look slider"),
    ("hide_disabled_items", "hide folders that don't fit an export"),
    ("tooltips", "tool tips in the snapshot browser"),
)

# Keeps a panel opened without a parent alive while it is shown.
_panels = []


def store_new_pool(name, path):
    """Check a new pool, make its directory and store it; returns the stored (name, path).

    Raises ValueError with the text to show the user when the pool can't be added.
    """
    name = (name or "").strip()
    path = (path or "").strip()
    if not name:
        raise ValueError("Please enter a name for the pool.")
    if name == NEW_POOL_ENTRY:
        raise ValueError("'{}' is a reserved name. Please choose a different name.".format(name))
    if name in helper.load_settings()["pools"]:
        raise ValueError("A pool named '{}' already exists. Please choose a different name.".format(name))
    if not path:
        raise ValueError("Please choose a directory for the pool.")
    path = os.path.abspath(os.path.expanduser(path))
    if os.path.exists(path) and not os.path.isdir(path):
        raise ValueError("'{}' is a file, not a directory.".format(path))
    try:
        # The standard layout: the export window's folders for single nodes and toolsets hang
        # below these two, and categories can only be made inside "toolsets".
        for sub in ("nodes", "toolsets"):
            folder = os.path.join(path, sub)
            if not os.path.isdir(folder):
                os.makedirs(folder)
    except OSError as error:
        raise ValueError("Cannot create the pool directory. {}".format(error))
    try:
        helper.add_pool(name, path)
    except helper.NotSavedError as error:
        raise ValueError(str(error))
    return name, path


def _combo_of(exportwindow):
    try:
        return exportwindow.combo_pool
    except Exception:
        return None


def show_new_pool_in_window(exportwindow, name):
    """Put a freshly stored pool into the window's pool box, before the "new pool" entry, and
    select it; the window's own reaction to the change then shows the pool's tree and stores it
    as the current pool. An export window also gets the folder of its node's class there, so the
    export can go straight into the new pool."""
    combo = _combo_of(exportwindow)
    if combo is None:
        return
    index = combo.findText(NEW_POOL_ENTRY)
    if index < 0:
        index = combo.count()
    # The insertion alone moves the current index while the box still shows the "new pool"
    # entry; that must not reach the window, which would open this panel once more.
    blocked = combo.blockSignals(True)
    try:
        combo.insertItem(index, name)
    finally:
        combo.blockSignals(blocked)
    combo.setCurrentIndex(index)
    build_nodes_dir = getattr(exportwindow, "build_nodes_dir", None)
    if build_nodes_dir is not None:
        build_nodes_dir()


def _restore_previous_pool(exportwindow):
    """After a cancel, go back from the "new pool" entry to the pool whose tree is on show."""
    combo = _combo_of(exportwindow)
    if combo is None or combo.currentText() != NEW_POOL_ENTRY:
        return
    shown = combo.toolTip()
    for name, path in helper.load_settings()["pools"].items():
        index = combo.findText(name)
        if path == shown and index >= 0:
            combo.setCurrentIndex(index)
            return


class NewPoolPanel(QtWidgets.QDialog):
    """Asks for a pool name and its directory; stores the pool on OK."""

    def __init__(self, parent=None):
        super(NewPoolPanel, self).__init__(parent)
        self.setWindowTitle("new pool")
        self.setWindowFlags(self.windowFlags() | QtCore.Qt.WindowStaysOnTopHint)
        self.setMinimumWidth(480)
        self.pool = None
        self.build_ui()

    def build_ui(self):
        self.create_widgets()
        self.create_layouts()
        self.create_signals()
        helper.set_style_sheet(self)

    def create_widgets(self):
        self.label_name = QtWidgets.QLabel("name:")
        self.input_name = QtWidgets.QLineEdit()
        self.label_path = QtWidgets.QLabel("directory:")
        self.input_path = QtWidgets.QLineEdit()
        self.push_browse = QtWidgets.QToolButton()
        self.push_browse.setIcon(QtGui.QIcon(helper.load_icons()["icon_folder"]))
        self.push_save = QtWidgets.QPushButton("add pool")
        self.push_save.setObjectName("actionButton")
        self.push_save.setDefault(True)
        self.push_cancel = QtWidgets.QPushButton("cancel")

    def create_layouts(self):
        self.layout_fields = QtWidgets.QGridLayout()
        self.layout_fields.addWidget(self.label_name, 0, 0)
        self.layout_fields.addWidget(self.input_name, 0, 1, 1, 2)
        self.layout_fields.addWidget(self.label_path, 1, 0)
        self.layout_fields.addWidget(self.input_path, 1, 1)
        self.layout_fields.addWidget(self.push_browse, 1, 2)
        self.layout_push = QtWidgets.QHBoxLayout()
        self.layout_push.addStretch(1)
        self.layout_push.addWidget(self.push_save)
        self.layout_push.addWidget(self.push_cancel)
        self.layout_master = QtWidgets.QVBoxLayout(self)
        self.layout_master.addLayout(self.layout_fields)
        self.layout_master.addLayout(self.layout_push)

    def create_signals(self):
        self.push_browse.clicked.connect(self.browse_directory)
        self.push_save.clicked.connect(self.save_pool)
        self.push_cancel.clicked.connect(self.reject)

    def browse_directory(self, *args):
        start = self.input_path.text() or os.path.expanduser("~")
        path = QtWidgets.QFileDialog.getExistingDirectory(self, "pool directory", start)
        if path:
            self.input_path.setText(path)

    def save_pool(self, *args):
        try:
            self.pool = store_new_pool(self.input_name.text(), self.input_path.text())
        except ValueError as error:
            helper.show_message_box(self, str(error))
            return
        self.accept()


def show_panel_new_pool(parent=None, exportwindow=None):
    """Ask for a new pool and store it; returns its name, or None when the user cancelled.

    With ``exportwindow`` (a window offering ``combo_pool``), the new pool is put into that
    window's pool box and selected; a cancel takes the box back to the pool on show.
    """
    if parent is None and exportwindow is not None:
        combo = _combo_of(exportwindow)
        parent = combo.window() if combo is not None else None
    if not isinstance(parent, QtWidgets.QWidget):
        parent = None
    panel = NewPoolPanel(parent)
    _panels.append(panel)
    try:
        accepted = exec_dialog(panel) == QtWidgets.QDialog.DialogCode.Accepted
    finally:
        _panels.remove(panel)
    if not accepted or panel.pool is None:
        if exportwindow is not None:
            _restore_previous_pool(exportwindow)
        return None
    name = panel.pool[0]
    if exportwindow is not None:
        show_new_pool_in_window(exportwindow, name)
    return name


class Settings(QtWidgets.QWidget):
    """The settings window: preset pools and the switches of the settings store."""

    def __init__(self):
        super(Settings, self).__init__()
        self.setWindowTitle("cobaltRig settings")
        self.setWindowFlags(QtCore.Qt.WindowStaysOnTopHint)
        self.setMinimumWidth(560)
        self.settings = helper.load_settings()
        self.icons = helper.load_icons()
        self.build_ui()
        self.populate_pools()

    def build_ui(self):
        self.create_widgets()
        self.create_layouts()
        self.create_signals()
        self.create_tooltips()
        helper.set_style_sheet(self)

    def create_widgets(self):
        self.group_pools = QtWidgets.QGroupBox("preset pools")
        self.tree_pools = QtWidgets.QTreeWidget()
        self.tree_pools.setColumnCount(2)
        self.tree_pools.setHeaderLabels(["name", "directory"])
        self.tree_pools.setRootIsDecorated(False)
        self.tree_pools.setSelectionMode(QtWidgets.QAbstractItemView.SingleSelection)
        self.push_add_pool = QtWidgets.QPushButton(QtGui.QIcon(self.icons["icon_plus"]), "add pool")
        self.push_remove_pool = QtWidgets.QPushButton(QtGui.QIcon(self.icons["icon_delete"]), "remove pool")
        self.push_reveal_pool = QtWidgets.QPushButton(
            QtGui.QIcon(self.icons["icon_explorer"]), "reveal in {}".format(helper.get_explorer_name())
        )

        self.group_switches = QtWidgets.QGroupBox("general")
        self.checks = {}
        for key, label in SWITCHES:
            check = QtWidgets.QCheckBox(label)
            check.setChecked(self.settings.get(key) == "True")
            self.checks[key] = check
        self.label_presetnodes_ignore = QtWidgets.QLabel("classes without looks:")
        self.input_presetnodes_ignore = QtWidgets.QLineEdit(self.settings.get("presetnodes_ignore") or "")
        self.label_icon_size = QtWidgets.QLabel("tree icon size:")
        self.spin_icon_size = QtWidgets.QSpinBox()
        self.spin_icon_size.setRange(5, 40)
        try:
            self.spin_icon_size.setValue(int(self.settings.get("icon_size") or 20))
        except ValueError:
            self.spin_icon_size.setValue(20)

        self.label_file = QtWidgets.QLabel(helper.get_settings_xml())
        self.label_file.setObjectName("plain")
        self.label_file.setTextInteractionFlags(QtCore.Qt.TextSelectableByMouse)
        self.push_save = QtWidgets.QPushButton("save")
        self.push_save.setObjectName("actionButton")
        self.push_close = QtWidgets.QPushButton("close")

    def create_layouts(self):
        self.layout_pool_push = QtWidgets.QHBoxLayout()
        self.layout_pool_push.addWidget(self.push_add_pool)
        self.layout_pool_push.addWidget(self.push_remove_pool)
        self.layout_pool_push.addStretch(1)
        self.layout_pool_push.addWidget(self.push_reveal_pool)
        self.layout_pools = QtWidgets.QVBoxLayout(self.group_pools)
        self.layout_pools.addWidget(self.tree_pools)
        self.layout_pools.addLayout(self.layout_pool_push)

        self.layout_switches = QtWidgets.QGridLayout(self.group_switches)
        row = 0
        for key, _label in SWITCHES:
            self.layout_switches.addWidget(self.checks[key], row, 0, 1, 2)
            row += 1
        self.layout_switches.addWidget(self.label_presetnodes_ignore, row, 0)
        self.layout_switches.addWidget(self.input_presetnodes_ignore, row, 1)
        self.layout_switches.addWidget(self.label_icon_size, row + 1, 0)
        self.layout_switches.addWidget(self.spin_icon_size, row + 1, 1, QtCore.Qt.AlignLeft)

        self.layout_push = QtWidgets.QHBoxLayout()
        self.layout_push.addWidget(self.label_file, 1)
        self.layout_push.addWidget(self.push_save)
        self.layout_push.addWidget(self.push_close)

        self.layout_master = QtWidgets.QVBoxLayout(self)
        self.layout_master.addWidget(self.group_pools, 1)
        self.layout_master.addWidget(self.group_switches)
        self.layout_master.addLayout(self.layout_push)

    def create_signals(self):
        self.push_add_pool.clicked.connect(self.add_pool)
        self.push_remove_pool.clicked.connect(self.remove_pool)
        self.push_reveal_pool.clicked.connect(self.reveal_pool)
        self.push_save.clicked.connect(self.save_settings)
        self.push_close.clicked.connect(self.close)

    def create_tooltips(self):
        for widget, key in (
            (self.tree_pools, "pools"),
            (self.push_add_pool, "add_pool"),
            (self.push_remove_pool, "remove_pool"),
            (self.input_presetnodes_ignore, "presetnodes_ignore"),
            (self.spin_icon_size, "icon_size"),
        ):
            widget.setProperty("tt", key)
        for key, check in self.checks.items():
            check.setProperty("tt", key)
        helper.load_tooltips(self, "settings")

    def populate_pools(self):
        self.tree_pools.clear()
        for name, path in helper.load_settings()["pools"].items():
            item = QtWidgets.QTreeWidgetItem(self.tree_pools, [name, path])
            item.setData(0, QtCore.Qt.UserRole, path)
            if not os.path.isdir(path):
                item.setForeground(1, QtGui.QBrush(QtGui.QColor("#d9534f")))
                item.setToolTip(1, "This directory doesn't exist.")
        self.tree_pools.resizeColumnToContents(0)

    def selected_pool(self):
        item = self.tree_pools.currentItem()
        return None if item is None else item.text(0)

    def add_pool(self, *args):
        if show_panel_new_pool(self) is not None:
            self.populate_pools()

    def remove_pool(self, *args):
        name = self.selected_pool()
        if name is None:
            helper.show_message_box(self, "Please select a pool.")
            return
        if not helper.ask_dialog(
            "Remove pool",
            "Remove the pool '{}' from the list? Its directory and presets stay on disk.".format(name),
            process_label="remove {}".format(name),
            color_process="45,0,0",
        ):
            return
        try:
            helper.remove_pool(name)
        except helper.NotSavedError as error:
            helper.show_message_box(self, str(error))
            return
        self.populate_pools()

    def reveal_pool(self, *args):
        item = self.tree_pools.currentItem()
        if item is None:
            helper.show_message_box(self, "Please select a pool.")
            return
        helper.open_in_explorer(item.data(0, QtCore.Qt.UserRole), parent=self)

    def collect_values(self):
        values = dict((key, "True" if check.isChecked() else "False") for key, check in self.checks.items())
        values["presetnodes_ignore"] = self.input_presetnodes_ignore.text()
        values["icon_size"] = str(self.spin_icon_size.value())
        return values

    def save_settings(self, *args):
        try:
            helper.update_settings(self.collect_values())
        except helper.NotSavedError as error:
            # The window stays open with the user's choices, so nothing they entered is lost.
            helper.show_message_box(self, str(error))
            return
        self.settings = helper.load_settings()
        self.close()

    def keyPressEvent(self, event):
        if event.key() == QtCore.Qt.Key_Escape:
            self.close()
            return
        super(Settings, self).keyPressEvent(event)
