// The double and unsigned arrays are compiled here once; other element types
// are instantiated by the libraries that use them.

#include "treisoma/dense2D.h"

namespace kelm {
template class vector_num<double, 8>;
template class vector_num<unsigned, 8>;
template class dense1D<double, 8>;
template class dense1D<unsigned, 8>;
template class dense2D<double>;
template class dense2D<unsigned>;
} // namespace kelm
