"""Refusals raise with the function, the argument and the library's reason."""
import numpy as np
import pytest

import tesskit2d as tk
from meshes import line, square_q4, square_t3, square_xy, square_xyz

REFUSALS = [
    # (call, function, argument, status)
    (lambda: tk.area(np.zeros((4, 1)), square_q4), "area", "coords", -1),
    (lambda: tk.area(square_xy, [[0, 1, 2, 9]]), "area", "conn", -2),
    (lambda: tk.angles(square_xy, [[0, 1]], False), "angles", "conn", -2),
    (lambda: tk.convert_into_high_order(square_xy, square_q4, 1, 2, 0), "convert_into_high_order", "n_quad_nodes", -4),
    (lambda: tk.convert_into_high_order(square_xy, square_q4, 1, 1, 2), "convert_into_high_order", "n_tri_nodes", -5),
    (lambda: tk.convert_into_quadratic(square_xy, square_q4, [[0, 1]]), "convert_into_quadratic", "edges", -6),
    (lambda: tk.extrude_translate_Q4(*line(2), [0, 1.0], 0.0, 1.0, False), "extrude_translate_Q4", "h0", -4),
    (lambda: tk.extrude_translate_Q4(*line(2), [0, 1.0], 2, conn_out=[[0, 1, 2]]), "extrude_translate_Q4",
     "conn_out", -7),
    (lambda: tk.offset(square_xy, square_q4, 1.0), "offset", "coords", -1),
    (lambda: tk.normals(square_xy, square_t3, True), "normals", "coords", -1),
    (lambda: tk.mesh_reorient(square_t3, np.full((2, 3), tk.null_id), 5, 0), "mesh_reorient", "seed", -3),
    (lambda: tk.flip(square_t3, [[0, 0, 0]], tk.T3), "flip", "neighbours", -2),
    (lambda: tk.flip(square_t3, 99), "flip", "type", -2),  # no such kind
    (lambda: tk.mesh_reorient(square_t3, [[0, 0, 0]], 0, 0), "mesh_reorient", "neighbours", -2),
    (lambda: tk.mesh_reorient([[0, 1, tk.null_id]], [[0, 0, 0]], 0, 0), "mesh_reorient", "conn", -1),
    (lambda: tk.convert_degenerated_Q4(square_t3), "convert_degenerated_Q4", "conn", -1),
    # Refused by the bindings before any call: status 0.
    (lambda: tk.area(square_xy, [0, 1, 2]), "area", "conn", 0),
    (lambda: tk.interpolate(square_xy, square_t3, square_t3, [0, 0, 0, 0], [1.0] * 4, np.zeros((1, 1)), tk.T3),
     "interpolate", "target_nodes", 0),
]


@pytest.mark.parametrize("call, function, argument, status", REFUSALS, ids=[f"{r[1]}-{r[2]}" for r in REFUSALS])
def test_refusal_names_function_and_argument(call, function, argument, status):
    with pytest.raises(tk.ArgumentError) as raised:
        call()
    error = raised.value
    assert isinstance(error, ValueError)
    assert (error.function, error.argument, error.status) == (function, argument, status)
    assert str(error).startswith(f"{function}: `{argument}`")


def test_exhausted_memory_raises_memory_error():
    tk._core._fail_allocation_at(0)
    try:
        with pytest.raises(MemoryError):
            tk.circumcenters(square_xyz, square_t3)
    finally:
        tk._core._disarm_allocation_failure()
    assert tk.circumcenters(square_xyz, square_t3).shape == (2, 3)


def test_forms_are_told_apart_by_their_arguments():
    xy, conn = line(2)
    assert tk.extrude_translate_Q4(xy, conn, [0, 1.0], 2)[1].shape == (4, 4)
    assert tk.extrude_translate_Q4(np.c_[xy, np.zeros(3)], conn, [0, 0, 1.0], 0.5, 0.5, False)[1].shape == (4, 4)
    with pytest.raises(TypeError):
        tk.extrude_translate_Q4(xy, conn, [0, 1.0, 0, 0], 2)


def test_a_mismatched_neighbour_is_a_flip_count_not_a_refusal():
    # Element 1 is named across edge 0 of element 0 but shares no node with it.
    count, conn, _ = tk.mesh_reorient([[0, 1, 2], [3, 4, 5]], [[1, tk.null_id, tk.null_id]] * 2, 0, 0)
    assert count == -2 and conn.tolist() == [[0, 1, 2], [3, 4, 5]]
