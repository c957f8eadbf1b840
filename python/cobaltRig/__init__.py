"""cobaltRig: looks, preset pools, snapshots and viewer resolution for the compositing host.

The behaviour lives in the compiled module ``cobaltRig_w``; importing the package itself does
nothing, so the host can load it before a script is open.
"""
