"""The resolution slider: the viewer's downrez step from a slider and a two-digit field."""

import pytest
from cobaltRig.qt import QtCore, QtGui, QtWidgets

CURSOR = QtCore.QPoint(900, 400)


@pytest.fixture
def viewer(nuke):
    viewer = nuke.createNode("Viewer", inpanel=False)
    viewer["downrez"].setValue("2.0")
    return viewer


@pytest.fixture
def writes(viewer, monkeypatch):
    """Every value written to the viewer's downrez knob, in order."""
    knob = viewer["downrez"]
    seen = []
    real = type(knob).setValue

    def record(self, value):
        if self is knob:
            seen.append(value)
        return real(self, value)

    monkeypatch.setattr(type(knob), "setValue", record)
    return seen


@pytest.fixture
def window(rig, viewer, writes, qtbot):
    QtGui.QCursor.setPos(CURSOR)
    window = rig.showRezSlider()
    qtbot.addWidget(window.widget)
    yield window
    window.close()


@pytest.mark.parametrize("typed, field, position, last_write", [
    ("0", "1", 0, "0.0"),
    ("00", "1", 0, "0.0"),
    ("33", "32", 5, "5.0"),
    ("99", "32", 5, "5.0"),
    ("16", "16", 4, "4.0"),
    ("3", "3", 2, None),     # no step: only the field changes
    ("12", "12", 0, "0.0"),  # the first digit alone was a step
    ("paste 08", "8", 3, "3.0"),
])
def test_typing_into_the_field(window, viewer, writes, qtbot, typed, field, position,
                               last_write):
    window.input_rez.clear()
    assert writes == []
    if typed.startswith("paste "):
        window.input_rez.insert(typed.split()[1])
    else:
        qtbot.keyClicks(window.input_rez, typed)
    assert window.input_rez.text() == field
    assert window.slider.value() == position
    assert (writes[-1] if writes else None) == last_write
    if last_write:
        assert viewer["downrez"].getValue() == float(last_write)


def release(widget, key, text, auto_repeat=False):
    event = QtGui.QKeyEvent(QtCore.QEvent.KeyRelease, key, QtCore.Qt.NoModifier, text, auto_repeat)
    QtWidgets.QApplication.sendEvent(widget, event)


def test_it_opens_at_the_viewer_step_the_slider_sets_field_and_viewer_and_the_hotkey_closes_it(
        rig, window, viewer, writes, qtbot):
    assert rig.rezslider is window and window.isVisible()
    assert window.input_rez.text() == "4" and window.slider.sliderPosition() == 2
    assert window.widget.pos() == CURSOR + QtCore.QPoint(-180, -15) and writes == []
    # The hotkey closes on its real release (not an auto-repeat), and escape too.
    qtbot.keyPress(window.slider, QtCore.Qt.Key_Right)
    assert window.input_rez.text() == "8" and viewer["downrez"].value() == "8"
    release(window.slider, QtCore.Qt.Key_Y, "y", auto_repeat=True)
    release(window.slider, QtCore.Qt.Key_X, "x")
    assert window.isVisible()
    release(window.slider, QtCore.Qt.Key_Y, "y")
    assert not window.isVisible()
    assert set(writes) == {"3.0"}
    window.show()
    qtbot.keyPress(window.slider, QtCore.Qt.Key_Left)
    qtbot.keyPress(window.slider, QtCore.Qt.Key_Escape)
    assert not window.isVisible() and viewer["downrez"].value() == "4"


def test_without_a_viewer_value_the_open_window_closes_and_none_opens(rig, window, nuke,
                                                                    viewer):
    nuke.delete(viewer)
    assert rig.showRezSlider() is None
    assert not window.isVisible() and not hasattr(rig, "rezslider")
