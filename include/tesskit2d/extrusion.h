#pragma once
/// \file
/// \brief Sweeping a mesh of E2 edges into a layered surface mesh of
/// quadrangles or triangles, along a translation, a rotation, a spiral or
/// node normals.
///
/// \par Arrays, common to every overload
/// - `coords`: in-out, one node per column. New nodes are appended; the
///   existing columns keep their IDs and values (except for the row count
///   changes that each overload states).
/// - `conn`: the edges, 2 rows by \#edges (row 0 the start, row 1 the end);
///   never changed. Only nodes that some edge mentions are swept.
/// - `conn_out`: appended to. Its columns on entry stay first and
///   unchanged, so several sweeps can be run into one mesh. It must be empty
///   (rows * cols of 0, whatever its rows) or have the rows that each
///   overload checks.
///
/// \par Numbering
/// The swept nodes are listed in order of first appearance in `conn`
/// (columns in order, row 0 then row 1); call them used[0 .. C - 1]. The
/// input nodes are layer 0 and are reused. The copy of used[p] in layer
/// j = 1 .. n_layers is column n_nodes + (j - 1) C + p, n_nodes being the
/// column count of `coords` on entry; so `coords` ends with
/// n_nodes + C n_layers columns, and edges that share a node share its
/// copies without any merging.
///
/// \par Elements
/// Elements are written edge by edge in `conn` column order, and for each
/// edge layer by layer from the start of the path. For edge e and layer k
/// (from 0), cur0, cur1 are the edge's nodes in layer k and top0, top1 their
/// copies in layer k + 1:
/// - Q4: column old_cols + e n_layers + k is (cur0, cur1, top1, top0).
/// - T3: columns old_cols + 2 (e n_layers + k) and the next one hold
///   (cur0, cur1, top1), (cur0, top1, top0) for the diagonal cur0-top1, or
///   (cur0, cur1, top0), (cur1, top1, top0) for the diagonal cur1-top0.
///
/// All keep the sense of rotation of (cur0, cur1, top1, top0).
///
/// \par Pattern
/// `pattern` (T3) chooses the diagonal of each cell: 0 cur1-top0
/// everywhere; 1 cur0-top1 everywhere; 2 alternating, cur0-top1 where e + k
/// is even and cur1-top0 where it is odd (e is the column in `conn`, not a
/// place along a chain, so the alternation follows the storage order).
/// Overloads that check `pattern` refuse values outside 0 .. 2; those that
/// do not treat any value other than 0 and 2 as 1.
///
/// \par Layers
/// A uniform overload takes `n_layers` and spaces the layers evenly. A
/// graded one takes the wanted sizes `h0` at the start and `h1` at the end
/// of the path and makes sizes grow geometrically between them: the number
/// of layers is the path length over the logarithmic mean of h0 and h1,
/// rounded to the nearest whole number (to the nearest even number with
/// `even`), the rounding point between two candidates being their geometric
/// mean. The path length is always honoured, the end sizes only
/// approximately. The path length is: the norm of `direction` (translate);
/// |angle| times the distance from `center` to x0 (rotate in the plane);
/// the norm of rotation x (x0 - center) (rotate in space); the norm of
/// `translation` (spiral; the turn adds nothing); `thickness` (normal). x0
/// is the node in row 0 of the first column of `conn`: that one node's path
/// sets the number of layers for the whole sweep. Translations and
/// rotations make at least one layer; spirals and normal sweeps may make
/// none, and then add no element and no node (though `conn_out` takes its
/// row count).
///
/// \par Paths
/// Every new node is computed from its own input position, with s the
/// fraction of the path reached by its layer; nothing accumulates along the
/// path. A full turn puts the last layer on the first, but as new nodes:
/// the surface is not closed and nothing is merged.
/// - Translation: node x goes to x + s direction.
/// - Rotation in the plane: about `center` by s angle (radians, positive
///   from the first axis towards the second). In space: about the axis
///   through `center` along `rotation`, right-handed, by s |rotation|.
///   Every node keeps its distance from the centre or axis. No test against
///   a full turn is made.
/// - Spiral: node x goes to center + s translation + R(s rotation)(x -
///   center); the turn and the advance move together. `coords` must have 3
///   rows.
/// - Normal sweep in the plane: node x goes to x + w v, v being the node's
///   vector and w the fraction of it reached. `coords` must have 2 rows.
///
/// \par Checks
/// Every overload first returns 0, with nothing changed, when `conn` has no
/// entries (rows * cols of 0); the uniform ones also when `n_layers` is 0
/// (except the two `vectors` forms, which run their checks and then add no
/// column). Then the checks run in the order each block lists, and a
/// refusal changes no array. "IDs" means `conn` is not 2 rows of IDs below
/// the column count of `coords`. A size (`h0`, `h1`, `thickness`) is
/// refused when zero or negative; a NaN passes. No overload checks
/// `direction`, `center`, `angle`, `rotation` or `translation`. The status
/// numbers are part of the interface, including those that do not follow
/// the argument positions.
///
/// \par Out of memory
/// -199, after which `conn_out` and `coords` are back to their column
/// counts on entry (the row counts that may change are stated per
/// overload). Should memory run out while the swept nodes are being listed
/// (a small list, sized before the outputs), the call is not refused: the
/// elements are written with the node numbers that the list can answer,
/// which are then invalid. The working list of nodes has a small header
/// made with `operator new`, whose `std::bad_alloc` passes through.
///
/// \par Not checked
/// Repeated nodes in an edge, coinciding nodes and zero-length edges (they
/// yield degenerate elements). Calls on separate arrays may run in
/// parallel. `conn_out` may share storage with `conn`: the edges are then
/// read from a private copy.
///
/// \par Example
/// \code
///   // A straight profile at distance 1 from the z axis, turned once round
///   // it in 128 layers: a cylinder of radius 1 and height 2.
///   const double pi = 3.14159265358979323846;
///   const unsigned n = 20;
///   dense2D<double> xyz(3, n + 1, 0.0);
///   dense2D<unsigned> profile(2, n);
///   for (unsigned i = 0; i <= n; ++i) {
///     xyz(0, i) = 1;
///     xyz(2, i) = 2.0 * i / n;
///   }
///   for (unsigned i = 0; i < n; ++i) {
///     profile(0, i) = i;
///     profile(1, i) = i + 1;
///   }
///   dense2D<unsigned> quads;
///   const int status = extrude_rotate_Q4(xyz, profile, vector_fixed<double, 3>{{0, 0, 0}},
///                                        vector_fixed<double, 3>{{0, 0, 2 * pi}}, 128u, quads);
///   // 0; quads is 4 x (20 * 128), xyz has 21 + 21 * 128 columns, the last
///   // layer lying on the first as new nodes.
///
///   // The same profile swept in the plane along (0, 1) into triangles,
///   // sizes growing from 0.01 to 0.05, an even number of layers,
///   // alternating diagonals.
///   dense2D<double> xy(2, n + 1, 0.0);
///   for (unsigned i = 0; i <= n; ++i)
///     xy(0, i) = double(i) / n;
///   dense2D<unsigned> triangles;
///   const int graded = extrude_translate_T3(xy, profile, vector_fixed<double, 2>{{0, 1}}, 0.01, 0.05, 2, true,
///                                           triangles);
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

// ---------------------------------------------------------------------------
// Translation: node x of layer i goes to x + s direction.

/// \brief Graded translation in the plane into quadrangles.
///
/// At least one layer is made, so a zero `direction` gives one layer of
/// degenerate elements.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] direction The whole translation, first to last layer.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -4 `h0` zero or negative.
/// \retval -5 `h1` zero or negative.
/// \retval -7 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory; `coords` keeps 2 rows.
TESSKIT2D_EXPORT int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const vector_fixed<double, 2>& direction, double h0, double h1, bool even,
                                          dense2D<unsigned>& conn_out);

/// \brief Uniform translation in the plane into quadrangles.
///
/// `n_layers` evenly spaced layers, as the graded form with h0 = h1 =
/// |direction| / n_layers and `even` false, whose statuses it returns.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] direction The whole translation, first to last layer.
/// \param[in] n_layers The number of layers.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `n_layers` is 0 (checked first) or `conn` is
///   empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -4 The size |direction| / n_layers is zero: a zero `direction`.
///   (-5 cannot follow, h1 being the same size.)
/// \retval -7 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory; `coords` keeps 2 rows.
TESSKIT2D_EXPORT int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const vector_fixed<double, 2>& direction, unsigned n_layers,
                                          dense2D<unsigned>& conn_out);

/// \brief Graded translation in space into quadrangles.
///
/// `coords` may have 2 or 3 rows; 2 rows are first given a third row of 0
/// (after the checks), so the mesh always comes out in 3 rows.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; 3 rows afterwards, the new
///   nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] direction The whole translation, first to last layer.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -4 `h0` zero or negative.
/// \retval -5 `h1` zero or negative.
/// \retval -7 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory; `coords` comes back with 3 rows when the third
///   row had been added.
TESSKIT2D_EXPORT int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const vector_fixed<double, 3>& direction, double h0, double h1, bool even,
                                          dense2D<unsigned>& conn_out);

/// \brief Uniform translation in space into quadrangles.
///
/// As the graded form in space with h0 = h1 = |direction| / n_layers and
/// `even` false, whose statuses it returns.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; 3 rows afterwards, the new
///   nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] direction The whole translation, first to last layer.
/// \param[in] n_layers The number of layers.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `n_layers` is 0 (checked first) or `conn` is
///   empty.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -4 The size |direction| / n_layers is zero: a zero `direction`.
/// \retval -7 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory; as for the graded form.
TESSKIT2D_EXPORT int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const vector_fixed<double, 3>& direction, unsigned n_layers,
                                          dense2D<unsigned>& conn_out);

/// \brief Graded translation in the plane into triangles.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] direction The whole translation, first to last layer.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] pattern The diagonal of each cell, 0 .. 2.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -4 `h0` zero or negative.
/// \retval -5 `h1` zero or negative.
/// \retval -6 `pattern` outside 0 .. 2.
/// \retval -8 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` keeps 2 rows.
TESSKIT2D_EXPORT int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const vector_fixed<double, 2>& direction, double h0, double h1, int pattern,
                                          bool even, dense2D<unsigned>& conn_out);

/// \brief Uniform translation in the plane into triangles.
///
/// As the graded form with h0 = h1 = |direction| / n_layers and `even`
/// false, whose statuses it returns (`pattern` is checked there).
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] direction The whole translation, first to last layer.
/// \param[in] n_layers The number of layers.
/// \param[in] pattern The diagonal of each cell, 0 .. 2.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `n_layers` is 0 (checked first) or `conn` is
///   empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -4 The size |direction| / n_layers is zero: a zero `direction`.
/// \retval -6 `pattern` outside 0 .. 2.
/// \retval -8 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` keeps 2 rows.
TESSKIT2D_EXPORT int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const vector_fixed<double, 2>& direction, unsigned n_layers, int pattern,
                                          dense2D<unsigned>& conn_out);

/// \brief Graded translation in space into triangles.
///
/// 2-row `coords` get a third row of 0 after the checks, as for the
/// quadrangles.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; 3 rows afterwards, the new
///   nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] direction The whole translation, first to last layer.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] pattern The diagonal of each cell, 0 .. 2.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -4 `h0` zero or negative.
/// \retval -5 `h1` zero or negative.
/// \retval -6 `pattern` outside 0 .. 2.
/// \retval -8 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` comes back with 3 rows when the third
///   row had been added.
TESSKIT2D_EXPORT int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const vector_fixed<double, 3>& direction, double h0, double h1, int pattern,
                                          bool even, dense2D<unsigned>& conn_out);

/// \brief Uniform translation in space into triangles.
///
/// As the graded form in space with h0 = h1 = |direction| / n_layers and
/// `even` false, whose statuses it returns.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; 3 rows afterwards, the new
///   nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] direction The whole translation, first to last layer.
/// \param[in] n_layers The number of layers.
/// \param[in] pattern The diagonal of each cell, 0 .. 2.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `n_layers` is 0 (checked first) or `conn` is
///   empty.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -4 The size |direction| / n_layers is zero: a zero `direction`.
/// \retval -6 `pattern` outside 0 .. 2.
/// \retval -8 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; as for the graded form.
TESSKIT2D_EXPORT int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const vector_fixed<double, 3>& direction, unsigned n_layers, int pattern,
                                          dense2D<unsigned>& conn_out);

// ---------------------------------------------------------------------------
// Rotation. In the plane: about `center` by s angle (radians, positive from
// the first axis towards the second). In space: about the axis through
// `center` along `rotation`, right-handed, by s |rotation|. Every node keeps
// its distance from the centre or axis. No test against a full turn is made.

/// \brief Uniform rotation in the plane into quadrangles.
///
/// Not a wrapper: the layers are evenly spaced directly.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; comes out with 2 rows (a
///   third row is dropped), the new nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center The centre of the rotation.
/// \param[in] angle The whole turn, first to last layer, in radians.
/// \param[in] n_layers The number of layers.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `conn` is empty or `n_layers` is 0.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -6 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory; `coords` back to 2 rows.
TESSKIT2D_EXPORT int extrude_rotate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 2>& center, double angle, unsigned n_layers,
                                       dense2D<unsigned>& conn_out);

/// \brief Graded rotation in the plane into quadrangles.
///
/// The path length is |angle| times the distance from `center` to x0 alone;
/// x0 on `center` gives one layer whatever the other nodes.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center The centre of the rotation.
/// \param[in] angle The whole turn, first to last layer, in radians.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -5 `h0` zero or negative.
/// \retval -6 `h1` zero or negative.
/// \retval -8 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory; `coords` keeps 2 rows.
TESSKIT2D_EXPORT int extrude_rotate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 2>& center, double angle, double h0, double h1,
                                       bool even, dense2D<unsigned>& conn_out);

/// \brief Uniform rotation in space into quadrangles.
///
/// 2-row `coords` get a third row of 0 after the checks.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; 3 rows afterwards, the new
///   nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center A point of the axis.
/// \param[in] rotation The axis direction; its length is the whole turn in
///   radians, right-handed.
/// \param[in] n_layers The number of layers.
/// \param[in,out] conn_out Appended to: empty or 3 rows (not 4; see the
///   note).
///
/// \retval 0 Done, also when `conn` is empty or `n_layers` is 0.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -3 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` back to the row count it had on entry
///   to the call.
///
/// \note Unlike the other quadrangle forms, `conn_out` is checked for 3
///   rows: an empty one works, a non-empty 4-row one is refused, and a
///   non-empty 3-row one is accepted and widened to 4 rows, its old columns
///   gaining `null_id` in row 3 (which reads as a mixed mesh of triangles
///   and quadrangles).
TESSKIT2D_EXPORT int extrude_rotate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                                       unsigned n_layers, dense2D<unsigned>& conn_out);

/// \brief Graded rotation in space into quadrangles.
///
/// The path length is |rotation x (x0 - center)|: the angle times x0's
/// distance from the axis. 2-row `coords` get a third row of 0 after the
/// checks.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; 3 rows afterwards, the new
///   nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center A point of the axis.
/// \param[in] rotation The axis direction; its length is the whole turn in
///   radians, right-handed.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 3 rows, as in the uniform
///   form (a 3-row one is widened to 4).
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -5 `h0` zero or negative.
/// \retval -6 `h1` zero or negative.
/// \retval -8 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` in 3 rows.
TESSKIT2D_EXPORT int extrude_rotate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                                       double h0, double h1, bool even, dense2D<unsigned>& conn_out);

/// \brief Uniform rotation in the plane into triangles.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; comes out with 2 rows, the
///   new nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center The centre of the rotation.
/// \param[in] angle The whole turn, first to last layer, in radians.
/// \param[in] n_layers The number of layers.
/// \param[in] pattern The diagonal of each cell; not checked.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty or `n_layers` is 0.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -7 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` back to 2 rows.
TESSKIT2D_EXPORT int extrude_rotate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 2>& center, double angle, unsigned n_layers,
                                       int pattern, dense2D<unsigned>& conn_out);

/// \brief Graded rotation in the plane into triangles.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center The centre of the rotation.
/// \param[in] angle The whole turn, first to last layer, in radians.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] pattern The diagonal of each cell, 0 .. 2.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -5 `h0` zero or negative.
/// \retval -6 `h1` zero or negative.
/// \retval -7 `pattern` outside 0 .. 2.
/// \retval -9 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` keeps 2 rows.
TESSKIT2D_EXPORT int extrude_rotate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 2>& center, double angle, double h0, double h1,
                                       int pattern, bool even, dense2D<unsigned>& conn_out);

/// \brief Uniform rotation in space into triangles.
///
/// 2-row `coords` get a third row of 0 after the checks.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; 3 rows afterwards, the new
///   nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center A point of the axis.
/// \param[in] rotation The axis direction; its length is the whole turn in
///   radians, right-handed.
/// \param[in] n_layers The number of layers.
/// \param[in] pattern The diagonal of each cell; not checked.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty or `n_layers` is 0.
/// \retval -1 `coords` neither 2 nor 3 rows.
/// \retval -2 IDs.
/// \retval -7 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` back to the row count it had on entry
///   to the call.
TESSKIT2D_EXPORT int extrude_rotate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                                       unsigned n_layers, int pattern, dense2D<unsigned>& conn_out);

/// \brief Graded rotation in space into triangles.
///
/// 2-row `coords` get a third row of 0 after the checks.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; 3 rows afterwards, the new
///   nodes appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center A point of the axis.
/// \param[in] rotation The axis direction; its length is the whole turn in
///   radians, right-handed.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] pattern The diagonal of each cell; not checked.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` neither 2 nor 3 rows; and, checked next, IDs (the
///   same number).
/// \retval -5 `h0` zero or negative.
/// \retval -6 `h1` zero or negative.
/// \retval -9 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` in 3 rows.
TESSKIT2D_EXPORT int extrude_rotate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                                       double h0, double h1, int pattern, bool even, dense2D<unsigned>& conn_out);

// ---------------------------------------------------------------------------
// Spiral: node x of layer i goes to center + s translation
// + R(s rotation)(x - center); the turn and the advance move together.
// `coords` must have 3 rows. The path length is |translation| alone, so a
// graded spiral with no translation makes no layer.

/// \brief Graded spiral into quadrangles.
///
/// The path length is |translation| alone, so a spiral with no translation
/// makes no layer.
///
/// \param[in,out] coords 3 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center A point of the axis.
/// \param[in] rotation The axis direction; its length is the whole turn in
///   radians, right-handed.
/// \param[in] translation The whole advance, first to last layer.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 3 rows.
/// \retval -2 IDs.
/// \retval -6 `h0` zero or negative.
/// \retval -7 `h1` zero or negative.
/// \retval -9 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory.
///
/// \note After -199 `coords` is cut to the row count of `conn`, 2: the
///   third coordinates are lost.
TESSKIT2D_EXPORT int extrude_spiral_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                                       const vector_fixed<double, 3>& translation, double h0, double h1, bool even,
                                       dense2D<unsigned>& conn_out);

/// \brief Uniform spiral into quadrangles.
///
/// As the graded form with h0 = h1 = |translation| / n_layers and `even`
/// false, whose statuses it returns.
///
/// \param[in,out] coords 3 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center A point of the axis.
/// \param[in] rotation The axis direction; its length is the whole turn in
///   radians, right-handed.
/// \param[in] translation The whole advance, first to last layer.
/// \param[in] n_layers The number of layers.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `n_layers` is 0 (checked first) or `conn` is
///   empty.
/// \retval -1 `coords` not 3 rows.
/// \retval -2 IDs.
/// \retval -6 The size |translation| / n_layers is zero: a zero
///   `translation`.
/// \retval -9 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory; `coords` cut to 2 rows as for the graded form.
TESSKIT2D_EXPORT int extrude_spiral_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                                       const vector_fixed<double, 3>& translation, unsigned n_layers,
                                       dense2D<unsigned>& conn_out);

/// \brief Graded spiral into triangles.
///
/// \param[in,out] coords 3 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center A point of the axis.
/// \param[in] rotation The axis direction; its length is the whole turn in
///   radians, right-handed.
/// \param[in] translation The whole advance, first to last layer.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] pattern The diagonal of each cell; not checked.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 3 rows.
/// \retval -2 IDs.
/// \retval -6 `h0` zero or negative.
/// \retval -4 `h1` zero or negative (checked after `h0`).
/// \retval -10 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` cut to 2 rows as for the quadrangles.
TESSKIT2D_EXPORT int extrude_spiral_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                                       const vector_fixed<double, 3>& translation, double h0, double h1, int pattern,
                                       bool even, dense2D<unsigned>& conn_out);

/// \brief Uniform spiral into triangles.
///
/// As the graded form with h0 = h1 = |translation| / n_layers and `even`
/// false, whose statuses it returns.
///
/// \param[in,out] coords 3 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] center A point of the axis.
/// \param[in] rotation The axis direction; its length is the whole turn in
///   radians, right-handed.
/// \param[in] translation The whole advance, first to last layer.
/// \param[in] n_layers The number of layers.
/// \param[in] pattern The diagonal of each cell; not checked.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `n_layers` is 0 (checked first) or `conn` is
///   empty.
/// \retval -1 `coords` not 3 rows.
/// \retval -2 IDs.
/// \retval -6 The size |translation| / n_layers is zero: a zero
///   `translation`.
/// \retval -10 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory; `coords` cut to 2 rows.
TESSKIT2D_EXPORT int extrude_spiral_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                                       const vector_fixed<double, 3>& translation, unsigned n_layers, int pattern,
                                       dense2D<unsigned>& conn_out);

// ---------------------------------------------------------------------------
// Normal sweep in the plane: node x of layer i goes to x + w v, v being the
// node's vector. `coords` must have 2 rows.

/// \brief Sweeps each node along its own column of `vectors` into
/// quadrangles.
///
/// A node's vector is its whole displacement: its length sets that node's
/// height, and the layers split it evenly. Not a wrapper.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] vectors 2 rows, one column per node ID of `coords`.
/// \param[in] n_layers The number of layers. With 0 the checks still run,
///   then nothing is added (an empty `conn_out` takes 4 rows).
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -3 `vectors` not 2 rows, or fewer columns than `coords` (the
///   placement reads the column of every swept node, so a short `vectors` is
///   refused here rather than read past its end).
/// \retval -5 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory.
TESSKIT2D_EXPORT int extrude_normal_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const dense2D<double>& vectors, unsigned n_layers, dense2D<unsigned>& conn_out);

/// \brief Graded sweep to the distance `thickness` along the unit node
/// normals of the line mesh, into quadrangles.
///
/// The normals are those of `kelm::tesskit1d::normals`, with edges weighted
/// by their length. An edge's normal is its direction turned a quarter turn
/// counter-clockwise, so a positive `thickness` sweeps a counter-clockwise
/// line into counter-clockwise quadrangles (inwards for a counter-clockwise
/// loop); a negative sweep is refused, so reverse the edges to go the other
/// way. Zero layers are possible and add nothing.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] thickness The distance swept.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] even Round the layer count to an even number.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -3 `thickness` zero or negative.
/// \retval -4 `h0` zero or negative.
/// \retval -5 `h1` zero or negative.
/// \retval -7 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory.
///
/// \note After -7, a negative status of the normals is returned as it
///   stands, with no array changed.
TESSKIT2D_EXPORT int extrude_normal_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness,
                                       double h0, double h1, bool even, dense2D<unsigned>& conn_out);

/// \brief Uniform sweep along the unit node normals into quadrangles.
///
/// As the graded form with h0 = h1 = thickness / n_layers and `even`
/// false, whose statuses it returns.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] thickness The distance swept.
/// \param[in] n_layers The number of layers.
/// \param[in,out] conn_out Appended to: empty or 4 rows.
///
/// \retval 0 Done, also when `n_layers` is 0 (checked first) or `conn` is
///   empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -3 `thickness` zero or negative.
/// \retval -4 The size thickness / n_layers is zero (an underflow).
/// \retval -7 `conn_out` not empty and not 4 rows.
/// \retval -199 No memory.
///
/// \note After -7, a negative status of the normals, as for the graded form.
TESSKIT2D_EXPORT int extrude_normal_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness,
                                       unsigned n_layers, dense2D<unsigned>& conn_out);

/// \brief Sweeps each node along its own column of `vectors` into
/// triangles.
///
/// As the `vectors` form of the quadrangles.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] vectors 2 rows, one column per node ID of `coords`.
/// \param[in] n_layers The number of layers. With 0 the checks still run,
///   then nothing is added (an empty `conn_out` takes 3 rows).
/// \param[in] pattern The diagonal of each cell; not checked.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -3 `vectors` not 2 rows, or fewer columns than `coords` (the
///   placement reads the column of every swept node, so a short `vectors` is
///   refused here rather than read past its end).
/// \retval -6 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory.
TESSKIT2D_EXPORT int extrude_normal_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                       const dense2D<double>& vectors, unsigned n_layers, int pattern,
                                       dense2D<unsigned>& conn_out);

/// \brief Graded sweep along the unit node normals into triangles.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] thickness The distance swept.
/// \param[in] h0 The wanted layer size at the start of the path.
/// \param[in] h1 The wanted layer size at the end of the path.
/// \param[in] even Round the layer count to an even number.
/// \param[in] pattern The diagonal of each cell; not checked.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `conn` is empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -3 `thickness` zero or negative.
/// \retval -4 `h0` zero or negative.
/// \retval -5 `h1` zero or negative.
/// \retval -8 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory.
///
/// \note The order of the last arguments: `even` comes before `pattern`
///   here, unlike the other graded triangle forms.
/// \note After -8, a negative status of the normals is returned as it
///   stands, with no array changed.
TESSKIT2D_EXPORT int extrude_normal_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness,
                                       double h0, double h1, bool even, int pattern, dense2D<unsigned>& conn_out);

/// \brief Uniform sweep along the unit node normals into triangles.
///
/// As the graded form with h0 = h1 = thickness / n_layers and `even`
/// false, whose statuses it returns.
///
/// \param[in,out] coords 2 rows by \#nodes; the new nodes are appended.
/// \param[in] conn 2 rows (E2) by \#edges; not changed.
/// \param[in] thickness The distance swept.
/// \param[in] n_layers The number of layers.
/// \param[in] pattern The diagonal of each cell; not checked.
/// \param[in,out] conn_out Appended to: empty or 3 rows.
///
/// \retval 0 Done, also when `n_layers` is 0 (checked first) or `conn` is
///   empty.
/// \retval -1 `coords` not 2 rows.
/// \retval -2 IDs.
/// \retval -3 `thickness` zero or negative.
/// \retval -4 The size thickness / n_layers is zero (an underflow).
/// \retval -8 `conn_out` not empty and not 3 rows.
/// \retval -199 No memory.
///
/// \note After -8, a negative status of the normals, as for the graded form.
TESSKIT2D_EXPORT int extrude_normal_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness,
                                       unsigned n_layers, int pattern, dense2D<unsigned>& conn_out);

} // namespace tesskit2d
} // namespace kelm
