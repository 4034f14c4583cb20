#include <gtest/gtest.h>

#include <cmath>

#include "extrusion/layer_spacing.h"

using namespace kelm::tesskit2d;

TEST(LayerSpacing, CountIsLengthOverTheLogarithmicMeanAcrossTheSeriesBoundary) {
  EXPECT_NEAR(layer_count(10, 1, 2, false), 10 * std::log(2.0), 1e-14);
  EXPECT_EQ(layer_count(10, 1, 2, false), layer_count(10, 2, 1, false));
  EXPECT_EQ(layer_count(10, 2.5, 2.5, false), 4.0); // equal sizes: exactly length / h
  EXPECT_EQ(layer_count(10, 0, 1, false), 0.0);     // a zero size has no mean
  // Below a 10% difference a series replaces the quotient: both must agree
  // at the switch and inside it.
  EXPECT_NEAR(layer_count(1, 1, 1 + std::nextafter(0.1, 0.0), false), layer_count(1, 1, 1.1, false), 1e-8);
  EXPECT_NEAR(layer_count(1, 1, 1.05, false), std::log(1.05) / 0.05, 1e-7);
}

TEST(LayerSpacing, NearestMultipleRoundsAtTheGeometricMean) {
  EXPECT_EQ(nearest_multiple(6.931471805599453, 1), 7u);
  EXPECT_EQ(nearest_multiple(6.931471805599453, 2), 8u); // 48.04 > 6 * 8, though nearer to 6
  EXPECT_EQ(nearest_multiple(2.45, 1), 3u);              // 6.0025 > 2 * 3
  EXPECT_EQ(nearest_multiple(2.44, 1), 2u);
  EXPECT_EQ(nearest_multiple(0.01, 2), 2u);
  EXPECT_EQ(nearest_multiple(std::nan(""), 1), 0u);
  for (double x : {5.0, std::nextafter(5.0, 0.0), std::nextafter(5.0, 6.0)})
    EXPECT_EQ(nearest_multiple(x, 1), 5u);
  // Past k = 65535 the product k (k + m) wraps at 32 bits and x goes up.
  EXPECT_EQ(nearest_multiple(70000.1, 1), 70001u);
  EXPECT_EQ(nearest_multiple(60000.1, 1), 60000u);
}

TEST(LayerSpacing, FractionRunsFromZeroToOneAndItsSeriesMeetsThePower) {
  for (double h1 : {0.25, 0.9995, 1.0, 1.001, 3.0}) {
    EXPECT_EQ(layer_fraction(0, 1, h1), 0.0);
    EXPECT_EQ(layer_fraction(1, 1, h1), 1.0);
  }
  EXPECT_NEAR(layer_fraction(0.5, 1, 4), 1.0 / 3, 1e-15);
  for (double q : {1.0005, 1.001, 0.999}) // the series near q = 1 and its ends
    EXPECT_NEAR(layer_fraction(0.3, 1, q), (std::pow(q, 0.3) - 1) / (q - 1), 1e-12);
  EXPECT_EQ(layer_fraction(2, 1, 4), 5.0); // no clamp outside [0, 1]
}
