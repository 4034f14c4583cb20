#pragma once
// A list of distinct IDs in first-seen order, with a constant-time lookup of
// an ID's position.

#include "foundation/hash_table.h"
#include "treisoma/dense1D.h"
#include "treisoma/ref_counted.h"

namespace kelm {
namespace tesskit2d {

/// Key hash of `vector_fast`: the table's own `key_hash`, so that insertion
/// and lookup hash alike by construction.
template <class T> struct hash;
template <> struct hash<unsigned> {
  unsigned operator()(unsigned id) const noexcept { return key_hash(id); }
};

/// Order of `vector_fast`'s IDs. No operation uses it.
template <class T> struct less;
template <> struct less<unsigned> {
  bool operator()(unsigned x, unsigned y) const noexcept { return x < y; }
};

/// The distinct IDs pushed so far, in order of first appearance. The object
/// is the list itself (`size`, `operator[]`, `buffer`, `offset` of its
/// `dense1D` base); `table` maps each ID to its position in the list.
///
/// \code
///   id_list used;                  // default_buckets buckets
///   used.table.reserve(n);         // once, before a loop of pushes
///   used.push_back_unique(5); used.push_back_unique(3); used.push_back_unique(5);
///   // used: 5, 3; used.position_of(3) == 1; used.position_of(4) == null_id
/// \endcode
///
/// To empty it for reuse, set `size` to 0 and `table.initialise(table.default_buckets, table.default_buckets)`.
template <class T, class H, class L> class vector_fast : public kelm::ref_counted, public dense1D<T, 8> {
public:
  using record = triad<pair<T, unsigned>, unsigned, unsigned>;

  vector_fast() : table(hash_table<record>::default_buckets) {}
  vector_fast(const vector_fast&) = delete;
  vector_fast& operator=(const vector_fast&) = delete;

  /// Appends `id` unless it is already in the list. Nothing is reported: if
  /// memory runs out the ID is dropped (when the table cannot be rebuilt) or
  /// known to the table but missing from the list (when the list cannot
  /// grow). Callers that must not lose IDs reserve the table ahead.
  void push_back_unique(T id) noexcept {
    if (std::uint64_t(table.n_live) + 1 > 2 * std::uint64_t(table.n_buckets) &&
        !table.rehash(prime_at_least(table.n_live + 1)))
      return;
    const unsigned before = table.n_live;
    table.insert(H()(id), record{{id, this->size}, 0, 0});
    if (table.n_live != before) this->push_back(id);
  }

  /// Position of `id` in the list, or `null_id` when it was never pushed.
  unsigned position_of(T id) const noexcept {
    const unsigned at = table.find(id);
    return at == table.end() ? 0xFFFFFFFFu : table[at].first.second;
  }

  hash_table<record> table;
};

/// The list of distinct node or element IDs that the families build.
using id_list = vector_fast<unsigned, hash<unsigned>, less<unsigned>>;

} // namespace tesskit2d
} // namespace kelm
