"""Timings of the look comparison on a node with many knobs and many looks.

    scripts/python bench/look_diff.py [--knobs 200] [--looks 20] [--repeat 7]

Builds a Grade with that many extra user knobs, stores that many looks (each changing ten of
them), then prints, median and worst of the runs in milliseconds of wall time and of the process's
CPU time: `show_look_diff` from the call to the window shown and its table filled, a `refresh`
alone, one step of the look slider, and the floor: the three host calls the comparison makes per
knob (class, hidden flag, script text) on the node and every stored copy, from Python, with
nothing else. It also prints the table's size and whether the script text came through an opening
unchanged. The figures are for reading, not for passing or failing.
"""

import argparse
import statistics
import time


def build(nuke, knobs, looks):
    grade = nuke.createNode("Grade", inpanel=False)
    for i in range(knobs):
        knob = nuke.Double_Knob("k{}".format(i), "k{}".format(i))
        grade.addKnob(knob)
    from cobaltRig import cobaltRig_w

    for look in range(looks):
        for i in range(look * 10, look * 10 + 10):
            grade["k{}".format(i % knobs)].setValue(look + 1.0)
        cobaltRig_w.set_look(grade)
    return grade


def timed(function, repeat):
    wall, cpu = [], []
    for _ in range(repeat):
        start, start_cpu = time.perf_counter(), time.process_time()
        function()
        wall.append((time.perf_counter() - start) * 1000.0)
        cpu.append((time.process_time() - start_cpu) * 1000.0)
    return "wall median {:.1f} ms, worst {:.1f} ms; CPU median {:.1f} ms, worst {:.1f} ms".format(
        statistics.median(wall), max(wall), statistics.median(cpu), max(cpu))


def host_floor(nuke, grade):
    container = next(n for n in nuke.allNodes("Group") if n.knob("looks_group"))
    for node in [grade] + container.nodes():
        for knob in node.knobs().values():
            knob.Class()
            knob.getFlag(nuke.INVISIBLE)
            knob.toScript()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--knobs", type=int, default=200)
    parser.add_argument("--looks", type=int, default=20)
    parser.add_argument("--repeat", type=int, default=7)
    args = parser.parse_args()

    import hostctl
    import nuke
    from cobaltRig import cobaltRig_w
    from cobaltRig.qt import QtWidgets

    hostctl.reset()
    grade = build(nuke, args.knobs, args.looks)
    app = QtWidgets.QApplication.instance()
    before = hostctl.script_text()
    windows = []

    def open_window():
        grade.selectOnly()
        windows.append(cobaltRig_w.show_look_diff())
        app.processEvents()

    opening = timed(open_window, args.repeat)
    window = windows[-1]
    table = window.table_looks
    print("node: {} knobs on the node, {} looks; {} runs each".format(
        len(grade.knobs()), args.looks, args.repeat))
    print("table: {} rows x {} columns".format(table.rowCount(), table.columnCount()))
    print("show_look_diff: " + opening)
    print("refresh: " + timed(window.refresh, args.repeat))
    print("floor, host calls alone: " + timed(lambda: host_floor(nuke, grade), args.repeat))
    window.close()
    app.processEvents()
    print("script text unchanged by opening and closing: {}".format(
        hostctl.script_text() == before))

    grade.selectOnly()
    slider = cobaltRig_w.show_looks_slider()
    values = iter(range(args.repeat))

    def step():
        slider.set_slider_index(1 + (next(values) + 1) % args.looks)

    print("look slider step (apply to the node, count for the tool tip): " + timed(step, args.repeat))
    slider.close()


if __name__ == "__main__":
    main()
