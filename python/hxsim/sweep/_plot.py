"""One metric of a sweep's summary drawn against one parameter."""
import difflib

import numpy as np
import pandas as pd

from ._errors import SweepError
from ._summary import summary as _summary


def parts(frame):
    """The parameter and the metric columns of a summary."""
    columns = list(frame.columns)
    return columns[1:columns.index("status")], columns[columns.index("message") + 1:]


def _find(name, known, what):
    if name in known:
        return name
    if f"--{name}" in known:
        return f"--{name}"
    close = difflib.get_close_matches(name, known, n=1)
    hint = f"; did you mean '{close[0]}'?" if close else (f"; the summary has: {', '.join(known)}" if known else "")
    raise SweepError(f"no {what} '{name}' in the summary{hint}", status=2)


def _numeric(values):
    return all(isinstance(value, (int, float, np.integer, np.floating)) and not isinstance(value, bool)
               for value in values)


def plot(sweep, x, y, ax=None):
    """Draws metric `y` of the finished runs against parameter `x` and returns the matplotlib Figure.
    `sweep` is a sweep's folder or its summary (a DataFrame). Runs that differ in other parameters
    are drawn as separate lines, one per combination of them (named in the legend)."""
    import matplotlib.pyplot as plt

    frame = sweep if isinstance(sweep, pd.DataFrame) else _summary(sweep)
    parameters, metrics = parts(frame)
    x, y = _find(x, parameters, "parameter"), _find(y, metrics, "metric")
    done = frame[(frame["status"] == "finished") & frame[y].notna()]
    if done.empty:
        raise SweepError(f"no finished run has a value of '{y}'", status=1)
    others = [name for name in parameters if name != x and done[name].astype(str).nunique() > 1]
    values = list(done[x])
    numeric = _numeric(values)
    categories = list(dict.fromkeys(str(value) for value in frame[x]))

    if ax is None:
        figure, ax = plt.subplots(figsize=(7, 4.5), layout="constrained")
    else:
        figure = ax.figure
    keys = [done[name].astype(str) for name in others]
    groups = done.groupby(keys[0] if len(keys) == 1 else keys, sort=False) if keys else [((), done)]
    for key, group in groups:
        xs = group[x].astype(float).to_numpy() if numeric else np.array([categories.index(str(v)) for v in group[x]])
        ys = group[y].astype(float).to_numpy()
        order = np.argsort(xs, kind="stable")
        key = key if isinstance(key, tuple) else (key,)
        label = ", ".join(f"{name} = {value}" for name, value in zip(others, key)) or None
        ax.plot(xs[order], ys[order], marker="o", label=label)
    if not numeric:
        ax.set_xticks(range(len(categories)), categories)
    ax.set_xlabel(x)
    ax.set_ylabel(y)
    ax.set_title(f"{y}\n{len(done)} of {len(frame)} runs" + (" (the others did not finish or have no value)"
                                                           if len(done) < len(frame) else ""), fontsize=10)
    if others and len(ax.get_lines()) <= 12:
        ax.legend(fontsize=8)
    ax.grid(True, alpha=0.3)
    return figure
