"""How arrays cross: views without copies, conversions, outputs over the library's buffers, lifetimes."""
import gc
import os
import sys

import numpy as np
import pytest

import tesskit2d as tk
from meshes import grid, square_q4, square_xy

core = tk._core


def resident_bytes() -> int:
    with open("/proc/self/statm") as f:
        return int(f.read().split()[1]) * 4096


coords = np.arange(24, dtype=float).reshape(8, 3)
VIEWS = [
    # (array, reaches the library without a copy, column stride seen by the library)
    (coords, True, 3),
    (coords[:, :2], True, 3),  # rows contiguous, wider stride: ld > rows
    (coords[::2], True, 6),
    (np.asfortranarray(coords), False, 3),
    (coords[:, ::-1], False, 3),
    (coords.astype(np.float32), False, 3),
    (square_q4, True, 4),
    (square_q4.astype(np.int64), False, 4),
]


@pytest.mark.parametrize("a, shared, ld", VIEWS)
def test_input_view(a, shared, ld):
    address, seen_ld = core._input_view(a)
    assert (address == a.ctypes.data) == shared
    assert seen_ld == ld


def test_strided_input_gives_the_answer_of_a_packed_one():
    xyz = np.c_[square_xy, np.full(4, 7.0)]
    assert tk.area(xyz[:, :2], square_q4) == tk.area(square_xy, square_q4) == 1.0


def test_outputs_are_the_library_buffers_and_outlive_the_call():
    xy, quads = grid(4)
    new_coords, new_conn = tk.convert_into_quadratic(xy, quads)
    for out in (new_coords, new_conn):
        assert type(out.base).__name__ == "PyCapsule"
        assert out.flags.c_contiguous and out.flags.writeable
    del xy, quads
    gc.collect()
    assert new_coords.shape == (25 + 40 + 16, 2) and new_conn.shape == (16, 9)
    np.testing.assert_allclose(new_coords[new_conn[:, 8]], new_coords[new_conn[:, :4]].mean(axis=1))


def test_arguments_are_not_changed():
    xy, quads = grid(2)
    saved = xy.copy(), quads.copy()
    raised = tk.convert_into_quadratic(xy, quads)[0]
    assert not np.shares_memory(raised, xy)
    for counts in ((1, 1, 0), (0, 0, 0)):  # nodes appended, or nothing to do
        assert not np.shares_memory(tk.convert_into_high_order(xy, quads, *counts)[0], xy)
    tk.flip(quads)
    tk.mesh_struct_Q4(xy, np.r_[0, 1, 2, 5, 8, 7, 6, 3, 0].astype(np.uint32), 2)
    assert (xy == saved[0]).all() and (quads == saved[1]).all()


def test_calls_keep_no_references_and_release_their_buffers():
    xy, quads = grid(100)  # 10 000 quadrangles, about 0.9 MB of output per call
    refs = sys.getrefcount(xy), sys.getrefcount(quads)
    tk.convert_into_quadratic(xy, quads)
    gc.collect()
    before = resident_bytes()
    for _ in range(100):
        out = tk.convert_into_quadratic(xy, quads)
        del out
    gc.collect()
    assert (sys.getrefcount(xy), sys.getrefcount(quads)) == refs
    if "asan" in os.environ.get("LD_PRELOAD", ""):
        return  # AddressSanitizer holds freed memory back on purpose
    assert resident_bytes() - before < 30 * 2**20  # a leak would keep 90 MB
