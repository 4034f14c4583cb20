// The walks over a mesh are tuned for speed (the layout of the edge table
// that raises the order, loads requested ahead of the elements that need
// them); none of that may change a bit of what they write. These checksums
// were taken from the plain implementations and pin every output: the
// connectivity, the node count, the bit pattern of every coordinate,
// measure and flip.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <utility>

#include "support/conversion_meshes.h"
#include "support/orientation_meshes.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/high_order.h"
#include "tesskit2d/measures.h"
#include "tesskit2d/orientation.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

std::uint64_t fnv1a(std::uint64_t h, const void* data, std::size_t n) {
  const unsigned char* p = static_cast<const unsigned char*>(data);
  for (std::size_t i = 0; i < n; ++i)
    h = (h ^ p[i]) * 1099511628211ull;
  return h;
}

constexpr std::uint64_t fnv_basis = 14695981039346656037ull;

template <class T> std::uint64_t checksum(const dense2D<T>& a, std::uint64_t h = fnv_basis) {
  for (unsigned j = 0; j < a.cols; ++j)
    h = fnv1a(h, a.column(j), a.rows * sizeof(T));
  return fnv1a(h, &a.cols, sizeof a.cols);
}

std::uint64_t checksum(const dense1D<double>& a, std::uint64_t h) {
  return fnv1a(h, a.begin(), a.size * sizeof(double));
}

// The random mesh in one of its forms: 0 mixed, 1 triangles only in 3 rows,
// 2 quadrangles only; lifted onto z = x y when `space`.
random_mesh form(unsigned kind, bool space) {
  random_mesh m = make_random_mesh(40, 11 + kind, kind == 0 ? 0.5 : kind == 1 ? 0.0 : 1.0);
  if (kind == 1) {
    dense2D<unsigned> t(3, m.conn.cols);
    for (unsigned j = 0; j < t.cols; ++j)
      for (unsigned r = 0; r < 3; ++r)
        t(r, j) = m.conn(r, j);
    m.conn = t;
  }
  if (space) {
    dense2D<double> x(3, m.coords.cols);
    for (unsigned j = 0; j < x.cols; ++j) {
      x(0, j) = m.coords(0, j);
      x(1, j) = m.coords(1, j);
      x(2, j) = m.coords(0, j) * m.coords(1, j);
    }
    m.coords = x;
  }
  return m;
}

} // namespace

TEST(RaiseOrder, OutputsAreBitForBitThoseOfThePlainImplementation) {
  struct order {
    unsigned ne, nq, nt;
  };
  const order orders[] = {{1, 0, 0}, {1, 1, 1}, {2, 4, 3}, {3, 9, 1}};
  const std::uint64_t want[3][2][4] = {
      {{0xf1994446b83e796full, 0xa8b6a0a6d55d70e4ull, 0x572ba428321f43e7ull, 0x9b50456e1eca11bfull},
       {0x309426efd6edd079ull, 0x157c51e6179674f7ull, 0x1ffdba0f55f32950ull, 0xa4ee6a9c8518a159ull}},
      {{0x5e30860319cca837ull, 0x7afe2a01385bfdb4ull, 0xf8b743bc1bcb9586ull, 0x953faeb4a645b79bull},
       {0xa4d1688a13e4f566ull, 0x024e07722374ab7bull, 0x0e5e9c40375c0953ull, 0x7173c0da142553ffull}},
      {{0xaa835182d221424full, 0x80cea6e8cf1c39c0ull, 0x607777a1a4bc71e9ull, 0xcf957b76f8cc24ccull},
       {0xa3466491ef422393ull, 0x39e48215f2943010ull, 0x59308914bf09b9bbull, 0xb89f186e4f498693ull}}};
  for (unsigned kind = 0; kind < 3; ++kind)
    for (bool space : {false, true})
      for (unsigned o = 0; o < 4; ++o) {
        random_mesh m = form(kind, space);
        // Odd orders also name the nodes of the first element's edges 0
        // and 1: runs of new nodes off the edges, given against the
        // element's direction for edge 1.
        const unsigned ne = orders[o].ne;
        dense2D<unsigned> known;
        if (o % 2 == 1) {
          const unsigned n = m.coords.cols;
          m.coords.resize(m.coords.rows, n + 2 * ne, 0.25);
          known = dense2D<unsigned>(ne + 2, 2);
          for (unsigned e = 0; e < 2; ++e) {
            known(e, e) = m.conn(e, 0);
            known(1 - e, e) = m.conn(e + 1, 0);
            for (unsigned k = 0; k < ne; ++k)
              known(2 + k, e) = n + e * ne + k;
          }
        }
        dense2D<unsigned> out;
        ASSERT_EQ(convert_into_high_order(m.coords, m.conn, orders[o].ne, orders[o].nq, orders[o].nt, out, known), 0);
        const std::uint64_t got = checksum(m.coords, checksum(out));
        EXPECT_EQ(got, want[kind][space][o]) << "kind " << kind << " space " << space << " order " << o;
      }
}

TEST(MeshWalks, OutputsAreBitForBitThoseOfThePlainImplementations) {
  const std::uint64_t want[3][2][3] = {{
                                           {
                                               0x650eabc684a29e07ull,
                                               0xa81ec35b53e60ba2ull,
                                               0x69d4eed4d48ca986ull,
                                           },
                                           {
                                               0x8d21479b81c5c245ull,
                                               0xe4ae1e76678c206dull,
                                               0xedd1bfc5e5be2366ull,
                                           },
                                       },
                                       {
                                           {
                                               0xae3349f4788e4d06ull,
                                               0xc8c6c1ee36e0b5dcull,
                                               0x39e356daae5128e4ull,
                                           },
                                           {
                                               0x0444780dcb75e4b3ull,
                                               0x78be712ae88e2335ull,
                                               0x39e356daae5128e4ull,
                                           },
                                       },
                                       {
                                           {
                                               0x047f0e65dbaeae32ull,
                                               0x64d9553ab5e31516ull,
                                               0xea0ce89f1fad42aaull,
                                           },
                                           {
                                               0xda1ac2c8b279caafull,
                                               0x435828213b327f8dull,
                                               0x5bce5f1b06b93302ull,
                                           },
                                       }};
  const std::uint64_t want_flips[3] = {
      0xfa950ec262fed093ull,
      0x3ebd89545ea3d9fdull,
      0xeb8d1ad3f8028d61ull,
  };
  for (unsigned kind = 0; kind < 3; ++kind) {
    for (bool space : {false, true}) {
      const random_mesh m = form(kind, space);
      // Measures: the total area, both angle extremes, circumcentres of
      // triangles.
      double total = 0;
      ASSERT_EQ(area(m.coords, m.conn, total), 0);
      dense1D<double> lo, hi;
      ASSERT_EQ(angles(m.coords, m.conn, true, lo, hi), 0);
      std::uint64_t measures = checksum(hi, checksum(lo, fnv1a(fnv_basis, &total, sizeof total)));
      if (kind == 1) {
        dense2D<double> centres;
        ASSERT_EQ(circumcenters(m.coords, m.conn, centres), 0);
        measures = checksum(centres, measures);
      }
      // Splits: into quadrangles through the raised mesh, and quadrangles
      // cut along their better diagonal.
      random_mesh s = form(kind, space);
      dense2D<unsigned> quads, cut;
      ASSERT_EQ(split_into_Q4(s.coords, s.conn, quads, dense2D<unsigned>()), 0);
      ASSERT_GE(split_Q4_into_T3(m.coords, m.conn, cut), 0);
      const std::uint64_t got[3] = {measures, checksum(s.coords, checksum(quads)), checksum(cut)};
      for (unsigned k = 0; k < 3; ++k) {
        EXPECT_EQ(got[k], want[kind][space][k]) << "kind " << kind << " space " << space << " output " << k;
      }
    }
    // The breadth-first walk of reorientation, on the mesh with every
    // third element flipped.
    random_mesh m = form(kind, false);
    for (unsigned j = 0; j < m.conn.cols; j += 3)
      std::swap(m.conn(1, j), m.conn(m.conn.rows == 3 || m.conn(3, j) == null_id ? 2 : 3, j));
    dense2D<unsigned> neighbours = neighbours_of(m.conn);
    const int flips = mesh_reorient(m.conn, neighbours, 0, 1);
    const std::uint64_t got = checksum(neighbours, checksum(m.conn, fnv1a(fnv_basis, &flips, sizeof flips)));
    EXPECT_EQ(got, want_flips[kind]) << "kind " << kind;
  }
}
