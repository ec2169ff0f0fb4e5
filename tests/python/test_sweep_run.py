"""hxsweep run and summary on the example sweep (24 runs of the 2-joint arm and one invalid model): a Dask
cluster of two worker processes started here gives the summary the local pool gives; its metrics are
what pandas computes from each run's CSV file; the failing run is reported and the others finished;
hxsweep plot draws the summary's values."""
import math

import numpy as np
import pandas as pd
import pytest

import hxsim.sweep
from conftest import SOURCE_DIR, run_tool

SWEEP = SOURCE_DIR / "examples" / "sweep" / "arm_sweep.yaml"
TORQUES = ["Manip[0]:upper_arm:Joint Torques", "Manip[0]:forearm:Joint Torques"]
ERROR = "Manip[0]:EE[0]:Reach Target:Translation Error"
POWER = "Manip[0]:Manipulator Power"
REACHED = "Manip[0]:EE[0]:Reach Target:Target Reached"


@pytest.fixture(scope="module")
def sweeps(tmp_path_factory):
    """The example sweep run on the local pool and on a Dask cluster: the two folders and the pool's result."""
    distributed = pytest.importorskip("distributed")
    folder = tmp_path_factory.mktemp("sweeps")
    pool = run_tool("hxsweep", "run", SWEEP, "--out", folder / "pool", "--jobs", "2", check=False)
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
        dask = run_tool("hxsweep", "run", SWEEP, "--out", folder / "dask", "--dask", cluster.scheduler_address,
                        check=False)
    assert dask.returncode == 1, dask.stderr
    return folder / "pool", folder / "dask", pool


def expected_metrics(run_folder, mode):
    """The summary's metrics computed here from the run's CSV file."""
    frame = pd.read_csv(run_folder / "recording.csv")
    time = frame["Time"].to_numpy()
    computed = mode == "dynamic"   # kinematic mode computes no torque and no power
    metrics = {}
    for label in TORQUES + [ERROR]:
        column = frame[label]
        known = computed or label == ERROR
        values = (column.min(), column.max(), column.mean(), column.iloc[-1]) if known else (math.nan,) * 4
        metrics.update(zip((f"{label}:min", f"{label}:max", f"{label}:mean", f"{label}:final"), values))
    metrics[f"{POWER}:integral"] = np.trapz(frame[POWER], time) if computed else math.nan
    for point in range(3):
        reached = time[(frame["Point Path Index"] == point) & (frame[REACHED] == 1)]
        metrics[f"Manip[0]:path:point {point} reached at"] = reached[0] if reached.size else math.nan
    reached = sum(not math.isnan(metrics[f"Manip[0]:path:point {point} reached at"]) for point in range(3))
    metrics.update({"Manip[0]:path:points": 3, "Manip[0]:path:reached": reached,
                    "Manip[0]:path:all reached": reached == 3})
    return metrics


def test_dask_gives_the_pool_summary_whose_metrics_are_the_recordings(sweeps):
    pool, dask, _ = sweeps
    summary = hxsim.sweep.summary(pool)
    on_dask = hxsim.sweep.summary(dask)
    on_dask["message"] = on_dask["message"].str.replace(str(dask), str(pool), regex=False)
    pd.testing.assert_frame_equal(summary, on_dask)

    finished = summary[summary["status"] == "finished"]
    assert len(finished) == 24
    assert sorted(map(tuple, finished[["payload_mass", "torque_limit", "--mode"]].values)) == sorted(
        (mass, torque, mode) for mass in (0.25, 1, 2, 4) for torque in (2, 5, 20) for mode in ("dynamic", "kinematic"))
    # The sweep is not trivial: some dynamic runs reach every point, some none, and the payload costs energy.
    assert set(finished["Manip[0]:path:reached"]) == {0, 3}
    for _, row in finished.iterrows():
        for name, value in expected_metrics(pool / row["run"], row["--mode"]).items():
            if isinstance(value, float) and math.isnan(value):
                assert pd.isna(row[name]), (row["run"], name, row[name])
            else:
                assert row[name] == pytest.approx(value, rel=1e-12, abs=1e-12), (row["run"], name)


def test_a_failing_run_is_reported_and_the_others_finish(sweeps):
    pool, _, result = sweeps
    assert result.returncode == 1, result.stderr
    assert "24 finished now, 1 failed" in result.stdout
    assert "run-0024 (payload_mass = -1): exit status 3: hxrecord: error: cannot load model" in result.stdout
    summary = hxsim.sweep.summary(pool)
    failed = summary[summary["status"] != "finished"]
    assert list(failed["run"]) == ["run-0024"] and failed["exit_status"].tolist() == [3]
    assert "negative" in failed["message"].iloc[0]
    metrics = summary.columns[summary.columns.get_loc("message") + 1:]
    assert failed[metrics].isna().all(axis=None)

    shown = run_tool("hxsweep", "summary", pool)
    assert shown.stdout.splitlines()[-1].startswith("25 runs (24 finished, 1 failed)")
    assert pd.read_csv(pool / "summary.csv")["run"].tolist() == [f"run-{i:04d}" for i in range(25)]


def test_plot_draws_the_summary(sweeps, tmp_path):
    pool, _, _ = sweeps
    summary = hxsim.sweep.summary(pool)
    metric = f"{POWER}:integral"
    figure = hxsim.sweep.plot(summary, "payload_mass", metric)
    lines = figure.axes[0].get_lines()
    assert [line.get_label() for line in lines] == [f"torque_limit = {t}" for t in (2, 5, 20)]
    for line, torque in zip(lines, (2, 5, 20)):
        rows = summary[(summary["torque_limit"] == torque) & (summary["--mode"] == "dynamic")
                       & (summary["status"] == "finished")]
        np.testing.assert_array_equal(line.get_ydata(), rows.sort_values("payload_mass")[metric])
    run_tool("hxsweep", "plot", pool, "--x", "payload_mass", "--y", metric, "-o", tmp_path / "energy.png")
    assert (tmp_path / "energy.png").read_bytes().startswith(b"\x89PNG")
    wrong = run_tool("hxsweep", "plot", pool, "--x", "payload", "--y", metric, check=False)
    assert (wrong.returncode, wrong.stderr) == (2, "hxsweep: error: no parameter 'payload' in the summary; "
                                                   "did you mean 'payload_mass'?\n")
