"""Fixtures shared by the Python tests: the built tools and recordings made with them.

CTest sets HX_BIN_DIR (the build tree's tools/ folder), HX_SOURCE_DIR and PYTHONPATH (the
source tree's python/ folder, so that `import hxsim` is the package under test).
"""
import os
import subprocess
from pathlib import Path

import pytest

SOURCE_DIR = Path(os.environ.get("HX_SOURCE_DIR", Path(__file__).resolve().parents[2]))
BIN_DIR = Path(os.environ.get("HX_BIN_DIR", SOURCE_DIR / "build" / "lead" / "tools"))


def tool_path(name):
    """Path of a built tool (hxrecord, hxinfo, hxmrd, hxrepair, hxplot)."""
    path = BIN_DIR / name
    if not path.exists():
        pytest.skip(f"{name} is not built in {BIN_DIR}")
    return path


def run_tool(name, *args, check=True, **kwargs):
    """Runs a built tool; returns the CompletedProcess (text mode, output captured)."""
    result = subprocess.run([str(tool_path(name)), *map(str, args)], capture_output=True, text=True, **kwargs)
    if check and result.returncode != 0:
        raise AssertionError(f"{name} {' '.join(map(str, args))} exited {result.returncode}:\n"
                             f"{result.stdout}\n{result.stderr}")
    return result


@pytest.fixture
def tool():
    return tool_path


@pytest.fixture(scope="session")
def default_recording(tmp_path_factory):
    """A short recording of the built-in default scene (all five writers): its base path."""
    base = tmp_path_factory.mktemp("default") / "rec"
    run_tool("hxrecord", "-q", "-d", "0.5", "-o", base)
    return base


@pytest.fixture(scope="session")
def kinematic_recording(tmp_path_factory):
    """The same in kinematic mode, where many columns are not computed."""
    base = tmp_path_factory.mktemp("kinematic") / "rec"
    run_tool("hxrecord", "-q", "-d", "0.5", "--mode", "kinematic", "-o", base)
    return base
