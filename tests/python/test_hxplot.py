"""hxplot and hxsim.plot: both plot types of the example display description, drawn from a recording with
exactly the recorded values of the display's columns."""
import numpy as np
import pytest

import hxsim
from conftest import SOURCE_DIR, run_tool

DISPLAY = SOURCE_DIR / "examples" / "config" / "display_description.xml"
LEFT = [f"Manip[0]:left_link{link}:Joint Positions" for link in range(1, 7)]
RIGHT = ["Manip[0]:EE[0]:Reach Target:Translation Error", "Manip[0]:EE[0]:Reach Target:Orientation Error"]


@pytest.fixture(params=["scrollingCurve", "barChart"])
def display(request, tmp_path):
    path = tmp_path / f"{request.param}.xml"
    path.write_text(DISPLAY.read_text().replace(">scrollingCurve<", f">{request.param}<"))
    return request.param, path


def test_plot_carries_the_recorded_values(display, default_recording, tmp_path):
    plot_type, path = display
    image = tmp_path / "plot.png"
    run_tool("hxplot", path, f"{default_recording}.csv", "-o", image)
    assert image.read_bytes().startswith(b"\x89PNG")

    frame = hxsim.read(f"{default_recording}.mrd")
    time = float(frame.index[len(frame) // 2])
    left, right = hxsim.plot(path, frame, time=time).axes
    shown = frame[frame.index <= time]
    if plot_type == "scrollingCurve":
        for axis, labels in ((left, LEFT), (right, RIGHT)):
            assert [line.get_label() for line in axis.get_lines()] == labels
            for line in axis.get_lines():
                np.testing.assert_array_equal(line.get_xdata(), shown.index)
                np.testing.assert_array_equal(line.get_ydata(), shown[line.get_label()])
    else:
        np.testing.assert_array_equal(left.containers[0].datavalues, shown[LEFT].iloc[-1])
        np.testing.assert_array_equal(right.containers[0].datavalues, shown[RIGHT].iloc[-1])
        assert [tick.get_text() for tick in left.get_xticklabels()] == LEFT + RIGHT


def test_hxplot_errors(default_recording, tmp_path):
    missing = tmp_path / "missing.xml"
    missing.write_text(DISPLAY.read_text().replace("left_link1", "no_such_link"))
    result = run_tool("hxplot", missing, f"{default_recording}.csv", "-o", tmp_path / "x.png", check=False)
    assert result.returncode == 1 and not (tmp_path / "x.png").exists()
    assert result.stderr == ("hxplot: error: the recording has no column for 1 of the left axis's 6 columns: "
                             "'Manip[0]:no_such_link:Joint Positions'\n")
    result = run_tool("hxplot", DISPLAY, f"{default_recording}.csv", "-o", tmp_path / "x.gif", check=False)
    assert result.returncode == 2 and result.stderr.startswith("hxplot: error: ")
