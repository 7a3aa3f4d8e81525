// Exact quantiles, order statistics, sorting and the quicksort helpers.
#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "stats/dataset.h"
#include "support/failing_allocator.h"
#include "support/pthread_threader.h"

namespace {

using namespace tarn::test;
using Long = long double;

constexpr uint64_t Quantiles = 0x10000, OrderStatistics = 0x20000, Fast = 1, SortMethod = 0x100000;

template <class C> class Order : public testing::Test {};
using Cases = testing::Types<Case<double, int32_t>, Case<double, int64_t>, Case<float, int32_t>, Case<float, int64_t>>;
TYPED_TEST_SUITE(Order, Cases);

template <class Real> std::vector<Real> sorted_variable(const Dataset<Real>& set, int64_t j) {
  std::vector<Real> x(set.n);
  for (int64_t i = 0; i < set.n; ++i) x[i] = set.at(j, i);
  std::sort(x.begin(), x.end());
  return x;
}

template <class Real> Long quantile_of(const std::vector<Real>& sorted, Real order) {
  const Long m = Long(sorted.size()) - 1, a = Long(double(order) * double(m));
  const int64_t i = int64_t(a);
  const Long f = a - i;
  return i >= int64_t(m) ? Long(sorted.back()) : (1 - f) * sorted[i] + f * sorted[i + 1];
}

template <class Real, class Int>
void check_quantiles(const Dataset<Real>& set, std::vector<Real> orders, uint64_t estimates, bool output_rows,
                     int threads) {
  orders.reserve(1); // an array even for no orders
  TaskOf<Real, Int> task(set);
  const Real untouched = -777;
  Int count = Int(orders.size()), storage = output_rows ? 0x10000 : 0x20000;
  std::vector<Real> quantiles(set.p * orders.size() + 1, untouched), statistics(set.p * set.n, untouched);
  task.set_integer(24, &count);
  task.set_real(25, orders.data());
  task.set_real(26, quantiles.data());
  task.set_real(27, statistics.data());
  task.set_integer(44, &storage);
  set_max_threads(threads);
  ASSERT_EQ(Api<Real>::quantiles(task.task, estimates, Fast, pthread_threader()), 0);
  for (int64_t j = 0; j < set.p; ++j) {
    const std::vector<Real> sorted = sorted_variable(set, j);
    for (size_t k = 0; k < orders.size(); ++k) {
      const Real got = quantiles[j * orders.size() + k];
      if (!(estimates & Quantiles) || !set.taken(j)) {
        ASSERT_EQ(got, untouched);
        continue;
      }
      const Long expected = quantile_of(sorted, orders[k]);
      ASSERT_LE(std::fabs(Long(got) - expected), 4 * std::numeric_limits<Real>::epsilon() * std::fabs(expected))
          << "n " << set.n << " order " << orders[k] << " of " << orders.size();
    }
    for (int64_t i = 0; i < set.n; ++i) {
      const Real got = statistics[output_rows ? j * set.n + i : i * set.p + j];
      ASSERT_EQ(got, estimates & OrderStatistics && set.taken(j) ? sorted[i] : untouched) << set.n << " " << i;
    }
  }
  ASSERT_EQ(quantiles.back(), untouched);
}

TYPED_TEST(Order, QuantilesAndOrderStatistics) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const std::vector<std::vector<Real>> order_sets = {
      {Real(0.5)},
      {Real(0), Real(1)},
      {Real(1), Real(0.25), Real(0.001), Real(0.999)},
      {Real(0.1), Real(0.2), Real(0.3), Real(0.4), Real(0.5), Real(0.6), Real(0.7), Real(0.8), Real(0.9)},
      {},
  };
  for (int64_t n : {1, 2, 3, 7, 8, 9, 31, 100, 1001, 20000}) {
    for (int64_t p : {1, 4}) {
      for (bool by_rows : {true, false}) {
        if (n == 20000 && p == 4 && by_rows) continue;
        const Dataset<Real> set = random_dataset<Real>(n, p, by_rows, Weights::none, p > 1 && n % 2 == 1, n + p);
        for (const auto& orders : order_sets) {
          for (uint64_t estimates : {Quantiles, OrderStatistics, Quantiles | OrderStatistics}) {
            check_quantiles<Real, Int>(set, orders, estimates, n % 3 != 0, 1 + int(n % 3));
            if (this->HasFatalFailure()) return;
          }
        }
      }
    }
  }
}

// Data that upset a choice of pivots or a sample: runs, periods, many equal elements, a few far out.
TYPED_TEST(Order, SelectionOnAwkwardData) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const int64_t n = 30000;
  for (int shape = 0; shape < 7; ++shape) {
    Dataset<Real> set = random_dataset<Real>(n, 1, true, Weights::none, false, shape);
    for (int64_t i = 0; i < n; ++i) {
      Real& x = set.data[i];
      switch (shape) {
      case 0: x = Real(i); break;
      case 1: x = Real(n - i); break;
      case 2: x = Real(std::min(i, n - i)); break;
      case 3: x = Real(4); break;
      case 4: x = Real(i % 3); break;
      case 5: x = i % 1000 == 0 ? Real(1e30) : Real(-1); break;
      default: x = i < n / 2 ? Real(0) : Real(i % 17); break;
      }
    }
    const std::vector<Real> some = {Real(0.5), Real(0.499), Real(0), Real(1)};
    check_quantiles<Real, Int>(set, some, Quantiles, true, 1);
    if (this->HasFatalFailure()) return;
  }
}

// The quantiles of a set of one variable.
template <class Real, class Int>
std::vector<Real> quantiles_of(const Dataset<Real>& set, const std::vector<Real>& orders) {
  TaskOf<Real, Int> task(set);
  Int count = Int(orders.size());
  std::vector<Real> quantiles(orders.size());
  task.set_integer(24, &count);
  task.set_real(25, orders.data());
  task.set_real(26, quantiles.data());
  EXPECT_EQ(Api<Real>::quantiles(task.task, Quantiles, Fast, nullptr), 0);
  return quantiles;
}

TYPED_TEST(Order, InfinityBesideAnExactRank) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  Dataset<Real> set = random_dataset<Real>(3, 1, true, Weights::none, false, 1);
  const Real inf = std::numeric_limits<Real>::infinity();
  set.data = {inf, 2, -inf};
  EXPECT_EQ((quantiles_of<Real, Int>(set, {0, Real(0.5), 1})), (std::vector<Real>{-inf, 2, inf}));
}

// A fraction that rounds to 1 in float does not hide the infinity below it; 0.01 of 101 elements has one.
TYPED_TEST(Order, InfinityBelowAFraction) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Real inf = std::numeric_limits<Real>::infinity();
  for (size_t count : {1, 6}) { // by selection and from the sorted elements
    Dataset<Real> set = random_dataset<Real>(101, 1, true, Weights::none, false, 1);
    set.data[50] = -inf;
    const std::vector<Real> orders(count, Real(0.01f)); // just below
    EXPECT_EQ((quantiles_of<Real, Int>(set, orders)), std::vector<Real>(count, -inf));
  }
}

TYPED_TEST(Order, QuantilesOfEqualElementsAreTheElement) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  std::vector<Real> orders;
  for (int k = 0; k <= 100; ++k) orders.push_back(Real(k) / 100);
  for (Real x : {Real(0.1), Real(1) / 3, -Real(0.7), std::numeric_limits<Real>::max()}) {
    Dataset<Real> set = random_dataset<Real>(38, 1, true, Weights::none, false, 1);
    std::fill(set.data.begin(), set.data.end(), x);
    for (Real q : quantiles_of<Real, Int>(set, orders)) ASSERT_EQ(q, x);
  }
}

TYPED_TEST(Order, QuantileChecksInOrder) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> set = random_dataset<Real>(20, 2, true, Weights::none, false, 1);
  TaskOf<Real, Int> task(set);
  SSTask* record = task.record();
  Int bad_word = 7, good_word = 0x20000, count = -1;
  Real orders[2] = {Real(0.5), Real(1.5)}, out[40];
  auto status = [&](uint64_t estimates, uint64_t method) {
    return Api<Real>::quantiles(record, estimates, method, nullptr);
  };
  EXPECT_EQ(Api<Real>::quantiles(nullptr, Quantiles, Fast, nullptr), -4031);
  void* storage = record->observation_storage;
  record->observation_storage = &bad_word;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4003);
  record->observation_storage = storage;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4023);
  record->quantiles = out;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4021);
  record->quantile_orders = orders;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4022);
  record->quantile_order_count = &count;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4022);
  count = 2;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4022);
  orders[1] = -Real(0.1);
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4022);
  orders[1] = std::numeric_limits<Real>::quiet_NaN();
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4022);
  orders[1] = 1;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4024);
  record->order_statistics = out;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4044);
  record->order_statistics_storage = &bad_word;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4003);
  record->order_statistics_storage = &good_word;
  EXPECT_EQ(status(Quantiles | OrderStatistics, 0), -4029);
  EXPECT_EQ(status(Quantiles | OrderStatistics, 2), -4029);
  EXPECT_EQ(status(Quantiles | OrderStatistics, Fast), 0);
  record->order_statistics = nullptr; // arrays that are not asked for are not looked at
  EXPECT_EQ(status(Quantiles, Fast), 0);
  count = 0;
  out[0] = 5;
  EXPECT_EQ(status(Quantiles, Fast), 0);
  EXPECT_EQ(out[0], 5);
}

TYPED_TEST(Order, WithoutMemoryQuantilesReturnNothing) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> set = random_dataset<Real>(200, 2, true, Weights::none, false, 1);
  TaskOf<Real, Int> task(set);
  Int count = 1, storage = 0x10000;
  const Real order = Real(0.5);
  Real out[2];
  std::vector<Real> statistics(400);
  task.set_integer(24, &count);
  task.set_real(25, &order);
  task.set_real(26, out);
  task.set_real(27, statistics.data());
  task.set_integer(44, &storage);
  for (uint64_t estimates : {Quantiles, Quantiles | OrderStatistics}) {
    set_max_threads(2);
    const int64_t sites = for_each_allocation_failure([&](int64_t) {
      out[0] = statistics[0] = -777;
      ASSERT_EQ(Api<Real>::quantiles(task.task, estimates, Fast, pthread_threader()), 0);
      ASSERT_EQ(statistics[0] == -777, estimates == Quantiles || out[0] == -777);
    });
    EXPECT_EQ(sites, 2);
    EXPECT_NE(out[0], -777); // the last run had its memory
  }
}

// ---- Sort ----

TYPED_TEST(Order, SortsEachVariable) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  for (int64_t n : {1, 2, 50, 3000}) {
    for (int64_t p : {1, 3}) {
      for (bool by_rows : {true, false}) {
        for (bool output_rows : {true, false}) {
          for (bool masked : {false, true}) {
            const Dataset<Real> set = random_dataset<Real>(n, p, by_rows, Weights::none, masked && p > 1, 3);
            TaskOf<Real, Int> task(set);
            Int storage = output_rows ? 0x10000 : 0x20000;
            std::vector<Real> out(n * p, Real(-777));
            task.set_real(78, out.data());
            task.set_integer(79, &storage);
            set_max_threads(3);
            ASSERT_EQ(Api<Real>::sort(task.task, 0, SortMethod, pthread_threader()), 0);
            for (int64_t j = 0; j < p; ++j) {
              const std::vector<Real> sorted = sorted_variable(set, j);
              for (int64_t i = 0; i < n; ++i)
                ASSERT_EQ(out[output_rows ? j * n + i : i * p + j], set.taken(j) ? sorted[i] : Real(-777));
            }
          }
        }
        Dataset<Real> set = random_dataset<Real>(n, p, by_rows, Weights::none, false, 3);
        const Dataset<Real> original = set;
        TaskOf<Real, Int> task(set);
        Int storage = by_rows ? 0x10000 : 0x20000;
        task.set_real(78, set.data.data());
        task.set_integer(79, &storage);
        ASSERT_EQ(Api<Real>::sort(task.task, 0, SortMethod, pthread_threader()), 0);
        for (int64_t j = 0; j < p; ++j) {
          const std::vector<Real> sorted = sorted_variable(original, j);
          for (int64_t i = 0; i < n; ++i) ASSERT_EQ(set.at(j, i), sorted[i]) << "in place";
        }
      }
    }
  }
}

TYPED_TEST(Order, SortChecksInOrder) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  Dataset<Real> set = random_dataset<Real>(20, 2, true, Weights::none, true, 1);
  TaskOf<Real, Int> task(set);
  SSTask* record = task.record();
  Int rows_word = 0x10000, columns_word = 0x20000, bad = 1;
  Real out[40];
  auto status = [&](uint64_t method) { return Api<Real>::sort(record, 0, method, nullptr); };
  EXPECT_EQ(Api<Real>::sort(nullptr, 0, SortMethod, nullptr), -4031);
  EXPECT_EQ(status(0), -4084);
  record->sorted_observations = set.data.data();
  EXPECT_EQ(status(0), -4044);
  record->sorted_storage = &columns_word;
  EXPECT_EQ(status(0), -4044); // in place with another storage
  record->sorted_storage = &bad;
  EXPECT_EQ(status(0), -4044);
  record->sorted_storage = &rows_word;
  EXPECT_EQ(status(0), -4085);
  record->variable_mask = nullptr;
  EXPECT_EQ(status(0), -4029);
  EXPECT_EQ(status(1), -4029);
  record->sorted_observations = out;
  record->sorted_storage = &bad;
  EXPECT_EQ(status(0), -4003);
  record->sorted_storage = &columns_word;
  record->observation_storage = &bad;
  EXPECT_EQ(status(0), -4003);
  record->observation_storage = &rows_word;
  EXPECT_EQ(status(SortMethod), 0);
  set_max_threads(2);
  const int64_t sites = for_each_allocation_failure([&](int64_t) {
    const int32_t result = Api<Real>::sort(record, 0, SortMethod, pthread_threader());
    ASSERT_TRUE(result == 0 || result == -4000);
  });
  EXPECT_EQ(sites, 2);
}

// ---- Quicksort ----

template <class Real> struct Quick;
template <> struct Quick<double> {
  static constexpr auto sort = __kestdQSort;
  static constexpr auto step = __kestdQSortStep;
  static constexpr auto select = __kestdQSortSelect;
};
template <> struct Quick<float> {
  static constexpr auto sort = __kestsQSort;
  static constexpr auto step = __kestsQSortStep;
  static constexpr auto select = __kestsQSortSelect;
};

template <class Real> Real shaped(int shape, int64_t i, int64_t n, std::mt19937_64& random) {
  switch (shape) {
  case 0: return Real(random() % 1000000);
  case 1: return Real(i);
  case 2: return Real(n - i);
  case 3: return Real(std::min(i, n - i));
  case 4: return Real(3);
  default: return Real(random() % 3);
  }
}

TYPED_TEST(Order, Quicksort) {
  using Real = typename TypeParam::Real;
  std::mt19937_64 random(1);
  for (int shape = 0; shape < 6; ++shape) {
    for (int64_t n : {0, 1, 2, 3, 6, 7, 8, 9, 50, 1000, 5000}) {
      std::vector<Real> a(n);
      for (int64_t i = 0; i < n; ++i) a[i] = shaped<Real>(shape, i, n, random);
      std::vector<Real> sorted = a, b = a;
      std::sort(sorted.begin(), sorted.end());
      Quick<Real>::sort(n, b.data());
      ASSERT_EQ(b, sorted) << shape << " " << n;
      for (int64_t stride : {1, 3}) {
        std::vector<Real> spread(n * stride, Real(-777));
        for (int64_t i = 0; i < n; ++i) spread[i * stride] = a[i];
        Quick<Real>::step(n, spread.data(), stride);
        for (int64_t i = 0; i < n * stride; ++i)
          ASSERT_EQ(spread[i], i % stride == 0 ? sorted[i / stride] : Real(-777)) << shape << " " << n;
      }
      b = a;
      for (int64_t repeat = 0; repeat < std::min<int64_t>(n, 20); ++repeat) {
        const int64_t k = n <= 20 ? repeat : int64_t(random() % n);
        ASSERT_EQ(Quick<Real>::select(n, b.data(), k), sorted[k]) << shape << " " << n << " " << k;
        ASSERT_EQ(b[k], sorted[k]);
        for (int64_t i = 0; i < n; ++i) ASSERT_TRUE(i < k ? b[i] <= b[k] : b[i] >= b[k]);
      }
      std::sort(b.begin(), b.end());
      ASSERT_EQ(b, sorted); // selection only moves elements
    }
  }
}

TYPED_TEST(Order, QuicksortStaysWithinTheArrayWithNans) {
  using Real = typename TypeParam::Real;
  std::mt19937_64 random(2);
  for (int64_t n : {3, 8, 20, 300}) {
    for (int repeat = 0; repeat < 50; ++repeat) {
      std::vector<Real> a(n + 2, Real(-1));
      for (int64_t i = 1; i <= n; ++i)
        a[i] = random() % 3 == 0 ? std::numeric_limits<Real>::quiet_NaN() : Real(1 + random() % 100);
      const auto nans = std::count_if(a.begin(), a.end(), [](Real x) { return std::isnan(x); });
      Quick<Real>::sort(n, a.data() + 1);
      ASSERT_EQ(a.front(), Real(-1));
      ASSERT_EQ(a.back(), Real(-1));
      ASSERT_EQ(std::count_if(a.begin(), a.end(), [](Real x) { return std::isnan(x); }), nans);
    }
  }
}

}
