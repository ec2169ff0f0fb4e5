"""hxsim.plot: a display description drawn from a recording."""
import matplotlib
import numpy as np
import pandas as pd
from matplotlib.figure import Figure

from ._capture import DisplayDescription, read_display
from ._recording import TIME, read


def _find(frame, labels, axis):
    """The recording's column for each label; MRD labels without a manifest hold "_" for blanks."""
    found, missing = [], []
    for label in labels:
        for name in (label, label.replace(" ", "_")):
            if name in frame.columns:
                found.append((label, name))
                break
        else:
            missing.append(label)
    if missing:
        shown = ", ".join(f"'{label}'" for label in missing[:3]) + (", ..." if len(missing) > 3 else "")
        raise ValueError(f"the recording has no column for {len(missing)} of the {axis} axis's "
                         f"{len(labels)} columns: {shown}")
    return found


def _axis_label(name, units):
    units = sorted({unit for unit in units if unit})
    return f"{name} [{', '.join(units)}]" if units else name


def plot(display, recording, time=None, ax=None):
    """Draws a display description (a path or a DisplayDescription) from a recording (a path, or a
    DataFrame from hxsim.read) and returns the matplotlib Figure.

    scrollingCurve: the columns of the left capture over time on the left axis, those of the right
    capture on a right axis (dashed), up to `time` when given. barChart: the values of the last
    sample (or of the last sample at or before `time`) as bars, the left capture's on the left axis
    and the right capture's on the right axis. Axis labels carry the units when the recording has a
    manifest. Draws into `ax` when given (a right axis is added beside it), else into a new Figure.
    """
    description = display if isinstance(display, DisplayDescription) else read_display(display)
    frame = recording if isinstance(recording, pd.DataFrame) else read(recording)
    left = _find(frame, description.left.columns(), "left")
    right = _find(frame, description.right.columns(), "right")
    if not left and not right:
        raise ValueError("the display description names no column to draw")
    units = frame.attrs.get("units", {})
    if time is not None:
        frame = frame[frame.index <= time]
        if frame.empty:
            raise ValueError(f"the recording has no sample at or before time {time}")
    elif frame.empty:
        raise ValueError("the recording holds no sample")

    if ax is None:
        figure = Figure(figsize=(11, 6.5), layout="constrained")
        ax = figure.add_subplot()
    else:
        figure = ax.figure
    right_ax = ax.twinx() if right else None
    colors = matplotlib.rcParams["axes.prop_cycle"].by_key().get("color", ["C0"])
    color = [colors[i % len(colors)] for i in range(len(left) + len(right))]
    title = description.title or description.left.label or description.right.label

    if description.plot_type == "barChart":
        sample = frame.iloc[-1]
        positions = np.arange(len(left) + len(right))
        if left:
            ax.bar(positions[:len(left)], [sample[name] for _, name in left], color=color[:len(left)])
        if right:
            right_ax.bar(positions[len(left):], [sample[name] for _, name in right], color=color[len(left):],
                         hatch="//")
        ax.set_xticks(positions, [label for label, _ in left + right], rotation=90, fontsize="small")
        ax.axhline(0, color="black", linewidth=0.5)
        title = f"{title} (time {frame.index[-1]:g} s)" if title else f"time {frame.index[-1]:g} s"
    else:
        times = frame.index.to_numpy()
        for (label, name), shade in zip(left, color):
            ax.plot(times, frame[name].to_numpy(), label=label, color=shade)
        for (label, name), shade in zip(right, color[len(left):]):
            right_ax.plot(times, frame[name].to_numpy(), label=label, color=shade, linestyle="--")
        ax.set_xlabel(_axis_label(TIME, [units.get(TIME, "s")]))
        handles = [line for axis in (ax, right_ax) if axis is not None for line in axis.get_lines()]
        ax.legend(handles, [line.get_label() for line in handles], fontsize="small", loc="upper center",
                  bbox_to_anchor=(0.5, -0.1), ncol=2, frameon=False)
    ax.set_ylabel(_axis_label(description.left.label or "left", [units.get(label, "") for label, _ in left]))
    if right_ax is not None:
        right_ax.set_ylabel(_axis_label(description.right.label or "right",
                                        [units.get(label, "") for label, _ in right]))
    if title:
        ax.set_title(title)
    return figure
