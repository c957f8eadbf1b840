"""Timings of the preset pool windows against the same windows written in PySide (the build's binding).

    scripts/python bench/pools.py [--sizes 5000,50000] [--per-folder 25] [--repeat 5]

For each size, lays out a synthetic pool (that many presets, one folder per `--per-folder` presets,
half class folders and half categories) in a temporary settings home and measures, in the same
run, the compiled windows and the two PySide references of `pyside_pools.py` (plain, and tuned
with the compiled module's techniques):

* import window and export window: built, shown and painted (median of `--repeat` windows);
* one search keystroke in the import window, repaint included: the field set to each of "p",
  "pr", "pre", "pres", "preset_0001", "preset_00012", "", "x", "" in turn (median of all).

Prints the figures side by side with the ratios compiled / PySide. The figures are for reading,
not for passing or failing. By default they are the CPU time of this process (`--clock cpu`),
which other processes on a shared machine disturb far less than the wall clock; on an idle
machine the two agree, since everything measured runs on the one UI thread. `--clock wall`
measures elapsed time instead. Compare figures within one run.
"""

import argparse
import os
import statistics
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from make_pool import make_pool  # noqa: E402

SEARCHES = ("p", "pr", "pre", "pres", "preset_0001", "preset_00012", "", "x", "")


def median_ms(samples):
    return statistics.median(samples) * 1000.0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sizes", default="5000,50000", help="preset counts, comma-separated")
    parser.add_argument("--per-folder", type=int, default=25, help="presets per folder")
    parser.add_argument("--repeat", type=int, default=5)
    parser.add_argument("--clock", choices=("cpu", "wall"), default="cpu")
    args = parser.parse_args()
    sizes = [int(size) for size in args.sizes.split(",")]
    clock = time.process_time if args.clock == "cpu" else time.perf_counter

    with tempfile.TemporaryDirectory(prefix="cobaltrig_bench_") as scratch:
        os.environ["COBALTRIG_HOME"] = os.path.join(scratch, "home")

        import nuke  # the host owns the QApplication
        from cobaltRig.qt import QtCore, QtWidgets

        from cobaltRig import cobaltRig_w as rig
        from cobaltRig import helper

        import pyside_pools

        app = QtWidgets.QApplication.instance()
        node = nuke.nodes.Blur()

        def settle():
            app.processEvents()
            app.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)

        def paint():
            # A delayed layout posts the repaint it needs; the second pass delivers it, so each
            # figure holds the whole of its own work and none of the next one's.
            app.processEvents()
            app.processEvents()

        def build(make):
            """Seconds to build, show and paint one window, and the window."""
            start = clock()
            window = make()
            window.show()
            paint()
            return clock() - start, window

        def builds(make):
            samples = []
            for _ in range(args.repeat):
                seconds, window = build(make)
                samples.append(seconds)
                window.close()
                del window
                settle()
            return samples

        def keystrokes(make):
            _, window = build(make)
            field = window.input_name
            samples = []
            for _ in range(args.repeat):
                for text in SEARCHES:
                    start = clock()
                    field.setText(text)
                    paint()
                    samples.append(clock() - start)
            window.close()
            del window
            settle()
            return samples

        rows = []
        for presets in sizes:
            folders = max(2, presets // args.per_folder)
            pool = os.path.join(scratch, "pool_{}".format(presets))
            make_pool(pool, presets, folders)
            os.makedirs(os.path.join(pool, "nodes", "Blur"), exist_ok=True)
            helper.save_pools({"bench": pool})
            helper.update_xml("current_pool", "bench")

            implementations = (
                ("cobaltRig", rig.ImportWindow, lambda: rig.ExportWindow(node)),
                ("plain", pyside_pools.ImportWindow, lambda: pyside_pools.ExportWindow(node)),
                ("tuned", pyside_pools.TunedImportWindow,
                 lambda: pyside_pools.TunedExportWindow(node)),
            )
            figures = {}
            # One window of each first: the first paint of a process loads fonts and images.
            for _, make_import, make_export in implementations:
                for make in (make_import, make_export):
                    build(make)[1].close()
                    settle()
            for name, make_import, make_export in implementations:
                figures[name] = (median_ms(builds(make_import)), median_ms(builds(make_export)),
                                 median_ms(keystrokes(make_import)))
            for index, what in enumerate(("import window built, shown, painted",
                                          "export window built, shown, painted",
                                          "one search keystroke, with repaint")):
                ours, plain, tuned = (figures[name][index] for name in ("cobaltRig", "plain", "tuned"))
                rows.append((presets, folders, what, ours, plain, tuned))

    from cobaltRig.qt import BINDING

    print("{:>7} {:>7}  {:<37} {:>11} {:>14} {:>14} {:>7} {:>7}".format(
        "presets", "folders", "median of", "cobaltRig", BINDING + " plain", BINDING + " tuned",
        "/plain", "/tuned"))
    for presets, folders, what, ours, plain, tuned in rows:
        print("{:>7} {:>7}  {:<37} {:>8.2f} ms {:>11.2f} ms {:>11.2f} ms {:>7.2f} {:>7.2f}".format(
            presets, folders, what, ours, plain, tuned, ours / plain, ours / tuned))


if __name__ == "__main__":
    main()
