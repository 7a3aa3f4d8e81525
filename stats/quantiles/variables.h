// What the entries of quantiles, sort and sketch share: the selected variables, their copies and the fan-out.
#pragma once

#include "stats/primitives/radix_sort.h"
#include "stats/quantiles/quicksort.h"
#include "stats/task.h"

namespace tarn::stats {

// Sorts by the bit patterns where the radix sort's count reaches, else by quicksort.
template <class Real> void sort_reals(Real* array, Real* scratch, int64_t n) {
  if (n > INT32_MAX) {
    quicksort(Strided<Real, 1>{array, 1}, n);
  } else if constexpr (sizeof(Real) == 8) {
    tarn_dft_mc3_pelsSortRadixAscend_64f_I(array, scratch, static_cast<int32_t>(n));
  } else {
    tarn_dft_mc3_pelsSortRadixAscend_32f_I(array, scratch, static_cast<int32_t>(n));
  }
}

template <class Real> void copy_column(Column<const Real> from, Column<Real> to, int64_t n) {
  if (from.step == 1 && to.step == 1) {
    tarn_dft_mc3_ownsCopy_8u(reinterpret_cast<const uint8_t*>(from.base), reinterpret_cast<uint8_t*>(to.base),
                             n * int64_t(sizeof(Real)));
    return;
  }
  for (int64_t i = 0; i < n; ++i) to.base[i * to.step] = from.base[i * from.step];
}

// The numbers of the selected variables in ascending order; returns how many.
inline int64_t list_selected(const SSTask* task, int64_t p, int64_t* list) {
  int64_t count = 0;
  for (int64_t j = 0; j < p; ++j)
    if (selected(task, j)) list[count++] = j;
  return count;
}

inline void run_loop(const tarn_threader* threader, int64_t count, int32_t threads, void* context,
                     tarn_loop_body body) {
  if (threader) {
    threader->threader_for(count, threads, context, body);
  } else {
    for (int64_t i = 0; i < count; ++i) body(i, 0, 1, context);
  }
}

inline int64_t max_threads(const tarn_threader* threader) {
  return threader ? maximum(1, threader->threader_max_threads()) : 1;
}

inline int32_t check_count_and_data(const SSTask* task) {
  if (!task->observation_count || read_integer(task, task->observation_count) < 1) return TARN_SS_ERROR_OBSERVATIONS;
  if (!task->observations) return TARN_SS_ERROR_NULL_DATA;
  if (!task->dimension || read_integer(task, task->dimension) < 1) return TARN_SS_ERROR_DIMENSION;
  return TARN_SS_OK;
}

template <class Real> bool orders_valid(const Real* orders, int64_t count) {
  for (int64_t k = 0; k < count; ++k)
    if (!(orders[k] >= 0 && orders[k] <= 1)) return false;
  return true;
}

}
