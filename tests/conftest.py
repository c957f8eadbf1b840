"""Fixtures shared by every suite: a fresh script in the simulated host, a settings home of the
test's own, and the host's recorded messages."""

import os
import subprocess
import sys

import pytest

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


@pytest.fixture(autouse=True)
def settings_home(tmp_path, monkeypatch):
    """Every test gets its own settings folder, so no test sees another's pools or switches."""
    home = tmp_path / "cobaltrig_home"
    home.mkdir()
    monkeypatch.setenv("COBALTRIG_HOME", str(home))
    return home


@pytest.fixture
def host(qapp):
    """The simulated host's test control, on an empty script."""
    import hostctl

    hostctl.reset()
    yield hostctl
    hostctl.reset()


@pytest.fixture
def nuke(host):
    import nuke as nuke_module

    return nuke_module


@pytest.fixture
def rig(host):
    """The compiled module."""
    from cobaltRig import cobaltRig_w

    return cobaltRig_w


@pytest.fixture
def run_python():
    """Runs code in a fresh interpreter with the test's path, for what only a first import shows."""

    def run(code, env=None):
        full_env = dict(os.environ)
        full_env.update(env or {})
        return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True,
                              env=full_env, timeout=60)

    return run
