"""`pip install ./python` into a venv that sees Debian's packages, offline; hxsim then imports from outside
the source tree and hxplot and hxsweep run."""
import os
import shutil
import subprocess

import pytest

from conftest import SOURCE_DIR


def test_pip_install_into_a_venv(tmp_path):
    venv = tmp_path / "venv"
    made = subprocess.run(["/usr/bin/python3", "-m", "venv", "--system-site-packages", str(venv)],
                          capture_output=True, text=True)
    if made.returncode != 0:
        pytest.skip(f"no venv (python3-venv is missing?): {made.stderr.strip()}")
    # A copy, so that the build leaves nothing in the source tree.
    shutil.copytree(SOURCE_DIR / "python", tmp_path / "python", ignore=shutil.ignore_patterns("__pycache__"))
    environment = {key: value for key, value in os.environ.items() if key != "PYTHONPATH"}
    environment.update(PIP_NO_INDEX="1", PIP_DISABLE_PIP_VERSION_CHECK="1")
    run = dict(cwd=tmp_path, env=environment, capture_output=True, text=True)
    installed = subprocess.run([str(venv / "bin" / "pip"), "install", "./python"], **run)
    assert installed.returncode == 0, installed.stdout + installed.stderr

    imported = subprocess.run([str(venv / "bin" / "python"), "-c", "import hxsim; print(hxsim.__file__)"], **run)
    assert imported.returncode == 0, imported.stderr
    assert imported.stdout.startswith(str(venv)), imported.stdout
    for tool in ("hxplot", "hxsweep"):
        helped = subprocess.run([str(venv / "bin" / tool), "--help"], **run)
        assert helped.returncode == 0 and helped.stdout.startswith(f"Usage: {tool} "), helped.stderr
