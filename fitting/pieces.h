// The pieces of a spline: which piece a site belongs to, and where a piece's powers start. Interpolation and integration
// read the same ones.
#pragma once

#include <emmintrin.h>

#include "fitting/lanes.h"
#include "fitting/subgrid.h"

namespace tarn::fitting {

// The kinds of interpolant, in the order of the evaluators.
enum class Interpolant : int32_t { Linear, Quadratic, Cubic, Subbotin, Arbitrary, StepLeft, StepRight, LookUp, None };

// Order 0 with a type of no meaning of its own is a spline that the caller's three call-backs know.
inline Interpolant interpolant_of(const DFTask* task, bool all_callbacks) {
  constexpr int64_t cubic_types = 0x23D; // bits 0, 2, 3, 4, 5, 9
  const int64_t order = task->splineOrder, type = task->splineType;
  switch (order) {
  case TARN_DF_ORDER_LINEAR: return Interpolant::Linear;
  case TARN_DF_ORDER_QUADRATIC:
    return type == TARN_DF_TYPE_DEFAULT    ? Interpolant::Quadratic
           : type == TARN_DF_TYPE_SUBBOTIN ? Interpolant::Subbotin
                                           : Interpolant::None;
  case TARN_DF_ORDER_CUBIC:
    return type >= 0 && type < 64 && (cubic_types >> type & 1) ? Interpolant::Cubic : Interpolant::None;
  case TARN_DF_ORDER_NONE:
    return type == TARN_DF_TYPE_STEP_LEFT    ? Interpolant::StepLeft
           : type == TARN_DF_TYPE_STEP_RIGHT ? Interpolant::StepRight
           : type == TARN_DF_TYPE_LOOKUP     ? Interpolant::LookUp
           : all_callbacks                   ? Interpolant::Arbitrary
                                             : Interpolant::None;
  default: return order > TARN_DF_ORDER_CUBIC ? Interpolant::Arbitrary : Interpolant::None;
  }
}

// What an interpolant reads: coefficients, or the functions' values. Returns the status for what is missing.
inline int32_t check_source(const DFTask* task, Interpolant kind) {
  if (kind == Interpolant::StepLeft || kind == Interpolant::StepRight || kind == Interpolant::LookUp)
    return task->y && task->y[0] ? TARN_DF_OK : TARN_DF_ERROR_NULL_Y;
  if (task->splineOrder == TARN_DF_ORDER_NONE) return TARN_DF_OK;
  return task->coeff && task->coeff[0] ? TARN_DF_OK : TARN_DF_ERROR_NULL_COEFF;
}

// The points of a partition, given one by one or by the ends of a uniform one.
template <class Real, bool Uniform> struct Points {
  const Real* x;
  int64_t n;
  Real left, right, step; // step: of a uniform partition
  Real operator[](int64_t i) const { return Uniform ? left + Real(i) * step : x[i]; }
};

// Calls body(points) with the points of the task's kind of partition.
template <class Real, class Body> auto with_points(const DFTask* task, Body body) {
  const Real* x = reals<Real>(task->x);
  const int64_t n = task->nx;
  if (is_uniform(task)) return body(Points<Real, true>{x, n, x[0], x[1], (x[1] - x[0]) / Real(n - 1)});
  return body(Points<Real, false>{x, n, x[0], x[n - 1], 0});
}

// Where 0 to last are the valid indices.
inline int64_t nearest_index(int64_t i, int64_t last) {
  if (__builtin_expect(static_cast<uint64_t>(i) <= static_cast<uint64_t>(last), 1)) return i;
  return i < 0 ? 0 : last;
}

// Indices from 0 to below 2^31 as reals, converted together.
inline Vector<double> reals_of(const int64_t (&index)[2]) { // a word below 2^52 under the exponent of 2^52
  const __m128i two_52 = _mm_set1_epi64x(0x4330000000000000);
  return _mm_castsi128_pd(_mm_or_si128(_mm_set_epi64x(index[1], index[0]), two_52)) - _mm_castsi128_pd(two_52);
}
inline Vector<float> reals_of(const int64_t (&index)[4]) {
  return _mm_cvtepi32_ps(_mm_set_epi32(static_cast<int32_t>(index[3]), static_cast<int32_t>(index[2]),
                                       static_cast<int32_t>(index[1]), static_cast<int32_t>(index[0])));
}

template <class Pieces, int Count> auto origins_by_one(const Pieces& pieces, const int64_t (&piece)[Count]) {
  Vector<decltype(pieces.origin(0))> v;
#pragma GCC unroll 4
  for (int l = 0; l < Count; ++l) v[l] = pieces.origin(piece[l]);
  return v;
}

// One piece for each inner cell; the first and the last serve what lies outside.
template <class Real, bool Uniform> struct CellPieces {
  static constexpr bool uniform = Uniform;
  Points<Real, Uniform> points;
  int64_t piece(int64_t cell, Real) const { return nearest_index(cell - 1, points.n - 2); }
  Real origin(int64_t piece) const { return points[piece]; }
  template <int Count> Vector<Real> origins(const int64_t (&piece)[Count]) const {
    if (Uniform && (sizeof(Real) == 8 || points.n <= INT32_MAX))
      return broadcast<Vector<Real>>(points.left) + reals_of(piece) * broadcast<Vector<Real>>(points.step);
    return origins_by_one(*this, piece);
  }
  Real begin(int64_t piece) const { return points[piece]; }
  Real end(int64_t piece) const { return points[piece + 1]; }
};

// One piece for each point of the partition, from the knot before it to the knot after it.
template <class Real, bool Uniform> struct SubbotinPieces {
  static constexpr bool uniform = Uniform;
  Points<Real, Uniform> points;
  const DFTask* task;
  int64_t piece(int64_t cell, Real site) const {
    if (cell < 1) return 0;
    if (cell >= points.n) return points.n - 1;
    return site < begin(cell) ? cell - 1 : cell;
  }
  Real origin(int64_t piece) const { return piece == points.n - 1 ? points.right : points[piece]; }
  template <int Count> Vector<Real> origins(const int64_t (&piece)[Count]) const {
    return origins_by_one(*this, piece);
  }
  Real begin(int64_t piece) const { return subgrid_knot<Real>(task, piece); }
  Real end(int64_t piece) const { return subgrid_knot<Real>(task, piece + 1); }
};

}
