#include "tesskit2d/extras.h"

namespace kelm {
namespace tesskit2d {
namespace extras {
namespace {

// Row k in VTK's order is row to_vtk[k] here; row k here is row
// from_vtk[k] in VTK's order. Only T6 differs: its mid nodes turn by one
// edge. Q8 and Q9 share the order, mid nodes from (0, 1) round, centre last.
constexpr unsigned t6_to_vtk[6] = {0, 1, 2, 5, 3, 4};
constexpr unsigned t6_from_vtk[6] = {0, 1, 2, 4, 5, 3};
constexpr unsigned same[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};

// Rewrites the first six rows of column `c` by `order`.
void permute_t6(unsigned* c, const unsigned* order) noexcept {
  unsigned was[6];
  for (unsigned r = 0; r < 6; ++r)
    was[r] = c[r];
  for (unsigned r = 0; r < 6; ++r)
    c[r] = was[order[r]];
}

int reorder(dense2D<unsigned>& conn, const unsigned* t6_order) noexcept {
  if (conn.rows * std::uint64_t(conn.cols) == 0) return 0;
  if (conn.rows != 6 && conn.rows != 8 && conn.rows != 9) return -1;
  // Quadrangles keep their order; the triangles of a mixed array are the
  // columns with `null_id` in row 6.
  for (unsigned j = 0; j < conn.cols; ++j)
    if (conn.rows == 6 || conn(6, j) == null_id) permute_t6(conn.column(j), t6_order);
  return 0;
}

} // namespace

const unsigned* vtk_order(unsigned rows) noexcept {
  return rows == 6 ? t6_to_vtk : rows == 8 || rows == 9 ? same : nullptr;
}

const unsigned* library_order(unsigned rows) noexcept {
  return rows == 6 ? t6_from_vtk : rows == 8 || rows == 9 ? same : nullptr;
}

int to_vtk_order(dense2D<unsigned>& conn) noexcept { return reorder(conn, t6_to_vtk); }

int from_vtk_order(dense2D<unsigned>& conn) noexcept { return reorder(conn, t6_from_vtk); }

} // namespace extras
} // namespace tesskit2d
} // namespace kelm
