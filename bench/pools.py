"""Timings of the preset pool windows on a synthetic pool.

    scripts/python bench/pools.py [--presets 5000] [--folders 200] [--repeat 5]

Builds a pool of that many presets in that many folders in a temporary settings home, then prints
the median time of: building the import window, building the export window for a node, and one
keystroke in the import window's search field (each keystroke filters the whole tree). The figures
are for reading, not for passing or failing.
"""

import argparse
import os
import statistics
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from make_pool import make_pool  # noqa: E402


def median_ms(samples):
    return statistics.median(samples) * 1000.0


def timed(action):
    start = time.perf_counter()
    result = action()
    return time.perf_counter() - start, result


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--presets", type=int, default=5000)
    parser.add_argument("--folders", type=int, default=200)
    parser.add_argument("--repeat", type=int, default=5)
    args = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="cobaltrig_bench_") as scratch:
        os.environ["COBALTRIG_HOME"] = os.path.join(scratch, "home")
        pool = os.path.join(scratch, "pool")
        start = time.perf_counter()
        make_pool(pool, args.presets, args.folders)
        generated = time.perf_counter() - start

        import nuke  # the host owns the QApplication
        from PySide2 import QtCore, QtWidgets
        from PySide2.QtTest import QTest

        from cobaltRig import cobaltRig_w as rig
        from cobaltRig import helper

        helper.save_pools({"bench": pool})
        helper.update_xml("current_pool", "bench")
        app = QtWidgets.QApplication.instance()

        def build(make):
            window = make()
            window.show()
            app.processEvents()
            return window

        def measure(make):
            """Median material: one window at a time, each closed before the next is built."""
            samples = []
            for _ in range(args.repeat):
                seconds, window = timed(lambda: build(make))
                samples.append(seconds)
                window.close()
                del window
                app.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
            return samples

        import_times = measure(rig.ImportWindow)
        node = nuke.nodes.Blur()
        # The node's class folder is made by the first export window; the others find it.
        export_times = measure(lambda: rig.ExportWindow(node))

        window = build(rig.ImportWindow)
        items = window.count_dirItem

        # Typing a name and taking it back again, one key at a time, as a user searches.
        field = window.input_name
        keystrokes = []
        for text in ("preset_0042", "warm", "Class"):
            for char in text:
                seconds, _ = timed(lambda: QTest.keyClick(field, char))
                keystrokes.append(seconds)
            for _ in text:
                seconds, _ = timed(lambda: QTest.keyClick(field, QtCore.Qt.Key_Backspace))
                keystrokes.append(seconds)

        window.close()

    print("pool: {} presets in {} folders ({} folder items in the tree), generated in {:.0f} ms".format(
        args.presets, args.folders, items, generated * 1000.0))
    print("import window construction: median {:.1f} ms (min {:.1f}, max {:.1f}, n={})".format(
        median_ms(import_times), min(import_times) * 1000, max(import_times) * 1000, args.repeat))
    print("export window construction: median {:.1f} ms (min {:.1f}, max {:.1f}, n={})".format(
        median_ms(export_times), min(export_times) * 1000, max(export_times) * 1000, args.repeat))
    print("search keystroke: median {:.2f} ms (max {:.2f}, n={})".format(
        median_ms(keystrokes), max(keystrokes) * 1000, len(keystrokes)))


if __name__ == "__main__":
    main()
