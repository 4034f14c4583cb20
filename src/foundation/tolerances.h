#pragma once
// The library's fixed numerical margins, each named for the question it
// answers. They decide results a caller can see (which diagonal wins a
// near-tie, when an end metric comes back bit for bit), so they are constants
// with one value each, not settings. The relative ones sit near 4,500 units in
// the last place of a double: far above the rounding of the few operations in
// front of each test, far below any difference a mesh resolves.

namespace kelm {
namespace tesskit2d {
namespace tolerance {

/// A quadrangle's second diagonal must beat the first by more than this to be
/// cut, so near-ties go to the cut from the smallest ID and two quadrangles
/// with the same corners get the same diagonal.
constexpr double diagonal_tie = 1e-12;

/// The small Newton iterations (local coordinates in an element, the centre
/// of a triangle in space) stop once each correction is this small relative
/// to its unknown; the bilinear inversion stops on a step of this length.
constexpr double newton_step = 1e-12;

/// A parameter or a barycentric weight within this of 0 or 1 is taken as the
/// end itself: the end's metric or size comes back bit for bit.
constexpr double end_parameter = 1e-12;

/// One eigenvalue of a 2 x 2 symmetric matrix this small beside the other has
/// lost its digits to cancellation and is recomputed from the determinant.
constexpr double eigen_cancellation = 1e-12;

/// A triangle whose corners are collinear to this relative margin has no
/// circumcentre of its own and gets the fallback.
constexpr double flat = 1e-12;

/// `flat` for quantities compared squared, so without a square root; also the
/// squared margin under which an eigenvector is taken as null.
constexpr double flat_squared = 1e-24;

} // namespace tolerance
} // namespace tesskit2d
} // namespace kelm
