#pragma once
// Triangle surfaces built from a fuzzer's bytes: a grid of up to 6 by 6
// cells with heights, jitter and now and then an extreme or non-numeric
// value from the input, its exact neighbour table, and then a few entries
// of either overwritten with anything. Arbitrary arrays rarely form a mesh
// whose patches grow; these do, and still meet every kind of bad entry.

#include "fuzz_arrays.h"

namespace fuzz {

struct surface {
  dense2D<double> xyz;
  dense2D<unsigned> tri, nb; // slot s across the edge opposite corner s
};

// An input that has run out gives the base plus a constant: a plane.
inline double coordinate(FuzzedDataProvider& in, double base) {
  if (in.ConsumeIntegralInRange<int>(0, 31) == 31)
    return pick<double>(in, {0.0, 1e300, -1e-300, 1e-160, std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()});
  return base + in.ConsumeIntegralInRange<int>(-2, 2) * 0.125;
}

/// Cell (i, j) holds the triangles 2q (a, b, d) and 2q + 1 (b, c, d), q =
/// j nx + i, with a = (i, j), b = (i + 1, j), c = (i + 1, j + 1), d = (i, j + 1).
inline surface grid_surface(FuzzedDataProvider& in, unsigned rows = 3) {
  const unsigned nx = in.ConsumeIntegralInRange<unsigned>(1, 6), ny = in.ConsumeIntegralInRange<unsigned>(1, 6);
  surface s{dense2D<double>(rows, (nx + 1) * (ny + 1)), dense2D<unsigned>(3, 2 * nx * ny),
            dense2D<unsigned>(3, 2 * nx * ny)};
  for (unsigned p = 0; p < s.xyz.cols; ++p)
    for (unsigned r = 0; r < rows; ++r)
      s.xyz(r, p) = coordinate(in, r == 0 ? p % (nx + 1) : r == 1 ? p / (nx + 1) : 0.0);
  const auto node = [&](unsigned i, unsigned j) { return j * (nx + 1) + i; };
  for (unsigned j = 0; j < ny; ++j)
    for (unsigned i = 0; i < nx; ++i) {
      const unsigned q = j * nx + i, a = node(i, j), b = node(i + 1, j), c = node(i + 1, j + 1), d = node(i, j + 1);
      const unsigned t0[3] = {a, b, d}, t1[3] = {b, c, d};
      const unsigned n0[3] = {2 * q + 1, i ? 2 * (q - 1) + 1 : null_id, j ? 2 * (q - nx) + 1 : null_id};
      const unsigned n1[3] = {j + 1 < ny ? 2 * (q + nx) : null_id, 2 * q, i + 1 < nx ? 2 * (q + 1) : null_id};
      for (unsigned r = 0; r < 3; ++r) {
        s.tri(r, 2 * q) = t0[r], s.tri(r, 2 * q + 1) = t1[r];
        s.nb(r, 2 * q) = n0[r], s.nb(r, 2 * q + 1) = n1[r];
      }
    }
  // A few entries overwritten: an element or a node in range, one past the
  // end, or none.
  for (unsigned k = in.ConsumeIntegralInRange<unsigned>(0, 3); k > 0; --k) {
    dense2D<unsigned>& a = in.ConsumeBool() ? s.nb : s.tri;
    const unsigned limit = &a == &s.nb ? s.tri.cols : s.xyz.cols;
    a(in.ConsumeIntegralInRange<unsigned>(0, 2), in.ConsumeIntegralInRange<unsigned>(0, a.cols - 1)) =
        pick<unsigned>(in, {in.ConsumeIntegralInRange<unsigned>(0, limit - 1), limit, null_id});
  }
  return s;
}

} // namespace fuzz
