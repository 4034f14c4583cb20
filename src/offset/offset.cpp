#include "tesskit2d/offset.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "offset/offset_steps.h"

namespace kelm {
namespace tesskit2d {
namespace {

template <class Displace>
int move_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
               Displace displace) {
  if (const int refused = check_offset_input(coords, conn, node_normals)) return refused;
  // Moving a node writes a column that `node_normals`, when it lies over
  // the storage of `coords` with another offset or stride, reads for
  // another node.
  const separate_input<dense2D<double>> normals_read(node_normals, coords);
  if (!normals_read.ok()) return status::out_of_memory;
  id_list used_nodes;
  if (const int failed = collect_surface_nodes(conn, coords.cols, used_nodes)) return failed;
  offset_nodes(coords, used_nodes, normals_read.get(), displace);
  return 0;
}

} // namespace

int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
           const symmetric_fixed<double, 3>& tensor) {
  if (conn.rows * conn.cols == 0) return 0;
  return move_nodes(coords, conn, node_normals, by_tensor{tensor});
}

int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
           double distance) {
  if (conn.rows * conn.cols == 0 || distance == 0.0) return 0;
  return move_nodes(coords, conn, node_normals, by_distance{distance});
}

int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const symmetric_fixed<double, 3>& tensor) {
  if (conn.rows * conn.cols == 0) return 0;
  dense2D<double> node_normals;
  if (const int status = surface_unit_normals(coords, conn, node_normals)) return status;
  return offset(coords, conn, node_normals, tensor);
}

int offset(dense2D<double>& coords, const dense2D<unsigned>& conn, double distance) {
  if (conn.rows * conn.cols == 0 || distance == 0.0) return 0;
  dense2D<double> node_normals;
  if (const int status = surface_unit_normals(coords, conn, node_normals)) return status;
  return offset(coords, conn, node_normals, distance);
}

} // namespace tesskit2d
} // namespace kelm
