#include <gtest/gtest.h>

#include "support/fp_traps.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "metrics/metric_algebra.h"
#include "support/arrays.h"
#include "support/metric_fields.h"

using namespace kelm::tesskit2d;
using tk_test::near;
using tk_test::sized2;
using tk_test::sized3;

constexpr double big = std::numeric_limits<double>::max();
template <class T> bool same_bits(const T& a, const T& b) {
  for (unsigned k = 0; k < T::packed_size; ++k) {
    std::uint64_t x, y;
    std::memcpy(&x, &a[k], sizeof x);
    std::memcpy(&y, &b[k], sizeof y);
    if (x != y) return false;
  }
  return true;
}

// The linear blend of sizes along shared axes is checked through the fields
// of metrics_struct; here, beyond the ends and the identity branch.
TEST(MetricAlgebra, SizesExtrapolateAlongSharedAxesAndEqualMetricsComeBack) {
  for (double t : {1.5, -0.2}) {
    metric2 out2;
    metric3 out3;
    EXPECT_TRUE(interpolate_metric2(t, sized2(1, 4, 0.5), sized2(3, 2.5, 0.5), out2) &&
                near(out2, sized2(1 + 2 * t, 4 - 1.5 * t, 0.5)));
    EXPECT_TRUE(interpolate_metric3(t, sized3(1, 4, 0.2, 2), sized3(3, 2.5, 0.3, 2), out3) &&
                near(out3, sized3(1 + 2 * t, 4 - 1.5 * t, 0.2 + 0.1 * t, 2)));
  }
  for (const metric2& m : {sized2(2, 2), sized2(0.1, 3, 1.0)}) { // isotropic: the identity branch
    metric2 out;
    EXPECT_TRUE(interpolate_metric2(0.7, m, m, out) && near(out, m));
  }
}

TEST(MetricAlgebra, EndsAreCopiedBitForBitAndInvalidMetricsRefused) {
  const metric2 bad2 = {{-1, 5, std::nan("")}}, good2 = sized2(1, 2, 0.3);
  const metric3 bad3 = {{-1, 5, 0, 0, 1, -0.0}}, good3 = sized3(1, 2, 3, 0.3);
  for (double t : {0.0, 1e-13, -1e-13, 1.0, 1 - 1e-13, 1 + 1e-13}) {
    const bool first = t < 0.5;
    metric2 out2;
    metric3 out3;
    EXPECT_TRUE(interpolate_metric2(t, first ? bad2 : good2, first ? good2 : bad2, out2) && same_bits(out2, bad2));
    EXPECT_TRUE(interpolate_metric3(t, first ? bad3 : good3, first ? good3 : bad3, out3) && same_bits(out3, bad3));
  }
  // Zero, negative definite, or a zero first row (factored, then singular).
  metric2 out2;
  metric3 out3;
  EXPECT_FALSE(interpolate_metric2(0.5, metric2{{0, 0, 0}}, good2, out2) ||
               interpolate_metric2(0.5, good2, metric2{{-1, 0, -1}}, out2) ||
               interpolate_metric3(0.5, metric3{{-1, 0, -1, 0, 0, -1}}, good3, out3));
  double L[3][3], e[3], v[3][3];
  const metric3 flat = {{0, 0, 4, 0, 2, 5}};
  EXPECT_TRUE(cholesky_sym3(flat, L) && !reduce_pair3(flat, good3, e, v, true));
  // A size driven below zero beyond the ends gives an all-zero metric.
  out2 = good2;
  out3 = good3;
  EXPECT_FALSE(interpolate_metric2(-2, sized2(1, 1), sized2(2, 2), out2) ||
               interpolate_metric3(3, sized3(2, 1, 1), sized3(1, 1, 1), out3));
  for (unsigned k = 0; k < 6; ++k)
    EXPECT_EQ(out3[k] + (k < 3 ? out2[k] : 0.0), 0.0);
}

TEST(MetricAlgebra, ReductionsKnowTheirEigenpairs) {
  // [[2, 1], [1, 2]]: 1 along (1, -1) / sqrt(2), 3 along the turned vector.
  double l0, l1, a[2], b[2];
  EXPECT_TRUE(eigen_sym2(2, 1, 2, l0, l1, a, b, true) &&
              std::fabs(l0 - 1) + std::fabs(l1 - 3) + std::fabs(a[0] + a[1]) + std::fabs(a[0] * a[0] - 0.5) < 1e-15);
  EXPECT_TRUE(b[0] == -a[1] && b[1] == a[0]);
  // Cancellation: det / l1 recovers the small eigenvalue, 1 to 1e-20.
  EXPECT_TRUE(eigenvalues_sym2(1e20, 1e10, 2, l0, l1) && std::fabs(l0 - 1) < 1e-12);
  {
    const tk_test::no_fp_traps overflow_on_purpose;
    EXPECT_FALSE(eigenvalues_sym2(big, -big, big, l0, l1));
  }
}

TEST(MetricAlgebra, SizeSentinelsAndScalarInterpolation) {
  // Sizes of 0 and infinity stand for the extreme eigenvalues and back.
  double h[3], e[3];
  const double eig[3] = {0, big, 4}, sizes[3] = {1e-200, 1e200, 0.5};
  sizes_from_eigen3(eig, h);
  eigen_from_sizes3(sizes, e);
  EXPECT_TRUE(h[0] == big && h[1] == 0 && h[2] == 0.5 && e[0] == big && e[1] == 0 && e[2] == 4);
  EXPECT_TRUE(!eigenvalues_valid(eig, 3) && eigenvalues_valid(eig + 2, 1));
  // t, a, b, result, out: an end is written even when bad; inside both must
  // be positive; an extrapolation may go below 0.
  const double cases[][5] = {{0.25, 2, 4, 1, 2.5}, {1e-13, -1, 4, 0, -1},     {1, 2, 0, 0, 0},
                             {0.5, -1, 4, 0, 0},   {0.5, 2, big, 1, big / 2}, {3, 2, 1, 0, -1}};
  for (const auto& c : cases) {
    double out = 7;
    EXPECT_TRUE(interpolate_size(c[0], c[1], c[2], out) == (c[3] == 1) && out == c[4]) << c[0];
  }
}
