// The standard quadratic spline, whose knots are the partition: once its value at the middle of the first cell is given,
// one continuous derivative determines the values s at the middles of all cells, from left to right.
#pragma once

#include "fitting/splines/grid.h"

namespace tarn::fitting {

constexpr int64_t stack_points = 4095; // from here on the middle values are allocated

template <class Real, class V> void store_parabolas(Real* at, V c0, V c1, V c2) {
  if constexpr (lanes<V, Real> == 1) {
    at[0] = c0, at[1] = c1, at[2] = c2;
  } else {
    for (int lane = 0; lane < lanes<V, Real>; ++lane, at += 3) at[0] = c0[lane], at[1] = c1[lane], at[2] = c2[lane];
  }
}

template <class Real, bool interleaved, bool uniform>
void write_parabolas(const DFTask* task, int64_t j, Real* middle) {
  const Grid<Real, uniform> grid(task);
  const Values<Real, interleaved> y(task, j);
  const int64_t n = task->nx;
  middle[0] = reals<Real>(task->bc)[0];
  for (int64_t i = 0; i + 2 < n; ++i) {
    const Real sum_before = y[i] + 3 * y[i + 1], sum_after = 3 * y[i + 1] + y[i + 2];
    if constexpr (uniform) {
      middle[i + 1] = Real(0.25) * (sum_before + sum_after) - middle[i];
    } else {
      const Real h0 = grid.template length<Real>(i), h1 = grid.template length<Real>(i + 1);
      middle[i + 1] = Real(0.25) * h1 * (sum_before / h0 + sum_after / h1) - (h1 / h0) * middle[i];
    }
  }
  Real* cells = coefficients<Real>(task, j);
  for_lanes<Real>(0, n - 1, [&](auto lane, int64_t i) {
    using V = decltype(lane);
    const V value = y.template at<V>(i), s = load<V>(middle + i);
    const V half_inverse = broadcast<V>(Real(2)) * grid.template inverse<V>(i); // 1 / g, g being half the cell
    const V bend = (value - (s + s) + y.template at<V>(i + 1)) * broadcast<V>(Real(0.5)); // c2 g^2
    store_parabolas(cells + i * TARN_DF_ORDER_QUADRATIC, value, (s - value - bend) * half_inverse,
                    bend * (half_inverse * half_inverse));
  });
}

template <class Real, bool interleaved, bool uniform> int32_t standard_quadratic(const DFTask* task) {
  const int64_t n = task->nx;
  Real on_stack[stack_points + 1];
  Real* middle = n < stack_points ? on_stack : allocate<Real>(n + 1);
  if (!middle) return TARN_DF_ERROR_ALLOCATION;
  for (int64_t j = 0; j < function_count(task); ++j) write_parabolas<Real, interleaved, uniform>(task, j, middle);
  if (middle != on_stack) tarn_serv_deallocate(middle);
  return TARN_DF_OK;
}

}
