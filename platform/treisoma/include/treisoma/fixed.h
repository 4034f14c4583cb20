#pragma once
// Small fixed-size vectors and packed symmetric matrices.

namespace kelm {

/// N consecutive doubles, read by index.
template <class T, unsigned N> struct vector_fixed {
  T v[N];
  T& operator[](unsigned i) noexcept { return v[i]; }
  const T& operator[](unsigned i) const noexcept { return v[i]; }
};

/// A symmetric N by N matrix stored as its packed upper triangle by columns,
/// the packed form LAPACK's dspev takes with uplo 'U': entry (i, j) with
/// i <= j stands at index j * (j + 1) / 2 + i. For N = 2 the order is
/// m00, m01, m11; for N = 3 it is m00, m01, m11, m02, m12, m22.
template <class T, unsigned N> struct symmetric_fixed {
  static constexpr unsigned packed_size = N * (N + 1) / 2;
  T m[packed_size];

  T& operator[](unsigned k) noexcept { return m[k]; }
  const T& operator[](unsigned k) const noexcept { return m[k]; }

  /// Entry (i, j) in either order.
  T& operator()(unsigned i, unsigned j) noexcept { return m[index(i, j)]; }
  const T& operator()(unsigned i, unsigned j) const noexcept { return m[index(i, j)]; }

  static constexpr unsigned index(unsigned i, unsigned j) noexcept {
    return i <= j ? j * (j + 1) / 2 + i : i * (i + 1) / 2 + j;
  }
};

} // namespace kelm
