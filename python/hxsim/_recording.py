"""hxsim.read and hxsim.info: a recording file as a pandas DataFrame, and its summary."""
import math
import warnings
from pathlib import Path

import numpy as np
import pandas as pd

from . import _manifest
from ._formats import FORMATS, READERS, capture_of_xml

TIME = "Time"


def _manifest_widths(manifest_columns, path):
    """Values per sample known besides an MRD file: the manifest's columns, the XML file's capture."""
    if manifest_columns:
        yield len(manifest_columns)
    capture = capture_of_xml(path.with_suffix(".xml"))
    if capture is not None:
        yield len(capture.columns()) + 2


def _column_labels(path, table, manifest_columns):
    """One label per column of `table` (time first): the manifest's, else the file's own, else those of
    the XML file beside it (which also gives back the blanks of MRD labels and the columns of one-column
    types that were disabled, whose labels the other formats keep)."""
    width = table.values.shape[1]
    if manifest_columns:
        if len(manifest_columns) == width:
            return [entry.get("label") or "" for entry in manifest_columns], True
        warnings.warn(f"{path}: the manifest describes {len(manifest_columns)} columns, the file holds {width}; "
                      f"the file's own labels are used", stacklevel=3)
    labels = list(table.labels)
    while labels and not labels[-1]:
        labels.pop()          # the empty labels of disabled columns
    if len(labels) == width and (table.exact_labels or not table.underscored):
        return labels, False
    if path.suffix != ".xml":
        capture = capture_of_xml(path.with_suffix(".xml"))
        if capture is not None:
            reference = [TIME, "Point Path Index"] + capture.columns()
            underscored = [label.replace(" ", "_") for label in reference]
            if len(reference) == width and (len(labels) != width or not table.underscored or underscored == labels):
                return reference, False
    if len(labels) == width:
        return labels, False
    warnings.warn(f"{path}: {len(labels)} labels for {width} columns (a disabled one-column quantity keeps its "
                  f"label); without the manifest or the XML file beside it the labels may be shifted",
                  stacklevel=3)
    return labels[:width] + [f"Column {i}" for i in range(len(labels), width)], False


def read(path):
    """Reads one recording file (.csv, .xml, .mrd, .m, .nb or .h5; or the manifest BASE.json, which
    reads the CSV file it names) into a DataFrame indexed by time (named "Time"), one column per data
    column, named by its label. A file whose recording was cut short is read up to its last whole
    sample (an HDF5 file up to its last flushed chunk). MRD values are float32, as the file stores
    them (the other formats give float64). Reading .h5 needs h5py.

    attrs: "path", "format" ("csv", "xml", "mrd", "matlab", "mathematica", "hdf5"), "finished" (False
    when the file shows it was cut short); with the manifest beside the file also "manifest" (the
    dict) and "units" ({label: unit}, "" for none), and the labels come from the manifest. An HDF5
    file gives its own units without the manifest.
    """
    path = Path(path)
    manifest = _manifest.load(path)
    if path.suffix == ".json":
        if manifest is None:
            raise ValueError(f"{path}: not a recording manifest")
        path = _manifest.data_file(path, manifest)
    suffix = path.suffix.lower()
    if suffix not in READERS:
        raise ValueError(f"{path}: unknown recording format '{path.suffix}' "
                         f"(known: .csv, .xml, .mrd, .m, .nb, .h5)")
    manifest_columns = _manifest.columns(manifest) if manifest else []
    if suffix == ".mrd":
        table = READERS[suffix](path, _manifest_widths(manifest_columns, path))
    else:
        table = READERS[suffix](path)
    labels, from_manifest = _column_labels(path, table, manifest_columns)

    values = table.values
    frame = pd.DataFrame(values[:, 1:], index=pd.Index(values[:, 0], name=TIME), columns=labels[1:])
    frame.attrs.update(path=str(path), format=FORMATS[suffix], finished=table.finished)
    if manifest is not None:
        frame.attrs["manifest"] = manifest
        if from_manifest:
            frame.attrs["units"] = {label: entry.get("unit") or "" for label, entry in zip(labels, manifest_columns)}
    if "units" not in frame.attrs and table.units is not None:
        frame.attrs["units"] = dict(zip(labels, table.units))
    return frame


def _statistics(label, unit, values):
    values = np.asarray(values, dtype=np.float64)
    finite = values[~np.isnan(values)]
    if finite.size == 0:
        return {"label": label, "unit": unit, "min": None, "max": None, "mean": None}
    mean = float(finite.mean())
    return {"label": label, "unit": unit, "min": float(finite.min()), "max": float(finite.max()),
            "mean": mean if math.isfinite(mean) else None}


def info(path):
    """A summary of a recording file (or of the manifest's recording) as a dict: "file", "format",
    "samples", "columnCount" (time included), "timeRange" ([first, last], None without samples),
    "status" and "statusMessage" (the manifest's status, "recording" of a process that is gone counting
    as "interrupted"; without a manifest "finished" or "unfinished" as the file shows it), "manifest"
    (its path or None) and "columns": per column (time first) "label", "unit", "min", "max", "mean"
    (NaN values left out; None where there is no value)."""
    frame = read(path)
    manifest = frame.attrs.get("manifest")
    if manifest is not None:
        status, message = _manifest.status(manifest)
    elif frame.attrs["finished"]:
        status, message = "finished", ""
    else:
        status, message = "unfinished", "the file was cut short; read up to its last whole sample"
    units = frame.attrs.get("units", {})
    time = frame.index.to_numpy()
    columns = [_statistics(TIME, units.get(TIME, ""), time)]
    columns += [_statistics(label, units.get(label, ""), frame.iloc[:, i]) for i, label in enumerate(frame.columns)]
    return {
        "file": frame.attrs["path"],
        "format": frame.attrs["format"],
        "samples": len(frame),
        "columnCount": len(frame.columns) + 1,
        "timeRange": [float(time[0]), float(time[-1])] if len(time) else None,
        "status": status,
        "statusMessage": message,
        "manifest": str(_manifest.manifest_path(frame.attrs["path"])) if manifest is not None else None,
        "columns": columns,
    }
