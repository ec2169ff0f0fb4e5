"""Running a sweep: the runs still to do, on a local pool of processes, a Dask cluster or a Slurm job array."""
import fcntl
import logging
import os
import shlex
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor, as_completed
from dataclasses import dataclass, field
from pathlib import Path

from . import _run
from ._errors import SweepError
from ._plan import load


@dataclass
class Outcome:
    """What `run` did: the plan's runs, those kept from before, and the records of those it ran."""
    folder: Path
    total: int
    kept: list = field(default_factory=list)      # run names finished before, not run again
    records: dict = field(default_factory=dict)   # run name -> record, of the runs made now
    job: str = None                               # the Slurm job, when submitted without waiting

    @property
    def failed(self):
        return [record for record in self.records.values() if record.get("status") != "finished"]


class Progress:
    """Runs done out of those to do, and how many failed, on standard error: one line rewritten on a
    terminal, else a line at most every 10 s and at the end."""

    def __init__(self, total, quiet=False, stream=None):
        self.total, self.done, self.failed = total, 0, 0
        self.quiet, self.stream = quiet, stream or sys.stderr
        self.terminal = self.stream.isatty()
        self.shown = time.monotonic()

    def add(self, record):
        self.done += 1
        self.failed += record is None or record.get("status") != "finished"
        self.show()

    def set(self, done, failed):
        if (done, failed) != (self.done, self.failed):
            self.done, self.failed = done, failed
            self.show()

    def show(self, last=False):
        if self.quiet or self.total == 0:
            return
        text = f"hxsweep: {self.done}/{self.total} runs done" + (f", {self.failed} failed" if self.failed else "")
        if self.terminal:
            self.stream.write(f"\r{text}\033[K" + ("\n" if last else ""))
        elif last or time.monotonic() - self.shown >= 10:
            self.stream.write(text + "\n")
            self.shown = time.monotonic()
        self.stream.flush()


class _Lock:
    """One hxsweep at a time runs a sweep's folder."""

    def __init__(self, folder):
        self.path = Path(folder) / ".hxsweep.lock"

    def __enter__(self):
        self.stream = open(self.path, "w")
        try:
            fcntl.flock(self.stream, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            self.stream.close()
            raise SweepError(f"{self.path.parent}: another hxsweep is running this sweep") from None
        return self

    def __exit__(self, *exception):
        self.stream.close()


def _interrupted(message):
    return SweepError(f"interrupted: {message}; 'hxsweep run' again resumes the sweep", status=5)


def _local(folder, todo, jobs, progress, outcome):
    stop = threading.Event()
    with ThreadPoolExecutor(max_workers=jobs) as pool:
        futures = {pool.submit(_run.run_case, folder, index, None, stop): index for index in todo}
        try:
            for future in as_completed(futures):
                entry = future.result()
                outcome.records[entry["name"]] = entry
                progress.add(entry)
        except KeyboardInterrupt:
            # Ctrl-C or SIGTERM: no run starts any more; those under way get SIGTERM and finish their files.
            signal.signal(signal.SIGINT, signal.SIG_DFL)
            signal.signal(signal.SIGTERM, signal.SIG_DFL)
            stop.set()
            _run.children.signal(signal.SIGTERM)
            pool.shutdown(wait=True, cancel_futures=True)
            raise _interrupted("the runs under way were stopped and recorded as interrupted") from None


def _dask(folder, todo, address, progress, outcome):
    try:
        import distributed
    except ImportError:
        raise SweepError("--dask needs Dask's distributed scheduler (Debian package python3-distributed)",
                         status=4) from None
    cluster = None
    try:
        if address.startswith("local:"):
            count = address[len("local:"):]
            if not count.isdigit() or int(count) < 1:
                raise SweepError(f"--dask {address}: expected local:N with N worker processes, N >= 1", status=2)
            cluster = distributed.LocalCluster(n_workers=int(count), threads_per_worker=1, processes=True,
                                               dashboard_address=None, silence_logs=logging.ERROR)
            client = distributed.Client(cluster)
        else:
            client = distributed.Client(address, timeout="20s")
    except SweepError:
        raise
    except Exception as error:  # a refused connection, a timeout, a cluster that cannot start
        if cluster is not None:
            cluster.close()
        raise SweepError(f"cannot reach the Dask scheduler at {address}: {error}", status=4) from None
    try:
        futures = {client.submit(_run.run_case, str(folder), index, pure=False,
                                 key=f"hxsweep-{index}-{os.getpid()}-{time.time_ns()}"): index for index in todo}
        for future in distributed.as_completed(futures):
            index = futures[future]
            try:
                entry = future.result()
            except Exception as error:  # the worker died, or the task raised
                entry = _failed(folder, index, f"the Dask task failed: {type(error).__name__}: {error}")
            outcome.records[entry["name"]] = entry
            progress.add(entry)
    except KeyboardInterrupt:
        raise _interrupted("the runs under way on the Dask cluster are redone next time") from None
    finally:
        client.close()
        if cluster is not None:
            cluster.close()


def _failed(folder, index, message):
    """Records run `index` as failed with `message` (a run whose task ended without a record)."""
    plan, _ = _run.load_plan(folder)
    run = plan.runs[index]
    entry = _run.record(folder, run) or {"format": "hxsweep-run", "formatVersion": 1, "name": run.name,
                                         "index": index, "parameters": run.parameters, "key": run.key()}
    entry.update(status="failed", exitStatus=None, message=message, ended=_run.now())
    (Path(folder) / run.name).mkdir(exist_ok=True)
    _run.write_json(Path(folder) / run.name / _run.RECORD, entry)
    return entry


def _ranges(indices):
    """0,1,2,5,7,8 as 0-2,5,7-8 (a job array's index list)."""
    parts, start = [], None
    for i, index in enumerate(indices):
        if start is None:
            start = index
        if i + 1 == len(indices) or indices[i + 1] != index + 1:
            parts.append(f"{start}-{index}" if index != start else f"{index}")
            start = None
    return ",".join(parts)


def slurm_script(folder, todo, options):
    """The job array's script: task i runs run i of the sweep in `folder`."""
    package = Path(__file__).resolve().parents[2]
    logs = Path(folder) / "slurm"
    lines = ["#!/bin/sh",
             f"# Written by hxsweep: one task of this job array per run of the sweep in {folder};",
             "# task i runs run i ('hxsweep run-one DIR i' records it in DIR/run-NNNN/run.json).",
             "#SBATCH --job-name=hxsweep",
             f"#SBATCH --array={_ranges(todo)}",
             "#SBATCH --ntasks=1",
             "#SBATCH --cpus-per-task=1",
             f"#SBATCH --output={logs}/slurm-%A_%a.out"]
    lines += [f"#SBATCH {option}" for option in options]
    lines += [f"export PYTHONPATH={shlex.quote(str(package))}${{PYTHONPATH:+:$PYTHONPATH}}",
              f"exec {shlex.quote(sys.executable)} -m hxsim.hxsweep run-one {shlex.quote(str(folder))} "
              f"\"$SLURM_ARRAY_TASK_ID\""]
    return "\n".join(lines) + "\n"


def _command(arguments, what):
    try:
        return subprocess.run(arguments, capture_output=True, text=True, stdin=subprocess.DEVNULL)
    except OSError as error:
        raise SweepError(f"{arguments[0]} cannot be run ({error.strerror or error}): {what} needs Slurm's "
                         f"client commands (Debian package slurm-client)", status=4) from None


def _last_line(text):
    lines = [line.strip() for line in text.splitlines() if line.strip()]
    return lines[-1] if lines else "no message"


def _slurm(folder, plan, todo, wait, progress, outcome, poll=1.0):
    script = Path(folder) / "sweep.sbatch"
    (Path(folder) / "slurm").mkdir(exist_ok=True)
    script.write_text(slurm_script(folder, todo, plan.slurm), encoding="utf-8")
    submitted = _command(["sbatch", "--parsable", str(script)], "--slurm")
    if submitted.returncode != 0:
        raise SweepError(f"sbatch refused the job array: {_last_line(submitted.stderr)}", status=4)
    job = submitted.stdout.strip().split(";")[0]
    outcome.job = job
    if not wait:
        return
    runs = [plan.runs[index] for index in todo]
    failures = 0
    try:
        while True:
            queued = _command(["squeue", "--noheader", "--jobs", job, "--format=%T|%r"], "--slurm")
            mine = [_run.record(folder, run) for run in runs]
            mine = [entry for entry in mine if entry and entry.get("slurmJob") == job and entry["status"] != "running"]
            progress.set(len(mine), sum(entry["status"] != "finished" for entry in mine))
            if queued.returncode != 0 and "invalid job id" not in queued.stderr.lower():
                failures += 1
                if failures >= 10:
                    raise SweepError(f"squeue cannot say how job {job} goes: {_last_line(queued.stderr)}", status=4)
            elif not queued.stdout.strip():
                break
            else:
                failures = 0
                reasons = [line.partition("|")[2] for line in queued.stdout.splitlines() if line.strip()]
                if all("held" in reason.lower() for reason in reasons):
                    raise SweepError(f"the Slurm job {job} is held ({reasons[0]}): its tasks do not start; "
                                     f"'scontrol show job {job}' says why, 'scancel {job}' removes it", status=4)
            time.sleep(poll)
    except KeyboardInterrupt:
        raise SweepError(f"interrupted: the Slurm job {job} goes on ('scancel {job}' stops it; "
                         f"'hxsweep summary {folder}' reads what it made)", status=5) from None
    for run in runs:
        entry = _run.record(folder, run)
        if entry is None or entry.get("slurmJob") != job or entry.get("status") == "running":
            entry = _failed(folder, run.index, f"the Slurm task ended without finishing the run; see "
                                               f"{folder}/slurm/slurm-{job}_{run.index}.out")
        outcome.records[run.name] = entry
    progress.set(len(runs), sum(entry["status"] != "finished" for entry in outcome.records.values()))


def run(sweep, out, jobs=None, dask=None, slurm=False, wait=True, hxrecord=None, quiet=True, beside=None):
    """Runs the sweep file `sweep` into the folder `out`: every run not finished before (with the same
    parameters, options and model) as one hxrecord process, on a local pool of `jobs` processes
    (default: the CPUs), on Dask (`dask`: a scheduler's address, or "local:N" for a cluster of N worker
    processes started here) or as a Slurm job array (`slurm`; `wait=False` returns once it is
    submitted). Returns an Outcome; raises SweepError."""
    plan = load(sweep)
    program = _run.find_hxrecord(hxrecord, beside)
    folder = Path(out).resolve()
    if jobs is not None and jobs < 1:
        raise SweepError(f"--jobs {jobs}: expected a number of processes >= 1", status=2)
    _run.prepare(folder, plan, program)
    with _Lock(folder):
        outcome = Outcome(folder, len(plan.runs))
        todo = []
        for run in plan.runs:
            if _run.is_done(folder, run):
                outcome.kept.append(run.name)
            else:
                todo.append(run.index)
        progress = Progress(len(todo), quiet)
        if not todo:
            return outcome
        if slurm:
            _slurm(folder, plan, todo, wait, progress, outcome)
        elif dask:
            _dask(folder, todo, dask, progress, outcome)
        else:
            _local(folder, todo, jobs or len(os.sched_getaffinity(0)), progress, outcome)
        if outcome.job is None or wait:
            progress.show(last=True)
        return outcome
