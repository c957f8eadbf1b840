"""Images: what the image nodes make of their inputs, drawn with Qt's image classes.

A render walks from a node up through its inputs and gives a QImage (ARGB32, premultiplied). Pixels
are counted from the bottom-left corner, as the host counts them: a positive y translate moves the
image up, and a smaller A input of a Merge sits in B's bottom-left corner.

Sizes are whole numbers: a height scaled to a new width is the height times the new width divided by
the old width, multiplied first and rounded down. The root's proxy mode halves what a render gives.

There is no time: every frame of a render is the same image.

Layer: rendering, on the graph (`_graph`) and the bottom layer (`_state`, `_host`).
"""

import os
import re

from . import _graph as G
from ._host import QtCore, QtGui, QtWidgets
from ._state import STATE

# The words the host uses when a tree ends in a node that makes no image.
NO_CHANNELS = "has no valid channels"

_Image = QtGui.QImage
_FORMAT = _Image.Format_ARGB32_Premultiplied

# The file types a Write writes, by the extension of its file name.
_WRITE_TYPES = {".jpg": "JPG", ".jpeg": "JPG", ".png": "PNG"}

_MODES = QtGui.QPainter.CompositionMode
# Merge operations that stay within the area A covers, so that drawing A onto B is all they take.
MERGE_MODES = {
    "over": _MODES.CompositionMode_SourceOver,
    "under": _MODES.CompositionMode_DestinationOver,
    "atop": _MODES.CompositionMode_SourceAtop,
    "plus": _MODES.CompositionMode_Plus,
    "multiply": _MODES.CompositionMode_Multiply,
    "screen": _MODES.CompositionMode_Screen,
    "overlay": _MODES.CompositionMode_Overlay,
    "difference": _MODES.CompositionMode_Difference,
    "exclusion": _MODES.CompositionMode_Exclusion,
    "max": _MODES.CompositionMode_Lighten,
    "min": _MODES.CompositionMode_Darken,
    "color-dodge": _MODES.CompositionMode_ColorDodge,
    "color-burn": _MODES.CompositionMode_ColorBurn,
}

_BARS = ((1, 1, 1), (1, 1, 0), (0, 1, 1), (0, 1, 0), (1, 0, 1), (1, 0, 0), (0, 0, 1))
_CHECKER = ((0.1, 0.1, 0.1), (0.5, 0.5, 0.5))


# ---------------------------------------------------------------------------------------------
# Small image helpers
# ---------------------------------------------------------------------------------------------


def _blank(width, height):
    image = _Image(max(1, width), max(1, height), _FORMAT)
    image.fill(QtCore.Qt.transparent)
    return image


def _color(values):
    """A QColor from 0..1 floats (rgb or rgba); values outside are clamped."""
    clamped = [min(1.0, max(0.0, float(v))) for v in values]
    return QtGui.QColor.fromRgbF(*clamped)


def _values(node, name):
    knob = node[name]
    return [knob.value(i) for i in range(knob.dimensions())]


def scale_to_width(image, width):
    """The image at `width` pixels across, its aspect kept in whole pixels."""
    width = max(1, int(width))
    height = max(1, image.height() * width // image.width())
    return image.scaled(width, height, QtCore.Qt.IgnoreAspectRatio, QtCore.Qt.SmoothTransformation)


def proxy_image(image):
    """What proxy mode gives of a full-size image: half its width, aspect kept."""
    return scale_to_width(image, image.width() // 2)


def _gain(image, gains):
    """Multiplies the straight (not premultiplied) colour channels by `gains`, alpha untouched.

    A painter multiplies by a colour of at most 1, so a gain above 1 is split into parts of at most
    1 that are added up: 2.5 = 1 + 1 + 0.5.
    """
    gains = [max(0.0, g) for g in gains]
    if gains == [1.0, 1.0, 1.0]:
        return image
    straight = image.convertToFormat(_Image.Format_ARGB32)
    # An 8-bit alpha image: setAlphaChannel takes its values as they are, in Qt 5 and Qt 6 alike.
    alpha = straight.convertToFormat(_Image.Format_Alpha8)
    opaque = straight.convertToFormat(_Image.Format_RGB32).convertToFormat(_FORMAT)
    result = _Image(opaque.size(), _FORMAT)
    result.fill(QtCore.Qt.black)
    adder = QtGui.QPainter(result)
    adder.setCompositionMode(_MODES.CompositionMode_Plus)
    step = 0
    while step < max(gains):
        part = _Image(opaque)
        multiplier = QtGui.QPainter(part)
        multiplier.setCompositionMode(_MODES.CompositionMode_Multiply)
        multiplier.fillRect(part.rect(), _color([g - step for g in gains]))
        multiplier.end()
        adder.drawImage(0, 0, part)
        step += 1
    adder.end()
    result = result.convertToFormat(_Image.Format_ARGB32)
    result.setAlphaChannel(alpha)
    return result.convertToFormat(_FORMAT)


def _blur(image, radius):
    """A gaussian blur of about `radius` pixels; outside the image counts as transparent."""
    scene = QtWidgets.QGraphicsScene()
    item = QtWidgets.QGraphicsPixmapItem(QtGui.QPixmap.fromImage(image))
    effect = QtWidgets.QGraphicsBlurEffect()
    effect.setBlurRadius(radius)
    effect.setBlurHints(QtWidgets.QGraphicsBlurEffect.QualityHint)
    item.setGraphicsEffect(effect)
    scene.addItem(item)
    result = _blank(image.width(), image.height())
    painter = QtGui.QPainter(result)
    area = QtCore.QRectF(0, 0, image.width(), image.height())
    scene.render(painter, area, area)
    painter.end()
    return result


# ---------------------------------------------------------------------------------------------
# The nodes
# ---------------------------------------------------------------------------------------------


def _no_image(node):
    return RuntimeError("{} {}".format(node.fullName(), NO_CHANNELS))


class _Render:
    """One render: each node's image is made once, however many nodes below take it."""

    def __init__(self):
        self._done = {}

    def image(self, node):
        key = id(node)
        if key not in self._done:
            self._done[key] = self._make(node)
        return self._done[key]

    def input(self, node, index=0):
        source = node.input(index)
        if source is None:
            raise _no_image(node)
        return self.image(source)

    def _make(self, node):
        cls = node.Class()
        disable = node.knob("disable")
        if disable is not None and disable.value():
            return self.input(node)
        maker = _MAKERS.get(cls)
        if maker is None:
            raise RuntimeError("{}: a {} makes no image".format(node.fullName(), cls))
        return maker(self, node)


def _constant(render, node):
    fmt = node["format"].value()
    image = _blank(fmt.width(), fmt.height())
    image.fill(_color(_values(node, "color")))
    return image


def _color_bars(render, node):
    fmt = node["format"].value()
    width, height = fmt.width(), fmt.height()
    image = _blank(width, height)
    painter = QtGui.QPainter(image)
    for i, bar in enumerate(_BARS):
        left, right = i * width // len(_BARS), (i + 1) * width // len(_BARS)
        painter.fillRect(left, 0, right - left, height, _color(bar))
    painter.end()
    return image


def _checker_board(render, node):
    fmt = node["format"].value()
    width, height = fmt.width(), fmt.height()
    size = max(1, int(node["boxsize"].value()))
    image = _blank(width, height)
    painter = QtGui.QPainter(image)
    for row in range((height + size - 1) // size):
        top = height - (row + 1) * size  # rows count up from the bottom edge
        for column in range((width + size - 1) // size):
            painter.fillRect(column * size, top, size, size, _color(_CHECKER[(row + column) % 2]))
    painter.end()
    return image


def _read(render, node):
    path = node["file"].value()
    if not path:
        raise RuntimeError("{}: no file name given".format(node.fullName()))
    image = _Image(path)
    if image.isNull():
        raise RuntimeError("{}: cannot read {}".format(node.fullName(), path))
    return image.convertToFormat(_FORMAT)


def _grade(render, node):
    white, multiply = _values(node, "white"), _values(node, "multiply")
    return _gain(render.input(node), [white[c] * multiply[c] for c in range(3)])


def _blur_node(render, node):
    image = render.input(node)
    size = max(_values(node, "size"))
    return image if size <= 0 else _blur(image, size)


def _transform(render, node):
    """Scales and rotates about `center`, then moves by `translate`; all counted from the
    bottom-left corner. What leaves the frame is gone, what it uncovers is transparent."""
    image = render.input(node)
    height = image.height()
    x, y = _values(node, "translate")
    cx, cy = _values(node, "center")
    sx, sy = _values(node, "scale")
    result = _blank(image.width(), height)
    painter = QtGui.QPainter(result)
    painter.setRenderHint(QtGui.QPainter.SmoothPixmapTransform)
    painter.translate(x + cx, height - y - cy)
    painter.rotate(-node["rotate"].value())
    painter.scale(sx, sy)
    painter.translate(-cx, cy - height)
    painter.drawImage(0, 0, image)
    painter.end()
    return result


def _merge(render, node):
    operation = node["operation"].value()
    mode = MERGE_MODES.get(operation)
    if mode is None:
        raise RuntimeError("{}: the operation {} is not available in this host".format(
            node.fullName(), operation))
    b_node, a_node = node.input(0), node.input(1)
    if b_node is None and a_node is None:
        raise _no_image(node)
    a = render.image(a_node) if a_node is not None else None
    b = render.image(b_node) if b_node is not None else _blank(a.width(), a.height())
    result = _Image(b)
    if a is not None:
        painter = QtGui.QPainter(result)
        painter.setCompositionMode(mode)
        painter.setOpacity(min(1.0, max(0.0, node["mix"].value())))
        painter.drawImage(0, result.height() - a.height(), a)
        painter.end()
    return result


def _reformat(render, node):
    image = render.input(node)
    kind = node["type"].value()
    if kind == "to box":
        width = int(node["box_width"].value())
        if width <= 0:
            raise RuntimeError("{}: the box width must be positive".format(node.fullName()))
        if node["box_fixed"].value():
            return image.scaled(width, max(1, int(node["box_height"].value())),
                                QtCore.Qt.IgnoreAspectRatio, QtCore.Qt.SmoothTransformation)
        return scale_to_width(image, width)
    if kind == "scale":
        sx, sy = _values(node, "scale")
        return image.scaled(max(1, int(image.width() * sx)), max(1, int(image.height() * sy)),
                            QtCore.Qt.IgnoreAspectRatio, QtCore.Qt.SmoothTransformation)
    fmt = node["format"].value()
    return image.scaled(fmt.width(), fmt.height(), QtCore.Qt.IgnoreAspectRatio,
                        QtCore.Qt.SmoothTransformation)


def _pass_through(render, node):
    return render.input(node)


def _viewer(render, node):
    shown = node._viewer_active[0]
    return render.input(node, 0 if shown is None else shown)


def _switch(render, node):
    which = int(node["which"].value())
    return render.input(node, min(max(0, which), max(0, node.inputs() - 1)))


def _group(render, node):
    output = node.output()
    if output is None:
        raise _no_image(node)
    return render.image(output)


def _group_input(render, node):
    """An Input node gives what feeds its group at the input of its number."""
    group = node._parent
    source = group.input(int(node["number"].value())) if group is not None else None
    if source is None:
        raise _no_image(node)
    return render.image(source)


_MAKERS = {
    "Constant": _constant,
    "ColorBars": _color_bars,
    "CheckerBoard2": _checker_board,
    "CheckerBoard": _checker_board,
    "Read": _read,
    "Grade": _grade,
    "Blur": _blur_node,
    "Transform": _transform,
    "Merge2": _merge,
    "Reformat": _reformat,
    "Dot": _pass_through,
    "NoOp": _pass_through,
    "Output": _pass_through,
    "Write": _pass_through,
    "Viewer": _viewer,
    "Switch": _switch,
    "Group": _group,
    "Input": _group_input,
}


# ---------------------------------------------------------------------------------------------
# What the host offers
# ---------------------------------------------------------------------------------------------


def render(node, proxy=None):
    """The image `node` gives, at half size in proxy mode (the root's `proxy` knob unless told)."""
    G._check_node(node)
    image = _Render().image(node)
    if proxy is None:
        proxy = STATE.root["proxy"].value()
    return proxy_image(image) if proxy else image


_HASHES = re.compile(r"#+")
_PRINTF = re.compile(r"%(0\d+)?d")


def frame_path(path, frame):
    """The file name of one frame: "####" and "%04d" become the frame number, padded."""
    path = _HASHES.sub(lambda m: "{:0{}d}".format(frame, len(m.group(0))), path)
    return _PRINTF.sub(lambda m: "{:{}d}".format(frame, m.group(1) or ""), path)


def _write_frame(node, image, frame):
    path = frame_path(node["file"].value(), frame)
    kind = _WRITE_TYPES.get(os.path.splitext(path)[1].lower())
    if kind is None:
        raise RuntimeError("{}: cannot write {}: the file name must end in .jpg or .png".format(
            node.fullName(), path))
    if kind == "JPG":
        # A jpg has no alpha: what it keeps is the image over black.
        flat = _Image(image.size(), _Image.Format_RGB32)
        flat.fill(QtCore.Qt.black)
        painter = QtGui.QPainter(flat)
        painter.drawImage(0, 0, image)
        painter.end()
        image = flat
    if not image.save(path, kind, 90):
        raise RuntimeError("{}: cannot write {}".format(node.fullName(), path))


def execute(nameOrNode, start=None, end=None, incr=None, views=None, continueOnError=False):
    """Renders a Write for the frames `start` to `end` (the script's range when neither is given)
    and writes its file; blocks until the last frame is written."""
    node = G.toNode(nameOrNode) if isinstance(nameOrNode, str) else nameOrNode
    if node is None:
        raise ValueError("{}: no such node".format(nameOrNode))
    G._check_node(node)
    if node.Class() != "Write":
        raise RuntimeError("{}: only a Write can be executed".format(node.fullName()))
    if not node["file"].value():
        raise RuntimeError("{}: no file name given".format(node.fullName()))
    if start is None:
        start = STATE.root["first_frame"].value()
        end = STATE.root["last_frame"].value() if end is None else end
    start = int(start)
    end = start if end is None else int(end)
    incr = 1 if incr is None else int(incr)
    if incr <= 0:
        raise ValueError("execute: the frame increment must be positive")
    image = render(node)
    for frame in range(start, end + 1, incr):
        _write_frame(node, image, frame)
