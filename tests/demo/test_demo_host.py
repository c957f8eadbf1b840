"""The demo host: it starts on its sample with the add-on loaded, its panes mirror the script, and what
the user does in them reaches the nodes."""

import importlib
import os
import subprocess
import sys

import pytest
from cobaltRig.qt import QtCore, QtGui, QtWidgets

import nuke
from demo import sample
from demo.main_window import DemoHost, host_shortcut

HOSTSIM = os.path.dirname(os.path.dirname(os.path.abspath(nuke.__file__)))


@pytest.fixture
def demo(host, qtbot, tmp_path):
    """The demo host's window on its sample, as scripts/demo starts it, with the add-on's menu."""
    sys.modules.pop("cobaltRig.menu", None)
    importlib.import_module("cobaltRig.menu")
    grade = sample.prepare(str(tmp_path / "demo"))
    window = DemoHost()
    qtbot.addWidget(window)
    window.show()
    window.open_panel(grade, "looks")
    window.grade = grade
    yield window
    window.close()
    nuke.menu("Nuke").removeItem("cobaltRig")


def test_it_starts_on_the_sample_with_the_add_on_menu_and_the_look_tab(demo):
    assert set(demo.graph.items) == {id(n) for n in nuke.allNodes()}
    assert len(demo.graph.edges) == sum(len(n.dependencies()) for n in nuke.allNodes())
    assert demo.viewer.image.size().toTuple() == (1280, 720)
    assert demo.windowTitle().endswith("sample.nk")
    menus = {a.text(): a.menu() for a in demo.menuBar().actions()}
    looks = {a.text(): a for a in menus["cobaltRig"].actions()}["looks"].menu()
    store = {a.text(): a for a in looks.actions()}["store look of selected nodes"]
    assert store.shortcut() == host_shortcut("alt+shift+L") == QtGui.QKeySequence("Alt+Shift+L")
    panel = demo.properties.panel(demo.grade)
    assert panel.tabs.tabText(panel.tabs.currentIndex()) == "looks"
    buttons = [b.objectName() for b in panel.tabs.currentWidget().findChildren(QtWidgets.QPushButton)]
    assert buttons == ["look_new", "look_update", "look_delete", "preset_import", "preset_export"]
    # Hidden knobs stay off the panel; the button shows its icon and plain text.
    assert panel.findChild(QtWidgets.QWidget, "look_uid") is None
    new = panel.findChild(QtWidgets.QPushButton, "look_new")
    assert new.text() == "new" and not new.icon().isNull()


def test_a_failing_button_reports_to_the_console_and_the_host_goes_on(demo, qtbot):
    # pytest puts its own sys.stderr in place between the fixture and the test.
    demo.console.release()
    demo.console.capture()
    node = nuke.nodes.NoOp()
    knob = nuke.PyScript_Knob("boom", "boom", "nuke.thisNode()['label'].setValue('ran'); 1/0")
    knob.setTooltip("divides by zero")
    node.addKnob(knob)
    panel = demo.open_panel(node)
    button = panel.findChild(QtWidgets.QPushButton, "boom")
    assert button.toolTip() == "divides by zero"
    qtbot.mouseClick(button, QtCore.Qt.LeftButton)
    assert node["label"].value() == "ran"
    assert "ZeroDivisionError" in demo.console.toPlainText()


def type_in(field, text):
    field.setText(text)
    field.editingFinished.emit()


@pytest.mark.parametrize("node_class, knob, answer, expected", [
    ("Blur1", "size", lambda w: type_in(w.findChild(QtWidgets.QLineEdit, "size_value"), "40"), 40),
    ("Blur", "disable", lambda w: w.setChecked(True), True),
    ("Merge2", "operation", lambda w: w.activated.emit(w.findText("plus")), "plus"),
    ("Reformat", "box_width", lambda w: w.setValue(320), 320),
    ("Constant", "format", lambda w: w.activated.emit(w.findText("PAL")), "PAL"),
    ("NoOp", "label", lambda w: type_in(w, "hello"), "hello"),
])
def test_each_kind_of_field_writes_its_knob_and_the_viewer_renders_again(demo, node_class, knob,
                                                                         answer, expected):
    node = nuke.toNode(node_class) or getattr(nuke.nodes, node_class)()  # Blur1 is viewed
    before = demo.viewer.image
    panel = demo.open_panel(node, "Node" if knob == "label" else node.Class())
    answer(panel.tabs.currentWidget().findChild(QtWidgets.QWidget, knob))
    value = node[knob].value()
    assert (value.name() if knob == "format" else value) == expected
    demo.sync()
    assert node_class != "Blur1" or demo.viewer.image is not before


def test_the_viewer_shows_its_input_at_downrez_and_proxy_size(demo):
    for downrez, proxy, width in (("2", False, 640), ("4", True, 160), ("1", False, 1280)):
        nuke.toNode("Viewer1")["downrez"].setValue(downrez)
        nuke.root()["proxy"].setValue(proxy)
        demo.sync()
        assert demo.viewer.image.width() == width, (downrez, proxy)


def test_dragging_and_selecting_in_the_graph_reach_the_nodes(demo, qtbot):
    blur = nuke.toNode("Blur1")
    item = demo.graph.items[id(blur)]
    item.setPos(300, 420)
    assert (blur.xpos(), blur.ypos()) == (300, 420)
    item.setSelected(True)
    assert blur.isSelected() and demo.grade.isSelected()
    demo.graph.scene().clearSelection()
    assert nuke.selectedNodes() == []
    # A double-click on a box opens its node's panel.
    demo.graph.frame_all()
    point = demo.graph.mapFromScene(item.sceneBoundingRect().center() - QtCore.QPointF(0, 10))
    qtbot.mouseDClick(demo.graph.viewport(), QtCore.Qt.LeftButton, pos=point)
    assert blur.shown() and demo.properties.panel(blur) is not None


def drag(widget, start, end):
    """A left-button drag as the mouse makes it: press, moves with the button held, release."""
    def send(kind, point, buttons):
        # The scene finds items by the screen position: give it the real one.
        screen = QtCore.QPointF(widget.mapToGlobal(point.toPoint()))
        event = QtGui.QMouseEvent(kind, point, point, screen, QtCore.Qt.LeftButton, buttons,
                                  QtCore.Qt.NoModifier)
        QtWidgets.QApplication.sendEvent(widget, event)

    send(QtCore.QEvent.MouseButtonPress, start, QtCore.Qt.LeftButton)
    for step in range(1, 6):
        send(QtCore.QEvent.MouseMove, start + (end - start) * step / 5, QtCore.Qt.LeftButton)
    send(QtCore.QEvent.MouseButtonRelease, end, QtCore.Qt.NoButton)


def test_a_rubber_band_selects_a_drag_moves_and_undo_takes_back_each_step(demo):
    edit = {a.text(): a for a in demo.menuBar().actions()}["&Edit"].menu()
    edit.aboutToShow.emit()
    actions = {a.text().split()[0]: a for a in edit.actions() if a.text()}
    assert not actions["&Redo"].isEnabled()
    demo.graph.frame_all()
    view, blur, merge = demo.graph, nuke.toNode("Blur1"), nuke.toNode("Merge1")
    corner = view.mapFromScene(QtCore.QPointF(-30, blur.ypos() - 8))
    far = view.mapFromScene(QtCore.QPointF(blur.xpos() + 40, merge.ypos() + 8))
    drag(view.viewport(), QtCore.QPointF(corner), QtCore.QPointF(far))
    assert [n.name() for n in nuke.selectedNodes()] == ["Blur1", "Merge1"]
    placed = [(n.xpos(), n.ypos()) for n in (blur, merge)]
    start = view.mapFromScene(QtCore.QPointF(blur.xpos() + 10, blur.ypos() + 9))
    end = view.mapFromScene(QtCore.QPointF(blur.xpos() + 10, blur.ypos() + 9 + 50))
    drag(view.viewport(), QtCore.QPointF(start), QtCore.QPointF(end))
    moved = [(n.xpos(), n.ypos()) for n in (blur, merge)]
    # Both selected nodes move together, by about the distance dragged.
    assert abs(moved[0][1] - (placed[0][1] + 50)) <= 2
    assert moved[0][1] - placed[0][1] == moved[1][1] - placed[1][1]
    actions["&Delete"].trigger()
    assert nuke.toNode("Blur1") is None and nuke.toNode("Merge1") is None
    actions["&Undo"].trigger()
    assert nuke.toNode("Merge1") is merge and merge.input(0) is blur
    assert [(n.xpos(), n.ypos()) for n in (blur, merge)] == moved
    actions["&Undo"].trigger()
    assert [(n.xpos(), n.ypos()) for n in (blur, merge)] == placed
    edit.aboutToShow.emit()
    assert actions["&Redo"].text() == "&Redo Move"
    actions["&Redo"].trigger()
    assert [(n.xpos(), n.ypos()) for n in (blur, merge)] == moved


def test_the_graph_shows_a_group_inside_nodes_made_there_land_in_it_and_it_follows_changes(demo):
    group = nuke.nodes.Group()
    with group:
        inside = nuke.nodes.Blur()
    demo.sync()
    demo.graph.enter(group)
    assert list(demo.graph.items) == [id(inside)]
    next(a for m in demo.menus for a in m.actions() if a.text() == "Grade").trigger()
    assert [n.Class() for n in group.nodes()] == ["Blur", "Grade"]
    demo.sync()
    assert len(demo.graph.items) == 2 and "Root" in demo.graph.label_path.text()
    demo.graph.leave_to("0")
    assert demo.graph.group is nuke.root() and id(group) in demo.graph.items
    # Changes made elsewhere reach the graph and the viewer.
    merge = nuke.toNode("Merge1")
    nuke.delete(merge)
    dot = nuke.nodes.Dot(inputs=[nuke.toNode("Blur1")])
    demo.sync()
    assert id(merge) not in demo.graph.items and id(dot) in demo.graph.items
    # The viewer took over the deleted node's input.
    assert demo.viewer.label_info.text().startswith("Viewer1 \u2190 Blur1")
    nuke.toNode("Viewer1").setInput(0, None)
    demo.sync()
    assert "nothing connected" in demo.viewer.label_image.text() and demo.viewer.image is None


def test_the_sample_pool_holds_presets_that_paste_back(demo, tmp_path):
    pool = tmp_path / "demo" / "pool"
    presets = sorted(p.relative_to(pool).as_posix() for p in pool.rglob("*.nk"))
    assert presets == ["nodes/Blur/soft.nk", "nodes/Grade/cool.nk", "nodes/Grade/warm.nk",
                       "toolsets/generators/small_bars.nk"]
    nuke.nodePaste(str(pool / "toolsets" / "generators" / "small_bars.nk"))
    bars, small = nuke.selectedNodes()
    assert (bars.Class(), small.Class(), small.input(0)) == ("ColorBars", "Reformat", bars)
    assert small["box_width"].value() == 480
    soft = nuke.nodePaste(str(pool / "nodes" / "Blur" / "soft.nk"))
    assert soft["label"].getText() == "soft\n[value size] px" and soft.input(0) is small
    assert soft["label"].value() == "soft\n12 px"


def run_demo(tmp_path, *args, display=None):
    env = dict(os.environ)
    env.pop("QT_QPA_PLATFORM", None)
    env.pop("WAYLAND_DISPLAY", None)
    env["DISPLAY"] = display or ""
    return subprocess.run([sys.executable, "-m", "demo"] + list(args), cwd=HOSTSIM, env=env,
                          capture_output=True, text=True, timeout=120)


def test_without_a_display_it_says_how_to_run_headless(tmp_path):
    result = run_demo(tmp_path)
    assert result.returncode == 1
    assert result.stdout.count("\n") == 1 and "--offscreen --screenshot FILE" in result.stdout


def test_offscreen_it_runs_scenarios_in_order_and_writes_a_screenshot(tmp_path):
    # The shipped walk through storing and applying looks, then a check of what it left.
    check = tmp_path / "check.py"
    check.write_text(
        "grade = nuke.toNode('Grade1')\n"
        "looks = [k.name() for k in grade.allKnobs() if 'look_preset_' in k.name()]\n"
        "open(folder + '/result.txt', 'w').write(repr((looks, grade['white'].value(),\n"
        "    grade.input(0).name(), demo.viewer.label_info.text())))\n")
    shot = tmp_path / "shot.png"
    data = tmp_path / "data"
    result = run_demo(tmp_path, "--offscreen", "--data", str(data), "--scenario",
                      os.path.join(HOSTSIM, "demo", "scenarios", "looks.py"), "--scenario",
                      str(check), "--screenshot", str(shot))
    assert result.returncode == 0, result.stderr
    looks, gain, source, viewer = eval((data / "result.txt").read_text())
    assert looks == ["look_preset_1", "look_preset_2"] and gain == [1.3, 0.95, 0.6, 1.0]
    assert source == "CheckerBoard1" and viewer.startswith("Viewer1")
    image = QtGui.QImage(str(shot))
    assert shot.read_bytes().startswith(b"\x89PNG") and image.width() >= 800
    assert (data / "sample.nk").is_file() and (data / "snapshots" / sample.SNAPSHOT_DIR).is_dir()


def test_a_kept_sample_it_cannot_read_is_named_and_left_as_it_is(tmp_path):
    data = tmp_path / "data"
    data.mkdir()
    (data / "sample.nk").write_text('{"nodes": []}')
    result = run_demo(tmp_path, "--offscreen", "--data", str(data))
    assert result.returncode == 1 and str(data / "sample.nk") in result.stdout
    assert (data / "sample.nk").read_text() == '{"nodes": []}'


def test_headless_dialogs_are_answered_at_once_and_a_failing_scenario_ends_the_run(tmp_path):
    dialogs, broken = tmp_path / "dialogs.py", tmp_path / "broken.py"
    dialogs.write_text(
        "from cobaltRig import helper\n"
        "helper.show_message_box(None, 'Please set a viewer input.')\n"
        "nuke.message('recorded only')\n"
        "open(folder + '/done.txt', 'w').write(repr(hostctl.messages))\n")
    broken.write_text("nuke.toNode('NoSuchNode').name()\n")
    data = tmp_path / "data"
    result = run_demo(tmp_path, "--offscreen", "--data", str(data), "--scenario", str(dialogs),
                      "--scenario", str(broken))
    assert result.returncode == 1 and "AttributeError" in result.stderr
    assert "[dialog] cobaltRig: Please set a viewer input." in result.stderr
    assert (data / "done.txt").read_text() == "['recorded only']"


def test_open_save_as_and_new_follow_the_script_and_a_look_stores_on_an_opened_node(
        demo, tmp_path, monkeypatch):
    path = os.path.join(HOSTSIM, "..", "..", "shared", "corpus", "nst", "NukeSurvivalToolkit",
                        "nk_files", "NST_AdvancedKeyingTemplate.nk")
    monkeypatch.setattr(QtWidgets.QFileDialog, "getOpenFileName",
                        lambda *args, **kwargs: (os.path.normpath(path), ""))
    monkeypatch.setattr(QtWidgets.QFileDialog, "getSaveFileName",
                        lambda *args, **kwargs: (str(tmp_path / "renamed"), ""))
    demo.menu_command("File", "Open...")
    assert demo.windowTitle().endswith("NST_AdvancedKeyingTemplate.nk")
    assert set(demo.graph.items) == {id(n) for n in nuke.allNodes()}
    grade = nuke.allNodes("Grade")[0]
    name = grade.name()
    grade.selectOnly()
    demo.menu_command("cobaltRig", "looks", "store look of selected nodes")
    grade = nuke.toNode(name)
    assert [k.name() for k in grade.allKnobs() if k.name().startswith("look_preset_")] == [
        "look_preset_1"]
    assert nuke.toNode("looks") is not None and nuke.toNode("looks").nodes()
    demo.menu_command("File", "Save As...")
    target = tmp_path / "renamed.nk"
    assert nuke.root().name() == str(target) and "look_preset_1" in target.read_text()
    assert demo.windowTitle().endswith("renamed.nk")
    demo.menu_command("File", "New")
    assert demo.windowTitle().endswith("untitled") and demo.graph.items == {}
