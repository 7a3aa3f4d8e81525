// Interpolation: values and derivatives against extended precision, and the same bits whatever the path, the layout, the
// width of integers and the threads.
#include <cstring>
#include <limits>
#include <mutex>
#include <numeric>

#include <gtest/gtest.h>

#include "fitting/cells/splines.h"
#include "support/failing_allocator.h"
#include "support/pthread_threader.h"

namespace {

using namespace tarn::test;

template <class Real> struct Call {
  int64_t type = 1, hint = 0, rhint = 16;
  std::vector<int64_t> orders = {1};
  const Real* data = nullptr;
  void* cell = nullptr;
  typename Api<Real>::EvalCallback left = nullptr, right = nullptr, inside = nullptr;
  void* parameter = nullptr; // of all call-backs
  typename Api<Real>::SearchCallback search = nullptr;
  const tarn_threader* threader = nullptr;
  int64_t count = -1; // of sites, where they are not as many as given
};

// The derivative orders in the width of the task.
struct Orders {
  explicit Orders(const std::vector<int64_t>& flags, bool wide) : narrow(flags.begin(), flags.end()), long_ones(flags) {
    data = wide ? static_cast<const void*>(long_ones.data()) : narrow.data();
  }
  std::vector<int32_t> narrow;
  std::vector<int64_t> long_ones;
  const void* data;
};

template <class Real>
int32_t interpolate(DFTask* task, const std::vector<Real>& sites, const Call<Real>& call, Real* r) {
  const Orders orders(call.orders, task && task->wideInterface != 0);
  const int64_t count = call.count != -1 ? call.count : int64_t(sites.size());
  return Api<Real>::interpolate(task, call.type, 7, count, sites.data(), call.hint, int64_t(call.orders.size()),
                                call.orders.empty() ? nullptr : orders.data, call.data, r, call.rhint, call.cell,
                                call.left, call.parameter, call.right, call.parameter, call.inside, call.parameter,
                                call.search, call.parameter, call.threader);
}

int64_t selected_orders(const std::vector<int64_t>& orders) {
  return std::max<int64_t>(1, std::count_if(orders.begin(), orders.end(), [](int64_t k) { return k != 0; }));
}

// All results, with a word on either side that must stay.
template <class Real>
std::vector<Real> results(DFTask* task, const std::vector<Real>& sites, const Call<Real>& call, int32_t expected = 0) {
  const int64_t count = call.count != -1 ? call.count : int64_t(sites.size());
  const size_t size = size_t(count * std::max<int64_t>(1, task->ny) * selected_orders(call.orders));
  std::vector<Real> r(size + 2, Real(-99));
  EXPECT_EQ(interpolate(task, sites, call, r.data() + 1), expected);
  EXPECT_EQ(r.front(), Real(-99));
  EXPECT_EQ(r.back(), Real(-99));
  return std::vector<Real>(r.begin() + 1, r.end() - 1);
}

template <class Real> bool same_bits(const std::vector<Real>& a, const std::vector<Real>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Real)) == 0;
}

template <class Real> class Interpolate : public testing::Test {
protected:
  void TearDown() override { set_max_threads(1); }
};
using Reals = testing::Types<double, float>;
TYPED_TEST_SUITE(Interpolate, Reals);

TYPED_TEST(Interpolate, ValuesAndDerivatives) {
  using Real = TypeParam;
  const double eps = std::numeric_limits<Real>::epsilon();
  for (const Spline kind : all_splines)
    for (const int64_t x_hint : {1, 2, 4})
      for (const bool wide : {false, true})
        for (const int64_t n : {int64_t(2), int64_t(3), int64_t(57)}) {
          if (n == 2 && kind == Spline::SubbotinEven) continue; // its middle knot would be the middle: as Subbotin
          RandomSpline<Real> spline(kind, n, x_hint, wide, 3);
          ASSERT_EQ(spline.task.status, 0);
          const std::vector<Real> sites = spline.sites(333);
          const std::vector<int64_t> orders = {1, 1, 0, 1, 1, 0, 0, 1};
          const auto r = results(spline.task, sites, Call<Real>{.orders = orders});
          size_t at = 0;
          for (int64_t f = 0; f < 3; ++f)
            for (const Real t : sites)
              for (size_t k = 0; k < orders.size(); ++k) {
                if (!orders[k]) continue;
                const Extended exact = spline.value(f, t, int64_t(k));
                ASSERT_NEAR(double(r[at]), double(exact.value), 16 * eps * double(exact.size))
                    << "kind " << int(kind) << ", hint " << x_hint << ", " << n << " points, order " << k << ", site "
                    << t;
                if (int64_t(k) >= spline.order && spline.order > 0) {
                  ASSERT_EQ(r[at], 0);
                }
                ++at;
              }
        }
}

TYPED_TEST(Interpolate, AllSelectionsOfOrders) {
  using Real = TypeParam;
  for (const Spline kind :
       {Spline::Linear, Spline::Quadratic, Spline::Cubic, Spline::Subbotin, Spline::Sixth, Spline::StepLeft}) {
    RandomSpline<Real> spline(kind, 20, 1, false, 1);
    const auto sites = spline.sites(37);
    std::vector<std::vector<Real>> single;
    for (size_t k = 0; k < 6; ++k) {
      std::vector<int64_t> orders(k + 1, 0);
      orders[k] = 1;
      single.push_back(results(spline.task, sites, Call<Real>{.orders = orders}));
    }
    for (unsigned mask = 0; mask < 64; ++mask) {
      std::vector<int64_t> orders(6);
      std::vector<size_t> chosen;
      for (size_t k = 0; k < 6; ++k) {
        orders[k] = mask >> k & 1;
        if (orders[k]) chosen.push_back(k);
      }
      if (chosen.empty()) chosen = {0}; // all zero: the value alone
      const auto r = results(spline.task, sites, Call<Real>{.orders = orders});
      ASSERT_EQ(r.size(), sites.size() * chosen.size());
      for (size_t s = 0; s < sites.size(); ++s)
        for (size_t j = 0; j < chosen.size(); ++j) ASSERT_EQ(r[s * chosen.size() + j], single[chosen[j]][s]);
    }
    EXPECT_TRUE(same_bits(results(spline.task, sites, Call<Real>{.orders = {}}), single[0]));
  }
}

TYPED_TEST(Interpolate, LayoutsHoldTheSameResults) {
  using Real = TypeParam;
  for (const Spline kind : {Spline::Cubic, Spline::Linear, Spline::Subbotin, Spline::StepRight})
    for (const int64_t ny : {1, 3, 7})
      for (const int64_t nsite :
           {int64_t(1), int64_t(5), int64_t(31), int64_t(32), int64_t(320), int64_t(321), int64_t(1000)})
        for (const auto& orders : {std::vector<int64_t>{1}, std::vector<int64_t>{1, 0, 1}}) {
          RandomSpline<Real> spline(kind, 33, nsite % 2 ? 1 : 4, ny == 3, ny);
          const auto sites = spline.sites(nsite);
          const int64_t nder = selected_orders(orders);
          const auto base = results(spline.task, sites, Call<Real>{.orders = orders});
          for (const int threads : {1, 3}) {
            set_max_threads(threads);
            for (const int64_t rhint : {0, 16, 32, 128, 256, 512}) {
              const auto r = results(spline.task, sites,
                                     Call<Real>{.rhint = rhint, .orders = orders, .threader = pthread_threader()});
              for (int64_t f = 0; f < ny; ++f)
                for (int64_t s = 0; s < nsite; ++s)
                  for (int64_t k = 0; k < nder; ++k) {
                    const int64_t at = rhint == 32    ? (f * nder + k) * nsite + s
                                       : rhint == 256 ? (s * ny + f) * nder + k
                                       : rhint == 512 ? (s * nder + k) * ny + f
                                                      : (f * nsite + s) * nder + k;
                    ASSERT_EQ(r[size_t(at)], base[size_t((f * nsite + s) * nder + k)]) << rhint;
                  }
            }
          }
        }
}

TYPED_TEST(Interpolate, PathsGiveTheSameBits) {
  using Real = TypeParam;
  for (const Spline kind : all_splines)
    for (const int64_t x_hint : {1, 2, 4})
      for (const auto& orders :
           {std::vector<int64_t>{1}, std::vector<int64_t>{1, 1, 1, 1}, std::vector<int64_t>{0, 1, 0, 0, 0, 1}}) {
        RandomSpline<Real> narrow(kind, 40, x_hint, false, 1), wide(kind, 40, x_hint, true, 1);
        RandomSpline<Real> interleaved(kind, 40, x_hint, false, 1, 32);
        std::vector<Real> sites = narrow.sites(700);
        const size_t nder = size_t(selected_orders(orders));
        const auto base = results(narrow.task, sites, Call<Real>{.orders = orders});
        EXPECT_TRUE(same_bits(base, results(wide.task, sites, Call<Real>{.orders = orders})));
        EXPECT_TRUE(same_bits(base, results(interleaved.task, sites, Call<Real>{.orders = orders})));
        // Cells written besides, and given back.
        std::vector<int32_t> cells(sites.size());
        EXPECT_TRUE(same_bits(
            base, results(narrow.task, sites, Call<Real>{.type = 3, .orders = orders, .cell = cells.data()})));
        for (size_t s = 0; s < sites.size(); ++s) ASSERT_EQ(cells[s], narrow.cell(sites[s]));
        EXPECT_TRUE(same_bits(
            base, results(narrow.task, sites, Call<Real>{.type = 4, .orders = orders, .cell = cells.data()})));
        std::vector<int64_t> wide_cells(cells.begin(), cells.end());
        EXPECT_TRUE(same_bits(
            base, results(wide.task, sites, Call<Real>{.type = 4, .orders = orders, .cell = wide_cells.data()})));
        std::fill(wide_cells.begin(), wide_cells.end(), -1);
        EXPECT_TRUE(same_bits(
            base, results(wide.task, sites, Call<Real>{.type = 3, .orders = orders, .cell = wide_cells.data()})));
        EXPECT_TRUE(std::equal(cells.begin(), cells.end(), wide_cells.begin()));
        // Alone, and in short calls.
        for (RandomSpline<Real>* spline : {&narrow, &wide}) {
          for (size_t s = 0; s < 60; ++s) {
            const auto one = results(spline->task, {sites[s]}, Call<Real>{.orders = orders});
            ASSERT_EQ(std::memcmp(one.data(), base.data() + s * nder, nder * sizeof(Real)), 0) << s;
            const void* cell = spline == &wide ? static_cast<void*>(&wide_cells[s]) : &cells[s];
            const auto given = results(spline->task, {sites[s]},
                                       Call<Real>{.type = 4, .orders = orders, .cell = const_cast<void*>(cell)});
            ASSERT_TRUE(same_bits(one, given));
          }
          for (const size_t count : {size_t(2), size_t(31), size_t(32), size_t(319), size_t(320), size_t(321)}) {
            const std::vector<Real> some(sites.begin() + 7, sites.begin() + 7 + std::ptrdiff_t(count));
            const auto r = results(spline->task, some, Call<Real>{.orders = orders});
            ASSERT_EQ(std::memcmp(r.data(), base.data() + 7 * nder, r.size() * sizeof(Real)), 0) << count;
          }
        }
        // By another search, which finds the same cells.
        std::sort(sites.begin(), sites.end());
        const Real data[5] = {0, 1, 0, 0, 20};
        const auto sorted = results(narrow.task, sites, Call<Real>{.orders = orders});
        EXPECT_TRUE(same_bits(sorted, results(narrow.task, sites, Call<Real>{.hint = 64, .orders = orders})));
        EXPECT_TRUE(same_bits(sorted, results(narrow.task, sites, Call<Real>{.orders = orders, .data = data})));
        for (size_t s = 0; s < 20; ++s) {
          const std::vector<Real> one = {sites[31 * s]};
          const auto expected = results(narrow.task, one, Call<Real>{.orders = orders});
          EXPECT_TRUE(same_bits(expected, results(narrow.task, one, Call<Real>{.hint = 64, .orders = orders})));
          EXPECT_TRUE(same_bits(expected, results(narrow.task, one, Call<Real>{.orders = orders, .data = data})));
        }
      }
}

TYPED_TEST(Interpolate, ThreadsGiveTheSameBits) {
  using Real = TypeParam;
  for (const Spline kind : all_splines) {
    RandomSpline<Real> spline(kind, 100, kind == Spline::Quadratic ? 4 : 1, kind == Spline::Cubic, 2);
    for (const int64_t count : {512, 513, 640, 641, 5000}) {
      const auto sites = spline.sites(count);
      const auto base = results(spline.task, sites, Call<Real>{.orders = {1, 1}});
      std::vector<int64_t> cells(sites.size(), -1);
      for (const int threads : {2, 3, 8, 40}) {
        set_max_threads(threads);
        take_threads_started();
        EXPECT_TRUE(
            same_bits(base, results(spline.task, sites, Call<Real>{.orders = {1, 1}, .threader = pthread_threader()})));
        EXPECT_EQ(take_threads_started(), count <= 512 ? 0 : std::min<int64_t>(threads, (count + 319) / 320));
        results(spline.task, sites,
                Call<Real>{
                    .type = 3, .rhint = 512, .orders = {1, 1}, .cell = cells.data(), .threader = pthread_threader()});
      }
      set_max_threads(1);
      take_threads_started();
      results(spline.task, sites, Call<Real>{.threader = pthread_threader()});
      EXPECT_EQ(take_threads_started(), 0);
    }
  }
}

TYPED_TEST(Interpolate, StatusesInTheirOrder) {
  using Real = TypeParam;
  const Real site = 0, bad[5] = {0, 3, 0, 0, 0};
  Real r = -5;
  EXPECT_EQ(interpolate<Real>(nullptr, {site}, Call<Real>{}, &r), -1000);
  RandomSpline<Real> spline(Spline::Cubic, 10, 1, false, 1);
  DFTask* task = spline.task;
  // -1011 before all else; then -1026, -1028, -1016.
  const auto set = [&](int64_t order, int64_t type) { task->splineOrder = order, task->splineType = type; };
  const auto status = [&](const Real* data, int64_t rhint, int64_t type = 1) {
    return interpolate<Real>(task, {site}, Call<Real>{.type = type, .rhint = rhint, .data = data}, &r);
  };
  void** coefficients = task->coeff;
  task->coeff = nullptr;
  set(1, 0);
  EXPECT_EQ(status(bad, 5), -1011);
  set(4, 0);
  EXPECT_EQ(status(bad, 5), -1026);
  EXPECT_EQ(status(nullptr, 5), -1028);
  EXPECT_EQ(status(nullptr, 16), -1016);
  task->coeff = coefficients;
  EXPECT_EQ(r, -5);
  EXPECT_EQ(status(nullptr, 16), 0);
  for (const int64_t rhint : {-1, 1, 8, 17, 48, 64, 1024}) EXPECT_EQ(status(nullptr, rhint), -1028) << rhint;
  // A task without sites does nothing.
  for (const int64_t count : {int64_t(0), int64_t(-3)})
    EXPECT_EQ(interpolate<Real>(task, {site}, Call<Real>{.count = count}, nullptr), 0);
  // Which orders and types have an evaluator.
  task->ny = 1;
  for (int64_t order = -2; order < 8; ++order)
    for (int64_t type = -1; type < 70; ++type) {
      set(order, type);
      const bool known = order == 2 || order > 4 || (order == 3 && (type == 0 || type == 1)) ||
                         (order == 4 && (type == 0 || (type >= 2 && type <= 5) || type == 9)) ||
                         (order == 0 && type >= 6 && type <= 8);
      EXPECT_EQ(status(nullptr, 16, 0), known ? 0 : -1011) << order << " " << type;
    }
  // Of step functions and look-up the values, not the coefficients, have to be there.
  void** y = task->y;
  for (const int64_t type : {6, 7, 8}) {
    set(0, type);
    task->y = nullptr;
    EXPECT_EQ(status(nullptr, 16), -1008);
    task->y = y;
    task->coeff = nullptr;
    EXPECT_EQ(interpolate<Real>(task, {spline.point(3)}, Call<Real>{}, &r), 0);
    task->coeff = coefficients;
  }
}

TYPED_TEST(Interpolate, NamedEdgeCases) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 12, 1, false, 2);
  const Real end = spline.right_end();
  std::vector<int32_t> cell(2, -1);
  const auto at_end = results(spline.task, {end, end + 1}, Call<Real>{.type = 3, .cell = cell.data()});
  EXPECT_EQ(cell, (std::vector<int32_t>{11, 12}));
  const Real* c = spline.task.coefficients.data() + 10 * 4; // the last polynomial of function 0
  const auto last = [&](Real t) {
    const Real u = t - spline.point(10);
    return ((c[3] * u + c[2]) * u + c[1]) * u + c[0];
  };
  EXPECT_EQ(at_end[0], last(end));
  EXPECT_EQ(at_end[1], last(end + 1)); // continued
  // What is not asked for is not written.
  Real r[4] = {-9, -9, -9, -9};
  std::fill(cell.begin(), cell.end(), -1);
  EXPECT_EQ(interpolate<Real>(spline.task, {end, -5}, Call<Real>{.type = 2, .cell = cell.data()}, r), 0);
  EXPECT_EQ(cell, (std::vector<int32_t>{11, 0}));
  EXPECT_EQ(interpolate<Real>(spline.task, {end, -5}, Call<Real>{.type = 0}, r), 0);
  for (const Real v : r) EXPECT_EQ(v, -9);
  EXPECT_EQ(interpolate<Real>(spline.task, {end, -5}, Call<Real>{.type = 2, .cell = cell.data()}, nullptr), 0);
  // A task of no functions, order and type fitting: one function is taken.
  RandomSpline<Real> one(Spline::Linear, 12, 1, false, 1);
  const auto value = results(one.task, {Real(0.5)}, Call<Real>{});
  one.task->ny = 0;
  EXPECT_TRUE(same_bits(value, results(one.task, {Real(0.5)}, Call<Real>{})));
}

TYPED_TEST(Interpolate, EquallySpacedSites) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 50, 1, false, 2);
  const std::vector<Real> ends = {Real(-1.7), Real(2.3)};
  for (const int64_t count : {2, 31, 33, 320, 999, 6000}) {
    std::vector<Real> sites;
    for (int64_t i = 0; i < count; ++i) sites.push_back(ends[0] + Real(i) * ((ends[1] - ends[0]) / Real(count - 1)));
    AllocationFailure none(-1);
    const auto r = results(spline.task, ends, Call<Real>{.hint = 4, .count = count});
    EXPECT_EQ(none.seen(), 0);
    EXPECT_TRUE(same_bits(r, results(spline.task, sites, Call<Real>{})));
    set_max_threads(3);
    EXPECT_TRUE(same_bits(
        r, results(spline.task, ends, Call<Real>{.hint = 4, .threader = pthread_threader(), .count = count})));
  }
  // One site: the first of the two.
  EXPECT_TRUE(same_bits(results(spline.task, ends, Call<Real>{.hint = 4, .count = 1}),
                        results(spline.task, {ends[0]}, Call<Real>{})));
}

TYPED_TEST(Interpolate, LookUp) {
  using Real = TypeParam;
  for (const int64_t x_hint : {1, 4})
    for (const bool wide : {false, true}) {
      RandomSpline<Real> spline(Spline::StepLeft, 40, x_hint, wide, 2);
      spline.task->splineType = 6;
      std::vector<Real> points, values;
      for (int64_t i = 0; i < 40; ++i) points.push_back(spline.point((7 * i) % 40));
      const auto r = results(spline.task, points, Call<Real>{});
      for (int64_t f = 0; f < 2; ++f)
        for (int64_t i = 0; i < 40; ++i)
          EXPECT_EQ(r[size_t(40 * f + i)], Real(std::sin(double(3 * ((7 * i) % 40) + f))));
      const auto status = [&](std::vector<Real> sites, std::vector<int64_t> orders, int64_t type = 1,
                              void* cell = nullptr) {
        Real out[100];
        return interpolate<Real>(spline.task, sites, Call<Real>{.type = type, .orders = orders, .cell = cell}, out);
      };
      EXPECT_EQ(status({points[3]}, {}), -1024);
      EXPECT_EQ(status({points[3]}, {1, 0}), -1024);
      EXPECT_EQ(status({points[3]}, {0, 1}), -1024);
      EXPECT_EQ(status({points[3]}, {0}), -1025);
      EXPECT_EQ(status({Real(-50)}, {0}), -1025);
      EXPECT_EQ(status({Real(-50)}, {1}), -1022);
      EXPECT_EQ(status({Real(50)}, {1}), -1022);
      EXPECT_EQ(status({points[3], points[4], (points[3] + points[4]) / 2 + Real(0.001)}, {1}), -1022);
      EXPECT_EQ(status({std::numeric_limits<Real>::quiet_NaN()}, {1}), -1022);
      const int64_t none = 0; // a cell of 0 in either width
      EXPECT_EQ(status({points[3]}, {1}, 4, const_cast<int64_t*>(&none)), -1022);
      // With a cell of the caller's: its own two points, and of stored ones the last point of all.
      const int64_t fifth = 5;
      int64_t* const cell = const_cast<int64_t*>(&fifth);
      EXPECT_EQ(status({spline.point(4)}, {1}, 4, cell), 0);
      EXPECT_EQ(status({spline.point(5)}, {1}, 4, cell), 0);
      for (const int64_t i : {3, 6, 38}) EXPECT_EQ(status({spline.point(i)}, {1}, 4, cell), -1022);
      EXPECT_EQ(status({spline.point(39)}, {1}, 4, cell), x_hint == 4 ? -1022 : 0);
      // To a tolerance where the points are not stored.
      const Real near = points[3] + Real(std::ldexp(1.0, -41)), far = points[3] + Real(std::ldexp(1.0, -39));
      if (near != points[3]) {
        EXPECT_EQ(status({near}, {1}), x_hint == 4 ? 0 : -1022);
        EXPECT_EQ(status({far}, {1}), -1022);
      }
    }
}

// Notes what it is called with and answers site + 1000 (cell + 1), or the status asked for.
struct Log {
  std::mutex lock; // several threads may call
  int32_t status = 0, after = 0;
  int64_t calls = 0, sites = 0, largest = 0, nder = 1;
  int64_t lowest_cell = INT64_MAX, highest_cell = INT64_MIN;
};
template <class Real>
int32_t answer(const int64_t* n, const int64_t* cell, const Real* site, Real* r, void* parameter, void* null_word) {
  Log& log = *static_cast<Log*>(parameter);
  EXPECT_EQ(null_word, nullptr);
  const std::lock_guard held(log.lock);
  log.sites += *n;
  log.largest = std::max(log.largest, *n);
  for (int64_t i = 0; i < *n; ++i) {
    log.lowest_cell = std::min(log.lowest_cell, cell[i]);
    log.highest_cell = std::max(log.highest_cell, cell[i]);
    for (int64_t k = 0; k < log.nder; ++k) r[i * log.nder + k] = site[i] + Real(1000 * (cell[i] + 1)) + Real(k) / 16;
  }
  return log.calls++ < log.after ? 0 : log.status;
}
template <class Real> Real answered(Real site, int64_t cell, int64_t k) {
  return site + Real(1000 * (cell + 1)) + Real(k) / 16;
}

TYPED_TEST(Interpolate, CallBacksOwnTheirRegions) {
  using Real = TypeParam;
  for (const Spline kind : all_splines)
    for (const bool wide : {false, true})
      for (const int64_t nsite : {int64_t(1), int64_t(20), int64_t(320), int64_t(1000)})
        for (unsigned regions = 1; regions < 8; ++regions)
          for (const auto& orders : {std::vector<int64_t>{1}, std::vector<int64_t>{1, 1, 0, 0, 0, 0, 1}}) {
            RandomSpline<Real> spline(kind, 20, 1, wide, 2);
            const auto sites = spline.sites(nsite);
            const int64_t nder = selected_orders(orders);
            const auto plain = results(spline.task, sites, Call<Real>{.orders = orders});
            Log log;
            log.nder = nder;
            Call<Real> call{.orders = orders, .parameter = &log};
            if (regions & 1) call.left = answer<Real>;
            if (regions & 2) call.right = answer<Real>;
            if (regions & 4) call.inside = answer<Real>;
            const auto r = results(spline.task, sites, call);
            int64_t owned_sites = 0;
            for (int64_t f = 0; f < 2; ++f)
              for (int64_t s = 0; s < nsite; ++s) {
                const int64_t cell = spline.cell(sites[size_t(s)]);
                const bool owned = regions & (cell == 0 ? 1u : cell == 20 ? 2u : 4u);
                owned_sites += owned;
                for (int64_t k = 0; k < nder; ++k) {
                  const size_t at = size_t((f * nsite + s) * nder + k);
                  ASSERT_EQ(r[at], owned ? answered(sites[size_t(s)], cell, k) : plain[at]);
                }
              }
            EXPECT_EQ(log.sites, owned_sites); // each once for each function
            EXPECT_LE(log.largest, 320);
          }
}

// Selected orders so many that a call-back's buffer holds one site, and more than it holds.
TYPED_TEST(Interpolate, CallBacksWithManyOrders) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 20, 1, false, 1);
  const auto sites = spline.sites(40);
  for (const size_t nder : {size_t(7), size_t(600), size_t(1500), size_t(3000)}) {
    Log log;
    log.nder = int64_t(nder);
    const auto r = results(spline.task, sites,
                           Call<Real>{.orders = std::vector<int64_t>(nder, 1),
                                      .left = answer<Real>,
                                      .right = answer<Real>,
                                      .inside = answer<Real>,
                                      .parameter = &log});
    for (size_t s = 0; s < sites.size(); ++s)
      for (size_t k = 0; k < nder; ++k)
        ASSERT_EQ(r[s * nder + k], answered(sites[s], spline.cell(sites[s]), int64_t(k)));
  }
}

TYPED_TEST(Interpolate, SplinesKnownToCallBacksAlone) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 20, 1, false, 1);
  spline.task->splineOrder = 0;
  const auto sites = spline.sites(100);
  Log log;
  for (const int64_t type : {0, 1, 5, 9}) {
    spline.task->splineType = type;
    for (unsigned regions = 0; regions < 8; ++regions) {
      Call<Real> call{.parameter = &log};
      if (regions & 1) call.left = answer<Real>;
      if (regions & 2) call.right = answer<Real>;
      if (regions & 4) call.inside = answer<Real>;
      std::vector<Real> r(100, -9);
      ASSERT_EQ(interpolate<Real>(spline.task, sites, call, r.data()), regions == 7 ? 0 : -1011);
      if (regions != 7) {
        EXPECT_EQ(r[0], -9);
      }
    }
  }
  spline.task->coeff[0] = nullptr; // not read
  const auto r =
      results(spline.task, sites,
              Call<Real>{.left = answer<Real>, .right = answer<Real>, .inside = answer<Real>, .parameter = &log});
  for (size_t s = 0; s < 100; ++s) EXPECT_EQ(r[s], answered(sites[s], spline.cell(sites[s]), 0));
}

TYPED_TEST(Interpolate, CallBacksEndTheCall) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 20, 1, false, 1);
  const std::vector<Real> sites(1000, spline.point(5));
  for (const int32_t status : {-1, -1000, INT32_MIN, 1, 1000})
    for (const int after : {0, 2})
      for (const int threads : {1, 4}) {
        set_max_threads(threads);
        Log log;
        log.status = status;
        log.after = threads == 1 ? after : 0;
        std::vector<Real> r(1000);
        const int32_t outcome = interpolate<Real>(spline.task, sites,
                                                  Call<Real>{.inside = answer<Real>,
                                                             .parameter = &log,
                                                             .threader = threads == 1 ? nullptr : pthread_threader()},
                                                  r.data());
        EXPECT_EQ(outcome, status < 0 ? status : 0);
        if (threads == 1) {
          EXPECT_EQ(log.calls, status < 0 ? after + 1 : 4);
        }
      }
}

TYPED_TEST(Interpolate, SearchesOfTheCaller) {
  using Real = TypeParam;
  for (const int64_t x_hint : {1, 4}) {
    RandomSpline<Real> spline(Spline::Cubic, 20, x_hint, false, 1);
    const auto sites = spline.sites(1000);
    const auto base = results(spline.task, sites, Call<Real>{});
    const auto one_guess = [](const int64_t* n, const Real*, int64_t* cell, int32_t* flag, void* parameter) -> int32_t {
      EXPECT_LE(*n, 320);
      for (int64_t i = 0; i < *n; ++i) cell[i] = 9, flag[i] = 0;
      return *static_cast<int32_t*>(parameter);
    };
    int32_t status = 0;
    EXPECT_TRUE(same_bits(base, results(spline.task, sites, Call<Real>{.parameter = &status, .search = one_guess})));
    EXPECT_TRUE(same_bits(results(spline.task, {sites[4]}, Call<Real>{}),
                          results(spline.task, {sites[4]}, Call<Real>{.parameter = &status, .search = one_guess})));
    for (const int threads : {1, 4}) {
      set_max_threads(threads);
      status = -3;
      std::vector<Real> r(1000, -9);
      EXPECT_EQ(interpolate<Real>(spline.task, sites,
                                  Call<Real>{.parameter = &status, .search = one_guess, .threader = pthread_threader()},
                                  r.data()),
                -3);
      EXPECT_EQ(r, std::vector<Real>(1000, -9));
    }
    status = 1000; // final, right or not: all sites take the polynomial of cell 9
    const auto r = results(spline.task, {sites[4]}, Call<Real>{.parameter = &status, .search = one_guess});
    const int32_t nine = 9;
    EXPECT_TRUE(
        same_bits(r, results(spline.task, {sites[4]}, Call<Real>{.type = 4, .cell = const_cast<int32_t*>(&nine)})));
  }
}

// Cells given that no search would find are taken for the nearest polynomial.
TYPED_TEST(Interpolate, CellsOutOfRange) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 20, 1, true, 1);
  const std::vector<Real> sites(4, Real(0.5));
  std::vector<int64_t> wild = {INT64_MIN + 1, -1, 21, INT64_MAX}, tame = {0, 0, 20, 20};
  EXPECT_TRUE(same_bits(results(spline.task, sites, Call<Real>{.type = 4, .cell = wild.data()}),
                        results(spline.task, sites, Call<Real>{.type = 4, .cell = tame.data()})));
}

TYPED_TEST(Interpolate, ScratchAndItsFailure) {
  using Real = TypeParam;
  RandomSpline<Real> spline(Spline::Cubic, 20, 1, false, 3);
  const auto sites = spline.sites(1000);
  const std::vector<int64_t> orders = {1, 1, 1};
  const auto allocations = [&](int64_t rhint, int64_t count, int threads, std::vector<int64_t> selection) {
    set_max_threads(threads);
    AllocationFailure none(-1);
    const std::vector<Real> some(sites.begin(), sites.begin() + count);
    results(spline.task, some, Call<Real>{.rhint = rhint, .orders = selection, .threader = pthread_threader()});
    return none.seen();
  };
  EXPECT_EQ(allocations(16, 1000, 4, orders), 0);
  EXPECT_EQ(allocations(512, 227, 1, orders), 0); // 227 sites, 3 functions, 3 orders: 2,043 reals
  EXPECT_EQ(allocations(512, 228, 1, orders), 1);
  EXPECT_EQ(allocations(32, 1000, 1, {1}), 0);
  EXPECT_EQ(allocations(256, 1000, 2, {1}), 0);
  EXPECT_EQ(allocations(256, 1000, 3, {1}), 1);
  for (const int64_t rhint : {32, 256, 512}) {
    set_max_threads(1);
    const int64_t failures = for_each_allocation_failure([&](int64_t k) {
      std::vector<Real> r(9000, -9);
      EXPECT_EQ(interpolate<Real>(spline.task, sites, Call<Real>{.rhint = rhint, .orders = orders}, r.data()),
                k == 0 ? -1001 : 0);
      if (k == 0) {
        EXPECT_EQ(r, std::vector<Real>(9000, -9));
      }
    });
    EXPECT_EQ(failures, 1);
  }
}

// Partitions whose indices need 64 bits, as far as memory reaches: functions of the caller's own.
TYPED_TEST(Interpolate, LargePartitions) {
  using Real = TypeParam;
  const int64_t n = int64_t(1) << 33;
  FittingTask<Real> task({0, 1}, n, 4, false);
  task->splineOrder = 0;
  const std::vector<Real> sites = {Real(-0.5), Real(0.25), Real(0.75), Real(1), Real(2)};
  std::vector<int64_t> cell(5);
  Log log;
  const auto r = results<Real>(task, sites,
                               Call<Real>{.type = 3,
                                          .cell = cell.data(),
                                          .left = answer<Real>,
                                          .right = answer<Real>,
                                          .inside = answer<Real>,
                                          .parameter = &log});
  for (size_t s = 0; s < 5; ++s) EXPECT_EQ(r[s], answered(sites[s], cell[s], 0));
  EXPECT_EQ(cell[0], 0);
  EXPECT_EQ(cell[3], n - 1);
  EXPECT_EQ(cell[4], n);
  EXPECT_NEAR(double(cell[1]), 0.25 * double(n), 1e-6 * double(n));
  EXPECT_EQ(log.lowest_cell, 0);
  EXPECT_EQ(log.highest_cell, n);
}

}
