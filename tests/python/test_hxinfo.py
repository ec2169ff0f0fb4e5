"""hxinfo --json on every format of a recording and on its manifest gives the samples, the columns
and each column's minimum and maximum that Python finds in the CSV file (MRD values are 32-bit
floats, so they are compared as such)."""
import csv
import json

import numpy as np
import pytest

from conftest import run_tool


def csv_table(base):
    with open(f"{base}.csv", newline="") as file:
        rows = list(csv.reader(file))
    labels = rows[0]
    while labels and labels[-1] == "":
        labels.pop()
    return labels, np.array([[float(value) for value in row] for row in rows[1:]])


@pytest.mark.parametrize("extension", [".csv", ".xml", ".mrd", ".m", ".nb", ".json"])
@pytest.mark.parametrize("recording", ["default_recording", "kinematic_recording"])
def test_every_format_gives_the_csv_statistics(request, recording, extension):
    base = request.getfixturevalue(recording)
    labels, values = csv_table(base)
    summary = json.loads(run_tool("hxinfo", "--json", f"{base}{extension}").stdout)
    assert summary["samples"] == len(values)
    assert summary["status"] == "finished"
    assert [column["label"] for column in summary["columns"]] == labels
    expected = values.astype(np.float32).astype(np.float64) if extension == ".mrd" else values
    assert summary["timeRange"] == [expected[0, 0], expected[-1, 0]]
    assert [column["min"] for column in summary["columns"]] == list(expected.min(axis=0))
    assert [column["max"] for column in summary["columns"]] == list(expected.max(axis=0))
    assert [column["mean"] for column in summary["columns"]] == pytest.approx(list(expected.mean(axis=0)),
                                                                              rel=1e-9, abs=1e-12)
    manifest = json.loads(open(f"{base}.json").read())
    assert [column["unit"] for column in summary["columns"]] == [column["unit"] for column in manifest["columns"]]
    if extension == ".json":
        assert summary["recording"]["status"] == "finished"
        assert [file["samples"] for file in summary["recording"]["files"]] == [len(values)] * 5
