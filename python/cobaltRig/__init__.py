"""cobaltRig: looks, preset pools, snapshots and viewer resolution for the compositing host.

The behaviour lives in the compiled module ``cobaltRig_w``; importing the package itself does
nothing, so the host can load it before a script is open.
"""

# The Qt binding comes before the compiled module, as in a host that imported it at start-up: the
# module's Qt libraries then resolve to the ones the binding loaded, and the process holds one Qt.
from . import qt as _qt  # noqa: E402,F401
