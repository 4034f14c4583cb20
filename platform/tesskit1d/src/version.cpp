#include "tesskit1d/tesskit1d.h"

const char* kelm::tesskit1d::version() noexcept { return "1.0.0"; }
