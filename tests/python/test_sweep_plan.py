"""Sweep files: the runs a grid, cases and seeded random draws make, the filled template, and one clear
message (exit status 2) for each kind of fault."""
import math

import pytest

import hxsim.sweep
from conftest import SOURCE_DIR, run_tool

EXAMPLE = SOURCE_DIR / "examples" / "sweep"


def test_plan_prints_the_grid_and_the_cases():
    lines = run_tool("hxsweep", "plan", EXAMPLE / "arm_sweep.yaml").stdout.splitlines()
    assert lines[0] == f"25 runs of {EXAMPLE / 'arm_sweep.yaml'}; model template arm.xml.j2"
    assert lines[1].split() == ["run", "payload_mass", "torque_limit", "--mode"]
    assert lines[2].split() == ["run-0000", "0.25", "2", "dynamic"]
    assert lines[3].split() == ["run-0001", "0.25", "2", "kinematic"]     # the last name varies fastest
    assert lines[-2].split() == ["run-0023", "4", "20", "kinematic"]
    assert lines[-1].split() == ["run-0024", "-1", "5", "dynamic"]       # a case takes the others' defaults
    run = hxsim.sweep.plan(EXAMPLE / "arm_sweep.yaml").runs[24]
    assert 'mass="-1"' in run.model_text and 'ctrlrange="-5 5"' in run.model_text


def random_sweep(tmp_path, seed):
    path = tmp_path / f"random{seed}.yaml"
    path.write_text(f"""base: {{model: {EXAMPLE / 'arm.xml.j2'}}}
parameters:
  random:
    seed: {seed}
    count: 40
    draw:
      payload_mass: {{uniform: [0.5, 2]}}
      torque_limit: {{log-uniform: [1, 100]}}
      --mode: {{choice: [dynamic, kinematic]}}
""")
    return [run.parameters for run in hxsim.sweep.plan(path).runs]


def test_random_draws_repeat_with_their_seed(tmp_path):
    draws = random_sweep(tmp_path, 7)
    assert draws == random_sweep(tmp_path, 7) and draws != random_sweep(tmp_path, 8)
    assert all(0.5 <= run["payload_mass"] < 2 and 1 <= run["torque_limit"] < 100 for run in draws)
    assert {run["--mode"] for run in draws} == {"dynamic", "kinematic"}
    # log-uniform: as many draws below 10 as above, roughly
    assert 10 < sum(math.log10(run["torque_limit"]) < 1 for run in draws) < 30


@pytest.mark.parametrize("text, message", [
    ("base: {duration: [1", "sweep.yaml:1:20: not a valid sweep file: expected ',' or ']'"),
    ("base: {d: 1}", "sweep.yaml: base: unknown hxrecord option 'd': write its long name 'duration'"),
    ("base: {duratoin: 1}", "sweep.yaml: base: unknown hxrecord option 'duratoin'; did you mean 'duration'?"),
    ("base: {output: x}", "sweep.yaml: base: hxrecord's '--output' cannot be set: each run's output is "
                          "DIR/run-NNNN/recording"),
    ("parameters: {grid: {--mode: []}}", "sweep.yaml: parameters: grid: --mode: expected a non-empty list of values"),
    ("parameters: {random: {count: 2, draw: {--dwell: {uniform: [1, 0]}}}}",
     "sweep.yaml: parameters: random: draw: --dwell: uniform: expected [low, high], two numbers with low < high"),
    ("parameters: {grid: {gain: [1]}}", "sweep.yaml: 'gain' is a template value (hxrecord options start with "
                                        "'--'), but the model is no template (a model file ending in .j2)"),
    ("base: {model: MODEL}\nparameters: {grid: {payload_mas: [1]}}",
     "sweep.yaml: the template MODEL does not use 'payload_mas' (its values: payload_mass, torque_limit)"),
    ("base: {model: MODEL}\nvalues: {payload_mass: 1}",
     "MODEL: run-0000: 'torque_limit' is undefined; give it under 'values:' or as a parameter"),
    ("runs: 3", "sweep.yaml: unknown key 'runs'; a sweep file has base, values, parameters, summary, slurm"),
])
def test_a_faulty_sweep_file_is_one_clear_error(tmp_path, text, message):
    model = str(EXAMPLE / "arm.xml.j2")
    (tmp_path / "sweep.yaml").write_text(text.replace("MODEL", model))
    with pytest.raises(hxsim.sweep.SweepError) as error:
        hxsim.sweep.plan(tmp_path / "sweep.yaml")
    assert error.value.status == 2
    expected = message.replace("MODEL", model).replace("sweep.yaml", str(tmp_path / "sweep.yaml"))
    assert str(error.value).startswith(expected), str(error.value)
    if "not a valid sweep file" in message:   # on the command line: one line, exit status 2
        result = run_tool("hxsweep", "plan", "sweep.yaml", check=False, cwd=tmp_path)
        assert (result.returncode, result.stdout) == (2, "")
        assert result.stderr.startswith(f"hxsweep: error: {message}") and result.stderr.count("\n") == 1
