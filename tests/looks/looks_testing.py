"""Helpers of the look suites: pressing buttons and reading looks as an artist sees them."""


def store(node):
    """Presses the node's `new` button, as an artist does; the first press gives it the look tab."""
    if node.knob("look_new") is None:
        from cobaltRig import cobaltRig_w

        cobaltRig_w.set_look(node)
    else:
        node["look_new"].execute()


def look_knobs(node):
    return [k.name() for k in node.allKnobs() if "look_preset_" in k.name()]


def stored_copies(nuke):
    container = next(n for n in nuke.allNodes("Group") if n.knob("looks_group"))
    return {n["label"].value(): n for n in container.nodes()}


def with_looks(nuke, node, mixes):
    """Stores one look per mix value; the node ends with the last of them."""
    for mix in mixes:
        node["mix"].setValue(mix)
        store(node)
    return node


def chain_in(nuke, group):
    with group:
        return tuple(nuke.createNode(c, inpanel=False) for c in ("CheckerBoard", "Blur", "Grade"))


def nested_group(nuke, depth):
    """Group1 at the root, and inside it Group2 and so on, `depth` levels deep: the innermost."""
    group = nuke.root()
    for level in range(1, depth + 1):
        with group:
            group = nuke.nodes.Group(name="Group{}".format(level))
    return group


def select(*nodes):
    for node in nodes:
        node.setSelected(True)


def press(qtbot, window, key):  # on the look slider
    qtbot.keyPress(window.slider, key)
    qtbot.keyRelease(window.slider, key)
