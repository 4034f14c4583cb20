#pragma once
// The key of an edge: two node IDs compared without regard to order.

namespace kelm {
namespace elfes {

/// An edge as its two end nodes, in the order given. The pair is not sorted:
/// a table keeps the orientation in which an edge was first inserted, and
/// its users read the stored order to tell which way an element runs along
/// the edge. The default is (null_id, null_id).
struct edge2 {
  edge2() noexcept = default;
  edge2(unsigned first, unsigned second) noexcept : a(first), b(second) {}

  unsigned a = 0xFFFFFFFFu;
  unsigned b = 0xFFFFFFFFu;
};

/// Unordered equality: (a, b) matches (a, b) and (b, a), so both elements
/// of a shared edge find one record.
inline bool same_key(const edge2& x, const edge2& y) noexcept {
  return (x.a == y.a && x.b == y.b) || (x.a == y.b && x.b == y.a);
}

/// True when `x` runs from the second node of `y` to its first.
inline bool reversed(const edge2& x, const edge2& y) noexcept { return x.a == y.b && x.b == y.a; }

/// Hash of an edge: a sum of two independently multiplied terms, modulo
/// 2^32. Being a sum it gives (a, b) and (b, a) the same value, which the
/// unordered equality needs; a running FNV-style hash would not.
inline unsigned key_hash(const edge2& e) noexcept {
  return ((e.a ^ 0x811C9DC5u) * 16777619u) + ((e.b ^ 0x811C9DC5u) * 16777619u);
}

/// An edge record's key is the edge itself.
inline const edge2& key_of(const edge2& e) noexcept { return e; }

} // namespace elfes

namespace tesskit2d {
using elfes::edge2;
} // namespace tesskit2d
} // namespace kelm
