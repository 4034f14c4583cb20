#pragma once
// The unit geodesic sphere that the surface benchmarks share: an
// icosahedron whose faces are split n times along each edge, with every node
// projected onto the sphere.

#include "tesskit2d/mesh.h"

namespace bench {

using kelm::dense2D;

struct geodesic_sphere {
  dense2D<double> coords; // 3 rows; every node at distance 1 from the origin
  dense2D<unsigned> conn; // 3 rows, counter-clockwise seen from outside
};

/// 20 n^2 triangles on 10 n^2 + 2 nodes; n = 316 gives 1,997,120 triangles
/// and 998,562 nodes. Nodes are numbered the 12 corners first, then the
/// inner nodes of the 30 icosahedron edges edge by edge, then the inner
/// nodes of each face row by row; triangles go face by face, row by row.
/// A node shared by faces is computed once from its own edge, so the
/// surface closes exactly.
geodesic_sphere make_geodesic_sphere(unsigned n);

} // namespace bench
