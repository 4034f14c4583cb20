#include "foundation/primes.h"

#include <algorithm>

namespace kelm {
namespace tesskit2d {

const unsigned prime_table[30] = {13u,        23u,        53u,        97u,         193u,        389u,
                                  769u,       1543u,      3079u,      6151u,       12289u,      24593u,
                                  49157u,     98317u,     196613u,    393241u,     786433u,     1572869u,
                                  3145739u,   6291469u,   12582917u,  25165843u,   50331653u,   100663319u,
                                  201326611u, 402653189u, 805306457u, 1610612741u, 3221225473u, 4294967291u};

unsigned prime_at_least(unsigned n) noexcept {
  const unsigned* end = prime_table + 30;
  const unsigned* p = std::lower_bound(prime_table, end, n);
  return p == end ? end[-1] : *p;
}

} // namespace tesskit2d
} // namespace kelm
