#!/usr/bin/python3
"""What renumbering buys on a shuffled mesh, in one process.

    PYTHONPATH=build/release/python /usr/bin/python3 python/bench/renumber_speed.py [n]

A jittered n x n square cut into 2 n^2 triangles, with node IDs randomly
permuted and elements shuffled (fixed seed): the numbering of a mesh put
together from several sources. Times (best of 3) of convert_into_quadratic
and area on the mesh as generated, shuffled, and shuffled then renumbered,
next to the renumbering itself.
"""
import sys
import time

import numpy as np

import tesskit2d as tk


def best(call, repeat=3):
    times = []
    for _ in range(repeat):
        start = time.perf_counter()
        call()
        times.append(time.perf_counter() - start)
    return min(times)


def main():
    n = int(sys.argv[1]) if len(sys.argv) > 1 else 1000
    rng = np.random.default_rng(7)
    t = np.linspace(0, 1, n + 1)
    x, y = np.meshgrid(t, t)
    xy = np.c_[x.ravel(), y.ravel()] + rng.uniform(-0.2, 0.2, ((n + 1) ** 2, 2)) / n
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * (n + 1) + i).ravel()
    conn = np.r_[np.c_[a, a + 1, a + n + 2], np.c_[a + n + 2, a + n + 1, a]].astype(np.uint32)
    perm = rng.permutation(len(xy))
    new_of = np.empty(len(xy), dtype=np.uint32)
    new_of[perm] = np.arange(len(xy), dtype=np.uint32)
    shuffled_xy, shuffled = xy[perm], new_of[conn][rng.permutation(len(conn))]
    renumbering = best(lambda: tk.extras.renumber(shuffled_xy, shuffled))
    local_xy, local = tk.extras.renumber(shuffled_xy, shuffled)[:2]
    m = len(conn)
    print(f"{m} triangles; ns per triangle, best of 3")
    rows = {"generated": (xy, conn), "shuffled": (shuffled_xy, shuffled), "renumbered": (local_xy, local)}
    base = {}
    for name, (c, e) in rows.items():
        quad = best(lambda: tk.convert_into_quadratic(c, e)) / m * 1e9
        area = best(lambda: tk.area(c, e)) / m * 1e9
        base.setdefault("q", quad)
        base.setdefault("a", area)
        print(f"{name:11s} convert_into_quadratic {quad:7.1f} ({quad / base['q']:4.2f}x)   "
              f"area {area:6.1f} ({area / base['a']:4.2f}x)")
    print(f"renumber    {renumbering / m * 1e9:7.1f}")


if __name__ == "__main__":
    main()
