// Ln: the natural logarithm.
// Double precision: the 12-bit hardware reciprocal, rounded to 10 bits, is at once the table index and an exact
// multiplier that brings the mantissa next to 1: P. T. P. Tang, Table-driven implementation of the logarithm function
// in IEEE floating-point arithmetic, ACM Transactions on Mathematical Software 16 (1990). Single precision: a
// polynomial on [2/3, 4/3), no table.
#pragma once

#include "vector/frame/block_loop.h"
#include "vector/frame/claims.h"
#include "vector/real/exponential/ln_data.h"

namespace tarn::TARN_ISA {

// The value for every positive x, in double precision; denormal arguments included.
static inline double ln_positive(double x) {
  constexpr double g3 = 0.33333333333334386, g4 = -0.25000000000003386, g5 = 0.19999999911565072;
  constexpr double g6 = -0.1666666651884978, g7 = 0.1428756883852146, g8 = -0.1250214602960357;
  const auto poly = [](double d) { return (((((g8 * d + g7) * d + g6) * d + g5) * d + g4) * d + g3) * d - 0.5; };
  int32_t offset = 0;
  if (high_word(x) < 0x00100000) {
    x *= 0x1p60;
    offset = -60;
  }
  const double d = x - 1.0;
  if (__builtin_fabs(d) <= 0.009765625) return poly(d) * d * d + d;

  const double m = from_bits((bits(x) & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000);
  const double k = (int32_t)(high_word(x) >> 20) - 1023 + offset;
  const double* row = data::___internal_CoutTab + 3 * (bits(m + 70368744177665.0) & 0x7F); // 2^46 + 1: the top 6 bits
  const double mh = (m + 2097152.0) - 2097152.0;
  const double ph = mh * row[0] - 1.0;
  const double pl = row[0] * (m - mh);
  const double A = 0.6931471805598903 * k + row[1] + ph; // exact: all three are multiples of 2^-42 or shorter
  const double B = k * 5.497923018708371e-14 + row[2] + pl;
  const double p = ph + pl;
  return A + (poly(p) * p * p + B);
}

template <class T> static inline int ln_rare(const T* a, T* r) {
  const T x = *a;
  const T zero = opaque(T{0});
  if (x == -__builtin_inf() || x < T{0}) {
    *r = zero / zero;
    return 1;
  }
  if (!(x < (T)__builtin_inf())) { // +infinity, NaN
    *r = x * x;
    return 0;
  }
  if (x == T{0}) {
    *r = T{-1} / zero; // -infinity for both zeros, with the division flag
    return 2;
  }
  *r = (T)ln_positive(x);
  return 0;
}
__attribute__((noinline, cold)) inline int vdln_cout_rare(const double* a, double* r) { return ln_rare(a, r); }
__attribute__((noinline, cold)) inline int vsln_cout_rare(const float* a, float* r) { return ln_rare(a, r); }

struct dLn {
  static constexpr double filler = 0.75;
  // Below the smallest normal number (with zeros and negatives), infinities and NaNs.
  static TARN_INLINE Int4 gate(Int4 high) { return offset_less(high, 0x00100000, 0x00200000); }
  static int rare(const double* x, double* y) { return vdln_cout_rare(x, y); }

  // x = 2^(E - 1023) * 1024 m with m in [2^-10, 2^-9); c, an integer from 512 to 1024, is next to 1/m.
  static TARN_INLINE Double2 mantissa(Double2 x) {
    return from_bits((bits(x) & 0x000FFFFFFFFFFFFF) | 0x3F50000000000000);
  }
  // c m - 1 without error: m in two parts, whose products with ten bits are exact.
  static TARN_INLINE Double2 reduce(Double2 m, Double2 c) {
    const Double2 mh = from_bits(bits(m) & (int64_t)0xFFFFFFFFFC000000);
    const Double2 ml = m - mh;
    return (c * mh - 1.0) + c * ml;
  }
  static TARN_INLINE Double2 biased_exponent(Double2 x) { return to_double((Int4)((ULong2)bits(x) >> 52)); }
  static TARN_INLINE Double2 series(Double2 r) { // ln(1 + r) - r
    constexpr double a2 = 0xBFDFFFFFFFFFF81F_d;  // -0.49999999999988803
    constexpr double a3 = 0x3FD55555555543C5_d;  // 0.33333333333308374
    constexpr double a4 = 0xBFD0000148058EE1_d;  // -0.2500003054940248
    constexpr double a5 = 0x3FC9999CACDB4D0A_d;  // 0.2000003665949424
    const Double2 r2 = r * r;
    return r2 * (a2 + a3 * r + r2 * (a4 + a5 * r));
  }
};

struct dLn_HA : dLn {
  struct Prepared {
    Double2 x, t, r; // c stands in the low bits of t
  };
  static TARN_INLINE Prepared prepare(Double2 x) {
    const Double2 m = mantissa(x);
    const Double2 t = reciprocal_estimate(m) + shifter;
    return {x, t, reduce(m, t - shifter)};
  }
  static TARN_INLINE Double2 finish(Prepared z) {
    constexpr double L1 = 0x3FE62E42FEFA0000_d; // ln 2 = L1 + L2; 0.6931471805582987
    constexpr double L2 = 0x3D7CF79ABC9E0000_d; // 1.6465949582866463e-12
    const double* table = data::ln_1024_over_c;
    const Double2 row0 = load(table + 2 * low_word_0(z.t) - 1024), row1 = load(table + 2 * low_word_1(z.t) - 1024);
    const Double2 E = biased_exponent(z.x);
    const Double2 A = low_lanes(row0, row1) + E * L1;
    const Double2 B = high_lanes(row0, row1) + E * L2;
    const Double2 s = z.r + A;
    const Double2 e = z.r - (s - A);
    return s + (series(z.r) + (B + e));
  }
};
TARN_CLAIM(dLn, HA, 0.55, 2.2250738585072014e-308, 0.99)
// Next to 1 the series is all of the result, so its own error shows.
TARN_CLAIM(dLn, HA, 0.76, 0.99, 1.01)
TARN_CLAIM(dLn, HA, 0.55, 1.01, 1.8e308)
// Denormals are the rare routine's.
TARN_CLAIM(dLn, HA, 1.05, 0, 2.225073858507201e-308)

struct dLn_LA : dLn {
  struct Prepared {
    Double2 x, c, r;
  };
  static TARN_INLINE Prepared prepare(Double2 x) {
    const Double2 m = mantissa(x);
    const Double2 c = _mm_round_pd(reciprocal_estimate(m), _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
    return {x, c, reduce(m, c)};
  }
  static TARN_INLINE Double2 finish(Prepared z) {
    constexpr double ln2 = 0x3FE62E42FEFA39EF_d; // 0.6931471805599453
    const Double2 t = z.c + shifter;
    const double* table = data::ln_1024_over_c_nearest;
    const Double2 T = pair(table[low_word_0(t) - 512], table[low_word_1(t) - 512]);
    // The mantissas up to about 1.414 count as above 1, the others as below: k is 0 on both sides of 1.
    const Double2 bias = 1022.0 + (Double2)((z.c > 724.0) & bits(splat(1.0)));
    const Double2 k = biased_exponent(z.x) - bias;
    return k * ln2 + (T + (z.r + series(z.r)));
  }
};
TARN_CLAIM(dLn, LA, 1.6, 0, 1.8e308)

// EP works on four elements at a time in the extended frame, and recomputes all four one by one where one of them is no
// ordinary number.
struct dLn_EP {
  static constexpr double L = 0x3FE62E42FEFA3800_d; // ln 2 to 42 bits

  static TARN_INLINE unsigned slot(uint32_t high) { return (((high & 0xFFC00) + 0x400) >> 10) & ~1u; }

  static TARN_INLINE Int4 gate(Int4 high) { // passes where high + 0xFFEFFFFF is below 0x7FDFFFFF, without sign
    return (Int4)((UInt4)high + 0xFFEFFFFFu - 0x80000000u) > (int32_t)(0x7FDFFFFEu - 0x80000000u);
  }

  static TARN_INLINE Double2 fast(Double2 x, unsigned slot0, unsigned slot1) {
    const Double2 row0 = load(data::_BT_Tbl + slot0), row1 = load(data::_BT_Tbl + slot1);
    const Double2 m = from_bits((bits(x) & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000);
    const Double2 r = m * low_lanes(row0, row1) - 1.0;
    const Double2 k = exponent(x);
    return (k * L + high_lanes(row0, row1)) + (r - 0.5 * r * r);
  }

  // (high word - 0x3FE7FC00) >> 20, made a double in the high half of 1572864 = 1.5 * 2^20.
  static TARN_INLINE Double2 exponent(Double2 x) {
    const Int4 k = ((Int4)x - 0x3FE7FC00) >> 20;
    const Long2 in_place = (Long2)k & (int64_t)0xFFFFFFFF00000000;
    return from_bits((Long2)((Int4)in_place + Int4{0, 0x41380000, 0, 0x41380000})) - 1572864.0;
  }

  static TARN_INLINE double normal(double x, double minus) {
    const uint32_t h = high_word(x);
    const double* row = data::_BT_Tbl + slot(h);
    const double m = from_bits((bits(x) & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000);
    const double r = m * row[0] - 1.0;
    const double k = (int32_t)(h - 0x3FE7FC00) >> 20;
    return (k * L + row[1]) + ((r - 0.5 * r * r) - minus);
  }

  // Element i by itself, reported by itself; returns its status.
  template <class X>
  static __attribute__((noinline)) int32_t _lume_dLn_scalar(int64_t i, const X& x, const char* name) {
    const double v = x.a.get(i);
    const uint64_t pattern = bits(v);
    double result;
    int32_t status = 0;
    if ((pattern & 0x7FF0000000000000) == 0x7FF0000000000000 && pattern != 0xFFF0000000000000) {
      result = canonical(v); // +infinity, NaN
    } else if ((pattern & 0x7FFFFFFFFFFFFFFF) == 0) {
      result = from_bits((uint64_t)0xFFF0000000000000);
      status = 2;
    } else if (pattern >> 63) {
      result = from_bits((uint64_t)0xFFF8000000000000);
      status = 1;
    } else if (pattern < 0x0010000000000000) {
      result = normal(v * 0x1p52, 36.04365338911715); // 52 ln 2
    } else {
      result = normal(v, 0.0);
    }
    x.r.set(i, result);
    if (status) report_element(status, (int32_t)i, x.a.base, x.a.base, x.r.base, x.r.base, name);
    return status;
  }

  template <int B, class X> void loop(const X& arrays, int64_t n, uint32_t, const char* name) const {
    const X x = arrays;
    int64_t i = 0;
    for (; n - i >= B; i += B) {
      const Double2 v = x.a.vector(i), w = x.a.vector(i + 2);
      const Int4 high = high_words(v, w);
      if (__builtin_expect(lane_mask(gate(high)) != 0, 0)) {
        for (int64_t k = i; k < i + B; ++k) _lume_dLn_scalar(k, arrays, name);
        continue;
      }
      const Int4 slots = (Int4)((((UInt4)high & 0xFFC00u) + 0x400u) >> 10 & ~1u);
      x.r.put(i, fast(v, low_word<0>((Float4)slots), low_word<1>((Float4)slots)));
      x.r.put(i + 2, fast(w, low_word<2>((Float4)slots), low_word<3>((Float4)slots)));
    }
    for (; i < n; ++i) _lume_dLn_scalar(i, arrays, name);
  }
};
TARN_CLAIM(dLn, EP, 3.0e9, 0, 1.8e308)

struct sLn {
  static constexpr float filler = 0.75f;
  static TARN_INLINE Int4 gate(Int4 x) { return offset_less(x, 0x00800000, 0x01000000); }
  static int rare(const float* x, float* y) { return vsln_cout_rare(x, y); }

  // x = 2^k (1 + r) with 1 + r in [2/3, 4/3).
  struct Prepared {
    Float4 k, r;
  };
  static TARN_INLINE Prepared prepare(Float4 x) {
    const Int4 d = bits(x) - 0x3F2AAAAB; // the bits of 2/3
    return {to_float(d >> 23), from_bits((d & 0x007FFFFF) + 0x3F2AAAAB) - 1.0f};
  }
};

struct sLn_HA : sLn {
  struct Prepared {
    Float4 k, r, P; // P: the upper half of the polynomial
  };
  static TARN_INLINE Prepared prepare(Float4 x) {
    constexpr float p6 = 0xBE2ACEE6_s;  // -0.16680488
    constexpr float p7 = 0x3E0F6B8C_s;  // 0.140058696
    constexpr float p8 = 0xBDF9889E_s;  // -0.121842608
    constexpr float p9 = 0x3E0F335D_s;  // 0.139844373
    constexpr float p10 = 0xBE0402C8_s; // -0.12891686
    const auto [k, r] = sLn::prepare(x);
    return {k, r, p6 + r * (p7 + r * (p8 + r * (p9 + r * p10)))};
  }
  static TARN_INLINE Float4 finish(Prepared z) {
    constexpr float p2 = 0xBF000000_s; // -0.5
    constexpr float p3 = 0x3EAAAA83_s; // 0.333332151
    constexpr float p4 = 0xBE7FFF78_s; // -0.249997973
    constexpr float p5 = 0x3E4CE814_s; // 0.200104058
    constexpr float ln2_lo = 0x35BFBE8E_s, ln2_hi = 0x3F317200_s;
    const Float4 k = z.k, r = z.r;
    const Float4 P = p2 + r * (p3 + r * (p4 + r * (p5 + r * z.P)));
    return ((r + r * r * P) + k * ln2_lo) + k * ln2_hi;
  }
};
TARN_CLAIM(sLn, HA, 1.0, 0, 3.5e38)

struct sLn_LA : sLn {
  static TARN_INLINE Float4 finish(Prepared z) {
    constexpr float p2 = 0xBF000000_s; // -0.5
    constexpr float p3 = 0x3EAAAEE7_s; // 0.333365649
    constexpr float p4 = 0xBE80061D_s; // -0.250046641
    constexpr float p5 = 0x3E4AFB81_s; // 0.198225036
    constexpr float p6 = 0xBE289358_s; // -0.164624572
    constexpr float p7 = 0x3E2DB86B_s; // 0.169648811
    constexpr float p8 = 0xBE1B6A22_s; // -0.151772052
    constexpr float ln2 = 0x3F317218_s;
    const Float4 k = z.k, r = z.r;
    const Float4 P = p2 + r * (p3 + r * (p4 + r * (p5 + r * (p6 + r * (p7 + r * p8)))));
    return (r + r * r * P) + k * ln2;
  }
};
TARN_CLAIM(sLn, LA, 4.0, 0, 3.5e38)

struct sLn_EP : sLn {
  static TARN_INLINE Float4 finish(Prepared z) {
    constexpr float p2 = 0xBF000000_s; // -0.5
    constexpr float p3 = 0x3EAA7160_s; // 0.332896233
    constexpr float p4 = 0xBE88E8FE_s; // -0.267402589
    constexpr float p5 = 0x3E612933_s; // 0.219883725
    constexpr float ln2 = 0x3F317218_s;
    const Float4 k = z.k, r = z.r;
    const Float4 P = p2 + r * (p3 + r * (p4 + r * p5));
    return (r + r * r * P) + k * ln2;
  }
};
TARN_CLAIM(sLn, EP, 1.7e3, 0, 3.5e38)

}
