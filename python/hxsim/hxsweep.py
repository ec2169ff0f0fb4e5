"""hxsweep: many hxrecord runs from one sweep file, on a local pool, a Dask cluster or Slurm, and their summary."""
import argparse
import os
import signal
import sys
import textwrap
import warnings
from pathlib import Path

from ._cli import HelpFormatter, Parser

PROGRAM = "hxsweep"

DESCRIPTION = """\
Runs many recordings of hxrecord from one sweep file and sums them up. The sweep file (YAML, or
JSON) names the base run (hxrecord's options) and the parameters to vary: hxrecord options
(written with their "--") and values of a model template (any other name), as a grid, a list of
cases or seeded random draws. Each run records into its own folder DIR/run-NNNN/ with a record
of its parameters, command, status and times (run.json).

commands:
  plan SWEEP            print the runs the sweep file makes and their parameters; run nothing
  run SWEEP --out DIR   run them, each as one hxrecord process; runs that finished before with
                        the same parameters are kept, the others (failed, interrupted, changed,
                        new) are run, so an interrupted sweep resumes
  summary DIR           one row per run: parameters, status, exit status, message and metrics of
                        its recording; written to DIR/summary.csv and shown in short
  plot DIR --x PARAM --y METRIC
                        draw one column of the summary against one parameter
  run-one DIR I         run run I of the sweep in DIR (what each task of a Slurm job array does)

'hxsweep COMMAND --help' gives each command's options."""

SWEEP_FILE = """\
sweep file (paths relative to its folder):
  base:                          # hxrecord's long options without "--", for every run
    model: arm.xml.j2            #   a model ending in .j2 is a Jinja2 template, filled per run
    capture: capture.xml
    formats: csv
    duration: 4
  values: {payload_mass: 1.0}    # template values of every run
  parameters:
    grid:   {payload_mass: [0.5, 1, 2], --mode: [dynamic, kinematic]}   # every combination
    cases:  [{payload_mass: -1}]                                        # one run each
    random: {seed: 1, count: 10, draw: {payload_mass: {uniform: [0.1, 4]},
             torque_limit: {log-uniform: [1, 50]}, --mode: {choice: [dynamic, kinematic]}}}
  summary:
    columns: ["Manip[0]:*:Joint Torques"]   # label patterns: min, max, mean, final per run
  slurm: [--partition=short, --time=10]     # sbatch options of the job array"""

EPILOG = f"""\
{SWEEP_FILE}

examples:
  hxsweep plan examples/sweep/arm_sweep.yaml
  hxsweep run examples/sweep/arm_sweep.yaml --out sweep-out
  hxsweep run examples/sweep/arm_sweep.yaml --out sweep-out --dask local:4
  hxsweep run examples/sweep/arm_sweep.yaml --out /shared/sweep-out --slurm
  hxsweep summary sweep-out
  hxsweep plot sweep-out --x payload_mass --y "Manip[0]:Manipulator Power:integral" -o energy.png

hxrecord is looked for as --hxrecord or $HXRECORD give it, then beside hxsweep, then on PATH.

exit status: 0 done (run: every run finished; run --no-wait: the job was submitted); 1 some runs
failed or were interrupted (run), or no finished run has the metric (plot); 2 bad usage or an
invalid sweep file; 3 a file or folder cannot be read or written (DIR is no sweep's folder);
4 Dask or Slurm failed (no scheduler at the address, sbatch refused the job); 5 interrupted
(Ctrl-C, SIGTERM): the runs under way are recorded as interrupted, 'hxsweep run' again resumes."""


def _parser():
    from . import __version__
    parser = Parser(prog=PROGRAM, usage="%(prog)s [-h] [--version] COMMAND ...", description=DESCRIPTION,
                    epilog=EPILOG, formatter_class=HelpFormatter)
    parser.add_argument("--version", action="version", version=f"{PROGRAM} {__version__}")
    commands = parser.add_subparsers(dest="command", metavar="COMMAND", parser_class=Parser, help=argparse.SUPPRESS,
                                     prog=PROGRAM)
    commands.required = True
    common = dict(formatter_class=HelpFormatter)
    wrap = lambda text: textwrap.fill(text, 96)  # noqa: E731

    plan = commands.add_parser("plan", help="print the runs of a sweep file", description=wrap(
                               "Prints the runs the sweep file makes, one line each with its parameters; "
                               "runs nothing."), epilog=SWEEP_FILE, **common)
    plan.add_argument("sweep", metavar="SWEEP", help="sweep file (YAML or JSON)")

    run = commands.add_parser("run", help="run a sweep", description=wrap(
                              "Runs every run of the sweep file that did not finish before into DIR/run-NNNN/, "
                              "each as one hxrecord process: on a local pool of processes (default), on a Dask "
                              "cluster (--dask) or as a Slurm job array (--slurm)."), epilog=SWEEP_FILE, **common)
    run.add_argument("sweep", metavar="SWEEP", help="sweep file (YAML or JSON)")
    run.add_argument("--out", metavar="DIR", required=True, help="the sweep's folder (made when missing)")
    where = run.add_mutually_exclusive_group()
    where.add_argument("--jobs", "-j", metavar="N", type=int, help="local processes at once (default: the CPUs)")
    where.add_argument("--dask", metavar="ADDRESS", help="run on the Dask scheduler at ADDRESS "
                       "(tcp://host:8786), or local:N to start a local cluster of N worker processes")
    where.add_argument("--slurm", action="store_true", help="submit one Slurm job array (DIR/sweep.sbatch) "
                       "with sbatch and wait for it; DIR must be on a file system the nodes share")
    run.add_argument("--no-wait", action="store_true", help="with --slurm: print the job id and return")
    run.add_argument("--hxrecord", metavar="PATH", help="the hxrecord program to run")
    run.add_argument("-q", "--quiet", action="store_true", help="no progress and no report")

    summary = commands.add_parser("summary", help="sum up a sweep's runs", description=wrap(
                                  "Writes DIR/summary.csv, one row per run: run, parameters, status, exit_status, "
                                  "message, then per chosen column (the sweep file's summary: columns:) LABEL:min, "
                                  ":max, :mean and :final; per manipulator power column LABEL:integral (J); per "
                                  "manipulator that follows a path Manip[m]:path:points, :path:reached, :path:all "
                                  "reached and :path:point K reached at (s). Runs that did not finish have no "
                                  "metrics. Prints the table in short (or the CSV with --csv)."), **common)
    summary.add_argument("folder", metavar="DIR", help="the sweep's folder")
    summary.add_argument("--columns", metavar="PATTERN", action="append",
                         help="column label pattern (*, ?) instead of the sweep file's; repeatable")
    summary.add_argument("--csv", action="store_true", help="print the whole CSV instead of the short table")

    plot = commands.add_parser("plot", help="draw a metric against a parameter", description=wrap(
                               "Draws one metric of the summary against one parameter, one line per combination "
                               "of the other parameters; runs that did not finish are left out."), **common)
    plot.add_argument("folder", metavar="DIR", help="the sweep's folder")
    plot.add_argument("--x", metavar="PARAM", required=True, help="a parameter (an option's '--' may be left out)")
    plot.add_argument("--y", metavar="METRIC", required=True, help="a metric column of the summary")
    plot.add_argument("-o", "--output", metavar="FILE", help="image: .png, .svg or .pdf (default DIR/plot.png)")

    one = commands.add_parser("run-one", help="run one run of a sweep's folder (a Slurm task)", description=wrap(
                              "Runs run I of the sweep in DIR and writes its record; what each task of the Slurm "
                              "job array runs. Exits with hxrecord's status."), **common)
    one.add_argument("folder", metavar="DIR", help="the sweep's folder")
    one.add_argument("index", metavar="I", type=int, help="the run's number")
    return parser


def _error(message):
    print(f"{PROGRAM}: error: {message}", file=sys.stderr)


def _plan(arguments):
    from .sweep import plan
    from .sweep._plan import display
    result = plan(arguments.sweep)
    names = result.parameter_names
    rows = [[run.name] + [display(run.parameters.get(name, result.defaults.get(name))) for name in names]
            for run in result.runs]
    header = ["run"] + names
    widths = [max(len(row[i]) for row in rows + [header]) for i in range(len(header))]
    template = f"; model template {Path(result.template).name}" if result.template else ""
    print(f"{len(result.runs)} runs of {arguments.sweep}{template}")
    for row in [header] + rows:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())
    return 0


def _describe(parameters):
    from .sweep._plan import display
    return ", ".join(f"{name} = {display(value)}" for name, value in parameters.items())


def _run(arguments):
    from .sweep import run
    if arguments.no_wait and not arguments.slurm:
        raise _Usage("--no-wait needs --slurm")
    outcome = run(arguments.sweep, arguments.out, jobs=arguments.jobs, dask=arguments.dask, slurm=arguments.slurm,
                  wait=not arguments.no_wait, hxrecord=arguments.hxrecord, quiet=arguments.quiet,
                  beside=Path(sys.argv[0]).resolve().parent)
    if outcome.job is not None and arguments.no_wait:
        print(f"Submitted Slurm job {outcome.job}: {len(outcome.records) or outcome.total - len(outcome.kept)} "
              f"run(s) as array tasks. When it has ended: hxsweep summary {arguments.out}")
        return 0
    failed = outcome.failed
    if not arguments.quiet:
        made = len(outcome.records)
        print(f"{outcome.total} runs in {arguments.out}: {made - len(failed)} finished now, {len(failed)} failed, "
              f"{len(outcome.kept)} finished before.")
        for entry in sorted(failed, key=lambda entry: entry["index"]):
            status = entry.get("exitStatus")
            how = f"exit status {status}" if status is not None else entry["status"]
            print(f"  {entry['name']} ({_describe(entry.get('parameters', {}))}): {how}: {entry.get('message')}")
        print(f"Summary: hxsweep summary {arguments.out}")
    return 1 if failed else 0


def _short(frame):
    """The summary's short form: run, parameters, status, exit status, the path and energy metrics."""
    import math

    import pandas as pd
    from .sweep._plot import parts
    parameters, metrics = parts(frame)
    shown = [name for name in metrics if name.endswith((":path:reached", ":path:all reached", ":integral"))]
    table = frame[["run"] + parameters + ["status", "exit_status"] + shown]

    def text(value):
        if value is None or value is pd.NA or (isinstance(value, float) and math.isnan(value)):
            return ""
        return f"{value:.4g}" if isinstance(value, float) else str(value)
    return table.applymap(text).to_string(index=False)


def _summary(arguments):
    from .sweep import summary
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        frame = summary(arguments.folder, columns=arguments.columns)
    for warning in caught:
        print(f"{PROGRAM}: warning: {warning.message}", file=sys.stderr)
    output = Path(arguments.folder) / "summary.csv"
    try:
        frame.to_csv(output, index=False)
    except OSError as error:
        from .sweep import SweepError
        raise SweepError(f"{output}: {error.strerror or error}") from None
    if arguments.csv:
        sys.stdout.write(frame.to_csv(index=False))
        return 0
    print(_short(frame))
    for _, row in frame[frame["status"].isin(["failed", "interrupted"])].iterrows():
        print(f"{row['run']}: {row['message']}")
    counts = frame["status"].value_counts()
    print(f"{len(frame)} runs ({', '.join(f'{count} {state}' for state, count in counts.items())}), "
          f"{len(frame.columns)} columns: {output}")
    return 0


def _plot(arguments):
    output = Path(arguments.output) if arguments.output else Path(arguments.folder) / "plot.png"
    if output.suffix.lower() not in (".png", ".svg", ".pdf"):
        raise _Usage(f"{output}: unknown image format '{output.suffix}' (.png, .svg or .pdf)")
    import matplotlib
    matplotlib.use("Agg")
    from .sweep import plot
    figure = plot(arguments.folder, arguments.x, arguments.y)
    try:
        figure.savefig(output)
    except OSError as error:
        from .sweep import SweepError
        raise SweepError(f"{output}: {error.strerror or error}") from None
    print(f"Plot: {output}")
    return 0


def _run_one(arguments):
    from .sweep import _run
    # A signal to this task (Slurm's at its time limit, scancel) is passed on to hxrecord, which finishes its files.
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda received, frame: _run.children.signal(received))
    entry = _run.run_case(arguments.folder, arguments.index)
    status = entry.get("exitStatus")
    return status if isinstance(status, int) and 0 <= status < 256 else 1


class _Usage(Exception):
    pass


def _raise_interrupt(number, frame):
    raise KeyboardInterrupt


def main(argv=None):
    arguments = _parser().parse_args(argv)
    from .sweep import SweepError
    signal.signal(signal.SIGTERM, _raise_interrupt)
    commands = {"plan": _plan, "run": _run, "summary": _summary, "plot": _plot, "run-one": _run_one}
    try:
        return commands[arguments.command](arguments)
    except _Usage as error:
        _error(f"{error}\n{PROGRAM}: see '{PROGRAM} {arguments.command} --help'")
        return 2
    except SweepError as error:
        _error(error)
        return error.status
    except KeyboardInterrupt:
        _error("interrupted")
        return 5
    except BrokenPipeError:  # the reader of the output went away (| head): nothing more to say
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return 1
    except ImportError as error:
        _error(f"{error.name or error} is needed and not installed (Debian packages python3-yaml, python3-jinja2; "
               f"python3-distributed for --dask)")
        return 3
    except OSError as error:
        where = f"{error.filename}: " if error.filename else ""
        _error(f"{where}{error.strerror or error}")
        return 3
    except Exception as error:  # never a traceback for the user
        _error(f"{type(error).__name__}: {error}")
        return 3


if __name__ == "__main__":
    sys.exit(main())
