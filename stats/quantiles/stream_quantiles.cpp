// Quantiles of a stream: one sketch for each variable, kept in the task from call to call.
#include "stats/precisions.h"
#include "stats/quantiles/sketch.h"
#include "stats/quantiles/variables.h"

namespace tarn::stats {
namespace {

template <class Real> struct StreamRun {
  SSTask* task;
  int64_t n, p, order_count;
  bool rows, query;
  Real epsilon;
  const Real *data, *orders;
  Real* quantiles;
  SketchHeader<Real>* headers;
  int64_t first, count; // the chunk that the fan-out takes in
  int32_t status;       // of the bodies: the last failure wins
};

template <class Real> int32_t check(const SSTask* task, uint64_t method_mask) {
  if (!task) return TARN_SS_ERROR_NULL_TASK;
  if (!task->observation_count || read_integer(task, task->observation_count) < 0) return TARN_SS_ERROR_OBSERVATIONS;
  if (read_integer(task, task->observation_count) > 0) {
    if (!task->observations) return TARN_SS_ERROR_NULL_DATA;
    if (!task->observation_storage) return TARN_SS_ERROR_NULL_STORAGE;
    if (!is_storage(read_integer(task, task->observation_storage))) return TARN_SS_ERROR_STORAGE;
  }
  if (!task->stream_quantiles) return -4070;
  if (!task->stream_orders) return -4068;
  if (!task->stream_order_count || read_integer(task, task->stream_order_count) < 0) return TARN_SS_ERROR_STREAM_ORDERS;
  if (!task->stream_param_count) return -4064;
  if (read_integer(task, task->stream_param_count) != 1) return -4066;
  if (!orders_valid(reals<Real>(task->stream_orders), read_integer(task, task->stream_order_count)))
    return TARN_SS_ERROR_STREAM_ORDERS;
  if (!task->stream_params) return -4065;
  if (!(method_mask & (TARN_SS_METHOD_STREAM_QUERY | TARN_SS_METHOD_STREAM_UPDATE))) return TARN_SS_ERROR_METHOD;
  const Real epsilon = *reals<Real>(task->stream_params);
  return epsilon > 0 && epsilon <= 1 ? TARN_SS_OK : TARN_SS_ERROR_STREAM_EPSILON;
}

template <class Real> int32_t start_stream(StreamRun<Real>& run) {
  run.headers = allocate<SketchHeader<Real>>(run.p);
  if (!run.headers) return TARN_SS_ERROR_ALLOCATION;
  for (int64_t j = 0; j < run.p; ++j) run.headers[j] = {0, -1, selected(run.task, j), nullptr};
  run.task->stream_state = run.headers;
  run.task->cleanup_hook = __kestSQuantilesFreeBuffers;
  run.task->cleanup_count = 1;
  return TARN_SS_OK;
}

// A later call may name variables again, but none that the first call left out.
template <class Real> int32_t continue_stream(StreamRun<Real>& run) {
  run.headers = static_cast<SketchHeader<Real>*>(run.task->stream_state);
  bool any = false;
  for (int64_t j = 0; j < run.p; ++j) {
    const bool active = run.headers[j].variable_active != 0;
    if (run.task->variable_mask && selected(run.task, j) && !active) return TARN_SS_ERROR_VARIABLE_MASK;
    any = any || active;
  }
  return any ? TARN_SS_OK : TARN_SS_ERROR_VARIABLE_MASK;
}

template <class Real> int64_t room_in_stage(const StreamRun<Real>& run, const SketchHeader<Real>& header) {
  if (header.stage_last < 0) return 0;
  return stage_sizes(header.stage_last, run.epsilon).capacity - header.stages[header.stage_last].seen;
}

// Opens a stage for each active variable that has none with room. One that failed half-way is completed by the next
// call, since variables that have room are passed over.
template <class Real> int32_t open_stages(StreamRun<Real>& run) {
  for (int64_t j = 0; j < run.p; ++j) {
    SketchHeader<Real>& header = run.headers[j];
    if (!header.variable_active || room_in_stage(run, header) > 0) continue;
    const int32_t status = open_stage(header, run.epsilon);
    if (status != TARN_SS_OK) return status;
  }
  return TARN_SS_OK;
}

template <class Real> void _vSSSQuantilesAddDataThreader(int64_t j, int32_t, int32_t, void* context) {
  StreamRun<Real>& run = *static_cast<StreamRun<Real>*>(context);
  if (!run.headers[j].variable_active) return;
  const Column<const Real> source = column(run.data, run.rows, j, run.n, run.p);
  const int32_t status = add_to_sketch(run.headers[j], source.base + run.first * source.step, source.step, run.count);
  if (status < 0) __atomic_store_n(&run.status, status, __ATOMIC_RELAXED);
}

template <class Real> int32_t take_in(StreamRun<Real>& run, const tarn_threader* threader) {
  for (run.first = 0; run.first < run.n; run.first += run.count) {
    int32_t status = open_stages(run);
    if (status != TARN_SS_OK) return status;
    run.count = run.n - run.first;
    for (int64_t j = 0; j < run.p; ++j)
      if (run.headers[j].variable_active) run.count = minimum(run.count, room_in_stage(run, run.headers[j]));
    run_loop(threader, run.p, 0, &run, _vSSSQuantilesAddDataThreader<Real>);
    if (run.status < 0) return run.status;
  }
  return open_stages(run);
}

// The parts of the active variables stand one behind the other.
template <class Real> int32_t answer(const StreamRun<Real>& run) {
  Real* out = run.quantiles;
  for (int64_t j = 0; j < run.p; ++j) {
    if (!run.headers[j].variable_active) continue;
    const int32_t status = query_sketch(run.headers[j], run.orders, run.order_count, out);
    if (status != TARN_SS_OK) return status;
    out += run.order_count;
  }
  return TARN_SS_OK;
}

template <class Real> int32_t stream_quantiles(SSTask* task, uint64_t method_mask, const tarn_threader* threader) {
  int32_t status = check<Real>(task, method_mask);
  if (status != TARN_SS_OK) return status;
  StreamRun<Real> run = {};
  run.task = task;
  run.n = read_integer(task, task->observation_count);
  run.p = task->dimension ? read_integer(task, task->dimension) : 0;
  if (run.p < 1) return task->stream_state ? TARN_SS_ERROR_VARIABLE_MASK : TARN_SS_ERROR_DIMENSION;
  run.epsilon = *reals<Real>(task->stream_params);
  run.orders = reals<Real>(task->stream_orders);
  run.order_count = read_integer(task, task->stream_order_count);
  run.quantiles = reals<Real>(task->stream_quantiles);
  run.data = reals<Real>(task->observations);
  run.rows = run.n > 0 && (run.p == 1 || stores_rows(read_integer(task, task->observation_storage)));
  status = task->stream_state ? continue_stream(run) : start_stream(run);
  if (status == TARN_SS_OK) status = open_stages(run);
  if (status == TARN_SS_OK) status = take_in(run, threader);
  if (status == TARN_SS_OK && method_mask & TARN_SS_METHOD_STREAM_QUERY) status = answer(run);
  return status;
}

}
}

// The headers and stages of both precisions have one layout, and their blocks are freed alike.
TARN_EXPORT void __kestSQuantilesFreeBuffers(void* task_record) {
  using namespace tarn::stats;
  SSTask* task = static_cast<SSTask*>(task_record);
  if (!task || !task->stream_state) return;
  SketchHeader<double>* headers = static_cast<SketchHeader<double>*>(task->stream_state);
  const int64_t p = read_integer(task, task->dimension);
  for (int64_t j = 0; j < p; ++j) free_stages(headers[j]);
  tarn_serv_deallocate(headers);
  task->stream_state = nullptr;
}

#define TARN_STREAM_QUANTILES(t, Real)                                                                                 \
  TARN_EXPORT int32_t _kest##t##SSStreamQuantiles(void* task, uint64_t, uint64_t method_mask,                          \
                                                  const tarn_threader* threader) {                                     \
    return tarn::stats::stream_quantiles<Real>(static_cast<SSTask*>(task), method_mask, threader);                     \
  }
TARN_TWINS(TARN_STREAM_QUANTILES)
