"""Taking a snapshot: the files it writes, the messages that stop it, and what it leaves behind in
the graph, the proxy mode and the browser."""

import os
import re

import pytest

from conftest import image_size, snapshots_in

STEM = re.compile(r"^(\d+)_(.+)$")


def taken(directory, ext):
    return [os.path.join(str(directory), f) for f in snapshots_in(directory) if f.endswith(ext)]


@pytest.mark.parametrize("mode, selected, expected", [
    ("all nodes", [], ["CheckerBoard2", "ColorBars", "Grade", "Viewer"]),
    ("upstream nodes", [], ["CheckerBoard2", "Grade"]),
    # Upstream of a viewed source node is the node itself.
    ("upstream nodes", "bars", ["ColorBars"]),
    ("node selection", ["bars", "grade"], ["ColorBars", "Grade"]),
    ("no such mode", [], None),
])
def test_the_viewed_node_at_this_frame_at_full_size_and_the_graph_its_mode_asks_for_are_written(
        rig, nuke, helper, comp, snap_dir, graph, messages, tmp_path, monkeypatch, mode, selected,
        expected):
    helper.update_xml("snapshot_selection", mode)
    if selected == "bars":
        comp["viewer"].setInput(0, comp["bars"])
    else:
        for name in selected:
            comp[name].setSelected(True)
    if mode == "all nodes":
        nuke.scriptSaveAs(str(tmp_path / "sq010_comp.v003.nk"))
    before = graph()
    assert nuke.activeViewer().activeInput() == 0  # input 0 is an input like any other
    seen = []
    real_execute = nuke.execute
    monkeypatch.setattr(nuke, "execute", lambda node, first, last: (
        seen.append((node["file"].value(), first, last, nuke.thisGroup().input(0).name(),
                     nuke.root()["proxy"].value())),
        real_execute(node, first, last))[1])
    nuke.frame(7)
    nuke.root()["proxy"].setValue(True)

    rig.snapshot("clicked flag")

    assert messages == []
    [image] = taken(snap_dir, ".jpg")
    viewed = "ColorBars1" if selected == "bars" else "Grade1"
    assert seen == [(image, 7, 7, viewed, False)]
    # The stem carries the saved script's name.
    stem = os.path.splitext(os.path.basename(image))[0]
    assert STEM.match(stem).group(2) == ("sq010_comp.v003" if mode == "all nodes" else "Root")
    # Proxy mode is back on afterwards; during the render it would have halved the image.
    assert nuke.root()["proxy"].value() is True and image_size(image)[0] == 240
    assert helper.load_settings()["current_snapshot_preview"] == image
    # No temporary node stays, and with no browser open the selection is as the mode leaves it.
    if mode != "upstream nodes":
        assert graph() == before
    nk = os.path.splitext(image)[0] + ".nk"
    if expected is None:
        assert not os.path.exists(nk)
    else:
        nuke.scriptClear()
        nuke.nodePaste(nk)
        assert sorted(n.Class() for n in nuke.allNodes()) == expected


def fake_viewer(nuke, monkeypatch, active_input, node):
    window = type("Window", (), {"activeInput": lambda self, secondary=False: active_input,
                                 "node": lambda self: node})()
    monkeypatch.setattr(nuke, "activeViewer", lambda: window)


@pytest.mark.parametrize("case, text", [
    ("empty selection", "Please select some nodes to export."),
    ("no directory", "Please set a snapshot directory before creating a snapshot."),
    ("no viewer", "No active viewer found. Please create a viewer node."),
    ("no viewer input", "Please set a viewer input."),
    ("no viewer node", "There is no active viewer node at the moment. Please select or create a "
                       "viewer."),
    ("nothing connected", "Cannot find comp node to create snapshot from."),
    # A failed render says so once and leaves no trace.
    ("nothing to render", "No valid data to write"),
    ("refused", "cannot write: disk full"),
])
@pytest.mark.parametrize("proxy", [False, True])
def test_each_precondition_or_failed_render_shows_its_message_and_leaves_everything_alone(
        rig, nuke, helper, comp, snap_dir, graph, messages, monkeypatch, case, text, proxy):
    {"empty selection": lambda: helper.update_xml("snapshot_selection", "node selection"),
     "no directory": lambda: helper.update_xml("current_snapshot_dir", None),
     "no viewer": lambda: nuke.delete(comp["viewer"]),
     "no viewer input": lambda: comp["viewer"].setInput(0, None),
     "no viewer node": lambda: fake_viewer(nuke, monkeypatch, 0, None),
     "nothing connected": lambda: fake_viewer(nuke, monkeypatch, 1, comp["viewer"]),
     "nothing to render": lambda: comp["grade"].setInput(0, None),
     "refused": lambda: monkeypatch.setattr(nuke, "execute", lambda *args: (_ for _ in ()).throw(
         RuntimeError("cannot write: disk full"))),
     }[case]()
    nuke.root()["proxy"].setValue(proxy)
    if case in ("nothing to render", "refused"):
        comp["bars"].setSelected(True)
    helper.update_xml("current_snapshot_preview", "/earlier/snapshot.jpg")
    before = graph()

    rig.snapshot()

    assert messages == [text]
    assert graph() == before
    assert nuke.root()["proxy"].value() is proxy
    assert snapshots_in(snap_dir) == []
    assert helper.load_settings()["current_snapshot_preview"] == "/earlier/snapshot.jpg"


def test_a_host_failure_after_the_group_is_made_still_cleans_up(rig, nuke, comp, snap_dir, graph,
                                                               monkeypatch):
    nuke.root()["proxy"].setValue(True)
    before = graph()
    monkeypatch.setattr(nuke, "allNodes", lambda *a, **k: (_ for _ in ()).throw(
        RuntimeError("host refused")))
    with pytest.raises(RuntimeError, match="host refused"):
        rig.snapshot()
    monkeypatch.undo()
    assert graph() == before
    assert nuke.root()["proxy"].value() is True
