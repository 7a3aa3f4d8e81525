// Reading a task back.
#include "fitting/task/values.h"

namespace tarn::fitting {
namespace {

void* entry(void** array, int64_t index) { return array ? array[index] : nullptr; }

template <class Real> int32_t query_pointer(DFTask* task, int64_t id, Real** out) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (!out) return TARN_DF_ERROR_NULL_OUTPUT;
  if (task->taskKind != 1) return TARN_DF_OK;
  const void* pointer = nullptr;
  switch (id) {
  case TARN_DF_X: pointer = task->x; break;
  case TARN_DF_Y: pointer = entry(task->y, 0); break;
  case TARN_DF_IC: pointer = task->ic; break;
  case TARN_DF_BC: pointer = task->bc; break;
  case TARN_DF_COEFF: pointer = entry(task->coeff, 0); break;
  default: return TARN_DF_ERROR_PARAMETER_ID;
  }
  *out = const_cast<Real*>(reals<Real>(pointer));
  return TARN_DF_OK;
}

// The index ny passes: it is the entry that the arrays have beyond their functions.
template <class Real> int32_t query_pointer_at(DFTask* task, int64_t id, int64_t index, Real** out) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (!out) return TARN_DF_ERROR_NULL_OUTPUT;
  if (index < 0 || index > task->ny) return TARN_DF_ERROR_INDEX;
  if (task->taskKind != 1) return TARN_DF_OK;
  switch (id) {
  case TARN_DF_Y:
    if (is_interleaved(task)) return TARN_DF_ERROR_Y_HINT;
    *out = static_cast<Real*>(entry(task->y, index));
    return TARN_DF_OK;
  case TARN_DF_COEFF: *out = static_cast<Real*>(entry(task->coeff, index)); return TARN_DF_OK;
  default: return TARN_DF_ERROR_PARAMETER_ID;
  }
}

int32_t query_value(DFTask* task, int64_t id, void* out) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (!out) return TARN_DF_ERROR_NULL_OUTPUT;
  if (task->taskKind != 1) return TARN_DF_OK;
  if (id < TARN_DF_NX || id > TARN_DF_OPTION) return TARN_DF_ERROR_PARAMETER_ID;
  const int64_t value = id == TARN_DF_OPTION ? int64_t(task->optionFlag) : value_field(task, id);
  if (task->wideInterface != 0) {
    *static_cast<int64_t*>(out) = value;
  } else {
    *static_cast<int32_t*>(out) = int32_t(value);
  }
  return TARN_DF_OK;
}

}
}

#define TARN_QUERIES(t, Real)                                                                                          \
  TARN_EXPORT int32_t tarn_df_kernel_##t##QueryPtr(DFTask* task, int64_t id, Real** out) {                             \
    return tarn::fitting::query_pointer(task, id, out);                                                                \
  }                                                                                                                    \
  TARN_EXPORT int32_t tarn_df_kernel_##t##QueryIdxPtr(DFTask* task, int64_t id, int64_t index, Real** out) {           \
    return tarn::fitting::query_pointer_at(task, id, index, out);                                                      \
  }
TARN_DF_TWINS(TARN_QUERIES)

TARN_EXPORT int32_t tarn_df_kernel_iQueryVal(DFTask* task, int64_t id, void* out) {
  return tarn::fitting::query_value(task, id, out);
}
