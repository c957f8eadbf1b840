"""Shared services of cobaltRig: the settings store, icons, style, small dialogs and file helpers.

The compiled module looks every operation up here when it calls it, so a studio can replace a
single function (a different settings location, its own dialogs) without rebuilding anything.

Settings live in a per-user folder, ``~/.nuke/cobaltRig`` unless the environment variable
``COBALTRIG_HOME`` names another one. The variable is read at each call, so a launcher or a test
can move the folder at any time. The folder holds three XML files, each created with defaults the
first time it is needed:

``settings.xml``
    ``<cobaltRig><settings><setting name="key">text</setting>...</settings>
    <pools><pool name="name">path</pool>...</pools><flags><flag>r,g,b</flag>...</flags></cobaltRig>``
``advanced_settings.xml``
    ``<cobaltRig><advanced><setting name="key">text</setting>...</advanced></cobaltRig>``
``hotkeys.xml``
    ``<cobaltRig><hotkeys><hotkey name="key">shortcut</hotkey>...</hotkeys></cobaltRig>``

Every value is text. A key the file does not hold reads as its default; an element without text
reads as the empty text, except for the keys in ``UNSET_WHEN_EMPTY``, whose callers must tell "no
value" apart from a value and get ``None`` for it. Files are only ever written as a whole, through
a temporary file in the same folder and one rename, so a failed write leaves the old file in place.
"""

import collections
import hashlib
import io
import os
import platform
import random
import re
import socket
import sys
import time
import uuid
import xml.etree.ElementTree as ET
import xml.parsers.expat

from .qt import QtCore, QtGui, QtWidgets, exec_dialog

VERSION = "1.0.0"

HOME_ENV = "COBALTRIG_HOME"
SETTINGS_FILE = "settings.xml"
ADVANCED_SETTINGS_FILE = "advanced_settings.xml"
HOTKEYS_FILE = "hotkeys.xml"
ROOT_TAG = "cobaltRig"
METADATA_ROOT_TAG = "snapshot"
# What a snapshot's metadata document may be: no larger, nested no deeper, and without a document
# type (so without entities, whose expansion could take the host's memory). The documents written
# here are a few hundred bytes, three levels deep.
METADATA_MAX_BYTES = 1024 * 1024
METADATA_MAX_DEPTH = 32

ICONS_DIR = os.path.join(os.path.dirname(os.path.abspath(__file__)), "icons")

# Plain keys of the settings file, in the order a new file lists them.
DEFAULT_SETTINGS = (
    ("current_pool", "default"),
    ("icon_size", "20"),
    ("hide_disabled_items", "False"),
    ("release_hotkey_closes_slider", "True"),
    ("look_icons", "True"),
    ("presetnodes_ignore", "Viewer,Dot,BackdropNode,StickyNote"),
    ("tooltips", "True"),
    ("snapshotbrowser_root", ""),
    ("snapshotbrowser_size_current", "1200,700"),
    ("snapshotbrowser_size_custom", "1200,700"),
    ("snapshotbrowser_thumbnail_scrollbar", "True"),
    ("snapshot_selection", "all nodes"),
    ("snapshot_render_width", "480"),
    ("current_snapshot_dir", None),
    ("current_snapshot_preview", None),
)

# Keys that hold a path or nothing: for them an empty element means "not set" and reads as None.
UNSET_WHEN_EMPTY = frozenset(("current_snapshot_dir", "current_snapshot_preview"))

DEFAULT_POOL_NAME = "default"

DEFAULT_FLAGS = (
    "205,60,60",
    "230,150,40",
    "220,205,60",
    "80,170,90",
    "60,130,215",
    "150,95,200",
)

DEFAULT_ADVANCED_SETTINGS = (
    ("export_items", "True"),
    ("import_window_transparent", "False"),
    ("items_rename", "True"),
    ("items_delete", "True"),
    ("new_snapshot_directory", "True"),
    ("delete_snapshot_directory", "True"),
)

# Shortcuts in the host's menu form. The two sliders are opened by holding a bare key and close
# when it is released, so their entries are single upper-case keys; an empty text means no
# shortcut.
DEFAULT_HOTKEYS = (
    ("store_look", "alt+shift+L"),
    ("delete_looks", ""),
    ("looks_slider", "E"),
    ("look_diff", "alt+shift+C"),
    ("resolution_slider", "Y"),
    ("export_nodes", "alt+shift+E"),
    ("import_preset", "alt+shift+I"),
    ("snapshot", "alt+shift+S"),
    ("snapshot_browser", "alt+shift+B"),
    ("settings", ""),
)
BARE_KEY_HOTKEYS = frozenset(("looks_slider", "resolution_slider"))

# Icon key -> file name in the icons folder.
ICON_FILES = {
    "icon_logo": "logo.png",
    "icon_logo_grey": "logo_grey.png",
    "icon_pool": "pool.png",
    "icon_nodes": "nodes.png",
    "icon_toolsets": "toolsets.png",
    "icon_folder": "folder.png",
    "icon_folder_white": "folder_white.png",
    "icon_preset": "preset.png",
    "icon_insert": "insert.png",
    "icon_insert_img": "insert_img.png",
    "icon_insert_nk": "insert_nk.png",
    "icon_explorer": "explorer.png",
    "icon_reveal": "reveal.png",
    "icon_refresh": "refresh.png",
    "icon_edit": "edit.png",
    "icon_delete": "delete.png",
    "icon_delete_selected": "delete_selected.png",
    "icon_delete_all": "delete_all.png",
    "icon_comment": "comment.png",
    "icon_eye": "eye.png",
    "icon_flag": "flag.png",
    "icon_nocolor": "nocolor.png",
    "icon_snapshot": "snapshot.png",
    "icon_settings": "settings.png",
    "icon_help": "help.png",
    "icon_half": "half.png",
    "icon_maximize": "maximize.png",
    "icon_x": "x.png",
    "icon_plus": "plus.png",
    "icon_minus": "minus.png",
    "icon_slider": "slider.png",
    "icon_resolution": "resolution.png",
    "look_star": "look_star.png",
    "look_update": "look_update.png",
    "look_delete": "look_delete.png",
    "look_import": "look_import.png",
    "look_export": "look_export.png",
}

TOOLTIPS = {
    "snapshot_browser": {
        "snapshot": "Take a snapshot of what the active viewer shows",
        "settings": "Show or hide the settings of the snapshot browser",
        "custom_size": "Reopen the browser at your custom size",
        "maximize": "Reopen the browser at the size of the screen",
        "close": "Close the snapshot browser (Esc)",
        "switch_snapshot_dir": "Switch to another snapshot directory, or create or delete one",
        "snapshot_selection": "Which nodes are saved beside each snapshot image",
        "snapshot_render_width": "Width in pixels of the rendered snapshot images (100 to 2048)",
        "snapshot_browser_root": "The folder that holds all snapshot directories",
        "thumbnails_scrollbar": "Show the scroll bar of the thumbnail list "
        "(takes effect when the browser opens next)",
        "save_settings": "Store these settings and go back to the snapshots",
    },
    "settings": {
        "pools": "Named folders that hold your node and toolset presets",
        "add_pool": "Add a pool: a name and the folder it stands for",
        "remove_pool": "Take the selected pool off the list; its folder stays on disk",
        "hide_disabled_items": "Leave folders that don't fit the export out of the export tree",
        "release_hotkey_closes_slider": "Releasing E closes the look slider",
        "look_icons": "New look buttons on nodes get small pictures",
        "tooltips": "The snapshot browser shows tool tips",
        "presetnodes_ignore": "Node classes that never store looks, separated by commas",
        "icon_size": "Size of the icons in the pool trees",
    },
}

STYLE_SHEET = """
QWidget#SliderPanel {
    background-color: #262a30;
    border: 1px solid #3a6fc4;
}
QLineEdit#input_look, QLineEdit#input_rez {
    background-color: #1b1e22;
    color: #f2f2f2;
    border: 1px solid #3a6fc4;
    border-radius: 2px;
    font-weight: bold;
    min-width: 26px;
    max-width: 26px;
    qproperty-alignment: AlignCenter;
}
QPushButton#actionButton {
    background-color: #2f5fae;
    color: #ffffff;
    border: none;
    border-radius: 3px;
    padding: 5px 14px;
}
QPushButton#actionButton:hover {
    background-color: #3a72cf;
}
QPushButton#actionButton:pressed {
    background-color: #264d8e;
}
QWidget#snapshotbrowser {
    background-color: #202326;
    color: #d8d8d8;
}
QGroupBox#thumbs_list, QGroupBox#preview_image, QGroupBox#settings {
    border: none;
    margin: 0px;
    padding: 0px;
}
QTableWidget#table_thumbs {
    background-color: #1a1c1f;
    border: none;
    gridline-color: #1a1c1f;
    selection-background-color: #3a6fc4;
}
QLabel#empty {
    background-color: #1a1c1f;
}
QLabel#comment {
    background-color: rgba(20, 22, 25, 200);
    color: #f2f2f2;
    font-size: 10px;
    font-weight: bold;
    min-width: 18px;
    max-width: 18px;
    min-height: 18px;
    max-height: 18px;
    qproperty-alignment: AlignCenter;
}
QLabel#flag {
    min-width: 18px;
    max-width: 18px;
    min-height: 18px;
    max-height: 18px;
}
QLabel#plain {
    background: transparent;
    color: #d8d8d8;
}
"""

CHANGELOG = """<b>cobaltRig {version}</b>
<ul>
<li>Looks: store any number of looks of a node, recall, update and delete them, and step the
selected nodes through their looks with the look slider.</li>
<li>Preset pools: export single nodes and toolsets into named pools, search and insert them.</li>
<li>Snapshots: render the viewer into a snapshot with its node graph, browse, flag and comment
snapshots in the snapshot browser.</li>
<li>Resolution slider for the active viewer.</li>
</ul>"""

ABOUT = """<b>cobaltRig</b> {version}<br><br>
Looks, preset pools, snapshots and a viewer resolution slider for the node graph.<br><br>
Settings folder: {home}"""

# Non-modal information windows stay referenced here while they are open.
_info_windows = []


# --------------------------------------------------------------------------------------------
# Settings home and XML files
# --------------------------------------------------------------------------------------------


class NotSavedError(OSError):
    """A file of the add-on could not be written; the old file, if any, is as it was."""


class NotReadError(ValueError):
    """A file of the add-on could not be read; the message names the file."""


# Paths already reported as unwritable, so a read-only settings folder says so once per session.
_reported = set()


def _report_once(key, text):
    if key in _reported:
        return
    _reported.add(key)
    sys.stderr.write("cobaltRig: {}\n".format(text))


def get_settings_home():
    """The per-user settings folder, created when missing (when it can be)."""
    home = os.environ.get(HOME_ENV) or os.path.join(os.path.expanduser("~"), ".nuke", "cobaltRig")
    home = os.path.abspath(os.path.expanduser(home))
    if not os.path.isdir(home):
        try:
            os.makedirs(home, exist_ok=True)
        except OSError as error:
            # A team share mounted read-only: everything reads as defaults and says so once.
            _report_once(("home", home), "cannot create the settings folder '{}' ({}); "
                         "using defaults".format(home, error.strerror or error))
    return home


def prettyprint(root, level=0):
    """Indent an ElementTree element and its descendants in place, two spaces per level.

    Existing layout whitespace is replaced, so a file that is read and written again keeps the
    same shape. Text of leaf elements is never touched: values may hold meaningful blanks.
    Anything that isn't an ElementTree element is left alone.
    """
    if not ET.iselement(root):
        return root
    pad = "\n" + "  " * level
    children = list(root)
    if children:
        if not root.text or not root.text.strip():
            root.text = pad + "  "
        for child in children:
            prettyprint(child, level + 1)
            if not child.tail or not child.tail.strip():
                child.tail = pad + "  "
        if not children[-1].tail or not children[-1].tail.strip():
            children[-1].tail = pad
    if level == 0:
        root.tail = None
    return root


# --------------------------------------------------------------------------------------------
# Replacing files
#
# Every file the add-on writes, from here or from the compiled module, is replaced the same way:
# the new bytes go to a temporary file in the target's own folder, named
# ".<name>.<machine>.<process id>.<random>.tmp", which then replaces the target in one rename. A
# symbolic link is followed to the file it leads to, so a link to a team file stays a link; a link
# that leads nowhere is refused rather than replaced by a private file or made to create one in a
# place the user may not expect. Before each write, temporaries of that pattern left beside the
# target by a writer that died (a process of this machine that no longer runs, or anything older
# than an hour) are removed; so are those of the add-on's earlier writer
# (".<name>.<8 characters>.tmp"), by age.
# --------------------------------------------------------------------------------------------

STALE_TEMPORARY_SECONDS = 3600
_TEMP_RANDOM = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"


def _machine_tag():
    return re.sub(r"[^A-Za-z0-9-]", "_", socket.gethostname() or "")[:40] or "machine"


def _process_running(pid):
    if pid == os.getpid():
        # Writes are synchronous: a temporary of this process found before a write is left over.
        return False
    if os.name != "posix":
        return True  # no cheap, safe check here; the age rule sweeps these
    try:
        os.kill(pid, 0)
    except ProcessLookupError:
        return False
    except OSError:
        return True
    return True


def _name_max(folder):
    try:
        return os.pathconf(folder or ".", "PC_NAME_MAX")
    except (AttributeError, OSError, ValueError):
        return 255


def _temporary_stem(folder, name):
    """The name part of a temporary of the file name: the name itself, or, where a temporary of
    it would be longer than the folder's file system allows, its start and a digest of all of it.
    The compiled module shortens names the same way."""
    fixed = ".{}.{}.{}.tmp".format(_machine_tag(), 99999999, "x" * 6)
    limit = _name_max(folder) - len(fixed.encode("utf-8")) - 1  # the leading dot
    if len(os.fsencode(name)) <= limit:
        return name
    digest = "~" + hashlib.sha1(name.encode("utf-8", "surrogateescape")).hexdigest()[:8]
    budget = limit - len(digest)
    start = name
    while start and len(os.fsencode(start)) > budget:
        start = start[:-1]
    return start + digest


def _stale_temporaries(target):
    """Paths of leftover temporaries of target that no running writer owns."""
    folder, name = os.path.split(target)
    pattern = re.compile(r"\.{}\.(?:([A-Za-z0-9_-]+)\.(\d+)\.[A-Za-z0-9]{{6}}|[a-z0-9_]{{8}})\.tmp$"
                         .format(re.escape(_temporary_stem(folder, name))))
    try:
        entries = os.listdir(folder or ".")
    except OSError:
        return []
    machine = _machine_tag()
    now = time.time()
    stale = []
    for entry in entries:
        match = pattern.match(entry)
        if not match:
            continue
        path = os.path.join(folder, entry)
        try:
            age = now - os.lstat(path).st_mtime
        except OSError:
            continue
        ours_dead = match.group(1) == machine and not _process_running(int(match.group(2)))
        if ours_dead or age > STALE_TEMPORARY_SECONDS:
            stale.append(path)
    return stale


def replace_target(path):
    """The file a write to path replaces: path itself, or the file its symbolic links lead to.

    Raises NotSavedError, naming the path, when a link leads nowhere or the target is a folder.
    """
    path = os.path.abspath(path)
    if os.path.islink(path):
        target = os.path.realpath(path)
        if not os.path.exists(target):
            raise NotSavedError("cobaltRig: cannot save '{}': it is a link to '{}', which does not "
                                "exist".format(path, target))
        path = target
    if os.path.isdir(path):
        raise NotSavedError("cobaltRig: cannot save '{}': a folder of that name is in the "
                            "way".format(path))
    return path


def write_file(path, data):
    """Replace the file at path with the bytes data (see "Replacing files" above).

    Raises NotSavedError naming the path when the file cannot be written; the old file is then as
    it was and no temporary file is left.
    """
    target = replace_target(path)
    folder, name = os.path.split(target)
    for stale in _stale_temporaries(target):
        try:
            os.remove(stale)
        except OSError:
            pass
    try:
        mode = os.stat(target).st_mode & 0o7777
    except OSError:
        mode = None  # a new file: the user's umask decides, as for any file they make
    tmp, fd = None, None
    try:
        for _attempt in range(16):
            candidate = os.path.join(folder, ".{}.{}.{}.{}.tmp".format(
                _temporary_stem(folder, name), _machine_tag(), os.getpid(),
                "".join(random.choice(_TEMP_RANDOM) for _ in range(6))))
            try:
                fd = os.open(candidate,
                             os.O_WRONLY | os.O_CREAT | os.O_EXCL | getattr(os, "O_BINARY", 0), 0o666)
                tmp = candidate
                break
            except FileExistsError:
                pass
        if fd is None:
            raise FileExistsError("no free temporary name")
        with os.fdopen(fd, "wb") as handle:
            fd = None
            handle.write(data)
            handle.flush()
            os.fsync(handle.fileno())
        if mode is not None:
            os.chmod(tmp, mode)
        os.replace(tmp, target)
        tmp = None
    except OSError as error:
        reason = error.strerror or str(error)
        if isinstance(error, PermissionError) and tmp is None:
            reason = "the folder '{}' is not writable".format(folder)
        raise NotSavedError("cobaltRig: cannot save '{}': {}".format(path, reason)) from error
    finally:
        if fd is not None:
            os.close(fd)
        if tmp is not None:
            try:
                os.remove(tmp)
            except OSError:
                pass


def write_xml(root, path):
    """Write the element tree to path as UTF-8 with a declaration, through write_file."""
    prettyprint(root)
    buffer = io.BytesIO()
    ET.ElementTree(root).write(buffer, encoding="utf-8", xml_declaration=True)
    buffer.write(b"\n")
    write_file(path, buffer.getvalue())


def parse_xml(path):
    """The root element of the XML file at path; NotReadError naming the file when it can't be."""
    try:
        return ET.parse(path).getroot()
    except ET.ParseError as error:
        raise NotReadError("cobaltRig: cannot read '{}': {}".format(path, error))
    except (OSError, UnicodeError) as error:
        reason = getattr(error, "strerror", None) or str(error)
        raise NotReadError("cobaltRig: cannot read '{}': {}".format(path, reason))


def _child(parent, tag, create=False):
    element = parent.find(tag)
    if element is None and create:
        element = ET.SubElement(parent, tag)
    return element


def _named_section(section_tag, item_tag, items):
    section = ET.Element(section_tag)
    for name, value in items:
        element = ET.SubElement(section, item_tag, name=name)
        element.text = value or None
    return section


def _ensure_file(filename, build):
    """Path of a file in the settings folder, made with its defaults when missing. In a folder
    that can't be written the file stays missing, and its readers use the defaults."""
    path = os.path.join(get_settings_home(), filename)
    if not os.path.lexists(path):
        try:
            write_xml(build(), path)
        except NotSavedError as error:
            _report_once(("defaults", path), "{}; using defaults".format(error))
    return path


def _read_root(path, build):
    """The parsed file, or the tree of its defaults when there is no file to read: a folder that
    could not be written, or a link whose target is gone (reported once, and never replaced)."""
    if not os.path.exists(path):
        if os.path.islink(path):
            _report_once(("link", path), "'{}' is a link to '{}', which does not exist; using "
                         "defaults".format(path, os.path.realpath(path)))
        return build()
    return parse_xml(path)


def _read_named(root, section_tag, item_tag):
    """Ordered (name, text) pairs of a section; the first of two equal names wins."""
    section = _child(root, section_tag)
    values = {}
    if section is None:
        return values
    for element in section.findall(item_tag):
        name = element.get("name")
        if name is not None and name not in values:
            values[name] = element.text or ""
    return values


# --------------------------------------------------------------------------------------------
# The settings store
# --------------------------------------------------------------------------------------------


def get_default_snapshot_root_dir():
    """Where snapshot directories go until the user picks a root of their own."""
    return os.path.join(get_settings_home(), "snapshots")


def get_default_pool_dir():
    return os.path.join(get_settings_home(), "pools", DEFAULT_POOL_NAME)


def _default_settings_root():
    root = ET.Element(ROOT_TAG)
    root.append(_named_section("settings", "setting", DEFAULT_SETTINGS))
    pools = ET.SubElement(root, "pools")
    pool = ET.SubElement(pools, "pool", name=DEFAULT_POOL_NAME)
    pool.text = get_default_pool_dir()
    flags = ET.SubElement(root, "flags")
    for colour in DEFAULT_FLAGS:
        ET.SubElement(flags, "flag").text = colour
    return root


def get_settings_xml():
    """Path of the settings file; the folder and a file with defaults are made when missing.

    A new file comes with one pool, whose folder is laid out at the same time, so the first
    export or import window already shows a tree to work in.
    """
    path = os.path.join(get_settings_home(), SETTINGS_FILE)
    if not os.path.lexists(path):
        try:
            write_xml(_default_settings_root(), path)
        except NotSavedError as error:
            _report_once(("defaults", path), "{}; using defaults".format(error))
            return path
        for sub in ("nodes", "toolsets"):
            try:
                os.makedirs(os.path.join(get_default_pool_dir(), sub))
            except OSError:
                pass  # an existing or unwritable pool folder is the user's to sort out
    return path


def load_settings_tree():
    """The root element of the settings file, or of the defaults when there is no file to read."""
    return _read_root(get_settings_xml(), _default_settings_root)


def load_settings():
    """A fresh mapping of the settings store.

    Plain keys map to their text, ``pools`` to an ordered mapping of pool name to path, ``flags``
    to the list of flag colours ("r,g,b") in file order. Keys the file lacks read as their
    default; see the module notes for empty values.
    """
    root = load_settings_tree()
    settings = dict(DEFAULT_SETTINGS)
    section = _child(root, "settings")
    seen = set()
    if section is not None:
        for element in section.findall("setting"):
            key = element.get("name")
            if key is None or key in seen:
                continue
            seen.add(key)
            text = element.text or ""
            if not text and key in UNSET_WHEN_EMPTY:
                text = None
            settings[key] = text

    pools = {}
    pools_element = _child(root, "pools")
    if pools_element is not None:
        for element in pools_element.findall("pool"):
            name = element.get("name")
            if name and name not in pools:
                pools[name] = element.text or ""
    settings["pools"] = pools

    flags = []
    flags_element = _child(root, "flags")
    if flags_element is not None:
        for element in flags_element.findall("flag"):
            if element.text and element.text.strip():
                flags.append(element.text.strip())
    settings["flags"] = flags
    return settings


def update_settings(values):
    """Store several plain keys in one rewrite; ``None`` empties a key.

    Every ``setting`` element of a key gets the value; a key the file doesn't hold is added.
    """
    path = get_settings_xml()
    root = _read_root(path, _default_settings_root)
    section = _child(root, "settings", create=True)
    for key, value in values.items():
        text = None if value is None else str(value)
        matches = [e for e in section.findall("setting") if e.get("name") == key]
        if not matches:
            matches = [ET.SubElement(section, "setting", name=key)]
        for element in matches:
            element.text = text or None
    write_xml(root, path)


def update_xml(key, value):
    """Store one plain key of the settings file; ``None`` unsets it."""
    update_settings({key: value})


def save_pools(pools):
    """Replace the stored pools with the mapping, keeping its order."""
    path = get_settings_xml()
    root = _read_root(path, _default_settings_root)
    section = _child(root, "pools", create=True)
    for element in list(section):
        section.remove(element)
    for name, pool_path in pools.items():
        ET.SubElement(section, "pool", name=name).text = pool_path
    write_xml(root, path)


def add_pool(name, path):
    pools = load_settings()["pools"]
    pools[name] = path
    save_pools(pools)


def remove_pool(name):
    pools = load_settings()["pools"]
    pools.pop(name, None)
    save_pools(pools)


def _load_named_file(filename, section_tag, item_tag, defaults):
    """A small mapping file beside the settings file, made with its defaults when missing; keys
    the file lacks read as their default."""

    def default_root():
        root = ET.Element(ROOT_TAG)
        root.append(_named_section(section_tag, item_tag, defaults))
        return root

    path = _ensure_file(filename, default_root)
    values = dict(defaults)
    values.update(_read_named(_read_root(path, default_root), section_tag, item_tag))
    return values


def parse_advanced_settings():
    """Mapping of the advanced settings, text to text; missing keys read as their default."""
    return _load_named_file(ADVANCED_SETTINGS_FILE, "advanced", "setting",
                            DEFAULT_ADVANCED_SETTINGS)


def load_hotkeys():
    """Mapping of action name to shortcut text; the slider keys come in upper case."""
    values = _load_named_file(HOTKEYS_FILE, "hotkeys", "hotkey", DEFAULT_HOTKEYS)
    for key in BARE_KEY_HOTKEYS:
        values[key] = values[key].strip().upper()
    return values


# --------------------------------------------------------------------------------------------
# Icons, tool tips, style, windows
# --------------------------------------------------------------------------------------------


def load_icons():
    """Mapping of icon key to the path of its image in the package's icons folder."""
    return dict((key, os.path.join(ICONS_DIR, name)) for key, name in ICON_FILES.items())


def load_tooltips(widget, section):
    """Give every child of widget (and widget itself) that carries a "tt" property its text."""
    texts = TOOLTIPS.get(section, {})
    objects = [widget] + list(widget.findChildren(QtCore.QObject))
    for obj in objects:
        key = obj.property("tt")
        if key and key in texts and hasattr(obj, "setToolTip"):
            obj.setToolTip(texts[key])


def set_style_sheet(widget):
    widget.setStyleSheet(STYLE_SHEET)


def center_window(widget):
    """Centre a top-level window on the screen under the mouse, or the primary screen."""
    screen = QtGui.QGuiApplication.screenAt(QtGui.QCursor.pos())
    if screen is None:
        screen = QtGui.QGuiApplication.primaryScreen()
    if screen is None:
        return
    frame = widget.frameGeometry()
    frame.moveCenter(screen.availableGeometry().center())
    widget.move(frame.topLeft())


def _qt_parent(parent):
    return parent if isinstance(parent, QtWidgets.QWidget) else None


def show_message_box(parent, text):
    """Show text and wait for the user; parent may be None."""
    parent = _qt_parent(parent)
    box = QtWidgets.QMessageBox(parent)
    box.setWindowTitle("cobaltRig")
    box.setTextFormat(QtCore.Qt.PlainText)
    box.setText(text)
    box.setStandardButtons(QtWidgets.QMessageBox.Ok)
    # The windows of the tool stay on top; a message must not open behind them.
    box.setWindowFlags(box.windowFlags() | QtCore.Qt.WindowStaysOnTopHint)
    exec_dialog(box)


def _css_colour(color):
    """A colour text as callers pass it ("45,0,0", "#c33", "red") in style sheet form."""
    if not color:
        return None
    text = str(color).strip()
    parts = [p.strip() for p in text.split(",")]
    if len(parts) == 3 and all(p.isdigit() for p in parts):
        return "rgb({})".format(",".join(parts))
    if QtGui.QColor.isValidColor(text):
        return text
    return None


def ask_dialog(title, message, process_label="ok", color_process=None):
    """Ask a question; True only when the user pressed the button labelled process_label.

    Cancel is the default button, so Return, Escape and closing the window all decline: the
    question usually guards something that can't be undone.
    """
    dialog = QtWidgets.QDialog()
    dialog.setWindowTitle(title)
    dialog.setWindowFlags(dialog.windowFlags() | QtCore.Qt.WindowStaysOnTopHint)
    dialog.setModal(True)
    dialog.setMinimumWidth(360)

    label = QtWidgets.QLabel(message)
    label.setTextFormat(QtCore.Qt.PlainText)
    label.setWordWrap(True)
    push_cancel = QtWidgets.QPushButton("cancel")
    push_cancel.setObjectName("push_cancel")
    push_process = QtWidgets.QPushButton(process_label)
    push_process.setObjectName("push_process")
    push_process.setAutoDefault(False)
    push_cancel.setDefault(True)
    css = _css_colour(color_process)
    if css:
        push_process.setStyleSheet(
            "QPushButton {{background-color: {}; color: #ffffff; padding: 5px 14px;}}".format(css)
        )

    layout_push = QtWidgets.QHBoxLayout()
    layout_push.addStretch(1)
    layout_push.addWidget(push_process)
    layout_push.addWidget(push_cancel)
    layout_main = QtWidgets.QVBoxLayout(dialog)
    layout_main.addWidget(label)
    layout_main.addLayout(layout_push)

    push_process.clicked.connect(dialog.accept)
    push_cancel.clicked.connect(dialog.reject)
    result = exec_dialog(dialog) == QtWidgets.QDialog.DialogCode.Accepted
    dialog.deleteLater()
    return result


def _show_info_window(title, html):
    box = QtWidgets.QMessageBox()
    box.setWindowTitle(title)
    box.setTextFormat(QtCore.Qt.RichText)
    box.setText(html)
    box.setStandardButtons(QtWidgets.QMessageBox.Close)
    box.setWindowFlags(box.windowFlags() | QtCore.Qt.WindowStaysOnTopHint)
    box.setAttribute(QtCore.Qt.WA_DeleteOnClose)
    box.setModal(False)
    _info_windows.append(box)
    box.destroyed.connect(lambda *args: _info_windows.remove(box) if box in _info_windows else None)
    box.show()
    box.raise_()
    return box


def show_changelog():
    return _show_info_window("cobaltRig changelog", CHANGELOG.format(version=VERSION))


def show_about_window():
    return _show_info_window("about cobaltRig", ABOUT.format(version=VERSION, home=get_settings_home()))


# --------------------------------------------------------------------------------------------
# Trees and the file browser
# --------------------------------------------------------------------------------------------


# QIcon by image path for the tree items. Making a QIcon from a file reads the image's header, and a
# pool tree gives thousands of items the same few icons; a QIcon is shared, so one per path serves all.
_TREE_ICONS = {}


def _tree_icon(path):
    if not isinstance(path, str):
        return QtGui.QIcon(path)
    icon = _TREE_ICONS.get(path)
    if icon is None:
        icon = _TREE_ICONS[path] = QtGui.QIcon(path)
    return icon


def build_tree_widget_item(parent, label, path, disabled, selected, expanded=False, is_dir=False, icon=None):
    """A pool tree item under parent (a tree or an item), already attached.

    ``text(0)`` is the label and ``data(0, UserRole)`` the path. Directories without an icon of
    their own get the folder icon, files the preset icon. A disabled directory disables what
    lies below it as well, as Qt does: nothing in a folder that doesn't fit the export can be
    picked as its destination.

    The pool windows make their items the same way in compiled code while this function is the
    one in place; replace it, and they call the replacement for every item.
    """
    from . import cobaltRig_w

    item = QtWidgets.QTreeWidgetItem(parent, [label])
    if not icon:
        icon = ICON_FILES["icon_folder"] if is_dir else ICON_FILES["icon_preset"]
        icon = os.path.join(ICONS_DIR, icon)
    cobaltRig_w.dress_tree_widget_item(item, os.fspath(path), bool(disabled), bool(selected),
                                       bool(expanded), _tree_icon(icon))
    return item


# The windows compare the function in place with this one to see whether it was replaced.
_BUILD_TREE_WIDGET_ITEM = build_tree_widget_item


def get_explorer_name():
    system = platform.system()
    if system == "Windows":
        return "Explorer"
    if system == "Darwin":
        return "Finder"
    return "file browser"


def open_in_explorer(path, parent=None):
    """Show a folder (or the folder of a file) in the platform's file browser."""
    folder = path if os.path.isdir(path) else os.path.dirname(path)
    if not folder or not os.path.isdir(folder):
        show_message_box(parent, "The folder '{}' doesn't exist.".format(path))
        return False
    return QtGui.QDesktopServices.openUrl(QtCore.QUrl.fromLocalFile(folder))


# --------------------------------------------------------------------------------------------
# The host's graph
# --------------------------------------------------------------------------------------------


def create_uid():
    """A new identifier for a stored look: hex digits only, so it can stand between quotes."""
    return uuid.uuid4().hex


def _group_holding(nuke, node):
    # The host names a node inside groups by its path from the root ("Group1.Inner.Blur1").
    path = node.fullName()
    if "." not in path:
        return nuke.root()
    group = nuke.toNode("root." + path.rsplit(".", 1)[0])
    if group is None:
        raise ValueError("{}: the group that holds this node cannot be found".format(path))
    return group


def find_looks_group(node=None):
    """The look container, or False; never makes one.

    Every graph level has its own container: without an argument this is the one of the current
    group context, with a node the one of the group that holds that node. The compiled looks code
    finds its container through this function alone (inside the node's group context), so storing,
    applying, updating and deleting always agree on it; a studio that replaces this function
    changes all of them at once.
    """
    import nuke

    if node is None:
        groups = nuke.allNodes("Group")
    else:
        groups = nuke.allNodes("Group", group=_group_holding(nuke, node))
    for group in groups:
        if "looks_group" in group.knobs():
            return group
    return False


def get_topleft_coordinates():
    """A place above the top-left corner of the current group's graph, clear of its nodes."""
    import nuke

    nodes = [n for n in nuke.allNodes() if "looks_group" not in n.knobs()]
    if not nodes:
        return 0, 0
    x = min(int(n.xpos()) for n in nodes)
    y = min(int(n.ypos()) for n in nodes)
    return x, y - 100


def get_resolution():
    """The active viewer's downrez step as text ("0.0" to "5.0"), or None without a viewer."""
    import nuke

    viewer = nuke.activeViewer()
    if viewer is None:
        return None
    node = viewer.node()
    if node is None:
        return None
    try:
        knob = node["downrez"]
    except (NameError, KeyError):
        return None
    value = knob.getValue()
    try:
        return str(float(value))
    except (TypeError, ValueError):
        return str(value)


def get_connected_nodes(node):
    """All nodes upstream of node, nearest first, each once; node itself is not among them."""
    def key(n):
        try:
            return n.fullName()
        except AttributeError:
            return n.name()

    seen = set([key(node)])
    result = []
    pending = collections.deque(node.dependencies())
    while pending:
        current = pending.popleft()
        if current is None or key(current) in seen:
            continue
        seen.add(key(current))
        result.append(current)
        pending.extend(current.dependencies())
    return result


# --------------------------------------------------------------------------------------------
# Snapshots
# --------------------------------------------------------------------------------------------


def get_image_size(path):
    """Width and height of an image, read from its header only; (1, 1) when unreadable."""
    reader = QtGui.QImageReader(path)
    size = reader.size()
    if not size.isValid() or size.width() <= 0 or size.height() <= 0:
        _report_once(("image", path), "cannot read the image '{}': {}".format(
            path, reader.errorString()))
        return 1, 1
    return size.width(), size.height()


def get_snapshot_dirs():
    """Names of the snapshot directories under the browser root, in the file system's order."""
    root = load_settings().get("snapshotbrowser_root") or get_default_snapshot_root_dir()
    if not os.path.isdir(root):
        return []
    return [name for name in os.listdir(root) if os.path.isdir(os.path.join(root, name))]


def _metaxml_path(src):
    return os.path.splitext(src)[0] + ".xml"


class _Refused(Exception):
    pass


def parse_metadata(path):
    """The root element of a snapshot's metadata document, read within the limits above.

    The document is checked first by one pass of the expat parser, which keeps no tree and
    recurses nowhere; only a document within the limits becomes an element tree. Raises
    NotReadError naming the file otherwise.
    """
    def refuse(reason):
        raise NotReadError("cobaltRig: cannot read '{}': {}".format(path, reason))

    too_large = "it is larger than 1 MB, far more than snapshot metadata holds"
    try:
        if not os.path.isfile(path):
            refuse("it is not a regular file")
        if os.path.getsize(path) > METADATA_MAX_BYTES:
            refuse(too_large)
        with open(path, "rb") as handle:
            data = handle.read(METADATA_MAX_BYTES + 1)
    except OSError as error:
        refuse(error.strerror or str(error))
    if len(data) > METADATA_MAX_BYTES:
        refuse(too_large)

    depth = [0]

    def start(name, attributes):
        depth[0] += 1
        if depth[0] > METADATA_MAX_DEPTH:
            raise _Refused("its elements are nested more than {} levels deep".format(
                METADATA_MAX_DEPTH))

    def end(name):
        depth[0] -= 1

    def declaration(*args):
        raise _Refused("it declares a document type or entities, which snapshot metadata never "
                       "does")

    parser = xml.parsers.expat.ParserCreate()
    parser.StartElementHandler = start
    parser.EndElementHandler = end
    parser.StartDoctypeDeclHandler = declaration
    parser.EntityDeclHandler = declaration
    try:
        parser.Parse(data, True)
    except _Refused as reason:
        refuse(str(reason))
    except xml.parsers.expat.ExpatError as error:
        refuse(str(error))
    try:
        return ET.fromstring(data)
    except ET.ParseError as error:
        refuse(str(error))


def create_metaxml(path):
    """Write a fresh metadata document with an empty comment and no flag."""
    root = ET.Element(METADATA_ROOT_TAG)
    metadata = ET.SubElement(root, "metadata")
    ET.SubElement(metadata, "meta", name="comment")
    ET.SubElement(metadata, "meta", name="flag")
    write_xml(root, path)


def load_metadata(src):
    """Comment and flag of the snapshot with image src; empty texts when there are none."""
    result = {"comment": "", "flag": ""}
    path = _metaxml_path(src)
    if not os.path.isfile(path):
        return result
    try:
        metadata = parse_metadata(path).find("metadata")
    except NotReadError as error:
        # Shown without comment and flag; the file itself is left for the user to mend.
        _report_once(("metadata", path), str(error))
        return result
    if metadata is None:
        return result
    found = set()
    for meta in metadata.findall("meta"):
        name = meta.get("name")
        if name in result and name not in found:
            found.add(name)
            result[name] = meta.text or ""
    return result


def set_flag(browser, src, colour):
    """Set the flag of a snapshot (colour: the three texts of a flag entry) or remove it (None).

    The browser is then brought up to date: the thumbnail of the snapshot redraws its marks, or,
    when it can't be found, the table is rebuilt.
    """
    path = _metaxml_path(src)
    if not os.path.isfile(path):
        create_metaxml(path)
    root = parse_metadata(path)
    metadata = _child(root, "metadata", create=True)
    flags = [m for m in metadata.findall("meta") if m.get("name") == "flag"]
    if not flags:
        flags = [ET.SubElement(metadata, "meta", name="flag")]
    text = ",".join(str(c).strip() for c in colour) if colour else None
    for meta in flags:
        meta.text = text
    write_xml(root, path)
    _refresh_browser(browser, src)


def _refresh_browser(browser, src):
    if browser is None:
        return
    target = os.path.normcase(os.path.abspath(src))
    try:
        updated = False
        for thumb in browser.get_thumbnails_list():
            if thumb is None:
                continue
            if os.path.normcase(os.path.abspath(thumb.get_src())) == target:
                thumb.set_meta_ui_elements()
                updated = True
        if updated:
            return
    except Exception:
        pass
    populate = getattr(browser, "populate_table_thumbs", None)
    if populate is not None:
        populate()
