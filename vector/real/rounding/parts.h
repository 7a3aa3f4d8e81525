// Frac and Modf: the fraction of x, and x as integral part and fraction. All of them have the sign of x.
#pragma once

#include "vector/real/rounding/round.h"

namespace tarn::TARN_ISA {

// An infinity less itself would be a NaN: where nothing is left a zero is put, which then takes the sign of x.
template <class T> struct Parts { VectorOf<T> integral, fraction; };
template <class T> static TARN_INLINE Parts<T> split(VectorOf<T> x) {
  const VectorOf<T> integral = rounded<toward_zero>(x);
  return {integral, or_sign_of(select(x != integral, x - integral, VectorOf<T>{}), x)};
}

template <class T> struct Frac {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> x) { return split<T>(x).fraction; }
};
using dFrac_HA = Frac<double>;
using sFrac_HA = Frac<float>;

template <class T> struct Modf {
  static TARN_INLINE void fast(VectorOf<T> x, VectorOf<T>& integral, VectorOf<T>& fraction) {
    const Parts<T> parts = split<T>(x);
    integral = parts.integral;
    fraction = parts.fraction;
  }
};
using dModf_HA = Modf<double>;
using sModf_HA = Modf<float>;

TARN_CLAIM(dFrac, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sFrac, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dModf, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sModf, HA, 0, -3.5e38, 3.5e38)

}
