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

// The smallest sizes, those around groups of cells, around a block of 256 and around the system with constant rows.
const std::vector<size_t> sizes = {2,   3,   4,   5,   6,   7,   8,   9,   10,  11,  13,  15,  16,  17,  18,
                                   40,  63,  64,  65,  66,  67,  68,  69,  70,  71,  127, 128, 129, 131, 133,
                                   255, 256, 257, 258, 259, 260, 261, 265, 266, 273, 513, 514, 520};

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
    // Akima's weights are differences of slopes and magnify the rounding of these.
    Long growth = p.uniform && p.kind != Kind::akima ? 6 : p.kind == Kind::natural ? 30 : 15;
    if (p.kind == Kind::standard) growth += Long(p.nx()) / 5;
    if (p.kind == Kind::subbotin) {
      Long shortest = 9;
      for (size_t i = 0; i + 1 < p.x.size(); ++i) shortest = std::fmin(shortest, Long(p.x[i + 1]) - p.x[i]);
      growth += 2 * std::fabs(p.x.back()) / shortest;
    }
    for (size_t k = 0; k < order; ++k) {
      Long scale = 1;
      for (size_t i = k; i < expected.size(); i += order) scale = std::fmax(scale, std::fabs(expected[i]));
      for (size_t i = k; i < expected.size(); i += order)
        ASSERT_NEAR(Long(made.coeff[i]), expected[i], growth * scale * epsilon<Real>)
            << describe(p) << ", cell " << i / order << ", power " << k;
    }
  });
}

// The kinds that look at a few neighbours: the last points alone give the same bits as all of them, whatever the number of
// points before, and so wherever blocks and items end.
TYPED_TEST(Splines, LocalKindsAreLocal) {
  using Real = TypeParam;
  std::vector<size_t> counts;
  for (size_t around : {256u, 512u, 1024u, 2048u, 4096u})
    for (size_t n = around - 8; n < around + 20; ++n) counts.push_back(n);
  for (Kind kind : {Kind::linear, Kind::akima, Kind::bessel, Kind::hyman, Kind::hermite})
    for (bool uniform : {false, true})
      for (int64_t condition : kind == Kind::linear ? std::vector<int64_t>{0} : std::vector<int64_t>{0, 1, 2, 12, 48})
        for (size_t n : counts) {
          Problem<Real> all = make_problem<Real>(kind, condition, uniform, n), last = all;
          const size_t from = (n - 60) / 8 * 8, order = size_t(order_of(kind)); // groups of cells begin there
          for (size_t i = 0; i < n && uniform; ++i) all.x[i] = Real(i) / 2;     // so that lengths are exact
          last.x.assign(all.x.begin() + int64_t(from), all.x.end());
          last.y.assign(all.y.begin() + int64_t(from), all.y.end());
          if (kind == Kind::hermite) last.ic.assign(all.ic.begin() + int64_t(from), all.ic.end());
          Made<Real> made(all), alone(last);
          ASSERT_EQ(made.construct(), 0) << describe(all);
          ASSERT_EQ(alone.construct(), 0) << describe(last);
          for (size_t k = 4 * order; k < alone.coeff.size(); ++k)
            ASSERT_EQ(made.coeff[from * order + k], alone.coeff[k])
                << describe(all) << ", cell " << from + k / order << ", power " << k % order;
        }
}

// What makes a spline a spline, at rounding level: values at both ends of every cell, and as many continuous derivatives
// as the kind promises.
TYPED_TEST(Splines, InterpolateAndJoin) {
  using Real = TypeParam;
  for_each_problem<Real>({2, 3, 5, 12, 70, 133}, 1, [](const Problem<Real>& p) {
    Made<Real> made(p);
    ASSERT_EQ(made.construct(), 0) << describe(p);
    const bool subbotin = p.kind == Kind::subbotin;
    const int smooth = p.kind == Kind::linear ? 0 : p.kind == Kind::natural ? 2 : 1;
    // Where nothing but its inner rows asks for it, the uniform not-a-knot rule still gives two derivatives inside.
    const Reference ideal(p, 0);
    Longs joints; // the left end of each piece, measured from its point, and the right end of the one before
    const Longs knots = ideal.knots();
    for (int64_t i = 0; i < p.cells(); ++i) ASSERT_EQ(made(0, i, 0), p.y[size_t(i)]) << describe(p);
    for (int64_t i = 0; i + 1 < p.cells(); ++i) {
      const size_t at = size_t(i);
      const Long u = subbotin ? knots[at + 1] - ideal.x[at] : ideal.h[at];
      const Long v = subbotin ? knots[at + 1] - ideal.x[at + 1] : 0;
      for (int derivative = 0; derivative <= smooth; ++derivative) {
        if (p.kind == Kind::default_cubic && derivative == 1) continue; // that one joins in value and bending
        Long scale = 0, power = 1;
        for (int64_t k = 0; k < order_of(p.kind); ++k) {
          scale = std::fmax(scale, std::fabs(Long(made(0, i, k)) * power));
          power *= u;
        }
        scale = scale * std::pow(u, -derivative) * (1 + std::fabs(Long(p.x.back())));
        ASSERT_NEAR(made.at(0, i, u, derivative), made.at(0, i + 1, v, derivative), 100 * scale * epsilon<Real>)
            << describe(p) << ", derivative " << derivative << " at the end of piece " << i;
      }
    }
    if (p.kind == Kind::default_cubic) { // the second derivatives are the caller's
      for (int64_t i = 1; i < p.cells(); ++i) ASSERT_EQ(2 * made(0, i, 2), p.ic[size_t(i) - 1]) << describe(p);
    }
    const int64_t last = p.cells() - 1;
    if (!subbotin) { // the right end of the last cell
      ASSERT_NEAR(made.at(0, last, ideal.h.back()), Long(p.y.back()), 60 * (1 + std::fabs(p.x.back())) * epsilon<Real>)
          << describe(p);
    }
    // The conditions at the ends, of the kinds that can have them all.
    if (p.bc_type >= 12 && p.bc_type <= 48) {
      const Long near = 400 * (1 + std::fabs(p.x.back())) * epsilon<Real>;
      const bool left_1st = p.bc_type & 4, right_1st = p.bc_type & 8;
      ASSERT_NEAR(made.at(0, 0, 0, left_1st ? 1 : 2), Long(p.bc[0]), near) << describe(p);
      ASSERT_NEAR(made.at(0, last, subbotin ? 0 : ideal.h.back(), right_1st ? 1 : 2), Long(p.bc[1]), near)
          << describe(p);
    }
    if (p.bc_type == 1 && p.kind != Kind::linear) { // a free end does not bend
      const Long near = 400 * (1 + std::fabs(p.x.back())) * epsilon<Real>;
      ASSERT_NEAR(made.at(0, 0, 0, 2), 0, near) << describe(p);
      ASSERT_NEAR(made.at(0, last, ideal.h.back(), 2), 0, near) << describe(p);
    }
    if (p.bc_type == 64 && (p.kind == Kind::natural || p.kind == Kind::akima || p.kind == Kind::bessel)) {
      ASSERT_NEAR(made.at(0, 0, 0, 1), made.at(0, last, ideal.h.back(), 1),
                  400 * (1 + std::fabs(p.x.back())) * epsilon<Real>)
          << describe(p);
    }
  });
}

// Polynomials that a kind must give back: coefficients p0 + p1 t + p2 t^2 + p3 t^3 about every point.
template <class Real> void expect_polynomial(Problem<Real> p, const Long (&c)[4]) {
  const auto derivative = [&](Long t, int k) {
    const Long values[] = {c[0] + t * (c[1] + t * (c[2] + t * c[3])), c[1] + t * (2 * c[2] + t * 3 * c[3]),
                           c[2] + 3 * t * c[3], c[3]}; // of order 2 and 3 divided by 2 and 6
    return values[k];
  };
  const size_t n = p.x.size();
  for (size_t i = 0; i < n; ++i) p.y[i] = Real(derivative(p.x[i], 0));
  if (p.bc_type >= 12 && p.bc_type <= 48) {
    p.bc[0] = Real(p.bc_type & 4 ? derivative(p.x[0], 1) : 2 * derivative(p.x[0], 2));
    p.bc[1] = Real(p.bc_type & 8 ? derivative(p.x[n - 1], 1) : 2 * derivative(p.x[n - 1], 2));
  }
  if (p.kind == Kind::standard) p.bc[0] = Real(derivative((Long(p.x[0]) + p.x[1]) / 2, 0));
  for (size_t i = 1; i + 1 < n && !p.ic.empty(); ++i)
    p.ic[i - 1] = Real(p.kind == Kind::hermite ? derivative(p.x[i], 1) : 2 * derivative(p.x[i], 2));
  Made<Real> made(p);
  ASSERT_EQ(made.construct(), 0) << describe(p);
  // The rounding of values weighs the more, the shorter the cells.
  Long size = 1, shortest = 1e9L;
  for (double y : p.y) size = std::fmax(size, std::fabs(y));
  for (size_t i = 0; i + 1 < n; ++i) shortest = std::fmin(shortest, Long(p.x[i + 1]) - p.x[i]);
  for (int64_t i = 0; i < p.cells(); ++i)
    for (int64_t k = 0; k < order_of(p.kind); ++k)
      ASSERT_NEAR(Long(made(0, i, k)), derivative(p.x[size_t(i)], int(k)),
                  10 * size * epsilon<Real> * std::pow(shortest, -Long(k)))
          << describe(p) << ", cell " << i << ", power " << k;
}

TEST(Splines, GiveBackPolynomials) {
  const Long line[4] = {0.5L, -1.5L, 0, 0}, parabola[4] = {0.5L, -1.5L, 0.75L, 0},
             cubic[4] = {0.5L, -1.5L, 0.75L, -0.25L};
  for_each_problem<double>({5, 9, 14, 70}, 1, [&](Problem<double> p) {
    if (p.x.size() == 70 && p.kind != Kind::natural) return;
    for (double& x : p.x) x = x * (p.x.size() == 70 ? 0.01 : 0.1); // small, so that errors stay near those of rounding
    if (p.uniform)
      for (size_t i = 0; i < p.x.size(); ++i)
        p.x[i] = p.x[0] + double(i) * ((p.x.back() - p.x[0]) / double(p.x.size() - 1));
    if (p.bc_type == 64) return; // no line is periodic
    // The uniform not-a-knot rule gives back no polynomial.
    if (p.bc_type == 2 && p.uniform && p.kind != Kind::default_cubic) return;
    if (p.bc_type == 0 && p.kind == Kind::hermite) return;
    expect_polynomial(p, line);
    // A free end knows lines alone; Akima and Hyman bend their rules at will; the end slope is no derivative.
    const bool local =
        p.kind == Kind::akima || p.kind == Kind::hyman || p.kind == Kind::bessel || p.kind == Kind::hermite;
    if (p.kind == Kind::linear || p.kind == Kind::akima || p.kind == Kind::hyman || p.bc_type == 1) return;
    if (local && p.bc_type == 0) return;
    expect_polynomial(p, parabola);
    if (p.kind == Kind::standard || p.kind == Kind::subbotin || p.kind == Kind::bessel) return;
    expect_polynomial(p, cubic);
  });
}

// Interleaved values, pointers one by one, any number of functions: the same bits as function by function, one alone.
TYPED_TEST(Splines, LayoutsGiveTheSameBits) {
  using Real = TypeParam;
  for_each_problem<Real>({2, 3, 4, 5, 10, 70, 300}, 3, [](const Problem<Real>& p) {
    Made<Real> rows(p), columns(p, TARN_DF_STORAGE_COLUMNS), one_by_one(p, TARN_DF_STORAGE_FIRST_ONLY),
        unspoken(p, TARN_DF_STORAGE_DEFAULT);
    ASSERT_EQ(rows.construct() | columns.construct() | one_by_one.construct() | unspoken.construct(), 0) << describe(p);
    const size_t bytes = rows.coeff.size() * sizeof(Real);
    ASSERT_EQ(std::memcmp(rows.coeff.data(), columns.coeff.data(), bytes), 0) << describe(p);
    ASSERT_EQ(std::memcmp(rows.coeff.data(), one_by_one.coeff.data(), bytes), 0) << describe(p);
    ASSERT_EQ(std::memcmp(rows.coeff.data(), unspoken.coeff.data(), bytes), 0) << describe(p);
    for (int64_t j = 0; j < 3; ++j) {
      Problem<Real> single = p;
      single.functions = 1;
      single.y.assign(p.y.begin() + j * p.nx(), p.y.begin() + (j + 1) * p.nx());
      Made<Real> alone(single);
      ASSERT_EQ(alone.construct(), 0);
      ASSERT_EQ(std::memcmp(alone.coeff.data(), rows.coeff.data() + j * p.block(), bytes / 3), 0) << describe(p);
    }
  });
}

// Storage of coefficients that does not follow in memory.
TEST(Splines, CoefficientsWhereTheCallerWantsThem) {
  const Problem<double> p = make_problem<double>(Kind::natural, 1, false, 20, 3);
  Made<double> plain(p), apart(p);
  ASSERT_EQ(plain.construct(), 0);
  std::vector<std::vector<double>> own(3, std::vector<double>(size_t(p.block())));
  for (int64_t j = 0; j < 3; ++j)
    ASSERT_EQ(tarn_df_kernel_dEditIdxPtr(apart.task, TARN_DF_COEFF, j, own[size_t(j)].data()), 0);
  ASSERT_EQ(apart.construct(), 0);
  for (int64_t j = 0; j < 3; ++j)
    for (int64_t i = 0; i < p.block(); ++i)
      ASSERT_EQ(own[size_t(j)][size_t(i)], plain.coeff[size_t(j * p.block() + i)]);
}

// Every thread count gives the same bits, and threads are used from the stated sizes on.
TYPED_TEST(Splines, ThreadsGiveTheSameBits) {
  using Real = TypeParam;
  for (int64_t functions : {1, 2, 3, 5, 9})
    for_each_problem<Real>({300, 600, 2047, 4200}, functions, [](const Problem<Real>& p) {
      if (p.nx() > 3000 && (p.functions > 2 || sizeof(Real) == 4)) return; // time
      Made<Real> alone(p);
      ASSERT_EQ(alone.construct(), 0) << describe(p);
      for (int32_t threads : {2, 3, 8}) {
        set_max_threads(threads);
        for (int64_t storage : {TARN_DF_STORAGE_ROWS, TARN_DF_STORAGE_COLUMNS}) {
          Made<Real> shared(p, storage);
          ASSERT_EQ(shared.construct(pthread_threader()), 0) << describe(p);
          ASSERT_EQ(std::memcmp(alone.coeff.data(), shared.coeff.data(), alone.coeff.size() * sizeof(Real)), 0)
              << describe(p) << ", threads " << threads;
        }
      }
    });
}

// A threader that counts.
struct Counted {
  int64_t calls = 0, items = 0;
  int32_t threads = 0, most = 1;
} counted;
int32_t counted_threads() { return counted.most; }
void counted_for(int64_t count, int32_t threads, void* context, tarn_loop_body body) {
  counted.calls++, counted.items = count, counted.threads = threads;
  for (int64_t i = count; i-- > 0;) body(i, int32_t(i) % threads, threads, context); // in an order of its own
}
Counted count_items(Kind kind, int64_t condition, size_t n, int64_t functions, int32_t most) {
  const tarn_threader table = {counted_for, nullptr, nullptr, nullptr, counted_threads}; // no other slot is used
  const Problem<double> p = make_problem<double>(kind, condition, false, n, functions);
  Made<double> serial(p), made(p);
  counted = {};
  counted.most = most;
  EXPECT_EQ(serial.construct(), 0);
  EXPECT_EQ(made.construct(&table), 0);
  EXPECT_EQ(serial.coeff, made.coeff);
  return counted;
}

TEST(Splines, ThresholdsOfThreads) {
  struct Case {
    Kind kind;
    size_t n;
    int64_t functions, calls, items;
    int32_t most, threads;
  };
  const Case cases[] = {
      {Kind::linear, 127, 1, 0, 0, 4, 0},    {Kind::linear, 128, 1, 1, 1, 4, 1},
      {Kind::linear, 42, 3, 0, 0, 4, 0},     {Kind::linear, 43, 3, 1, 1, 4, 1},
      {Kind::linear, 1025, 1, 1, 1, 4, 1},   {Kind::linear, 1026, 1, 1, 2, 4, 2},
      {Kind::linear, 3000, 5, 1, 6, 4, 4},   {Kind::akima, 511, 1, 0, 0, 4, 0},
      {Kind::akima, 512, 1, 1, 1, 4, 1},     {Kind::akima, 128, 4, 1, 1, 4, 1},
      {Kind::akima, 128, 5, 1, 2, 4, 2},     {Kind::akima, 2053, 1, 1, 1, 4, 1},
      {Kind::akima, 2054, 1, 1, 2, 4, 2},    {Kind::akima, 5, 128, 1, 32, 4, 4},
      {Kind::hyman, 4150, 9, 1, 9, 16, 9},   {Kind::standard, 4000, 2, 0, 0, 4, 0},
      {Kind::subbotin, 2000, 2, 0, 0, 4, 0}, {Kind::default_cubic, 2000, 3, 0, 0, 4, 0},
      {Kind::natural, 5000, 1, 0, 0, 4, 0},  {Kind::natural, 299, 20, 0, 0, 16, 0},
      {Kind::natural, 300, 20, 0, 0, 7, 0},  {Kind::natural, 300, 20, 1, 8, 8, 8},
      {Kind::natural, 300, 3, 0, 0, 16, 0},  {Kind::natural, 599, 3, 0, 0, 4, 0},
      {Kind::natural, 600, 3, 1, 2, 2, 2},   {Kind::natural, 600, 3, 1, 3, 16, 3},
      {Kind::natural, 600, 3, 0, 0, 1, 0},
  };
  for (const Case& c : cases) {
    const Counted seen = count_items(c.kind, conditions_of(c.kind).back(), c.n, c.functions, c.most);
    EXPECT_EQ(seen.calls, c.calls) << name_of(c.kind) << " " << c.n << " " << c.functions << " " << c.most;
    EXPECT_EQ(seen.items, c.items) << name_of(c.kind) << " " << c.n << " " << c.functions << " " << c.most;
    EXPECT_EQ(seen.threads, c.threads) << name_of(c.kind) << " " << c.n << " " << c.functions << " " << c.most;
  }
}

// One task that fails in many ways at once, repaired fault by fault: the order of the checks.
template <class Real> class Faults : public testing::Test {};
TYPED_TEST_SUITE(Faults, Precisions);

TYPED_TEST(Faults, ComeInOrder) {
  using Real = TypeParam;
  for (Kind kind : all_kinds) {
    const Constructor construct = constructor_of<Real>(kind);
    const int64_t condition = kind == Kind::linear ? 0 : kind == Kind::standard ? 128 : 12;
    Made<Real> made(make_problem<Real>(kind, condition, false, 9));
    DFTask good;
    std::memcpy(&good, made.task, sizeof good);
    DFTask& t = *made.task;
    const std::string name = name_of(kind);
    EXPECT_EQ(construct(nullptr, 0, 0, nullptr), TARN_DF_ERROR_NULL_TASK) << name;
    t.nx = int64_t(fewest(kind, 12)) - 1;
    t.yHint = 17;
    if (kind != Kind::linear) { // which looks at neither
      t.bcType = 3;
      t.bc = nullptr;
    }
    t.coeff = nullptr;
    const bool quadratic = kind == Kind::standard || kind == Kind::subbotin;
    if (kind == Kind::linear || quadratic || kind == Kind::natural) {
      EXPECT_EQ(construct(&t, 99, 1, nullptr), TARN_DF_ERROR_METHOD) << name;
      EXPECT_EQ(construct(&t, 99, -1, nullptr), TARN_DF_ERROR_METHOD) << name;
    } else {
      EXPECT_EQ(construct(&t, 99, 1, nullptr), TARN_DF_ERROR_NX) << name; // the method is not looked at
    }
    EXPECT_EQ(construct(&t, 99, 0, nullptr), TARN_DF_ERROR_NX) << name;
    t.nx = 9;
    EXPECT_EQ(construct(&t, 99, 0, nullptr), TARN_DF_ERROR_Y_HINT) << name;
    t.yHint = 16;
    if (kind == Kind::subbotin) {
      t.icType = 4;
      EXPECT_EQ(construct(&t, 0, 0, nullptr), TARN_DF_ERROR_IC_TYPE) << name;
      t.icType = 8;
    }
    if (kind != Kind::linear) {
      EXPECT_EQ(construct(&t, 0, 0, nullptr), TARN_DF_ERROR_BC_TYPE) << name;
      t.bcType = condition;
      EXPECT_EQ(construct(&t, 0, 0, nullptr), TARN_DF_ERROR_NULL_BC) << name;
      t.bc = good.bc;
    }
    if (quadratic) {
      for (int64_t type : {2, 5, 9, -1}) {
        t.splineType = type;
        EXPECT_EQ(construct(&t, 0, 0, nullptr), TARN_DF_ERROR_METHOD) << name;
      }
      t.splineType = good.splineType;
    }
    if (kind == Kind::hermite || kind == Kind::default_cubic) {
      t.ic = nullptr;
      EXPECT_EQ(construct(&t, 0, 0, nullptr), TARN_DF_ERROR_IC) << name;
      t.ic = good.ic;
    }
    void** const y = t.y;
    t.y = nullptr;
    EXPECT_EQ(construct(&t, 0, 0, nullptr), TARN_DF_ERROR_NULL_Y) << name;
    t.y = y;
    EXPECT_EQ(construct(&t, 0, 0, nullptr), TARN_DF_ERROR_NULL_COEFF) << name;
    t.coeff = good.coeff;
    EXPECT_EQ(construct(&t, 0, 0, nullptr), 0) << name;
    EXPECT_EQ(std::memcmp(&good, made.task, sizeof good), 0) << name; // no field was changed
  }
}

TYPED_TEST(Faults, ConditionsThatKindsTake) {
  using Real = TypeParam;
  for (Kind kind : all_kinds) {
    if (kind == Kind::linear) continue;
    const std::vector<int64_t> taken = conditions_of(kind);
    Made<Real> made(make_problem<Real>(kind, taken.back(), false, 9));
    const Real bc[2] = {1, 2};
    for (int64_t condition = -1; condition <= 260; ++condition) {
      made.task->bcType = condition;
      made.task->bc = bc;
      const bool fits = std::find(taken.begin(), taken.end(), condition) != taken.end();
      ASSERT_EQ(made.construct(), fits ? 0 : TARN_DF_ERROR_BC_TYPE) << name_of(kind) << " " << condition;
      if (!fits) continue;
      made.task->bc = nullptr;
      const bool values = condition == 12 || condition == 24 || condition == 36 || condition == 48 || condition == 128;
      const bool hermite = kind == Kind::hermite || kind == Kind::default_cubic;
      ASSERT_EQ(made.construct(), values || (condition == 64 && hermite) ? TARN_DF_ERROR_NULL_BC : 0)
          << name_of(kind) << " " << condition;
    }
    // Whether a period needs values is told by the type.
    if (std::find(taken.begin(), taken.end(), 64) == taken.end() || kind == Kind::hermite ||
        kind == Kind::default_cubic)
      continue;
    made.task->bcType = 64;
    made.task->bc = nullptr;
    for (int64_t type : {0, 1, 2, 3, 4, 5, 9}) {
      made.task->splineType = type;
      EXPECT_EQ(made.construct(), type == 0 || type == 3 ? TARN_DF_ERROR_NULL_BC : 0) << name_of(kind) << " " << type;
    }
  }
}

TYPED_TEST(Faults, FewestPoints) {
  using Real = TypeParam;
  for (Kind kind : all_kinds) {
    for (int64_t condition : conditions_of(kind)) {
      for (bool uniform : {false, true}) {
        for (size_t n = 2; n < 7; ++n) {
          Made<Real> made(make_problem<Real>(kind, condition, uniform, n));
          const int32_t status = made.construct();
          // Three points without a knot: both ends ask for the same.
          const bool singular = kind == Kind::natural && condition == 2 && n == 3;
          const size_t least = kind == Kind::natural && condition == 2 ? 2 : fewest(kind, condition);
          ASSERT_EQ(status, n < least ? TARN_DF_ERROR_NX : singular ? TARN_DF_ERROR_SOLVER : 0) << describe(made.p);
        }
      }
    }
  }
}

TYPED_TEST(Faults, PeriodsThatDoNotClose) {
  using Real = TypeParam;
  Problem<Real> p = make_problem<Real>(Kind::linear, 64, false, 10, 2);
  for (bool close : {true, false}) {
    if (!close) p.y[19] = std::nextafter(p.y[10], Real(9)); // the second function, by one unit in the last place
    for (int64_t storage : {16, 32}) {
      Made<Real> made(p, storage);
      EXPECT_EQ(made.construct(), close ? 0 : TARN_DF_ERROR_NOT_PERIODIC);
      if (close) continue;
      for (Real c : made.coeff) EXPECT_EQ(c, Real(-77)); // nothing written
    }
  }
}

TYPED_TEST(Faults, Subgrids) {
  using Real = TypeParam;
  Problem<Real> p = make_problem<Real>(Kind::subbotin, 12, false, 6);
  std::vector<Real> t{p.x[0]};
  for (size_t i = 1; i < 6; ++i) t.push_back(p.x[i - 1] + Real(0.3) * (p.x[i] - p.x[i - 1]));
  t.push_back(p.x[5]);
  p.ic = t;
  {
    Made<Real> made(p);
    EXPECT_EQ(made.construct(), 0);
    const Longs expected = Reference(p, 0).subbotin(Longs(t.begin(), t.end()));
    for (size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(Long(made.coeff[i]), expected[i], 200 * epsilon<Real>);
  }
  const auto status_with = [&](size_t at, Real value) {
    p.ic = t;
    p.ic[at] = value;
    return Made<Real>(p).construct();
  };
  EXPECT_EQ(status_with(0, std::nextafter(t[0], Real(-9))), TARN_DF_ERROR_IC);
  EXPECT_EQ(status_with(6, std::nextafter(t[6], Real(9))), TARN_DF_ERROR_IC);
  EXPECT_EQ(status_with(3, p.x[2]), TARN_DF_ERROR_IC); // on a point
  EXPECT_EQ(status_with(3, p.x[3]), TARN_DF_ERROR_IC);
  EXPECT_EQ(status_with(3, p.x[1]), TARN_DF_ERROR_IC);
  EXPECT_EQ(status_with(3, std::numeric_limits<Real>::quiet_NaN()), TARN_DF_ERROR_IC);
  EXPECT_EQ(status_with(3, std::nextafter(p.x[2], Real(9))), 0);
  // A uniform subgrid: two ends, knots with equal gaps between them, on a partition that suits them.
  for (bool uniform : {false, true}) {
    Problem<Real> even = make_problem<Real>(Kind::subbotin, 48, uniform, 6);
    if (!uniform)
      for (size_t i = 0; i < 6; ++i) even.x[i] = Real(i) + Real(i % 2 ? 0.05 : 0);
    even.ic_type = 12;
    even.ic = {even.x[0], even.x[5]};
    Longs knots;
    for (int i = 0; i <= 6; ++i) knots.push_back(even.x[0] + (Long(even.x[5]) - even.x[0]) * i / 6);
    Made<Real> made(even);
    ASSERT_EQ(made.construct(), 0) << uniform;
    const Longs expected = Reference(even, 0).subbotin(knots);
    for (size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(Long(made.coeff[i]), expected[i], 400 * epsilon<Real>);
    even.ic[1] = even.x[4];
    EXPECT_EQ(Made<Real>(even).construct(), TARN_DF_ERROR_IC);
  }
  Problem<Real> lopsided = make_problem<Real>(Kind::subbotin, 48, false, 6);
  lopsided.x = {0, 1, 2, 3, 4, 50}; // equal gaps put no knot into the first cells
  lopsided.ic_type = 12;
  lopsided.ic = {0, 50};
  EXPECT_EQ(Made<Real>(lopsided).construct(), TARN_DF_ERROR_IC);
}

TYPED_TEST(Faults, FailingAllocations) {
  using Real = TypeParam;
  const tarn_threader table = {counted_for, nullptr, nullptr, nullptr, counted_threads};
  counted.most = 2;
  for (size_t n : {size_t(60), size_t(4094), size_t(4095)}) {
    for (Kind kind : all_kinds) {
      for (int64_t functions : {1, 3}) {
        Made<Real> made(make_problem<Real>(kind, conditions_of(kind).back(), false, n, functions));
        std::vector<int32_t> statuses;
        const int64_t sites = for_each_allocation_failure([&](int64_t) { statuses.push_back(made.construct(&table)); });
        int64_t expected = 1; // scratch, and the statuses of the workers
        if (kind == Kind::linear) expected = 0;
        if (kind == Kind::standard) expected = n < 4095 ? 0 : 1;                       // else on the stack
        if (kind >= Kind::akima && kind <= Kind::hermite) expected = n < 4000 ? 0 : 1; // one item, one thread
        if (kind == Kind::natural) expected = functions > 1 && n >= 600 ? 2 : 1;
        EXPECT_EQ(sites, expected) << describe(made.p);
        for (size_t k = 0; k < statuses.size(); ++k)
          EXPECT_EQ(statuses[k], int64_t(k) < sites ? TARN_DF_ERROR_ALLOCATION : 0) << describe(made.p);
      }
    }
  }
}

}
