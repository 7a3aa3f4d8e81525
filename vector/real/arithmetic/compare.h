// Fmax, Fmin, MaxMag, MinMag: the greater and the lesser, by value or by magnitude. A NaN loses against a number.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"

namespace tarn::TARN_ISA {

static TARN_INLINE Double2 maximum(Double2 a, Double2 b) { return _mm_max_pd(a, b); }
static TARN_INLINE Float4 maximum(Float4 a, Float4 b) { return _mm_max_ps(a, b); }
static TARN_INLINE Double2 minimum(Double2 a, Double2 b) { return _mm_min_pd(a, b); }
static TARN_INLINE Float4 minimum(Float4 a, Float4 b) { return _mm_min_ps(a, b); }

// Lanes in which one operand has all exponent bits set: NaNs, and infinities, which the rare routine serves as well.
static TARN_INLINE Int4 not_finite(Int4 a, Int4 b, int32_t all_ones) {
  return ((a & all_ones) == all_ones) | ((b & all_ones) == all_ones);
}
template <class T> constexpr int32_t exponent_field = sizeof(T) == 8 ? 0x7FF00000 : 0x7F800000;

enum class Wanted { greater, lesser };
template <class T, Wanted wanted, bool by_magnitude> struct Choice {
  static constexpr T filler = 1;

  static TARN_INLINE VectorOf<T> by_value(VectorOf<T> a, VectorOf<T> b) {
    return wanted == Wanted::greater ? maximum(a, b) : minimum(a, b);
  }
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> a, VectorOf<T> b) {
    const VectorOf<T> value = by_value(a, b);
    if constexpr (!by_magnitude) return value;
    const VectorOf<T> ma = magnitude(a), mb = magnitude(b);
    const auto first = wanted == Wanted::greater ? ma > mb : ma < mb;
    const auto second = wanted == Wanted::greater ? ma < mb : ma > mb;
    return canonical(select(first, a, select(second, b, value)));
  }
  static TARN_INLINE Int4 gate(Int4 a, Int4 b) { return not_finite(a, b, exponent_field<T>); }
  static __attribute__((noinline, cold)) int rare(const T* pa, const T* pb, T* r) {
    const T a = *pa, b = *pb;
    if (a != a)
      *r = canonical(b); // the number, or the second NaN
    else if (b != b)
      *r = canonical(a);
    else
      *r = fast(splat(a), splat(b))[0];
    return 0;
  }
};

using dFmax_HA = Choice<double, Wanted::greater, false>;
using sFmax_HA = Choice<float, Wanted::greater, false>;
using dFmin_HA = Choice<double, Wanted::lesser, false>;
using sFmin_HA = Choice<float, Wanted::lesser, false>;
using dMaxMag_HA = Choice<double, Wanted::greater, true>;
using sMaxMag_HA = Choice<float, Wanted::greater, true>;
using dMinMag_HA = Choice<double, Wanted::lesser, true>;
using sMinMag_HA = Choice<float, Wanted::lesser, true>;
TARN_CLAIM(dFmax, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sFmax, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dFmin, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sFmin, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dMaxMag, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sMaxMag, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dMinMag, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sMinMag, HA, 0, -3.5e38, 3.5e38)

}
