"""One round trip per family on small meshes, against answers worked out by hand."""
import math

import numpy as np
import pytest

import tesskit2d as tk
from meshes import N, line, square_q4, square_t3, square_t3_ancestors, square_t3_neighbours, square_xy, square_xyz


def interpolated_linear_field():
    # Node 4 inside the first triangle gets x + 2y exactly.
    xy = np.r_[square_xy, [[0.5, 0.25]]]
    field = np.r_[xy[:4, 0] + 2 * xy[:4, 1], [-1.0]]
    ancestors = np.r_[square_t3_ancestors, [N]].astype(np.uint32)
    return tk.interpolate(xy, square_t3, square_t3_neighbours, ancestors, field, [4], tk.T3)[4]


def transferred_metric():
    xy = np.r_[square_xy, [[0.5, 0.25]]]
    m = np.array([[1, 0, 1], [0.25, 0, 0.25], [0.25, 0, 0.25], [1, 0, 1], [0, 0, 0]])
    ancestors = np.r_[square_t3_ancestors, [N]].astype(np.uint32)
    return tk.interpolate_metrics(xy, square_t3, square_t3_neighbours, ancestors, m, [4], False, tk.T3)[4]


def structured_grid():
    at = [[0, 0], [1 / 3, 0], [2 / 3, 0], [1, 0], [1, 0.5], [1, 1], [2 / 3, 1], [1 / 3, 1], [0, 1], [0, 0.5]]
    coords, quads = tk.mesh_struct_Q4(np.array(at), np.arange(11, dtype=np.uint32) % 10, 2)
    return coords[10:].tolist(), quads[0].tolist(), tk.area(coords, quads)


def folded_curvature():
    f = 0.3
    xyz = np.array([[0, 0, 0], [0, 2, 0], [1, 1, 0], [-math.cos(f), 1, math.sin(f)]])
    conn = np.array([[0, 2, 1], [0, 1, 3]], dtype=np.uint32)
    _, neighbours = tk.extras.neighbours_of(conn)  # (N, 1, N), (N, N, 0)
    return tk.principal_curvatures(xyz, conn, neighbours, 5.0, 3.14159, 40)[:, 6:].round(12).tolist()


CASES = [
    ("version", lambda: (tk.version(), tk.__version__), ("5.3.0.0", "5.3.0.0")),
    ("area", lambda: tk.area(square_xy, square_t3), 1.0),
    ("angles", lambda: [a.tolist() for a in tk.angles(square_xy, square_q4, True)], [[1.0], [1.0]]),
    ("circumcenters", lambda: tk.circumcenters(square_xy, square_t3).tolist(), [[0.5, 0.5]] * 2),
    ("convert_into_linear", lambda: tk.convert_into_linear([[0, 1, 2, 3, 4, 5]]).tolist(), [[0, 1, 2]]),
    ("split_into_linear", lambda: tk.split_into_linear([[0, 1, 2, 3, 4, 5]]).shape, (4, 3)),
    ("split_Q4_into_T3 conn", lambda: tk.split_Q4_into_T3(square_q4)[1].tolist(), [[0, 1, 2], [2, 3, 0]]),
    ("split_Q4_into_T3 coords",
     lambda: tk.split_Q4_into_T3(square_xy, square_q4, out_conn=[[7, 8, 9]])[1].tolist(),
     [[7, 8, 9], [0, 1, 2], [2, 3, 0]]),
    ("split_Q4_into_T3 limits",
     lambda: [a.tolist() if hasattr(a, "tolist") else a
              for a in tk.split_Q4_into_T3(square_xy, 0.1, 0, 0, 0, np.zeros(0, np.uint32), square_q4)],
     [1, [0], [[0, 1, 2, N], [2, 3, 0, N]]]),
    ("convert_into_high_order",
     lambda: tk.convert_into_high_order(square_xy, [[0, 1, 2], [2, 1, 3]], 2, 0, 1)[1].tolist(),
     [[0, 1, 2, 4, 5, 6, 7, 8, 9, 14], [2, 1, 3, 10, 11, 12, 13, 5, 4, 15]]),
    ("convert_into_high_order in place",
     lambda: tk.convert_into_high_order(square_xy, square_q4, 1, 1, 0, in_place=True)[1].tolist(),
     [[0, 1, 2, 3, 4, 5, 6, 7, 8]]),
    ("convert_into_quadratic", lambda: tk.convert_into_quadratic(square_xy, square_q4)[0][4:].tolist(),
     [[0.5, 0], [1, 0.5], [0.5, 1], [0, 0.5], [0.5, 0.5]]),
    ("convert_into_quadratic edges",
     lambda: tk.convert_into_quadratic(np.r_[square_xy, [[0.5, -0.1]]], square_q4, [[0, 1, 4]])[1][0, 4], 4),
    ("split_into_Q4", lambda: tk.area(*tk.split_into_Q4(square_xy, square_t3)), 1.0),
    ("extrude_translate_Q4", lambda: tk.area(*tk.extrude_translate_Q4(*line(3), [0, 2.0], 4)), 2.0),
    ("extrude_translate_T3", lambda: tk.extrude_translate_T3(*line(3), [0, 2.0], 4, 0)[1].shape, (24, 3)),
    ("extrude_rotate_Q4",
     lambda: round(tk.area(*tk.extrude_rotate_Q4(line(1)[0] + [1, 0], line(1)[1], [0, 0], math.pi, 64)), 2),
     round(1.5 * math.pi * 0.9990, 2)),
    ("extrude_normal_Q4 graded", lambda: tk.extrude_normal_Q4(*line(2), 1.0, 0.25, 0.25, True)[1].shape, (8, 4)),
    ("mesh_struct_Q4", structured_grid, ([[1 / 3, 0.5], [2 / 3, 0.5]], [0, 1, 10, 9], 1.0)),
    ("metrics_struct", lambda: tk.metrics_struct(np.r_[np.arange(8), 0], 2, [1.0, 3, 1, 1, 1, 3, 1, 1])[8], 2.0),
    ("offset", lambda: tk.offset(square_xyz, square_q4, 0.5)[:, 2].tolist(), [0.5] * 4),
    ("copy_with_offset", lambda: tk.copy_with_offset(square_xyz, square_q4, 0.5)[1].tolist(), [[4, 5, 6, 7]]),
    ("interpolate", interpolated_linear_field, 1.0),
    ("interpolate_metrics", lambda: transferred_metric().round(12).tolist(), [1 / 2.25, 0, 1 / 2.25]),
    ("metrics_gen_aniso3d",
     lambda: tk.metrics_gen_aniso3d(square_xyz[[0, 1, 3]], [[0, 1, 2]], -0.1)[0, [0, 2, 5]].round(9).tolist(),
     [1, 1, 100]),
    ("mesh_reorient",
     lambda: [x if isinstance(x, int) else x.tolist()
              for x in tk.mesh_reorient([[0, 1, 2], [0, 3, 2]], [[N, 1, N], [N, 0, N]], 0, 0)[:2]],
     [1, [[0, 1, 2], [2, 3, 0]]]),
    ("flip", lambda: tk.flip(square_t3, square_t3_neighbours, tk.T3)[0].tolist(), [[2, 1, 0], [3, 2, 0]]),
    ("convert_degenerated_Q",
     lambda: [x if isinstance(x, int) else x.tolist() for x in tk.convert_degenerated_Q([[0, 1, 1, 2], [3, 4, 5, 6]])],
     [1, [[0, 1, 2, N], [3, 4, 5, 6]], [0]]),
    ("get_connected_elements",
     lambda: [a.tolist() for a in tk.get_connected_elements(square_t3, square_t3_neighbours, square_t3_ancestors)],
     [[0, 2, 3, 5, 6], [0, 1, 0, 1, 0, 1]]),
    ("normals", lambda: tk.normals(square_xyz, square_t3, 1.0, True).tolist(), [[0, 0, 1]] * 4),
    ("parametric_curvatures",
     lambda: np.abs(tk.parametric_curvatures(square_xy, square_t3, np.tile([1.0, 0, 0, 0, 1, 0], (4, 1)))).max(), 0),
    ("principal_curvatures", folded_curvature, [[0.3, 0.0]] * 4),
]


def flat(x) -> list:
    """Numbers of nested tuples, lists and arrays in order, so that one comparison fits every answer."""
    if isinstance(x, (list, tuple, np.ndarray)):
        return [y for item in x for y in flat(item)]
    return [x]


@pytest.mark.parametrize("call, expected", [c[1:] for c in CASES], ids=[c[0] for c in CASES])
def test_family_round_trip(call, expected):
    result = flat(call())
    if isinstance(result[0], str):
        assert result == flat(expected)
    else:
        assert result == pytest.approx(flat(expected), rel=1e-9, abs=1e-12)
