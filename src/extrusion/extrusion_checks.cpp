#include "extrusion/extrusion_checks.h"

#include "foundation/status.h"
#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit2d {
namespace {

bool rows_refused(unsigned rows, unsigned accepted) noexcept {
  return accepted == 23 ? rows != 2 && rows != 3 : rows != accepted;
}

// Sizes are refused when zero or negative; a NaN passes, as every check of
// a positive value in this library lets it.
bool size_refused(int status, double h) noexcept { return status != 0 && h <= 0; }

} // namespace

int check_extrusion(const extrusion_checks& row, dense2D<double>& coords, const extrusion_arguments& args) noexcept {
  const dense2D<unsigned>& conn = args.conn;
  if (conn.rows * conn.cols == 0) return status::ok;
  if (row.zero_layers_first && args.n_layers == 0) return status::ok;
  if (rows_refused(coords.rows, row.coords_rows)) return row.coords_status;
  if (!tesskit::check_IDs(conn, E2, coords.cols)) return row.ids_status;
  // Placement reads the column of every swept node, so `vectors` needs one
  // per node of `coords`, a size the published checks leave open.
  if (row.vectors_status != 0 && (args.vectors->rows != 2 || args.vectors->cols < coords.cols))
    return row.vectors_status;
  if (size_refused(row.thickness_status, args.thickness)) return row.thickness_status;
  if (size_refused(row.h0_status, args.h0)) return row.h0_status;
  if (size_refused(row.h1_status, args.h1)) return row.h1_status;
  if (row.pattern_status != 0 && static_cast<unsigned>(args.pattern) > 2) return row.pattern_status;
  const dense2D<unsigned>& out = args.conn_out;
  if (out.rows * out.cols != 0 && out.rows != row.out_rows) return row.out_status;
  if (row.lift_to_space && coords.rows == 2 && !coords.resize(3, coords.cols, 0.0)) return status::out_of_memory;
  return checks_passed;
}

} // namespace tesskit2d
} // namespace kelm
