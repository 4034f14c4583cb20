#!/usr/bin/python3
"""Reading and writing a binary .msh of a million triangles: this package against meshio, side by side.

    PYTHONPATH=build/release/python /usr/bin/python3 python/bench/msh_speed.py [folder]

Gmsh writes a grid of 999,698 triangles in two surfaces, with a physical
group on one of them and ``Mesh.SaveAll``, in formats 4.1 and 2.2, binary:
the files meshio refuses (4.1) or takes minutes on (2.2: Gmsh writes a
header before every element). The package reads those; meshio reads a plain
file of the same cells that it reads well: Gmsh's 4.1 without physical
groups, and its own 2.2. Writing is the package's binary .msh (format 2.2
with tags) against meshio writing the same cells and tags. Best of 5 each, taken in
turn in one process.
"""
import contextlib
import io
import os
import sys
import tempfile
import time

import gmsh
import meshio
import numpy as np

import tesskit2d as tk


def side_by_side(ours, theirs, repeat=5):
    """Best times of two calls run in turn, so that both meet the same load on the machine."""
    times = {ours: [], theirs: []}
    for _ in range(repeat):
        for call in (ours, theirs):
            start = time.perf_counter()
            call()
            times[call].append(time.perf_counter() - start)
    return min(times[ours]), min(times[theirs])


def grid(n):
    t = np.linspace(0, 1, n + 1)
    x, y = np.meshgrid(t, t)
    points = np.c_[x.ravel(), y.ravel(), np.zeros((n + 1) ** 2)]
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * (n + 1) + i).ravel()
    return points, np.r_[np.c_[a, a + 1, a + n + 2], np.c_[a + n + 2, a + n + 1, a]]


def gmsh_files(folder, points, triangles):
    """Gmsh's files of the grid: lower and upper half as two surfaces, its boundary as a curve, a corner point."""
    gmsh.initialize([], False)
    gmsh.option.setNumber("General.Terminal", 0)
    n = int(round(np.sqrt(len(points)))) - 1
    gmsh.model.addDiscreteEntity(0, 1)
    gmsh.model.addDiscreteEntity(1, 1)
    gmsh.model.addDiscreteEntity(2, 1)
    gmsh.model.addDiscreteEntity(2, 2)
    gmsh.model.mesh.addNodes(2, 1, np.arange(1, len(points) + 1), points.ravel())
    gmsh.model.mesh.addElementsByType(1, 15, [len(triangles) + 1], [1])
    ring = np.r_[np.arange(n), n + (n + 1) * np.arange(n), (n + 1) ** 2 - 1 - np.arange(n),
                 (n + 1) * (n - np.arange(n))]
    lines = np.c_[ring, np.roll(ring, -1)] + 1
    tag = len(triangles) + 2
    gmsh.model.mesh.addElementsByType(1, 1, np.arange(tag, tag + len(lines)), lines.ravel())
    low = points[triangles, 1].mean(axis=1) < 0.5
    for entity, rows in ((1, np.flatnonzero(low)), (2, np.flatnonzero(~low))):
        gmsh.model.mesh.addElementsByType(entity, 2, rows + 1, triangles[rows].ravel() + 1)
    names = {}
    for version in (4.1, 2.2):
        gmsh.option.setNumber("Mesh.MshFileVersion", version)
        gmsh.option.setNumber("Mesh.Binary", 1)
        gmsh.option.setNumber("Mesh.SaveAll", 0)
        gmsh.model.removePhysicalGroups()
        plain = names[version, "plain"] = os.path.join(folder, f"plain{version}.msh")
        if version == 4.1:
            gmsh.write(plain)
        else:
            cells = [("vertex", np.array([[0]])), ("line", lines - 1), ("triangle", triangles)]
            tags = {"gmsh:physical": [np.zeros(len(c), int) for _, c in cells],
                    "gmsh:geometrical": [np.ones(len(c), int) for _, c in cells]}
            meshio.write(plain, meshio.Mesh(points, cells, cell_data=tags), file_format="gmsh22", binary=True)
        gmsh.model.addPhysicalGroup(2, [1], 7)
        gmsh.option.setNumber("Mesh.SaveAll", 1)
        saved = names[version, "save_all"] = os.path.join(folder, f"save_all{version}.msh")
        gmsh.write(saved)
    gmsh.finalize()
    return names


def refused(path):
    try:
        with contextlib.redirect_stderr(io.StringIO()), contextlib.redirect_stdout(io.StringIO()):
            meshio.read(path)
    except Exception as error:  # what a user of meshio alone meets
        return f"refused ({str(error)[:60]}...)"
    return "read"


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else tempfile.mkdtemp()
    points, triangles = grid(707)  # 2 * 707^2 = 999,698 triangles
    names = gmsh_files(folder, points, triangles)
    print(f"{len(triangles)} triangles, {len(points)} nodes, Gmsh {gmsh.__version__}, meshio {meshio.__version__}")
    for version in (4.1, 2.2):
        saved, plain = names[version, "save_all"], names[version, "plain"]
        ours, theirs = side_by_side(lambda: tk.read(saved), lambda: meshio.read(plain))
        mesh = tk.read(saved)
        # Format 2.2 with SaveAll writes every element outside the physical groups.
        assert len(mesh.cells["triangle"]) == len(triangles)
        assert set(np.unique(mesh.cell_data["gmsh:physical"]["triangle"])) == ({0, 7} if version == 4.1 else {0})
        print(f"binary {version}: tesskit2d reads Gmsh's SaveAll file ({os.path.getsize(saved) >> 20} MiB) in "
              f"{ours:5.2f} s, meshio the plain one ({os.path.getsize(plain) >> 20} MiB) in {theirs:5.2f} s: "
              f"ratio {ours / theirs:4.2f}"
              + (f"; meshio on the SaveAll file: {refused(saved)}" if version == 4.1 else ""))
    mesh = tk.read(names[4.1, "save_all"])
    ours_out, theirs_out = os.path.join(folder, "ours.msh"), os.path.join(folder, "theirs.msh")
    blocks = list(mesh.cells.items())
    tags = {name: [mesh.cell_data[name][k] for k, _ in blocks] for name in ("gmsh:physical", "gmsh:geometrical")}
    m = meshio.Mesh(mesh.points, blocks, cell_data=tags)
    write_ours, write_theirs = side_by_side(lambda: tk.write(ours_out, mesh, binary=True),
                                            lambda: meshio.write(theirs_out, m, file_format="gmsh22", binary=True))
    print(f"write binary 2.2 with tags: tesskit2d {write_ours:5.2f} s ({os.path.getsize(ours_out) >> 20} MiB), "
          f"meshio {write_theirs:5.2f} s ({os.path.getsize(theirs_out) >> 20} MiB): "
          f"ratio {write_ours / write_theirs:4.2f}")

if __name__ == "__main__":
    main()
