// What the words of variants.def stand for, where a variant stands in its table, and the checks before one is chosen.
#pragma once

#include "fitting/splines/boundaries.h"
#include "fitting/splines/variants.def"
#include "tarn/fitting_splines.h"

namespace tarn::fitting {

namespace words {
constexpr bool Cols = true, Rows = false; // interleaved
constexpr bool NoUniformGrid = false, UniformGrid = true;
constexpr bool NoUniformSubgrid = false, UniformSubgrid = true;
constexpr Column at_NotAKnot = not_a_knot, at_FreeEnd = free_end, at_Periodic = periodic;
constexpr Column at_1st1st = both_1st, at_1st2nd = left_1st_right_2nd;
constexpr Column at_2nd1st = left_2nd_right_1st, at_2nd2nd = both_2nd;
}

constexpr int64_t places = 4;
constexpr int64_t place_of(bool interleaved, bool uniform) { return (interleaved ? 0 : 2) + (uniform ? 1 : 0); }
constexpr int64_t place_of(bool interleaved, bool uniform, int64_t column) {
  return place_of(interleaved, uniform) * column_count + column;
}
constexpr int64_t place_of(bool uniform_subgrid, bool interleaved, bool uniform, int64_t column) {
  return (uniform_subgrid ? places * column_count : 0) + place_of(interleaved, uniform, column);
}

// The kinds to which the caller gives derivatives take those at the ends of a period from him too; told by the type.
inline bool gives_period_value(const DFTask* task) {
  return task->splineType == TARN_DF_TYPE_DEFAULT || task->splineType == TARN_DF_TYPE_HERMITE;
}

// The column of the task's boundary code.
inline int32_t find_column(const DFTask* task, bool takes_none, int64_t* column) {
  *column = takes_none && task->bcType == TARN_DF_BC_NONE ? int64_t(not_set) : column_of(task->bcType);
  if (*column < 0) return TARN_DF_ERROR_BC_TYPE;
  const bool needs_values = has_end_values(*column) || (*column == periodic && gives_period_value(task));
  return needs_values && !task->bc ? TARN_DF_ERROR_NULL_BC : TARN_DF_OK;
}

// What a half-made task lacks; the last of all checks.
inline int32_t check_pointers(const DFTask* task) {
  if (!task->x) return TARN_DF_ERROR_NULL_X;
  if (!task->y) return TARN_DF_ERROR_NULL_Y;
  return task->coeff ? TARN_DF_OK : TARN_DF_ERROR_NULL_COEFF;
}

}
