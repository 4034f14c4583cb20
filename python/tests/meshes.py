"""Small meshes shared by the package's tests, in the NumPy layout."""
import numpy as np

N = 0xFFFFFFFF  # null_id

# The unit square: corners counter-clockwise from the origin.
square_xy = np.array([[0, 0], [1, 0], [1, 1], [0, 1]], dtype=float)
square_xyz = np.c_[square_xy, np.zeros(4)]
square_q4 = np.array([[0, 1, 2, 3]], dtype=np.uint32)
# The square as two counter-clockwise triangles sharing the edge 0-2, slot 1
# of the first and slot 2 of the second.
square_t3 = np.array([[0, 1, 2], [0, 2, 3]], dtype=np.uint32)
square_t3_neighbours = np.array([[N, 1, N], [N, N, 0]], dtype=np.uint32)
square_t3_ancestors = np.array([0, 0, 1, 1], dtype=np.uint32)


def line(n: int) -> tuple:
    """n segments along x from 0 to 1: coords (n + 1, 2), conn (n, 2)."""
    xy = np.c_[np.linspace(0, 1, n + 1), np.zeros(n + 1)]
    return xy, np.c_[np.arange(n), np.arange(1, n + 1)].astype(np.uint32)


def grid(n: int) -> tuple:
    """An n by n grid of quadrangles over the unit square."""
    t = np.linspace(0, 1, n + 1)
    x, y = np.meshgrid(t, t)
    xy = np.c_[x.ravel(), y.ravel()]
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * (n + 1) + i).ravel()
    return xy, np.c_[a, a + 1, a + n + 2, a + n + 1].astype(np.uint32)
