"""The library on meshes partitioned across MPI ranks (mpi4py), giving the serial answer.

Each rank holds a sub-mesh: ``coords`` and ``conn`` in local IDs, and
``gid``, the global ID of every local node. Elements belong to exactly one
rank; nodes on the interface between sub-meshes appear on every rank whose
elements use them. Every element has a global index too: the one the mesh
had before ``distribute`` split it, or else its place in the ranks' parts
laid end to end (rank 0's elements first). Operations whose result depends
on the order of elements see them in that global order, as the serial call
on the whole mesh does. Each operation returns each rank's local result, in
its local IDs, with global IDs for any new node.

Interface
    Found once per distributed mesh, on its first operation, and kept with
    it (so its arrays must not change afterwards): the nodes on the free
    edges of each sub-mesh are the only candidates; each rank sends them to
    the ranks whose box of candidates meets its own, and the global IDs that
    two ranks both hold are the nodes they share. The ranks sharing a node
    are a rank's neighbours, and the edges between shared nodes that both
    hold are the interface edges, kept in the order of their key, the pair
    of global corner IDs, smaller first.

Ownership
    An interface entity (a node, an edge) is owned by the lowest rank that
    holds it. New nodes get global IDs behind the largest global node ID in
    the whole mesh: each rank numbers the new nodes it owns in its own local
    order, after the nodes owned by lower ranks (an exclusive scan of the
    counts). So ``raise_order`` equals the serial call up to that
    renumbering of new nodes. Owners send the IDs of interface edges' nodes
    to the higher ranks in the edges' key order, so only IDs travel.

Ghost layer
    A value at a node that reads the node's ring of elements (node normals,
    parametric curvatures) is exact on every node whose ring lies on one
    rank. For the interface nodes each rank also receives the elements of
    its neighbours that touch the nodes it shares with them (the ghost
    layer, its node coordinates and data sent anew on every call), and
    computes them again on the small mesh of their rings, in the global
    element order: the serial sums, in the serial order, so bit-identical.
    Anisotropic metrics read the rings of the ring's nodes too, so their
    ghost layer is two rings deep; the second ring comes from the same
    neighbours, which after the first already hold the whole ring of each of
    their nodes. Principal curvatures grow a patch up to ``radius`` from a
    node: the ghost layer there is every element of a rank whose box lies
    within ``radius`` of one's own box, whose centroid lies in that box
    widened by ``radius``, with the rings of the shared nodes. Metrics carry
    a frame from one element to the next, so they agree with the serial call
    to rounding (1e-13 relative); the others are bit-identical.

Interpolation
    Each target goes to the ranks whose box of background nodes holds it,
    which answer with the value and how far the interpolated position lies
    from the target: zero where an element holds the target, the distance to
    the nearest node where the value came from that node. The answer with
    the smallest such distance wins, and a target no element holds asks
    every rank for its nearest node, as the serial call falls back to the
    nearest node of the whole mesh. A target outside the box of all the
    background nodes keeps its initial value.

Reorientation
    Each rank orients each of its connected parts like the part's first
    element, then the ranks compare the direction of every interface edge:
    parts that meet form the components of the whole mesh, and each
    component takes the orientation of its first element at or after
    ``seed``, as in the serial call, on meshes that can be oriented.

Protocol
    Every step that can fail on one rank (a bad ID, an empty part, a refused
    argument) is followed by an agreement: all ranks exchange their error,
    and if any rank failed, every rank raises ``ParallelError`` naming the
    first failing rank and its message, so no rank waits in a collective
    call that another will never make (``each`` runs such a step). The
    interface exchanges are point-to-point messages between neighbours, in
    both directions between the same pairs; only boxes, counts, errors and
    the small graph of connected parts (reorientation) go to every rank.
    Interpolation sends each rank the targets inside its box (``alltoall``),
    and the few targets no element holds to every rank.
"""
from __future__ import annotations

import dataclasses
from typing import Dict, List, Optional, Tuple

import numpy as np

import tesskit2d as tk

NULL = 0xFFFFFFFF
_NULL64 = np.uint64(0xFFFFFFFFFFFFFFFF)
_TAG = 2047


class ParallelError(RuntimeError):
    """A failure on some rank, raised on every rank alike."""


@dataclasses.dataclass
class _Links:
    """What a sub-mesh shares with its neighbours; found on the first operation."""

    corners: np.ndarray  # conn's corners: 3 columns, or 4 with null_id for triangles
    neighbours: np.ndarray  # of the corners, by the library's slot rule
    element_ids: np.ndarray  # the global index of each local element
    boxes: np.ndarray  # (ranks, 2, dim): every rank's box of nodes
    ranks: List[int]  # neighbours: ranks sharing a node, ascending
    shared: Dict[int, np.ndarray]  # local nodes shared with each neighbour
    interface: np.ndarray  # local nodes shared with any rank, ascending
    edges: Dict[int, Tuple[np.ndarray, np.ndarray]]  # (elements, slots) shared with each neighbour, by key
    ordered: np.ndarray  # conn in the global element order
    halo: Optional[dict] = None  # the ring ghost layer, set up on first use


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
    _links: Optional[_Links] = dataclasses.field(default=None, init=False, repr=False, compare=False)


def agree(comm, error: Optional[BaseException]) -> None:
    """Raises ``ParallelError`` on every rank if any rank had an error."""
    errors = comm.allgather(None if error is None else f"{type(error).__name__}: {error}")
    for rank, message in enumerate(errors):
        if message is not None:
            raise ParallelError(f"rank {rank}: {message}")


def each(comm, call, *args):
    """Runs a rank's own step, then agrees: every rank goes on, or every rank raises."""
    result = error = None
    try:
        result = call(*args)
    except Exception as e:  # any failure must reach the other ranks, or they wait for ever
        error = e
    agree(comm, error)
    return result


def _swap(comm, outgoing: Dict[int, object]) -> Dict[int, object]:
    """Sends ``outgoing[q]`` to every rank q and receives one object from each of them."""
    from mpi4py import MPI
    requests = [comm.isend(payload, dest=q, tag=_TAG) for q, payload in outgoing.items()]
    incoming = {q: comm.recv(source=q, tag=_TAG) for q in outgoing}
    MPI.Request.waitall(requests)
    return incoming


def _max():
    from mpi4py import MPI
    return MPI.MAX


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


def share(dm: DistributedMesh, values, root: int = 0) -> np.ndarray:
    """Per-node values of the whole mesh, held on ``root``, to every rank's local nodes (by global ID)."""
    gids = dm.comm.gather(dm.gid, root=root)
    parts = each(dm.comm, lambda: [np.asarray(values)[g.astype(np.int64)] for g in gids] if gids else None)
    return dm.comm.scatter(parts, root=root)


def _corners(conn: np.ndarray) -> np.ndarray:
    """The corner columns of a connectivity: 3, or 4 when some element is a quadrangle."""
    rows = conn.shape[1]
    if rows in (3, 6):
        return conn[:, :3]
    if rows == 4:
        return conn
    quad = conn[:, 6] != NULL  # 8 or 9 rows: a triangle has null_id in row 6
    return np.where(quad[:, None], conn[:, :4], np.c_[conn[:, :3], np.full(len(conn), NULL, np.uint32)])


def _edge_ends(corners: np.ndarray, cells: np.ndarray, slots: np.ndarray) -> Tuple[np.ndarray, np.ndarray]:
    """The two corners of edge ``slot`` of each element, in the element's direction."""
    quad = (corners[cells, 3] != NULL) if corners.shape[1] == 4 else np.zeros(len(cells), dtype=bool)
    # A quadrangle's slot s is edge (s, s + 1), a triangle's the edge opposite corner s.
    first = np.where(quad, slots, (slots + 1) % 3)
    second = np.where(quad, (slots + 1) % 4, (slots + 2) % 3)
    return corners[cells, first], corners[cells, second]


def _edge_keys(ga: np.ndarray, gb: np.ndarray) -> np.ndarray:
    """An edge's key: its two global corner IDs, the smaller first, as one sortable record."""
    keys = np.empty(len(ga), dtype=[("a", "<u8"), ("b", "<u8")])
    keys["a"], keys["b"] = np.minimum(ga, gb), np.maximum(ga, gb)
    return keys


def _check(dm: DistributedMesh):
    """A rank's sub-mesh as the operations need it, or the reason it cannot be used."""
    coords, conn, gid = dm.coords, dm.conn, dm.gid
    if coords.ndim != 2 or coords.shape[1] not in (2, 3):
        raise ValueError(f"coords has shape {coords.shape}, not (n, 2) or (n, 3)")
    if conn.ndim != 2 or conn.shape[1] not in (3, 4, 6, 8, 9) or conn.dtype != np.uint32:
        raise ValueError(f"conn has shape {conn.shape} and type {conn.dtype}, not (m, 3, 4, 6, 8 or 9) uint32")
    if gid.shape != (len(coords),) or gid.dtype.kind not in "iu" or (gid.dtype.kind == "i" and (gid < 0).any()):
        raise ValueError(f"gid has shape {gid.shape} and type {gid.dtype}, not one global ID (>= 0) per node "
                         f"({len(coords)})")
    if len(np.unique(gid)) != len(gid):
        raise ValueError("gid gives two local nodes the same global ID")
    dm.gid = gid.astype(np.uint64, copy=False)
    if not len(conn):
        raise ValueError("the part holds no elements")
    ids = conn[conn != NULL]
    if ids.max(initial=0) >= len(coords):
        raise ValueError(f"conn names local node {int(ids.max())}, beyond the {len(coords)} nodes of coords")
    if dm.elements is not None and len(dm.elements) != len(conn):
        raise ValueError(f"elements has {len(dm.elements)} entries for {len(conn)} elements")
    corners = _corners(conn)
    from . import extras
    _, neighbours = extras.neighbours_of(np.ascontiguousarray(corners))
    free_cells, free_slots = np.nonzero(neighbours == NULL)
    if corners.shape[1] == 4:  # a triangle has no fourth edge
        keep = (free_slots < 3) | (corners[free_cells, 3] != NULL)
        free_cells, free_slots = free_cells[keep], free_slots[keep]
    a, b = _edge_ends(corners, free_cells, free_slots)
    return corners, neighbours, free_cells, free_slots, a, b


def links(dm: DistributedMesh) -> _Links:
    """The interface of a distributed mesh, found on first use and kept (see the module's notes)."""
    if dm._links is not None:
        return dm._links
    comm = dm.comm
    corners, neighbours, free_cells, free_slots, a, b = each(comm, _check, dm)
    boundary = np.unique(np.r_[a, b]).astype(np.int64)
    mine = dm.gid[boundary]
    dim = dm.coords.shape[1]
    box = np.r_[dm.coords.min(axis=0), dm.coords.max(axis=0)].reshape(2, dim)
    near = dm.coords[boundary]
    near_box = np.r_[near.min(axis=0), near.max(axis=0)].reshape(2, dim) if len(near) else np.full((2, dim), np.nan)
    boxes, near_boxes = map(np.array, zip(*comm.allgather((box, near_box))))
    meets = np.all((near_boxes[:, 0] <= near_box[1]) & (near_boxes[:, 1] >= near_box[0]), axis=1)
    candidates = [q for q in np.flatnonzero(meets).tolist() if q != comm.rank]
    theirs = _swap(comm, {q: mine for q in candidates})
    order = np.argsort(mine)
    shared = {}
    for q in candidates:
        common = np.intersect1d(mine, theirs[q], assume_unique=True)
        if len(common):
            shared[q] = boundary[order[np.searchsorted(mine[order], common)]]
    # Interface edges: free edges whose corners are both shared with the
    # same rank, confirmed by that rank holding the same key.
    ga, gb = dm.gid[a.astype(np.int64)], dm.gid[b.astype(np.int64)]
    keys = _edge_keys(ga, gb)
    candidate_edges = {}
    for q, nodes in shared.items():
        g = dm.gid[nodes]
        both = np.isin(ga, g) & np.isin(gb, g)
        candidate_edges[q] = (np.flatnonzero(both), keys[both])
    # Ranks that share a node are neighbours both ways, so both send.
    their_keys = _swap(comm, {q: k for q, (_, k) in candidate_edges.items()})
    edges = {}
    for q, (where, k) in candidate_edges.items():
        _, at, _ = np.intersect1d(k, their_keys[q], assume_unique=True, return_indices=True)
        edges[q] = (free_cells[where[at]], free_slots[where[at]])
    if dm.elements is not None:
        element_ids = np.asarray(dm.elements, dtype=np.int64)
    else:
        element_ids = (comm.exscan(len(dm.conn)) or 0) + np.arange(len(dm.conn), dtype=np.int64)
    interface = np.unique(np.concatenate(list(shared.values()))) if shared else np.empty(0, dtype=np.int64)
    ascending = bool(np.all(element_ids[1:] > element_ids[:-1]))
    ordered = dm.conn if ascending else dm.conn[np.argsort(element_ids, kind="stable")]
    dm._links = _Links(corners, neighbours, element_ids, boxes, sorted(shared), shared, interface, edges, ordered)
    return dm._links


def area(dm: DistributedMesh) -> float:
    """The total area of the distributed mesh: each rank's sum, summed."""
    from mpi4py import MPI
    value = each(dm.comm, tk.area, dm.coords, dm.conn)
    return dm.comm.allreduce(value, op=MPI.SUM)


def raise_order(dm: DistributedMesh) -> DistributedMesh:
    """Quadratic elements on every rank, one global node per edge across the interfaces."""
    comm = dm.comm
    ln = links(dm)
    coords, conn = each(comm, tk.convert_into_quadratic, dm.coords, dm.conn)
    n_old = len(dm.coords)
    # The mid node of an interface edge: rows 3 to 5 of a triangle (opposite
    # corner s), rows 4 to 7 of a quadrangle (from corner s).
    mids = {}
    for q, (cells, slots) in ln.edges.items():
        quad = (ln.corners[cells, 3] != NULL) if ln.corners.shape[1] == 4 else np.zeros(len(cells), dtype=bool)
        mids[q] = conn[cells, np.where(quad, 4 + slots, 3 + slots)].astype(np.int64) - n_old
    n_new = len(coords) - n_old
    lower = [mids[q] for q in ln.ranks if q < comm.rank]
    skip = np.unique(np.concatenate(lower)) if lower else np.empty(0, dtype=np.int64)  # owned below
    count = n_new - len(skip)
    n_global = dm.n_nodes or int(comm.allreduce(int(dm.gid.max(initial=0)) + 1, op=_max()))
    start = n_global + (comm.exscan(count) or 0)
    # The new nodes' IDs written once in place: consecutive, each owned node
    # after the k-th skipped one moved down by k (few slices, one pass).
    gid = np.empty(len(coords), dtype=np.uint64)
    gid[:n_old] = dm.gid
    new = gid[n_old:]
    new[:] = np.arange(start, start + n_new, dtype=np.uint64)
    ends = np.r_[skip, n_new]
    for k in range(len(skip)):
        new[ends[k] + 1: ends[k + 1]] -= np.uint64(k + 1)
    new[skip] = _NULL64
    # Owners tell the higher ranks the IDs of their shared edges' nodes, in key order.
    told = _swap(comm, {q: new[mids[q]] if q > comm.rank else None for q in ln.ranks})
    for q in ln.ranks:
        if q < comm.rank:
            at = mids[q]
            fill = (new[at] == _NULL64) & (told[q] != _NULL64)
            new[at[fill]] = told[q][fill]
    total = n_global + comm.allreduce(count)
    return DistributedMesh(comm, coords, conn, gid, dm.elements, total)


def _pieces(dm: DistributedMesh, ln: _Links, selected: Dict[int, np.ndarray], data=None):
    """Sends each neighbour q the own elements ``selected[q]`` with their nodes; returns what came back.

    A piece is (global element indices, conn in global node IDs, global node
    IDs, their coords, their data).
    """
    def piece(cells):
        block = dm.conn[cells]
        nodes = np.unique(block[block != NULL]).astype(np.int64)
        g = np.where(block == NULL, _NULL64, dm.gid[np.where(block == NULL, 0, block).astype(np.int64)])
        return (ln.element_ids[cells], g, dm.gid[nodes], dm.coords[nodes], None if data is None else data[nodes])
    return _swap(dm.comm, {q: piece(cells) for q, cells in selected.items()})


def _merge(dm: DistributedMesh, ln: _Links, own: np.ndarray, pieces, data=None):
    """A mesh of some own elements and received ones, in the global element order.

    Own nodes come first, in their local order, so that row i of a per-node
    result is local node i. Returns coords, conn, data, global element
    indices and global node IDs.
    """
    n = len(dm.gid)
    elements = [ln.element_ids[own]] + [p[0] for p in pieces]
    cells = [np.where(dm.conn[own] == NULL, _NULL64, dm.gid[np.minimum(dm.conn[own], n - 1).astype(np.int64)])]
    cells += [p[1] for p in pieces]
    elements, first = np.unique(np.concatenate(elements), return_index=True)
    cells = np.concatenate(cells)[first]
    node_gids = np.concatenate([dm.gid] + [p[2] for p in pieces])
    node_xyz = np.concatenate([dm.coords] + [p[3] for p in pieces])
    node_data = None if data is None else np.concatenate([data] + [p[4] for p in pieces])
    # Ghost nodes: the received ones this rank does not hold, each once.
    ids, first = np.unique(node_gids, return_index=True)
    ghost = first[first >= n]
    gids = np.r_[dm.gid, node_gids[ghost]]
    order = np.argsort(gids, kind="stable")
    valid = cells != _NULL64
    conn = np.full(cells.shape, NULL, dtype=np.uint32)
    conn[valid] = order[np.searchsorted(gids[order], cells[valid])]
    coords = np.r_[dm.coords, node_xyz[ghost]]
    out_data = None if data is None else np.r_[data, node_data[ghost]]
    return coords, conn, out_data, elements, gids


def _touching(dm: DistributedMesh, nodes: np.ndarray) -> np.ndarray:
    """Own elements with a corner among some local nodes."""
    mark = np.zeros(len(dm.gid) + 1, dtype=bool)
    mark[nodes] = True
    return np.flatnonzero(mark[np.minimum(dm.conn, len(dm.gid)).astype(np.int64)].any(axis=1))


def _halo(dm: DistributedMesh, ln: _Links) -> dict:
    """The ring ghost layer: the small mesh of the interface nodes' rings, set up once."""
    if ln.halo is not None:
        return ln.halo
    sent = {q: _touching(dm, ln.shared[q]) for q in ln.ranks}
    pieces = _pieces(dm, ln, sent)
    own = _touching(dm, ln.interface)
    coords, conn, _, _, gids = _merge(dm, ln, own, list(pieces.values()))
    # The small mesh keeps only the nodes its elements use.
    used = np.unique(conn[conn != NULL]).astype(np.int64)
    remap = np.full(len(gids) + 1, NULL, dtype=np.uint32)
    remap[used] = np.arange(len(used), dtype=np.uint32)
    small = remap[np.minimum(conn, len(gids)).astype(np.int64)]
    n = len(dm.gid)
    # Where each used ghost node's coordinates arrive from: (rank, row of its message).
    send_nodes = {q: np.unique(dm.conn[c][dm.conn[c] != NULL]).astype(np.int64) for q, c in sent.items()}
    ghost_gids = gids[used[used >= n]]
    source_rank = np.full(len(ghost_gids), -1)
    source_row = np.zeros(len(ghost_gids), dtype=np.int64)
    for q in ln.ranks:
        g = pieces[q][2]
        if not len(g):
            continue
        o = np.argsort(g)
        at = o[np.minimum(np.searchsorted(g[o], ghost_gids), len(g) - 1)]
        hit = (source_rank < 0) & (g[at] == ghost_gids)
        source_rank[hit], source_row[hit] = q, at[hit]
    positions = np.full(n, -1, dtype=np.int64)
    positions[used[used < n]] = np.arange((used < n).sum())
    ln.halo = {"conn": small, "own": used[used < n], "send": send_nodes, "source_rank": source_rank,
               "source_row": source_row, "at": positions[ln.interface]}
    return ln.halo


def _on_rings(dm: DistributedMesh, whole, ring) -> np.ndarray:
    """A ring-local per-node result: ``whole()`` on the own elements, then ``ring`` again at the interface nodes.

    ``whole()`` gives (result, per-node data or None); ``ring(coords, conn,
    data)`` runs on the small mesh of the interface nodes' rings. One
    agreement closes the call.
    """
    ln = links(dm)
    halo = _halo(dm, ln)
    result = error = None
    payload = dict.fromkeys(halo["send"])
    try:
        result, data = whole()
        payload = {q: (dm.coords[s], None if data is None else data[s]) for q, s in halo["send"].items()}
    except Exception as e:  # reported at the agreement below, after the exchange every rank makes
        error = e
    got = _swap(dm.comm, payload)
    if error is None and all(g is not None for g in got.values()):  # else the failing rank reports
        try:
            n_own = len(halo["own"])
            coords = np.empty((n_own + len(halo["source_rank"]), dm.coords.shape[1]))
            values = None if data is None else np.empty((len(coords),) + data.shape[1:])
            coords[:n_own] = dm.coords[halo["own"]]
            if data is not None:
                values[:n_own] = data[halo["own"]]
            for q in ln.ranks:
                hit = np.flatnonzero(halo["source_rank"] == q)
                coords[n_own + hit] = got[q][0][halo["source_row"][hit]]
                if data is not None:
                    values[n_own + hit] = got[q][1][halo["source_row"][hit]]
            if len(halo["conn"]):
                result[ln.interface] = ring(coords, halo["conn"], values)[halo["at"]]
        except Exception as e:
            error = e
    agree(dm.comm, error)
    return result


def normals(dm: DistributedMesh, power: float = 1.0, unit: bool = True) -> np.ndarray:
    """Node normals of a distributed surface (``tesskit2d.normals`` with ``power``), through a ghost layer."""
    ordered = links(dm).ordered
    return _on_rings(dm, lambda: (np.array(tk.normals(dm.coords, ordered, power, unit), copy=False), None),
                     lambda c, e, _: tk.normals(c, e, power, unit))


def parametric_curvatures(dm: DistributedMesh, tangents) -> np.ndarray:
    """The second form at every local node (``tesskit2d.parametric_curvatures``); ``dm.coords`` are (u, v)."""
    ordered = links(dm).ordered

    def whole():
        t = np.ascontiguousarray(tangents, dtype=float)
        return np.array(tk.parametric_curvatures(dm.coords, ordered, t), copy=False), t
    return _on_rings(dm, whole, tk.parametric_curvatures)


def _relayed(dm: DistributedMesh, ln: _Links) -> list:
    """The two-ring ghost layer: what the ring layer brings, and the rings of its nodes from the same senders."""
    sent = {q: _touching(dm, ln.shared[q]) for q in ln.ranks}
    first = _pieces(dm, ln, sent)
    # With the first layer this rank holds the whole ring of each of its
    # nodes; it sends each neighbour the rings of the nodes it sent before.
    coords, conn, _, elements, gids = _merge(dm, ln, np.arange(len(dm.conn)), list(first.values()))
    rings = {}
    for q, cells in sent.items():
        nodes = np.unique(dm.conn[cells][dm.conn[cells] != NULL]).astype(np.int64)
        mark = np.zeros(len(gids) + 1, dtype=bool)
        mark[nodes] = True
        rings[q] = np.flatnonzero(mark[np.minimum(conn, len(gids)).astype(np.int64)].any(axis=1))

    def piece(rows):
        block = conn[rows]
        nodes = np.unique(block[block != NULL]).astype(np.int64)
        g = np.where(block == NULL, _NULL64, gids[np.where(block == NULL, 0, block).astype(np.int64)])
        return elements[rows], g, gids[nodes], coords[nodes], None
    second = _swap(dm.comm, {q: piece(rows) for q, rows in rings.items()})
    return list(first.values()) + list(second.values())


def metrics_gen_aniso3d(dm: DistributedMesh, normal_size: float) -> np.ndarray:
    """Anisotropic metrics at every local node (``tesskit2d.metrics_gen_aniso3d``), through a two-ring ghost layer."""
    ln = links(dm)
    pieces = _relayed(dm, ln)
    coords, conn, _, _, _ = _merge(dm, ln, np.arange(len(dm.conn)), pieces)

    def local():
        out = np.zeros((len(dm.gid), 6))
        metrics = tk.metrics_gen_aniso3d(coords, conn, normal_size)
        rows = min(len(metrics), len(out))
        out[:rows] = metrics[:rows]
        return out
    return each(dm.comm, local)


def principal_curvatures(dm: DistributedMesh, radius: float, max_angle: float, max_elements: int,
                         hard_edges=None) -> np.ndarray:
    """Principal curvatures at every local node (``tesskit2d.principal_curvatures``).

    ``hard_edges`` holds pairs of global node IDs. The ghost layer reaches
    ``radius`` beyond each rank's box (see the module's notes), so a radius
    of a few elements keeps it thin.
    """
    comm = dm.comm
    ln = links(dm)
    reach = each(comm, lambda: abs(float(radius)) * (1 + 1e-9) if np.isfinite(radius) else 0.0)
    reach = comm.allreduce(reach, op=_max())  # the same on every rank, so that both ends of a pair send
    box = ln.boxes
    gap = np.maximum(0, np.maximum(box[:, 0] - box[comm.rank, 1], box[comm.rank, 0] - box[:, 1]))
    near = [q for q in np.flatnonzero(np.sqrt((gap ** 2).sum(axis=1)) <= reach).tolist() if q != comm.rank]
    near = sorted(set(near) | set(ln.ranks))
    corners = dm.conn[:, :3].astype(np.int64)
    centres = (dm.coords[corners[:, 0]] + dm.coords[corners[:, 1]] + dm.coords[corners[:, 2]]) / 3
    selected = {}
    for q in near:
        inside = np.all((centres >= box[q, 0] - reach) & (centres <= box[q, 1] + reach), axis=1)
        ring = _touching(dm, ln.shared[q]) if q in ln.shared else np.empty(0, dtype=np.int64)
        selected[q] = np.union1d(np.flatnonzero(inside), ring)
    pieces = _pieces(dm, ln, selected)
    coords, conn, _, _, gids = _merge(dm, ln, np.arange(len(dm.conn)), list(pieces.values()))

    def local():
        from . import extras
        _, neighbours = extras.neighbours_of(conn)
        hard = np.empty((0, 2), dtype=np.uint32)
        if hard_edges is not None and len(hard_edges):
            pairs = np.asarray(hard_edges, dtype=np.uint64)
            order = np.argsort(gids)
            at = np.minimum(np.searchsorted(gids[order], pairs), len(gids) - 1)
            known = (gids[order][at] == pairs).all(axis=1)
            hard = order[at[known]].astype(np.uint32)
        out = tk.principal_curvatures(coords, conn, neighbours, radius, max_angle, max_elements, hard)
        return np.ascontiguousarray(out[: len(dm.gid)])
    return each(comm, local)


def _components(neighbours: np.ndarray) -> np.ndarray:
    """Connected parts of a mesh across its neighbour table: a label per element, parts numbered by first element."""
    n = len(neighbours)
    valid = neighbours < n
    src = np.repeat(np.arange(n), neighbours.shape[1])[valid.ravel()]
    dst = neighbours.ravel()[valid.ravel()].astype(np.int64)
    label = np.arange(n)
    while True:
        a, b = label[src], label[dst]
        if np.array_equal(a, b):
            break
        np.minimum.at(label, a, b)  # hook each root under the smallest label next to it
        while True:  # and let every element point straight at its root
            jumped = label[label]
            if np.array_equal(jumped, label):
                break
            label = jumped
    return np.unique(label, return_inverse=True)[1]


def reorient(dm: DistributedMesh, seed: int = 0, all_parts: bool = True) -> Tuple[int, np.ndarray]:
    """``tesskit2d.mesh_reorient`` on a distributed linear mesh: (the flip count of all ranks, the local conn).

    ``seed`` is a global element index. Every connected part of the whole
    mesh with an element at or after ``seed`` (only the part of ``seed``
    unless ``all_parts``) takes the orientation of its first such element.
    A neighbour that shares no node of its edge gives the count -2.
    """
    comm = dm.comm
    ln = links(dm)

    total = comm.allreduce(len(dm.conn))

    def local():
        if dm.conn.shape[1] not in (3, 4):
            raise ValueError("reorientation across ranks reads linear elements (3 or 4 nodes)")
        if not 0 <= seed < total:
            raise ValueError(f"seed {seed} is not below the {total} elements")
        return tk.mesh_reorient(dm.conn, ln.neighbours, 0, 1)[:2]
    flips, conn = each(comm, local)
    flipped = conn[:, 0] != dm.conn[:, 0]
    label = _components(ln.neighbours)
    n_parts = int(label.max()) + 1
    # Per part: its first element at or after seed, and whether the local pass flipped that one.
    ids = ln.element_ids
    after = np.where(ids >= seed, ids, np.iinfo(np.int64).max)
    first = np.full(n_parts, np.iinfo(np.int64).max)
    np.minimum.at(first, label, after)
    at = np.full(n_parts, -1)
    hit = after == first[label]
    at[label[hit]] = np.flatnonzero(hit)
    first_flipped = np.where(at >= 0, flipped[np.maximum(at, 0)], False)
    # Directions of the interface edges after the local pass, in key order: same direction on both sides asks
    # for one of the two parts to turn.
    mine = {}
    for q, (cells, slots) in ln.edges.items():
        a, b = _edge_ends(ln.corners, cells, slots)
        upward = dm.gid[a.astype(np.int64)] < dm.gid[b.astype(np.int64)]
        mine[q] = (label[cells], upward ^ flipped[cells])  # a flip turns every edge round
    theirs = _swap(comm, mine)
    base = comm.exscan(n_parts) or 0
    links_found = []
    for q in ln.ranks:
        if q > comm.rank:  # each pair once
            continue
        ours, their = mine[q], theirs[q]
        rows = np.c_[base + ours[0], -1 - their[0], ours[1] == their[1]]
        links_found.append((q, np.unique(rows, axis=0)))
    graph = comm.allgather((base, first, first_flipped, links_found, flips < 0))
    turn = _solve(graph, seed, all_parts)[base: base + n_parts]
    final = np.where(turn[label] < 0, False, flipped ^ (turn[label] == 1))
    out = dm.conn.copy()
    out[final, 0], out[final, 2] = dm.conn[final, 2], dm.conn[final, 0]
    count = comm.allreduce(int(final.sum()))
    if any(g[4] for g in graph):
        count = -2
    return count, out


def _solve(graph, seed: int, all_parts: bool) -> np.ndarray:
    """Which parts turn (1), stay (0) or are not reached (-1), from every rank's parts and interface links."""
    bases = [g[0] for g in graph]
    firsts = np.concatenate([g[1] for g in graph])
    first_flipped = np.concatenate([g[2] for g in graph])
    adjacent: Dict[int, list] = {p: [] for p in range(len(firsts))}
    for rank, g in enumerate(graph):
        for q, rows in g[3]:
            for a, b, same in rows.tolist():
                b = bases[q] + (-1 - b)
                adjacent[a].append((b, same))
                adjacent[b].append((a, same))
    turn = np.full(len(firsts), -1)
    seen = np.zeros(len(firsts), dtype=bool)
    components = []
    for start in range(len(firsts)):
        if seen[start]:
            continue
        members, stack = [start], [start]
        seen[start] = True
        relative = {start: 0}
        while stack:
            p = stack.pop()
            for r, same in adjacent[p]:
                if r not in relative:
                    relative[r] = relative[p] ^ int(same)
                    seen[r] = True
                    members.append(r)
                    stack.append(r)
        components.append(relative)
    # Components in the order the serial scan meets them: by first element at or after seed.
    for relative in sorted(components, key=lambda rel: min(firsts[p] for p in rel)):
        ref = min(relative, key=lambda p: firsts[p])
        if firsts[ref] == np.iinfo(np.int64).max:
            continue
        holds_seed = firsts[ref] == seed
        if not all_parts and not holds_seed:
            continue
        # The first element keeps its orientation: its part turns back what the local pass did to it.
        x_ref = int(first_flipped[ref]) ^ relative[ref]
        for p, rel in relative.items():
            turn[p] = x_ref ^ rel
    return turn


def _holding(coords: np.ndarray, corners: np.ndarray, points: np.ndarray, which: np.ndarray):
    """The points among ``which`` that an element holds (within the walk's tolerance), and that element.

    Every element is tried, in blocks of points; for the few points a walk
    could not settle.
    """
    if not len(which):
        return np.empty(0, dtype=np.int64), np.empty(0, dtype=np.int64)
    quad = (corners[:, 3] != NULL) if corners.shape[1] == 4 else np.zeros(len(corners), dtype=bool)
    c = corners[:, :3].astype(np.int64)
    c = np.c_[c, np.where(quad, corners[:, -1], corners[:, 2]).astype(np.int64)]
    x, y = coords[c, 0], coords[c, 1]
    lo_x, hi_x, lo_y, hi_y = x.min(axis=1), x.max(axis=1), y.min(axis=1), y.max(axis=1)
    measure = np.where(quad, (x[:, 2] - x[:, 0]) * (y[:, 3] - y[:, 1]) - (x[:, 3] - x[:, 1]) * (y[:, 2] - y[:, 0]),
                       (x[:, 1] - x[:, 0]) * (y[:, 2] - y[:, 0]) - (x[:, 2] - x[:, 0]) * (y[:, 1] - y[:, 0]))
    # Edge i of a triangle runs from corner i + 1 to i + 2, of a quadrangle from i to i + 1.
    tri_edges, quad_edges = [(1, 2), (2, 0), (0, 1)], [(0, 1), (1, 2), (2, 3), (3, 0)]
    points_out, elements_out = [], []
    for lo in range(0, len(which), 64):
        rows = which[lo: lo + 64]
        px, py = points[rows, 0][:, None], points[rows, 1][:, None]
        i, e = np.nonzero((px >= lo_x) & (px <= hi_x) & (py >= lo_y) & (py <= hi_y))
        ok = (measure[e] > 0) & np.isfinite(measure[e])
        for s in range(4):
            a, b = np.where(quad[e], quad_edges[s][0], tri_edges[min(s, 2)][0]), \
                np.where(quad[e], quad_edges[s][1], tri_edges[min(s, 2)][1])
            ax, ay = x[e, a] - points[rows[i], 0], y[e, a] - points[rows[i], 1]
            bx, by = x[e, b] - points[rows[i], 0], y[e, b] - points[rows[i], 1]
            ok &= ax * by - ay * bx >= -(measure[e] * 1e-6)
        i, first = np.unique(i[ok], return_index=True)
        points_out.append(rows[i]), elements_out.append(e[ok][first])
    return np.concatenate(points_out), np.concatenate(elements_out)


def _nearest(coords: np.ndarray, values: np.ndarray, points: np.ndarray):
    """The squared distance to the nearest local node and its value, for each point (brute force, in blocks)."""
    d2 = np.full(len(points), np.inf)
    found = np.zeros((len(points),) + values.shape[1:])
    for lo in range(0, len(points), 256):
        block = points[lo: lo + 256]
        dist = ((block[:, None, :] - coords[None, :, :]) ** 2).sum(axis=2)
        k = dist.argmin(axis=1)
        d2[lo: lo + 256] = dist[np.arange(len(block)), k]
        found[lo: lo + 256] = values[k]
    return d2, found


def interpolate(dm: DistributedMesh, field, targets, initial=None) -> np.ndarray:
    """``tesskit2d.interpolate`` of a field on a distributed planar background mesh at points held by each rank.

    ``field`` has one value per local node, ``(n,)``; ``targets`` are this
    rank's points ``(t, 2)``. Returns their values: ``initial`` (0 by
    default) outside the box of the whole background mesh. A field of shape
    ``(n, r)`` leaves every target at its initial value, as the library's
    form for such fields does.
    """
    comm = dm.comm
    ln = links(dm)
    from . import extras

    def tables():
        values = np.asarray(field, dtype=float)
        points = np.asarray(targets, dtype=float).reshape(-1, 2)
        out = np.zeros((len(points),) + values.shape[1:]) if initial is None else np.array(initial, dtype=float)
        if dm.coords.shape[1] != 2:
            raise ValueError("interpolation works in the plane: coords must be (n, 2)")
        if values.shape[:1] != (len(dm.coords),):
            raise ValueError(f"field has {values.shape[0] if values.ndim else 0} rows for {len(dm.coords)} nodes")
        if out.shape[:1] != (len(points),):
            raise ValueError("initial needs one row per target")
        return values, points, out, extras.ancestors_of(ln.corners, len(dm.coords))
    field, targets, out, ancestors = each(comm, tables)
    if field.ndim != 1:
        return out
    kind = tk.T3 if ln.corners.shape[1] == 3 else tk.MIXED
    box = ln.boxes
    inside = [np.all((targets >= box[q, 0]) & (targets <= box[q, 1]), axis=1) for q in range(comm.size)]
    asked = comm.alltoall([targets[inside[q]] for q in range(comm.size)])

    def answer(points):
        n = len(dm.coords)
        coords = np.r_[dm.coords, points]
        anc = np.r_[ancestors, np.full(len(points), NULL, dtype=np.uint32)]
        wanted = np.arange(n, len(coords), dtype=np.uint32)
        got = []
        for values in (field, dm.coords[:, 0], dm.coords[:, 1]):
            values = np.r_[values, np.full(len(points), np.nan)]
            got.append(tk.interpolate(coords, ln.corners, ln.neighbours, anc, values, wanted, kind)[n:])
        # Where an element holds the point, x and y come back as the point's own (affine fields are
        # reproduced); where the nearest node answered, as that node's: the distance tells them apart.
        value, off = got[0], np.hypot(got[1] - points[:, 0], got[2] - points[:, 1])
        # A walk that left the part (its border is no straight line) says nothing of the
        # elements behind: these points are looked up in every element, and the one holding
        # each is asked alone.
        for i, e in zip(*_holding(dm.coords, ln.corners, points, np.flatnonzero(~(off <= eps)))):
            nodes = ln.corners[e][ln.corners[e] != NULL].astype(np.int64)
            k = len(nodes)
            alone = np.r_[dm.coords[nodes], points[i: i + 1]]
            cell = np.arange(k, dtype=np.uint32)[None, :]
            kind_of = tk.T3 if k == 3 else tk.Q4
            one = tk.interpolate(alone, cell, np.full_like(cell, NULL), np.r_[np.zeros(k, np.uint32), NULL],
                                 np.r_[field[nodes], np.nan], np.array([k], dtype=np.uint32), kind_of)
            value[i], off[i] = one[k], 0.0
        return value, off
    whole = np.r_[box[:, 0].min(axis=0), box[:, 1].max(axis=0)].reshape(2, 2)
    eps = 1e-9 * (float(np.hypot(*(whole[1] - whole[0]))) or 1.0)
    answers = comm.alltoall(each(comm, lambda: [answer(p) for p in asked]))
    best = np.full(len(targets), np.inf)
    value = np.full(len(targets), np.nan)
    for q in range(comm.size):
        rows = np.flatnonzero(inside[q])
        v, d = answers[q]
        better = d < best[rows]  # NaN (outside that rank's walk) never wins
        best[rows[better]], value[rows[better]] = d[better], v[better]
    in_whole = np.all((targets >= whole[0]) & (targets <= whole[1]), axis=1)
    # No element holds these: the serial call takes the nearest node of the whole mesh.
    lost = np.flatnonzero(in_whole & ~(best <= eps))
    everyone = comm.allgather(targets[lost])
    d2, v = _nearest(dm.coords, field, np.concatenate(everyone)) if sum(map(len, everyone)) else (None, None)
    nearest = comm.allgather((d2, v))
    if len(lost):
        offset = sum(len(e) for e in everyone[: comm.rank])
        rows = slice(offset, offset + len(lost))
        d2s = np.array([n[0][rows] for n in nearest])
        values = np.array([n[1][rows] for n in nearest])
        pick = d2s.argmin(axis=0)
        value[lost] = values[pick, np.arange(len(lost))]
    out[in_whole] = value[in_whole]
    return out


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
