#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/metric_fields.h"
#include "tesskit2d/metrics.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

template <class T> dense1D<T, 8> list(std::initializer_list<T> v) {
  dense1D<T, 8> a;
  for (T x : v)
    a.push_back(x);
  return a;
}
auto values = list<double>;
auto ids = list<unsigned>;

// The loop 0, 1, ..., B - 1, 0 of an M by N grid whose boundary nodes are
// numbered in loop order.
dense1D<unsigned, 8> loop_of(unsigned M, unsigned N) {
  dense1D<unsigned, 8> loop;
  for (unsigned k = 0; k <= 2 * (M + N); ++k)
    loop.push_back(k % (2 * (M + N)));
  return loop;
}

// A closed loop of B entries over the 8 IDs of the fields below.
dense1D<unsigned, 8> closed_loop(unsigned B) {
  dense1D<unsigned, 8> loop;
  for (unsigned k = 0; k + 1 < B; ++k)
    loop.push_back(k % 8);
  loop.push_back(0);
  return loop;
}

} // namespace

TEST(MetricsStruct, InteriorEntriesAreMidPointsOfTheOppositeSides) {
  // One interior entry: sizes 1 on the sides i = 0 and i = M (IDs 7, 3),
  // 3 on j = 0 and j = N (IDs 1, 5); the corners take no part.
  auto sizes = values({100, 3, -5, 1, 100, 3, 100, 1});
  ASSERT_EQ(metrics_struct(loop_of(2, 2), 2, sizes), 0);
  EXPECT_EQ(as_vector(sizes), (std::vector<double>{100, 3, -5, 1, 100, 3, 100, 1, 2}));

  // Values linear in the grid's index space (u, v) come back exactly, each
  // at n + (i - 1)(N - 1) + (j - 1): sizes, and metrics whose sizes along
  // fixed axes are linear, 2 by 2 and 3 by 3, on strided arrays.
  const unsigned M = 4, N = 3, n = 2 * (M + N);
  dense1D<double, 8> s(n);
  dense2D<double> m2(3, n), m3(6, n);
  for (unsigned id = 0; id < n; ++id) {
    const double u = id <= M ? id : id <= M + N ? M : id <= 2 * M + N ? 2 * M + N - id : 0;
    const double v = id <= M ? 0 : id <= M + N ? id - M : id <= 2 * M + N ? N : n - id;
    s[id] = 1 + 2 * u / M + 3 * v / N;
    put(m2, id, sized2(1 + u / M, 2 + v / N, 0.7));
    put(m3, id, sized3(1 + u / M, 0.5, 2 + v / N, 0.7));
  }
  auto strided2 = strided(m2), strided3 = strided(m3);
  ASSERT_TRUE(metrics_struct(loop_of(M, N), N, s) == 0 && metrics_struct(loop_of(M, N), N, strided2) == 0 &&
              metrics_struct(loop_of(M, N), N, strided3) == 0);
  ASSERT_TRUE(s.size == n + 6 && strided2.cols == n + 6 && strided3.cols == n + 6);
  for (unsigned i = 1; i < M; ++i)
    for (unsigned j = 1; j < N; ++j) {
      const unsigned k = n + (i - 1) * (N - 1) + (j - 1);
      const double u = double(i) / M, v = double(j) / N;
      EXPECT_NEAR(s[k], 1 + 2 * u + 3 * v, 1e-14);
      EXPECT_TRUE(near(column_of<metric2>(strided2, k), sized2(1 + u, 2 + v, 0.7)));
      EXPECT_TRUE(near(column_of<metric3>(strided3, k), sized3(1 + u, 0.5, 2 + v, 0.7)));
    }

  // A size of 0 or a metric that is not positive definite on a side leaves
  // 0 in the entries that use it, and the call succeeds.
  auto bad = values({1, 1, 1, 1, 1, 1, 1, 0});
  dense2D<double> zero(3, 8, 0.0);
  for (unsigned id = 0; id < 7; ++id)
    put(zero, id, sized2(1, 2));
  ASSERT_TRUE(metrics_struct(loop_of(2, 2), 2, bad) == 0 && metrics_struct(loop_of(2, 2), 2, zero) == 0);
  EXPECT_EQ(bad[8], 0.0);
  EXPECT_EQ(as_columns(zero)[8], (std::vector<double>{0, 0, 0}));
}

TEST(MetricsStruct, StatusesInCheckingOrderLeaveTheFieldUntouched) {
  // Rows of `metrics` come first, whatever else is wrong.
  dense2D<double> none, four(4, 8, 1.0);
  EXPECT_EQ(metrics_struct(dense1D<unsigned, 8>(), 2, none), -3);
  EXPECT_EQ(metrics_struct(ids({0, 1, 0}), 1, four), -3);
  const struct {
    dense1D<unsigned, 8> loop;
    unsigned n_side;
    int status;
  } cases[] = {
      {loop_of(2, 2), 0, 0},                        // B * N = 0
      {dense1D<unsigned, 8>(), 2, 0},               //
      {loop_of(1, 2), 2, 0},                        // M = 1: no interior
      {loop_of(2, 1), 1, 0},                        // N = 1
      {ids({0, 1, 2, 0}), 1, -1},                   // B below 5
      {ids({0, 1, 2, 3, 4, 5, 6, 7, 1}), 2, -1},    // open
      {ids({0, 1, 2, 3, 4, 5, 6, 8, 0}), 2, -1},    // ID 8 is not below n
      {ids({0, 1, 2, 3, 4, 5, 6, 7, 6, 0}), 2, -2}, // even B
      {ids({0, 1, 2, 3, 0}), 3, -2},                // 2 N above B
      // 2 N wraps to 0 in 32 bits and B - 1 = 2 (M + N) with it; taken wide
      // both fail, instead of sizing the field small and filling 2^31 rows.
      {ids({0, 1, 2, 3, 4, 5, 6, 7, 1, 2, 0}), 0x80000000u, -2},
      // M = 0 with N - 1 above n: the wrapped count would grow the field by
      // nearly 2^32 entries; refused before anything is allocated.
      {closed_loop(21), 10, -199},
  };
  for (const auto& c : cases) {
    auto sizes = values({1, 2, 3, 4, 5, 6, 7, 8});
    auto m = strided(dense2D<double>(3, 8, 1.5));
    EXPECT_EQ(metrics_struct(c.loop, c.n_side, sizes), c.status) << c.loop.size << " " << c.n_side;
    EXPECT_EQ(metrics_struct(c.loop, c.n_side, m), c.status) << c.loop.size << " " << c.n_side;
    EXPECT_EQ(as_vector(sizes), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(as_columns(m), as_columns(dense2D<double>(3, 8, 1.5)));
  }
  dense1D<double, 8> empty; // no ID can be below 0
  EXPECT_EQ(metrics_struct(loop_of(2, 2), 2, empty), -1);

  // B = 2 N + 1: M = 0 passes every check and the field loses N - 1 entries.
  auto sizes = values({1, 2, 3, 4, 5, 6, 7, 8});
  dense2D<double> m(6, 8, 1.0);
  EXPECT_TRUE(metrics_struct(ids({0, 1, 2, 3, 0}), 2, sizes) == 0 && metrics_struct(ids({0, 1, 2, 3, 0}), 2, m) == 0);
  EXPECT_TRUE(sizes.size == 7 && sizes[6] == 7 && m.cols == 7);
}

TEST(MetricsStruct, ExhaustedMemoryLeavesTheFieldAsItWas) {
  const auto loop = loop_of(3, 3);
  for (int form = 0; form < 2; ++form) {
    unsigned refused = 0;
    sweep_allocation_failures([&](unsigned long n) {
      dense1D<double, 8> sizes(12, 1.0);
      dense2D<double> m(3, 12, 1.0);
      int status = 1;
      const bool failed =
          fail_during(n, [&] { status = form ? metrics_struct(loop, 3, m) : metrics_struct(loop, 3, sizes); });
      EXPECT_EQ(status, failed ? -199 : 0);
      EXPECT_TRUE(!failed || (sizes.size == 12 && m.cols == 12 && sizes[0] == 1 && m(2, 11) == 1));
      return refused += failed, failed;
    });
    EXPECT_GE(refused, 1u);
  }
}
