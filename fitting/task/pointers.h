// The two arrays of pointers that a task owns. Each has one entry more than it has functions, since the query by index
// lets the number of functions itself pass; entries that nobody has set are null.
#pragma once

#include "fitting/task.h"

namespace tarn::fitting {

// Puts a new array of entries + 1 null pointers in the place of an old one. The old one is gone in any case.
inline int32_t renew_pointers(void*** place, int64_t entries) {
  tarn_serv_deallocate(*place);
  *place = entries < 0 ? nullptr : allocate<void*>(entries + 1);
  if (!*place) return TARN_DF_ERROR_ALLOCATION;
  for (int64_t j = 0; j <= entries; ++j) (*place)[j] = nullptr;
  return TARN_DF_OK;
}

// The functions' values from the address of the first. The count of functions is taken from its low 32 bits.
template <class Real> int32_t lay_out_functions(DFTask* task, const Real* y, int64_t ny, int64_t hint) {
  Real* values = const_cast<Real*>(y);
  const int64_t entries = hint == TARN_DF_STORAGE_COLUMNS ? 1 : int64_t(int32_t(ny));
  if (const int32_t status = renew_pointers(&task->y, entries)) return status;
  task->y[0] = values;
  if (hint == TARN_DF_STORAGE_DEFAULT || hint == TARN_DF_STORAGE_ROWS)
    for (int64_t j = 1; j < entries; ++j) task->y[j] = values + j * task->nx;
  return TARN_DF_OK;
}

// The functions' coefficients from the address of the first, by the task's present order and type.
template <class Real> int32_t lay_out_coefficients(DFTask* task, const Real* block, int64_t hint) {
  Real* coefficients = const_cast<Real*>(block);
  if (task->ny == 0) return TARN_DF_ERROR_NY;
  if (const int32_t status = renew_pointers(&task->coeff, task->ny)) return status;
  task->coeff[0] = coefficients;
  const int64_t stride = cell_count(task) * task->splineOrder;
  if (!(hint & TARN_DF_STORAGE_FIRST_ONLY))
    for (int64_t j = 1; j < task->ny; ++j) task->coeff[j] = coefficients + j * stride;
  return TARN_DF_OK;
}

}
