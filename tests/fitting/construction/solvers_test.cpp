// The tridiagonal solvers: against elimination with pivoting in long double; factored and direct solution to the bit.
#include "fitting/construction/splines.h"

#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace {

using namespace tarn::test;

template <class Real> struct System {
  std::vector<Real> sub, diag, super, rhs;
  int64_t n, stride, count;
  System(int64_t order, int64_t right_hand_sides, int64_t gap, unsigned seed)
      : sub(size_t(order)), diag(size_t(order)), super(size_t(order)), rhs(size_t((order + gap) * right_hand_sides)),
        n(order), stride(order + gap), count(right_hand_sides) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> entry(-1, 1);
    for (size_t i = 0; i < size_t(n); ++i) {
      sub[i] = Real(entry(random));
      super[i] = Real(entry(random));
    }
    for (size_t i = 0; i < size_t(n); ++i) {
      const Real beside = (i > 0 ? std::fabs(sub[i - 1]) : 0) + (i + 1 < size_t(n) ? std::fabs(super[i]) : 0);
      diag[i] = (i % 3 ? Real(1) : Real(-1)) * (beside + Real(0.1)); // dominant, of either sign
    }
    for (Real& r : rhs) r = Real(entry(random));
  }
  Longs solution(int64_t r) const {
    std::vector<Longs> a(size_t(n), Longs(size_t(n), 0));
    Longs b;
    for (size_t i = 0; i < size_t(n); ++i) {
      a[i][i] = diag[i];
      if (i > 0) a[i][i - 1] = sub[i - 1];
      if (i + 1 < size_t(n)) a[i][i + 1] = super[i];
      b.push_back(rhs[size_t(r * stride) + i]);
    }
    return solve_dense(a, b);
  }
};

template <class Real> class Solvers : public testing::Test {};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(Solvers, Precisions);

TYPED_TEST(Solvers, DirectAndFactored) {
  using Real = TypeParam;
  using A = Api<Real>;
  for (int64_t n : {1, 2, 3, 4, 5, 6, 7, 16, 31, 90}) {
    for (int64_t count : {1, 3}) {
      const System<Real> s(n, count, 2, unsigned(n));
      System<Real> direct = s, factored = s;
      int64_t status = 99;
      A::solve_directly(&n, &count, direct.sub.data(), direct.diag.data(), direct.super.data(), direct.rhs.data(),
                        &direct.stride, &status);
      ASSERT_EQ(status, 0);
      status = 99;
      A::factor(&n, factored.sub.data(), factored.diag.data(), factored.super.data(), &status);
      ASSERT_EQ(status, 0);
      const System<Real> factors = factored;
      status = 99;
      A::solve_factored("N", &n, &count, factored.sub.data(), factored.diag.data(), factored.super.data(),
                        factored.rhs.data(), &factored.stride, &status);
      ASSERT_EQ(status, 0);
      ASSERT_EQ(direct.rhs, factored.rhs) << n;
      ASSERT_EQ(direct.sub, factored.sub);
      ASSERT_EQ(factors.diag, factored.diag);
      ASSERT_EQ(s.sub.back(), factored.sub.back()); // n - 1 entries are theirs
      ASSERT_EQ(s.super.back(), factored.super.back());
      for (int64_t r = 0; r < count; ++r) {
        const Longs expected = s.solution(r);
        for (size_t i = 0; i < size_t(n); ++i)
          ASSERT_NEAR(Long(direct.rhs[size_t(r * s.stride) + i]), expected[i],
                      200 * (1 + std::fabs(expected[i])) * std::numeric_limits<Real>::epsilon())
              << n << " " << r << " " << i;
        for (int64_t i = n; i < s.stride; ++i) // between the right-hand sides nothing is touched
          ASSERT_EQ(direct.rhs[size_t(r * s.stride + i)], s.rhs[size_t(r * s.stride + i)]);
      }
    }
  }
}

TYPED_TEST(Solvers, ZeroPivots) {
  using Real = TypeParam;
  using A = Api<Real>;
  for (int64_t n : {1, 2, 3, 4, 5, 8}) {
    for (int64_t row = 0; row < n; ++row) {
      System<Real> s(n, 1, 0, 5);
      // A row that stands alone, without a diagonal entry.
      s.diag[size_t(row)] = 0;
      if (row > 0) s.sub[size_t(row) - 1] = 0, s.super[size_t(row) - 1] = 0;
      if (row + 1 < n) s.super[size_t(row)] = 0, s.sub[size_t(row)] = 0;
      System<Real> again = s;
      int64_t status = 0, one = 1;
      A::factor(&n, s.sub.data(), s.diag.data(), s.super.data(), &status);
      EXPECT_NE(status, 0) << n << " " << row;
      status = 0;
      A::solve_directly(&n, &one, again.sub.data(), again.diag.data(), again.super.data(), again.rhs.data(), &n,
                        &status);
      EXPECT_NE(status, 0) << n << " " << row;
    }
  }
}

}
