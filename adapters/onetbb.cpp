#include "tarn/onetbb_threader.h"

#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

namespace tbb = oneapi::tbb;

int32_t max_threads() { return tbb::this_task_arena::max_concurrency(); }
int32_t chosen(int32_t asked) { return asked > 0 ? asked : max_threads(); }

// Calls task(0) to task(count - 1), in parallel. A thread that waits for the end of these takes up no other work
// meanwhile: when they are nested in the body of an outer loop, that could be the outer loop's next iteration, which,
// on top of the earlier one on the same stack, would wait for ever for its turn.
template <class Task> void in_parallel(int32_t count, Task task) {
  tbb::this_task_arena::isolate([&] { tbb::parallel_for(int32_t(0), count, task, tbb::simple_partitioner()); });
}

// Thread numbers below `threads`, each held by one body at a time: every runner takes iterations from a common count.
template <class Body> void run(int64_t count, int32_t threads, Body body) {
  const int32_t runners = static_cast<int32_t>(std::min<int64_t>(threads, count));
  std::atomic<int64_t> next{0};
  in_parallel(runners, [&](int32_t id) {
    for (int64_t i; (i = next.fetch_add(1)) < count;) body(i, id);
  });
}

void loop(int64_t count, int32_t asked, void* context, tarn_loop_body body) {
  const int32_t threads = chosen(asked);
  run(count, threads, [&](int64_t i, int32_t id) { body(i, id, threads, context); });
}

// Iterations are taken in ascending order and none waits for a later one, so waiting for the turn cannot block.
struct OrderedLoop {
  std::atomic<int64_t> next{0};
};
thread_local OrderedLoop* current = nullptr;

void wait_for_turn(const OrderedLoop& state, int64_t iteration) {
  while (state.next.load(std::memory_order_acquire) < iteration) std::this_thread::yield();
}

void ordered_loop(int64_t count, int32_t asked, void* context, tarn_loop_body body) {
  const int32_t threads = chosen(asked);
  OrderedLoop state;
  run(count, threads, [&](int64_t i, int32_t id) {
    OrderedLoop* const outer = current;
    current = &state;
    body(i, id, threads, context);
    current = outer;
    wait_for_turn(state, i);
    int64_t mine = i; // still at this iteration when the body had no section
    state.next.compare_exchange_strong(mine, i + 1);
  });
}

void ordered(int64_t iteration, int32_t id, int32_t threads, void* context, tarn_loop_body section) {
  OrderedLoop& state = *current;
  wait_for_turn(state, iteration);
  section(iteration, id, threads, context);
  state.next.store(iteration + 1, std::memory_order_release);
}

void region(int32_t asked, void* context, tarn_region_body body) {
  const int32_t threads = chosen(asked);
  in_parallel(threads, [&](int32_t id) { body(id, 0, threads, context); });
}

const tarn_threader table = {loop, ordered_loop, region, ordered, max_threads};

}

__attribute__((visibility("default"))) const tarn_threader* tarn_onetbb_threader(void) { return &table; }
