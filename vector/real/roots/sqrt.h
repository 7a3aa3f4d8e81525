// Sqrt and InvSqrt from the 12-bit hardware estimate y0 of 1/sqrt(x): with e = 1 - x y0^2, which is exact in two parts,
// sqrt(x) = x y0 (1 - e)^(-1/2) and 1/sqrt(x) = y0 (1 - e)^(-1/2), by the binomial series in e.
// The rare routine of dSqrt takes its estimate from a table and refines root and half reciprocal root together:
// Markstein, Computation of elementary functions on the IBM RISC System/6000 processor, IBM J. Res. Dev. 34 (1990).
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"
#include "vector/real/roots/sqrt_data.h"

namespace tarn::TARN_ISA {

static TARN_INLINE Double2 inverse_sqrt_estimate(Double2 v) { return _mm_cvtps_pd(_mm_rsqrt_ps(_mm_cvtpd_ps(v))); }

// x = 4^k v with v in [1/2, 2): the exponent's parity stays with v.
struct RootScaled {
  Double2 v;
  Long2 exponent; // 1022 + 2 k in the exponent field
};
static TARN_INLINE RootScaled root_scaled(Double2 x) {
  constexpr int64_t half = 0x3FE0000000000000;
  return {from_bits((bits(x) & 0x001FFFFFFFFFFFFF) | half), bits(x) & 0x7FE0000000000000};
}
static TARN_INLINE Double2 times_root(Double2 s, Long2 exponent) { // s 2^k
  return from_bits(bits(s) + (exponent >> 1) - 0x1FF0000000000000);
}
static TARN_INLINE Double2 over_root(Double2 s, Long2 exponent) { // s 2^-k
  return from_bits(bits(s) - (exponent >> 1) + 0x1FF0000000000000);
}

// v in two parts of 26 and 27 bits, whose products with y0 and y0^2 are exact.
struct Halves {
  Double2 high, low;
};
static TARN_INLINE Halves halves(Double2 v) {
  const Double2 high = from_bits(bits(v) & (int64_t)0xFFFFFFFFF8000000);
  return {high, v - high};
}

// The series of (1 - e)^(-1/2) - 1.
static TARN_INLINE Double2 root_series4(Double2 e) {
  constexpr double c1 = 0x3FDFFFFFFFFFFE71_d; // 0.49999999999997785
  constexpr double c2 = 0x3FD80000000000F6_d; // 0.37500000000001366
  constexpr double c3 = 0x3FD40000B13001D9_d; // 0.31250016501874495
  constexpr double c4 = 0x3FD1800032338CBB_d; // 0.27343754675366555
  return e * (c1 + e * (c2 + e * (c3 + e * c4)));
}
static TARN_INLINE Double2 root_factor2(Double2 e) { // (1 - e)^(-1/2) to 36 bits
  constexpr double c0 = 0x3FEFFFFFFFFFFF4F_d;        // 0.99999999999998035
  constexpr double c1 = 0x3FE000004379ADB7_d;        // 0.50000012568255314
  constexpr double c2 = 0x3FD80000C4CD9197_d;        // 0.37500018328707924
  return c0 + e * (c1 + e * c2);
}

template <class T> static inline int root_of_nonpositive(T x, T* r, T of_zero, int status_of_zero) {
  const T zero = opaque(T{0});
  if (x == 0) {
    *r = of_zero;
    return status_of_zero;
  }
  *r = zero / zero;
  return 1;
}

__attribute__((noinline, cold)) inline int vdsqrt_cout_rare(const double* a, double* r) {
  double x = *a;
  if (x <= 0) return root_of_nonpositive(x, r, canonical(x), 0);
  if (!(x < __builtin_inf())) {
    *r = x * x;
    return 0;
  }
  int32_t less = 0;
  if (high_word(x) < 0x00100000) {
    x *= 0x1p200;
    less = 100;
  }
  const int32_t exponent = (int32_t)(high_word(x) >> 20) - 1023, parity = exponent & 1;
  const double m =
      from_bits((bits(x) & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000) * data::__lumedSqrtHATab[512 + parity];
  const double g = data::__lumedSqrtHATab[((high_word(x) & 0xFFFFF) >> 12) + 256 * (uint32_t)parity];
  double s = g * m, h = 0.5 * g;
  for (int round = 0; round < 3; ++round) {
    const double d = 0.5 - s * h;
    h = h + h * d;
    s = s + d * s;
  }
  const double t = s * 134217729.0; // 2^27 + 1
  const double sh = t - (t - s), sl = s - sh;
  const double residual = (m - sh * sh - 2 * sh * sl - sl * sl) * h;
  *r = (s + residual) * from_bits((uint64_t)(1023 + (exponent >> 1) - less) << 52);
  return 0;
}

struct dSqrt {
  static constexpr double filler = 1;
  // Negatives, zeros, denormals, and all from 2^1022 on.
  static TARN_INLINE Int4 gate(Int4 high) { return high - (int32_t)0x80100000 > (int32_t)0xFFBFFFFF; }
  static int rare(const double* x, double* r) { return vdsqrt_cout_rare(x, r); }
};
struct dSqrt_HA : dSqrt {
  struct Prepared {
    Double2 head, tail, e; // v y0 in two exact parts, so that the root is rounded once
    Long2 exponent;
  };
  static TARN_INLINE Prepared prepare(Double2 x) {
    const RootScaled z = root_scaled(x);
    const Double2 y = inverse_sqrt_estimate(z.v), y2 = y * y;
    const Halves v = halves(z.v);
    return {v.high * y, v.low * y, (1.0 - v.high * y2) - v.low * y2, z.exponent};
  }
  static TARN_INLINE Double2 finish(Prepared z) {
    return times_root(z.head + (z.tail + (z.head + z.tail) * root_series4(z.e)), z.exponent);
  }
};
struct dSqrt_LA : dSqrt {
  struct Prepared {
    Double2 s, e;
    Long2 exponent;
  };
  static TARN_INLINE Prepared prepare(Double2 x) {
    const RootScaled z = root_scaled(x);
    const Double2 y = inverse_sqrt_estimate(z.v);
    const Double2 s = z.v * y;
    return {s, 1.0 - s * y, z.exponent};
  }
  static TARN_INLINE Double2 finish(Prepared z) { return times_root(z.s + z.s * root_series4(z.e), z.exponent); }
};
struct dSqrt_EP : dSqrt_LA {
  static TARN_INLINE Double2 finish(Prepared z) { return times_root(z.s * root_factor2(z.e), z.exponent); }
};
TARN_CLAIM(dSqrt, HA, 0.54, 0, 1.8e308)
TARN_CLAIM(dSqrt, LA, 1.6, 0, 1.8e308)
TARN_CLAIM(dSqrt, EP, 3.0e5, 0, 1.8e308)

// Arguments that the fast formula takes, but for a power of four.
template <class F> static inline double scaled_root(double x, double up, double down) {
  return F::finish(F::prepare(splat(x * up)))[0] * down;
}

struct dInvSqrt {
  struct Prepared {
    Double2 y, e;
    Long2 exponent;
  };
  static TARN_INLINE Double2 finish(Prepared z) { return over_root(z.y + z.y * root_series4(z.e), z.exponent); }
  static constexpr double filler = 1;
  static TARN_INLINE Int4 gate(Int4 high) { return offset_less(high, 0x00100000, 0x00200000); }
  template <class F> static __attribute__((noinline, cold)) int rare_of(const double* px, double* r) {
    const double x = *px;
    if (x <= 0) return root_of_nonpositive(x, r, 1.0 / x, 2);
    if (!(x < __builtin_inf()))
      *r = x == __builtin_inf() ? 0 : x * x;
    else
      *r = scaled_root<F>(x, 0x1p200, 0x1p100);
    return 0;
  }
};
struct dInvSqrt_HA : dInvSqrt {
  static TARN_INLINE Prepared prepare(Double2 x) {
    const RootScaled z = root_scaled(x);
    const Double2 y = inverse_sqrt_estimate(z.v), y2 = y * y;
    const Halves v = halves(z.v);
    return {y, (1.0 - v.high * y2) - v.low * y2, z.exponent};
  }
  static int rare(const double* x, double* r) { return rare_of<dInvSqrt_HA>(x, r); }
};
struct dInvSqrt_LA : dInvSqrt {
  static TARN_INLINE Prepared prepare(Double2 x) {
    const RootScaled z = root_scaled(x);
    const Double2 y = inverse_sqrt_estimate(z.v);
    return {y, 1.0 - (z.v * y) * y, z.exponent};
  }
  static int rare(const double* x, double* r) { return rare_of<dInvSqrt_LA>(x, r); }
};
TARN_CLAIM(dInvSqrt, HA, 0.54, 0, 1.8e308)
TARN_CLAIM(dInvSqrt, LA, 1.6, 0, 1.8e308)

// ---- Single precision ----

__attribute__((noinline, cold)) inline int vssqrt_cout_rare(const float* a, float* r) {
  const float x = *a;
  if (x <= 0) return root_of_nonpositive(x, r, canonical(x), 0);
  *r = x < __builtin_inff() ? _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x))) : x * x;
  return 0;
}

struct sSqrt {
  static constexpr float filler = 1;
  static TARN_INLINE Int4 gate(Int4 x) { return offset_less(x, 0x00800000, 0x01000000); }
  static int rare(const float* x, float* r) { return vssqrt_cout_rare(x, r); }

  // x = 4^k v with v in [1/2, 2), in the exponent field as above.
  struct Scaled {
    Float4 v;
    Int4 exponent;
  };
  static TARN_INLINE Scaled scaled(Float4 x) {
    return {from_bits((bits(x) & 0x00FFFFFF) | 0x3F000000), bits(x) & 0x7F000000};
  }
  static TARN_INLINE Float4 back(Float4 s, Int4 exponent) { return from_bits(bits(s) + (exponent >> 1) - 0x1F800000); }
  static TARN_INLINE Float4 back_inverse(Float4 s, Int4 exponent) {
    return from_bits(bits(s) - (exponent >> 1) + 0x1F800000);
  }
};
struct sSqrt_LA : sSqrt {
  static TARN_INLINE Float4 fast(Float4 x) {
    const Scaled z = scaled(x);
    const Float4 y = _mm_rsqrt_ps(z.v);
    const Float4 s = z.v * y;
    return back(s + s * (0.5f - 0.5f * s * y), z.exponent);
  }
};
struct sSqrt_HA : sSqrt {
  static TARN_INLINE Float4 fast(Float4 x) {
    const Scaled z = scaled(x);
    const Float4 y = _mm_rsqrt_ps(z.v);
    const Float4 s0 = z.v * y, h = 0.5f * y;
    const Float4 s = s0 + s0 * (0.5f - s0 * h);
    // The residual v - s^2, exact with s in two parts of 12 bits.
    const Float4 sh = from_bits(bits(s) & (int32_t)0xFFFFF000), sl = s - sh;
    const Float4 residual = ((z.v - sh * sh) - (sh + sh) * sl) - sl * sl;
    return back(s + residual * h, z.exponent);
  }
};
struct sSqrt_EP : sSqrt {
  static TARN_INLINE Float4 fast(Float4 x) {
    const Scaled z = scaled(x);
    return back(z.v * (Float4)_mm_rsqrt_ps(z.v), z.exponent);
  }
};
TARN_CLAIM(sSqrt, HA, 0.51, 0, 3.5e38)
TARN_CLAIM(sSqrt, LA, 2.8, 0, 3.5e38)
// Makers of processors promise the estimate to 1.5 2^-12, which is that many units at most.
TARN_CLAIM(sSqrt, EP, 6144, 0, 3.5e38)

struct sInvSqrt : sSqrt {
  template <class F> static __attribute__((noinline, cold)) int rare_of(const float* px, float* r) {
    const float x = *px;
    if (x <= 0) return root_of_nonpositive(x, r, 1.0f / x, 2);
    if (!(x < __builtin_inff()))
      *r = x == __builtin_inff() ? 0 : x * x;
    else
      *r = F::fast(splat(x * 0x1p60f))[0] * 0x1p30f;
    return 0;
  }
};
struct sInvSqrt_HA : sInvSqrt {
  // In double precision, rounded once to float at the end.
  static TARN_INLINE Double2 half(Double2 v, Double2 y) {
    const Double2 e = 1.0 - v * (y * y);
    return y + y * (e * (0.5 + e * (0.375 + e * 0.3125)));
  }
  static TARN_INLINE Float4 fast(Float4 x) {
    const Scaled z = scaled(x);
    const Float4 y = _mm_rsqrt_ps(z.v);
    const Double2 low = half(_mm_cvtps_pd(z.v), _mm_cvtps_pd(y));
    const Double2 high = half(_mm_cvtps_pd(_mm_movehl_ps(z.v, z.v)), _mm_cvtps_pd(_mm_movehl_ps(y, y)));
    return back_inverse(_mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high)), z.exponent);
  }
  static int rare(const float* x, float* r) { return rare_of<sInvSqrt_HA>(x, r); }
};
struct sInvSqrt_LA : sInvSqrt {
  static TARN_INLINE Float4 fast(Float4 x) {
    const Scaled z = scaled(x);
    const Float4 y = _mm_rsqrt_ps(z.v);
    return back_inverse(y + y * (0.5f - (0.5f * z.v * y) * y), z.exponent);
  }
  static int rare(const float* x, float* r) { return rare_of<sInvSqrt_LA>(x, r); }
};
struct sInvSqrt_EP : sInvSqrt {
  static TARN_INLINE Float4 fast(Float4 x) {
    const Scaled z = scaled(x);
    return back_inverse(_mm_rsqrt_ps(z.v), z.exponent);
  }
  static int rare(const float* x, float* r) { return rare_of<sInvSqrt_EP>(x, r); }
};
TARN_CLAIM(sInvSqrt, HA, 0.51, 0, 3.5e38)
TARN_CLAIM(sInvSqrt, LA, 2.5, 0, 3.5e38)
TARN_CLAIM(sInvSqrt, EP, 6144, 0, 3.5e38)

}
