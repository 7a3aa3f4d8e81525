// tarn_df_kernel_dDFInterpolate1D: its checks, and its three paths. One site alone is searched and evaluated on the spot;
// few sites make one block; many are cut into blocks, which threads may share. All take the same steps for a site.
#include "fitting/interpolate/evaluators.h"
#include "fitting/search/kernels.h"
#include "fitting/threads.h"

#include <type_traits>

namespace tarn::fitting {
namespace {

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
  Interpolant kind;
  bool compute; // whether results are wanted
  int64_t functions, site_count;
  const Real* site; // null where the sites are equally spaced
  UniformSites<Real> uniform;
  char* cell; // null where the cells are not the caller's
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

// A block with its cells in one of the three forms. The caller's cells have the form of his task, and so have those of
// the block's own.
template <CellForm Form, bool Callbacks, class Real>
int32_t interpolate_block(const Interpolation<Real>& work, int64_t block, int64_t thread) {
  using Cell = std::conditional_t<Form == CellForm::Cells32, int32_t, int64_t>;
  const int64_t from = block * block_sites, count = minimum(block_sites, work.site_count - from);
  Real own_sites[block_sites];
  Cell own_cells[block_sites];
  const Real* site = work.site ? work.site + from : own_sites;
  if (!work.site) expand(work.uniform, from, count, own_sites);
  Cell* cell = work.cell ? reinterpret_cast<Cell*>(work.cell) + from : own_cells;
  if (work.method != SearchMethod::None) {
    SearchRun<Real> search = work.search; // with a cursor of its own
    const int32_t status = search_kernel<Real>(work.method, Form)(search, count, site, cell, 0);
    if (status < 0) return status;
  }
  if (!work.compute) return TARN_DF_OK;

  const Evaluator<Real> evaluate = evaluator<Real>(work.kind, sizeof(Cell) == 8, Callbacks);
  const int64_t nder = work.evaluation.nder;
  Real* evaluated = work.as_evaluated ? work.r + from * nder : work.scratch + thread * work.scratch_reals;
  const int64_t function_step = work.as_evaluated ? work.layout.function : count * nder;
  for (int64_t f = 0; f < work.functions; ++f) {
    const int32_t status = evaluate(work.evaluation, f, count, site, cell, evaluated + f * function_step);
    if (status < 0) return status;
  }
  if (!work.as_evaluated) copy_results(work, from, count, evaluated);
  return TARN_DF_OK;
}

#define TARN_INTERP_THREADER(suffix, Form, callbacks)                                                                  \
  template <class Real> void _v1DInterpThreader##suffix(int64_t block, int32_t thread, int32_t, void* context) {       \
    Interpolation<Real>& work = *static_cast<Interpolation<Real>*>(context);                                           \
    if (failed_before(work.failure, block)) return;                                                                    \
    const int32_t status = interpolate_block<CellForm::Form, callbacks>(work, block, thread);                          \
    if (status < 0) record_failure(work.failure, block, status);                                                       \
  }
TARN_INTERP_THREADER(32, Cells32, false)
TARN_INTERP_THREADER(64, Cells64, false)
TARN_INTERP_THREADER(64Pack, Cells64Pack, false)
TARN_INTERP_THREADER(32CB, Cells32, true)
TARN_INTERP_THREADER(64CB, Cells64, true)
TARN_INTERP_THREADER(64PackCB, Cells64Pack, true)

template <class Real> tarn_loop_body threader_body(CellForm form, bool callbacks) {
  switch (form) {
  case CellForm::Cells32: return callbacks ? _v1DInterpThreader32CB<Real> : _v1DInterpThreader32<Real>;
  case CellForm::Cells64: return callbacks ? _v1DInterpThreader64CB<Real> : _v1DInterpThreader64<Real>;
  default: return callbacks ? _v1DInterpThreader64PackCB<Real> : _v1DInterpThreader64Pack<Real>;
  }
}

template <class Real>
int32_t interpolate_blocks(Interpolation<Real>& work, tarn_loop_body body, const tarn_threader* threader) {
  const int64_t blocks = (work.site_count + block_sites - 1) / block_sites;
  const int64_t threads = work.site_count <= sites_of_calling_thread ? 1 : minimum(max_threads(threader), blocks);
  Real on_stack[reals_on_stack];
  work.scratch = nullptr;
  if (work.compute && !work.as_evaluated) {
    int64_t reals;
    const bool overflows = __builtin_mul_overflow(work.functions * minimum(block_sites, work.site_count),
                                                  work.evaluation.nder, &work.scratch_reals) ||
                           __builtin_mul_overflow(work.scratch_reals, threads, &reals);
    if (overflows) return TARN_DF_ERROR_ALLOCATION;
    work.scratch = reals <= reals_on_stack ? on_stack : allocate<Real>(reals);
    if (!work.scratch) return TARN_DF_ERROR_ALLOCATION;
  }
  run_loop(threads > 1 ? threader : nullptr, blocks, threads, &work, body);
  if (work.scratch != on_stack) tarn_serv_deallocate(work.scratch);
  work.scratch = nullptr;
  return status_of(work.failure);
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

// A cell that the caller gives.
int64_t given_cell(const char* cell, CellForm form) {
  if (cell_bytes(form) == 8) return *reinterpret_cast<const int64_t*>(cell);
  return *reinterpret_cast<const int32_t*>(cell);
}

template <class Real> void interpolate_one(Interpolation<Real>& work, CellForm form) {
  const int64_t cell = work.cell ? given_cell(work.cell, form) : cell_of_one(work.search, work.method, work.site[0]);
  const Evaluation<Real>& e = work.evaluation;
  switch (work.kind) {
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

  const CellForm form = cell_form(task);
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

  work.kind = kind;
  work.compute = compute;
  work.cell = cells_of_caller ? static_cast<char*>(request.cell) : nullptr;
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
    interpolate_one(work, form);
    return TARN_DF_OK;
  }
  return interpolate_blocks(work, threader_body<Real>(form, any), threader);
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
