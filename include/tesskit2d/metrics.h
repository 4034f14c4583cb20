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
// A size is valid when it lies strictly between 0 and the largest double.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// A metric field at nodes that do not belong to a background mesh, from
/// the metrics at the background's nodes. The metric counterpart of
/// `interpolate` (interpolation.h): same arguments, same search, but values
/// are combined two at a time by the metric interpolation described at the
/// top, and `keep_valid` can spare what is already there.
///
/// - `coords`: 2 rows by #nodes, background and target nodes alike.
/// - `bg_conn`: the background elements, 3 rows (T3). See -2 below.
/// - `neighbours`: the shape of `bg_conn`; row s of element e is the element
///   across its edge s (a triangle's edge s lies opposite corner s, a
///   quadrangle's runs from corner s to s + 1), `null_id` on the boundary.
/// - `ancestors`: #nodes entries; per node one element that holds it, or
///   `null_id`. A node with an element is a background node and is never
///   written; only nodes with `null_id` are targets.
/// - `metrics`: in-out, 3 or 6 rows by #nodes, never resized. Only targets'
///   columns are written.
/// - `target_nodes`: the IDs to compute, in the order of processing.
/// - `keep_valid`: true spares a target whose present metric is positive
///   definite: 3 rows, the smaller eigenvalue of the 2 by 2 closed form is
///   above 0 (and finite); 6 rows, the smallest eigenvalue from LAPACK's
///   dspev is above 0 (a failed call counts as 0). A zero column is always
///   computed.
/// - `type`: T3, Q4 or MIXED; with 3 rows only T3 does anything, with 4 rows
///   Q4 and MIXED; any other pair returns 0 with nothing done.
///
/// Each target is located by a walk across `neighbours` from the nearest
/// background node's element (a random choice of the first edge to test,
/// from a generator seeded with 1, so results repeat exactly; a walk that
/// falls off the mesh is retried from the elements round the exact nearest
/// node), within 1e-6 of twice an element's area. Then:
/// - in a triangle, with barycentric weights (w0, w1) of corners 0 and 1: on
///   edge w0 = 0 the interpolation at w1 from corner 2 to 1, on w1 = 0 at w0
///   from 2 to 0, on w0 + w1 = 1 at w1 from 0 to 1 (each within 1e-12);
///   inside, E = w1 / (w0 + w1) from corner 0 to 1, then w0 + w1 from
///   corner 2 to E. A target on an edge thus uses only that edge's corners,
///   and one on a corner gets its metric bit for bit.
/// - in a quadrangle, with s = (u + 1) / 2, t = (v + 1) / 2 from the inverse
///   bilinear map: on t = 0 s from corner 0 to 1, on s = 0 t from 0 to 3, on
///   t = 1 s from 3 to 2, on s = 1 t from 1 to 2; inside E = s from 0 to 1,
///   F = s from 3 to 2, then t from E to F.
/// - a target in no element but inside the box of the background nodes
///   takes the nearest background node's metric, untested;
/// - a target outside that closed box keeps its present metric;
/// - a target whose combination fails (a corner metric that is not positive
///   definite on the way) keeps its present metric.
///
/// Statuses in checking order; nothing is written before all have passed:
/// -  0: done; also when `target_nodes` is empty, before any other check.
/// - -1: `coords` has other than 2 rows.
/// - -2: `bg_conn` is not a valid T3 array (3 rows, IDs below #nodes),
///   whatever `type` says: this form checks it as T3, so a 4-row `bg_conn`
///   gives -2 even with `type` Q4 or MIXED (use the size form for those).
/// - -3: `neighbours` differs from `bg_conn` in shape, or holds an entry
///   that is neither below #elements nor `null_id`.
/// - -4: `ancestors` does not have #nodes entries, or (when a driver runs)
///   a node of `bg_conn` has an `ancestors` entry that is neither an element
///   nor `null_id`: the walks would start outside the mesh.
/// - -5: `metrics` does not have #nodes columns, or has neither 3 nor 6
///   rows.
/// - -6: an ID of `target_nodes` is not below #nodes.
/// - -199: no memory for the search tree (nothing written), or for the
///   working space of a walk's fallback (targets before the failing one
///   keep their new values).
///
/// \code
///   // Background triangles and their nodes first, targets appended behind
///   // them with ancestors null_id; metrics of the background nodes filled.
///   int status = interpolate_metrics(xy, tris, across, ancestors, metrics, targets, false, T3);
/// \endcode
TESSKIT2D_EXPORT int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                         dense2D<double>& metrics, const dense1D<unsigned, 8>& target_nodes,
                                         bool keep_valid, element_type type) noexcept;

/// As the form above with every node as a target, in ID order (`ancestors`
/// still tells the targets). Nothing is allocated for the list; #nodes of 0
/// returns 0.
TESSKIT2D_EXPORT int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                         dense2D<double>& metrics, bool keep_valid, element_type type) noexcept;

/// A size field at target nodes: as the metric form, with one size per node
/// and these differences.
/// - `sizes`: in-out, #nodes entries, never resized; -5 when it has another
///   count.
/// - `bg_conn` is checked as `type` says, so all three kinds work: 3 rows
///   for T3, 4 rows for Q4 and MIXED (a column with `null_id` in row 3 is a
///   triangle). -2 when it does not fit `type`.
/// - `keep_valid` spares a size strictly between 0 and the largest double.
/// - Sizes are linear in h. In a triangle the edge cases are those of the
///   metric form; inside, the value is (S1 - S2) w1 + (S0 - S2) w0 + S2,
///   from three strictly positive sizes.
/// - In a quadrangle the edge cases are t = 0, s = 0 and t = 1 only; there
///   is none for s = 1. Elsewhere, from four strictly positive sizes, the
///   coordinates are mapped a second time, s2 = (s + 1) / 2 and
///   t2 = (t + 1) / 2, and the value is a + (b - a) t2 with
///   a = S0 + (S1 - S0) s2, b = S3 + (S2 - S3) s2. So inside a quadrangle
///   the field leans toward corner 2 (its centre gets the value at
///   s2 = t2 = 0.75, not the mean of the corners) and does not join the
///   values on its edges. This is the field's long-standing definition and
///   is kept.
/// - A combined value that is not strictly between 0 and the largest double
///   is not written.
TESSKIT2D_EXPORT int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                         dense1D<double, 8>& sizes, const dense1D<unsigned, 8>& target_nodes,
                                         bool keep_valid, element_type type) noexcept;

/// The size form with every node as a target, in ID order.
TESSKIT2D_EXPORT int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                         dense1D<double, 8>& sizes, bool keep_valid, element_type type) noexcept;

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
