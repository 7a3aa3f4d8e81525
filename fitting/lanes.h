// Vectors of 16 bytes and the operations on them that have no operator.
#pragma once

#include <emmintrin.h>
#include <stdint.h>

namespace tarn::fitting {

template <class Real> struct LanesOf;
template <> struct LanesOf<double> { typedef double Vector __attribute__((vector_size(16))); };
template <> struct LanesOf<float> { typedef float Vector __attribute__((vector_size(16))); };
template <class Real> using Vector = typename LanesOf<Real>::Vector;
typedef int32_t Int4 __attribute__((vector_size(16)));

template <class Real> constexpr int lanes = 16 / sizeof(Real);

template <class Real> inline Vector<Real> load(const Real* at) {
  Vector<Real> value;
  __builtin_memcpy(&value, at, sizeof value);
  return value;
}
template <class Real> inline void store(Real* at, Vector<Real> value) { __builtin_memcpy(at, &value, sizeof value); }

inline Vector<double> broadcast(double x) { return Vector<double>{x, x}; }
inline Vector<float> broadcast(float x) { return Vector<float>{x, x, x, x}; }

// The second operand where the first is NaN.
inline Vector<double> larger(Vector<double> a, Vector<double> b) { return _mm_max_pd(a, b); }
inline Vector<float> larger(Vector<float> a, Vector<float> b) { return _mm_max_ps(a, b); }
inline Vector<double> smaller(Vector<double> a, Vector<double> b) { return _mm_min_pd(a, b); }
inline Vector<float> smaller(Vector<float> a, Vector<float> b) { return _mm_min_ps(a, b); }

}
