#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "report.h"
#include "steps.h"
#include "tesskit2d/curvature.h"
#include "tesskit2d/metric_generation.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

const double pi = std::acos(-1.0);

// A grid of nu by nv nodes wrapped round in u (and in v when `closed_v`),
// cells cut into two triangles counter-clockwise in (u, v). Node (i, j) is
// j * nu + i; `place` gives its position in space.
struct wrapped_grid {
  dense2D<double> xyz;
  dense2D<unsigned> tri, nb;
  unsigned nu, nv;
};

template <class Place> wrapped_grid make_grid(unsigned nu, unsigned nv, bool closed_v, Place place) {
  const unsigned cells_v = closed_v ? nv : nv - 1;
  wrapped_grid g{dense2D<double>(3, nu * nv), dense2D<unsigned>(3, 2 * nu * cells_v), {}, nu, nv};
  for (unsigned j = 0; j < nv; ++j)
    for (unsigned i = 0; i < nu; ++i)
      place(i, j, g.xyz.column(j * nu + i));
  unsigned e = 0;
  for (unsigned j = 0; j < cells_v; ++j)
    for (unsigned i = 0; i < nu; ++i) {
      const unsigned a = j * nu + i, b = j * nu + (i + 1) % nu, c = (j + 1) % nv * nu + (i + 1) % nu,
                     d = (j + 1) % nv * nu + i;
      const unsigned cells[2][3] = {{a, b, c}, {a, c, d}};
      for (const auto& t : cells) {
        for (unsigned r = 0; r < 3; ++r)
          g.tri(r, e) = t[r];
        ++e;
      }
    }
  // The library takes neighbour tables as input; sorting the sides of all
  // elements by their node pair puts the two sides of each edge together.
  std::vector<std::pair<std::uint64_t, unsigned>> sides;
  for (unsigned t = 0; t < e; ++t)
    for (unsigned s = 0; s < 3; ++s) {
      const auto p = std::minmax(g.tri((s + 1) % 3, t), g.tri((s + 2) % 3, t));
      sides.push_back({std::uint64_t(p.first) << 32 | p.second, 3 * t + s});
    }
  std::sort(sides.begin(), sides.end());
  g.nb = dense2D<unsigned>(3, e, null_id);
  for (std::size_t q = 0; q + 1 < sides.size(); ++q)
    if (sides[q].first == sides[q + 1].first) {
      const unsigned a = sides[q].second, b = sides[q + 1].second;
      g.nb(a % 3, a / 3) = b / 3;
      g.nb(b % 3, b / 3) = a / 3;
    }
  return g;
}

// The mean of rows 6 and 7 of `k` over the nodes of row j of the grid.
std::pair<double, double> row_mean(const dense2D<double>& k, const wrapped_grid& g, unsigned j) {
  double k1 = 0, k2 = 0;
  for (unsigned i = 0; i < g.nu; ++i) {
    k1 += k(6, j * g.nu + i);
    k2 += k(7, j * g.nu + i);
  }
  return {k1 / g.nu, k2 / g.nu};
}

// A torus of tube radius r = 0.5 round a circle of radius R = 2: at the
// outer equator both curvatures bend away from the outward normal,
// -1 / r = -2 and -1 / (R + r) = -0.4; at the inner equator the second one
// bends towards it, +1 / (R - r) = +0.667.
void torus_curvatures(const wrapped_grid& torus) {
  step s("principal_curvatures, torus");
  dense2D<double> k;
  const double edge = 2 * pi * 2.5 / torus.nu;
  const int status = principal_curvatures(torus.xyz, torus.tri, torus.nb, 2 * edge, pi / 4, 40, {}, k);
  const auto outer = row_mean(k, torus, 0), inner = row_mean(k, torus, torus.nv / 2);
  s.done(status, "%u nodes, %u triangles", torus.xyz.cols, torus.tri.cols);
  std::printf("    outer equator  curvature_1 %7.3f (exact -2.000)  curvature_2 %7.3f (exact -0.400)\n", outer.first,
              outer.second);
  std::printf("    inner equator  curvature_1 %7.3f (exact -2.000)  curvature_2 %7.3f (exact +0.667)\n", inner.first,
              inner.second);
  std::printf("    (magnitudes stay below the exact ones: the patch's rim adds area but no edges)\n");
}

// A cylinder whose cross-section is a D: a half circle of radius 1 closed
// by its flat diameter, with creases where the two meet. Patches that
// cross a crease take its right angle for curvature; hard edges along the
// creases keep each side to itself.
void creased_cylinder() {
  const unsigned round = 48, flat = 16, nu = round + flat, nv = 21;
  const wrapped_grid d = make_grid(nu, nv, false, [&](unsigned i, unsigned j, double* p) {
    if (i <= round) {
      const double t = -pi / 2 + pi * i / round;
      p[0] = std::cos(t), p[1] = std::sin(t);
    } else {
      p[0] = 0, p[1] = 1 - 2.0 * (i - round) / flat;
    }
    p[2] = 0.1 * j;
  });
  dense2D<unsigned> hard(2, 2 * (nv - 1));
  for (unsigned j = 0; j + 1 < nv; ++j)
    for (unsigned c = 0; c < 2; ++c) {
      hard(0, 2 * j + c) = j * nu + c * round;
      hard(1, 2 * j + c) = (j + 1) * nu + c * round;
    }
  const unsigned mid = nv / 2 * nu;
  for (const bool with_hard : {false, true}) {
    step s(with_hard ? "principal_curvatures, D with hard edges" : "principal_curvatures, D without");
    dense2D<double> k;
    const int status =
        principal_curvatures(d.xyz, d.tri, d.nb, 0.15, pi, 40, with_hard ? hard : dense2D<unsigned>(), k);
    s.done(status, "%u nodes, %u hard edges", d.xyz.cols, with_hard ? hard.cols : 0);
    std::printf("    crease %7.3f %7.3f   round side %7.3f (axis |z| %.3f)   flat side %7.3f\n", k(6, mid + round),
                k(6, mid), k(6, mid + round / 2), std::fabs(k(2, mid + round / 2)), k(6, mid + round + flat / 2));
  }
}

// Sizes of the field at a node of the torus: along the surface normal and
// along the tube's circle, whose ratio is the normal size asked for.
void torus_metrics(const wrapped_grid& torus) {
  for (const double normal_size : {-0.1, 0.01}) {
    step s(normal_size < 0 ? "metrics_gen_aniso3d, torus, ratio 0.1" : "metrics_gen_aniso3d, torus, 0.01 across");
    dense2D<double> m;
    const int status = metrics_gen_aniso3d(torus.xyz, torus.tri, normal_size, m);
    double lo = 1e300, hi = 0, across_lo = 1e300, across_hi = 0;
    for (unsigned j = 0; status == 0 && j < torus.nv; ++j) {
      const double v = 2 * pi * j / torus.nv, n[3] = {std::cos(v), 0, std::sin(v)},
                   t[3] = {-std::sin(v), 0, std::cos(v)};
      const double* c = m.column(j * torus.nu); // the nodes at u = 0
      const auto form = [&](const double* x) {
        return c[0] * x[0] * x[0] + 2 * c[1] * x[0] * x[1] + c[2] * x[1] * x[1] + 2 * c[3] * x[0] * x[2] +
               2 * c[4] * x[1] * x[2] + c[5] * x[2] * x[2];
      };
      const double hn = 1 / std::sqrt(form(n)), ht = 1 / std::sqrt(form(t));
      lo = std::min(lo, hn / ht), hi = std::max(hi, hn / ht);
      across_lo = std::min(across_lo, hn), across_hi = std::max(across_hi, hn);
    }
    s.done(status, "%u columns", m.cols);
    std::printf("    size across / size along the tube: %.4f .. %.4f   size across: %.5f .. %.5f\n", lo, hi, across_lo,
                across_hi);
  }
  std::printf("    (a node meets the metrics of elements whose normals tilt with the curvature, and their\n"
              "     intersection is tighter than each one, across the surface and along it)\n");
}

} // namespace

void curvature_steps() {
  section("Curvature and metric generation");
  const wrapped_grid torus = make_grid(200, 50, true, [](unsigned i, unsigned j, double* p) {
    const double u = 2 * pi * i / 200, v = 2 * pi * j / 50, ring = 2 + 0.5 * std::cos(v);
    p[0] = ring * std::cos(u), p[1] = ring * std::sin(u), p[2] = 0.5 * std::sin(v);
  });
  torus_curvatures(torus);
  creased_cylinder();
  torus_metrics(torus);
}

} // namespace demo
