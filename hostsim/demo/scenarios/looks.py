"""Stores two looks of the sample's Grade through its look buttons, brings the first back, and
opens the table of what each look changes.

    scripts/demo --offscreen --scenario hostsim/demo/scenarios/looks.py --screenshot looks.png

Runs in the host's script namespace: `nuke`, and `demo`, the demo host's window.
"""

grade = nuke.toNode("Grade1")
grade["white"].setValue([1.3, 0.95, 0.6, 1.0])  # warm
grade["gamma"].setValue(1.1)
demo.press(grade, "look_new")  # stores look 1
grade["white"].setValue([0.6, 0.9, 1.5, 1.0])  # cool
grade["gamma"].setValue(1.0)
grade["multiply"].setValue(1.2)
grade["mix"].setValue(0.8)
demo.press(grade, "look_new")  # stores look 2
print("looks stored:", [k.name() for k in grade.allKnobs() if "look_preset_" in k.name()])

# Applying a look puts the stored copy in the node's place: ask for the node again afterwards.
demo.press(grade, "look_preset_1")
grade = nuke.toNode("Grade1")
print("gain after applying look 1:", grade["white"].value())
demo.open_panel(grade, "looks")

# What each look changes compared with the node as it is now, side by side.
grade.selectOnly()
from cobaltRig import cobaltRig_w  # noqa: E402

compare = cobaltRig_w.show_look_diff()
compare.move(demo.x() + 420, demo.y() + 380)
print("compare looks:", compare.label_node.text())
