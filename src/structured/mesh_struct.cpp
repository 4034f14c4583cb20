#include "foundation/cell_diagonal.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "structured/grid_numbering.h"
#include "structured/transfinite.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/structured.h"

#include <cstddef>
#include <cstdint>

namespace kelm {
namespace tesskit2d {
namespace {

// Checks that both element kinds share after their own test for nothing to
// do. M comes from B with wrap-around, so a large N could make the loop
// length look right; the test of 2 N against B catches it first, and both
// tests are taken in 64 bits so that neither passes by a wrap of its own.
int check_loop(const dense2D<double>& coords, const dense1D<unsigned, 8>& boundary, unsigned M, unsigned N) noexcept {
  const unsigned B = boundary.size;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (B < 5 || boundary[0] != boundary[B - 1] || !tesskit::check_IDs(boundary, coords.cols)) return -2;
  if (2 * std::uint64_t(N) > B || (std::uint64_t(M) + N) * 2 != B - 1) return -3;
  return 0;
}

// Both outputs are sized once, before any value is written, so a failure
// needs only the column counts put back. Every new column is written in
// full afterwards, so the fill value is spent only where nothing else would
// be written: the columns of an output that was empty but had columns, and
// the nodes of a wrapped interior count.
//
// Counts arrive in 64 bits: a grid with more nodes or elements than 32-bit
// IDs can number is refused as memory that cannot be had, before anything
// grows. The one wrap that is kept on purpose, the node total of a T3 grid
// with M = 0, is reduced to 32 bits by its caller.
bool size_outputs(dense2D<double>& coords, unsigned n_nodes, std::uint64_t total_nodes, bool nodes_written,
                  dense2D<unsigned>& conn_out, unsigned element_rows, unsigned old_elements,
                  std::uint64_t new_elements) noexcept {
  if (total_nodes > 0xFFFFFFFFu || old_elements + new_elements > 0xFFFFFFFFu) return false;
  const unsigned dim = coords.rows;
  const bool elements_written = conn_out.rows * conn_out.cols != 0 || conn_out.cols == 0;
  const auto nodes = static_cast<unsigned>(total_nodes);
  const auto elements = static_cast<unsigned>(old_elements + new_elements);
  const bool nodes_ok = nodes_written ? coords.resize(dim, nodes) : coords.resize(dim, nodes, 0.0);
  if (nodes_ok &&
      (elements_written ? conn_out.resize(element_rows, elements) : conn_out.resize(element_rows, elements, null_id)))
    return true;
  coords.resize(dim, n_nodes);
  conn_out.resize(element_rows, old_elements, null_id);
  return false;
}

// Interior nodes come in column order, j fastest, which is the order of
// their IDs; only boundary nodes are read, so the order of evaluation does
// not matter.
void place_interior(dense2D<double>& coords, const unsigned* boundary, unsigned M, unsigned N,
                    unsigned n_nodes) noexcept {
  const unsigned ld = coords.ld, rows = coords.rows;
  const double* x = coords.column(0);
  double* out = coords.column(n_nodes);
  for (unsigned i = 1; i < M; ++i, out += std::size_t(N - 1) * ld)
    transfinite_line(x, ld, rows, i, M, N, n_nodes, boundary, out);
}

// Walking j upwards, the upper corners D and C of one cell are the lower
// corners A and P of the next, so each cell looks up two new IDs only.
void write_quadrangles(dense2D<unsigned>& conn_out, unsigned old_elements, const unsigned* boundary, unsigned M,
                       unsigned N, unsigned n_nodes) noexcept {
  const std::size_t ld = conn_out.ld;
  unsigned* c = conn_out.column(old_elements);
  for (unsigned i = 0; i < M; ++i) {
    unsigned a = grid_node_id(i, 0, M, N, n_nodes, boundary), p = grid_node_id(i + 1, 0, M, N, n_nodes, boundary);
    for (unsigned j = 0; j < N; ++j, c += ld) {
      const unsigned d = grid_node_id(i, j + 1, M, N, n_nodes, boundary);
      const unsigned q = grid_node_id(i + 1, j + 1, M, N, n_nodes, boundary);
      c[0] = a;
      c[1] = p;
      c[2] = q;
      c[3] = d;
      a = d;
      p = q;
    }
  }
}

void write_triangles(dense2D<unsigned>& conn_out, unsigned old_elements, const unsigned* boundary, unsigned M,
                     unsigned N, unsigned n_nodes, int pattern) noexcept {
  const std::size_t ld = conn_out.ld;
  unsigned* c = conn_out.column(old_elements);
  for (unsigned i = 0; i < M; ++i) {
    unsigned a = grid_node_id(i, 0, M, N, n_nodes, boundary), p = grid_node_id(i + 1, 0, M, N, n_nodes, boundary);
    for (unsigned j = 0; j < N; ++j, c += 2 * ld) {
      const unsigned d = grid_node_id(i, j + 1, M, N, n_nodes, boundary);
      const unsigned q = grid_node_id(i + 1, j + 1, M, N, n_nodes, boundary);
      const bool diagonal_ac = first_diagonal(pattern, i, j);
      unsigned* second = c + ld;
      if (diagonal_ac) {
        c[0] = a, c[1] = p, c[2] = q;
        second[0] = a, second[1] = q, second[2] = d;
      } else {
        c[0] = a, c[1] = p, c[2] = d;
        second[0] = p, second[1] = q, second[2] = d;
      }
      a = d;
      p = q;
    }
  }
}

} // namespace

int mesh_struct_Q4(dense2D<double>& coords, const dense1D<unsigned, 8>& boundary, unsigned n_side,
                   dense2D<unsigned>& conn_out) noexcept {
  const unsigned B = boundary.size, N = n_side, M = (B - 2 * N - 1) / 2;
  const unsigned n_nodes = coords.cols, old_elements = conn_out.cols;
  if (N == 0 || B == 0 || M == 0) return 0;
  if (const int status = check_loop(coords, boundary, M, N)) return status;
  if (conn_out.rows * conn_out.cols != 0 && conn_out.rows != 4) return -4;

  // The loop is read while `conn_out` grows: a copy where the two can meet.
  const separate_input<dense1D<unsigned, 8>> loop(boundary, conn_out);
  if (!loop.ok()) return status::out_of_memory;
  const std::uint64_t nodes = n_nodes + std::uint64_t(M - 1) * (N - 1), cells = std::uint64_t(M) * N;
  if (!size_outputs(coords, n_nodes, nodes, true, conn_out, 4, old_elements, cells)) return status::out_of_memory;
  const unsigned* b = loop.get().begin();
  place_interior(coords, b, M, N, n_nodes);
  write_quadrangles(conn_out, old_elements, b, M, N, n_nodes);
  return 0;
}

int mesh_struct_T3(dense2D<double>& coords, const dense1D<unsigned, 8>& boundary, unsigned n_side, int pattern,
                   dense2D<unsigned>& conn_out) noexcept {
  const unsigned B = boundary.size, N = n_side, M = (B - 2 * N - 1) / 2;
  const unsigned n_nodes = coords.cols, old_elements = conn_out.cols;
  if (B * N == 0) return 0;
  if (const int status = check_loop(coords, boundary, M, N)) return status;
  if (static_cast<unsigned>(pattern) > 2) return -4;
  if (conn_out.rows * conn_out.cols != 0 && conn_out.rows != 3) return -5;

  // The loop is read while `conn_out` grows: a copy where the two can meet.
  const separate_input<dense1D<unsigned, 8>> loop(boundary, conn_out);
  if (!loop.ok()) return status::out_of_memory;
  // With M = 0 the interior count wraps in 32 bits and `coords` shrinks; the
  // loops below then do nothing.
  const std::uint64_t nodes = M > 0 ? n_nodes + std::uint64_t(M - 1) * (N - 1) : unsigned(n_nodes + (M - 1) * (N - 1));
  const std::uint64_t triangles = 2 * std::uint64_t(M) * N;
  if (!size_outputs(coords, n_nodes, nodes, M > 0, conn_out, 3, old_elements, triangles)) return status::out_of_memory;
  const unsigned* b = loop.get().begin();
  place_interior(coords, b, M, N, n_nodes);
  write_triangles(conn_out, old_elements, b, M, N, n_nodes, pattern);
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
