"""The snapshot walk of the demo host, run headless as the README shows it."""

import os
import subprocess
import sys

from cobaltRig.qt import QtGui

import nuke
from demo import sample

from conftest import image_size

HOSTSIM = os.path.dirname(os.path.dirname(os.path.abspath(nuke.__file__)))


def test_the_scenario_takes_two_snapshots_the_preview_shows_the_second(tmp_path):
    # What the scenario leaves, checked from inside the host before it quits.
    check = tmp_path / "check.py"
    check.write_text(
        "from cobaltRig import cobaltRig_w\n"
        "nuke.scriptClear()\n"
        "b = cobaltRig_w.snapshotbrowser\n"
        "nks = sorted(f for f in os.listdir(b.current_snapshot_dir) if f.endswith('.nk'))\n"
        "nuke.nodePaste(os.path.join(b.current_snapshot_dir, nks[-1]))\n"
        "open(folder + '/result.txt', 'w').write(repr((b.preview_image.image, b.row_sources(),\n"
        "    b.widget.isVisible(), sorted(n.Class() for n in nuke.allNodes()))))\n")
    shot, data = tmp_path / "shot.png", tmp_path / "data"
    env = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    result = subprocess.run(
        [sys.executable, "-m", "demo", "--offscreen", "--data", str(data), "--scenario",
         os.path.join(HOSTSIM, "demo", "scenarios", "snapshot.py"), "--scenario", str(check),
         "--screenshot", str(shot)],
        cwd=HOSTSIM, env=env, capture_output=True, text=True, timeout=120)

    assert result.returncode == 0, result.stderr
    preview, rows, visible, classes = eval((data / "result.txt").read_text())
    directory = data / "snapshots" / sample.SNAPSHOT_DIR
    images = sorted(str(directory / f) for f in os.listdir(str(directory)) if f.endswith(".jpg"))
    assert len(images) == 2 and all(f.endswith("_sample.jpg") for f in images)
    assert all(image_size(f)[0] == 480 for f in images)
    assert all(os.path.isfile(os.path.splitext(f)[0] + ".nk") for f in images)
    assert visible and preview == images[-1] and rows == images[::-1]
    # The sample's default mode saves the whole graph.
    assert classes == sorted(["CheckerBoard2", "Grade", "Blur", "ColorBars", "Transform",
                              "Merge2", "Viewer"])
    assert QtGui.QImage(str(shot)).width() >= 800
