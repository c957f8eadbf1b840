"""The opening pattern shared by every window entry, shown on the settings window."""

import textwrap

import pytest


@pytest.mark.parametrize("old", [
    "broken close",   # the old window fails to close
    "no close",       # the slot holds something that is no window at all
])
def test_failures_of_the_old_window_are_swallowed(rig, monkeypatch, capsys, old):
    class Broken:
        def close(self):
            raise RuntimeError("already deleted")

    monkeypatch.setattr(rig, "settingswindow", Broken() if old == "broken close" else 42,
                        raising=False)
    window = rig.show_settings()
    assert rig.settingswindow is window
    assert capsys.readouterr().err == ""
    window.close()


def test_failed_construction_propagates_and_leaves_the_slot_unset(rig, monkeypatch):
    from cobaltRig import settings
    rig.show_settings().close()

    def refuse():
        raise RuntimeError("cannot build")

    monkeypatch.setattr(settings, "Settings", refuse)
    with pytest.raises(RuntimeError, match="cannot build"):
        rig.show_settings()
    assert not hasattr(rig, "settingswindow")


def test_a_window_deleted_by_qt_before_its_holder_lets_the_host_exit_cleanly(run_python):
    result = run_python(textwrap.dedent("""
        import nuke
        from cobaltRig.qt import QtCore
        from cobaltRig import cobaltRig_w as m
        m.kept_window = m._testing.BridgeProbe()
        m.kept_window.widget.deleteLater()
        QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
        print('deleted by Qt')
    """))
    assert result.returncode == 0, result.stderr
    assert "deleted by Qt" in result.stdout
