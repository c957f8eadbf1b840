"""After snapshot.py: a third, warmer snapshot, comments on all three and a green flag on the two
warm ones, then "warm" typed into the browser's find field and the green chip clicked.

    scripts/demo --offscreen --scenario hostsim/demo/scenarios/snapshot.py \
        --scenario hostsim/demo/scenarios/find.py --screenshot find.png

Runs in the host's script namespace: `nuke`, and `demo`, the demo host's window.
"""

import time

from cobaltRig import cobaltRig_w, helper
from cobaltRig.qt import QtCore, QtTest, QtWidgets

browser = cobaltRig_w.snapshotbrowser
time.sleep(1.02 - time.time() % 1)
nuke.toNode("Grade1")["white"].setValue([1.7, 1.0, 0.4, 1.0])  # warmer
demo.sync()
browser.push_snapshot.click()

GREEN = "80,170,90"
comments = ["warmer still, for the night shots", "warm: the supervisor liked this one",
            "cool, the first try"]
for src, text in zip(browser.row_sources(), comments):
    editor = cobaltRig_w.show_comment_window(src, browser)
    editor.text_comment.setPlainText(text)
    editor.push_save.click()
    if text.startswith("warm"):
        helper.set_flag(browser, src, GREEN.split(","))

field = browser.input_find
QtTest.QTest.mouseClick(field, QtCore.Qt.MouseButton.LeftButton)
QtTest.QTest.keyClicks(field, "warm")
chip, = [c for c in browser.find_chips if c.property("flag") == GREEN]
QtTest.QTest.mouseClick(chip, QtCore.Qt.MouseButton.LeftButton)
# The comments and flags are read after the browser's first paint; the field answers once they are.
deadline = time.monotonic() + 5
while browser.find_state != "ready" and time.monotonic() < deadline:
    QtWidgets.QApplication.processEvents()
    time.sleep(0.01)
table = browser.table_thumbs
print("find:", browser.find_state, "rows shown:",
      [row for row in range(table.rowCount()) if not table.isRowHidden(row)],
      "slider:", browser.slider_versions.value(), "of", browser.slider_versions.maximum())
demo.place_over(browser.widget)
