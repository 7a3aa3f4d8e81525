// What the constructors read: the partition with its cell lengths, uniform or general, and the functions' values,
// side by side or interleaved. Both distinctions are template parameters, so that the loops have no branch for them
// and no division by a length on a uniform partition.
#pragma once

#include "fitting/lanes.h"
#include "fitting/task.h"

namespace tarn::fitting {

template <class Real, bool uniform> struct Grid;

template <class Real> struct Grid<Real, false> {
  const Real* x;
  int64_t n;
  explicit Grid(const DFTask* task) : x(reals<Real>(task->x)), n(task->nx) {}
  template <class V> V length(int64_t i) const { return load<V>(x + i + 1) - load<V>(x + i); }
  template <class V> V inverse(int64_t i) const { return broadcast<V>(Real(1)) / length<V>(i); }
};

template <class Real> struct Grid<Real, true> {
  Real h, inverse_h;
  int64_t n;
  explicit Grid(const DFTask* task) : n(task->nx) {
    const Real* x = reals<Real>(task->x);
    h = (x[1] - x[0]) / Real(n - 1);
    inverse_h = Real(n - 1) / (x[1] - x[0]);
  }
  template <class V> V length(int64_t) const { return broadcast<V>(h); }
  template <class V> V inverse(int64_t) const { return broadcast<V>(inverse_h); }
};

// One function's values.
template <class Real, bool interleaved> struct Values {
  const Real* base;
  int64_t step;
  Values(const DFTask* task, int64_t j) {
    const Samples<Real> from = samples<Real>(task, j);
    base = from.base;
    step = from.step;
  }
  template <class V> V at(int64_t i) const {
    if constexpr (!interleaved) {
      return load<V>(base + i);
    } else if constexpr (lanes<V, Real> == 1) {
      return base[i * step];
    } else if constexpr (lanes<V, Real> == 2) {
      return V{base[i * step], base[(i + 1) * step]};
    } else {
      return V{base[i * step], base[(i + 1) * step], base[(i + 2) * step], base[(i + 3) * step]};
    }
  }
  Real operator[](int64_t i) const { return at<Real>(i); }
};

// The cubic of a cell by Hermite's formula, from its slope and the derivatives at its two ends.
template <class Real, class V>
inline void write_cubic(Real* cell, V value, V slope, V inverse_length, V left, V right) {
  const V rise = slope - left, bend = ((right - slope) - rise) * inverse_length;
  store_cells(cell, value, left, rise * inverse_length - bend, bend * inverse_length);
}

}
