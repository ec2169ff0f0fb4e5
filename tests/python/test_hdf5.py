"""The HDF5 file of hxrecord, read with h5py: every double of the recording exactly, its columns
described, and the samples of a recording killed mid-way."""
import json
import signal
import subprocess
import time

import numpy as np
import pytest

import hxsim
from conftest import run_tool, tool_path
from test_hxsim_read import DISABLED_COLUMNS, DISABLING_CAPTURE

h5py = pytest.importorskip("h5py")

WRITERS = """<?xml version="1.0" encoding="UTF-8"?>
<sm:outputWriterVector xmlns:sm="http://www.hxtoolkit.org/namespace/sm#" count="3">
  <sm:textOutputWriter/>
  <sm:hdf5OutputWriter><sm:compression>4</sm:compression><sm:chunkRows>16</sm:chunkRows></sm:hdf5OutputWriter>
  <sm:xmlOutputWriter/>
</sm:outputWriterVector>
"""


def csv_rows(path):
    """The whole lines of values of a CSV file, each value read back as the double its text is."""
    with open(path) as stream:
        lines = stream.read().split("\n")[1:-1]  # the label line; the last line is whole only once ended
    return np.array([[float(field) for field in line.split(",")] for line in lines], dtype=np.float64)


def assert_same_doubles(got, expected):
    """Equal bit for bit (the sign of a zero too); NaN where the other is NaN."""
    assert got.shape == expected.shape
    nan = np.isnan(expected)
    assert np.array_equal(np.isnan(got), nan)
    assert np.array_equal(got[~nan].view(np.uint64), expected[~nan].view(np.uint64))


def test_the_hdf5_file_holds_every_double_with_its_columns(tmp_path):
    (tmp_path / "capture.xml").write_text(DISABLING_CAPTURE)
    (tmp_path / "writers.xml").write_text(WRITERS)
    base = tmp_path / "rec"
    run_tool("hxrecord", "-q", "-d", "0.3", "-c", tmp_path / "capture.xml", "-w", tmp_path / "writers.xml", "-o", base)

    with h5py.File(f"{base}.h5", "r") as file:
        samples = file["samples"]
        assert samples.dtype == np.float64 and samples.compression == "gzip" and samples.chunks[0] == 16
        values = samples[()]
        labels = list(samples.attrs["labels"])
        units = list(samples.attrs["units"])
        assert file.attrs["tool"].startswith("hxrecord ") and file.attrs["mode"] == "dynamic"
    assert values.shape[0] == 31
    assert_same_doubles(values, csv_rows(f"{base}.csv"))
    # One label per data column: the disabled one-column quantity's label, which the text formats keep, is not there.
    assert labels == ["Time"] + DISABLED_COLUMNS
    manifest = json.loads(base.with_suffix(".json").read_text())
    assert units == [column["unit"] or "" for column in manifest["columns"]]

    frame, text = hxsim.read(f"{base}.h5"), hxsim.read(f"{base}.csv")
    assert frame.attrs["format"] == "hdf5" and frame.attrs["finished"] and list(frame.columns) == list(text.columns)
    assert_same_doubles(frame.to_numpy(), text.to_numpy())
    info = run_tool("hxinfo", f"{base}.h5").stdout
    assert "format: HDF5\nstatus: finished\nsamples: 31\n" in info

    # The writer's settings are checked as strictly as the other writers' elements.
    (tmp_path / "bad.xml").write_text(WRITERS.replace("compression>4<", "compression>high<"))
    refused = run_tool("hxrecord", "-q", "-w", tmp_path / "bad.xml", "-o", tmp_path / "bad", check=False)
    assert refused.returncode != 0 and "'compression' is 'high'" in refused.stderr


def test_a_killed_recording_keeps_the_samples_flushed_so_far(tmp_path):
    base = tmp_path / "rec"
    process = subprocess.Popen([str(tool_path("hxrecord")), "-q", "-d", "1000", "--formats", "csv,h5", "-o",
                                str(base)], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        h5 = tmp_path / "rec.h5"
        deadline = time.monotonic() + 60
        while (not h5.exists() or h5.stat().st_size < 4 << 20) and time.monotonic() < deadline:
            time.sleep(0.05)
    finally:
        process.send_signal(signal.SIGKILL)
        process.wait()
    assert process.returncode == -signal.SIGKILL

    with pytest.raises(OSError):
        h5py.File(h5, "r")  # still marked as being written: only SWMR readers may open it
    with h5py.File(h5, "r", swmr=True) as file:
        values = file["samples"][()]
    rows = csv_rows(f"{base}.csv")
    common = min(len(values), len(rows))
    assert common > 1000
    assert_same_doubles(values[:common], rows[:common])

    frame = hxsim.read(h5)
    assert not frame.attrs["finished"] and len(frame) == len(values)
    assert "status: cut short: its writer did not close it" in run_tool("hxinfo", h5).stdout
    # The watcher marks the manifest interrupted, counting what the HDF5 file holds.
    manifest = base.with_suffix(".json")
    deadline = time.monotonic() + 30
    while json.loads(manifest.read_text())["status"] == "recording" and time.monotonic() < deadline:
        time.sleep(0.05)
    files = {file["extension"]: file["samples"] for file in json.loads(manifest.read_text())["files"]}
    assert files[".h5"] == len(values)
