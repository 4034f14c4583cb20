"""The distributed operations against the serial calls, under mpirun -np 2, 3 and 4."""
import numpy as np
import pytest
from mpi4py import MPI

import tesskit2d as tk
from tesskit2d import parallel

comm = MPI.COMM_WORLD
N = 0xFFFFFFFF


def mixed_mesh(n=60, seed=3):
    """A jittered n x n grid, a third of its cells cut into triangles: about 1.3 n^2 elements."""
    rng = np.random.default_rng(seed)
    t = np.linspace(0, 1, n + 1)
    x, y = np.meshgrid(t, t)
    xy = np.c_[x.ravel(), y.ravel()] + rng.uniform(-0.2, 0.2, ((n + 1) ** 2, 2)) / n
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * (n + 1) + i).ravel()
    quads = np.c_[a, a + 1, a + n + 2, a + n + 1]
    cut = rng.random(len(quads)) < 1 / 3
    tri = np.r_[quads[cut][:, [0, 1, 2]], quads[cut][:, [2, 3, 0]]]
    conn = np.r_[np.c_[tri, np.full(len(tri), N)], quads[~cut]].astype(np.uint32)
    return xy, conn[rng.permutation(len(conn))]


def by_corners(coords, conn):
    """Each element's node positions, keyed by its sorted corner positions."""
    corners = np.where(conn[:, 3 if conn.shape[1] in (4, 9) else 0] == N, 3, 4) if conn.shape[1] != 6 else np.full(len(conn), 3)
    out = {}
    for cell, k in zip(conn, corners):
        ids = cell[cell != N]
        out[tuple(sorted(map(tuple, coords[cell[:k]].tolist())))] = coords[ids].tobytes()
    return out


def test_raised_order_equals_the_serial_one_up_to_new_ids():
    xy, conn = mixed_mesh()
    out = parallel.raise_order(parallel.distribute(xy, conn, comm))
    assert len(out.conn) > 0
    whole = parallel.gather(out)
    if comm.rank == 0:
        coords, cells, _ = whole
        serial_xy, serial_conn = tk.convert_into_quadratic(xy, conn)
        assert len(coords) == len(serial_xy) and not np.isnan(coords).any()
        assert np.array_equal(coords[: len(xy)], xy)
        assert by_corners(coords, cells) == by_corners(serial_xy, serial_conn)


def test_area_and_normals_agree_with_the_serial_calls():
    xy, conn = mixed_mesh(40)
    xyz = np.c_[xy, 0.3 * np.sin(3 * xy[:, 0]) * np.cos(2 * xy[:, 1])]
    dm = parallel.distribute(xyz, conn, comm)
    assert parallel.area(dm) == pytest.approx(tk.area(xyz, conn), rel=1e-13)
    normals = parallel.normals(dm)
    whole = parallel.gather(dm, normals)
    if comm.rank == 0:
        assert np.allclose(whole[2], tk.normals(xyz, conn, 1.0, True), rtol=0, atol=1e-13)


def test_a_bad_mesh_on_the_root_fails_on_every_rank():
    xy, conn = mixed_mesh(4)
    with pytest.raises(parallel.ParallelError, match="rank 0"):
        parallel.distribute(xy, np.r_[conn, [[0, 1, 999, N]]].astype(np.uint32), comm)
    with pytest.raises(parallel.ParallelError, match="cannot fill"):
        parallel.distribute(xy, conn[: comm.size - 1], comm)


def test_the_command_line_under_mpirun_writes_the_serial_result(tmp_path_factory):
    import meshio
    from tesskit2d.cli import main
    folder = comm.bcast(str(tmp_path_factory.mktemp("cli")) if comm.rank == 0 else None)
    source, out = f"{folder}/in.vtu", f"{folder}/out.vtu"
    if comm.rank == 0:
        xy, conn = mixed_mesh(20)
        tri = conn[:, 3] == N
        cells = [("triangle", conn[tri, :3]), ("quad", conn[~tri])]
        meshio.write(source, meshio.Mesh(np.c_[xy, np.zeros(len(xy))], cells,
                                         cell_data={"tag": [np.arange(tri.sum()), np.arange((~tri).sum())]}))
    comm.barrier()
    assert main(["raise-order", source, out]) == 0
    if comm.rank == 0:
        serial = tk.read(source)
        coords, conn = tk.convert_into_quadratic(serial.coords(), serial.surface())
        got = tk.read(out)
        assert by_corners(got.coords(), got.surface()) == by_corners(coords, conn)
        assert np.array_equal(got.cell_data["tag"]["quad9"], np.arange((serial.surface()[:, 3] != N).sum()))
    assert main(["raise-order", f"{folder}/missing.vtu", out]) == 2
