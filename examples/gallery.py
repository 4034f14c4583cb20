#!/usr/bin/python3
"""A small gallery of the library at work, drawn into a folder (default demo-output/).

    PYTHONPATH=build/release/python /usr/bin/python3 examples/gallery.py [folder]
"""
import os
import sys

import numpy as np

import tesskit2d as tk


def grid(n, m=None):
    m = m or n
    x, y = np.meshgrid(np.linspace(0, 1, n + 1), np.linspace(0, 1, m + 1))
    i, j = np.meshgrid(np.arange(n), np.arange(m))
    a = (j * (n + 1) + i).ravel()
    return np.c_[x.ravel(), y.ravel()], np.c_[a, a + 1, a + n + 2, a + n + 1].astype(np.uint32)


def raised_mixed_mesh(folder):
    xy, quads = grid(6, 4)
    xy = xy + 0.03 * np.sin(7 * xy[:, ::-1])
    cells = quads.copy()
    cut = np.arange(len(quads)) % 3 == 0  # every third cell as two triangles
    triangles = np.r_[quads[cut][:, [0, 1, 2]], quads[cut][:, [2, 3, 0]]]
    cells = np.r_[np.c_[triangles, np.full(len(triangles), tk.null_id)], quads[~cut]].astype(np.uint32)
    coords, conn = tk.convert_into_quadratic(xy, cells)
    fig = tk.plot(coords, conn, field=coords[:, 0] * coords[:, 1], title="A mixed mesh raised to T6 and Q9")
    fig.axes[0].plot(coords[len(xy):, 0], coords[len(xy):, 1], ".", color="tab:orange", markersize=3)
    fig.savefig(os.path.join(folder, "raised_mixed_mesh.png"))


def rotation(folder):
    t = np.linspace(0, 1, 9)
    profile = np.c_[1 + 0.5 * t ** 1.5, np.zeros_like(t)]
    edges = np.c_[np.arange(8), np.arange(1, 9)].astype(np.uint32)
    coords, conn = tk.extrude_rotate_Q4(profile, edges, [0.0, 0.0], 1.5 * np.pi, 30)
    tk.plot(coords, conn, field=np.hypot(coords[:, 0], coords[:, 1]), title="A profile swept round a centre",
            path=os.path.join(folder, "extrusion_rotation.png"))


def structured(folder):
    m, n = 10, 6
    s = np.linspace(0, 1, m + 1)
    r = np.linspace(0, 1, n + 1)
    bottom = np.c_[2 * s, 0.3 * np.sin(np.pi * s)]
    right = np.c_[2 + 0.2 * np.sin(np.pi * r), r]
    top = np.c_[2 * s[::-1], 1 + 0.3 * np.sin(np.pi * s[::-1])]
    left = np.c_[-0.2 * np.sin(np.pi * r[::-1]), r[::-1]]
    loop_xy = np.r_[bottom, right[1:], top[1:], left[1:-1]]
    loop = np.r_[np.arange(len(loop_xy)), 0].astype(np.uint32)
    coords, conn = tk.mesh_struct_Q4(loop_xy, loop, n)
    tk.plot(coords, conn, title="A structured grid in a curved loop", path=os.path.join(folder, "structured_grid.png"))


def interpolated(folder):
    xy, quads = grid(12)
    _, background = tk.split_Q4_into_T3(quads)
    targets, target_conn = grid(30)
    targets = 0.02 + 0.96 * targets
    coords = np.r_[xy, targets]
    _, neighbours = tk.extras.neighbours_of(background)
    ancestors = tk.extras.ancestors_of(background, len(coords))
    field = np.r_[np.sin(3 * xy[:, 0]) * np.cos(4 * xy[:, 1]), np.zeros(len(targets))]
    ids = np.arange(len(xy), len(coords), dtype=np.uint32)
    carried = tk.interpolate(coords, background, neighbours, ancestors, field, ids, tk.T3)[len(xy):]
    tk.plot(targets, target_conn, field=carried, title="A field carried from a coarse mesh to a fine one",
            path=os.path.join(folder, "interpolated_field.png"))


def torus_curvature(folder):
    nu, nv, big, small = 48, 20, 1.0, 0.35
    u, v = np.meshgrid(np.arange(nu) * 2 * np.pi / nu, np.arange(nv) * 2 * np.pi / nv)
    u, v = u.ravel(), v.ravel()
    xyz = np.c_[(big + small * np.cos(v)) * np.cos(u), (big + small * np.cos(v)) * np.sin(u), small * np.sin(v)]
    i, j = np.meshgrid(np.arange(nu), np.arange(nv))
    i, j = i.ravel(), j.ravel()
    a, b = j * nu + i, j * nu + (i + 1) % nu
    c, d = ((j + 1) % nv) * nu + (i + 1) % nu, ((j + 1) % nv) * nu + i
    conn = np.r_[np.c_[a, b, c], np.c_[c, d, a]].astype(np.uint32)
    _, neighbours = tk.extras.neighbours_of(conn)
    k = tk.principal_curvatures(xyz, conn, neighbours, 0.3, 1.2, 40)
    tk.plot(xyz, conn, field=k[:, 6] + k[:, 7], title="Mean curvature (x 2) of a torus",
            path=os.path.join(folder, "torus_curvature.png"))


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else "demo-output"
    os.makedirs(folder, exist_ok=True)
    for draw in (raised_mixed_mesh, rotation, structured, interpolated, torus_curvature):
        draw(folder)
    print(f"gallery: {len(os.listdir(folder))} pictures in {folder}/")


if __name__ == "__main__":
    main()
