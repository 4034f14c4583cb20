#include <cmath>

#include "report.h"
#include "steps.h"
#include "tesskit2d/structured.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

const double pi = 3.14159265358979323846;

double signed_area(const dense2D<double>& xy, const dense2D<unsigned>& conn) {
  double total = 0;
  for (unsigned e = 0; e < conn.cols; ++e)
    for (unsigned k = 0; k < conn.rows; ++k) {
      const unsigned p = conn(k, e), q = conn((k + 1) % conn.rows, e);
      total += (xy(0, p) * xy(1, q) - xy(0, q) * xy(1, p)) / 2;
    }
  return total;
}

// The quarter annulus 1 <= r <= 2, 0 <= theta <= pi / 2, walked
// counter-clockwise from (1, 0): M cells along the radius, N along the arcs.
void quarter_annulus(unsigned M, unsigned N, dense2D<double>& xy, dense1D<unsigned, 8>& loop) {
  xy.resize(2, 2 * (M + N));
  unsigned id = 0;
  auto put = [&](double r, double theta) {
    xy(0, id) = r * std::cos(theta);
    xy(1, id) = r * std::sin(theta);
    loop.push_back(id++);
  };
  for (unsigned i = 0; i < M; ++i)
    put(1 + double(i) / M, 0);
  for (unsigned j = 0; j < N; ++j)
    put(2, pi / 2 * j / N);
  for (unsigned i = M; i > 0; --i)
    put(1 + double(i) / M, pi / 2);
  for (unsigned j = N; j > 0; --j)
    put(1, pi / 2 * j / N);
  loop.push_back(0);
}

} // namespace

void structured_steps() {
  section("Structured grids");
  const unsigned M = 40, N = 120;
  {
    dense2D<double> xy;
    dense1D<unsigned, 8> loop;
    quarter_annulus(M, N, xy, loop);
    dense2D<unsigned> quads;
    step s("mesh_struct_Q4 (quarter annulus)");
    const int status = mesh_struct_Q4(xy, loop, N, quads);
    s.done(status, "%u x %u -> %u Q4, area %.4f (3 pi / 4 %.4f)", M, N, quads.cols, signed_area(xy, quads), 3 * pi / 4);
  }
  {
    dense2D<double> xy;
    dense1D<unsigned, 8> loop;
    quarter_annulus(M, N, xy, loop);
    dense2D<unsigned> triangles;
    step s("mesh_struct_T3 (alternating diagonals)");
    const int status = mesh_struct_T3(xy, loop, N, 2, triangles);
    s.done(status, "%u x %u -> %u T3, area %.4f", M, N, triangles.cols, signed_area(xy, triangles));
  }
}

} // namespace demo
