#pragma once
// Layer spacing of graded extrusions.
//
// The sizes are graded continuously along the path: at parameter t in [0, 1]
// the wanted size is h0 * q^t with q = h1 / h0. The number of layers is the
// path length over the logarithmic mean of h0 and h1, and the layer
// thicknesses then form a geometric progression of ratio q^(1 / n_layers).
// The path length is always honoured; the end sizes only approximately.

namespace kelm {
namespace tesskit2d {

/// Real number of layers that covers `length` with sizes graded from `h0` to
/// `h1`: `length` over the logarithmic mean of the two sizes, symmetric in
/// them. 0 when the mean is 0, negative or NaN. With `ratio_when_long` and a
/// path longer than the mean, the inverse (mean over length) is returned
/// instead; the extrusions always pass false.
double layer_count(double length, double h0, double h1, bool ratio_when_long) noexcept;

/// The multiple of `m` next to `x`, rounding at the geometric mean of the two
/// candidates k and k + m: `x` goes up when x * x > k * (k + m), the product
/// taken in 32-bit unsigned arithmetic (so it wraps once k passes 65535).
/// Any x > 0 below m gives m; 0 and NaN give 0.
unsigned nearest_multiple(double x, unsigned m) noexcept;

/// Fraction of the path covered at parameter `t` when sizes are graded from
/// `h0` to `h1`: (q^t - 1) / (q - 1) with q = h1 / h0, by its binomial series
/// when q lies within [0.999, 1.001] (or is NaN), and exactly `t` when the
/// sizes are equal. Clamped to [0, 1] for t in [0, 1] only.
double layer_fraction(double t, double h0, double h1) noexcept;

} // namespace tesskit2d
} // namespace kelm
