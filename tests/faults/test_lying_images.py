"""Images whose header lies about their size, put in front of the snapshot browser in a child
process: a child that hangs, runs out of memory or dies is a failed test, not a stuck suite."""

import json
import os
import subprocess
import sys
import textwrap

import pytest

CHILD = textwrap.dedent("""
    import json, os, resource, sys, time
    # Guard the machine: without it a header that claims 14 GB could get them. Sanitizer builds
    # reserve address space of their own, so the guard is left to the timeout there.
    if "asan" not in os.environ.get("LD_PRELOAD", ""):
        resource.setrlimit(resource.RLIMIT_AS, (3 << 30, 3 << 30))
    directory = sys.argv[1]
    os.environ["COBALTRIG_HOME"] = os.path.join(os.path.dirname(directory), "home")
    import nuke  # noqa: F401
    from cobaltRig.qt import QtWidgets
    from cobaltRig import cobaltRig_w as rig, helper

    helper.update_settings({"snapshotbrowser_root": os.path.dirname(directory),
                            "current_snapshot_dir": directory,
                            "snapshotbrowser_size_current": "1200,800"})
    start = time.monotonic()
    browser = rig.show_snapshot_browser()
    QtWidgets.QApplication.processEvents()
    rows = [(t.get_src(), t.widget.toolTip(), browser.table_thumbs.rowHeight(i))
            for i, t in enumerate(browser.get_thumbnails_list())]
    previews = []
    for src, _, _ in rows:
        browser.preview_image.set_image(src)
        for _ in range(20):
            browser.preview_image.zoom_in()
        QtWidgets.QApplication.processEvents()
        previews.append(browser.preview_image.image_label.toolTip())
    print(json.dumps({"rows": rows, "previews": previews, "seconds": time.monotonic() - start,
                      "peak_mb": resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024}))
""")


def lying_jpg(path, width, height):
    """A 16 x 16 jpg of a few hundred bytes whose header claims `width` x `height` pixels."""
    from cobaltRig.qt import QtGui

    image = QtGui.QImage(16, 16, QtGui.QImage.Format_RGB32)
    image.fill(QtGui.QColor(90, 120, 150))
    assert image.save(str(path), "JPG")
    data = bytearray(open(str(path), "rb").read())
    at = data.index(b"\xff\xc0")
    data[at + 5:at + 7] = height.to_bytes(2, "big")
    data[at + 7:at + 9] = width.to_bytes(2, "big")
    open(str(path), "wb").write(bytes(data))


def test_lying_headers_open_at_once_in_little_memory(tmp_path, qapp):
    directory = tmp_path / "root" / "shot"
    directory.mkdir(parents=True)
    lying_jpg(directory / "1000_tall.jpg", 1, 65500)
    lying_jpg(directory / "1001_huge.jpg", 60000, 60000)

    try:
        done = subprocess.run([sys.executable, "-c", CHILD, str(directory)], capture_output=True,
                              text=True, timeout=60)
    except subprocess.TimeoutExpired:
        pytest.fail("the browser took more than 60 s on two images of a few hundred bytes")
    assert done.returncode == 0, done.stderr[-2000:]
    outcome = json.loads(done.stdout.strip().splitlines()[-1])

    [(huge, huge_tip, _), (tall, tall_tip, tall_height)] = outcome["rows"]
    assert os.path.basename(huge) == "1001_huge.jpg"
    assert huge_tip == ("cannot read 1001_huge.jpg: its header claims 60000 x 60000 pixels, "
                        "more than 100 megapixels")
    # The tall one is shown, in a row of sane height.
    assert os.path.basename(tall) == "1000_tall.jpg" and tall_tip == ""
    assert tall_height <= 800
    assert outcome["previews"][0] == huge_tip
    # The lie is worth gigabytes; the sanitizers' own bookkeeping is worth a few hundred megabytes.
    budget_mb = 400 if "ASAN_OPTIONS" not in os.environ else 1500
    assert outcome["seconds"] < 20 and outcome["peak_mb"] < budget_mb
