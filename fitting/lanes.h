// Vectors of 16 bytes, as the statistics have them, with what splines need besides: choices by lane, and stores that
// interleave. A formula written over a type V serves a vector of reals and a single real alike.
#pragma once

#include <emmintrin.h>

#include "stats/lanes.h"

namespace tarn::fitting {

using stats::broadcast;
using stats::lanes;
using stats::load;
using stats::store;
using stats::Vector;

template <class V> struct IntegersOf;
template <> struct IntegersOf<Vector<double>> { typedef int64_t Type __attribute__((vector_size(16))); };
template <> struct IntegersOf<Vector<float>> { typedef int32_t Type __attribute__((vector_size(16))); };
template <class V> using Integers = typename IntegersOf<V>::Type;

// yes where the comparison held, else no.
template <class T> T select(bool held, T yes, T no) { return held ? yes : no; }
template <class V> V select(Integers<V> held, V yes, V no) {
  return V((held & Integers<V>(yes)) | (~held & Integers<V>(no)));
}

inline double magnitude(double x) { return __builtin_fabs(x); }
inline float magnitude(float x) { return __builtin_fabsf(x); }
template <class V> V magnitude(V x) {
  return V(Integers<V>(x) & ~Integers<V>(-V{})); // -0 is the sign bit
}

// The second one where they are equal or no numbers, as the processor has it.
template <class Real> Real smaller(Real a, Real b) { return a < b ? a : b; }
template <class Real> Real larger(Real a, Real b) { return a > b ? a : b; }
inline Vector<double> smaller(Vector<double> a, Vector<double> b) { return _mm_min_pd(a, b); }
inline Vector<double> larger(Vector<double> a, Vector<double> b) { return _mm_max_pd(a, b); }
inline Vector<float> smaller(Vector<float> a, Vector<float> b) { return _mm_min_ps(a, b); }
inline Vector<float> larger(Vector<float> a, Vector<float> b) { return _mm_max_ps(a, b); }

// Whether a comparison held in any lane.
template <class Held> bool any(Held held) {
  if constexpr (sizeof held == sizeof(bool)) {
    return held;
  } else if constexpr (sizeof held[0] == sizeof(double)) {
    return _mm_movemask_pd(Vector<double>(held)) != 0;
  } else {
    return _mm_movemask_ps(Vector<float>(held)) != 0;
  }
}

// Runs body(V, i) for i = from, from + lanes, ... while whole vectors remain before to, then body(Real, i) one by one.
template <class Real, class Body> inline void for_lanes(int64_t from, int64_t to, Body body) {
  constexpr int64_t step = lanes<Vector<Real>, Real>;
  int64_t i = from;
#pragma GCC unroll 4
  for (; i <= to - step; i += step) body(Vector<Real>{}, i);
#pragma GCC unroll 1
  for (; i < to; ++i) body(Real{}, i);
}

// Four coefficients of each lane's cell, one cell after the other.
template <class Real> void store_cells(Real* at, Real c0, Real c1, Real c2, Real c3) {
  at[0] = c0, at[1] = c1, at[2] = c2, at[3] = c3;
}
inline void store_cells(double* at, Vector<double> c0, Vector<double> c1, Vector<double> c2, Vector<double> c3) {
  store(at, __builtin_shufflevector(c0, c1, 0, 2));
  store(at + 2, __builtin_shufflevector(c2, c3, 0, 2));
  store(at + 4, __builtin_shufflevector(c0, c1, 1, 3));
  store(at + 6, __builtin_shufflevector(c2, c3, 1, 3));
}
inline void store_cells(float* at, Vector<float> c0, Vector<float> c1, Vector<float> c2, Vector<float> c3) {
  const Vector<float> low01 = __builtin_shufflevector(c0, c1, 0, 4, 1, 5);
  const Vector<float> low23 = __builtin_shufflevector(c2, c3, 0, 4, 1, 5);
  const Vector<float> high01 = __builtin_shufflevector(c0, c1, 2, 6, 3, 7);
  const Vector<float> high23 = __builtin_shufflevector(c2, c3, 2, 6, 3, 7);
  store(at, __builtin_shufflevector(low01, low23, 0, 1, 4, 5));
  store(at + 4, __builtin_shufflevector(low01, low23, 2, 3, 6, 7));
  store(at + 8, __builtin_shufflevector(high01, high23, 0, 1, 4, 5));
  store(at + 12, __builtin_shufflevector(high01, high23, 2, 3, 6, 7));
}

}
