"""Gmsh's ``.msh`` files read by Gmsh's own reader (the ``gmsh`` module of ``python3-gmsh``).

Formats 2.2 and 4.1 are read by this package's own reader (``msh``). The
older ones Gmsh still writes (1.0, 3.0, 4.0) go to meshio first, which
refuses them when their physical groups cover only some entities (what
``Mesh.SaveAll`` writes); Gmsh reads every file it writes, though some 20 to
60 times slower. From the file's blocks to this package's ``Mesh``:

- nodes are all of the file's nodes, used or not (geometry points, a
  sphere's centre), numbered 0, 1, ... in increasing tag order; the tags
  themselves are kept as the point data ``gmsh:node_tag``;
- the cells of all entities are gathered per kind; each cell carries its
  entity's tag (``gmsh:geometrical``) and the entity's first physical tag
  (``gmsh:physical``, 0 when it has none) as cell data;
- vertex and line cells are kept, not refused.
"""
from __future__ import annotations

from typing import Dict, List

import numpy as np

from .files import KINDS, FileError, Mesh
from .msh import GMSH_KINDS


def available() -> bool:
    """Whether Gmsh's Python module is installed."""
    try:
        import gmsh  # noqa: F401
    except ImportError:
        return False
    return True


def read(path: str) -> Mesh:
    """Reads any ``.msh`` file Gmsh writes; see the module's documentation."""
    import gmsh

    from .files import _to_library_order

    gmsh.initialize([], False)
    try:
        gmsh.option.setNumber("General.Terminal", 0)
        try:
            gmsh.open(path)
        except Exception as error:
            raise FileError(f"{path}: {error}") from None
        tags, xyz, _ = gmsh.model.mesh.getNodes()
        tags = np.asarray(tags, dtype=np.uint64)
        order = np.argsort(tags, kind="stable")
        sorted_tags = tags[order]
        points = np.asarray(xyz, dtype=float).reshape(-1, 3)[order]
        cells: Dict[str, List[np.ndarray]] = {}
        physical: Dict[str, List[np.ndarray]] = {}
        entity: Dict[str, List[np.ndarray]] = {}
        for dim, tag in gmsh.model.getEntities():
            groups = gmsh.model.getPhysicalGroupsForEntity(dim, tag)
            group = int(min(groups)) if len(groups) else 0
            types, _, node_tags = gmsh.model.mesh.getElements(dim, tag)
            for kind_number, nodes in zip(types, node_tags):
                kind = GMSH_KINDS.get(int(kind_number))
                if kind is None:
                    name = gmsh.model.mesh.getElementProperties(int(kind_number))[0]
                    raise FileError(f"{path}: cells of type '{name}' are not surface, line or vertex cells")
                ids = np.searchsorted(sorted_tags, np.asarray(nodes, dtype=np.uint64)).astype(np.uint32)
                block = _to_library_order(kind, ids.reshape(-1, KINDS[kind]))
                cells.setdefault(kind, []).append(block)
                physical.setdefault(kind, []).append(np.full(len(block), group, dtype=np.int64))
                entity.setdefault(kind, []).append(np.full(len(block), tag, dtype=np.int64))
    finally:
        gmsh.finalize()
    return Mesh(points, {k: np.concatenate(v) for k, v in cells.items()},
                {"gmsh:node_tag": sorted_tags.astype(np.int64)},
                {"gmsh:physical": {k: np.concatenate(v) for k, v in physical.items()},
                 "gmsh:geometrical": {k: np.concatenate(v) for k, v in entity.items()}})

