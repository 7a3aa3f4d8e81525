// Fmod and Remainder: what is left of a after the whole multiples of b, exactly. The quotient is truncated (Fmod,
// result of a's sign) or rounded to nearest, ties to even (Remainder). While the exponents differ by at most 25 one
// division gives the quotient to the last integer, up to one that the sign of the remainder betrays; b in two parts of
// 26 and 27 bits makes the remainder exact. All other pairs are divided in integers.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"

namespace tarn::TARN_ISA {

enum class Quotient { truncated, nearest };

constexpr int32_t modulus_exponent_gap = 25;

// |a| mod |b| by division in integers, eleven bits of the quotient at a time, for finite a and b, |a| > |b| > 0.
// `odd` is the parity of the truncated quotient.
static inline double long_division(double a, double b, bool* odd) {
  struct Parts {
    uint64_t mantissa; // 2^52 to 2^53
    int32_t exponent;  // of the last bit, plus 1075
  };
  const auto parts = [](double v) -> Parts {
    const uint64_t pattern = bits(v) & 0x7FFFFFFFFFFFFFFF;
    const int32_t field = (int32_t)(pattern >> 52);
    if (field != 0) return {(pattern & 0x000FFFFFFFFFFFFF) | 0x0010000000000000, field};
    const int shift = __builtin_clzll(pattern) - 11;
    return {pattern << shift, 1 - shift};
  };
  const Parts pa = parts(a), pb = parts(b);
  uint64_t m = pa.mantissa, quotient = m / pb.mantissa;
  m %= pb.mantissa;
  for (int32_t left = pa.exponent - pb.exponent; left > 0;) {
    const int32_t step = left < 11 ? left : 11;
    m <<= step;
    quotient = m / pb.mantissa;
    m %= pb.mantissa;
    left -= step;
  }
  *odd = quotient & 1;
  if (m == 0) return 0;
  const int shift = __builtin_clzll(m) - 11;
  const int32_t field = pb.exponent - shift;
  m <<= shift;
  if (field >= 1) return from_bits(((uint64_t)field << 52) + (m - 0x0010000000000000));
  return from_bits(m >> (1 - field)); // a denormal: its lowest bits are zeros, as b's are
}

static TARN_INLINE double signed_like(double magnitude, double a) {
  return from_bits(bits(magnitude) | (bits(a) & 0x8000000000000000));
}

// Where there is no quotient: a NaN for a NaN, and a reported one for b = 0 and for an infinite a.
static inline bool without_quotient(double a, double b, double* r, int* status) {
  *status = 0;
  if (a != a || b != b) {
    *r = a * b;
    return true;
  }
  if (b == 0 || a - a != 0) {
    const double zero = opaque(0.0);
    *r = zero / zero;
    *status = 2;
    return true;
  }
  return false;
}

static inline int fmod_rare(double a, double b, double* r) {
  int status;
  if (without_quotient(a, b, r, &status)) return status;
  const double A = from_bits(bits(a) & 0x7FFFFFFFFFFFFFFF), B = from_bits(bits(b) & 0x7FFFFFFFFFFFFFFF);
  const double infinity = __builtin_inf();
  if (B == infinity || A < B) {
    *r = a;
  } else if (A == B) {
    *r = a * 0.0;
  } else if (B == 1.0) {
    // The integer bits cleared; from 2^52 on there is no fraction.
    const uint64_t whole = (bits(A) - bits(B)) >> 52;
    const uint64_t fraction = whole < 52 ? bits(A) & ~(~0ull << (52 - whole)) : 0;
    *r = fraction ? signed_like(A - from_bits(bits(A) - fraction), a) : a * 0.0;
  } else if (B == 2147483647.0 && A < 4503599627370496.0) {
    const uint32_t q = (uint32_t)(A * 4.656612873077393e-10); // 2^-31, a little less than 1/B: q is at most one short
    const double rest = A - q * 2147483647.0;
    *r = signed_like(rest >= B ? rest - B : rest, a);
  } else {
    bool odd;
    *r = signed_like(long_division(A, B, &odd), a);
  }
  return 0;
}

static inline int remainder_rare(double a, double b, double* r) {
  int status;
  if (without_quotient(a, b, r, &status)) return status;
  const double A = from_bits(bits(a) & 0x7FFFFFFFFFFFFFFF), B = from_bits(bits(b) & 0x7FFFFFFFFFFFFFFF);
  const double infinity = __builtin_inf();
  bool odd = false;
  double rest = A;
  if (B != infinity && A > B)
    rest = long_division(A, B, &odd);
  else if (A == B)
    rest = 0;
  // Nearer to the next multiple, or as near and the quotient odd. B - rest is exact, and so is the compare with it.
  if (B != infinity && rest != 0 && (rest > B - rest || (rest == B - rest && odd))) rest -= B;
  *r = from_bits(bits(rest) ^ (bits(a) & 0x8000000000000000));
  return 0;
}

// What both functions share; `quotient` says how they differ.
template <Quotient quotient> struct dModulus {
  static constexpr double filler = 1;

  static TARN_INLINE Double2 fast(Double2 a, Double2 b) {
    const Double2 A = magnitude(a), B = magnitude(b);
    const Double2 q = (A / B + shifter) - shifter;
    const Double2 bh = from_bits(bits(B) & (int64_t)0xFFFFFFFFF8000000), bl = B - bh;
    Double2 r = (A - q * bh) - q * bl;
    if constexpr (quotient == Quotient::truncated) {
      r = r + (Double2)((Long2)B & (r < 0.0)); // the quotient was rounded up
      return (Double2)((Long2)r | (bits(a) & INT64_MIN));
    } else {
      // A quotient next to a half may have been rounded to it and then the wrong way.
      const Double2 twice = r + r;
      r = r - (Double2)((Long2)B & (twice > B)) + (Double2)((Long2)B & (twice < -B));
      return (Double2)((Long2)r ^ (bits(a) & INT64_MIN));
    }
  }
  static TARN_INLINE Int4 gate(Int4 a, Int4 b) {
    const Int4 ma = a & 0x7FFFFFFF, mb = b & 0x7FFFFFFF;
    const Int4 gap = (ma & 0x7FF00000) - (mb & 0x7FF00000);
    // From low on the parts of b and their products are normal numbers; below high a quotient rounded up, times b, does
    // not overflow.
    constexpr int32_t low = 0x03300000, high = 0x7FD00000, infinite = 0x7FF00000;
    return (ma < low) | (ma > high - 1) | (mb < low) | (mb > infinite - 1) | (gap > modulus_exponent_gap << 20);
  }
  static __attribute__((noinline, cold)) int rare(const double* a, const double* b, double* r) {
    const int status = quotient == Quotient::truncated ? fmod_rare(*a, *b, r) : remainder_rare(*a, *b, r);
    *r = canonical(*r);
    return status;
  }
};
using dFmod_HA = dModulus<Quotient::truncated>;
using dRemainder_HA = dModulus<Quotient::nearest>;

// Floats are divided in double precision, which holds quotient times divisor exactly.
template <Quotient quotient> struct sModulus {
  static constexpr float filler = 1;

  static TARN_INLINE Double2 half(Double2 A, Double2 B) {
    const Double2 q = (A / B + shifter) - shifter;
    Double2 r = A - q * B;
    if constexpr (quotient == Quotient::truncated) return r + (Double2)((Long2)B & (r < 0.0));
    const Double2 twice = r + r;
    return r - (Double2)((Long2)B & (twice > B)) + (Double2)((Long2)B & (twice < -B));
  }
  static TARN_INLINE Float4 fast(Float4 a, Float4 b) {
    const Float4 A = magnitude(a), B = magnitude(b);
    const Double2 low = half(_mm_cvtps_pd(A), _mm_cvtps_pd(B));
    const Double2 high = half(_mm_cvtps_pd(_mm_movehl_ps(A, A)), _mm_cvtps_pd(_mm_movehl_ps(B, B)));
    const Int4 r = bits(Float4(_mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high))));
    const Int4 sign = bits(a) & INT32_MIN;
    return from_bits(quotient == Quotient::truncated ? r | sign : r ^ sign);
  }
  static TARN_INLINE Int4 gate(Int4 a, Int4 b) {
    const Int4 ea = a & 0x7F800000, eb = b & 0x7F800000;
    return (ea == 0x7F800000) | (eb == 0x7F800000) | (eb == 0) | (ea - eb > modulus_exponent_gap << 23);
  }
  static __attribute__((noinline, cold)) int rare(const float* a, const float* b, float* r) {
    double result;
    const int status = quotient == Quotient::truncated ? fmod_rare(*a, *b, &result) : remainder_rare(*a, *b, &result);
    *r = (float)result;
    return status;
  }
};
using sFmod_HA = sModulus<Quotient::truncated>;
using sRemainder_HA = sModulus<Quotient::nearest>;
TARN_CLAIM(dFmod, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sFmod, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dRemainder, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sRemainder, HA, 0, -3.5e38, 3.5e38)

}
