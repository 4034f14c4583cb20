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
    #: The global index of each local element, when the mesh was distributed from one whole mesh.
    elements: Optional[np.ndarray] = None
    #: The node count of the whole mesh (nodes no element uses included), when known.
    n_nodes: Optional[int] = None


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


def part(coords: np.ndarray, conn: np.ndarray, elements: np.ndarray) -> tuple:
    """The sub-mesh of some elements: local coords, local conn, the global IDs of its nodes, the elements."""
    elements = np.sort(elements)
    cells = conn[elements]
    used = cells[cells != NULL]
    gid = np.unique(used)
    local = np.full(cells.shape, NULL, dtype=np.uint32)
    mask = cells != NULL
    local[mask] = np.searchsorted(gid, cells[mask])
    return np.ascontiguousarray(coords[gid]), local, gid.astype(np.uint64), elements


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
    n_nodes = comm.bcast(len(coords) if comm.rank == root else None, root=root)
    return DistributedMesh(comm, *local, n_nodes=n_nodes)


def _boundary_nodes(dm: DistributedMesh) -> np.ndarray:
    """Global IDs of the nodes on the free edges of this rank's sub-mesh: the only candidates for the interface."""
    from . import extras
    corners = dm.conn[:, :4] if dm.conn.shape[1] in (4, 8, 9) else dm.conn[:, :3]
    if corners.shape[1] == 4 and not (corners[:, 3] != NULL).any():
        corners = corners[:, :3]
    if not len(corners):
        return np.empty(0, dtype=np.uint64)
    _, neighbours = extras.neighbours_of(np.ascontiguousarray(corners))
    rows = corners.shape[1]
    free_cells, free_slots = np.nonzero((neighbours == NULL) & (corners != NULL))
    ends = []
    for slot in range(rows):
        cells = free_cells[free_slots == slot]
        quad = (corners[cells, 3] != NULL) if rows == 4 else np.zeros(len(cells), dtype=bool)
        if slot == 3:  # only quadrangles have a fourth edge
            ends.append(corners[cells, 3]), ends.append(corners[cells, 0])
            continue
        # A quadrangle's slot s is edge (s, s + 1), a triangle's the edge opposite corner s.
        ends.append(np.where(quad, corners[cells, slot], corners[cells, (slot + 1) % 3]))
        ends.append(np.where(quad, corners[cells, (slot + 1) % 4], corners[cells, (slot + 2) % 3]))
    nodes = np.unique(np.concatenate(ends)) if ends else np.empty(0, dtype=np.uint32)
    return dm.gid[nodes.astype(np.int64)]


def _interface_nodes(dm: DistributedMesh) -> np.ndarray:
    """The global IDs of nodes held by more than one rank, sorted: boundary candidates compared across ranks."""
    every = np.concatenate(dm.comm.allgather(_boundary_nodes(dm)))
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
    # The owner of an interface edge: the lowest rank that holds it.
    owner = {}
    for rank in reversed(range(comm.size)):
        owner.update(dict.fromkeys(candidates[rank].tolist(), rank))
    mine = ~on_interface
    mine[on_interface] = np.array([owner[k] == comm.rank for k in keys[on_interface].tolist()], dtype=bool)
    n_global = dm.n_nodes or int(comm.allreduce(int(dm.gid.max(initial=0)) + 1, op=_max()))
    start = comm.exscan(int(mine.sum())) or 0
    gid = np.concatenate([dm.gid, np.zeros(len(coords) - n_old, dtype=np.uint64)])
    order = np.argsort(new, kind="stable")  # new nodes in local order, as the library numbered them
    new, keys, mine, on_interface = new[order], keys[order], mine[order], on_interface[order]
    gid[new[mine].astype(np.int64)] = n_global + start + np.arange(mine.sum(), dtype=np.uint64)
    # Owners tell the others the IDs of their interface edges' nodes.
    told_keys, told_ids = zip(*comm.allgather((keys[mine & on_interface], gid[new[mine & on_interface].astype(np.int64)])))
    told_keys, told_ids = np.concatenate(told_keys), np.concatenate(told_ids)
    sort = np.argsort(told_keys)
    asked = keys[~mine]
    gid[new[~mine].astype(np.int64)] = told_ids[sort][np.searchsorted(told_keys[sort], asked)]
    total = n_global + comm.allreduce(int(mine.sum()))
    return DistributedMesh(comm, coords, conn, gid, dm.elements, total)


def _max():
    from mpi4py import MPI
    return MPI.MAX


def normals(dm: DistributedMesh, power: float = 1.0, unit: bool = True) -> np.ndarray:
    """Node normals of a distributed surface (``tesskit2d.normals`` with ``power``), through a ghost layer."""
    comm = dm.comm
    shared = _interface_nodes(dm)
    on_interface = np.append(np.isin(dm.gid, shared), False)  # the extra entry answers for null_id
    touching = on_interface[np.minimum(dm.conn, len(dm.gid)).astype(np.int64)].any(axis=1)
    cells = dm.conn[touching]
    nodes = np.unique(cells[cells != NULL]).astype(np.int64)
    global_cells = np.where(cells == NULL, np.uint64(NULL), dm.gid[np.where(cells == NULL, 0, cells).astype(np.int64)])
    # The ghost layer: the elements of other ranks that touch the interface,
    # with the coordinates of their nodes.
    ghosts = [g for rank, g in enumerate(comm.allgather((global_cells, dm.gid[nodes], dm.coords[nodes])))
              if rank != comm.rank and len(g[0])]
    gid, coords, conn = dm.gid, dm.coords, dm.conn
    if ghosts:
        g_cells = np.concatenate([g[0] for g in ghosts])
        g_gid = np.concatenate([g[1] for g in ghosts])
        g_xyz = np.concatenate([g[2] for g in ghosts])
        g_gid, first = np.unique(g_gid, return_index=True)
        g_xyz = g_xyz[first]
        # Local IDs: a node this rank holds keeps its own; others go behind.
        order = np.argsort(gid)
        at = np.minimum(np.searchsorted(gid[order], g_gid), len(gid) - 1)
        held = gid[order][at] == g_gid
        local_of = np.where(held, order[at], 0).astype(np.int64)
        local_of[~held] = len(gid) + np.arange((~held).sum())
        coords = np.r_[coords, g_xyz[~held]]
        valid = g_cells != NULL
        mapped = np.full(g_cells.shape, NULL, dtype=np.int64)
        mapped[valid] = local_of[np.searchsorted(g_gid, g_cells[valid])]
        touches_me = ((mapped < len(gid)) & valid).any(axis=1)
        conn = np.r_[conn, mapped[touches_me]].astype(np.uint32)
    error = result = None
    try:
        result = tk.normals(coords, conn, power, unit)[: len(dm.gid)]
    except ValueError as e:
        error = e
    agree(comm, error)
    return result


def gather(dm: DistributedMesh, values: Optional[np.ndarray] = None, root: int = 0):
    """Collects the parts on ``root`` as one mesh in global IDs: (coords, conn, values) there, None elsewhere.

    Global IDs are taken as they are (a node's row is its global ID; rows of
    nodes that no element uses are NaN); values are per node, like
    ``coords``. A distributed mesh gets back its element order.
    """
    parts = dm.comm.gather((dm.coords, dm.conn, dm.gid, values, dm.elements), root=root)
    if dm.comm.rank != root:
        return None
    n = dm.n_nodes or int(max(int(g.max(initial=0)) for _, _, g, _, _ in parts)) + 1
    dim = parts[0][0].shape[1]
    coords = np.full((n, dim), np.nan)
    out_values = None
    conns = []
    for xyz, conn, gid, vals, _ in parts:
        coords[gid.astype(np.int64)] = xyz
        if vals is not None:
            if out_values is None:
                out_values = np.full((n,) + np.asarray(vals).shape[1:], np.nan)
            out_values[gid.astype(np.int64)] = vals
        conns.append(np.where(conn == NULL, NULL, gid[np.where(conn == NULL, 0, conn).astype(np.int64)]).astype(np.uint32))
    conn = np.concatenate(conns)
    if all(p[4] is not None for p in parts):
        # Back in the whole mesh's element order.
        order = np.concatenate([p[4] for p in parts])
        conn = conn[np.argsort(order, kind="stable")]
    return coords, conn, out_values
