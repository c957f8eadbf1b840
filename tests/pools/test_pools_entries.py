"""The entries that open the pool windows, and how the windows close."""

import pytest
from cobaltRig.qt import QtCore


@pytest.mark.parametrize("selected, switch, title, message", [
    (0, "True", None, None),
    (1, "True", "Export Blur look", None),
    (2, "True", "Export toolsets look", None),
    (0, "False", None, "Exporting nodes is disabled."),
    (1, "False", None, "Exporting nodes is disabled."),
])
def test_export_nodes_follows_the_selection_and_the_switch(rig, nuke, host, pool, advanced,
                                                           selected, switch, title, message):
    advanced(export_items=switch)
    for node in [nuke.nodes.Blur(), nuke.nodes.Grade()][:selected]:
        node.setSelected(True)

    assert rig.export_nodes() is None

    assert host.messages == ([message] if message else [])
    if title is None:
        assert not hasattr(rig, "exportwindow")
    else:
        assert rig.exportwindow.widget.windowTitle() == title and rig.exportwindow.isVisible()


@pytest.mark.parametrize("open_window, slot, button", [
    (lambda rig, nuke: rig.export_preset(nuke.nodes.Blur(), "signal value"), "exportwindow",
     "push_cancel"),
    (lambda rig, nuke: rig.import_preset("signal value"), "i", "push_close"),
], ids=["export", "import"])
def test_escape_and_the_button_close_the_window(rig, nuke, pool, qtbot, open_window, slot, button):
    for close in (lambda w: qtbot.keyClick(w.input_name, QtCore.Qt.Key_Escape),
                  lambda w: qtbot.mouseClick(getattr(w, button), QtCore.Qt.LeftButton)):
        open_window(rig, nuke)
        close(getattr(rig, slot))
        assert not getattr(rig, slot).isVisible()


def test_opening_twice_leaves_the_second_window_which_read_pool_and_settings_anew(
        rig, pool, helper, user):
    first = rig.import_preset()
    (pool / "nodes" / "Grade" / "new.nk").write_text("")
    helper.update_xml("icon_size", "12")
    second = rig.import_preset()
    assert rig.i is second and not first.isVisible() and second.isVisible()
    assert second.slider_size.value() == 12
    assert str(pool / "nodes" / "Grade" / "new.nk") in user.items(second)
