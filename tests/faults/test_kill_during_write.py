"""kill -9 in the middle of settings rewrites, by both writers, and of preset overwrites through the
host's copy: the file is always one whole version, and the next write leaves no temporary behind."""

import os
import random
import re
import signal
import time
import xml.etree.ElementTree as ET

from cobaltRig import helper

ROUNDS = 200
PAYLOAD = 64 * 1024  # a settings file big enough that a write takes a while
VALUE = re.compile(r"^v(\d+):x{%d}$" % PAYLOAD)


def rewrite_forever(rig, path, first):
    """The child: rewrites the settings file endlessly, alternating the two writers."""
    with open(path, "rb") as handle:
        data = handle.read()
    version = first
    while True:
        version += 1
        if version % 2:
            helper.update_xml("presetnodes_ignore", "v{}:{}".format(version, "x" * PAYLOAD))
        else:
            rig._testing.write_file_atomically(path, re.sub(rb">v\d+:", b">v%d:" % version, data))


def temporaries(folder):
    return [name for name in os.listdir(folder) if name.endswith(".tmp")]


def kill_rounds(seed, folder, write_forever, check, write_next):
    """Kills a child that writes forever, at random on odd rounds and, on even ones, the moment a
    temporary exists; checks the file is whole and that the next write sweeps what the killed one
    left. Gives the number of aimed kills that met a temporary."""
    chance = random.Random(seed)
    aimed_hits = 0
    started = time.monotonic()
    for round_ in range(ROUNDS):
        pid = os.fork()
        if pid == 0:
            try:
                write_forever(round_ * 1000)
            finally:
                os._exit(0)
        if round_ % 2:
            time.sleep(chance.uniform(0.0, 0.03))
        else:
            deadline = time.monotonic() + 2
            while not temporaries(folder) and time.monotonic() < deadline:
                time.sleep(0.0005)
            aimed_hits += bool(temporaries(folder))
        os.kill(pid, signal.SIGKILL)
        os.waitpid(pid, 0)

        check(round_)
        write_next(round_)
        assert temporaries(folder) == [], "round {}".format(round_)
    if "ASAN_OPTIONS" not in os.environ:  # the budget is the normal suite's; sanitizers are slower
        assert time.monotonic() - started < 60
    return aimed_hits


def test_kills_during_rewrites_leave_a_whole_file_and_no_temporary(rig, settings_home):
    path = helper.get_settings_xml()
    helper.update_xml("presetnodes_ignore", "v0:" + "x" * PAYLOAD)

    def check(round_):
        value = [e.text for e in ET.parse(path).getroot().find("settings").findall("setting")
                 if e.get("name") == "presetnodes_ignore"]
        assert len(value) == 1 and VALUE.match(value[0]), "round {}: not a whole version".format(
            round_)

    def write_next(round_):  # by either writer
        if round_ % 4 < 2:
            helper.update_xml("icon_size", str(10 + round_ % 20))
        else:
            with open(path, "rb") as handle:
                rig._testing.write_file_atomically(path, handle.read())

    aimed_hits = kill_rounds(12, str(settings_home),
                             lambda first: rewrite_forever(rig, path, first), check, write_next)
    assert aimed_hits > ROUNDS // 4, "the aimed kills rarely met a temporary"


PRESET = re.compile(r'^ label "?v(\d+):x{%d}"?$' % PAYLOAD, re.M)


def overwrite_forever(rig, node, path, first):
    """The child: gives the node a new label and writes it over the preset, endlessly."""
    version = first
    while True:
        version += 1
        node["label"].setValue("v{}:{}".format(version, "x" * PAYLOAD))
        rig._testing.write_preset_through_host(path)


def test_kills_during_preset_overwrites_leave_a_whole_preset_and_no_temporary(rig, nuke, tmp_path):
    folder = tmp_path / "pool" / "nodes" / "Blur"
    folder.mkdir(parents=True)
    path = str(folder / "soft.nk")
    node = nuke.nodes.Blur(name="soft")
    node["label"].setValue("v0:" + "x" * PAYLOAD)
    node.selectOnly()
    rig._testing.write_preset_through_host(path)

    def check(round_):
        with open(path) as handle:
            text = handle.read()
        assert len(PRESET.findall(text)) == 1 and text.rstrip().endswith("}"), (
            "round {}: not a whole preset".format(round_))

    kill_rounds(21, str(folder), lambda first: overwrite_forever(rig, node, path, first), check,
                lambda round_: rig._testing.write_preset_through_host(path))
