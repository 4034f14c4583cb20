#pragma once
// tesskit1d: operations on line meshes of the kelm family.

#include "tesskit1d/export.h"

namespace kelm {
namespace tesskit1d {

/// The library's version, "1.0.0"; static storage.
TESSKIT1D_EXPORT const char* version() noexcept;

} // namespace tesskit1d
} // namespace kelm
