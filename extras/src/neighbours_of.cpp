#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

#include "scratch.h"

#include "tesskit2d/extras.h"

namespace kelm {
namespace tesskit2d {
namespace extras {
namespace {

// One side of an edge: the edge's node pair as a key (smaller ID high), and
// the slot that looks across it, as column * rows + slot.
struct side {
  std::uint64_t key;
  std::uint64_t slot;
};

// Sorts by key, least significant 16 bits first. A pass whose digit is the
// same for every side moves nothing and is skipped, so small node IDs cost
// two passes rather than four.
void radix_sort(scratch<side>& sides, scratch<side>& spare) {
  scratch<std::size_t> count(1u << 16);
  for (unsigned shift = 0; shift < 64; shift += 16) {
    std::fill(count.begin(), count.end(), 0);
    for (const side& s : sides)
      ++count[(s.key >> shift) & 0xFFFF];
    if (count[(sides.front().key >> shift) & 0xFFFF] == sides.size()) continue;
    std::size_t sum = 0;
    for (std::size_t& c : count) {
      const std::size_t here = c;
      c = sum;
      sum += here;
    }
    spare.resize(sides.size());
    for (const side& s : sides)
      spare[count[(s.key >> shift) & 0xFFFF]++] = s;
    sides.swap(spare);
  }
}

void clear(dense2D<unsigned>& a) { a.size = a.rows = a.cols = a.ld = 0; }

} // namespace

int neighbours_of(const dense2D<unsigned>& in, dense2D<unsigned>& neighbours) noexcept {
  // A shallow copy keeps the input readable when `neighbours` is the very
  // same array; it is read whole before `neighbours` is written.
  const dense2D<unsigned> conn = in;
  clear(neighbours);
  const unsigned rows = conn.rows, n = conn.cols;
  if (rows * std::uint64_t(n) == 0) return 0;
  if (rows != 3 && rows != 4) return -1;
  std::uint64_t n_sides = 0;
  for (unsigned j = 0; j < n; ++j) {
    const unsigned* c = conn.column(j);
    if (c[0] == null_id || c[1] == null_id || c[2] == null_id) return -1;
    n_sides += rows == 4 && c[3] != null_id ? 4 : 3;
  }
  try {
    scratch<side> sides, spare;
    sides.reserve(n_sides);
    for (unsigned j = 0; j < n; ++j) {
      const unsigned* c = conn.column(j);
      const bool quad = rows == 4 && c[3] != null_id;
      for (unsigned s = 0; s < (quad ? 4u : 3u); ++s) {
        // A triangle's slot s looks across the edge opposite corner s, a
        // quadrangle's across the edge from corner s to s + 1.
        const unsigned a = quad ? c[s] : c[(s + 1) % 3], b = quad ? c[(s + 1) % 4] : c[(s + 2) % 3];
        const std::uint64_t lo = a < b ? a : b, hi = a < b ? b : a;
        sides.push_back({lo << 32 | hi, std::uint64_t(j) * rows + s});
      }
    }
    radix_sort(sides, spare);
    if (!neighbours.resize(rows, n, null_id)) {
      clear(neighbours);
      return -199;
    }
    int non_manifold = 0;
    for (std::size_t k = 0; k < sides.size();) {
      std::size_t end = k + 1;
      while (end < sides.size() && sides[end].key == sides[k].key)
        ++end;
      const std::uint64_t p = sides[k].slot, q = sides[end - 1].slot;
      // Two sides of one element on one edge are no neighbours either.
      if (end - k == 2 && p / rows != q / rows) {
        neighbours(p % rows, p / rows) = static_cast<unsigned>(q / rows);
        neighbours(q % rows, q / rows) = static_cast<unsigned>(p / rows);
      } else if (end - k >= 2) {
        ++non_manifold;
      }
      k = end;
    }
    return non_manifold;
  } catch (const std::bad_alloc&) {
    clear(neighbours);
    return -199;
  }
}

} // namespace extras
} // namespace tesskit2d
} // namespace kelm
