#pragma once
// treisoma: the array library of the kelm family.

#include "treisoma/dense1D.h"
#include "treisoma/dense2D.h"
#include "treisoma/fixed.h"
#include "treisoma/ptr.h"
#include "treisoma/ref_counted.h"
#include "treisoma/vector_num.h"
