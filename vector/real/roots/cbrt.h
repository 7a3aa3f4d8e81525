// Cbrt and InvCbrt. x = 2^(3q) 2^r C (1 + t) with r in 0..2, C one of 32 mantissas in the middle of their intervals and
// |t| at most 1/65: the root of 2^r C comes from a table, that of 1 + t from its series, and 2^q is put into the
// exponent.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"
#include "vector/real/roots/cbrt_data.h"

namespace tarn::TARN_ISA {

// Both precisions take x apart in 16-bit lanes: the exponent field and the top five bits of the mantissa make one number
// w = 96 q + row, so one division by a constant gives the quotient of the exponent by 3 and the table's row together.
template <class I> static TARN_INLINE I quotient_by_96(I w) { // 2/3 of 2^16, then a shift by 6: exact for 16 bits
  const I fill = (I{} + 1) * 0xAAAB;
  return (I)_mm_srli_epi16(_mm_mulhi_epu16((__m128i)w, (__m128i)fill), 6);
}
template <class I> static TARN_INLINE I times_96(I q) { return (I)_mm_mullo_epi16((__m128i)q, (__m128i)(I{} + 96)); }

// What is common to both directions in double precision.
struct CubeParts {
  Double2 t;
  Long2 row; // 32 r + the index of C
  Long2 q;   // the quotient of the biased exponent by 3, 341 too large
};
static TARN_INLINE CubeParts cube_parts(Double2 x) {
  const Long2 w = (Long2)((ULong2)(bits(x) << 1) >> 48);
  const Long2 q = quotient_by_96(w), row = w - times_96(q);
  // m - C: the bits of m below the first five, less the 2^-6 by which C stands in the middle.
  const Double2 rest = from_bits((bits(x) & 0x00007FFFFFFFFFFF) | 0x3FF0000000000000);
  const double* table = data::cbrt_reciprocal;
  const Double2 reciprocal = pair(table[low_word_0((Double2)row)], table[low_word_1((Double2)row)]);
  return {(rest - 1.015625) * reciprocal, row, q};
}

enum class Root { cube, inverse };

// (1 + t)^(1/3) - 1, or (1 + t)^(-1/3) - 1, by binomial series in two halves; the cube root's high terms are fitted.
// What is left out is below 2^-57 of the root.
template <Root root> static TARN_INLINE Double2 series_high(Double2 t) {
  if constexpr (root == Root::cube)
    return 0.03017832647462277 + t * (-0.023472031702484377 + t * (0.019001168521058782 + t * -0.015834307100882319));
  else
    return -91.0 / 729 + t * (728.0 / 6561 + t * (-1976.0 / 19683 + t * (5434.0 / 59049)));
}
template <Root root> static TARN_INLINE Double2 series(Double2 t, Double2 high) {
  if constexpr (root == Root::cube)
    return t * (1.0 / 3 + t * (-1.0 / 9 + t * (5.0 / 81 + t * (-10.0 / 243 + t * high))));
  else
    return t * (-1.0 / 3 + t * (2.0 / 9 + t * (-14.0 / 81 + t * (35.0 / 243 + t * high))));
}

template <Root root, bool two_parts> struct dCubeRoot {
  static constexpr double filler = 1;

  struct Prepared {
    Double2 t, high;  // the upper half of the series
    Long2 row, power; // 2^q in the exponent field, with the sign of x
  };
  static TARN_INLINE Prepared prepare(Double2 x) {
    const CubeParts p = cube_parts(x);
    const Long2 field = (root == Root::cube ? p.q - 341 : 341 - p.q) << 52;
    return {p.t, series_high<root>(p.t), p.row, field + (bits(x) & INT64_MIN)};
  }
  static TARN_INLINE Double2 finish(Prepared p) {
    const Double2 P = series<root>(p.t, p.high);
    const double* table = root == Root::cube ? data::__lumedCbrtHATab : data::__lumedInvCbrtHATab;
    const Double2 row0 = load(table + 2 * low_word_0((Double2)p.row)),
                  row1 = load(table + 2 * low_word_1((Double2)p.row));
    const Double2 hi = low_lanes(row0, row1);
    Double2 y;
    if constexpr (two_parts)
      y = hi + (high_lanes(row0, row1) + hi * P);
    else
      y = hi + hi * P;
    return from_bits(bits(y) + p.power);
  }
  static TARN_INLINE Double2 fast(Double2 x) { return finish(prepare(x)); }
  // Zeros, denormals, infinities, NaNs.
  static TARN_INLINE Int4 gate(Int4 high) {
    const Int4 field = high & 0x7FF00000;
    return (field == 0) | (field == 0x7FF00000);
  }
  static __attribute__((noinline, cold)) int rare(const double* px, double* r) {
    const double x = *px;
    if (x == 0) {
      *r = root == Root::cube ? canonical(x) : 1.0 / x;
      return root == Root::cube ? 0 : 2;
    }
    if (!(from_bits(bits(x) & 0x7FFFFFFFFFFFFFFF) < __builtin_inf()))
      *r = root == Root::cube || x != x ? x + x : 1.0 / x;
    else if (root == Root::cube)
      *r = fast(splat(x * 0x1p300))[0] * 0x1p-100;
    else
      *r = fast(splat(x * 0x1p300))[0] * 0x1p100;
    return 0;
  }
};
using dCbrt_HA = dCubeRoot<Root::cube, true>;
using dCbrt_LA = dCubeRoot<Root::cube, false>;
using dInvCbrt_HA = dCubeRoot<Root::inverse, true>;
using dInvCbrt_LA = dCubeRoot<Root::inverse, false>;
TARN_CLAIM(dCbrt, HA, 0.52, -1.8e308, 1.8e308)
TARN_CLAIM(dCbrt, LA, 1.1, -1.8e308, 1.8e308)
TARN_CLAIM(dInvCbrt, HA, 0.55, -1.8e308, 1.8e308)
TARN_CLAIM(dInvCbrt, LA, 1.1, -1.8e308, 1.8e308)

// ---- Single precision ----

struct CubePartsF {
  Float4 t;
  Int4 row; // 32 times the residue of the biased exponent by 3, and the index of C
  Int4 q;   // the quotient; 127 = 3 * 42 + 1, so it is 42 too large, and the residue by 1
};
static TARN_INLINE CubePartsF cube_partsf(Float4 x) {
  const Int4 w = (Int4)((UInt4)(bits(x) << 1) >> 19);
  const Int4 q = quotient_by_96(w), row = w - times_96(q);
  const Float4 rest = from_bits((bits(x) & 0x0003FFFF) | 0x3F800000);
  const Float4 at = (Float4)row;
  const float* table = data::cbrt_reciprocalf;
  const Float4 reciprocal = {table[low_word<0>(at)], table[low_word<1>(at)], table[low_word<2>(at)],
                             table[low_word<3>(at)]};
  return {(rest - 1.015625f) * reciprocal, row, q};
}

enum class Precision { high, low, ep };

template <Root root, Precision precision> struct sCubeRoot {
  static constexpr float filler = 1;
  static constexpr bool cube = root == Root::cube;

  static TARN_INLINE Float4 polynomial(Float4 t) {
    if constexpr (precision == Precision::ep)
      return cube ? t * (1.0f / 3 + t * (-1.0f / 9)) : t * (-1.0f / 3 + t * (2.0f / 9));
    else
      return cube ? t * (1.0f / 3 + t * (-1.0f / 9 + t * (5.0f / 81 + t * (-10.0f / 243))))
                  : t * (-1.0f / 3 + t * (2.0f / 9 + t * (-14.0f / 81 + t * (35.0f / 243))));
  }
  struct Prepared {
    Float4 t;
    Int4 row, power; // 2^q in the exponent field, with the sign of x
  };
  static TARN_INLINE Prepared prepare(Float4 x) {
    const CubePartsF p = cube_partsf(x);
    const Int4 field = (cube ? p.q - 42 : 42 - p.q) << 23;
    return {p.t, p.row, field + (bits(x) & INT32_MIN)};
  }
  static TARN_INLINE Float4 fast(Float4 x) { return finish(prepare(x)); }
  static TARN_INLINE Float4 finish(Prepared p) {
    const Float4 at = (Float4)p.row;
    const unsigned row[4] = {low_word<0>(at), low_word<1>(at), low_word<2>(at), low_word<3>(at)};
    const float* table = cube ? data::cbrt_tablef : data::inverse_cbrt_tablef;
    const auto pairs = [&](int i, int j) {
      const Double2 low = _mm_load_sd((const double*)(table + 2 * row[i]));
      return (Float4)_mm_loadh_pd(low, (const double*)(table + 2 * row[j]));
    };
    const Float4 rows01 = pairs(0, 1), rows23 = pairs(2, 3);
    const Float4 hi = _mm_shuffle_ps(rows01, rows23, _MM_SHUFFLE(2, 0, 2, 0));
    Float4 y;
    if constexpr (precision == Precision::high) {
      const Float4 lo = _mm_shuffle_ps(rows01, rows23, _MM_SHUFFLE(3, 1, 3, 1));
      y = hi + (lo + hi * polynomial(p.t));
    } else {
      y = hi + hi * polynomial(p.t);
    }
    return from_bits(bits(y) + p.power);
  }
  static TARN_INLINE Int4 gate(Int4 x) {
    const Int4 field = x & 0x7F800000;
    return (field == 0) | (field == 0x7F800000);
  }
  static __attribute__((noinline, cold)) int rare(const float* px, float* r) {
    const float x = *px;
    if (x == 0) {
      *r = cube ? canonical(x) : 1.0f / x;
      return cube ? 0 : 2;
    }
    if (!(from_bits(bits(x) & 0x7FFFFFFF) < __builtin_inff()))
      *r = cube || x != x ? x + x : 1.0f / x;
    else
      *r = fast(splat(x * 0x1p60f))[0] * (cube ? 0x1p-20f : 0x1p20f);
    return 0;
  }
};
using sCbrt_HA = sCubeRoot<Root::cube, Precision::high>;
using sCbrt_LA = sCubeRoot<Root::cube, Precision::low>;
using sCbrt_EP = sCubeRoot<Root::cube, Precision::ep>;
using sInvCbrt_HA = sCubeRoot<Root::inverse, Precision::high>;
using sInvCbrt_LA = sCubeRoot<Root::inverse, Precision::low>;
using sInvCbrt_EP = sCubeRoot<Root::inverse, Precision::ep>;
TARN_CLAIM(sCbrt, HA, 0.53, -3.5e38, 3.5e38)
TARN_CLAIM(sCbrt, LA, 1.1, -3.5e38, 3.5e38)
TARN_CLAIM(sCbrt, EP, 4.5, -3.5e38, 3.5e38)
TARN_CLAIM(sInvCbrt, HA, 0.53, -3.5e38, 3.5e38)
TARN_CLAIM(sInvCbrt, LA, 1.1, -3.5e38, 3.5e38)
TARN_CLAIM(sInvCbrt, EP, 12, -3.5e38, 3.5e38)

}
