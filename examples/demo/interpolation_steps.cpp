#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <random>
#include <utility>

#include "meshes.h"
#include "report.h"
#include "steps.h"
#include "tesskit2d/interpolation.h"

namespace demo {

using namespace kelm::tesskit2d;
using kelm::dense1D;

namespace {

// A background mesh of the unit square: an n by n grid with its interior
// nodes shaken by up to a quarter cell, a quadrangle in every other cell and
// two triangles in the rest (one 4-row array, `null_id` in row 3 for a
// triangle). Then its neighbour table and one element per node, which the
// caller of `interpolate` provides.
struct background {
  dense2D<double> xy;
  dense2D<unsigned> conn, neighbours;
  dense1D<unsigned> ancestors;
};

background jittered_mixed(unsigned n, unsigned extra_nodes) {
  background b;
  const dense2D<double> grid = grid_nodes(n);
  const dense2D<unsigned> quads = grid_quadrangles(n);
  b.xy = dense2D<double>(2, grid.cols + extra_nodes, 0.0);
  std::mt19937 random(5);
  std::uniform_real_distribution<double> shake(-0.25 / n, 0.25 / n);
  for (unsigned j = 0; j < grid.cols; ++j) {
    const bool inner = j % (n + 1) != 0 && j % (n + 1) != n && j > n && j < grid.cols - n - 1;
    b.xy(0, j) = grid(0, j) + (inner ? shake(random) : 0.0);
    b.xy(1, j) = grid(1, j) + (inner ? shake(random) : 0.0);
  }
  b.conn = dense2D<unsigned>(4, quads.cols + quads.cols / 2 + 1);
  unsigned e = 0;
  for (unsigned q = 0; q < quads.cols; ++q) {
    const unsigned* c = quads.column(q);
    if (q % 2 == 0) {
      for (unsigned r = 0; r < 4; ++r)
        b.conn(r, e) = c[r];
      ++e;
      continue;
    }
    const unsigned halves[2][4] = {{c[0], c[1], c[2], null_id}, {c[0], c[2], c[3], null_id}};
    for (const auto& t : halves) {
      for (unsigned r = 0; r < 4; ++r)
        b.conn(r, e) = t[r];
      ++e;
    }
  }
  b.conn.resize(4, e);

  // Edge s of a triangle is opposite corner s; of a quadrangle from corner s.
  b.neighbours = dense2D<unsigned>(4, e, null_id);
  b.ancestors = dense1D<unsigned>(b.xy.cols, null_id);
  std::map<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>> open;
  for (unsigned k = 0; k < e; ++k) {
    const unsigned* c = b.conn.column(k);
    const unsigned sides = c[3] == null_id ? 3 : 4;
    for (unsigned r = 0; r < sides; ++r)
      b.ancestors[c[r]] = k;
    for (unsigned s = 0; s < sides; ++s) {
      const unsigned a = sides == 3 ? c[(s + 1) % 3] : c[s], z = sides == 3 ? c[(s + 2) % 3] : c[(s + 1) % 4];
      const auto key = std::minmax(a, z);
      const auto found = open.find(key);
      if (found == open.end()) {
        open[key] = {k, s};
        continue;
      }
      b.neighbours(s, k) = found->second.first;
      b.neighbours(found->second.second, found->second.first) = k;
      open.erase(found);
    }
  }
  return b;
}

// Carries `f` from the background nodes to the targets and prints the
// largest error there.
template <class F> void carry(const char* name, const background& b, const dense1D<unsigned>& targets, F f) {
  dense1D<double> field(b.xy.cols, 0.0);
  const unsigned first_target = targets[0];
  for (unsigned j = 0; j < first_target; ++j)
    field[j] = f(b.xy(0, j), b.xy(1, j));
  step s(name);
  const auto start = std::chrono::steady_clock::now();
  const int status = interpolate(b.xy, b.conn, b.neighbours, b.ancestors, field, targets, MIXED);
  const double ns =
      std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / targets.size;
  double worst = 0.0;
  for (unsigned k = 0; k < targets.size; ++k) {
    const unsigned t = targets[k];
    worst = std::max(worst, std::abs(field[t] - f(b.xy(0, t), b.xy(1, t))));
  }
  s.done(status, "%u targets, max error %.2e, %.0f ns/target", targets.size, worst, ns);
}

} // namespace

void interpolation_steps() {
  section("Nodal interpolation");
  // Background: 200 x 200 cells, mixed. Targets: the nodes of a 501 x 501
  // structured grid of the same square, behind the background nodes.
  const unsigned n = 200, m = 500;
  const dense2D<double> fine = grid_nodes(m);
  background b = jittered_mixed(n, fine.cols);
  const unsigned first = (n + 1) * (n + 1);
  dense1D<unsigned> targets(fine.cols);
  for (unsigned k = 0; k < fine.cols; ++k) {
    b.xy(0, first + k) = fine(0, k);
    b.xy(1, first + k) = fine(1, k);
    targets[k] = first + k;
  }
  std::printf("  background %u elements on %u nodes, %u targets\n", b.conn.cols, first, targets.size);
  carry("linear 1 + 2x - 3y (rounding)", b, targets, [](double x, double y) { return 1 + 2 * x - 3 * y; });
  carry("smooth sin(3x) cos(2y)", b, targets, [](double x, double y) { return std::sin(3 * x) * std::cos(2 * y); });
}

} // namespace demo
