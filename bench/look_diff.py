"""Timings of the look comparison on a node with many knobs and many looks.

    scripts/python bench/look_diff.py [--knobs 200] [--looks 20] [--repeat 7]

Builds a Grade with that many extra user knobs, stores that many looks (each changing a few of
them), then prints, median and worst of the runs in milliseconds: `show_look_diff` from the call
to the window shown and its table filled, a `refresh` alone, and one step of the look slider. It
also prints the table's size and whether the script text came through an opening unchanged. The
figures are for reading, not for passing or failing.
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
        for i in range(look * 3, look * 3 + 3):
            grade["k{}".format(i % knobs)].setValue(look + 1.0)
        cobaltRig_w.set_look(grade)
    return grade


def timed(function, repeat):
    runs = []
    for _ in range(repeat):
        start = time.perf_counter()
        function()
        runs.append((time.perf_counter() - start) * 1000.0)
    return statistics.median(runs), max(runs)


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

    median, worst = timed(open_window, args.repeat)
    window = windows[-1]
    table = window.table_looks
    print("node: {} knobs on the node, {} looks".format(len(grade.knobs()), args.looks))
    print("table: {} rows x {} columns".format(table.rowCount(), table.columnCount()))
    print("show_look_diff: median {:.1f} ms, worst {:.1f} ms ({} runs)".format(
        median, worst, args.repeat))
    median, worst = timed(window.refresh, args.repeat)
    print("refresh: median {:.1f} ms, worst {:.1f} ms".format(median, worst))
    window.close()
    app.processEvents()
    print("script text unchanged by opening and closing: {}".format(
        hostctl.script_text() == before))

    grade.selectOnly()
    slider = cobaltRig_w.show_looks_slider()
    values = iter(range(args.repeat))

    def step():
        slider.set_slider_index(1 + (next(values) + 1) % args.looks)

    median, worst = timed(step, args.repeat)
    print("look slider step (apply to the node, count for the tool tip): median {:.1f} ms, worst {:.1f} ms".format(
        median, worst))
    slider.close()


if __name__ == "__main__":
    main()
