"""hxsim.read: every format of a recording gives the same frame; disabled columns, files cut short and
the manifest beside a file."""
import json
import re
import shutil
import socket
import subprocess
import sys

import numpy as np
import pandas as pd
import pytest

import hxsim
from conftest import SOURCE_DIR, run_tool

# Disabled columns: inside a type, a whole one-column type (its label stays in the other formats' label
# lines though its column is gone) and the recording's last column.
DISABLING_CAPTURE = """<?xml version="1.0" encoding="UTF-8"?>
<sm:generalCapture xmlns:sm="http://www.hxtoolkit.org/namespace/sm#">
  <sm:manipulatorDataCaptureVector count="2">
    <element><sm:manipulatorIndex>0</sm:manipulatorIndex>
      <sm:dataCaptureTypeVector count="2">
        <sm:basePositionDataCaptureType>
          <sm:disableFlags count="7"><group>false true false false true true true</group></sm:disableFlags>
        </sm:basePositionDataCaptureType>
        <sm:manipulatorPowerDataCaptureType>
          <sm:disableFlags count="1"><group>true</group></sm:disableFlags>
        </sm:manipulatorPowerDataCaptureType>
      </sm:dataCaptureTypeVector>
      <sm:linkDataCaptureVector count="1"><element><sm:linkIdentification>left_link1</sm:linkIdentification>
        <sm:dataCaptureTypeVector count="1"><sm:jointPositionDataCaptureType/></sm:dataCaptureTypeVector></element>
      </sm:linkDataCaptureVector>
    </element>
    <element><sm:manipulatorIndex>1</sm:manipulatorIndex>
      <sm:endEffectorDataCaptureVector count="1"><element><sm:endEffectorIndex>0</sm:endEffectorIndex>
        <sm:dataCaptureTypeVector count="1">
          <sm:endEffectorPlacementDataCaptureType>
            <sm:disableFlags count="7"><group>false false false false false false true</group></sm:disableFlags>
          </sm:endEffectorPlacementDataCaptureType>
        </sm:dataCaptureTypeVector></element>
      </sm:endEffectorDataCaptureVector>
    </element>
  </sm:manipulatorDataCaptureVector>
</sm:generalCapture>
"""
DISABLED_COLUMNS = ["Point Path Index", "Manip[0]:Base Positions:Translation X",
                    "Manip[0]:Base Positions:Translation Z", "Manip[0]:Base Positions:Quaternion 0",
                    "Manip[0]:left_link1:Joint Positions"] + [
    f"Manip[1]:EE[0]:End Effector Placements:{label}" for label in
    ["Translation X", "Translation Y", "Translation Z", "Quaternion 0", "Quaternion 1", "Quaternion 2"]]
FORMATS = ["csv", "xml", "m", "nb"]


@pytest.fixture(scope="module")
def disabling_recording(tmp_path_factory):
    folder = tmp_path_factory.mktemp("disabled")
    (folder / "capture.xml").write_text(DISABLING_CAPTURE)
    run_tool("hxrecord", "-q", "-d", "0.3", "--capture", folder / "capture.xml", "-o", folder / "rec")
    return folder / "rec"


def assert_same_frames(base):
    """Every format of the recording at `base` gives the CSV's frame (MRD: as float32); returns it."""
    frame = hxsim.read(f"{base}.csv")
    assert frame.index.name == "Time" and len(frame) > 1 and all(frame.columns)
    for extension in FORMATS[1:]:
        pd.testing.assert_frame_equal(hxsim.read(f"{base}.{extension}"), frame, check_exact=True)
    mrd = hxsim.read(f"{base}.mrd")
    assert list(mrd.columns) == list(frame.columns) and (mrd.dtypes == np.float32).all()
    np.testing.assert_array_equal(mrd.to_numpy(), frame.to_numpy().astype(np.float32))
    np.testing.assert_array_equal(mrd.index.to_numpy(np.float32), frame.index.to_numpy(np.float32))
    return frame


def test_formats_agree(default_recording):
    frame = assert_same_frames(default_recording)
    with open(f"{default_recording}.csv") as stream:
        assert len(frame.columns) + 1 == len(stream.readline().split(",")) == len(stream.readline().split(","))
    if default_recording.with_suffix(".json").exists():
        assert frame.attrs["units"]["Time"] == "s" and "manifest" in frame.attrs


def test_disabled_columns(disabling_recording):
    header = open(f"{disabling_recording}.csv").readline().rstrip("\n").split(",")
    assert "Manip[0]:Manipulator Power" in header and header[-1] == ""   # the case at hand
    assert list(assert_same_frames(disabling_recording).columns) == DISABLED_COLUMNS
    # An older recording (no manifest) with a disabled one-column type on its second manipulator.
    frame = assert_same_frames(SOURCE_DIR / "tests" / "data" / "recording_two_arms")
    assert frame.columns[25] == "Manip[1]:shoulder:Joint Positions"


def test_files_cut_short(default_recording, tmp_path):
    """Each file cut inside sample `kept` + 1 (the MRD header still blank) gives the first `kept` samples."""
    kept, full = 7, hxsim.read(f"{default_recording}.csv")
    # Where each format's label line and samples end (the XML file: where each sample starts).
    for extension, end in [("csv", rb"\n"), ("m", rb";\n"), ("nb", rb"}\n"), ("xml", rb"<sm:generalStorage>")]:
        data = open(f"{default_recording}.{extension}", "rb").read()
        ends = [match.end() for match in re.finditer(end, data)]
        (tmp_path / f"rec.{extension}").write_bytes(data[:ends[kept] + 9])
    data = open(f"{default_recording}.mrd", "rb").read()
    samples = data.index(b"\n\n\n") + 3
    cut = samples + 4 * (kept * (len(full.columns) + 1) + 5) + 3
    (tmp_path / "rec.mrd").write_bytes(b" " * 80 + data[80:cut])
    for extension in FORMATS + ["mrd"]:
        frame = hxsim.read(tmp_path / f"rec.{extension}")
        expected = full.head(kept)
        if extension == "mrd":
            expected = expected.astype(np.float32).set_axis(pd.Index(expected.index.to_numpy(np.float32), name="Time"))
        pd.testing.assert_frame_equal(frame, expected)
        assert frame.attrs["finished"] is False and hxsim.info(tmp_path / f"rec.{extension}")["status"] == "unfinished"


def test_manifest_beside_a_file(default_recording, tmp_path):
    shutil.copy(f"{default_recording}.mrd", tmp_path / "rec.mrd")   # no XML file: the labels come from the manifest
    labels = ["Time"] + list(hxsim.read(f"{default_recording}.csv").columns)
    ended = subprocess.run([sys.executable, "-c", "import os; print(os.getpid())"], capture_output=True, text=True)
    manifest = {"format": "hxrecord-manifest", "formatVersion": 1, "status": "recording", "statusMessage": "",
                "process": {"pid": int(ended.stdout), "host": socket.gethostname()},
                "files": [{"file": "rec.mrd", "format": "MRD", "writer": "mrdOutputWriter", "extension": ".mrd",
                           "samples": 3}],
                "columns": [{"index": i, "label": label, "unit": "s" if i == 0 else ("rad" if "Joint Pos" in label
                                                                                    else None)}
                            for i, label in enumerate(labels)]}
    (tmp_path / "rec.json").write_text(json.dumps(manifest))
    for path in (tmp_path / "rec.mrd", tmp_path / "rec.json"):
        frame = hxsim.read(path)
        assert list(frame.columns) == labels[1:] and frame.attrs["manifest"] == manifest
        assert frame.attrs["units"]["Manip[0]:left_link1:Joint Positions"] == "rad"
        assert frame.attrs["units"]["Manip[0]:Center of Mass:X"] == ""
    summary = hxsim.info(tmp_path / "rec.json")
    assert summary["status"] == "interrupted" and summary["samples"] == len(frame)
    assert summary["columns"][0] == {"label": "Time", "unit": "s", "min": 0.0, "max": float(frame.index[-1]),
                                     "mean": pytest.approx(frame.index.to_numpy().mean())}
