"""hxplot: draws a display description from a recording into an image file."""
import sys
import warnings
from pathlib import Path

from ._cli import HelpFormatter, Parser

PROGRAM = "hxplot"
FORMATS = (".png", ".svg", ".pdf")

DESCRIPTION = """\
Draws the plot a display description describes from a recorded file: scrollingCurve plots draw the
left capture's columns over time against the left axis and the right capture's against a right
axis; barChart plots draw the values of the last sample (or of the last sample at or before
--time) as bars. The recording is any file hxrecord writes (.csv, .xml, .mrd, .m, .nb, .h5) or its
manifest (BASE.json); with the manifest beside it, the axes carry the columns' units."""

EPILOG = """\
examples:
  hxplot examples/config/display_description.xml hxrecord-out/recording.csv -o plot.png
  hxplot display.xml hxrecord-out/recording.mrd -o bars.svg --time 2.5

exit status: 0 the plot was written, 1 a file could not be read or written, 2 bad usage."""


def _parser():
    from . import __version__
    parser = Parser(prog=PROGRAM, description=DESCRIPTION, epilog=EPILOG,
                    formatter_class=HelpFormatter)
    parser.add_argument("display", metavar="DISPLAY.xml", help="display description (displaySystemDataCapture)")
    parser.add_argument("recording", metavar="RECORDING", help="recorded file or manifest")
    parser.add_argument("-o", "--output", metavar="FILE",
                        help="image to write: .png, .svg or .pdf (default: RECORDING with .png)")
    parser.add_argument("-t", "--time", metavar="T", type=float,
                        help="draw up to time T in seconds (bar charts: the sample at or before T)")
    parser.add_argument("--version", action="version", version=f"{PROGRAM} {__version__}")
    return parser


def main(argv=None):
    arguments = _parser().parse_args(argv)
    output = Path(arguments.output) if arguments.output else Path(arguments.recording).with_suffix(".png")
    if output.suffix.lower() not in FORMATS:
        print(f"{PROGRAM}: error: {output}: unknown image format '{output.suffix}' (.png, .svg or .pdf)",
              file=sys.stderr)
        return 2
    try:
        import matplotlib
        matplotlib.use("Agg")
        from . import plot
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            figure = plot(arguments.display, arguments.recording, time=arguments.time)
        for warning in caught:
            print(f"{PROGRAM}: warning: {warning.message}", file=sys.stderr)
        figure.savefig(output)
    except OSError as error:
        where = f"{error.filename}: " if error.filename else ""
        print(f"{PROGRAM}: error: {where}{error.strerror or error}", file=sys.stderr)
        return 1
    except ValueError as error:
        print(f"{PROGRAM}: error: {error}", file=sys.stderr)
        return 1
    except Exception as error:  # never a traceback for the user
        print(f"{PROGRAM}: error: {type(error).__name__}: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
