#include "tesskit2d/version.h"

// The text comes from the project's version in the build, the one place it
// is written.
const char* kelm::tesskit2d::version() noexcept { return TESSKIT2D_VERSION_TEXT; }
