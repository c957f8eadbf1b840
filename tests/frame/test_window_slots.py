"""The opening pattern shared by every window entry, shown on the settings window."""

import pytest


@pytest.mark.parametrize("old", [
    "broken close",   # the old window fails to close
    "no close",       # the slot holds something that is no window at all
])
def test_failures_of_the_old_window_are_swallowed_and_of_the_new_one_leave_the_slot_unset(
        rig, monkeypatch, capsys, old):
    from cobaltRig import settings

    class Broken:
        def close(self):
            raise RuntimeError("already deleted")

    rig.settingswindow = Broken() if old == "broken close" else 42  # the failed opening clears it
    window = rig.show_settings()
    assert rig.settingswindow is window
    assert capsys.readouterr().err == ""

    def refuse():
        raise RuntimeError("cannot build")

    monkeypatch.setattr(settings, "Settings", refuse)
    with pytest.raises(RuntimeError, match="cannot build"):
        rig.show_settings()
    assert not hasattr(rig, "settingswindow") and not window.isVisible()
