#include "tesskit2d/version.h"

const char* kelm::tesskit2d::version() noexcept { return "5.3.0.0"; }
