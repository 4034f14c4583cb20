// Every family called from several threads at once, on arrays of their own
// and on inputs they share read-only, must give what one thread gives. Run
// under the tsan preset, this is also the race check of the whole library.

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
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

// A digest of a status and of the bits of every array a call wrote.
struct digest {
  std::uint64_t h = 1469598103934665603ull;
  void add(const void* p, std::size_t n) {
    const auto* b = static_cast<const unsigned char*>(p);
    for (std::size_t i = 0; i < n; ++i)
      h = (h ^ b[i]) * 1099511628211ull;
  }
  template <class T> void add(const dense2D<T>& a) {
    add(&a.rows, sizeof a.rows);
    add(&a.cols, sizeof a.cols);
    for (unsigned j = 0; j < a.cols; ++j)
      add(a.column(j), a.rows * sizeof(T));
  }
  template <class T> void add(const dense1D<T, 8>& a) {
    add(&a.size, sizeof a.size);
    add(a.begin(), a.size * sizeof(T));
  }
  void add(int status) {
    refused |= status < 0;
    add(&status, sizeof status);
  }
  bool refused = false;
  void add(double x) { add(&x, sizeof x); }
};

template <class T> dense2D<T> own(const dense2D<T>& a) {
  dense2D<T> d;
  d.copy(a);
  return d;
}

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
  for (unsigned k = 0; k < 12; ++k) {
    const double t = 6.283185307179586 * k / 12;
    ring(0, k) = std::cos(t);
    ring(1, k) = std::sin(t);
    loop[k] = k;
  }
  loop[12] = 0;
  auto bg = grid_background(10, MIXED, 0.2);
  const auto targets = add_targets(bg, random_points(40, -0.1, 1.1));
  dense1D<double> field(bg.xy.cols, 0.0);
  for (unsigned k = 0; k < bg.n_background; ++k)
    field[k] = bg.xy(0, k) + 2 * bg.xy(1, k) * bg.xy(1, k);
  dense2D<unsigned> sphere_triangles;
  split_Q4_into_T3(sphere.conn, sphere_triangles);
  const auto triangle_neighbours = neighbours_of(sphere_triangles);
  dense1D<unsigned> ancestors(sphere.xyz.cols, null_id);
  for (unsigned j = 0; j < sphere.conn.cols; ++j)
    for (unsigned i = 0; i < 4; ++i)
      if (sphere.conn(i, j) != null_id) ancestors[sphere.conn(i, j)] = j;

  const std::vector<std::function<void(digest&)>> calls = {
      [&](digest& d) {
        dense2D<unsigned> out;
        d.add(split_Q4_into_T3(mesh.conn, out));
        d.add(out);
      },
      [&](digest& d) {
        auto xy = own(mesh.coords);
        dense2D<unsigned> out;
        d.add(convert_into_high_order(xy, mesh.conn, 2, 1, 1, out, dense2D<unsigned>()));
        d.add(xy);
        d.add(out);
      },
      [&](digest& d) {
        auto xy = own(mesh.coords);
        dense2D<unsigned> out, tris;
        d.add(split_into_Q4(xy, mesh.conn, out, dense2D<unsigned>()));
        d.add(split_Q4_into_T3(xy, out, tris));
        d.add(tris);
      },
      [&](digest& d) {
        auto c = own(mesh.conn);
        dense1D<unsigned> converted;
        d.add(convert_degenerated_Q(c, converted));
        d.add(c);
      },
      [&](digest& d) {
        auto xy = own(line);
        dense2D<unsigned> out;
        d.add(extrude_rotate_T3(xy, edges, kelm::vector_fixed<double, 2>{{0, -1}}, 1.0, 0.1, 0.2, 2, false, out));
        d.add(xy);
        d.add(out);
      },
      [&](digest& d) {
        auto xy = own(ring);
        dense2D<unsigned> out;
        d.add(mesh_struct_T3(xy, loop, 3, 2, out));
        d.add(xy);
        d.add(out);
      },
      [&](digest& d) {
        auto c = own(band);
        auto nb = neighbours_of(c);
        d.add(flip(c, nb, MIXED));
        d.add(mesh_reorient(c, nb, 0, 1));
        d.add(c);
      },
      [&](digest& d) {
        dense1D<double> lo, hi;
        double total;
        dense2D<double> centers;
        d.add(angles(mesh.coords, mesh.conn, true, lo, hi));
        d.add(area(mesh.coords, mesh.conn, total));
        d.add(total);
        d.add(circumcenters(sphere.xyz, sphere_triangles, centers));
        d.add(lo);
        d.add(centers);
      },
      [&](digest& d) {
        dense2D<double> n;
        d.add(normals(sphere.xyz, sphere.conn, 1.0, true, n));
        d.add(n);
      },
      [&](digest& d) {
        auto xyz = own(sphere.xyz);
        dense2D<unsigned> out;
        d.add(copy_with_offset(xyz, sphere.conn, 0.1, out));
        d.add(xyz);
        d.add(out);
      },
      [&](digest& d) {
        dense1D<double> values;
        values.copy(field);
        d.add(interpolate(bg.xy, bg.conn, bg.neighbours, bg.ancestors, values, targets, MIXED));
        d.add(values);
        dense1D<double> sizes;
        sizes.copy(field);
        for (unsigned k = 0; k < bg.n_background; ++k)
          sizes[k] = 0.1 + sizes[k];
        d.add(interpolate_metrics(bg.xy, bg.conn, bg.neighbours, bg.ancestors, sizes, targets, true, MIXED));
        d.add(sizes);
      },
      [&](digest& d) {
        dense2D<double> k, metrics;
        d.add(principal_curvatures(sphere.xyz, sphere_triangles, triangle_neighbours, 0.5, 0.8, 30, dense2D<unsigned>(),
                                   k));
        d.add(k);
        d.add(metrics_gen_aniso3d(sphere.xyz, sphere_triangles, 0.05, metrics));
        d.add(metrics);
      },
      [&](digest& d) {
        dense1D<unsigned> offsets, elements;
        d.add(get_connected_elements(sphere.conn, sphere_neighbours, ancestors, offsets, elements));
        d.add(elements);
      },
  };

  std::vector<std::uint64_t> expected;
  for (const auto& call : calls) {
    digest d;
    call(d);
    EXPECT_FALSE(d.refused) << "call " << expected.size(); // a refusal would test little
    expected.push_back(d.h);
  }
  constexpr unsigned n_threads = 4, rounds = 3;
  std::vector<std::vector<std::uint64_t>> seen(n_threads);
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < n_threads; ++t)
    threads.emplace_back([&, t] {
      for (unsigned r = 0; r < rounds; ++r)
        for (std::size_t k = 0; k < calls.size(); ++k) {
          // Each thread starts at another call, so different families overlap.
          const std::size_t at = (k + t) % calls.size();
          digest d;
          calls[at](d);
          seen[t].push_back(d.h == expected[at]);
        }
    });
  for (auto& th : threads)
    th.join();
  for (unsigned t = 0; t < n_threads; ++t)
    for (std::size_t k = 0; k < seen[t].size(); ++k)
      EXPECT_EQ(seen[t][k], 1u) << "thread " << t << ", call " << (k % calls.size() + t) % calls.size();
}
