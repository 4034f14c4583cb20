#pragma once
// A set of IDs in a fixed range whose clear costs nothing per entry.

#include "treisoma/dense1D.h"

namespace kelm {
namespace tesskit2d {

/// One mark per possible ID; an ID is in the set when its mark equals the
/// current `stamp`. Clearing starts a new generation instead of touching the
/// marks, except once in 2^32 clears, when the stamp would wrap.
///
/// The set starts at stamp 0 with zero marks, so every ID reads as present
/// until the first `clear()`: call `resize(n)`, then `clear()`, before use.
class stamped_set {
public:
  /// Room for IDs below `n`; new marks are 0. False when memory ran out.
  bool resize(unsigned n) noexcept { return marks.resize(n, 0u); }

  /// Empties the set.
  void clear() noexcept {
    const unsigned s = step;
    step = 1;
    if (s <= 0xFFFFFFFFu - stamp) {
      stamp += s;
      return;
    }
    stamp = 1;
    unsigned* d = marks.begin();
    for (unsigned i = 0; i < marks.size; ++i)
      d[i] = 0;
  }

  bool contains(unsigned id) const noexcept { return marks[id] == stamp; }
  void insert(unsigned id) noexcept { marks[id] = stamp; }

  dense1D<unsigned, 8> marks;
  unsigned stamp = 0;
  unsigned step = 1;
};

} // namespace tesskit2d
} // namespace kelm
