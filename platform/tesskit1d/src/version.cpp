#include "tesskit1d/tesskit1d.h"

const char* kelm::tesskit1d::version() noexcept { return TESSKIT1D_VERSION_TEXT; }
