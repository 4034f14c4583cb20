#pragma once
// Anisotropic metric fields generated from a triangle surface mesh in space:
// the mesh's own edge lengths in the surface, a size chosen by the caller
// across it.
//
// A metric prescribes the edge length per direction: along a unit vector d
// the wanted length is h = 1 / sqrt(d^T M d). A 3D metric field is a
// dense2D<double> of 6 rows, one column per node, packed as
// `symmetric_fixed<double, 3>`: m00, m01, m11, m02, m12, m22. A column of
// zeros holds no prescription.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Prescribes at every node of a T3 surface mesh the metric of its
/// elements, and intersects it with what the node's column already holds.
///
/// - `coords`: 3 rows or more by #nodes. Edge lengths are measured over all
///   rows, element normals over the first three.
/// - `conn`: 3 rows by #elements, T3.
/// - `normal_size`: the size along each element's normal:
///
///   | `normal_size` | size along the normal                                 |
///   |---------------|-------------------------------------------------------|
///   | 0             | the size in the surface: the metric is isotropic      |
///   | above 0       | `normal_size` itself, a length                        |
///   | below 0       | abs(`normal_size`) times the size in the surface      |
///
/// - `metrics`: in-out, empty or 6 rows, one column per node. Its columns
///   are read and tightened, never loosened: each new metric is intersected
///   with the column (the smaller size along every direction wins), so a
///   second call with other arguments refines the field and a repeated call
///   gives the same field up to rounding. It grows to the larger of its old
///   column count and the largest node ID in `conn` plus 1 (at least 1
///   column, even for an empty `conn`), with new columns 0; this can be
///   fewer columns than `coords` has. A column that no element reaches
///   keeps its content.
///
/// The prescription. The size in the surface at a node is its mean edge
/// length h: the mean over the edges of the elements round it, an edge
/// shared by two elements counted from each, edges of zero or non-finite
/// length left out. Each element then prescribes at each of its corners,
/// in row order, M = (t1 t1^T + t2 t2^T) / h^2 + n n^T / hn^2, with n the
/// element's unit normal, t1 and t2 spanning its plane, and hn the size
/// along the normal from the table above. The node's column becomes the
/// intersection of M with what it holds. Curvature plays no part. At a
/// sharp edge a node thus meets the normal sizes of both planes.
///
/// Two deliberate behaviours:
/// - a corner whose h is 0 (all its edges have zero length) or not finite
///   ends its element: that corner and the corners after it in the element
///   get nothing from it, while those before it have already been written;
/// - an element of zero area has no normal and prescribes with the x axis
///   as its normal.
///
/// Statuses in checking order:
/// -  0 success.
/// - -1 `coords` has fewer than 3 rows; `metrics` untouched.
/// - -2 `conn` does not have 3 rows, or its largest node ID is not a column
///   of `coords` (an empty `conn` counts as the ID 0, so `coords` needs at
///   least one column); `metrics` untouched.
/// - -4 `metrics` is neither empty nor 6 rows; `metrics` untouched.
/// - -199 no memory for the per-node mean edge lengths or for the growth of
///   `metrics`; `metrics` untouched.
///
/// \code
///   dense2D<double> field;                                  // empty: grown here
///   metrics_gen_aniso3d(coords, conn, -0.1, field);          // a tenth across
///   metrics_gen_aniso3d(coords, wall_conn, 0.001, field);    // tightened near a wall
/// \endcode
TESSKIT2D_EXPORT int metrics_gen_aniso3d(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                                         double normal_size, dense2D<double>& metrics) noexcept;

} // namespace tesskit2d
} // namespace kelm
