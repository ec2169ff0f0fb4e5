"""The sweep file and the plan made from it: the runs, each with its parameters, its hxrecord
command and (for a model template) its filled model.

A sweep file is YAML (JSON is YAML too):

    base:           hxrecord's options for every run, by their long names without "--"
    values:         the model template's values for every run
    parameters:     grid (every combination), cases (a list) and random (seeded draws)
    summary:        columns: label patterns whose minimum, maximum, mean and final value the
                    summary gives
    slurm:          sbatch options of the job array (a list)

A parameter whose name starts with "--" is an hxrecord option, any other name a template value.
"""
import hashlib
import math
import random
import re
from dataclasses import dataclass, field
from pathlib import Path

from ._errors import SweepError

# hxrecord's options a sweep may set: flags take true or false, the others one value.
FLAGS = {"capture-all"}
VALUED = {"model", "capture", "writers", "formats", "write-capture", "scene", "plot", "duration",
          "sample-interval", "dwell", "mode"}
FILES = {"model", "capture", "writers", "write-capture", "scene", "plot"}
# Options hxsweep sets itself or that record nothing.
RESERVED = {"output": "each run's output is DIR/run-NNNN/recording", "quiet": "hxsweep always passes it",
            "check": "it records nothing", "list-types": "it records nothing", "version": "it records nothing",
            "help": "it records nothing"}
SHORT = {"m": "model", "c": "capture", "w": "writers", "d": "duration", "s": "sample-interval", "o": "output",
         "q": "quiet", "h": "help"}
TOP_KEYS = ("base", "values", "parameters", "summary", "slurm")
TEMPLATE_SUFFIX = ".j2"
TEMPLATE_DIR = "template_dir"   # the template's folder, a value every template gets


@dataclass
class Run:
    index: int
    name: str                 # run-NNNN, the run's folder under the sweep's folder
    parameters: dict          # the parameters this run sets, in the sweep's order
    options: list             # hxrecord's arguments but the output
    model_name: str = None    # the filled model's file name in the run's folder (templates only)
    model_text: str = None

    def command(self, hxrecord, folder):
        """hxrecord's command line of this run, writing into `folder` (the run's folder)."""
        options = list(self.options)
        if self.model_name is not None:
            options = ["--model", str(Path(folder) / self.model_name)] + options
        return [str(hxrecord), "-q"] + options + ["--output", str(Path(folder) / "recording")]

    def key(self):
        """What must be unchanged for a finished run to count as done."""
        text = (self.model_text or "").encode()
        return {"parameters": self.parameters, "options": self.options,
                "modelSha256": hashlib.sha256(text).hexdigest() if self.model_text is not None else None}


@dataclass
class Plan:
    file: str                       # the sweep file
    parameter_names: list           # every parameter, in the order the sweep names them
    defaults: dict                  # each parameter's value where a run does not set it (None: hxrecord's default)
    runs: list
    columns: list = field(default_factory=list)   # summary: label patterns
    slurm: list = field(default_factory=list)     # sbatch options
    template: str = None            # the model template, when the model is one

    def to_json(self):
        return {"format": "hxsweep-plan", "formatVersion": 1, "sweep": self.file, "template": self.template,
                "parameterNames": self.parameter_names, "defaults": self.defaults,
                "summary": {"columns": self.columns}, "slurm": self.slurm,
                "runs": [{"index": run.index, "name": run.name, "parameters": run.parameters,
                          "options": run.options, "modelName": run.model_name, "modelText": run.model_text}
                         for run in self.runs]}

    @classmethod
    def from_json(cls, data):
        runs = [Run(entry["index"], entry["name"], entry["parameters"], entry["options"], entry.get("modelName"),
                    entry.get("modelText")) for entry in data["runs"]]
        return cls(data.get("sweep"), data["parameterNames"], data.get("defaults", {}), runs,
                   data.get("summary", {}).get("columns", []), data.get("slurm", []), data.get("template"))


def _where(path, what):
    return f"{path}: {what}"


def _read(path):
    import yaml
    try:
        text = Path(path).read_text(encoding="utf-8")
    except OSError as error:
        raise SweepError(f"{path}: {error.strerror or error}", status=2) from None
    try:
        data = yaml.safe_load(text)
    except yaml.YAMLError as error:
        mark = getattr(error, "problem_mark", None)
        where = f"{path}:{mark.line + 1}:{mark.column + 1}" if mark is not None else str(path)
        problem = getattr(error, "problem", None) or str(error)
        raise SweepError(f"{where}: not a valid sweep file: {problem}", status=2) from None
    if not isinstance(data, dict):
        raise SweepError(_where(path, "a sweep file is a mapping with the keys " + ", ".join(TOP_KEYS)), status=2)
    return data


def _option_name(path, name, where):
    """The long name of an hxrecord option written `name` in `where` (without or with its "--")."""
    bare = name[2:] if name.startswith("--") else name
    if bare.startswith("-") or (len(bare) == 1 and bare in SHORT):
        long = SHORT.get(bare.lstrip("-"))
        hint = f": write its long name '{long}'" if long else ""
        raise SweepError(_where(path, f"{where}: unknown hxrecord option '{name}'{hint}"), status=2)
    if bare in RESERVED:
        raise SweepError(_where(path, f"{where}: hxrecord's '--{bare}' cannot be set: {RESERVED[bare]}"), status=2)
    if bare not in FLAGS and bare not in VALUED:
        close = _close(bare, sorted(FLAGS | VALUED))
        raise SweepError(_where(path, f"{where}: unknown hxrecord option '{name}'{close}"), status=2)
    return bare


def _close(name, known):
    import difflib
    match = difflib.get_close_matches(name, known, n=1)
    return f"; did you mean '{match[0]}'?" if match else f"; known: {', '.join(known)}"


def _scalar(path, where, value):
    """A parameter's or option's value: text, a finite number or true/false (kept as JSON keeps them)."""
    if not isinstance(value, (str, int, float)) or (isinstance(value, float) and not math.isfinite(value)):
        raise SweepError(_where(path, f"{where}: expected a number, a text or true/false, found {_kind(value)}"),
                         status=2)
    return value


def _kind(value):
    if isinstance(value, float):
        return str(value)
    return {dict: "a mapping", list: "a list", type(None): "nothing"}.get(type(value), f"a {type(value).__name__}")


def _text(value):
    """A value as hxrecord's command line or a template takes it."""
    if isinstance(value, float):
        return repr(value) if math.isfinite(value) else str(value)
    return str(value)


def _option_arguments(path, options, folder):
    """hxrecord's arguments for a mapping of long option names to values (files made absolute from `folder`)."""
    arguments = []
    for name, value in options.items():
        if name in FLAGS:
            if not isinstance(value, bool):
                raise SweepError(_where(path, f"option '{name}' is a flag: give it true or false"), status=2)
            if value:
                arguments.append(f"--{name}")
            continue
        if isinstance(value, bool):
            raise SweepError(_where(path, f"option '{name}' takes a value, not {str(value).lower()}"), status=2)
        text = _text(value)
        if name in FILES:
            text = str((folder / text).resolve()) if text else text
        arguments += [f"--{name}", text]
    return arguments


def _grid(path, grid):
    if not isinstance(grid, dict):
        raise SweepError(_where(path, f"parameters: grid: expected a mapping of names to lists, found {_kind(grid)}"),
                         status=2)
    cases = [{}]
    for name, values in grid.items():
        if not isinstance(values, list) or not values:
            raise SweepError(_where(path, f"parameters: grid: {name}: expected a non-empty list of values"), status=2)
        values = [_scalar(path, f"parameters: grid: {name}", value) for value in values]
        cases = [dict(case, **{name: value}) for case in cases for value in values]
    return cases


def _cases(path, cases):
    if not isinstance(cases, list) or not all(isinstance(case, dict) for case in cases):
        raise SweepError(_where(path, "parameters: cases: expected a list of mappings of names to values"), status=2)
    return [{name: _scalar(path, f"parameters: cases[{i}]: {name}", value) for name, value in case.items()}
            for i, case in enumerate(cases)]


def _random(path, block):
    """`count` draws with Python's Mersenne Twister seeded with `seed`: per draw, each parameter in the file's
    order takes one number in [0, 1), so the draws are the same on every machine and Python version."""
    where = "parameters: random"
    if not isinstance(block, dict) or set(block) - {"seed", "count", "draw"} or "draw" not in block:
        raise SweepError(_where(path, f"{where}: expected a mapping of seed, count and draw"), status=2)
    seed, count, draw = block.get("seed", 0), block.get("count"), block["draw"]
    for name, value in (("seed", seed), ("count", count)):
        if not isinstance(value, int) or isinstance(value, bool) or value < (1 if name == "count" else 0):
            raise SweepError(_where(path, f"{where}: {name}: expected a whole number"
                                          f"{' >= 1' if name == 'count' else ' >= 0'}, found {value!r}"), status=2)
    if not isinstance(draw, dict) or not draw:
        raise SweepError(_where(path, f"{where}: draw: expected a mapping of names to distributions"), status=2)
    makers = {}
    for name, distribution in draw.items():
        here = f"{where}: draw: {name}"
        if not isinstance(distribution, dict) or len(distribution) != 1:
            raise SweepError(_where(path, f"{here}: expected one of {{uniform: [low, high]}}, "
                                          f"{{log-uniform: [low, high]}}, {{choice: [values]}}"), status=2)
        kind, arguments = next(iter(distribution.items()))
        if kind == "choice":
            if not isinstance(arguments, list) or not arguments:
                raise SweepError(_where(path, f"{here}: choice: expected a non-empty list of values"), status=2)
            choices = [_scalar(path, f"{here}: choice", value) for value in arguments]
            makers[name] = lambda u, choices=choices: choices[min(int(u * len(choices)), len(choices) - 1)]
            continue
        if kind not in ("uniform", "log-uniform"):
            raise SweepError(_where(path, f"{here}: unknown distribution '{kind}' (uniform, log-uniform, choice)"),
                             status=2)
        numbers = isinstance(arguments, list) and len(arguments) == 2 and all(
            isinstance(value, (int, float)) and not isinstance(value, bool) and math.isfinite(value)
            for value in arguments)
        if not numbers or not arguments[0] < arguments[1] or (kind == "log-uniform" and arguments[0] <= 0):
            need = "0 < low < high" if kind == "log-uniform" else "low < high"
            raise SweepError(_where(path, f"{here}: {kind}: expected [low, high], two numbers with {need}"), status=2)
        low, high = float(arguments[0]), float(arguments[1])
        if kind == "uniform":
            makers[name] = lambda u, low=low, high=high: low + (high - low) * u
        else:
            makers[name] = lambda u, low=math.log(low), high=math.log(high): math.exp(low + (high - low) * u)
    generator = random.Random(seed)
    return [{name: make(generator.random()) for name, make in makers.items()} for _ in range(count)]


def _template(path, model):
    import jinja2
    import jinja2.meta
    try:
        text = model.read_text(encoding="utf-8")
    except OSError as error:
        raise SweepError(f"{model}: cannot read the model template: {error.strerror or error}", status=2) from None
    environment = jinja2.Environment(undefined=jinja2.StrictUndefined, keep_trailing_newline=True, autoescape=False)
    try:
        names = jinja2.meta.find_undeclared_variables(environment.parse(text))
        template = environment.from_string(text)
    except jinja2.TemplateSyntaxError as error:
        raise SweepError(f"{model}:{error.lineno}: not a valid template: {error.message}", status=2) from None
    return template, names


def _fill(model, template, values, run_name):
    import jinja2
    try:
        return template.render(**values)
    except jinja2.UndefinedError as error:
        raise SweepError(f"{model}: {run_name}: {error.message}; give it under 'values:' or as a parameter",
                         status=2) from None
    except Exception as error:  # a template's own expression failed (a division by zero, a bad filter)
        raise SweepError(f"{model}: {run_name}: the template cannot be filled: {error}", status=2) from None


def load(path):
    """The plan of the sweep file `path` (a SweepError with status 2 says what is wrong with it)."""
    path = Path(path)
    data = _read(path)
    unknown = [key for key in data if key not in TOP_KEYS]
    if unknown:
        raise SweepError(_where(path, f"unknown key '{unknown[0]}'; a sweep file has {', '.join(TOP_KEYS)}"), status=2)
    folder = path.resolve().parent
    base = data.get("base") or {}
    values = data.get("values") or {}
    parameters = data.get("parameters") or {}
    summary = data.get("summary") or {}
    for key, value in (("base", base), ("values", values), ("parameters", parameters), ("summary", summary)):
        if not isinstance(value, dict):
            raise SweepError(_where(path, f"{key}: expected a mapping, found {_kind(value)}"), status=2)
    base = {_option_name(path, name, "base"): _scalar(path, f"base: {name}", value) for name, value in base.items()}
    values = {str(name): _scalar(path, f"values: {name}", value) for name, value in values.items()}

    unknown = [key for key in parameters if key not in ("grid", "cases", "random")]
    if unknown:
        raise SweepError(_where(path, f"parameters: unknown key '{unknown[0]}'; expected grid, cases or random"),
                         status=2)
    cases = []
    if "grid" in parameters:
        cases += _grid(path, parameters["grid"])
    if "cases" in parameters:
        cases += _cases(path, parameters["cases"])
    if "random" in parameters:
        cases += _random(path, parameters["random"])
    if not cases:
        cases = [{}]
    names = list(dict.fromkeys(str(name) for case in cases for name in case))

    model = base.get("model")
    template = names_used = None
    if model is not None and str(model).endswith(TEMPLATE_SUFFIX):
        model_path = (folder / str(model)).resolve()
        template, names_used = _template(path, model_path)
        del base["model"]
    template_names = [name for name in names if not name.startswith("--")]
    for name in template_names + list(values):
        if template is None:
            raise SweepError(_where(path, f"'{name}' is a template value (hxrecord options start with '--'), but the "
                                          f"model is no template (a model file ending in {TEMPLATE_SUFFIX})"), status=2)
        if name not in names_used:
            used = ", ".join(sorted(names_used - {TEMPLATE_DIR})) or "none"
            raise SweepError(_where(path, f"the template {model} does not use '{name}' (its values: {used})"),
                             status=2)
    option_names = {name: _option_name(path, name, "parameters") for name in names if name.startswith("--")}
    if template is not None and "model" in option_names.values():
        raise SweepError(_where(path, "the model is a template: a parameter cannot set '--model' too"), status=2)

    columns = summary.get("columns", [])
    if set(summary) - {"columns"} or not isinstance(columns, list) or not all(isinstance(c, str) for c in columns):
        raise SweepError(_where(path, "summary: expected 'columns:', a list of column label patterns"), status=2)
    slurm = data.get("slurm") or []
    if not isinstance(slurm, list) or not all(isinstance(option, str) for option in slurm):
        raise SweepError(_where(path, "slurm: expected a list of sbatch options (e.g. --partition=short)"), status=2)

    width = max(4, len(str(len(cases) - 1)))
    runs = []
    for index, case in enumerate(cases):
        name = f"run-{index:0{width}d}"
        options = dict(base)
        options.update({option_names[key]: _scalar(path, f"parameters: {key}", value)
                        for key, value in case.items() if key.startswith("--")})
        arguments = _option_arguments(path, options, folder)
        run = Run(index, name, dict(case), arguments)
        if template is not None:
            filled = dict(values, **{key: value for key, value in case.items() if not key.startswith("--")})
            filled.setdefault(TEMPLATE_DIR, str(model_path.parent))
            run.model_name = model_path.name[:-len(TEMPLATE_SUFFIX)]
            run.model_text = _fill(model_path, template, filled, name)
        runs.append(run)

    defaults = {}
    for name in names:
        if name.startswith("--"):
            option = option_names[name]
            defaults[name] = base.get(option, False if option in FLAGS else None)
        else:
            defaults[name] = values.get(name)
    return Plan(str(path), names, defaults, runs, columns, slurm, str(model_path) if template is not None else None)


def _pattern(pattern):
    # Only * and ? are wild: the labels' own brackets (Manip[0], EE[1]) stand for themselves.
    return re.compile("".join(".*" if c == "*" else "." if c == "?" else re.escape(c) for c in pattern), re.S)


def matching(labels, patterns):
    """The labels that match any of the patterns (* any text, ? one character), in the labels' order."""
    compiled = [_pattern(pattern) for pattern in patterns]
    return [label for label in labels if any(pattern.fullmatch(label) for pattern in compiled)]


def display(value):
    """A parameter's value as a table shows it."""
    if value is None:
        return ""
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, float):
        return f"{value:.6g}"
    return str(value)
