"""Which C++ form a call reaches, and what appended outputs keep."""
import threading

import numpy as np
import pytest

import tesskit2d as tk
from meshes import N, grid, line, square_q4, square_t3, square_t3_ancestors, square_t3_neighbours, square_xy, square_xyz

target_xy = np.r_[square_xy, [[0.5, 0.25]]]
target_ancestors = np.r_[square_t3_ancestors, [N]].astype(np.uint32)
background = (target_xy, square_t3, square_t3_neighbours, target_ancestors)
uniform_metric = np.tile([0.25, 0, 0.25], (5, 1))

FORMS = [
    # (call, shape of the result, or of its second element for tuples)
    (lambda: tk.interpolate(*background, np.arange(5.0), [4], tk.T3), (5,)),
    (lambda: tk.interpolate(*background, np.ones((5, 2)), [4], tk.T3), (5, 2)),
    (lambda: tk.interpolate_metrics(*background, uniform_metric, [4], False, tk.T3), (5, 3)),
    (lambda: tk.interpolate_metrics(*background, uniform_metric, False, tk.T3), (5, 3)),
    (lambda: tk.interpolate_metrics(*background, np.full(5, 2.0), [4], False, tk.T3), (5,)),
    (lambda: tk.interpolate_metrics(*background, sizes=np.full(5, 2.0), keep_valid=False, type=tk.T3), (5,)),
    (lambda: tk.metrics_struct(np.r_[np.arange(8), 0], 2, np.ones((8, 3))), (9, 3)),
    (lambda: tk.normals(square_xyz, square_t3, True), (2, 3)),
    (lambda: tk.normals(square_xyz, square_t3, 1.0, True), (4, 3)),
    (lambda: tk.offset(square_xyz, square_q4, [0, 0, 0, 0, 0, 1.0]), (4, 3)),
    (lambda: tk.offset(square_xyz, square_q4, np.tile([0, 0, 1.0], (4, 1)), 2), (4, 3)),
    (lambda: tk.copy_with_offset(square_xyz, square_q4, 1)[1], (1, 4)),
    # An integer thickness is a thickness, not an array of vectors.
    (lambda: tk.extrude_normal_Q4(*line(2), 1, 3)[1], (6, 4)),
    (lambda: tk.extrude_normal_Q4(*line(2), np.tile([0, 1.0], (3, 1)), 3)[1], (6, 4)),
    (lambda: tk.extrude_rotate_T3(*line(2), [0, -1.0], 1.0, 2, 0)[1], (8, 3)),
    (lambda: tk.extrude_spiral_Q4(np.c_[line(2)[0], np.zeros(3)], line(2)[1], [0, -1, 0], [0, 0, 1], [0, 0, 1], 2)[1],
     (4, 4)),
]


@pytest.mark.parametrize("call, shape", FORMS)
def test_call_reaches_its_form(call, shape):
    assert call().shape == shape


APPENDS = [
    (lambda out: tk.split_into_linear([[0, 1, 2, 3, 4, 5]], out=out), [[9, 9, 9]]),
    (lambda out: tk.split_Q4_into_T3(square_q4, out=out)[1], [[9, 9, 9]]),
    (lambda out: tk.split_into_Q4(square_xy, square_t3, out_conn=out)[1], [[9, 9, 9, 9]]),
    (lambda out: tk.extrude_translate_Q4(*line(2), [0, 1.0], 1, conn_out=out)[1], [[9, 9, 9, 9]]),
    (lambda out: tk.mesh_struct_T3(*grid(2)[:1], [0, 1, 2, 5, 8, 7, 6, 3, 0], 2, 0, conn_out=out)[1], [[9, 9, 9]]),
]


@pytest.mark.parametrize("call, first", APPENDS)
def test_appended_output_keeps_its_columns_first(call, first):
    alone = call(None)
    appended = call(np.array(first, dtype=np.uint32))
    assert appended[:1].tolist() == first
    assert (appended[1:] == alone).all()


def test_parallel_calls_give_the_serial_answers():
    xy, quads = grid(60)
    expected = tk.convert_into_quadratic(xy, quads)
    results = [None] * 4

    def work(k: int) -> None:
        results[k] = tk.convert_into_quadratic(xy, quads)

    threads = [threading.Thread(target=work, args=(k,)) for k in range(4)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    for coords, conn in results:
        assert (coords == expected[0]).all() and (conn == expected[1]).all()
