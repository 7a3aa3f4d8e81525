// Sorting each variable of a data set.
#include "stats/precisions.h"
#include "stats/quantiles/variables.h"

namespace tarn::stats {
namespace {

template <class Real> struct SortRun {
  int64_t n, p;
  const Real* data;
  Real* output;
  bool rows, output_rows;
  const int64_t* variables;
  Real* work;
  int64_t work_size; // of each thread: scratch, and a staging copy where the output is not contiguous
};

template <class Real> void _vSSSortThreader(int64_t iteration, int32_t thread, int32_t, void* context) {
  const SortRun<Real>& run = *static_cast<const SortRun<Real>*>(context);
  const int64_t v = run.variables[iteration], n = run.n;
  const Column<const Real> source = column(run.data, run.rows, v, n, run.p);
  const Column<Real> target = column(run.output, run.output_rows, v, n, run.p);
  Real *scratch = run.work + thread * run.work_size, *staging = scratch + n;
  Real* sorted = target.step == 1 ? target.base : staging;
  if (sorted != source.base) copy_column(source, Column<Real>{sorted, 1}, n);
  sort_reals(sorted, scratch, n);
  if (target.step != 1) copy_column(Column<const Real>{sorted, 1}, target, n);
}

int32_t check(const SSTask* task, uint64_t method_mask) {
  if (!task) return TARN_SS_ERROR_NULL_TASK;
  if (!task->sorted_observations) return -4084;
  if (!task->sorted_storage || !task->observation_storage) return TARN_SS_ERROR_NULL_STORAGE;
  const int64_t output = read_integer(task, task->sorted_storage);
  const int64_t input = read_integer(task, task->observation_storage);
  if (task->sorted_observations == task->observations) {
    if (stores_rows(output) != stores_rows(input)) return TARN_SS_ERROR_NULL_STORAGE;
    if (task->variable_mask) return TARN_SS_ERROR_SORT_IN_PLACE;
  }
  if (!is_storage(input) || !is_storage(output)) return TARN_SS_ERROR_STORAGE;
  if (!(method_mask & TARN_SS_METHOD_SORT)) return TARN_SS_ERROR_METHOD;
  return check_count_and_data(task);
}

template <class Real> int32_t sort(const SSTask* task, uint64_t method_mask, const tarn_threader* threader) {
  const int32_t status = check(task, method_mask);
  if (status != TARN_SS_OK) return status;
  SortRun<Real> run = {};
  run.n = read_integer(task, task->observation_count);
  run.p = read_integer(task, task->dimension);
  run.data = reals<Real>(task->observations);
  run.output = reals<Real>(task->sorted_observations);
  run.rows = run.p == 1 || stores_rows(read_integer(task, task->observation_storage));
  run.output_rows = run.p == 1 || stores_rows(read_integer(task, task->sorted_storage));
  run.work_size = run.output_rows ? run.n : 2 * run.n;

  constexpr int64_t memory = int64_t(1) << 30;
  const int64_t limit = max_threads(threader), bytes = run.output_rows ? 8 : 16;
  const int64_t threads = minimum(minimum(limit, run.p), maximum(1, limit * memory / bytes / run.n));
  int64_t* variables = allocate<int64_t>(run.p);
  run.work = variables && run.n <= INT64_MAX / 64 / threads ? allocate<Real>(threads * run.work_size) : nullptr;
  if (run.work) {
    run.variables = variables;
    const int64_t count = list_selected(task, run.p, variables);
    run_loop(threader, count, static_cast<int32_t>(threads), &run, _vSSSortThreader<Real>);
  }
  const bool done = run.work != nullptr;
  tarn_serv_deallocate(run.work);
  tarn_serv_deallocate(variables);
  return done ? TARN_SS_OK : TARN_SS_ERROR_ALLOCATION;
}

}
}

#define TARN_SORT(t, Real)                                                                                             \
  TARN_EXPORT int32_t _kest##t##SSSort(void* task, uint64_t, uint64_t method_mask, const tarn_threader* threader) {    \
    return tarn::stats::sort<Real>(static_cast<const SSTask*>(task), method_mask, threader);                           \
  }
TARN_TWINS(TARN_SORT)
