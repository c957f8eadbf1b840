"""The demo host's main window: viewer, node graph, properties bin and console, with the host's menus.

The window polls the script a few times a second and mirrors what changed, so that whatever changes
the graph (a button's command, a window of the add-on, a scenario) shows without telling anyone.
"""

import os
import sys
import traceback

import nuke
from cobaltRig.qt import QtCore, QtGui, QtWidgets

from .console import ConsolePane
from .graph_view import GraphView
from .properties import PropertiesBin, find_icon, report_failure
from .viewer import ViewerPane

TITLE = "cobaltRig demo host"
POLL_MS = 250

# Node classes the Nodes menu offers, with the names the host's menu shows.
NODE_MENU = (
    ("Image/Constant", "Constant"), ("Image/ColorBars", "ColorBars"),
    ("Image/CheckerBoard", "CheckerBoard2"), ("Image/Read", "Read"), ("Image/Write", "Write"),
    ("Color/Grade", "Grade"), ("Filter/Blur", "Blur"), ("Transform/Transform", "Transform"),
    ("Transform/Reformat", "Reformat"), ("Merge/Merge", "Merge2"), ("Merge/Switch", "Switch"),
    ("Other/Dot", "Dot"), ("Other/NoOp", "NoOp"), ("Other/Backdrop", "BackdropNode"),
    ("Other/Group", "Group"), ("Viewer", "Viewer"),
)


def host_shortcut(text):
    """A shortcut in the host's menu form ("alt+shift+L") as a QKeySequence."""
    parts = [p for p in (text or "").split("+") if p]
    named = {"alt": "Alt", "shift": "Shift", "ctrl": "Ctrl", "meta": "Meta", "cmd": "Ctrl"}
    return QtGui.QKeySequence("+".join(named.get(p.lower(), p) for p in parts))


class DemoHost(QtWidgets.QMainWindow):
    def __init__(self, capture_output=True, parent=None):
        super().__init__(parent)
        self.setObjectName("demo_host")
        self.resize(1440, 860)
        self._pending = False
        self._last_failure = None

        self.viewer = ViewerPane(self)
        self.graph = GraphView(self)
        self.properties = PropertiesBin(self)
        self.console = ConsolePane()
        left = QtWidgets.QSplitter(QtCore.Qt.Vertical)
        left.addWidget(self.viewer)
        left.addWidget(self.graph)
        left.setSizes([480, 380])
        right = QtWidgets.QSplitter(QtCore.Qt.Vertical)
        right.addWidget(self.properties)
        right.addWidget(self.console)
        right.setSizes([640, 220])
        main = QtWidgets.QSplitter(QtCore.Qt.Horizontal)
        main.addWidget(left)
        main.addWidget(right)
        main.setSizes([900, 540])
        self.setCentralWidget(main)
        self.statusBar().showMessage("Double-click a node for its properties; the add-on is in the "
                                     "cobaltRig menu.")

        self.build_menus()
        if capture_output:
            self.console.capture()
        self.timer = QtCore.QTimer(self)
        self.timer.timeout.connect(self.sync)
        self.timer.start(POLL_MS)
        self.sync()

    # -- menus ---------------------------------------------------------------------------------
    def new_menu(self, parent, title):
        """A menu parented and referenced here, so Python never owns (and deletes) it."""
        menu = QtWidgets.QMenu(title, parent)
        parent.addMenu(menu)
        self.menus.append(menu)
        return menu

    def build_menus(self):
        self.menus = []
        bar = self.menuBar()
        file_menu = self.new_menu(bar, "&File")
        self.add_action(file_menu, "&New", self.file_new, QtGui.QKeySequence.New)
        self.add_action(file_menu, "&Open...", self.file_open, QtGui.QKeySequence.Open)
        self.add_action(file_menu, "&Save", self.file_save, QtGui.QKeySequence.Save)
        self.add_action(file_menu, "Save &As...", self.file_save_as, QtGui.QKeySequence.SaveAs)
        file_menu.addSeparator()
        self.add_action(file_menu, "&Quit", self.close, QtGui.QKeySequence.Quit)

        edit = self.new_menu(bar, "&Edit")
        self.action_undo = self.add_action(edit, "&Undo", nuke.undo, QtGui.QKeySequence("Ctrl+Z"))
        self.action_redo = self.add_action(edit, "&Redo", nuke.redo,
                                           QtGui.QKeySequence("Ctrl+Shift+Z"))
        edit.aboutToShow.connect(self.name_undo_actions)
        edit.addSeparator()
        self.add_action(edit, "&Copy", self.in_graph(nuke.nodeCopy, "%clipboard%"),
                        QtGui.QKeySequence.Copy)
        self.add_action(edit, "&Paste", self.in_graph(nuke.nodePaste, "%clipboard%"),
                        QtGui.QKeySequence.Paste)
        self.add_action(edit, "&Delete", self.delete_selected)
        self.add_action(edit, "Select &All", self.select_all, QtGui.QKeySequence.SelectAll)

        nodes = self.new_menu(bar, "&Nodes")
        submenus = {}
        for path, cls in NODE_MENU:
            parent = nodes
            if "/" in path:
                folder, path = path.split("/")
                parent = submenus.get(folder) or submenus.setdefault(folder,
                                                                self.new_menu(nodes, folder))
            self.add_action(parent, path, self.in_graph(nuke.createNode, cls))

        render = self.new_menu(bar, "&Render")
        self.add_action(render, "Render selected &Writes (current frame)", self.render_selected,
                        QtGui.QKeySequence("F7"))
        view = self.new_menu(bar, "&View")
        self.add_action(view, "&Frame all nodes", self.graph.frame_all)

        # What the add-on (and anything else) registered in the host's main menu.
        for item in nuke.menu("Nuke").items():
            if isinstance(item, nuke.Menu):
                self.add_host_menu(self.new_menu(bar, item.name()), item)

    def add_action(self, menu, text, function, shortcut=None):
        action = menu.addAction(text)
        if shortcut is not None:
            action.setShortcut(shortcut)
        action.triggered.connect(lambda *args: self.run_command(function, text.replace("&", "")))
        return action

    def add_host_menu(self, qmenu, menu):
        for item in menu.items():
            if isinstance(item, nuke.Menu):
                sub = self.new_menu(qmenu, item.name())
                icon = find_icon(item.icon()) if item.icon() else None
                if icon:
                    sub.setIcon(QtGui.QIcon(icon))
                self.add_host_menu(sub, item)
            elif not item.name():
                qmenu.addSeparator()
            else:
                action = self.add_action(qmenu, item.name(), item.invoke)
                action.setShortcut(host_shortcut(item.shortcut()))
                # A held key (the sliders open while theirs is down) must not fire again and again.
                action.setAutoRepeat(False)
                action.setToolTip(item.tooltip())
                icon = find_icon(item.icon()) if item.icon() else None
                if icon:
                    action.setIcon(QtGui.QIcon(icon))

    def name_undo_actions(self):
        """Says in the Edit menu what Undo and Redo would take back or bring back."""
        for action, size, describe, text in (
                (self.action_undo, nuke.Undo.undoSize, nuke.Undo.undoDescribe, "Undo"),
                (self.action_redo, nuke.Undo.redoSize, nuke.Undo.redoDescribe, "Redo")):
            available = size() > 0
            action.setEnabled(available)
            action.setText("&{} {}".format(text, describe()) if available else "&" + text)

    def in_graph(self, function, *args):
        """`function(*args)` to run in the group the graph shows, as the host runs what the user
        does in a group's graph."""
        def run():
            with self.graph.group:
                return function(*args)
        return run

    def run_command(self, function, what):
        """Runs a menu command as the host does: a failure goes to the console."""
        try:
            function()
        except Exception:
            report_failure(what)
        self.changed()

    # -- mirroring the script ------------------------------------------------------------------
    def changed(self):
        """Mirrors the script again soon, once however often this is called meanwhile."""
        if not self._pending:
            self._pending = True
            QtCore.QTimer.singleShot(0, self.sync)

    def sync(self):
        self._pending = False
        try:
            self.graph.sync()
            self.properties.sync()
            self.viewer.sync()
            name = nuke.root().name()
            self.setWindowTitle("{} - {}".format(
                TITLE, "untitled" if name == "Root" else os.path.basename(name)))
            self._last_failure = None
        except Exception:
            # The poll would repeat the same failure four times a second: report it once.
            failure = traceback.format_exc()
            if failure != self._last_failure:
                self._last_failure = failure
                report_failure("refreshing the demo host")

    # -- operations the panes, the menus and scenarios use ---------------------------------------
    def open_panel(self, node, tab=None):
        """Opens the node's properties panel (on `tab` if given) and gives the panel."""
        node.showControlPanel()
        self.sync()
        panel = self.properties.panel(node)
        if panel is not None and tab:
            panel.show_tab(tab)
        return panel

    def close_panel(self, node):
        node.hideControlPanel()
        self.changed()

    def press(self, node, knob_name):
        """Clicks a button of the node's panel, as the user would."""
        panel = self.open_panel(node)
        button = panel.findChild(QtWidgets.QPushButton, knob_name)
        if button is None:
            raise LookupError("{} has no button {}".format(node.name(), knob_name))
        button.click()
        self.sync()

    def delete_selected(self):
        with nuke.Undo("Delete"):
            for node in [n for n in self.graph.group.nodes() if n.isSelected()]:
                nuke.delete(node)
        self.changed()

    def select_all(self):
        for node in self.graph.group.nodes():
            node.setSelected(True)

    def view_selected(self, index):
        """Connects the selected node to the active viewer's input `index` and shows it."""
        window = nuke.activeViewer()
        selected = [n for n in nuke.selectedNodes() if n.Class() != "Viewer"]
        if window is None or not selected:
            return
        if window.node().setInput(index, selected[-1]):
            window.activateInput(index)
        self.changed()

    def render_selected(self):
        writes = nuke.selectedNodes("Write")
        if not writes:
            nuke.message("Select a Write node to render.")
        for write in writes:
            nuke.execute(write, nuke.frame(), nuke.frame())
            print("{}: wrote {}".format(write.name(), write["file"].value()))

    def menu_command(self, *path):
        """Chooses an entry of the menu bar by its texts, as the user would."""
        actions = self.menuBar().actions()
        for i, text in enumerate(path):
            action = next((a for a in actions if a.text().replace("&", "") == text), None)
            if action is None:
                raise LookupError("no menu entry {}".format(" > ".join(path[:i + 1])))
            if i == len(path) - 1:
                action.trigger()
            else:
                actions = action.menu().actions()
        self.sync()

    def place_over(self, window):
        """Puts another top-level window in the middle of this one (on a screen smaller than the
        host, centring on the screen would leave it off the host's picture)."""
        frame = window.frameGeometry()
        frame.moveCenter(self.frameGeometry().center())
        window.move(frame.topLeft())

    def screenshot(self, path):
        """Writes a PNG of the whole window, with the tool windows open over it drawn where they
        stand, as a person at the screen would see them."""
        self.sync()
        QtWidgets.QApplication.processEvents()
        image = self.grab()
        painter = QtGui.QPainter(image)
        for widget in QtWidgets.QApplication.topLevelWidgets():
            if (widget is self or not widget.isVisible() or isinstance(widget, QtWidgets.QMenu)
                    or widget.windowType() == QtCore.Qt.ToolTip):
                continue
            painter.drawPixmap(widget.frameGeometry().topLeft() - self.frameGeometry().topLeft(),
                               widget.grab())
        painter.end()
        if not image.save(path, "PNG"):
            raise RuntimeError("cannot write the screenshot {}".format(path))
        return path

    # -- File ----------------------------------------------------------------------------------
    def file_new(self):
        nuke.scriptClear()

    def file_open(self):
        path, _ = QtWidgets.QFileDialog.getOpenFileName(self, "Open script", "", "Scripts (*.nk)")
        if path:
            nuke.scriptOpen(path)
            self.graph.frame_all()

    def file_save(self):
        nuke.scriptSave()

    def file_save_as(self):
        path, _ = QtWidgets.QFileDialog.getSaveFileName(self, "Save script as", "",
                                                        "Scripts (*.nk)")
        if path:
            if not path.endswith(".nk"):
                path += ".nk"
            nuke.scriptSaveAs(path)

    def closeEvent(self, event):
        self.timer.stop()
        self.console.release()
        super().closeEvent(event)


def apply_dark_style(app):
    """The dim grey a compositing host wears, so images are judged against neutral surroundings."""
    app.setStyle("Fusion")
    palette = QtGui.QPalette()
    colors = {
        QtGui.QPalette.Window: "#3a3a3a", QtGui.QPalette.WindowText: "#d8d8d8",
        QtGui.QPalette.Base: "#2b2b2b", QtGui.QPalette.AlternateBase: "#333333",
        QtGui.QPalette.Text: "#d8d8d8", QtGui.QPalette.Button: "#474747",
        QtGui.QPalette.ButtonText: "#e0e0e0", QtGui.QPalette.Highlight: "#e08a1e",
        QtGui.QPalette.HighlightedText: "#111111", QtGui.QPalette.ToolTipBase: "#f2f2d0",
        QtGui.QPalette.ToolTipText: "#111111", QtGui.QPalette.PlaceholderText: "#8a8a8a",
    }
    for role, color in colors.items():
        palette.setColor(role, QtGui.QColor(color))
    palette.setColor(QtGui.QPalette.Disabled, QtGui.QPalette.ButtonText, QtGui.QColor("#808080"))
    palette.setColor(QtGui.QPalette.Disabled, QtGui.QPalette.Text, QtGui.QColor("#808080"))
    app.setPalette(palette)


def answer_dialogs_offscreen(parent):
    """Without a screen nobody can answer a modal dialog: each one is closed as soon as it shows,
    its text going to the console, so that a headless run never hangs."""

    def answer():
        dialog = QtWidgets.QApplication.activeModalWidget()
        if dialog is None:
            return
        if isinstance(dialog, QtWidgets.QMessageBox):
            print("[dialog] {}: {}".format(dialog.windowTitle(), dialog.text()), file=sys.stderr)
            dialog.accept()
        elif isinstance(dialog, QtWidgets.QDialog):
            print("[dialog] {} closed unanswered".format(dialog.windowTitle()), file=sys.stderr)
            dialog.reject()

    timer = QtCore.QTimer(parent)
    timer.timeout.connect(answer)
    timer.start(100)
    return timer
