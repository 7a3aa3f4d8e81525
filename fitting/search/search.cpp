// tarn_df_kernel_dDFSearch1D: the choice of the method; few sites are served on the spot, many by the batch routines.
#include "fitting/search/search.h"

namespace tarn::fitting {

template <class Real>
int32_t choose_search(const DFTask* task, bool has_callback, int64_t sites_hint, const Real* data_hint,
                      SearchMethod& method, int64_t& peak) {
  peak = 0;
  if (has_callback) {
    method = task->xHint == TARN_DF_PARTITION_UNIFORM ? SearchMethod::UniUserDef : SearchMethod::UserDef;
  } else if (task->xHint == TARN_DF_PARTITION_UNIFORM) {
    method = SearchMethod::Uniform;
  } else if (task->xHint == TARN_DF_PARTITION_QUASI_UNIFORM) {
    method = SearchMethod::QuasiUniform;
  } else if (sites_hint == TARN_DF_SITES_SORTED) {
    method = SearchMethod::Sorted;
  } else if (data_hint && data_hint[TARN_DF_DATA_KIND] != 0) {
    const Real at = data_hint[TARN_DF_DATA_PEAK];
    if (data_hint[TARN_DF_DATA_KIND] != 1) return TARN_DF_ERROR_DATA_HINT;
    if (!(at >= 0 && at <= Real(task->nx))) return TARN_DF_ERROR_DATA_HINT;
    method = SearchMethod::Peak;
    peak = minimum(static_cast<int64_t>(at), task->nx);
  } else {
    method = SearchMethod::Hybrid;
  }
  return TARN_DF_OK;
}

namespace {

// The scale of a uniform partition. One so short that its scale would be infinite is measured in smaller units, one so
// long that its length would be in larger ones.
template <class Real> void scale_uniform(SearchRun<Real>& run) {
  constexpr bool is_double = sizeof(Real) == 8;
  constexpr Real largest = is_double ? Real(__DBL_MAX__) : Real(__FLT_MAX__);
  constexpr Real magnifier = is_double ? Real(0x1p600) : Real(0x1p60);
  const Real length = run.right - run.left, cells = Real(run.nx - 1);
  run.unit = 1;
  run.scale = cells / length;
  if (length > largest) run.unit = Real(0.5);
  if (run.scale > largest) run.unit = magnifier;
  if (run.unit != 1) run.scale = cells / (run.right * run.unit - run.left * run.unit);
}

constexpr int64_t least_binned = 9; // with fewer points one window over all of them does

// The task's bin table, where it is of this partition: one that was never filled has no bins, and one filled before nx
// was edited ends elsewhere.
template <class Real> void take_bins(SearchRun<Real>& run, const DFTask* task) {
  const int64_t count = task->binCount, last = run.nx - 1;
  if (run.nx >= least_binned && count > 0 && task->binTable[count - 1][high] == last) {
    run.bins = task->binTable;
    run.bin_count = count;
    run.bin_scale = bin_scale<Real>(const_cast<DFTask*>(task));
  } else {
    run.whole[0][low] = 0;
    run.whole[0][high] = last;
    run.bins = run.whole;
    run.bin_count = 0;
    run.bin_scale = 0;
  }
}

}

template <class Real>
void prepare_search(SearchRun<Real>& run, const DFTask* task, SearchMethod method, int64_t peak,
                    Bound<typename Callbacks<Real>::Search> search) {
  run.nx = task->nx;
  run.x = reals<Real>(task->x);
  run.left = run.x[0];
  run.right = run.x[is_uniform(task) ? 1 : run.nx - 1];
  run.cursor = 0;
  run.peak = peak;
  run.search = search;
  if (method == SearchMethod::Uniform || method == SearchMethod::UniUserDef) scale_uniform(run);
  if (method == SearchMethod::QuasiUniform) run.scale = Real(run.nx - 1) / (run.right - run.left);
  if (method == SearchMethod::Hybrid) take_bins(run, task);
}

namespace {

constexpr int64_t served_on_the_spot = 32; // fewer sites than this

template <class Real>
int32_t search(const DFTask* task, int64_t count, const Real* site, int64_t sites_hint, const Real* data_hint,
               void* cell, Bound<typename Callbacks<Real>::Search> callback, const tarn_threader* threader) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (count <= 0) return TARN_DF_OK;
  SearchMethod method;
  int64_t peak;
  const int32_t status = choose_search(task, callback.call != nullptr, sites_hint, data_hint, method, peak);
  if (status != TARN_DF_OK) return status;

  SearchRun<Real> run;
  prepare_search(run, task, method, peak, callback);
  const CellForm form = cell_form(task);
  if (count >= served_on_the_spot)
    return batch_search<Real>(method)({&run, form, count, site, sites_hint, static_cast<char*>(cell)}, threader);
  Real own[served_on_the_spot];
  if (sites_hint == TARN_DF_SITES_UNIFORM) {
    expand(uniform_sites(site, count), 0, count, own);
    site = own;
  }
  return search_kernel<Real>(method, form)(run, count, site, cell, 0);
}

}

#define TARN_SEARCH(t, Real)                                                                                           \
  template int32_t choose_search<Real>(const DFTask*, bool, int64_t, const Real*, SearchMethod&, int64_t&);            \
  template void prepare_search<Real>(SearchRun<Real>&, const DFTask*, SearchMethod, int64_t,                           \
                                     Bound<Callbacks<Real>::Search>);
TARN_DF_TWINS(TARN_SEARCH)

}

#define TARN_SEARCH_ENTRY(t, Real)                                                                                     \
  TARN_EXPORT int32_t tarn_df_kernel_##t##DFSearch1D(                                                                  \
      DFTask* task, int64_t, int64_t nsite, const Real* site, int64_t sitehint, const Real* datahint, void* cell,      \
      tarn_df_##t##search_cb cb, void* cb_param, const tarn_threader* threader) {                                      \
    return tarn::fitting::search<Real>(task, nsite, site, sitehint, datahint, cell, {cb, cb_param}, threader);         \
  }
TARN_DF_TWINS(TARN_SEARCH_ENTRY)
