#pragma once
// Nodal interpolation: carrying a field from the nodes of a background mesh
// to other nodes that lie inside it.
//
// One `coords` array and one field array hold both kinds of node. The
// background mesh is `bg_conn` over some of the nodes; every other node
// listed in `target_nodes` gets the value of the field at its point,
// combined from the nodal values of the background element that holds it.
//
// Which node is which is told by `ancestors`, one entry per node: for a
// background node an element of `bg_conn` that holds it, for a target
// `null_id`. A node listed in `target_nodes` whose entry is not `null_id`
// is a background node, and its value stands. Background nodes whose entry
// is `null_id` are never offered as a start or as a nearest node.
//
// The library never builds `neighbours` or `ancestors`; a caller does it
// once per background mesh, for instance:
//
// \code
//   // neighbours: the element across each edge, null_id on the boundary.
//   // Edge s of a triangle lies opposite corner s, from corner s + 1 to
//   // s + 2 (mod 3); edge s of a quadrangle runs from corner s to s + 1
//   // (mod 4). A mixed triangle leaves row 3 at null_id.
//   std::map<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>> open;
//   dense2D<unsigned> neighbours(bg_conn.rows, bg_conn.cols, null_id);
//   dense1D<unsigned> ancestors(coords.cols, null_id);
//   for (unsigned e = 0; e < bg_conn.cols; ++e) {
//     const unsigned* c = bg_conn.column(e);
//     const unsigned sides = bg_conn.rows == 3 || c[3] == null_id ? 3 : 4;
//     for (unsigned k = 0; k < sides; ++k) ancestors[c[k]] = e;
//     for (unsigned s = 0; s < sides; ++s) {
//       const unsigned a = sides == 3 ? c[(s + 1) % 3] : c[s];
//       const unsigned b = sides == 3 ? c[(s + 2) % 3] : c[(s + 1) % 4];
//       const auto key = std::minmax(a, b);
//       const auto found = open.find(key);
//       if (found == open.end()) { open[key] = {e, s}; continue; }
//       neighbours(s, e) = found->second.first;
//       neighbours(found->second.second, found->second.first) = e;
//       open.erase(found);
//     }
//   }
//   // Targets are the nodes behind the background ones: their entry stays
//   // null_id.
// \endcode
//
// Locating a point. The nodes of `bg_conn` with an element are put in a
// tree; the element of the node nearest the point starts a walk across
// `neighbours` toward it, element by element. A walk that leaves the mesh
// is tried again from every element round the exact nearest node. A point
// counts as inside an element when it lies beyond none of its edges by more
// than 1e-6 times twice the element's area; a point on an edge shared by two
// elements goes to either. Elements must run counter-clockwise: a walk that
// meets an element of non-positive or non-finite area fails at once. A
// walk takes at most #elements steps, so no input makes a call loop for
// ever. The tree lays a 2^32 by 2^32 grid over the box of the background
// nodes; of more than three background nodes on one grid position (closer
// than about 2.3e-10 of the box's longer side) only the first three met in
// `bg_conn` are offered as nearest nodes.
//
// What a target receives:
// - inside an element: T3 weights w0, w1 of corners 0, 1 and value
//   (f1 - f2) w1 + (f0 - f2) w0 + f2; Q4 local coordinates (u, v) in
//   [-1, 1]^2 by Newton's method from the centre and the bilinear blend of
//   the four values; a mixed column by its kind. A linear field is thus
//   reproduced to rounding on triangles and quadrangles of any shape, and
//   a bilinear one on parallelograms;
// - inside the box of the background nodes but in no element (a hole, a
//   notch, beyond an inverted element): the value of the nearest background
//   node with an element, copied unchanged;
// - outside that closed box: nothing; its value is left as it was.
//
// Results repeat bit for bit from run to run: the walks draw their random
// start edges from a generator seeded with 1. Only a point exactly on a
// shared edge may find a different element when `target_nodes` is
// reordered.
//
// Statuses, in checking order, the same for both overloads:
// -  0 success, and at once when `target_nodes` is empty, before any check;
// - -1 `coords` does not have 2 rows;
// - -2 `bg_conn` fails the ID check for `type` (shape of the kind, node IDs
//   below #nodes; `null_id` in row 3 only for MIXED);
// - -3 `neighbours` differs from `bg_conn` in rows or columns, or holds an
//   entry that is neither `null_id` nor below #elements;
// - -4 `ancestors` does not have #nodes entries; with the dense1D field also
//   when a node of `bg_conn` has an entry that is neither `null_id` nor below
//   #elements, as a walk would start outside the mesh;
// - -5 `field` does not have #nodes columns (dense2D) or entries (dense1D);
// - -6 an entry of `target_nodes` is not below #nodes;
// - -199 (dense1D field only) no memory for the node tree, before any
//   target is written; or no memory for the fallback round a nearest node,
//   in which case the targets before that one are written and it and the
//   rest are not.
// Pairs of row count and `type` other than 3 rows with T3, 4 rows with Q4 or
// MIXED pass the checks where `check_IDs` allows them, and then do nothing
// and return 0. `field` is filled in place (never resized), and only the
// entries of targets are written.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Does not interpolate: validates its arguments exactly as the dense1D
/// overload does (except for the entries of `ancestors`) and returns, with
/// `field` untouched.
///
/// This overload never fills its node tree, so no target is located and no
/// nearest node exists, and it writes nothing for any valid input. That is
/// its defined behaviour, kept for the callers that rely on it. To carry a
/// field of several components, call the dense1D overload once per row.
///
/// - `coords`: 2 rows by #nodes.
/// - `bg_conn`: 3 rows (T3) or 4 rows (Q4, MIXED) by #elements.
/// - `neighbours`: the shape of `bg_conn`.
/// - `ancestors`: #nodes entries.
/// - `field`: any number of rows by #nodes; not written.
/// - `target_nodes`: node IDs.
/// - `type`: T3, Q4 or MIXED.
///
/// Statuses as in the header's list, never -199.
TESSKIT2D_EXPORT int interpolate(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                 const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                 dense2D<double>& field, const dense1D<unsigned, 8>& target_nodes,
                                 element_type type) noexcept;

/// Carries a scalar field from the background nodes to the targets.
///
/// - `coords`: 2 rows by #nodes, background and target nodes alike.
/// - `bg_conn`: the background elements, 3 rows (`type` T3) or 4 rows (`type`
///   Q4, or MIXED with `null_id` in row 3 for a triangle) by #elements.
/// - `neighbours`: the shape of `bg_conn`; entry (s, e) is the element across
///   edge s of element e, or `null_id`. Row 3 of a mixed triangle is not
///   read.
/// - `ancestors`: #nodes entries; an element holding each background node,
///   `null_id` for a target.
/// - `field`: #nodes entries, in place; the values of the background nodes
///   are read, the entries of the targets written.
/// - `target_nodes`: the nodes to compute, in the order of processing;
///   entries whose `ancestors` entry is not `null_id` are skipped.
/// - `type`: T3, Q4 or MIXED.
///
/// A target that is also a node of `bg_conn` (with `null_id` in `ancestors`)
/// is written when its turn comes, and later targets read its new value.
///
/// Time: about linear in #nodes for the tree and in #targets for the
/// searches, each walk a few elements long. Targets in a spatially coherent
/// order (along a space-filling curve, row by row) run several times faster
/// than scattered ones, as their searches share cached cells and elements.
/// Working memory: about 25 bytes per background node, plus one bit per
/// node ID of `bg_conn`.
TESSKIT2D_EXPORT int interpolate(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                                 const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                                 dense1D<double, 8>& field, const dense1D<unsigned, 8>& target_nodes,
                                 element_type type) noexcept;

} // namespace tesskit2d
} // namespace kelm
