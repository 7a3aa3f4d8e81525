// Reading a task: its arrays by precision, its partition, where functions and coefficients stand; and its bin table.
#pragma once

#include <stdint.h>

#include "service/service.h"
#include "tarn/fitting_task.h"

// The two precisions of every entry. TARN_DF_TWINS(X) expands X(d, double) and X(s, float).
#define TARN_DF_TWINS(X)                                                                                               \
  X(d, double)                                                                                                         \
  X(s, float)

namespace tarn::fitting {

constexpr int64_t alignment = 128; // of every block that data fitting takes

template <class T> T* allocate(int64_t count) {
  if (count < 0 || count > INT64_MAX / int64_t(sizeof(T)) - alignment) return nullptr;
  return static_cast<T*>(tarn_serv_allocate(count * int64_t(sizeof(T)), alignment));
}

template <class Real> const Real* reals(const void* pointer) { return static_cast<const Real*>(pointer); }

inline int64_t minimum(int64_t a, int64_t b) { return a < b ? a : b; }
inline int64_t maximum(int64_t a, int64_t b) { return a > b ? a : b; }

inline bool is_uniform(const DFTask* task) { return (task->xHint & TARN_DF_PARTITION_UNIFORM) != 0; }
inline bool is_interleaved(const DFTask* task) { return task->yHint == TARN_DF_STORAGE_COLUMNS; }
inline bool is_partition_hint(int64_t hint) {
  return hint == TARN_DF_PARTITION_UNKNOWN || hint == TARN_DF_PARTITION_GENERAL ||
         hint == TARN_DF_PARTITION_QUASI_UNIFORM || hint == TARN_DF_PARTITION_UNIFORM;
}
inline bool is_storage_hint(int64_t hint) {
  return hint == TARN_DF_STORAGE_DEFAULT || hint == TARN_DF_STORAGE_ROWS || hint == TARN_DF_STORAGE_COLUMNS ||
         hint == TARN_DF_STORAGE_FIRST_ONLY;
}

// Functions as the kernels count them: a task that names none still has one.
inline int64_t function_count(const DFTask* task) { return maximum(task->ny, 1); }
// Cells of coefficients of each function.
inline int64_t cell_count(const DFTask* task) {
  return task->splineType == TARN_DF_TYPE_SUBBOTIN ? task->nx : task->nx - 1;
}

// The values of function j: value i stands at base[i * step].
template <class Real> struct Samples {
  const Real* base;
  int64_t step;
  Real operator[](int64_t i) const { return base[i * step]; }
};
template <class Real> Samples<Real> samples(const DFTask* task, int64_t j) {
  if (is_interleaved(task)) return {reals<Real>(task->y[0]) + j, function_count(task)};
  return {reals<Real>(task->y[j]), 1};
}

// The coefficients of function j: coefficient k of cell i at [i * splineOrder + k].
template <class Real> Real* coefficients(const DFTask* task, int64_t j) { return static_cast<Real*>(task->coeff[j]); }

// The bin table divides the length of the partition into binCount bins of equal width and tells for each between which
// points its own lie: point low is the last in a bin below (points of bin 0 not counted, so it may be 0 for longer than
// need be), point high the first in a bin above. Of its 1,026 entries the one after the last bin serves sites at the
// right end, and one more is what filling the table writes to.
enum BinWord { low, high };
constexpr int64_t min_bins = 16, max_bins = 1024, points_per_bin = 16;
static_assert(TARN_DF_BIN_ENTRIES == max_bins + 2);

template <class Real> Real& bin_scale(DFTask* task);
template <> inline double& bin_scale<double>(DFTask* task) { return task->binScale.d; }
template <> inline float& bin_scale<float>(DFTask* task) { return task->binScale.s; }

// Fills the bin table of a partition given point by point.
template <class Real> void fill_bins(DFTask* task);

}
