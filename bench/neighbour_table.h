#pragma once
// The neighbour table of a triangle mesh, for benchmarks of functions that
// read one.

#include "tesskit2d/mesh.h"

namespace bench {

using kelm::dense2D;

/// The element across each edge of a triangle mesh (slot s across the edge
/// opposite corner s, `null_id` on a free edge), found by sorting the edges:
/// the library reads this table but never builds it.
dense2D<unsigned> triangle_neighbours(const dense2D<unsigned>& conn);

} // namespace bench
