#pragma once
// The one LAPACK routine that the kelm libraries use.

#include "treisoma/export.h"

namespace kelm {
namespace lapack {

/// Eigen decomposition of a real symmetric n by n matrix in packed storage
/// (LAPACK's DSPEV).
///
/// - `jobz`: 'N' for eigenvalues only, 'V' for eigenvectors too.
/// - `uplo`: 'U' when `ap` holds the upper triangle by columns, (i, j) with
///   i <= j at j * (j + 1) / 2 + i; 'L' for the lower triangle.
/// - `ap`: n * (n + 1) / 2 doubles; overwritten.
/// - `w`: n doubles; the eigenvalues in ascending order.
/// - `z`: with 'V', `ldz` by n, column k the unit eigenvector of `w[k]`;
///   not read with 'N' (may be null then).
/// - `work`: 3 * n doubles.
///
/// Returns LAPACK's `info`: 0 on success, -i when argument i was illegal,
/// i > 0 when the iteration failed to converge.
TREISOMA_EXPORT int dspev(char jobz, char uplo, int n, double* ap, double* w, double* z, int ldz,
                          double* work) noexcept;

} // namespace lapack
} // namespace kelm
