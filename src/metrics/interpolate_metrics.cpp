#include <cstddef>
#include <limits>

#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "interpolation/local_coordinates.h"
#include "interpolation/point_locator.h"
#include "metrics/located_targets.h"
#include "metrics/metric_combiners.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/metrics.h"
#include "treisoma/lapack.h"

namespace kelm {
namespace tesskit2d {
namespace {

// A point within 1e-6 of twice an element's area outside an edge still
// counts as inside, as for the nodal interpolation.
constexpr double walk_tolerance = 1e-6;
constexpr double largest_double = std::numeric_limits<double>::max();

// The three kinds of value differ in how a node's value is read and written,
// in the test that keeps a present value, and in the combiners; the search
// around them is shared.
struct metric2_values {
  using value = metric2;
  double* data;
  std::size_t ld;
  metric2 read(unsigned n) const noexcept {
    const double* c = data + n * ld;
    return metric2{{c[0], c[1], c[2]}};
  }
  void write(unsigned n, const metric2& m) const noexcept {
    double* c = data + n * ld;
    c[0] = m[0], c[1] = m[1], c[2] = m[2];
  }
  // Kept when the smaller eigenvalue is strictly positive.
  static bool valid(const metric2& m) noexcept {
    double l0, l1;
    return eigenvalues_sym2(m[0], m[1], m[2], l0, l1) && l0 > 0;
  }
  static bool on_T3(double w0, double w1, const metric2* c, metric2& out) noexcept {
    return metric_on_T3(w0, w1, c[0], c[1], c[2], out);
  }
  static bool on_Q4(double u, double v, const metric2* c, metric2& out) noexcept {
    return metric_on_Q4(u, v, c[0], c[1], c[2], c[3], out);
  }
};

struct metric3_values {
  using value = metric3;
  double* data;
  std::size_t ld;
  metric3 read(unsigned n) const noexcept {
    const double* c = data + n * ld;
    return metric3{{c[0], c[1], c[2], c[3], c[4], c[5]}};
  }
  void write(unsigned n, const metric3& m) const noexcept {
    double* c = data + n * ld;
    for (unsigned k = 0; k < 6; ++k)
      c[k] = m[k];
  }
  // Kept when the smallest eigenvalue is strictly positive. dspev's info is
  // not read: a failed call leaves the zeroed eigenvalues, so the metric is
  // recomputed.
  static bool valid(const metric3& m) noexcept {
    metric3 copy = m;
    double w[3] = {0, 0, 0}, work[10] = {};
    lapack::dspev('N', 'U', 3, copy.m, w, nullptr, 1, work);
    return w[0] > 0;
  }
  static bool on_T3(double w0, double w1, const metric3* c, metric3& out) noexcept {
    return metric_on_T3(w0, w1, c[0], c[1], c[2], out);
  }
  static bool on_Q4(double u, double v, const metric3* c, metric3& out) noexcept {
    return metric_on_Q4(u, v, c[0], c[1], c[2], c[3], out);
  }
};

struct size_values {
  using value = double;
  double* data;
  double read(unsigned n) const noexcept { return data[n]; }
  void write(unsigned n, double s) const noexcept { data[n] = s; }
  static bool valid(double s) noexcept { return s > 0 && s < largest_double; }
  static bool on_T3(double w0, double w1, const double* c, double& out) noexcept {
    return size_on_T3(w0, w1, c[0], c[1], c[2], out);
  }
  static bool on_Q4(double u, double v, const double* c, double& out) noexcept {
    return size_on_Q4(u, v, c[0], c[1], c[2], c[3], out);
  }
};

// The list of targets, or all nodes in order for the forms without one.
struct listed_targets {
  const unsigned* ids;
  unsigned size;
  unsigned operator[](unsigned i) const noexcept { return ids[i]; }
};
struct all_targets {
  unsigned size;
  unsigned operator[](unsigned i) const noexcept { return i; }
};

// The value at `point` in the located element, from its corners' values.
template <element_type Kind, class Values>
bool combine(const dense2D<double>& coords, const unsigned* nodes, const Values& values, const double point[2],
             typename Values::value& out) noexcept {
  typename Values::value corner[4];
  if (element_sides<Kind>(nodes) == 3) {
    double w[2];
    barycentric_T3(coords, nodes, point, w);
    for (unsigned k = 0; k < 3; ++k)
      corner[k] = values.read(nodes[k]);
    return Values::on_T3(w[0], w[1], corner, out);
  }
  double uv[2];
  inverse_bilinear_Q4(coords, nodes, point, uv);
  for (unsigned k = 0; k < 4; ++k)
    corner[k] = values.read(nodes[k]);
  return Values::on_Q4(uv[0], uv[1], corner, out);
}

// One driver per element kind and kind of value. All of them fill the tree.
// A target keeps its present value when `keep_valid` finds it valid, when it
// lies outside the box of the background nodes, and when its combiner fails;
// one that no element holds takes the nearest background node's value as it
// stands.
template <element_type Kind, class Values, class Targets>
int drive(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
          const dense1D<unsigned, 8>& ancestors, const Values& values, const Targets& targets,
          bool keep_valid) noexcept {
  point_locator locator(coords, bg_conn, neighbours, ancestors);
  edge_picker picker;
  locator.tree.fill_from_mesh<Kind>(bg_conn);
  if (locator.tree.out_of_memory) return status::out_of_memory;
  const unsigned* holder = ancestors.begin();
  auto take = [&](unsigned n) { return holder[n] == null_id && !(keep_valid && Values::valid(values.read(n))); };
  auto visit = [&](unsigned n, const double point[2], unsigned e) {
    typename Values::value v = values.read(n);
    bool ok;
    if (e != null_id) {
      ok = combine<Kind>(coords, bg_conn.column(e), values, point, v);
    } else {
      double d2 = largest_double;
      const unsigned nearest = locator.tree.nearest_node(point, d2, ancestors);
      ok = nearest != null_id;
      if (ok) v = values.read(nearest);
    }
    if (ok) values.write(n, v);
  };
  return locate_targets<Kind>(locator, picker, targets, walk_tolerance, take, visit);
}

template <class Targets, class Values>
int dispatch(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
             const dense1D<unsigned, 8>& ancestors, const Targets& targets, const Values& values, bool keep_valid,
             element_type type) noexcept {
  if (bg_conn.rows == 3 && type == T3)
    return drive<T3>(coords, bg_conn, neighbours, ancestors, values, targets, keep_valid);
  if (bg_conn.rows == 4 && type == Q4)
    return drive<Q4>(coords, bg_conn, neighbours, ancestors, values, targets, keep_valid);
  if (bg_conn.rows == 4 && type == MIXED)
    return drive<MIXED>(coords, bg_conn, neighbours, ancestors, values, targets, keep_valid);
  return status::ok;
}

// The field is written while every other argument is still read: the
// coordinates of later targets and of the corners, the walks' tables, the
// list. An input that shares storage with the field is read from a private
// copy, made only when the two can meet, so that the result is the one
// separate arrays give. The element types differ from the field's except
// for `coords`, so only a view made over raw storage can bring the others
// into reach; they are guarded all the same, for the price of a comparison.
template <class Targets, class Field, class Run>
int with_separate_inputs(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                         const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                         const Targets& targets, const dense1D<unsigned, 8>* listed, const Field& field,
                         Run run) noexcept {
  const separate_input<dense2D<double>> xy(coords, field);
  const separate_input<dense2D<unsigned>> elements(bg_conn, field), across(neighbours, field);
  const separate_input<dense1D<unsigned, 8>> holders(ancestors, field);
  if (!xy.ok() || !elements.ok() || !across.ok() || !holders.ok()) return status::out_of_memory;
  if (listed == nullptr) return run(xy.get(), elements.get(), across.get(), holders.get(), targets);
  const separate_input<dense1D<unsigned, 8>> list(*listed, field);
  if (!list.ok()) return status::out_of_memory;
  return run(xy.get(), elements.get(), across.get(), holders.get(),
             listed_targets{list.get().begin(), list.get().size});
}

// The walks start from the `ancestors` entries of background nodes, which
// must then be elements (or `null_id`).
bool ancestors_fit(const dense2D<unsigned>& bg_conn, const dense1D<unsigned, 8>& ancestors) noexcept {
  const unsigned n_elements = bg_conn.cols, rows = bg_conn.rows;
  const unsigned* holder = ancestors.begin();
  bool bad = false;
  for (unsigned j = 0; j < n_elements; ++j) {
    const unsigned* c = bg_conn.column(j);
    for (unsigned r = 0; r < rows; ++r)
      if (c[r] != null_id) {
        const unsigned a = holder[c[r]];
        bad |= a != null_id && a >= n_elements;
      }
  }
  return !bad;
}

// Checks 2 to 5, in order: `conn_kind` is the kind `bg_conn` is checked as,
// T3 for the metric forms whatever `type` says.
int check_mesh(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
               const dense1D<unsigned, 8>& ancestors, element_type conn_kind, element_type type) noexcept {
  const unsigned n_nodes = coords.cols;
  if (coords.rows != 2) return -1;
  if (!tesskit::check_IDs(bg_conn, conn_kind, n_nodes)) return -2;
  if (neighbours.rows != bg_conn.rows || neighbours.cols != bg_conn.cols ||
      !tesskit::check_IDs(neighbours, bg_conn.cols))
    return -3;
  if (ancestors.size != n_nodes) return -4;
  const bool drives = (bg_conn.rows == 3 && type == T3) || (bg_conn.rows == 4 && (type == Q4 || type == MIXED));
  if (drives && !ancestors_fit(bg_conn, ancestors)) return -4;
  return status::ok;
}

template <class Targets>
int metrics_form(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
                 const dense1D<unsigned, 8>& ancestors, dense2D<double>& metrics, const Targets& targets,
                 const dense1D<unsigned, 8>* listed, bool keep_valid, element_type type) noexcept {
  if (targets.size == 0) return status::ok;
  if (const int refused = check_mesh(coords, bg_conn, neighbours, ancestors, T3, type)) return refused;
  if (metrics.cols != coords.cols || (metrics.rows != 3 && metrics.rows != 6)) return -5;
  if (listed && !tesskit::check_IDs(*listed, coords.cols)) return -6;
  return with_separate_inputs(coords, bg_conn, neighbours, ancestors, targets, listed, metrics, [&](const auto&... in) {
    if (metrics.rows == 3) return dispatch(in..., metric2_values{metrics.column(0), metrics.ld}, keep_valid, type);
    return dispatch(in..., metric3_values{metrics.column(0), metrics.ld}, keep_valid, type);
  });
}

template <class Targets>
int sizes_form(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn, const dense2D<unsigned>& neighbours,
               const dense1D<unsigned, 8>& ancestors, dense1D<double, 8>& sizes, const Targets& targets,
               const dense1D<unsigned, 8>* listed, bool keep_valid, element_type type) noexcept {
  if (targets.size == 0) return status::ok;
  if (const int refused = check_mesh(coords, bg_conn, neighbours, ancestors, type, type)) return refused;
  if (sizes.size != coords.cols) return -5;
  if (listed && !tesskit::check_IDs(*listed, coords.cols)) return -6;
  return with_separate_inputs(coords, bg_conn, neighbours, ancestors, targets, listed, sizes, [&](const auto&... in) {
    return dispatch(in..., size_values{sizes.begin()}, keep_valid, type);
  });
}

} // namespace

int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                        const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                        dense2D<double>& metrics, const dense1D<unsigned, 8>& target_nodes, bool keep_valid,
                        element_type type) noexcept {
  return metrics_form(coords, bg_conn, neighbours, ancestors, metrics,
                      listed_targets{target_nodes.begin(), target_nodes.size}, &target_nodes, keep_valid, type);
}

int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                        const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                        dense2D<double>& metrics, bool keep_valid, element_type type) noexcept {
  return metrics_form(coords, bg_conn, neighbours, ancestors, metrics, all_targets{coords.cols}, nullptr, keep_valid,
                      type);
}

int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                        const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                        dense1D<double, 8>& sizes, const dense1D<unsigned, 8>& target_nodes, bool keep_valid,
                        element_type type) noexcept {
  return sizes_form(coords, bg_conn, neighbours, ancestors, sizes,
                    listed_targets{target_nodes.begin(), target_nodes.size}, &target_nodes, keep_valid, type);
}

int interpolate_metrics(const dense2D<double>& coords, const dense2D<unsigned>& bg_conn,
                        const dense2D<unsigned>& neighbours, const dense1D<unsigned, 8>& ancestors,
                        dense1D<double, 8>& sizes, bool keep_valid, element_type type) noexcept {
  return sizes_form(coords, bg_conn, neighbours, ancestors, sizes, all_targets{coords.cols}, nullptr, keep_valid, type);
}

} // namespace tesskit2d
} // namespace kelm
