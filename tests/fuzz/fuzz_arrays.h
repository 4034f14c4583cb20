#pragma once
// Arrays built from a fuzzer's bytes: shapes, strides, offsets and contents
// all come from the input, so that the harnesses reach strided views, empty
// arrays, IDs past the last node, null_id where a node must be, and values
// that are huge, tiny or not numbers.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>

#include <fuzzer/FuzzedDataProvider.h>

#include "tesskit2d/mesh.h"

namespace fuzz {

using kelm::dense1D;
using kelm::dense2D;
using kelm::tesskit2d::null_id;

/// Stops the run with a message: an invariant of the library failed.
[[noreturn]] inline void broken(const char* what) {
  std::fprintf(stderr, "invariant broken: %s\n", what);
  std::abort();
}

/// A status the library may return: success or a count (0 and up), an
/// argument's number (-1 to -20), or -199.
inline void check_status(int status) {
  if (status < -20 && status != -199) broken("status outside the library's range");
}

/// Bit for bit, so that NaNs compare equal to themselves.
inline bool same(const double* a, const double* b, std::size_t n) {
  return n == 0 || std::memcmp(a, b, n * sizeof(double)) == 0;
}

template <class T> T pick(FuzzedDataProvider& in, std::initializer_list<T> choices) {
  return *(choices.begin() + in.ConsumeIntegralInRange<std::size_t>(0, choices.size() - 1));
}

/// A column-major array of `rows` by up to `max_cols` columns (exactly
/// `cols` when given), laid out with a stride and an offset of its own
/// choosing, elements from `value`.
template <class T, class Value>
dense2D<T> array(FuzzedDataProvider& in, unsigned rows, unsigned max_cols, Value value, int cols_given = -1) {
  const unsigned cols = cols_given >= 0 ? unsigned(cols_given) : in.ConsumeIntegralInRange<unsigned>(0, max_cols);
  const unsigned extra = in.ConsumeIntegralInRange<unsigned>(0, 2), offset = in.ConsumeIntegralInRange<unsigned>(0, 3);
  const unsigned ld = rows + extra;
  dense2D<T> big(ld, cols + 4, T(7)); // room for the offset whatever the stride
  dense2D<T> v(big);
  v.offset = ld ? offset : 0; // no offset into an empty buffer
  v.rows = rows;
  v.cols = cols;
  v.ld = ld;
  v.size = rows * cols;
  for (unsigned j = 0; j < cols; ++j)
    for (unsigned i = 0; i < rows; ++i)
      v(i, j) = value();
  return v;
}

/// Coordinates of 1 to 4 rows (mostly 2 or 3), ordinary values with now and
/// then, where `extremes` allows, an extreme one.
inline dense2D<double> coords(FuzzedDataProvider& in, unsigned max_nodes = 24, bool extremes = true) {
  const unsigned rows = pick<unsigned>(in, {2, 3, 2, 3, 1, 4});
  return array<double>(in, rows, max_nodes, [&] {
    if (extremes && in.ConsumeIntegralInRange<int>(0, 15) == 0)
      return pick<double>(in, {0.0, -0.0, 1e300, -1e300, 1e-300, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()});
    return in.ConsumeIntegralInRange<int>(-8, 8) * 0.5;
  });
}

/// An ID array of `rows` rows over `n_nodes` nodes: mostly valid IDs, now and
/// then one past the end or `null_id`.
inline dense2D<unsigned> ids(FuzzedDataProvider& in, unsigned rows, unsigned n_nodes, unsigned max_cols = 24) {
  return array<unsigned>(in, rows, max_cols, [&] {
    const unsigned k = in.ConsumeIntegralInRange<unsigned>(0, 20);
    if (k == 0) return null_id;
    if (k == 1) return n_nodes;
    return n_nodes ? in.ConsumeIntegralInRange<unsigned>(0, n_nodes - 1) : 0u;
  });
}

/// A fresh output: empty, or holding columns of some row count already.
inline dense2D<unsigned> output(FuzzedDataProvider& in, unsigned n_nodes) {
  if (in.ConsumeBool()) return dense2D<unsigned>();
  return ids(in, pick<unsigned>(in, {0, 2, 3, 4, 6, 9}), n_nodes, 3);
}

/// True when every entry of `a` from column `first` on, other than
/// `null_id`, is below `n`.
inline bool ids_below(const dense2D<unsigned>& a, unsigned n, unsigned first = 0) {
  for (unsigned j = first; j < a.cols; ++j)
    for (unsigned i = 0; i < a.rows; ++i)
      if (a(i, j) != null_id && a(i, j) >= n) return false;
  return true;
}

} // namespace fuzz
