#pragma once
/// \file
/// \brief Anisotropic metric fields generated from a triangle surface mesh
/// in space: the mesh's own edge lengths in the surface, a size chosen by
/// the caller across it.
///
/// \par Metrics
/// A metric prescribes the edge length per direction: along a unit vector d
/// the wanted length is h = 1 / sqrt(d^T M d). A 3D metric field is a
/// dense2D<double> of 6 rows, one column per node, packed as
/// `symmetric_fixed<double, 3>`: m00, m01, m11, m02, m12, m22. A column of
/// zeros holds no prescription.
///
/// \par Example
/// \code
///   // One right triangle in the plane z = 0 with legs of length 1. Node 0
///   // has the edges 0-1 and 2-0, of mean length 1.
///   double xyz[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
///   unsigned tri[] = {0, 1, 2};
///   const auto coords = dense2D<double>::view(xyz, 3, 3);
///   const auto conn = dense2D<unsigned>::view(tri, 3, 1);
///   dense2D<double> field; // empty: grown to 6 x 3 here
///   int status = metrics_gen_aniso3d(coords, conn, -0.1, field);
///   // 0; column 0 is diag(1, 1, 100) up to rounding: size 1 in the plane,
///   // 0.1 across.
///   status = metrics_gen_aniso3d(coords, conn, 0.05, field);
///   // 0; tightened across: column 0 is diag(1, 1, 400), size 0.05.
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Prescribes at every node of a T3 surface mesh the metric of its
/// elements, and intersects it with what the node's column already holds.
///
/// The size in the surface at a node is its mean edge length h: the mean
/// over the edges of the elements round it, an edge shared by two elements
/// counted from each, edges of zero or non-finite length left out. Each
/// element then prescribes at each of its corners, in row order,
/// M = (t1 t1^T + t2 t2^T) / h^2 + n n^T / hn^2, with n the element's unit
/// normal, t1 and t2 spanning its plane, and hn the size along the normal
/// that `normal_size` gives. The node's column becomes the intersection of
/// M with what it holds (the smaller size along every direction wins).
/// Curvature plays no part. At a sharp edge a node thus meets the normal
/// sizes of both planes.
///
/// \param[in] coords 3 rows or more by \#nodes. Edge lengths are measured
///   over all rows, element normals over the first three.
/// \param[in] conn 3 rows (T3) by \#elements.
/// \param[in] normal_size The size along each element's normal:
///   | `normal_size` | Size along the normal |
///   |---------------|-----------------------|
///   | 0 | the size in the surface: the metric is isotropic |
///   | above 0 | `normal_size` itself, a length |
///   | below 0 | abs(`normal_size`) times the size in the surface |
/// \param[in,out] metrics Empty or 6 rows by one column per node. Its
///   columns are read and tightened, never loosened, so a second call with
///   other arguments refines the field and a repeated call gives the same
///   field up to rounding. It grows to the larger of its old column count
///   (of an empty array too) and the largest node ID in `conn` plus 1, at
///   least 1 column even for an empty `conn`, with new columns 0; this can
///   be fewer columns than `coords` has. A column that no element reaches
///   keeps its content. Untouched after every refusal. It may share
///   storage with `coords` (be `coords`, with 6 rows, a shallow copy, or a
///   view over its buffer): `coords` is then read from a private copy, made
///   only when the two can meet, and the result is that of separate arrays.
///
/// \retval 0 Success, also for an empty `conn`.
/// \retval -1 `coords` has fewer than 3 rows.
/// \retval -2 `conn` does not have 3 rows, or its largest node ID is not a
///   column of `coords`. An empty `conn` counts as the ID 0, so `coords`
///   needs at least one column.
/// \retval -4 `metrics` is neither empty nor 6 rows.
/// \retval -199 No memory for the private copy of a shared `coords`, the
///   per-node mean edge lengths or the growth of `metrics`.
///
/// \note -4 is the position of `metrics`, not the next number after -2.
/// \note A corner whose h is 0 (all its edges have zero length) or not
///   finite ends its element: that corner and the corners after it in the
///   element get nothing from it, while those before it have already been
///   written.
/// \note An element of zero area has no normal and prescribes with the x
///   axis as its normal.
TESSKIT2D_EXPORT int metrics_gen_aniso3d(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                                         double normal_size, dense2D<double>& metrics) noexcept;

} // namespace tesskit2d
} // namespace kelm
