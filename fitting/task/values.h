// The integers of a task by their parameter numbers.
#pragma once

#include "fitting/task.h"

namespace tarn::fitting {

// The 64-bit fields, parameters 14 to 22.
inline int64_t& value_field(DFTask* task, int64_t id) {
  switch (id) {
  case TARN_DF_NX: return task->nx;
  case TARN_DF_X_HINT: return task->xHint;
  case TARN_DF_NY: return task->ny;
  case TARN_DF_Y_HINT: return task->yHint;
  case TARN_DF_SPLINE_ORDER: return task->splineOrder;
  case TARN_DF_SPLINE_TYPE: return task->splineType;
  case TARN_DF_IC_TYPE: return task->icType;
  case TARN_DF_BC_TYPE: return task->bcType;
  default: return task->coeffHint;
  }
}

}
