#pragma once
// Metric fields: carried from a background mesh to other nodes, and spread
// over the interior of a structured grid.
//
// A metric prescribes the edge length per direction: along a unit vector d
// the wanted length is h = 1 / sqrt(d^T M d). A metric field is a
// dense2D<double> with one column per node, packed as `symmetric_fixed`:
//   3 rows, a 2 by 2 tensor:  m00, m10, m11
//   6 rows, a 3 by 3 tensor:  m00, m10, m11, m20, m21, m22
// A size field is a dense1D<double, 8> of one length per node.
//
// Interpolation. Two metrics A and B are interpolated at a parameter t by
// simultaneous reduction: the common directions x_i of A^-1 B are found, and
// along each the size h_i = 1 / sqrt(x_i^T M x_i) runs linearly from A's
// (t = 0) to B's (t = 1); the metric is rebuilt from the new sizes in the
// same directions. It is neither log-Euclidean nor linear in the tensors or
// their inverses: two metrics with sizes 1 and 3 along x give size 2 at
// t = 1/2, where a linear blend of the tensors would give 1.34. Sizes are
// likewise linear in h. Within 1e-12 of t = 0 or t = 1 the end value is
// copied bit for bit, valid or not; elsewhere both ends must be positive
// definite (positive sizes), or the interpolation fails.
//
// Along a size field or a metric field, a value is valid when its size (or
// every eigenvalue) lies strictly between 0 and the largest double.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Sizes at the interior nodes of a structured grid, from the sizes at its
/// boundary. Goes with `mesh_struct_Q4` and `mesh_struct_T3` (structured.h):
/// with the same `boundary` and `n_side` it appends one entry per interior
/// node, in their numbering, so the field stays aligned with `coords`.
/// Coordinates are not needed: everything is done in index space.
///
/// - `boundary`: the closed loop of B IDs of `mesh_struct_Q4`; N = `n_side`,
///   M = (B - 2 N - 1) / 2 (unsigned, truncated). IDs index `sizes`.
/// - `sizes`: in-out, n entries on entry, n + (M - 1)(N - 1) on return. The
///   entry of grid position (i, j) lands at n + (i - 1)(N - 1) + (j - 1).
///
/// Each interior entry is the mid-point of the values that the opposite
/// sides give along the two grid directions, with u = i / M, v = j / N:
///   X = interpolation at u from F(0, j) to F(M, j)
///   Y = interpolation at v from F(i, 0) to F(i, N)
///   F(i, j) = interpolation at 1/2 from Y to X  (for sizes: (X + Y) / 2)
/// There are no corner terms: this is not the transfinite blending of the
/// coordinates. An interpolation that fails (a size of 0 or below) leaves 0
/// in the entry, and so do the later steps of that entry; the status is
/// still 0.
///
/// Statuses in checking order; the field is unchanged by every non-zero one:
/// -  0: done; also when B * N is 0 (32-bit product), with nothing changed.
///    With B = 2 N + 1 (M = 0) every check passes, no entry is computed and
///    the count n + (M - 1)(N - 1) wraps to n - (N - 1): the field loses its
///    last N - 1 entries. This follows `mesh_struct_T3`, which shortens
///    `coords` the same way. With M = 1 or N = 1 nothing is added.
/// - -1: B below 5, first and last entries of `boundary` differ, or an ID
///   is not below n (so an empty `sizes` with a loop gives -1).
/// - -2: 2 N above B, or B is not 2 (M + N) + 1.
/// - -199: no memory to lengthen `sizes`.
TESSKIT2D_EXPORT int metrics_struct(const dense1D<unsigned, 8>& boundary, unsigned n_side,
                                    dense1D<double, 8>& sizes) noexcept;

/// As the size form, for a metric field of 3 or 6 rows, whose column count
/// is n; the new columns keep the row count. Metrics are interpolated as
/// described at the top; a metric that cannot be reduced (not positive
/// definite) leaves a zero column in the entries that use it.
///
/// Statuses in checking order:
/// - -3: `metrics` has neither 3 nor 6 rows. Tested first, before any
///   other argument: an empty `metrics` of 0 rows gives -3 even with an
///   empty `boundary`.
/// - 0, -1, -2, -199: as for the size form, n being the column count.
TESSKIT2D_EXPORT int metrics_struct(const dense1D<unsigned, 8>& boundary, unsigned n_side,
                                    dense2D<double>& metrics) noexcept;

} // namespace tesskit2d
} // namespace kelm
