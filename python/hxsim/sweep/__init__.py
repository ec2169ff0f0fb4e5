"""hxsim.sweep: many hxrecord runs from one sweep file, on a local pool, Dask or Slurm, and their summary.

    plan = hxsim.sweep.plan("examples/sweep/arm_sweep.yaml")     # the runs, without running anything
    hxsim.sweep.run("examples/sweep/arm_sweep.yaml", "sweep-out", dask="local:2")
    table = hxsim.sweep.summary("sweep-out")                     # a DataFrame, one row per run
    hxsim.sweep.plot("sweep-out", "payload_mass", "Manip[0]:Manipulator Power:integral").savefig("p.png")

The command-line tool is hxsweep (hxsim/hxsweep.py). Reading a sweep file needs PyYAML and, for a
model template, Jinja2; Dask's distributed scheduler only --dask.
"""
from ._errors import SweepError
from ._execute import Outcome, run
from ._plan import Plan, Run, load as plan
from ._plot import plot
from ._summary import summary

__all__ = ["plan", "run", "summary", "plot", "Plan", "Run", "Outcome", "SweepError"]
