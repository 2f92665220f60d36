# SPDX-License-Identifier: Apache-2.0
import importlib.util
import pathlib
import subprocess
import sys

import pytest

import quillcamera

pytestmark = pytest.mark.skipif(not importlib.util.find_spec("mypy"), reason="mypy is missing")

EXAMPLES = pathlib.Path(__file__).resolve().parents[3] / "Examples/Python"


def run(folder, *arguments):
    process = subprocess.run([sys.executable, "-m", *arguments], cwd=folder, capture_output=True, text=True)
    assert process.returncode == 0, process.stdout + process.stderr


def test_the_stub_describes_the_module(tmp_path):
    allowed = tmp_path / "allowed"  # classes of pybind11 have its metaclass, and a constructor that refuses
    allowed.write_text(r"quillcamera\._quillcamera\.[A-Z][A-Za-z]*(\.__init__)?" + "\n")
    run(tmp_path, "mypy.stubtest", "quillcamera._quillcamera", "--ignore-unused-allowlist", "--allowlist", str(allowed))


def test_package_and_examples_are_typed(tmp_path):
    package = pathlib.Path(quillcamera.__file__).parent
    run(tmp_path, "mypy", "--strict", "--ignore-missing-imports", str(package), *map(str, EXAMPLES.glob("*.py")))
