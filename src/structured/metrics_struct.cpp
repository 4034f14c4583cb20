#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "metrics/metric_algebra.h"
#include "structured/grid_numbering.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/metrics.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The loop checks of the structured grids, numbered from `boundary` as the
// first argument. M comes from B with wrap-around, so a large N could make
// the loop length look right: both tests are taken in 64 bits, so that
// neither passes by a wrap of its own (N = 2^31 would give 2 N = 0).
int check_loop(const dense1D<unsigned, 8>& boundary, unsigned M, unsigned N, unsigned n) noexcept {
  const unsigned B = boundary.size;
  if (B < 5 || boundary[0] != boundary[B - 1] || !tesskit::check_IDs(boundary, n)) return -1;
  if (2 * std::uint64_t(N) > B || (std::uint64_t(M) + N) * 2 != B - 1) return -2;
  return 0;
}

// The entry count after the call, n + (M - 1)(N - 1) in 32 bits as the
// field's definition has it, or false when the field cannot hold it: a
// grid whose count passes 32 bits, and the wrap of M = 0 when it goes the
// other way (N - 1 above n), which would make the field grow by nearly 2^32
// entries instead of losing N - 1. Both are refused as memory that cannot
// be had, before anything is allocated.
bool grown_count(unsigned n, unsigned M, unsigned N, unsigned& count) noexcept {
  count = n + (M - 1) * (N - 1);
  if (M == 0) return count <= n;
  return n + std::uint64_t(M - 1) * (N - 1) <= 0xFFFFFFFFu;
}

// A pair of boundary values along one grid line, prepared once for all the
// entries of that line. `ok` false: the interpolation fails at every
// interior parameter.
template <class Pair> struct line {
  Pair pair;
  bool ok;
};

// The three fields differ only in how a pair of boundary values is prepared
// and interpolated and how an entry is written; the walk over the grid is
// shared.
//
// Each interior entry reads boundary entries only, so the order of the
// writes does not matter. The pairs between opposite sides depend on one
// grid index each: those across the first side (i = 0 to M) on j, prepared
// once into `across`, and those across the second (j = 0 to N) on i,
// prepared once per row. u = i / M and v = j / N lie at least 1 / M and
// 1 / N from both ends, far beyond the 1e-12 of the interpolation's end
// paths, so a prepared pair gives the interpolation itself. X, Y and the
// entry start at zero, so a failed interpolation leaves zero behind.
template <class Field>
void fill_interior(const Field& f, line<typename Field::pair>* across, const unsigned* boundary, unsigned M, unsigned N,
                   unsigned n) noexcept {
  using value = typename Field::value;
  if (M < 2 || N < 2) return;
  for (unsigned j = 1; j < N; ++j)
    across[j - 1].ok =
        f.prepare(grid_node_id(0, j, M, N, n, boundary), grid_node_id(M, j, M, N, n, boundary), across[j - 1].pair);
  for (unsigned i = 1; i < M; ++i) {
    const double u = double(i) / M;
    line<typename Field::pair> along;
    along.ok = f.prepare(grid_node_id(i, 0, M, N, n, boundary), grid_node_id(i, N, M, N, n, boundary), along.pair);
    for (unsigned j = 1; j < N; ++j) {
      const double v = double(j) / N;
      value X{}, Y{}, mid{};
      if (across[j - 1].ok) f.at(u, across[j - 1].pair, X);
      if (along.ok) f.at(v, along.pair, Y);
      f.mid_point(Y, X, mid);
      f.store(n + (i - 1) * (N - 1) + (j - 1), mid);
    }
  }
}

struct size_field {
  using value = double;
  using pair = double[2];
  double* s;
  bool prepare(unsigned a, unsigned b, pair& p) const noexcept {
    p[0] = s[a], p[1] = s[b];
    return true;
  }
  void at(double t, const pair& p, double& out) const noexcept { interpolate_size(t, p[0], p[1], out); }
  void mid_point(const double& y, const double& x, double& out) const noexcept { interpolate_size(0.5, y, x, out); }
  void store(unsigned k, double v) const noexcept { s[k] = v; }
};

struct metric2_field {
  using value = metric2;
  using pair = prepared_pair2;
  double* m;
  std::size_t ld;
  metric2 column(unsigned k) const noexcept {
    const double* c = m + k * ld;
    return metric2{{c[0], c[1], c[2]}};
  }
  bool prepare(unsigned a, unsigned b, pair& p) const noexcept { return prepare_pair2(column(a), column(b), p); }
  void at(double t, const pair& p, metric2& out) const noexcept { interpolate_prepared2(t, p, out); }
  void mid_point(const metric2& y, const metric2& x, metric2& out) const noexcept {
    interpolate_metric2(0.5, y, x, out);
  }
  void store(unsigned k, const metric2& v) const noexcept {
    double* c = m + k * ld;
    c[0] = v[0], c[1] = v[1], c[2] = v[2];
  }
};

struct metric3_field {
  using value = metric3;
  using pair = prepared_pair3;
  double* m;
  std::size_t ld;
  metric3 column(unsigned k) const noexcept {
    const double* c = m + k * ld;
    return metric3{{c[0], c[1], c[2], c[3], c[4], c[5]}};
  }
  bool prepare(unsigned a, unsigned b, pair& p) const noexcept { return prepare_pair3(column(a), column(b), p); }
  void at(double t, const pair& p, metric3& out) const noexcept { interpolate_prepared3(t, p, out); }
  void mid_point(const metric3& y, const metric3& x, metric3& out) const noexcept {
    interpolate_metric3(0.5, y, x, out);
  }
  void store(unsigned k, const metric3& v) const noexcept {
    double* c = m + k * ld;
    for (unsigned r = 0; r < 6; ++r)
      c[r] = v[r];
  }
};

// Room for the prepared pairs across the first side, one per interior j.
// It is had before the field is lengthened, so that a failure of either
// leaves the field as it was.
template <class Pair> bool make_lines(std::unique_ptr<line<Pair>[]>& lines, unsigned M, unsigned N) noexcept {
  if (M < 2 || N < 2) return true;
  lines.reset(new (std::nothrow) line<Pair>[N - 1]);
  return lines != nullptr;
}

} // namespace

int metrics_struct(const dense1D<unsigned, 8>& boundary, unsigned n_side, dense1D<double, 8>& sizes) noexcept {
  const unsigned B = boundary.size, N = n_side, M = (B - 2 * N - 1) / 2, n = sizes.size;
  if (B * N == 0) return status::ok;
  if (const int status = check_loop(boundary, M, N, n)) return status;
  // With M = 0 the count wraps below n and the field shrinks; nothing is
  // computed then.
  unsigned count;
  if (!grown_count(n, M, N, count)) return status::out_of_memory;
  // The loop is read while the field grows: a copy where the two can meet.
  const separate_input<dense1D<unsigned, 8>> loop(boundary, sizes);
  std::unique_ptr<line<size_field::pair>[]> across;
  if (!loop.ok() || !make_lines(across, M, N) || !sizes.resize(count, 0.0)) return status::out_of_memory;
  fill_interior(size_field{sizes.begin()}, across.get(), loop.get().begin(), M, N, n);
  return status::ok;
}

int metrics_struct(const dense1D<unsigned, 8>& boundary, unsigned n_side, dense2D<double>& metrics) noexcept {
  const unsigned rows = metrics.rows;
  if (rows != 3 && rows != 6) return -3;
  const unsigned B = boundary.size, N = n_side, M = (B - 2 * N - 1) / 2, n = metrics.cols;
  if (B * N == 0) return status::ok;
  if (const int status = check_loop(boundary, M, N, n)) return status;
  unsigned count;
  if (!grown_count(n, M, N, count)) return status::out_of_memory;
  // The loop is read while the field grows: a copy where the two can meet.
  const separate_input<dense1D<unsigned, 8>> loop(boundary, metrics);
  if (!loop.ok()) return status::out_of_memory;
  if (rows == 3) {
    std::unique_ptr<line<prepared_pair2>[]> across;
    if (!make_lines(across, M, N) || !metrics.resize(rows, count, 0.0)) return status::out_of_memory;
    fill_interior(metric2_field{metrics.column(0), metrics.ld}, across.get(), loop.get().begin(), M, N, n);
  } else {
    std::unique_ptr<line<prepared_pair3>[]> across;
    if (!make_lines(across, M, N) || !metrics.resize(rows, count, 0.0)) return status::out_of_memory;
    fill_interior(metric3_field{metrics.column(0), metrics.ld}, across.get(), loop.get().begin(), M, N, n);
  }
  return status::ok;
}

} // namespace tesskit2d
} // namespace kelm
