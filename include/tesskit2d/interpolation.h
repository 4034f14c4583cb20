#pragma once
/// \file
/// \brief Nodal interpolation: carrying a field from the nodes of a
/// background mesh to other nodes that lie inside it.
///
/// \par Nodes and elements
/// One `coords` array (2 rows by \#nodes) and one field array hold both
/// kinds of node. The background mesh is `bg_conn` over some of the nodes:
/// 3 rows (T3), or 4 rows (Q4, or MIXED with `null_id` in row 3 for a
/// triangle) by \#elements. Every other node listed in `target_nodes` gets
/// the value of the field at its point, combined from the nodal values of
/// the background element that holds it.
///
/// \par Ancestors
/// Which node is which is told by `ancestors`, one entry per node: for a
/// background node an element of `bg_conn` that holds it, for a target
/// `null_id`. A node listed in `target_nodes` whose entry is not `null_id`
/// is a background node, and its value stands. Background nodes whose entry
/// is `null_id` are never offered as a start or as a nearest node.
///
/// \par Neighbours
/// `neighbours` has the shape of `bg_conn`; entry (s, e) is the element
/// across edge s of element e, or `null_id` on the boundary. Edge s of a
/// triangle lies opposite corner s, from corner s + 1 to s + 2 (mod 3); edge
/// s of a quadrangle runs from corner s to s + 1 (mod 4). Row 3 of a mixed
/// triangle is not read. The library never builds `neighbours` or
/// `ancestors`; a caller does it once per background mesh (see the
/// example).
///
/// \par Locating a point
/// The nodes of `bg_conn` with an element are put in a tree; the element of
/// the node nearest the point starts a walk across `neighbours` toward it,
/// element by element. A walk that leaves the mesh is tried again from
/// every element round the exact nearest node. A point counts as inside an
/// element when it lies beyond none of its edges by more than 1e-6 times
/// twice the element's area; a point on an edge shared by two elements goes
/// to either. Elements must run counter-clockwise: a walk that meets an
/// element of non-positive or non-finite area fails at once. A walk takes
/// at most \#elements steps, so no input makes a call loop for ever. The
/// tree lays a 2^32 by 2^32 grid over the box of the background nodes; of
/// more than three background nodes on one grid position (closer than about
/// 2.3e-10 of the box's longer side) only the first three met in `bg_conn`
/// are offered as nearest nodes.
///
/// \par What a target receives
/// - inside an element: T3 weights w0, w1 of corners 0, 1 and value
///   (f1 - f2) w1 + (f0 - f2) w0 + f2; Q4 local coordinates (u, v) in
///   [-1, 1]^2 by Newton's method from the centre and the bilinear blend of
///   the four values; a mixed column by its kind. A linear field is thus
///   reproduced to rounding on triangles and quadrangles of any shape, and
///   a bilinear one on parallelograms;
/// - inside the box of the background nodes but in no element (a hole, a
///   notch, beyond an inverted element): the value of the nearest background
///   node with an element, copied unchanged;
/// - outside that closed box, or at a NaN coordinate: nothing; its value is
///   left as it was.
///
/// \par Repeatability
/// Results repeat bit for bit from run to run: the walks draw their random
/// start edges from a generator seeded with 1. Only a point exactly on a
/// shared edge may find a different element when `target_nodes` is
/// reordered.
///
/// \par Statuses
/// Both overloads check in the same order and with the same numbers; each
/// lists its own. Pairs of row count and `type` other than 3 rows with T3,
/// 4 rows with Q4 or MIXED pass the checks where the ID check allows them
/// (an empty `bg_conn`, 6 rows with T6, 8 or 9 rows with MIXED), and then do nothing and
/// return 0.
///
/// \par Output mode
/// `field` is filled in place (never resized), and only the entries of
/// targets are written; after a refusal other than -199 it is unchanged.
///
/// \par Shared storage
/// `field` is the only output. It holds doubles, so of the inputs only
/// `coords` can share its storage (the same buffer, or a view over it);
/// the ID arrays are read only and may share storage with each other. When
/// `field` may overwrite `coords`, the dense1D overload reads the
/// coordinates from a private copy made before any target is written, and
/// gives the result that separate arrays holding the same values give. The
/// dense2D overload writes nothing, so sharing does not matter to it.
///
/// \par Example
/// \code
///   // The unit square as two triangles over nodes 0 to 3, and two targets
///   // behind them: the centre and a point outside the square.
///   double xy[] = {0, 0, 1, 0, 1, 1, 0, 1, 0.5, 0.5, 2, 2};
///   unsigned tri[] = {0, 1, 2, 0, 2, 3};
///   const auto coords = dense2D<double>::view(xy, 2, 6);
///   const auto bg_conn = dense2D<unsigned>::view(tri, 3, 2);
///   const unsigned n_background = 4;
///
///   // neighbours: the element across each edge, null_id on the boundary.
///   // ancestors: for each node of bg_conn an element that holds it.
///   std::map<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>> open;
///   dense2D<unsigned> neighbours(bg_conn.rows, bg_conn.cols, null_id);
///   dense1D<unsigned> ancestors(coords.cols, null_id);
///   for (unsigned e = 0; e < bg_conn.cols; ++e) {
///     const unsigned* c = bg_conn.column(e);
///     const unsigned sides = bg_conn.rows == 3 || c[3] == null_id ? 3 : 4;
///     for (unsigned k = 0; k < sides; ++k) ancestors[c[k]] = e;
///     for (unsigned s = 0; s < sides; ++s) {
///       const unsigned a = sides == 3 ? c[(s + 1) % 3] : c[s];
///       const unsigned b = sides == 3 ? c[(s + 2) % 3] : c[(s + 1) % 4];
///       const std::pair<unsigned, unsigned> key = std::minmax(a, b);
///       const auto found = open.find(key);
///       if (found == open.end()) { open[key] = {e, s}; continue; }
///       neighbours(s, e) = found->second.first;
///       neighbours(found->second.second, found->second.first) = e;
///       open.erase(found);
///     }
///   }
///
///   // The field x + 2y at the background nodes; the targets' entries stay
///   // null_id in ancestors and start at 0 in field.
///   dense1D<double> field(coords.cols, 0.0);
///   for (unsigned n = 0; n < n_background; ++n) field[n] = coords(0, n) + 2 * coords(1, n);
///   dense1D<unsigned> targets(coords.cols - n_background);
///   for (unsigned k = 0; k < targets.size; ++k) targets[k] = n_background + k;
///   const int status = interpolate(coords, bg_conn, neighbours, ancestors, field, targets, T3);
///   // 0; field[4] == 1.5, the field at the centre; field[5] stays 0, its
///   // node lying outside the box of the background nodes.
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Validates the arguments of an interpolation and returns, writing
/// nothing.
///
/// Checks as the dense1D overload does, except for the entries of
/// `ancestors`, and returns with `field` untouched.
///
/// \param[in] coords 2 rows by \#nodes.
/// \param[in] bg_conn 3 rows (T3) or 4 rows (Q4, MIXED) by \#elements.
/// \param[in] neighbours The shape of `bg_conn`; entries `null_id` or below
///   \#elements.
/// \param[in] ancestors \#nodes entries; their values are not checked.
/// \param[in] field Any number of rows by \#nodes; not written.
/// \param[in] target_nodes Node IDs, each below \#nodes.
/// \param[in] type T3, Q4 or MIXED.
///
/// \retval 0 Success, and at once when `target_nodes` is empty, before any
///   check.
/// \retval -1 `coords` does not have 2 rows.
/// \retval -2 `bg_conn` fails the ID check for `type`: not the shape of the
///   kind, a node ID not below \#nodes, or `null_id` where a node must be
///   (a MIXED triangle has it in row 3). An empty `bg_conn` passes whatever `type`.
/// \retval -3 `neighbours` differs from `bg_conn` in rows or columns, or
///   holds an entry that is neither `null_id` nor below \#elements.
/// \retval -4 `ancestors` does not have \#nodes entries.
/// \retval -5 `field` does not have \#nodes columns.
/// \retval -6 An entry of `target_nodes` is not below \#nodes.
///
/// \note This overload never locates a target and never copies a nearest
///   node's value, so it writes nothing for any valid input and never
///   returns -199. That is its defined behaviour, kept for the callers that
///   rely on it. To carry a field of several components, call the dense1D
///   overload once per row.
/// \note `field` is taken by non-const reference though it is not written;
///   it may share storage with `coords`.
TESSKIT2D_EXPORT int interpolate(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                 const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                 dense2D<double>& field, const dense1D<unsigned, 8>& target_nodes,
                                 element_type type) noexcept;

/// \brief Carries a scalar field from the background nodes to the targets.
///
/// A target that is also a node of `bg_conn` (with `null_id` in `ancestors`)
/// is written when its turn comes, and later targets read its new value.
///
/// Time: about linear in \#nodes for the tree and in \#targets for the
/// searches, each walk a few elements long. Targets in a spatially coherent
/// order (along a space-filling curve, row by row) run several times faster
/// than scattered ones, as their searches share cached cells and elements.
/// Working memory: about 25 bytes per background node, plus one bit per
/// node ID of `bg_conn`, plus a copy of `coords` when `field` shares its
/// storage.
///
/// \param[in] coords 2 rows by \#nodes, background and target nodes alike.
/// \param[in] bg_conn The background elements: 3 rows (`type` T3) or 4 rows
///   (`type` Q4, or MIXED with `null_id` in row 3 for a triangle) by
///   \#elements.
/// \param[in] neighbours The shape of `bg_conn`; entry (s, e) is the element
///   across edge s of element e, or `null_id`. Row 3 of a mixed triangle is
///   not read.
/// \param[in] ancestors \#nodes entries: an element holding each background
///   node, `null_id` for a target.
/// \param[in,out] field \#nodes entries, in place: the values of the
///   background nodes are read, the entries of the targets written. It may
///   share storage with `coords` (see the file documentation).
/// \param[in] target_nodes The nodes to compute, in the order of
///   processing; entries whose `ancestors` entry is not `null_id` are
///   skipped.
/// \param[in] type T3, Q4 or MIXED.
///
/// \retval 0 Success, and at once when `target_nodes` is empty, before any
///   check.
/// \retval -1 `coords` does not have 2 rows.
/// \retval -2 `bg_conn` fails the ID check for `type`: not the shape of the
///   kind, a node ID not below \#nodes, or `null_id` where a node must be
///   (a MIXED triangle has it in row 3). An empty `bg_conn` passes whatever `type`.
/// \retval -3 `neighbours` differs from `bg_conn` in rows or columns, or
///   holds an entry that is neither `null_id` nor below \#elements.
/// \retval -4 `ancestors` does not have \#nodes entries; or, where `bg_conn`
///   and `type` will be walked, a node of `bg_conn` has an entry that is
///   neither `null_id` nor below \#elements, as a walk would start outside
///   the mesh.
/// \retval -5 `field` does not have \#nodes entries.
/// \retval -6 An entry of `target_nodes` is not below \#nodes.
/// \retval -199 No memory, after all the checks: for the private copy of
///   `coords` or for the node tree, before any target is written; or for the
///   fallback round a nearest node, in which case the targets before that
///   one are written and it and the rest are not. A `std::bad_alloc` from
///   the small objects that head the working arrays is caught and reported
///   the same way; none passes through.
///
/// \pre The elements of `bg_conn` run counter-clockwise and `neighbours`
///   names the element really across each edge; otherwise targets may take
///   the nearest node's value, or a value from an element that does not
///   hold them, with status 0.
/// \pre An `ancestors` entry of a background node names an element that
///   holds the node; otherwise the fallback round the nearest node stops
///   short.
TESSKIT2D_EXPORT int interpolate(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                 const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                 dense1D<double, 8>& field, const dense1D<unsigned, 8>& target_nodes,
                                 element_type type) noexcept;

} // namespace tesskit2d
} // namespace kelm
