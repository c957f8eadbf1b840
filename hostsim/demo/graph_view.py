"""The node graph: a box per node of one group (the script's top level to begin with), an arrow per
connection.

The graph is the host's; this view only mirrors it. `sync()` brings the boxes in line with the
nodes (new, gone, moved, renamed, selected), and what the user does here goes straight to the nodes:
selecting sets their `selected` knob, dragging sets `xpos`/`ypos`, a double-click opens the panel.
Ctrl+double-click (or Ctrl+Return) on a Group shows what is inside it; the path above the graph leads
back out.
"""

import nuke
from cobaltRig.qt import QtCore, QtGui, QtWidgets

# Colours a node shows while its `tile_color` is 0, by class.
CLASS_COLORS = {
    "Read": 0xAAAAAA, "Constant": 0x9A9A9A, "ColorBars": 0x9A9A9A, "CheckerBoard2": 0x9A9A9A,
    "CheckerBoard": 0x9A9A9A, "Grade": 0x7AA9FF, "Blur": 0xCC804E, "Transform": 0xA57AAA,
    "Reformat": 0xA57AAA, "Merge2": 0x4B5EC6, "Write": 0xCFA66B, "Viewer": 0xFF9A3D,
    "Group": 0x9FBF9F, "Switch": 0xE0C85A, "BackdropNode": 0x5A5A5A,
}
DEFAULT_COLOR = 0x8C8C8C
MERGE_INPUT_NAMES = ("B", "A", "mask")


def tile_color(node):
    value = int(node["tile_color"].value()) if node.knob("tile_color") is not None else 0
    if value:
        return QtGui.QColor((value >> 24) & 0xFF, (value >> 16) & 0xFF, (value >> 8) & 0xFF)
    return QtGui.QColor(CLASS_COLORS.get(node.Class(), DEFAULT_COLOR))


class NodeItem(QtWidgets.QGraphicsItem):
    """One node: its tile with name, its label beneath."""

    def __init__(self, view, node):
        super().__init__()
        self.view, self.node = view, node
        self.setFlags(QtWidgets.QGraphicsItem.ItemIsSelectable | QtWidgets.QGraphicsItem.ItemIsMovable
                      | QtWidgets.QGraphicsItem.ItemSendsGeometryChanges)
        self.cls = node.Class()
        self.setZValue(-10 if self.cls == "BackdropNode" else 1)
        self.state = None
        # Kept, because Qt may still ask for the size of the box of a node that is gone.
        self._size = (node.screenWidth(), node.screenHeight())

    def size(self):
        return self._size

    def boundingRect(self):
        width, height = self.size()
        return QtCore.QRectF(-4, -4, width + 8, height + 26)

    def update_from_node(self):
        node = self.node
        size = (node.screenWidth(), node.screenHeight())
        state = (node.name(), node["label"].value(), tile_color(node).rgb(), node.xpos(),
                 node.ypos(), node.isSelected(), size, node.knob("disable") is not None
                 and node["disable"].value())
        if state == self.state:
            return
        self.prepareGeometryChange()
        self.state, self._size = state, size
        self.setPos(node.xpos(), node.ypos())
        self.setSelected(node.isSelected())
        self.setToolTip("{} ({})".format(node.name(), node.Class()))
        self.update()

    def paint(self, painter, option, widget=None):
        name, label, rgb, _, _, selected, (width, height), disabled = self.state
        color = QtGui.QColor(rgb)
        rect = QtCore.QRectF(0, 0, width, height)
        painter.setRenderHint(QtGui.QPainter.Antialiasing)
        outline = QtGui.QPen(QtGui.QColor("#ffb23f") if selected else QtGui.QColor("#161616"),
                             2 if selected else 1)
        painter.setPen(outline)
        cls = self.cls
        if cls == "Dot":
            painter.setBrush(color.lighter(130) if selected else color)
            painter.drawEllipse(rect)
            return
        painter.setBrush(color.lighter(125) if selected else color)
        if cls == "BackdropNode":
            painter.setBrush(color.darker(110))
            painter.drawRect(rect)
            painter.setPen(QtGui.QColor("#dddddd"))
            painter.drawText(rect.adjusted(6, 4, -6, 0), QtCore.Qt.AlignTop | QtCore.Qt.AlignLeft,
                             label or name)
            return
        painter.drawRoundedRect(rect, 9 if cls == "Viewer" else 3, 9 if cls == "Viewer" else 3)
        font = painter.font()
        font.setPointSizeF(7.5)
        painter.setFont(font)
        painter.setPen(QtGui.QColor("#111111") if color.lightness() > 110 else QtGui.QColor("#eeeeee"))
        painter.drawText(rect, QtCore.Qt.AlignCenter, name)
        if disabled:
            painter.setPen(QtGui.QPen(QtGui.QColor("#d02020"), 2))
            painter.drawLine(rect.topLeft(), rect.bottomRight())
        if label:
            font.setItalic(True)
            painter.setFont(font)
            painter.setPen(QtGui.QColor("#bbbbbb"))
            area = QtCore.QRectF(-20, height + 1, width + 40, 16)
            text = QtGui.QFontMetrics(font).elidedText(label.splitlines()[0], QtCore.Qt.ElideRight,
                                                       int(area.width()))
            painter.drawText(area, QtCore.Qt.AlignHCenter, text)

    def itemChange(self, change, value):
        if change == QtWidgets.QGraphicsItem.ItemPositionHasChanged and not self.view.syncing:
            point = self.pos()
            self.view.moved(self, int(round(point.x())), int(round(point.y())))
        return super().itemChange(change, value)

    def mouseDoubleClickEvent(self, event):
        if event.modifiers() & QtCore.Qt.ControlModifier and isinstance(self.node, nuke.Group):
            self.view.enter(self.node)
        else:
            self.view.open_panel(self.node)


class EdgeItem(QtWidgets.QGraphicsItem):
    """The arrow from a node's input to the node, with the input's name on Merge nodes."""

    def __init__(self, source, target, index):
        super().__init__()
        self.source, self.target, self.index = source, target, index
        self.setZValue(0)
        self.line = QtCore.QLineF()

    def place(self):
        self.prepareGeometryChange()
        sw, sh = self.source.size()
        tw, th = self.target.size()
        start = self.source.pos() + QtCore.QPointF(sw / 2, sh)
        tpos = self.target.pos()
        if self.index == 0 or self.target.cls == "Viewer":
            end = tpos + QtCore.QPointF(tw / 2, 0)
        elif self.index == 1:
            end = tpos + QtCore.QPointF(0, th / 2)
        else:
            end = tpos + QtCore.QPointF(tw, th / 2)
        self.line = QtCore.QLineF(start, end)

    def boundingRect(self):
        return QtCore.QRectF(self.line.p1(), self.line.p2()).normalized().adjusted(-14, -14, 14, 14)

    def paint(self, painter, option, widget=None):
        painter.setRenderHint(QtGui.QPainter.Antialiasing)
        painter.setPen(QtGui.QPen(QtGui.QColor("#c8c8c8"), 1.2))
        painter.drawLine(self.line)
        if self.line.length() < 1:
            return
        # The arrow head at the input end.
        unit = self.line.unitVector()
        dx, dy = unit.dx(), unit.dy()
        tip = self.line.p2()
        left = tip - QtCore.QPointF(dx * 8 - dy * 4, dy * 8 + dx * 4)
        right = tip - QtCore.QPointF(dx * 8 + dy * 4, dy * 8 - dx * 4)
        painter.setBrush(QtGui.QColor("#c8c8c8"))
        painter.drawPolygon(QtGui.QPolygonF([tip, left, right]))
        cls = self.target.cls
        name = None
        if cls == "Merge2":
            name = MERGE_INPUT_NAMES[min(self.index, 2)]
        elif cls == "Viewer":
            name = str(self.index + 1)
        if name:
            font = painter.font()
            font.setPointSizeF(7)
            painter.setFont(font)
            painter.drawText(self.line.pointAt(0.7) + QtCore.QPointF(4, 0), name)


class GraphView(QtWidgets.QGraphicsView):
    """The node graph of the script's top level."""

    def __init__(self, host, parent=None):
        super().__init__(parent)
        self.host = host
        self.syncing = False
        self.group = nuke.root()  # the group whose nodes show
        self.items = {}  # id(node) -> NodeItem
        self.edges = []
        self.label_path = QtWidgets.QLabel(self)
        self.label_path.setObjectName("label_path")
        self.label_path.move(8, 6)
        self.label_path.linkActivated.connect(self.leave_to)
        self.setObjectName("node_graph")
        self.setScene(QtWidgets.QGraphicsScene(self))
        self.setBackgroundBrush(QtGui.QColor("#323232"))
        self.setRenderHint(QtGui.QPainter.Antialiasing)
        self.setDragMode(QtWidgets.QGraphicsView.RubberBandDrag)
        self.setRubberBandSelectionMode(QtCore.Qt.IntersectsItemShape)
        self.setTransformationAnchor(QtWidgets.QGraphicsView.AnchorUnderMouse)
        # Panned with the middle button, as node graphs are, not with scroll bars.
        self.setHorizontalScrollBarPolicy(QtCore.Qt.ScrollBarAlwaysOff)
        self.setVerticalScrollBarPolicy(QtCore.Qt.ScrollBarAlwaysOff)
        self.pan_from = None
        self.dragging = False  # a left-button press opened an undo group that its release ends
        self.scene().selectionChanged.connect(self.selection_changed)

    # -- from the graph to the view --------------------------------------------------------------
    def sync(self):
        """Mirrors the top level of the script; leaves a drag in progress alone."""
        if self.scene().mouseGrabberItem() is not None:
            return
        if not self.group._alive:
            self.group = nuke.root()
        self.show_path()
        self.syncing = True
        try:
            nodes = nuke.allNodes(group=self.group)
            alive = {id(n) for n in nodes}
            added = []
            for key in [k for k in self.items if k not in alive]:
                self.scene().removeItem(self.items.pop(key))
            for node in nodes:
                item = self.items.get(id(node))
                if item is None or item.node is not node:
                    if item is not None:
                        self.scene().removeItem(item)
                    item = self.items[id(node)] = NodeItem(self, node)
                    self.scene().addItem(item)
                    added.append(item)
                item.update_from_node()
            self.rebuild_edges()
            # A node made by a command shows where it landed, unless the whole group is new.
            if len(added) < len(nodes):
                for item in added:
                    self.ensureVisible(item, 20, 20)
        finally:
            self.syncing = False

    def rebuild_edges(self):
        for edge in self.edges:
            self.scene().removeItem(edge)
        self.edges = []
        for item in self.items.values():
            for index in range(item.node.inputs()):
                source = item.node.input(index)
                source_item = self.items.get(id(source)) if source is not None else None
                if source_item is not None:
                    edge = EdgeItem(source_item, item, index)
                    edge.place()
                    self.scene().addItem(edge)
                    self.edges.append(edge)

    def groups(self):
        """The groups from the root down to the one on show."""
        chain, group = [], self.group
        while group is not None:
            chain.insert(0, group)
            group = group._parent
        return chain

    def show_path(self):
        chain = self.groups()
        links = ['<a href="{}" style="color:#e0a040">{}</a>'.format(i, "Root" if i == 0 else g.name())
                 for i, g in enumerate(chain[:-1])]
        here = "Root" if len(chain) == 1 else chain[-1].name()
        self.label_path.setText(" / ".join(links + ["<b>{}</b>".format(here)]))
        self.label_path.adjustSize()

    def enter(self, group):
        """Shows the nodes inside `group`."""
        self.group = group
        self.sync()
        self.frame_all()

    def leave_to(self, link):
        self.enter(self.groups()[int(link)])

    def frame_all(self):
        area = self.scene().itemsBoundingRect().adjusted(-60, -40, 60, 40)
        # Room all round, to pan to and for nodes made later.
        self.setSceneRect(area.adjusted(-3000, -3000, 3000, 3000))
        self.fitInView(area, QtCore.Qt.KeepAspectRatio)
        if self.transform().m11() > 1.6:
            self.resetTransform()
            self.scale(1.6, 1.6)
            self.centerOn(area.center())

    # -- from the user to the graph --------------------------------------------------------------
    def selection_changed(self):
        if self.syncing:
            return
        for item in self.items.values():
            if item.node.isSelected() != item.isSelected():
                item.node.setSelected(item.isSelected())
        self.host.changed()

    def moved(self, item, x, y):
        item.node.setXYpos(x, y)
        for edge in self.edges:
            if edge.source is item or edge.target is item:
                edge.place()
        self.host.changed()

    def open_panel(self, node):
        self.host.open_panel(node)

    def mousePressEvent(self, event):
        if event.button() == QtCore.Qt.MiddleButton:
            self.pan_from = event.pos()
            self.viewport().setCursor(QtCore.Qt.ClosedHandCursor)
        else:
            # Every node a drag moves, at every step of the way, is one undo step.
            if event.button() == QtCore.Qt.LeftButton and not self.dragging:
                self.dragging = True
                nuke.Undo.begin("Move")
            super().mousePressEvent(event)

    def mouseMoveEvent(self, event):
        if self.pan_from is not None:
            delta = event.pos() - self.pan_from
            self.pan_from = event.pos()
            self.horizontalScrollBar().setValue(self.horizontalScrollBar().value() - delta.x())
            self.verticalScrollBar().setValue(self.verticalScrollBar().value() - delta.y())
        else:
            super().mouseMoveEvent(event)

    def mouseReleaseEvent(self, event):
        if event.button() == QtCore.Qt.MiddleButton and self.pan_from is not None:
            self.pan_from = None
            self.viewport().unsetCursor()
        else:
            try:
                super().mouseReleaseEvent(event)
            finally:
                if event.button() == QtCore.Qt.LeftButton and self.dragging:
                    self.dragging = False
                    nuke.Undo.end()

    def wheelEvent(self, event):
        factor = 1.15 if event.angleDelta().y() > 0 else 1 / 1.15
        self.scale(factor, factor)

    def keyPressEvent(self, event):
        key = event.key()
        if key in (QtCore.Qt.Key_Delete, QtCore.Qt.Key_Backspace):
            self.host.delete_selected()
        elif key in (QtCore.Qt.Key_Return, QtCore.Qt.Key_Enter) \
                and event.modifiers() & QtCore.Qt.ControlModifier:
            groups = [n for n in self.group.nodes() if n.isSelected() and isinstance(n, nuke.Group)]
            if groups:
                self.enter(groups[-1])
        elif key == QtCore.Qt.Key_F:
            self.frame_all()
        elif QtCore.Qt.Key_1 <= key <= QtCore.Qt.Key_9 and not event.modifiers():
            self.host.view_selected(key - QtCore.Qt.Key_1)
        else:
            super().keyPressEvent(event)
