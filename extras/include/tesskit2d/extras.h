#pragma once
/// \file
/// \brief What callers of tesskit2d build around it: the neighbour and
/// ancestor tables that several exports read, and the node orders of other
/// programs' quadratic elements.
///
/// These functions live in the companion library `tesskit2d_extras`
/// (CMake target `tesskit2d::extras`), not in the core library, whose exports
/// are exactly its families. They follow the core's conventions (mesh.h):
/// column-major arrays, int statuses, `null_id` for an absent node or
/// neighbour, -199 when memory runs out.
///
/// \par Example
/// \code
///   // Two triangles sharing the edge (1, 2).
///   unsigned tri[] = {0, 1, 2,  2, 1, 3};
///   const auto conn = dense2D<unsigned>::view(tri, 3, 2);
///   dense2D<unsigned> neighbours;
///   extras::neighbours_of(conn, neighbours); // 0; column 0: 1, null, null
///   dense1D<unsigned> ancestors;
///   extras::ancestors_of(conn, 4, ancestors); // 0, 0, 0, 1
///   // get_connected_elements, mesh_reorient, interpolate ... now have
///   // the tables they read.
/// \endcode

#include "tesskit2d/extras_export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {
/// Tables and conversions that callers of the core library need and the
/// core deliberately does not build.
namespace extras {

/// \brief The neighbour table of a linear mesh, in the slot layout the
/// exports read.
///
/// Slot s of a triangle holds the element across the edge opposite corner s,
/// (s + 1, s + 2); slot s of a quadrangle the element across the edge from
/// corner s to s + 1. In a 4-row array the kind is decided per column (a
/// triangle has `null_id` in row 3, and its slot 3 stays `null_id`). A free
/// edge has `null_id`.
///
/// An edge is found by its two nodes, whatever the directions in which the
/// elements run along it, so a Moebius strip gets its full table.
///
/// \par Non-manifold edges
/// An edge held by more than two elements (or twice by one element) has no
/// single neighbour: every slot along it gets `null_id`, as a free edge, and
/// the edge is counted in the return value. A caller that needs those
/// elements finds them by their shared nodes.
///
/// \param[in] conn 3 rows (T3) or 4 rows (Q4 or mixed) by \#elements. Only
///   the corners are read, so quadratic arrays must be reduced first.
/// \param[out] neighbours Rebuilt: `conn.rows` rows by \#elements.
/// \retval >=0 the number of non-manifold edges (0 for a manifold mesh).
/// \retval -1 `conn` has neither 3 nor 4 rows, or a corner (rows 0 to 2) is
///   `null_id`. `neighbours` is then empty.
/// \retval -199 memory ran out; `neighbours` is empty.
///
/// Linear time: edges are sorted by their node pair with a radix sort.
TESSKIT2D_EXTRAS_EXPORT int neighbours_of(const dense2D<unsigned>& conn, dense2D<unsigned>& neighbours) noexcept;

/// \brief One element of each node: its ancestor.
///
/// \param[in] conn Any row count by \#elements (linear, quadratic or mixed);
///   `null_id` entries are skipped.
/// \param[in] n_nodes The number of nodes, usually the column count of
///   `coords`.
/// \param[out] ancestors Rebuilt: `n_nodes` entries. Entry n is the first
///   element, in column order, that holds node n, or `null_id` when no
///   element does (geometry points, centres: nodes that meshers leave).
/// \retval 0 success.
/// \retval -1 an entry of `conn` is neither `null_id` nor below `n_nodes`;
///   `ancestors` is then empty.
/// \retval -199 memory ran out; `ancestors` is empty.
TESSKIT2D_EXTRAS_EXPORT int ancestors_of(const dense2D<unsigned>& conn, unsigned n_nodes,
                                         dense1D<unsigned>& ancestors) noexcept;

/// \brief The node order of VTK and Gmsh for a quadratic element of `rows`
/// rows, as a permutation of this library's rows.
///
/// Row k of an element in VTK's (and Gmsh's) order is row `order[k]` of the
/// same element in this library's order. The orders differ only for T6:
/// here its mid nodes are those of edges (1, 2), (2, 0), (0, 1); there of
/// (0, 1), (1, 2), (2, 0). Q8 and Q9 list their mid nodes from (0, 1) round
/// the element and then the centre in both, so their tables are the
/// identity.
///
/// \param[in] rows 6 (T6), 8 (Q8) or 9 (Q9).
/// \return the `rows` entries of the permutation, or a null pointer for any
///   other row count.
TESSKIT2D_EXTRAS_EXPORT const unsigned* vtk_order(unsigned rows) noexcept;

/// \brief This library's order from VTK's: the inverse of `vtk_order`. Row k
/// here is row `order[k]` of the element in VTK's and Gmsh's order.
///
/// \param[in] rows 6 (T6), 8 (Q8) or 9 (Q9).
/// \return the `rows` entries of the permutation, or a null pointer for any
///   other row count.
TESSKIT2D_EXTRAS_EXPORT const unsigned* library_order(unsigned rows) noexcept;

/// \brief Rewrites quadratic elements, in place, from this library's node
/// order into VTK's and Gmsh's.
///
/// \param[in,out] conn 6 rows (T6), 8 or 9 rows (Q8, Q9, or mixed: a column
///   with `null_id` in row 6 is a T6 in the first six rows, and only those
///   are reordered).
/// \retval 0 success (and on an empty array).
/// \retval -1 `conn` has another row count; it is left alone.
TESSKIT2D_EXTRAS_EXPORT int to_vtk_order(dense2D<unsigned>& conn) noexcept;

/// \brief The inverse of `to_vtk_order`: from VTK's and Gmsh's node order
/// into this library's, in place.
///
/// \param[in,out] conn 6, 8 or 9 rows, as for `to_vtk_order`.
/// \retval 0 success (and on an empty array).
/// \retval -1 `conn` has another row count; it is left alone.
TESSKIT2D_EXTRAS_EXPORT int from_vtk_order(dense2D<unsigned>& conn) noexcept;

/// \brief Renumbers a mesh for locality: nodes along a Hilbert curve of
/// their coordinates, elements by their smallest new node ID.
///
/// Meshers number nodes and elements as they create them, so neighbours in
/// the mesh sit far apart in memory, and every call that gathers a node's
/// coordinates or an edge's record waits on memory. Run once on such a mesh,
/// before a pipeline of calls, this puts neighbours near each other.
///
/// Nodes are sorted by their position on a Hilbert curve through the
/// bounding box (16 levels in the plane, 21 in space; ties keep the old
/// order), then elements by their smallest new node ID (ties keep the old
/// order). Everything passed is rewritten in place: the columns of `coords`
/// and `field` move, the entries of `conn` are mapped, the columns of `conn`
/// and `neighbours` move and the entries of `neighbours` are mapped;
/// `null_id` entries stay.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes.
/// \param[in,out] conn Any row count by \#elements; entries below \#nodes or
///   `null_id`.
/// \param[in,out] field A nodal field, any rows by \#nodes, or a null pointer.
/// \param[in,out] neighbours A neighbour table, any rows by \#elements, or a
///   null pointer; entries below \#elements or `null_id`.
/// \param[out] node_order Rebuilt, \#nodes entries: new node k was old node
///   `node_order[k]`.
/// \param[out] element_order Rebuilt, \#elements entries: new element k was
///   old element `element_order[k]`.
/// \retval 0 success.
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 an entry of `conn` is neither `null_id` nor below \#nodes.
/// \retval -3 `field` does not have \#nodes columns.
/// \retval -4 `neighbours` does not have \#elements columns, or an entry is
///   neither `null_id` nor below \#elements.
/// \retval -199 memory ran out. Nothing is changed by any non-zero status.
TESSKIT2D_EXTRAS_EXPORT int renumber(dense2D<double>& coords, dense2D<unsigned>& conn, dense2D<double>* field,
                                     dense2D<unsigned>* neighbours, dense1D<unsigned>& node_order,
                                     dense1D<unsigned>& element_order) noexcept;

} // namespace extras
} // namespace tesskit2d
} // namespace kelm
