"""Timings of the snapshot browser on a directory of N real jpg snapshots with metadata.

    scripts/python bench/snapshots.py [--counts 1000 10000] [--repeat 5]
    scripts/python bench/snapshots.py --scroll [--count 300] [--size 2048 1152]

For each count, generates that many snapshots (image, script, metadata with a comment and a flag)
in a temporary root and prints, median of the runs: browser construction to the first painted
rows, `populate_table_thumbs` alone, a scroll to the end with the rows in view loaded, and the peak
RSS of the process (with, in brackets, its peak before the first browser). The floor, listing the directory and reading each image's header, is measured
in the same run by the project's `snapshot_floor` executable; each figure is also printed as a
multiple of it. Then, in a browser of its own, finding: the browser opened to its comments and flags
read, and milliseconds per key typed into the find field and per flag chip clicked (median and
worst), beside the same finding written in plain PySide in the same process. The figures are for
reading, not for passing or failing.

With --scroll, writes N snapshots of full-size images (2048 x 1152 by default) and scrolls the list
from top to bottom by wheel notches, as an artist does, then back up, and once more down: it prints
the peak RSS of the process and the milliseconds per notch (median and worst) of the first pass,
where rows come into view for the first time, and of the passes over rows already seen.
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


def write_images(directory, count, jpg):
    """Writes count snapshots of the image `jpg`, each with a script, newest last; yields the stem
    of each, for what the caller adds beside it."""
    for i in range(count):
        stem = os.path.join(directory, "{}_shot".format(1600000000 + i))
        with open(stem + ".jpg", "wb") as handle:
            handle.write(jpg)
        with open(stem + ".nk", "w") as handle:
            handle.write("# nodes\n")
        yield stem


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
    for i, stem in enumerate(write_images(directory, count, bytes(data))):
        with open(stem + ".xml", "w") as handle:
            handle.write("<?xml version='1.0' encoding='UTF-8'?>\n<snapshot>\n  <metadata>\n"
                         "    <meta name=\"comment\">{}</meta>\n"
                         "    <meta name=\"flag\">{}</meta>\n  </metadata>\n</snapshot>\n"
                         .format("take {}".format(i) if i % 5 == 0 else "",
                                 "205,60,60" if i % 7 == 0 else ""))


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
    figures = {"first": statistics.median(first), "populate": statistics.median(populate),
               "scroll": statistics.median(scroll), "peak_mb": peak_mb,
               "baseline_mb": baseline_mb, "loaded": loaded}

    # Finding: the index read after the first paint, then keys typed into the field and chip
    # clicks, each timed to the list repainted.
    ready = []
    for _ in range(repeat):
        start = time.perf_counter()
        browser = rig.show_snapshot_browser()
        painted(browser)
        while browser.find_state != "ready":
            app.processEvents()
            time.sleep(0.0005)
        ready.append(time.perf_counter() - start)
        if _ < repeat - 1:
            closed(browser)
            del browser
            dropped()
    figures["ready"] = statistics.median(ready)
    figures.update(find_figures(browser.input_find, browser.find_chips[0],
                                browser.table_thumbs, app))
    closed(browser)
    del browser
    dropped()
    figures.update(plain_find(directory, app))
    print(json.dumps(figures))


FIND_TEXTS = ("take 1", "shot", "1600000")


def find_figures(field, chip, table, app):
    """Milliseconds per key typed into `field` (each text typed, then erased) and per click of
    `chip` (on and off, alone and beside a text), each from the event sent to the end of the
    list's first paint after it (`_median`, `_worst`), and to everything it set off done
    (`_settled`: the events it posted handled and the list painted once more)."""
    from cobaltRig.qt import QtCore, QtTest, QtWidgets

    Qt = QtCore.Qt
    viewport = table.viewport()

    class PaintClock(QtCore.QObject):
        """When the list's first paint after an event ends: a paint ends where the next event
        for the list, or the end of the pass, begins."""
        painted = None
        painting = False

        def eventFilter(self, watched, event):
            if self.painting and self.painted is None:
                self.painted = time.perf_counter()
            self.painting = event.type() == QtCore.QEvent.Type.Paint and self.painted is None
            return False

    clock = PaintClock()
    viewport.installEventFilter(clock)

    def timed(action, settled):
        clock.painted, clock.painting = None, False
        start = time.perf_counter()
        action()
        app.processEvents()
        if clock.painting and clock.painted is None:
            clock.painted = time.perf_counter()
        viewport.repaint()
        end = time.perf_counter()
        settled.append((end - start) * 1000.0)
        return ((clock.painted or end) - start) * 1000.0

    QtTest.QTest.mouseClick(field, Qt.MouseButton.LeftButton)
    app.processEvents()
    keys, clicks, keys_settled, clicks_settled = [], [], [], []
    for text in FIND_TEXTS:
        for char in text:
            keys.append(timed(lambda: QtTest.QTest.keyClick(
                QtWidgets.QApplication.focusWidget(), char), keys_settled))
        for _ in text:
            keys.append(timed(lambda: QtTest.QTest.keyClick(
                QtWidgets.QApplication.focusWidget(), Qt.Key.Key_Backspace), keys_settled))
    for text in ("", "take"):
        field.setText(text)
        app.processEvents()
        for _ in range(6):
            clicks.append(timed(lambda: QtTest.QTest.mouseClick(chip, Qt.MouseButton.LeftButton),
                                clicks_settled))
    field.clear()
    app.processEvents()
    viewport.removeEventFilter(clock)
    return {"key_median": statistics.median(keys), "key_worst": max(keys),
            "key_settled": max(keys_settled), "chip_median": statistics.median(clicks),
            "chip_worst": max(clicks), "chip_settled": max(clicks_settled)}


def plain_find(directory, app):
    """The same finding written in plain PySide: a table of one label per snapshot, the comments
    and flags read by Python on this thread, rows hidden by a loop over the table."""
    import xml.etree.ElementTree as ET

    from cobaltRig.qt import QtCore, QtWidgets

    window = QtWidgets.QWidget()
    layout = QtWidgets.QVBoxLayout(window)
    field = QtWidgets.QLineEdit()
    chip = QtWidgets.QToolButton()
    chip.setCheckable(True)
    chip.setFocusPolicy(QtCore.Qt.FocusPolicy.NoFocus)
    table = QtWidgets.QTableWidget()
    table.setColumnCount(1)
    layout.addWidget(field)
    layout.addWidget(chip)
    layout.addWidget(table)
    names = sorted((n for n in os.listdir(directory) if n.endswith(".jpg")), reverse=True)
    table.setRowCount(len(names))
    for row, name in enumerate(names):
        table.setCellWidget(row, 0, QtWidgets.QLabel(name))
        table.setRowHeight(row, 112)
    window.resize(300, 800)
    window.show()
    app.processEvents()

    start = time.perf_counter()
    index = []
    for name in names:
        meta = {m.get("name"): m.text or "" for m in
                ET.parse(os.path.join(directory, name[:-4] + ".xml")).iter("meta")}
        index.append(((name + "\n" + meta.get("comment", "")).casefold(), meta.get("flag", "")))
    ready = time.perf_counter() - start

    def apply():
        text = field.text().strip().casefold()
        flag = "205,60,60" if chip.isChecked() else ""
        for row, (haystack, row_flag) in enumerate(index):
            show = (not flag or row_flag == flag) and text in haystack
            if table.isRowHidden(row) == show:
                table.setRowHidden(row, not show)

    field.textChanged.connect(apply)
    chip.clicked.connect(apply)
    figures = find_figures(field, chip, table, app)
    window.close()
    window.deleteLater()
    app.processEvents()
    return {"plain_" + key: value for key, value in dict(figures, ready=ready).items()}


def make_large_snapshots(directory, count, width, height):
    """count snapshots of one busy full-size jpg (a gradient with a grid, so that it compresses
    like a render rather than a flat colour)."""
    from cobaltRig.qt import QtCore, QtGui

    image = QtGui.QImage(width, height, QtGui.QImage.Format_RGB32)
    image.fill(QtGui.QColor(40, 60, 90))
    painter = QtGui.QPainter(image)
    gradient = QtGui.QLinearGradient(0, 0, width, height)
    gradient.setColorAt(0, QtGui.QColor(200, 80, 40))
    gradient.setColorAt(1, QtGui.QColor(30, 90, 200))
    painter.fillRect(image.rect(), gradient)
    painter.setPen(QtGui.QColor(240, 240, 240))
    for x in range(0, width, 37):
        painter.drawLine(x, 0, width - x, height)
    painter.end()
    path = os.path.join(directory, "template.jpg")
    assert image.save(path, "JPG", 90)
    jpg = open(path, "rb").read()
    os.remove(path)
    for _ in write_images(directory, count, jpg):
        pass


def scroll_child(directory):
    """Opens the browser on the directory and scrolls its list end to end by wheel notches."""
    os.environ["COBALTRIG_HOME"] = os.path.join(os.path.dirname(directory), "home")
    import nuke  # noqa: F401  the host owns the QApplication
    from cobaltRig.qt import QtCore, QtGui, QtWidgets

    from cobaltRig import cobaltRig_w as rig
    from cobaltRig import helper

    helper.update_settings({"snapshotbrowser_root": os.path.dirname(directory),
                            "current_snapshot_dir": directory,
                            "snapshotbrowser_size_current": "1200,800"})
    app = QtWidgets.QApplication.instance()
    browser = rig.show_snapshot_browser()
    app.processEvents()
    table = browser.table_thumbs
    viewport = table.viewport()
    viewport.repaint()
    bar = table.verticalScrollBar()
    centre = QtCore.QPointF(viewport.width() / 2.0, viewport.height() / 2.0)

    def notch(step):
        event = QtGui.QWheelEvent(centre, QtCore.QPointF(viewport.mapToGlobal(centre.toPoint())),
                                  QtCore.QPoint(0, 0), QtCore.QPoint(0, step),
                                  QtCore.Qt.MouseButton.NoButton,
                                  QtCore.Qt.KeyboardModifier.NoModifier,
                                  QtCore.Qt.ScrollPhase.NoScrollPhase, False)
        start = time.perf_counter()
        QtWidgets.QApplication.sendEvent(viewport, event)
        app.processEvents()
        viewport.repaint()
        return (time.perf_counter() - start) * 1000.0

    def scroll(step, done):
        times = []
        while not done() and len(times) < 10000:
            times.append(notch(step))
        return times

    first = scroll(-120, lambda: bar.value() >= bar.maximum())
    back = scroll(120, lambda: bar.value() <= bar.minimum())
    again = scroll(-120, lambda: bar.value() >= bar.maximum())
    seen = back + again
    peak_mb = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024.0
    print(json.dumps({"notches": len(first), "first_median": statistics.median(first),
                      "first_worst": max(first), "seen_median": statistics.median(seen),
                      "seen_worst": max(seen), "peak_mb": peak_mb,
                      "rows": table.rowCount()}))


def scroll_bench(count, width, height):
    print("snapshots  image       notches  first pass ms/notch   seen rows ms/notch   peak RSS")
    with tempfile.TemporaryDirectory(prefix="cobaltrig_snapscroll_") as scratch:
        directory = os.path.join(scratch, "root", "shot")
        os.makedirs(directory)
        make_large_snapshots(directory, count, width, height)
        out = subprocess.run([sys.executable, __file__, "--scroll-child", directory],
                             check=True, capture_output=True, text=True).stdout
        figures = json.loads(out.strip().splitlines()[-1])
    print("{:9d}  {:>10}  {:7d}  {:6.1f} (worst {:6.1f})  {:6.1f} (worst {:6.1f})  {:6.0f} MB".format(
        count, "{}x{}".format(width, height), figures["notches"], figures["first_median"],
        figures["first_worst"], figures["seen_median"], figures["seen_worst"],
        figures["peak_mb"]))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--counts", type=int, nargs="+", default=[1000, 10000])
    parser.add_argument("--repeat", type=int, default=5)
    parser.add_argument("--scroll", action="store_true",
                        help="scroll full-size snapshots by wheel notches instead")
    parser.add_argument("--count", type=int, default=300, help="snapshots for --scroll")
    parser.add_argument("--size", type=int, nargs=2, default=[2048, 1152],
                        help="image width and height for --scroll")
    parser.add_argument("--child", help=argparse.SUPPRESS)
    parser.add_argument("--scroll-child", help=argparse.SUPPRESS)
    args = parser.parse_args()
    if args.child:
        child(args.child, args.repeat)
        return
    if args.scroll_child:
        scroll_child(args.scroll_child)
        return
    if args.scroll:
        scroll_bench(args.count, *args.size)
        return

    print("snapshots  floor     first rows        populate          scroll to end     peak RSS"
          " (before)  images loaded")
    finds = []
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
        finds.append((count, figures))

    print()
    print("snapshots  find in    index ready  per key ms: median  worst  settled"
          "   per chip ms: median  worst  settled")
    for count, figures in finds:
        for label, prefix in (("cobaltRig", ""), ("PySide", "plain_")):
            print("{:9d}  {:9s}  {:7.1f} ms  {:19.1f}  {:5.1f}  {:7.1f}  {:20.1f}  {:5.1f}  {:7.1f}"
                  .format(count, label, figures[prefix + "ready"] * 1000,
                          figures[prefix + "key_median"], figures[prefix + "key_worst"],
                          figures[prefix + "key_settled"], figures[prefix + "chip_median"],
                          figures[prefix + "chip_worst"], figures[prefix + "chip_settled"]))


if __name__ == "__main__":
    main()
