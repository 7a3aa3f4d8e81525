// Cell search for the other rooms: which method serves a call, and the block kernels that do it.
#pragma once

#include "fitting/callbacks.h"
#include "fitting/task.h"
#include "tarn/threader.h"

namespace tarn::fitting {

enum class SearchMethod : int32_t {
#define TARN_SEARCH_METHOD(number, Name, Batch) Name = number,
#include "fitting/search/methods.def"
  None // the caller gives the cells
};
constexpr int search_methods = static_cast<int>(SearchMethod::None);

// From this many points on, indices take 64 bits.
constexpr int64_t large_partition = INT32_MAX;

// What a search reads of a task, and the state of one call. Copied for each thread, which moves its own cursor.
template <class Real> struct SearchRun {
  int64_t nx;
  const Real* x;
  Real left, right, scale; // scale: cells by length, of the methods that guess
  Real unit;               // of the uniform method: what lengths are multiplied with to stay among the finite numbers
  int64_t cursor, peak;    // of the sorted and of the peak method
  const int64_t (*bins)[2];
  int64_t bin_count;
  Real bin_scale;
  Bound<typename Callbacks<Real>::Search> search;
  int64_t whole[1][2]; // the one bin of a search without a table
};

// The choice by call-back, partition, sites hint and data hint, in this order; the peak's index for the peak method.
// Returns 0 or TARN_DF_ERROR_DATA_HINT.
template <class Real>
int32_t choose_search(const DFTask* task, bool has_callback, int64_t sites_hint, const Real* data_hint,
                      SearchMethod& method, int64_t& peak);

// In place, as a run may point into itself.
template <class Real>
void prepare_search(SearchRun<Real>& run, const DFTask* task, SearchMethod method, int64_t peak,
                    Bound<typename Callbacks<Real>::Search> search);

// How cells are counted and written, as the suffixes of the kernels have it.
enum class CellForm : int32_t {
  Cells32,     // 32: cells and indices
  Cells64,     // 64: cells and indices
  Cells64Pack, // cells of 64 bits, indices of 32
};
inline CellForm cell_form(const DFTask* task) {
  if (task->nx >= large_partition) return CellForm::Cells64;
  return (task->wideInterface & 1) != 0 ? CellForm::Cells64Pack : CellForm::Cells32;
}
inline int64_t cell_bytes(CellForm form) { return form == CellForm::Cells32 ? 4 : 8; }

// Words of the form without suffix: whether the task is wide, and whether the cells go to the caller's array rather than
// to a buffer of 64-bit cells.
enum CellFlags : int64_t { wide_task = 1, callers_cells = 2 };

// All block kernels: cells of `count` sites; the flags matter to the form without suffix. Returns the call-back's
// negative status or 0.
template <class Real>
using SearchKernel = int32_t (*)(SearchRun<Real>& run, int64_t count, const Real* site, void* cell, int64_t flags);

// The kernel of a method: the form without suffix, and the three that it chooses from.
template <class Real> SearchKernel<Real> search_kernel(SearchMethod method);
template <class Real> SearchKernel<Real> search_kernel(SearchMethod method, CellForm form);

// The cells of many sites: what a method's batch routine is given. The sites hint tells whether `site` holds them all or
// the two ends of equally spaced ones.
template <class Real> struct SiteBatch {
  SearchRun<Real>* run;
  CellForm form;
  int64_t count;
  const Real* site;
  int64_t sites_hint;
  char* cell;
};
template <class Real> using BatchSearch = int32_t (*)(const SiteBatch<Real>& batch, const tarn_threader* threader);
template <class Real> BatchSearch<Real> batch_search(SearchMethod method);

#define TARN_SEARCH_TABLES(t, Real)                                                                                    \
  template <> SearchKernel<Real> search_kernel<Real>(SearchMethod method);                                             \
  template <> SearchKernel<Real> search_kernel<Real>(SearchMethod method, CellForm form);                              \
  template <> BatchSearch<Real> batch_search<Real>(SearchMethod method);
TARN_DF_TWINS(TARN_SEARCH_TABLES)
#undef TARN_SEARCH_TABLES

// Site i of equally spaced ones is first + i * spacing.
template <class Real> struct UniformSites {
  Real first, spacing;
  Real operator[](int64_t i) const { return first + Real(i) * spacing; }
};
template <class Real> UniformSites<Real> uniform_sites(const Real* ends, int64_t count) {
  return {ends[0], (ends[1] - ends[0]) / Real(count - 1)};
}
template <class Real> void expand(UniformSites<Real> sites, int64_t from, int64_t count, Real* out) {
  for (int64_t i = 0; i < count; ++i) out[i] = sites[from + i];
}

}
