"""The viewer: what the active Viewer's shown input renders, at the viewer's `downrez` factor.

It renders again only when something a render depends on has changed (knobs other than position,
selection and label, connections, the root's format and proxy mode), not when a node is dragged.
"""

import nuke
from nuke._render import render, scale_to_width
from nuke._graph import DOWNREZ_STEPS
from cobaltRig.qt import QtCore, QtGui, QtWidgets

# Knobs that change how the graph looks but not what it renders.
_LAYOUT_KNOBS = ("xpos", "ypos", "selected", "label", "note_font", "note_font_size", "tile_color",
                 "hide_input")


def render_key():
    """Everything a render of any node of the script depends on."""
    items = []
    for node in nuke.allNodes(group=nuke.root(), recurseGroups=True):
        knobs = tuple((k.name(), k.toScript()) for k in node.allKnobs()
                      if k.name() not in _LAYOUT_KNOBS and k.Class() != "PyScript_Knob")
        inputs = tuple(id(node.input(i)) for i in range(node.inputs()))
        items.append((id(node), knobs, inputs, tuple(node._viewer_active)))
    root = nuke.root()
    return tuple(items), root["format"].toScript(), root["proxy"].value()


class ViewerPane(QtWidgets.QWidget):
    def __init__(self, host, parent=None):
        super().__init__(parent)
        self.host = host
        self.key = None
        self.image = None
        self.setObjectName("viewer")
        self.label_info = QtWidgets.QLabel()
        self.label_info.setObjectName("label_info")
        self.combo_downrez = QtWidgets.QComboBox()
        self.combo_downrez.setObjectName("combo_downrez")
        self.combo_downrez.addItems(DOWNREZ_STEPS)
        self.combo_downrez.setToolTip("downrez: show the image at 1/n of its resolution")
        self.check_proxy = QtWidgets.QCheckBox("proxy")
        self.check_proxy.setObjectName("check_proxy")
        self.check_proxy.setToolTip("proxy mode: render at half size")
        self.label_image = QtWidgets.QLabel()
        self.label_image.setObjectName("label_image")
        self.label_image.setAlignment(QtCore.Qt.AlignCenter)
        self.label_image.setSizePolicy(QtWidgets.QSizePolicy.Ignored, QtWidgets.QSizePolicy.Ignored)
        self.label_image.setStyleSheet("background: #1b1b1b; color: #c0c0c0;")
        self.label_image.setMinimumSize(160, 90)

        bar = QtWidgets.QHBoxLayout()
        bar.addWidget(self.label_info, 1)
        bar.addWidget(QtWidgets.QLabel("downrez"))
        bar.addWidget(self.combo_downrez)
        bar.addWidget(self.check_proxy)
        column = QtWidgets.QVBoxLayout(self)
        column.setContentsMargins(0, 0, 0, 0)
        column.addLayout(bar)
        column.addWidget(self.label_image, 1)

        self.combo_downrez.activated.connect(self.set_downrez)
        self.check_proxy.clicked.connect(self.set_proxy)

    def viewed(self):
        """The active Viewer node and the node it shows (either may be None), and why not."""
        window = nuke.activeViewer()
        if window is None:
            return None, None, "No viewer. Add one with Nodes > Viewer."
        node = window.node()
        index = window.activeInput()
        source = node.input(index) if index is not None else None
        if source is None:
            return node, None, "{}: nothing connected. Select a node and press 1.".format(node.name())
        return node, source, None

    def sync(self):
        viewer, source, problem = self.viewed()
        self.combo_downrez.setEnabled(viewer is not None)
        if viewer is not None:
            self.combo_downrez.setCurrentText(viewer["downrez"].value())
        self.check_proxy.setChecked(bool(nuke.root()["proxy"].value()))
        key = (id(viewer), id(source), render_key() if source is not None else None, problem)
        if key == self.key:
            return
        self.key = key
        self.image = None
        if problem:
            self.label_info.setText(problem)
            self.label_image.setText(problem)
            return
        factor = int(viewer["downrez"].value())
        try:
            full = render(source)
        except Exception as error:
            self.label_info.setText("{} \u2190 {}".format(viewer.name(), source.name()))
            self.label_image.setText("{}\n\n{}".format(source.name(), error))
            return
        self.image = scale_to_width(full, full.width() // factor) if factor > 1 else full
        parts = ["{} \u2190 {}".format(viewer.name(), source.name()),
                 "{}x{}".format(full.width(), full.height())]
        if factor > 1:
            parts.append("downrez {}: {}x{}".format(factor, self.image.width(), self.image.height()))
        if nuke.root()["proxy"].value():
            parts.append("proxy")
        self.label_info.setText("   ".join(parts))
        self.show_image()

    def show_image(self):
        if self.image is None:
            return
        area = self.label_image.size()
        fitted = self.image.size().scaled(area, QtCore.Qt.KeepAspectRatio)
        # Blown up, a reduced image shows its pixels, as a viewer at downrez does.
        mode = (QtCore.Qt.FastTransformation if fitted.width() > self.image.width()
                else QtCore.Qt.SmoothTransformation)
        shown = self.image.scaled(fitted, QtCore.Qt.IgnoreAspectRatio, mode)
        self.label_image.setPixmap(QtGui.QPixmap.fromImage(shown))

    def resizeEvent(self, event):
        super().resizeEvent(event)
        self.show_image()

    def set_downrez(self, index):
        viewer, _, _ = self.viewed()
        if viewer is not None:
            viewer["downrez"].setValue(self.combo_downrez.itemText(index))
        self.host.changed()

    def set_proxy(self, checked):
        nuke.root()["proxy"].setValue(bool(checked))
        self.host.changed()
