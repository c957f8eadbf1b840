"""The look slider: opened under the cursor, stepped with the keyboard, closed by its keys."""

import pytest
from cobaltRig import helper
from cobaltRig.qt import QtCore, QtGui

from looks_testing import press, select, with_looks

CURSOR = QtCore.QPoint(1000, 500)


@pytest.fixture(autouse=True)
def cursor(qapp):
    QtGui.QCursor.setPos(CURSOR)


def test_nothing_selected_opens_nothing_and_the_comparison_says_so(rig, nuke, host, chain,
                                                                  open_slider):
    for node in nuke.allNodes():
        node.setSelected(False)
    assert open_slider() is None and host.messages == []
    assert rig.show_look_diff() is None
    assert host.messages == ["Select a node to compare its looks."]


@pytest.mark.parametrize("shown, look, mix, offset", [
    ("", 1, 0.9, -160),   # nothing remembered: look 1, nothing applied
    ("2", 2, 0.2, -240),  # a remembered look of 2 or more is applied again at opening
    ("-7", 1, 0.9, 480),  # out of range: kept within it, as Qt keeps any value
    ("2147483647", 3, 0.3, -2 ** 31),
    ("99999999999", None, 0.9, None),  # more than the host reads as a whole number: refused
])
def test_the_window_opens_left_of_the_cursor_at_the_remembered_look(rig, nuke, chain, open_slider,
                                                                     shown, look, mix, offset):
    _, blur, _ = chain
    with_looks(nuke, blur, (0.1, 0.2, 0.3))
    blur["looks"].setTooltip(shown)
    blur["mix"].setValue(0.9)
    blur.selectOnly()

    if look is None:
        with pytest.raises(ValueError, match="Blur1: .* out of range"):
            open_slider()
        assert nuke.toNode("Blur1")["mix"].value() == mix
    else:
        window = open_slider()
        assert rig.slider is window and window.isVisible()
        assert window.widget.pos() == CURSOR + QtCore.QPoint(offset, -15)
        assert (window.slider.minimum(), window.slider.maximum()) == (1, 3)
        assert window.slider.value() == look and window.input_look.text() == str(look)
        assert window.input_look.maxLength() == 2
        assert nuke.toNode("Blur1")["mix"].value() == mix
        window.set_slider_index(-10 ** 20)  # far beyond an int, kept within the range all the same
        assert window.slider.value() == 1


def test_a_failure_in_the_walk_ends_it_silently(rig, nuke, chain, open_slider, qtbot,
                                                monkeypatch, capsys):
    _, blur, grade = chain
    with_looks(nuke, blur, (0.1, 0.2))
    with_looks(nuke, grade, (0.1, 0.2))
    blur.selectOnly()
    select(grade)
    window = open_slider()
    real_find = helper.find_looks_group

    def fails_once_blur_was_replaced():
        if nuke.toNode("Blur1") is not blur:
            raise RuntimeError("container unreachable")
        return real_find()

    monkeypatch.setattr(helper, "find_looks_group", fails_once_blur_was_replaced)
    press(qtbot, window, QtCore.Qt.Key_Right)

    assert capsys.readouterr().err == ""
    assert nuke.toNode("Blur1") is not blur and nuke.toNode("Grade1") is grade
    assert nuke.toNode("Blur1").isSelected()  # replaced before the failure: selected again


@pytest.mark.parametrize("setting, closes_on_e",
                         [("True", True), ("False", False), ("true", False)])
def test_escape_always_closes_and_e_only_when_set(rig, nuke, chain, open_slider, qtbot,
                                                  setting, closes_on_e):
    _, blur, _ = chain
    helper.update_xml("release_hotkey_closes_slider", setting)
    blur.selectOnly()
    window = open_slider()

    press(qtbot, window, QtCore.Qt.Key_E)
    assert window.isVisible() != closes_on_e

    window.show()
    press(qtbot, window, QtCore.Qt.Key_Escape)
    assert not window.isVisible()
