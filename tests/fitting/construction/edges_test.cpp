// The edges of the rules, one by one; and the kinds that GSL has as well.
#include "fitting/construction/problems.h"

#include <gsl/gsl_spline.h>

#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace tarn::test;

template <class Real> Problem<Real> of(Kind kind, std::vector<Real> x, std::vector<Real> y, int64_t condition = 0) {
  Problem<Real> p;
  p.kind = kind;
  p.x = std::move(x);
  p.y = std::move(y);
  p.bc_type = condition;
  return p;
}
template <class Real> std::vector<Real> constructed(const Problem<Real>& p) {
  Made<Real> made(p);
  EXPECT_EQ(made.construct(), 0) << describe(p);
  return made.coeff;
}

template <class Real> class Edges : public testing::Test {};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Edges, Precisions);

TYPED_TEST(Edges, OneCell) {
  using Reals = std::vector<TypeParam>;
  for (bool uniform : {false, true}) {
    Problem<TypeParam> p = of<TypeParam>(Kind::linear, {1, 3}, {5, 4});
    p.uniform = uniform;
    EXPECT_EQ(constructed(p), (Reals{5, TypeParam(-0.5)}));
    // The rows of the two ends are the system.
    p.kind = Kind::natural;
    p.bc = {2, -2};
    p.bc_type = 12;
    EXPECT_EQ(constructed(p), (Reals{5, 2, TypeParam(-1.75), TypeParam(0.25)}));
    p.bc_type = 48; // 2 d0 + d1 = -1.5 - 2, d0 + 2 d1 = -1.5 - 2
    EXPECT_NEAR(constructed(p)[1], -3.5 / 3, 1e-6);
    p.bc = {};
    for (int64_t condition : {2, 64}) { // the line
      p.bc_type = condition;
      EXPECT_EQ(constructed(p), (Reals{5, TypeParam(-0.5), 0, 0}));
    }
    p.kind = Kind::standard;
    p.bc_type = 128;
    p.bc = {5}; // 4.5 and half of a bend
    EXPECT_EQ(constructed(p), (Reals{5, TypeParam(0.5), TypeParam(-0.5)}));
  }
}

TYPED_TEST(Edges, AkimaWithEqualSlopes) {
  using Real = TypeParam;
  // Slopes 1, 1, 3, 3 around point 2: both weights are 0, so the two inner slopes are averaged.
  const Problem<Real> p = of<Real>(Kind::akima, {0, 1, 2, 3, 4}, {0, 1, 2, 5, 8}, 1);
  EXPECT_EQ(constructed(p)[2 * 4 + 1], 2);
  // The sum of the weights decides, against 1e-10: slopes 1, 1 + w, 3, 3 in lengths of one.
  for (Real w : {Real(0.8e-10), Real(1.2e-10)}) {
    const Real h = 1024 * Real(1e-12); // values near 0, so that the slopes are what they are meant to be
    Problem<Real> q = of<Real>(Kind::akima, {0, h, 2 * h, 3 * h, 4 * h}, {0, 0, w * h, (w + 1) * h, (w + 2) * h}, 1);
    // slopes 0, w, 1, 1: weights 0 and w, so that above the threshold the left slope's weight 0 leaves the right one
    const Real d = constructed(q)[2 * 4 + 1];
    EXPECT_NEAR(double(d), w < Real(1e-10) ? 0.5 : 1, 1e-3) << w;
  }
  // A constant is a constant, whatever the condition.
  for (int64_t condition : {0, 1, 2, 64})
    for (Real c : constructed(of<Real>(Kind::akima, {0, 1, 3, 4, 6}, {0, 0, 0, 0, 0}, condition))) EXPECT_EQ(c, 0);
}

TYPED_TEST(Edges, HymanAtExtremes) {
  using Real = TypeParam;
  // Up, down, level, up: nothing but 0 at the three turns.
  const std::vector<Real> c = constructed(of<Real>(Kind::hyman, {0, 1, 2, 3, 4}, {0, 2, 1, 1, 3}));
  for (size_t i : {1, 2, 3}) EXPECT_EQ(c[i * 4 + 1], 0) << i;
  // Slopes 1 and 100: the three-point value 50.5 is held to 3; falling, to -3.
  EXPECT_EQ(constructed(of<Real>(Kind::hyman, {0, 1, 2, 3}, {0, 1, 101, 201}))[5], 3);
  EXPECT_EQ(constructed(of<Real>(Kind::hyman, {0, 1, 2, 3}, {0, -1, -101, -201}))[5], -3);
  // Monotone data stay monotone between their points.
  const Problem<Real> p = of<Real>(Kind::hyman, {0, 1, 2, 3, 4, 5, 6, 7}, {0, 0, 1, 8, 9, Real(9.5), 30, 31}, 0);
  Made<Real> made(p);
  ASSERT_EQ(made.construct(), 0);
  for (int64_t i = 0; i < 7; ++i)
    for (int step = 0; step <= 100; ++step)
      EXPECT_GE(double(made.at(0, i, step / 100.0L, 1)), -1e-5) << i << " " << step;
}

// Nothing is said of an end: the slope of its cell, and for Akima what the slopes extended by a line give.
TYPED_TEST(Edges, EndsNotSet) {
  using Real = TypeParam;
  for (Kind kind : {Kind::akima, Kind::bessel, Kind::hyman, Kind::hermite}) {
    Problem<Real> p = of<Real>(kind, {0, 1, 2, 4, 5}, {0, 1, 4, 5, 9});
    p.ic = {1, 1, 1};
    const std::vector<Real> c = constructed(p);
    const Real right = c[13] + 2 * c[14] + 3 * c[15];
    EXPECT_NEAR(double(c[1]), kind == Kind::akima ? (3 * 1 - 3) / 2.0 : 1, 1e-5) << name_of(kind);
    EXPECT_NEAR(double(right), kind == Kind::akima ? (3 * 4 - 0.5) / 2 : 4, 1e-5) << name_of(kind);
  }
}

// The Hermite kind: the caller's derivatives come back as they are.
TYPED_TEST(Edges, HermiteTakesWhatItIsGiven) {
  using Real = TypeParam;
  Problem<Real> p = of<Real>(Kind::hermite, {0, 1, 2, 4, 5}, {0, 1, 4, 5, 0}, 64);
  p.ic = {11, 12, 13};
  p.bc = {7, -99}; // one value, for both ends
  const std::vector<Real> c = constructed(p);
  const Real expected[] = {7, 11, 12, 13};
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(c[i * 4 + 1], expected[i]);
  EXPECT_NEAR(double(c[13] + 2 * c[14] + 3 * c[15]), 7, 1e-4);
}

// Gaps of very different sizes, and values near the ends of the range, go through without a fault of their own.
TYPED_TEST(Edges, HugeRatios) {
  using Real = TypeParam;
  const Real small = sizeof(Real) == 8 ? Real(1e-100) : Real(1e-12);
  for (Kind kind : {Kind::natural, Kind::bessel, Kind::hyman, Kind::akima}) {
    const Problem<Real> p = of<Real>(kind, {0, small, 1, 1 + 8 * std::numeric_limits<Real>::epsilon(), 2, 1000, 1001},
                                     {0, small, 1, 1, 2, 1000, 1001}, 1);
    Made<Real> made(p);
    ASSERT_EQ(made.construct(), 0);
    for (int64_t i = 0; i < 6; ++i) {
      const Long h = Long(p.x[size_t(i) + 1]) - p.x[size_t(i)];
      EXPECT_EQ(made(0, i, 0), p.y[size_t(i)]);
      EXPECT_NEAR(made.at(0, i, h), Long(p.y[size_t(i) + 1]), 1000 * std::numeric_limits<Real>::epsilon()) << i;
    }
  }
}

// Lengths whose products and reciprocals come to the ends of the range and beyond, alone and next to ordinary ones.
TYPED_TEST(Edges, LengthsFarFromOne) {
  using Real = TypeParam;
  const bool is_double = sizeof(Real) == 8;
  const int far = is_double ? 530 : 64;   // exponent of lengths whose pairs are out of the range
  const int bias = is_double ? 900 : 110; // keeps the coefficients within it
  for (Kind kind : {Kind::akima, Kind::bessel, Kind::hyman, Kind::hermite})
    for (int exponent : {-far, -far / 2, far})
      for (size_t odd = 0; odd < 40; ++odd) {
        Problem<Real> p = make_problem<Real>(kind, 1, false, 37);
        // From cell `odd` on the lengths are ordinary ones: pairs of short cells, of long ones and of one of either.
        for (size_t i = 0; i < p.x.size(); ++i) {
          const Real length = exponent < 0 && i > odd ? Real(1) : std::ldexp(Real(1), exponent);
          p.x[i] = i == 0 ? Real(0) : p.x[i - 1] + length * (1 + Real(i % 3) / 4);
          p.y[i] = std::ldexp(p.y[i], 3 * exponent + (exponent < 0 ? bias : -bias));
        }
        if (kind == Kind::hermite)
          for (Real& d : p.ic) d = std::ldexp(d, 2 * exponent + (exponent < 0 ? bias : -bias));
        Made<Real> made(p);
        ASSERT_EQ(made.construct(), 0);
        const Longs expected = Reference(p, 0).coefficients();
        for (size_t i = 0; i + 1 < p.x.size(); ++i) {
          const Long h = Long(p.x[i + 1]) - p.x[i];
          Long scale = 0;
          for (int k = 1; k < 4; ++k) scale = std::fmax(scale, std::fabs(expected[4 * i + size_t(k)]) * std::pow(h, k));
          for (int k = 0; k < 4; ++k) {
            // Relative to the cell's largest term; derivatives are known to the smallest normal number.
            const Long tolerance = 40 * scale * std::numeric_limits<Real>::epsilon() / std::pow(h, k) +
                                   4 * std::numeric_limits<Real>::min() * std::pow(h, 1 - k);
            ASSERT_NEAR(Long(made(0, int64_t(i), k)), expected[4 * i + size_t(k)], tolerance)
                << describe(p) << ", exponent " << exponent << ", odd " << odd << ", cell " << i << ", power " << k;
          }
        }
      }
}

// The same kinds by another hand.
void expect_gsl(const gsl_interp_type* type, Kind kind, int64_t condition) {
  for (size_t n : {5u, 6u, 30u, 200u}) {
    const Problem<double> p = make_problem<double>(kind, condition, false, n);
    Made<double> made(p);
    ASSERT_EQ(made.construct(), 0);
    gsl_interp* other = gsl_interp_alloc(type, n);
    ASSERT_EQ(gsl_interp_init(other, p.x.data(), p.y.data(), n), 0);
    gsl_interp_accel* cursor = gsl_interp_accel_alloc();
    for (size_t i = 0; i + 1 < n; ++i)
      for (double part : {0.0, 0.1, 0.5, 0.77}) {
        const double t = p.x[i] + part * (p.x[i + 1] - p.x[i]);
        EXPECT_NEAR(double(made.at(0, int64_t(i), Long(t) - p.x[i])),
                    gsl_interp_eval(other, p.x.data(), p.y.data(), t, cursor), 2e-14)
            << describe(p) << " at " << t;
      }
    gsl_interp_accel_free(cursor);
    gsl_interp_free(other);
  }
}
TEST(Edges, AgreeWithGsl) {
  expect_gsl(gsl_interp_linear, Kind::linear, 0);
  expect_gsl(gsl_interp_cspline, Kind::natural, 1);
  expect_gsl(gsl_interp_cspline_periodic, Kind::natural, 64);
  expect_gsl(gsl_interp_akima, Kind::akima, 0);
  expect_gsl(gsl_interp_akima_periodic, Kind::akima, 64);
}

}
