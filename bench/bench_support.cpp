#include "bench_support.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "neighbour_table.h"
#include "tesskit2d/extras.h"

namespace bench {

dense2D<double> grid_nodes(unsigned n, double jitter) {
  dense2D<double> xy(2, (n + 1) * (n + 1));
  std::mt19937 random(1);
  std::uniform_real_distribution<double> shake(-jitter / n, jitter / n);
  for (unsigned j = 0; j <= n; ++j)
    for (unsigned i = 0; i <= n; ++i) {
      const bool inner = i > 0 && i < n && j > 0 && j < n;
      xy(0, j * (n + 1) + i) = double(i) / n + (inner ? shake(random) : 0.0);
      xy(1, j * (n + 1) + i) = double(j) / n + (inner ? shake(random) : 0.0);
    }
  return xy;
}

dense2D<unsigned> grid_quadrangles(unsigned n) {
  dense2D<unsigned> q(4, n * n);
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i) {
      const unsigned a = j * (n + 1) + i, e = j * n + i;
      q(0, e) = a;
      q(1, e) = a + 1;
      q(2, e) = a + n + 2;
      q(3, e) = a + n + 1;
    }
  return q;
}

dense2D<unsigned> grid_triangles(unsigned n) {
  dense2D<unsigned> t(3, 2 * n * n);
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i) {
      const unsigned a = j * (n + 1) + i, b = a + 1, c = a + n + 2, d = a + n + 1, e = 2 * (j * n + i);
      const unsigned cell[2][3] = {{a, b, c}, {a, c, d}}, flipped[2][3] = {{a, b, d}, {b, c, d}};
      const auto& pick = (i + j) % 2 ? flipped : cell;
      for (unsigned k = 0; k < 2; ++k)
        for (unsigned r = 0; r < 3; ++r)
          t(r, e + k) = pick[k][r];
    }
  return t;
}

write_baseline::write_baseline(double bytes) : touched_(1, static_cast<unsigned>(bytes / sizeof(double)), 0.0) {}

void write_baseline::measure(benchmark::State&) {
  const unsigned n = touched_.cols;
  dense2D<double> written;
  fresh_time_.time([&] {
    dense2D<double> fresh(1, n);
    std::fill_n(fresh.column(0), n, 1.0);
    benchmark::DoNotOptimize(fresh.column(0));
    benchmark::ClobberMemory();
    written = fresh;
  });
  // The old storage is released outside the timing, as the export's
  // outputs are.
  touched_ = written;
  touched_time_.time([&] {
    std::fill_n(touched_.column(0), n, 2.0);
    benchmark::DoNotOptimize(touched_.column(0));
    benchmark::ClobberMemory();
  });
}

void write_baseline::report(benchmark::State& state) const {
  fresh_time_.report(state, "x_fresh");
  touched_time_.report(state, "x_touched");
}

void renumber(dense2D<double>& nodes, dense2D<unsigned>& elements, numbering order) {
  if (order == numbering::generated) return;
  kelm::dense1D<unsigned> node_order, element_order;
  if (order == numbering::curve) {
    kelm::tesskit2d::extras::renumber(nodes, elements, nullptr, nullptr, node_order, element_order);
    return;
  }
  std::mt19937 random(7);
  std::vector<unsigned> new_id(nodes.cols), element(elements.cols);
  std::iota(new_id.begin(), new_id.end(), 0u);
  std::iota(element.begin(), element.end(), 0u);
  std::shuffle(new_id.begin(), new_id.end(), random);
  std::shuffle(element.begin(), element.end(), random);
  dense2D<double> moved(nodes.rows, nodes.cols);
  for (unsigned j = 0; j < nodes.cols; ++j)
    for (unsigned i = 0; i < nodes.rows; ++i)
      moved(i, new_id[j]) = nodes(i, j);
  dense2D<unsigned> shuffled(elements.rows, elements.cols);
  for (unsigned j = 0; j < elements.cols; ++j)
    for (unsigned i = 0; i < elements.rows; ++i) {
      const unsigned id = elements(i, element[j]);
      shuffled(i, j) = id == kelm::tesskit2d::null_id ? id : new_id[id];
    }
  nodes = moved;
  elements = shuffled;
}

located_mesh make_located_mesh(unsigned n, double jitter, numbering order) {
  dense2D<double> nodes = grid_nodes(n, jitter);
  located_mesh m;
  m.conn = grid_triangles(n);
  renumber(nodes, m.conn, order);
  m.neighbours = triangle_neighbours(m.conn);
  m.n_background = nodes.cols;
  const unsigned all = 2 * nodes.cols;
  m.xy = dense2D<double>(2, all);
  std::mt19937 random(2);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (unsigned j = 0; j < all; ++j)
    for (unsigned i = 0; i < 2; ++i)
      m.xy(i, j) = j < nodes.cols ? nodes(i, j) : unit(random);
  m.ancestors = kelm::dense1D<unsigned>(all, kelm::tesskit2d::null_id);
  for (unsigned e = 0; e < m.conn.cols; ++e)
    for (unsigned r = 0; r < 3; ++r)
      m.ancestors[m.conn(r, e)] = e;
  m.targets = kelm::dense1D<unsigned>(nodes.cols);
  for (unsigned k = 0; k < nodes.cols; ++k)
    m.targets[k] = nodes.cols + k;
  return m;
}

} // namespace bench
