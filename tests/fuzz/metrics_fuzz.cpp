// Metric and size fields carried from background meshes whose neighbour and
// ancestor tables name any element or none, with columns that are metrics,
// zeros, not numbers or anything at all; and fields spread over structured
// grids on loops of any length.

#include "fuzz_arrays.h"
#include "tesskit2d/metrics.h"

namespace {

using kelm::dense1D;
using kelm::dense2D;

// One entry of a field: a column of a positive definite metric when
// `valid`, else zero, a NaN, an infinity or a small number of either sign.
double entry(FuzzedDataProvider& in, bool valid, unsigned row) {
  if (valid) {
    const double diagonal = in.ConsumeIntegralInRange<int>(1, 16) * 0.25;
    const bool on_diagonal = row == 0 || row == 2 || row == 5;
    return on_diagonal ? diagonal : in.ConsumeIntegralInRange<int>(-2, 2) * 0.125;
  }
  return fuzz::pick<double>(in, {0.0, -1.0, 2.0, 1e300, std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::infinity(), 1e-300});
}

dense2D<double> metric_field(FuzzedDataProvider& in, unsigned n_nodes) {
  const unsigned rows = fuzz::pick<unsigned>(in, {3, 6, 3, 6, 4, 0});
  const unsigned cols = in.ConsumeIntegralInRange<int>(0, 7) == 0 ? n_nodes + 1 : n_nodes;
  bool valid = true;
  unsigned row = 0;
  return fuzz::array<double>(
      in, rows, cols,
      [&] {
        if (row == 0) valid = in.ConsumeIntegralInRange<int>(0, 3) != 0; // a column at a time
        const double e = entry(in, valid, row);
        row = row + 1 == rows ? 0 : row + 1;
        return e;
      },
      int(cols));
}

dense1D<double, 8> size_field(FuzzedDataProvider& in, unsigned n_nodes) {
  const unsigned n = in.ConsumeIntegralInRange<int>(0, 7) == 0 ? n_nodes + 1 : n_nodes;
  dense1D<double, 8> sizes(n);
  for (unsigned k = 0; k < n; ++k)
    sizes[k] =
        in.ConsumeIntegralInRange<int>(0, 3) != 0 ? in.ConsumeIntegralInRange<int>(1, 16) * 0.25 : entry(in, false, 0);
  return sizes;
}

bool same(const dense2D<double>& a, const dense2D<double>& b) {
  if (a.rows != b.rows || a.cols != b.cols) return false;
  for (unsigned j = 0; j < a.cols; ++j)
    if (!fuzz::same(a.column(j), b.column(j), a.rows)) return false;
  return true;
}

bool same(const dense1D<double, 8>& a, const dense1D<double, 8>& b) {
  return a.size == b.size && fuzz::same(a.begin(), b.begin(), a.size);
}

void transfer(FuzzedDataProvider& in) {
  auto coords = fuzz::coords(in, 20);
  const unsigned n_nodes = coords.cols;
  const unsigned rows = fuzz::pick<unsigned>(in, {3, 4, 3, 4, 2});
  auto bg_conn = fuzz::ids(in, rows, n_nodes, 12);
  auto neighbours = fuzz::ids(in, fuzz::pick<unsigned>(in, {rows, rows, rows, 3, 4}), bg_conn.cols, 13);
  if (in.ConsumeBool()) neighbours.cols = std::min(neighbours.cols, bg_conn.cols);
  // Ancestors: mostly none (targets), else any element, one past the last,
  // or anything; now and then one entry too many or too few.
  const unsigned n_ancestors = n_nodes + fuzz::pick<unsigned>(in, {0, 0, 0, 0, 1, 0xFFFFFFFFu});
  dense1D<unsigned, 8> ancestors(n_ancestors <= n_nodes + 1 ? n_ancestors : 0);
  for (unsigned k = 0; k < ancestors.size; ++k)
    switch (in.ConsumeIntegralInRange<int>(0, 5)) {
    case 0: ancestors[k] = bg_conn.cols; break;
    case 1: ancestors[k] = in.ConsumeIntegral<unsigned>(); break;
    case 2:
    case 3:
      ancestors[k] = bg_conn.cols ? in.ConsumeIntegralInRange<unsigned>(0, bg_conn.cols - 1) : fuzz::null_id;
      break;
    default: ancestors[k] = fuzz::null_id;
    }
  dense1D<unsigned, 8> targets(in.ConsumeIntegralInRange<unsigned>(0, 24));
  for (unsigned k = 0; k < targets.size; ++k)
    targets[k] =
        in.ConsumeIntegralInRange<int>(0, 15) == 0 ? fuzz::null_id : in.ConsumeIntegralInRange<unsigned>(0, n_nodes);
  const bool keep_valid = in.ConsumeBool();
  const auto type = static_cast<kelm::element_type>(in.ConsumeIntegralInRange<int>(0, 31));
  const int form = in.ConsumeIntegralInRange<int>(0, 3);
  using kelm::tesskit2d::interpolate_metrics;
  if (form < 2) {
    auto metrics = metric_field(in, n_nodes);
    dense2D<double> before;
    before.copy(metrics);
    const int status =
        form == 0 ? interpolate_metrics(coords, bg_conn, neighbours, ancestors, metrics, targets, keep_valid, type)
                  : interpolate_metrics(coords, bg_conn, neighbours, ancestors, metrics, keep_valid, type);
    fuzz::check_status(status);
    if (metrics.rows != before.rows || metrics.cols != before.cols) fuzz::broken("the field was resized");
    if (status < 0 && status != -199 && !same(metrics, before)) fuzz::broken("a refused call wrote");
    if (status == 0 && ancestors.size == metrics.cols)
      for (unsigned j = 0; j < metrics.cols; ++j)
        if (ancestors[j] != fuzz::null_id && !fuzz::same(metrics.column(j), before.column(j), metrics.rows))
          fuzz::broken("a background node was written");
  } else {
    auto sizes = size_field(in, n_nodes);
    dense1D<double, 8> before;
    before.copy(sizes);
    const int status =
        form == 2 ? interpolate_metrics(coords, bg_conn, neighbours, ancestors, sizes, targets, keep_valid, type)
                  : interpolate_metrics(coords, bg_conn, neighbours, ancestors, sizes, keep_valid, type);
    fuzz::check_status(status);
    if (sizes.size != before.size) fuzz::broken("the field was resized");
    if (status < 0 && status != -199 && !same(sizes, before)) fuzz::broken("a refused call wrote");
    if (status == 0 && ancestors.size == sizes.size)
      for (unsigned j = 0; j < sizes.size; ++j)
        if (ancestors[j] != fuzz::null_id && !fuzz::same(&sizes[j], &before[j], 1))
          fuzz::broken("a background node was written");
  }
}

void structured(FuzzedDataProvider& in) {
  const unsigned n = in.ConsumeIntegralInRange<unsigned>(0, 24);
  dense1D<unsigned, 8> loop(in.ConsumeIntegralInRange<unsigned>(0, 40));
  for (unsigned k = 0; k < loop.size; ++k)
    loop[k] = in.ConsumeIntegralInRange<unsigned>(0, n);
  if (loop.size > 1 && in.ConsumeBool()) loop[loop.size - 1] = loop[0];
  const unsigned n_side =
      in.ConsumeBool() ? in.ConsumeIntegralInRange<unsigned>(0, 24) : in.ConsumeIntegral<unsigned>();
  // On success the field grows by (M - 1)(N - 1), in 32 bits as promised.
  const unsigned B = loop.size, M = (B - 2 * n_side - 1) / 2;
  if (in.ConsumeBool()) {
    auto sizes = size_field(in, n);
    const unsigned before = sizes.size;
    const int status = kelm::tesskit2d::metrics_struct(loop, n_side, sizes);
    fuzz::check_status(status);
    const bool grew = status == 0 && B * n_side != 0;
    if (sizes.size != (grew ? before + (M - 1) * (n_side - 1) : before)) fuzz::broken("sizes not sized as promised");
  } else {
    auto metrics = metric_field(in, n);
    const unsigned before = metrics.cols;
    const int status = kelm::tesskit2d::metrics_struct(loop, n_side, metrics);
    fuzz::check_status(status);
    const bool grew = status == 0 && B * n_side != 0;
    if (metrics.cols != (grew ? before + (M - 1) * (n_side - 1) : before))
      fuzz::broken("metrics not sized as promised");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  if (in.ConsumeIntegralInRange<int>(0, 2) != 0)
    transfer(in);
  else
    structured(in);
  return 0;
}
