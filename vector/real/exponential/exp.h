// Exp: e to the power x.
// x = n (ln 2)/N + r with a table of 2^(j/N): P. T. P. Tang, Table-driven implementation of the exponential function in
// IEEE floating-point arithmetic, ACM Transactions on Mathematical Software 15 (1989). The power of two is applied by
// an integer addition to the exponent field; so that this stays inside the normal range, arguments beyond about 708.39
// (87.33 in single precision) go to the rare routine although their results need not over- or underflow.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"
#include "vector/real/exponential/exp_data.h"

namespace tarn::TARN_ISA {

constexpr double exp_overflow = 0x40862E42FEFA39EF_d;  // 709.782712893384, the largest with a finite result
constexpr double exp_underflow = 0xC0874910D52D3051_d; // -745.1332191019411, the smallest with a result above 0
constexpr double exp_denormal = -708.3964185322641;    // below it results are denormal
constexpr float expf_overflow = 0x42B17217_s;          // 88.7228317
constexpr float expf_underflow = 0xC2CFF1B4_s;         // -103.972076
constexpr float expf_denormal = -87.33654022216797f;

// What the two rare routines share: e^x in double precision as a scaled sum. `swapped` takes the two parts of the
// reduction in the other order.
struct ExpParts {
  double hi, v; // e^x = (hi + v) 2^exponent
  int32_t exponent;
};
static inline ExpParts exp_parts(double x, bool swapped) {
  constexpr double K = 0x40571547652B82FE_d;  // 64/ln 2 = 92.33248261689366
  constexpr double L1 = 0x3F862E42FEFA0000_d; // (ln 2)/64 = L1 + L2; 0.010830424696223417
  constexpr double L2 = 0x3D1CF79ABC9E3B3A_d; // 2.572804622327669e-14
  const double t = K * x + shifter;
  const double n = t - shifter;
  const double r = swapped ? (x - n * L2) - n * L1 : (x - n * L1) - n * L2;
  const double u =
      ((((0.0013888870459233254 * r + 0.008333341995140497) * r + 0.04166666666677052) * r + 0.1666666666665788) * r +
       0.5) *
          r * r +
      r;
  const uint32_t j = (uint32_t)bits(t) & 63;
  const double hi = data::exp2_64[2 * j], lo = data::exp2_64[2 * j + 1];
  return {hi, (u + lo) * hi, (int32_t)(uint32_t)bits(t) >> 6};
}

static inline double power_of_two(uint32_t biased_exponent) { return from_bits((uint64_t)biased_exponent << 52); }

static inline double exp_normal(double x, bool swapped) {
  const ExpParts p = exp_parts(x, swapped);
  const uint32_t b = (uint32_t)(p.exponent + 1023) & 0x7FF;
  if (b > 2046) return (p.v + p.hi) * power_of_two(b - 1) * 2.0;
  return (p.v + p.hi) * power_of_two(b);
}

// The result is formed 2^60 too large and brought down in two parts, so that it is rounded once.
static inline double exp_gradual_underflow(double x, bool swapped) {
  constexpr double down = 0x1p-60;
  const ExpParts p = exp_parts(x, swapped);
  const uint32_t b = (uint32_t)(p.exponent + 1083) & 0x7FF;
  const double w = power_of_two(b);
  const double A = w * p.hi, B = p.v * w, C = A + B;
  if (b <= 50) return C * down;
  const double D = (C + C * 6442450944.0) - C * 6442450944.0;
  return D * down + ((A - C + B) + (C - D)) * down;
}

__attribute__((noinline, cold)) inline int vdexp_cout_rare(const double* a, double* r) {
  const double x = *a;
  const uint32_t exponent = high_word(x) >> 20 & 0x7FF;
  if (exponent == 0x7FF) {
    *r = bits(x) == 0xFFF0000000000000 ? 0.0 : x * x;
    return 0;
  }
  if (exponent < 971) { // |x| < 2^-52
    *r = 1.0 + x;
    return 0;
  }
  if (!(exp_overflow >= x)) {
    const double largest = opaque(0x1.fffffffffffffp+1023);
    *r = largest * largest;
    return 3;
  }
  if (!(x >= exp_underflow)) {
    const double smallest = opaque(0x1p-1022);
    *r = smallest * smallest;
    return 4;
  }
  if (!(x >= exp_denormal)) {
    *r = exp_gradual_underflow(x, false);
    return 4;
  }
  *r = exp_normal(x, false);
  return 0;
}

__attribute__((noinline, cold)) inline int vsexp_cout_rare(const float* a, float* r) {
  const double x = *a;
  const uint32_t exponent = bits(*a) >> 23 & 0xFF;
  if (exponent == 0xFF) {
    *r = bits(*a) == 0xFF800000 ? 0.0f : *a * *a;
    return 0;
  }
  if (exponent < 75) { // |x| < 2^-52
    *r = (float)(1.0 + x);
    return 0;
  }
  if (!((double)expf_overflow >= x)) {
    const float largest = opaque(0x1.fffffep+127f);
    *r = largest * largest;
    return 3;
  }
  if (!(x >= (double)expf_underflow)) {
    const float smallest = opaque(0x1p-126f);
    *r = smallest * smallest;
    return 4;
  }
  if (!(x >= (double)expf_denormal)) {
    *r = (float)exp_gradual_underflow(x, true);
    return 4;
  }
  *r = (float)exp_normal(x, true);
  return 0;
}

// What all classes of a precision share.
struct dExp {
  struct Prepared {
    Double2 t, r; // x = n (ln 2)/N + r, with n in the low bits of t
  };
  static constexpr double filler = 0.75;
  static TARN_INLINE Int4 gate(Int4 high) { return (high & 0x7FFFFFFF) > 0x4086232A; } // |x| from about 708.39 on
  static int rare(const double* x, double* y) { return vdexp_cout_rare(x, y); }
  // Without reports the certain overflows and underflows need no rare call.
  static TARN_INLINE int settle(Double2 x, Double2& y, int lanes) {
    const Long2 over = x > exp_overflow, under = x < exp_underflow;
    y = select(under, Double2{}, select(over, splat(__builtin_inf()), y));
    return lanes & ~_mm_movemask_pd((Double2)(over | under));
  }
};

struct sExp {
  struct Prepared {
    Float4 t, r; // x = n (ln 2)/N + r, with n in the low bits of t
  };
  static constexpr float filler = 0.75f;
  static TARN_INLINE Int4 gate(Int4 x) { return (x & 0x7FFFFFFF) > 0x42AEAC4F; } // |x| above 87.3365402
  static int rare(const float* x, float* y) { return vsexp_cout_rare(x, y); }
  static TARN_INLINE int settle(Float4 x, Float4& y, int lanes) {
    const Int4 over = x > expf_overflow, under = x < expf_underflow;
    y = select(under, Float4{}, select(over, splat(__builtin_inff()), y));
    return lanes & ~lane_mask(over | under);
  }
};

struct dExp_HA : dExp {
  static TARN_INLINE Prepared prepare(Double2 x) {
    constexpr double K = 0x40571547652B82FE_d;  // 64/ln 2 = 92.33248261689366
    constexpr double L1 = 0x3F862E42FEFA0000_d; // (ln 2)/64 = L1 + L2; 0.010830424696223417
    constexpr double L2 = 0x3D1CF79ABC9E3B3A_d; // 2.572804622327669e-14
    const Double2 t = x * K + shifter;
    const Double2 n = t - shifter;
    return {t, (x - n * L1) - n * L2};
  }
  static TARN_INLINE Double2 finish(Prepared z) {
    constexpr double c2 = 0x3FDFFFFFFFFFDB3B_d; // 0.4999999999994775
    constexpr double c3 = 0x3FC555555555653E_d; // 0.1666666666667797
    constexpr double c4 = 0x3FA555573F218B93_d; // 0.04166672368662385
    constexpr double c5 = 0x3F8111112D9F549B_d; // 0.00833333416441411
    const Double2 row0 = load(data::exp2_64 + 2 * (low_word_0(z.t) & 63));
    const Double2 row1 = load(data::exp2_64 + 2 * (low_word_1(z.t) & 63));
    const Double2 hi = low_lanes(row0, row1), lo = high_lanes(row0, row1);
    const Double2 r = z.r;
    const Double2 p = r + r * r * (c2 + r * (c3 + r * (c4 + r * c5)));
    const Double2 y = hi + (lo + hi * p);
    return from_bits(bits(y) + ((bits(z.t) & ~0x3FL) << 46));
  }
};
TARN_CLAIM(dExp, HA, 0.53, -708.39, 708.39)
// Beyond, the rare routine's: it scales the table's low part with the polynomial.
TARN_CLAIM(dExp, HA, 0.96, -745.2, -708.39)
TARN_CLAIM(dExp, HA, 0.96, 708.39, 709.79)

struct dExp_LA : dExp {
  static TARN_INLINE Prepared prepare(Double2 x) {
    constexpr double K = 0x40971547652B82FE_d;  // 1024/ln 2 = 1477.3197218702985
    constexpr double L1 = 0x3F462E42FEC00000_d; // (ln 2)/1024 = L1 + L2; 0.0006769015431018488
    constexpr double L2 = 0x3D5D1CF79ABC9E3B_d; // 4.137227896298129e-13
    const Double2 k = x * K;
    const Double2 n = _mm_round_pd(k, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
    return {k + shifter, (x - n * L1) - n * L2};
  }
  static TARN_INLINE Double2 finish(Prepared z) {
    constexpr double c2 = 0x3FE0000001EBFBE0_d; // 0.5000000035796539
    constexpr double c3 = 0x3FC5555555555556_d; // 0.16666666666666669
    const Double2 T = pair(data::exp2_1024[low_word_0(z.t) & 1023], data::exp2_1024[low_word_1(z.t) & 1023]);
    const Double2 P = 1.0 + z.r * (1.0 + z.r * (c2 + z.r * c3));
    return from_bits(bits(T * P) + ((bits(z.t) & ~0x3FFL) << 42));
  }
};
TARN_CLAIM(dExp, LA, 3.25, -745.2, 709.79)

struct dExp_EP : dExp {
  static TARN_INLINE Prepared prepare(Double2 x) {
    constexpr double K = 0x40671547652B82FE_d; // 128/ln 2 = 184.6649652337873
    constexpr double L = 0x3F762E42FEFA39EF_d; // (ln 2)/128 = 0.0054152123481245725
    const Double2 t = x * K + shifter;
    return {t, x - (t - shifter) * L};
  }
  static TARN_INLINE Double2 finish(Prepared z) {
    constexpr double c2 = 0x3FDFFFFC2808F7E8_d; // 0.49999908361121337
    const Double2 T = pair(data::exp2_128[low_word_0(z.t) & 127], data::exp2_128[low_word_1(z.t) & 127]);
    const Double2 P = 1.0 + z.r * (1.0 + z.r * c2);
    return from_bits(bits(T * P) + ((bits(z.t) & ~0x7FL) << 45));
  }
};
TARN_CLAIM(dExp, EP, 3.0e7, -745.2, 709.79)

struct sExp_HA : sExp {
  static TARN_INLINE Prepared prepare(Float4 x) {
    constexpr float K = 0x4338AA3B_s;  // 128/ln 2 = 184.664963
    constexpr float L1 = 0x3BB18000_s; // (ln 2)/128 = L1 + L2; 0.0054168701171875
    constexpr float L2 = 0xB5DE8083_s; // -1.6577690757912933e-06
    const Float4 t = x * K + shifterf;
    const Float4 n = t - shifterf;
    return {t, (x - n * L1) - n * L2};
  }
  static TARN_INLINE Float4 finish(Prepared z) {
    const Float4 t = z.t;
    // Rows of two floats, gathered pairwise.
    const Float4 rows01 = row_pair(low_word<0>(t) & 127, low_word<1>(t) & 127);
    const Float4 rows23 = row_pair(low_word<2>(t) & 127, low_word<3>(t) & 127);
    const Float4 hi = _mm_shuffle_ps(rows01, rows23, _MM_SHUFFLE(2, 0, 2, 0));
    const Float4 lo = _mm_shuffle_ps(rows01, rows23, _MM_SHUFFLE(3, 1, 3, 1));
    const Float4 scale = from_bits(((bits(t) + 0x3F80) << 16) & 0x7F800000); // 2^(the integer part of n/128)
    const Float4 p = z.r + z.r * z.r * 0.5f;
    return scale * (hi + (lo + hi * p));
  }

  static TARN_INLINE Float4 row_pair(unsigned i, unsigned j) {
    const Double2 row_i = _mm_load_sd((const double*)(data::exp2_128f + 2 * i));
    return (Float4)_mm_loadh_pd(row_i, (const double*)(data::exp2_128f + 2 * j));
  }
};
TARN_CLAIM(sExp, HA, 0.57, -103.98, 88.73)

struct sExp_LA : sExp {
  static TARN_INLINE Prepared prepare(Float4 x) {
    constexpr float log2e = 0x3FB8AA3B_s;  // 1.44269502
    constexpr float ln2_hi = 0x3F317200_s; // ln 2 = hi + lo; 0.693145752
    constexpr float ln2_lo = 0x35BFBE8E_s; // 1.42860677e-06
    const Float4 t = x * log2e + shifterf;
    const Float4 n = t - shifterf;
    return {t, (x - n * ln2_hi) - n * ln2_lo};
  }
  static TARN_INLINE Float4 finish(Prepared z) {
    constexpr float c1 = 0x3F7FFFFE_s; // 0.999999881
    constexpr float c2 = 0x3EFFFF34_s; // 0.49999392
    constexpr float c3 = 0x3E2AACAC_s; // 0.166674316
    constexpr float c4 = 0x3D2B8392_s; // 0.0418735221
    constexpr float c5 = 0x3C07D9FE_s; // 0.00829171948
    const Float4 r = z.r;
    const Float4 P = 1.0f + r * (c1 + r * (c2 + r * (c3 + r * (c4 + r * c5))));
    return from_bits(bits(P) + (bits(z.t) << 23));
  }
};
TARN_CLAIM(sExp, LA, 4.0, -103.98, 88.73)

struct sExp_EP : sExp {
  static TARN_INLINE Prepared prepare(Float4 x) { // here r is the rest of x log2(e), not of x
    constexpr float log2e = 0x3FB8AA3B_s;         // 1.44269502
    const Float4 y = x * log2e;
    const Float4 t = y + shifterf;
    return {t, y - (t - shifterf)};
  }
  static TARN_INLINE Float4 finish(Prepared z) {
    constexpr float c1 = 0x3F317422_s;                          // 0.693178296
    constexpr float c2 = 0x3E77D66A_s;                          // 0.242028862
    constexpr float c3 = 0x3D63582B_s;                          // 0.0555040054
    const Float4 P = 1.0f + z.r * (c1 + z.r * (c2 + z.r * c3)); // 2^r
    return from_bits(bits(P) + (bits(z.t) << 23));
  }
};
TARN_CLAIM(sExp, EP, 2.3e3, -103.98, 88.73)

}
