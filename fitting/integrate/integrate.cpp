// tarn_df_kernel_dDFIntegrate1D: its checks, and the work on the pairs of limits in blocks, which threads may share.
#include "fitting/integrate/integrators.h"

#include "fitting/search/search.h"
#include "fitting/threads.h"

namespace tarn::fitting {
namespace {

// The least number of pairs for which threads pay, by search method; the last is of no method.
constexpr int64_t __dfIntegrThreadThresholds[] = {256, 384, 640, 512, 256, 640, 640, 0};
static_assert(sizeof __dfIntegrThreadThresholds / sizeof(int64_t) == search_methods + 1);

constexpr int64_t scratch_of_worker = block_pairs + 1; // reals; workers do not write side by side
constexpr int64_t reals_on_stack = 2048;
constexpr int64_t close_peaks = 8;

// The left or the right limits of a call.
template <class Real> struct LimitArray {
  const Real* limit; // null where they are equally spaced
  UniformSites<Real> uniform;
  SearchMethod method;
  int64_t peak;
  SearchRun<Real> search;
};

// What the threads share.
template <class Real> struct IntegrationWork {
  Integration<Real> call;
  Interpolant kind;
  LimitArray<Real> left, right;
  bool one_search; // both arrays crowd about one peak: one search for both
  int64_t pairs, cell_flags;
  Real* scratch; // for each thread, with call-backs
  FirstFailure failure;
};

template <class Real>
const Real* limits_of_block(const LimitArray<Real>& array, int64_t from, int64_t count, Real* own) {
  if (array.limit) return array.limit + from;
  expand(array.uniform, from, count, own);
  return own;
}

template <class Real>
int32_t search_limits(const IntegrationWork<Real>& work, const LimitArray<Real>& array, int64_t count,
                      const Real* limit, int64_t* cell) {
  SearchRun<Real> search = array.search; // with a cursor of its own
  return search_kernel<Real>(array.method)(search, count, limit, cell, work.cell_flags);
}

// Where threads share the blocks, the integrator of the form with call-backs finds its scratch by thread.
template <bool Callbacks, class Real>
int32_t integrate_block(const IntegrationWork<Real>& work, int64_t block, int64_t thread) {
  const int64_t from = block * block_pairs, count = minimum(block_pairs, work.pairs - from);
  Real own[2 * block_pairs];
  int64_t cells[2 * block_pairs];
  const Real* left = limits_of_block(work.left, from, count, own);
  const Real* right = limits_of_block(work.right, from, count, own + block_pairs);
  int64_t* right_cells = cells + block_pairs;
  if (work.one_search) {
    right_cells = cells + count;
    Real both[2 * block_pairs];
    for (int64_t s = 0; s < count; ++s) both[s] = left[s], both[count + s] = right[s];
    search_limits(work, work.left, 2 * count, both, cells);
  } else {
    int32_t status = search_limits(work, work.left, count, left, cells);
    if (status < 0) return status;
    status = search_limits(work, work.right, count, right, right_cells);
    if (status < 0) return status;
  }
  return integrator<Real>(work.kind, Callbacks)(work.call, {from, count, left, right, cells, right_cells},
                                                Callbacks ? work.scratch + thread * scratch_of_worker : nullptr);
}

template <bool Callbacks, class Real> void take_block(IntegrationWork<Real>& work, int64_t block, int32_t thread) {
  if (failed_before(work.failure, block)) return;
  const int32_t status = integrate_block<Callbacks>(work, block, thread);
  if (status < 0) record_failure(work.failure, block, status);
}
template <class Real> void _v1DIntegrThreader(int64_t block, int32_t thread, int32_t, void* context) {
  take_block<false>(*static_cast<IntegrationWork<Real>*>(context), block, thread);
}
template <class Real> void _v1DIntegrThreaderCB(int64_t block, int32_t thread, int32_t, void* context) {
  take_block<true>(*static_cast<IntegrationWork<Real>*>(context), block, thread);
}

// Threads take whole blocks; the calling thread does the rest.
template <class Real>
int32_t _Integr1DKernel(IntegrationWork<Real>& work, bool callbacks, const tarn_threader* threader) {
  const int64_t whole = work.pairs / block_pairs, blocks = (work.pairs + block_pairs - 1) / block_pairs;
  const int64_t threshold = maximum(__dfIntegrThreadThresholds[static_cast<int>(work.left.method)],
                                    __dfIntegrThreadThresholds[static_cast<int>(work.right.method)]);
  const int64_t available = max_threads(threader);
  const int64_t threads = available > 1 && work.pairs >= threshold ? minimum(available, whole) : 1;
  Real on_stack[reals_on_stack];
  const int64_t reals = callbacks ? threads * scratch_of_worker : 0;
  work.scratch = reals <= reals_on_stack ? on_stack : allocate<Real>(reals);
  if (!work.scratch) return TARN_DF_ERROR_ALLOCATION;

  const tarn_loop_body body = callbacks ? _v1DIntegrThreaderCB<Real> : _v1DIntegrThreader<Real>;
  int64_t block = 0;
  if (threads > 1) {
    run_loop(threader, whole, threads, &work, body);
    block = whole;
  }
  for (; block < blocks; ++block) body(block, 0, 1, &work);
  if (work.scratch != on_stack) tarn_serv_deallocate(work.scratch);
  work.scratch = nullptr;
  return status_of(work.failure);
}

template <class Real> struct LimitRequest {
  const Real* limit;
  int64_t hint;
  const Real* data_hint;
};

template <class Real>
int32_t choose_for(LimitArray<Real>& array, const DFTask* task, const LimitRequest<Real>& request, bool searched) {
  return choose_search(task, searched, request.hint, request.data_hint, array.method, array.peak);
}

template <class Real>
void prepare_limits(LimitArray<Real>& array, const DFTask* task, const LimitRequest<Real>& request, int64_t pairs,
                    Bound<typename Callbacks<Real>::Search> search) {
  prepare_search(array.search, task, array.method, array.peak, search);
  array.limit = request.limit;
  if (request.hint == TARN_DF_SITES_UNIFORM) {
    array.limit = nullptr;
    array.uniform = pairs == 1 ? UniformSites<Real>{request.limit[0], 0} : uniform_sites(request.limit, pairs);
  }
}

template <class Real> struct IntegrationRequest {
  int64_t pairs;
  LimitRequest<Real> left, right;
  Real* r;
  int64_t results_hint;
  Bound<typename Callbacks<Real>::Integrate> callbacks[regions];
  Bound<typename Callbacks<Real>::Search> search;
};

template <class Real>
int32_t integrate_all(const DFTask* task, const IntegrationRequest<Real>& request, const tarn_threader* threader) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (request.pairs <= 0) return TARN_DF_OK;
  const auto& callbacks = request.callbacks;
  const bool any = callbacks[left_region].call || callbacks[right_region].call || callbacks[inside_region].call;
  const bool all = callbacks[left_region].call && callbacks[right_region].call && callbacks[inside_region].call;
  const Interpolant kind = interpolant_of(task, all);
  if (kind == Interpolant::None || kind == Interpolant::LookUp) return TARN_DF_ERROR_SPLINE_TYPE;

  IntegrationWork<Real> work;
  const bool searched = request.search.call != nullptr;
  int32_t status = choose_for(work.left, task, request.left, searched);
  if (status == TARN_DF_OK) status = choose_for(work.right, task, request.right, searched);
  if (status != TARN_DF_OK) return status;

  const int64_t functions = function_count(task);
  work.call = {task, request.r, 0, 0, {callbacks[0], callbacks[1], callbacks[2]}};
  switch (request.results_hint) {
  case TARN_DF_INTEGRALS_BY_PAIR:
  case TARN_DF_STORAGE_COLUMNS: work.call.function_step = 1, work.call.pair_step = functions; break;
  case TARN_DF_INTEGRALS_BY_FUNCTION:
  case TARN_DF_STORAGE_FIRST_ONLY: work.call.function_step = request.pairs, work.call.pair_step = 1; break;
  default: return TARN_DF_ERROR_INTEGRATION_RESULT_HINT;
  }
  status = check_source(task, kind);
  if (status != TARN_DF_OK) return status;

  // Peaks close to each other make one.
  const int64_t apart = work.left.peak - work.right.peak;
  work.one_search = !any && work.left.method == SearchMethod::Peak && work.right.method == SearchMethod::Peak &&
                    apart <= close_peaks && -apart <= close_peaks;
  if (work.one_search) work.left.peak -= apart / 2;
  prepare_limits(work.left, task, request.left, request.pairs, request.search);
  prepare_limits(work.right, task, request.right, request.pairs, request.search);
  work.kind = kind;
  work.pairs = request.pairs;
  work.cell_flags = (task->wideInterface & 1) ? int64_t(wide_task) : 0;
  return _Integr1DKernel(work, any, threader);
}

}
}

#define TARN_INTEGRATE_ENTRY(t, Real)                                                                                  \
  TARN_EXPORT int32_t tarn_df_kernel_##t##DFIntegrate1D(                                                               \
      DFTask* task, int64_t, int64_t nlim, const Real* left_limit, int64_t left_hint, const Real* right_limit,         \
      int64_t right_hint, const Real* left_datahint, const Real* right_datahint, Real* r, int64_t rhint,               \
      tarn_df_##t##integr_cb left, void* left_param, tarn_df_##t##integr_cb right, void* right_param,                  \
      tarn_df_##t##integr_cb inside, void* inside_param, tarn_df_##t##search_cb search, void* search_param,            \
      const tarn_threader* threader) {                                                                                 \
    using namespace tarn::fitting;                                                                                     \
    return integrate_all<Real>(task,                                                                                   \
                               {nlim,                                                                                  \
                                {left_limit, left_hint, left_datahint},                                                \
                                {right_limit, right_hint, right_datahint},                                             \
                                r,                                                                                     \
                                rhint,                                                                                 \
                                {{left, left_param}, {right, right_param}, {inside, inside_param}},                    \
                                {search, search_param}},                                                               \
                               threader);                                                                              \
  }
TARN_DF_TWINS(TARN_INTEGRATE_ENTRY)
