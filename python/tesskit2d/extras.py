"""The tables and conversions that callers build around the library.

``neighbours_of`` and ``ancestors_of`` give the ``neighbours`` and
``ancestors`` arguments that ``interpolate``, ``interpolate_metrics``,
``mesh_reorient``, ``flip``, ``get_connected_elements`` and
``principal_curvatures`` read::

    _, neighbours = tesskit2d.extras.neighbours_of(conn)
    ancestors = tesskit2d.extras.ancestors_of(conn, len(coords))

``renumber`` orders nodes along a Hilbert curve and elements by their
smallest new node, once, before a pipeline of calls on a mesh from a mesher.

``to_vtk_order`` and ``from_vtk_order`` convert quadratic cells between this
library's node order and the one VTK and Gmsh use (they differ for T6).
"""
from ._core import extras as _bound

neighbours_of = _bound.neighbours_of
ancestors_of = _bound.ancestors_of
vtk_order = _bound.vtk_order
library_order = _bound.library_order
to_vtk_order = _bound.to_vtk_order
from_vtk_order = _bound.from_vtk_order
renumber = _bound.renumber
