#pragma once
/// \file
/// \brief tesskit2d: operations on two-dimensional and surface meshes.
///
/// Including this header brings in every family; each family's own header
/// is enough for its exports. The conventions that all of them share (node
/// orders, local edges, statuses, output modes) are in mesh.h.

#include "tesskit2d/mesh.h"
#include "tesskit2d/version.h"

#include "tesskit2d/connectivity.h"
#include "tesskit2d/curvature.h"
#include "tesskit2d/degenerate.h"
#include "tesskit2d/extrusion.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/high_order.h"
#include "tesskit2d/interpolation.h"
#include "tesskit2d/linear_reduction.h"
#include "tesskit2d/measures.h"
#include "tesskit2d/metric_generation.h"
#include "tesskit2d/metrics.h"
#include "tesskit2d/normals.h"
#include "tesskit2d/offset.h"
#include "tesskit2d/orientation.h"
#include "tesskit2d/structured.h"
