"""Every test of the simulated host starts on an empty, untitled script with nothing queued."""

import pytest


@pytest.fixture(autouse=True)
def empty_script(host):
    return host
