#pragma once
// The random choice of the first edge that a walk tests.

#include <random>

namespace kelm {
namespace tesskit2d {

/// Two-bit draws from a Mersenne twister seeded with 1, so that every walk
/// repeats exactly from run to run. Each 32-bit output gives 16 draws, low
/// bits first.
///
/// Randomness is what keeps a walk from circling: when several edges of an
/// element separate it from the point, always testing them in one order can
/// send a walk round a loop of elements for ever.
class edge_picker {
public:
  /// A draw from 0 to 3.
  unsigned draw() noexcept {
    if (draws_left == 0) {
      draws_left = draws_per_word;
      word = static_cast<unsigned>(engine());
    }
    const unsigned u = word & mask;
    --draws_left;
    word >>= bits;
    return u;
  }

  unsigned mask = 3;
  unsigned bits = 2;
  unsigned draws_per_word = 16;
  unsigned draws_left = 0;
  unsigned word = 0;
  std::mt19937 engine{1u};
};

} // namespace tesskit2d
} // namespace kelm
