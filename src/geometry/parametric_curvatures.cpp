#include <cstdint>

#include "foundation/output_clear.h"
#include "foundation/status.h"
#include "geometry/orthonormal_frame.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/curvature.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The four accumulators of a node side by side, so that one corner's update
// touches one cache line.
struct accumulators {
  double weight, e, f, g;
};
constexpr unsigned per_node = sizeof(accumulators) / sizeof(double);

} // namespace

int parametric_curvatures(const dense2D<double>& uv, const dense2D<unsigned>& conn, const dense2D<double>& tangents,
                          dense2D<double>& forms) noexcept {
  // `forms` may share storage with `uv` or `tangents`, even be one of them.
  // Every input is therefore read in full, into the accumulators, before
  // `forms` is emptied and sized: the result is that of separate arrays
  // with no copy of anything.
  const auto refuse = [&](int status) {
    clear_output(forms);
    return status;
  };
  // The accumulators are set up before the arguments are looked at; a
  // shortage of memory here is reported only once the arguments have passed.
  const unsigned n_nodes = uv.cols;
  dense1D<double> work;
  const bool have_work = std::uint64_t(n_nodes) * per_node <= 0xFFFFFFFFu && work.resize(n_nodes * per_node, 0.0);

  if (conn.rows * conn.cols == 0) return refuse(status::ok);
  if (uv.rows != 2) return refuse(-1);
  if (!kelm::tesskit::check_IDs(conn, T3, n_nodes)) return refuse(-2);
  if (tangents.rows != 6 || tangents.cols != n_nodes) return refuse(-3);
  if (!have_work) return refuse(status::out_of_memory);

  accumulators* acc = reinterpret_cast<accumulators*>(work.begin());
  for (unsigned el = 0; el < conn.cols; ++el) {
    const unsigned* c = conn.column(el);
    for (unsigned k = 0; k < 3; ++k) {
      // The corner `l` collects the estimate; `i` to `j` is its opposite edge.
      const unsigned i = c[k], j = c[(k + 1) % 3], l = c[(k + 2) % 3];
      const double *ui = uv.column(i), *uj = uv.column(j), *ul = uv.column(l);
      const double au = ui[0] - ul[0], av = ui[1] - ul[1];
      const double bu = uj[0] - ul[0], bv = uj[1] - ul[1];
      // (p, q) is the edge from j to i turned a quarter turn: its outer
      // normal, scaled by its length, when the element runs clockwise.
      const double p = av - bv, q = bu - au;
      const double d = q * av + p * au;
      if (d == 0.0) continue;
      const double area2 = std::fabs(au * bv - bu * av);
      accumulators& node = acc[l];
      node.weight += area2;

      const double *tl = tangents.column(l), *ti = tangents.column(i), *tj = tangents.column(j);
      double n[3] = {tl[1] * tl[5] - tl[2] * tl[4], tl[2] * tl[3] - tl[0] * tl[5], tl[0] * tl[4] - tl[1] * tl[3]};
      normalise(n);
      // s = -1 on a counter-clockwise element and +1 on a clockwise one turns
      // (p, q) outward in both cases, so the orientation drops out.
      const double s = area2 / d;
      const double tu = (n[0] * (ti[0] + tj[0]) + n[1] * (ti[1] + tj[1]) + n[2] * (ti[2] + tj[2])) * s;
      const double tv = (n[0] * (ti[3] + tj[3]) + n[1] * (ti[4] + tj[4]) + n[2] * (ti[5] + tj[5])) * s;
      // Integration by parts over the ring: the integral of Suu . n over the
      // ring is the boundary integral of (Su . n) along the outer normal's u
      // component, and likewise for Svv and the mixed term. The normal of the
      // centre node makes its own tangent terms vanish.
      node.e -= tu * p;
      node.g -= tv * q;
      node.f -= (tu * q + tv * p) * 0.5;
    }
  }

  clear_output(forms);
  if (!forms.resize(3, n_nodes)) return refuse(status::out_of_memory);
  for (unsigned v = 0; v < n_nodes; ++v) {
    const accumulators& node = acc[v];
    const double w = node.weight > 0.0 ? 1.0 / node.weight : node.weight;
    double* out = forms.column(v);
    out[0] = node.e * w;
    out[1] = node.f * w;
    out[2] = node.g * w;
  }
  return status::ok;
}

} // namespace tesskit2d
} // namespace kelm
