#pragma once
// Finding the element of a background mesh that holds a point: a start from
// the nearest node, then a randomised walk across `neighbours`.
//
// Edges are numbered as everywhere in the library: a triangle's edge i lies
// opposite corner i, from corner i + 1 to i + 2 (mod 3); a quadrangle's edge
// i runs from corner i to i + 1 (mod 4). `neighbours(i, e)` is the element
// across edge i of element e, `null_id` on the boundary. `coords` has 2 rows.
//
// The element kind is a template argument: T3 (3 corners), Q4 (4), or MIXED,
// where a column with `null_id` in row 3 is a triangle.

#include <cmath>
#include <memory>

#include "foundation/hash_table.h"
#include "foundation/status.h"
#include "geometry/primitives.h"
#include "interpolation/edge_picker.h"
#include "interpolation/node_quadtree.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Sides of the element whose column is `nodes`.
template <element_type Kind> inline unsigned element_sides(const unsigned* nodes) noexcept {
  if (Kind == T3) return 3;
  if (Kind == Q4) return 4;
  return nodes[3] == null_id ? 3 : 4;
}

/// The side of point P to the directed segment from a to b, as the cross
/// product A x B of A = a - P and B = b - P: positive when P, a, b run
/// counter-clockwise. Formed from the two shortest sides of the triangle
/// P, a, b (A and D = B - A when D is shorter than both A and B), so that a
/// long thin triangle keeps its digits.
inline double edge_cross(double ax, double ay, double bx, double by) noexcept {
  const double dx = bx - ax, dy = by - ay;
  const double aa = ax * ax + ay * ay, bb = bx * bx + by * by;
  const double m = aa < bb ? aa : bb;
  return dx * dx + dy * dy < m ? ax * dy - ay * dx : ax * by - ay * bx;
}

/// The edge through which a walk leaves the element `nodes` (of `sides`
/// corners) toward `point`: the first edge, from `start` + 1 round to
/// `start` itself, with the point beyond it by more than `tolerance` times
/// twice the element's area. -1 when the point is inside within that
/// tolerance; -2 when the element's doubled area (the cross product of the
/// diagonals for a quadrangle) is not positive or not finite.
inline int exit_edge(const dense2D<double>& coords, const double point[2], const unsigned* nodes, unsigned sides,
                     double tolerance, unsigned start) noexcept {
  double x[4], y[4];
  for (unsigned i = 0; i < sides; ++i) {
    const double* p = coords.column(nodes[i]);
    x[i] = p[0];
    y[i] = p[1];
  }
  double measure;
  if (sides == 3) {
    const double c0[2] = {x[0], y[0]}, c1[2] = {x[1], y[1]}, c2[2] = {x[2], y[2]};
    measure = triangle_double_area_2d(c0, c1, c2);
  } else {
    measure = (x[2] - x[0]) * (y[3] - y[1]) - (x[3] - x[1]) * (y[2] - y[0]);
  }
  if (!(measure > 0.0) || !std::isfinite(measure)) return -2;
  const double threshold = -(measure * tolerance);
  unsigned i = start;
  for (unsigned k = 0; k < sides; ++k) {
    i = i + 1 == sides ? 0 : i + 1;
    // Corners of edge i: (i + 1, i + 2) of a triangle, (i, i + 1) of a
    // quadrangle.
    unsigned a, b;
    if (sides == 3) {
      a = i == 2 ? 0 : i + 1;
      b = i == 0 ? 2 : i - 1;
    } else {
      a = i;
      b = i == 3 ? 0 : i + 1;
    }
    if (edge_cross(x[a] - point[0], y[a] - point[1], x[b] - point[0], y[b] - point[1]) < threshold)
      return static_cast<int>(i);
  }
  return -1;
}

/// The walk from `element` toward `point`. Each step draws a start edge
/// (a draw of 3 on a triangle counts as edge 0) and crosses the exit edge;
/// where that is a boundary edge, the other edges are tried in turn.
/// `steps` counts the steps begun; `limit` is the element count.
///
/// 1: `element` holds the point. Otherwise `element` becomes `null_id` and
/// the result is 0 when the walk left the mesh or was stopped by its limit,
/// -1 when it met an element of non-positive or non-finite area, and -2,
/// in place of either, when it ended on the very step numbered `limit` (a
/// walk stopped by the limit has counted one step more, and gives 0).
template <element_type Kind>
int walk(const dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<unsigned>& neighbours,
         const double point[2], unsigned& element, double tolerance, unsigned& steps, edge_picker& picker) noexcept {
  const unsigned limit = conn.cols;
  steps = 0;
  int result = 0;
  while (element != null_id) {
    const unsigned before = steps++;
    if (before >= limit) break;
    // An element ID beyond the mesh can only come from unchecked input; it
    // ends the walk like a boundary.
    if (element >= limit) {
      element = null_id;
      break;
    }
    const unsigned* nodes = conn.column(element);
    const unsigned sides = element_sides<Kind>(nodes);
    unsigned start = picker.draw();
    if (start >= sides) start -= sides;
    int edge = exit_edge(coords, point, nodes, sides, tolerance, start);
    if (edge == -1) return 1;
    if (edge == -2) {
      result = -1;
      break;
    }
    const unsigned* across = neighbours.column(element);
    unsigned next = across[edge];
    for (unsigned k = 1; next >= limit && k < sides; ++k) {
      start = start + 1 == sides ? 0 : start + 1;
      edge = exit_edge(coords, point, nodes, sides, tolerance, start);
      if (edge < 0) break;
      next = across[edge];
    }
    element = next < limit ? next : null_id;
  }
  if (steps == limit) result = -2;
  element = null_id;
  return result;
}

/// Working space of `element_ball`, made on the first fallback of a call.
struct ball_space {
  dense1D<unsigned, 8> list;
  dense1D<unsigned, 8> stack;
  hash_table<triad<unsigned, unsigned, unsigned>> visited{
      hash_table<triad<unsigned, unsigned, unsigned>>::default_buckets};
};

/// The elements round `node`, depth first from `element`, into `list`; at
/// each element the two edges at the node's corner k are crossed in turn
/// (a quadrangle's edges k and k - 1, a triangle's k + 2 and k + 1).
/// `closed` is false when a boundary edge was met or `element` is `null_id`.
/// Returns 0, -1 when an element reached does not hold `node` (the list then
/// stops there), or `status::out_of_memory`.
template <element_type Kind>
int element_ball(unsigned node, unsigned element, const dense2D<unsigned>& conn, const dense2D<unsigned>& neighbours,
                 ball_space& space, bool& closed) noexcept {
  dense1D<unsigned, 8>& list = space.list;
  dense1D<unsigned, 8>& stack = space.stack;
  list.size = 0;
  stack.size = 0;
  closed = false;
  if (element == null_id) return 0;
  closed = true;
  auto& visited = space.visited;
  using record = triad<unsigned, unsigned, unsigned>;
  if (!visited.initialise(visited.default_buckets, visited.default_buckets) ||
      !visited.insert_checked(record{element, 0, 0}).inserted || !stack.push_back(element))
    return status::out_of_memory;
  const unsigned n_elements = conn.cols;
  while (stack.size != 0) {
    const unsigned e = stack[--stack.size];
    if (e >= n_elements) return -1;
    const unsigned* nodes = conn.column(e);
    const unsigned sides = element_sides<Kind>(nodes);
    unsigned k = 0;
    while (k < sides && nodes[k] != node)
      ++k;
    if (k == sides) return -1;
    if (!list.push_back(e)) return status::out_of_memory;
    const unsigned edges[2] = {sides == 4 ? k : (k + 2) % 3, sides == 4 ? (k + 3) % 4 : (k + 1) % 3};
    for (unsigned s : edges) {
      const unsigned next = neighbours(s, e);
      if (next >= n_elements) {
        closed = false;
        continue;
      }
      const auto put = visited.insert_checked(record{next, 0, 0});
      if (put.position == visited.null) return status::out_of_memory;
      if (put.inserted && !stack.push_back(next)) return status::out_of_memory;
    }
  }
  return 0;
}

/// The search structures of one driver call: the node tree over the
/// background nodes and the arrays it walks. Owns only the tree (and the
/// ball's working space).
///
/// `ancestors` gives, per node, one element holding it or `null_id`; the
/// tree offers only nodes with an element. The driver fills `tree` itself
/// (`tree.fill_from_mesh<Kind>(conn)`).
class point_locator {
public:
  point_locator(const dense2D<double>& xy, const dense2D<unsigned>& elements, const dense2D<unsigned>& across,
                const dense1D<unsigned, 8>& holders) noexcept
      : coords(&xy), conn(&elements), neighbours(&across), ancestors(&holders), tree(xy) {}

  /// Finds the element that holds `point`, within `tolerance` times twice
  /// its area. `element` of `null_id` starts from the element of the node
  /// that the quick tree search gives; another value starts there. With
  /// `use_ball`, a walk that left the mesh (or ran out of steps) is tried
  /// again from each element round the exact nearest node in turn.
  ///
  /// True with `element` set when found. False with `element` `null_id`, or
  /// untouched when no walk began: empty tree, point outside the box, no
  /// node with an element. A walk that meets an inverted or flat element
  /// fails at once, without the ball. When the ball's working space could
  /// not grow, `out_of_memory` is set and the result is false.
  template <element_type Kind>
  bool locate(const double point[2], unsigned& element, double tolerance, bool use_ball, edge_picker& picker) noexcept {
    const dense1D<unsigned, 8>& holders = *ancestors;
    if (element == null_id) {
      if (tree.n_points == 0 || !tree.in_box(point)) return false;
      unsigned grid[2], range_min[2], range_max[2], cell, level, quadrant, best;
      bool done;
      double d2 = max_double;
      tree.to_grid(point, grid);
      tree.nearest_candidate(point, d2, best, grid, range_min, range_max, cell, level, quadrant, done, holders);
      if (best == null_id) return false;
      element = holders[best];
      if (element == null_id) return false;
    }
    unsigned steps;
    int result = walk<Kind>(*coords, *conn, *neighbours, point, element, tolerance, steps, picker);
    if (use_ball && result == 0) result = walk_from_ball<Kind>(point, element, tolerance, picker);
    if (result != 1) element = null_id;
    return result == 1;
  }

  const dense2D<double>* coords;
  const dense2D<unsigned>* conn;
  const dense2D<unsigned>* neighbours;
  const dense1D<unsigned, 8>* ancestors;
  node_quadtree tree;
  std::unique_ptr<ball_space> ball;
  bool out_of_memory = false;

private:
  // The fallback of a walk that left the mesh: walks from each element round
  // the exact nearest node, in ball order, until one finds the point. An
  // element that does not hold the node cuts the ball short, silently.
  template <element_type Kind>
  int walk_from_ball(const double point[2], unsigned& element, double tolerance, edge_picker& picker) noexcept {
    double d2 = max_double;
    const unsigned node = tree.nearest_node(point, d2, *ancestors);
    if (node == null_id) return 0;
    if (!ball) ball.reset(new ball_space);
    bool closed;
    if (element_ball<Kind>(node, (*ancestors)[node], *conn, *neighbours, *ball, closed) == status::out_of_memory) {
      out_of_memory = true;
      return 0;
    }
    int result = 0;
    for (unsigned i = 0; i < ball->list.size && result == 0; ++i) {
      element = ball->list[i];
      unsigned steps;
      result = walk<Kind>(*coords, *conn, *neighbours, point, element, tolerance, steps, picker);
    }
    return result;
  }
};

} // namespace tesskit2d
} // namespace kelm
