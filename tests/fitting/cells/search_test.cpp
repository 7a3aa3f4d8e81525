// Cell search against the rule of cell numbers, asked point by point, on partitions that are hard on each method.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include <sys/mman.h>

#include <gtest/gtest.h>

#include "fitting/cells/fitting_task.h"
#include "support/failing_allocator.h"
#include "support/pthread_threader.h"

namespace {

using namespace tarn::test;

template <class Real_, class Integer_> struct Kind {
  using Real = Real_;
  using Integer = Integer_;
};

template <class Kind> class Search : public testing::Test {
protected:
  using Value = typename Kind::Real;
  using Integer = typename Kind::Integer;
  static constexpr bool wide = sizeof(Integer) == 8;
  using Bounds = std::numeric_limits<Value>;

  void TearDown() override { set_max_threads(1); }

  static int64_t rule(const std::vector<Value>& x, Value t) {
    const auto n = static_cast<int64_t>(x.size());
    if (t < x.front()) return 0;
    if (t > x.back()) return n;
    if (t == x.back()) return n - 1;
    return std::upper_bound(x.begin(), x.end(), t) - x.begin();
  }

  struct Call {
    int64_t hint = 0;
    const Value* data = nullptr;
    typename Api<Value>::SearchCallback callback = nullptr;
    void* parameter = nullptr;
    const tarn_threader* threader = nullptr;
  };
  // Cells of all sites; what lies beside the array stays as it is.
  static std::vector<Integer> cells(DFTask* task, const std::vector<Value>& sites, Call call = {}, int64_t count = -1,
                                    int32_t expected = 0) {
    if (count < 0) count = static_cast<int64_t>(sites.size());
    std::vector<Integer> cell(static_cast<size_t>(count) + 2, Integer(-7));
    EXPECT_EQ(Api<Value>::search(task, 99, count, sites.data(), call.hint, call.data, cell.data() + 1, call.callback,
                                 call.parameter, call.threader),
              expected);
    EXPECT_EQ(cell.front(), Integer(-7));
    EXPECT_EQ(cell.back(), Integer(-7));
    return std::vector<Integer>(cell.begin() + 1, cell.end() - 1);
  }

  static std::vector<std::pair<const char*, std::vector<Value>>> partitions() {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> unit(0, 1);
    const auto sorted = [](std::vector<Value> x) {
      std::sort(x.begin(), x.end());
      x.erase(std::unique(x.begin(), x.end()), x.end());
      return x;
    };
    std::vector<std::pair<const char*, std::vector<Value>>> all;
    all.push_back({"two points", {Value(-1), Value(2)}});
    all.push_back({"three points", {Value(0), Value(1e-30), Value(1)}});
    all.push_back({"eight points", {1, 2, 3, 4, 5, 6, 7, 100}});
    all.push_back({"nine points", {1, 2, 3, 4, 5, 6, 7, 8, 1000}});
    std::vector<Value> x(1000);
    for (Value& v : x) v = Value(unit(random));
    all.push_back({"random", sorted(x)});
    for (size_t i = 0; i < x.size(); ++i) x[i] = Value(double(i) + 0.3 * unit(random));
    all.push_back({"nearly uniform", sorted(x)});
    for (size_t i = 0; i < x.size(); ++i) x[i] = Value((i % 3 == 0 ? -1e3 : i % 3 == 1 ? 0 : 5) + 1e-3 * unit(random));
    all.push_back({"clustered", sorted(x)});
    x.clear();
    for (int i = 0; i < 500; ++i) x.push_back(Value(i) * Bounds::denorm_min());
    all.push_back({"denormal gaps", x});
    x.push_back(1);
    all.push_back({"denormal gaps and one wide", x});
    x.clear();
    for (int e = Bounds::min_exponent - Bounds::digits; e < Bounds::max_exponent; ++e)
      x.push_back(std::ldexp(Value(1), e));
    all.push_back({"powers of two over the whole range", x});
    std::vector<Value> both = x;
    for (Value v : x) both.push_back(-v);
    both.push_back(0);
    both.push_back(Bounds::max());
    both.push_back(-Bounds::max());
    all.push_back({"from end to end of the finite numbers", sorted(both)});
    x.assign(1, Value(-3));
    for (int i = 0; i < 400; ++i) x.push_back(std::nextafter(x.back(), Value(0)));
    all.push_back({"neighbouring numbers", x});
    x.assign({0, 1, 1, 1, 2, 2, 3, 4, 4, 4, 5, 6});
    all.push_back({"points several times", x});
    return all;
  }

  // Every point, its neighbours, the middles, and what lies outside, in random order.
  static std::vector<Value> hard_sites(const std::vector<Value>& x) {
    std::vector<Value> t;
    const Value infinity = Bounds::infinity();
    for (size_t i = 0; i < x.size(); ++i) {
      t.push_back(x[i]);
      t.push_back(std::nextafter(x[i], infinity));
      t.push_back(std::nextafter(x[i], -infinity));
      if (i > 0) t.push_back(x[i - 1] / 2 + x[i] / 2);
    }
    for (Value v : {infinity, -infinity, Bounds::max(), -Bounds::max(), Value(0), Value(-0.0), Bounds::denorm_min()})
      t.push_back(v);
    std::shuffle(t.begin(), t.end(), std::mt19937_64(3));
    return t;
  }

  static void expect_rule(const char* what, const std::vector<Value>& x, const std::vector<Value>& sites,
                          const std::vector<Integer>& cell) {
    for (size_t i = 0; i < sites.size(); ++i)
      ASSERT_EQ(int64_t(cell[i]), rule(x, sites[i])) << what << ", " << x.size() << " points, site " << sites[i];
  }
};

using Kinds = testing::Types<Kind<double, int32_t>, Kind<double, int64_t>, Kind<float, int32_t>, Kind<float, int64_t>>;
TYPED_TEST_SUITE(Search, Kinds);

// Guesses of every quality; a third of the cells it names itself.
struct Guesser {
  const void* x;
  int64_t n;
  int64_t calls = 0, sites = 0, largest = 0;
};
template <class Real> int32_t guess(const int64_t* n, const Real* site, int64_t* cell, int32_t* flag, void* parameter) {
  Guesser& guesser = *static_cast<Guesser*>(parameter);
  const std::vector<Real>& x = *static_cast<const std::vector<Real>*>(guesser.x);
  guesser.calls++;
  guesser.sites += *n;
  guesser.largest = std::max(guesser.largest, *n);
  for (int64_t i = 0; i < *n; ++i) {
    const int64_t exact =
        site[i] == x.back() ? guesser.n - 1 : std::upper_bound(x.begin(), x.end(), site[i]) - x.begin();
    switch (i % 6) {
    case 0: cell[i] = exact, flag[i] = 1; break;
    case 1: cell[i] = exact, flag[i] = 0; break;
    case 2: cell[i] = exact + 1, flag[i] = 0; break;
    case 3: cell[i] = exact - 1, flag[i] = 0; break;
    case 4: cell[i] = INT64_MIN, flag[i] = 0; break;
    default: cell[i] = INT64_MAX, flag[i] = 0;
    }
  }
  return 5;
}

TYPED_TEST(Search, EveryMethodFollowsTheRule) {
  using Real = typename TypeParam::Real;
  for (const auto& [name, x] : this->partitions()) {
    SCOPED_TRACE(name);
    const std::vector<Real> sites = this->hard_sites(x);
    std::vector<Real> ascending = sites;
    std::sort(ascending.begin(), ascending.end());
    FittingTask<Real> general(x, 1, this->wide), unknown(x, 0, this->wide), quasi(x, 2, this->wide);
    this->expect_rule("hybrid", x, sites, this->cells(general, sites));
    this->expect_rule("hybrid", x, sites, this->cells(unknown, sites, {.hint = 7}));
    this->expect_rule("quasi-uniform", x, sites, this->cells(quasi, sites));
    this->expect_rule("sorted", x, ascending, this->cells(general, ascending, {.hint = 64}));
    for (const double at : {0.0, 1.0, 0.5 * double(x.size()), double(x.size()) - 1, double(x.size())}) {
      const Real data[5] = {0, 1, 0, 0, Real(at)};
      this->expect_rule("peak", x, sites, this->cells(general, sites, {.data = data}));
    }
    Guesser guesser{&x, int64_t(x.size())};
    this->expect_rule("user-defined", x, sites,
                      this->cells(general, sites, {.callback = guess<Real>, .parameter = &guesser}));
    EXPECT_EQ(guesser.sites, int64_t(sites.size()));
    EXPECT_LE(guesser.largest, 128);
    EXPECT_EQ(guesser.calls, (int64_t(sites.size()) + 127) / 128);
  }
}

TYPED_TEST(Search, FewSitesGetTheSameCells) {
  using Real = typename TypeParam::Real;
  for (const auto& [name, x] : this->partitions()) {
    std::vector<Real> sites = this->hard_sites(x);
    sites.resize(std::min<size_t>(sites.size(), 70));
    std::vector<Real> ascending = sites;
    std::sort(ascending.begin(), ascending.end());
    FittingTask<Real> general(x, 1, this->wide), quasi(x, 2, this->wide);
    const Real data[5] = {0, 1, 0, 0, 1};
    for (int64_t count : {1, 2, 7, 8, 9, 31, 32, 33, 70}) {
      if (count > int64_t(sites.size())) continue;
      const std::vector<Real> some(sites.begin(), sites.begin() + count);
      const std::vector<Real> rising(ascending.begin(), ascending.begin() + count);
      this->expect_rule("hybrid", x, some, this->cells(general, some));
      this->expect_rule("quasi-uniform", x, some, this->cells(quasi, some));
      this->expect_rule("peak", x, some, this->cells(general, some, {.data = data}));
      this->expect_rule("sorted", x, rising, this->cells(general, rising, {.hint = 64}));
    }
  }
}

TYPED_TEST(Search, AMillionPoints) {
  using Real = typename TypeParam::Real;
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> unit(0, 1);
  const size_t n = 1'000'000;
  for (const bool crowded : {false, true}) { // crowded: nearly all points in one bin
    std::vector<Real> x(n);
    for (Real& v : x) v = Real(crowded ? 1e-4 * unit(random) : unit(random));
    x[0] = 1;
    std::sort(x.begin(), x.end());
    std::vector<Real> sites(20'000);
    for (Real& t : sites) t = Real(crowded ? 2e-4 * unit(random) : 1.2 * unit(random) - 0.1);
    FittingTask<Real> general(x, 1, this->wide), quasi(x, 2, this->wide);
    this->expect_rule("hybrid", x, sites, this->cells(general, sites));
    this->expect_rule("quasi-uniform", x, sites, this->cells(quasi, sites));
    const Real data[5] = {0, 1, 0, 0, Real(n / 2)};
    this->expect_rule("peak", x, sites, this->cells(general, sites, {.data = data}));
    std::sort(sites.begin(), sites.end());
    this->expect_rule("sorted", x, sites, this->cells(general, sites, {.hint = 64}));
  }
}

// The formula of the uniform partition, in the type's arithmetic, and the rule at the ends.
template <class Real> int64_t uniform_rule(Real left, Real right, int64_t n, Real t) {
  if (t < left) return 0;
  if (t == right) return n - 1;
  if (t > right) return n;
  const Real scale = Real(n - 1) / (right - left);
  const Real scaled = Real(t - left) * scale;
  return std::min(n - 1, int64_t(scaled) + 1);
}

TYPED_TEST(Search, UniformPartitions) {
  using Real = typename TypeParam::Real;
  using Limits = std::numeric_limits<Real>;
  std::mt19937_64 random(5);
  std::uniform_real_distribution<double> unit(0, 1);
  struct {
    double left, right;
    int64_t n;
  } const cases[] = {
      {0, 1, 2},       {0, 1, 11},           {-1, 1, 1000},         {3, 3.0001, 12},       {-7, 5, 99'999},
      {1e30, 1e31, 7}, {-1e-30, 1e-30, 501}, {0, 1, (1 << 24) + 3}, {0, 1, INT32_MAX - 1}, {5, 6, INT32_MAX - 60}};
  for (const auto& c : cases) {
    const Real left = Real(c.left), right = Real(c.right);
    FittingTask<Real> task({left, right}, c.n, 4, this->wide);
    std::vector<Real> sites = {left,
                               right,
                               std::nextafter(left, -Limits::infinity()),
                               std::nextafter(left, Limits::infinity()),
                               std::nextafter(right, -Limits::infinity()),
                               std::nextafter(right, Limits::infinity()),
                               Limits::infinity(),
                               -Limits::infinity(),
                               Limits::max(),
                               -Limits::max(),
                               Real(-0.0)};
    const Real step = (right - left) / Real(c.n - 1);
    for (int64_t i = 0; i < std::min<int64_t>(c.n, 300); ++i) sites.push_back(left + Real(i) * step);
    for (int i = 0; i < 500; ++i) sites.push_back(Real(c.left + (c.right - c.left) * (1.2 * unit(random) - 0.1)));
    const auto cell = this->cells(task, sites);
    for (size_t i = 0; i < sites.size(); ++i) {
      ASSERT_EQ(int64_t(cell[i]), uniform_rule(left, right, c.n, sites[i])) << c.n << " points, site " << sites[i];
      // The exact place, but for what rounding of the distance and of the scale can move.
      if (!(sites[i] > left && sites[i] < right)) continue;
      const long double exact = ((long double)sites[i] - left) / ((long double)right - left) * (long double)(c.n - 1);
      ASSERT_NEAR((double)(exact - (long double)(cell[i] - 1)), 0.5, 0.5 + 4 * (double)Limits::epsilon() * (double)c.n);
      const auto alone = this->cells(task, {sites[i]});
      ASSERT_EQ(alone[0], cell[i]);
    }
  }
}

// However lengths and scales are rounded, the right end and what lies above it have their cells, alone and together.
TYPED_TEST(Search, RightEndsOfUniformPartitions) {
  using Real = typename TypeParam::Real;
  std::mt19937_64 random(15);
  std::uniform_real_distribution<double> unit(0, 1);
  for (const int64_t n : {2, 3, 1000, (1 << 22) - 1, 1 << 22, (1 << 22) + 1, 1 << 23, 1 << 24, INT32_MAX - 1})
    for (int turn = 0; turn < 300; ++turn) {
      const Real left = Real(unit(random)), right = left + Real(unit(random)) + Real(0.01);
      const Real above = std::nextafter(right, Real(9)), below = std::nextafter(right, Real(0));
      FittingTask<Real> task({left, right}, n, 4, this->wide);
      const auto cell = this->cells(task, {right, above, below, 8, right, above, below});
      for (const size_t i : {0u, 1u, 3u, 4u, 5u}) // four together, then one by one
        ASSERT_EQ(int64_t(cell[i]), i % 4 == 0 ? n - 1 : n) << n << " points from " << left << " to " << right;
      ASSERT_EQ(cell[2], cell[6]);
      ASSERT_LT(int64_t(cell[2]), n);
    }
}

TYPED_TEST(Search, UniformPartitionsAtTheEndsOfTheRange) {
  using Real = typename TypeParam::Real;
  using Limits = std::numeric_limits<Real>;
  const Real tiny = Limits::denorm_min(), huge = Limits::max();
  {
    FittingTask<Real> task({0, 8 * tiny}, 9, 4, this->wide);
    const auto cell = this->cells(task, {-tiny, 0, tiny, 3 * tiny, 7 * tiny, 8 * tiny, 9 * tiny, 1, huge});
    EXPECT_EQ(std::vector<int64_t>(cell.begin(), cell.end()), (std::vector<int64_t>{0, 1, 2, 4, 8, 8, 9, 9, 9}));
  }
  {
    FittingTask<Real> task({-huge, huge}, 5, 4, this->wide);
    const auto cell = this->cells(task, {-huge, -huge / 2, -huge / 1000, 0, huge / 2, std::nextafter(huge, Real(0)),
                                         huge, Limits::infinity(), -Limits::infinity()});
    EXPECT_EQ(std::vector<int64_t>(cell.begin(), cell.end()), (std::vector<int64_t>{1, 2, 2, 3, 4, 4, 4, 5, 0}));
  }
}

// A general partition of any number of points that takes no memory: the few at its ends are written, all between them
// are 0 and lie in pages that nobody has touched.
template <class Real> class SparsePartition {
public:
  explicit SparsePartition(int64_t points) : n(points), bytes(size_t(points) * sizeof(Real)) {
    void* pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED) return;
    x = static_cast<Real*>(pages);
    for (int64_t i = 0; i < ends; ++i) {
      x[i] = Real(i - ends);
      x[n - ends + i] = Real(i + 1);
    }
  }
  ~SparsePartition() {
    if (x) munmap(x, bytes);
  }
  SparsePartition(const SparsePartition&) = delete;
  SparsePartition& operator=(const SparsePartition&) = delete;

  int64_t rule(Real t) const { // all points at the ends are whole numbers
    if (t < -Real(ends)) return 0;
    if (t < 0) return int64_t(std::floor(t)) + ends + 1;
    if (t >= Real(ends)) return t > Real(ends) ? n : n - 1;
    return n - ends + int64_t(t);
  }

  static constexpr int64_t ends = 40;
  int64_t n;
  size_t bytes;
  Real* x = nullptr;
};

// Indices on either side of what 32 bits hold, for all methods of general partitions.
TYPED_TEST(Search, LargeGeneralPartitions) {
  using Real = typename TypeParam::Real;
  std::vector<Real> sites;
  for (int i = -45; i <= 45; ++i)
    for (const Real part : {Real(0), Real(0.5)}) sites.push_back(Real(i) + part);
  std::vector<Real> shuffled = sites;
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937_64(8));
  for (const int64_t n : {int64_t(INT32_MAX) - 1, int64_t(INT32_MAX), int64_t(INT32_MAX) + 100}) {
    const SparsePartition<Real> points(n);
    ASSERT_NE(points.x, nullptr);
    const bool cells_of_64 = this->wide || n >= INT32_MAX;
    DFTask* task = nullptr; // made as a uniform one: nobody goes through the points for a bin table
    ASSERT_EQ(Api<Real>::new_task(&task, n, points.x, TARN_DF_PARTITION_UNIFORM, 0, nullptr, 0, this->wide), 0);
    const auto expect = [&](const char* what, int64_t hint, const std::vector<Real>& t, int64_t sites_hint,
                            const Real* data, typename Api<Real>::SearchCallback callback) {
      ASSERT_EQ(tarn_df_kernel_iEditVal(task, TARN_DF_X_HINT, hint), 0);
      std::vector<int64_t> cell(t.size());
      ASSERT_EQ(Api<Real>::search(task, 0, int64_t(t.size()), t.data(), sites_hint, data, cell.data(), callback,
                                  nullptr, nullptr),
                0);
      for (size_t i = 0; i < t.size(); ++i) {
        const int64_t found = cells_of_64 ? cell[i] : reinterpret_cast<const int32_t*>(cell.data())[i];
        ASSERT_EQ(found, points.rule(t[i])) << what << ", " << n << " points, site " << t[i];
      }
    };
    expect("hybrid", 0, shuffled, 0, nullptr, nullptr);
    expect("quasi-uniform", TARN_DF_PARTITION_QUASI_UNIFORM, shuffled, 0, nullptr, nullptr);
    expect("sorted", 0, sites, TARN_DF_SITES_SORTED, nullptr, nullptr);
    for (const int64_t peak : {int64_t(0), int64_t(20), n / 2, n - 20, n - 1, n}) {
      const Real data[5] = {0, 1, 0, 0, Real(peak)};
      if (int64_t(data[4]) <= n) expect("peak", 0, shuffled, 0, data, nullptr);
    }
    const auto guess = [](const int64_t* count, const Real*, int64_t* cell, int32_t* flag, void*) -> int32_t {
      const int64_t guesses[] = {INT64_MIN, 0, 1, 1 << 20, INT32_MAX - 3, INT64_MAX};
      for (int64_t i = 0; i < *count; ++i) cell[i] = guesses[i % 6], flag[i] = 0;
      return 0;
    };
    expect("user-defined", 0, shuffled, 0, nullptr, guess);
    EXPECT_EQ(tarn_df_kernel_DeleteTask(&task), 0);
  }
}

// Uniform partitions whose cell numbers need 64 bits.
TYPED_TEST(Search, LargePartitionsGetWideCells) {
  using Real = typename TypeParam::Real;
  for (const int64_t n : {int64_t(INT32_MAX), int64_t(INT32_MAX) + 2, int64_t(1) << 40}) {
    FittingTask<Real> task({0, 1}, n, 4, this->wide);
    std::vector<Real> sites = {-1, 0, Real(0.25), Real(0.75), 1, 2};
    for (int i = 0; i < 100; ++i) sites.push_back(Real(i) / 100);
    std::vector<int64_t> cell(sites.size(), -7);
    ASSERT_EQ(Api<Real>::search(task, 0, int64_t(sites.size()), sites.data(), 0, nullptr, cell.data(), nullptr, nullptr,
                                nullptr),
              0);
    for (size_t i = 0; i < sites.size(); ++i) EXPECT_EQ(cell[i], uniform_rule<Real>(0, 1, n, sites[i])) << sites[i];
    const auto unwilling = [](const int64_t* count, const Real*, int64_t* cells, int32_t* flags, void*) -> int32_t {
      for (int64_t i = 0; i < *count; ++i) cells[i] = 17, flags[i] = i == 3;
      return 0;
    };
    ASSERT_EQ(Api<Real>::search(task, 0, int64_t(sites.size()), sites.data(), 0, nullptr, cell.data(), unwilling,
                                nullptr, nullptr),
              0);
    for (size_t i = 0; i < sites.size(); ++i)
      EXPECT_EQ(cell[i], i == 3 ? 17 : uniform_rule<Real>(0, 1, n, sites[i])) << sites[i];
  }
}

TYPED_TEST(Search, NotANumberGetsSomeCell) {
  using Real = typename TypeParam::Real;
  const Real nan = std::numeric_limits<Real>::quiet_NaN();
  for (const auto& [name, x] : this->partitions()) {
    SCOPED_TRACE(name);
    const int64_t n = int64_t(x.size());
    const std::vector<Real> sites(77, nan);
    const Real data[5] = {0, 1, 0, 0, 1};
    const auto within = [&](const auto& cell) {
      for (const auto c : cell) EXPECT_TRUE(c >= 0 && c <= n) << c;
    };
    FittingTask<Real> general(x, 1, this->wide), quasi(x, 2, this->wide), uniform({0, 1}, n, 4, this->wide);
    within(this->cells(general, sites));
    within(this->cells(quasi, sites));
    within(this->cells(uniform, sites));
    within(this->cells(general, sites, {.hint = 64}));
    within(this->cells(general, sites, {.data = data}));
    within(this->cells(general, sites,
                       {.callback = guess<Real>, .parameter = std::make_unique<Guesser>(Guesser{&x, n}).get()}));
  }
}

TYPED_TEST(Search, NamedEdgeCases) {
  using Real = typename TypeParam::Real;
  using Cells = std::vector<typename TypeParam::Integer>;
  std::vector<Real> x(50);
  std::iota(x.begin(), x.end(), Real(0));
  FittingTask<Real> task(x, 1, this->wide);
  // All sites at the right end, sorted; then the other way round: no error, cells that do not follow the rule.
  EXPECT_EQ(this->cells(task, std::vector<Real>(40, 49), {.hint = 64}), Cells(40, 49));
  EXPECT_EQ(this->cells(task, std::vector<Real>(9, 49), {.hint = 64}), Cells(9, 49));
  std::vector<Real> falling(40);
  for (size_t i = 0; i < falling.size(); ++i) falling[i] = Real(40 - double(i) + 0.5);
  EXPECT_EQ(this->cells(task, falling, {.hint = 64}), Cells(40, 41));
  // Hints that tell nothing.
  for (int64_t hint : {0, 1, 16, 68, -4}) EXPECT_EQ(this->cells(task, {Real(3.5)}, {.hint = hint}), Cells{4});
  // No sites: nothing is read or written.
  for (int64_t count : {int64_t(0), int64_t(-1), INT64_MIN})
    EXPECT_EQ(Api<Real>::search(task, 0, count, nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(Api<Real>::search(nullptr, 0, 1, x.data(), 0, nullptr, nullptr, nullptr, nullptr, nullptr), -1000);
}

// Sites said to be sorted that are not, here and there: the cursor never goes back.
TYPED_TEST(Search, SortedSitesThatFall) {
  using Real = typename TypeParam::Real;
  std::mt19937_64 random(31);
  std::uniform_real_distribution<double> unit(0, 1);
  for (const size_t points : {10u, 100u, 1000u}) {
    std::vector<Real> x(points);
    for (Real& v : x) v = Real(unit(random));
    std::sort(x.begin(), x.end());
    FittingTask<Real> task(x, 1, this->wide);
    for (int turn = 0; turn < 200; ++turn) {
      std::vector<Real> sites(1 + random() % 300);
      for (Real& t : sites) t = Real(1.1 * unit(random));
      std::sort(sites.begin(), sites.end());
      for (size_t swaps = 1 + random() % 3; swaps-- > 0;) std::swap(sites[random() % sites.size()], sites.back());
      const auto cell = this->cells(task, sites, {.hint = 64});
      size_t cursor = 0;
      for (size_t i = 0; i < sites.size(); ++i) {
        if (sites[i] == x.back()) {
          cursor = points - 1;
        } else {
          while (cursor < points && !(x[cursor] > sites[i])) ++cursor;
        }
        ASSERT_EQ(int64_t(cell[i]), int64_t(cursor)) << points << " points, site " << i << " of " << sites.size();
      }
    }
  }
}

TYPED_TEST(Search, EquallySpacedSites) {
  using Real = typename TypeParam::Real;
  std::vector<Real> x(50);
  std::iota(x.begin(), x.end(), Real(0));
  FittingTask<Real> general(x, 1, this->wide), uniform({0, 49}, 50, 4, this->wide);
  const Real ends[] = {Real(-2.3), Real(53.1)};
  for (int64_t count : {2, 31, 32, 4096, 4097, 10'000}) {
    std::vector<Real> sites(static_cast<size_t>(count));
    const Real spacing = (ends[1] - ends[0]) / Real(count - 1);
    for (size_t i = 0; i < sites.size(); ++i) sites[i] = ends[0] + Real(i) * spacing;
    for (DFTask* task : {static_cast<DFTask*>(general), static_cast<DFTask*>(uniform)}) {
      AllocationFailure none(-1);
      const auto cell = this->cells(task, {ends[0], ends[1]}, {.hint = 4}, count);
      EXPECT_EQ(none.seen(), count > 4096 ? 1 : 0);
      EXPECT_EQ(cell, this->cells(task, sites));
    }
  }
  // One site: its spacing is a division by zero, and no cell leaves the range.
  const auto one = this->cells(general, {1, 1}, {.hint = 4}, 1);
  EXPECT_TRUE(one[0] >= 0 && one[0] <= 50);

  const int64_t failures = for_each_allocation_failure([&](int64_t k) {
    std::vector<typename TypeParam::Integer> cell(5000, -7);
    const int32_t status =
        Api<Real>::search(general, 0, 5000, ends, 4, nullptr, cell.data(), nullptr, nullptr, nullptr);
    EXPECT_EQ(status, k == 0 ? -1001 : 0);
    EXPECT_EQ(cell[0], k == 0 ? -7 : 0);
  });
  EXPECT_EQ(failures, 1);
}

TYPED_TEST(Search, DataHints) {
  using Real = typename TypeParam::Real;
  std::vector<Real> x(20);
  std::iota(x.begin(), x.end(), Real(0));
  const std::vector<Real> sites = {Real(-1), Real(5.5), Real(19), Real(30)};
  FittingTask<Real> task(x, 1, this->wide), quasi(x, 2, this->wide), uniform({0, 19}, 20, 4, this->wide);
  const Real nan = std::numeric_limits<Real>::quiet_NaN();
  const auto hinted = [&](DFTask* which, Real kind, Real peak, int32_t status, int64_t sites_hint = 0) {
    const Real data[5] = {9, kind, 9, 9, peak};
    const auto cell = this->cells(which, sites, {.hint = sites_hint, .data = data}, -1, status);
    if (status == 0) this->expect_rule("hinted", x, sites, cell);
    if (status != 0) {
      EXPECT_EQ(cell[0], -7);
    }
  };
  for (const double peak : {0.0, 0.5, 7.9, 19.0, 20.0}) hinted(task, 1, Real(peak), 0);
  for (const double peak : {-1.0, -0.25, 20.5, 21.0, double(nan)}) hinted(task, 1, Real(peak), -1026);
  for (const double kind : {2.0, -1.0, 0.5, double(nan)}) hinted(task, Real(kind), 3, -1026);
  hinted(task, 0, 1000, 0);
  // Where another method comes first, the data hint is not looked at.
  hinted(quasi, 5, 5, 0);
  hinted(task, 5, 5, 0, 64);
  const Real data[5] = {0, 5, 0, 0, 0};
  EXPECT_EQ(this->cells(uniform, sites, {.data = data}).size(), 4u);
  Guesser guesser{&x, 20};
  this->expect_rule("user", x, sites,
                    this->cells(task, sites, {.data = data, .callback = guess<Real>, .parameter = &guesser}));
}

TYPED_TEST(Search, CallBacks) {
  using Real = typename TypeParam::Real;
  std::vector<Real> x(30);
  std::iota(x.begin(), x.end(), Real(0));
  std::vector<Real> sites(300);
  for (size_t i = 0; i < sites.size(); ++i) sites[i] = Real(double(i) * 0.11 - 1);
  struct Answer {
    int32_t code, after;
    int calls = 0;
  };
  const auto constant = [](const int64_t* n, const Real*, int64_t* cell, int32_t* flag, void* parameter) -> int32_t {
    Answer& answer = *static_cast<Answer*>(parameter);
    for (int64_t i = 0; i < *n; ++i) cell[i] = 12, flag[i] = 0;
    return answer.calls++ < answer.after ? 0 : answer.code;
  };
  for (const int64_t hint : {1, 2, 4}) {
    FittingTask<Real> task(hint == 4 ? std::vector<Real>{0, 29} : x, 30, hint, this->wide);
    {
      Answer final{1000, 0}; // right or not, the cells stay
      EXPECT_EQ(this->cells(task, sites, {.callback = constant, .parameter = &final}),
                (std::vector<typename TypeParam::Integer>(300, 12)));
      EXPECT_EQ(final.calls, 3);
    }
    for (const int32_t other : {0, 1, 999, 1001}) {
      Answer guesses{other, 0};
      this->expect_rule("refined", x, sites, this->cells(task, sites, {.callback = constant, .parameter = &guesses}));
    }
    for (const int after : {0, 2}) {
      Answer fails{-77, after};
      const auto cell = this->cells(task, sites, {.callback = constant, .parameter = &fails}, -1, -77);
      EXPECT_EQ(fails.calls, after + 1);
      EXPECT_EQ(cell[256], -7);
      EXPECT_EQ(cell[0], after == 0 ? -7 : 0);
    }
    Answer fails_at_once{-5, 0};
    this->cells(task, {1, 2, 3}, {.callback = constant, .parameter = &fails_at_once}, -1, -5);
    // Always from the calling thread.
    set_max_threads(4);
    take_threads_started();
    std::vector<Real> many(5000, Real(3.5));
    Answer guesses{0, 0};
    this->cells(task, many, {.callback = constant, .parameter = &guesses, .threader = pthread_threader()});
    EXPECT_EQ(take_threads_started(), 0);
    set_max_threads(1);
  }
}

TYPED_TEST(Search, ThreadsDoNotChangeCells) {
  using Real = typename TypeParam::Real;
  std::mt19937_64 random(2);
  std::uniform_real_distribution<double> unit(-0.05, 1.05);
  std::vector<Real> x(700);
  for (size_t i = 0; i < x.size(); ++i) x[i] = Real((double(i) + 0.3 * unit(random)) / 700);
  std::vector<Real> sites(7001);
  for (Real& t : sites) t = Real(unit(random));
  std::vector<Real> ascending = sites;
  std::sort(ascending.begin(), ascending.end());
  const Real data[5] = {0, 1, 0, 0, 350};
  FittingTask<Real> general(x, 1, this->wide), quasi(x, 2, this->wide), uniform({0, 1}, 700, 4, this->wide);
  for (const int threads : {1, 2, 3, 4, 7, 8}) {
    set_max_threads(threads);
    const tarn_threader* threader = pthread_threader();
    this->expect_rule("hybrid", x, sites, this->cells(general, sites, {.threader = threader}));
    this->expect_rule("quasi-uniform", x, sites, this->cells(quasi, sites, {.threader = threader}));
    this->expect_rule("sorted", x, ascending, this->cells(general, ascending, {.hint = 64, .threader = threader}));
    this->expect_rule("peak", x, sites, this->cells(general, sites, {.data = data, .threader = threader}));
    EXPECT_EQ(this->cells(uniform, sites, {.threader = threader}), this->cells(uniform, sites));
    const Real ends[] = {Real(-0.1), Real(1.1)};
    const std::vector<Real> two(ends, ends + 2);
    EXPECT_EQ(this->cells(general, two, {.hint = 4, .threader = threader}, 7001),
              this->cells(general, two, {.hint = 4}, 7001));
  }
}

TYPED_TEST(Search, ThreadsFromTheStatedCountsOn) {
  using Real = typename TypeParam::Real;
  const Real peak[5] = {0, 1, 0, 0, 1};
  struct {
    const char* name;
    int64_t x_hint, sites_hint;
    bool has_peak;
    int64_t nx, threads, last_alone; // the greatest number of sites that stays in the calling thread
  } const rules[] = {
      {"uniform", 4, 0, false, 100, 2, 1000},
      {"sorted", 1, 64, false, 100, 2, 3000},
      {"peak", 1, 0, true, 1200, 2, 1200},
      {"peak, many points", 1, 0, true, 1201, 2, 31},
      {"quasi, few points", 2, 0, false, 39, 4, 300},
      {"quasi", 2, 0, false, 600, 2, 150},
      {"quasi", 2, 0, false, 599, 3, 300},
      {"quasi, four threads", 2, 0, false, 40, 4, 150},
      {"hybrid, two threads", 1, 0, false, 100, 2, 300},
      {"hybrid, three", 1, 0, false, 100, 3, 600},
      {"hybrid, four", 1, 0, false, 100, 4, 600},
      {"hybrid, five", 1, 0, false, 100, 5, 1200},
  };
  for (const auto& rule : rules) {
    std::vector<Real> x(static_cast<size_t>(rule.nx));
    std::iota(x.begin(), x.end(), Real(0));
    FittingTask<Real> task(rule.x_hint == 4 ? std::vector<Real>{0, 1} : x, rule.nx, rule.x_hint, this->wide);
    for (const bool above : {false, true}) {
      set_max_threads(int32_t(rule.threads));
      const std::vector<Real> sites(static_cast<size_t>(rule.last_alone + above), Real(0.5));
      take_threads_started();
      this->cells(task, sites,
                  {.hint = rule.sites_hint, .data = rule.has_peak ? peak : nullptr, .threader = pthread_threader()});
      EXPECT_EQ(take_threads_started(), above ? rule.threads : 0) << rule.name << ", " << sites.size() << " sites";
    }
    set_max_threads(1);
    const std::vector<Real> many(5000, Real(0.5));
    take_threads_started();
    this->cells(task, many, {.hint = rule.sites_hint, .threader = pthread_threader()});
    EXPECT_EQ(take_threads_started(), 0) << rule.name << ", one thread";
  }
}

// A task whose partition was edited behind the bin table's back still has cells inside its partition.
TYPED_TEST(Search, TablesOfAnotherPartition) {
  using Real = typename TypeParam::Real;
  std::vector<Real> x(400), half;
  std::iota(x.begin(), x.end(), Real(0));
  half.assign(x.begin(), x.begin() + 200);
  std::vector<Real> sites = this->hard_sites(half);
  FittingTask<Real> shortened(x, 1, this->wide);
  ASSERT_EQ(tarn_df_kernel_iEditVal(shortened, TARN_DF_NX, 200), 0);
  this->expect_rule("shortened", half, sites, this->cells(shortened, sites));
  FittingTask<Real> was_uniform({0, 199}, 200, 4, this->wide);
  ASSERT_EQ(Api<Real>::edit_pointer(was_uniform, TARN_DF_X, half.data()), 0);
  ASSERT_EQ(tarn_df_kernel_iEditVal(was_uniform, TARN_DF_X_HINT, 0), 0);
  this->expect_rule("was uniform", half, sites, this->cells(was_uniform, sites));
  ASSERT_EQ(tarn_df_kernel_iEditVal(was_uniform, TARN_DF_X_HINT, 1), 0);
  this->expect_rule("table filled anew", half, sites, this->cells(was_uniform, sites));
}

}
