"""Every file the add-on reads, broken every way we could think of, put in front of the entry points
that read it: each case ends in words that name the file (or works, for a file that is merely
large, linked or missing), the process lives, and no other file on disk changes."""

import os

import pytest

import fault_scenarios as scenarios

# Variants that are no fault at all: the add-on must simply work with them.
HARMLESS = {"symlinked", "huge"}

# Texts the pool windows show for a preset that is gone; they predate this suite and are kept
# word for word, so they do not carry the file's name.
PRESET_GONE = "The file wasn't found. It doesn't exist anymore."


def allowed_change(root, kind, variant, path):
    """Files the entry points may write: the file under test (when they could read it or it was
    missing) and, for a missing settings file, the default pool it lays out."""
    target = scenarios.target(root, kind)
    if path == target or path == os.path.realpath(target):
        return variant in HARMLESS | {"missing"}
    return kind == "settings" and variant == "missing" and path.startswith(
        os.path.join(root, "home", "pools"))


# An image is no text: its broken variants are all but non-utf8.
CASES = [pytest.param(kind, variant, id="{}-{}".format(kind, variant))
         for kind in scenarios.KINDS for variant in scenarios.VARIANTS
         if (kind, variant) != ("image", "non-utf8")]


@pytest.mark.parametrize("kind, variant", CASES)
def test_a_broken_file_ends_in_words_and_changes_nothing_else(host, tmp_path, kind, variant):
    root = str(tmp_path)
    if variant == "unreadable":
        outcome = scenarios.run_unprivileged(root, kind, variant)
    else:
        outcome = scenarios.run(root, kind, variant)

    before, after = outcome["before"], outcome["after"]
    changed = sorted(p for p in set(before) | set(after) if before.get(p) != after.get(p)
                     and not allowed_change(root, kind, variant, p))
    assert changed == [], "files changed: {}".format(changed)
    assert not [p for p in after if p.endswith(".tmp")], "a temporary was left"

    name = os.path.basename(scenarios.target(root, kind))
    texts = outcome["told"] + ([outcome["console"]] if outcome["console"].strip() else [])
    for text in texts:
        if text != PRESET_GONE:
            assert name in text, "a message does not name the file: {!r}".format(text)
    if variant not in HARMLESS | {"missing"}:
        assert texts, "nothing told the user about the broken {}".format(name)
    if variant == "symlinked":
        assert os.path.islink(scenarios.target(root, kind)), "the link was replaced"

