"""hxrecord's own options end to end: --capture-all against the quantity catalogue, --write-capture
read back, --check, the scene warnings, a URDF arm driven through a scene side file, --formats,
--plot and --version."""
import csv
import json
import os
import re
import shutil
import subprocess

import pytest

from conftest import SOURCE_DIR, run_tool, tool_path

# Two manipulators: 'arm' (a hinge with a DC motor, a slide with a position actuator that is no
# motor, a point end effector, one path point) and 'idle' (a motor, no path point), and a path
# site of no manipulator: one of each warning.
MJCF = """<mujoco model="slider">
  <compiler autolimits="true"/>
  <size nuser_actuator="1"/>
  <worldbody>
    <body name="arm">
      <body name="l1" pos="0 0 0.5">
        <joint name="hinge1" axis="0 1 0" range="-2 2"/>
        <geom type="capsule" fromto="0 0 0 0 0 0.3" size="0.03"/>
        <body name="l2" pos="0 0 0.3">
          <joint name="slide2" type="slide" axis="0 0 1" range="-0.1 0.2"/>
          <geom type="capsule" fromto="0 0 0 0 0 0.2" size="0.02"/>
          <site name="ee_point:tip" pos="0 0 0.2"/>
        </body>
      </body>
    </body>
    <body name="idle" pos="1 0 0"><body name="i1"><joint name="idle_joint" axis="0 1 0"/><geom size="0.05"/></body></body>
    <site name="path:arm:0" pos="0.2 0 0.9"/>
    <site name="path:ghost:0" pos="0 0 1"/>
  </worldbody>
  <actuator>
    <motor joint="hinge1" gear="20" user="0.9"/>
    <position joint="slide2" kp="100"/>
    <motor joint="idle_joint" user="0.5"/>
  </actuator>
</mujoco>
"""

INERTIA = '<inertia ixx="0.01" iyy="0.01" izz="0.001" ixy="0" ixz="0" iyz="0"/>'
URDF = f"""<?xml version="1.0"?>
<robot name="urdf_arm">
  <mujoco><compiler fusestatic="false"/></mujoco>
  <link name="arm_base"><inertial><mass value="2"/>{INERTIA}</inertial></link>
  <link name="upper"><inertial><origin xyz="0 0 0.15"/><mass value="1"/>{INERTIA}</inertial></link>
  <link name="lower"><inertial><origin xyz="0 0 0.1"/><mass value="0.5"/>{INERTIA}</inertial></link>
  <link name="ee_point:tool"><inertial><mass value="0.01"/>{INERTIA}</inertial></link>
  <joint name="shoulder" type="revolute"><parent link="arm_base"/><child link="upper"/>
    <origin xyz="0 0 0.1"/><axis xyz="0 1 0"/><limit lower="-2" upper="2" effort="100" velocity="2"/></joint>
  <joint name="elbow" type="revolute"><parent link="upper"/><child link="lower"/>
    <origin xyz="0 0 0.3"/><axis xyz="0 1 0"/><limit lower="-2.5" upper="2.5" effort="100" velocity="2"/></joint>
  <joint name="tool_mount" type="fixed"><parent link="lower"/><child link="ee_point:tool"/><origin xyz="0 0 0.2"/></joint>
</robot>
"""
# Reachable: shoulder 0.5 rad, elbow 0.7 rad.
SCENE = {"motors": [{"joint": "shoulder", "gear": 50, "efficiency": 0.85, "ctrlrange": [-1, 1]},
                    {"joint": "elbow", "gear": 20}],
         "pathPoints": {"arm_base": [{"position": [0.3302, 0, 0.4358]}]}}


def hxrecord(*args, cwd, check=True, **kwargs):
    return run_tool("hxrecord", *args, cwd=cwd, check=check, **kwargs)


def header(base):
    with open(f"{base}.csv", newline="") as file:
        return next(csv.reader(file))


def columns(base):
    with open(f"{base}.csv", newline="") as file:
        rows = list(csv.reader(file))
    return {label: [float(row[i]) for row in rows[1:]] for i, label in enumerate(rows[0]) if label}


def catalogue(cwd):
    """--list-types as {description: (level, columns, readable, needs)}."""
    lines = hxrecord("--list-types", cwd=cwd).stdout.splitlines()
    start = next(i for i, line in enumerate(lines) if line.startswith("Token"))
    types = {}
    for line in lines[start + 1:]:
        if not line.strip():
            break
        token, level, count, readable, needs, description, _ = re.split(r"\s{2,}", line)
        types[description] = (level, int(count), readable == "yes", needs)
    return types


def expected_prefixes(types, mode, manipulators):
    """(label prefix, description, columns) that --capture-all must record; manipulators maps each
    label prefix of a manipulator to its links {identifier: has a DC motor} and end effector count."""
    expected = []
    for description, (level, count, readable, needs) in types.items():
        if not readable or (mode == "kinematic" and needs != "-"):
            continue
        for prefix, (links, end_effectors) in manipulators.items():
            if level == "manipulator":
                expected.append((prefix, description, count))
            elif level == "link":
                expected += [(f"{prefix}{link}:", description, count) for link, motor in links.items()
                             if motor or description != "Motor Power"]
            else:
                expected += [(f"{prefix}EE[{e}]:", description, count) for e in range(end_effectors)]
    return expected


def run_copy(path, *args, **kwargs):
    """Runs a copy of a built tool (which finds its libraries as the original does)."""
    return subprocess.run([str(path), *map(str, args)], capture_output=True, text=True, **kwargs)


@pytest.fixture
def models(tmp_path):
    (tmp_path / "slider.xml").write_text(MJCF)
    (tmp_path / "arm.urdf").write_text(URDF)
    (tmp_path / "scene.json").write_text(json.dumps(SCENE))
    return tmp_path


@pytest.mark.parametrize("mode", ["dynamic", "kinematic"])
def test_capture_all_records_every_supported_type_and_reads_back(models, mode):
    types = catalogue(models)
    base = models / mode / "all"
    hxrecord("-q", "-m", "slider.xml", "--capture-all", "--mode", mode, "-d", "0.05", "--formats", "csv",
             "--write-capture", "capture.xml", "-o", base, cwd=models)
    labels = header(base)[2:]
    expected = expected_prefixes(types, mode, {"Manip[0]:": ({"l1": True, "l2": False}, 1),
                                               "Manip[1]:": ({"i1": True}, 0)})
    for prefix, description, _ in expected:
        assert any(label == prefix + description or label.startswith(prefix + description + ":")
                   for label in labels), prefix + description
    assert len(labels) == sum(count for *_, count in expected)
    # The manifest gives each joint's unit by its kind, and marks nothing recorded as not computed.
    manifest = json.loads((base.parent / "all.json").read_text())
    assert [column["label"] for column in manifest["columns"]][2:] == labels
    units = {column["label"]: column["unit"] for column in manifest["columns"]}
    assert (units["Manip[0]:l1:Joint Positions"], units["Manip[0]:l2:Joint Positions"]) == ("rad", "m")
    assert all(column["computed"] for column in manifest["columns"])
    # The saved configuration records the same columns.
    hxrecord("-q", "-m", "slider.xml", "-c", "capture.xml", "--mode", mode, "-d", "0.05", "--formats", "csv",
             "-o", models / mode / "again", cwd=models)
    assert header(models / mode / "again") == header(base)


def test_urdf_arm_moves_with_scene_motors_and_reaches_its_path_point(models):
    base = models / "urdf" / "rec"
    hxrecord("-q", "-m", "arm.urdf", "--scene", "scene.json", "--capture-all", "--write-capture", "urdf.xml",
             "-d", "3", "--formats", "csv", "-o", base, cwd=models)
    values = columns(base)
    assert max(abs(v) for v in values["Manip[0]:upper:Joint Positions"]) > 0.3
    assert max(abs(v) for v in values["Manip[0]:lower:Joint Positions"]) > 0.3
    assert max(values["Manip[0]:EE[0]:Reach Target:Target Reached"]) == 1.0
    assert max(abs(v) for v in values["Manip[0]:upper:Motor Power"]) > 0.0
    hxrecord("-q", "-m", "arm.urdf", "--scene", "scene.json", "-c", "urdf.xml", "-d", "0.05", "--formats", "csv",
             "-o", models / "urdf" / "again", cwd=models)
    assert header(models / "urdf" / "again") == header(base)


@pytest.mark.parametrize("model, scene, message", [
    ("arm.urdf", {"motors": [{"joint": "wrist"}]}, "motor on joint 'wrist': the model has no joint of that name"),
    ("slider.xml", {"motors": [{"joint": "hinge1"}]}, "motor on joint 'hinge1': the joint has an actuator already"),
    ("arm.urdf", {"pathPoints": {"ghost": []}}, "pathPoints.ghost: the model 'arm.urdf' has no manipulator whose"),
    ("arm.urdf", {"motors": [{"joint": "elbow", "gear": "50"}]}, "motors[0].gear: expected a number, found a string"),
    ("arm.urdf", {"motor": []}, "the document: unknown key 'motor'; known keys: 'motors', 'pathPoints'"),
    ("arm.urdf", "{\"motors\": [", "parse error at line 1, column 13"),
])
def test_scene_file_faults_are_configuration_errors(models, model, scene, message):
    (models / "bad.json").write_text(scene if isinstance(scene, str) else json.dumps(scene))
    result = hxrecord("-m", model, "--scene", "bad.json", "-o", "out/rec", cwd=models, check=False)
    assert result.returncode == 4
    assert result.stderr.startswith(f"hxrecord: error: scene file 'bad.json': {message}")
    assert not (models / "out").exists()


def test_warnings_once_each_and_none_for_the_default_scene(models):
    result = hxrecord("-m", "slider.xml", "--check", "--capture-all", cwd=models)
    warnings = result.stderr.splitlines()
    assert len(warnings) == 3 and all(line.startswith("hxrecord: warning: ") for line in warnings)
    assert "site 'path:ghost:0' is no path point" in warnings[0]
    assert "joint 'slide2' of manipulator 'arm' is driven by an actuator not declared as a motor" in warnings[1]
    assert "manipulator 'idle' has no path points: it stands still" in warnings[2]
    assert hxrecord("--check", cwd=models).stderr == ""


def test_check_prints_the_columns_and_writes_nothing(models):
    result = hxrecord("--check", "--mode", "kinematic", "-o", "new/dir/rec", cwd=models)
    table = result.stdout.split("\n\n", 1)[1].splitlines()
    assert re.split(r"\s{2,}", table[0].strip()) == ["Index", "Label", "Unit", "Computed"]
    assert len(table) == 433 and table[1].split() == ["0", "Time", "s", "yes"]
    not_computed = sum(line.endswith(" no") for line in table)
    assert f"Columns:  432, of which {not_computed} not computed in kinematic mode" in result.stdout
    assert [re.split(r"\s{2,}", line.strip()) for line in table if "left_link1:Joint Torques" in line] == \
        [["28", "Manip[0]:left_link1:Joint Torques", "N m", "no"]]
    # With --write-capture only that file appears; a failed check exits with its status.
    hxrecord("--check", "--write-capture", "saved.xml", "-o", "new/dir/rec", cwd=models)
    failed = hxrecord("--check", "-m", "slider.xml", "-o", "new/dir/rec", cwd=models, check=False)
    assert failed.returncode == 5 and "names link 'left_link1'" in failed.stderr
    assert sorted(os.listdir(models)) == ["arm.urdf", "saved.xml", "scene.json", "slider.xml"]


def test_formats_pick_exactly_the_named_files(models):
    hxrecord("-q", "-d", "0.05", "--formats", "mrd,text", "-o", "f/rec", cwd=models)
    recorded = {name for name in os.listdir(models / "f") if os.path.splitext(name)[1] in
                {".csv", ".xml", ".mrd", ".m", ".nb"}}
    assert recorded == {"rec.mrd", "rec.csv"}
    refused = hxrecord("--formats", "csv", "-w", "w.xml", cwd=models, check=False)
    assert refused.returncode == 2 and "--formats and --writers cannot be given together" in refused.stderr


def test_python_copy_of_the_quantity_types_matches_the_library(models):
    """hxsim draws display descriptions without the C++ library, from its own copy of the types."""
    from hxsim._capture import QUANTITIES
    lines = hxrecord("--list-types", cwd=models).stdout.splitlines()
    start = next(i for i, line in enumerate(lines) if line.startswith("Token"))
    listed = {}
    for line in lines[start + 1:]:
        if not line.strip():
            break
        token, _, count, _, _, description, _ = re.split(r"\s{2,}", line)
        listed[token] = (description, int(count))
    assert listed == {token: (description, len(labels)) for token, (description, labels) in QUANTITIES.items()}


def test_version_names_tool_library_and_engine(models):
    assert [line.split()[0] for line in hxrecord("--version", cwd=models).stdout.splitlines()] == \
        ["hxrecord", "libhxSimulationAnalysis", "MuJoCo"]


def test_plot_runs_hxplot_beside_hxrecord_and_warns_without_it(models):
    display = str(SOURCE_DIR / "examples/config/display_description.xml")
    with_plotter, without = models / "bin", models / "bare"
    for directory in (with_plotter, without):
        directory.mkdir()
        shutil.copy(tool_path("hxrecord"), directory / "hxrecord")
    plotter = with_plotter / "hxplot"
    plotter.write_text('#!/bin/sh\nprintf "%s\\n" "$@" > "$(dirname "$0")/arguments"\n: > "$4"\n')
    plotter.chmod(0o755)
    arguments = ("-d", "0.05", "--formats", "csv", "--plot", display, "-o", "p/rec")
    plotted = run_copy(with_plotter / "hxrecord", *arguments, cwd=models)
    assert (with_plotter / "arguments").read_text().splitlines() == [display, "p/rec.csv", "-o", "p/rec.png"]
    assert "Plot: p/rec.png" in plotted.stdout and (models / "p/rec.png").exists()
    missing = run_copy(without / "hxrecord", *arguments, cwd=models, env={**os.environ, "PATH": "/nonexistent"})
    assert missing.returncode == 0
    assert missing.stderr == f"hxrecord: warning: no plot: hxplot was found neither beside hxrecord in {without} " \
                             "nor on PATH; the recording is finished\n"
    if (tool_path("hxrecord").parent / "hxplot").exists():  # the real plotter, built beside hxrecord
        hxrecord("-q", "-d", "0.05", "--plot", display, "-o", "real/rec", cwd=models)
        assert (models / "real/rec.png").read_bytes()[:4] == b"\x89PNG"
    no_csv = hxrecord("--formats", "mrd", "--plot", display, "-o", "q/rec", cwd=models, check=False)
    assert no_csv.returncode == 4 and "--plot needs the CSV file" in no_csv.stderr
    assert not (models / "q").exists()
