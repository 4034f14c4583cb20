#include <new>

#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "interpolation/local_coordinates.h"
#include "interpolation/point_locator.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/interpolation.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The walks' tolerance: a point within 1e-6 of twice an element's area
// outside an edge still counts as inside.
constexpr double walk_tolerance = 1e-6;

// Where the field keeps the values of node n: one entry of a dense1D, read
// as a column of one row.
struct entry_field {
  const dense1D<double, 8>& f;
  unsigned rows() const noexcept { return 1; }
  double* at(unsigned n) const noexcept { return f.begin() + n; }
};

// Values at `point` in the located element `e`, row by row.
template <element_type Kind, class Field>
void write_located(const dense2D<double>& coords, const dense2D<unsigned>& conn, const Field& field, unsigned e,
                   const double point[2], double* out) noexcept {
  const unsigned* nodes = conn.column(e);
  const unsigned rows = field.rows();
  if (element_sides<Kind>(nodes) == 3) {
    double w[2];
    barycentric_T3(coords, nodes, point, w);
    const double *f0 = field.at(nodes[0]), *f1 = field.at(nodes[1]), *f2 = field.at(nodes[2]);
    for (unsigned r = 0; r < rows; ++r)
      out[r] = (f1[r] - f2[r]) * w[1] + (f0[r] - f2[r]) * w[0] + f2[r];
  } else {
    double uv[2];
    inverse_bilinear_Q4(coords, nodes, point, uv);
    const double s = (uv[0] + 1.0) / 2.0, t = (uv[1] + 1.0) / 2.0;
    const double *f0 = field.at(nodes[0]), *f1 = field.at(nodes[1]), *f2 = field.at(nodes[2]), *f3 = field.at(nodes[3]);
    for (unsigned r = 0; r < rows; ++r) {
      const double a = f0[r] + (f1[r] - f0[r]) * s;
      const double b = f3[r] + (f2[r] - f3[r]) * s;
      out[r] = a + (b - a) * t;
    }
  }
}

// Targets go through in blocks. The quick searches of a block are
// independent of each other and of the walks, so they run first, their
// descents stepped in turns: while one target's next cell comes from
// memory, the others' are read. The cells, nodes and start elements that
// the block will need are asked for ahead in the same way. The walks then
// run one target after the other, in the order of `target_nodes`, as the
// edge picker's draws must; the start element each one takes is the one
// that the quick search inside `locate` would have given.
constexpr unsigned block = 16;

inline void prefetch(const void* p) noexcept { __builtin_prefetch(p); }

struct pending {
  unsigned node;  // null_id when the entry is no target
  unsigned start; // the walk's first element, or null_id for no walk
  bool descending;
  bool searched; // the descent reached its leaf
  double point[2];
  unsigned grid[2];
  node_quadtree::descent at;
};

// One driver per element kind. The dense2D overload has none: it would
// leave its tree empty, and with an empty tree every target fails to be
// located and has no nearest node, so it writes nothing.
template <element_type Kind, class Field>
int drive(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
          const dense1D<unsigned, 8>& ancestors, const Field& field, const dense1D<unsigned, 8>& target_nodes) {
  point_locator locator(coords, bg_conn, neighbours, ancestors);
  edge_picker picker;
  node_quadtree& tree = locator.tree;
  tree.fill_from_mesh<Kind>(bg_conn);
  if (tree.out_of_memory) return status::out_of_memory;
  const bool searchable = tree.n_points != 0 && tree.cells.cols >= 4;
  const unsigned n_targets = target_nodes.size, n_elements = bg_conn.cols;
  pending queue[block];
  for (unsigned first = 0; first < n_targets; first += block) {
    const unsigned count = n_targets - first < block ? n_targets - first : block;
    for (unsigned k = first + block; k < first + 2 * block && k < n_targets; ++k) {
      prefetch(coords.column(target_nodes[k]));
      prefetch(ancestors.begin() + target_nodes[k]);
    }

    unsigned descending = 0;
    for (unsigned k = 0; k < count; ++k) {
      pending& q = queue[k];
      q.node = target_nodes[first + k];
      q.start = null_id;
      q.descending = q.searched = false;
      if (ancestors[q.node] != null_id) {
        q.node = null_id;
        continue;
      }
      q.point[0] = coords(0, q.node);
      q.point[1] = coords(1, q.node);
      if (!searchable || !tree.in_box(q.point)) continue;
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
          prefetch(tree.cell_at(q.at.cell));
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
          prefetch(coords.column(leaf[r]));
          prefetch(ancestors.begin() + leaf[r]);
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
        prefetch(bg_conn.column(q.start));
        prefetch(neighbours.column(q.start));
      }
    }
    for (unsigned k = 0; k < count; ++k)
      if (queue[k].node != null_id && queue[k].start < n_elements) {
        const unsigned* nodes = bg_conn.column(queue[k].start);
        for (unsigned r = 0; r < element_sides<Kind>(nodes); ++r)
          prefetch(coords.column(nodes[r]));
      }

    for (unsigned k = 0; k < count; ++k) {
      pending& q = queue[k];
      if (q.node == null_id) continue;
      unsigned e = q.start;
      if (e != null_id && locator.locate<Kind>(q.point, e, walk_tolerance, true, picker)) {
        write_located<Kind>(coords, bg_conn, field, e, q.point, field.at(q.node));
        continue;
      }
      if (locator.out_of_memory) return status::out_of_memory;
      double d2 = max_double;
      const unsigned nearest = tree.nearest_node(q.point, d2, ancestors);
      if (nearest == null_id) continue;
      const double* from = field.at(nearest);
      double* to = field.at(q.node);
      for (unsigned r = 0; r < field.rows(); ++r)
        to[r] = from[r];
    }
  }
  return status::ok;
}

// The elements that the walks start from must be elements: an `ancestors`
// entry of a node of `bg_conn` is `null_id` or below the element count.
bool ancestors_fit(const dense2D<unsigned>& bg_conn, const dense1D<unsigned, 8>& ancestors) noexcept {
  const unsigned n_elements = bg_conn.cols, rows = bg_conn.rows;
  const unsigned* holder = ancestors.begin();
  unsigned bad = 0;
  for (unsigned j = 0; j < bg_conn.cols; ++j) {
    const unsigned* c = bg_conn.column(j);
    for (unsigned r = 0; r < rows; ++r) {
      if (c[r] == null_id) continue;
      const unsigned a = holder[c[r]];
      bad |= a != null_id && a >= n_elements;
    }
  }
  return bad == 0;
}

// Whether a row count and kind reach a driver; other pairs do nothing.
bool drives(const dense2D<unsigned>& bg_conn, element_type type) noexcept {
  return (bg_conn.rows == 3 && type == T3) || (bg_conn.rows == 4 && (type == Q4 || type == MIXED));
}

// The checks shared by both overloads, in order; `field_fits` is the
// overload's own test of `field`. `walks` says whether the call will walk
// from the `ancestors` entries of the background nodes, which must then be
// elements.
int check(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
          const dense1D<unsigned, 8>& ancestors, bool field_fits, const dense1D<unsigned, 8>& target_nodes,
          element_type type, bool walks) noexcept {
  const unsigned n_nodes = coords.cols;
  if (coords.rows != 2) return -1;
  if (!kelm::tesskit::check_IDs(bg_conn, type, n_nodes)) return -2;
  if (neighbours.rows != bg_conn.rows || neighbours.cols != bg_conn.cols ||
      !kelm::tesskit::check_IDs(neighbours, bg_conn.cols))
    return -3;
  if (ancestors.size != n_nodes) return -4;
  if (walks && drives(bg_conn, type) && !ancestors_fit(bg_conn, ancestors)) return -4;
  if (!field_fits) return -5;
  if (!kelm::tesskit::check_IDs(target_nodes, n_nodes)) return -6;
  return status::ok;
}

template <class Field>
int dispatch(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
             const dense1D<unsigned, 8>& ancestors, const Field& field, const dense1D<unsigned, 8>& target_nodes,
             element_type type) {
  if (bg_conn.rows == 3 && type == T3) return drive<T3>(coords, bg_conn, neighbours, ancestors, field, target_nodes);
  if (bg_conn.rows == 4 && type == Q4) return drive<Q4>(coords, bg_conn, neighbours, ancestors, field, target_nodes);
  if (bg_conn.rows == 4 && type == MIXED)
    return drive<MIXED>(coords, bg_conn, neighbours, ancestors, field, target_nodes);
  return status::ok;
}

} // namespace

int interpolate(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
                const dense1D<unsigned, 8>& ancestors, dense2D<double>& field, const dense1D<unsigned, 8>& target_nodes,
                element_type type) noexcept {
  if (target_nodes.size == 0) return status::ok;
  return check(coords, bg_conn, neighbours, ancestors, field.cols == coords.cols, target_nodes, type, false);
}

int interpolate(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
                const dense1D<unsigned, 8>& ancestors, dense1D<double, 8>& field,
                const dense1D<unsigned, 8>& target_nodes, element_type type) noexcept {
  if (target_nodes.size == 0) return status::ok;
  const int refused =
      check(coords, bg_conn, neighbours, ancestors, field.size == coords.cols, target_nodes, type, true);
  if (refused) return refused;
  // `field` holds doubles, so only `coords` can share its storage. Targets
  // written into the coordinates would move the points still to be located
  // and the corners of the elements that hold them: the walks read a
  // private copy instead, made only when the two can meet.
  const separate_input<dense2D<double>> points(coords, field);
  if (!points.ok()) return status::out_of_memory;
  // The tree's cell array and the ball's working space are headed by objects
  // from operator new; their failure is memory running out like any other.
  try {
    return dispatch(points.get(), bg_conn, neighbours, ancestors, entry_field{field}, target_nodes, type);
  } catch (const std::bad_alloc&) {
    return status::out_of_memory;
  }
}

} // namespace tesskit2d
} // namespace kelm
