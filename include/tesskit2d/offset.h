#pragma once
// Offsetting a surface mesh in space along its node normals: `offset` moves
// the nodes in place, `copy_with_offset` adds a displaced copy of them and
// the connectivity of the copy.
//
// Meshes are T3 (3-row `conn`) or Q4 (4-row `conn`, a column with `null_id`
// in row 3 is a triangle), on `coords` of 3 rows. Only the nodes that `conn`
// uses take part, and each of them once, however many elements share it.
//
// Displacement of a node with normal n:
//   distance forms   distance * n: a signed distance, positive along n;
//   tensor forms     M n, the full symmetric matrix times n, row r being
//                    M(r, 0) n[0] + M(r, 1) n[1] + M(r, 2) n[2]. It can
//                    push by different amounts along the axes and turns the
//                    normal as well as scaling it.
// The tensor is one `symmetric_fixed<double, 3>` for the whole mesh.
//
// Normals. The forms given `node_normals` (3 rows by at least
// highest ID + 1 columns) use them as they stand: they need not be unit
// vectors, and their length scales the displacement. `node_normals` may
// share storage with `coords` (be `coords` itself, a shallow copy, or a view
// over its buffer at another offset or stride): it is then read from a
// private copy, and the result is that of separate arrays; a copy that
// finds no memory gives -199. The forms without it take unit node normals weighted by
// element size, `normals(coords, conn, 1.0, true, ...)` of
// "tesskit2d/normals.h", and then do what the form with normals does. Such
// a form returns -3 where `normals` refuses `conn` with -2, since -3 is the
// normals' status in this family, and returns -1 and -199 of `normals` as
// they are.
//
// Memory: the forms make a hash set of the used nodes (and the forms
// without normals an array of 3 doubles per node); a `std::bad_alloc` from
// their small control blocks passes through.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Moves every node that `conn` uses by the tensor applied to its normal.
///
/// - `coords`: in place, 3 rows by #nodes. Only the used columns change.
/// - `conn`: 3 or 4 rows by #elements; not changed. With another row count
///   no node is used: the call moves nothing and returns 0 once the checks
///   pass.
/// - `node_normals`: 3 rows, one column per node ID.
/// - `tensor`: a tensor of zeros moves nothing.
///
/// Statuses in checking order; after a refusal `coords` is unchanged:
/// -  0 success, also when `conn` is empty (rows * cols of 0).
/// - -1 `coords` does not have 3 rows.
/// - -2 an ID of `conn` (`null_id` aside) is not below the column counts of
///   both `coords` and `node_normals`; also `null_id` in rows 0 to 2 of a
///   3- or 4-row `conn`, where a corner must be.
/// - -3 `node_normals` does not have 3 rows.
/// - -199 no memory for the set of used nodes; `coords` unchanged.
TESSKIT2D_EXPORT int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
                            const symmetric_fixed<double, 3>& tensor);

/// Moves every node that `conn` uses by `distance` times its normal. As the
/// tensor form, except that a `distance` of 0 returns 0 at once, before any
/// check, together with the test for an empty `conn`: so 0 even on bad
/// `coords`.
TESSKIT2D_EXPORT int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
                            double distance);

/// The tensor form with unit node normals weighted by element size.
///
/// Statuses: 0 also for an empty `conn`; -1 `coords` does not have 3 rows;
/// -3 `conn` refused by `normals` (not 3 or 4 rows, a node ID not a column
/// of `coords`, `null_id` where a node must be); -199 no memory, for the
/// normals or the set; `coords` unchanged after all of them.
TESSKIT2D_EXPORT int offset(dense2D<double>& coords, const dense2D<unsigned>& conn,
                            const symmetric_fixed<double, 3>& tensor);

/// The distance form with unit node normals weighted by element size, so a
/// node moves by |distance| (or stays, where its normal is zero). A `distance` of 0 returns 0 before the
/// normals are computed or anything is checked. Statuses as the tensor form
/// without normals.
TESSKIT2D_EXPORT int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, double distance);

/// Adds a copy of the surface displaced by the tensor, and its elements.
///
/// - `coords`: appended, 3 rows. Every node p-th in order of first
///   appearance in `conn` (by column, and within a column by row) gets its
///   copy in column n + p, n being #nodes on entry; old columns keep their
///   values, and a node that `conn` does not use has no copy.
/// - `conn`: 3 or 4 rows by #elements; not changed.
/// - `node_normals`: 3 rows, one column per node ID.
/// - `conn_out`: rebuilt as a deep copy of `conn` on its own buffer (same
///   rows, columns and order, hence the same orientation) in which every
///   entry but `null_id` names the copy of its node. A triangle of a mixed
///   array keeps `null_id` in row 3. No element joins the copy to the input.
///   `conn_out` may be `conn` itself or share its storage: the copy is made
///   on a buffer of its own before it replaces `conn_out`.
///
/// A `conn` of neither 3 nor 4 rows uses no node: no copy is made, and
/// every entry of `conn_out` other than `null_id` becomes n - 1 (the
/// position of a node missing from the empty list is `null_id`, and n plus
/// it wraps at 32 bits). Status 0.
///
/// Statuses in checking order, as the tensor form of `offset`: 0 (also for
/// an empty `conn`), -1, -2, -3, -199. This form does not touch `conn_out`
/// on a refusal: it keeps what it held. After -199 it also keeps its old
/// content if the node list or the copy could not be made, and holds the
/// renumbered copy if `coords` could not grow. `coords` is unchanged after
/// every failure.
TESSKIT2D_EXPORT int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                      const dense2D<double>& node_normals, const symmetric_fixed<double, 3>& tensor,
                                      dense2D<unsigned>& conn_out);

/// Adds a copy displaced by `distance` times the normals. As the tensor
/// form, with two differences: `conn_out` is emptied on entry, before any
/// check (unless it is `conn` itself, which is then emptied on the way out
/// of a call that does not succeed), and again after any failure, so it is empty unless the call
/// succeeded on a non-empty `conn`; and a `distance` of 0 is no shortcut:
/// it makes copies with the very coordinates of their nodes.
TESSKIT2D_EXPORT int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                      const dense2D<double>& node_normals, double distance,
                                      dense2D<unsigned>& conn_out);

/// The tensor form with unit node normals weighted by element size.
/// Statuses as `offset` without normals (0, -1, -3, -199); `conn_out` keeps
/// what it held when the normals are refused or cannot be made.
TESSKIT2D_EXPORT int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                      const symmetric_fixed<double, 3>& tensor, dense2D<unsigned>& conn_out);

/// The distance form with unit node normals weighted by element size.
/// Statuses as `offset` without normals (0, -1, -3, -199); `conn_out` is
/// emptied on entry and stays empty unless the call succeeds.
TESSKIT2D_EXPORT int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn, double distance,
                                      dense2D<unsigned>& conn_out);

} // namespace tesskit2d
} // namespace kelm
