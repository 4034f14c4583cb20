"""Pictures of meshes and fields (matplotlib, drawn off screen with the Agg backend).

``plot`` draws a mesh with its element edges, a scalar point field as colour
and vectors at the nodes as arrows; a mesh in space is drawn in 3D.
``plot_quality`` draws histograms of the elements' smallest and largest
angles. Both return the matplotlib figure and save it when given a path
(PNG or SVG, by the extension).
"""
from __future__ import annotations

from typing import Optional, Tuple

import numpy as np

NULL = 0xFFFFFFFF


def _pyplot():
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt
    return plt


def _polygons(coords: np.ndarray, conn: np.ndarray) -> list:
    """Corner polygons of linear or quadratic elements (mid nodes are not corners)."""
    conn = np.asarray(conn)
    corners = 4 if conn.shape[1] in (4, 8, 9) else 3
    out = []
    for cell in conn[:, :corners]:
        ids = cell[cell != NULL]
        out.append(coords[ids])
    return out


def _triangles(conn: np.ndarray) -> np.ndarray:
    """Each element's corner fan as triangles, for colouring a point field."""
    conn = np.asarray(conn)
    corners = 4 if conn.shape[1] in (4, 8, 9) else 3
    first = conn[:, [0, 1, 2]]
    if corners == 3:
        return first
    quads = conn[conn[:, 3] != NULL]
    return np.r_[first, quads[:, [0, 2, 3]]]


def plot(coords, conn, field=None, vectors=None, path: Optional[str] = None, size: Tuple[float, float] = (6, 5),
         dpi: int = 100, title: Optional[str] = None, vector_scale: Optional[float] = None):
    """Draws a mesh: its edges, a point field as colour, vectors as arrows.

    ``coords`` is ``(n, 2)`` or ``(n, 3)`` (a mesh whose z are all 0 is drawn
    in the plane), ``conn`` ``(m, k)`` in this library's layout, ``field``
    ``(n,)``, ``vectors`` ``(n, 2)`` or ``(n, 3)``. ``size`` is in inches and
    ``dpi`` in pixels per inch, so the picture is ``size * dpi`` pixels.
    """
    plt = _pyplot()
    coords = np.asarray(coords, dtype=float)
    planar = coords.shape[1] == 2 or not np.any(coords[:, 2])
    fig = plt.figure(figsize=size, dpi=dpi)
    if planar:
        ax = fig.add_subplot()
        xy = coords[:, :2]
        if field is not None:
            shade = ax.tripcolor(xy[:, 0], xy[:, 1], _triangles(conn), np.asarray(field, dtype=float),
                                 shading="gouraud", cmap="viridis")
            fig.colorbar(shade, ax=ax)
        from matplotlib.collections import PolyCollection
        ax.add_collection(PolyCollection(_polygons(xy, conn), facecolors="none", edgecolors="0.2", linewidths=0.5))
        v = None if vectors is None else np.asarray(vectors, dtype=float)[:, :2]
        if v is not None and np.any(v):  # normals of a plane have nothing to show in it
            ax.quiver(xy[:, 0], xy[:, 1], v[:, 0], v[:, 1], color="tab:red", angles="xy", scale_units="xy",
                      scale=1 / vector_scale if vector_scale else None)
        ax.autoscale_view()
        ax.set_aspect("equal")
    else:
        from mpl_toolkits.mplot3d.art3d import Poly3DCollection
        ax = fig.add_subplot(projection="3d")
        polygons = _polygons(coords, conn)
        faces = Poly3DCollection(polygons, edgecolors="0.2", linewidths=0.3)
        if field is not None:
            f = np.asarray(field, dtype=float)
            per_face = np.array([f[c[c != NULL]].mean() for c in np.asarray(conn)[:, :4 if np.asarray(conn).shape[1] in (4, 8, 9) else 3]])
            import matplotlib.cm as cm
            from matplotlib.colors import Normalize
            norm = Normalize(per_face.min(), per_face.max())
            faces.set_facecolor(cm.viridis(norm(per_face)))
            fig.colorbar(cm.ScalarMappable(norm=norm, cmap="viridis"), ax=ax, shrink=0.7)
        else:
            faces.set_facecolor("0.85")
        ax.add_collection3d(faces)
        if vectors is not None:
            v = np.asarray(vectors, dtype=float)
            length = vector_scale or 0.05 * np.ptp(coords, axis=0).max()
            ax.quiver(coords[:, 0], coords[:, 1], coords[:, 2], v[:, 0], v[:, 1], v[:, 2], length=length,
                      color="tab:red", normalize=True)
        lo, hi = coords.min(axis=0), coords.max(axis=0)
        centre, half = (lo + hi) / 2, (hi - lo).max() / 2
        for setter, c in zip((ax.set_xlim, ax.set_ylim, ax.set_zlim), centre):
            setter(c - half, c + half)
    if title:
        ax.set_title(title)
    if path:
        fig.savefig(path)
    return fig


def plot_quality(coords, conn, path: Optional[str] = None, size: Tuple[float, float] = (8, 3.5), dpi: int = 100):
    """Histograms of every element's smallest and largest corner angle, in degrees."""
    from . import angles
    plt = _pyplot()
    smallest, largest = angles(np.asarray(coords, dtype=float), np.asarray(conn, dtype=np.uint32), False)
    fig, axes = plt.subplots(1, 2, figsize=size, dpi=dpi)
    for ax, values, name in zip(axes, (smallest, largest), ("smallest", "largest")):
        ax.hist(np.degrees(np.abs(values)), bins=36, range=(0, 180), color="tab:blue")
        ax.set_xlabel(f"{name} angle (degrees)")
        ax.set_ylabel("elements")
    fig.tight_layout()
    if path:
        fig.savefig(path)
    return fig
