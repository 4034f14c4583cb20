// Splits two quadrangles given in the caller's own memory, and finds the
// triangles' neighbours with the companion library.

#include <cstdio>
#include <tesskit2d/extras.h>
#include <tesskit2d/tesskit2d.h>

int main() {
  using namespace kelm::tesskit2d;
  unsigned quads[] = {0, 1, 4, 3, 1, 2, 5, 4};
  const auto conn = dense2D<unsigned>::view(quads, 4, 2);
  dense2D<unsigned> triangles;
  const int status = split_Q4_into_T3(conn, triangles);
  dense2D<unsigned> neighbours;
  const int non_manifold = extras::neighbours_of(triangles, neighbours);
  std::printf("tesskit2d %s: split %d quadrangles into %u triangles, %d non-manifold edges\n", version(), status,
              triangles.cols, non_manifold);
  return status == 2 && triangles.cols == 4 && non_manifold == 0 && neighbours.cols == 4 ? 0 : 1;
}
