#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <utility>

#include "meshes.h"
#include "report.h"
#include "steps.h"
#include "tesskit2d/metrics.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

// A boundary layer along the wall y = 0: fine across it (size 1e-3 at the
// wall, growing with the distance), coarse along it.
double size_along(double) { return 0.05; }
double size_across(double y) { return 0.001 + 0.1 * y; }

// A 2 by 2 metric with sizes hx along x and hy along y: diag(1/hx^2, 1/hy^2).
void put_layer_metric(dense2D<double>& m, unsigned j, double y) {
  m(0, j) = 1 / (size_along(y) * size_along(y));
  m(1, j) = 0;
  m(2, j) = 1 / (size_across(y) * size_across(y));
}

// Smallest and largest size along x and along y over columns [first, last):
// for axis-aligned metrics, h = 1 / sqrt of the diagonal entry.
void size_range(const dense2D<double>& m, unsigned first, unsigned last, double range[2][2]) {
  range[0][0] = range[1][0] = 1e300;
  range[0][1] = range[1][1] = 0;
  for (unsigned j = first; j < last; ++j)
    for (unsigned a = 0; a < 2; ++a) {
      const double h = 1 / std::sqrt(m(a == 0 ? 0 : 2, j));
      range[a][0] = std::min(range[a][0], h);
      range[a][1] = std::max(range[a][1], h);
    }
}

// The grid's cells as two triangles each, and the element across each edge
// (edge s opposite corner s), matched through a map of node pairs.
void triangles_and_neighbours(unsigned n, dense2D<unsigned>& tris, dense2D<unsigned>& across) {
  const dense2D<unsigned> quads = grid_quadrangles(n);
  tris.resize(3, 2 * quads.cols);
  for (unsigned e = 0; e < quads.cols; ++e) {
    const unsigned q[4] = {quads(0, e), quads(1, e), quads(2, e), quads(3, e)};
    const unsigned t[2][3] = {{q[0], q[1], q[2]}, {q[0], q[2], q[3]}};
    for (unsigned k = 0; k < 2; ++k)
      for (unsigned r = 0; r < 3; ++r)
        tris(r, 2 * e + k) = t[k][r];
  }
  across.resize(3, tris.cols, null_id);
  std::map<std::pair<unsigned, unsigned>, unsigned> open; // edge -> 3 element + side
  for (unsigned e = 0; e < tris.cols; ++e)
    for (unsigned s = 0; s < 3; ++s) {
      const unsigned a = tris((s + 1) % 3, e), b = tris((s + 2) % 3, e);
      const auto key = std::make_pair(std::min(a, b), std::max(a, b));
      const auto found = open.find(key);
      if (found == open.end()) {
        open.emplace(key, 3 * e + s);
        continue;
      }
      across(s, e) = found->second / 3;
      across(found->second % 3, found->second / 3) = e;
      open.erase(found);
    }
}

} // namespace

void metrics_steps() {
  section("Metric fields");
  {
    // Background: 40 x 40 cells of the unit square, the layer's metrics at
    // its nodes. Targets: a 60 x 60 grid of points, appended behind them.
    const unsigned n = 40, m = 60;
    dense2D<unsigned> tris, across;
    triangles_and_neighbours(n, tris, across);
    const dense2D<double> nodes = grid_nodes(n);
    const unsigned nb = nodes.cols, nt = (m + 1) * (m + 1);
    dense2D<double> xy(2, nb + nt), metrics(3, nb + nt, 0.0);
    dense1D<unsigned, 8> ancestors(nb + nt, null_id), targets(nt);
    for (unsigned j = 0; j < nb; ++j) {
      xy(0, j) = nodes(0, j);
      xy(1, j) = nodes(1, j);
      put_layer_metric(metrics, j, xy(1, j));
    }
    for (unsigned e = 0; e < tris.cols; ++e)
      for (unsigned r = 0; r < 3; ++r)
        ancestors[tris(r, e)] = e;
    for (unsigned k = 0; k < nt; ++k) {
      const unsigned column = k % (m + 1), row = k / (m + 1); // the target grid, row by row
      xy(0, nb + k) = double(column) / m;
      xy(1, nb + k) = double(row) / m;
      targets[k] = nb + k;
    }
    step s("interpolate_metrics (boundary layer)");
    const int status = interpolate_metrics(xy, tris, across, ancestors, metrics, targets, false, T3);
    double range[2][2];
    size_range(metrics, nb, nb + nt, range);
    s.done(status, "%u targets: hx %.3g..%.3g, hy %.3g..%.3g", nt, range[0][0], range[0][1], range[1][0], range[1][1]);
  }
  {
    // A 30 x 20 structured grid of the unit square: the layer's metrics on
    // its 100 boundary nodes, numbered round the loop from (0, 0).
    const unsigned M = 30, N = 20, B = 2 * (M + N);
    dense1D<unsigned, 8> loop(B + 1);
    dense2D<double> metrics(3, B);
    for (unsigned k = 0; k < B; ++k) {
      const double y = k <= M ? 0 : k <= M + N ? double(k - M) / N : k <= 2 * M + N ? 1 : double(B - k) / N;
      put_layer_metric(metrics, k, y);
      loop[k] = k;
    }
    loop[B] = 0;
    step s("metrics_struct (boundary layer)");
    const int status = metrics_struct(loop, N, metrics);
    double range[2][2];
    size_range(metrics, B, metrics.cols, range);
    s.done(status, "%u interior: hx %.3g..%.3g, hy %.3g..%.3g", metrics.cols - B, range[0][0], range[0][1], range[1][0],
           range[1][1]);
  }
}

} // namespace demo
