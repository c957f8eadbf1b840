"""The properties bin: a panel per open node, its knobs under their tabs.

A panel is built from the node's knobs as they are: the knobs before the first tab stand on a tab
named after the class, the host's own node knobs on "Node", and every added tab after those. Hidden
knobs are left out, buttons run their command as a press in the host does (`nuke.thisNode()` is the
node), and fields write their value back to the knob when the user is done with them.
"""

import html
import os
import re
import sys
import traceback

import nuke
from cobaltRig.qt import QtCore, QtGui, QtWidgets

# The host's own knobs of every node, shown on its "Node" tab.
NODE_TAB_KNOBS = ("label", "note_font", "note_font_size", "tile_color", "hide_input")
# Knobs the host keeps off the panel: the header shows the name, the graph the rest.
NOT_SHOWN = ("name", "selected", "xpos", "ypos")

_IMG = re.compile(r"<img\s+src\s*=\s*['\"]([^'\"]+)['\"]\s*/?>", re.IGNORECASE)
_TAG = re.compile(r"<[^>]+>")


def find_icon(name):
    """An icon file by bare name, looked up on the host's plug-in path as the host does."""
    if os.path.isabs(name):
        return name if os.path.isfile(name) else None
    for folder in nuke.pluginPath():
        path = os.path.join(folder, name)
        if os.path.isfile(path):
            return path
    return None


def button_face(label):
    """Icon path and plain text of a button label that may hold `<img src='x.png' />` and tags."""
    match = _IMG.search(label or "")
    icon = find_icon(match.group(1)) if match else None
    text = html.unescape(_TAG.sub("", _IMG.sub("", label or ""))).strip()
    return icon, text


def report_failure(what):
    """A failed command goes to the console, as the host reports a failed script command."""
    print("{} failed:".format(what), file=sys.stderr)
    traceback.print_exc()


def knob_layout(node):
    """The tabs of a panel: [(tab name, [knob, ...])], hidden knobs left out."""
    own, node_tab, added = [], [], []
    current = None
    for knob in node.allKnobs():
        if knob.Class() == "Tab_Knob":
            current = (knob.label() or knob.name(), [])
            added.append(current)
            continue
        if knob.name() in NOT_SHOWN or not knob.visible():
            continue
        if current is not None:
            current[1].append(knob)
        elif knob.name() in NODE_TAB_KNOBS:
            node_tab.append(knob)
        else:
            own.append(knob)
    return [(node.Class(), own), ("Node", node_tab)] + added


def knob_state(node):
    """What a panel shows of a node; a change rebuilds the panel."""
    return tuple((k.name(), k.Class(), k.label(), k.tooltip(), k._flags,
                  k.toScript() if k.Class() != "Tab_Knob" else "") for k in node.allKnobs())


class NodePanel(QtWidgets.QFrame):
    """The panel of one node."""

    def __init__(self, host, node, parent=None):
        super().__init__(parent)
        self.host, self.node = host, node
        self.state = None
        self.setObjectName("panel_" + node.name())
        self.setFrameShape(QtWidgets.QFrame.StyledPanel)
        self.layout_master = QtWidgets.QVBoxLayout(self)
        self.layout_master.setContentsMargins(6, 6, 6, 6)
        header = QtWidgets.QHBoxLayout()
        self.label_class = QtWidgets.QLabel()
        self.input_name = QtWidgets.QLineEdit()
        self.input_name.setObjectName("name")
        self.push_close = QtWidgets.QToolButton()
        self.push_close.setText("x")
        self.push_close.setToolTip("close this panel")
        header.addWidget(self.label_class)
        header.addWidget(self.input_name, 1)
        header.addWidget(self.push_close)
        self.layout_master.addLayout(header)
        self.tabs = QtWidgets.QTabWidget()
        self.layout_master.addWidget(self.tabs)
        self.input_name.editingFinished.connect(self.rename)
        self.push_close.clicked.connect(lambda *args: self.host.close_panel(self.node))
        self.sync()

    # -- building ------------------------------------------------------------------------------
    def sync(self):
        state = knob_state(self.node)
        if state == self.state:
            return
        self.state = state
        current = self.tabs.tabText(self.tabs.currentIndex()) if self.tabs.count() else None
        self.label_class.setText("<b>{}</b>".format(self.node.Class()))
        self.input_name.setText(self.node.name())
        pages = [self.tabs.widget(i) for i in range(self.tabs.count())]
        self.tabs.clear()
        for page in pages:
            page.deleteLater()  # a tab widget lets go of its pages but does not delete them
        for name, knobs in knob_layout(self.node):
            page = QtWidgets.QWidget()
            page.setObjectName("tab_" + name)
            self.fill_page(page, knobs)
            self.tabs.addTab(page, name)
            if name == current:
                self.tabs.setCurrentWidget(page)

    def show_tab(self, name):
        for index in range(self.tabs.count()):
            if self.tabs.tabText(index) == name:
                self.tabs.setCurrentIndex(index)
                return True
        return False

    def fill_page(self, page, knobs):
        grid = QtWidgets.QGridLayout(page)
        grid.setColumnStretch(1, 1)
        grid.setVerticalSpacing(4)
        row, buttons = 0, None
        for knob in knobs:
            cls = knob.Class()
            if cls == "PyScript_Knob":
                # Buttons share a row until one asks for a line of its own.
                if buttons is None or knob.getFlag(nuke.STARTLINE):
                    buttons = QtWidgets.QHBoxLayout()
                    buttons.setSpacing(4)
                    grid.addLayout(buttons, row, 1)
                    row += 1
                    buttons.addStretch(1)
                buttons.insertWidget(buttons.count() - 1, self.make_button(knob))
                continue
            buttons = None
            if cls == "Text_Knob" and not knob.label() and not knob.value():
                line = QtWidgets.QFrame()
                line.setFrameShape(QtWidgets.QFrame.HLine)
                line.setObjectName(knob.name())
                grid.addWidget(line, row, 0, 1, 2)
            else:
                label = QtWidgets.QLabel(knob.label() or "")
                label.setAlignment(QtCore.Qt.AlignRight | QtCore.Qt.AlignVCenter)
                widget = self.make_field(knob)
                widget.setObjectName(knob.name())
                if knob.tooltip():
                    label.setToolTip(knob.tooltip())
                    widget.setToolTip(knob.tooltip())
                widget.setEnabled(knob.enabled())
                grid.addWidget(label, row, 0)
                grid.addWidget(widget, row, 1)
            row += 1
        grid.setRowStretch(row, 1)

    def make_button(self, knob):
        icon, text = button_face(knob.label() or knob.name())
        button = QtWidgets.QPushButton(text)
        button.setObjectName(knob.name())
        if icon:
            button.setIcon(QtGui.QIcon(icon))
        if knob.tooltip():
            button.setToolTip(knob.tooltip())
        button.setEnabled(knob.enabled())
        button.clicked.connect(lambda *args, k=knob: self.press(k))
        return button

    def make_field(self, knob):
        cls, value = knob.Class(), knob.value()
        commit = lambda v, k=knob: self.commit(k, v)  # noqa: E731
        if cls == "Boolean_Knob":
            widget = QtWidgets.QCheckBox()
            widget.setChecked(bool(value))
            widget.toggled.connect(commit)
        elif cls == "Enumeration_Knob" or cls == "Format_Knob":
            widget = QtWidgets.QComboBox()
            if cls == "Format_Knob":
                names = [f.name() for f in nuke.formats()]
                current = value.name() or "{} {}".format(value.width(), value.height())
                widget.addItems(names if current in names else names + [current])
            else:
                widget.addItems(knob.values())
                current = value
            widget.setCurrentText(current)
            widget.activated.connect(lambda i, w=widget: commit(w.itemText(i)))
        elif cls in ("Int_Knob", "ColorChip_Knob") and knob.name() != "tile_color":
            widget = QtWidgets.QSpinBox()
            widget.setRange(-1000000, 1000000)
            widget.setKeyboardTracking(False)
            widget.setValue(int(value))
            widget.valueChanged.connect(commit)
        elif hasattr(knob, "dimensions"):
            widget = self.make_numbers(knob, commit)
        elif knob.name() == "tile_color":
            widget = QtWidgets.QLineEdit("0x{:08x}".format(int(value)))
            widget.editingFinished.connect(lambda w=widget: commit(int(w.text(), 0)))
        elif cls == "Text_Knob":
            widget = QtWidgets.QLabel(value or "")
        else:
            widget = QtWidgets.QLineEdit(knob.toScript())
            widget.editingFinished.connect(lambda w=widget: commit(w.text()))
        return widget

    def make_numbers(self, knob, commit):
        """A field of numbers, one for all channels or one per channel, and a colour swatch for
        colours."""
        box = QtWidgets.QWidget()
        row = QtWidgets.QHBoxLayout(box)
        row.setContentsMargins(0, 0, 0, 0)
        text = knob.toScript().strip("{}")
        field = QtWidgets.QLineEdit(text)
        field.setObjectName(knob.name() + "_value")

        def parse(*args):
            numbers = [float(w) for w in field.text().replace(",", " ").split()]
            commit(numbers[0] if len(numbers) == 1 else numbers)

        field.editingFinished.connect(parse)
        row.addWidget(field, 1)
        if knob.Class() in ("Color_Knob", "AColor_Knob"):
            values = [knob.value(i) for i in range(knob.dimensions())]
            swatch = QtWidgets.QToolButton()
            swatch.setFixedWidth(28)
            shown = QtGui.QColor.fromRgbF(*[min(1.0, max(0.0, v)) for v in values[:3]])
            swatch.setStyleSheet("background: {};".format(shown.name()))
            swatch.setToolTip("pick a colour")
            swatch.clicked.connect(lambda *args, k=knob, v=values: self.pick_color(k, v))
            row.addWidget(swatch)
        return box

    # -- what the user does ----------------------------------------------------------------------
    def press(self, knob):
        try:
            knob.execute()
        except Exception:
            report_failure("{}.{}".format(self.node.name(), knob.name()))
        self.host.changed()

    def commit(self, knob, value):
        try:
            if value != knob.value():
                knob.setValue(value)
        except Exception:
            report_failure("setting {}.{}".format(self.node.name(), knob.name()))
            self.state = None  # show the knob's real value again
        self.host.changed()

    def pick_color(self, knob, values):
        start = QtGui.QColor.fromRgbF(*[min(1.0, max(0.0, v)) for v in values[:3]])
        color = QtWidgets.QColorDialog.getColor(start, self, knob.label() or knob.name())
        if color.isValid():
            self.commit(knob, [color.redF(), color.greenF(), color.blueF()] + values[3:])

    def rename(self):
        text = self.input_name.text()
        if text != self.node.name():
            self.commit(self.node["name"], text)


class PropertiesBin(QtWidgets.QScrollArea):
    """The open panels, the one opened last on top."""

    def __init__(self, host, parent=None):
        super().__init__(parent)
        self.host = host
        self.panels = []
        self.setObjectName("properties_bin")
        self.setWidgetResizable(True)
        inner = QtWidgets.QWidget()
        self.column = QtWidgets.QVBoxLayout(inner)
        self.column.setContentsMargins(4, 4, 4, 4)
        self.empty = QtWidgets.QLabel("Double-click a node to open its properties.")
        self.empty.setAlignment(QtCore.Qt.AlignCenter)
        self.column.addWidget(self.empty)
        self.column.addStretch(1)
        self.setWidget(inner)

    def panel(self, node):
        return next((p for p in self.panels if p.node is node), None)

    def sync(self):
        """Shows a panel for each node whose panel is open, newest first; drops the others."""
        shown = [n for n in nuke.allNodes(group=nuke.root(), recurseGroups=True) if n.shown()]
        for panel in list(self.panels):
            if not panel.node._alive or panel.node not in shown:
                self.panels.remove(panel)
                # Out of sight at once; Qt deletes it when the event loop comes round again.
                panel.hide()
                self.column.removeWidget(panel)
                panel.deleteLater()
        for node in shown:
            panel = self.panel(node)
            if panel is None:
                panel = NodePanel(self.host, node)
                self.panels.insert(0, panel)
                self.column.insertWidget(0, panel)
            else:
                panel.sync()
        self.empty.setVisible(not self.panels)
