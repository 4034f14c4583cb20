#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/edge2.h"
#include "foundation/hash_table.h"
#include "foundation/output_clear.h"
#include "foundation/separate_input.h"
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
      : hard_set(hard), r2(radius2), c(cosine), max_elements(most), stamps(marks), nodes_at(xyz.column(0)),
        nodes_ld(xyz.ld), elements_at(elements.column(0)), elements_ld(elements.ld), across_at(across.column(0)),
        across_ld(across.ld), n_elements(elements.cols) {}

  const edge_set& hard_set;
  double r2;
  double c;
  unsigned max_elements;
  stamped_set& stamps;

  // The arrays as plain pointers and strides: the inputs do not change
  // during a call, and the marks and the patch, being unsigned, would
  // otherwise make the compiler read the views' unsigned fields afresh after
  // every store.
  const double* nodes_at;
  unsigned nodes_ld;
  const unsigned* elements_at;
  unsigned elements_ld;
  const unsigned* across_at;
  unsigned across_ld;
  unsigned n_elements;

  const double* node(unsigned p) const noexcept { return nodes_at + std::size_t(p) * nodes_ld; }
  const unsigned* element(unsigned e) const noexcept { return elements_at + std::size_t(e) * elements_ld; }

  dense1D<unsigned> patch;

  // What every patch round an element asks of it again: its normal and, per
  // slot whose neighbour is not above it, the edge's signed dihedral angle.
  // An inner edge lies in the patches of some thirty nodes, so computing
  // these once per call, with the area and the centroid, spares most of the
  // work when memory allows (80 bytes per element); without the memory each
  // value is recomputed where it is needed, and is the same.
  struct element_facts {
    double normal[3];
    double length; // of the normal: twice the element's area
    double beta[3];
    double centroid[3];
  };
  dense1D<double> fact_store;
  const element_facts* facts = nullptr;

  void gather_facts() noexcept;

  vec3 normal(unsigned e) const noexcept {
    if (facts) {
      const double* n = facts[e].normal;
      return {{n[0], n[1], n[2]}};
    }
    const unsigned* c = element(e);
    return triangle_normal(node(c[0]), node(c[1]), node(c[2]));
  }

  // The mean of the corners, with the factor 1/3 rounded to a double.
  void centroid(unsigned e, double g[3]) const noexcept {
    if (facts) {
      for (unsigned i = 0; i < 3; ++i)
        g[i] = facts[e].centroid[i];
      return;
    }
    const unsigned* n = element(e);
    const double *p0 = node(n[0]), *p1 = node(n[1]), *p2 = node(n[2]);
    for (unsigned i = 0; i < 3; ++i)
      g[i] = (p0[i] + p1[i] + p2[i]) * 0.3333333333333333;
  }

  double length(unsigned e, const vec3& n) const noexcept { return facts ? facts[e].length : std::sqrt(dot(n, n)); }

  // The unit direction `v` and length `l` of the edge of slot `t` of `e`,
  // from corner t + 1 to corner t + 2. A vector of squared length 0 or
  // exactly 1 stays as it is, with that squared length as its length.
  void edge_of(unsigned e, unsigned t, double v[3], double& l) const noexcept {
    const unsigned* ce = element(e);
    const double *a = node(ce[(t + 1) % 3]), *b = node(ce[(t + 2) % 3]);
    v[0] = b[0] - a[0], v[1] = b[1] - a[1], v[2] = b[2] - a[2];
    // As `normalise`, with the one square root serving for the length too.
    l = v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
    if (l != 0.0 && l != 1.0) {
      l = std::sqrt(l);
      const double r = 1.0 / l;
      v[0] *= r, v[1] *= r, v[2] *= r;
    }
  }

  // The signed angle between the normals `n` of an element and `nm` of its
  // neighbour across the edge of unit direction `v`: atan2 of its sine and
  // cosine, whose common factor |n| |nm| cancels in the quotient.
  static double dihedral(const vec3& n, const vec3& nm, const double v[3]) noexcept {
    const double sine =
        (n[1] * v[2] - n[2] * v[1]) * nm[0] + (n[2] * v[0] - n[0] * v[2]) * nm[1] + (n[0] * v[1] - n[1] * v[0]) * nm[2];
    return std::atan2(sine, dot(n, nm));
  }

  // The element across slot `t` of `e`, or `null_id` when the entry is at or
  // above the element count, which means none.
  unsigned neighbour(unsigned e, unsigned t) const noexcept {
    const unsigned m = across_at[std::size_t(e) * across_ld + t];
    return m < n_elements ? m : null_id;
  }

  void gather_patch(const double* x, unsigned seed) noexcept;
  void patch_curvature(double out[8]) noexcept;
};

void patch_walker::gather_facts() noexcept {
  constexpr unsigned per_element = sizeof(element_facts) / sizeof(double);
  if (std::uint64_t(n_elements) * per_element > 0xFFFFFFFFu || !fact_store.resize(n_elements * per_element)) return;
  element_facts* f = reinterpret_cast<element_facts*>(fact_store.begin());
  for (unsigned e = 0; e < n_elements; ++e) {
    const vec3 n = normal(e);
    for (unsigned i = 0; i < 3; ++i)
      f[e].normal[i] = n[i];
    f[e].length = std::sqrt(dot(n, n));
    centroid(e, f[e].centroid);
  }
  for (unsigned e = 0; e < n_elements; ++e)
    for (unsigned t = 0; t < 3; ++t) {
      const unsigned m = neighbour(e, t);
      f[e].beta[t] = 0.0;
      if (m == null_id || m > e) continue;
      double v[3], l;
      edge_of(e, t, v, l);
      const double* nm = f[m].normal;
      f[e].beta[t] = dihedral({{f[e].normal[0], f[e].normal[1], f[e].normal[2]}}, {{nm[0], nm[1], nm[2]}}, v);
    }
  facts = f;
}

// Grows the patch of node `x` outward from `seed`, breadth first. Every
// element met is marked at once, also when it is refused, so that a refused
// element cannot come back into the same patch from another side.
void patch_walker::gather_patch(const double* x, unsigned seed) noexcept {
  stamps.clear();
  unsigned* const mark = stamps.marks.begin();
  const unsigned stamp = stamps.stamp;
  mark[seed] = stamp;

  // The patch is written through a local pointer, refreshed whenever it has
  // to grow. An element that it cannot hold for lack of memory is left out.
  unsigned* in_patch = patch.begin();
  unsigned size = 0, room = patch.buffer->capacity - patch.offset;
  const auto append = [&](unsigned e) {
    if (size == room) {
      patch.size = size;
      if (!patch.push_back(e)) return;
      in_patch = patch.begin();
      room = patch.buffer->capacity - patch.offset;
      ++size;
      return;
    }
    in_patch[size++] = e;
  };
  append(seed);

  // Comparing squared cosines keeps the angle test free of square roots; the
  // sign carried over from the cosine keeps angles beyond a right angle
  // apart from those below it.
  const double c2 = c < 0 ? -(c * c) : c * c;
  const bool angle_test = c > -1.0, hard = hard_set.n_live != 0;
  const double radius2 = r2;
  const unsigned most = max_elements;

  // Every candidate of an expansion carries the same key, the squared
  // distance from the node to the seed's centroid, so the sort of each
  // expansion comes down to ascending element index.
  const auto centroid_distance2 = [&](unsigned e) {
    double g[3];
    centroid(e, g);
    double s = 0;
    for (unsigned i = 0; i < 3; ++i) {
      const double d = g[i] - x[i];
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

  for (unsigned k = 0; k < size; ++k) {
    if (size >= most || radius2 <= 0) break;
    const unsigned e = in_patch[k];
    const vec3 n = normal(e);
    const double nn = dot(n, n);
    candidate accepted[3];
    unsigned n_accepted = 0;
    for (unsigned t = 0; t < 3; ++t) {
      const unsigned m = neighbour(e, t);
      if (m == null_id || mark[m] == stamp) continue;
      mark[m] = stamp;
      if (centroid_distance2(m) > radius2) continue;
      if (hard) {
        const unsigned* ce = element(e);
        if (hard_set.find(edge2(ce[(t + 1) % 3], ce[(t + 2) % 3])) != hard_set.end()) continue;
      }
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
    for (unsigned i = 0; i < n_accepted; ++i)
      append(accepted[i].element);
  }
  patch.size = size;
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
  unsigned* const mark = stamps.marks.begin();
  const unsigned stamp = stamps.stamp;
  const unsigned* const in_patch = patch.begin();
  const unsigned size = patch.size;
  for (unsigned k = 0; k < size; ++k)
    mark[in_patch[k]] = stamp;

  for (unsigned k = 0; k < size; ++k) {
    const unsigned e = in_patch[k];
    const vec3 n = normal(e);
    const double l_e = length(e, n);
    area2 += l_e;
    if (k == 0 && l_e != 0.0)
      for (unsigned i = 0; i < 3; ++i)
        seed_normal[i] += n[i] * l_e;
    for (unsigned s = 0; s < 3; ++s) {
      const unsigned m = neighbour(e, s);
      // Each inner edge once, from the side of its higher element.
      if (m == null_id || m > e || mark[m] != stamp) continue;
      double v[3], l;
      edge_of(e, s, v, l);
      const double beta = facts ? facts[e].beta[s] : dihedral(n, normal(m), v);
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

  // Columns of `curvatures` are written node by node while later patches
  // still read `coords`: where the two can meet, `coords` is read from a
  // private copy made before `curvatures` is emptied.
  const separate_input<dense2D<double>> input(coords, curvatures);
  if (!input.ok()) return out_of_memory();
  const dense2D<double>& xyz = input.get();

  clear_output(curvatures);
  const unsigned n_nodes = xyz.cols;
  if (!curvatures.resize(8, n_nodes, 0.0)) return out_of_memory();
  dense1D<unsigned> done;
  if (!done.resize((n_nodes >> 5) + 1, 0u)) return out_of_memory();

  patch_walker walker(xyz, conn, neighbours, hard_set, radius * radius, std::cos(max_angle), max_elements, stamps);
  // A patch holds at most max_elements + 2 elements and never more than
  // the mesh, so this usually spares the patch any growth.
  const std::uint64_t patch_room = std::min<std::uint64_t>(std::uint64_t(max_elements) + 3, conn.cols);
  walker.patch.reserve(static_cast<unsigned>(patch_room));
  walker.gather_facts();

  unsigned* seen = done.begin();
  for (unsigned s = 0; s < conn.cols; ++s) {
    const unsigned* c = conn.column(s);
    for (unsigned k = 0; k < 3; ++k) {
      const unsigned p = c[k];
      const unsigned bit = 1u << (p & 31);
      if (seen[p >> 5] & bit) continue;
      seen[p >> 5] |= bit;
      // Each node is treated from the first element that holds it.
      walker.gather_patch(xyz.column(p), s);
      walker.patch_curvature(curvatures.column(p));
    }
  }
  return status::ok;
}

} // namespace tesskit2d
} // namespace kelm
