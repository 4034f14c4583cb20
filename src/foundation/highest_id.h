#pragma once

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// The greatest entry of `conn`, ignoring `null_id`: the top ID an array
/// uses. A packed array (`ld == rows`) is walked flat, and then an empty
/// array gives `null_id`; a strided one is walked by columns from 0. An array
/// of only `null_id` or 0 gives 0.
unsigned highest_id(const dense2D<unsigned>& conn) noexcept;

} // namespace tesskit2d
} // namespace kelm
