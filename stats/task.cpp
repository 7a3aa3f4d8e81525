#include "stats/task.h"

namespace tarn::stats {
namespace {

// With data the storage and the count are judged too; without, a task can be made first and be given its data later.
int32_t check_new_task(const void* dimension, const void* count, const void* storage, const void* observations,
                       int32_t integer_width) {
  SSTask widths = {};
  widths.integer_width = integer_width;
  if (!dimension || read_integer(&widths, dimension) < 1) return TARN_SS_ERROR_DIMENSION;
  if (!observations) return TARN_SS_OK;
  if (!storage) return TARN_SS_ERROR_NULL_STORAGE;
  const int64_t word = read_integer(&widths, storage);
  if (word != TARN_SS_STORAGE_ROWS && word != TARN_SS_STORAGE_COLUMNS) return TARN_SS_ERROR_STORAGE;
  if (!count || read_integer(&widths, count) < 1) return TARN_SS_ERROR_OBSERVATIONS;
  return TARN_SS_OK;
}

template <class Real>
int32_t new_task(void** task_out, const void* dimension, const void* count, const void* storage,
                 const Real* observations, const Real* weights, const void* variable_mask, int32_t integer_width) {
  const int32_t status = check_new_task(dimension, count, storage, observations, integer_width);
  if (status != TARN_SS_OK) return status;
  SSTask* task = allocate<SSTask>(1);
  if (!task) return TARN_SS_ERROR_ALLOCATION;
  *task = {};
  task->integer_width = integer_width;
  task->task_format = 2;
  task->task_type = sizeof(Real) == sizeof(double);
  task->dimension = const_cast<void*>(dimension);
  task->observation_count = const_cast<void*>(count);
  task->observation_storage = const_cast<void*>(storage);
  task->observations = const_cast<Real*>(observations);
  task->weights = const_cast<Real*>(weights);
  task->variable_mask = const_cast<void*>(variable_mask);
  *task_out = task;
  return TARN_SS_OK;
}

}
}

TARN_EXPORT int32_t __kestdSSNewTask(void** task_out, const void* dimension, const void* observation_count,
                                     const void* observation_storage, const double* observations, const double* weights,
                                     const void* variable_mask, int32_t integer_width) {
  return tarn::stats::new_task(task_out, dimension, observation_count, observation_storage, observations, weights,
                               variable_mask, integer_width);
}
TARN_EXPORT int32_t __kestsSSNewTask(void** task_out, const void* dimension, const void* observation_count,
                                     const void* observation_storage, const float* observations, const float* weights,
                                     const void* variable_mask, int32_t integer_width) {
  return tarn::stats::new_task(task_out, dimension, observation_count, observation_storage, observations, weights,
                               variable_mask, integer_width);
}

TARN_EXPORT int32_t __kestSSDeleteTask(void** task_pointer) {
  if (!task_pointer) return TARN_SS_ERROR_NULL_TASK;
  SSTask* task = static_cast<SSTask*>(*task_pointer);
  if (task->saved_mean) tarn_serv_deallocate(task->saved_mean);
  for (int32_t hook = 0; hook < task->cleanup_count; ++hook) task->cleanup_hook(task);
  tarn_serv_deallocate(task);
  *task_pointer = nullptr;
  return TARN_SS_OK;
}
