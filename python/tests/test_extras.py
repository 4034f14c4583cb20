"""The companion tables feed the exports that read them."""
import numpy as np
import pytest

import tesskit2d as tk
from meshes import N, grid, square_t3, square_t3_neighbours


def test_tables_of_the_square_are_those_the_exports_read():
    count, neighbours = tk.extras.neighbours_of(square_t3)
    assert count == 0 and neighbours.tolist() == square_t3_neighbours.tolist()
    assert tk.extras.ancestors_of(square_t3, 5).tolist() == [0, 0, 0, 1, N]  # first holder


def test_a_linear_field_interpolates_exactly_through_the_computed_tables():
    xy, quads = grid(6)
    _, conn = tk.split_Q4_into_T3(quads)
    targets = np.random.default_rng(4).uniform(0.05, 0.95, (30, 2))
    coords = np.r_[xy, targets]
    _, neighbours = tk.extras.neighbours_of(conn)
    ancestors = tk.extras.ancestors_of(conn, len(coords))
    field = np.r_[3 * xy[:, 0] - 2 * xy[:, 1], np.zeros(len(targets))]
    ids = np.arange(len(xy), len(coords), dtype=np.uint32)
    out = tk.interpolate(coords, conn, neighbours, ancestors, field, ids, tk.T3)
    assert np.allclose(out[ids], 3 * targets[:, 0] - 2 * targets[:, 1], atol=1e-12)


def test_node_orders_move_t6_mid_nodes_and_leave_the_argument_alone():
    cells = np.array([[0, 1, 2, 12, 20, 1]], dtype=np.uint32)  # mid node 10a+b on edge (a, b)
    vtk = tk.extras.to_vtk_order(cells)
    assert vtk.tolist() == [[0, 1, 2, 1, 12, 20]] and cells[0, 3] == 12
    assert tk.extras.from_vtk_order(vtk).tolist() == cells.tolist()
    assert tk.extras.vtk_order(9) == list(range(9)) and tk.extras.vtk_order(4) is None
    with pytest.raises(tk.ArgumentError, match="conn"):
        tk.extras.to_vtk_order(np.zeros((1, 4), dtype=np.uint32))
