// Integration: against antiderivatives in extended precision, and the same bits whatever the layout, the searches and
// the threads.
#include <atomic>
#include <cstring>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include "fitting/cells/splines.h"
#include "support/failing_allocator.h"
#include "support/pthread_threader.h"

namespace {

using namespace tarn::test;

template <class Real> struct Call {
  int64_t left_hint = 0, right_hint = 0, rhint = 16;
  const Real *left_data = nullptr, *right_data = nullptr;
  typename Api<Real>::IntegrCallback left = nullptr, right = nullptr, inside = nullptr;
  void *left_parameter = nullptr, *right_parameter = nullptr, *inside_parameter = nullptr;
  typename Api<Real>::SearchCallback search = nullptr;
  void* search_parameter = nullptr;
  const tarn_threader* threader = nullptr;
  int64_t count = -1; // of pairs, where they are not as many as given
};

template <class Real>
int32_t integrate(DFTask* task, const std::vector<Real>& a, const std::vector<Real>& b, const Call<Real>& call,
                  Real* r) {
  return Api<Real>::integrate(task, 9, call.count != -1 ? call.count : int64_t(a.size()), a.data(), call.left_hint,
                              b.data(), call.right_hint, call.left_data, call.right_data, r, call.rhint, call.left,
                              call.left_parameter, call.right, call.right_parameter, call.inside, call.inside_parameter,
                              call.search, call.search_parameter, call.threader);
}

template <class Real>
std::vector<Real> integrals(DFTask* task, const std::vector<Real>& a, const std::vector<Real>& b,
                            const Call<Real>& call = {}, int32_t expected = 0) {
  const int64_t count = call.count != -1 ? call.count : int64_t(a.size());
  std::vector<Real> r(size_t(count * std::max<int64_t>(1, task->ny)) + 2, Real(-99));
  EXPECT_EQ(integrate(task, a, b, call, r.data() + 1), expected);
  EXPECT_EQ(r.front(), Real(-99));
  EXPECT_EQ(r.back(), Real(-99));
  return std::vector<Real>(r.begin() + 1, r.end() - 1);
}

template <class Real> bool same_bits(const std::vector<Real>& a, const std::vector<Real>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Real)) == 0;
}

// Limits in both orders, inside and outside, far and near, equal, on points.
template <class Real>
void limits_of(const RandomSpline<Real>& spline, int64_t count, std::vector<Real>& a, std::vector<Real>& b) {
  a = spline.sites(count);
  b = spline.sites(count + 13);
  b.erase(b.begin(), b.begin() + 13);
  for (size_t s = 0; s < a.size(); s += 5) b[s] = a[s] + Real(0.01);
  for (size_t s = 1; s < a.size(); s += 9) b[s] = a[s];
  for (size_t s = 2; s < a.size(); s += 11) a[s] = spline.left_end() - Real(0.3), b[s] = spline.left_end() - Real(0.1);
  for (size_t s = 3; s < a.size(); s += 13) a[s] = spline.right_end() + Real(0.3), b[s] = spline.right_end();
  for (size_t s = 4; s < a.size(); s += 17) a[s] = spline.right_end() + 1, b[s] = spline.left_end() - 1;
  for (size_t s = 5; s < a.size(); s += 19) a[s] = spline.left_end(), b[s] = spline.right_end();
  for (size_t s = 6; s < a.size(); s += 23) a[s] = spline.left_end() - 1, b[s] = spline.left_end();
}

template <class Real> class Integrate : public testing::Test {
protected:
  void TearDown() override { set_max_threads(1); }
};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(Integrate, Reals);

TYPED_TEST(Integrate, AgainstExtendedPrecision) {
  using Real = TypeParam;
  const double eps = std::numeric_limits<Real>::epsilon();
  for (const Spline kind : all_splines)
    for (const int64_t x_hint : {1, 2, 4})
      for (const int64_t n : {int64_t(2), int64_t(3), int64_t(90)}) {
        if (n == 2 && kind == Spline::SubbotinEven) continue;
        RandomSpline<Real> spline(kind, n, x_hint, n == 90, 3);
        std::vector<Real> a, b;
        limits_of(spline, 300, a, b);
        const auto r = integrals(spline.task, a, b);
        for (int64_t f = 0; f < 3; ++f)
          for (size_t s = 0; s < a.size(); ++s) {
            const Extended exact = spline.integral(f, a[s], b[s]);
            const Real value = r[size_t(f) * a.size() + s];
            ASSERT_NEAR(double(value), double(exact.value), 16 * eps * double(exact.size))
                << "kind " << int(kind) << ", hint " << x_hint << ", " << n << " points, from " << a[s] << " to "
                << b[s];
            if (a[s] == b[s]) {
              ASSERT_EQ(value, 0);
            }
          }
        // The other way round the sign alone changes.
        auto reversed = integrals(spline.task, b, a);
        for (Real& v : reversed) v = -v;
        for (size_t s = 0; s < r.size(); ++s) ASSERT_EQ(reversed[s], r[s]);
      }
}

TYPED_TEST(Integrate, LayoutsThreadsAndSearchesGiveTheSameBits) {
  using Real = TypeParam;
  for (const Spline kind : all_splines)
    for (const int64_t ny : {1, 3}) {
      RandomSpline<Real> spline(kind, 150, 1, false, ny), wide(kind, 150, 1, true, ny),
          interleaved(kind, 150, 1, false, ny, 32);
      for (const size_t count : {size_t(1), size_t(127), size_t(128), size_t(129), size_t(640), size_t(1500)}) {
        std::vector<Real> a, b;
        limits_of(spline, int64_t(count), a, b);
        const auto base = integrals(spline.task, a, b);
        EXPECT_TRUE(same_bits(base, integrals(wide.task, a, b)));
        EXPECT_TRUE(same_bits(base, integrals(interleaved.task, a, b)));
        EXPECT_TRUE(same_bits(base, integrals(spline.task, a, b, Call<Real>{.rhint = 128})));
        for (const int64_t rhint : {0, 32}) {
          const auto by_pair = integrals(spline.task, a, b, Call<Real>{.rhint = rhint});
          for (size_t s = 0; s < count; ++s)
            for (size_t f = 0; f < size_t(ny); ++f) ASSERT_EQ(by_pair[s * size_t(ny) + f], base[f * count + s]);
        }
        for (const int threads : {2, 3, 16}) {
          set_max_threads(threads);
          EXPECT_TRUE(same_bits(base, integrals(spline.task, a, b, Call<Real>{.threader = pthread_threader()})));
        }
        for (const double second : {70.0, 75.0, 120.0}) { // one search for both limits, and two
          const Real left[5] = {0, 1, 0, 0, 71}, right[5] = {0, 1, 0, 0, Real(second)};
          EXPECT_TRUE(same_bits(
              base, integrals(spline.task, a, b,
                              Call<Real>{.left_data = left, .right_data = right, .threader = pthread_threader()})));
          EXPECT_TRUE(same_bits(
              base, integrals(spline.task, a, b, Call<Real>{.left_data = left, .threader = pthread_threader()})));
        }
        std::sort(a.begin(), a.end());
        const auto sorted = integrals(spline.task, a, b);
        EXPECT_TRUE(same_bits(sorted, integrals(spline.task, a, b, Call<Real>{.left_hint = 64})));
        std::sort(b.begin(), b.end());
        EXPECT_TRUE(same_bits(integrals(spline.task, a, b),
                              integrals(spline.task, a, b, Call<Real>{.left_hint = 64, .right_hint = 64})));
        set_max_threads(1);
      }
    }
}

TYPED_TEST(Integrate, EquallySpacedLimits) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 60, 1, false, 2);
  const std::vector<Real> a = {Real(-1.8), Real(2)}, b = {Real(1), Real(2.6)};
  for (const int64_t count : {2, 100, 128, 129, 1500}) {
    std::vector<Real> left, right;
    for (int64_t i = 0; i < count; ++i) {
      left.push_back(a[0] + Real(i) * ((a[1] - a[0]) / Real(count - 1)));
      right.push_back(b[0] + Real(i) * ((b[1] - b[0]) / Real(count - 1)));
    }
    const auto base = integrals(spline.task, left, right);
    set_max_threads(3);
    const Call<Real> both{.left_hint = 4, .right_hint = 4, .threader = pthread_threader(), .count = count};
    EXPECT_TRUE(same_bits(base, integrals(spline.task, a, b, both)));
    EXPECT_TRUE(same_bits(base, integrals(spline.task, a, right, Call<Real>{.left_hint = 4, .count = count})));
    EXPECT_TRUE(same_bits(base, integrals(spline.task, left, b, Call<Real>{.right_hint = 4, .count = count})));
  }
  EXPECT_TRUE(same_bits(integrals(spline.task, a, b, Call<Real>{.left_hint = 4, .right_hint = 4, .count = 1}),
                        integrals<Real>(spline.task, {a[0]}, {b[0]})));
}

TYPED_TEST(Integrate, StatusesInTheirOrder) {
  using Real = TypeParam;
  Real r = -5;
  EXPECT_EQ(integrate<Real>(nullptr, {0}, {1}, {}, &r), -1000);
  RandomSpline<Real> spline(Spline::Cubic, 10, 1, false, 1);
  DFTask* task = spline.task;
  const Real bad[5] = {0, 2, 0, 0, 0}, far[5] = {0, 1, 0, 0, 11}, below[5] = {0, 1, 0, 0, -1},
             fine[5] = {0, 1, 0, 0, 10};
  const auto status = [&](const Real* left, const Real* right, int64_t rhint) {
    return integrate<Real>(task, {0}, {1}, Call<Real>{.rhint = rhint, .left_data = left, .right_data = right}, &r);
  };
  void **coefficients = task->coeff, **y = task->y;
  task->coeff = nullptr;
  task->splineType = 6;
  EXPECT_EQ(status(bad, bad, 5), -1011);
  task->splineType = 0;
  for (const Real* wrong : {bad, far, below}) {
    EXPECT_EQ(status(wrong, nullptr, 5), -1026);
    EXPECT_EQ(status(nullptr, wrong, 5), -1026);
  }
  EXPECT_EQ(status(fine, fine, 5), -1034);
  EXPECT_EQ(status(nullptr, nullptr, 16), -1016);
  task->coeff = coefficients;
  EXPECT_EQ(r, -5);
  for (const int64_t rhint : {-1, 1, 8, 17, 48, 64, 256, 512})
    EXPECT_EQ(status(nullptr, nullptr, rhint), -1034) << rhint;
  for (const int64_t rhint : {0, 16, 32, 128}) EXPECT_EQ(status(nullptr, nullptr, rhint), 0) << rhint;
  // A hint that the choice does not come to is not looked at.
  EXPECT_EQ(integrate<Real>(task, {0}, {1}, Call<Real>{.left_hint = 64, .left_data = bad}, &r), 0);
  EXPECT_EQ(integrate<Real>(task, {0}, {1}, Call<Real>{.left_hint = 64, .right_data = bad}, &r), -1026);
  for (const int64_t count : {int64_t(0), int64_t(-7)})
    EXPECT_EQ(integrate<Real>(task, {0}, {1}, Call<Real>{.rhint = 99, .count = count}, nullptr), 0);
  for (int64_t order = -2; order < 8; ++order)
    for (int64_t type = -1; type < 70; ++type) {
      task->splineOrder = order, task->splineType = type;
      task->coeff = nullptr, task->y = nullptr;
      const bool step = order == 0 && (type == 7 || type == 8);
      const bool polynomial = order == 2 || order > 4 || (order == 3 && (type == 0 || type == 1)) ||
                              (order == 4 && (type == 0 || (type >= 2 && type <= 5) || type == 9));
      EXPECT_EQ(status(nullptr, nullptr, 16), polynomial ? -1016 : step ? -1008 : -1011) << order << " " << type;
      task->coeff = coefficients, task->y = y;
    }
}

TYPED_TEST(Integrate, ThreadsFromTheStatedCountsOn) {
  using Real = TypeParam;
  const Real peak[5] = {0, 1, 0, 0, 3};
  struct {
    const char* name;
    int64_t x_hint, left_hint, right_hint;
    const Real *left_data, *right_data;
    bool searched;
    int64_t threshold;
  } const rules[] = {
      {"uniform", 4, 0, 0, nullptr, nullptr, false, 256},
      {"quasi-uniform", 2, 0, 0, nullptr, nullptr, false, 384},
      {"sorted", 1, 64, 64, nullptr, nullptr, false, 640},
      {"peak", 1, 0, 0, peak, peak, false, 512},
      {"hybrid", 1, 0, 0, nullptr, nullptr, false, 256},
      {"sorted and hybrid", 1, 64, 0, nullptr, nullptr, false, 640},
      {"hybrid and peak", 1, 0, 0, nullptr, peak, false, 512},
      {"the caller's", 1, 0, 0, nullptr, nullptr, true, 640},
      {"the caller's, uniform", 4, 0, 0, nullptr, nullptr, true, 640},
  };
  for (const auto& rule : rules) {
    RandomSpline<Real> spline(Spline::Cubic, 20, rule.x_hint, false, 1);
    const auto first = [](const int64_t* n, const Real*, int64_t* cell, int32_t* flag, void*) -> int32_t {
      for (int64_t i = 0; i < *n; ++i) cell[i] = 1, flag[i] = 0;
      return 0;
    };
    for (const bool reached : {false, true})
      for (const int threads : {1, 2, 4, 9}) {
        const size_t count = size_t(rule.threshold) - (reached ? 0 : 1);
        const std::vector<Real> a(count, Real(-0.5)), b(count, Real(0.5));
        Call<Real> call{.left_hint = rule.left_hint,
                        .right_hint = rule.right_hint,
                        .left_data = rule.left_data,
                        .right_data = rule.right_data,
                        .threader = pthread_threader()};
        if (rule.searched) call.search = first;
        set_max_threads(threads);
        take_threads_started();
        const auto r = integrals(spline.task, a, b, call);
        EXPECT_EQ(take_threads_started(), reached && threads > 1 ? std::min<int64_t>(threads, int64_t(count) / 128) : 0)
            << rule.name;
        EXPECT_EQ(r, std::vector<Real>(count, r[0]));
      }
  }
}

// A call-back that integrates the constant 1000 * function-independent height, and notes what it is given.
template <class Real> struct Constant {
  Real height = 0, low = 0, high = 0;
  int64_t least_cell = 0, greatest_cell = 0;
  int32_t status = 0;
  std::atomic<int64_t> calls{0}, pairs{0};
};
template <class Real>
int32_t constant(const int64_t* n, const int64_t* left_cell, const Real* left, const int64_t* right_cell,
                 const Real* right, Real* r, void* parameter, void* null_word) {
  Constant<Real>& own = *static_cast<Constant<Real>*>(parameter);
  EXPECT_EQ(null_word, nullptr);
  EXPECT_GE(*n, 1);
  EXPECT_LE(*n, 128);
  own.calls++;
  own.pairs += *n;
  for (int64_t i = 0; i < *n; ++i) {
    EXPECT_LT(left[i], right[i]);
    EXPECT_GE(left[i], own.low);
    EXPECT_LE(right[i], own.high);
    EXPECT_LE(left_cell[i], right_cell[i]);
    EXPECT_GE(left_cell[i], own.least_cell);
    EXPECT_LE(right_cell[i], own.greatest_cell);
    r[i] = own.height * (right[i] - left[i]);
  }
  return own.status;
}

TYPED_TEST(Integrate, CallBacksOwnTheirParts) {
  using Real = TypeParam;
  const double eps = std::numeric_limits<Real>::epsilon();
  const Real infinity = std::numeric_limits<Real>::infinity();
  for (const Spline kind : all_splines)
    for (const int64_t x_hint : {1, 4})
      for (unsigned regions = 1; regions < 8; ++regions)
        for (const int threads : {1, 3}) {
          RandomSpline<Real> spline(kind, 30, x_hint, false, 2);
          const Real x0 = spline.left_end(), x1 = spline.right_end();
          std::vector<Real> a, b;
          limits_of(spline, 700, a, b);
          Constant<Real> left{1000, -infinity, x0, 0, 1}, right{-2000, x1, infinity, 29, 30},
              inside{500, x0, x1, 1, 29};
          Call<Real> call{.left_parameter = &left, .right_parameter = &right, .inside_parameter = &inside};
          if (regions & 1) call.left = constant<Real>;
          if (regions & 2) call.right = constant<Real>;
          if (regions & 4) call.inside = constant<Real>;
          call.threader = pthread_threader();
          set_max_threads(threads);
          const auto r = integrals(spline.task, a, b, call);
          const auto plain = integrals(spline.task, a, b);
          int64_t left_pairs = 0, right_pairs = 0, inside_pairs = 0;
          for (int64_t f = 0; f < 2; ++f)
            for (size_t s = 0; s < a.size(); ++s) {
              const Real low = std::min(a[s], b[s]), high = std::max(a[s], b[s]);
              const auto part = [&](bool by_caller, Real from, Real to, Real height, int64_t& pairs) -> Extended {
                if (!(from < to)) return {};
                if (!by_caller) return spline.integral(f, from, to);
                ++pairs;
                const long double value = (long double)height * ((long double)to - from);
                return {value, std::abs(height) * (std::abs((long double)to) + std::abs((long double)from))};
              };
              Extended exact;
              for (const Extended& e : {part(regions & 1, low, std::min(high, x0), 1000, left_pairs),
                                        part(regions & 4, std::max(low, x0), std::min(high, x1), 500, inside_pairs),
                                        part(regions & 2, std::max(low, x1), high, -2000, right_pairs)})
                exact.add(e.value, e.size);
              const Real value = r[size_t(f) * a.size() + s];
              ASSERT_NEAR(double(value), double(b[s] < a[s] ? -exact.value : exact.value),
                          32 * eps * double(exact.size))
                  << "regions " << regions << " from " << a[s] << " to " << b[s];
              // Pairs that no call-back has a part in are those of the plain form.
              const bool touched = (low < x0 && regions & 1) || (high > x1 && regions & 2) || regions & 4;
              if (!touched) {
                ASSERT_EQ(value, plain[size_t(f) * a.size() + s]);
              }
            }
          EXPECT_EQ(left.pairs, left_pairs);
          EXPECT_EQ(right.pairs, right_pairs);
          EXPECT_EQ(inside.pairs, inside_pairs);
        }
}

TYPED_TEST(Integrate, SplinesKnownToCallBacksAlone) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 30, 1, false, 1);
  spline.task->splineOrder = 0;
  spline.task->coeff[0] = nullptr; // not read
  const Real infinity = std::numeric_limits<Real>::infinity();
  const Real x0 = spline.left_end(), x1 = spline.right_end();
  Constant<Real> left{1, -infinity, x0, 0, 1}, right{3, x1, infinity, 29, 30}, inside{2, x0, x1, 1, 29};
  for (unsigned regions = 0; regions < 8; ++regions) {
    Call<Real> call{.left_parameter = &left, .right_parameter = &right, .inside_parameter = &inside};
    if (regions & 1) call.left = constant<Real>;
    if (regions & 2) call.right = constant<Real>;
    if (regions & 4) call.inside = constant<Real>;
    const auto r = integrals<Real>(spline.task, {x0 - 1}, {x1 + 1}, call, regions == 7 ? 0 : -1011);
    if (regions == 7) {
      EXPECT_NEAR(double(r[0]), double(1 + 2 * (x1 - x0) + 3), 1e-5);
    } else {
      EXPECT_EQ(r[0], -99);
    }
  }
}

TYPED_TEST(Integrate, FailuresEndTheCall) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 30, 1, false, 1);
  const std::vector<Real> a(1000, spline.point(3)), b(1000, spline.point(7));
  for (const int threads : {1, 4}) {
    set_max_threads(threads);
    for (const int32_t status : {-1, -1500, INT32_MIN, 1, 7}) {
      Constant<Real> inside{1, spline.left_end(), spline.right_end(), 1, 29, status};
      const Call<Real> call{.inside = constant<Real>, .inside_parameter = &inside, .threader = pthread_threader()};
      const auto r = integrals(spline.task, a, b, call, status < 0 ? status : 0);
      EXPECT_EQ(r[999] == -99, status < 0);
      if (threads == 1) {
        EXPECT_EQ(inside.calls, status < 0 ? 1 : 8);
      }
    }
    const auto refuse = [](const int64_t*, const Real*, int64_t*, int32_t*, void*) -> int32_t { return -12; };
    const auto r = integrals(spline.task, a, b, Call<Real>{.search = refuse, .threader = pthread_threader()}, -12);
    EXPECT_EQ(r[0], -99);
  }
}

// What was done before a failure stays.
TYPED_TEST(Integrate, WorkBeforeAFailureStays) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 30, 1, false, 1);
  const std::vector<Real> a(1000, spline.point(3)), b(1000, spline.point(7));
  int left = 5; // searches: two for a block
  const auto tiring = [](const int64_t* n, const Real*, int64_t* cell, int32_t* flag, void* parameter) -> int32_t {
    for (int64_t i = 0; i < *n; ++i) cell[i] = 2, flag[i] = 0;
    return --*static_cast<int*>(parameter) < 0 ? -8 : 0;
  };
  const auto r = integrals(spline.task, a, b, Call<Real>{.search = tiring, .search_parameter = &left}, -8);
  const auto plain = integrals(spline.task, a, b);
  EXPECT_TRUE(std::equal(plain.begin(), plain.begin() + 256, r.begin()));
  EXPECT_EQ(r[256], -99);
}

TYPED_TEST(Integrate, ScratchAndItsFailure) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 30, 1, false, 1);
  const std::vector<Real> a(5000, spline.point(3)), b(5000, spline.point(7));
  for (const int threads : {1, 15, 16, 30}) {
    set_max_threads(threads);
    Constant<Real> inside{1, spline.left_end(), spline.right_end(), 1, 29};
    const Call<Real> with{.inside = constant<Real>, .inside_parameter = &inside, .threader = pthread_threader()};
    const int64_t failures = for_each_allocation_failure([&](int64_t k) {
      std::vector<Real> r(5000, -9);
      const bool fails = threads > 15 && k == 0;
      EXPECT_EQ(integrate(spline.task, a, b, with, r.data()), fails ? -1001 : 0);
      EXPECT_EQ(r[0] == -9, fails);
    });
    EXPECT_EQ(failures, threads > 15 ? 1 : 0);
    AllocationFailure none(-1);
    integrals(spline.task, a, b, Call<Real>{.threader = pthread_threader()});
    EXPECT_EQ(none.seen(), 0);
  }
}

}
