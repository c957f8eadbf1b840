"""Timings of the snapshot browser on a directory of N real jpg snapshots with metadata.

    scripts/python bench/snapshots.py [--counts 1000 10000] [--repeat 5]

For each count, generates that many snapshots (image, script, metadata with a comment and a flag)
in a temporary root and prints, median of the runs: browser construction to the first painted
rows, `populate_table_thumbs` alone, a scroll to the end with the rows in view loaded, and the peak
RSS of the process (with, in brackets, its peak before the first browser). The floor, listing the directory and reading each image's header, is measured
in the same run by the project's `snapshot_floor` executable; each figure is also printed as a
multiple of it. The figures are for reading, not for passing or failing.
"""

import argparse
import gc
import json
import os
import resource
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.environ.get("COBALTRIG_BUILD") or os.path.join(os.path.dirname(HERE), "build")


def make_snapshots(directory, count):
    """count snapshots of one small real jpg, each with a script and a metadata document; one in
    five has a comment, one in seven a flag."""
    from cobaltRig.qt import QtCore, QtGui

    image = QtGui.QImage(320, 180, QtGui.QImage.Format_RGB32)
    image.fill(QtGui.QColor(70, 110, 160))
    data = QtCore.QByteArray()
    buffer = QtCore.QBuffer(data)
    buffer.open(QtCore.QIODevice.WriteOnly)
    image.save(buffer, "JPG")
    jpg = bytes(data)
    for i in range(count):
        stem = os.path.join(directory, "{}_shot".format(1600000000 + i))
        with open(stem + ".jpg", "wb") as handle:
            handle.write(jpg)
        with open(stem + ".nk", "w") as handle:
            handle.write("# nodes\n")
        with open(stem + ".xml", "w") as handle:
            handle.write("<?xml version='1.0' encoding='UTF-8'?>\n<snapshot>\n  <metadata>\n"
                         "    <meta name=\"comment\">{}</meta>\n"
                         "    <meta name=\"flag\">{}</meta>\n  </metadata>\n</snapshot>\n"
                         .format("take {}".format(i) if i % 5 == 0 else "",
                                 "200,60,60" if i % 7 == 0 else ""))


def floor_seconds(directory, repeat):
    exe = os.path.join(BUILD, "snapshot_floor")
    out = subprocess.run([exe, directory, str(repeat)], check=True, capture_output=True,
                         text=True).stdout.split()
    return float(out[0])


def child(directory, repeat):
    """One process per count, so that the peak RSS is this count's."""
    os.environ["COBALTRIG_HOME"] = os.path.join(os.path.dirname(directory), "home")
    import nuke  # noqa: F401  the host owns the QApplication
    from cobaltRig.qt import QtCore, QtWidgets

    from cobaltRig import cobaltRig_w as rig
    from cobaltRig import helper

    helper.update_settings({"snapshotbrowser_root": os.path.dirname(directory),
                            "current_snapshot_dir": directory,
                            "snapshotbrowser_size_current": "1200,800"})
    app = QtWidgets.QApplication.instance()
    baseline_mb = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024.0

    def closed(browser):
        """Closes the browser and waits until it is deleted, so that no run measures beside the
        browser of the one before. Closing fades the window out first; the window goes when its
        last holder does."""
        browser.close()
        deadline = time.monotonic() + 5
        while browser.timer_fade.isActive():
            if time.monotonic() > deadline:
                raise SystemExit("the snapshot browser was still fading 5 s after closing")
            app.processEvents()
            time.sleep(0.005)

    def dropped():
        rig.__dict__.pop("snapshotbrowser", None)
        gc.collect()
        QtCore.QCoreApplication.sendPostedEvents(None, QtCore.QEvent.DeferredDelete)
        app.processEvents()

    def painted(browser):
        app.processEvents()
        browser.table_thumbs.viewport().repaint()

    first, populate, scroll = [], [], []
    for _ in range(repeat):
        start = time.perf_counter()
        browser = rig.show_snapshot_browser()
        painted(browser)
        first.append(time.perf_counter() - start)

        start = time.perf_counter()
        browser.populate_table_thumbs()
        populate.append(time.perf_counter() - start)
        painted(browser)

        start = time.perf_counter()
        browser.table_thumbs.scrollToBottom()
        painted(browser)
        scroll.append(time.perf_counter() - start)
        loaded = sum(1 for t in browser.get_thumbnails_list() if t is not None
                     and not t.pixmap.isNull())
        closed(browser)
        del browser
        dropped()
    peak_mb = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024.0
    print(json.dumps({"first": statistics.median(first), "populate": statistics.median(populate),
                      "scroll": statistics.median(scroll), "peak_mb": peak_mb,
                      "baseline_mb": baseline_mb, "loaded": loaded}))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--counts", type=int, nargs="+", default=[1000, 10000])
    parser.add_argument("--repeat", type=int, default=5)
    parser.add_argument("--child", help=argparse.SUPPRESS)
    args = parser.parse_args()
    if args.child:
        child(args.child, args.repeat)
        return

    print("snapshots  floor     first rows        populate          scroll to end     peak RSS"
          " (before)  images loaded")
    for count in args.counts:
        with tempfile.TemporaryDirectory(prefix="cobaltrig_snapbench_") as scratch:
            directory = os.path.join(scratch, "root", "shot")
            os.makedirs(directory)
            make_snapshots(directory, count)
            floor = floor_seconds(directory, args.repeat)
            out = subprocess.run([sys.executable, __file__, "--child", directory,
                                  "--repeat", str(args.repeat)], check=True,
                                 capture_output=True, text=True).stdout
            figures = json.loads(out.strip().splitlines()[-1])

        def cell(key):
            return "{:7.1f} ms {:4.1f}x".format(figures[key] * 1000, figures[key] / floor)

        print("{:9d}  {:6.1f} ms  {}  {}  {}  {:6.0f} MB ({:4.0f})  {}".format(
            count, floor * 1000, cell("first"), cell("populate"), cell("scroll"),
            figures["peak_mb"], figures["baseline_mb"], figures["loaded"]))


if __name__ == "__main__":
    main()
