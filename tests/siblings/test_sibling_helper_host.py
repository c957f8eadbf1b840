"""The helpers that ask the host's graph, against a small stand-in of the host's module."""

import sys
import types

import pytest

from cobaltRig import helper


class Node(object):
    def __init__(self, name, cls="Blur", x=0, y=0, knobs=(), inputs=(), downrez=None):
        self._name, self._cls, self._x, self._y, self._inputs = name, cls, x, y, inputs
        self._knobs = dict((k, types.SimpleNamespace(getValue=lambda: downrez)) for k in knobs)

    def name(self):
        return self._name

    def Class(self):
        return self._cls

    def xpos(self):
        return self._x

    def ypos(self):
        return self._y

    def knobs(self):
        return dict(self._knobs)

    def __getitem__(self, key):
        if key not in self._knobs:
            raise NameError(key)
        return self._knobs[key]

    def dependencies(self):
        return [n for n in self._inputs if n is not None]


@pytest.fixture
def fake_nuke(monkeypatch):
    module = types.ModuleType("nuke")
    module.graph, module.viewer, module.groups = [], None, []
    root = object()

    def allNodes(filter=None, group=None, recurseGroups=False):
        module.groups.append(group)
        return [n for n in module.graph if filter is None or n.Class() == filter]

    module.allNodes = allNodes
    module.root = lambda: root
    module.activeViewer = lambda: module.viewer
    monkeypatch.setitem(sys.modules, "nuke", module)
    return module


def test_find_looks_group_finds_the_container_and_makes_none(fake_nuke):
    container = Node("looks", "Group", knobs=["looks", "notice", "looks_group"])
    fake_nuke.graph = [Node("Blur1", knobs=["looks_group"]), Node("Group1", "Group")]
    assert helper.find_looks_group() is False
    fake_nuke.graph.append(container)
    assert helper.find_looks_group() is container
    assert len(fake_nuke.graph) == 3
    # Without a node: the current group context, which is where the compiled code asks.
    assert set(fake_nuke.groups) == {None}


def test_topleft_lies_above_the_graph_and_ignores_the_container(fake_nuke):
    assert helper.get_topleft_coordinates() == (0, 0)
    fake_nuke.graph = [Node("a", x=100, y=-40), Node("b", x=-250, y=300),
                       Node("looks", "Group", x=-9000, y=-9000, knobs=["looks_group"])]
    x, y = helper.get_topleft_coordinates()
    assert x == -250 and y < -40 and isinstance(y, int)


@pytest.mark.parametrize("value, expected", [(0.0, "0.0"), (2.0, "2.0"), (5, "5.0"), ("3.0", "3.0")])
def test_resolution_is_the_downrez_index_as_float_text(fake_nuke, value, expected):
    viewer_node = Node("Viewer1", "Viewer", knobs=["downrez"], downrez=value)
    fake_nuke.viewer = types.SimpleNamespace(node=lambda: viewer_node)
    assert helper.get_resolution() == expected


@pytest.mark.parametrize("viewer", [None, types.SimpleNamespace(node=lambda: None),
                                    types.SimpleNamespace(node=lambda: Node("Viewer1", "Viewer"))])
def test_no_resolution_without_an_active_viewer(fake_nuke, viewer):
    fake_nuke.viewer = viewer
    assert helper.get_resolution() is None


def test_connected_nodes_are_everything_upstream_once():
    read1, read2 = Node("Read1", "Read"), Node("Read2", "Read")
    grade = Node("Grade1", inputs=[read1])
    merge = Node("Merge1", inputs=[grade, None, read2])
    blur = Node("Blur1", inputs=[merge, read1])

    upstream = helper.get_connected_nodes(blur)
    assert sorted(n.name() for n in upstream) == ["Grade1", "Merge1", "Read1", "Read2"]
    assert helper.get_connected_nodes(read1) == []
