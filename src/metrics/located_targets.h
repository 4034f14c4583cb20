#pragma once
// Target nodes located in a background mesh in blocks, for the metric
// transfer: the same search and the same walks as one `locate` per target,
// arranged so that the memory a block needs is on its way before it is read.

#include "interpolation/point_locator.h"

namespace kelm {
namespace tesskit2d {

/// Runs through `targets` (`size` and `operator[]`) in order. For each ID n
/// for which `take(n)` holds at its turn, locates its point (coordinates of
/// column n) with `tolerance` and the ball fallback, and calls
/// `visit(n, point, e)` with the element found, or `null_id` when none was.
/// Returns 0, or `status::out_of_memory` when a walk's fallback could not
/// get its working space (the targets before it have been visited).
///
/// Targets go through in blocks. The quick tree searches of a block are
/// independent of each other and of the walks, so they run first, their
/// descents stepped in turns: while one target's next cell comes from
/// memory, the others' are read; the cells, nodes and start elements that
/// the block will need are asked for ahead the same way. The walks then run
/// one target after the other, in order, as the edge picker's draws must,
/// each from the start element that `locate`'s own quick search would give.
/// `take` is asked again at each target's turn, so a visit may change the
/// answer for a later target of the same block (a repeated ID).
template <element_type Kind, class Targets, class Take, class Visit>
int locate_targets(point_locator& locator, edge_picker& picker, const Targets& targets, double tolerance, Take take,
                   Visit visit) noexcept {
  constexpr unsigned block = 16;
  struct pending {
    bool searched; // the descent reached its leaf
    bool descending;
    unsigned start; // the walk's first element, or null_id for no walk
    double point[2];
    unsigned grid[2];
    node_quadtree::descent at;
  };
  const dense2D<double>& coords = *locator.coords;
  const dense2D<unsigned>& conn = *locator.conn;
  const dense1D<unsigned, 8>& ancestors = *locator.ancestors;
  node_quadtree& tree = locator.tree;
  const bool searchable = tree.n_points != 0 && tree.cells.cols >= 4;
  const unsigned n_targets = targets.size, n_elements = conn.cols;
  pending queue[block];
  for (unsigned first = 0; first < n_targets; first += block) {
    const unsigned count = n_targets - first < block ? n_targets - first : block;
    for (unsigned k = first + block; k < first + 2 * block && k < n_targets; ++k)
      __builtin_prefetch(coords.column(targets[k]));
    unsigned descending = 0;
    for (unsigned k = 0; k < count; ++k) {
      pending& q = queue[k];
      const unsigned n = targets[first + k];
      q.start = null_id;
      q.descending = q.searched = false;
      q.point[0] = coords(0, n);
      q.point[1] = coords(1, n);
      if (!searchable || !take(n) || !tree.in_box(q.point)) continue;
      tree.to_grid(q.point, q.grid);
      q.at = node_quadtree::descent();
      q.descending = true;
      ++descending;
    }
    while (descending != 0) {
      descending = 0;
      for (unsigned k = 0; k < count; ++k) {
        pending& q = queue[k];
        if (!q.descending) continue;
        if (tree.descend(q.at, q.grid)) {
          __builtin_prefetch(tree.cell_at(q.at.cell));
          ++descending;
        } else {
          q.descending = false;
          q.searched = true;
        }
      }
    }
    for (unsigned k = 0; k < count; ++k)
      if (queue[k].searched) {
        const unsigned* leaf = tree.cell_at(queue[k].at.cell);
        for (unsigned r = 1; r <= leaf[0]; ++r) {
          __builtin_prefetch(coords.column(leaf[r]));
          __builtin_prefetch(ancestors.begin() + leaf[r]);
        }
      }
    for (unsigned k = 0; k < count; ++k) {
      pending& q = queue[k];
      if (!q.searched) continue;
      unsigned best, range_min[2], range_max[2];
      bool done;
      double d2 = max_double;
      tree.finish_candidate(q.at, q.point, d2, best, q.grid, range_min, range_max, done, ancestors);
      q.start = best == null_id ? null_id : ancestors[best];
      if (q.start < n_elements) {
        const unsigned* nodes = conn.column(q.start);
        __builtin_prefetch(nodes);
        __builtin_prefetch(locator.neighbours->column(q.start));
        __builtin_prefetch(coords.column(nodes[0]));
      }
    }
    for (unsigned k = 0; k < count; ++k) {
      pending& q = queue[k];
      const unsigned n = targets[first + k];
      if (!take(n)) continue;
      unsigned e = q.start;
      // A target skipped by the first pass (taken only now) gets the search
      // that `locate` makes from null_id.
      if (!q.searched) e = null_id;
      if (e != null_id || !q.searched) {
        if (locator.locate<Kind>(q.point, e, tolerance, true, picker)) {
          visit(n, q.point, e);
          continue;
        }
      }
      if (locator.out_of_memory) return status::out_of_memory;
      visit(n, q.point, null_id);
    }
  }
  return status::ok;
}

} // namespace tesskit2d
} // namespace kelm
