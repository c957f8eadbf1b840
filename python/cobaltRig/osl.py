"""The module that knob commands stored in scripts import (``import cobaltRig.osl as lk``).

The operations are looked up on the compiled module when a button is pressed, so a script saved
today keeps working with whichever version of ``cobaltRig_w`` the host has loaded.
"""

OPERATIONS = (
    "set_look",
    "update_preset",
    "delete_preset",
    "import_preset",
    "export_preset",
    "apply_preset",
    "show_look_diff",
)


def __getattr__(name):
    if name in OPERATIONS:
        from . import cobaltRig_w

        return getattr(cobaltRig_w, name)
    raise AttributeError("module {!r} has no attribute {!r}".format(__name__, name))


def __dir__():
    return sorted(list(globals()) + list(OPERATIONS))
