// NextAfter: the neighbour of a in the direction of b. The bit patterns of numbers of one sign are in the order of
// their magnitudes, so the neighbour is one integer away.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"

namespace tarn::TARN_ISA {

template <class T> struct NextAfter {
  static constexpr T filler = 1;
  using Vector = VectorOf<T>;

  static TARN_INLINE Vector fast(Vector a, Vector b) {
    const auto outward = ~(sign_mask(a) ^ (a > b)); // away from zero: the pattern grows by one, else it shrinks
    const auto moved = bits(a) - (outward | 1);
    return select(a == b, b, from_bits(moved));
  }
  // Zeros, denormals and what may become one, infinities and what may become one, NaNs.
  static TARN_INLINE Int4 gate(Int4 a, Int4 b) {
    constexpr int32_t field = sizeof(T) == 8 ? 0x7FF00000 : 0x7F800000, one = sizeof(T) == 8 ? 0x00100000 : 0x00800000;
    const Int4 ea = a & field;
    return (ea < 2 * one) | (ea > field - 2 * one) | ((b & field) == field);
  }
  static __attribute__((noinline, cold)) int rare(const T* pa, const T* pb, T* r) {
    using Bits = typename Lanes<T>::Bits;
    const T a = *pa, b = *pb;
    const Bits sign = (Bits)1 << (8 * sizeof(T) - 1);
    if (a != a || b != b) {
      *r = a + b;
      return 0;
    }
    if (a == b) {
      *r = canonical(b);
      return 0;
    }
    if (a == 0) {
      *r = canonical(from_bits((Bits)((bits(b) & sign) | 1)));
      return 4;
    }
    const Bits moved = (a < 0) == (a > b) ? bits(a) + 1 : bits(a) - 1;
    *r = canonical(from_bits(moved));
    const T m = from_bits((Bits)(moved & ~sign));
    if (m == (T)__builtin_inf()) return 3;
    return (moved & ~sign) >> (sizeof(T) == 8 ? 52 : 23) == 0 ? 4 : 0;
  }
};
using dNextAfter_HA = NextAfter<double>;
using sNextAfter_HA = NextAfter<float>;
TARN_CLAIM(dNextAfter, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sNextAfter, HA, 0, -3.5e38, 3.5e38)

}
