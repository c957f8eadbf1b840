"""Widgets made in C++ reach Python as PySide2 objects, and failing reactions stay contained."""

import gc

import pytest
from cobaltRig.qt import QtCore, QtWidgets


@pytest.fixture
def probe(rig, qtbot):
    window = rig._testing.BridgeProbe()
    qtbot.addWidget(window.widget)
    window.show()
    return window


def test_failures_in_slots_report_to_the_console_and_the_window_lives_on(rig, probe, qtbot, capsys):
    seen = []

    def reaction(text):
        seen.append(text)
        if len(seen) == 1:
            raise ValueError("look store failed")

    assert isinstance(probe.input_text, QtWidgets.QLineEdit)
    assert isinstance(probe.push_apply, QtWidgets.QPushButton)
    probe.set_reaction(reaction)
    qtbot.keyClicks(probe.input_text, "a")
    qtbot.mouseClick(probe.push_apply, QtCore.Qt.LeftButton)
    err = capsys.readouterr().err
    assert "BridgeProbe.apply failed" in err
    assert "Traceback" in err and "ValueError: look store failed" in err
    qtbot.keyClicks(probe.input_text, "b")
    qtbot.mouseClick(probe.push_apply, QtCore.Qt.LeftButton)
    assert seen == ["a", "ab"] and probe.label_result.text() == "ab"
    # A C++ exception or a Python failure in a guarded slot is reported, never thrown.
    rig._testing.throw_in_guard()
    assert "C++ failure in a slot" in capsys.readouterr().err
    assert rig._testing.run_guarded(lambda: {}["pools"]) is True
    assert "KeyError" in capsys.readouterr().err


def test_wrappers_round_trip_and_live_as_long_as_their_widget(rig, probe):
    assert rig._testing.unwrap_roundtrip(probe.input_text) is probe.input_text
    assert rig._testing.unwrap_roundtrip(None) is None
    # A chain through a temporary wrapper, as a PySide2-written window would allow.
    layout = probe.widget.layout()
    gc.collect()
    assert layout.count() == 3
    assert probe.input_text is probe.input_text

