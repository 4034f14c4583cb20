#include <cmath>
#include <map>
#include <random>
#include <utility>

#include "neighbours.h"
#include "report.h"
#include "steps.h"
#include "tesskit2d/connectivity.h"
#include "tesskit2d/normals.h"
#include "tesskit2d/offset.h"
#include "tesskit2d/orientation.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

const double pi = std::acos(-1.0);

// A unit sphere in k meridians and m bands of triangles: node 0 the north
// pole, node 1 the south pole, then the rings from north to south. Every
// other triangle is turned inside out, so the mesh needs a reorientation.
struct surface {
  dense2D<double> xyz;
  dense2D<unsigned> tri;
};

surface scrambled_sphere(unsigned k, unsigned m) {
  surface s{dense2D<double>(3, 2 + (m - 1) * k, 0.0), dense2D<unsigned>(3, 2 * (m - 1) * k)};
  s.xyz(2, 0) = 1;
  s.xyz(2, 1) = -1;
  const auto ring = [&](unsigned b, unsigned a) { return b == 0 ? 0 : b == m ? 1 : 2 + (b - 1) * k + a % k; };
  for (unsigned b = 1; b < m; ++b)
    for (unsigned a = 0; a < k; ++a) {
      const double t = pi * b / m, p = 2 * pi * a / k;
      const unsigned id = ring(b, a);
      s.xyz(0, id) = std::sin(t) * std::cos(p);
      s.xyz(1, id) = std::sin(t) * std::sin(p);
      s.xyz(2, id) = std::cos(t);
    }
  unsigned e = 0;
  std::mt19937 random(1);
  const auto put = [&](unsigned p, unsigned q, unsigned r) {
    const bool turn = e > 0 && random() % 2;
    s.tri(0, e) = turn ? r : p, s.tri(1, e) = q, s.tri(2, e) = turn ? p : r;
    ++e;
  };
  // Each band cell (b, a) as counter-clockwise triangles seen from outside;
  // the pole bands keep only the triangle that is not flat.
  for (unsigned b = 0; b < m; ++b)
    for (unsigned a = 0; a < k; ++a) {
      const unsigned nw = ring(b, a), ne = ring(b, a + 1), sw = ring(b + 1, a), se = ring(b + 1, a + 1);
      if (b + 1 < m) put(sw, se, nw);
      if (b > 0) put(se, ne, nw);
    }
  return s;
}

// The volume a closed, outward-oriented triangle surface encloses: the sum
// of the signed tetrahedra from the origin, p0 . (p1 x p2) / 6.
double enclosed_volume(const dense2D<double>& xyz, const dense2D<unsigned>& tri) {
  double v = 0;
  for (unsigned j = 0; j < tri.cols; ++j) {
    const double *a = xyz.column(tri(0, j)), *b = xyz.column(tri(1, j)), *c = xyz.column(tri(2, j));
    v += a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) + a[2] * (b[0] * c[1] - b[1] * c[0]);
  }
  return v / 6;
}

} // namespace

void surface_steps() {
  section("Surface normals, offsetting and connected elements");
  surface s = scrambled_sphere(180, 90);
  dense2D<unsigned> nb = triangle_neighbours(s.tri);
  {
    step st("mesh_reorient + normals per node");
    // Element 0 is outward, so the whole sphere follows it.
    const int flips = mesh_reorient(s.tri, nb, 0, 0);
    dense2D<double> n;
    unsigned unit = 0, outward = 0;
    const int status = flips < 0 ? flips : normals(s.xyz, s.tri, 1.0, true, n);
    for (unsigned j = 0; status == 0 && j < n.cols; ++j) {
      const double *v = n.column(j), *p = s.xyz.column(j);
      unit += std::fabs(v[0] * v[0] + v[1] * v[1] + v[2] * v[2] - 1) < 1e-12;
      outward += v[0] * p[0] + v[1] * p[1] + v[2] * p[2] > 0.99;
    }
    st.done(status, "%d flips; %u nodes: %u unit, %u within 8 deg out", flips, s.xyz.cols, unit, outward);
  }
  {
    step st("get_connected_elements: valences");
    dense1D<unsigned> ancestors(s.xyz.cols, null_id), offsets, elements;
    for (unsigned j = s.tri.cols; j-- > 0;)
      for (unsigned r = 0; r < 3; ++r)
        ancestors[s.tri(r, j)] = j;
    const int status = get_connected_elements(s.tri, nb, ancestors, offsets, elements);
    std::map<unsigned, unsigned> histogram;
    for (unsigned i = 0; status == 0 && i + 1 < offsets.size; ++i)
      ++histogram[offsets[i + 1] - offsets[i]];
    char text[128] = "", *at = text;
    for (const auto& kv : histogram)
      at += std::snprintf(at, text + sizeof text - at, "%u x %u  ", kv.second, kv.first);
    st.done(status, "%u nodes by valence: %s", offsets.size - 1, text);
  }
  {
    step st("copy_with_offset by 0.1: a shell");
    const double d = 0.1, inner = enclosed_volume(s.xyz, s.tri);
    dense2D<unsigned> outer_tri;
    const int status = copy_with_offset(s.xyz, s.tri, d, outer_tri);
    const double shell = status == 0 ? enclosed_volume(s.xyz, outer_tri) - inner : 0;
    st.done(status, "shell volume %.5f, 4/3 pi ((1+d)^3 - 1) = %.5f", shell, 4 * pi / 3 * (std::pow(1 + d, 3) - 1));
  }
}

} // namespace demo
