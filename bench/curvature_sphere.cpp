#include "curvature_sphere.h"

#include <cmath>

#include "geodesic_sphere.h"
#include "neighbour_table.h"

namespace bench {

curvature_sphere make_curvature_sphere(unsigned n, numbering order) {
  geodesic_sphere g = make_geodesic_sphere(n);
  renumber(g.coords, g.conn, order);
  curvature_sphere s{g.coords, g.conn, triangle_neighbours(g.conn), 0};
  // Each inner edge is seen from both sides: count it from the side of its
  // higher element only.
  double total = 0;
  unsigned edges = 0;
  for (unsigned j = 0; j < s.conn.cols; ++j)
    for (unsigned k = 0; k < 3; ++k) {
      const unsigned other = s.neighbours(k, j);
      if (other != kelm::tesskit2d::null_id && other > j) continue;
      const double *p = s.coords.column(s.conn((k + 1) % 3, j)), *q = s.coords.column(s.conn((k + 2) % 3, j));
      total += std::sqrt((p[0] - q[0]) * (p[0] - q[0]) + (p[1] - q[1]) * (p[1] - q[1]) + (p[2] - q[2]) * (p[2] - q[2]));
      ++edges;
    }
  s.mean_edge = total / edges;
  return s;
}

} // namespace bench
