"""Reads back the five files of one recording the way users read them, and checks they agree.

Usage: check_recording.py BASE   (BASE.csv, BASE.xml, BASE.mrd, BASE.m, BASE.nb)
"""
import csv
import math
import struct
import sys
import xml.etree.ElementTree as ElementTree


def fail(message):
    sys.exit(f"{BASE}: {message}")


BASE = sys.argv[1]

# CSV: a label row, then one row of numbers per sample, as wide as the labels.
with open(BASE + ".csv", newline="") as stream:
    rows = list(csv.reader(stream))
labels, samples = rows[0], rows[1:]
if labels[:2] != ["Time", "Point Path Index"]:
    fail(f"CSV label row starts {labels[:2]}")
if len(samples) < 2:
    fail(f"CSV holds {len(samples)} samples")
values = []
for number, row in enumerate(samples, start=2):
    if len(row) != len(labels):
        fail(f"CSV line {number} has {len(row)} fields for {len(labels)} labels")
    values.append([float(field) for field in row])
times = [row[0] for row in values]
if any(later <= earlier for earlier, later in zip(times, times[1:])):
    fail("CSV times do not increase")
if not all(math.isfinite(v) for row in values for v in row):
    fail("CSV holds a value that is not finite")
if all(row[2:] == values[0][2:] for row in values):
    fail("CSV values never change: nothing was simulated")

# MRD: an 80-character header "total<TAB>channels<TAB>samples<TAB>1000", the label line, then
# big-endian 32-bit floats, sample by sample; the same samples as the CSV.
with open(BASE + ".mrd", "rb") as stream:
    mrd = stream.read()
header = mrd[:80].decode("ascii").rstrip(" ").split("\t")
if len(header) != 4 or mrd[80:81] != b"\n":
    fail(f"MRD header {mrd[:81]!r}")
total, channels, count, rate = (int(field) for field in header)
end_of_labels = mrd.index(b"\n\n\n", 81) + 3
mrd_labels = mrd[81:end_of_labels].decode("utf-8").rstrip("\n").removesuffix("  -").split("  -  ")
data = mrd[end_of_labels:]
if (channels, count, rate) != (len(labels), len(samples), 1000) or total != channels * count:
    fail(f"MRD header {header} for {len(samples)} samples of {len(labels)} columns")
if [label.replace(" ", "_") for label in labels] != [label.replace(" ", "_") for label in mrd_labels]:
    fail("MRD labels differ from the CSV labels")
if len(data) != 4 * total:
    fail(f"MRD holds {len(data)} bytes of samples, {4 * total} expected")
floats = struct.unpack(f">{total}f", data)
for index, row in enumerate(values):
    for column, value in enumerate(row):
        expected = struct.unpack(">f", struct.pack(">f", value))[0]
        if floats[index * channels + column] != expected:
            fail(f"MRD sample {index} column {column}: {floats[index * channels + column]} for {value}")

# XML: a well-formed document.
ElementTree.parse(BASE + ".xml")

# MATLAB: the description and the data matrix are closed.
matlab = open(BASE + ".m").read()
if not matlab.startswith("Description=[") or "\nData=[" not in matlab or not matlab.rstrip().endswith("];"):
    fail("MATLAB file is not closed")
if matlab.count("\n") < len(samples):
    fail("MATLAB file holds fewer lines than samples")

# Mathematica: a notebook expression.
notebook = open(BASE + ".nb").read()
if "Notebook[" not in notebook or not notebook.rstrip().endswith(")"):
    fail("Mathematica file is not a notebook")

print(f"{BASE}: {len(samples)} samples of {len(labels)} columns, the five files agree")
