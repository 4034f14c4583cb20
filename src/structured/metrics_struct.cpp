#include "metrics/metric_algebra.h"
#include "structured/grid_numbering.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/metrics.h"

#include <cstddef>

namespace kelm {
namespace tesskit2d {
namespace {

// The loop checks of the structured grids, numbered from `boundary` as the
// first argument.
int check_loop(const dense1D<unsigned, 8>& boundary, unsigned M, unsigned N, unsigned n) noexcept {
  const unsigned B = boundary.size;
  if (B < 5 || boundary[0] != boundary[B - 1] || !tesskit::check_IDs(boundary, n)) return -1;
  if (2 * N > B || (M + N) * 2 != B - 1) return -2;
  return 0;
}

// The three fields differ only in how one value is read, interpolated and
// written; `Field` supplies that, and the walk over the grid is shared.
// Each interior entry reads boundary entries only, so the order of the
// writes does not matter. X, Y and the entry start at zero, so a failed
// interpolation leaves zero behind.
template <class Field> void fill_interior(Field& f, const unsigned* boundary, unsigned M, unsigned N, unsigned n) {
  using value = typename Field::value;
  for (unsigned i = 1; i < M; ++i) {
    const double u = double(i) / M;
    const unsigned low = grid_node_id(i, 0, M, N, n, boundary), high = grid_node_id(i, N, M, N, n, boundary);
    for (unsigned j = 1; j < N; ++j) {
      const double v = double(j) / N;
      value X{}, Y{}, mid{};
      f.interpolate(u, grid_node_id(0, j, M, N, n, boundary), grid_node_id(M, j, M, N, n, boundary), X);
      f.interpolate(v, low, high, Y);
      f.mid_point(Y, X, mid);
      f.store(n + (i - 1) * (N - 1) + (j - 1), mid);
    }
  }
}

struct size_field {
  using value = double;
  double* s;
  void interpolate(double t, unsigned a, unsigned b, double& out) const { interpolate_size(t, s[a], s[b], out); }
  void mid_point(const double& y, const double& x, double& out) const { interpolate_size(0.5, y, x, out); }
  void store(unsigned k, double v) const { s[k] = v; }
};

struct metric2_field {
  using value = metric2;
  double* m;
  std::size_t ld;
  metric2 at(unsigned k) const {
    const double* c = m + k * ld;
    return metric2{{c[0], c[1], c[2]}};
  }
  void interpolate(double t, unsigned a, unsigned b, metric2& out) const { interpolate_metric2(t, at(a), at(b), out); }
  void mid_point(const metric2& y, const metric2& x, metric2& out) const { interpolate_metric2(0.5, y, x, out); }
  void store(unsigned k, const metric2& v) const {
    double* c = m + k * ld;
    c[0] = v[0], c[1] = v[1], c[2] = v[2];
  }
};

struct metric3_field {
  using value = metric3;
  const dense2D<double>& m;
  void interpolate(double t, unsigned a, unsigned b, metric3& out) const {
    interpolate_metric3_at_nodes(m, t, a, b, out);
  }
  void mid_point(const metric3& y, const metric3& x, metric3& out) const { interpolate_metric3(0.5, y, x, out); }
  void store(unsigned k, const metric3& v) const {
    double* c = m.column(k);
    for (unsigned r = 0; r < 6; ++r)
      c[r] = v[r];
  }
};

} // namespace

int metrics_struct(const dense1D<unsigned, 8>& boundary, unsigned n_side, dense1D<double, 8>& sizes) noexcept {
  const unsigned B = boundary.size, N = n_side, M = (B - 2 * N - 1) / 2, n = sizes.size;
  if (B * N == 0) return 0;
  if (const int status = check_loop(boundary, M, N, n)) return status;
  // With M = 0 the count wraps below n and the field shrinks; the walk
  // below then does nothing.
  if (!sizes.resize(n + (M - 1) * (N - 1), 0.0)) return -199;
  size_field f{sizes.begin()};
  fill_interior(f, boundary.begin(), M, N, n);
  return 0;
}

int metrics_struct(const dense1D<unsigned, 8>& boundary, unsigned n_side, dense2D<double>& metrics) noexcept {
  const unsigned rows = metrics.rows;
  if (rows != 3 && rows != 6) return -3;
  const unsigned B = boundary.size, N = n_side, M = (B - 2 * N - 1) / 2, n = metrics.cols;
  if (B * N == 0) return 0;
  if (const int status = check_loop(boundary, M, N, n)) return status;
  if (!metrics.resize(rows, n + (M - 1) * (N - 1), 0.0)) return -199;
  if (rows == 3) {
    metric2_field f{metrics.column(0), metrics.ld};
    fill_interior(f, boundary.begin(), M, N, n);
  } else {
    metric3_field f{metrics};
    fill_interior(f, boundary.begin(), M, N, n);
  }
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
