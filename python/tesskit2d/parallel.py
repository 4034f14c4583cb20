"""The library on meshes partitioned across MPI ranks (mpi4py), giving the serial answer.

Each rank holds a sub-mesh: ``coords`` and ``conn`` in local IDs, and
``gid``, the global ID of every local node. Elements belong to exactly one
rank; nodes on the interface between sub-meshes appear on every rank whose
elements use them.

Ownership
    An interface entity (a node, an edge) is owned by the lowest rank that
    holds it. New nodes get global IDs behind the largest global node ID in
    the whole mesh: each rank numbers the new nodes it owns in its own local
    order, after the nodes owned by lower ranks (an exclusive scan of the
    counts). So the result equals the serial call's up to that renumbering
    of new nodes.

Ghost layer
    Operations whose value at a node reads the node's whole ring of elements
    (node normals) first receive, on every rank, the elements of other ranks
    that touch its interface nodes, compute on the sub-mesh with those ghost
    elements behind its own, and keep the values of its own nodes. Sums then
    run in another order than in the serial call: values agree to rounding
    (1e-13 relative), and are bit-identical where no ring crosses an
    interface.

Protocol
    Every step that can fail on one rank (a bad ID, a refused argument) is
    followed by an agreement: all ranks exchange their error, and if any rank
    failed, every rank raises ``ParallelError`` naming the first failing rank
    and its message, so no rank waits in a collective call that another will
    never make. The interface exchanges use ``allgather`` of the interface
    candidates (nodes, then edges between interface nodes), whose volume per
    rank is the sum of all ranks' interfaces: right for tens of ranks; a
    neighbour-only exchange is the step to thousands.
"""
from __future__ import annotations

import dataclasses
from typing import List, Optional, Tuple

import numpy as np

import tesskit2d as tk

NULL = 0xFFFFFFFF


class ParallelError(RuntimeError):
    """A failure on some rank, raised on every rank alike."""


@dataclasses.dataclass
class DistributedMesh:
    """One rank's part: local ``coords`` ``(n, d)``, ``conn`` ``(m, k)`` in local IDs, ``gid`` ``(n,)`` global IDs."""

    comm: object
    coords: np.ndarray
    conn: np.ndarray
    gid: np.ndarray


def agree(comm, error: Optional[BaseException]) -> None:
    """Raises ``ParallelError`` on every rank if any rank had an error."""
    errors = comm.allgather(None if error is None else f"{type(error).__name__}: {error}")
    for rank, message in enumerate(errors):
        if message is not None:
            raise ParallelError(f"rank {rank}: {message}")


def _bisect(centres: np.ndarray, parts: int) -> List[np.ndarray]:
    """Recursive coordinate bisection: element indices per part, counts as even as parts allow."""
    def split(ids, k):
        if k == 1:
            return [ids]
        axis = np.argmax(np.ptp(centres[ids], axis=0))
        order = ids[np.argsort(centres[ids, axis], kind="stable")]
        cut = len(order) * (k // 2) // k
        return split(order[:cut], k // 2) + split(order[cut:], k - k // 2)
    return split(np.arange(len(centres)), parts)


def part(coords: np.ndarray, conn: np.ndarray, elements: np.ndarray) -> Tuple[np.ndarray, np.ndarray, np.ndarray]:
    """The sub-mesh of some elements: local coords, local conn and the global IDs of its nodes."""
    cells = conn[np.sort(elements)]
    used = cells[cells != NULL]
    gid = np.unique(used)
    local = np.full(cells.shape, NULL, dtype=np.uint32)
    mask = cells != NULL
    local[mask] = np.searchsorted(gid, cells[mask])
    return np.ascontiguousarray(coords[gid]), local, gid.astype(np.uint64)


def distribute(coords, conn, comm, root: int = 0) -> DistributedMesh:
    """Scatters a mesh held on ``root`` to all ranks, partitioned by recursive coordinate bisection.

    Every rank gets a non-empty part when the mesh has at least as many
    elements as there are ranks; otherwise every rank raises ParallelError.
    """
    parts = error = None
    if comm.rank == root:
        try:
            coords = np.asarray(coords, dtype=float)
            conn = np.asarray(conn, dtype=np.uint32)
            if len(conn) < comm.size:
                raise ValueError(f"{len(conn)} elements cannot fill {comm.size} ranks")
            corners = conn[:, :3]
            if corners.max(initial=0) >= len(coords):
                raise ValueError("conn names a node beyond coords")
            centres = coords[corners].mean(axis=1)
            parts = [part(coords, conn, ids) for ids in _bisect(centres, comm.size)]
        except (ValueError, IndexError) as e:
            error = e
    agree(comm, comm.bcast(error, root=root) if comm.rank == root else comm.bcast(None, root=root))
    local = comm.scatter(parts, root=root)
    return DistributedMesh(comm, *local)


def _interface_nodes(dm: DistributedMesh) -> np.ndarray:
    """The global IDs of nodes held by more than one rank, sorted."""
    every = np.concatenate(dm.comm.allgather(dm.gid))
    ids, counts = np.unique(every, return_counts=True)
    return ids[counts > 1]


def area(dm: DistributedMesh) -> float:
    """The total area of the distributed mesh: each rank's sum, summed."""
    from mpi4py import MPI
    value = error = None
    try:
        value = tk.area(dm.coords, dm.conn)
    except ValueError as e:
        error = e
    agree(dm.comm, error)
    return dm.comm.allreduce(value, op=MPI.SUM)


def _edge_of_mid_nodes(conn: np.ndarray, n_old: int) -> Tuple[np.ndarray, np.ndarray, np.ndarray]:
    """For every new node of a quadratic conn: its node, and the two corners of its edge (NULL for a centre)."""
    rows = conn.shape[1]
    if rows == 6:
        pairs = {3: (1, 2), 4: (2, 0), 5: (0, 1)}
    else:
        pairs = {4: (0, 1), 5: (1, 2), 6: (2, 3), 7: (3, 0)}
    nodes, a, b = [], [], []
    triangle = conn[:, 6] == NULL if rows == 9 else np.zeros(len(conn), dtype=bool)
    for row, (p, q) in pairs.items():
        keep = ~triangle
        nodes.append(conn[keep, row]), a.append(conn[keep, p]), b.append(conn[keep, q])
    if rows == 9:
        # A triangle in a 9-row array has its mid nodes in rows 3 to 5.
        for row, (p, q) in {3: (1, 2), 4: (2, 0), 5: (0, 1)}.items():
            nodes.append(conn[triangle, row]), a.append(conn[triangle, p]), b.append(conn[triangle, q])
        nodes.append(conn[~triangle, 8]), a.append(np.full((~triangle).sum(), NULL)), b.append(np.full((~triangle).sum(), NULL))
    nodes, a, b = np.concatenate(nodes), np.concatenate(a), np.concatenate(b)
    first = np.unique(nodes, return_index=True)[1]
    return nodes[first], a[first], b[first]


def raise_order(dm: DistributedMesh) -> DistributedMesh:
    """Quadratic elements on every rank, one global node per edge across the interfaces."""
    comm = dm.comm
    coords = conn = error = None
    try:
        coords, conn = tk.convert_into_quadratic(dm.coords, dm.conn)
    except (ValueError, MemoryError) as e:
        error = e
    agree(comm, error)
    n_old = len(dm.coords)
    new, a, b = _edge_of_mid_nodes(conn, n_old)
    edge = a != NULL
    ga, gb = dm.gid[a[edge].astype(np.int64)], dm.gid[b[edge].astype(np.int64)]
    keys = np.full(len(new), -1, dtype=np.int64)
    # An edge's key is its pair of global corner IDs, the smaller one first.
    keys[edge] = (np.minimum(ga, gb).astype(np.int64) << 32) | np.maximum(ga, gb).astype(np.int64)
    shared = _interface_nodes(dm)
    on_interface = edge.copy()
    on_interface[edge] = np.isin(ga, shared) & np.isin(gb, shared)
    candidates = comm.allgather(keys[on_interface])
    owner = {}
    for rank, ranked in enumerate(candidates):
        for key in ranked.tolist():
            owner.setdefault(key, rank)
    mine = np.array([not on_interface[k] or owner[int(keys[k])] == comm.rank for k in range(len(new))], dtype=bool)
    n_global = int(comm.allreduce(int(dm.gid.max(initial=0)) + 1, op=_max()))
    start = comm.exscan(int(mine.sum())) or 0
    gid = np.concatenate([dm.gid, np.zeros(len(coords) - n_old, dtype=np.uint64)])
    order = np.argsort(new, kind="stable")  # new nodes in local order, as the library numbered them
    new, keys, mine = new[order], keys[order], mine[order]
    gid[new[mine].astype(np.int64)] = n_global + start + np.arange(mine.sum(), dtype=np.uint64)
    told = {}
    for ranked in comm.allgather({int(k): int(g) for k, g in zip(keys[mine], gid[new[mine].astype(np.int64)]) if k >= 0
                                  and owner.get(int(k)) is not None}):
        told.update(ranked)
    for node, key in zip(new[~mine], keys[~mine]):
        gid[int(node)] = told[int(key)]
    return DistributedMesh(comm, coords, conn, gid)


def _max():
    from mpi4py import MPI
    return MPI.MAX


def normals(dm: DistributedMesh, power: float = 1.0, unit: bool = True) -> np.ndarray:
    """Node normals of a distributed surface (``tesskit2d.normals`` with ``power``), through a ghost layer."""
    comm = dm.comm
    shared = _interface_nodes(dm)
    touching = np.isin(dm.gid[np.where(dm.conn == NULL, 0, dm.conn).astype(np.int64)], shared).any(axis=1)
    cells = dm.conn[touching]
    global_cells = np.where(cells == NULL, np.uint64(NULL), dm.gid[np.where(cells == NULL, 0, cells).astype(np.int64)])
    sent = (global_cells, dm.gid, dm.coords)
    ghost_cells, ghost_gid, ghost_xyz = [], [], []
    for rank, (g_cells, g_gid, g_xyz) in enumerate(comm.allgather(sent)):
        if rank == comm.rank or not len(g_cells):
            continue
        ghost_cells.append(g_cells)
        ghost_gid.append(g_gid)
        ghost_xyz.append(g_xyz)
    gid, coords, conn = dm.gid, dm.coords, dm.conn
    if ghost_cells:
        more_gid = np.concatenate(ghost_gid)
        more_xyz = np.concatenate(ghost_xyz)
        known = dict(zip(gid.tolist(), range(len(gid))))
        extra = [g for g in np.unique(more_gid).tolist() if g not in known]
        index_of = {**known, **{g: len(gid) + i for i, g in enumerate(extra)}}
        where = dict(zip(more_gid.tolist(), range(len(more_gid))))
        coords = np.r_[coords, more_xyz[[where[g] for g in extra]]] if extra else coords
        g_cells = np.concatenate(ghost_cells)
        # Only ghost elements that touch this rank's nodes matter.
        local_ids = np.vectorize(lambda g: index_of.get(int(g), NULL) if g != NULL else NULL, otypes=[np.uint32])(g_cells)
        touches_me = ((local_ids < len(gid)) & (g_cells != NULL)).any(axis=1)
        conn = np.r_[conn, local_ids[touches_me]].astype(np.uint32)
    error = result = None
    try:
        result = tk.normals(coords, conn, power, unit)[: len(dm.gid)]
    except ValueError as e:
        error = e
    agree(comm, error)
    return result


def gather(dm: DistributedMesh, values: Optional[np.ndarray] = None, root: int = 0):
    """Collects the parts on ``root`` as one mesh in global IDs: (coords, conn, values) there, None elsewhere.

    Global IDs are taken as they are (a node's row is its global ID); values
    are per node, like ``coords``.
    """
    parts = dm.comm.gather((dm.coords, dm.conn, dm.gid, values), root=root)
    if dm.comm.rank != root:
        return None
    n = int(max(int(g.max(initial=0)) for _, _, g, _ in parts)) + 1
    dim = parts[0][0].shape[1]
    coords = np.full((n, dim), np.nan)
    out_values = None
    conns = []
    for xyz, conn, gid, vals in parts:
        coords[gid.astype(np.int64)] = xyz
        if vals is not None:
            if out_values is None:
                out_values = np.full((n,) + np.asarray(vals).shape[1:], np.nan)
            out_values[gid.astype(np.int64)] = vals
        conns.append(np.where(conn == NULL, NULL, gid[np.where(conn == NULL, 0, conn).astype(np.int64)]).astype(np.uint32))
    return coords, np.concatenate(conns), out_values
