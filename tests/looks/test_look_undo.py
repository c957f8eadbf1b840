"""Every look operation is one named step of the host's undo list: one undo gives back the script
exactly as it was, one redo the result."""

from types import SimpleNamespace

import pytest
from cobaltRig.qt import QtCore

from looks_testing import chain_in, press, select, with_looks


# Each operation yields once, just before the act whose undo step is checked.
def button(name, look=None):
    """Presses a button of the blur; `look` is the one its panel's pulldown is set to."""
    def operation(s):
        if look:
            s.host.queue_panel(1, {"Select a preset to " + name[len("look_"):]: look})
        yield
        s.blur[name].execute()

    return operation


def slider_step(s):
    s.blur.selectOnly()
    window = s.open_slider()
    yield
    press(s.qtbot, window, QtCore.Qt.Key_Right)


def store_selection(s):
    s.blur.selectOnly()
    select(s.grade)
    yield
    with s.group:
        s.rig.batch_set_look()


def remove_looks(s):
    s.blur.selectOnly()
    yield
    with s.group:
        s.rig.delete_selected_nodes_looks()


@pytest.mark.parametrize("where", ["root", "group", "instance-only undo"])
@pytest.mark.parametrize("operation, step_name", [
    (button("look_new"), "Store look"), (button("look_preset_1"), "Apply look 1"),
    (slider_step, "Apply look 2"), (button("look_update", "1"), "Update look 1"),
    (button("look_delete", "2"), "Delete look 2"), (store_selection, "Store looks"),
    (remove_looks, "Remove looks"),
])
def test_one_undo_takes_the_operation_back_and_one_redo_brings_it_again(
        rig, nuke, host, open_slider, qtbot, where, operation, step_name):
    host.set_undo_instance_only(where == "instance-only undo")  # as some host versions have it
    group = nuke.nodes.Group() if where == "group" else nuke.root()
    _, blur, grade = chain_in(nuke, group)
    with_looks(nuke, blur, (0.1, 0.2))
    blur["mix"].setValue(0.9)
    act = operation(SimpleNamespace(rig=rig, host=host, group=group, blur=blur, grade=grade,
                                    open_slider=open_slider, qtbot=qtbot))
    next(act)
    before, steps = host.script_text(), nuke.Undo().undoSize()

    next(act, None)

    after = host.script_text()
    assert after != before and host.messages == []
    assert nuke.Undo().undoSize() == steps + 1
    assert nuke.Undo().undoDescribe(0) == step_name
    nuke.undo()
    assert host.script_text() == before
    nuke.redo()
    assert host.script_text() == after


def test_a_slider_step_that_changes_nothing_leaves_no_step(rig, nuke, host, open_slider, qtbot):
    blur = with_looks(nuke, nuke.createNode("Blur", inpanel=False), (0.1, 0.2))
    grade = nuke.createNode("Grade", inpanel=False)
    select(blur)
    window = open_slider()
    blur.setSelected(False)  # only a node without looks is left selected
    assert grade.isSelected()
    steps = nuke.Undo.undoSize()
    press(qtbot, window, QtCore.Qt.Key_Right)
    assert nuke.Undo.undoSize() == steps
