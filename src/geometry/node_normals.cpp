#include <cmath>

#include "foundation/output_clear.h"
#include "foundation/prefetch.h"
#include "foundation/status.h"
#include "geometry/normal_input.h"
#include "tesskit2d/normals.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The running sums of one call: the node normals being built (3 packed rows)
// and, when `Weighted`, the weight gathered at each node.
template <bool Weighted> struct accumulators {
  double* normal;
  double* weight;

  void add(unsigned id, const vector_fixed<double, 3>& n, double w) const noexcept {
    double* a = normal + 3 * std::size_t(id);
    if (Weighted) weight[id] += w;
    a[0] += w * n.v[0];
    a[1] += w * n.v[1];
    a[2] += w * n.v[2];
  }
  void replace(unsigned id, const vector_fixed<double, 3>& n, double size) const noexcept {
    double* a = normal + 3 * std::size_t(id);
    weight[id] = size;
    a[0] = n.v[0];
    a[1] = n.v[1];
    a[2] = n.v[2];
  }
};

// Visits every corner of every element in column and row order with the
// element's unit normal and its size L. The kind test is settled per call,
// so a pure triangle mesh carries no test of row 3.
template <bool Mixed, class Visit>
void each_corner(const dense2D<double>& coords, const dense2D<unsigned>& conn, Visit visit) noexcept {
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < conn.cols; ++j) {
    ahead.at(j);
    const unsigned* c = conn.column(j);
    vector_fixed<double, 3> n = raw_normal<Mixed>(coords, c);
    const double size = normalise(n, squared_length(n));
    const unsigned corners = Mixed && c[3] != null_id ? 4 : 3;
    for (unsigned k = 0; k < corners; ++k)
      visit(c[k], n, size);
  }
}

template <class Visit>
void each_corner(const dense2D<double>& coords, const dense2D<unsigned>& conn, Visit visit) noexcept {
  if (conn.rows == 3)
    each_corner<false>(coords, conn, visit);
  else
    each_corner<true>(coords, conn, visit);
}

// The weighted sums. pow(L, 0) is 1 and pow(L, 1) is L for every L, NaN and
// infinities included, so the two common powers skip the call to pow.
template <bool Weighted>
void weighted_sums(const dense2D<double>& coords, const dense2D<unsigned>& conn, double power,
                   const accumulators<Weighted>& acc) noexcept {
  const bool finite = power > -max_double && power < max_double;
  if (!finite || power == 0.0) {
    each_corner(coords, conn, [&](unsigned id, const vector_fixed<double, 3>& n, double) { acc.add(id, n, 1.0); });
  } else if (power == 1.0) {
    each_corner(coords, conn,
                [&](unsigned id, const vector_fixed<double, 3>& n, double size) { acc.add(id, n, size); });
  } else {
    each_corner(coords, conn, [&](unsigned id, const vector_fixed<double, 3>& n, double size) {
      acc.add(id, n, std::pow(size, power));
    });
  }
}

// The two extreme modes. An element that does not win its node is still
// added with weight 1, which raises the node's weight by 1 for the elements
// that follow: the result is a running contest against that raised weight,
// not a selection of the largest or smallest element.
void largest_element(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                     const accumulators<true>& acc) noexcept {
  each_corner(coords, conn, [&](unsigned id, const vector_fixed<double, 3>& n, double size) {
    if (size > acc.weight[id])
      acc.replace(id, n, size);
    else
      acc.add(id, n, 1.0);
  });
}

void smallest_element(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                      const accumulators<true>& acc) noexcept {
  each_corner(coords, conn, [&](unsigned id, const vector_fixed<double, 3>& n, double size) {
    if (size < acc.weight[id] || acc.weight[id] == 0.0)
      acc.replace(id, n, size);
    else
      acc.add(id, n, 1.0);
  });
}

// Turns the sums into means: each node's normal times the reciprocal of its
// weight. Each node's result depends on its own sums alone, so one pass over
// the nodes in ID order gives what a pass over the corners of the elements
// would, with every used node treated once; nodes that no element uses have
// a weight of 0 and are skipped.
void finish_means(unsigned n_nodes, const accumulators<true>& acc) noexcept {
  for (unsigned i = 0; i < n_nodes; ++i) {
    const double w = acc.weight[i];
    if (w == 0.0) continue;
    double* a = acc.normal + 3 * std::size_t(i);
    const double scale = 1.0 / w;
    a[0] *= scale;
    a[1] *= scale;
    a[2] *= scale;
  }
}

// Turns the sums into unit vectors, skipping nodes of weight 0 when the
// weights are kept. Without them the test is not needed: a node of weight 0
// holds a sum of zero vectors or of finite vectors times 0, which
// normalising leaves alone, as long as no weight of 0 can meet a non-finite
// normal. Only a negative finite power gives such a weight (an infinite
// size to that power), and it keeps the weights.
template <bool Weighted> void finish_units(unsigned n_nodes, const accumulators<Weighted>& acc) noexcept {
  for (unsigned i = 0; i < n_nodes; ++i) {
    if (Weighted && acc.weight[i] == 0.0) continue;
    double* a = acc.normal + 3 * std::size_t(i);
    const double s = a[0] * a[0] + a[1] * a[1] + a[2] * a[2];
    if (s == 0.0 || s == 1.0) continue;
    const double scale = 1.0 / std::sqrt(s);
    a[0] *= scale;
    a[1] *= scale;
    a[2] *= scale;
  }
}

} // namespace

int normals(const dense2D<double>& given_coords, const dense2D<unsigned>& conn, double power, bool unit,
            dense2D<double>& node_normals) {
  std::optional<separate_input<dense2D<double>>> points;
  const int started = start_normals(given_coords, conn, points, node_normals);
  if (started != 0 || !points) return started;
  const dense2D<double>& coords = points->get();

  const unsigned n_nodes = coords.cols;
  if (!node_normals.resize(3, n_nodes, 0.0)) return status::out_of_memory;
  // Freshly sized, node_normals is packed: node i is at 3 i.
  double* const sums = node_normals.column(0);

  // Unit results of the plain modes need no weights (see finish_units),
  // which saves a scattered write per corner and an array per call.
  const bool extreme = power == max_double || power == -max_double;
  if (unit && !extreme && !(power < 0 && std::isfinite(power))) {
    const accumulators<false> acc{sums, nullptr};
    weighted_sums(coords, conn, power, acc);
    finish_units(n_nodes, acc);
    return 0;
  }

  dense1D<double> node_weight;
  if (!node_weight.resize(n_nodes, 0.0)) {
    clear_output(node_normals);
    return status::out_of_memory;
  }
  const accumulators<true> acc{sums, node_weight.begin()};
  // Neither extreme mode has a final pass, whatever `unit` says.
  if (power == max_double) {
    largest_element(coords, conn, acc);
    return 0;
  }
  if (power == -max_double) {
    smallest_element(coords, conn, acc);
    return 0;
  }
  weighted_sums(coords, conn, power, acc);
  if (unit)
    finish_units(n_nodes, acc);
  else
    finish_means(n_nodes, acc);
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
