// The subgrid of a Subbotin spline: the knots t[0] to t[nx] at which its nx quadratic pieces join. Piece i lies from
// t[i] to t[i + 1] and holds the partition point x[i]. Constructors and evaluators read it from the task here.
#pragma once

#include "fitting/task.h"

namespace tarn::fitting {

// Point i of the partition, and the right end exactly.
template <class Real> Real partition_point(const DFTask* task, int64_t i) {
  const Real* x = reals<Real>(task->x);
  if (!is_uniform(task)) return x[i];
  if (i == task->nx - 1) return x[1];
  return x[0] + Real(i) * ((x[1] - x[0]) / Real(task->nx - 1));
}

template <class Real> struct Subgrid {
  const DFTask* task;
  const Real* ic;
  int64_t pieces;
  bool uniform;

  explicit Subgrid(const DFTask* of)
      : task(of), ic(reals<Real>(of->ic)), pieces(of->nx), uniform((of->icType & TARN_DF_IC_UNIFORM_SUBGRID) != 0) {}

  // Without ic the ends of the partition and the middles of its cells; with it the caller's knots, all or the two ends.
  Real operator[](int64_t i) const {
    if (!ic) {
      if (i == 0 || i == pieces) return partition_point<Real>(task, i == 0 ? 0 : pieces - 1);
      const Real left = partition_point<Real>(task, i - 1);
      return left + Real(0.5) * (partition_point<Real>(task, i) - left);
    }
    if (!uniform) return ic[i];
    return i == pieces ? ic[1] : ic[0] + Real(i) * ((ic[1] - ic[0]) / Real(pieces));
  }
};

}
