#!/usr/bin/python3
"""Reading and writing a binary .msh of a million triangles: this package against meshio, side by side.

    PYTHONPATH=build/release/python /usr/bin/python3 python/bench/msh_speed.py [folder]

meshio reads and writes a file of one cell block in format 4.1, binary; the
package reads and writes its own, with physical and entity tags (format 2.2,
binary, through meshio), and reads a file with physical groups on some
entities only through Gmsh's reader. Best of 3 each, in one process.
"""
import os
import sys
import tempfile
import time

import meshio
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
    folder = sys.argv[1] if len(sys.argv) > 1 else tempfile.mkdtemp()
    n = 707  # 2 n^2 = 999,698 triangles
    t = np.linspace(0, 1, n + 1)
    x, y = np.meshgrid(t, t)
    points = np.c_[x.ravel(), y.ravel(), np.zeros((n + 1) ** 2)]
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * (n + 1) + i).ravel()
    triangles = np.r_[np.c_[a, a + 1, a + n + 2], np.c_[a + n + 2, a + n + 1, a]].astype(np.uint32)
    mesh = tk.Mesh(points, {"triangle": triangles},
                   cell_data={"gmsh:physical": {"triangle": np.full(len(triangles), 1)},
                              "gmsh:geometrical": {"triangle": np.full(len(triangles), 1)}})
    ours, theirs = os.path.join(folder, "ours.msh"), os.path.join(folder, "theirs.msh")
    write_ours = best(lambda: tk.write(ours, mesh, binary=True))
    m = meshio.Mesh(points, [("triangle", triangles.astype(np.int64))])
    write_theirs = best(lambda: meshio.write(theirs, m, file_format="gmsh", binary=True))
    read_ours = best(lambda: tk.read(ours))
    read_theirs = best(lambda: meshio.read(theirs))
    from tesskit2d import gmsh_files
    read_gmsh = best(lambda: gmsh_files.read(ours))
    print(f"{len(triangles)} triangles, {len(points)} nodes; files {os.path.getsize(ours) >> 20} MiB (ours), "
          f"{os.path.getsize(theirs) >> 20} MiB (meshio's)")
    print(f"read : tesskit2d {read_ours:6.2f} s   meshio {read_theirs:6.2f} s   ratio {read_ours / read_theirs:5.2f}")
    print(f"read through Gmsh's reader (files meshio refuses): {read_gmsh:6.2f} s   ratio {read_gmsh / read_theirs:5.1f}")
    print(f"write: tesskit2d {write_ours:6.2f} s   meshio {write_theirs:6.2f} s   ratio {write_ours / write_theirs:5.2f}")


if __name__ == "__main__":
    main()
