// Making and deleting a task.
#include "fitting/task/pointers.h"

namespace tarn::fitting {
namespace {

template <class Real>
int32_t check_new_task(int64_t nx, const Real* x, int64_t x_hint, int64_t ny, const Real* y, int64_t y_hint) {
  if (nx < 2) return TARN_DF_ERROR_NX;
  if (!x) return TARN_DF_ERROR_NULL_X;
  if (!is_partition_hint(x_hint)) return TARN_DF_ERROR_X_HINT;
  if (ny != 0 && !y) return TARN_DF_ERROR_NULL_Y;
  if (ny == 0 && y) return TARN_DF_ERROR_NY;
  if (!is_storage_hint(y_hint)) return TARN_DF_ERROR_Y_HINT;
  return TARN_DF_OK;
}

// From the record's allocation on, the caller has it, so that a failure loses nothing: DeleteTask frees what there is.
template <class Real>
int32_t new_task(DFTask** place, int64_t nx, const Real* x, int64_t x_hint, int64_t ny, const Real* y, int64_t y_hint,
                 int32_t wide_interface) {
  if (const int32_t status = check_new_task(nx, x, x_hint, ny, y, y_hint)) return status;
  if (!place) return TARN_DF_ERROR_NULL_TASK;
  DFTask* task = allocate<DFTask>(1);
  if (!task) return TARN_DF_ERROR_ALLOCATION;
  *place = task;
  *task = {};
  task->nx = nx;
  task->x = x;
  task->xHint = x_hint;
  if (y) {
    if (const int32_t status = lay_out_functions(task, y, ny, y_hint)) return status;
  }
  task->yHint = y_hint;
  task->ny = ny;
  task->wideInterface = wide_interface;
  task->recordMark = 4;
  task->isDouble = sizeof(Real) == sizeof(double);
  task->taskKind = 1;
  task->binTable = allocate<int64_t[2]>(TARN_DF_BIN_ENTRIES);
  if (!task->binTable) return TARN_DF_ERROR_ALLOCATION;
  if (x_hint != TARN_DF_PARTITION_UNIFORM) fill_bins<Real>(task);
  return TARN_DF_OK;
}

}
}

#define TARN_NEW_TASK(t, Real)                                                                                         \
  TARN_EXPORT int32_t tarn_df_kernel_##t##NewTask1D(DFTask** task, int64_t nx, const Real* x, int64_t xHint,           \
                                                    int64_t ny, const Real* y, int64_t yHint, int32_t wideInterface) { \
    return tarn::fitting::new_task(task, nx, x, xHint, ny, y, yHint, wideInterface);                                   \
  }
TARN_DF_TWINS(TARN_NEW_TASK)

TARN_EXPORT int32_t tarn_df_kernel_DeleteTask(DFTask** task) {
  if (!task || !*task) return TARN_DF_ERROR_NULL_TASK;
  tarn_serv_deallocate((*task)->y);
  tarn_serv_deallocate((*task)->coeff);
  tarn_serv_deallocate((*task)->binTable);
  tarn_serv_deallocate(*task);
  *task = nullptr;
  return TARN_DF_OK;
}
