#pragma once
// The steps that moving a surface and copying it share: the list of surface
// nodes, the displacement of one node, moving the listed nodes, and the
// numbered copies.
//
// Each listed node is handled once, however many elements share it: the
// nodes are gathered into a set first. The copy of used_nodes[p] is column
// n_nodes + p of `coords`, n_nodes being the column count on entry.

#include "foundation/status.h"
#include "foundation/vector_fast.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Lists the distinct nodes of `conn` in order of first appearance, by
/// column and within a column by row: rows 0 to 2 of a 3-row array; rows 0
/// to 2 and row 3 unless it is `null_id` of a 4-row array. Any other row
/// count lists nothing. The IDs are known to lie below `n_nodes`, so the
/// list and its table are sized for the smaller of that and #elements
/// once, ahead of the loop. 0, or -199 when the list or its table cannot
/// grow (no node is then lost silently).
int collect_surface_nodes(const dense2D<unsigned>& conn, unsigned n_nodes, id_list& used_nodes) noexcept;

/// A signed distance along the normal.
struct by_distance {
  double distance;
  void operator()(const double* n, double d[3]) const noexcept {
    d[0] = distance * n[0];
    d[1] = distance * n[1];
    d[2] = distance * n[2];
  }
};

/// A symmetric tensor applied to the normal: row r is the sum over c of
/// M(r, c) n[c], which scales the normal and turns it.
struct by_tensor {
  const symmetric_fixed<double, 3>& m;
  void operator()(const double* n, double d[3]) const noexcept {
    for (unsigned r = 0; r < 3; ++r)
      d[r] = m(r, 0) * n[0] + m(r, 1) * n[1] + m(r, 2) * n[2];
  }
};

/// Adds to each listed node its displacement. The normal is read before the
/// node is written, so `node_normals` may be `coords` itself.
template <class Displace>
void offset_nodes(dense2D<double>& coords, const id_list& used_nodes, const dense2D<double>& node_normals,
                  Displace displace) noexcept {
  const unsigned* ids = used_nodes.begin();
  for (unsigned p = 0; p < used_nodes.size; ++p) {
    double d[3];
    displace(node_normals.column(ids[p]), d);
    double* x = coords.column(ids[p]);
    x[0] += d[0];
    x[1] += d[1];
    x[2] += d[2];
  }
}

/// Makes `conn_out` a deep copy of `conn` in which every entry other than
/// `null_id` names the copy of its node: n_nodes + its position in
/// `used_nodes`. An entry missing from the list (any entry of an array of
/// neither 3 nor 4 rows) has the position `null_id` and so becomes
/// n_nodes - 1, the sum wrapping at 32 bits. 0, or -199 with `conn_out`
/// unchanged.
int remap_to_copies(const dense2D<unsigned>& conn, const id_list& used_nodes, unsigned n_nodes,
                    dense2D<unsigned>& conn_out);

/// Widens `coords` to n_nodes + #used_nodes columns and writes the copy of
/// each listed node there, displaced. `plain` makes every copy a plain copy
/// of its node, for a distance of 0. 0, or -199 with `coords` unchanged.
template <class Displace>
int copy_offset_nodes(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes,
                      const dense2D<double>& node_normals, Displace displace, bool plain) noexcept {
  if (!coords.resize(3, n_nodes + used_nodes.size)) return status::out_of_memory;
  // Column pointers are taken after the resize: it may have moved the
  // buffer, which `node_normals` shares when it is `coords` itself.
  const unsigned* ids = used_nodes.begin();
  for (unsigned p = 0; p < used_nodes.size; ++p) {
    const double* x = coords.column(ids[p]);
    double* y = coords.column(n_nodes + p);
    if (plain) {
      y[0] = x[0], y[1] = x[1], y[2] = x[2];
      continue;
    }
    double d[3];
    displace(node_normals.column(ids[p]), d);
    y[0] = x[0] + d[0];
    y[1] = x[1] + d[1];
    y[2] = x[2] + d[2];
  }
  return 0;
}

/// Unit node normals weighted by element size, `normals`(coords, conn, 1.0,
/// true, out), for the forms that are not given normals. A -2 of `normals`
/// speaks of `conn` but is passed on as -3, the status of the normals
/// argument those forms lack; -1 and -199 pass as they are.
int surface_unit_normals(const dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<double>& out);

/// The argument checks of the forms given normals, after the test for an
/// empty `conn`: -1 `coords` not in 3 rows; -2 a node ID of `conn` not
/// below the column counts of both `coords` and `node_normals`, or
/// `null_id` in a corner row of a 3- or 4-row `conn` (only row 3 of a
/// 4-row array may hold it); -3 `node_normals` not in 3 rows.
int check_offset_input(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                       const dense2D<double>& node_normals) noexcept;

} // namespace tesskit2d
} // namespace kelm
