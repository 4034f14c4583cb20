#pragma once
// The neighbour table of a triangle mesh, which the library reads but never
// builds.

#include "tesskit2d/mesh.h"

namespace demo {

using kelm::dense2D;

/// Row s of column j: the triangle across the edge opposite corner s of
/// triangle j, or `null_id` on a free edge. Found by sorting the edges.
dense2D<unsigned> triangle_neighbours(const dense2D<unsigned>& conn);

} // namespace demo
