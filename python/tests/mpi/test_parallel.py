"""The distributed operations against the serial calls, under mpirun -np 2, 3 and 4."""
import numpy as np
import pytest
from mpi4py import MPI

import tesskit2d as tk
from tesskit2d import extras, parallel

comm = MPI.COMM_WORLD
N = 0xFFFFFFFF


def planar(n=60, cut=1 / 3, seed=3):
    """A jittered n x n grid, a share ``cut`` of its cells split into triangles, shuffled."""
    rng = np.random.default_rng(seed)
    t = np.linspace(0, 1, n + 1)
    x, y = np.meshgrid(t, t)
    xy = np.c_[x.ravel(), y.ravel()] + rng.uniform(-0.2, 0.2, ((n + 1) ** 2, 2)) / n
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * (n + 1) + i).ravel()
    quads = np.c_[a, a + 1, a + n + 2, a + n + 1]
    split = rng.random(len(quads)) < cut
    tri = np.r_[quads[split][:, [0, 1, 2]], quads[split][:, [2, 3, 0]]]
    conn = np.r_[np.c_[tri, np.full(len(tri), N)], quads[~split]].astype(np.uint32)
    conn = conn[rng.permutation(len(conn))]
    return xy, np.ascontiguousarray(conn[:, :3]) if cut == 1 else conn


def sphere(n=40):
    """The unit sphere from a cube of 6 n x n faces, each cell in two triangles: 12 n^2 elements."""
    t = np.linspace(-1, 1, n + 1)
    u, v = map(np.ravel, np.meshgrid(t, t))
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * (n + 1) + i).ravel()
    cells = np.r_[np.c_[a, a + 1, a + n + 2], np.c_[a, a + n + 2, a + n + 1]]
    points, conn = [], []
    for axis in range(3):
        for side in (-1, 1):
            p = np.insert(np.c_[u, v * side], axis, side, axis=1)  # outward for both sides
            conn.append(cells + len(points) * len(u))
            points.append(p)
    points = np.concatenate(points)
    points = np.round(points / np.linalg.norm(points, axis=1)[:, None], 12)
    points, index = np.unique(points, axis=0, return_inverse=True)
    return points, index.ravel()[np.concatenate(conn)].astype(np.uint32)


def by_corners(coords, conn):
    """Each element's node positions, keyed by its sorted corner positions."""
    corners = np.where(conn[:, 3 if conn.shape[1] in (4, 9) else 0] == N, 3, 4) if conn.shape[1] != 6 else np.full(len(conn), 3)
    out = {}
    for cell, k in zip(conn, corners):
        ids = cell[cell != N]
        out[tuple(sorted(map(tuple, coords[cell[:k]].tolist())))] = coords[ids].tobytes()
    return out


def gathered(dm, values):
    """Per-node values of every rank, on rank 0 in the whole mesh's node order."""
    whole = parallel.gather(dm, values)
    return whole[2] if whole else None


@pytest.mark.parametrize("cut", [0, 1 / 3, 1])
def test_raised_order_equals_the_serial_one_up_to_new_ids(cut):
    xy, conn = planar(100, cut)
    whole = parallel.gather(parallel.raise_order(parallel.distribute(xy, conn, comm)))
    if comm.rank == 0:
        coords, cells, _ = whole
        serial_xy, serial_conn = tk.convert_into_quadratic(xy, conn)
        assert len(coords) == len(serial_xy) and np.array_equal(coords[: len(xy)], xy)
        assert by_corners(coords, cells) == by_corners(serial_xy, serial_conn)


def test_values_over_rings_and_patches_equal_the_serial_ones():
    xyz, conn = sphere(30)
    bumpy_xy, bumpy = planar(100)
    bumpy_xyz = np.c_[bumpy_xy, 0.3 * np.sin(3 * bumpy_xy[:, 0]) * np.cos(2 * bumpy_xy[:, 1])]
    uv, plane = planar(80, cut=1)
    tangents = np.c_[np.ones(len(uv)), 0 * uv[:, 0], 2 * uv[:, 0], 0 * uv[:, 0], np.ones(len(uv)), uv[:, 1] ** 2]
    dm, surface, flat = (parallel.distribute(*mesh, comm) for mesh in ((xyz, conn), (bumpy_xyz, bumpy), (uv, plane)))
    got = [gathered(dm, parallel.normals(dm)), gathered(surface, parallel.normals(surface, 0.0)),
           gathered(dm, parallel.principal_curvatures(dm, 0.15, 0.5, 30)),
           gathered(flat, parallel.parametric_curvatures(flat, parallel.share(flat, tangents))),
           gathered(dm, parallel.metrics_gen_aniso3d(dm, -0.1))]
    assert parallel.area(surface) == pytest.approx(tk.area(bumpy_xyz, bumpy), rel=1e-13)
    if comm.rank == 0:
        _, neighbours = extras.neighbours_of(conn)
        exact = [tk.normals(xyz, conn, 1.0, True), tk.normals(bumpy_xyz, bumpy, 0.0, True),
                 tk.principal_curvatures(xyz, conn, neighbours, 0.15, 0.5, 30),
                 tk.parametric_curvatures(uv, plane, tangents)]
        for serial, mine in zip(exact, got):
            assert np.array_equal(mine, serial)
        # Metrics carry a frame from element to element: equal to rounding.
        serial = tk.metrics_gen_aniso3d(xyz, conn, -0.1)
        assert np.abs(got[4] - serial).max() <= 1e-13 * np.abs(serial).max()


def test_interpolation_on_interfaces_in_a_hole_and_outside_gives_the_serial_values():
    xy, conn = planar(100)
    centre = xy[conn[:, :3]].mean(axis=1)
    conn = conn[np.hypot(*(centre - 0.5).T) > 0.2]  # a hole: no element holds its points
    field = np.sin(3 * xy[:, 0]) + xy[:, 1] ** 2
    bg = parallel.distribute(xy, conn, comm)
    rng = np.random.default_rng(comm.rank)
    # Random points in and beyond the mesh's box, nodes and edge midpoints of the interfaces.
    shared = bg.coords[parallel.links(bg).interface]
    points = np.r_[rng.uniform(-0.1, 1.1, (2000, 2)), shared, (shared[1:] + shared[:-1]) / 2]
    mine = parallel.interpolate(bg, parallel.share(bg, field), points, np.full(len(points), -7.0))
    points, mine = comm.gather(points), comm.gather(mine)
    if comm.rank == 0:
        points, mine = np.concatenate(points), np.concatenate(mine)
        coords = np.r_[xy, points]
        _, neighbours = extras.neighbours_of(conn)
        values = np.r_[field, np.full(len(points), -7.0)]
        targets = np.arange(len(xy), len(coords), dtype=np.uint32)
        serial = tk.interpolate(coords, conn, neighbours, extras.ancestors_of(conn, len(coords)), values, targets,
                                tk.MIXED)[len(xy):]
        assert np.abs(mine - serial).max() <= 1e-13 * np.abs(serial).max()
        assert (mine == serial).mean() > 0.95 and (mine == -7).sum() > 100


def test_orientation_agrees_across_ranks_part_by_part():
    xy, conn = planar(100)
    # Two parts side by side, elements interleaved, a third of them turned round.
    xy, conn = np.r_[xy, xy + [1.5, 0]], np.r_[conn, np.where(conn == N, N, conn + len(xy))].astype(np.uint32)
    rng = np.random.default_rng(5)
    conn = conn[rng.permutation(len(conn))]
    turn = rng.random(len(conn)) < 1 / 3
    conn[turn, 0], conn[turn, 2] = conn[turn, 2], conn[turn, 0].copy()
    dm = parallel.distribute(xy, conn, comm)
    _, neighbours = extras.neighbours_of(conn)
    late = int(np.flatnonzero(conn[:, 0] < len(xy) // 2)[-1])  # late in the first part
    cases = ((0, True), (late, True), (late, False))
    got = [parallel.reorient(dm, *case) for case in cases]
    whole = [parallel.gather(parallel.DistributedMesh(comm, dm.coords, c, dm.gid, dm.elements)) for _, c in got]
    if comm.rank == 0:
        for (seed, all_parts), (count, _), mine in zip(cases, got, whole):
            serial_count, serial, _ = tk.mesh_reorient(conn, neighbours, seed, int(all_parts))
            assert count == serial_count and np.array_equal(mine[1], serial)


def test_bad_input_on_one_rank_fails_on_every_rank_alike():
    xy, conn = planar(4)
    with pytest.raises(parallel.ParallelError, match="rank 0"):
        parallel.distribute(xy, np.r_[conn, [[0, 1, 999, N]]].astype(np.uint32), comm)
    with pytest.raises(parallel.ParallelError, match="cannot fill"):
        parallel.distribute(xy, conn[: comm.size - 1], comm)
    last = comm.size - 1
    dm = parallel.distribute(xy, conn, comm)
    bad = dm.conn.copy()
    if comm.rank == last:
        bad[0, 1] = len(dm.coords)
    empty = dm.conn[:0] if comm.rank == last else dm.conn
    for broken in (bad, empty):
        part = parallel.DistributedMesh(comm, dm.coords, broken, dm.gid)
        with pytest.raises(parallel.ParallelError, match=f"rank {last}: ValueError: (conn names|the part holds no)"):
            parallel.normals(part)


def test_the_command_line_under_mpirun_writes_the_serial_result(tmp_path_factory):
    import meshio
    from tesskit2d.cli import main
    folder = comm.bcast(str(tmp_path_factory.mktemp("cli")) if comm.rank == 0 else None)
    source, out = f"{folder}/in.vtu", f"{folder}/out.vtu"
    xy, conn = planar(20)
    tri = conn[:, 3] == N
    if comm.rank == 0:
        cells = [("triangle", conn[tri, :3]), ("quad", conn[~tri])]
        meshio.write(source, meshio.Mesh(np.c_[xy, np.zeros(len(xy))], cells,
                                         cell_data={"tag": [np.arange(tri.sum()), np.arange((~tri).sum())]}))
    comm.barrier()
    assert main(["raise-order", source, out]) == 0
    assert main(["raise-order", f"{folder}/missing.vtu", out]) == 2
    if comm.rank == 0:  # after the last collective call, so that a failure here cannot leave a rank waiting
        serial = tk.read(source)
        coords, cells = tk.convert_into_quadratic(serial.coords(), serial.surface())
        got = tk.read(out)
        assert by_corners(got.coords(), got.surface()) == by_corners(coords, cells)
        assert np.array_equal(got.cell_data["tag"]["quad9"], np.arange((~tri).sum()))


def test_the_command_line_reads_and_writes_a_part_per_rank(tmp_path_factory):
    import meshio
    from tesskit2d.cli import main
    folder = comm.bcast(str(tmp_path_factory.mktemp("parts")) if comm.rank == 0 else None)
    xy, conn = planar(20)
    xyz = np.c_[xy, xy[:, 0] * xy[:, 1]]
    dm = parallel.distribute(xyz, conn, comm)
    tri = dm.conn[:, 3] == N
    kinds = [("triangle", dm.conn[tri, :3]), ("quad", dm.conn[~tri])]
    # The elements' global order makes the sums at each node run as in the serial call.
    meshio.write(f"{folder}/part_{comm.rank}.vtu", meshio.Mesh(dm.coords, kinds, point_data={"global_id": dm.gid},
                                                                 cell_data={"global_element": [dm.elements[tri],
                                                                                               dm.elements[~tri]]}))
    assert main(["normals", "--parts", f"{folder}/part_{{rank}}.vtu", f"{folder}/normals_{{rank}}.vtu"]) == 0
    # A part file missing on the last rank ends every rank with status 2.
    missing = f"{folder}/part_{{rank}}.vt" + ("x" if comm.rank == comm.size - 1 else "u")
    assert main(["normals", "--parts", missing, f"{folder}/n_{{rank}}.vtu"]) == 2
    got = tk.read(f"{folder}/normals_{comm.rank}.vtu")
    serial = tk.normals(xyz, conn, 1.0, True)[got.point_data["global_id"].astype(np.int64)]
    assert np.array_equal(got.point_data["normal"], serial)


def test_every_parallel_subcommand_writes_what_the_serial_one_writes(tmp_path_factory):
    import meshio
    from tesskit2d.cli import _parser, main
    folder = comm.bcast(str(tmp_path_factory.mktemp("every")) if comm.rank == 0 else None)
    if comm.rank == 0:
        xy, conn = planar(30, cut=1)
        meshio.write(f"{folder}/plane.vtu", meshio.Mesh(np.c_[xy, 0 * xy[:, 0]], [("triangle", conn)],
                                                        point_data={"f": np.sin(3 * xy[:, 0]) + xy[:, 1]}))
        turned = np.where((np.arange(len(conn)) % 3 == 0)[:, None], conn[:, [0, 2, 1]], conn)
        meshio.write(f"{folder}/turned.vtu", meshio.Mesh(np.c_[xy, 0 * xy[:, 0]], [("triangle", turned)]))
        meshio.write(f"{folder}/target.vtu", meshio.Mesh(np.c_[xy * 1.2 - 0.1, 0 * xy[:, 0]], [("triangle", conn)]))
        xyz, conn = sphere(10)
        meshio.write(f"{folder}/ball.vtu", meshio.Mesh(xyz, [("triangle", conn)]))
    comm.barrier()
    runs = [["reorient", "turned.vtu", "--seed", "7"], ["curvature", "ball.vtu", "--radius", "0.3"],
            ["interpolate", "target.vtu", "--background", f"{folder}/plane.vtu"], ["measure", "plane.vtu"],
            ["metrics", "ball.vtu", "--mode", "generation", "--normal-size", "-0.1"]]
    runs = [[argv[0], f"{folder}/{argv[1]}", f"{folder}/{argv[0]}.vtu"] + argv[2:] for argv in runs]
    assert [main(argv) for argv in runs] == [0] * len(runs)
    if comm.rank == 0:
        for argv in runs:
            args = _parser().parse_args(argv)
            serial, got = args.run(args), tk.read(argv[2])
            assert np.array_equal(serial.points, got.points) and np.array_equal(serial.surface(), got.surface())
            for name, values in {**serial.point_data, **serial.surface_cell_data()}.items():
                mine = got.point_data.get(name, got.surface_cell_data().get(name))
                assert np.allclose(mine, values, rtol=1e-13, atol=1e-13 * np.abs(values).max()), (argv[0], name)
