# SPDX-License-Identifier: Apache-2.0
"""The guide's blocks, in order in one process, and the examples, as a reader runs them."""

import importlib.util
import pathlib
import re
import subprocess
import sys

import pytest

from conftest import PATIENCE

SOURCE = pathlib.Path(__file__).resolve().parents[3]


def run(folder, *arguments):
    process = subprocess.run(
        [sys.executable, *arguments], cwd=folder, capture_output=True, text=True, timeout=10 * PATIENCE
    )
    assert process.returncode == 0 and process.stderr == "", process.stderr
    return process.stdout


def test_the_guide_runs_word_for_word(tmp_path):
    documents = (SOURCE / "README.md").read_text() + (SOURCE / "docs/python.md").read_text()
    blocks = re.findall(r"^```python\n(.*?)^```$", documents, re.DOTALL | re.MULTILINE)
    assert len(blocks) > 11
    if not importlib.util.find_spec("cv2"):
        blocks = [block for block in blocks if "cv2" not in block]
    printed = run(tmp_path, "-c", "\n".join(blocks))
    for text in ("PropertyUnsupported", "b'Quill", "Video Gain is now 2.0"):
        assert text in printed


def test_the_examples_run(tmp_path):
    assert "frame " in run(tmp_path, str(SOURCE / "Examples/Python/first_steps.py"))
    pytest.importorskip("matplotlib")
    run(tmp_path, str(SOURCE / "Examples/Python/exposure_series.py"))
    assert (tmp_path / "exposure-series.png").stat().st_size < 60_000
