#include <algorithm>
#include <cstddef>
#include <deque>
#include <vector>

#include "foundation/element_conventions.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/orientation.h"
#include "topology/flip_permutations.h"

namespace kelm {
namespace tesskit2d {
namespace {

enum class direction { opposite, same, mismatch };

// Where the shared edge a -> b of the reached-from element runs in element
// m, given the rows of its nodes there (-1 for a node m lacks). The
// successor of -1 is 0, so one missing node next to a node in row 0 still
// decides: the walk tolerates neighbours that share only one node.
direction compare(int ia, int ib, int corners) noexcept {
  if (ib == (ia + 1) % corners) return direction::same;
  if (ia == (ib + 1) % corners) return direction::opposite;
  return direction::mismatch;
}

int row_of(const unsigned* column, int corners, unsigned node) noexcept {
  for (int r = 0; r < corners; ++r)
    if (column[r] == node) return r;
  return -1;
}

direction test_edge(const unsigned* m, int corners, unsigned a, unsigned b) noexcept {
  return compare(row_of(m, corners, a), row_of(m, corners, b), corners);
}

// Triangles only (3 rows): edge e runs from row e + 1 to row e + 2.
struct triangle_mesh {
  direction test(const dense2D<unsigned>& conn, unsigned c, unsigned e, unsigned m) const noexcept {
    const unsigned* cc = conn.column(c);
    return test_edge(conn.column(m), 3, cc[(e + 1) % 3], cc[(e + 2) % 3]);
  }
  void flip(dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, unsigned m) const noexcept {
    flip_corners(conn.column(m));
    flip_triangle_slots(neighbours.column(m));
  }
};

// Triangles and quadrangles told apart by row 3. A triangle's fourth slot
// has no edge, so an element listed there is a mismatch.
struct mixed_mesh {
  direction test(const dense2D<unsigned>& conn, unsigned c, unsigned e, unsigned m) const noexcept {
    const unsigned *cc = conn.column(c), *mm = conn.column(m);
    unsigned a = null_id, b = null_id;
    if (cc[3] != null_id) {
      a = cc[e];
      b = cc[(e + 1) % 4];
    } else if (e < 3) {
      a = cc[(e + 1) % 3];
      b = cc[(e + 2) % 3];
    }
    return test_edge(mm, mm[3] == null_id ? 3 : 4, a, b);
  }
  void flip(dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, unsigned m) const noexcept {
    unsigned* mm = conn.column(m);
    const bool triangle = mm[3] == null_id;
    flip_corners(mm);
    if (triangle)
      flip_triangle_slots(neighbours.column(m));
    else
      flip_quadrangle_slots(neighbours.column(m));
  }
};

struct walk_state {
  std::vector<bool> visited;
  std::deque<unsigned> queue;
  int flips = 0;
};

// Queue entries looked ahead. On a mesh whose numbering scatters neighbours
// across memory every element the walk reaches is a cache miss, and so is
// each of its neighbours' columns; the walk requests the columns of the
// element `walk_ahead` places further down the queue and, for the one half
// as far, the columns of its neighbours, so that those misses overlap.
constexpr std::size_t walk_ahead = 16;

// Inlined: a function whose only effect is a prefetch reads as dead code to
// the optimiser.
[[gnu::always_inline]] inline void prefetch_queued(const dense2D<unsigned>& conn, const dense2D<unsigned>& neighbours,
                                                   const std::deque<unsigned>& queue) noexcept {
  const unsigned n = conn.cols;
  if (queue.size() > walk_ahead) {
    const unsigned far = queue[walk_ahead];
    __builtin_prefetch(conn.column(far));
    __builtin_prefetch(neighbours.column(far));
  }
  if (queue.size() > walk_ahead / 2) {
    // Each neighbour's corners are read to compare the shared edge, and its
    // slots are rewritten if it is flipped.
    const unsigned* near = neighbours.column(queue[walk_ahead / 2]);
    for (unsigned e = 0; e < 3; ++e) {
      const unsigned m = std::min(near[e], n - 1);
      __builtin_prefetch(conn.column(m));
      __builtin_prefetch(neighbours.column(m));
    }
    if (neighbours.rows == 4) {
      const unsigned m = std::min(near[3], n - 1);
      __builtin_prefetch(conn.column(m));
      __builtin_prefetch(neighbours.column(m));
    }
  }
}

// Breadth first from `start`. An element may wait in the queue several
// times and is tested (and possibly flipped) by each expanded neighbour
// until its own first removal expands it; from then on it is fixed.
template <class Mesh>
void traverse(const Mesh& mesh, dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, unsigned start, walk_state& w) {
  const unsigned n = conn.cols, slots = neighbours.rows;
  if (start >= n) return;
  w.queue.push_back(start);
  while (!w.queue.empty()) {
    prefetch_queued(conn, neighbours, w.queue);
    const unsigned c = w.queue.front();
    w.queue.pop_front();
    if (w.visited[c]) continue;
    w.visited[c] = true;
    bool go_on = true;
    for (unsigned e = 0; e < slots && go_on; ++e) {
      const unsigned m = neighbours(e, c);
      if (m >= n || w.visited[m]) continue;
      switch (mesh.test(conn, c, e, m)) {
      case direction::same:
        mesh.flip(conn, neighbours, m);
        ++w.flips;
        break;
      case direction::mismatch: w.flips = -2; break;
      case direction::opposite: break;
      }
      // After a mismatch the count stays negative until enough flips
      // follow, and meanwhile each element stops after its first test.
      go_on = w.flips >= 0;
      w.queue.push_back(m);
    }
  }
}

template <class Mesh>
int reorient(const Mesh& mesh, dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, unsigned seed, int all_parts) {
  const unsigned n = conn.cols;
  walk_state w;
  w.visited.assign(n, false);
  // Further parts are found only by scanning upward from the seed, so a
  // part lying wholly below it is never reached.
  unsigned start = seed;
  for (;;) {
    while (start < n && w.visited[start])
      ++start;
    traverse(mesh, conn, neighbours, start, w);
    if (!all_parts || start >= n) break;
  }
  return w.flips;
}

} // namespace

int mesh_reorient(dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, unsigned seed, int all_parts) {
  const unsigned n = conn.cols;
  if (n == 0) return 0;
  // The shared ID check knows a mixed array only in its 4-, 8- and 9-row
  // shapes; a triangle array is checked as such, with the same effect.
  if (!kelm::tesskit::check_IDs(conn, surface_kind(conn.rows), 0xFFFFFFFFu)) return -1;
  if (neighbours.rows != conn.rows || neighbours.cols != n) return -2;
  if (seed >= n) return -3;
  if (conn.rows == 3) return reorient(triangle_mesh{}, conn, neighbours, seed, all_parts);
  return reorient(mixed_mesh{}, conn, neighbours, seed, all_parts);
}

} // namespace tesskit2d
} // namespace kelm
