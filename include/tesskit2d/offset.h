#pragma once
/// \file
/// \brief Offsetting a surface mesh in space along its node normals:
/// `offset` moves the nodes in place, `copy_with_offset` adds a displaced
/// copy of them and the connectivity of the copy.
///
/// Meshes are T3 (3-row `conn`) or Q4 (4-row `conn`, a column with
/// `null_id` in row 3 is a triangle), on `coords` of 3 rows. Only the nodes
/// that `conn` uses take part, and each of them once, however many elements
/// share it.
///
/// \par Displacement
/// Of a node with normal n:
/// | Forms | Displacement |
/// |-------|--------------|
/// | `distance` | `distance` * n: a signed distance, positive along n |
/// | `tensor` | M n, the full symmetric matrix times n: row r is M(r, 0) n[0] + M(r, 1) n[1] + M(r, 2) n[2] |
/// The tensor is one `symmetric_fixed<double, 3>` for the whole mesh; it
/// can push by different amounts along the axes and turns the normal as
/// well as scaling it.
///
/// \par Normals
/// The forms given `node_normals` (3 rows by at least highest ID + 1
/// columns) use them as they stand: they need not be unit vectors, and
/// their length scales the displacement. The forms without it take unit
/// node normals weighted by element size, `normals(coords, conn, 1.0, true,
/// ...)` of normals.h, and then do what the form with normals does. Such a
/// form returns -3 where `normals` refuses `conn` with -2, since -3 is the
/// normals' status in this family, and returns -1 and -199 of `normals` as
/// they are.
///
/// \par Shared storage
/// `node_normals` may share storage with `coords` (be `coords` itself, a
/// shallow copy, or a view over its buffer at another offset or stride): it
/// is then read from a private copy, and the result is that of separate
/// arrays; a copy that finds no memory gives -199. `conn_out` may be `conn`
/// itself or share its storage: the copy is made on a buffer of its own
/// before it replaces `conn_out`.
///
/// \par Memory
/// The forms make a hash set of the used nodes (and the forms without
/// normals an array of 3 doubles per node); a `std::bad_alloc` from their
/// small control blocks passes through.
///
/// \par Example
/// \code
///   // One triangle in the plane z = 0, counter-clockwise seen from above:
///   // its unit normal is (0, 0, 1).
///   dense2D<double> coords(3, 3, 0.0); // grows, so an array of its own
///   coords(0, 1) = 1;
///   coords(1, 2) = 1;
///   unsigned tri[] = {0, 1, 2};
///   const auto conn = dense2D<unsigned>::view(tri, 3, 1);
///
///   dense2D<unsigned> top;
///   int status = copy_with_offset(coords, conn, 0.5, top);
///   // 0; coords is 3 x 6, nodes 3 .. 5 at z = 0.5; top holds (3, 4, 5).
///   symmetric_fixed<double, 3> squash = {{1, 0, 1, 0, 0, 0.25}};
///   status = offset(coords, top, squash);
///   // 0; M n = (0, 0, 0.25): nodes 3 .. 5 move up to z = 0.75.
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Moves every node that `conn` uses by the tensor applied to its
/// normal.
///
/// \param[in,out] coords 3 rows by \#nodes, changed in place: only the used
///   columns move. Unchanged after a refusal.
/// \param[in] conn 3 or 4 rows by \#elements. With another row count no
///   node is used: the call moves nothing and returns 0 once the checks
///   pass.
/// \param[in] node_normals 3 rows, one column per node ID. May share
///   storage with `coords`.
/// \param[in] tensor A tensor of zeros moves nothing.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0).
/// \retval -1 `coords` does not have 3 rows.
/// \retval -2 An ID of `conn` (`null_id` aside) is not below the column
///   counts of both `coords` and `node_normals`; also `null_id` in rows 0 to
///   2 of a 3- or 4-row `conn`, where a corner must be.
/// \retval -3 `node_normals` does not have 3 rows.
/// \retval -199 No memory for the set of used nodes, or for the private
///   copy of a `node_normals` that shares storage with `coords`.
TESSKIT2D_EXPORT int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
                            const symmetric_fixed<double, 3>& tensor);

/// \brief Moves every node that `conn` uses by `distance` times its normal.
///
/// \param[in,out] coords As for the tensor form.
/// \param[in] conn As for the tensor form.
/// \param[in] node_normals As for the tensor form.
/// \param[in] distance Signed, positive along the normal.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0) or
///   `distance` is 0: both are tested first, before any check, so a
///   `distance` of 0 gives 0 even on bad `coords`.
/// \retval -1 `coords` does not have 3 rows.
/// \retval -2 A node ID of `conn` as for the tensor form.
/// \retval -3 `node_normals` does not have 3 rows.
/// \retval -199 As for the tensor form.
TESSKIT2D_EXPORT int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
                            double distance);

/// \brief The tensor form with unit node normals weighted by element size.
///
/// \param[in,out] coords 3 rows by \#nodes, changed in place; unchanged
///   after a refusal.
/// \param[in] conn 3 or 4 rows by \#elements.
/// \param[in] tensor One tensor for the whole mesh.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0).
/// \retval -1 `coords` does not have 3 rows.
/// \retval -3 `conn` refused by `normals` (not 3 or 4 rows, a node ID not a
///   column of `coords`, `null_id` where a node must be).
/// \retval -199 No memory, for the normals or the set.
///
/// \note `coords` of 3 rows and no column gets no normals from `normals`
///   (an empty input is no error there), and the form with normals then
///   refuses `conn` with -2.
TESSKIT2D_EXPORT int offset(dense2D<double>& coords, const dense2D<unsigned>& conn,
                            const symmetric_fixed<double, 3>& tensor);

/// \brief The distance form with unit node normals weighted by element
/// size, so a node moves by |distance| (or stays, where its normal is
/// zero).
///
/// \param[in,out] coords 3 rows by \#nodes, changed in place; unchanged
///   after a refusal.
/// \param[in] conn 3 or 4 rows by \#elements.
/// \param[in] distance Signed, positive along the normal.
///
/// \retval 0 Success, also when `conn` is empty or `distance` is 0, both
///   tested before the normals are computed or anything is checked.
/// \retval -1 `coords` does not have 3 rows.
/// \retval -3 `conn` refused by `normals`, as for the tensor form without
///   normals.
/// \retval -199 No memory, for the normals or the set.
///
/// \note -2 for `coords` of 3 rows and no column, as for the tensor form
///   without normals.
TESSKIT2D_EXPORT int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, double distance);

/// \brief Adds a copy of the surface displaced by the tensor, and its
/// elements.
///
/// A `conn` of neither 3 nor 4 rows uses no node: no copy is made, and
/// every entry of `conn_out` other than `null_id` becomes n - 1 (the
/// position of a node missing from the empty list is `null_id`, and n plus
/// it wraps at 32 bits). Status 0.
///
/// \param[in,out] coords Appended to, 3 rows. Every node p-th in order of
///   first appearance in `conn` (by column, and within a column by row)
///   gets its copy in column n + p, n being \#nodes on entry; old columns
///   keep their values, and a node that `conn` does not use has no copy.
///   Unchanged after every failure.
/// \param[in] conn 3 or 4 rows by \#elements; not changed.
/// \param[in] node_normals 3 rows, one column per node ID. May share
///   storage with `coords`.
/// \param[in] tensor One tensor for the whole mesh.
/// \param[out] conn_out Rebuilt as a deep copy of `conn` on its own buffer
///   (same rows, columns and order, hence the same orientation) in which
///   every entry but `null_id` names the copy of its node. A triangle of a
///   mixed array keeps `null_id` in row 3. No element joins the copy to the
///   input. May be `conn` itself. Not touched on a refusal: it keeps what it
///   held. After -199 it also keeps its old content if the node list or the
///   copy could not be made, and holds the renumbered copy if `coords` could
///   not grow.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0).
/// \retval -1 `coords` does not have 3 rows.
/// \retval -2 A node ID of `conn` as for the tensor form of `offset`.
/// \retval -3 `node_normals` does not have 3 rows.
/// \retval -199 No memory for the set, the copy of `conn`, the growth of
///   `coords`, or the private copy of a `node_normals` that shares storage
///   with `coords`.
TESSKIT2D_EXPORT int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                      const dense2D<double>& node_normals, const symmetric_fixed<double, 3>& tensor,
                                      dense2D<unsigned>& conn_out);

/// \brief Adds a copy displaced by `distance` times the normals.
///
/// As the tensor form, but for `conn_out` and a `distance` of 0, which is
/// no shortcut: it makes copies with the very coordinates of their nodes.
///
/// \param[in,out] coords As for the tensor form.
/// \param[in] conn As for the tensor form.
/// \param[in] node_normals As for the tensor form.
/// \param[in] distance Signed, positive along the normal.
/// \param[out] conn_out Emptied on entry, before any check, and again after
///   any failure, so it is empty unless the call succeeded on a non-empty
///   `conn`; on success as for the tensor form.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0).
/// \retval -1 `coords` does not have 3 rows.
/// \retval -2 A node ID of `conn` as for the tensor form of `offset`.
/// \retval -3 `node_normals` does not have 3 rows.
/// \retval -199 As for the tensor form.
///
/// \note When `conn_out` is `conn` itself, emptying it on entry would empty
///   the input: it is then emptied on the way out of a call that does not
///   succeed instead, which ends the same.
TESSKIT2D_EXPORT int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                      const dense2D<double>& node_normals, double distance,
                                      dense2D<unsigned>& conn_out);

/// \brief The tensor form of `copy_with_offset` with unit node normals
/// weighted by element size.
///
/// \param[in,out] coords Appended to, as for the form with normals.
/// \param[in] conn 3 or 4 rows by \#elements; not changed.
/// \param[in] tensor One tensor for the whole mesh.
/// \param[out] conn_out As for the form with normals; it keeps what it held
///   when the normals are refused or cannot be made.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0).
/// \retval -1 `coords` does not have 3 rows.
/// \retval -3 `conn` refused by `normals`, as for `offset` without normals.
/// \retval -199 No memory, for the normals or any step of the form with
///   normals.
///
/// \note -2 for `coords` of 3 rows and no column, as for `offset` without
///   normals.
TESSKIT2D_EXPORT int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                      const symmetric_fixed<double, 3>& tensor, dense2D<unsigned>& conn_out);

/// \brief The distance form of `copy_with_offset` with unit node normals
/// weighted by element size.
///
/// \param[in,out] coords Appended to, as for the form with normals.
/// \param[in] conn 3 or 4 rows by \#elements; not changed.
/// \param[in] distance Signed, positive along the normal; 0 is no shortcut.
/// \param[out] conn_out Emptied on entry and empty unless the call
///   succeeds, as for the distance form with normals.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0).
/// \retval -1 `coords` does not have 3 rows.
/// \retval -3 `conn` refused by `normals`, as for `offset` without normals.
/// \retval -199 No memory, for the normals or any step of the form with
///   normals.
///
/// \note -2 for `coords` of 3 rows and no column, as for `offset` without
///   normals.
TESSKIT2D_EXPORT int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn, double distance,
                                      dense2D<unsigned>& conn_out);

} // namespace tesskit2d
} // namespace kelm
