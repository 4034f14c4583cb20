#pragma once
// Records of the chained hash tables.

namespace kelm {
namespace tesskit2d {

/// A key with its mapped value; the key comes first.
template <class A, class B> struct pair {
  A first{};
  B second{};
};

/// One slot of a chained table: the stored value, the generation in which it
/// was written (`stamp`; the slot is live when it equals the table's), and
/// the distance in slots forward to the next record of its chain (`next`;
/// 0 ends the chain). Distances rather than pointers let the storage move
/// when it grows without any relinking.
template <class F, class S, class N> struct triad {
  F first{};
  S stamp{};
  N next{};
};

/// The key of a map record is its first member.
template <class A, class B> const A& key_of(const pair<A, B>& p) noexcept { return p.first; }

/// Plain IDs are their own keys and hashes.
inline unsigned key_of(unsigned id) noexcept { return id; }
inline unsigned key_hash(unsigned id) noexcept { return id; }
inline bool same_key(unsigned x, unsigned y) noexcept { return x == y; }

} // namespace tesskit2d
} // namespace kelm
