#pragma once
// tesskit1d: operations on line meshes of the kelm family.

namespace kelm {
namespace tesskit1d {

/// The library's version, "1.0.0"; static storage.
const char* version() noexcept;

} // namespace tesskit1d
} // namespace kelm
