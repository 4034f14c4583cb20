#include <algorithm>
#include <optional>

#include "foundation/separate_input.h"
#include "foundation/stamped_set.h"
#include "foundation/status.h"
#include "tesskit2d/connectivity.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The corners and edge slots of one element seen from one of its nodes. A
// triangle's slot s lies across the edge opposite corner s, a quadrangle's
// across the edge from corner s to s + 1.
struct corner_of {
  unsigned c; // the first row holding the node, or `null_id`
  bool quadrangle;

  // The slot of the turn: across the edge through the node on the far side
  // of the corner, which in a counter-clockwise mesh turns counter-clockwise
  // round the node.
  unsigned turn() const noexcept { return quadrangle ? (c + 3) % 4 : (c + 1) % 3; }
  // The slot of the other edge through the node: the clockwise side.
  unsigned back() const noexcept { return quadrangle ? c : (c + 2) % 3; }
};

class ring_walker {
public:
  ring_walker(const dense2D<unsigned>& conn, const dense2D<unsigned>& neighbours, stamped_set& seen,
              dense1D<unsigned>& stack, dense1D<unsigned>& elements) noexcept
      : conn_(conn), neighbours_(neighbours), seen_(seen), stack_(stack), elements_(elements), mixed_(conn.rows == 4) {}

  enum outcome { complete, stopped, endless };

  // Appends the ring of `node` from element `e0` to `elements`: a closed
  // ring from `e0` in the turn direction, or a fan from its clockwise end.
  // `stopped` when an element on the way does not hold the node (the ring
  // so far stays) or memory ran out (nothing of the ring stays); `endless`
  // when the rotation neither closes nor meets a free edge.
  outcome walk(unsigned node, unsigned e0) noexcept {
    const unsigned start = elements_.size, E = conn_.cols;
    unsigned e = e0;
    for (unsigned steps = 0;; ++steps) {
      if (steps == E) return endless; // every element met once and still open
      if (!elements_.push_back(e)) return out_of_memory(start);
      const corner_of at = corner(e, node);
      if (at.c == null_id) return stopped;
      e = neighbours_(at.turn(), e);
      if (e == e0) return complete;
      if (e >= E) break; // a free edge: the walk has seen one side only
    }
    return fan(node, elements_[elements_.size - 1], start);
  }

private:
  corner_of corner(unsigned e, unsigned node) const noexcept {
    const unsigned* col = conn_.column(e);
    const bool quadrangle = mixed_ && col[3] != null_id;
    const unsigned n = quadrangle ? 4 : 3;
    for (unsigned r = 0; r < n; ++r)
      if (col[r] == node) return {r, quadrangle};
    return {null_id, quadrangle};
  }

  // The fan walk from its free end `s`: depth first over both slots of each
  // element that touch the node, the clockwise one pushed first, so that it
  // runs back across the fan against the turn; the result is then reversed.
  // Going through both slots also finds elements that a non-manifold or
  // inconsistent table hides from a plain rotation.
  outcome fan(unsigned node, unsigned s, unsigned start) noexcept {
    const unsigned E = conn_.cols;
    elements_.size = start;
    seen_.clear();
    seen_.insert(s);
    stack_.size = 0;
    stack_.push_back(s); // reserved ahead, cannot fail
    outcome result = complete;
    while (stack_.size != 0) {
      const unsigned e = stack_[--stack_.size];
      if (!elements_.push_back(e)) return out_of_memory(start);
      const corner_of at = corner(e, node);
      if (at.c == null_id) {
        result = stopped;
        break;
      }
      for (const unsigned slot : {at.back(), at.turn()}) {
        const unsigned next = neighbours_(slot, e);
        if (next >= E || seen_.contains(next)) continue;
        seen_.insert(next);
        if (!stack_.push_back(next)) return out_of_memory(start);
      }
    }
    std::reverse(elements_.begin() + start, elements_.end());
    return result;
  }

  outcome out_of_memory(unsigned start) noexcept {
    elements_.size = start;
    return stopped;
  }

  const dense2D<unsigned>& conn_;
  const dense2D<unsigned>& neighbours_;
  stamped_set& seen_;
  dense1D<unsigned>& stack_;
  dense1D<unsigned>& elements_;
  const bool mixed_;
};

// Nodes looked ahead by the walk over the nodes. A ring is a chain of
// dependent reads, each element found in the neighbours of the one before;
// on a numbering that scatters elements each read misses the cache. The
// walk requests the columns of the ancestor of the node `ring_ahead` * 2
// places ahead, and of the neighbours of the ancestor `ring_ahead` places
// ahead (by then in the cache), so that most of each ring is on its way
// before the ring is walked. Inlined and written out: a function or loop
// whose only effect is a prefetch reads as dead code to the optimiser.
constexpr unsigned ring_ahead = 8;

[[gnu::always_inline]] inline void prefetch_element(const dense2D<unsigned>& conn, const dense2D<unsigned>& neighbours,
                                                    const stamped_set& seen, unsigned e) noexcept {
  __builtin_prefetch(conn.column(e));
  __builtin_prefetch(neighbours.column(e));
  __builtin_prefetch(seen.marks.begin() + e);
}

// The neighbours of element e (3 or 4 slots), each clamped to an element.
[[gnu::always_inline]] inline unsigned next_elements(const dense2D<unsigned>& neighbours, unsigned e,
                                                     unsigned* next) noexcept {
  const unsigned E = neighbours.cols, k = neighbours.rows == 4 ? 4 : 3;
  const unsigned* slots = neighbours.column(e);
  for (unsigned s = 0; s < k; ++s)
    next[s] = std::min(slots[s], E - 1);
  return k;
}

[[gnu::always_inline]] inline void prefetch_rings(const dense2D<unsigned>& conn, const dense2D<unsigned>& neighbours,
                                                  const stamped_set& seen, const unsigned* ancestor, unsigned n_nodes,
                                                  unsigned i) noexcept {
  const unsigned E = conn.cols;
  if (i + 3 * ring_ahead < n_nodes && ancestor[i + 3 * ring_ahead] < E)
    prefetch_element(conn, neighbours, seen, ancestor[i + 3 * ring_ahead]);
  unsigned first[4], second[4];
  if (i + 2 * ring_ahead < n_nodes && ancestor[i + 2 * ring_ahead] < E) {
    const unsigned k = next_elements(neighbours, ancestor[i + 2 * ring_ahead], first);
    prefetch_element(conn, neighbours, seen, first[0]);
    prefetch_element(conn, neighbours, seen, first[1]);
    prefetch_element(conn, neighbours, seen, first[2]);
    if (k == 4) prefetch_element(conn, neighbours, seen, first[3]);
  }
  if (i + ring_ahead >= n_nodes || ancestor[i + ring_ahead] >= E) return;
  // The ring's far side: the neighbours of the ancestor's neighbours.
  const unsigned k = next_elements(neighbours, ancestor[i + ring_ahead], first);
  for (unsigned s = 0; s < k; ++s) {
    const unsigned kk = next_elements(neighbours, first[s], second);
    prefetch_element(conn, neighbours, seen, second[0]);
    prefetch_element(conn, neighbours, seen, second[1]);
    prefetch_element(conn, neighbours, seen, second[2]);
    if (kk == 4) prefetch_element(conn, neighbours, seen, second[3]);
  }
}

// The ancestors check: an element ID below the element count, or `null_id`
// for a node that no element uses (meshers leave such nodes).
bool ancestors_valid(const dense1D<unsigned>& ancestors, unsigned n_elements) noexcept {
  const unsigned* a = ancestors.begin();
  for (unsigned i = 0; i < ancestors.size; ++i)
    if (a[i] >= n_elements && a[i] != null_id) return false;
  return true;
}

} // namespace

int get_connected_elements(const dense2D<unsigned>& given_conn, const dense2D<unsigned>& given_neighbours,
                           const dense1D<unsigned>& given_ancestors, dense1D<unsigned>& offsets,
                           dense1D<unsigned>& elements) {
  // The checks read the inputs before the outputs are emptied: an output
  // may be the very array of an input, which emptying would empty too.
  int refused = 0;
  if (given_conn.rows != 3 && given_conn.rows != 4)
    refused = -1;
  else if (given_neighbours.rows != given_conn.rows || given_neighbours.cols != given_conn.cols)
    refused = -2;
  else if (!ancestors_valid(given_ancestors, given_conn.cols))
    refused = -3;
  else if (rooms_overlap(offsets, elements))
    refused = -4;
  // Inputs that an output can meet are read from private copies.
  std::optional<separate_input<dense2D<unsigned>>> conn_read, neighbours_read;
  std::optional<separate_input<dense1D<unsigned>>> ancestors_read;
  if (refused == 0) {
    conn_read.emplace(given_conn, offsets, elements);
    neighbours_read.emplace(given_neighbours, offsets, elements);
    ancestors_read.emplace(given_ancestors, offsets, elements);
  }
  offsets.size = 0;
  elements.size = 0;
  if (refused != 0) return refused;
  if (!conn_read->ok() || !neighbours_read->ok() || !ancestors_read->ok()) return status::out_of_memory;
  const dense2D<unsigned>& conn = conn_read->get();
  const dense2D<unsigned>& neighbours = neighbours_read->get();
  const dense1D<unsigned>& ancestors = ancestors_read->get();
  const unsigned n_nodes = ancestors.size, E = conn.cols;

  // Six elements per node is the usual valence. A reservation whose size
  // does not fit 32 bits cannot be had either.
  const unsigned long long usual = 6ull * n_nodes;
  stamped_set seen;
  dense1D<unsigned> stack;
  if (n_nodes == null_id || !offsets.reserve(n_nodes + 1) || usual > 0xFFFFFFFFu ||
      !elements.reserve(unsigned(usual)) || !seen.resize(E) || !stack.reserve(16))
    return status::out_of_memory;
  seen.clear();

  ring_walker walker(conn, neighbours, seen, stack, elements);
  const unsigned* a = ancestors.begin();
  bool scattered = false;
  for (unsigned i = 0; i < n_nodes; ++i) {
    // Probed every 64 nodes: where ancestors 64 nodes apart lie within a
    // few thousand elements, the rings are in the cache already.
    if (i % 64 == 0) {
      const unsigned here = a[i], later = i + 64 < n_nodes ? a[i + 64] : here;
      scattered = here < E && later < E && (here > later ? here - later : later - here) > 4096;
    }
    if (scattered) prefetch_rings(conn, neighbours, seen, a, n_nodes, i);
    offsets.push_back(elements.size);
    if (a[i] == null_id) continue;
    const auto outcome = walker.walk(i, a[i]);
    if (outcome == ring_walker::endless) {
      offsets.size = 0;
      elements.size = 0;
      return -2;
    }
    if (outcome == ring_walker::stopped) break;
  }
  offsets.push_back(elements.size);
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
