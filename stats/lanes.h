// Vectors of 16 bytes. A formula written over a type V serves a vector of reals and a single real alike.
#pragma once

#include <stdint.h>

namespace tarn::stats {

template <class Real> struct LanesOf;
template <> struct LanesOf<double> { typedef double Vector __attribute__((vector_size(16))); };
template <> struct LanesOf<float> { typedef float Vector __attribute__((vector_size(16))); };
template <class Real> using Vector = typename LanesOf<Real>::Vector;

template <class V, class Real> constexpr int lanes = sizeof(V) / sizeof(Real);

template <class V, class Real> inline V load(const Real* at) {
  V value;
  __builtin_memcpy(&value, at, sizeof value);
  return value;
}
template <class V, class Real> inline void store(Real* at, V value) { __builtin_memcpy(at, &value, sizeof value); }

template <class V, class Real> inline V broadcast(Real x) {
  if constexpr (sizeof(V) == sizeof(Real)) {
    return x;
  } else if constexpr (sizeof(V) == 2 * sizeof(Real)) {
    return V{x, x};
  } else {
    return V{x, x, x, x};
  }
}

template <class Real, class V> inline Real horizontal_sum(V v) {
  if constexpr (sizeof(V) == sizeof(Real)) {
    return v;
  } else if constexpr (sizeof(V) == 2 * sizeof(Real)) {
    return v[0] + v[1];
  } else {
    return (v[0] + v[2]) + (v[1] + v[3]);
  }
}

}
