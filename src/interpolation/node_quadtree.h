#pragma once
// The node tree of the interpolation drivers: which background node lies
// nearest to a point.

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// The quadrant of a child at `level` - 1 below a cell at `level`.
inline unsigned quadrant_at(const unsigned grid[2], unsigned level) noexcept {
  const unsigned bit = level - 1;
  return ((grid[0] >> bit) & 1u) | (((grid[1] >> bit) & 1u) << 1);
}

/// A bit-trie of node IDs over a square 32-bit grid laid on the plane. Each
/// level of the tree reads one bit of both grid coordinates, so a cell at
/// level L spans 2^L grid units a side; the root has level 32.
///
/// Cells are the columns of `cells` (4 rows):
/// - row 0 below 4: a leaf; row 0 is its count (0 to 3) and rows 1 to count
///   hold node IDs, ascending;
/// - row 0 of 4 or more: an internal cell; rows 0 to 3 are the IDs of its
///   children by quadrant, `xbit + 2 * ybit`, read from bit L - 1 of the grid
///   coordinates.
/// Cell 0 is the root and cells 1 to 3 stay zero and unused, so every child
/// ID is at least 4 and a child in row 0 is never taken for a count.
///
/// A leaf splits when a fourth node arrives, down to level 0, which cannot
/// split: of more than three nodes on one grid position the first three
/// inserted are kept and the others are dropped. Cells are never given
/// back, so the tree has no free list.
///
/// When `cells` cannot grow, the node that needed the room is not stored,
/// the tree stays consistent (the full leaf stays a leaf) and `out_of_memory`
/// is set; `fill_from_mesh` then stops. Callers report it as -199.
///
/// Queries skip nodes whose `ancestors` entry is `null_id` (or that lie
/// beyond `ancestors`): such a node has no element to offer a walk.
class node_quadtree {
public:
  /// An empty tree over the box from (0, 0) to (1, 1).
  explicit node_quadtree(const dense2D<double>& coords) noexcept;

  /// Drops all cells and makes the root and the three reserved cells, all
  /// zero; `n_points` becomes 0 and `out_of_memory` false. False when even
  /// those cells could not be had (the tree is then unusable, every query
  /// returns nothing, and `out_of_memory` is set).
  bool clear() noexcept;

  /// Clears the tree and lays the grid on the closed box from `lo` to `hi`:
  /// a square centred on the box, a hair (1e-12 relative) larger than its
  /// longer extent, 1e-12 a side for a box of no extent.
  void set_box(const double lo[2], const double hi[2]) noexcept;

  /// Grid coordinates of `point`, truncated toward zero. False when either
  /// coordinate fell off the grid; it is then clamped to 0 or 0xFFFFFFFF (a
  /// NaN gives 0).
  bool to_grid(const double point[2], unsigned grid[2]) const noexcept;

  /// Whether `point` lies in the closed box; a NaN coordinate does not.
  bool in_box(const double point[2]) const noexcept {
    return box_min[0] <= point[0] && point[0] <= box_max[0] && box_min[1] <= point[1] && point[1] <= box_max[1];
  }

  /// Stores node `id`. False when the node lies outside the box, is the
  /// fourth on its grid position, or the cells could not grow.
  bool insert_node(unsigned id) noexcept;

  /// Replaces the tree by one of the distinct nodes of `conn`, inserted in
  /// order of first occurrence (column by column, down each column), over
  /// the box of those nodes. `Kind` is T3 (rows 0 to 2), Q4 (rows 0 to 3) or
  /// MIXED (rows 0 to 2, and row 3 where it is not `null_id`). IDs must be
  /// columns of `coords`. An empty `conn` leaves the default box and an
  /// empty tree. Returns the number of nodes stored.
  template <element_type Kind> unsigned fill_from_mesh(const dense2D<unsigned>& conn) noexcept;

  /// The quick search: a node near `point`, not always the nearest. `grid`
  /// is `to_grid(point)`. `d2` is the squared distance to beat on entry and
  /// to `best` on return; `best` is `null_id` when no node with an element
  /// was found. The range, `cell`, `level` and `quadrant` are left for
  /// `nearest_node`: the part of the grid still worth searching and the
  /// cell already searched. `done` tells that no other node can be nearer.
  void nearest_candidate(const double point[2], double& d2, unsigned& best, const unsigned grid[2],
                         unsigned range_min[2], unsigned range_max[2], unsigned& cell, unsigned& level,
                         unsigned& quadrant, bool& done, const dense1D<unsigned, 8>& ancestors) const noexcept;

  /// Where the quick search stands on its way down: the cell reached, its
  /// level and quadrant, and its parent's.
  struct descent {
    unsigned cell = 0, level = 32, quadrant = 0, parent = 0, parent_quadrant = 0;
  };

  /// One level of the quick search's descent toward the leaf of `grid`;
  /// false, with nothing changed, once `at` is a leaf. Callers that search
  /// for many points at once step their descents in turn, so that the cells
  /// of one are on their way from memory while another is read. The tree
  /// must have its root (`cells.cols` of 4 or more).
  bool descend(descent& at, const unsigned grid[2]) const noexcept {
    const unsigned* c = cell_at(at.cell);
    if (c[0] < 4) return false;
    at.parent = at.cell;
    at.parent_quadrant = at.quadrant;
    at.quadrant = quadrant_at(grid, at.level);
    --at.level;
    at.cell = c[at.quadrant];
    return true;
  }

  /// The quick search from the leaf that `descend` reached: the rest of
  /// `nearest_candidate`, with the same results. `at` ends on the cell from
  /// which the candidate came.
  void finish_candidate(descent& at, const double point[2], double& d2, unsigned& best, const unsigned grid[2],
                        unsigned range_min[2], unsigned range_max[2], bool& done,
                        const dense1D<unsigned, 8>& ancestors) const noexcept;

  /// The exact search: the node with an element nearest to `point`, the
  /// first met among equally near ones, or `null_id` when the tree is empty,
  /// the point lies outside the box, or no node has an element. `d2` as in
  /// `nearest_candidate`.
  unsigned nearest_node(const double point[2], double& d2, const dense1D<unsigned, 8>& ancestors) const noexcept;

  /// Best node of the run `first` to `last`: skips `best` itself and nodes
  /// without an element, and takes a node only when strictly nearer than
  /// `d2`, so a tie stays with the node met first. True when `d2` shrank.
  bool scan_leaf(const unsigned* first, const unsigned* last, const double point[2], double& d2, unsigned& best,
                 const dense1D<unsigned, 8>& ancestors) const noexcept;

  /// Depth-first search of the subtree of `cell` (at `level`, in `quadrant`
  /// of its parent, low corner `prefix`) over the closed grid rectangle
  /// `range_min` to `range_max`, skipping the cell `excluded`. The range
  /// shrinks to the square around the point each time `d2` does; the search
  /// ends when the stack is empty or `d2` is 0. Uses no heap: 32 levels of
  /// three pending siblings fit in its fixed stack.
  void scan_range(const double point[2], double& d2, unsigned& best, unsigned range_min[2], unsigned range_max[2],
                  unsigned cell, unsigned level, unsigned quadrant, const unsigned prefix[2], unsigned excluded,
                  const dense1D<unsigned, 8>& ancestors) const noexcept;

  /// Turns the full leaf `cell` at `level` into an internal cell and
  /// reinserts its three IDs, ascending, then `id`. False at level 0 or when
  /// the cells could not grow (then the leaf is left as it was); `id` is
  /// then not stored.
  bool split_leaf(unsigned cell, unsigned level, unsigned id) noexcept;

  /// Column `c` of `cells`.
  const unsigned* cell_at(unsigned c) const noexcept { return cells.buffer->data + cells.offset + c * cells.ld; }
  unsigned* cell_at(unsigned c) noexcept { return cells.buffer->data + cells.offset + c * cells.ld; }

  const dense2D<double>* coords;
  double box_min[2];
  double box_max[2];
  double origin[2];
  double scale;
  dense2D<unsigned> cells;
  unsigned n_points;
  bool out_of_memory = false;

private:
  // Puts `id` in the leaf `cell` (at `level`), splitting it when full.
  bool add_to_leaf(unsigned cell, unsigned level, unsigned id) noexcept;
  // Four zeroed cells at the end of `cells`; the first one's ID, or null_id.
  unsigned allocate_four() noexcept;
  template <unsigned Rows, bool Mixed> unsigned fill_from_rows(const dense2D<unsigned>& conn) noexcept;
};

extern template unsigned node_quadtree::fill_from_mesh<T3>(const dense2D<unsigned>&) noexcept;
extern template unsigned node_quadtree::fill_from_mesh<Q4>(const dense2D<unsigned>&) noexcept;
extern template unsigned node_quadtree::fill_from_mesh<MIXED>(const dense2D<unsigned>&) noexcept;

} // namespace tesskit2d
} // namespace kelm
