// Changing a task. A check that fails leaves what was stored before it: the order of checks and stores is what callers
// rely on.
#include "fitting/task/pointers.h"
#include "fitting/task/values.h"

namespace tarn::fitting {
namespace {

bool needs_no_values(int64_t bc_type) {
  return bc_type == TARN_DF_BC_NONE || bc_type == TARN_DF_BC_FREE_END || bc_type == TARN_DF_BC_NOT_A_KNOT ||
         bc_type == TARN_DF_BC_PERIODIC;
}

// A periodic condition passes without values: the constructors decide, since only some kinds need them.
template <class Real>
int32_t edit_spline(DFTask* task, int64_t order, int64_t type, int64_t bc_type, const Real* bc, int64_t ic_type,
                    const Real* ic, const Real* coeff, int64_t coeff_hint) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (task->taskKind != 1) return TARN_DF_OK;
  if (order < 0) return TARN_DF_ERROR_SPLINE_ORDER;
  if (type < 0) return TARN_DF_ERROR_SPLINE_TYPE;
  task->splineOrder = order;
  task->splineType = type;
  if (!needs_no_values(bc_type) && !bc) return TARN_DF_ERROR_NULL_BC;
  task->bcType = bc_type;
  task->bc = bc;
  if (ic_type != TARN_DF_IC_NONE && !ic) return TARN_DF_ERROR_IC;
  if (ic_type == TARN_DF_IC_NONE && ic) return TARN_DF_ERROR_IC_TYPE;
  task->icType = ic_type;
  task->ic = ic;
  if (coeff) {
    if (const int32_t status = lay_out_coefficients(task, coeff, coeff_hint)) return status;
  }
  task->coeffHint = coeff_hint; // any value; only iEditVal judges it
  return TARN_DF_OK;
}

template <class Real> int32_t edit_pointer(DFTask* task, int64_t id, const Real* pointer) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (task->taskKind != 1) return TARN_DF_OK;
  switch (id) {
  case TARN_DF_X:
    if (!pointer) return TARN_DF_ERROR_NULL_X;
    task->x = pointer;
    return TARN_DF_OK;
  case TARN_DF_Y:
    if (!pointer) return TARN_DF_ERROR_NULL_Y;
    return lay_out_functions(task, pointer, task->ny, task->yHint);
  case TARN_DF_IC:
    if (!pointer) return TARN_DF_ERROR_IC;
    task->ic = pointer;
    return TARN_DF_OK;
  case TARN_DF_BC:
    if (!pointer) return TARN_DF_ERROR_NULL_BC;
    task->bc = pointer;
    return TARN_DF_OK;
  case TARN_DF_COEFF:
    if (!pointer) return TARN_DF_ERROR_NULL_COEFF;
    return lay_out_coefficients(task, pointer, task->coeffHint);
  default: return TARN_DF_ERROR_PARAMETER_ID;
  }
}

// One entry of an array that the task has; a task without one has no place for it.
int32_t edit_entry(const DFTask* task, void** array, int64_t index, void* pointer, int32_t null_status) {
  if (index < 0 || index >= task->ny) return TARN_DF_ERROR_INDEX;
  if (!pointer || !array) return null_status;
  array[index] = pointer;
  return TARN_DF_OK;
}

template <class Real> int32_t edit_pointer_at(DFTask* task, int64_t id, int64_t index, const Real* pointer) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (task->taskKind != 1) return TARN_DF_OK;
  Real* entry = const_cast<Real*>(pointer);
  switch (id) {
  case TARN_DF_Y:
    if (is_interleaved(task)) return TARN_DF_ERROR_Y_HINT;
    return edit_entry(task, task->y, index, entry, TARN_DF_ERROR_NULL_Y);
  case TARN_DF_COEFF: return edit_entry(task, task->coeff, index, entry, TARN_DF_ERROR_NULL_COEFF);
  default: return TARN_DF_ERROR_PARAMETER_ID;
  }
}

// The types that have a constructor: look-up and step interpolants, 6 to 8, are set with the whole spline alone.
bool is_constructed_type(int64_t type) {
  return (type >= TARN_DF_TYPE_DEFAULT && type <= TARN_DF_TYPE_AKIMA) || type == TARN_DF_TYPE_HYMAN;
}
bool is_internal_condition(int64_t type) {
  return (type >= TARN_DF_IC_NONE && type <= TARN_DF_IC_2ND) || (type & TARN_DF_IC_SUBGRID) != 0;
}

int32_t check_value(int64_t id, int64_t value) {
  switch (id) {
  case TARN_DF_NX: return value >= 2 ? TARN_DF_OK : TARN_DF_ERROR_NX;
  case TARN_DF_X_HINT: return is_partition_hint(value) ? TARN_DF_OK : TARN_DF_ERROR_X_HINT;
  case TARN_DF_NY: return value >= 1 ? TARN_DF_OK : TARN_DF_ERROR_NY;
  case TARN_DF_Y_HINT: return is_storage_hint(value) ? TARN_DF_OK : TARN_DF_ERROR_Y_HINT;
  case TARN_DF_SPLINE_ORDER: return value >= 0 ? TARN_DF_OK : TARN_DF_ERROR_SPLINE_ORDER;
  case TARN_DF_SPLINE_TYPE: return is_constructed_type(value) ? TARN_DF_OK : TARN_DF_ERROR_SPLINE_TYPE;
  case TARN_DF_IC_TYPE: return is_internal_condition(value) ? TARN_DF_OK : TARN_DF_ERROR_IC_TYPE;
  case TARN_DF_BC_TYPE: return value >= 0 ? TARN_DF_OK : TARN_DF_ERROR_BC_TYPE;
  case TARN_DF_COEFF_HINT: return is_storage_hint(value) ? TARN_DF_OK : TARN_DF_ERROR_COEFF_HINT;
  case TARN_DF_OPTION: return value == 0 || value == 1 ? TARN_DF_OK : TARN_DF_ERROR_OPTION;
  default: return TARN_DF_ERROR_PARAMETER_ID;
  }
}

// A half-made task, whose table could not be allocated, gets one now.
int32_t renew_bins(DFTask* task) {
  if (!task->binTable) task->binTable = allocate<int64_t[2]>(TARN_DF_BIN_ENTRIES);
  if (!task->binTable) return TARN_DF_ERROR_ALLOCATION;
  if (task->isDouble) {
    fill_bins<double>(task);
  } else {
    fill_bins<float>(task);
  }
  return TARN_DF_OK;
}

int32_t edit_value(DFTask* task, int64_t id, int64_t value) {
  if (!task) return TARN_DF_ERROR_NULL_TASK;
  if (task->taskKind != 1) return TARN_DF_OK;
  if (const int32_t status = check_value(id, value)) return status;
  if (id == TARN_DF_OPTION) {
    task->optionFlag = int32_t(value);
  } else {
    value_field(task, id) = value;
  }
  // The one edit that renews the bin table: a caller who has changed the partition asks for it so.
  if (id == TARN_DF_X_HINT && value == TARN_DF_PARTITION_GENERAL) return renew_bins(task);
  return TARN_DF_OK;
}

}
}

#define TARN_EDITORS(t, Real)                                                                                          \
  TARN_EXPORT int32_t tarn_df_kernel_##t##EditPPSpline1D(DFTask* task, int64_t splineOrder, int64_t splineType,        \
                                                         int64_t bcType, const Real* bc, int64_t icType,               \
                                                         const Real* ic, Real* coeff, int64_t coeffHint) {             \
    return tarn::fitting::edit_spline<Real>(task, splineOrder, splineType, bcType, bc, icType, ic, coeff, coeffHint);  \
  }                                                                                                                    \
  TARN_EXPORT int32_t tarn_df_kernel_##t##EditPtr(DFTask* task, int64_t id, const Real* ptr) {                         \
    return tarn::fitting::edit_pointer(task, id, ptr);                                                                 \
  }                                                                                                                    \
  TARN_EXPORT int32_t tarn_df_kernel_##t##EditIdxPtr(DFTask* task, int64_t id, int64_t index, const Real* ptr) {       \
    return tarn::fitting::edit_pointer_at(task, id, index, ptr);                                                       \
  }
TARN_DF_TWINS(TARN_EDITORS)

TARN_EXPORT int32_t tarn_df_kernel_iEditVal(DFTask* task, int64_t id, int64_t value) {
  return tarn::fitting::edit_value(task, id, value);
}
