"""A small script to store and apply looks on: CheckerBoard -> Blur -> Grade."""

import pytest


@pytest.fixture
def chain(nuke):
    source = nuke.createNode("CheckerBoard", inpanel=False)
    blur = nuke.createNode("Blur", inpanel=False)
    grade = nuke.createNode("Grade", inpanel=False)
    return source, blur, grade


@pytest.fixture
def open_slider(rig, qtbot):
    """Opens the look slider as the hotkey does; closes every window it opened at the end."""
    windows = []

    def open_():
        window = rig.show_looks_slider()
        if window is not None:
            qtbot.addWidget(window.widget)
            windows.append(window)
        return window

    yield open_
    for window in windows:
        window.close()
