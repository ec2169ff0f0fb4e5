"""Readers of the six recording formats.

Each reader returns a Table: the labels as the file holds them (CSV, MATLAB and Mathematica files
name every column of the capture's full size, so disabled columns leave empty labels at the end;
MRD labels have their blanks made "_"), the whole samples as a 2-D array (time first, then the
path-point index, then the data columns), and whether the file was finished. A file whose
recording was cut short is read up to its last whole sample.
"""
import io
import itertools
import os
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass

import numpy as np
import pandas as pd

from ._capture import _NS, parse_capture

_CHUNK = 1 << 16


@dataclass
class Table:
    labels: list          # as the file names its columns (see the module's description)
    values: np.ndarray    # samples x columns
    finished: bool        # False when the file shows that its recording was cut short
    underscored: bool = False   # labels hold "_" for blanks (MRD)
    exact_labels: bool = False  # one label per data column, disabled columns already left out (XML, HDF5)
    units: list = None          # one unit per column, when the file names them (HDF5)


class _Slice(io.RawIOBase):
    """The bytes [start, end) of an open binary file, as a stream of their own."""

    def __init__(self, stream, start, end):
        super().__init__()
        self._stream, self._left = stream, end - start
        stream.seek(start)

    def readable(self):
        return True

    def readinto(self, buffer):
        size = min(len(buffer), self._left)
        if size <= 0:
            return 0
        got = self._stream.readinto(memoryview(buffer)[:size])
        self._left -= got
        return got


def _after_last(stream, start, end, token):
    """Offset just after the last `token` in [start, end) of the stream; `start` when there is none."""
    position = end
    while position > start:
        begin = max(start, position - _CHUNK)
        stream.seek(begin)
        chunk = stream.read(min(end, position + len(token) - 1) - begin)
        found = chunk.rfind(token)
        if found >= 0:
            return begin + found + len(token)
        position = begin
    return start


def _parse_rows(stream, start, end, **options):
    """The numbers of the text rows in [start, end), as a float64 array (0 rows when empty)."""
    if end <= start:
        return None
    source = io.BufferedReader(_Slice(stream, start, end), _CHUNK)
    frame = pd.read_csv(source, header=None, dtype=np.float64, float_precision="round_trip", **options)
    return frame.to_numpy(dtype=np.float64)


def _table(labels, rows, finished):
    if rows is None:
        rows = np.empty((0, sum(1 for label in labels if label) or len(labels)))
    return Table(labels, rows, finished)


def _readline(stream, what, path):
    line = stream.readline()
    if not line.endswith(b"\n"):
        raise ValueError(f"{path}: the file ends inside its {what}: no sample was written")
    return line[:-1].decode("utf-8")


def read_csv(path):
    """Comma-separated text: a label line, then one line of values per sample."""
    with open(path, "rb") as stream:
        labels = _readline(stream, "label line", path).split(",")
        start, size = stream.tell(), os.fstat(stream.fileno()).st_size
        end = _after_last(stream, start, size, b"\n")
        rows = _parse_rows(stream, start, end)
    return _table(labels, rows, end == size)


def read_matlab(path):
    """MATLAB script: Description=[ quoted labels ]; Data=[ rows, each ending in ";" ];"""
    with open(path, "rb") as stream:
        if _readline(stream, "description", path) != "Description=[":
            raise ValueError(f"{path}: not a MATLAB recording (no Description=[ at its start)")
        line = _readline(stream, "description", path)
        labels = [label[1:-1] if len(label) >= 2 and label[0] == label[-1] == "'" else label
                  for label in line.split("\t")]
        if _readline(stream, "description", path) != "];":
            raise ValueError(f"{path}: the description of the columns is not closed by ];")
        size = os.fstat(stream.fileno()).st_size
        opening = stream.readline()
        if opening != b"Data=[\n":
            if b"Data=[\n".startswith(opening):
                return _table(labels, None, False)
            raise ValueError(f"{path}: no Data=[ after the description")
        start = stream.tell()
        stream.seek(max(start, size - 4))
        tail = stream.read()
        finished = tail.endswith(b"\n];\n") or (size - start == 3 and tail.endswith(b"];\n"))
        end = size - 3 if finished else _after_last(stream, start, size, b";\n")
        rows = _parse_rows(stream, start, end, sep="\t", comment=";")
    return _table(labels, rows, finished)


_NB_DATA = b"    \\(\\(Data = {\n"
_NB_TRAILER = b"};\\)\\)]"


def read_mathematica(path):
    """Mathematica notebook: Data = { {"labels"}, then ,{values} per sample };"""
    with open(path, "rb") as stream:
        for line in stream:
            if line == _NB_DATA:
                break
        else:
            raise ValueError(f"{path}: not a Mathematica recording (no Data = {{ cell)")
        line = _readline(stream, "label line", path)
        if not (line.startswith("{") and line.endswith("}")):
            raise ValueError(f"{path}: malformed label line")
        labels = [label.strip('"') for label in line[1:-1].split(" ,")]
        start, size = stream.tell(), os.fstat(stream.fileno()).st_size
        stream.seek(max(start, size - 4096))
        tail = stream.read()
        trailer = tail.rfind(b"\n" + _NB_TRAILER)
        if trailer >= 0:
            end, finished = size - len(tail) + trailer + 1, True
        else:
            end, finished = _after_last(stream, start, size, b"}\n"), False
        if tail.startswith(_NB_TRAILER) and size - len(tail) == start:
            end, finished = start, True
        stream.seek(start)
        text = stream.read(end - start).translate(None, b"{} ")
    rows = None
    if text:
        rows = pd.read_csv(io.BytesIO(text), header=None, dtype=np.float64,
                           float_precision="round_trip").to_numpy()[:, 1:]
    return _table(labels, rows, finished)


def _layout_fits(values, width):
    """Whether `values` read as samples of `width` values start each sample as a recording does:
    a finite time that never decreases, then a whole, non-negative path-point index."""
    count = len(values) // width
    if width < 2:
        return False
    samples = values[:count * width].reshape(count, width)
    times, indices = samples[:, 0], samples[:, 1]
    with np.errstate(invalid="ignore"):
        return bool(np.isfinite(times).all() and (np.diff(times) >= 0).all() and np.isfinite(indices).all()
                    and (indices >= 0).all() and (np.floor(indices) == indices).all())


def read_mrd(path, widths=()):
    """MRD: an 80-column header line ("total<TAB>channels<TAB>samples<TAB>1000", blank until the
    recording finished), the label line ("label  -  label  -  ...  -", blanks made "_") closed by
    three line ends, then big-endian float32 values sample by sample.

    `widths` are values per sample known from elsewhere (the manifest, the XML file), tried first.
    """
    with open(path, "rb") as stream:
        head = stream.read(81)
        if len(head) < 81 or head[80:81] != b"\n":
            raise ValueError(f"{path}: not an MRD file (no 80-column header line)")
        header_text = head[:80].decode("ascii", "replace").strip(" ")
        header = None
        if header_text:
            try:
                header = [int(float(field)) for field in header_text.split("\t")]
            except ValueError:
                header = None
            if header is None or len(header) != 4:
                raise ValueError(f"{path}: MRD header is neither blank nor four numbers: {header_text!r}")
        label_bytes = b""
        while True:
            chunk = stream.read(_CHUNK)
            label_bytes += chunk
            found = label_bytes.find(b"\n\n\n")
            if found >= 0:
                break
            if not chunk:
                raise ValueError(f"{path}: the file ends inside its label line: no sample was written")
        line = label_bytes[:found].decode("utf-8")
        if not line.endswith("  -"):
            raise ValueError(f"{path}: malformed MRD label line")
        labels = line[:-3].split("  -  ")
        stream.seek(81 + found + 3)
        data = stream.read()
        data = np.frombuffer(data[:len(data) // 4 * 4], dtype=">f4")
    total = len(data)
    finished = header is not None
    width = None
    if header is not None:
        _, channels, samples, _ = header
        if channels * samples == total and channels >= 2:
            width = channels
        elif samples > 0 and total % samples == 0:
            width = total // samples       # columns were disabled: fewer values than labels
        else:
            finished = False
    if width is None:
        known = sum(1 for label in labels if label)
        candidates = itertools.chain(widths, [known])
        width = next((w for w in candidates if w and w >= 2 and _layout_fits(data, w)), None)
    if width is None:
        fitting = [w for w in range(2, max(len(labels), 2) + 1) if total % w == 0 and _layout_fits(data, w)]
        if not fitting:
            fitting = [w for w in range(2, max(len(labels), 2) + 1) if total >= w and _layout_fits(data, w)]
        if len(fitting) != 1:
            raise ValueError(f"{path}: cannot tell how many values each sample holds "
                             f"({total} values fit {fitting or 'no'} layouts)")
        width = fitting[0]
    count = total // width
    if count * width != total:
        finished = False
    values = data[:count * width].reshape(count, width).astype(np.float32)
    return Table(labels, values, finished, underscored=True)


def read_xml(path):
    """XML: the capture configuration (generalCapture), then one generalStorage element per sample
    holding the values of the enabled columns in column order, then the time and the path-point index.
    Read incrementally, each sample's elements dropped once read."""
    rows, capture, finished = [], None, False
    with open(path, "rb") as stream:
        parser = ElementTree.iterparse(stream, events=("start", "end"))
        root = None
        try:
            for event, element in parser:
                if root is None:
                    root = element
                if event != "end":
                    continue
                if element.tag == _NS + "generalStorage":
                    row = [float(element.findtext(_NS + "time")), float(element.findtext(_NS + "pathPointIndex"))]
                    vector = element.find(_NS + "manipulatorDataVector")
                    if vector is not None:
                        for group in vector.iter("group"):
                            row.extend(float(value) for value in (group.text or "").split())
                    rows.append(row)
                    root.clear()
                elif element.tag == _NS + "generalCapture":
                    capture = parse_capture(element)
                    root.clear()
                elif element is root:
                    finished = True
        except ElementTree.ParseError as error:
            if not _error_at_end(path, error):
                raise ValueError(f"{path}: malformed XML: {error}") from None
    if capture is None:
        raise ValueError(f"{path}: no capture configuration (generalCapture) before the file ends")
    labels = ["Time", "Point Path Index"] + capture.columns()
    width = len(rows[0]) if rows else len(labels)
    if any(len(row) != width for row in rows):
        raise ValueError(f"{path}: the samples hold different numbers of values")
    values = np.array(rows, dtype=np.float64).reshape(len(rows), width)
    return Table(labels, values, finished, exact_labels=True)


def _error_at_end(path, error):
    """Whether an XML parse error lies on the file's last line: the file was cut short there."""
    line = getattr(error, "position", (0, 0))[0]
    with open(path, "rb") as stream:
        lines = sum(chunk.count(b"\n") for chunk in iter(lambda: stream.read(_CHUNK), b""))
    return line >= lines


def capture_of_xml(path):
    """The capture configuration at the start of a recording's XML file; None when it has none.
    Reads no further than the end of that element."""
    try:
        with open(path, "rb") as stream:
            for _, element in ElementTree.iterparse(stream, events=("end",)):
                if element.tag == _NS + "generalCapture":
                    return parse_capture(element)
                if element.tag == _NS + "generalStorage":
                    return None
    except (OSError, ElementTree.ParseError, ValueError):
        return None
    return None


def _texts(values):
    return [value.decode("utf-8") if isinstance(value, bytes) else str(value) for value in values]


def read_hdf5(path):
    """HDF5 (needs h5py): the float64 dataset "samples" (samples x columns) and its "labels" and
    "units" attributes, one per column. A file whose writer did not close it (killed, or still
    writing) opens only in HDF5's SWMR read mode; it is read up to its last flushed chunk and counts
    as not finished."""
    try:
        import h5py
    except ImportError:
        raise ImportError(f"{path}: reading an HDF5 recording needs h5py (Debian: python3-h5py)") from None
    try:
        handle, finished = h5py.File(path, "r"), True
    except OSError:
        try:
            handle, finished = h5py.File(path, "r", swmr=True), False
        except OSError as error:
            raise ValueError(f"{path}: not a readable HDF5 file: {error}") from None
    with handle:
        samples = handle.get("samples")
        if samples is None or len(samples.shape) != 2:
            raise ValueError(f"{path}: no two-dimensional dataset 'samples'")
        values = samples[()].astype(np.float64, copy=False)
        labels = _texts(samples.attrs.get("labels", []))
        units = _texts(samples.attrs.get("units", []))
    width = values.shape[1]
    return Table(labels if len(labels) == width else [], values, finished, exact_labels=True,
                 units=units if len(units) == width else None)


READERS = {".csv": read_csv, ".m": read_matlab, ".mrd": read_mrd, ".xml": read_xml, ".nb": read_mathematica,
           ".h5": read_hdf5}
FORMATS = {".csv": "csv", ".m": "matlab", ".mrd": "mrd", ".xml": "xml", ".nb": "mathematica", ".h5": "hdf5"}
