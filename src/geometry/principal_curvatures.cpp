#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/edge2.h"
#include "foundation/hash_table.h"
#include "foundation/output_clear.h"
#include "foundation/stamped_set.h"
#include "foundation/status.h"
#include "foundation/triad.h"
#include "geometry/orthonormal_frame.h"
#include "geometry/primitives.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/curvature.h"
#include "treisoma/lapack.h"

namespace kelm {
namespace tesskit2d {
namespace {

using edge_set = hash_table<triad<edge2, unsigned, unsigned>>;
using vec3 = vector_fixed<double, 3>;

inline double dot(const vec3& a, const vec3& b) noexcept { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// What the patches of one call share: the mesh, the limits, and the working
// arrays that every node reuses, so that the cost of a node follows the size
// of its patch and not the size of the mesh.
struct patch_walker {
  patch_walker(const dense2D<double>& xyz, const dense2D<unsigned>& elements, const dense2D<unsigned>& across,
               const edge_set& hard, double radius2, double cosine, unsigned most, stamped_set& marks) noexcept
      : coords(xyz), conn(elements), neighbours(across), hard_set(hard), r2(radius2), c(cosine), max_elements(most),
        stamps(marks) {}

  const dense2D<double>& coords;
  const dense2D<unsigned>& conn;
  const dense2D<unsigned>& neighbours;
  const edge_set& hard_set;
  double r2;
  double c;
  unsigned max_elements;
  stamped_set& stamps;

  dense1D<unsigned> patch;
  // Element normals computed once for the whole mesh when memory allows;
  // otherwise each one is recomputed where it is needed, with the same value.
  dense1D<double> normal_cache;
  bool cached = false;

  vec3 normal(unsigned e) const noexcept {
    if (cached) {
      const double* n = normal_cache.begin() + 3 * std::size_t(e);
      return {{n[0], n[1], n[2]}};
    }
    return triangle_normal(coords, conn.column(e));
  }

  // The element across slot `t` of `e`, or `null_id` when the entry is at or
  // above the element count, which means none.
  unsigned neighbour(unsigned e, unsigned t) const noexcept {
    const unsigned m = neighbours(t, e);
    return m < conn.cols ? m : null_id;
  }

  void gather_patch(const double* x, unsigned seed) noexcept;
  void patch_curvature(double out[8]) noexcept;
};

// Grows the patch of node `x` outward from `seed`, breadth first. Every
// element met is marked at once, also when it is refused, so that a refused
// element cannot come back into the same patch from another side.
void patch_walker::gather_patch(const double* x, unsigned seed) noexcept {
  stamps.clear();
  stamps.insert(seed);
  patch.size = 0;
  patch.push_back(seed);

  // Comparing squared cosines keeps the angle test free of square roots; the
  // sign carried over from the cosine keeps angles beyond a right angle
  // apart from those below it.
  const double c2 = c < 0 ? -(c * c) : c * c;
  const bool angle_test = c > -1.0;

  // Every candidate of an expansion carries the same key, the squared
  // distance from the node to the seed's centroid, so the sort of each
  // expansion comes down to ascending element index.
  const auto centroid_distance2 = [&](unsigned e) {
    const unsigned* n = conn.column(e);
    const double *p0 = coords.column(n[0]), *p1 = coords.column(n[1]), *p2 = coords.column(n[2]);
    double s = 0;
    for (unsigned i = 0; i < 3; ++i) {
      const double d = (p0[i] + p1[i] + p2[i]) * 0.3333333333333333 - x[i];
      s += d * d;
    }
    return s;
  };
  const double key = centroid_distance2(seed);
  struct candidate {
    double key;
    unsigned element;
  };
  const auto before = [](const candidate& a, const candidate& b) {
    return a.key < b.key || (a.key == b.key && a.element < b.element);
  };

  for (unsigned k = 0; k < patch.size; ++k) {
    if (patch.size >= max_elements || r2 <= 0) break;
    const unsigned e = patch[k];
    const unsigned* ce = conn.column(e);
    const vec3 n = normal(e);
    const double nn = dot(n, n);
    candidate accepted[3];
    unsigned n_accepted = 0;
    for (unsigned t = 0; t < 3; ++t) {
      const unsigned m = neighbour(e, t);
      if (m == null_id || stamps.contains(m)) continue;
      stamps.insert(m);
      if (centroid_distance2(m) > r2) continue;
      if (hard_set.n_live != 0 && hard_set.find(edge2(ce[(t + 1) % 3], ce[(t + 2) % 3])) != hard_set.end()) continue;
      if (angle_test) {
        const vec3 nm = normal(m);
        const double d = dot(n, nm);
        const double d2 = d < 0 ? -(d * d) : d * d;
        if (!(d2 > nn * c2 * dot(nm, nm))) continue;
      }
      // Insertion into the short sorted run of this expansion.
      candidate cand{key, m};
      unsigned at = n_accepted++;
      for (; at > 0 && before(cand, accepted[at - 1]); --at)
        accepted[at] = accepted[at - 1];
      accepted[at] = cand;
    }
    // An element that the patch cannot hold for lack of memory is left out.
    for (unsigned i = 0; i < n_accepted; ++i)
      patch.push_back(accepted[i].element);
  }
}

// The edge curvature tensor of the patch: every edge between two elements of
// the patch adds beta * l * v v^T, with v its unit direction, l its length
// and beta the signed angle between the normals of its two elements. The
// eigenvalues of the sum divided by the patch area are the curvatures; the
// eigenvector of the largest runs along the crease, across which the surface
// bends most.
void patch_walker::patch_curvature(double out[8]) noexcept {
  for (unsigned i = 0; i < 8; ++i)
    out[i] = 0.0;
  double t[6] = {0, 0, 0, 0, 0, 0};
  double area2 = 0.0;
  vec3 seed_normal{{0, 0, 0}};
  stamps.clear();
  for (unsigned k = 0; k < patch.size; ++k)
    stamps.insert(patch[k]);

  for (unsigned k = 0; k < patch.size; ++k) {
    const unsigned e = patch[k];
    const unsigned* ce = conn.column(e);
    const vec3 n = normal(e);
    const double l_e = std::sqrt(dot(n, n));
    area2 += l_e;
    if (k == 0 && l_e != 0.0)
      for (unsigned i = 0; i < 3; ++i)
        seed_normal[i] += n[i] * l_e;
    for (unsigned s = 0; s < 3; ++s) {
      const unsigned m = neighbour(e, s);
      // Each inner edge once, from the side of its higher element.
      if (m == null_id || m > e || !stamps.contains(m)) continue;
      const vec3 nm = normal(m);
      const double *a = coords.column(ce[(s + 1) % 3]), *b = coords.column(ce[(s + 2) % 3]);
      double v[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
      double l = normalise(v);
      if (l != 0.0 && l != 1.0) l = std::sqrt(l);
      // The signed dihedral angle: atan2 of the sine and cosine of the angle
      // between the two raw normals, whose lengths cancel in the quotient.
      const double sine = (n[1] * v[2] - n[2] * v[1]) * nm[0] + (n[2] * v[0] - n[0] * v[2]) * nm[1] +
                          (n[0] * v[1] - n[1] * v[0]) * nm[2];
      const double beta = std::atan2(sine, dot(n, nm));
      if (beta * l == 0.0) continue;
      for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j <= i; ++j)
          t[i * (i + 1) / 2 + j] += v[i] * v[j] * beta * l;
    }
  }
  if (area2 == 0.0) return;

  double w[3], z[9], work[10] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  if (kelm::lapack::dspev('V', 'U', 3, t, w, z, 3, work) != 0) return;
  // A right-handed frame: the third eigenvector as the cross product of the
  // first two.
  z[6] = z[1] * z[5] - z[2] * z[4];
  z[7] = z[2] * z[3] - z[0] * z[5];
  z[8] = z[0] * z[4] - z[1] * z[3];
  const double to_curvature = 2.0 / area2;
  for (double& x : w)
    x *= to_curvature;

  // The smallest in magnitude belongs to the surface normal and is dropped.
  unsigned smallest = std::fabs(w[1]) < std::fabs(w[0]) ? 1 : 0;
  if (std::fabs(w[2]) < std::fabs(w[smallest])) smallest = 2;
  unsigned largest = std::fabs(w[0]) < std::fabs(w[1]) ? 1 : 0;
  if (std::fabs(w[2]) > std::fabs(w[largest])) largest = 2;
  const unsigned middle = smallest == largest ? (largest + 1) % 3 : 3 - smallest - largest;

  for (unsigned i = 0; i < 3; ++i) {
    out[i] = z[3 * largest + i];
    out[3 + i] = z[3 * middle + i];
  }
  out[6] = w[largest];
  out[7] = w[middle];
  // A second curvature near 0 (a cylinder, a plane) leaves its eigenvector
  // to rounding; the direction across the first one in the seed's plane is
  // taken instead.
  if (!(std::fabs(out[7]) > 0.001 * std::fabs(out[6]))) {
    double a[3] = {out[0], out[1], out[2]};
    double b[3] = {seed_normal[0], seed_normal[1], seed_normal[2]};
    orthonormal_frame(a, b, out + 3);
  }
}

} // namespace

int principal_curvatures(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const dense2D<unsigned>& neighbours, double radius, double max_angle, unsigned max_elements,
                         const dense2D<unsigned>& hard_edges, dense2D<double>& curvatures) noexcept {
  // The marks and the hard-edge set are made before the arguments are looked
  // at; a shortage of memory there is reported once they have passed.
  stamped_set stamps;
  const bool have_stamps = stamps.resize(conn.cols);
  edge_set hard_set(hard_edges.cols);

  if (conn.rows * conn.cols == 0) return status::ok;
  if (coords.rows != 3) return -1;
  if (!kelm::tesskit::check_IDs(conn, T3, coords.cols)) return -2;
  if (neighbours.cols != conn.cols || neighbours.rows < 3) return -3;
  if (!kelm::tesskit::check_IDs(hard_edges, E2, coords.cols)) return -7;

  const auto out_of_memory = [&] {
    clear_output(curvatures);
    return status::out_of_memory;
  };
  if (!have_stamps || (hard_edges.cols != 0 && hard_set.n_buckets == 0)) return out_of_memory();
  if (hard_edges.rows * hard_edges.cols != 0)
    for (unsigned j = 0; j < hard_edges.cols; ++j) {
      const unsigned* h = hard_edges.column(j);
      const edge2 key(h[0], h[1]);
      const auto at = hard_set.insert_checked({key});
      // A hard edge lost for lack of memory would let patches cross it. A
      // failed insertion answers null or a record of another key.
      if (!at.inserted && (at.position == edge_set::null || !same_key(hard_set[at.position].first, key)))
        return out_of_memory();
    }

  clear_output(curvatures);
  const unsigned n_nodes = coords.cols;
  if (!curvatures.resize(8, n_nodes, 0.0)) return out_of_memory();
  dense1D<unsigned> done;
  if (!done.resize((n_nodes >> 5) + 1, 0u)) return out_of_memory();

  patch_walker walker(coords, conn, neighbours, hard_set, radius * radius, std::cos(max_angle), max_elements, stamps);
  // A patch holds at most max_elements + 2 elements and never more than
  // the mesh, so this usually spares the patch any growth.
  const std::uint64_t patch_room = std::min<std::uint64_t>(std::uint64_t(max_elements) + 3, conn.cols);
  walker.patch.reserve(static_cast<unsigned>(patch_room));
  if (std::uint64_t(conn.cols) * 3 <= 0xFFFFFFFFu && walker.normal_cache.resize(3 * conn.cols)) {
    double* n = walker.normal_cache.begin();
    for (unsigned e = 0; e < conn.cols; ++e, n += 3) {
      const vec3 v = triangle_normal(coords, conn.column(e));
      n[0] = v[0];
      n[1] = v[1];
      n[2] = v[2];
    }
    walker.cached = true;
  }

  unsigned* seen = done.begin();
  for (unsigned s = 0; s < conn.cols; ++s) {
    const unsigned* c = conn.column(s);
    for (unsigned k = 0; k < 3; ++k) {
      const unsigned p = c[k];
      const unsigned bit = 1u << (p & 31);
      if (seen[p >> 5] & bit) continue;
      seen[p >> 5] |= bit;
      // Each node is treated from the first element that holds it.
      walker.gather_patch(coords.column(p), s);
      walker.patch_curvature(curvatures.column(p));
    }
  }
  return status::ok;
}

} // namespace tesskit2d
} // namespace kelm
