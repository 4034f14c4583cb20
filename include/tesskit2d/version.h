#pragma once
/// \file
/// \brief The library's version.

#include "tesskit2d/export.h"

namespace kelm {
namespace tesskit2d {

/// \brief The library's version, "5.3.0.0".
///
/// \return The version text. It lives in static storage: the same pointer
///   every time, never to be freed.
TESSKIT2D_EXPORT const char* version() noexcept;

} // namespace tesskit2d
} // namespace kelm
