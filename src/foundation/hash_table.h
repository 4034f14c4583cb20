#pragma once
// The chained hash table behind every set and map of node IDs and edges.

#include <cstdint>
#include <type_traits>
#include <utility>

#include "foundation/edge2.h"
#include "foundation/primes.h"
#include "foundation/triad.h"
#include "treisoma/ptr.h"
#include "treisoma/vector_num.h"

namespace kelm {
namespace tesskit2d {

/// A chained hash table whose records all live in one growing buffer: the
/// bucket heads first, overflow records appended behind them in order of
/// creation. Chains run forward in storage and are linked by distances, so
/// the buffer grows by a plain copy and no key costs an allocation.
///
/// `Record` is a `triad` whose first member holds the key (a plain
/// `unsigned`, an `edge2`, or a `pair` of key and mapped value). A record is
/// live when its `stamp` equals the table's; fresh heads have stamp 0 and
/// the table starts at 1, so they read as empty. There is no erase: a table
/// is emptied by `initialise`.
///
/// Positions are record indices into `records`; `end()` is the position that
/// means "absent". A position stays valid while the table is not rehashed,
/// but a record reference does not survive an insertion, which can move the
/// storage.
template <class Record> class hash_table {
public:
  using storage = vector_num<Record, 8>;
  using key_type = std::decay_t<decltype(key_of(std::declval<const Record&>().first))>;

  /// Result of `insert_checked`: the record's position (`null` when the
  /// table could not be enlarged) and whether the key was new.
  struct insertion {
    unsigned position;
    bool inserted;
  };
  static constexpr unsigned null = 0xFFFFFFFFu;
  /// The bucket count a table is made with, and the fewest it ever has.
  static constexpr unsigned default_buckets = 23;

  /// An empty table sized for `n` buckets. A failed sizing is not reported:
  /// the table then has no buckets, and callers test the `reserve` or
  /// `rehash` that they make before inserting.
  explicit hash_table(unsigned n) : records(new storage) { initialise(n, n); }
  hash_table(const hash_table&) = delete;
  hash_table& operator=(const hash_table&) = delete;

  /// Empties the table and gives it at least `n_requested` buckets
  /// (`default_buckets` at the least, rounded up to `prime_table`, unless it already has exactly
  /// that many), with room for about n_expected^2 / (n_expected + buckets)
  /// overflow records. False when memory runs out; the table is then empty
  /// of live keys but keeps its old storage and bucket count.
  bool initialise(unsigned n_expected, unsigned n_requested) noexcept {
    unsigned b = n_requested < default_buckets ? default_buckets : n_requested;
    n_live = 0;
    stamp = 1;
    if (b != n_buckets) b = prime_at_least(b);
    const double ne = n_expected;
    const unsigned extra = static_cast<unsigned>(ne / (ne + b) * ne);
    const std::uint64_t total = std::uint64_t(b) + extra;
    if (total + base > 0xFFFFFFFFu) return false;
    // Slots that growth gives fresh storage already hold the default record,
    // so only the kept ones need rewriting as empty heads.
    unsigned dirty = b;
    if (records->capacity - base < total) {
      records->__grow(static_cast<unsigned>(base + total), base + used, 1);
      if (records->capacity - base < total) return false;
      dirty = used < b ? used : b;
    }
    n_buckets = b;
    used = b;
    set_divisor();
    Record* d = records->data + base;
    for (unsigned i = 0; i < dirty; ++i)
      d[i] = Record();
    return true;
  }

  /// Inserts `record` under `hash` without the load check. When the key is
  /// present its record is returned and the stored value stays: the first
  /// insertion wins. Otherwise the first dead record met along the chain is
  /// reused, or a new record is appended to the storage. If the storage
  /// cannot grow, the chain's last record is returned and `n_live` is
  /// unchanged, which is how a caller can tell.
  unsigned insert(unsigned hash, const Record& record) noexcept {
    bool created;
    unsigned last = null;
    const unsigned at = place(hash, record, created, last);
    return at == null ? last : at;
  }

  /// Inserts `record` by its key's hash. Past a load of 2 keys per bucket
  /// the table is first rebuilt with about one bucket per key; if that
  /// fails, the result is (`null`, false).
  insertion insert_checked(const Record& record) noexcept {
    return insert_checked(key_hash(key_of(record.first)), record);
  }

  /// As above, with the key's hash already computed by a caller that hashed
  /// its keys ahead to prefetch their buckets.
  insertion insert_checked(unsigned hash, const Record& record) noexcept {
    if (!make_room()) return {null, false};
    bool created;
    unsigned last = null;
    const unsigned at = place(hash, record, created, last);
    return {at == null ? last : at, created};
  }

  /// `insert_checked` for the hottest loops: the live record of the key,
  /// found or stored now (then `created` is true), or null when the table
  /// could not be enlarged. The reference is good until the next insertion.
  Record* find_or_insert(unsigned hash, const Record& record, bool& created) noexcept {
    created = false;
    if (!make_room()) return nullptr;
    unsigned last;
    const unsigned at = place(hash, record, created, last);
    return at == null ? nullptr : records->data + at;
  }

  /// The position of the live record with key `key` (either orientation for
  /// an edge), or `end()`.
  unsigned find(const key_type& key) const noexcept {
    if (n_buckets == 0) return end();
    unsigned at = base + bucket_of(key_hash(key));
    const Record* d = records->data;
    for (;;) {
      const Record& r = d[at];
      if (r.stamp == stamp && same_key(key_of(r.first), key)) return at;
      if (r.next == 0) return end();
      at += r.next;
    }
  }

  /// Makes sure the table has at least `n` buckets, rebuilding it if not.
  /// False when memory ran out.
  bool reserve(unsigned n) noexcept { return n_buckets >= n || rehash(prime_at_least(n)); }

  /// Rebuilds the table with `m` buckets (an entry of `prime_table`, 23 or
  /// more), reinserting the live records in slot order. False, with the old
  /// table standing, when the new storage cannot be had; also false when a
  /// key was lost while reinserting.
  bool rehash(unsigned m) noexcept {
    hash_table fresh(m);
    if (fresh.n_buckets != m) return false;
    if (n_live != 0) {
      const Record* d = records->data;
      for (unsigned at = base, stop = base + used; at < stop; ++at)
        if (d[at].stamp == stamp) fresh.insert(key_hash(key_of(d[at].first)), d[at]);
    }
    const bool kept = fresh.n_live == n_live;
    records = std::move(fresh.records);
    used = fresh.used;
    base = fresh.base;
    n_buckets = fresh.n_buckets;
    stamp = fresh.stamp;
    n_live = fresh.n_live;
    divisor = fresh.divisor;
    return kept;
  }

  /// Calls `visit(record, position)` for each live record in slot order:
  /// the bucket heads, then the overflow records in order of creation. The
  /// order depends only on the sequence of insertions.
  template <class Visit> void for_each_live(Visit&& visit) const {
    const Record* d = records->data;
    for (unsigned at = base, stop = base + used; at < stop; ++at)
      if (d[at].stamp == stamp) visit(d[at], at);
  }

  Record& operator[](unsigned position) const noexcept { return records->data[position]; }
  unsigned end() const noexcept { return base + used; }

  /// The bucket of a hash value, hash mod n_buckets, by a multiplication
  /// instead of a division: the tables are probed once per key in the
  /// hottest loops of the conversions.
  unsigned bucket_of(unsigned hash) const noexcept {
    const std::uint64_t low = divisor * hash;
    return static_cast<unsigned>((static_cast<unsigned __int128>(low) * n_buckets) >> 64);
  }

  /// Starts loading the head of the bucket of `hash` into the cache, for
  /// loops that know their next keys ahead.
  void prefetch(unsigned hash) const noexcept { __builtin_prefetch(records->data + base + bucket_of(hash), 1); }

  Ptr<storage> records;
  unsigned used = 0;
  unsigned base = 0;
  unsigned n_buckets = 0;
  unsigned stamp = 0;
  unsigned n_live = 0;

private:
  // The load check of the checked insertions: past 2 keys per bucket, a
  // rebuild with about one bucket per key. False when it failed.
  bool make_room() noexcept {
    return std::uint64_t(n_live) + 1 <= 2 * std::uint64_t(n_buckets) || rehash(prime_at_least(n_live + 1));
  }

  // The chain walk behind every insertion: the position of the key's live
  // record, found or stored now (`created`), or `null` when the storage
  // cannot grow, with `last` on the chain's last record.
  unsigned place(unsigned hash, const Record& record, bool& created, unsigned& last) noexcept {
    const auto key = key_of(record.first);
    const unsigned live = stamp;
    unsigned at = base + bucket_of(hash), free = null;
    Record* d = records->data;
    created = false;
    for (;;) {
      const Record& r = d[at];
      if (r.stamp == live) {
        if (same_key(key_of(r.first), key)) return at;
      } else if (free == null) {
        free = at;
      }
      if (r.next == 0) break;
      at += r.next;
    }
    last = at;
    if (free != null) {
      d[free].first = record.first;
      d[free].stamp = live;
      ++n_live;
      created = true;
      return free;
    }
    const unsigned slot = base + used;
    if (slot >= records->capacity && !records->__grow(slot + 1, slot, 2)) return null;
    d = records->data;
    d[slot].first = record.first;
    d[slot].stamp = live;
    d[slot].next = 0;
    d[at].next = slot - at;
    ++used;
    ++n_live;
    created = true;
    return slot;
  }

  // ceil(2^64 / n_buckets), for the exact remainder of a 32-bit value by a
  // multiplication (Lemire, Kaser and Kurz, 2019).
  void set_divisor() noexcept { divisor = n_buckets ? ~std::uint64_t(0) / n_buckets + 1 : 0; }

  std::uint64_t divisor = 0;
};

} // namespace tesskit2d
} // namespace kelm
