#pragma once
// Operations on single metrics and sizes, shared by the structured metric
// fields and the metric transfer.
//
// A metric is a symmetric positive-definite tensor; along a unit direction
// d it prescribes the edge length h = 1 / sqrt(d^T M d). Metrics are packed
// as `symmetric_fixed`: (m00, m10, m11) in 2D and (m00, m10, m11, m20, m21,
// m22) in 3D, which is also the upper packed storage of LAPACK's dspev.
//
// Two metrics are interpolated by simultaneous reduction: they are brought
// to the common directions x_i of A^-1 B, in which both are diagonal, and
// along each direction the size h = 1 / sqrt(eigenvalue) goes linearly from
// A's to B's. Neither the tensors nor their logarithms are interpolated. A
// scalar size follows the same rule: linear in h.
//
// Eigenvalues stand for sizes: an eigenvalue of 0 is an infinite size, the
// largest double an infinite eigenvalue, that is a size of 0. A vector of
// eigenvalues is valid when every entry lies strictly between 0 and the
// largest double.
//
// All functions are pure: they write only their output arguments, and a
// false result means the output has no meaning (one exception is noted).

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

using metric2 = symmetric_fixed<double, 2>;
using metric3 = symmetric_fixed<double, 3>;

/// sqrt of the smallest normal double: a size below it gives an infinite
/// eigenvalue.
constexpr double smallest_size = 1.4916681462400413e-154;
/// sqrt of the largest double: a size above it gives a zero eigenvalue.
constexpr double largest_size = 1.3407807929942596e+154;

/// True when every one of the `n` eigenvalues is strictly between 0 and the
/// largest double. A NaN is not valid.
bool eigenvalues_valid(const double* e, unsigned n) noexcept;

/// Sizes 1 / sqrt(e). Out of the valid range, entry by entry: 0 gives the
/// largest double, the largest double gives 0.
void sizes_from_eigen2(const double e[2], double h[2]) noexcept;
void sizes_from_eigen3(const double e[3], double h[3]) noexcept;

/// Eigenvalues 1 / h^2. Out of (smallest_size, largest_size), entry by
/// entry: h below smallest_size gives the largest double, h above
/// largest_size gives 0 (as does a NaN), the rest 1 / h^2.
void eigen_from_sizes2(const double h[2], double e[2]) noexcept;
void eigen_from_sizes3(const double h[3], double e[3]) noexcept;

/// Eigen decomposition of [[a, b], [b, c]] in closed form: l0 <= l1, vec0
/// for l0, vec1 = vec0 turned a quarter turn. The smaller eigenvalue is
/// recomputed from the determinant when cancellation would leave it below
/// 1e-12 of the other. A matrix within 1e-12 of a multiple of the identity
/// gets the axes (1, 0) and (-0.0, 1). With `normalise` the vectors have
/// length 1; without it vec0 is (b, l0 - a) or (l0 - c, b), whichever is
/// longer. False when an eigenvalue is not finite.
bool eigen_sym2(double a, double b, double c, double& l0, double& l1, double vec0[2], double vec1[2],
                bool normalise) noexcept;

/// The eigenvalues alone of `eigen_sym2`.
bool eigenvalues_sym2(double a, double b, double c, double& l0, double& l1) noexcept;

/// Simultaneous reduction of two 2D metrics in closed form: the eigenvalues
/// of A^-1 B and their vectors, which are A-orthogonal. False when A00 is 0
/// or det(A) is not strictly positive, or the eigen decomposition fails.
bool reduce_pair2(const metric2& A, const metric2& B, double eigenvalues[2], double vectors[2][2],
                  bool normalise) noexcept;

/// The same in 3D: A is factored by `cholesky_sym3`, B is congruence-
/// transformed by the adjugate of the factor and decomposed by dspev. With
/// `normalise` the vectors have length 1. `vectors[k]` belongs to
/// `eigenvalues[k]`, ascending. False when A cannot be factored, its factor
/// is singular, or dspev fails.
bool reduce_pair3(const metric3& A, const metric3& B, double eigenvalues[3], double vectors[3][3],
                  bool normalise) noexcept;

/// In place: [[p, .], [q, r]] becomes its lower Cholesky factor. p = 0 is
/// allowed with q = 0 and r >= 0 (then only r changes, to sqrt(r)).
bool cholesky_sym2(double& p, double& q, double& r) noexcept;

/// Lower factor L (L[i][j], i >= j; zero above the diagonal) of a semi-definite
/// metric, tolerating a zero first row, or a zero second row, by factoring
/// the remaining 2 by 2 matrix.
bool cholesky_sym3(const metric3& M, double L[3][3]) noexcept;

/// out += lower triangle of T (c S) T^T. With c = 0 nothing is added.
void congruence_sym3(double c, const metric3& S, const double T[3][3], metric3& out) noexcept;

/// Metric at parameter t between A (t = 0) and B (t = 1), linear in the
/// sizes along the common directions. Within 1e-12 of t = 0 or t = 1 the
/// end metric is copied bit for bit, whether it is valid or not. Otherwise
/// both metrics must be positive definite (their forms along the common
/// directions valid). For t outside 0 to 1 a size that goes invalid makes
/// `out` all zero (the one defined output on false). In 2D, common
/// directions that came out parallel give false.
bool interpolate_metric2(double t, const metric2& A, const metric2& B, metric2& out) noexcept;
bool interpolate_metric3(double t, const metric3& A, const metric3& B, metric3& out) noexcept;

/// The part of the interpolation between A and B that does not depend on t:
/// the sizes of A (`ha`) and B (`hb`) along the common directions and the
/// dual basis `w` that rebuilds a metric from sizes in those directions.
/// A caller that interpolates one pair at many t prepares it once; the
/// results are bit for bit those of `interpolate_metric2` and
/// `interpolate_metric3`.
struct prepared_pair2 {
  double ha[2], hb[2], w[2][2];
};
struct prepared_pair3 {
  double ha[3], hb[3], w[3][3];
};

/// False where `interpolate_metric2` (or 3) would fail at every t strictly
/// inside 0 to 1: A or B not positive definite, the reduction failing.
bool prepare_pair2(const metric2& A, const metric2& B, prepared_pair2& p) noexcept;
bool prepare_pair3(const metric3& A, const metric3& B, prepared_pair3& p) noexcept;

/// The metric at t of a prepared pair, without the end paths: sizes
/// ha + t (hb - ha), rebuilt in the common directions. For t outside 0 to
/// 1 a size that goes invalid gives an all-zero `out` and false.
bool interpolate_prepared2(double t, const prepared_pair2& p, metric2& out) noexcept;
bool interpolate_prepared3(double t, const prepared_pair3& p, metric3& out) noexcept;

/// `interpolate_metric3` between columns `a` and `b` of a 6-row array.
bool interpolate_metric3_at_nodes(const dense2D<double>& metrics, double t, unsigned a, unsigned b,
                                  metric3& out) noexcept;

/// Size at parameter t, linear in h: out = (b - a) t + a. Within 1e-12 of
/// t = 0 or 1 the end value is taken without a test; otherwise both must be
/// strictly positive (false with `out` = 0). The result tells whether `out`
/// lies strictly between 0 and the largest double, so a bad end value is
/// written and still reported false.
bool interpolate_size(double t, const double& a, const double& b, double& out) noexcept;

} // namespace tesskit2d
} // namespace kelm
