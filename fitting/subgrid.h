// The subgrid of a Subbotin spline: the knots t[0] to t[nx] at which its nx quadratic pieces join. Piece i lies from
// t[i] to t[i + 1] and holds the partition point x[i]. Constructors and evaluators read it from the task here.
#pragma once

#include "fitting/task.h"

namespace tarn::fitting {

// Point i of the partition; of a uniform one both ends exactly.
template <class Real, bool uniform> Real partition_point(const DFTask* task, int64_t i) {
  const Real* x = reals<Real>(task->x);
  if constexpr (!uniform) {
    return x[i];
  } else {
    return i == task->nx - 1 ? x[1] : x[0] + Real(i) * ((x[1] - x[0]) / Real(task->nx - 1));
  }
}

// Without ic: the ends of the partition and the middles of its cells. With it: the caller's knots, or, of a uniform
// subgrid, the two ends.
template <class Real, bool uniform, bool uniform_subgrid> Real subgrid_knot(const DFTask* task, int64_t i) {
  const Real* ic = reals<Real>(task->ic);
  const int64_t n = task->nx;
  if (!ic) {
    const Real left = partition_point<Real, uniform>(task, i == 0 ? 0 : i - 1);
    const Real right = partition_point<Real, uniform>(task, i == n ? n - 1 : i);
    return left + Real(0.5) * (right - left);
  }
  if constexpr (!uniform_subgrid) {
    return ic[i];
  } else {
    return i == n ? ic[1] : ic[0] + Real(i) * ((ic[1] - ic[0]) / Real(n));
  }
}

inline bool has_uniform_subgrid(const DFTask* task) { return (task->icType & TARN_DF_IC_UNIFORM_SUBGRID) != 0; }

// The same, where the choice is not yet made.
template <class Real> Real subgrid_knot(const DFTask* task, int64_t i) {
  if (is_uniform(task))
    return has_uniform_subgrid(task) ? subgrid_knot<Real, true, true>(task, i)
                                     : subgrid_knot<Real, true, false>(task, i);
  return has_uniform_subgrid(task) ? subgrid_knot<Real, false, true>(task, i)
                                   : subgrid_knot<Real, false, false>(task, i);
}

}
