#pragma once
// The geodesic unit sphere on which curvature and metric generation are
// measured.

#include "tesskit2d/mesh.h"

namespace bench {

using kelm::dense2D;

/// A triangle mesh of the unit sphere with its neighbour table.
struct curvature_sphere {
  dense2D<double> coords;       ///< 3 rows, nodes on the unit sphere
  dense2D<unsigned> conn;       ///< 3 rows, counter-clockwise seen from outside
  dense2D<unsigned> neighbours; ///< row s across the edge opposite corner s
  double mean_edge = 0;         ///< mean length over all edges, each counted once
};

/// The icosahedron with every face split n times along each edge (n^2
/// triangles per face) and the nodes projected on the unit sphere:
/// 20 n^2 triangles and 10 n^2 + 2 nodes; n = 316 gives 1,997,120 triangles.
/// Nodes are numbered vertices first, then edges, then face interiors; the
/// triangles face by face, row by row.
curvature_sphere make_curvature_sphere(unsigned n);

} // namespace bench
