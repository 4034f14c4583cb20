// Every family called from several threads at once, on arrays of their own
// and on inputs they share read-only, must give what one thread gives. Run
// under the tsan preset, this is also the race check of the whole library.

#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/conversion_meshes.h"
#include "support/interpolation_meshes.h"
#include "support/orientation_meshes.h"
#include "support/surface_meshes.h"
#include "tesskit2d/tesskit2d.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// The status and the bytes of every array a call wrote.
struct digest {
  std::string bytes;
  bool refused = false; // a refusal would test little
  void raw(const void* p, std::size_t n) { bytes.append(static_cast<const char*>(p), n); }
  void add(int status) { refused |= status < 0, raw(&status, sizeof status); }
  void add(double x) { raw(&x, sizeof x); }
  template <class T> void add(const dense2D<T>& a) {
    raw(&a.rows, sizeof a.rows);
    for (unsigned j = 0; j < a.cols; ++j)
      raw(a.column(j), a.rows * sizeof(T));
  }
  template <class T> void add(const dense1D<T, 8>& a) { raw(a.begin(), a.size * sizeof(T)); }
};

} // namespace

TEST(Concurrency, EveryFamilyGivesTheSameBitsInEveryThread) {
  // Shared, read-only inputs.
  const auto mesh = make_random_mesh(8, 3);
  const auto sphere = uv_sphere(12, 8, 1.0);
  const auto sphere_neighbours = neighbours_of(sphere.conn);
  const auto band = strip(20, true);
  const auto line = coords({{0, 0}, {1, 0.5}, {2, 0}, {3, 1}});
  const auto edges = conn({{0, 1}, {1, 2}, {2, 3}});
  dense1D<unsigned, 8> loop(13);
  dense2D<double> ring(2, 12);
  for (unsigned k = 0; k < 13; ++k)
    loop[k] = k % 12, ring(0, k % 12) = std::cos(k % 12 * 0.5235987755982988),
    ring(1, k % 12) = std::sin(k % 12 * 0.5235987755982988);
  auto bg = grid_background(10, MIXED, 0.2);
  const auto targets = add_targets(bg, random_points(40, -0.1, 1.1));
  dense1D<double> field(bg.xy.cols, 0.0);
  for (unsigned k = 0; k < bg.n_background; ++k)
    field[k] = 0.1 + bg.xy(0, k) + 2 * bg.xy(1, k) * bg.xy(1, k);
  dense2D<unsigned> sphere_triangles;
  split_Q4_into_T3(sphere.conn, sphere_triangles);
  const auto triangle_neighbours = neighbours_of(sphere_triangles);
  const auto ancestors = ancestors_of(sphere.conn, sphere.xyz.cols);

  const std::vector<std::function<void(digest&)>> calls = {
      [&](digest& d) { // conversion
        auto xy = deep(mesh.coords), quads_xy = deep(mesh.coords);
        auto c = deep(mesh.conn);
        dense2D<unsigned> split, raised, quads, tris;
        dense1D<unsigned> converted;
        d.add(split_Q4_into_T3(mesh.conn, split));
        d.add(convert_into_high_order(xy, mesh.conn, 2, 1, 1, raised, dense2D<unsigned>()));
        d.add(split_into_Q4(quads_xy, mesh.conn, quads, dense2D<unsigned>()));
        d.add(split_Q4_into_T3(quads_xy, quads, tris));
        d.add(convert_degenerated_Q(c, converted));
        for (const auto* a : {&split, &raised, &tris, &c})
          d.add(*a);
        d.add(xy);
      },
      [&](digest& d) { // extrusion and structured grids
        auto xy = deep(line), disk = deep(ring);
        dense2D<unsigned> swept, grid;
        d.add(extrude_rotate_T3(xy, edges, kelm::vector_fixed<double, 2>{{0, -1}}, 1.0, 0.1, 0.2, 2, false, swept));
        d.add(mesh_struct_T3(disk, loop, 3, 2, grid));
        for (const auto* a : {&xy, &disk})
          d.add(*a);
        d.add(swept), d.add(grid);
      },
      [&](digest& d) { // topology
        auto c = deep(band);
        auto nb = neighbours_of(c);
        dense1D<unsigned> offsets, elements;
        d.add(flip(c, nb, MIXED));
        d.add(mesh_reorient(c, nb, 0, 1));
        d.add(get_connected_elements(sphere.conn, sphere_neighbours, ancestors, offsets, elements));
        d.add(c), d.add(elements);
      },
      [&](digest& d) { // measures, normals, offsets
        dense1D<double> lo, hi;
        double total;
        dense2D<double> centers, n;
        auto xyz = deep(sphere.xyz);
        dense2D<unsigned> out;
        d.add(angles(mesh.coords, mesh.conn, true, lo, hi));
        d.add(area(mesh.coords, mesh.conn, total));
        d.add(circumcenters(sphere.xyz, sphere_triangles, centers));
        d.add(normals(sphere.xyz, sphere.conn, 1.0, true, n));
        d.add(copy_with_offset(xyz, sphere.conn, 0.1, out));
        d.add(total), d.add(lo), d.add(centers), d.add(n), d.add(xyz), d.add(out);
      },
      [&](digest& d) { // interpolation
        dense1D<double> values, sizes;
        values.copy(field), sizes.copy(field);
        d.add(interpolate(bg.xy, bg.conn, bg.neighbours, bg.ancestors, values, targets, MIXED));
        d.add(interpolate_metrics(bg.xy, bg.conn, bg.neighbours, bg.ancestors, sizes, targets, true, MIXED));
        d.add(values), d.add(sizes);
      },
      [&](digest& d) { // curvatures and metrics
        dense2D<double> k, metrics;
        d.add(principal_curvatures(sphere.xyz, sphere_triangles, triangle_neighbours, 0.5, 0.8, 30, dense2D<unsigned>(),
                                   k));
        d.add(metrics_gen_aniso3d(sphere.xyz, sphere_triangles, 0.05, metrics));
        d.add(k), d.add(metrics);
      },
  };

  std::vector<std::string> expected;
  for (const auto& call : calls) {
    digest d;
    call(d);
    EXPECT_FALSE(d.refused) << "call " << expected.size();
    expected.push_back(d.bytes);
  }
  constexpr unsigned n_threads = 4, rounds = 3;
  std::vector<std::vector<int>> differs(n_threads);
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < n_threads; ++t)
    threads.emplace_back([&, t] {
      for (unsigned r = 0; r < rounds; ++r)
        for (std::size_t k = 0; k < calls.size(); ++k) {
          // Each thread starts at another call, so different families overlap.
          const std::size_t at = (k + t) % calls.size();
          digest d;
          calls[at](d);
          if (d.bytes != expected[at]) differs[t].push_back(int(at));
        }
    });
  for (auto& th : threads)
    th.join();
  for (unsigned t = 0; t < n_threads; ++t)
    EXPECT_TRUE(differs[t].empty()) << "thread " << t << ", first call " << differs[t][0];
}
