#include "foundation/element_conventions.h"
#include "foundation/prefetch.h"
#include "geometry/primitives.h"
#include "tesskit2d/measures.h"

namespace kelm {
namespace tesskit2d {
namespace {

// Twice the area of a mesh of one kind of column; the dimension and the
// kinds are settled once per call so that the loop carries no dispatch that
// does not depend on the element.
double triangles_2d(const dense2D<double>& coords, const dense2D<unsigned>& conn) noexcept {
  double sum = 0.0;
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < conn.cols; ++j) {
    ahead.at(j);
    const unsigned* c = conn.column(j);
    sum += triangle_double_area_2d(coords.column(c[0]), coords.column(c[1]), coords.column(c[2]));
  }
  return sum;
}

double triangles_3d(const dense2D<double>& coords, const dense2D<unsigned>& conn) noexcept {
  double sum = 0.0;
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < conn.cols; ++j) {
    ahead.at(j);
    const unsigned* c = conn.column(j);
    sum += triangle_double_area_3d(coords.column(c[0]), coords.column(c[1]), coords.column(c[2]));
  }
  return sum;
}

// A planar quadrangle counts the cross product of its diagonals, signed like
// a triangle.
double mixed_2d(const dense2D<double>& coords, const dense2D<unsigned>& conn) noexcept {
  double sum = 0.0;
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < conn.cols; ++j) {
    ahead.at(j);
    const unsigned* c = conn.column(j);
    const double *p0 = coords.column(c[0]), *p1 = coords.column(c[1]), *p2 = coords.column(c[2]);
    if (c[3] == null_id) {
      sum += triangle_double_area_2d(p0, p1, p2);
    } else {
      const double* p3 = coords.column(c[3]);
      sum += (p2[0] - p0[0]) * (p3[1] - p1[1]) - (p2[1] - p0[1]) * (p3[0] - p1[0]);
    }
  }
  return sum;
}

double mixed_3d(const dense2D<double>& coords, const dense2D<unsigned>& conn) noexcept {
  double sum = 0.0;
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < conn.cols; ++j) {
    ahead.at(j);
    const unsigned* c = conn.column(j);
    const double *p0 = coords.column(c[0]), *p1 = coords.column(c[1]), *p2 = coords.column(c[2]);
    sum +=
        c[3] == null_id ? triangle_double_area_3d(p0, p1, p2) : quadrangle_double_area(p0, p1, p2, coords.column(c[3]));
  }
  return sum;
}

} // namespace

int area(const dense2D<double>& coords, const dense2D<unsigned>& conn, double& total_area) noexcept {
  total_area = 0.0;
  if (conn.rows * conn.cols == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (conn.rows != 3 && conn.rows != 4) return -2;
  if (!surface_ids_valid(conn, coords.cols)) return -2;

  const bool plane = coords.rows == 2;
  double twice;
  if (conn.rows == 3)
    twice = plane ? triangles_2d(coords, conn) : triangles_3d(coords, conn);
  else
    twice = plane ? mixed_2d(coords, conn) : mixed_3d(coords, conn);
  total_area = twice / 2;
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
