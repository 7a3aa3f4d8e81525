#include "tarn/openmp_threader.h"

#include <omp.h>
#include <sched.h>

namespace {

int32_t chosen(int32_t asked) { return asked > 0 ? asked : omp_get_max_threads(); }

void loop(int64_t count, int32_t asked, void* context, tarn_loop_body body) {
  const int32_t threads = chosen(asked);
#pragma omp parallel for schedule(dynamic, 1) num_threads(threads)
  for (int64_t i = 0; i < count; ++i) body(i, omp_get_thread_num(), threads, context);
}

// An ordered section is found by its own loop: OpenMP binds the construct to the loop in which it stands, which is why
// the section of iteration i waits for a count instead.
struct OrderedLoop {
  void* context;
  tarn_loop_body body;
  int64_t next;
};
thread_local OrderedLoop* current = nullptr;

void ordered_loop(int64_t count, int32_t asked, void* context, tarn_loop_body body) {
  const int32_t threads = chosen(asked);
  OrderedLoop state = {context, body, 0};
// Monotonic: with iterations dealt out beforehand, as a run time may else do, the threads would wait for the first one.
#pragma omp parallel for schedule(monotonic : dynamic, 1) num_threads(threads)
  for (int64_t i = 0; i < count; ++i) {
    OrderedLoop* const outer = current;
    current = &state;
    body(i, omp_get_thread_num(), threads, context);
    current = outer;
    // A body without a section, or past it: its turn is over once those before it are.
    while (__atomic_load_n(&state.next, __ATOMIC_ACQUIRE) < i) sched_yield();
    if (__atomic_load_n(&state.next, __ATOMIC_ACQUIRE) == i) __atomic_store_n(&state.next, i + 1, __ATOMIC_RELEASE);
  }
}

void ordered(int64_t iteration, int32_t id, int32_t threads, void* context, tarn_loop_body section) {
  while (__atomic_load_n(&current->next, __ATOMIC_ACQUIRE) < iteration) sched_yield();
  section(iteration, id, threads, context);
  __atomic_store_n(&current->next, iteration + 1, __ATOMIC_RELEASE);
}

void region(int32_t asked, void* context, tarn_region_body body) {
  const int32_t threads = chosen(asked);
#pragma omp parallel num_threads(threads)
  {
    const int32_t given = omp_get_num_threads();
    for (int32_t id = omp_get_thread_num(); id < threads; id += given) body(id, 0, threads, context);
  }
}

int32_t max_threads() { return omp_get_max_threads(); }

const tarn_threader table = {loop, ordered_loop, region, ordered, max_threads};

}

__attribute__((visibility("default"))) const tarn_threader* tarn_openmp_threader(void) { return &table; }
