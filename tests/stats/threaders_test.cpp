// Every ready threader table against the rules that the library relies on.
#include <atomic>
#include <chrono>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "stats/dataset.h"
#include "support/pthread_threader.h"
#include "tarn/serial_threader.h"
#ifdef TARN_HAS_OPENMP
#include "tarn/openmp_threader.h"
#endif
#ifdef TARN_HAS_ONETBB
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_arena.h>

#include "tarn/onetbb_threader.h"
#endif

namespace {

struct Named {
  const char* name;
  const tarn_threader* table;
};

std::vector<Named> tables() {
  return {
      {"serial", tarn_serial_threader()},
      {"pthread", tarn::test::pthread_threader()},
#ifdef TARN_HAS_OPENMP
      {"OpenMP", tarn_openmp_threader()},
#endif
#ifdef TARN_HAS_ONETBB
      {"oneTBB", tarn_onetbb_threader()},
#endif
  };
}

struct Seen {
  std::vector<std::atomic<int>> times;
  std::vector<std::atomic<int>> busy; // bodies on each thread number now
  std::atomic<int> faults{0};
  std::vector<int64_t> order; // ordered sections are one at a time, so this needs no lock
  const tarn_threader* table = nullptr;
  explicit Seen(size_t count) : times(count), busy(64) {}
};

void loop_body(int64_t i, int32_t id, int32_t threads, void* context) {
  Seen& seen = *static_cast<Seen*>(context);
  if (id < 0 || id >= threads || threads > 64 || seen.busy[size_t(id)]++ != 0) seen.faults++;
  seen.times[size_t(i)]++;
  seen.busy[size_t(id)]--;
}

void region_body(int32_t id, int32_t zero, int32_t threads, void* context) {
  Seen& seen = *static_cast<Seen*>(context);
  if (zero != 0 || id < 0 || id >= threads) seen.faults++;
  seen.times[size_t(id)]++;
}

void section(int64_t i, int32_t, int32_t, void* context) { static_cast<Seen*>(context)->order.push_back(i); }

void ordered_body(int64_t i, int32_t id, int32_t threads, void* context) {
  Seen& seen = *static_cast<Seen*>(context);
  seen.table->threader_ordered(i, id, threads, context, section);
  seen.times[size_t(i)]++;
}

TEST(Threaders, LoopsRunEachIterationOnce) {
  tarn::test::set_max_threads(4);
  for (const Named& named : tables()) {
    EXPECT_GE(named.table->threader_max_threads(), 1) << named.name;
    for (int32_t threads : {0, 1, 2, 5}) {
      for (size_t count : {size_t(0), size_t(1), size_t(3), size_t(200)}) {
        Seen seen(count + 1);
        named.table->threader_for(int64_t(count), threads, &seen, loop_body);
        for (size_t i = 0; i < count; ++i) ASSERT_EQ(seen.times[i], 1) << named.name;
        EXPECT_EQ(seen.faults, 0) << named.name;
      }
    }
  }
}

TEST(Threaders, OrderedSectionsRunInOrder) {
  tarn::test::set_max_threads(4);
  for (const Named& named : tables()) {
    for (int32_t threads : {0, 1, 3}) {
      Seen seen(300);
      seen.table = named.table;
      named.table->threader_for_ordered(300, threads, &seen, ordered_body);
      ASSERT_EQ(seen.order.size(), 300u) << named.name;
      for (size_t i = 0; i < 300; ++i) ASSERT_EQ(seen.order[i], int64_t(i)) << named.name;
    }
  }
}

TEST(Threaders, RegionsRunOnceOnEachThreadNumber) {
  tarn::test::set_max_threads(4);
  for (const Named& named : tables()) {
    for (int32_t threads : {1, 2, 7}) {
      Seen seen(8);
      named.table->threader_region(threads, &seen, region_body);
      for (int32_t id = 0; id < 8; ++id) ASSERT_EQ(seen.times[size_t(id)], id < threads ? 1 : 0) << named.name;
      EXPECT_EQ(seen.faults, 0) << named.name;
    }
  }
}

struct Nested {
  const tarn_threader* table;
  std::atomic<int> sum{0};
};
void inner(int64_t, int32_t, int32_t, void* context) { static_cast<Nested*>(context)->sum++; }
void outer(int64_t, int32_t, int32_t, void* context) {
  Nested* nested = static_cast<Nested*>(context);
  nested->table->threader_for(10, 2, nested, inner);
}

TEST(Threaders, MayBeReentered) {
  for (const Named& named : tables()) {
    Nested nested{named.table};
    named.table->threader_for(6, 3, &nested, outer);
    EXPECT_EQ(nested.sum, 60) << named.name;
  }
}

// The tables that programs get; the one for tests knows a single ordered loop at a time, with a section in each body.
std::vector<Named> delivered_tables() {
  std::vector<Named> all = tables();
  std::erase_if(all, [](const Named& named) { return named.table == tarn::test::pthread_threader(); });
  return all;
}

// An ordered loop whose bodies fan out themselves: a thread that waits for the end of an inner loop must not begin
// another iteration of the outer one meanwhile, which would wait for the iteration beneath it.
struct NestedOrder {
  const tarn_threader* table;
  int64_t next = 0;
  std::atomic<int> inner{0}, faults{0};
};
void slow_inner(int64_t, int32_t, int32_t, void* context) {
  std::this_thread::sleep_for(std::chrono::microseconds(50));
  static_cast<NestedOrder*>(context)->inner++;
}
void slow_region(int32_t, int32_t, int32_t, void* context) { slow_inner(0, 0, 1, context); }
void in_turn(int64_t i, int32_t, int32_t, void* context) {
  NestedOrder& state = *static_cast<NestedOrder*>(context);
  if (state.next++ != i) state.faults++;
}
void ordered_inner(int64_t i, int32_t id, int32_t threads, void* context) {
  NestedOrder& state = *static_cast<NestedOrder*>(context);
  state.table->threader_ordered(i, id, threads, context, in_turn);
}
void ordered_outer(int64_t i, int32_t id, int32_t threads, void* context) {
  NestedOrder& state = *static_cast<NestedOrder*>(context);
  state.table->threader_for(8, 8, context, slow_inner);
  state.table->threader_region(4, context, slow_region);
  NestedOrder own{state.table};
  state.table->threader_for_ordered(8, 4, &own, ordered_inner);
  if (own.next != 8 || own.faults != 0) state.faults++;
  state.table->threader_ordered(i, id, threads, context, in_turn);
}

TEST(Threaders, OrderedLoopsNest) {
  const auto run = [](const Named& named) {
    for (int repeat = 0; repeat < 10; ++repeat) {
      NestedOrder state{named.table};
      named.table->threader_for_ordered(20, 8, &state, ordered_outer);
      EXPECT_EQ(state.next, 20) << named.name;
      EXPECT_EQ(state.inner, 20 * 12) << named.name;
      EXPECT_EQ(state.faults, 0) << named.name;
    }
  };
  alarm(60); // a loop that waits for itself never ends
#ifdef TARN_HAS_ONETBB
  // More workers than a small machine has processors.
  oneapi::tbb::global_control workers(oneapi::tbb::global_control::max_allowed_parallelism, 8);
  oneapi::tbb::task_arena arena(8);
  arena.execute([&] {
    for (const Named& named : delivered_tables()) run(named);
  });
#else
  for (const Named& named : delivered_tables()) run(named);
#endif
  alarm(0);
}

// What is empty runs nothing, and a loop whose bodies have no section, or only some, still ends.
struct Few {
  const tarn_threader* table;
  std::vector<int64_t> order;
  std::atomic<int> bodies{0};
};
void few_section(int64_t i, int32_t, int32_t, void* context) { static_cast<Few*>(context)->order.push_back(i); }
void few_body(int64_t i, int32_t id, int32_t threads, void* context) {
  Few& few = *static_cast<Few*>(context);
  few.bodies++;
  if (i % 3 == 1) few.table->threader_ordered(i, id, threads, context, few_section);
}

TEST(Threaders, OrderedLoopsWithFewSections) {
  alarm(60);
  for (const Named& named : delivered_tables())
    for (int32_t threads : {-1, 0, 1, 2, 9})
      for (int64_t count : {0, 1, 2, 5, 100}) {
        Few few{named.table, {}};
        named.table->threader_for_ordered(count, threads, &few, few_body);
        EXPECT_EQ(few.bodies, count) << named.name;
        std::vector<int64_t> expected;
        for (int64_t i = 1; i < count; i += 3) expected.push_back(i);
        EXPECT_EQ(few.order, expected) << named.name << " " << threads << " " << count;
      }
  alarm(0);
}

// All tables lead to the same estimates but for rounding, and to the same bits for what is not split.
TEST(Threaders, ServeTheStatistics) {
  using namespace tarn::test;
  const Dataset<double> set = random_dataset<double>(20000, 6, false, Weights::positive, false, 2);
  std::vector<double> first_mean, first_median;
  for (const Named& named : tables()) {
    TaskOf<double, int64_t> task(set);
    std::vector<double> mean(6), covariance(36), median(6);
    int64_t storage = 0, count = 1;
    const double order = 0.5;
    __kestdSSEditCovCor(task.task, mean.data(), covariance.data(), &storage, nullptr, nullptr);
    __kestdSSEditQuantiles(task.task, &count, &order, median.data(), nullptr, nullptr);
    ASSERT_EQ(_kestdSSBasic(task.task, TARN_SS_MEAN | TARN_SS_COVARIANCE, TARN_SS_METHOD_ONE_PASS, named.table), 0);
    ASSERT_EQ(_kestdSSQuantiles(task.task, TARN_SS_QUANTILES, TARN_SS_METHOD_FAST, named.table), 0);
    if (first_mean.empty()) first_mean = mean, first_median = median;
    for (size_t j = 0; j < 6; ++j) EXPECT_NEAR(mean[j], first_mean[j], 1e-13) << named.name;
    EXPECT_EQ(median, first_median) << named.name;
  }
}

}
