#include "treisoma/lapack.h"

#include <cstddef>

// Fortran's DSPEV. gfortran passes the lengths of the two CHARACTER arguments
// as hidden trailing arguments of type size_t, after all the others.
extern "C" void dspev_(const char* jobz, const char* uplo, const int* n, double* ap, double* w, double* z,
                       const int* ldz, double* work, int* info, std::size_t jobz_len, std::size_t uplo_len);

int kelm::lapack::dspev(char jobz, char uplo, int n, double* ap, double* w, double* z, int ldz, double* work) noexcept {
  // Illegal arguments are answered here, as LAPACK would number them, so
  // that LAPACK's error handler never prints.
  const bool vectors = jobz == 'V' || jobz == 'v';
  if (!vectors && jobz != 'N' && jobz != 'n') return -1;
  if (uplo != 'U' && uplo != 'u' && uplo != 'L' && uplo != 'l') return -2;
  if (n < 0) return -3;
  if (ldz < 1 || (vectors && ldz < n)) return -7;
  int info = 0;
  // With jobz 'N' z is never touched, but Fortran still wants an address.
  double unused = 0;
  if (!z) z = &unused;
  dspev_(&jobz, &uplo, &n, ap, w, z, &ldz, work, &info, 1, 1);
  return info;
}
