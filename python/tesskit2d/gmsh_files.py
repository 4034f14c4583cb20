"""Gmsh's ``.msh`` files read by Gmsh's own reader (the ``gmsh`` module of ``python3-gmsh``).

meshio refuses files whose physical groups cover only some entities (what
``Mesh.SaveAll`` writes); Gmsh reads every file it writes: formats 2.2 and
4.1, ASCII and binary. From the file's blocks to this package's ``Mesh``:

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

#: Gmsh's element type numbers of the cells this package holds. Gmsh lists
#: quadratic nodes as VTK does.
GMSH_KINDS = {15: "vertex", 1: "line", 8: "line3", 2: "triangle", 3: "quad", 9: "triangle6", 16: "quad8",
              10: "quad9"}


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


def physical_groups(path: str) -> Dict[int, str]:
    """Physical tag to name (empty when unnamed) of the groups of a ``.msh`` file."""
    import gmsh
    gmsh.initialize([], False)
    try:
        gmsh.option.setNumber("General.Terminal", 0)
        gmsh.open(path)
        return {tag: gmsh.model.getPhysicalName(dim, tag) for dim, tag in gmsh.model.getPhysicalGroups()}
    finally:
        gmsh.finalize()


#: Dimension of each cell kind's entities.
_DIM = {"vertex": 0, "line": 1, "line3": 1, "triangle": 2, "quad": 2, "triangle6": 2, "quad8": 2, "quad9": 2}


def write(path: str, mesh: Mesh, binary: bool = False) -> None:
    """Writes a ``.msh`` file in format 4.1 with Gmsh's own writer.

    Cells go back to the entities named by their ``gmsh:geometrical`` data
    (one entity per dimension when there is none) and entities into the
    physical groups of their ``gmsh:physical`` data; every cell is written
    (``Mesh.SaveAll``), in or out of a group. Node tags come from the point
    data ``gmsh:node_tag`` when it is there, else 1, 2, ...
    """
    import gmsh

    from .files import _to_file_order

    tags = np.asarray(mesh.point_data.get("gmsh:node_tag", np.arange(1, len(mesh.points) + 1)), dtype=np.uint64)
    inverse = {v: k for k, v in GMSH_KINDS.items()}
    gmsh.initialize([], False)
    try:
        gmsh.option.setNumber("General.Terminal", 0)
        gmsh.model.add("tesskit2d")
        entities: Dict[tuple, int] = {}
        next_element = 1
        blocks = []
        for kind, block in mesh.cells.items():
            entity = np.asarray(mesh.cell_data.get("gmsh:geometrical", {}).get(kind, np.ones(len(block))), dtype=int)
            group = np.asarray(mesh.cell_data.get("gmsh:physical", {}).get(kind, np.zeros(len(block))), dtype=int)
            for tag in np.unique(entity):
                rows = entity == tag
                key = (_DIM[kind], int(tag))
                if key not in entities:
                    gmsh.model.addDiscreteEntity(key[0], key[1])
                    entities[key] = int(group[rows][0])
                blocks.append((key, kind, block[rows]))
        # Every node on the first entity of the highest dimension; elements
        # elsewhere name them by tag.
        home = max(entities, key=lambda k: k[0]) if entities else None
        if home is None:
            raise FileError(f"{path}: nothing to write")
        gmsh.model.mesh.addNodes(home[0], home[1], tags.tolist(), np.asarray(mesh.points, dtype=float).ravel().tolist())
        for key, kind, block in blocks:
            nodes = tags[_to_file_order(kind, block).astype(np.int64)]
            element_tags = np.arange(next_element, next_element + len(block))
            next_element += len(block)
            gmsh.model.mesh.addElementsByType(key[1], inverse[kind], element_tags.tolist(), nodes.ravel().tolist())
        by_group: Dict[tuple, List[int]] = {}
        for (dim, tag), group in entities.items():
            if group:
                by_group.setdefault((dim, group), []).append(tag)
        for (dim, group), members in by_group.items():
            gmsh.model.addPhysicalGroup(dim, members, group)
        gmsh.option.setNumber("Mesh.SaveAll", 1)
        gmsh.option.setNumber("Mesh.MshFileVersion", 4.1)
        gmsh.option.setNumber("Mesh.Binary", int(binary))
        gmsh.write(path)
    finally:
        gmsh.finalize()
