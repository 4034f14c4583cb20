"""tesskit2d: operations on two-dimensional and surface meshes, over NumPy arrays.

Arrays
    Points are ``(n, 2)`` or ``(n, 3)`` float64 arrays, cells ``(m, k)`` uint32
    arrays with one element per row, fields ``(n,)`` or ``(n, r)`` float64. This
    is the library's column-major layout read the other way round, so an input
    of the right dtype whose rows are contiguous reaches the library without a
    copy; any other array or sequence is converted once. ``null_id``
    (0xFFFFFFFF) marks an absent node or neighbour; in a 4-row cell array a
    triangle has ``null_id`` in column 3.

Results
    Arrays the library allocates come back as NumPy arrays over the library's
    own buffer, without a copy. Functions that add nodes or rewrite cells
    return new arrays and leave their arguments alone::

        coords, conn = tesskit2d.convert_into_quadratic(coords, conn)

    Outputs come back in the order of the C++ signature, a lone output as
    itself, several as a tuple; a function that counts something (elements
    split, flipped, converted) returns that count first. Outputs that the C++
    appends to are keyword-only arguments (``conn_out=``, ``out=``) starting
    empty when left out.

Errors
    A refused argument raises ``ArgumentError`` (a ``ValueError``) whose
    message and attributes name the function, the argument and the reason
    given in the library's documentation; exhausted memory raises
    ``MemoryError``.

Element kinds are the integer constants ``E2, E3, MIXED, T3, Q4, T6, Q8, Q9``.
"""
from ._core import (  # noqa: F401
    E2, E3, MIXED, Q4, Q8, Q9, T3, T6, ArgumentError, angles, area, circumcenters, convert_degenerated_Q,
    convert_degenerated_Q4, convert_into_high_order, convert_into_linear, convert_into_quadratic, copy_with_offset,
    extrude_normal_Q4, extrude_normal_T3, extrude_rotate_Q4, extrude_rotate_T3, extrude_spiral_Q4,
    extrude_spiral_T3, extrude_translate_Q4, extrude_translate_T3, flip, get_connected_elements, interpolate,
    interpolate_metrics, mesh_reorient, mesh_struct_Q4, mesh_struct_T3, metrics_gen_aniso3d, metrics_struct, normals,
    null_id, offset, parametric_curvatures, principal_curvatures, split_into_linear, split_into_Q4,
    split_Q4_into_T3, version)

from . import extras  # noqa: E402,F401
from .files import FileError, Mesh, read, write  # noqa: E402,F401
from .plot import plot, plot_quality  # noqa: E402,F401

__version__: str = version()
