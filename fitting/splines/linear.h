// The polygon: in each cell the value at its left end and its slope.
#pragma once

#include "fitting/splines/grid.h"
#include "fitting/splines/threading.h"

namespace tarn::fitting {

namespace linear {
constexpr int64_t threaded_values = 128, item_cells = 1024, item_functions = 4;
}

inline void store_lines(double* at, Vector<double> c0, Vector<double> c1) {
  store(at, __builtin_shufflevector(c0, c1, 0, 2));
  store(at + 2, __builtin_shufflevector(c0, c1, 1, 3));
}
inline void store_lines(float* at, Vector<float> c0, Vector<float> c1) {
  store(at, __builtin_shufflevector(c0, c1, 0, 4, 1, 5));
  store(at + 4, __builtin_shufflevector(c0, c1, 2, 6, 3, 7));
}
template <class Real> void store_lines(Real* at, Real c0, Real c1) { at[0] = c0, at[1] = c1; }

template <class Real, bool interleaved, bool uniform>
void write_lines(const DFTask* task, int64_t j, int64_t first, int64_t end) {
  const Grid<Real, uniform> grid(task);
  const Values<Real, interleaved> y(task, j);
  Real* cells = coefficients<Real>(task, j);
  for_lanes<Real>(first, end, [&](auto lane, int64_t i) {
    using V = decltype(lane);
    const V value = y.template at<V>(i), rise = y.template at<V>(i + 1) - value;
    const V slope = uniform ? rise * grid.template inverse<V>(i) : rise / grid.template length<V>(i);
    store_lines(cells + i * TARN_DF_ORDER_LINEAR, value, slope);
  });
}

struct LinearWork {
  const DFTask* task;
  Items items;
};

template <class Real, bool interleaved, bool uniform> void linear_item(int64_t number, void* context) {
  const LinearWork& work = *static_cast<const LinearWork*>(context);
  const Item item = work.items[number];
  for (int64_t j = item.first_function; j < item.end_function; ++j)
    write_lines<Real, interleaved, uniform>(work.task, j, item.first_cell, item.end_cell);
}

template <class Real, bool interleaved, bool uniform>
int32_t linear_spline(const DFTask* task, const tarn_threader* threader, tarn_loop_body body) {
  const int64_t n = task->nx, functions = function_count(task);
  if (task->bcType == TARN_DF_BC_PERIODIC) {
    for (int64_t j = 0; j < functions; ++j) {
      const Values<Real, interleaved> y(task, j);
      if (y[0] != y[n - 1]) return TARN_DF_ERROR_NOT_PERIODIC;
    }
  }
  if (n < divided_up(linear::threaded_values, functions)) {
    for (int64_t j = 0; j < functions; ++j) write_lines<Real, interleaved, uniform>(task, j, 0, n - 1);
    return TARN_DF_OK;
  }
  LinearWork work = {task,
                     {n - 1, functions, divided_up(n - 1, linear::item_cells),
                      divided_up(functions, linear::item_functions), linear::item_cells, linear::item_functions}};
  run_loop(threader, work.items.count(), threads_for(threader, work.items.count()), &work, body);
  return TARN_DF_OK;
}

}
