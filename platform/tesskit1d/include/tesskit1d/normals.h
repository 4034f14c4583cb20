#pragma once
// Node normals of a line mesh in the plane.

#include "tesskit1d/export.h"

#include "treisoma/dense2D.h"

namespace kelm {
namespace tesskit1d {

/// One normal per node of a mesh of two-node lines in the plane, as the
/// weighted mean of the normals of the edges that meet at the node. The
/// argument list is that of the surface `normals`.
///
/// - `coords`: 2 rows by #nodes.
/// - `conn`: 2 rows by #edges; row 0 is an edge's start, row 1 its end.
/// - `power`: an edge weighs its length to this power (0: every edge the
///   same, 1: by length, negative: short edges favoured). An infinite power
///   counts every edge 1.
/// - `unit`: true makes every node normal a unit vector; false leaves the
///   weighted mean of the edges' unit normals, shorter than 1 at a corner.
/// - `node_normals`: rebuilt, 2 rows by #nodes. A node that no edge uses,
///   and a node whose contributions cancel, keeps the zero vector.
///
/// Side. An edge's normal is its direction turned a quarter turn
/// counter-clockwise: (-dy, dx) for an edge from row 0 to row 1 with
/// direction (dx, dy). It lies on the left of the walk, so it points into a
/// counter-clockwise loop, and a sweep along it by a positive distance turns
/// each edge (a, b) into the counter-clockwise quadrangle
/// (a, b, b + n, a + n).
///
/// A zero-length edge has a zero normal, but still adds its weight at its
/// nodes (1 for `power` 0), which dilutes the mean when `unit` is false.
///
/// Statuses in checking order:
/// - 0: done; also when `coords` or `conn` has no entries (rows * cols of 0),
///   with `node_normals` left empty.
/// - -1: `coords` does not have 2 rows.
/// - -2: `conn` does not have 2 rows or holds an ID that is not a column of
///   `coords`.
/// - -199: no memory for the result or the weights.
/// After a refusal `node_normals` is empty. `node_normals` must not share a
/// buffer with `coords`. The small header of the working weights is made
/// with `operator new`, whose `std::bad_alloc` is not caught.
TESSKIT1D_EXPORT int normals(const dense2D<double>& coords, const dense2D<unsigned>& conn, double power, bool unit,
                             dense2D<double>& node_normals);

} // namespace tesskit1d
} // namespace kelm
