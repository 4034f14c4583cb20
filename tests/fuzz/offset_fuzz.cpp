// Moving a surface along its normals and adding a displaced copy, with given
// normals of any shape or computed ones, by a distance or a tensor.

#include "fuzz_arrays.h"
#include "tesskit2d/offset.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  auto coords = fuzz::coords(in);
  const auto conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 4, 3, 4, 2, 6}), coords.cols);
  const bool given = in.ConsumeBool();
  // Normals of their own, or `coords` itself (a shallow copy).
  const auto node_normals = !given ? kelm::dense2D<double>() : in.ConsumeBool() ? fuzz::coords(in) : coords;
  kelm::symmetric_fixed<double, 3> tensor;
  for (double& m : tensor.m)
    m = in.ConsumeIntegralInRange<int>(-4, 4) * 0.5;
  const double distance = fuzz::pick<double>(in, {0.0, 1.0, -0.5, 1e300});
  const bool by_tensor = in.ConsumeBool();
  const unsigned n_nodes = coords.cols, coords_rows = coords.rows;
  int status;
  if (in.ConsumeBool()) {
    if (given)
      status = by_tensor ? kelm::tesskit2d::offset(coords, conn, node_normals, tensor)
                         : kelm::tesskit2d::offset(coords, conn, node_normals, distance);
    else
      status =
          by_tensor ? kelm::tesskit2d::offset(coords, conn, tensor) : kelm::tesskit2d::offset(coords, conn, distance);
    fuzz::check_status(status);
    if (status > 0) fuzz::broken("a count from a form that returns none");
    if (coords.cols != n_nodes || coords.rows != coords_rows) fuzz::broken("offset changed the shape of coords");
    return 0;
  }
  auto conn_out = in.ConsumeBool() ? conn : fuzz::output(in, n_nodes); // a shallow copy of `conn` or its own
  if (given)
    status = by_tensor ? kelm::tesskit2d::copy_with_offset(coords, conn, node_normals, tensor, conn_out)
                       : kelm::tesskit2d::copy_with_offset(coords, conn, node_normals, distance, conn_out);
  else
    status = by_tensor ? kelm::tesskit2d::copy_with_offset(coords, conn, tensor, conn_out)
                       : kelm::tesskit2d::copy_with_offset(coords, conn, distance, conn_out);
  fuzz::check_status(status);
  if (status > 0) fuzz::broken("a count from a form that returns none");
  if (status < 0 && coords.cols != n_nodes) fuzz::broken("coords grew on a failure");
  if (status == 0 && conn.rows * conn.cols != 0) {
    if (conn_out.rows != conn.rows || conn_out.cols != conn.cols) fuzz::broken("the copy's shape");
    if ((conn.rows == 3 || conn.rows == 4) && !fuzz::ids_below(conn_out, coords.cols))
      fuzz::broken("a copied element names an absent node");
    if (coords.cols < n_nodes) fuzz::broken("coords lost columns");
  }
  return 0;
}
