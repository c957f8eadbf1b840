"""Draws the icons of cobaltRig into this folder.

Run it once after changing a picture (``QT_QPA_PLATFORM=offscreen scripts/python python/cobaltRig/icons/draw_icons.py``); the
PNG files it writes are committed, so the host never needs to run it. Every picture is drawn on
a 64 by 64 grid with plain shapes and no fonts, and scaled to its file size with antialiasing.
"""

import math
import os
import sys

from cobaltRig.qt import QtCore, QtGui

HERE = os.path.dirname(os.path.abspath(__file__))

LIGHT = QtGui.QColor("#e3e6ea")
COBALT = QtGui.QColor("#3a7bd5")
COBALT_DARK = QtGui.QColor("#2a5ba3")
RED = QtGui.QColor("#d9534f")
GREEN = QtGui.QColor("#5cb85c")
AMBER = QtGui.QColor("#e6a23c")
GOLD = QtGui.QColor("#f2c94c")
GREY = QtGui.QColor("#5b6066")
FOLDER = QtGui.QColor("#d9a441")

P = QtCore.QPointF
R = QtCore.QRectF


def pen(colour, width=5.0):
    p = QtGui.QPen(colour, width)
    p.setCapStyle(QtCore.Qt.RoundCap)
    p.setJoinStyle(QtCore.Qt.RoundJoin)
    return p


def outline(painter, colour, width=5.0):
    painter.setPen(pen(colour, width))
    painter.setBrush(QtCore.Qt.NoBrush)


def solid(painter, colour):
    painter.setPen(QtCore.Qt.NoPen)
    painter.setBrush(colour)


def polygon(*points):
    return QtGui.QPolygonF([P(x, y) for x, y in points])


# ------------------------------------------------------------------------------------------
# Building blocks
# ------------------------------------------------------------------------------------------


def folder_shape(painter, colour, rect=R(6, 14, 52, 40)):
    x, y, w, h = rect.x(), rect.y(), rect.width(), rect.height()
    path = QtGui.QPainterPath()
    path.moveTo(x, y + 4)
    path.lineTo(x, y + h - 3)
    path.quadTo(x, y + h, x + 3, y + h)
    path.lineTo(x + w - 3, y + h)
    path.quadTo(x + w, y + h, x + w, y + h - 3)
    path.lineTo(x + w, y + 10)
    path.quadTo(x + w, y + 7, x + w - 3, y + 7)
    path.lineTo(x + w * 0.45, y + 7)
    path.lineTo(x + w * 0.38, y)
    path.lineTo(x + 3, y)
    path.quadTo(x, y, x, y + 4)
    solid(painter, colour)
    painter.drawPath(path)
    painter.setPen(QtCore.Qt.NoPen)
    painter.setBrush(QtGui.QColor(0, 0, 0, 40))
    painter.drawRect(R(x, y + 13, w, 2))


def node_box(painter, rect, fill=COBALT, border=LIGHT, width=3.0):
    painter.setPen(pen(border, width))
    painter.setBrush(fill)
    painter.drawRoundedRect(rect, 4, 4)


def arrow(painter, colour, start, end, head=10.0, width=5.0):
    outline(painter, colour, width)
    painter.drawLine(start, end)
    angle = math.atan2(end.y() - start.y(), end.x() - start.x())
    for side in (-1, 1):
        a = angle + math.pi - side * math.radians(40)
        painter.drawLine(end, P(end.x() + head * math.cos(a), end.y() + head * math.sin(a)))


def magnifier(painter, colour):
    outline(painter, colour, 5)
    painter.drawEllipse(P(26, 26), 16, 16)
    painter.setPen(pen(colour, 8))
    painter.drawLine(P(38, 38), P(55, 55))


def trash(painter, colour):
    outline(painter, colour, 4.5)
    painter.drawLine(P(12, 16), P(52, 16))
    painter.drawPolyline(polygon((25, 16), (27, 9), (37, 9), (39, 16)))
    painter.drawPolyline(polygon((17, 16), (20, 56), (44, 56), (47, 16)))
    painter.drawLine(P(27, 25), P(28, 47))
    painter.drawLine(P(37, 25), P(36, 47))


def picture(painter, rect, colour=LIGHT):
    outline(painter, colour, 4)
    painter.drawRoundedRect(rect, 3, 3)
    x, y, w, h = rect.x(), rect.y(), rect.width(), rect.height()
    solid(painter, colour)
    painter.drawPolygon(polygon((x + 4, y + h - 4), (x + w * 0.4, y + h * 0.4), (x + w * 0.65, y + h * 0.7),
                                (x + w * 0.78, y + h * 0.55), (x + w - 4, y + h - 4)))
    painter.drawEllipse(P(x + w * 0.75, y + h * 0.28), w * 0.08, w * 0.08)


def circular_arrow(painter, colour, width=5.0, centre=P(32, 32), radius=20.0):
    outline(painter, colour, width)
    rect = R(centre.x() - radius, centre.y() - radius, radius * 2, radius * 2)
    painter.drawArc(rect, 40 * 16, 280 * 16)
    # Head at the end of the arc (40 degrees), pointing along the turn.
    turn = math.radians(40)
    end = P(centre.x() + radius * math.cos(turn), centre.y() - radius * math.sin(turn))
    solid(painter, colour)
    x, y = end.x(), end.y()
    painter.drawPolygon(polygon((x - 9, y - 5), (x + 7, y - 9), (x + 3, y + 8)))


def cross(painter, colour, inset=14.0, width=7.0):
    outline(painter, colour, width)
    painter.drawLine(P(inset, inset), P(64 - inset, 64 - inset))
    painter.drawLine(P(64 - inset, inset), P(inset, 64 - inset))


def star(painter, colour, centre=P(32, 33), outer=27.0, inner=11.5):
    points = []
    for i in range(10):
        radius = outer if i % 2 == 0 else inner
        angle = math.radians(-90 + i * 36)
        points.append((centre.x() + radius * math.cos(angle), centre.y() + radius * math.sin(angle)))
    painter.setPen(pen(colour.darker(140), 2.5))
    painter.setBrush(colour)
    painter.drawPolygon(polygon(*points))


def tray(painter, colour):
    outline(painter, colour, 5)
    painter.drawPolyline(polygon((10, 38), (10, 54), (54, 54), (54, 38)))


def small_graph(painter, offset=P(0, 0), scale=1.0):
    painter.save()
    painter.translate(offset)
    painter.scale(scale, scale)
    outline(painter, LIGHT, 3)
    painter.drawLine(P(16, 20), P(32, 44))
    painter.drawLine(P(48, 20), P(32, 44))
    node_box(painter, R(6, 10, 20, 12))
    node_box(painter, R(38, 10, 20, 12))
    node_box(painter, R(22, 40, 20, 12), fill=COBALT_DARK)
    painter.restore()


def gear(painter, colour):
    path = QtGui.QPainterPath()
    teeth = 8
    for i in range(teeth * 2):
        radius = 26 if i % 2 == 0 else 20
        a0 = math.radians(i * 180.0 / teeth - 90 / teeth)
        a1 = math.radians((i + 1) * 180.0 / teeth - 90 / teeth)
        p0 = P(32 + radius * math.cos(a0), 32 + radius * math.sin(a0))
        p1 = P(32 + radius * math.cos(a1), 32 + radius * math.sin(a1))
        if i == 0:
            path.moveTo(p0)
        else:
            path.lineTo(p0)
        path.lineTo(p1)
    path.closeSubpath()
    hole = QtGui.QPainterPath()
    hole.addEllipse(P(32, 32), 9, 9)
    solid(painter, colour)
    painter.drawPath(path.subtracted(hole))


def question_mark(painter, colour):
    outline(painter, colour, 5)
    painter.drawEllipse(P(32, 32), 27, 27)
    path = QtGui.QPainterPath()
    path.moveTo(22, 25)
    path.cubicTo(22, 12, 42, 12, 42, 24)
    path.cubicTo(42, 32, 32, 32, 32, 40)
    painter.setPen(pen(colour, 6))
    painter.drawPath(path)
    solid(painter, colour)
    painter.drawEllipse(P(32, 49), 3.8, 3.8)


def hexagon(centre, radius):
    return polygon(*[(centre.x() + radius * math.cos(math.radians(60 * i - 90)),
                      centre.y() + radius * math.sin(math.radians(60 * i - 90))) for i in range(6)])


def logo(painter, body, lines):
    painter.setPen(QtCore.Qt.NoPen)
    painter.setBrush(body)
    painter.drawPolygon(hexagon(P(32, 32), 29))
    # Three nodes wired into one: what the tool is about.
    outline(painter, lines, 3.5)
    painter.drawLine(P(20, 22), P(32, 44))
    painter.drawLine(P(44, 22), P(32, 44))
    solid(painter, lines)
    for centre in (P(20, 22), P(44, 22), P(32, 44)):
        painter.drawEllipse(centre, 6, 6)


# ------------------------------------------------------------------------------------------
# The icons
# ------------------------------------------------------------------------------------------


def draw_pool(p):
    for i, y in enumerate((44, 32, 20)):
        p.setPen(pen(LIGHT, 3))
        p.setBrush(COBALT if i != 2 else COBALT.lighter(125))
        p.drawRect(R(12, y, 40, 8))
        p.drawEllipse(R(12, y + 2, 40, 12))
        p.drawEllipse(R(12, y - 6, 40, 12))


def draw_nodes(p):
    outline(p, LIGHT, 4)
    p.drawLine(P(32, 4), P(32, 20))
    p.drawLine(P(32, 44), P(32, 60))
    node_box(p, R(10, 20, 44, 24))


def draw_toolsets(p):
    small_graph(p)


def draw_preset(p):
    outline(p, LIGHT, 4)
    p.drawPolygon(polygon((14, 6), (40, 6), (52, 18), (52, 58), (14, 58)))
    p.drawPolyline(polygon((40, 6), (40, 18), (52, 18)))
    node_box(p, R(21, 30, 24, 14), width=2.5)


def draw_insert(p):
    node_box(p, R(12, 38, 40, 20))
    arrow(p, LIGHT, P(32, 4), P(32, 30))


def draw_insert_img(p):
    picture(p, R(6, 22, 40, 34))
    arrow(p, GREEN, P(50, 4), P(50, 30), head=8)


def draw_insert_nk(p):
    small_graph(p, P(-2, 14), 0.85)
    arrow(p, GREEN, P(52, 4), P(52, 28), head=8)


def draw_explorer(p):
    folder_shape(p, FOLDER)
    outline(p, QtGui.QColor("#fff4dc"), 4)
    p.drawRoundedRect(R(14, 30, 36, 18), 2, 2)


def draw_reveal(p):
    folder_shape(p, FOLDER)
    arrow(p, LIGHT, P(18, 38), P(46, 38), head=8)


def draw_refresh(p):
    circular_arrow(p, LIGHT)


def draw_edit(p):
    p.save()
    p.translate(32, 32)
    p.rotate(45)
    p.setPen(pen(LIGHT, 3))
    p.setBrush(AMBER)
    p.drawRect(R(-7, -26, 14, 38))
    p.setBrush(LIGHT)
    p.drawPolygon(polygon((-7, 12), (7, 12), (0, 26)))
    p.restore()


def draw_delete(p):
    trash(p, RED)


def draw_delete_selected(p):
    picture(p, R(6, 8, 40, 32))
    cross(p, RED, width=6)
    outline(p, RED, 6)


def draw_delete_all(p):
    outline(p, LIGHT, 3)
    p.drawRoundedRect(R(14, 4, 40, 30), 3, 3)
    picture(p, R(6, 12, 40, 32))
    outline(p, RED, 6)
    p.drawLine(P(30, 34), P(56, 60))
    p.drawLine(P(56, 34), P(30, 60))


def draw_comment(p):
    path = QtGui.QPainterPath()
    path.addRoundedRect(R(6, 8, 52, 36), 8, 8)
    tail = QtGui.QPainterPath()
    tail.addPolygon(polygon((16, 40), (14, 56), (30, 42)))
    p.setPen(pen(LIGHT, 4))
    p.setBrush(QtCore.Qt.NoBrush)
    p.drawPath(path.united(tail))
    outline(p, LIGHT, 4)
    p.drawLine(P(18, 21), P(46, 21))
    p.drawLine(P(18, 31), P(38, 31))


def draw_eye(p):
    path = QtGui.QPainterPath()
    path.moveTo(4, 32)
    path.quadTo(32, 2, 60, 32)
    path.quadTo(32, 62, 4, 32)
    p.setPen(pen(LIGHT, 4))
    p.setBrush(QtCore.Qt.NoBrush)
    p.drawPath(path)
    solid(p, COBALT)
    p.drawEllipse(P(32, 32), 11, 11)
    solid(p, LIGHT)
    p.drawEllipse(P(36, 28), 3.5, 3.5)


def draw_flag(p):
    outline(p, LIGHT, 5)
    p.drawLine(P(14, 6), P(14, 60))
    solid(p, RED)
    path = QtGui.QPainterPath()
    path.moveTo(16, 8)
    path.cubicTo(28, 2, 36, 16, 54, 9)
    path.lineTo(54, 33)
    path.cubicTo(36, 40, 28, 26, 16, 32)
    path.closeSubpath()
    p.drawPath(path)


def draw_nocolor(p):
    outline(p, LIGHT, 5)
    p.drawEllipse(P(32, 32), 24, 24)
    outline(p, RED, 5)
    p.drawLine(P(15, 49), P(49, 15))


def draw_snapshot(p):
    p.setPen(pen(LIGHT, 4))
    p.setBrush(QtCore.Qt.NoBrush)
    body = QtGui.QPainterPath()
    body.addRoundedRect(R(5, 18, 54, 36), 6, 6)
    top = QtGui.QPainterPath()
    top.addPolygon(polygon((20, 19), (25, 10), (39, 10), (44, 19)))
    p.drawPath(body.united(top))
    p.drawEllipse(P(32, 36), 11, 11)
    solid(p, COBALT)
    p.drawEllipse(P(32, 36), 6, 6)
    solid(p, RED)
    p.drawEllipse(P(50, 26), 2.5, 2.5)


def draw_settings(p):
    gear(p, LIGHT)


def draw_help(p):
    question_mark(p, LIGHT)


def draw_half(p):
    outline(p, LIGHT, 4)
    p.drawRoundedRect(R(6, 10, 52, 44), 3, 3)
    solid(p, COBALT)
    p.drawRect(R(10, 30, 26, 20))


def draw_maximize(p):
    outline(p, LIGHT, 5)
    for sx, sy in ((1, 1), (-1, 1), (1, -1), (-1, -1)):
        cx = 32 - sx * 22
        cy = 32 - sy * 22
        p.drawPolyline(polygon((cx, cy + sy * 14), (cx, cy), (cx + sx * 14, cy)))


def draw_x(p):
    cross(p, LIGHT, inset=16, width=6)


def draw_plus(p):
    magnifier(p, LIGHT)
    outline(p, LIGHT, 4)
    p.drawLine(P(26, 18), P(26, 34))
    p.drawLine(P(18, 26), P(34, 26))


def draw_minus(p):
    magnifier(p, LIGHT)
    outline(p, LIGHT, 4)
    p.drawLine(P(18, 26), P(34, 26))


def draw_slider(p):
    outline(p, LIGHT, 5)
    p.drawLine(P(6, 32), P(58, 32))
    p.setPen(pen(LIGHT, 3))
    p.setBrush(COBALT)
    p.drawRoundedRect(R(30, 18, 12, 28), 3, 3)


def draw_resolution(p):
    for row in range(2):
        for col in range(2):
            solid(p, COBALT if (row + col) % 2 == 0 else LIGHT)
            p.drawRect(R(8 + col * 24, 8 + row * 24, 24, 24))
    for row in range(4):
        for col in range(4):
            if (row + col) % 2 == 0:
                solid(p, GREY)
                p.drawRect(R(32 + col * 6, 32 + row * 6, 6, 6))


def draw_folder(p):
    folder_shape(p, FOLDER)


def draw_folder_white(p):
    folder_shape(p, LIGHT)


def draw_logo(p):
    logo(p, COBALT, LIGHT)


def draw_logo_grey(p):
    logo(p, QtGui.QColor("#34383d"), QtGui.QColor("#4a4f55"))


def draw_look_star(p):
    star(p, GOLD)


def draw_look_update(p):
    circular_arrow(p, COBALT.lighter(130), width=7, radius=19)


def draw_look_delete(p):
    cross(p, RED, inset=14, width=9)


def draw_look_import(p):
    tray(p, GREEN)
    arrow(p, GREEN, P(32, 6), P(32, 42), head=12, width=7)


def draw_look_export(p):
    tray(p, AMBER)
    arrow(p, AMBER, P(32, 42), P(32, 6), head=12, width=7)


# File name -> (drawing, edge length in pixels).
ICONS = {
    "pool.png": (draw_pool, 64),
    "nodes.png": (draw_nodes, 64),
    "toolsets.png": (draw_toolsets, 64),
    "folder.png": (draw_folder, 64),
    "folder_white.png": (draw_folder_white, 64),
    "preset.png": (draw_preset, 64),
    "insert.png": (draw_insert, 64),
    "insert_img.png": (draw_insert_img, 64),
    "insert_nk.png": (draw_insert_nk, 64),
    "explorer.png": (draw_explorer, 64),
    "reveal.png": (draw_reveal, 64),
    "refresh.png": (draw_refresh, 64),
    "edit.png": (draw_edit, 64),
    "delete.png": (draw_delete, 64),
    "delete_selected.png": (draw_delete_selected, 64),
    "delete_all.png": (draw_delete_all, 64),
    "comment.png": (draw_comment, 64),
    "eye.png": (draw_eye, 64),
    "flag.png": (draw_flag, 64),
    "nocolor.png": (draw_nocolor, 64),
    "snapshot.png": (draw_snapshot, 64),
    "settings.png": (draw_settings, 64),
    "help.png": (draw_help, 64),
    "half.png": (draw_half, 64),
    "maximize.png": (draw_maximize, 64),
    "x.png": (draw_x, 64),
    "plus.png": (draw_plus, 64),
    "minus.png": (draw_minus, 64),
    "slider.png": (draw_slider, 64),
    "resolution.png": (draw_resolution, 64),
    "logo.png": (draw_logo, 64),
    "logo_grey.png": (draw_logo_grey, 240),
    # Shown inline in the labels of look buttons, next to one line of text.
    "look_star.png": (draw_look_star, 16),
    "look_update.png": (draw_look_update, 16),
    "look_delete.png": (draw_look_delete, 16),
    "look_import.png": (draw_look_import, 16),
    "look_export.png": (draw_look_export, 16),
}


def render(draw, size):
    # Drawn four times larger and scaled down, so small icons keep smooth edges.
    big = size * 4
    image = QtGui.QImage(big, big, QtGui.QImage.Format_ARGB32_Premultiplied)
    image.fill(QtCore.Qt.transparent)
    painter = QtGui.QPainter(image)
    painter.setRenderHint(QtGui.QPainter.Antialiasing)
    painter.scale(big / 64.0, big / 64.0)
    draw(painter)
    painter.end()
    return image.scaled(size, size, QtCore.Qt.IgnoreAspectRatio, QtCore.Qt.SmoothTransformation)


def main(folder=HERE):
    app = QtGui.QGuiApplication.instance() or QtGui.QGuiApplication(sys.argv[:1])
    for name, (draw, size) in sorted(ICONS.items()):
        path = os.path.join(folder, name)
        if not render(draw, size).save(path, "PNG"):
            raise SystemExit("cannot write " + path)
    return 0 if app else 1


if __name__ == "__main__":
    sys.exit(main())
