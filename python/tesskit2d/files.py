"""Mesh files: a small ``Mesh`` value, ``read`` and ``write``.

Files go through meshio (Debian's ``python3-meshio``), but for Gmsh's
``.msh`` files of format 2.2 and 4.1, which this package reads itself with
NumPy (``msh``): meshio refuses the files Gmsh writes with physical groups on
some entities only (what ``Mesh.SaveAll`` writes) and binary 2.2 files with
gaps in their node tags. Other ``.msh`` versions go to meshio, then to Gmsh's
own reader (``gmsh_files``, Debian's ``python3-gmsh``).

Cells are held in this library's node order, one block per kind:
``vertex``, ``line``, ``line3``, ``triangle``, ``quad``, ``triangle6``,
``quad8``, ``quad9``. The surface cells become the one connectivity the
library reads with ``Mesh.surface()``: triangles and quadrangles together
in the mixed form (``null_id`` in the rows a triangle lacks), and back with
``Mesh.with_surface()``. Vertex and line cells are kept aside and written
back unchanged.
"""
from __future__ import annotations

import contextlib
import dataclasses
import io
import os
from typing import Callable, Dict, Optional, Tuple

import numpy as np

from . import extras

NULL = 0xFFFFFFFF

#: Node count of each cell kind this package reads.
KINDS = {"vertex": 1, "line": 2, "line3": 3, "triangle": 3, "quad": 4, "triangle6": 6, "quad8": 8, "quad9": 9}
SURFACE_KINDS = ("triangle", "quad", "triangle6", "quad8", "quad9")
#: Row count of a mixed surface array, by the quadrangle kind in it.
_MIXED_ROWS = {"quad": 4, "quad8": 8, "quad9": 9}
_TRIANGLE_OF = {"quad": "triangle", "quad8": "triangle6", "quad9": "triangle6"}


class FileError(ValueError):
    """A file this package cannot use: unreadable, or with cells the library has no use for."""


@dataclasses.dataclass
class Mesh:
    """Points, cell blocks by kind, and their data.

    ``points`` is ``(n, 3)`` float64. ``cells[kind]`` is ``(m, k)`` uint32 in
    this library's node order. ``point_data[name]`` has one row per point;
    ``cell_data[name][kind]`` one row per cell of that kind.
    """

    points: np.ndarray
    cells: Dict[str, np.ndarray] = dataclasses.field(default_factory=dict)
    point_data: Dict[str, np.ndarray] = dataclasses.field(default_factory=dict)
    cell_data: Dict[str, Dict[str, np.ndarray]] = dataclasses.field(default_factory=dict)

    @property
    def planar(self) -> bool:
        """True when every point has z = 0: the mesh lies in the plane."""
        return self.points.shape[1] == 2 or not np.any(self.points[:, 2])

    def coords(self) -> np.ndarray:
        """The points as the library reads them: ``(n, 2)`` for a planar mesh, else ``(n, 3)``."""
        return np.ascontiguousarray(self.points[:, :2] if self.planar else self.points)

    def surface(self) -> np.ndarray:
        """The surface cells as one connectivity: triangles then quadrangles.

        Triangles alone give ``(m, 3)`` (or ``(m, 6)``); with quadrangles the
        array has the quadrangles' width and a triangle has ``null_id`` in
        the rows it lacks.
        """
        kinds = [k for k in SURFACE_KINDS if k in self.cells and len(self.cells[k])]
        if not kinds:
            raise FileError("the mesh has no surface cells (triangles or quadrangles)")
        quads = [k for k in kinds if k in _MIXED_ROWS]
        if len(quads) > 1 or any(_TRIANGLE_OF[q] != t for q in quads for t in kinds if t not in _MIXED_ROWS):
            raise FileError(f"cannot hold {', '.join(kinds)} in one connectivity: mix linear and quadratic cells")
        rows = _MIXED_ROWS[quads[0]] if quads else KINDS[kinds[0]]
        blocks = []
        for kind in kinds:
            block = self.cells[kind]
            padded = np.full((len(block), rows), NULL, dtype=np.uint32)
            padded[:, : block.shape[1]] = block
            blocks.append(padded)
        return np.concatenate(blocks)

    def surface_cell_data(self) -> Dict[str, np.ndarray]:
        """Cell data of the surface cells, in the order of ``surface()``."""
        kinds = [k for k in SURFACE_KINDS if k in self.cells and len(self.cells[k])]
        out = {}
        for name, by_kind in self.cell_data.items():
            if all(k in by_kind for k in kinds):
                out[name] = np.concatenate([by_kind[k] for k in kinds])
        return out

    def with_surface(self, points: np.ndarray, conn: np.ndarray, point_data: Optional[dict] = None,
                     cell_data: Optional[dict] = None) -> "Mesh":
        """A new mesh with these points and surface cells, and this mesh's vertex and line cells.

        ``cell_data[name]`` has one row per column of ``conn``. When ``conn``
        has as many elements as the surface had, the surface's own cell data
        (physical and entity tags among them) is carried over.
        """
        conn = np.asarray(conn, dtype=np.uint32)
        points = np.asarray(points, dtype=float)
        if points.shape[1] == 2:
            points = np.c_[points, np.zeros(len(points))]
        cell_data = dict(cell_data or {})
        if len(conn) == sum(len(self.cells[k]) for k in SURFACE_KINDS if k in self.cells):
            cell_data = {**self.surface_cell_data(), **cell_data}
        kinds = _split_kinds(conn)
        mesh = Mesh(points, {k: v for k, v in self.cells.items() if k not in SURFACE_KINDS}, dict(point_data or {}))
        for name, by_kind in self.cell_data.items():
            kept = {k: v for k, v in by_kind.items() if k not in SURFACE_KINDS}
            if kept:
                mesh.cell_data[name] = kept
        for kind, rows in kinds.items():
            mesh.cells[kind] = np.ascontiguousarray(conn[rows][:, : KINDS[kind]])
            for name, values in cell_data.items():
                mesh.cell_data.setdefault(name, {})[kind] = np.asarray(values)[rows]
        # Lines and vertices need the data too, or writers drop the name.
        for name, by_kind in mesh.cell_data.items():
            for kind, block in mesh.cells.items():
                if kind not in by_kind:
                    shape = (len(block),) + np.asarray(next(iter(by_kind.values()))).shape[1:]
                    by_kind[kind] = np.zeros(shape, dtype=np.asarray(next(iter(by_kind.values()))).dtype)
        return mesh


def _split_kinds(conn: np.ndarray) -> Dict[str, np.ndarray]:
    """The kind of every column of a library connectivity, as row indices per kind."""
    rows = conn.shape[1]
    single = {3: "triangle", 4: "quad", 6: "triangle6", 8: "quad8", 9: "quad9"}
    if rows not in single:
        raise FileError(f"a connectivity of {rows} nodes per cell has no file cell type")
    if rows in (3, 6):
        return {single[rows]: np.arange(len(conn))}
    triangle = conn[:, 3 if rows == 4 else 6] == NULL
    out = {}
    if triangle.any():
        out["triangle" if rows == 4 else "triangle6"] = np.flatnonzero(triangle)
    if (~triangle).any():
        out[single[rows]] = np.flatnonzero(~triangle)
    return out


def _to_library_order(kind: str, block: np.ndarray) -> np.ndarray:
    block = np.ascontiguousarray(block, dtype=np.uint32)
    return extras.from_vtk_order(block) if kind in ("triangle6", "quad8", "quad9") and len(block) else block


def _to_file_order(kind: str, block: np.ndarray) -> np.ndarray:
    block = np.ascontiguousarray(block, dtype=np.uint32)
    return extras.to_vtk_order(block) if kind in ("triangle6", "quad8", "quad9") and len(block) else block


def read(path: str, progress: Optional[Callable[[float], None]] = None) -> Mesh:
    """Reads a mesh file (``.msh``, ``.vtu``, ``.vtk``, ``.obj``, ``.ply``, ``.stl``, ``.off``, ...).

    A ``.msh`` file of format 2.2 or 4.1 is read by this package's own
    reader (see ``msh``), which takes every such file Gmsh writes; an older
    ``.msh`` goes to meshio, then to Gmsh's reader when meshio refuses it;
    other files go through meshio. ``progress``, when given, is called with
    the fraction read, from 0 to 1, while the package's reader reads.

    Raises ``FileError`` for a file that cannot be read or holds cells this
    library cannot use (the message names the cell type).
    """
    if not os.path.isfile(path):
        raise FileError(f"{path}: no such file")
    if str(path).lower().endswith(".msh"):
        from . import msh
        try:
            return msh.load(path, progress)
        except msh.Unsupported:
            pass  # formats 1.0 to 4.0: meshio, then Gmsh's own reader
    import meshio
    said = io.StringIO()
    try:
        with contextlib.redirect_stderr(said), contextlib.redirect_stdout(said):
            m = meshio.read(path)
    except (Exception, SystemExit) as error:  # meshio raises many kinds, or exits, on bad files
        if str(path).lower().endswith(".msh"):
            from . import gmsh_files
            if gmsh_files.available():
                return gmsh_files.read(path)
        words = " ".join(said.getvalue().split()).replace("Error: ", "")
        raise FileError(words or f"{path}: {error}") from None
    cells: Dict[str, list] = {}
    data: Dict[str, Dict[str, list]] = {}
    for index, block in enumerate(m.cells):
        if block.type not in KINDS:
            raise FileError(f"{path}: cells of type '{block.type}' are not surface, line or vertex cells")
        cells.setdefault(block.type, []).append(_to_library_order(block.type, block.data))
        for name, blocks in m.cell_data.items():
            data.setdefault(name, {}).setdefault(block.type, []).append(np.asarray(blocks[index]))
    points = np.asarray(m.points, dtype=float)
    if points.shape[1] == 2:
        points = np.c_[points, np.zeros(len(points))]
    return Mesh(points, {k: np.concatenate(v) for k, v in cells.items()},
                {k: np.asarray(v) for k, v in m.point_data.items()},
                {n: {k: np.concatenate(v) for k, v in d.items()} for n, d in data.items()})


def write(path: str, mesh: Mesh, binary: bool = False) -> None:
    """Writes a mesh file; the format follows the extension, as meshio chooses it.

    Point and cell data go with it, so results open in ParaView; ``binary``
    asks for the binary form where the format has one (``.msh``). A ``.msh``
    file is written in Gmsh's format 2.2 with the physical and entity tags the
    mesh carries (``gmsh:physical``, ``gmsh:geometrical``), 0 where it has
    none.
    """
    import meshio
    blocks = [(kind, _to_file_order(kind, block)) for kind, block in mesh.cells.items() if len(block)]
    cell_data = {name: [np.asarray(by_kind[kind]) for kind, _ in blocks]
                 for name, by_kind in mesh.cell_data.items() if all(kind in by_kind for kind, _ in blocks)}
    kwargs = {}
    if path.endswith(".msh"):
        for name in ("gmsh:physical", "gmsh:geometrical"):
            cell_data.setdefault(name, [np.zeros(len(b), dtype=int) for _, b in blocks])
        cell_data = {k: v for k, v in cell_data.items() if k.startswith("gmsh:") or np.asarray(v[0]).ndim == 1}
        # Format 2.2 holds both tags on every element and needs no entity
        # table, so any mix of cells can be written.
        kwargs = {"file_format": "gmsh22", "binary": binary}
    m = meshio.Mesh(mesh.points, blocks, point_data=mesh.point_data, cell_data=cell_data)
    try:
        meshio.write(path, m, **kwargs)
    except Exception as error:
        raise FileError(f"{path}: {error}") from None


def summary(mesh: Mesh) -> Tuple[Dict[str, int], int, int]:
    """Cell counts per kind, nodes no cell uses, and nodes that coincide with an earlier one."""
    used = np.zeros(len(mesh.points), dtype=bool)
    for block in mesh.cells.values():
        ids = block[block != NULL]
        used[ids[ids < len(used)]] = True
    unique = len(np.unique(mesh.points, axis=0)) if len(mesh.points) else 0
    return {k: len(v) for k, v in mesh.cells.items()}, int((~used).sum()), len(mesh.points) - unique
