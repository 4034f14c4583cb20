#include "interpolation/node_quadtree.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "geometry/primitives.h"

namespace kelm {
namespace tesskit2d {
namespace {

constexpr unsigned grid_top = 0xFFFFFFFFu;

// One grid coordinate, truncated; off the grid it is clamped and reported.
// The NaN test comes last: it never holds for a point inside the box.
inline bool grid_axis(double x, double origin, double scale, unsigned& g) noexcept {
  const double t = (x - origin) * scale;
  if (t < 0.0) {
    g = 0;
    return false;
  }
  if (t > 4294967295.0) {
    g = grid_top;
    return false;
  }
  if (t != t) {
    g = 0;
    return false;
  }
  g = static_cast<unsigned>(t);
  return true;
}

// The grid coordinates with the bits below `level` cleared: the low corner
// of the cell at that level that holds them.
inline unsigned low_corner(unsigned g, unsigned level) noexcept {
  return static_cast<unsigned>(g & (~std::uint64_t(0) << level));
}

} // namespace

node_quadtree::node_quadtree(const dense2D<double>& xy) noexcept
    : coords(&xy), box_min{0.0, 0.0}, box_max{1.0, 1.0}, origin{0.0, 0.0}, scale(0.0), n_points(0) {
  const double lo[2] = {0.0, 0.0}, hi[2] = {1.0, 1.0};
  set_box(lo, hi);
}

bool node_quadtree::clear() noexcept {
  n_points = 0;
  out_of_memory = false;
  cells.resize(4, 0);
  if (!cells.resize(4, 4)) {
    out_of_memory = true;
    cells.resize(4, 0);
    return false;
  }
  std::fill(cell_at(0), cell_at(0) + 16, 0u);
  return true;
}

void node_quadtree::set_box(const double lo[2], const double hi[2]) noexcept {
  clear();
  box_min[0] = lo[0];
  box_min[1] = lo[1];
  box_max[0] = hi[0];
  box_max[1] = hi[1];
  const double dx = hi[0] - lo[0], dy = hi[1] - lo[1];
  const double size = dx < dy ? dy : dx;
  // A hair larger than the box, so that its far sides map inside the grid
  // of 2^32 cells; a box of size 0 still gets a side to divide by.
  constexpr double margin = 1.000000000001, side_of_a_point = 1e-12;
  const double side = size > 0.0 ? size * margin : side_of_a_point;
  origin[0] = 0.5 * (lo[0] + hi[0]) - 0.5 * side;
  origin[1] = 0.5 * (lo[1] + hi[1]) - 0.5 * side;
  scale = 4294967295.0 / side;
}

bool node_quadtree::to_grid(const double point[2], unsigned grid[2]) const noexcept {
  const bool x = grid_axis(point[0], origin[0], scale, grid[0]);
  const bool y = grid_axis(point[1], origin[1], scale, grid[1]);
  return x && y;
}

unsigned node_quadtree::allocate_four() noexcept {
  const unsigned first = cells.cols;
  if (cells.column_capacity() < first + 4) {
    // Doubling keeps the copies of a growing tree linear in its final size.
    cells.reserve(4, std::max(2 * first, 8u));
  }
  if (first > 0xFFFFFFFFu - 4 || !cells.resize(4, first + 4)) {
    out_of_memory = true;
    return null_id;
  }
  std::fill(cell_at(first), cell_at(first) + 16, 0u);
  return first;
}

bool node_quadtree::add_to_leaf(unsigned cell, unsigned level, unsigned id) noexcept {
  unsigned* c = cell_at(cell);
  const unsigned count = c[0];
  if (count >= 3) return split_leaf(cell, level, id);
  // Merged into the sorted run from its end, so the IDs stay ascending.
  unsigned at = count + 1;
  while (at > 1 && c[at - 1] > id) {
    c[at] = c[at - 1];
    --at;
  }
  c[at] = id;
  c[0] = count + 1;
  return true;
}

bool node_quadtree::split_leaf(unsigned cell, unsigned level, unsigned id) noexcept {
  if (level == 0) return false;
  const unsigned first = allocate_four();
  if (first == null_id) return false;
  unsigned* c = cell_at(cell);
  const unsigned ids[4] = {c[1], c[2], c[3], id};
  for (unsigned q = 0; q < 4; ++q)
    c[q] = first + q;
  for (unsigned k = 0; k < 4; ++k) {
    const double* p = coords->column(ids[k]);
    unsigned grid[2];
    to_grid(p, grid);
    unsigned at = cell, l = level;
    while (cell_at(at)[0] >= 4) {
      const unsigned q = quadrant_at(grid, l);
      --l;
      at = cell_at(at)[q];
    }
    if (!add_to_leaf(at, l, ids[k])) return false;
  }
  return true;
}

bool node_quadtree::insert_node(unsigned id) noexcept {
  if (cells.cols < 4 || id >= coords->cols) return false;
  const double* p = coords->column(id);
  if (!in_box(p)) return false;
  unsigned grid[2];
  to_grid(p, grid);
  unsigned cell = 0, level = 32;
  while (cell_at(cell)[0] >= 4) {
    const unsigned q = quadrant_at(grid, level);
    --level;
    cell = cell_at(cell)[q];
  }
  if (!add_to_leaf(cell, level, id)) return false;
  ++n_points;
  return true;
}

template <unsigned Rows, bool Mixed> unsigned node_quadtree::fill_from_rows(const dense2D<unsigned>& conn) noexcept {
  const double default_lo[2] = {0.0, 0.0}, default_hi[2] = {1.0, 1.0};
  if (conn.rows * conn.cols == 0) {
    set_box(default_lo, default_hi);
    return 0;
  }
  const unsigned n_nodes = coords->cols;
  // A node ID at or beyond `coords` has no point; the drivers' checks keep
  // such IDs out, and the tree ignores them rather than read past the array.
  auto valid = [n_nodes](unsigned id) noexcept { return id < n_nodes; };

  unsigned top = 0;
  for (unsigned j = 0; j < conn.cols; ++j) {
    const unsigned* c = conn.column(j);
    for (unsigned r = 0; r < Rows; ++r)
      if (valid(c[r]) && c[r] > top) top = c[r];
  }
  // One mark bit per node ID up to the largest, and the distinct IDs in
  // order of first occurrence.
  dense1D<unsigned, 8> seen, order;
  const std::uint64_t entries = std::uint64_t(conn.cols) * Rows;
  if (!seen.resize(top / 32 + 1, 0u) ||
      !order.reserve(static_cast<unsigned>(std::min<std::uint64_t>(entries, std::uint64_t(top) + 1)))) {
    set_box(default_lo, default_hi);
    out_of_memory = true;
    return 0;
  }
  unsigned* marks = seen.begin();
  unsigned* list = order.buffer->data + order.offset;
  unsigned n = 0;
  double lo[2] = {max_double, max_double}, hi[2] = {-max_double, -max_double};
  for (unsigned j = 0; j < conn.cols; ++j) {
    const unsigned* c = conn.column(j);
    for (unsigned r = 0; r < Rows; ++r) {
      const unsigned id = c[r];
      if (Mixed && r == 3 && id == null_id) continue;
      if (!valid(id)) continue;
      const unsigned bit = 1u << (id & 31);
      if (marks[id >> 5] & bit) continue;
      marks[id >> 5] |= bit;
      list[n++] = id;
      const double* p = coords->column(id);
      if (p[0] < lo[0]) lo[0] = p[0];
      if (p[0] > hi[0]) hi[0] = p[0];
      if (p[1] < lo[1]) lo[1] = p[1];
      if (p[1] > hi[1]) hi[1] = p[1];
    }
  }
  set_box(lo, hi);
  // About 1.2 cells per node on evenly spread nodes: room for that up front
  // spares the copies of a doubling array. Clustered nodes may need more,
  // and then the doubling takes over.
  const std::uint64_t expected = 4 + std::uint64_t(n) + n / 4;
  if (expected < 0xFFFFFFFFu / 4) cells.reserve(4, static_cast<unsigned>(expected));
  unsigned stored = 0;
  for (unsigned k = 0; k < n && !out_of_memory; ++k)
    stored += insert_node(list[k]);
  return stored;
}

template <element_type Kind> unsigned node_quadtree::fill_from_mesh(const dense2D<unsigned>& conn) noexcept {
  static_assert(Kind == T3 || Kind == Q4 || Kind == MIXED, "the tree is filled from linear surface meshes");
  if (Kind == T3) return fill_from_rows<3, false>(conn);
  if (Kind == Q4) return fill_from_rows<4, false>(conn);
  return fill_from_rows<4, true>(conn);
}

template unsigned node_quadtree::fill_from_mesh<T3>(const dense2D<unsigned>&) noexcept;
template unsigned node_quadtree::fill_from_mesh<Q4>(const dense2D<unsigned>&) noexcept;
template unsigned node_quadtree::fill_from_mesh<MIXED>(const dense2D<unsigned>&) noexcept;

bool node_quadtree::scan_leaf(const unsigned* first, const unsigned* last, const double point[2], double& d2,
                              unsigned& best, const dense1D<unsigned, 8>& ancestors) const noexcept {
  bool shrank = false;
  for (const unsigned* it = first; it != last; ++it) {
    const unsigned id = *it;
    if (id == best) continue;
    if (id >= ancestors.size || ancestors[id] == null_id) continue;
    const double* p = coords->column(id);
    const double dx = p[0] - point[0], dy = p[1] - point[1];
    const double d = dx * dx + dy * dy;
    if (d < d2) {
      d2 = d;
      best = id;
      shrank = true;
    }
  }
  return shrank;
}

void node_quadtree::scan_range(const double point[2], double& d2, unsigned& best, unsigned range_min[2],
                               unsigned range_max[2], unsigned cell, unsigned level, unsigned quadrant,
                               const unsigned prefix[2], unsigned excluded,
                               const dense1D<unsigned, 8>& ancestors) const noexcept {
  struct entry {
    unsigned level, quadrant, cell;
  };
  // Each internal cell on the current path leaves at most three siblings
  // pending, so 32 levels need 97 entries.
  entry stack[128];
  unsigned top = 0;
  stack[top++] = {level, quadrant, cell};
  // The low corner of the cell last popped. Its bits above a popped entry's
  // level are those of that entry's parent, which depth-first order has just
  // visited; the entry's own bit comes from its quadrant.
  unsigned corner[2] = {prefix[0], prefix[1]};
  while (top != 0) {
    if (d2 == 0.0) return;
    const entry e = stack[--top];
    if (e.cell == excluded) continue;
    const unsigned* c = cell_at(e.cell);
    if (c[0] == 0) continue;
    unsigned lo[2], hi[2];
    if (e.level >= 32) {
      lo[0] = lo[1] = 0;
      hi[0] = hi[1] = grid_top;
    } else {
      const unsigned above = static_cast<unsigned>(~std::uint64_t(0) << (e.level + 1));
      corner[0] = (corner[0] & above) | ((e.quadrant & 1u) << e.level);
      corner[1] = (corner[1] & above) | ((e.quadrant >> 1) << e.level);
      const std::uint64_t span = std::uint64_t(1) << e.level;
      for (unsigned a = 0; a < 2; ++a) {
        lo[a] = corner[a];
        hi[a] = static_cast<unsigned>(std::min<std::uint64_t>(corner[a] + span, grid_top));
      }
    }
    // Closed rectangles: touching counts as overlap.
    if (lo[0] > range_max[0] || hi[0] < range_min[0] || lo[1] > range_max[1] || hi[1] < range_min[1]) continue;
    if (c[0] < 4) {
      if (scan_leaf(c + 1, c + 1 + c[0], point, d2, best, ancestors)) {
        const double r = std::sqrt(d2);
        const double below[2] = {point[0] - r, point[1] - r}, above[2] = {point[0] + r, point[1] + r};
        to_grid(below, range_min);
        to_grid(above, range_max);
      }
    } else if (e.level > 0 && top + 4 <= 128) {
      for (unsigned q = 4; q-- > 0;)
        stack[top++] = {e.level - 1, q, c[q]};
    }
  }
}

void node_quadtree::nearest_candidate(const double point[2], double& d2, unsigned& best, const unsigned grid[2],
                                      unsigned range_min[2], unsigned range_max[2], unsigned& cell, unsigned& level,
                                      unsigned& quadrant, bool& done,
                                      const dense1D<unsigned, 8>& ancestors) const noexcept {
  descent at;
  if (cells.cols < 4) {
    best = null_id;
    range_min[0] = range_min[1] = 0;
    range_max[0] = range_max[1] = grid_top;
    done = false;
    cell = 0;
    level = 32;
    quadrant = 0;
    return;
  }
  while (descend(at, grid)) {
  }
  finish_candidate(at, point, d2, best, grid, range_min, range_max, done, ancestors);
  cell = at.cell;
  level = at.level;
  quadrant = at.quadrant;
}

void node_quadtree::finish_candidate(descent& at, const double point[2], double& d2, unsigned& best,
                                     const unsigned grid[2], unsigned range_min[2], unsigned range_max[2], bool& done,
                                     const dense1D<unsigned, 8>& ancestors) const noexcept {
  best = null_id;
  range_min[0] = range_min[1] = 0;
  range_max[0] = range_max[1] = grid_top;
  done = false;
  const unsigned* c = cell_at(at.cell);
  if (c[0] != 0) {
    scan_leaf(c + 1, c + 1 + c[0], point, d2, best, ancestors);
    done = d2 == 0.0;
    if (best != null_id) return;
  }

  // The siblings next, then the rest of the tree. A root that is still a
  // leaf is its own parent here, and both searches exclude it.
  if (at.level < 32) {
    ++at.level;
    at.quadrant = at.parent_quadrant;
  }
  const unsigned corner[2] = {low_corner(grid[0], at.level), low_corner(grid[1], at.level)};
  scan_range(point, d2, best, range_min, range_max, at.parent, at.level, at.quadrant, corner, at.cell, ancestors);
  done = d2 == 0.0;
  at.cell = at.parent;
  if (best != null_id) return;

  const unsigned origin_corner[2] = {0, 0};
  scan_range(point, d2, best, range_min, range_max, 0, 32, 0, origin_corner, at.parent, ancestors);
  done = best != null_id;
}

unsigned node_quadtree::nearest_node(const double point[2], double& d2,
                                     const dense1D<unsigned, 8>& ancestors) const noexcept {
  if (n_points == 0 || !in_box(point)) return null_id;
  unsigned grid[2], range_min[2], range_max[2], from, level, quadrant, best;
  bool done;
  to_grid(point, grid);
  nearest_candidate(point, d2, best, grid, range_min, range_max, from, level, quadrant, done, ancestors);
  if (best == null_id || done) return best;

  if (range_min[0] == 0 && range_min[1] == 0) {
    const double r = std::sqrt(d2);
    const double below[2] = {point[0] - r, point[1] - r}, above[2] = {point[0] + r, point[1] + r};
    to_grid(below, range_min);
    to_grid(above, range_max);
  }
  // The smallest cell that holds the whole range: descend while the highest
  // bit in which the corners differ lies below the child's level.
  const unsigned differ = (range_min[0] ^ range_max[0]) | (range_min[1] ^ range_max[1]);
  const int high_bit = differ ? 31 - __builtin_clz(differ) : -1;
  unsigned cell = 0;
  level = 32;
  quadrant = 0;
  while (high_bit + 1 < static_cast<int>(level) && cell_at(cell)[0] >= 4) {
    quadrant = quadrant_at(range_min, level);
    --level;
    cell = cell_at(cell)[quadrant];
  }
  const unsigned corner[2] = {low_corner(range_min[0], level), low_corner(range_min[1], level)};
  scan_range(point, d2, best, range_min, range_max, cell, level, quadrant, corner, from, ancestors);
  return best;
}

} // namespace tesskit2d
} // namespace kelm
