"""A sweep's folder and one run in it.

    DIR/sweep.json              the plan (runs, parameters, hxrecord options, filled models)
    DIR/run-NNNN/run.json       the run's record: parameters, command, status, exit status, message, times
    DIR/run-NNNN/MODEL.xml      the filled model (a model template's runs)
    DIR/run-NNNN/recording.*    hxrecord's files and manifest (recording.json)
    DIR/run-NNNN/hxrecord.log   what hxrecord printed

Every JSON file is written whole into a temporary file and renamed into place.
"""
import json
import os
import shutil
import signal
import socket
import subprocess
import threading
import time
from datetime import datetime, timezone
from pathlib import Path

from .. import _manifest
from ._errors import SweepError
from ._plan import Plan

PLAN = "sweep.json"
RECORD = "run.json"
LOG = "hxrecord.log"
RECORDING = "recording"
# hxrecord's exit statuses that a record names: 7 is an interrupted recording.
INTERRUPTED = 7


def write_json(path, data):
    """Writes `data` as JSON into `path` through a temporary file beside it, flushed to disk and renamed."""
    path = Path(path)
    temporary = path.with_name(f".{path.name}.{os.getpid()}.{threading.get_ident()}.tmp")
    try:
        with open(temporary, "w", encoding="utf-8") as stream:
            json.dump(data, stream, indent=2)
            stream.write("\n")
            stream.flush()
            os.fsync(stream.fileno())
        os.replace(temporary, path)
    except BaseException:
        temporary.unlink(missing_ok=True)
        raise


def read_json(path):
    """The JSON document in `path`, or None when there is none or it cannot be read."""
    try:
        with open(path, encoding="utf-8") as stream:
            return json.load(stream)
    except (OSError, ValueError):
        return None


def now():
    return datetime.now(timezone.utc).isoformat(timespec="milliseconds").replace("+00:00", "Z")


def find_hxrecord(given=None, beside=None):
    """hxrecord's path: `given` (--hxrecord), else $HXRECORD, else beside `beside` (the hxsweep program's
    folder), else on PATH."""
    for candidate in (given, os.environ.get("HXRECORD")):
        if candidate:
            path = shutil.which(candidate) or (candidate if os.access(candidate, os.X_OK) else None)
            if path is None:
                raise SweepError(f"hxrecord '{candidate}' is not an executable program")
            return str(Path(path).resolve())
    if beside is not None and os.access(Path(beside) / "hxrecord", os.X_OK):
        return str((Path(beside) / "hxrecord").resolve())
    found = shutil.which("hxrecord")
    if found is None:
        raise SweepError("hxrecord is not found beside hxsweep nor on PATH: give --hxrecord PATH or set HXRECORD")
    return str(Path(found).resolve())


def prepare(folder, plan, hxrecord):
    """Makes the sweep's folder (or takes an existing one of a sweep) and writes its plan."""
    folder = Path(folder)
    try:
        folder.mkdir(parents=True, exist_ok=True)
        if (folder / PLAN).exists() is False and any(folder.iterdir()):
            raise SweepError(f"{folder}: the folder holds files but no sweep ({PLAN}); give a new or empty folder")
        data = plan.to_json()
        data["hxrecord"] = hxrecord
        write_json(folder / PLAN, data)
    except OSError as error:
        raise SweepError(f"{error.filename or folder}: {error.strerror or error}") from None


def load_plan(folder):
    """The plan and hxrecord path written into the sweep's folder."""
    data = read_json(Path(folder) / PLAN)
    if not isinstance(data, dict) or data.get("format") != "hxsweep-plan":
        raise SweepError(f"{folder}: not a sweep's folder (no {PLAN}); 'hxsweep run SWEEP --out {folder}' makes one")
    return Plan.from_json(data), data.get("hxrecord")


def record(folder, run):
    """The run's record, or None."""
    data = read_json(Path(folder) / run.name / RECORD)
    return data if isinstance(data, dict) else None


def is_done(folder, run):
    """True when the run finished with the parameters, options and model it has now (its manifest says
    finished too), so that running the sweep again keeps it."""
    data = record(folder, run)
    if data is None or data.get("status") != "finished" or data.get("key") != run.key():
        return False
    manifest = _manifest.load(Path(folder) / run.name / f"{RECORDING}.json")
    return manifest is not None and _manifest.status(manifest)[0] == "finished"


class _Children:
    """The hxrecord processes this process runs, so that a signal can be passed on to them."""

    def __init__(self):
        self._lock = threading.Lock()
        self._processes = set()
        self.stopping = False   # a signal was passed on: a run that ends now was interrupted

    def add(self, process):
        with self._lock:
            self._processes.add(process)

    def discard(self, process):
        with self._lock:
            self._processes.discard(process)

    def signal(self, number):
        with self._lock:
            self.stopping = True
            for process in self._processes:
                try:
                    process.send_signal(number)
                except OSError:
                    pass


children = _Children()


def _message(log, status):
    """What hxrecord said about its failure: its first error line, else its last line."""
    lines = [line.strip() for line in log.splitlines() if line.strip()]
    for line in lines:
        if line.startswith("hxrecord: error:"):
            return line
    if status == INTERRUPTED:
        for line in lines:
            if line.startswith("hxrecord: interrupted"):
                return line
    if status < 0:
        try:
            name = signal.Signals(-status).name
        except ValueError:
            name = f"signal {-status}"
        return f"hxrecord was killed by {name}"
    return lines[-1] if lines else f"hxrecord exited with status {status}"


def run_case(folder, index, hxrecord=None, stop=None):
    """Runs run `index` of the sweep in `folder` with hxrecord and writes its record (first as
    "running", then "finished", "failed" or "interrupted"); returns the record, or None when `stop`
    (a threading.Event) was set before it started. hxrecord is the plan's, else the one on PATH."""
    folder = Path(folder).resolve()
    plan, planned = load_plan(folder)
    if not 0 <= index < len(plan.runs):
        raise SweepError(f"{folder}: the sweep has runs 0 to {len(plan.runs) - 1}, not {index}")
    run = plan.runs[index]
    if stop is not None and stop.is_set():
        return None
    program = hxrecord or planned
    if not program or not os.access(program, os.X_OK):
        program = shutil.which("hxrecord") or program
    here = folder / run.name
    here.mkdir(exist_ok=True)
    for old in list(here.glob(f"{RECORDING}.*")) + [here / LOG]:
        old.unlink(missing_ok=True)
    if run.model_name is not None:
        (here / run.model_name).write_text(run.model_text, encoding="utf-8")
    command = run.command(program, here)
    entry = {"format": "hxsweep-run", "formatVersion": 1, "name": run.name, "index": run.index,
             "parameters": run.parameters, "command": command, "key": run.key(), "status": "running",
             "exitStatus": None, "message": "", "host": socket.gethostname(), "started": now(), "ended": None,
             "seconds": None}
    if os.environ.get("SLURM_ARRAY_JOB_ID"):
        entry["slurmJob"] = os.environ["SLURM_ARRAY_JOB_ID"]
    write_json(here / RECORD, entry)
    began = time.monotonic()
    with open(here / LOG, "w+", encoding="utf-8", errors="replace") as log:
        try:
            # A session of its own: a terminal's Ctrl-C reaches hxsweep, which passes on one SIGTERM.
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT,
                                       cwd=here, start_new_session=True)
        except OSError as error:
            status, text = 127, f"hxrecord cannot be started: {program}: {error.strerror or error}"
        else:
            children.add(process)
            try:
                status = process.wait()
            finally:
                children.discard(process)
            log.seek(0)
            text = _message(log.read(), status) if status != 0 else ""
    interrupted = status == INTERRUPTED or (status != 0 and children.stopping)
    entry.update(status="finished" if status == 0 else "interrupted" if interrupted else "failed",
                 exitStatus=status, message=text, ended=now(), seconds=round(time.monotonic() - began, 3))
    write_json(here / RECORD, entry)
    return entry
