// Logb: the exponent of x as a number, as if denormals were normalised. A zero is a domain error here.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"

namespace tarn::TARN_ISA {

struct dLogb_HA {
  static constexpr double filler = 1;
  static TARN_INLINE Double2 fast(Double2 x) {
    const Int4 field = (Int4)((ULong2)bits(x) << 1 >> 53);
    return to_double(field - Int4{1023, 0, 1023, 0});
  }
  static TARN_INLINE Int4 gate(Int4 x) { // the exponent field all zeros or all ones
    const Int4 field = x & 0x7FF00000;
    return (field == 0) | (field == 0x7FF00000);
  }
  static __attribute__((noinline, cold)) int rare(const double* px, double* r) {
    const double x = from_bits(bits(*px) & 0x7FFFFFFFFFFFFFFF);
    if (x == 0) {
      *r = -1.0 / opaque(0.0);
      return 1;
    }
    // Infinity and the absolute value of a NaN as they stand.
    *r = high_word(x) >= 0x7FF00000 ? x : (int32_t)(high_word(x * 0x1p55) >> 20) - 1078;
    return 0;
  }
};
struct sLogb_HA {
  static constexpr float filler = 1;
  static TARN_INLINE Float4 fast(Float4 x) { return to_float((Int4)((UInt4)bits(x) << 1 >> 24) - 127); }
  static TARN_INLINE Int4 gate(Int4 x) {
    const Int4 field = x & 0x7F800000;
    return (field == 0) | (field == 0x7F800000);
  }
  static __attribute__((noinline, cold)) int rare(const float* px, float* r) {
    const float x = from_bits(bits(*px) & 0x7FFFFFFF);
    if (x == 0) {
      *r = -1.0f / opaque(0.0f);
      return 1;
    }
    *r = bits(x) >= 0x7F800000 ? x : (float)((int32_t)(bits(x * 0x1p25f) >> 23) - 152);
    return 0;
  }
};
TARN_CLAIM(dLogb, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sLogb, HA, 0, -3.5e38, 3.5e38)

}
