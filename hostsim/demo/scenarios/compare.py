"""Takes two snapshots with different gains on the Grade, comments the first, and compares them in
the browser's preview: the cool one left of the wipe line, the warm one right of it.

    scripts/demo --offscreen --scenario hostsim/demo/scenarios/compare.py --screenshot wipe.png

Runs in the host's script namespace: `nuke`, and `demo`, the demo host's window.
"""

import time

from cobaltRig import cobaltRig_w, helper

# A browser that leaves some of the host in view in the screenshot.
helper.update_xml("snapshotbrowser_size_current", "960,560")
demo.menu_command("cobaltRig", "snapshots", "snapshot browser")
browser = cobaltRig_w.snapshotbrowser

grade = nuke.toNode("Grade1")
taken = []
for gain in ([0.7, 0.9, 1.3, 1.0], [1.4, 1.0, 0.6, 1.0]):  # cool, then warm
    grade["white"].setValue(gain)
    demo.sync()
    browser.push_snapshot.click()
    taken.append(browser.preview_image.image)
    # A snapshot's name is the second it was taken in: the next one waits for a new second.
    time.sleep(1.02 - time.time() % 1)

# The first one gets a comment through its comment window, as an artist writes one.
cobaltRig_w.show_comment_window(taken[0], browser)
comment = cobaltRig_w.commentwindow
comment.text_comment.setPlainText("cool grade, before the client call")
comment.push_save.click()

# The cool one in the preview, the warm one compared with it, as "c" over its row does.
browser.preview_image.set_image(taken[0])
browser.preview_image.compare_with(taken[1])
print("compare:", browser.preview_image.label_compare_a.toolTip(), "|",
      browser.preview_image.label_compare_b.toolTip())
demo.place_over(browser.widget)
