"""A short walk through the add-on on the simulated host, printed step by step.

It makes a small script, gives two nodes their look tab and takes it off one of them again, the way an
artist would through the node's buttons and the host's menu.
"""

import os
import sys
import tempfile


def main():
    os.environ.setdefault("COBALTRIG_HOME", tempfile.mkdtemp(prefix="cobaltrig_demo_"))
    import nuke
    from cobaltRig import cobaltRig_w as rig

    def show(node):
        looks = [k.name() for k in node.allKnobs()]
        looks = looks[looks.index("looks"):] if "looks" in looks else []
        print("  {:<10} {}".format(node.name(), ", ".join(looks) or "(no look tab)"))

    print("cobaltRig demo on the simulated host (settings in {})".format(os.environ["COBALTRIG_HOME"]))
    read = nuke.createNode("CheckerBoard", inpanel=False)
    blur = nuke.createNode("Blur", inpanel=False)
    grade = nuke.createNode("Grade", inpanel=False)
    viewer = nuke.createNode("Viewer", inpanel=False)
    print("made", " -> ".join(n.name() for n in (read, blur, grade, viewer)))

    print("giving Blur, Grade and the Viewer their look tab:")
    for node in (blur, grade, viewer):
        rig.create_looks_widgets(node)
        show(node)

    print("pressing", repr(blur["look_new"].label()), "runs:", blur["look_new"].command())
    print("deleting the looks of the selection (Grade):")
    grade.selectOnly()
    rig.delete_selected_nodes_looks()
    for node in (blur, grade):
        show(node)
    return 0


if __name__ == "__main__":
    sys.exit(main())
