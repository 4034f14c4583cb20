#include "foundation/output_clear.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "offset/offset_steps.h"
#include "tesskit2d/offset.h"

namespace kelm {
namespace tesskit2d {

namespace {

// The copy after the checks. On failure `conn_out` holds what the failed
// step left: its old content when the nodes could not be listed or the copy
// not made, the renumbered copy when `coords` could not grow.
template <class Displace>
int copy_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
               Displace displace, bool plain, dense2D<unsigned>& conn_out) {
  const unsigned n_nodes = coords.cols;
  // `coords` grows and gains columns, which may move or overwrite the
  // storage of a `node_normals` laid over it.
  const separate_input<dense2D<double>> normals_read(node_normals, coords);
  if (!normals_read.ok()) return status::out_of_memory;
  id_list used_nodes;
  if (const int failed = collect_surface_nodes(conn, coords.cols, used_nodes)) return failed;
  if (const int failed = remap_to_copies(conn, used_nodes, n_nodes, conn_out)) return failed;
  return copy_offset_nodes(coords, used_nodes, n_nodes, normals_read.get(), displace, plain);
}

// The distance forms leave `conn_out` empty whenever they do not succeed.
int emptied_unless_done(int status, dense2D<unsigned>& conn_out) noexcept {
  if (status != 0) clear_output(conn_out);
  return status;
}

// The distance forms empty `conn_out` on entry, unless it is the very array
// `conn`, which they still have to read: it is then emptied on the way out
// of every call that does not succeed, and a success replaces it.
void empty_on_entry(const dense2D<unsigned>& conn, dense2D<unsigned>& conn_out) noexcept {
  if (static_cast<const void*>(&conn_out) != static_cast<const void*>(&conn)) clear_output(conn_out);
}

} // namespace

int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
                     const symmetric_fixed<double, 3>& tensor, dense2D<unsigned>& conn_out) {
  if (conn.rows * conn.cols == 0) return 0;
  if (const int refused = check_offset_input(coords, conn, node_normals)) return refused;
  return copy_nodes(coords, conn, node_normals, by_tensor{tensor}, false, conn_out);
}

int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& node_normals,
                     double distance, dense2D<unsigned>& conn_out) {
  empty_on_entry(conn, conn_out);
  if (conn.rows * conn.cols == 0) return 0;
  if (const int refused = check_offset_input(coords, conn, node_normals)) return emptied_unless_done(refused, conn_out);
  return emptied_unless_done(copy_nodes(coords, conn, node_normals, by_distance{distance}, distance == 0.0, conn_out),
                             conn_out);
}

int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn, const symmetric_fixed<double, 3>& tensor,
                     dense2D<unsigned>& conn_out) {
  if (conn.rows * conn.cols == 0) return 0;
  dense2D<double> node_normals;
  if (const int status = surface_unit_normals(coords, conn, node_normals)) return status;
  return copy_with_offset(coords, conn, node_normals, tensor, conn_out);
}

int copy_with_offset(dense2D<double>& coords, const dense2D<unsigned>& conn, double distance,
                     dense2D<unsigned>& conn_out) {
  empty_on_entry(conn, conn_out);
  if (conn.rows * conn.cols == 0) return 0;
  dense2D<double> node_normals;
  if (const int status = surface_unit_normals(coords, conn, node_normals)) return emptied_unless_done(status, conn_out);
  return copy_with_offset(coords, conn, node_normals, distance, conn_out);
}

} // namespace tesskit2d
} // namespace kelm
