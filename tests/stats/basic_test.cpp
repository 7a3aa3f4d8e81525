// The basic statistics against sums in extended precision.
#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "tarn/vector.h"

#include "stats/dataset.h"
#include "support/failing_allocator.h"
#include "support/pthread_threader.h"

namespace {

using namespace tarn::test;
using Long = long double;

constexpr Long untouched = -777;

// The estimates as the interface numbers them: mask bit, editor id, and what a request demands (typed from the
// published tables, by position in this list).
struct Row {
  uint64_t mask;
  int32_t id, status;
  uint32_t by_default, fast, convert;
};
const Row rows[20] = {
    {0x1, 7, -4006, 0x1, 0x1, 0x1001},
    {0x2, 8, -4007, 0x2, 0x2, 0x2002},
    {0x4, 9, -4008, 0x4, 0x4, 0x4004},
    {0x8, 10, -4009, 0x8, 0x8, 0x8008},
    {0x10, 11, -4010, 0x13, 0x13, 0x10010},
    {0x20, 12, -4011, 0x27, 0x27, 0x20020},
    {0x40, 13, -4012, 0x4f, 0x4f, 0x40040},
    {0x1000, 19, -4018, 0x81, 0x81, 0x80080},
    {0x2000, 21, -4019, 0x101, 0x101, 0x80100},
    {0x80, 14, -4013, 0x25f, 0x25f, 0x251},
    {0x100, 15, -4014, 0x437, 0x437, 0x431},
    {0x200, 18, -4017, 0x813, 0x813, 0x811},
    {0x2000000, 67, -4074, 0x1000, 0x1000, 0x100000},
    {0x4000000, 68, -4075, 0x2000, 0x2000, 0x100000},
    {0x8000000, 69, -4076, 0x4000, 0x4000, 0x100000},
    {0x10000000, 70, -4077, 0x8000, 0x8000, 0x100000},
    {0x20000000, 71, -4078, 0x10001, 0x10003, 0x100000},
    {0x40000000, 72, -4079, 0x20001, 0x20007, 0x100000},
    {0x80000000, 73, -4080, 0x40001, 0x4000f, 0x100000},
    {0x100000000, 74, -4081, 0x80001, 0x80001, 0x100000},
};
enum : int {
  Mean,
  Raw2,
  Raw3,
  Raw4,
  Central2,
  Central3,
  Central4,
  Covariance,
  Correlation,
  Kurtosis,
  Skewness,
  Variation,
  Sum,
  RawSum2,
  RawSum3,
  RawSum4,
  CentralSum2,
  CentralSum3,
  CentralSum4,
  CrossProduct
};
bool is_matrix(int e) { return e == Covariance || e == Correlation || e == CrossProduct; }

constexpr uint64_t Fast = 1, OnePass = 2, UserMean = 0x100, FromMoments = 0x200, FromSums = 0x400;

uint32_t demand_of(uint64_t estimates, uint64_t method) {
  uint32_t demand = 0;
  for (const Row& row : rows)
    if (estimates & row.mask)
      demand |= method & Fast ? row.fast : method & (OnePass | UserMean) ? row.by_default : row.convert;
  return demand;
}

// A value and the size of the terms that rounding acts on.
struct Expected {
  Long value, scale;
};

// All estimates of a data set, in extended precision, directly from their definitions.
struct Reference {
  int64_t p;
  Long W = 0, V = 0;
  std::vector<Expected> of[20]; // matrices: row by row, p x p

  template <class Real>
  Reference(const Dataset<Real>& set, uint64_t method, const std::vector<Real>& users_mean) : p(set.p) {
    const int64_t n = set.n;
    for (int64_t i = 0; i < n; ++i) {
      const Long w = set.weight(i);
      W += w;
      V += w * w;
    }
    const bool user = method == UserMean, fast = method == Fast;
    std::vector<Long> centre(p), mean(p), absolute1(p);
    for (auto& list : of) list.resize(p);
    for (int e : {Covariance, Correlation, CrossProduct}) of[e].resize(p * p);
    std::vector<Long> c2s(p), d2s(p);
    for (int64_t j = 0; j < p; ++j) {
      Long m[5] = {}, a[5] = {}, c[5] = {}, d[5] = {};
      for (int64_t i = 0; i < n; ++i) {
        const Long w = set.weight(i), x = set.at(j, i);
        Long power = w;
        for (int k = 1; k <= 4; ++k) {
          power *= x;
          m[k] += power;
          a[k] += std::fabs(power);
        }
      }
      for (int k = 1; k <= 4; ++k) {
        m[k] /= W;
        a[k] /= W;
      }
      mean[j] = m[1];
      absolute1[j] = a[1];
      centre[j] = user ? Long(users_mean[j]) : m[1];
      for (int64_t i = 0; i < n; ++i) {
        const Long w = set.weight(i), x = Long(set.at(j, i)) - centre[j];
        Long power = w;
        for (int k = 1; k <= 4; ++k) {
          power *= x;
          c[k] += power;
          d[k] += std::fabs(power);
        }
      }
      c2s[j] = c[2];
      d2s[j] = d[2];
      const Long reported = user ? centre[j] : m[1];
      of[Mean][j] = {reported, user ? 0 : a[1]};
      of[Sum][j] = {reported * W, a[1] * W};
      for (int k = 2; k <= 4; ++k) {
        of[Mean + k - 1][j] = {m[k], a[k]};
        of[Sum + k - 1][j] = {m[k] * W, a[k] * W};
        // A mean off by its rounding moves a central sum by k times the next lower one; raw sums cancel.
        const Long scale = fast ? std::pow(Long(2), k) * a[k] * W : d[k] + (user ? 0 : k * d[k - 1] * a[1]);
        of[CentralSum2 + k - 2][j] = {c[k], scale};
        const Long factor = k == 2 ? W / (W * W - V) : 1 / W;
        of[Central2 + k - 2][j] = {c[k] * factor, scale * factor};
      }
      const Expected &e2 = of[Central2][j], &e3 = of[Central3][j], &e4 = of[Central4][j];
      const Long relative2 = e2.scale / e2.value;
      const Long kurtosis = e4.value / (e2.value * e2.value);
      of[Kurtosis][j] = {kurtosis - 3, e4.scale / (e2.value * e2.value) + 2 * kurtosis * relative2 + 3};
      const Long root = std::sqrt(e2.value * e2.value * e2.value);
      of[Skewness][j] = {e3.value / root, e3.scale / root + 2 * std::fabs(e3.value / root) * relative2};
      const Long variation = std::sqrt(e2.value) / reported;
      of[Variation][j] = {variation, std::fabs(variation) * (relative2 + 1 + a[1] / std::fabs(reported))};
    }
    const Long f = 1 / (W - V / W);
    for (int64_t j = 0; j < p; ++j) {
      for (int64_t k = 0; k < p; ++k) {
        Long product = 0, scale = 0;
        for (int64_t i = 0; i < n; ++i) {
          const Long w = set.weight(i), x = set.at(j, i), y = set.at(k, i);
          product += w * (x - centre[j]) * (y - centre[k]);
          scale += w * std::fabs(x * y);
        }
        // With a user's mean the products are those about zero less W m m^T, which is the same for the true mean only.
        if (user) product += W * ((mean[j] - centre[j]) * centre[k] + (mean[k] - centre[k]) * centre[j]);
        if (method == OnePass)
          scale = std::sqrt(d2s[j] * d2s[k]);
        else
          scale += W * std::fabs(centre[j] * centre[k]);
        of[CrossProduct][j * p + k] = {product, scale};
        of[Covariance][j * p + k] = {product * f, scale * f};
      }
    }
    for (int64_t j = 0; j < p; ++j) {
      for (int64_t k = 0; k < p; ++k) {
        const Expected& cov = of[Covariance][j * p + k];
        const Expected &vj = of[Covariance][j * p + j], &vk = of[Covariance][k * p + k];
        const Long root = std::sqrt(vj.value * vk.value);
        const Long relative = vj.scale / vj.value + vk.scale / vk.value;
        of[Correlation][j * p + k] =
            j == k ? cov : Expected{cov.value / root, cov.scale / root + std::fabs(cov.value / root) * relative + 1};
      }
    }
  }
};

// The largest error seen, in units of epsilon times the scale; the bound holds for every element.
constexpr Long bound = 40;

// The result arrays of one task.
template <class Real, class Int> struct Results {
  int64_t p;
  std::vector<Real> of[20];
  Int storage[3]; // of covariance, correlation, cross product
  Real weight_sums[2] = {0, 0};

  explicit Results(int64_t p_, int storage_shift = 0) : p(p_) {
    for (int e = 0; e < 20; ++e) of[e].assign(is_matrix(e) ? p * p : p, Real(untouched));
    for (int k = 0; k < 3; ++k) storage[k] = Int((k + storage_shift) % 3);
  }
  static int storage_slot(int e) { return e == Covariance ? 0 : e == Correlation ? 1 : 2; }

  void attach(TaskOf<Real, Int>& task, uint32_t arrays, bool continuing = true) {
    for (int e = 0; e < 20; ++e)
      if (arrays >> e & 1) task.set_real(rows[e].id, of[e].data());
    task.set_integer(20, &storage[0]);
    task.set_integer(22, &storage[1]);
    task.set_integer(75, &storage[2]);
    if (continuing) task.set_real(23, weight_sums);
  }

  // The place of element (j, k) of a matrix, -1 when its storage has none.
  int64_t place(int e, int64_t j, int64_t k) const {
    const int64_t i = std::max(j, k), l = std::min(j, k);
    switch (int64_t(storage[storage_slot(e)])) {
    case 1: return i * (i + 1) / 2 + l;
    case 2: return l * p - l * (l - 1) / 2 + i - l;
    default: return j * p + k;
    }
  }

  void expect(const Reference& reference, const Dataset<Real>& set, uint32_t demand, const std::string& where) const {
    const Long eps = std::numeric_limits<Real>::epsilon();
    auto check = [&](int e, int64_t at, const Expected& expected, bool taken) {
      const Long got = of[e][at];
      if (!(demand >> e & 1) || !taken) {
        ASSERT_EQ(got, untouched) << where << " estimate " << e << " was written at " << at;
        return;
      }
      ASSERT_LE(std::fabs(got - expected.value), bound * eps * expected.scale)
          << where << " estimate " << e << " at " << at << " got " << got << " expected " << expected.value
          << " error in units " << std::fabs(got - expected.value) / (eps * expected.scale);
    };
    for (int e = 0; e < 20; ++e) {
      for (int64_t j = 0; j < p; ++j) {
        if (!is_matrix(e)) {
          check(e, j, reference.of[e][j], set.taken(j));
          if (testing::Test::HasFatalFailure()) return;
          continue;
        }
        for (int64_t k = 0; k < p; ++k) {
          check(e, place(e, j, k), reference.of[e][j * p + k], set.taken(j) && set.taken(k));
          if (testing::Test::HasFatalFailure()) return;
        }
      }
    }
    ASSERT_LE(std::fabs(weight_sums[0] - reference.W), bound * eps * reference.W) << where;
    ASSERT_LE(std::fabs(weight_sums[1] - reference.V), bound * eps * reference.V) << where;
  }
};

template <class C> class Basic : public testing::Test {};
using Cases = testing::Types<Case<double, int32_t>, Case<double, int64_t>, Case<float, int32_t>, Case<float, int64_t>>;
TYPED_TEST_SUITE(Basic, Cases);

template <class Real> std::vector<Real> rough_mean(const Dataset<Real>& set) {
  std::vector<Real> mean(set.p);
  for (int64_t j = 0; j < set.p; ++j) {
    Long sum = 0, W = 0;
    for (int64_t i = 0; i < set.n; ++i) {
      sum += Long(set.weight(i)) * set.at(j, i);
      W += set.weight(i);
    }
    mean[j] = static_cast<Real>(sum / W + 0.0005L * (1 + j % 3)); // off on purpose: the formulas are for any mean
  }
  return mean;
}

// One request by one method over the data in some blocks on some threads, held to the reference.
template <class Real, class Int>
void run(const Dataset<Real>& set, const Reference& reference, uint64_t method, uint64_t estimates, int blocks,
         int threads, const std::vector<Real>& users_mean, int storage_shift, bool all_arrays) {
  const uint32_t demand = demand_of(estimates, method);
  Results<Real, Int> results(set.p, storage_shift);
  TaskOf<Real, Int> task(set);
  ASSERT_NE(task.task, nullptr);
  results.attach(task, all_arrays ? 0xFFFFF : demand);
  const bool user = method == UserMean;
  std::vector<Real> mean = users_mean;
  if (user) task.set_real(7, mean.data());
  set_max_threads(threads);
  std::vector<Dataset<Real>> parts;
  for (int b = 0; b < blocks; ++b) parts.push_back(set.part(set.n * b / blocks, set.n * (b + 1) / blocks));
  for (const Dataset<Real>& part : parts) {
    task.turn_to(part);
    ASSERT_EQ(Api<Real>::basic(task.task, estimates, method, threads == 1 ? nullptr : pthread_threader()), 0);
  }
  if (user) {
    ASSERT_EQ(mean, users_mean);
    if (demand & 1) // so that the comparison finds it, though it stands elsewhere
      for (int64_t j = 0; j < set.p; ++j)
        if (set.taken(j)) results.of[Mean][j] = mean[j];
  }
  char where[200];
  std::snprintf(where, sizeof where,
                "method %llx estimates %llx n %lld p %lld rows %d weights %d mask %d blocks %d threads %d",
                (unsigned long long)method, (unsigned long long)estimates, (long long)set.n, (long long)set.p, set.rows,
                int(!set.weights.empty()), int(!set.mask.empty()), blocks, threads);
  results.expect(reference, set, demand, where);
}

// Every storage, weighting, mask and method; all estimates at once and each alone, with just the arrays it demands and
// with all registered. Together these reach each of the kernels.
TYPED_TEST(Basic, EveryKernel) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const int64_t n = 260;
  int shift = 0;
  for (int64_t p : {1, 2, 5, 11}) {
    for (bool by_rows : {true, false}) {
      for (Weights kind : {Weights::none, Weights::positive, Weights::with_zeros}) {
        for (bool masked : {false, true}) {
          const Dataset<Real> set = random_dataset<Real>(n, p, by_rows, kind, masked && p > 1, 100 + p);
          const std::vector<Real> mean = rough_mean(set);
          for (uint64_t method : {Fast, OnePass, UserMean}) {
            const Reference reference(set, method, mean);
            for (int e = -1; e < 20; ++e) {
              const uint64_t estimates = e < 0 ? 0x1FE0033FF : rows[e].mask;
              // Central sums 3 and 4 go on from the lower ones; asked for alone they stand for one block.
              const bool alone = method == OnePass && (e == CentralSum3 || e == CentralSum4);
              for (int blocks : {1, 2, 3})
                if (blocks == 1 || !alone)
                  run<Real, Int>(set, reference, method, estimates, blocks, 1, mean, shift++, false);
              run<Real, Int>(set, reference, method, estimates, 1, 1, mean, shift++, true);
              if (this->HasFatalFailure()) return;
            }
          }
        }
      }
    }
  }
}

// Thread counts and block counts, with sizes at which all threads are used; p = 40 goes to BLAS on one thread, p = 300 with few
// observations takes the route of one matrix for all threads.
TYPED_TEST(Basic, ThreadsAndBlocks) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  struct Size {
    int64_t n, p;
  };
  for (Size size : {Size{6000, 3}, Size{1200, 10}, Size{400, 40}, Size{120, 190}}) {
    for (bool by_rows : {true, false}) {
      for (Weights kind : {Weights::none, Weights::with_zeros}) {
        const Dataset<Real> set = random_dataset<Real>(size.n, size.p, by_rows, kind, size.p == 10, 7 + size.p);
        const std::vector<Real> mean = rough_mean(set);
        for (uint64_t method : {Fast, OnePass, UserMean}) {
          const Reference reference(set, method, mean);
          for (int threads : {1, 2, 7}) {
            for (int blocks : {1, 2, 5}) {
              if (size.p > 100 && blocks > 1 && threads % 2 == 1) continue;
              run<Real, Int>(set, reference, method, 0x1FE0033FF, blocks, threads, mean, blocks, false);
              run<Real, Int>(set, reference, method, 0x3001, blocks, threads, mean, blocks, false);
              if (this->HasFatalFailure()) return;
            }
          }
        }
      }
    }
  }
}

// Every width near those at which the kernels change (vectors of variables, groups of them, tiles, the limit of the
// tiles, wide observations, column panels), with threads that use tiles at all widths. The two integer widths share them.
TYPED_TEST(Basic, EveryWidth) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  std::vector<int64_t> widths = {63, 64, 65, 129};
  for (int64_t p = sizeof(Int) == 8 ? 2 : 3; p <= 40; p += 2) widths.push_back(p);
  for (int64_t p : widths) {
    for (bool by_rows : {true, false}) {
      const Weights kind = (p / 2 + by_rows) % 2 != 0 ? Weights::none : Weights::with_zeros;
      const int64_t n = p < 40 ? 250 + p % 19 : 150;
      const Dataset<Real> set = random_dataset<Real>(n, p, by_rows, kind, p % 5 == 0, 31 + p);
      const std::vector<Real> mean = rough_mean(set);
      for (uint64_t method : {Fast, OnePass, UserMean}) {
        const Reference reference(set, method, mean);
        for (int threads : {1, 3}) run<Real, Int>(set, reference, method, 0x1FE0033FF, 1, threads, mean, int(p), false);
        if (this->HasFatalFailure()) return;
      }
    }
  }
}

// Every short length, and those beside the edges of blocks.
TYPED_TEST(Basic, EveryLength) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  std::vector<int64_t> lengths;
  for (int64_t n = 2; n <= 70; ++n) lengths.push_back(n);
  for (int64_t edge : {128, 256, 512, 1024, 2048})
    for (int64_t n : {edge - 1, edge, edge + 1, edge + 2}) lengths.push_back(n);
  for (int64_t n : lengths) {
    for (bool by_rows : {true, false}) {
      const int64_t p = n % 2 == 0 ? 3 : 9;
      const Dataset<Real> set =
          random_dataset<Real>(n, p, by_rows, n % 3 == 0 ? Weights::positive : Weights::none, false, 77 + n);
      const std::vector<Real> mean = rough_mean(set);
      for (uint64_t method : {Fast, OnePass, UserMean}) // two observations leave nothing of ratios: a block of its own
        run<Real, Int>(set, Reference(set, method, mean), method, 0x1FE00107F, n < 4 ? 1 : 2, 1, mean, int(n), false);
      if (this->HasFatalFailure()) return;
    }
  }
}

// A variable that does not vary in the first block has no correlations there; later ones count in full.
TYPED_TEST(Basic, CorrelationGoesOnFromAConstantVariable) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  for (Real constant : {Real(0), Real(1), Real(0.7)}) {
    for (bool by_rows : {true, false}) {
      Dataset<Real> set = random_dataset<Real>(80, 4, by_rows, Weights::none, false, 9);
      for (int64_t i = 0; i < 40; ++i)
        for (int64_t j : {1, 3}) set.data[by_rows ? j * set.n + i : i * set.p + j] = constant;
      for (uint64_t method : {Fast, OnePass})
        for (int shift = 0; shift < 3; ++shift)
          run<Real, Int>(set, Reference(set, method, {}), method, 0x2000, 2, 1, {}, shift, false);
      if (this->HasFatalFailure()) return;
    }
  }
}

// Variances of which neither a product nor a cube is within the range of the type.
TYPED_TEST(Basic, RatiosOfLargeAndSmallData) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const int exponent = sizeof(Real) == 8 ? 260 : 33;
  for (int sign : {1, -1}) {
    Dataset<Real> set = random_dataset<Real>(300, 3, false, Weights::none, false, 21);
    for (Real& x : set.data) x = std::ldexp(x, sign * exponent);
    for (uint64_t method : {Fast, OnePass}) {
      const Reference reference(set, method, {});
      for (int blocks : {1, 3}) {
        run<Real, Int>(set, reference, method, 0x100, blocks, 1, {}, 0, false);
        run<Real, Int>(set, reference, method, 0x2000, blocks, 1, {}, 0, false);
      }
      if (this->HasFatalFailure()) return;
    }
  }
}

// Sums of many observations keep their digits at any width. Equal elements round all one way, which is the worst case:
// half a unit for each addition of a block and for each block.
TYPED_TEST(Basic, LongSumsOfAnyWidth) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const int64_t n = 1 << 16;
  const Long allowed = (1024 + 256) / 2 * Long(std::numeric_limits<Real>::epsilon());
  for (int64_t p : {3, 32, 35}) {
    Dataset<Real> set = {n, p, false, std::vector<Real>(n * p), {}, {}};
    for (int64_t at = 0; at < n * p; ++at) set.data[at] = Real(0.1) + Real(0.01) * Real(at % p);
    for (uint64_t method : {Fast, OnePass, UserMean}) {
      TaskOf<Real, Int> task(set);
      Results<Real, Int> results(p);
      results.attach(task, 0xFFFFF);
      std::vector<Real> zeros(p);
      if (method == UserMean) task.set_real(7, zeros.data());
      ASSERT_EQ(Api<Real>::basic(task.task, 0x40000006, method, nullptr), 0); // raw moments, central sum 3
      for (int64_t j = 0; j < p; ++j) {
        const Long x = set.at(j, 0);
        if (method == UserMean) { // about zero
          ASSERT_NEAR(results.of[CentralSum3][j] / (x * x * x * n), 1, allowed) << p;
        } else {
          ASSERT_NEAR(results.of[Mean][j] / x, 1, allowed) << p << " method " << method;
        }
        ASSERT_NEAR(results.of[Raw2][j] / (x * x), 1, allowed) << p << " method " << method;
        ASSERT_NEAR(results.of[Raw3][j] / (x * x * x), 1, allowed) << p << " method " << method;
      }
    }
  }
}

TYPED_TEST(Basic, ThreadCounts) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  auto started = [](int64_t n, int64_t p, uint64_t estimates, int limit) {
    const Dataset<Real> set = random_dataset<Real>(n, p, false, Weights::none, false, 1);
    TaskOf<Real, Int> task(set);
    Results<Real, Int> results(p);
    results.attach(task, 0xFFFFF);
    set_max_threads(limit);
    take_threads_started();
    EXPECT_EQ(Api<Real>::basic(task.task, estimates, Fast, pthread_threader()), 0);
    return take_threads_started();
  };
  EXPECT_EQ(started(8191, 1, 1, 8), 1);
  EXPECT_EQ(started(16384, 1, 1, 8), 2);
  EXPECT_EQ(started(16383, 1, 1, 8), 1);
  EXPECT_EQ(started(4096, 8, 1, 8), 4);
  EXPECT_EQ(started(4096, 8, 0x1000, 8), 8);
  EXPECT_EQ(started(4096, 8, 0x2000, 5), 5);
  EXPECT_EQ(started(4096, 8, 0x100000000, 31), 31);
  EXPECT_EQ(started(47, 300, 0x1000, 8), 2); // sixteen observations at the least
  EXPECT_EQ(started(15, 300, 0x1000, 8), 1);
  EXPECT_EQ(started(4096, 8, 1, 0), 1);
}

TYPED_TEST(Basic, MethodAndArrayChecks) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> set = random_dataset<Real>(20, 2, true, Weights::none, false, 1);
  TaskOf<Real, Int> task(set);
  const auto basic = Api<Real>::basic;
  const tarn_threader* threads = pthread_threader();
  set_max_threads(1);
  EXPECT_EQ(basic(nullptr, 1, Fast, threads), -4031);
  for (uint64_t method : {0x0ull, 0x3ull, 0x101ull, 0x102ull, 0x103ull, 0x4ull, 0x303ull, 0x40ull})
    EXPECT_EQ(basic(task.task, 1, method, threads), -4029) << method;
  // With no array at all the lowest demanded one is reported; then one after the other as they are given.
  for (uint64_t method : {Fast, OnePass, UserMean, FromMoments, FromSums, FromMoments | FromSums}) {
    for (int e = 0; e < 20; ++e) {
      TaskOf<Real, Int> bare(set);
      Results<Real, Int> results(2);
      results.attach(bare, 0);
      const uint32_t demand = demand_of(rows[e].mask, method);
      for (int a = 0; a < 20; ++a) {
        if (!(demand >> a & 1)) continue;
        EXPECT_EQ(basic(bare.task, rows[e].mask, method, threads), rows[a].status) << method << " " << e << " " << a;
        bare.set_real(rows[a].id, results.of[a].data());
      }
      // A sum about the caller's mean is that mean times the weights, so it cannot do without it.
      const int32_t whole = demand >> 20 & 1 ? -4029 : method == UserMean && e == Sum ? -4006 : 0;
      EXPECT_EQ(basic(bare.task, rows[e].mask, method, threads), whole) << method << " " << e;
    }
  }
  // Kurtosis asks for the mean before the fourth central moment before itself.
  TaskOf<Real, Int> half(set);
  Results<Real, Int> results(2);
  results.attach(half, 1u << Kurtosis | 1u << Raw2 | 1u << Raw3 | 1u << Raw4 | 1u << Central2);
  EXPECT_EQ(basic(half.task, 0x80, OnePass, threads), -4006);
  results.attach(half, 1u << Mean);
  EXPECT_EQ(basic(half.task, 0x80, OnePass, threads), -4012);
}

TYPED_TEST(Basic, DataChecksInOrder) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> set = random_dataset<Real>(20, 2, true, Weights::positive, false, 1);
  const auto basic = Api<Real>::basic;
  set_max_threads(1);
  for (uint64_t method : {Fast, OnePass, UserMean}) {
    TaskOf<Real, Int> task(set);
    Results<Real, Int> results(2);
    results.attach(task, 0xFFFFF);
    SSTask* record = task.record();
    const SSTask whole = *record;
    Int bad_n = 0, bad_word = 3;
    auto status = [&] { return basic(record, 0x1, method, pthread_threader()); };
    record->observation_count = nullptr;
    record->observations = nullptr;
    record->observation_storage = nullptr;
    EXPECT_EQ(status(), -4002);
    record->observation_count = &bad_n;
    EXPECT_EQ(status(), -4002);
    record->observation_count = whole.observation_count;
    EXPECT_EQ(status(), -4032);
    record->observations = whole.observations;
    EXPECT_EQ(status(), -4044);
    record->observation_storage = &bad_word;
    EXPECT_EQ(status(), -4003);
    EXPECT_EQ(results.of[Mean][0], Real(untouched));
    record->mean = nullptr; // arrays are judged before the data
    EXPECT_EQ(status(), -4006);
    *record = whole;
    EXPECT_EQ(status(), 0);
  }
  // A conversion reads no data, but needs the sum of weights or a count that stands for it.
  for (uint64_t method : {FromMoments, FromSums}) {
    TaskOf<Real, Int> task(set);
    Results<Real, Int> results(2);
    results.attach(task, 0xFFFFF, false);
    SSTask* record = task.record();
    record->observations = nullptr;
    record->observation_storage = nullptr;
    EXPECT_EQ(basic(record, 0x1, method, nullptr), -4020); // weights are set
    record->weights = nullptr;
    EXPECT_EQ(basic(record, 0x1, method, nullptr), 0);
    record->observation_count = nullptr;
    EXPECT_EQ(basic(record, 0x1, method, nullptr), -4020);
    record->weight_sums = results.weight_sums;
    results.weight_sums[0] = results.weight_sums[1] = 4;
    EXPECT_EQ(basic(record, 0x1, method, nullptr), 0);
  }
}

TYPED_TEST(Basic, ConversionFromSums) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  for (Weights kind : {Weights::none, Weights::positive}) {
    for (int shift = 0; shift < 3; ++shift) {
      const Dataset<Real> set = random_dataset<Real>(300, 4, false, kind, shift == 1, 11);
      TaskOf<Real, Int> task(set);
      Results<Real, Int> results(4, shift);
      results.attach(task, 0xFFFFF);
      set_max_threads(1);
      const uint64_t sums = 0x1FE000001;
      ASSERT_EQ(Api<Real>::basic(task.task, sums, OnePass, pthread_threader()), 0);
      for (auto method : {FromMoments, FromSums}) {
        for (int e = 0; e < Sum; ++e) std::fill(results.of[e].begin(), results.of[e].end(), Real(untouched));
        const uint64_t moments = 0x33FF;
        // Without the central moments the derived estimates take those as they stand, so all are asked for together.
        ASSERT_EQ(Api<Real>::basic(task.task, moments, method, pthread_threader()), 0);
        const Reference reference(set, OnePass, std::vector<Real>());
        results.expect(reference, set, 0xFFFFF, "conversion");
      }
      // Kurtosis alone: the moments in their arrays are taken unchanged.
      for (int e : {Mean, Central2, Central4})
        std::fill(results.of[e].begin(), results.of[e].end(), Real(e == Central4 ? 12 : 2));
      ASSERT_EQ(Api<Real>::basic(task.task, 0x80, FromMoments, pthread_threader()), 0);
      EXPECT_EQ(results.of[Kurtosis][0], Real(0));
      EXPECT_EQ(results.of[Central2][0], Real(2));
    }
  }
}

TYPED_TEST(Basic, ConversionByCountAndMixedMethods) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> set = random_dataset<Real>(10, 1, true, Weights::none, false, 11);
  TaskOf<Real, Int> task(set);
  Results<Real, Int> results(1);
  results.attach(task, 0xFFFFF, false);
  results.of[Sum][0] = 30;
  results.of[CentralSum2][0] = 18;
  ASSERT_EQ(Api<Real>::basic(task.task, 0x11, FromSums, nullptr), 0);
  EXPECT_EQ(results.of[Mean][0], Real(3));
  EXPECT_EQ(results.of[Central2][0], Real(2)); // 18 / 9
  // Fast with a conversion bit passes the method test, converts, and is judged by what the fast method demands: the
  // sum is not among that, so the mean stays.
  results.of[Mean][0] = Real(untouched);
  ASSERT_EQ(Api<Real>::basic(task.task, 0x1, Fast | FromMoments, nullptr), 0);
  EXPECT_EQ(results.of[Mean][0], Real(untouched));
  ASSERT_EQ(Api<Real>::basic(task.task, 0x2000001, Fast | FromMoments, nullptr), 0);
  EXPECT_EQ(results.of[Mean][0], Real(3));
  EXPECT_EQ(results.of[Sum][0], Real(30));
  task.record()->observations = nullptr; // and its data are checked as for any compute method
  EXPECT_EQ(Api<Real>::basic(task.task, 0x1, Fast | FromMoments, nullptr), -4032);
}

// A first block in which nothing weighs anything leaves cleared arrays, also where the data are not finite.
TYPED_TEST(Basic, NoWeightAtAll) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  for (bool by_rows : {true, false}) {
    for (uint64_t method : {Fast, OnePass, UserMean}) {
      Dataset<Real> set = random_dataset<Real>(40, 3, by_rows, Weights::positive, false, 3);
      Dataset<Real> nothing = set;
      std::fill(nothing.weights.begin(), nothing.weights.end(), Real(0));
      nothing.data[0] = std::numeric_limits<Real>::infinity();
      std::vector<Real> mean = rough_mean(set);
      TaskOf<Real, Int> task(nothing);
      Results<Real, Int> results(3);
      results.attach(task, 0xFFFFF);
      if (method == UserMean) task.set_real(7, mean.data());
      const uint64_t estimates = 0x1FE00107F; // all but the ratios
      ASSERT_EQ(Api<Real>::basic(task.task, estimates, method, pthread_threader()), 0);
      EXPECT_EQ(results.weight_sums[0], 0);
      for (int e = 0; e < 20; ++e) {
        if (!(demand_of(estimates, method) >> e & 1)) continue;
        if (e == Mean && method == UserMean) continue;
        for (int64_t j = 0; j < (is_matrix(e) ? 6 : 3); ++j)
          ASSERT_EQ(results.of[e][j], Real(0)) << "estimate " << e << " method " << method;
      }
      // A block with weight then gives what it gives alone; and one without weight behind it changes nothing.
      task.turn_to(set);
      ASSERT_EQ(Api<Real>::basic(task.task, estimates, method, pthread_threader()), 0);
      nothing.data[0] = 1;
      task.turn_to(nothing);
      ASSERT_EQ(Api<Real>::basic(task.task, estimates, method, pthread_threader()), 0);
      if (method == UserMean) results.of[Mean] = mean;
      results.expect(Reference(set, method, mean), set, demand_of(estimates, method), "after nothing");
    }
  }
}

// Threads whose share has no weight, with data that are not finite there.
TYPED_TEST(Basic, ThreadWithoutWeight) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  for (bool by_rows : {true, false}) {
    for (int without : {0, 1, 2}) {
      for (uint64_t method : {Fast, OnePass, UserMean}) {
        Dataset<Real> set = random_dataset<Real>(3000, 4, by_rows, Weights::positive, false, 3);
        for (int64_t i = without * 1000; i < without * 1000 + 1000; ++i) set.weights[i] = 0;
        Dataset<Real> poisoned = set;
        poisoned.data[by_rows ? without * 1000 : without * 1000 * 4] = std::numeric_limits<Real>::infinity();
        std::vector<Real> mean = rough_mean(set);
        TaskOf<Real, Int> task(poisoned);
        Results<Real, Int> results(4);
        results.attach(task, 0xFFFFF);
        if (method == UserMean) task.set_real(7, mean.data());
        set_max_threads(3);
        ASSERT_EQ(Api<Real>::basic(task.task, 0x1FE0033FF, method, pthread_threader()), 0);
        if (method == UserMean) results.of[Mean] = mean;
        results.expect(Reference(set, method, mean), set, 0xFFFFF, "thread without weight");
      }
    }
  }
}

TYPED_TEST(Basic, OneObservationHasNoVariance) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  for (uint64_t method : {Fast, OnePass}) {
    const Dataset<Real> set = random_dataset<Real>(50, 2, true, Weights::none, false, 5);
    const Dataset<Real> first = set.part(0, 1), rest = set.part(1, 50);
    TaskOf<Real, Int> task(first);
    Results<Real, Int> results(2);
    const uint64_t estimates = 0x307F;
    results.attach(task, demand_of(estimates, method));
    ASSERT_EQ(Api<Real>::basic(task.task, estimates, method, pthread_threader()), 0);
    EXPECT_EQ(results.of[Mean][0], first.at(0, 0));
    EXPECT_FALSE(std::isfinite(results.of[Central2][0]));
    EXPECT_FALSE(std::isfinite(results.of[Covariance][0]));
    // It does not spoil what follows.
    task.turn_to(rest);
    ASSERT_EQ(Api<Real>::basic(task.task, estimates, method, pthread_threader()), 0);
    results.expect(Reference(set, method, std::vector<Real>()), set, demand_of(estimates, method), "after one");
  }
}

// A task that turns from one data set to a wider one keeps the means of both, one after the other.
TYPED_TEST(Basic, DimensionMayGrow) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> narrow = random_dataset<Real>(30, 1, false, Weights::none, false, 5);
  TaskOf<Real, Int> task(narrow);
  for (int64_t p : {1, 300, 7}) {
    const Dataset<Real> set = random_dataset<Real>(60, p, false, Weights::none, false, 5);
    const Dataset<Real> parts[] = {set.part(0, 20), set.part(20, 60)};
    std::vector<Real> mean = rough_mean(set);
    Results<Real, Int> results(p);
    results.attach(task, demand_of(0x1000, UserMean)); // with sums of weights that start afresh
    task.set_real(7, mean.data());
    task.p = Int(p);
    for (const Dataset<Real>& part : parts) {
      task.turn_to(part);
      ASSERT_EQ(Api<Real>::basic(task.task, 0x1000, UserMean, nullptr), 0);
    }
    const SSTask* record = task.record();
    const Real* saved = static_cast<const Real*>(record->saved_mean);
    ASSERT_EQ(std::vector<Real>(saved, saved + p), mean);
    results.of[Mean] = mean;
    results.expect(Reference(set, UserMean, mean), set, demand_of(0x1000, UserMean), "wider");
  }
}

// About a caller's mean one observation has a sum of squares, but no finite variance to carry it.
TYPED_TEST(Basic, OneObservationAboutACallersMean) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> set = random_dataset<Real>(50, 2, true, Weights::none, false, 5);
  const Dataset<Real> parts[] = {set.part(0, 1), set.part(1, 50)};
  std::vector<Real> mean = rough_mean(set);
  for (uint64_t estimates : {0x120001010ull, 0x1010ull, 0x2010ull}) {
    TaskOf<Real, Int> task(set);
    Results<Real, Int> results(2);
    const uint32_t demand = demand_of(estimates, UserMean);
    results.attach(task, demand);
    task.set_real(7, mean.data());
    for (const Dataset<Real>& part : parts) {
      task.turn_to(part);
      ASSERT_EQ(Api<Real>::basic(task.task, estimates, UserMean, nullptr), 0);
    }
    if (demand >> CentralSum2 & 1) {
      results.of[Mean] = mean;
      results.expect(Reference(set, UserMean, mean), set, demand, "sums go on");
      continue;
    }
    EXPECT_TRUE(std::isnan(results.of[Central2][0]));
    EXPECT_TRUE(std::isnan(results.of[demand >> Covariance & 1 ? Covariance : Correlation][0]));
  }
}

// Means and moments that a plain sum would overflow.
TEST(BasicOnePass, LargeValuesDoNotOverflowTheMean) {
  const int64_t n = 5000;
  for (bool by_rows : {true, false}) {
    Dataset<double> set = random_dataset<double>(n, 2, by_rows, Weights::none, false, 5);
    for (double& x : set.data) x = 1e308;
    TaskOf<double, int32_t> task(set);
    Results<double, int32_t> results(2);
    results.attach(task, 0x1);
    ASSERT_EQ(_kestdSSBasic(task.task, 1, OnePass, nullptr), 0);
    EXPECT_NEAR(results.of[Mean][0] / 1e308, 1, 1e-12);
    EXPECT_NEAR(results.of[Mean][1] / 1e308, 1, 1e-12);
  }
}

// The square of the mean is beyond the range of the type, the deviations are zero.
TEST(BasicOnePass, CentralMomentsOfLargeEqualValues) {
  for (bool by_rows : {true, false}) {
    Dataset<double> set = random_dataset<double>(3000, 2, by_rows, Weights::none, false, 5);
    for (double& x : set.data) x = 0x1p600;
    TaskOf<double, int32_t> task(set);
    Results<double, int32_t> results(2);
    results.attach(task, 0xFFFFF);
    ASSERT_EQ(_kestdSSBasic(task.task, 0x70, OnePass, nullptr), 0);
    for (int e : {Central2, Central3, Central4})
      for (double c : results.of[e]) EXPECT_EQ(c, 0) << "estimate " << e;
  }
}

TEST(BasicOnePass, InfiniteAndUndefinedObservations) {
  Dataset<double> set = random_dataset<double>(3000, 3, false, Weights::none, false, 5);
  set.data[1500 * 3 + 1] = std::numeric_limits<double>::infinity();
  set.data[1700 * 3 + 2] = std::numeric_limits<double>::quiet_NaN();
  for (uint64_t method : {Fast, OnePass}) {
    TaskOf<double, int32_t> task(set);
    Results<double, int32_t> results(3);
    results.attach(task, 0xFFFFF);
    ASSERT_EQ(_kestdSSBasic(task.task, 0x7F, method, nullptr), 0);
    EXPECT_TRUE(std::isfinite(results.of[Central4][0]));
    EXPECT_EQ(results.of[Mean][1], std::numeric_limits<double>::infinity()) << method;
    EXPECT_EQ(results.of[Raw2][1], std::numeric_limits<double>::infinity()) << method;
    EXPECT_TRUE(std::isnan(results.of[Central2][1]));
    EXPECT_TRUE(std::isnan(results.of[Mean][2]));
  }
}

// A mean far from zero. What is left is the rounding of the means of the blocks that are merged, eps |mean| / sigma
// relative to the variance; raw power sums would have lost every digit.
TEST(BasicOnePass, MeanFarFromZero) {
  const Dataset<double> set = random_dataset<double>(20000, 3, false, Weights::positive, false, 5, 1e8);
  const Reference reference(set, OnePass, std::vector<double>());
  for (int threads : {1, 4}) {
    TaskOf<double, int32_t> task(set);
    Results<double, int32_t> results(3);
    results.attach(task, 0xFFFFF);
    set_max_threads(threads);
    ASSERT_EQ(_kestdSSBasic(task.task, 0x1070, OnePass, pthread_threader()), 0);
    for (int64_t j = 0; j < 3; ++j) {
      const Long expected = reference.of[Central2][j].value;
      const Long allowed = std::numeric_limits<double>::epsilon() * 1e8L * std::sqrt(expected);
      EXPECT_LE(std::fabs(results.of[Central2][j] - expected), allowed);
      EXPECT_LE(std::fabs(results.of[Covariance][j * 3 + j] - expected), allowed);
    }
  }
}

TYPED_TEST(Basic, AllocationFailures) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  { // The vector kernels make the cells of this thread on first use, and end the program when they cannot.
    const Dataset<Real> any = random_dataset<Real>(20, 2, false, Weights::none, false, 5);
    TaskOf<Real, Int> task(any);
    Results<Real, Int> results(2);
    results.attach(task, 0xFFFFF);
    ASSERT_EQ(Api<Real>::basic(task.task, 0x2000, OnePass, nullptr), 0);
    results.weight_sums[0] = results.weight_sums[1] = 20; // and of a matrix of negatives, for the cells of a report
    ASSERT_EQ(Api<Real>::basic(task.task, 0x2000, FromSums, nullptr), 0);
  }
  for (uint64_t method : {Fast, OnePass, UserMean, FromSums}) {
    for (int shift : {0, 1}) {
      const Dataset<Real> set = random_dataset<Real>(2000, 8, false, Weights::positive, false, 5);
      TaskOf<Real, Int> task(set);
      Results<Real, Int> results(8, shift);
      results.attach(task, 0xFFFFF);
      const uint64_t estimates = method == FromSums ? 0x33FF : 0x1FE0033FF;
      std::vector<Real> mean = rough_mean(set);
      if (method == UserMean) task.set_real(7, mean.data());
      set_max_threads(3);
      const int64_t failing = for_each_allocation_failure([&](int64_t) {
        const Results<Real, Int> before = results;
        const int32_t status = Api<Real>::basic(task.task, estimates, method, pthread_threader());
        if (status == 0) return;
        ASSERT_EQ(status, -4000);
        for (int e = 0; e < 20; ++e) ASSERT_EQ(results.of[e], before.of[e]); // nothing was touched
      });
      EXPECT_GE(failing, method == UserMean ? 2 : 1) << method;
    }
  }
}

// ---- Minimum and maximum ----

TYPED_TEST(Basic, MinmaxChecksInOrder) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> set = random_dataset<Real>(20, 2, true, Weights::none, false, 1);
  TaskOf<Real, Int> task(set);
  const auto minmax = Api<Real>::minmax;
  Int bad = 0x40;
  Real low[2] = {}, high[2] = {};
  EXPECT_EQ(minmax(nullptr, 0xC00, 1, nullptr), -4031);
  void* storage = task.record()->observation_storage;
  task.record()->observation_storage = &bad;
  EXPECT_EQ(minmax(task.task, 0xC00, 0, nullptr), -4003);
  task.record()->observation_storage = storage;
  EXPECT_EQ(minmax(task.task, 0xC00, 0, nullptr), -4015);
  EXPECT_EQ(minmax(task.task, 0x800, 0, nullptr), -4016);
  task.set_real(16, low);
  EXPECT_EQ(minmax(task.task, 0xC00, 0, nullptr), -4016);
  task.set_real(17, high);
  EXPECT_EQ(minmax(task.task, 0xC00, 0, nullptr), -4029);
  EXPECT_EQ(minmax(task.task, 0xC00, 0x100, nullptr), -4029);
  EXPECT_EQ(minmax(task.task, 0xC00, 0x1, nullptr), 0);
  EXPECT_EQ(minmax(task.task, 0xC00, 0x2, nullptr), 0);
  EXPECT_EQ(minmax(task.task, 0, 0x3, nullptr), 0);
}

TYPED_TEST(Basic, MinmaxIsStateOverBlocks) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Real inf = std::numeric_limits<Real>::infinity();
  for (int64_t p : {1, 2, 3, 9, 23}) {
    for (bool by_rows : {true, false}) {
      for (bool masked : {false, true}) {
        for (uint64_t wanted : {0x400, 0x800, 0xC00}) {
          const Dataset<Real> set = random_dataset<Real>(777, p, by_rows, Weights::none, masked, 17);
          std::vector<Real> low(p, inf), high(p, -inf);
          low[0] = -1000; // a seed beyond all data stays
          TaskOf<Real, Int> task(set);
          if (wanted & 0x400) task.set_real(16, low.data());
          if (wanted & 0x800) task.set_real(17, high.data());
          const Dataset<Real> parts[] = {set.part(0, 300), set.part(300, 777)};
          for (const auto& part : parts) {
            task.turn_to(part);
            ASSERT_EQ(Api<Real>::minmax(task.task, wanted, 1, nullptr), 0);
          }
          for (int64_t j = 0; j < p; ++j) {
            Real l = j == 0 ? Real(-1000) : inf, h = -inf;
            for (int64_t i = 0; set.taken(j) && i < set.n; ++i) {
              l = std::min(l, set.at(j, i));
              h = std::max(h, set.at(j, i));
            }
            ASSERT_EQ(low[j], wanted & 0x400 ? l : j == 0 ? Real(-1000) : inf) << p << " " << j;
            ASSERT_EQ(high[j], wanted & 0x800 ? h : -inf) << p << " " << j;
          }
        }
      }
    }
  }
}

TYPED_TEST(Basic, MinmaxKeepsItsValueOnATieAndAgainstNan) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  for (bool by_rows : {true, false}) {
    Dataset<Real> set = random_dataset<Real>(50, 2, by_rows, Weights::none, false, 17);
    std::fill(set.data.begin(), set.data.end(), -Real(0));
    set.data[7] = std::numeric_limits<Real>::quiet_NaN();
    std::vector<Real> low(2, Real(0)), high(2, Real(0));
    TaskOf<Real, Int> task(set);
    task.set_real(16, low.data());
    task.set_real(17, high.data());
    ASSERT_EQ(Api<Real>::minmax(task.task, 0xC00, 1, nullptr), 0);
    for (Real x : {low[0], low[1], high[0], high[1]}) EXPECT_TRUE(x == 0 && !std::signbit(x));
  }
}

}
