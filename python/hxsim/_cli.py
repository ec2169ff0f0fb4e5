"""Command-line parts shared by the package's tools (hxplot, hxsweep)."""

import argparse


class HelpFormatter(argparse.RawDescriptionHelpFormatter):
    """Keeps the description's and the epilog's line breaks; the usage line reads "Usage: "."""

    def add_usage(self, usage, actions, groups, prefix=None):
        super().add_usage(usage, actions, groups, "Usage: " if prefix is None else prefix)


class Parser(argparse.ArgumentParser):
    """Bad usage as "TOOL: error: MESSAGE" and a pointer to the help of the command at fault,
    exit status 2; TOOL is the first word of the parser's program name."""

    def error(self, message):
        tool = self.prog.split()[0]
        self.exit(2, f"{tool}: error: {message}\n{tool}: see '{self.prog} --help'\n")
