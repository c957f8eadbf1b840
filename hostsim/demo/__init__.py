"""The demo host: the simulated host with a window of its own, in which the add-on runs for real.

A node graph, a properties bin, a viewer and a console, the host's menus with what the add-on
registers in them, and the host's messages and panels as real dialogs. Start it with `scripts/demo`
(see `__main__` for its options).
"""
