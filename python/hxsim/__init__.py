"""hxsim: recordings of hxrecord and the libhxSimulationAnalysis writers, read into pandas.

    frame = hxsim.read("hxrecord-out/recording.csv")     # .csv .xml .mrd .m .nb .h5, or recording.json
    summary = hxsim.info("hxrecord-out/recording.mrd")
    figure = hxsim.plot("display_description.xml", frame)
    table = hxsim.sweep.summary("sweep-out")              # the runs of hxsweep (hxsim/sweep)
"""
from ._capture import Capture, CapturedType, DisplayDescription, parse_capture, read_capture, read_display
from ._plot import plot
from ._recording import info, read

__version__ = "3.0.0"


def __getattr__(name):
    # hxsim.sweep is loaded on first use: reading recordings needs none of it.
    if name == "sweep":
        import importlib
        return importlib.import_module(".sweep", __name__)
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")


__all__ = ["read", "info", "plot", "read_display", "read_capture", "parse_capture", "DisplayDescription",
           "Capture", "CapturedType", "__version__"]
