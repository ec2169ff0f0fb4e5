"""The summary of a sweep: one row per run, its parameters, status and the metrics of its recording."""
import json
import math
import re
import warnings
import xml.etree.ElementTree as ElementTree
from pathlib import Path

import numpy as np
import pandas as pd

from .. import _manifest
from .._recording import read
from . import _run
from ._plan import matching

REACH = "reachTargetDataCaptureType"
POWER = "manipulatorPowerDataCaptureType"
# Columns of the reach target quantity: the reached flag and the desired position (world frame).
REACHED, DESIRED = 0, (3, 4, 5)
STATISTICS = ("min", "max", "mean", "final")
_PATH_SITE = re.compile(r"^path:(.+):(\d+)$")

_trapezoid = getattr(np, "trapezoid", None) or np.trapz


def _scene_file(command):
    """The --scene file of a recorded command line, or None."""
    for i, argument in enumerate(command or []):
        if argument == "--scene" and i + 1 < len(command):
            return command[i + 1]
        if argument.startswith("--scene="):
            return argument[len("--scene="):]
    return None


def path_points(manifest):
    """Each manipulator's number of path points ({root body name: count}) as hxrecord gave them: the
    model's world-body sites path:<root body>:<n>, replaced by the scene file's pathPoints; None when
    the model cannot be read here (the built-in one, a moved file)."""
    folder = Path(manifest.get("workingDirectory") or ".")
    model = (manifest.get("model") or {}).get("file")
    if not model:
        return None
    try:
        root = ElementTree.parse(folder / model).getroot()
    except (OSError, ElementTree.ParseError):
        return None
    points = {}
    if root.tag == "mujoco":
        for worldbody in root.findall("worldbody"):
            for site in worldbody.findall("site"):
                match = _PATH_SITE.match(site.get("name", ""))
                if match:
                    points.setdefault(match.group(1), set()).add(int(match.group(2)))
    counts = {name: len(numbers) for name, numbers in points.items()}
    scene = _scene_file(manifest.get("commandLine"))
    if scene:
        try:
            with open(folder / scene, encoding="utf-8") as stream:
                paths = json.load(stream).get("pathPoints") or {}
        except (OSError, ValueError, AttributeError):
            return None
        counts.update({name: len(path) for name, path in paths.items() if isinstance(path, list)})
    return counts


def _reached(time, flag, desired):
    """The time each path point was reached, in the order the desired position took them: a point is
    the desired position until it changes; it was reached at the first sample whose reached flag is set
    while it is desired, or (no sample shows it: it was reached and left between two samples) at the
    first sample of the next point; NaN when never."""
    if len(time) == 0:
        return []
    change = np.any(np.abs(np.diff(desired, axis=0)) > 1e-9, axis=1)
    starts = np.concatenate([[0], np.nonzero(change)[0] + 1])
    ends = np.concatenate([starts[1:], [len(time)]])
    times = []
    for start, end in zip(starts, ends):
        hits = np.nonzero(flag[start:end] > 0.5)[0]
        times.append(float(time[start + hits[0]]) if hits.size else float(time[end]) if end < len(time) else math.nan)
    return times


def _metrics(recording, patterns, matched):
    frame = read(recording)
    manifest = frame.attrs.get("manifest") or {}
    entries = _manifest.columns(manifest)[1:]
    if len(entries) != frame.shape[1]:
        by_label = {entry.get("label"): entry for entry in entries}
        entries = [by_label.get(label, {}) for label in frame.columns]
    time = frame.index.to_numpy(dtype=np.float64)
    values = frame.to_numpy(dtype=np.float64)
    labels = list(frame.columns)
    result = {}

    chosen = set(matching(labels, patterns))
    matched.update(pattern for pattern in patterns if matching(labels, [pattern]))
    for i, label in enumerate(labels):
        if label not in chosen:
            continue
        column = values[:, i]
        finite = column[~np.isnan(column)]
        if not entries[i].get("computed", True) or finite.size == 0:
            result.update({f"{label}:{name}": math.nan for name in STATISTICS})
            continue
        result.update({f"{label}:min": float(finite.min()), f"{label}:max": float(finite.max()),
                       f"{label}:mean": float(finite.mean()), f"{label}:final": float(column[-1])})

    for i, entry in enumerate(entries):
        if entry.get("quantity") == POWER:
            rows = ~np.isnan(values[:, i])
            computed = entry.get("computed", True) and rows.sum() > 0
            result[f"{labels[i]}:integral"] = float(_trapezoid(values[rows, i], time[rows])) if computed else math.nan

    reach = {}
    for i, entry in enumerate(entries):
        if entry.get("quantity") == REACH and entry.get("endEffectorIndex") == 0:
            reach.setdefault(entry.get("manipulatorIndex"), {})[entry.get("componentIndex")] = i
    counts = path_points(manifest)
    names = [manipulator.get("name") for manipulator in manifest.get("manipulators") or []]
    for m, positions in sorted(reach.items()):
        if REACHED not in positions or not all(c in positions for c in DESIRED):
            continue
        name = names[m] if m is not None and m < len(names) else None
        points = counts.get(name, 0) if counts is not None else None
        if points == 0:
            continue   # a manipulator without path stands still
        times = _reached(time, values[:, positions[REACHED]], values[:, [positions[c] for c in DESIRED]])
        if points is not None:
            times = (times + [math.nan] * points)[:points]
        reached = sum(not math.isnan(t) for t in times)
        prefix = f"Manip[{m}]:path"
        result[f"{prefix}:points"] = points if points is not None else math.nan
        result[f"{prefix}:reached"] = reached
        result[f"{prefix}:all reached"] = reached == points if points is not None else None
        result.update({f"{prefix}:point {k} reached at": t for k, t in enumerate(times)})
    return result


def summary(folder, columns=None):
    """The summary of the sweep in `folder` as a DataFrame, one row per run of its plan, in order:
    "run", one column per parameter (the run's value, else the base's), "status" (finished, failed,
    interrupted, running, or "not run" for a run not made with its present parameters),
    "exit_status" (hxrecord's), "message" (its error line), then the metrics of a finished run's
    recording (left empty for the others):

    - per column whose label matches one of the patterns (`columns`, else the sweep file's
      summary: columns:): "LABEL:min", ":max", ":mean" over the samples and ":final", the last
      sample's value (NaN for a column the mode does not compute);
    - per manipulator power column: "LABEL:integral", its time integral (trapezoid rule), in J;
    - per manipulator that follows a path (its end effector 0's reach target captured):
      "Manip[m]:path:points" (in the model), ":path:reached" (how many were reached), ":path:all
      reached" and ":path:point k reached at" (the simulated time, s).
    """
    plan, _ = _run.load_plan(folder)
    patterns = plan.columns if columns is None else list(columns)
    rows, matched, read_any = [], set(), False
    for run in plan.runs:
        row = {"run": run.name}
        row.update({name: run.parameters.get(name, plan.defaults.get(name)) for name in plan.parameter_names})
        entry = _run.record(folder, run)
        if entry is None or entry.get("key") != run.key():
            row.update(status="not run", exit_status=None, message="")
            rows.append(row)
            continue
        row.update(status=entry.get("status"), exit_status=entry.get("exitStatus"), message=entry.get("message", ""))
        recording = Path(folder) / run.name / f"{_run.RECORDING}.json"
        if row["status"] == "finished":
            manifest = _manifest.load(recording)
            state, message = _manifest.status(manifest) if manifest else ("failed", "the recording has no manifest")
            if state != "finished":
                row.update(status=state, message=message)
        if row["status"] == "finished":
            try:
                with warnings.catch_warnings():
                    warnings.simplefilter("ignore")
                    row.update(_metrics(recording, patterns, matched))
                read_any = True
            except (OSError, ValueError) as error:
                row.update(status="failed", message=f"the recording cannot be read: {error}")
        rows.append(row)
    for pattern in patterns:
        if read_any and pattern not in matched:
            warnings.warn(f"the summary's column pattern '{pattern}' matches no column of any run", stacklevel=2)
    frame = pd.DataFrame(rows)
    counts = ["exit_status"] + [name for name in frame.columns if name.endswith((":path:points", ":path:reached"))]
    frame[counts] = frame[counts].astype("Int64")
    return frame
