#pragma once
// The geodesic unit sphere on which curvature and metric generation are
// measured.

#include "bench_support.h"
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

/// The geodesic sphere of the surface benchmarks (`make_geodesic_sphere`)
/// in the numbering `order`, with its neighbour table and mean edge length.
curvature_sphere make_curvature_sphere(unsigned n, numbering order = numbering::generated);

} // namespace bench
