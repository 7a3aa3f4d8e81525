// tarn_df_kernel_dDFInterpolate1D: its checks, and its three paths. One site alone is searched and evaluated on the spot;
// few sites make one block; many are cut into blocks, which threads may share. All take the same steps for a site.
#include "fitting/interpolate/evaluators.h"
#include "fitting/search/kernels.h"
#include "fitting/threads.h"

namespace tarn::fitting {
namespace {

constexpr int64_t short_call = 32;        // fewer sites make one block, without threads
constexpr int64_t single_site_orders = 4; // at most this many derivative orders on the single-site path
constexpr int64_t sites_of_calling_thread = 512;
constexpr int64_t reals_on_stack = 2048;

// Elements from one function, site and selected order to the next.
struct Layout {
  int64_t function, site, order;
};

// What the threads share.
template <class Real> struct Interpolation {
  Evaluation<Real> evaluation;
  SearchRun<Real> search;
  SearchMethod method;
  SearchKernel<Real> search_block;
  Evaluator<Real> evaluate; // null: no results are wanted
  int64_t cell_flags;
  int64_t functions, site_count;
  const Real* site; // null where the sites are equally spaced
  UniformSites<Real> uniform;
  char* cell; // null where the cells are not the caller's
  int64_t cell_bytes;
  Real* r;
  Layout layout;
  bool as_evaluated; // the layout is the one that evaluators write
  Real* scratch;     // for each thread the results of a block, as evaluated; null where they can go to r at once
  int64_t scratch_reals;
  FirstFailure failure;
};

template <class Real> bool find_layout(Interpolation<Real>& work, int64_t hint) {
  const int64_t ny = work.functions, nder = work.evaluation.nder, nsite = work.site_count;
  switch (hint) {
  case 0:
  case TARN_DF_STORAGE_FIRST_ONLY:
  case TARN_DF_RESULTS_FUNCTION_SITE_ORDER: work.layout = {nsite * nder, nder, 1}; break;
  case TARN_DF_RESULTS_FUNCTION_ORDER_SITE: work.layout = {nder * nsite, 1, nsite}; break;
  case TARN_DF_RESULTS_SITE_FUNCTION_ORDER: work.layout = {nder, ny * nder, 1}; break;
  case TARN_DF_RESULTS_SITE_ORDER_FUNCTION: work.layout = {1, nder * ny, ny}; break;
  default: return false;
  }
  // With one function or one order several layouts are the same.
  work.as_evaluated = work.layout.site == nder && (work.layout.order == 1 || nder == 1);
  return true;
}

template <class Real>
void copy_results(const Interpolation<Real>& work, int64_t from, int64_t count, const Real* evaluated) {
  const int64_t nder = work.evaluation.nder;
  const Layout to = work.layout;
  for (int64_t f = 0; f < work.functions; ++f)
    for (int64_t s = 0; s < count; ++s) {
      Real* out = work.r + f * to.function + (from + s) * to.site;
      for (int64_t k = 0; k < nder; ++k) out[k * to.order] = evaluated[(f * count + s) * nder + k];
    }
}

template <class Real> int32_t interpolate_block(const Interpolation<Real>& work, int64_t block, int64_t thread) {
  const int64_t from = block * block_sites, count = minimum(block_sites, work.site_count - from);
  Real own_sites[block_sites];
  int64_t own_cells[block_sites];
  const Real* site = work.site ? work.site + from : own_sites;
  if (!work.site) expand(work.uniform, from, count, own_sites);
  void* cell = work.cell ? static_cast<void*>(work.cell + from * work.cell_bytes) : own_cells;
  if (work.method != SearchMethod::None) {
    SearchRun<Real> search = work.search; // with a cursor of its own
    const int32_t status = work.search_block(search, count, site, cell, work.cell_flags);
    if (status < 0) return status;
  }
  if (!work.evaluate) return TARN_DF_OK;

  const int64_t nder = work.evaluation.nder;
  Real* evaluated = work.as_evaluated ? work.r + from * nder : work.scratch + thread * work.scratch_reals;
  const int64_t function_step = work.as_evaluated ? work.layout.function : count * nder;
  for (int64_t f = 0; f < work.functions; ++f) {
    const int32_t status = work.evaluate(work.evaluation, f, count, site, cell, evaluated + f * function_step);
    if (status < 0) return status;
  }
  if (!work.as_evaluated) copy_results(work, from, count, evaluated);
  return TARN_DF_OK;
}

template <class Real> void _v1DInterpThreader(int64_t block, int32_t thread, int32_t, void* context) {
  Interpolation<Real>& work = *static_cast<Interpolation<Real>*>(context);
  if (failed_before(work.failure, block)) return;
  const int32_t status = interpolate_block(work, block, thread);
  if (status < 0) record_failure(work.failure, block, status);
}

template <class Real> int32_t interpolate_blocks(Interpolation<Real>& work, const tarn_threader* threader) {
  const int64_t blocks = (work.site_count + block_sites - 1) / block_sites;
  const bool short_path = work.site_count < short_call && work.cell_flags == 0 && work.search.nx < large_partition;
  const int64_t threads =
      short_path || work.site_count <= sites_of_calling_thread ? 1 : minimum(max_threads(threader), blocks);
  Real on_stack[reals_on_stack];
  work.scratch = nullptr;
  if (work.evaluate && !work.as_evaluated) {
    int64_t reals;
    const bool overflows = __builtin_mul_overflow(work.functions * minimum(block_sites, work.site_count),
                                                  work.evaluation.nder, &work.scratch_reals) ||
                           __builtin_mul_overflow(work.scratch_reals, threads, &reals);
    if (overflows) return TARN_DF_ERROR_ALLOCATION;
    work.scratch = reals <= reals_on_stack ? on_stack : allocate<Real>(reals);
    if (!work.scratch) return TARN_DF_ERROR_ALLOCATION;
  }
  int32_t status = TARN_DF_OK;
  if (threads > 1) {
    run_loop(threader, blocks, threads, &work, _v1DInterpThreader<Real>);
    status = status_of(work.failure);
  } else {
    for (int64_t b = 0; b < blocks && status == TARN_DF_OK; ++b) status = interpolate_block(work, b, 0);
  }
  if (work.scratch != on_stack) tarn_serv_deallocate(work.scratch);
  work.scratch = nullptr;
  return status;
}

template <class Real> int64_t cell_of_one(SearchRun<Real>& run, SearchMethod method, Real site) {
  int64_t cell;
  switch (method) {
  case SearchMethod::Uniform: return uniform_cell(run, site);
  case SearchMethod::QuasiUniform: return corrected(run, site, guess(run, site - run.left));
  case SearchMethod::Sorted: search_sorted<Real, int64_t, int64_t>(run, 1, &site, &cell); return cell;
  case SearchMethod::Peak: return cell_near_peak(run, run.peak, site);
  default: search_bins<1, Real, int64_t, int64_t>(run, &site, &cell); return cell;
  }
}

// A cell that the caller gives, in the width of the task.
template <class Real> int64_t given_cell(const Interpolation<Real>& work) {
  if (work.cell_bytes == 8) return *reinterpret_cast<const int64_t*>(work.cell);
  return *reinterpret_cast<const int32_t*>(work.cell);
}

template <class Real> void interpolate_one(Interpolation<Real>& work, Interpolant kind) {
  const int64_t cell = work.cell ? given_cell(work) : cell_of_one(work.search, work.method, work.site[0]);
  const Evaluation<Real>& e = work.evaluation;
  switch (kind) {
  case Interpolant::Linear: evaluate<Interpolant::Linear>(e, 0, 1, work.site, &cell, work.r); break;
  case Interpolant::Quadratic: evaluate<Interpolant::Quadratic>(e, 0, 1, work.site, &cell, work.r); break;
  default: evaluate<Interpolant::Cubic>(e, 0, 1, work.site, &cell, work.r); break;
  }
}

template <class Real> struct Request {
  int64_t type, site_count;
  const Real* site;
  int64_t sites_hint, order_count;
  const void* orders;
  const Real* data_hint;
  Real* r;
  int64_t results_hint;
  void* cell;
  Bound<typename Callbacks<Real>::Evaluate> callbacks[regions];
  Bound<typename Callbacks<Real>::Search> search;
};

template <class Real>
int32_t interpolate(const DFTask* task, const Request<Real>& request, const tarn_threader* threader) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (request.site_count <= 0) return TARN_DF_OK;
  const auto& callbacks = request.callbacks;
  const bool any = callbacks[left_region].call || callbacks[right_region].call || callbacks[inside_region].call;
  const bool all = callbacks[left_region].call && callbacks[right_region].call && callbacks[inside_region].call;
  const Interpolant kind = interpolant_of(task, all);
  if (kind == Interpolant::None) return TARN_DF_ERROR_SPLINE_TYPE;

  Interpolation<Real> work;
  const bool cells_given = request.type == TARN_DF_CELLS_GIVEN;
  int64_t peak = 0;
  work.method = SearchMethod::None;
  int32_t status = cells_given ? 0
                               : choose_search(task, request.search.call != nullptr, request.sites_hint,
                                               request.data_hint, work.method, peak);
  if (status != TARN_DF_OK) return status;

  const bool wide = (task->wideInterface & 1) != 0;
  Evaluation<Real>& e = work.evaluation;
  e = {task, request.orders, request.order_count, wide, false, 1, {callbacks[0], callbacks[1], callbacks[2]}};
  select_orders(e);
  work.functions = function_count(task);
  work.site_count = request.site_count;
  if (!find_layout(work, request.results_hint)) return TARN_DF_ERROR_INTERPOLATION_RESULT_HINT;

  const bool compute = cells_given || (request.type & TARN_DF_COMPUTE);
  const bool cells_of_caller = cells_given || (request.type & TARN_DF_WRITE_CELLS);
  if (compute && (status = check_source(task, kind)) != TARN_DF_OK) return status;
  if (work.method != SearchMethod::None) prepare_search(work.search, task, work.method, peak, request.search);
  work.search.nx = task->nx;

  const bool large = task->nx >= large_partition;
  work.cell_flags = (wide ? int64_t(wide_task) : 0) | (cells_of_caller ? int64_t(callers_cells) : 0);
  work.cell = cells_of_caller ? static_cast<char*>(request.cell) : nullptr;
  work.cell_bytes = wide || large ? 8 : 4;
  work.evaluate = compute ? evaluator<Real>(kind, !cells_of_caller || work.cell_bytes == 8, any) : nullptr;
  if (work.method != SearchMethod::None) work.search_block = search_kernel<Real>(work.method);
  work.r = request.r;
  work.site = request.site;
  if (request.sites_hint & TARN_DF_SITES_UNIFORM) {
    work.site = nullptr;
    work.uniform = request.site_count == 1 ? UniformSites<Real>{request.site[0], 0}
                                           : uniform_sites(request.site, request.site_count);
  }

  const bool polynomial = kind == Interpolant::Linear || kind == Interpolant::Quadratic || kind == Interpolant::Cubic;
  if (work.site_count == 1 && compute && !(request.type & TARN_DF_WRITE_CELLS) && work.site && polynomial && !any &&
      e.order_count <= single_site_orders && task->ny <= 1 && !request.search.call) {
    interpolate_one(work, kind);
    return TARN_DF_OK;
  }
  return interpolate_blocks(work, threader);
}

}
}

#define TARN_INTERPOLATE_ENTRY(t, Real)                                                                                \
  TARN_EXPORT int32_t tarn_df_kernel_##t##DFInterpolate1D(                                                             \
      DFTask* task, int64_t type, int64_t, int64_t nsite, const Real* site, int64_t sitehint, int64_t ndorder,         \
      const void* dorder, const Real* datahint, Real* r, int64_t rhint, void* cell, tarn_df_##t##eval_cb left,         \
      void* left_param, tarn_df_##t##eval_cb right, void* right_param, tarn_df_##t##eval_cb inside,                    \
      void* inside_param, tarn_df_##t##search_cb search, void* search_param, const tarn_threader* threader) {          \
    using namespace tarn::fitting;                                                                                     \
    return interpolate<Real>(task,                                                                                     \
                             {type,                                                                                    \
                              nsite,                                                                                   \
                              site,                                                                                    \
                              sitehint,                                                                                \
                              ndorder,                                                                                 \
                              dorder,                                                                                  \
                              datahint,                                                                                \
                              r,                                                                                       \
                              rhint,                                                                                   \
                              cell,                                                                                    \
                              {{left, left_param}, {right, right_param}, {inside, inside_param}},                      \
                              {search, search_param}},                                                                 \
                             threader);                                                                                \
  }
TARN_DF_TWINS(TARN_INTERPOLATE_ENTRY)
