// Frac and Modf: the fraction of x, and x as integral part and fraction. All of them have the sign of x.
#pragma once

#include "vector/real/rounding/round.h"

namespace tarn::TARN_ISA {

template <class T> struct Parts { VectorOf<T> integral, fraction; };
template <class T> static TARN_INLINE Parts<T> split(VectorOf<T> x) {
  const VectorOf<T> integral = rounded<toward_zero>(x);
  return {integral, or_sign_of(x - integral, x)}; // the sign matters where nothing is left
}

// Infinities and NaNs.
template <class T> static TARN_INLINE Int4 all_ones_exponent(Int4 x) {
  constexpr int32_t field = sizeof(T) == 8 ? 0x7FF00000 : 0x7F800000;
  return (x & field) == field;
}
template <class T> static inline T zero_like(T x) { return __builtin_signbit(x) ? (T)-0.0 : (T)0.0; }

template <class T> struct Frac {
  static constexpr T filler = 1;
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> x) { return split<T>(x).fraction; }
  static TARN_INLINE Int4 gate(Int4 x) { return all_ones_exponent<T>(x); }
  static __attribute__((noinline, cold)) int rare(const T* x, T* r) {
    *r = *x != *x ? *x + *x : zero_like(*x);
    return 0;
  }
};
using dFrac_HA = Frac<double>;
using sFrac_HA = Frac<float>;

template <class T> struct Modf {
  static constexpr T filler = 1;
  static TARN_INLINE void fast(VectorOf<T> x, VectorOf<T>& integral, VectorOf<T>& fraction) {
    const Parts<T> parts = split<T>(x);
    integral = parts.integral;
    fraction = parts.fraction;
  }
  static TARN_INLINE Int4 gate(Int4 x) { return all_ones_exponent<T>(x); }
  static __attribute__((noinline, cold)) int rare(const T* px, T* integral, T* fraction) {
    const T x = *px;
    *integral = x != x ? x + x : x;
    *fraction = x != x ? x + x : zero_like(x);
    return 0;
  }
};
using dModf_HA = Modf<double>;
using sModf_HA = Modf<float>;

TARN_CLAIM(dFrac, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sFrac, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dModf, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sModf, HA, 0, -3.5e38, 3.5e38)

}
