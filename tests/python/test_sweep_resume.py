"""An interrupted sweep run again finishes only what is missing: hxsweep stopped by SIGTERM part-way records
the run under way as interrupted; the next run (here on a local Dask cluster) leaves the finished runs'
records as they were and makes the others; a run whose recording is no longer finished, or whose
parameters changed, is made again."""
import json
import signal
import subprocess
import time

import pytest

import hxsim.sweep
from conftest import SOURCE_DIR, tool_path

EXAMPLE = SOURCE_DIR / "examples" / "sweep"


def records(folder):
    return {path.parent.name: path.read_text() for path in sorted(folder.glob("run-*/run.json"))}


def statuses(folder):
    return {name: json.loads(text)["status"] for name, text in records(folder).items()}


def rerun(sweep, folder, *options):
    """Runs the sweep again; returns the runs whose record it wrote anew."""
    before = records(folder)
    result = subprocess.run([str(tool_path("hxsweep")), "run", str(sweep), "--out", str(folder), *options],
                            capture_output=True, text=True)
    assert result.returncode == 1, result.stderr   # the invalid case fails every time
    after = records(folder)
    return sorted(name for name in after if after[name] != before.get(name))


def test_an_interrupted_sweep_resumes(tmp_path):
    pytest.importorskip("distributed")
    sweep = tmp_path / "sweep.yaml"
    sweep.write_text((EXAMPLE / "arm_sweep.yaml").read_text().replace("arm.xml.j2", str(EXAMPLE / "arm.xml.j2"))
                     .replace("capture.xml", str(EXAMPLE / "capture.xml")))
    folder = tmp_path / "out"
    process = subprocess.Popen([str(tool_path("hxsweep")), "run", str(sweep), "--out", str(folder), "--jobs", "1"],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    deadline = time.monotonic() + 60
    while list(statuses(folder).values()).count("finished") < 5 and time.monotonic() < deadline:
        time.sleep(0.02)
    process.send_signal(signal.SIGTERM)
    _, error = process.communicate(timeout=60)
    assert process.returncode == 5, error
    assert error.splitlines()[-1].startswith("hxsweep: error: interrupted: ")
    first = statuses(folder)
    done = sorted(name for name, status in first.items() if status == "finished")
    assert 5 <= len(done) < 25 and set(first.values()) <= {"finished", "interrupted"}, first

    made = rerun(sweep, folder, "--dask", "local:2")
    assert made == sorted(f"run-{i:04d}" for i in range(25) if f"run-{i:04d}" not in done)
    summary = hxsim.sweep.summary(folder)
    assert summary["status"].value_counts().to_dict() == {"finished": 24, "failed": 1}

    # A recording that no longer says finished, and the runs of a changed value, are made again
    # (besides the invalid case); nothing else is.
    manifest = folder / "run-0003" / "recording.json"
    manifest.write_text(manifest.read_text().replace('"status": "finished"', '"status": "interrupted"'))
    sweep.write_text(sweep.read_text().replace("payload_mass: [0.25, 1, 2, 4]", "payload_mass: [0.25, 1, 2, 3]"))
    assert rerun(sweep, folder, "--jobs", "2") == ["run-0003"] + [f"run-{i:04d}" for i in range(18, 25)]
    assert 'mass="3"' in (folder / "run-0018" / "arm.xml").read_text()
