// Every kind under every condition: against the published formulas in long double, interpolation and continuity,
// polynomials that come out exactly, statuses, edge cases, layouts, threads, failing allocations.
#include "fitting/construction/problems.h"
#include "support/failing_allocator.h"
#include "support/pthread_threader.h"
#include "tarn/serial_threader.h"

#include <cstring>
#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace tarn::test;

template <class Real> constexpr long double epsilon = std::numeric_limits<Real>::epsilon();

// The smallest sizes, those around a vector, around a block of 128 cells and around the system with constant rows.
const std::vector<size_t> sizes = {2,  3,  4,  5,  6,  7,  8,  9,   13,  40,  63,  64,
                                   65, 66, 67, 68, 69, 70, 71, 127, 128, 129, 131, 133};

template <class Real> class Splines : public testing::Test {};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Splines, Precisions);

TYPED_TEST(Splines, AgreeWithTheFormulas) {
  using Real = TypeParam;
  for_each_problem<Real>(sizes, 1, [](const Problem<Real>& p) {
    Made<Real> made(p);
    ASSERT_EQ(made.construct(), 0) << describe(p);
    const Longs expected = Reference(p, 0).coefficients();
    ASSERT_EQ(expected.size(), made.coeff.size());
    // Errors are relative to the largest coefficient of their power. A recurrence over n values loses a little with n;
    // knots between points that are rounded lie off by the rounding of the largest point.
    const size_t order = size_t(order_of(p.kind));
    Long growth = 40;
    if (p.kind == Kind::standard) growth += Long(8 * p.nx());
    if (p.kind == Kind::subbotin) growth += 4 * std::fabs(p.x.back()) / (p.x[1] - p.x[0]);
    for (size_t k = 0; k < order; ++k) {
      Long scale = 1;
      for (size_t i = k; i < expected.size(); i += order) scale = std::fmax(scale, std::fabs(expected[i]));
      for (size_t i = k; i < expected.size(); i += order)
        ASSERT_NEAR(Long(made.coeff[i]), expected[i], growth * scale * epsilon<Real>)
            << describe(p) << ", cell " << i / order << ", power " << k;
    }
  });
}

}
