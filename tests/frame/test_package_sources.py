"""The package's Python files run inside the host's own Python, which can be older than ours."""

import ast
import glob
import os

import pytest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PACKAGE_FILES = sorted(glob.glob(os.path.join(ROOT, "python", "cobaltRig", "*.py")))


@pytest.mark.parametrize("path", PACKAGE_FILES, ids=os.path.basename)
def test_package_file_parses_as_the_oldest_supported_host_python(path):
    with open(path, encoding="utf-8") as handle:
        ast.parse(handle.read(), filename=path, feature_version=(3, 7))
