#pragma once
/// \file
/// \brief The elements round every node, in rotation order, as a compressed
/// table.
///
/// The caller gives the connectivity, the neighbour table and one element
/// per node; the rings are walked over the neighbour table from that
/// element, so nothing is searched and the cost is the total size of the
/// rings.
///
/// \par Neighbours
/// `neighbours` has the shape of `conn`: row s of column j names the element
/// across edge s of element j. A triangle's edge s lies opposite corner s, a
/// quadrangle's runs from corner s to corner s + 1 (mod 4); a triangle's
/// slot 3 in a 4-row array is not read. An entry at or above the element
/// count (usually `null_id`) means none: a free edge.
///
/// \par Rotation
/// Round a node held at corner c, the walk leaves an element through the
/// edge on the far side of the corner: slot (c + 1) mod 3 of a triangle,
/// slot (c + 3) mod 4 of a quadrangle, each column by its own kind in a
/// mixed array. In a counter-clockwise mesh that turns counter-clockwise
/// round the node.
///
/// \par Example
/// \code
///   // Two counter-clockwise triangles of the unit square sharing the edge
///   // 0-2, slot 1 of the first and slot 2 of the second; each node names
///   // an element holding it.
///   unsigned tri[] = {0, 1, 2, 0, 2, 3};
///   unsigned across[] = {null_id, 1, null_id, null_id, null_id, 0};
///   const auto conn = dense2D<unsigned>::view(tri, 3, 2);
///   const auto neighbours = dense2D<unsigned>::view(across, 3, 2);
///   dense1D<unsigned> ancestors(4);
///   ancestors[0] = 0, ancestors[1] = 0, ancestors[2] = 1, ancestors[3] = 1;
///
///   dense1D<unsigned> offsets, elements;
///   const int status = get_connected_elements(conn, neighbours, ancestors, offsets, elements);
///   // 0; offsets (0, 2, 3, 5, 6), fans from their clockwise end: node 0
///   // has elements (0, 1), node 1 (0), node 2 (1, 0), node 3 (1).
///   for (unsigned i = 0; i + 1 < offsets.size; ++i)  // short after a stop
///     for (unsigned k = offsets[i]; k < offsets[i + 1]; ++k)
///       std::printf("node %u: element %u\n", i, elements[k]);
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief The elements round each node.
///
/// The ring of a node:
/// - a node whose ancestor is `null_id` has an empty range;
/// - when the rotation from the ancestor comes back to it, the ring is
///   closed: it begins with the ancestor and runs in the turn direction;
/// - when it meets a free edge, the ring is a fan: it begins at the element
///   at the fan's clockwise end and runs in the turn direction to the other
///   free edge, whichever element of the fan the ancestor names. The fan is
///   gathered across both edges through the node of each element, so an
///   inconsistent or non-manifold table still yields every element reached.
///
/// Linear in the total ring size, plus one mark per element.
///
/// \param[in] conn 3 rows (T3) or 4 rows (Q4, or mixed with `null_id` in
///   row 3 for a triangle) by \#elements.
/// \param[in] neighbours The shape of `conn`; see the file documentation.
/// \param[in] ancestors One entry per node, and its size sets \#nodes: an
///   element holding the node, or `null_id` for a node that no element
///   uses.
/// \param[out] offsets Rebuilt: emptied on entry and then appended to; its
///   earlier content is not read. \#nodes + 1 entries are reserved first.
///   The ring of node i is elements[offsets[i] .. offsets[i + 1]).
/// \param[out] elements Rebuilt as `offsets`, 6 \#nodes entries (the usual
///   valence) reserved first: the rings one after the other.
///
/// \retval 0 Success, also after the silent stop below. Empty `ancestors`
///   gives `offsets` = {0} and no element.
/// \retval -1 `conn` has neither 3 nor 4 rows.
/// \retval -2 `neighbours` differs from `conn` in rows or columns. Also,
///   last of all, found while walking after the reservations: a rotation
///   that neither returns to its first element nor meets a free edge (a
///   `neighbours` table out of step with `conn`), after \#elements steps of
///   one ring.
/// \retval -3 An entry of `ancestors` is neither below \#elements nor
///   `null_id`.
/// \retval -4 `offsets` and `elements` share storage (the same array, a
///   shallow copy, or views whose rooms overlap): they cannot both hold
///   their result.
/// \retval -199 No memory for the reservations, the marks of the fan walk
///   (one per element), or the private copy of an input that an output
///   shares storage with.
/// The outputs are empty after each refusal.
///
/// \note A silent stop. When an element met on the way (the ancestor
///   included) does not hold the node, the table ends after that node: its
///   range holds the ring as far as walked, the offending element last,
///   `offsets` gets its closing entry, and the call returns 0. `offsets`
///   then has fewer than \#nodes + 1 entries, which is how a caller tells.
///   The same stop, with none of the node's ring kept, happens if
///   `elements` cannot grow beyond its reservation.
/// \note An output may share storage with an input (be the very array, a
///   shallow copy, or a view over its buffer): the checks read the inputs
///   before the outputs are emptied, and an input that an output can meet
///   is then read from a private copy, so the result is that of separate
///   arrays.
/// \note A `std::bad_alloc` from the small control blocks of the working
///   arrays passes through.
TESSKIT2D_EXPORT int get_connected_elements(const dense2D<unsigned>& conn, const dense2D<unsigned>& neighbours,
                                            const dense1D<unsigned>& ancestors, dense1D<unsigned>& offsets,
                                            dense1D<unsigned>& elements);

} // namespace tesskit2d
} // namespace kelm
