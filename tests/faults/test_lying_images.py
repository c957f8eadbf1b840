"""Images whose header lies about their size, put in front of the snapshot browser in a child
process: a child that hangs, runs out of memory or dies is a failed test, not a stuck suite."""

import os

from cobaltRig import helper

import snapshot_scenarios as scenarios


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
    helper.update_settings({"snapshotbrowser_root": str(directory.parent),
                            "current_snapshot_dir": str(directory),
                            "snapshotbrowser_size_current": "1200,800"})

    outcome = scenarios.run("zoom")

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
