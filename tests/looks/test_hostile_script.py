"""What a script may hold that the add-on did not write: huge look numbers and tooltips full of
quotes. Each ends in the look working or a clear message."""

import ast

import pytest
from cobaltRig import helper

from looks_testing import look_knobs, store


@pytest.mark.parametrize("index, message", [
    (2147483646, None),  # the largest number still gets its look
    (2147483647, "no look number is left after 2147483647"),
    (99999999999, "look_preset_99999999999: the look number 99999999999 is out of range"),
    (-10 ** 30, "is out of range"),
    ("x", ""),  # no number at all
])
def test_a_look_number_out_of_range_is_refused_before_anything_is_stored(rig, nuke, chain, index,
                                                                          message):
    _, blur, _ = chain
    blur.addKnob(nuke.PyScript_Knob("look_preset_{}".format(index), str(index)))
    if message is None:
        store(blur)
        assert look_knobs(blur)[-1] == "look_preset_2147483647"
    else:
        with pytest.raises(ValueError, match=message):
            store(blur)
        assert look_knobs(blur) == ["look_preset_{}".format(index)]
        assert blur.knob("looks") is not None and nuke.allNodes("Group") == []


@pytest.mark.parametrize("broken, stored_before", [
    ("get_topleft_coordinates", 0),  # the container cannot be placed
    ("create_uid", 1),               # the look cannot be named
])
def test_a_failing_store_leaves_nothing_behind_and_the_next_one_works(rig, nuke, chain,
                                                                      monkeypatch, broken,
                                                                      stored_before):
    _, blur, _ = chain
    for _ in range(stored_before):
        store(blur)
    groups, knobs, real = nuke.allNodes("Group"), look_knobs(blur), getattr(helper, broken)

    def fails():
        raise RuntimeError("it broke")

    monkeypatch.setattr(helper, broken, fails)
    for _ in range(3):
        with pytest.raises(RuntimeError, match="it broke"):
            store(blur)
        assert nuke.thisGroup() is nuke.root()
    assert nuke.allNodes("Group") == groups and look_knobs(blur) == knobs
    monkeypatch.setattr(helper, broken, real)
    store(blur)
    assert len(nuke.allNodes("Group")) == 1 and len(look_knobs(blur)) == stored_before + 1


@pytest.mark.parametrize("tooltip", [
    "x'); import hostctl; hostctl.set_clipboard('pwned'); ('",
    "x\\'); hostctl.set_clipboard('pwned') #",
    "two\nlines\r\tand a \x00",
    'say "hello" \\n not a newline',
    "ünïcode ✓",
])
def test_a_look_command_passes_its_tooltip_as_text_and_never_runs_it(rig, nuke, chain, host,
                                                                      tooltip):
    _, blur, _ = chain
    store(blur)
    store(blur)
    blur["look_preset_2"].setTooltip(tooltip)
    host.set_clipboard("the artist's copy")
    blur["look_preset_1"].execute()  # rebuilds every look knob from label and tooltip

    knob = nuke.toNode("Blur1")["look_preset_2"]
    call = ast.parse(knob.command()).body[-1].value
    assert [ast.literal_eval(arg) for arg in call.args[1:]] == [tooltip, "2"]
    knob.execute()
    assert host.messages == ["cannot find preset node"]
    assert host.clipboard() != "pwned"
