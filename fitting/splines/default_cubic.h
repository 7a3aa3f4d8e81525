// The cubic whose second derivatives s at the inner points the caller gives in ic; those at the two ends follow from the
// boundary condition. It interpolates, and its second derivative is continuous; the first need not be.
#pragma once

#include "fitting/splines/boundaries.h"
#include "fitting/splines/grid.h"

namespace tarn::fitting {

template <class Real, bool interleaved, bool uniform, Column column> struct DefaultCubic {
  explicit DefaultCubic(const DFTask* of) : task(of), grid(of), n(of->nx) {}

  static int64_t scratch_size(int64_t n) { return 3 * n - 2; }

  void write(int64_t j, Real* scratch) const {
    const Values<Real, interleaved> y(task, j);
    Real *slope = scratch, *inverse = slope + (n - 1), *bend = inverse + (n - 1); // bend: s
    for_lanes<Real>(0, n - 1, [&](auto lane, int64_t i) {
      using V = decltype(lane);
      const V reciprocal = grid.template inverse<V>(i);
      store(inverse + i, reciprocal);
      store(slope + i, (y.template at<V>(i + 1) - y.template at<V>(i)) * reciprocal);
    });
    const Real* given = reals<Real>(task->ic);
    for (int64_t i = 1; i + 1 < n; ++i) bend[i] = given[i - 1];
    bend[0] = end_value(left, slope, inverse, bend);
    bend[n - 1] = end_value(right, slope, inverse, bend);
    Real* cells = coefficients<Real>(task, j);
    for_lanes<Real>(0, n - 1, [&](auto lane, int64_t i) {
      using V = decltype(lane);
      const V from = load<V>(bend + i), to = load<V>(bend + i + 1), h = grid.template length<V>(i);
      const V sixth = broadcast<V>(Real(1) / 6), third = broadcast<V>(Real(1) / 3), half = broadcast<V>(Real(0.5));
      store_cells(cells + i * TARN_DF_ORDER_CUBIC, y.template at<V>(i),
                  load<V>(slope + i) - (to * sixth + from * third) * h, from * half,
                  (to - from) * sixth * load<V>(inverse + i));
    });
  }

  const DFTask* task;
  Grid<Real, uniform> grid;
  int64_t n;

  static constexpr bool gives_1st(Side side) {
    return column == both_1st || column == (side == left ? left_1st_right_2nd : left_2nd_right_1st);
  }

  // The second derivative at an end, from that at the point next to it.
  Real end_value(Side side, const Real* slope, const Real* inverse, const Real* bend) const {
    const int64_t outer = side == left ? 0 : n - 2, inner = side == left ? 1 : n - 3;
    const Real next = bend[side == left ? 1 : n - 2];
    if constexpr (column == free_end) return 0;
    if constexpr (column == not_a_knot) { // the third derivative of the two outermost cells is the same
      if (n == 3) return next;            // both ends ask for the same; it is 0 then
      const Real after_next = bend[side == left ? 2 : n - 3];
      return next - grid.template length<Real>(outer) * inverse[inner] * (after_next - next);
    }
    const Real* bc = reals<Real>(task->bc);
    if constexpr (column == periodic) return bc[0];
    const Real given = bc[side == left ? 0 : 1];
    if (!gives_1st(side)) return given;
    const Real off = side == left ? slope[outer] - given : given - slope[outer];
    return 3 * off * inverse[outer] - next / 2;
  }
};

template <class Real, bool interleaved, bool uniform, Column column> int32_t default_cubic(const DFTask* task) {
  const DefaultCubic<Real, interleaved, uniform, column> spline(task);
  Real* scratch = allocate<Real>(spline.scratch_size(task->nx));
  if (!scratch) return TARN_DF_ERROR_ALLOCATION;
  for (int64_t j = 0; j < function_count(task); ++j) spline.write(j, scratch);
  tarn_serv_deallocate(scratch);
  return TARN_DF_OK;
}

}
