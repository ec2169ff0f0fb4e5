"""hxsweep run --slurm on a single-node Slurm cluster started here (munged, slurmctld and slurmd in the
foreground, as the user running the test): the job array's summary is the local pool's. Where the
daemons cannot start, the test is skipped with their message; it always stops the daemons it started."""
import os
import pwd
import shutil
import socket
import subprocess
import tempfile
import time
from contextlib import ExitStack
from pathlib import Path

import pandas as pd
import pytest

import hxsim.sweep
from conftest import SOURCE_DIR, run_tool

EXAMPLE = SOURCE_DIR / "examples" / "sweep"
SWEEP = f"""base: {{model: {EXAMPLE / 'arm.xml.j2'}, capture: {EXAMPLE / 'capture.xml'}, formats: csv, duration: 4,
        dwell: 0.1}}
values: {{payload_mass: 1, torque_limit: 20}}
parameters:
  grid: {{payload_mass: [0.5, 2], --mode: [dynamic, kinematic]}}
  cases: [{{payload_mass: -1}}]
summary: {{columns: ["Manip[0]:*:Joint Positions"]}}
"""


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for each in sockets:
        each.bind(("127.0.0.1", 0))
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


def last_line(path):
    lines = [line for line in Path(path).read_text(errors="replace").splitlines() if line.strip()] \
        if Path(path).exists() else []
    return lines[-1] if lines else "no message"


def stop(process):
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(timeout=15)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


@pytest.fixture
def slurm():
    """A running single-node cluster: the environment its client commands need."""
    for program in ("munged", "slurmctld", "slurmd", "sbatch", "squeue", "sinfo"):
        if shutil.which(program) is None and not Path("/usr/sbin", program).exists():
            pytest.skip(f"Slurm is not installed: no {program} (Debian packages slurm-wlm, munge)")
    with ExitStack() as stack:
        # Slurm's and munged's sockets live under their folders, and a socket's path must fit 108
        # bytes: a folder of its own with a short path, removed at the end.
        short = tempfile.gettempdir() if len(tempfile.gettempdir()) < 50 else "/tmp"
        state = Path(tempfile.mkdtemp(prefix="hx-slurm-", dir=short))
        stack.callback(shutil.rmtree, state, ignore_errors=True)
        for folder in ("spool", "state", "log", "munge"):
            (state / folder).mkdir()
        munge = state / "munge"
        munge.chmod(0o711)
        key = munge / "munge.key"
        key.write_bytes(os.urandom(1024))
        key.chmod(0o600)
        host = socket.gethostname().split(".")[0]
        user = pwd.getpwuid(os.geteuid()).pw_name
        controller, daemon = free_ports(2)
        config = state / "slurm.conf"
        config.write_text(f"""ClusterName=hxtest
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={controller}
SlurmdPort={daemon}
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket={munge / 'munge.socket'}
StateSaveLocation={state / 'state'}
SlurmdSpoolDir={state / 'spool'}
SlurmctldPidFile={state / 'slurmctld.pid'}
SlurmdPidFile={state / 'slurmd.pid'}
SlurmctldLogFile={state / 'log' / 'slurmctld.log'}
SlurmdLogFile={state / 'log' / 'slurmd.log'}
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
MpiDefault=none
ReturnToService=2
SchedulerType=sched/builtin
NodeName={host} NodeAddr=127.0.0.1 CPUs={os.cpu_count()} State=UNKNOWN
PartitionName=test Nodes={host} Default=YES MaxTime=INFINITE State=UP
""")
        environment = dict(os.environ, SLURM_CONF=str(config))
        daemons = [("munged", ["munged", "-F", "-f", f"--socket={munge / 'munge.socket'}", f"--key-file={key}",
                               f"--pid-file={munge / 'munged.pid'}", f"--log-file={munge / 'munged.log'}",
                               f"--seed-file={munge / 'munged.seed'}"], munge / "munged.log"),
                   ("slurmctld", ["slurmctld", "-D", "-i"], state / "log" / "slurmctld.log"),
                   ("slurmd", ["slurmd", "-D", "-N", host], state / "log" / "slurmd.log")]
        for name, command, log in daemons:
            program = shutil.which(command[0]) or f"/usr/sbin/{command[0]}"
            process = subprocess.Popen([program] + command[1:], env=environment, stdin=subprocess.DEVNULL,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
            stack.callback(stop, process)
            time.sleep(0.5)
            if process.poll() is not None:
                pytest.skip(f"{name} cannot start here: {(process.stderr.read().strip() or last_line(log))}")
        deadline = time.monotonic() + 30
        while True:
            state_now = subprocess.run(["sinfo", "--noheader", "--format=%T"], env=environment,
                                       capture_output=True, text=True)
            if state_now.stdout.strip() == "idle":
                break
            if time.monotonic() > deadline:
                pytest.skip(f"the Slurm node did not become idle ({state_now.stdout.strip()}"
                            f"{state_now.stderr.strip()}): {last_line(state / 'log' / 'slurmd.log')}")
            time.sleep(0.5)
        yield environment


def test_a_slurm_job_array_gives_the_local_summary(slurm, tmp_path):
    def hxsweep(*arguments, **options):
        return run_tool("hxsweep", *arguments, timeout=300, **options)

    sweep = tmp_path / "sweep.yaml"
    sweep.write_text(SWEEP)
    on_slurm = hxsweep("run", sweep, "--out", tmp_path / "slurm-out", "--slurm", check=False, env=slurm)
    assert on_slurm.returncode == 1, on_slurm.stdout + on_slurm.stderr
    assert "4 finished now, 1 failed" in on_slurm.stdout
    assert "#SBATCH --array=0-4" in (tmp_path / "slurm-out" / "sweep.sbatch").read_text()
    hxsweep("run", sweep, "--out", tmp_path / "local", check=False)

    summary = hxsim.sweep.summary(tmp_path / "slurm-out")
    local = hxsim.sweep.summary(tmp_path / "local")
    summary["message"] = summary["message"].str.replace(str(tmp_path / "slurm-out"), str(tmp_path / "local"))
    pd.testing.assert_frame_equal(summary, local)
    assert summary["status"].tolist() == ["finished"] * 4 + ["failed"]
    assert summary["Manip[0]:upper_arm:Joint Positions:final"].notna().sum() == 4

    # Submitted again, only the failed run is a task; --no-wait returns with the job's id.
    again = hxsweep("run", sweep, "--out", tmp_path / "slurm-out", "--slurm", "--no-wait", env=slurm)
    assert again.stdout.startswith("Submitted Slurm job ") and "1 run(s)" in again.stdout
    assert "#SBATCH --array=4\n" in (tmp_path / "slurm-out" / "sweep.sbatch").read_text()
    job = again.stdout.split()[3].rstrip(":")
    deadline = time.monotonic() + 60
    while subprocess.run(["squeue", "--noheader", "--jobs", job], env=slurm, capture_output=True, text=True).stdout:
        assert time.monotonic() < deadline, f"job {job} did not end"
        time.sleep(0.5)
