#pragma once

#include "tesskit2d/export.h"

namespace kelm {
namespace tesskit2d {

/// The library's version, "5.3.0.0". The text lives in static storage: the
/// same pointer every time, never to be freed.
TESSKIT2D_EXPORT const char* version() noexcept;

} // namespace tesskit2d
} // namespace kelm
