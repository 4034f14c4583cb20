#pragma once
/// \file
/// \brief Metric fields: carried from a background mesh to other nodes, and
/// spread over the interior of a structured grid.
///
/// \par Metrics and sizes
/// A metric prescribes the edge length per direction: along a unit vector d
/// the wanted length is h = 1 / sqrt(d^T M d). A metric field is a
/// dense2D<double> with one column per node, packed as `symmetric_fixed`:
/// | Rows | Tensor | Column |
/// |------|--------|--------|
/// | 3 | 2 by 2 | m00, m10, m11 |
/// | 6 | 3 by 3 | m00, m10, m11, m20, m21, m22 |
///
/// A size field is a dense1D<double, 8> of one length per node. A size is
/// valid when it lies strictly between 0 and the largest double.
///
/// \par Interpolation
/// Two metrics A and B are interpolated at a parameter t by simultaneous
/// reduction: the common directions x_i of A^-1 B are found, and along each
/// the size h_i = 1 / sqrt(x_i^T M x_i) of unit x_i (M = A, then B: one
/// over the square root of M's eigenvalue in the common basis) runs
/// linearly from A's (t = 0) to B's (t = 1); the metric is rebuilt from the
/// new sizes in the same directions. It is
/// neither log-Euclidean nor linear in the tensors or their inverses: two
/// metrics with sizes 1 and 3 along x give size 2 at t = 1/2, where a linear
/// blend of the tensors would give 1.34. Sizes are likewise linear in h.
/// Within 1e-12 of t = 0 or t = 1 the end value is copied bit for bit, valid
/// or not; elsewhere both ends must be positive definite (positive sizes),
/// or the interpolation fails.
///
/// \par Output mode
/// interpolate_metrics() writes target columns in place and never resizes;
/// metrics_struct() appends behind the existing entries.
///
/// \par Shared storage
/// The field that a call writes (`metrics` or `sizes`) may share storage
/// with one of its inputs: `coords` as the same buffer, a shallow copy or a
/// view over it, and the ID arrays (`bg_conn`, `neighbours`, `ancestors`,
/// `target_nodes`, `boundary`) through views made over the same raw
/// storage. Such an input is read from a private copy, made only when the
/// two can meet, and the result is the one separate arrays give; a copy
/// that finds no memory gives -199 with nothing written.
///
/// \par Example
/// \code
///   // The unit square as two triangles on nodes 0 to 3, and one target,
///   // node 4, inside the first triangle.
///   double xy[] = {0, 0, 1, 0, 1, 1, 0, 1, 0.5, 0.25};
///   unsigned tri[] = {0, 1, 2, 0, 2, 3};
///   unsigned across[] = {null_id, 1, null_id, null_id, null_id, 0};
///   unsigned holder[] = {0, 0, 0, 1, null_id};
///   // Sizes 1 at nodes 0 and 3, 2 at nodes 1 and 2, the same in every
///   // direction; the target's column is not read.
///   double m[] = {1, 0, 1, 0.25, 0, 0.25, 0.25, 0, 0.25, 1, 0, 1, 0, 0, 0};
///   unsigned wanted[] = {4};
///   const auto coords = dense2D<double>::view(xy, 2, 5);
///   const auto bg_conn = dense2D<unsigned>::view(tri, 3, 2);
///   const auto neighbours = dense2D<unsigned>::view(across, 3, 2);
///   const auto ancestors = dense1D<unsigned>::view(holder, 5);
///   const auto targets = dense1D<unsigned>::view(wanted, 1);
///   auto metrics = dense2D<double>::view(m, 3, 5);
///   const int status = interpolate_metrics(coords, bg_conn, neighbours, ancestors, metrics, targets, false, T3);
///   // 0; column 4 is size 1.5 in every direction: (1 / 2.25, 0, 1 / 2.25).
///
///   // A structured grid's interior from its boundary's sizes: the loop of
///   // a 2 by 2 grid, boundary nodes 0 to 7.
///   unsigned ring[] = {0, 1, 2, 3, 4, 5, 6, 7, 0};
///   double h[] = {1, 3, 1, 1, 1, 3, 1, 1};
///   auto sizes = dense1D<double>::view(h, 8); // grows into storage of its own
///   metrics_struct(dense1D<unsigned>::view(ring, 9), 2, sizes); // 0; sizes[8] == 2
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief A metric field at nodes that do not belong to a background mesh,
/// from the metrics at the background's nodes.
///
/// The metric counterpart of `interpolate` (interpolation.h): same
/// arguments, same search, but values are combined two at a time by the
/// metric interpolation described in this file's introduction, and
/// `keep_valid` can spare what is already there.
///
/// Each target is located by a walk across `neighbours` from the nearest
/// background node's element (a random choice of the first edge to test,
/// from a generator seeded with 1, so results repeat exactly; a walk that
/// falls off the mesh is retried from the elements round the exact nearest
/// node), within 1e-6 of twice an element's area. Then:
/// - in a triangle, with barycentric weights (w0, w1) of corners 0 and 1: on
///   edge w0 = 0 the interpolation at w1 from corner 2 to 1, on w1 = 0 at w0
///   from 2 to 0, on w0 + w1 = 1 at w1 from 0 to 1 (tested in that order,
///   each within a distance of 1e-12 in the weights' plane); inside,
///   E = w1 / (w0 + w1) from corner 0 to 1, then w0 + w1 from corner 2 to E.
///   A target on an edge thus uses only that edge's corners, and one on a
///   corner gets its metric bit for bit.
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
/// \param[in] coords 2 rows by \#nodes, background and target nodes alike.
/// \param[in] bg_conn The background elements, 3 rows (T3) by \#elements.
///   See -2 below.
/// \param[in] neighbours The shape of `bg_conn`: row s of element e is the
///   element across its edge s (a triangle's edge s lies opposite corner s,
///   a quadrangle's runs from corner s to s + 1), `null_id` on the boundary.
/// \param[in] ancestors \#nodes entries: per node one element that holds
///   it, or `null_id`. A node with an element is a background node and is
///   never written; only nodes with `null_id` are targets.
/// \param[in,out] metrics 3 or 6 rows by \#nodes, written in place and
///   never resized. Only targets' columns are written; a background
///   column a target's combination needs is read as it stands when it is
///   used, so a target listed before another may feed it.
/// \param[in] target_nodes The IDs to compute, in the order of processing;
///   an ID may repeat.
/// \param[in] keep_valid True spares a target whose present metric is
///   positive definite: 3 rows, the smaller eigenvalue of the 2 by 2 closed
///   form is above 0 (and finite); 6 rows, the smallest eigenvalue from
///   LAPACK's dspev is above 0 (a failed call counts as 0). A zero column is
///   always computed.
/// \param[in] type T3, Q4 or MIXED. With a 3-row `bg_conn` only T3 does
///   anything, with 4 rows Q4 and MIXED; any other pair (a value outside
///   the enumeration included) returns 0 with nothing done.
///
/// \retval 0 Done; also when `target_nodes` is empty, before any other
///   check.
/// \retval -1 `coords` has other than 2 rows.
/// \retval -2 `bg_conn` is not empty (rows * cols of 0) and is not a valid
///   T3 array: 3 rows, IDs below \#nodes.
/// \retval -3 `neighbours` differs from `bg_conn` in shape, or holds an
///   entry that is neither below \#elements nor `null_id`.
/// \retval -4 `ancestors` does not have \#nodes entries, or (when `type`
///   and the rows of `bg_conn` make a pair that does something) a node of
///   `bg_conn` has an `ancestors` entry that is neither an element nor
///   `null_id`: the walks would start outside the mesh.
/// \retval -5 `metrics` does not have \#nodes columns, or has neither 3 nor
///   6 rows.
/// \retval -6 An ID of `target_nodes` is not below \#nodes.
/// \retval -199 No memory for the search tree or for a private copy of an
///   input that shares storage with `metrics` (nothing written), or for the
///   working space of a walk's fallback (targets before the failing one
///   keep their new values).
///
/// \pre `neighbours` and `ancestors` describe `bg_conn` (not checked beyond
///   the ranges above: a wrong but in-range table gives other elements,
///   never a read outside the arrays).
/// \note `bg_conn` is checked as T3 whatever `type` says: a 4-row `bg_conn`
///   gives -2 even with `type` Q4 or MIXED. Use the size form for
///   quadrangles.
TESSKIT2D_EXPORT int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                         dense2D<double>& metrics, const dense1D<unsigned, 8>& target_nodes,
                                         bool keep_valid, element_type type) noexcept;

/// \brief A metric field at every node that is not a background node, in
/// ID order.
///
/// As the form with `target_nodes`, with all node IDs 0 to \#nodes - 1 as
/// the list (`ancestors` still tells the targets). Nothing is allocated for
/// the list.
///
/// \param[in] coords As for the form with `target_nodes`.
/// \param[in] bg_conn As for the form with `target_nodes`.
/// \param[in] neighbours As for the form with `target_nodes`.
/// \param[in] ancestors As for the form with `target_nodes`.
/// \param[in,out] metrics As for the form with `target_nodes`.
/// \param[in] keep_valid As for the form with `target_nodes`.
/// \param[in] type As for the form with `target_nodes`.
///
/// \retval 0 Done; also when \#nodes (the columns of `coords`) is 0,
///   before any other check.
/// \retval -1 As for the form with `target_nodes`.
/// \retval -2 As for the form with `target_nodes`.
/// \retval -3 As for the form with `target_nodes`.
/// \retval -4 As for the form with `target_nodes`.
/// \retval -5 As for the form with `target_nodes`.
/// \retval -199 As for the form with `target_nodes`.
///
/// \note `bg_conn` is checked as T3 whatever `type` says, as in the form
///   with `target_nodes`.
TESSKIT2D_EXPORT int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                         dense2D<double>& metrics, bool keep_valid, element_type type) noexcept;

/// \brief A size field at target nodes, from the sizes at a background
/// mesh's nodes.
///
/// As the metric form with `target_nodes`, with one size per node and these
/// differences:
/// - `bg_conn` is checked as `type` says, so all three kinds work.
/// - Sizes are linear in h. In a triangle the edge cases are those of the
///   metric form; inside, the value is (S1 - S2) w1 + (S0 - S2) w0 + S2,
///   from three strictly positive sizes.
/// - In a quadrangle the edge cases are t = 0, s = 0 and t = 1 only; see the
///   note.
/// - A combined value that is not strictly between 0 and the largest double
///   is not written.
///
/// \param[in] coords 2 rows by \#nodes, background and target nodes alike.
/// \param[in] bg_conn The background elements by \#elements: 3 rows for
///   T3, 4 rows for Q4 and MIXED (a column with `null_id` in row 3 is a
///   triangle).
/// \param[in] neighbours The shape of `bg_conn`, as for the metric form.
/// \param[in] ancestors \#nodes entries, as for the metric form.
/// \param[in,out] sizes \#nodes entries, written in place and never
///   resized. Only targets' entries are written.
/// \param[in] target_nodes The IDs to compute, in the order of processing.
/// \param[in] keep_valid True spares a target whose present size lies
///   strictly between 0 and the largest double.
/// \param[in] type T3 with 3 rows, Q4 or MIXED with 4 rows; any other
///   kind that `bg_conn` passes as returns 0 with nothing done.
///
/// \retval 0 Done; also when `target_nodes` is empty, before any other
///   check.
/// \retval -1 `coords` has other than 2 rows.
/// \retval -2 `bg_conn` is not empty and does not fit `type` (its rows, or
///   an ID not below \#nodes); a `type` outside the enumeration fits no
///   non-empty `bg_conn`.
/// \retval -3 As for the metric form.
/// \retval -4 As for the metric form.
/// \retval -5 `sizes` does not have \#nodes entries.
/// \retval -6 An ID of `target_nodes` is not below \#nodes.
/// \retval -199 As for the metric form.
///
/// \pre As for the metric form.
/// \note In a quadrangle there is no edge case for s = 1. Elsewhere, from
///   four strictly positive sizes, the coordinates are mapped a second time,
///   s2 = (s + 1) / 2 and t2 = (t + 1) / 2, and the value is a + (b - a) t2
///   with a = S0 + (S1 - S0) s2, b = S3 + (S2 - S3) s2. So inside a
///   quadrangle the field leans toward corner 2 (its centre gets the value
///   at s2 = t2 = 0.75, not the mean of the corners) and does not join the
///   values on its edges. This is the field's long-standing definition and
///   is kept.
TESSKIT2D_EXPORT int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                         dense1D<double, 8>& sizes, const dense1D<unsigned, 8>& target_nodes,
                                         bool keep_valid, element_type type) noexcept;

/// \brief A size field at every node that is not a background node, in ID
/// order.
///
/// As the size form with `target_nodes`, with all node IDs 0 to
/// \#nodes - 1 as the list. Nothing is allocated for the list.
///
/// \param[in] coords As for the size form with `target_nodes`.
/// \param[in] bg_conn As for the size form with `target_nodes`.
/// \param[in] neighbours As for the size form with `target_nodes`.
/// \param[in] ancestors As for the size form with `target_nodes`.
/// \param[in,out] sizes As for the size form with `target_nodes`.
/// \param[in] keep_valid As for the size form with `target_nodes`.
/// \param[in] type As for the size form with `target_nodes`.
///
/// \retval 0 Done; also when \#nodes is 0, before any other check.
/// \retval -1 As for the size form with `target_nodes`.
/// \retval -2 As for the size form with `target_nodes`.
/// \retval -3 As for the size form with `target_nodes`.
/// \retval -4 As for the size form with `target_nodes`.
/// \retval -5 As for the size form with `target_nodes`.
/// \retval -199 As for the size form with `target_nodes`.
TESSKIT2D_EXPORT int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                         dense1D<double, 8>& sizes, bool keep_valid, element_type type) noexcept;

/// \brief Sizes at the interior nodes of a structured grid, from the sizes
/// at its boundary.
///
/// Goes with `mesh_struct_Q4` and `mesh_struct_T3` (structured.h): with the
/// same `boundary` and `n_side` it appends one entry per interior node, in
/// their numbering, so the field stays aligned with `coords`. Coordinates
/// are not needed: everything is done in index space.
///
/// Each interior entry (i, j), 0 < i < M, 0 < j < N, is the mid-point of
/// the values that the opposite sides give along the two grid directions,
/// with u = i / M, v = j / N:
/// - X = interpolation at u from F(0, j) to F(M, j),
/// - Y = interpolation at v from F(i, 0) to F(i, N),
/// - F(i, j) = interpolation at 1/2 from Y to X (for sizes: (X + Y) / 2).
///
/// There are no corner terms: this is not the transfinite blending of the
/// coordinates. An interpolation that fails (a size of 0 or below) leaves 0
/// in the entry, and so do the later steps of that entry; the status is
/// still 0.
///
/// \param[in] boundary The closed loop of B IDs of `mesh_struct_Q4`;
///   M = (B - 2 N - 1) / 2 (unsigned, truncated). IDs index `sizes`.
/// \param[in] n_side N, the number of grid intervals along the second side.
/// \param[in,out] sizes n entries on entry, appended to: n + (M - 1)(N - 1)
///   on return. The entry of grid position (i, j) lands at
///   n + (i - 1)(N - 1) + (j - 1). The first n entries are not changed.
///
/// \retval 0 Done; also when B * N is 0 (32-bit product), with nothing
///   changed, and with M = 1 or N = 1, with nothing added (see the note for
///   M = 0).
/// \retval -1 B below 5, first and last entries of `boundary` differ, or an
///   ID is not below n (so an empty `sizes` with a loop gives -1).
/// \retval -2 2 N above B, or B is not 2 (M + N) + 1; both are computed
///   without a 32-bit wrap, so a huge `n_side` (2 N = 2^32) is refused here.
/// \retval -199 No memory to lengthen `sizes` or for a private copy of
///   `boundary` where it shares storage with `sizes`; also, before anything
///   is allocated, a count n + (M - 1)(N - 1) past 32 bits, and the M = 0
///   wrap of the note when N - 1 is above n.
///
/// The field is unchanged by every non-zero status.
///
/// \note With B = 2 N + 1 (M = 0) every check passes, no entry is computed
///   and the count n + (M - 1)(N - 1) wraps to n - (N - 1): the field loses
///   its last N - 1 entries. This follows `mesh_struct_T3`, which shortens
///   `coords` the same way. Where N - 1 is above n the wrap would instead
///   grow the field by nearly 2^32 entries; that case gives -199.
TESSKIT2D_EXPORT int metrics_struct(const dense1D<unsigned, 8>& boundary, unsigned n_side,
                                    dense1D<double, 8>& sizes) noexcept;

/// \brief Metrics at the interior nodes of a structured grid, from the
/// metrics at its boundary.
///
/// As the size form, for a metric field of 3 or 6 rows whose column count
/// is n; the new columns keep the row count. Metrics are interpolated as
/// described in this file's introduction; a metric that cannot be reduced
/// (not positive definite) leaves a zero column in the entries that use it.
///
/// \param[in] boundary As for the size form.
/// \param[in] n_side As for the size form.
/// \param[in,out] metrics 3 or 6 rows by n columns on entry, appended to:
///   n + (M - 1)(N - 1) columns of the same rows on return. The first n
///   columns are not changed.
///
/// \retval -3 `metrics` has neither 3 nor 6 rows. Tested first, before any
///   other argument: an empty `metrics` of 0 rows gives -3 even with an
///   empty `boundary`.
/// \retval 0 As for the size form, n being the column count.
/// \retval -1 As for the size form.
/// \retval -2 As for the size form.
/// \retval -199 As for the size form.
///
/// \note The wrap of M = 0 drops columns as in the size form.
TESSKIT2D_EXPORT int metrics_struct(const dense1D<unsigned, 8>& boundary, unsigned n_side,
                                    dense2D<double>& metrics) noexcept;

} // namespace tesskit2d
} // namespace kelm
