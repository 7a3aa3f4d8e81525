// Div and Inv: correctly rounded by the divider in LA and HA; sDiv and sInv EP refine the hardware's reciprocal once.
// A divisor of zero is the one thing to report, as a singularity, whatever stands above it: so 0/0 is status 2 as well.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"

namespace tarn::TARN_ISA {

template <class T> static inline int div_rare(const T* a, const T* b, T* r) {
  *r = *a / *b;
  return *b == 0 ? 2 : 0;
}
template <class T> static inline int inv_rare(const T* x, T* r) {
  *r = 1 / *x;
  return *x == 0 ? 2 : 0;
}
__attribute__((noinline, cold)) inline int vddiv_cout_rare(const double* a, const double* b, double* r) {
  return div_rare(a, b, r);
}
__attribute__((noinline, cold)) inline int vsdiv_cout_rare(const float* a, const float* b, float* r) {
  return div_rare(a, b, r);
}
__attribute__((noinline, cold)) inline int vdinv_cout_rare(const double* x, double* r) { return inv_rare(x, r); }
__attribute__((noinline, cold)) inline int vsinv_cout_rare(const float* x, float* r) { return inv_rare(x, r); }

constexpr int32_t exponent_mask = 0x7FF00000, exponent_maskf = 0x7F800000;

struct dDiv_HA {
  static constexpr double filler = 1;
  static TARN_INLINE Double2 fast(Double2 a, Double2 b) { return a / b; }
  // The divider itself gives every result; only zero divisors have a status. The high word cannot tell them from
  // denormals, which are let through with them.
  static TARN_INLINE Int4 gate(Int4, Int4 b) { return (b & exponent_mask) == 0; }
  static int rare(const double* a, const double* b, double* r) { return vddiv_cout_rare(a, b, r); }
};
struct sDiv_HA {
  static constexpr float filler = 1;
  static TARN_INLINE Float4 fast(Float4 a, Float4 b) { return a / b; }
  static TARN_INLINE Int4 gate(Int4, Int4 b) { return (b & 0x7FFFFFFF) == 0; }
  static int rare(const float* a, const float* b, float* r) { return vsdiv_cout_rare(a, b, r); }
};
struct dInv_HA {
  static constexpr double filler = 1;
  static TARN_INLINE Double2 fast(Double2 x) { return 1.0 / x; }
  static TARN_INLINE Int4 gate(Int4 x) { return (x & exponent_mask) == 0; }
  static int rare(const double* x, double* r) { return vdinv_cout_rare(x, r); }
};
struct sInv_HA {
  static constexpr float filler = 1;
  static TARN_INLINE Float4 fast(Float4 x) { return 1.0f / x; }
  static TARN_INLINE Int4 gate(Int4 x) { return (x & 0x7FFFFFFF) == 0; }
  static int rare(const float* x, float* r) { return vsinv_cout_rare(x, r); }
};
TARN_CLAIM(dDiv, HA, 0.5, -1.8e308, 1.8e308)
TARN_CLAIM(sDiv, HA, 0.5, -3.5e38, 3.5e38)
TARN_CLAIM(dInv, HA, 0.5, -1.8e308, 1.8e308)
TARN_CLAIM(sInv, HA, 0.5, -3.5e38, 3.5e38)

// rcpps is 0 for divisors beyond 2^126 and infinite for denormals: outside 2^-125 to 2^125 the divider serves.
static TARN_INLINE Int4 reciprocal_gate(Int4 magnitude) {
  constexpr uint32_t from = (127 - 125) << 23, to = (127 + 125) << 23;
  return (Int4)((UInt4)magnitude + (0x80000000u - from)) > (int32_t)(0x80000000u + (to - from)); // without sign
}
static TARN_INLINE Float4 reciprocal(Float4 x) { // to 23 bits, but for its roundings
  const Float4 y = _mm_rcp_ps(x);
  return y + y * (1.0f - x * y);
}

struct sDiv_EP : sDiv_HA {
  // The last operation is a product with a: infinities, NaNs and denormals above come out as the divider has them.
  static TARN_INLINE Float4 fast(Float4 a, Float4 b) { return a * reciprocal(b); }
  // Next to the overflow bound the divider decides: exponents of a and b at most 126 apart keep the quotient below it.
  static TARN_INLINE Int4 gate(Int4 a, Int4 b) {
    const Int4 ma = a & 0x7FFFFFFF, mb = b & 0x7FFFFFFF;
    return reciprocal_gate(mb) | (ma - mb > 126 << 23);
  }
};
struct sInv_EP : sInv_HA {
  static TARN_INLINE Float4 fast(Float4 x) { return reciprocal(x); }
  static TARN_INLINE Int4 gate(Int4 x) { return reciprocal_gate(x & 0x7FFFFFFF); }
};
TARN_CLAIM(sDiv, EP, 4, -3.5e38, 3.5e38)
TARN_CLAIM(sInv, EP, 4, -3.5e38, 3.5e38)

}
