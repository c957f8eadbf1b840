"""Images in the simulated host: what the image nodes render, what a Write writes (also inside a group
made from the selection), proxy mode and the error of a tree without an image."""

import pytest
from cobaltRig.qt import QtGui

import nuke
from nuke._render import frame_path, render

pytestmark = pytest.mark.usefixtures("host")


def rgba(image, x, y):
    """The straight colour at a pixel, counted from the top-left as QImage counts."""
    color = QtGui.QColor.fromRgba(image.convertToFormat(QtGui.QImage.Format_ARGB32).pixel(x, y))
    return color.red(), color.green(), color.blue(), color.alpha()


def close(actual, expected, slack=2):
    return all(abs(a - e) <= slack for a, e in zip(actual, expected))


def constant(color, fmt="square_1K"):
    return nuke.nodes.Constant(color=color, format=fmt)


def test_generators_take_the_root_format_unless_told_otherwise_and_count_from_the_bottom():
    nuke.root()["format"].setValue("HD_720")
    bars, checker = nuke.nodes.ColorBars(), nuke.createNode("CheckerBoard2", inpanel=False)
    assert render(checker).size().toTuple() == (1280, 720)
    assert render(constant([0, 0, 0, 1], "PAL")).size().toTuple() == (720, 576)
    image = render(bars)
    assert image.size().toTuple() == (1280, 720)
    # White on the left, blue on the right.
    assert rgba(image, 5, 5) == (255, 255, 255, 255) and rgba(image, 1275, 700) == (0, 0, 255, 255)
    # Checkerboard boxes start at the bottom-left.
    image = render(nuke.nodes.CheckerBoard2(format="square_1K", boxsize=100))
    bottom_left, next_right = rgba(image, 10, 1013), rgba(image, 110, 1013)
    assert bottom_left != next_right and rgba(image, 110, 913) == bottom_left


@pytest.mark.parametrize("color, gain, disable, expected", [
    ([0.5, 0.25, 1.0, 1.0], 0.5, False, (64, 32, 128, 255)),
    ([0.5, 0.25, 1.0, 1.0], [2.0, 1.0, 0.5, 1.0], False, (255, 64, 128, 255)),
    ([0.5, 0.25, 1.0, 1.0], [4.0, 3.0, 0.0, 1.0], False, (255, 192, 0, 255)),
    ([1.0, 0.5, 0.0, 0.5], 0.5, False, (128, 64, 0, 128)),  # alpha is kept
    ([1.0, 0.5, 0.0, 0.5], 0.5, True, (255, 128, 0, 128)),  # disabled: the input passes
])
def test_grade_multiplies_the_colour_by_its_gain(color, gain, disable, expected):
    grade = nuke.nodes.Grade(inputs=[constant(color)], disable=disable)
    grade["white"].setValue(gain)
    assert close(rgba(render(grade), 7, 7), expected)


def test_transform_moves_up_for_a_positive_y_and_scales_about_its_center_first():
    transform = nuke.nodes.Transform(inputs=[constant([1, 0, 0, 1])])
    transform["translate"].setValue([100, 50])
    image = render(transform)
    assert image.size().toTuple() == (1024, 1024)
    assert rgba(image, 99, 500)[3] == 0 and rgba(image, 100, 500) == (255, 0, 0, 255)
    # Up by 50: the bottom 50 rows are empty now.
    assert rgba(image, 500, 1023 - 49)[3] == 0 and rgba(image, 500, 1023 - 50) == (255, 0, 0, 255)
    transform["scale"].setValue(0.25)
    transform["translate"].setValue([100, 0])
    image = render(transform)
    # A quarter-size square in the bottom-left corner, moved right by 100: x 100..355, y 768..1023.
    assert rgba(image, 101, 1022)[3] == 255 and rgba(image, 354, 769)[3] == 255
    assert [rgba(image, x, y)[3] for x, y in ((99, 1022), (357, 1022), (200, 766))] == [0, 0, 0]


def test_merge_puts_a_over_b_in_its_bottom_left_corner_and_a_blur_softens_the_edge():
    b = constant([0, 0, 1, 1])
    a = nuke.nodes.Reformat(type="to box", box_width=256, inputs=[constant([1, 0, 0, 0.5])])
    merge = nuke.nodes.Merge2(inputs=[b, a])
    image = render(merge)
    assert image.size().toTuple() == (1024, 1024)
    assert close(rgba(image, 10, 1020), (128, 0, 128, 255))  # half red over blue
    assert rgba(image, 10, 10) == (0, 0, 255, 255)  # above A: B alone
    blur = nuke.nodes.Blur(inputs=[merge])
    assert render(blur) == image
    blur["size"].setValue(20)
    soft = render(blur)
    # Just inside A, at its top edge: half red before, less after.
    assert soft.size() == image.size() and 20 < rgba(soft, 100, 770)[0] < rgba(image, 100, 770)[0]
    merge.setInput(0, None)
    assert rgba(render(merge), 10, 10)[3] == 128  # A alone, over nothing


@pytest.mark.parametrize("size, box_width, expected", [
    ((1920, 1080), 480, (480, 270)),
    ((2048, 1556), 480, (480, 364)),  # 1556 * 480 // 2048 = 364.6, rounded down
    ((720, 576), 100, (100, 80)),
])
def test_reformat_to_box_keeps_the_aspect_in_whole_pixels(size, box_width, expected):
    source = constant([1, 1, 1, 1], "{} {}".format(*size))
    reformat = nuke.nodes.Reformat(type="to box", box_width=box_width, inputs=[source])
    assert render(reformat).size().toTuple() == expected


@pytest.mark.parametrize("name, kind, proxy, size", [
    ("shot.jpg", b"\xff\xd8", False, (480, 270)), ("shot.png", b"\x89PNG", False, (480, 270)),
    ("proxy.jpg", b"\xff\xd8", True, (240, 135)),  # proxy mode halves what a Write renders
])
def test_execute_writes_the_file_type_of_the_extension(tmp_path, name, kind, proxy, size):
    reformat = nuke.nodes.Reformat(type="to box", box_width=480, inputs=[nuke.nodes.ColorBars()])
    write = nuke.nodes.Write(inputs=[reformat], file=(tmp_path / name).as_posix())
    nuke.root()["proxy"].setValue(proxy)
    nuke.execute(write, 1, 1)
    assert (tmp_path / name).read_bytes().startswith(kind)
    assert QtGui.QImage(str(tmp_path / name)).size().toTuple() == size


def test_execute_by_name_writes_every_frame_of_the_range_and_a_read_gives_one_back(tmp_path):
    out = tmp_path / "frames"
    out.mkdir()
    bars = nuke.nodes.ColorBars(format="PAL")
    nuke.nodes.Write(inputs=[bars], file=(out / "f.####.png").as_posix())
    nuke.execute("Write1", 9, 11)
    assert sorted(p.name for p in out.iterdir()) == ["f.0009.png", "f.0010.png", "f.0011.png"]
    assert frame_path("a.%03d.jpg", 7) == "a.007.jpg"
    image = render(nuke.nodes.Read(file=(out / "f.0010.png").as_posix()))
    assert image.size().toTuple() == (720, 576) and rgba(image, 715, 5) == (0, 0, 255, 255)
    with pytest.raises(RuntimeError, match="cannot read"):
        render(nuke.nodes.Read(file=(tmp_path / "missing.png").as_posix()))


NO_IMAGE = "has no valid channels"


@pytest.mark.parametrize("feed, file_name, message", [
    (lambda: [], "never.jpg", NO_IMAGE),
    (lambda: [nuke.nodes.Grade(inputs=[nuke.nodes.Dot()])], "never.jpg", NO_IMAGE),
    (lambda: [nuke.nodes.Merge2()], "never.jpg", NO_IMAGE),
    (lambda: [nuke.nodes.ColorBars()], "", "no file name"),
    (lambda: [nuke.nodes.ColorBars()], "shot.tif", "must end in .jpg or .png"),
    (lambda: [nuke.nodes.ColorBars()], "missing_dir/shot.jpg", "cannot write"),
])
def test_execute_reports_what_it_cannot_render_or_write_and_writes_nothing(tmp_path, feed,
                                                                            file_name, message):
    out = tmp_path / "out"
    out.mkdir()
    write = nuke.nodes.Write(inputs=feed(), file=(out / file_name).as_posix() if file_name else "")
    with pytest.raises(RuntimeError, match=message):
        nuke.execute(write, 1, 1)
    assert list(out.iterdir()) == []


def test_make_group_holds_copies_wired_as_before_and_a_write_inside_renders_what_feeds_it(
        tmp_path):
    # What a snapshot does: a Reformat and a Write, grouped, fed from the graph, run inside the group.
    source = constant([0, 1, 0, 1])
    reformat = nuke.nodes.Reformat(type="to box", box_width=200, inputs=[source])
    write = nuke.nodes.Write(inputs=[reformat], file=(tmp_path / "snap.jpg").as_posix())
    reformat.selectOnly()
    write.setSelected(True)
    group = nuke.makeGroup(show=False)
    assert reformat in nuke.allNodes() and write in nuke.allNodes() and group.input(0) is source
    assert nuke.selectedNodes() == [reformat, write]
    nuke.delete(reformat)
    nuke.delete(write)
    with group:
        inner = nuke.allNodes("Write")[0]
        assert inner.input(0)["box_width"].value() == 200 and group.output().input(0) is inner
        assert inner.input(0).input(0).Class() == "Input"
        nuke.execute(inner, nuke.frame(), nuke.frame())
    image = QtGui.QImage(str(tmp_path / "snap.jpg"))
    assert image.size().toTuple() == (200, 200) and close(rgba(image, 100, 100), (0, 255, 0, 255), 4)
