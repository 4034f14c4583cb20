#include "foundation/highest_id.h"

namespace kelm {
namespace tesskit2d {
namespace {

unsigned highest_below_null(const unsigned* begin, const unsigned* end, unsigned top) noexcept {
  for (const unsigned* p = begin; p < end; ++p)
    if (*p != null_id && *p > top) top = *p;
  return top;
}

} // namespace

unsigned highest_id(const dense2D<unsigned>& conn) noexcept {
  if (conn.ld != conn.rows) {
    unsigned top = 0;
    for (unsigned j = 0; j < conn.cols; ++j)
      top = highest_below_null(conn.column(j), conn.column(j) + conn.rows, top);
    return top;
  }
  const dense1D<unsigned, 8> flat = conn.as_vector();
  if (flat.size == 0) return null_id;
  return highest_below_null(flat.begin(), flat.end(), 0);
}

} // namespace tesskit2d
} // namespace kelm
