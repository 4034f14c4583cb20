#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "support/arrays.h"
#include "tesskit2d/metrics.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// A field written while it shares storage with an input must come out as
// with separate arrays, with status 0. Each case runs once on shared storage
// and once on deep copies, and gives the status and the field.
struct outcome {
  int status;
  std::vector<std::vector<double>> field;
};

// The unit square's two triangles, scaled to [1, 3]^2: nodes 0 to 3 are the
// background, 4 and 5 targets.
const dense2D<unsigned> tris = conn({{0, 1, 2}, {0, 2, 3}}),
                        across = conn({{null_id, 1, null_id}, {null_id, null_id, 0}});
const dense1D<unsigned, 8> holders = conn({{0, 0, 0, 1, null_id, null_id}});

const struct {
  const char* what;
  std::function<outcome(bool shared)> run;
} cases[] = {
    // The sizes are a view over the coordinates' buffer: target 4's size
    // lands on node 2's x, a corner that target 5's element still needs.
    {"sizes over the coordinates",
     [](bool shared) {
       auto xy = coords({{1, 1}, {3, 1}, {3, 3}, {1, 3}, {2, 1.5}, {2.5, 2.5}});
       dense1D<double, 8> sizes = xy; // the same buffer, from offset 0
       sizes.size = xy.cols;
       const auto read = shared ? xy : deep(xy);
       if (!shared) sizes = deep(sizes);
       const int status = interpolate_metrics(read, tris, across, holders, sizes, false, T3);
       return outcome{status, {as_vector(sizes)}};
     }},
    // The coordinates are rows 0 and 1 of the metric field (x = m00,
    // y = m10), and targets are listed again after a block of others, so
    // their points are read again after their metrics were written.
    {"coordinates inside the metric field",
     [](bool shared) {
       auto m = coords({{1, 0, 1}, {3, 0, 1}, {3, 2, 5}, {1, 2, 5}, {2, 0.5, 9}, {2.5, 1.5, 9}});
       dense2D<double> xy = m;
       xy.rows = 2;
       dense1D<unsigned, 8> targets;
       for (unsigned k = 0; k < 20; ++k)
         targets.push_back(4 + k % 2);
       const auto read = shared ? xy : deep(xy);
       if (!shared) m = deep(m);
       const int status = interpolate_metrics(read, tris, across, holders, m, targets, false, T3);
       return outcome{status, as_columns(m)};
     }},
    // The loop of a 4 by 2 grid kept in the room behind the sizes, where
    // the interior entries go: each entry written would overwrite IDs that
    // a later row reads.
    {"loop behind the sizes",
     [](bool shared) {
       const unsigned ring[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 0};
       dense1D<double, 8> sizes;
       sizes.reserve(40);
       for (unsigned k = 0; k < 12; ++k)
         sizes.push_back(1 + 0.25 * k);
       auto loop = shared ? dense1D<unsigned, 8>::view(reinterpret_cast<unsigned*>(sizes.begin() + 12), 13)
                          : dense1D<unsigned, 8>(13);
       std::memcpy(loop.begin(), ring, sizeof ring);
       const int status = metrics_struct(loop, 2, sizes);
       return outcome{status, {as_vector(sizes)}};
     }},
};

} // namespace

TEST(MetricsSharedStorage, AFieldSharingAnInputsStorageGivesTheSeparateResult) {
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const outcome separate = c.run(false), shared = c.run(true);
    ASSERT_EQ(separate.status, 0);
    EXPECT_EQ(shared.status, 0);
    EXPECT_EQ(shared.field, separate.field);
  }
}
