"""Knob values and commands, the root and the viewer, panels and messages."""

import pytest

import hostctl
import nuke


REPORT = "nuke.message(' '.join((nuke.thisNode().fullName(), nuke.thisKnob().name(), " \
         "nuke.thisGroup().fullName())))"


def test_button_commands_run_with_this_node_and_knob_and_restore_them_even_when_failing():
    group = nuke.nodes.Group()
    with group:
        inner = nuke.nodes.Blur()
    outer = nuke.nodes.Blur()
    inner.addKnob(nuke.PyScript_Knob("probe", "probe", REPORT))
    outer.addKnob(nuke.PyScript_Knob("outer", "outer", "nuke.toNode('{}')['probe'].execute()\n{}"
                                     .format(inner.fullName(), REPORT)))
    outer["outer"].execute()
    assert hostctl.messages == ["Group1.Blur1 probe Group1", "Blur1 outer root"]
    assert nuke.thisKnob() is None and nuke.thisNode() is nuke.root()
    inner.addKnob(nuke.PyScript_Knob("bad", "bad", "nuke.thisGroup().begin()\nraise KeyError('x')"))
    with pytest.raises(KeyError):
        inner["bad"].execute()
    assert nuke.thisGroup() is nuke.root() and nuke.thisKnob() is None


@pytest.mark.parametrize("given", [2, 2.0, "2.0", "4", "6.0", "64", "half", 1.5, -1])
def test_downrez_takes_index_float_text_and_step_and_refuses_the_rest(given):
    knob = nuke.nodes.Viewer()["downrez"]
    if given in (2, "2.0", "4"):
        knob.setValue(given)
        assert (knob.value(), knob.getValue()) == ("4", 2.0)
    else:
        with pytest.raises(ValueError):
            knob.setValue(given)
        assert knob.value() == "1"


@pytest.mark.parametrize("knob, bad", [
    (lambda: nuke.String_Knob("s"), 5),
    (lambda: nuke.Int_Knob("i"), "5"),
    (lambda: nuke.Boolean_Knob("b"), "False"),
])
def test_setters_refuse_values_of_the_wrong_type(knob, bad):
    with pytest.raises(TypeError):
        knob().setValue(bad)


def test_active_viewer_is_the_newest_unless_chosen():
    assert nuke.activeViewer() is None
    source = nuke.nodes.ColorBars()
    first = nuke.nodes.Viewer()
    second = nuke.nodes.Viewer()
    window = nuke.activeViewer()
    assert window.node() is second and window.activeInput() is None
    with pytest.raises(ValueError):
        window.activateInput(1)
    second.setInput(1, source)
    assert window.activeInput() == 1
    hostctl.set_active_viewer(first)
    assert nuke.activeViewer().node() is first
    nuke.delete(first)
    assert nuke.activeViewer().node() is second


def test_dialog_answers_come_from_the_queue_are_recorded_and_a_missing_one_fails_the_test():
    hostctl.queue_panel(1, {"Select a preset to update": "10"})
    hostctl.queue_panel(0)
    panel = nuke.Panel("Update preset")
    panel.addEnumerationPulldown("Select a preset to update", "1 10 2")
    assert panel.show() == 1 and panel.value("Select a preset to update") == "10"
    assert panel.value("no such control") is None
    again = nuke.Panel("Delete preset")
    again.addEnumerationPulldown("Select a preset to delete", "")
    assert again.show() == 0 and again.value("Select a preset to delete") == ""
    assert [(p["title"], p["pulldowns"], p["result"]) for p in hostctl.panels_shown] == [
        ("Update preset", {"Select a preset to update": ["1", "10", "2"]}, 1),
        ("Delete preset", {"Select a preset to delete": []}, 0)]
    for queued in (None, {"Select a preset to update": "3"}):  # none, or one the list lacks
        if queued is not None:
            hostctl.queue_panel(1, queued)
        with pytest.raises(hostctl.UnexpectedDialog):
            panel.show()
    nuke.message("cannot find preset node")
    hostctl.queue_answer(False)
    hostctl.queue_answer("typed")
    assert nuke.ask("Sure?") is False and nuke.getInput("Name", "x") == "typed"
    assert hostctl.messages == ["cannot find preset node"] and hostctl.pending_answers() == 0
    with pytest.raises(hostctl.UnexpectedDialog):
        nuke.ask("again?")


def test_interactive_panel_is_a_real_modal_dialog(qapp):
    from cobaltRig.qt import QtCore, QtWidgets

    def answer():
        dialog = QtWidgets.QApplication.activeModalWidget()
        dialog.findChild(QtWidgets.QComboBox, "choice").setCurrentText("b")
        dialog.findChild(QtWidgets.QLineEdit, "name").setText("typed")
        dialog.accept()

    hostctl.set_interactive(True)
    panel = nuke.Panel("Pick")
    panel.addEnumerationPulldown("choice", "a b c")
    panel.addSingleLineInput("name", "")
    QtCore.QTimer.singleShot(0, answer)
    assert panel.show() == 1
    assert (panel.value("choice"), panel.value("name")) == ("b", "typed")
