// Nodal interpolation over meshes whose neighbour and ancestor tables name
// any element or none, with targets inside, outside, on nodes, or at a NaN.
// Invariants: the status is one of the library's, only targets are written,
// and a target outside the box of the background nodes keeps its value.

#include <cmath>
#include <utility>

#include "fuzz_arrays.h"
#include "tesskit2d/interpolation.h"

namespace {

using kelm::dense1D;
using kelm::dense2D;
using kelm::tesskit2d::null_id;

// An entry of a table over `count` items: mostly in range, now and then the
// count itself, a larger value or `null_id`.
unsigned table_entry(FuzzedDataProvider& in, unsigned count) {
  switch (in.ConsumeIntegralInRange<unsigned>(0, 11)) {
  case 0: return null_id;
  case 1: return count;
  case 2: return count + in.ConsumeIntegralInRange<unsigned>(1, 1000);
  case 3: return null_id - 1;
  default: return count ? in.ConsumeIntegralInRange<unsigned>(0, count - 1) : null_id;
  }
}

bool same(double a, double b) { return fuzz::same(&a, &b, 1); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const auto type = fuzz::pick<kelm::element_type>(in, {kelm::T3, kelm::Q4, kelm::MIXED, kelm::T3, kelm::Q4,
                                                        kelm::MIXED, kelm::T6, static_cast<kelm::element_type>(31)});
  auto coords = fuzz::coords(in, 30, in.ConsumeIntegralInRange<int>(0, 3) == 0);
  const unsigned n_nodes = coords.cols;
  const unsigned rows = fuzz::pick<unsigned>(in, {3, 4, 3, 4, 2, 6});
  // Elements over valid IDs (a mixed column a triangle now and then), or,
  // in one input of eight, IDs of any kind.
  const bool faulty_ids = in.ConsumeIntegralInRange<int>(0, 7) == 0;
  auto bg_conn = faulty_ids ? fuzz::ids(in, rows, n_nodes, 20) : fuzz::array<unsigned>(in, rows, n_nodes ? 20 : 0, [&] {
    return in.ConsumeIntegralInRange<unsigned>(0, n_nodes ? n_nodes - 1 : 0);
  });
  if (rows == 4 && type == kelm::MIXED)
    for (unsigned e = 0; e < bg_conn.cols; ++e)
      if (in.ConsumeBool()) bg_conn(3, e) = null_id;
  const unsigned n_elements = bg_conn.cols;
  // Counter-clockwise elements in most inputs, so that walks go somewhere.
  if (!faulty_ids && coords.rows == 2 && rows >= 3 && rows <= 4 && in.ConsumeIntegralInRange<int>(0, 3) != 0)
    for (unsigned e = 0; e < n_elements; ++e) {
      unsigned* c = bg_conn.column(e);
      const bool triangle = rows == 3 || c[3] == null_id;
      const unsigned far = triangle ? 2 : 3;
      auto x = [&](unsigned k, unsigned a) { return coords(a, c[k]); };
      const double turn =
          (x(far - 1, 0) - x(0, 0)) * (x(far, 1) - x(1, 1)) - (x(far, 0) - x(1, 0)) * (x(far - 1, 1) - x(0, 1));
      if (turn < 0) std::swap(c[1], c[far]);
    }
  // Neighbours: the elements really across each edge, as a caller builds
  // them, with some entries then replaced by anything; or any entries.
  auto neighbours = fuzz::array<unsigned>(
      in, in.ConsumeIntegralInRange<int>(0, 7) ? rows : fuzz::pick<unsigned>(in, {3, 4}),
      n_elements + in.ConsumeIntegralInRange<unsigned>(0, 1), [&] { return table_entry(in, n_elements); });
  if (in.ConsumeIntegralInRange<int>(0, 7) != 0) neighbours.cols = std::min(neighbours.cols, n_elements);
  if (neighbours.rows == rows && neighbours.cols == n_elements && rows >= 3 && rows <= 4 && in.ConsumeBool()) {
    auto sides = [&](unsigned e) { return rows == 3 || bg_conn(3, e) == null_id ? 3u : 4u; };
    auto edge = [&](unsigned e, unsigned s, unsigned end) {
      if (sides(e) == 3) return bg_conn((s + 1 + end) % 3, e);
      return bg_conn((s + end) % 4, e);
    };
    const unsigned keep = in.ConsumeIntegralInRange<unsigned>(0, 8);
    for (unsigned e = 0; e < n_elements; ++e)
      for (unsigned s = 0; s < rows; ++s) {
        unsigned across = null_id;
        for (unsigned f = 0; f < n_elements && s < sides(e); ++f)
          for (unsigned t = 0; t < sides(f) && f != e; ++t)
            if (edge(e, s, 0) == edge(f, t, 1) && edge(e, s, 1) == edge(f, t, 0)) across = f;
        if (keep != 0)
          neighbours(s, e) = in.ConsumeIntegralInRange<unsigned>(0, 15) ? across : table_entry(in, n_elements);
      }
  }
  // Ancestors: the element of the node as a mesh builder would give, or any
  // entry; one entry too many or too few now and then.
  unsigned n_ancestors = n_nodes;
  if (in.ConsumeIntegralInRange<int>(0, 15) == 0) n_ancestors += in.ConsumeBool() ? 1 : (n_nodes ? -1u : 0u);
  dense1D<unsigned> ancestors(n_ancestors, null_id);
  const bool arbitrary = in.ConsumeBool();
  for (unsigned e = 0; e < n_elements && !arbitrary; ++e)
    for (unsigned r = 0; r < rows; ++r)
      if (bg_conn(r, e) < n_ancestors) ancestors[bg_conn(r, e)] = e;
  for (unsigned k = 0; k < n_ancestors; ++k)
    if (arbitrary || in.ConsumeIntegralInRange<int>(0, 7) == 0) ancestors[k] = table_entry(in, n_elements);

  // Targets: nodes of any kind, now and then one past the last node.
  const unsigned n_targets = in.ConsumeIntegralInRange<unsigned>(0, 12);
  dense1D<unsigned> targets(n_targets);
  for (unsigned k = 0; k < n_targets; ++k)
    targets[k] = in.ConsumeIntegralInRange<int>(0, 15) == 0 || n_nodes == 0
                     ? n_nodes + in.ConsumeIntegralInRange<unsigned>(0, 1)
                     : in.ConsumeIntegralInRange<unsigned>(0, n_nodes - 1);

  const unsigned field_rows = in.ConsumeIntegralInRange<unsigned>(0, 3);
  if (in.ConsumeBool()) {
    dense2D<double> field = fuzz::array<double>(in, field_rows, n_nodes + in.ConsumeIntegralInRange<unsigned>(0, 1),
                                                [&] { return in.ConsumeIntegralInRange<int>(-4, 4) * 0.25; });
    if (in.ConsumeIntegralInRange<int>(0, 3) == 0) field = coords; // shared storage
    const dense2D<double> before = [&] {
      dense2D<double> c;
      c.copy(field);
      return c;
    }();
    const int status = kelm::tesskit2d::interpolate(coords, bg_conn, neighbours, ancestors, field, targets, type);
    fuzz::check_status(status);
    if (status == -199) fuzz::broken("the columns overload ran out of memory");
    for (unsigned j = 0; j < field.cols; ++j)
      for (unsigned i = 0; i < field.rows; ++i)
        if (!same(field(i, j), before(i, j))) fuzz::broken("the columns overload wrote a value");
    return 0;
  }

  if (in.ConsumeIntegralInRange<int>(0, 3) == 0 && coords.buffer->capacity >= n_nodes) {
    // The field as a view over the buffer of `coords`: the call must give
    // what it gives on separate arrays holding the same values.
    dense1D<double> shared(coords);
    shared.offset = in.ConsumeIntegralInRange<unsigned>(0, coords.buffer->capacity - n_nodes);
    shared.size = n_nodes;
    dense2D<double> points;
    dense1D<double> alone;
    if (!points.copy(coords) || !alone.copy(shared)) return 0;
    const int expected = kelm::tesskit2d::interpolate(points, bg_conn, neighbours, ancestors, alone, targets, type);
    const int status = kelm::tesskit2d::interpolate(coords, bg_conn, neighbours, ancestors, shared, targets, type);
    if (status != expected) fuzz::broken("shared storage changed the status");
    for (unsigned k = 0; k < n_nodes; ++k)
      if (!same(shared[k], alone[k])) fuzz::broken("shared storage changed a value");
    return 0;
  }
  dense1D<double> field(n_nodes + (in.ConsumeIntegralInRange<int>(0, 15) == 0 ? 1 : 0));
  for (unsigned k = 0; k < field.size; ++k)
    field[k] = in.ConsumeIntegralInRange<int>(-4, 4) * 0.25;
  dense1D<double> before;
  before.copy(field);
  const int status = kelm::tesskit2d::interpolate(coords, bg_conn, neighbours, ancestors, field, targets, type);
  fuzz::check_status(status);
  if (status < 0 && status != -199) {
    for (unsigned k = 0; k < field.size; ++k)
      if (!same(field[k], before[k])) fuzz::broken("a refused call wrote a value");
    return 0;
  }
  if (status > 0) fuzz::broken("a positive status");
  // Only targets with no element are written, and only inside the closed box
  // of the background nodes.
  double lo[2] = {INFINITY, INFINITY}, hi[2] = {-INFINITY, -INFINITY};
  bool any = false;
  if (status == 0 && rows >= 3 && rows <= 4 && coords.rows == 2)
    for (unsigned e = 0; e < n_elements; ++e)
      for (unsigned r = 0; r < rows; ++r) {
        const unsigned id = bg_conn(r, e);
        if (id >= n_nodes) continue;
        any = true;
        for (unsigned a = 0; a < 2; ++a) {
          lo[a] = std::fmin(lo[a], coords(a, id));
          hi[a] = std::fmax(hi[a], coords(a, id));
        }
      }
  for (unsigned k = 0; k < field.size; ++k) {
    if (same(field[k], before[k])) continue;
    bool listed = false;
    for (unsigned t = 0; t < n_targets; ++t)
      listed |= targets[t] == k;
    if (!listed) fuzz::broken("a node that is no target was written");
    if (ancestors[k] != null_id) fuzz::broken("a background node was written");
    if (!any) fuzz::broken("a target was written with no background node");
    const double x = coords(0, k), y = coords(1, k);
    if (!(lo[0] <= x && x <= hi[0] && lo[1] <= y && y <= hi[1])) fuzz::broken("a target outside the box was written");
  }
  return 0;
}
