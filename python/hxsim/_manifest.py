"""The manifest hxrecord writes beside a recording's files (BASE.json)."""
import json
import os
import socket
import warnings
from pathlib import Path

FORMAT = "hxrecord-manifest"
FORMAT_VERSION = 1


def manifest_path(path):
    """Where the manifest of the recording file `path` is: the file itself if it is one, else BASE.json."""
    path = Path(path)
    return path if path.suffix == ".json" else path.with_suffix(".json")


def load(path):
    """The manifest beside (or at) `path` as a dict; None when there is none or it is not a manifest."""
    candidate = manifest_path(path)
    try:
        with open(candidate, encoding="utf-8") as stream:
            manifest = json.load(stream)
    except FileNotFoundError:
        return None
    except (OSError, ValueError) as error:
        warnings.warn(f"{candidate}: manifest not used: {error}", stacklevel=3)
        return None
    if not isinstance(manifest, dict) or manifest.get("format") != FORMAT:
        return None
    if manifest.get("formatVersion") != FORMAT_VERSION:
        warnings.warn(f"{candidate}: manifest format version {manifest.get('formatVersion')}, "
                      f"read as version {FORMAT_VERSION}", stacklevel=3)
    return manifest


def _process_gone(process):
    """True when the manifest's process ran on this host and no longer exists."""
    try:
        pid, host = int(process["pid"]), process["host"]
    except (TypeError, KeyError, ValueError):
        return False
    if host != socket.gethostname() or pid <= 0:
        return False
    try:
        os.kill(pid, 0)
    except ProcessLookupError:
        return True
    except PermissionError:
        pass
    return False


def status(manifest):
    """(status, message) of a manifest; "recording" whose process is gone counts as "interrupted"."""
    state = manifest.get("status") or "unknown"
    message = manifest.get("statusMessage") or ""
    if state == "recording" and _process_gone(manifest.get("process") or {}):
        return "interrupted", "the recording process ended without finishing the files"
    return state, message


def columns(manifest):
    """The manifest's column entries in file order."""
    entries = [entry for entry in manifest.get("columns") or [] if isinstance(entry, dict)]
    return sorted(entries, key=lambda entry: entry.get("index", 0))


def data_file(manifest_file, manifest):
    """The recording file a manifest names that hxsim reads best: the CSV file, else the first readable one."""
    from ._formats import READERS
    folder = Path(manifest_file).parent
    names = [entry.get("file") for entry in manifest.get("files") or [] if isinstance(entry, dict)]
    candidates = [folder / name for name in names if name and Path(name).suffix in READERS]
    candidates.sort(key=lambda path: path.suffix != ".csv")
    for candidate in candidates:
        if candidate.exists():
            return candidate
    raise FileNotFoundError(f"{manifest_file}: the manifest names no recording file that exists here")
