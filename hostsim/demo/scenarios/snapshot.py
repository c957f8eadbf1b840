"""Opens the snapshot browser from the cobaltRig menu and takes two snapshots through its camera
button, warming the grade between them; the preview then shows the second one.

    scripts/demo --offscreen --scenario hostsim/demo/scenarios/snapshot.py --screenshot shot.png

Runs in the host's script namespace: `nuke`, and `demo`, the demo host's window.
"""

import os
import time

from cobaltRig import cobaltRig_w, helper

# A browser that leaves some of the host in view in the screenshot.
helper.update_xml("snapshotbrowser_size_current", "960,560")
demo.menu_command("cobaltRig", "snapshots", "snapshot browser")
browser = cobaltRig_w.snapshotbrowser

grade = nuke.toNode("Grade1")
grade["white"].setValue([0.7, 0.9, 1.3, 1.0])  # cool
demo.sync()
browser.push_snapshot.click()
# A snapshot's name is the second it was taken in: wait for the next one, or the second snapshot
# would replace the first.
time.sleep(1.02 - time.time() % 1)
grade["white"].setValue([1.4, 1.0, 0.6, 1.0])  # warm
demo.sync()
browser.push_snapshot.click()

directory = helper.load_settings()["current_snapshot_dir"]
print("snapshots in {}:".format(directory))
for name in sorted(os.listdir(directory)):
    print("   ", name)
print("preview:", os.path.basename(browser.preview_image.image))
demo.place_over(browser.widget)
