"""Gmsh's ``.msh`` files, formats 2.2 and 4.1, ASCII and binary, read with NumPy.

Every file Gmsh writes in these formats is taken, with physical groups on
some entities only and with ``Mesh.SaveAll`` or without. The file is mapped
into memory and each binary section becomes a few array views, so a binary
file of a million triangles reads in less time than meshio takes on a file it
can read (``python/bench/msh_speed.py``). From the file's blocks to this
package's ``Mesh``:

- nodes are all of the file's nodes, used or not (geometry points, a
  sphere's centre), numbered 0, 1, ... in increasing tag order; when the tags
  are not simply 1, 2, ... they are kept as the point data ``gmsh:node_tag``;
- the cells of all entities are gathered per kind, in file order; each cell
  carries its entity's tag (``gmsh:geometrical``) and physical tag
  (``gmsh:physical``) as cell data. Format 4.1 gives an element its entity's
  first physical group, format 2.2 the one the element lists; a cell outside
  every physical group gets 0;
- vertex and line cells are kept, not refused;
- ``$NodeData`` and ``$ElementData`` become point and cell data (NaN where a
  node or cell has no value); other sections are passed over.

The older versions Gmsh writes (1.0, 3.0, and 4.0, headed "4"), and format
2.2 with parametric nodes, raise ``Unsupported`` and are left to other
readers.
"""
from __future__ import annotations

import mmap
import os
import warnings
from typing import Callable, Dict, List, Optional, Tuple

import numpy as np

from .files import KINDS, FileError, Mesh, _to_library_order

#: Gmsh's element type numbers of the cells this package holds. Gmsh lists
#: quadratic nodes as VTK does.
GMSH_KINDS = {15: "vertex", 1: "line", 8: "line3", 2: "triangle", 3: "quad", 9: "triangle6", 16: "quad8",
              10: "quad9"}
#: Names of the other common types, for the message that refuses them.
_OTHER_KINDS = {4: "tetra", 5: "hexahedron", 6: "wedge", 7: "pyramid", 11: "tetra10", 12: "hexahedron27",
                13: "wedge18", 14: "pyramid14", 17: "hexahedron20", 21: "triangle10", 26: "line4", 36: "quad16"}

_INT = np.dtype("<i4")
_DOUBLE = np.dtype("<f8")


class Unsupported(FileError):
    """A ``.msh`` version this reader does not parse (1.0, 3.0, 4.0)."""


class _Binary:
    """Values taken in turn from the loaded file, as views where the dtype allows."""

    def __init__(self, data, pos: int, size_t: np.dtype):
        self.data, self.pos, self.size_t = data, pos, size_t

    def take(self, dtype, count: int) -> np.ndarray:
        dtype = np.dtype(dtype)
        if self.pos + dtype.itemsize * count > len(self.data):
            raise FileError("the file ends inside a section")
        values = np.frombuffer(self.data, dtype, count, self.pos)
        self.pos += values.nbytes
        return values

    def room(self) -> int:
        return len(self.data) - self.pos

    def report(self, report) -> None:
        report(self.pos / len(self.data))


class _Text:
    """Values taken in turn from an ASCII section parsed into one array of numbers."""

    def __init__(self, values: np.ndarray):
        self.values, self.pos = values, 0
        self.size_t = np.dtype(np.int64)

    def take(self, dtype, count: int) -> np.ndarray:
        if count < 0 or self.pos + count > len(self.values):
            raise FileError("a section holds fewer numbers than it announces")
        values = self.values[self.pos: self.pos + count]
        self.pos += count
        return values.astype(dtype, copy=False)

    def room(self) -> int:
        return len(self.values) - self.pos

    def report(self, report) -> None:
        pass  # the text was parsed, and its progress told, as a whole


def _kind(number: int) -> str:
    kind = GMSH_KINDS.get(int(number))
    if kind is None:
        name = _OTHER_KINDS.get(int(number), f"Gmsh element type {int(number)}")
        raise FileError(f"cells of type '{name}' are not surface, line or vertex cells")
    return kind


class _Blocks:
    """Cells per kind as they come, with their element, entity and physical tags."""

    def __init__(self):
        self.kinds: Dict[str, List[Tuple[np.ndarray, np.ndarray, np.ndarray, np.ndarray]]] = {}

    def add(self, kind, nodes, element_tags, entity, physical):
        n = len(nodes)
        entity = np.broadcast_to(np.asarray(entity, dtype=np.int64), (n,))
        physical = np.broadcast_to(np.asarray(physical, dtype=np.int64), (n,))
        self.kinds.setdefault(kind, []).append((nodes, element_tags, entity, physical))

    def joined(self, kind, field):
        return np.concatenate([np.asarray(block[field]) for block in self.kinds[kind]])


def load(path: str, progress: Optional[Callable[[float], None]] = None) -> Mesh:
    """Reads a ``.msh`` file of format 2.2 or 4.1; see the module's documentation.

    ``progress`` is called with the fraction of the file read so far, from 0
    to 1, a hundred times at most. Raises ``Unsupported`` for other versions and
    ``FileError`` for a file that is not a mesh this package can use.
    """
    report = _Throttle(progress)
    with open(path, "rb") as f:
        if os.fstat(f.fileno()).st_size == 0:
            raise FileError(f"{path}: the file is empty")
        # Mapped, not read: sections become views on the page cache, without
        # a copy of the whole file first.
        data = mmap.mmap(f.fileno(), 0, access=mmap.ACCESS_READ)
    try:
        mesh = _parse(data, report)
    except FileError as error:
        raise type(error)(f"{path}: {error}") from None
    except (ValueError, IndexError, KeyError, OverflowError) as error:
        raise FileError(f"{path}: not a readable .msh file ({error})") from None
    if progress is not None and report.last < 1.0:
        progress(1.0)
    return mesh


class _Throttle:
    def __init__(self, progress):
        self.progress, self.last = progress, -1.0

    def __call__(self, fraction: float):
        if self.progress is not None and fraction - self.last >= 0.01:
            self.last = fraction
            self.progress(min(fraction, 1.0))


def _line(data, pos: int) -> Tuple[str, int]:
    end = data.find(b"\n", pos)
    end = len(data) if end < 0 else end
    return data[pos:end].decode("utf-8", "replace").strip(), end + 1


def _parse(data, report) -> Mesh:
    pos, version, binary, size_t = 0, None, False, np.dtype("<u8")
    nodes = blocks = entities = None
    node_data, element_data = [], []
    while pos < len(data):
        line, pos = _line(data, pos)
        if not line:
            continue
        if not line.startswith("$"):
            raise FileError(f"unexpected line '{line[:40]}'")
        name = line[1:]
        if name == "MeshFormat":
            fields, pos = _line(data, pos)
            fields = fields.split()
            version, binary = fields[0], fields[1] == "1"
            if version not in ("2", "2.2", "4.1"):  # Gmsh writes 4.0 as "4"
                raise Unsupported(f"format {version} is read through meshio or Gmsh")
            size_t = np.dtype(f"<u{int(fields[2])}")
            if binary:
                if int(np.frombuffer(data, _INT, 1, pos)[0]) != 1:
                    raise FileError("a binary file of the other byte order")
                pos += 4
        elif version is None and name != "Comments":
            raise Unsupported("a file without $MeshFormat, of format 1.0")
        elif name == "Entities" and version == "4.1":
            reader = _section(data, pos, name, binary, size_t, float, report)
            entities = _entities(reader)
            pos = reader.pos if binary else pos
        elif name == "Nodes":
            reader = _section(data, pos, name, binary, size_t, float, report)
            nodes = _nodes4(reader, report) if version == "4.1" else _nodes2(reader, data, binary)
            pos = reader.pos if binary else pos
        elif name == "Elements":
            if not binary and not version == "4.1":
                blocks = _elements2_text(data, pos, report)
            else:
                reader = _section(data, pos, name, binary, size_t, np.int64, report)
                blocks = _elements4(reader, entities or {}, report) if version == "4.1" else \
                    _elements2_binary(reader, data)
                pos = reader.pos if binary else pos
        elif name == "ParametricNodes":  # format 2.2 with Mesh.SaveParametric
            raise Unsupported("nodes with their parametric coordinates are read through Gmsh")
        elif name in ("NodeData", "ElementData"):
            (node_data if name == "NodeData" else element_data).append(_values(data, pos, name, binary))
        end = data.find(b"$End" + name.encode(), pos)
        if end < 0:
            raise FileError(f"${name} is not closed by $End{name}")
        pos = end + len(name) + 4
        report(pos / len(data))
    if nodes is None or blocks is None:
        raise FileError("no $Nodes or no $Elements section")
    return _mesh(nodes, blocks, node_data, element_data)


def _numbers(data, start: int, end: int, dtype, report) -> np.ndarray:
    """The numbers of an ASCII stretch of the file, parsed a few megabytes at a time to report progress."""
    parts = []
    while start < end:
        stop = min(start + (8 << 20), end)
        cut = data.find(b"\n", stop, end) if stop < end else -1
        stop = end if cut < 0 else cut + 1
        with warnings.catch_warnings():  # text that is not a number ends the parse; the counts catch it
            warnings.simplefilter("ignore")
            parts.append(np.fromstring(data[start:stop], dtype=dtype, sep=" "))  # any whitespace separates
        start = stop
        report(start / len(data))
    return np.concatenate(parts) if parts else np.zeros(0, dtype)


def _section(data, pos, name, binary, size_t, dtype, report):
    """The section's reader: the binary data from ``pos``, or the ASCII text up to its end."""
    if binary:
        return _Binary(data, pos, size_t)
    end = data.find(b"$End" + name.encode(), pos)
    if end < 0:
        raise FileError(f"${name} is not closed by $End{name}")
    return _Text(_numbers(data, pos, end, dtype, report))


def _entities(reader) -> Dict[Tuple[int, int], int]:
    """The first physical tag of every entity that has one, by (dimension, tag)."""
    physical = {}
    counts = reader.take(reader.size_t, 4).astype(np.int64)
    for dim, count in enumerate(counts):
        for _ in range(int(count)):
            tag = int(reader.take(_INT, 1)[0])
            reader.take(_DOUBLE, 3 if dim == 0 else 6)
            n = int(reader.take(reader.size_t, 1)[0])
            groups = reader.take(_INT, n)
            if n:
                physical[(dim, tag)] = int(groups[0])
            if dim > 0:
                reader.take(_INT, int(reader.take(reader.size_t, 1)[0]))
    return physical


def _nodes4(reader, report) -> Tuple[np.ndarray, np.ndarray]:
    n_blocks, n_nodes = (int(v) for v in reader.take(reader.size_t, 4)[:2])
    if n_nodes > reader.room():
        raise FileError("more nodes announced than the file holds")
    tags = np.empty(n_nodes, dtype=np.int64)
    points = np.empty((n_nodes, 3))
    at = 0
    for _ in range(n_blocks):
        dim, _, parametric = (int(v) for v in reader.take(_INT, 3))
        count = int(reader.take(reader.size_t, 1)[0])
        if at + count > n_nodes:
            raise FileError("more nodes than $Nodes announces")
        tags[at: at + count] = reader.take(reader.size_t, count)
        # A parametric node also holds its place on a curve (u) or surface (u, v).
        width = 3 + (dim if parametric and dim < 3 else 0)
        points[at: at + count] = reader.take(_DOUBLE, count * width).reshape(count, width)[:, :3]
        at += count
        reader.report(report)
    if at != n_nodes:
        raise FileError("fewer nodes than $Nodes announces")
    return tags, points


def _nodes2(reader, data, binary) -> Tuple[np.ndarray, np.ndarray]:
    if binary:
        count, reader.pos = _line(data, reader.pos)
        records = reader.take(np.dtype([("tag", _INT), ("xyz", _DOUBLE, 3)]), int(count))
        return records["tag"].astype(np.int64), np.array(records["xyz"])
    count = int(reader.take(np.int64, 1)[0])
    table = reader.take(float, 4 * count).reshape(count, 4)
    return table[:, 0].astype(np.int64), np.ascontiguousarray(table[:, 1:])


def _elements4(reader, physical, report) -> _Blocks:
    blocks = _Blocks()
    n_blocks = int(reader.take(reader.size_t, 4)[0])
    for _ in range(n_blocks):
        dim, entity, number = (int(v) for v in reader.take(_INT, 3))
        count = int(reader.take(reader.size_t, 1)[0])
        kind = _kind(number)
        table = reader.take(reader.size_t, count * (1 + KINDS[kind])).reshape(count, 1 + KINDS[kind])
        blocks.add(kind, table[:, 1:], table[:, 0], entity, physical.get((dim, entity), 0))
        reader.report(report)
    return blocks


def _elements2_binary(reader, data) -> _Blocks:
    blocks = _Blocks()
    total, reader.pos = _line(data, reader.pos)
    total, seen = int(total), 0
    while seen < total:
        number, count, n_tags = (int(v) for v in reader.take(_INT, 3))
        kind = _kind(number)
        width = 1 + n_tags + KINDS[kind]
        if count == 1:
            # Gmsh writes a header before every element: take the whole run of
            # elements with the same header in one view.
            stride = 3 + width
            most = min(total - seen, (len(data) - reader.pos + 12) // (4 * stride))
            if most < 1:
                raise FileError("the file ends inside a section")
            run = np.frombuffer(data, _INT, most * stride, reader.pos - 12).reshape(most, stride)
            alike = (run[:, 0] == number) & (run[:, 1] == 1) & (run[:, 2] == n_tags)
            count = most if alike.all() else max(int(np.argmin(alike)), 1)
            table = run[:count, 3:]
            reader.pos += 4 * stride * count - 12
        else:
            table = reader.take(_INT, count * width).reshape(count, width)
        blocks.add(kind, table[:, 1 + n_tags:], table[:, 0], table[:, 2] if n_tags > 1 else 0,
                   table[:, 1] if n_tags > 0 else 0)
        seen += count
    return blocks


def _elements2_text(data, pos, report) -> _Blocks:
    """Format 2.2 in ASCII: one element a line, lines of any length, split without a loop over lines."""
    _, pos = _line(data, pos)  # the element count; the lines themselves tell it
    end = data.find(b"$EndElements", pos)
    raw = np.frombuffer(data, np.uint8, end - pos, pos)
    values = _numbers(data, pos, end, np.int64, report)
    blank = raw <= 32  # spaces, tabs and line ends
    starts = np.flatnonzero(~blank[1:] & blank[:-1]) + 1  # first byte of every number
    if len(raw) and not blank[0]:
        starts = np.r_[0, starts]
    if len(starts) != len(values):
        raise FileError("a value in $Elements is not a whole number")
    line_of = np.searchsorted(np.flatnonzero(raw == 10), starts)
    first = np.flatnonzero(np.r_[True, line_of[1:] != line_of[:-1]])  # first number of every line
    blocks = _Blocks()
    last = len(values) - 1
    numbers, n_tags = values[np.minimum(first + 1, last)], values[np.minimum(first + 2, last)]
    length = np.diff(np.r_[first, len(values)])
    for number in np.unique(numbers):
        kind, mine = _kind(number), first[numbers == number]
        tags = n_tags[numbers == number]
        if np.any(length[numbers == number] != 3 + tags + KINDS[kind]):
            raise FileError(f"an element line of type {int(number)} has too few or too many numbers")
        columns = mine[:, None] + 3 + tags[:, None] + np.arange(KINDS[kind])
        physical = np.where(tags > 0, values[np.minimum(mine + 3, last)], 0)
        entity = np.where(tags > 1, values[np.minimum(mine + 4, last)], 0)
        blocks.add(kind, values[columns], values[mine], entity, physical)
    return blocks


def _values(data, pos, name, binary) -> Tuple[str, np.ndarray, np.ndarray]:
    """A ``$NodeData`` or ``$ElementData`` section: its name, node or element tags, and values."""
    def number(text):
        return text.split()[0]
    count, pos = _line(data, pos)
    strings = []
    for _ in range(int(number(count))):
        text, pos = _line(data, pos)
        strings.append(text.strip('"'))
    count, pos = _line(data, pos)
    for _ in range(int(number(count))):
        _, pos = _line(data, pos)
    count, pos = _line(data, pos)
    integers = []
    for _ in range(int(number(count))):
        text, pos = _line(data, pos)
        integers.append(int(number(text)))
    if len(integers) < 3 or not strings:
        raise FileError(f"${name} without a name, a component count or an entry count")
    components, entries = integers[1], integers[2]
    end = data.find(b"$End" + name.encode(), pos)
    if end < 0:
        raise FileError(f"${name} is not closed by $End{name}")
    if binary:
        # The tag is an int in format 2.2 and a size_t in some 4.1 writers: the section's length tells.
        payload = (end - pos) // max(entries, 1)
        tag = _INT if payload < 8 + 8 * components else np.dtype("<u8")
        records = np.frombuffer(data, np.dtype([("tag", tag), ("v", _DOUBLE, (components,))]), entries, pos)
        tags, values = records["tag"].astype(np.int64), np.array(records["v"])
    else:
        table = _numbers(data, pos, end, float, lambda _: None)[: entries * (1 + components)]
        table = table.reshape(entries, 1 + components)
        tags, values = table[:, 0].astype(np.int64), table[:, 1:]
    return strings[0], tags, values


def _lookup(tags: np.ndarray, wanted: np.ndarray, what: str) -> np.ndarray:
    """Positions of ``wanted`` in the sorted ``tags``; a tag not among them is an error."""
    wanted = np.asarray(wanted)
    if not len(wanted):
        return np.zeros(wanted.shape, dtype=np.int64)
    if len(tags) and tags[0] == 1 and tags[-1] == len(tags):  # 1, 2, ..., n: the common case
        if wanted.dtype.kind == "i":  # negative tags become huge ones, refused below
            wanted = wanted.view(f"u{wanted.dtype.itemsize}")
        found = wanted - wanted.dtype.type(1)
        bad = found >= len(tags)
    else:
        wanted = wanted.astype(np.int64)
        found = np.minimum(np.searchsorted(tags, wanted), max(len(tags) - 1, 0))
        bad = tags[found] != wanted if len(tags) else np.ones(wanted.shape, dtype=bool)
    if bad.any():
        raise FileError(f"{what} {int(np.asarray(wanted)[bad].flat[0])} is not in the file")
    return found


def _mesh(nodes, blocks: _Blocks, node_data, element_data) -> Mesh:
    tags, points = nodes
    if len(tags) > 1 and not np.all(tags[1:] > tags[:-1]):
        order = np.argsort(tags, kind="stable")
        tags, points = tags[order], points[order]
        if np.any(tags[1:] == tags[:-1]):
            raise FileError(f"node tag {int(tags[1:][tags[1:] == tags[:-1]][0])} is given twice")
    cells, cell_data = {}, {"gmsh:physical": {}, "gmsh:geometrical": {}}
    element_tags = {}
    for kind in GMSH_KINDS.values():
        if kind not in blocks.kinds:
            continue
        ids = _lookup(tags, blocks.joined(kind, 0), "node tag").astype(np.uint32)
        cells[kind] = _to_library_order(kind, ids.reshape(-1, KINDS[kind]))
        if element_data:
            element_tags[kind] = blocks.joined(kind, 1).astype(np.int64)
        cell_data["gmsh:physical"][kind] = blocks.joined(kind, 3)
        cell_data["gmsh:geometrical"][kind] = blocks.joined(kind, 2)
    point_data = {}
    if not (len(tags) and tags[0] == 1 and tags[-1] == len(tags)):
        point_data["gmsh:node_tag"] = tags
    for name, which, values in node_data:
        out = point_data.get(name)
        if out is None or out.shape[1:] != values.shape[1:]:
            out = point_data[name] = np.full((len(points),) + values.shape[1:], np.nan)
        out[_lookup(tags, which, "node tag")] = values
    for name, which, values in element_data:
        by_kind = cell_data.setdefault(name, {})
        for kind, mine in element_tags.items():
            order = np.argsort(mine, kind="stable")
            at = np.minimum(np.searchsorted(mine[order], which), max(len(mine) - 1, 0))
            hit = mine[order][at] == which
            out = by_kind.setdefault(kind, np.full((len(mine),) + values.shape[1:], np.nan))
            out[order[at[hit]]] = values[hit]
    if "gmsh:node_tag" in point_data:  # written back by this package: the tags of the file it came from
        point_data["gmsh:node_tag"] = point_data["gmsh:node_tag"].astype(np.int64)
    for data in (point_data, *cell_data.values()):
        for name, values in data.items():
            if values.ndim == 2 and values.shape[1] == 1:
                data[name] = values[:, 0]
    return Mesh(points, cells, point_data, cell_data)
