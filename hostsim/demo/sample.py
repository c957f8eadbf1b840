"""What the demo host starts on: a small script, a preset pool and a snapshot root, all in one folder.

The presets are script text as the host's copy writes it, the way an artist's pool holds them: single
nodes under `nodes/<Class>/`, node sets under `toolsets/<category>/`. The script is made by code through
the host's own API, and the settings that point the add-on at the pool and the snapshot root go through
its `helper`.
"""

import os

import nuke

POOL_NAME = "demo pool"
SCRIPT_NAME = "sample.nk"
SNAPSHOT_DIR = "first look"

_HEADER = "set cut_paste_input [stack 0]\nversion 15.1 v2\n"

PRESETS = {
    "nodes/Grade/warm.nk": _HEADER + """push $cut_paste_input
Grade {
 white {1.15 0.95 0.75 1}
 name warm
 selected true
 xpos 0
 ypos 0
}
""",
    "nodes/Grade/cool.nk": _HEADER + """push $cut_paste_input
Grade {
 white {0.8 0.95 1.2 1}
 name cool
 selected true
 xpos 0
 ypos 0
}
""",
    "nodes/Blur/soft.nk": _HEADER + """push $cut_paste_input
Blur {
 size 12
 label "soft\\n\\[value size] px"
 name soft
 selected true
 xpos 0
 ypos 0
}
""",
    "toolsets/generators/small_bars.nk": _HEADER + """ColorBars {
 inputs 0
 name ColorBars1
 selected true
 xpos 0
 ypos 0
}
Reformat {
 type "to box"
 box_width 480
 name Reformat1
 selected true
 xpos 0
 ypos 60
}
""",
}


def build_pool(pool):
    """Writes the presets into the pool."""
    for relative, text in PRESETS.items():
        path = os.path.join(pool, *relative.split("/"))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as f:
            f.write(text)


def build_script():
    """Checkerboard -> Grade -> Blur as the background, colour bars made small and moved into the
    top-right corner as the foreground, merged over it and watched by a Viewer."""
    root = nuke.root()
    root["format"].setValue("HD_720")

    def make(cls, x, y, **knobs):
        node = getattr(nuke.nodes, cls)(**knobs)
        node.setXYpos(x, y)
        return node

    checker = make("CheckerBoard2", 0, 0, boxsize=80.0)
    grade = make("Grade", 0, 70, inputs=[checker])
    grade["white"].setValue([1.1, 0.9, 0.7, 1.0])
    grade["label"].setValue("warm up")
    blur = make("Blur", 0, 130, inputs=[grade])
    blur["size"].setValue(3)
    bars = make("ColorBars", 190, 0)
    moved = make("Transform", 190, 130, inputs=[bars])
    moved["scale"].setValue(0.3)
    moved["translate"].setValue([850, 460])
    merge = make("Merge2", 0, 210, inputs=[blur, moved])
    make("Viewer", 0, 300, inputs=[merge])
    return grade


def configure(folder):
    """Points the add-on at the demo's pool and snapshot root; gives their paths."""
    from cobaltRig import helper

    pool = os.path.join(folder, "pool")
    snapshots = os.path.join(folder, "snapshots")
    os.makedirs(os.path.join(snapshots, SNAPSHOT_DIR), exist_ok=True)
    helper.add_pool(POOL_NAME, pool)
    helper.update_settings({
        "current_pool": POOL_NAME,
        "snapshotbrowser_root": snapshots,
        "current_snapshot_dir": os.path.join(snapshots, SNAPSHOT_DIR),
        "snapshot_render_width": "480",
    })
    return pool, snapshots


def prepare(folder):
    """Makes the pool, the settings and the sample script in `folder`; the script is left open,
    saved as `sample.nk` there, with the look tab on its Grade. Gives that Grade."""
    from cobaltRig import cobaltRig_w

    os.makedirs(folder, exist_ok=True)
    pool, _ = configure(folder)
    if not os.path.isdir(os.path.join(pool, "nodes")):
        build_pool(pool)
    nuke.scriptClear()
    grade = build_script()
    # The add-on's own buttons, as the first stored look would give them.
    cobaltRig_w.create_looks_widgets(grade)
    grade.selectOnly()
    nuke.scriptSaveAs(os.path.join(folder, SCRIPT_NAME))
    return grade
