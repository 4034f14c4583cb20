#pragma once
// Bucket counts of the chained hash tables.

namespace kelm {
namespace tesskit2d {

/// The 30 bucket counts a table may have, ascending. Each is a prime close to
/// double the one before, so growing a table by one step roughly halves its
/// load.
extern const unsigned prime_table[30];

/// The smallest entry of `prime_table` not below `n`; the last entry,
/// 4294967291, when `n` exceeds every entry.
unsigned prime_at_least(unsigned n) noexcept;

} // namespace tesskit2d
} // namespace kelm
