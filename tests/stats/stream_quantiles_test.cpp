// The quantile sketch of a stream of blocks.
#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "stats/streams_of_data.h"
#include "support/failing_allocator.h"
#include "support/pthread_threader.h"

namespace {

using namespace tarn::test;

template <class C> class Stream : public testing::Test {};
using Cases = testing::Types<Case<double, int32_t>, Case<double, int64_t>, Case<float, int32_t>, Case<float, int64_t>>;
TYPED_TEST_SUITE(Stream, Cases);

TYPED_TEST(Stream, RankErrorWithinEpsilon) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  set_max_threads(2);
  for (Shape shape : {Shape::random, Shape::sorted, Shape::reversed, Shape::organ_pipe, Shape::constant, Shape::few}) {
    for (int64_t n : {100, 1000, 10000, 200000}) {
      for (double epsilon : {0.2, 0.05, 0.01, 0.003}) {
        if (epsilon * double(n) < 1) continue;
        for (int64_t block : {int64_t(137), n}) {
          const Outcome outcome =
              run_stream<Real, Int>(shape, n, epsilon, block, block == n ? pthread_threader() : nullptr);
          EXPECT_LE(outcome.worst, 1) << "shape " << int(shape) << " n " << n << " epsilon " << epsilon << " block "
                                      << block;
        }
      }
    }
  }
}

TYPED_TEST(Stream, ChecksInOrder) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  Dataset<Real> set = random_dataset<Real>(20, 2, true, Weights::none, false, 1);
  TaskOf<Real, Int> task(set);
  SSTask* record = task.record();
  const SSTask whole = *record;
  Int bad_word = 3, minus = -1, count = 2, params = 2;
  Real orders[2] = {Real(0.5), Real(1.01)}, out[4], epsilon = 0;
  auto status = [&](uint64_t method) { return Api<Real>::stream(record, 0, method, nullptr); };
  EXPECT_EQ(Api<Real>::stream(nullptr, 0, Query, nullptr), -4031);
  record->observation_count = nullptr;
  EXPECT_EQ(status(0), -4002);
  record->observation_count = &minus;
  EXPECT_EQ(status(0), -4002);
  record->observation_count = whole.observation_count;
  record->observations = nullptr;
  EXPECT_EQ(status(0), -4032);
  record->observations = whole.observations;
  record->observation_storage = nullptr;
  EXPECT_EQ(status(0), -4044);
  record->observation_storage = &bad_word;
  EXPECT_EQ(status(0), -4003);
  Int zero = 0; // without observations their array and storage are not looked at
  record->observation_count = &zero;
  EXPECT_EQ(status(0), -4070);
  record->observation_count = whole.observation_count;
  record->observation_storage = whole.observation_storage;
  EXPECT_EQ(status(0), -4070);
  record->stream_quantiles = out;
  EXPECT_EQ(status(0), -4068);
  record->stream_orders = orders;
  EXPECT_EQ(status(0), -4069);
  record->stream_order_count = &minus;
  EXPECT_EQ(status(0), -4069);
  record->stream_order_count = &count;
  EXPECT_EQ(status(0), -4064);
  record->stream_param_count = &params;
  EXPECT_EQ(status(0), -4066);
  params = 1;
  EXPECT_EQ(status(0), -4069);
  orders[1] = 1;
  EXPECT_EQ(status(0), -4065);
  record->stream_params = &epsilon;
  EXPECT_EQ(status(0), -4029);
  EXPECT_EQ(status(1), -4029);
  for (Real wrong : {Real(0), Real(-1), Real(1.5), std::numeric_limits<Real>::quiet_NaN()}) {
    epsilon = wrong;
    EXPECT_EQ(status(Query), -4067) << wrong;
    EXPECT_EQ(record->stream_state, nullptr);
  }
  epsilon = Real(0.1);
  EXPECT_EQ(status(Update), 0);
  EXPECT_NE(record->stream_state, nullptr);
  EXPECT_EQ(record->cleanup_count, 1);
  EXPECT_EQ(record->cleanup_hook, __kestSQuantilesFreeBuffers);
}

TYPED_TEST(Stream, SizesForEpsilonOne) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  Dataset<Real> set = random_dataset<Real>(1, 1, true, Weights::none, false, 1);
  StreamTask<Real, Int> task(set, {Real(0.5)}, Real(1));
  ASSERT_EQ(task.call(Update), 0);
  const int64_t* header = static_cast<const int64_t*>(task.record()->stream_state);
  EXPECT_EQ(header[0], 1);
  EXPECT_EQ(header[1], 0);
  EXPECT_EQ(header[2], 1);
  const int64_t* stage = reinterpret_cast<const int64_t*>(header[3]);
  EXPECT_EQ(stage[0], 1);          // seen
  EXPECT_EQ(stage[1], 1);          // b
  EXPECT_EQ(stage[2], 3);          // L
  ASSERT_EQ(task.call(Update), 0); // two observations fill the first stage
  EXPECT_EQ(header[0], 2);
  EXPECT_EQ(header[1], 1);
  ASSERT_EQ(task.call(Query), 0);
  EXPECT_EQ(task.out[0], set.data[0]);
}

// Block sizes below one and odd ones, over many lengths. On top of epsilon N come the fraction of a rank that a query
// drops and the last entry of an even block, which a halved row no longer has.
TYPED_TEST(Stream, AnyEpsilonAndLength) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  for (double epsilon : {1.0, 0.99, 0.9, 0.75, 0.6, 0.51, 0.5, 0.4, 0.3, 0.13})
    for (int64_t n : {1, 2, 3, 5, 17, 64, 999})
      EXPECT_LE((run_stream<Real, Int>(Shape::random, n, epsilon, 7).worst), 1 + 2 / (epsilon * double(n)))
          << epsilon << " " << n;
}

TYPED_TEST(Stream, SmallStreamsAreExact) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  // As long as the buffer has not filled, every element is there.
  Dataset<Real> set = random_dataset<Real>(99, 2, false, Weights::none, false, 1);
  std::vector<Real> orders;
  for (int k = 1; k <= 99; ++k) orders.push_back(Real(k) / 99);
  StreamTask<Real, Int> task(set, orders, Real(0.01));
  ASSERT_EQ(task.call(Query), 0);
  for (int64_t j = 0; j < 2; ++j) {
    std::vector<Real> sorted;
    for (int64_t i = 0; i < 99; ++i) sorted.push_back(set.at(j, i));
    std::sort(sorted.begin(), sorted.end());
    for (int k = 0; k < 99; ++k) {
      // An order that is not exact in binary may round either way to the next rank.
      const Real got = task.out[j * 99 + k];
      ASSERT_TRUE(got == sorted[k] || got == sorted[std::max(k - 1, 0)]) << k;
    }
  }
}

TYPED_TEST(Stream, EqualElementsAndQueriesInBetween) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  Dataset<Real> set = random_dataset<Real>(5000, 3, true, Weights::none, false, 4);
  StreamTask<Real, Int> twice(set, {Real(0.1), Real(0.5)}, Real(0.02)), once(set, {Real(0.1), Real(0.5)}, Real(0.02));
  twice.threader = pthread_threader(); // and threads change nothing
  set_max_threads(3);
  const Dataset<Real> half = set.part(0, 2500), rest = set.part(2500, 5000);
  for (const Dataset<Real>* part : {&half, &rest}) {
    twice.turn_to(*part);
    once.turn_to(*part);
    ASSERT_EQ(twice.call(Query), 0); // a query leaves the sketch as it was
    ASSERT_EQ(twice.n, Int(2500));
    ASSERT_EQ(once.call(Update), 0);
  }
  once.n = 0;
  ASSERT_EQ(once.call(Query), 0);
  EXPECT_EQ(once.out, twice.out);
}

TYPED_TEST(Stream, MaskOfTheFirstCallHolds) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  Dataset<Real> set = random_dataset<Real>(60, 4, true, Weights::none, false, 4);
  set.mask = {0, 1, 0, 1};
  StreamTask<Real, Int> task(set, {Real(0.5)}, Real(0.01));
  ASSERT_EQ(task.call(Query), 0);
  for (int part = 0; part < 2; ++part) { // the parts of variables 1 and 3, one behind the other
    std::vector<Real> sorted;
    for (int64_t i = 0; i < 60; ++i) sorted.push_back(set.at(1 + 2 * part, i));
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(task.out[part], sorted[29]);
  }
  EXPECT_EQ(task.out[2], Real(-777));
  Int other[4] = {1, 1, 0, 1}, fewer[4] = {0, 0, 0, 1};
  task.record()->variable_mask = other;
  EXPECT_EQ(task.call(Update), -4004);
  task.record()->variable_mask = fewer;
  EXPECT_EQ(task.call(Update), 0);
  task.record()->variable_mask = nullptr; // what the first call chose still holds
  EXPECT_EQ(task.call(Update), 0);
  const int64_t* header = static_cast<const int64_t*>(task.record()->stream_state);
  EXPECT_EQ(header[2], 0);
  EXPECT_EQ(header[6], 1);
  task.p = 0;
  EXPECT_EQ(task.call(Update), -4004);
  task.p = 4;

  Int nobody[4] = {0, 0, 0, 0};
  Dataset<Real> plain = random_dataset<Real>(60, 4, true, Weights::none, false, 4);
  StreamTask<Real, Int> idle(plain, {Real(0.5)}, Real(0.01));
  idle.record()->variable_mask = nobody;
  EXPECT_EQ(idle.call(Update), 0);
  EXPECT_EQ(idle.call(Update), -4004);
}

TYPED_TEST(Stream, FreeingTheBuffersStartsAfresh) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  Dataset<Real> set = random_dataset<Real>(400, 2, true, Weights::none, false, 4);
  StreamTask<Real, Int> task(set, {Real(0.5)}, Real(0.01));
  ASSERT_EQ(task.call(Query), 0);
  const std::vector<Real> first = task.out;
  __kestSQuantilesFreeBuffers(task.task);
  EXPECT_EQ(task.record()->stream_state, nullptr);
  __kestSQuantilesFreeBuffers(task.task); // nothing left to free
  ASSERT_EQ(task.call(Query), 0);
  EXPECT_EQ(task.out, first);
}

// Memory that fails anywhere: a status or a whole answer, and the stream can go on.
TYPED_TEST(Stream, AllocationFailures) {
  using Real = typename TypeParam::Real;
  using Int = typename TypeParam::Int;
  const Dataset<Real> set = random_dataset<Real>(700, 2, true, Weights::none, false, 4);
  int64_t failures = 0;
  const int64_t sites = for_each_allocation_failure([&](int64_t) {
    StreamTask<Real, Int> task(set, {Real(0.5)}, Real(0.05));
    if (!task.task) return; // the task itself
    const int32_t status = task.call(Query);
    ASSERT_TRUE(status == 0 || status == -4000);
    failures += status != 0;
    if (status == 0) return;
    ASSERT_EQ(task.call(Query), 0);
    for (int64_t j = 0; j < 2; ++j) {
      std::vector<Real> sorted;
      for (int64_t i = 0; i < set.n; ++i) sorted.push_back(set.at(j, i));
      std::sort(sorted.begin(), sorted.end());
      EXPECT_LE(rank_error(sorted, task.out[j], 0.5), 0.3 * 700);
    }
  });
  EXPECT_GE(sites, 10);
  EXPECT_GE(failures, 8);
}

}
