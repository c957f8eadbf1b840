"""A small script to store and apply looks on: CheckerBoard -> Blur -> Grade; the look windows."""

import pytest

from looks_testing import chain_in


@pytest.fixture
def chain(nuke):
    return chain_in(nuke, nuke.root())


@pytest.fixture
def open_window(qtbot):
    """Opens a window as its hotkey does; closes every window it opened at the end."""
    windows = []

    def open_(entry):
        window = entry()
        if window is not None:
            qtbot.addWidget(window.widget)
            windows.append(window)
        return window

    yield open_
    for window in windows:
        window.close()


@pytest.fixture
def open_slider(rig, open_window):
    return lambda: open_window(rig.show_looks_slider)
