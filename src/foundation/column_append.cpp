#include "foundation/column_append.h"

#include <cstring>

namespace kelm {
namespace tesskit2d {

bool append_columns(dense2D<unsigned>& dest, const dense2D<unsigned>& source) noexcept {
  if (source.rows * source.cols == 0) return true;
  const unsigned rows = source.rows, old_cols = dest.cols;
  if (dest.column_capacity() < old_cols + source.cols)
    dest.reserve(rows, old_cols + std::max(old_cols, source.cols), 1);
  if (!dest.resize(rows, old_cols + source.cols)) return false;
  if (dest.ld == rows && source.ld == rows) {
    std::memcpy(dest.column(old_cols), source.column(0), std::size_t(rows) * source.cols * sizeof(unsigned));
  } else {
    for (unsigned j = 0; j < source.cols; ++j)
      std::memcpy(dest.column(old_cols + j), source.column(j), rows * sizeof(unsigned));
  }
  return true;
}

} // namespace tesskit2d
} // namespace kelm
