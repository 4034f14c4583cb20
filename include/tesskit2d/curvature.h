#pragma once
/// \file
/// \brief Curvature of surface meshes: the second fundamental form of a
/// parametric surface from its tangents, and principal curvatures with
/// their directions from the dihedral angles of a triangle mesh in space.
///
/// \par Signs
/// Both estimates are signed against the normal that the mesh gives them,
/// so that reversing the normal reverses the sign:
/// - parametric_curvatures() uses n = Su x Sv / |Su x Sv| at the node and
///   estimates e = -Suu . n, f = -Suv . n, g = -Svv . n. A surface that
///   bends towards n gets negative forms: z = (a u^2 + 2 b u v + c v^2) / 2
///   gives (-a, -b, -c).
/// - principal_curvatures() uses the element normals, P0, P1, P2
///   counter-clockwise seen from the side they point to. A surface that
///   bends away from its normals gets negative curvatures: a sphere whose
///   elements all face outward gives two negative values, and the same
///   sphere with every element reversed two positive ones.
///
/// Curvatures are in reciprocal units of length (1 / R on a sphere of
/// radius R, up to the bias below); angles in radians.
///
/// \par Rows of curvatures
/// principal_curvatures() writes 8 rows per node:
/// | Rows | Content |
/// |------|---------|
/// | 0 .. 2 | `direction_1`, a unit vector, goes with `curvature_1` |
/// | 3 .. 5 | `direction_2`, a unit vector, goes with `curvature_2` |
/// | 6 | `curvature_1`, the curvature of largest magnitude, signed |
/// | 7 | `curvature_2`, the other principal curvature, signed |
///
/// The pairing is that of the edge tensor's eigenvectors: `direction_1`
/// runs along the crease where the surface bends, so it is the direction in
/// which the surface bends LEAST, and `curvature_1` is the curvature ACROSS
/// it. On a cylinder of radius R with outward normals `direction_1` is the
/// axis and `curvature_1` is negative, a little below 1 / R in magnitude;
/// `direction_2` runs round the cylinder with `curvature_2` near 0.
///
/// \par Patch bias
/// The tensor of a patch takes only the edges inside the patch, but the
/// area of all its elements, including those on its rim whose outer edges
/// are not counted. Magnitudes are therefore below 1 / R: with patches of
/// about two edge lengths, near 0.85 / R on a sphere and 0.77 / R on a tube
/// of radius 1, closer to 1 / R as patches grow. Choose `radius` and
/// `max_elements` with this in mind, and compare curvatures with one
/// another rather than with exact values.
///
/// \par Example
/// \code
///   // Two triangles of double area 2 meet along the edge 0-1 (length 2,
///   // along y) at a fold of 0.3 radians. The shared edge is slot 1 of
///   // element 0 and slot 2 of element 1.
///   const double f = 0.3;
///   double xyz[] = {0, 0, 0, 0, 2, 0, 1, 1, 0, -std::cos(f), 1, std::sin(f)};
///   unsigned tri[] = {0, 2, 1, 0, 1, 3};
///   unsigned across[] = {null_id, 1, null_id, null_id, null_id, 0};
///   const auto coords = dense2D<double>::view(xyz, 3, 4);
///   const auto conn = dense2D<unsigned>::view(tri, 3, 2);
///   const auto neighbours = dense2D<unsigned>::view(across, 3, 2);
///   dense2D<double> curvatures;
///   const int status = principal_curvatures(coords, conn, neighbours, 5.0, 3.14159, 40,
///                                           dense2D<unsigned>(), curvatures);
///   // 0; curvatures is 8 x 4. Every node sees both elements: curvature_1
///   // (row 6) is 0.3 = 0.3 * 2 * 2 / (2 + 2), along direction_1 = (0, +-1,
///   // 0), the fold's edge; curvature_2 (row 7) is 0.
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief The second fundamental form at every node of a parametric
/// surface, estimated from first derivatives only.
///
/// Each node integrates by parts over its ring of elements: the boundary
/// integral of (Su . n) and (Sv . n) along the outer edge of every element
/// round the node, divided by the ring's area in the (u, v) plane. The
/// surface position is never needed. On a quadratic surface the estimate is
/// exact at every node with a closed ring, whatever the shape of the ring.
///
/// Nodes that get no estimate hold 0, 0, 0: a node that no element uses,
/// one whose elements are all flat in the (u, v) plane (such an element is
/// skipped for the corner where it is flat), and one whose Su and Sv are
/// parallel, so that n is zero.
///
/// \param[in] uv 2 rows by \#nodes, the parameters (u, v) of each node.
/// \param[in] conn 3 rows (T3) by \#elements in the (u, v) plane, of either
///   orientation or a mix of both: each element's own orientation is
///   accounted for.
/// \param[in] tangents 6 rows by \#nodes. Rows 0 to 2 are Su = dS/du
///   (x, y, z), rows 3 to 5 are Sv = dS/dv.
/// \param[out] forms Rebuilt: emptied on entry (earlier content is not
///   read), then sized to 3 rows by \#nodes. Column v holds e, f, g of node
///   v in rows 0, 1, 2, estimates of -Suu . n, -Suv . n and -Svv . n with n
///   the unit normal Su x Sv of the node. Empty after every refusal. It
///   may share storage with `uv` or `tangents` (be one of them, a shallow
///   copy, or a view over their buffer): every input is read in full before
///   `forms` is emptied, so the result is that of separate arrays, with no
///   copy.
///
/// \retval 0 Success. Also when `conn` is empty (rows * cols of 0); `forms`
///   is then left empty and nothing else is checked.
/// \retval -1 `uv` does not have 2 rows.
/// \retval -2 `conn` does not have 3 rows, or a node ID of it is not a
///   column of `uv` (`null_id` included).
/// \retval -3 `tangents` does not have 6 rows, or its column count is not
///   that of `uv`.
/// \retval -199 No memory for the four accumulators per node or for
///   `forms`.
///
/// \note The accumulators (32 bytes per node) are allocated before the
///   arguments are looked at, so they cost their memory even for an empty
///   `conn`; a shortage there is reported only once the checks have passed.
/// \note A node on the boundary gets a one-sided estimate: the boundary
///   term of the integration is dropped, not corrected, so its values are
///   not reliable.
TESSKIT2D_EXPORT int parametric_curvatures(const dense2D<double>& uv, const dense2D<unsigned>& conn,
                                           const dense2D<double>& tangents, dense2D<double>& forms) noexcept;

/// \brief Principal curvatures and their directions at every node of a
/// triangle mesh in space, from the edge curvature tensor of a patch of
/// elements round each node.
///
/// A patch grows from the first element in column order that holds the
/// node, breadth first across `neighbours`, taking each expansion's new
/// elements in ascending element index. A neighbour joins when its centroid
/// is within `radius` of the node, the edge crossed is not hard, and its
/// normal is within `max_angle` of the element it is reached from. An
/// element turned away is not offered again for this node, even from
/// another side of the patch. Every edge between two elements of the patch
/// then adds beta l v v^T to a 3 by 3 tensor, with v the edge's unit
/// direction, l its length and beta the signed angle between the normals of
/// its two elements. The two eigenvalues of largest magnitude, divided by
/// the patch area, are the curvatures; the third belongs to the normal.
/// When |`curvature_2`| is at most 0.001 |`curvature_1`| (a cylinder, a
/// plane) its eigenvector is left to rounding, and `direction_2` is
/// replaced by the unit vector across `direction_1` in the plane of the
/// node's first element.
///
/// A node gets an all-zero column when no element uses it, when its patch
/// has no area, or when the tensor cannot be diagonalised; a patch of one
/// element gives zero curvatures with directions from the fallback.
///
/// Cost: per node, in proportion to its patch; the working arrays are made
/// once per call and reused for every node. When memory allows, the normal,
/// area and centroid of every element and the dihedral angle of every inner
/// edge are computed once per call (80 bytes per element); otherwise each
/// is recomputed where it is needed, with the same result. On a geodesic
/// sphere of 2 million triangles, with patches of two edge lengths, 2 to
/// 2.2 us per node on one core, a fifth of it in LAPACK's dspev.
///
/// \param[in] coords 3 rows by \#nodes.
/// \param[in] conn 3 rows (T3) by \#elements.
/// \param[in] neighbours 3 rows or more by \#elements: row s names the
///   element across the edge opposite corner s (rows beyond 2 are not
///   read). An entry at or above \#elements, usually `null_id`, means none.
/// \param[in] radius Patches hold elements whose centroid lies within
///   `radius` of the node; its sign does not matter. 0 gives a patch of one
///   element and so zero curvatures.
/// \param[in] max_angle The largest angle, in radians, between the normals
///   of two neighbouring elements of a patch. An element that meets the
///   patch at `max_angle` or more stays out (0 keeps out even coplanar
///   ones). The test works on cos(`max_angle`), so pi turns it off, and an
///   angle above pi acts as the angle below pi of the same cosine. The angle
///   is checked between neighbours, not against the first element, so a
///   patch can follow a smooth bend well beyond `max_angle`.
/// \param[in] max_elements Patches stop growing once they hold this many
///   elements. The count is checked between the expansions of one element's
///   neighbours, so a patch can end up to 2 elements larger. 0 and 1 give a
///   patch of one element.
/// \param[in] hard_edges 2 rows by \#edges, node pairs in either order, or
///   empty. A patch never crosses a hard edge, so a crease between two
///   smooth parts can be kept out of both sides' estimates.
/// \param[out] curvatures Rebuilt once the checks have passed: emptied,
///   then sized to 8 rows by \#nodes and zero where nothing is written; see
///   the file documentation for its rows. It may share storage with
///   `coords` (be `coords`, a shallow copy, or a view over its buffer):
///   `coords` is then read from a private copy, made only when the two can
///   meet, and the result is that of separate arrays.
///
/// \retval 0 Success. Also when `conn` is empty (rows * cols of 0); then
///   nothing else is checked and `curvatures` is untouched.
/// \retval -1 `coords` does not have 3 rows; `curvatures` untouched.
/// \retval -2 `conn` does not have 3 rows, or a node ID of it is not a
///   column of `coords` (`null_id` included); `curvatures` untouched.
/// \retval -3 `neighbours` does not have as many columns as `conn`, or has
///   fewer than 3 rows; `curvatures` untouched.
/// \retval -7 `hard_edges` is neither empty nor 2 rows, or a node ID of it
///   is not a column of `coords`; `curvatures` untouched.
/// \retval -199 No memory for the element marks, the hard-edge set, the
///   private copy of a shared `coords`, `curvatures` or the set of nodes
///   done; `curvatures` empty.
///
/// \note -7 is the position of `hard_edges`, not the next number after -3.
/// \note The row count of `neighbours` is checked although a table of
///   fewer rows could be read elsewhere: every slot of a triangle is read,
///   and a row that is not there would be read outside the array.
/// \note A patch that cannot grow for lack of memory is estimated from the
///   elements it holds, with status 0.
/// \note Directions are eigenvectors, so their signs are whatever LAPACK
///   gives.
TESSKIT2D_EXPORT int principal_curvatures(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                                          const dense2D<unsigned>& neighbours, double radius, double max_angle,
                                          unsigned max_elements, const dense2D<unsigned>& hard_edges,
                                          dense2D<double>& curvatures) noexcept;

} // namespace tesskit2d
} // namespace kelm
