#include <algorithm>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "meshes.h"
#include "neighbours.h"
#include "report.h"
#include "steps.h"
#include "tesskit2d/linear_reduction.h"
#include "tesskit2d/orientation.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

// Edges that two triangles run the same way: none in a coherent mesh.
unsigned disagreeing_edges(const dense2D<unsigned>& conn, const dense2D<unsigned>& nb) {
  unsigned bad = 0;
  for (unsigned j = 0; j < conn.cols; ++j)
    for (unsigned s = 0; s < 3; ++s) {
      const unsigned m = nb(s, j);
      if (m >= conn.cols) continue;
      const unsigned a = conn((s + 1) % 3, j), b = conn((s + 2) % 3, j);
      for (unsigned r = 0; r < 3; ++r)
        bad += conn(r, m) == a && conn((r + 1) % 3, m) == b;
    }
  return bad / 2;
}

} // namespace

void orientation_steps() {
  section("Flip and reorientation");
  dense2D<unsigned> conn;
  split_Q4_into_T3(grid_quadrangles(300), conn);

  std::mt19937 random(1);
  unsigned flipped = 0;
  for (unsigned j = 1; j < conn.cols; ++j)
    if (random() % 2) {
      std::swap(conn(0, j), conn(2, j));
      ++flipped;
    }
  dense2D<unsigned> nb = demo::triangle_neighbours(conn);
  const unsigned disagreeing = disagreeing_edges(conn, nb);
  {
    step s("flip with neighbours, twice");
    int status = flip(conn, nb, T3);
    const unsigned all_reversed = disagreeing_edges(conn, nb);
    if (status == 0) status = flip(conn, nb, T3);
    s.done(status, "%u edges disagree, as before", all_reversed);
  }
  {
    step s("mesh_reorient from element 0");
    const int flips = mesh_reorient(conn, nb, 0, 1);
    s.done(flips < 0 ? flips : 0, "%d flips of %u flipped at random; %u -> %u edges disagree", flips, flipped,
           disagreeing, disagreeing_edges(conn, nb));
  }
}

} // namespace demo
