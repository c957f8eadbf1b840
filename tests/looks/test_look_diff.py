"""The table of what each look changes, as an artist opens and uses it."""

import pytest
from cobaltRig.qt import QtCore, QtTest

from looks_testing import nested_group, press, select, store, stored_copies

LEFT, RIGHT = QtCore.Qt.MouseButton.LeftButton, QtCore.Qt.MouseButton.RightButton
ANIMATED = "{{curve x1 0 x10 0.2 x20 0.1}}"
EXPRESSION = "{{parent.mix*0.5}}"


def grade_with_looks(nuke, host, tmp_path, depth=0):
    """Grade1 with three looks of different knobs (look 3's user knob lost since), read back with
    `add` animated and `blackpoint` an expression. Gives the node's full name."""
    group = nested_group(nuke, depth)
    with group:
        grade = nuke.createNode("Grade", inpanel=False)
    for look in ({"white": 2.0}, {"gamma": [0.8, 0.9, 1.0, 1.0], "multiply": 1.5},
                 {"mix": 0.5, "strength": 0.25}):
        if "strength" in look:
            grade.addKnob(nuke.Double_Knob("strength", "strength"))
        for knob, value in look.items():
            grade[knob].setValue(value)
        store(grade)
        for knob in look:  # back to the default; the user knob goes
            if knob == "strength":
                grade.removeKnob(grade[knob])
            else:
                grade[knob].setValue(1.0)
    text = host.script_text()
    at = text.index("name Grade1\n") + len("name Grade1\n")
    text = text[:at] + " add {}\n blackpoint {}\n".format(ANIMATED, EXPRESSION) + text[at:]
    path = str(tmp_path / "scene.nk")
    with open(path, "w") as f:
        f.write(text)
    nuke.scriptClear()
    nuke.scriptReadFile(path)
    return "root." + ".".join(["Group{}".format(i) for i in range(1, depth + 1)] + ["Grade1"])


@pytest.fixture
def open_diff(rig, nuke, open_window):
    def open_(name):
        nuke.toNode(name).selectOnly()
        return open_window(rig.show_look_diff)

    return open_


def table(window):
    """{knob: [now, look 1, ...]} and the column headers, as the window shows them."""
    t = window.table_looks
    headers = [t.horizontalHeaderItem(c).text() for c in range(t.columnCount())]
    rows = {t.verticalHeaderItem(r).text(): [t.item(r, c).text() for c in range(t.columnCount())]
            for r in range(t.rowCount())}
    return headers, rows


def is_dimmed(window, knob, column):
    row = window.row_knobs.index(knob)
    return window.table_looks.item(row, column).foreground().style() != QtCore.Qt.BrushStyle.NoBrush


TABLE = {
    "blackpoint": ["parent.mix*0.5", "0 0 0 0", "0 0 0 0", "0 0 0 0"],
    "white": ["1 1 1 1", "2 2 2 2", "1 1 1 1", "1 1 1 1"],
    "multiply": ["1 1 1 1", "1 1 1 1", "1.5 1.5 1.5 1.5", "1 1 1 1"],
    "add": ["animated (3 keys)", "0 0 0 0", "0 0 0 0", "0 0 0 0"],
    "gamma": ["1 1 1 1", "1 1 1 1", "0.8 0.9 1 1", "1 1 1 1"],
    "mix": ["1", "1", "1", "0.5"],
    "strength": ["-", "-", "-", "0.25"],
}


@pytest.mark.parametrize("depth, how, reason", [
    (0, None, ""), (2, None, ""),
    (0, "missing", "\nstored copy is missing"),
    (0, "another class", "\nstored copy is a Blur, not a Grade"),
    (0, "inside a Group", "\nstored copy is inside a Group"),
])
def test_each_look_shows_the_knobs_it_changes_or_why_it_cannot(rig, nuke, host, tmp_path,
                                                                open_diff, depth, how, reason):
    name = grade_with_looks(nuke, host, tmp_path, depth)
    if how:
        copy = stored_copies(nuke)[nuke.toNode(name)["look_preset_2"].tooltip()]
        with nuke.toNode("looks"):
            if how == "another class":
                nuke.nodes.Blur(label=copy["label"].value())
            elif how == "inside a Group":
                copy.selectOnly()
                nuke.makeGroup(False)
        nuke.delete(copy)
    nuke.toNode(name).selectOnly()  # as opening does, so that the script text compares
    before = host.script_text()
    window = open_diff(name)
    headers, rows = table(window)
    assert headers == ["now", "look 1", "look 2" + reason, "look 3"]
    if how:  # the knobs only look 2 changed are gone, and its column is empty
        assert rows == {knob: values[:2] + [""] + values[3:] for knob, values in TABLE.items()
                        if knob not in ("multiply", "gamma")}
    else:
        assert rows == TABLE
    assert is_dimmed(window, "white", 2) and not is_dimmed(window, "white", 1)
    assert is_dimmed(window, "strength", 1) and not is_dimmed(window, "strength", 3)
    window.close()
    assert host.script_text() == before


def test_a_value_or_a_look_set_from_the_table_is_one_undo_step_and_refresh_reads_the_host(
        rig, nuke, host, tmp_path, open_diff, qtbot):
    window = open_diff(grade_with_looks(nuke, host, tmp_path))
    before = host.script_text()
    t = window.table_looks
    rect = t.visualItemRect(t.item(window.row_knobs.index("gamma"), 2))
    QtTest.QTest.mouseClick(t.viewport(), RIGHT, QtCore.Qt.KeyboardModifier.NoModifier,
                            rect.center())
    menu = window.menu_cell
    qtbot.waitUntil(menu.isVisible)
    action = window.action_set_value
    assert action.text() == "set this value on the node" and action.isEnabled()
    QtTest.QTest.mouseClick(menu, LEFT, QtCore.Qt.KeyboardModifier.NoModifier,
                            menu.actionGeometry(action).center())
    grade = nuke.toNode("Grade1")
    assert grade["gamma"].value() == [0.8, 0.9, 1.0, 1.0] and grade["multiply"].value() == 1.0
    assert table(window)[1]["gamma"][0] == "0.8 0.9 1 1"
    changed = [line for line in host.script_text().splitlines() if line not in before.splitlines()]
    assert [line.split()[0] for line in changed] == ["gamma"]
    nuke.undo()
    assert host.script_text() == before

    header = t.horizontalHeader()
    center = QtCore.QPoint(header.sectionViewportPosition(2) + header.sectionSize(2) // 2,
                           header.height() // 2)
    QtTest.QTest.mouseDClick(header.viewport(), LEFT, QtCore.Qt.KeyboardModifier.NoModifier, center)
    grade = nuke.toNode("Grade1")
    assert grade["multiply"].value() == 1.5 and grade["looks"].tooltip() == "2"
    assert window.node["name"].value() == "Grade1"
    assert all(is_dimmed(window, knob, 2) for knob in window.row_knobs)
    nuke.undo()
    assert host.script_text() == before

    # What changes in the host shows after a refresh, or when the window shows again.
    nuke.toNode("Grade1")["mix"].setValue(0.5)
    assert table(window)[1]["mix"][0] == "1"
    QtTest.QTest.mouseClick(window.push_refresh, LEFT)
    assert "mix" in table(window)[1] and table(window)[1]["mix"][0] == "0.5"
    nuke.toNode("Grade1")["look_preset_1"].execute()
    window.widget.hide()
    window.show()
    assert window.node is not None and table(window)[1]["white"][0] == "2 2 2 2"


def test_the_slider_tool_tip_counts_what_the_look_changes(rig, nuke, host, open_slider, qtbot):
    grades = [nuke.createNode("Grade", inpanel=False) for _ in range(2)]
    defaults = {"mix": 1.0, "gamma": 1.0, "add": 0.0}
    for grade, knobs in zip(grades, (("mix", "gamma", "add"), ("mix",))):
        for knob in knobs:
            grade[knob].setValue(0.5)
        store(grade)
        for knob in knobs:
            grade[knob].setValue(defaults[knob])
        store(grade)
    select(*grades)
    window = open_slider()
    press(qtbot, window, QtCore.Qt.Key.Key_Right)
    assert window.slider.toolTip() == "Grade1: 0 knobs\nGrade2: 0 knobs"
    press(qtbot, window, QtCore.Qt.Key.Key_Left)
    assert window.slider.toolTip() == "Grade1: 3 knobs\nGrade2: 1 knob"
