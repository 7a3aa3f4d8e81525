// 128-bit vectors as the language's own types, with the dozen operations that have no operator.
// Everything lives in a namespace named after the instruction set of the file that includes it: an inline function
// compiled twice under one name would let the linker pick the SSE4.1 body for a base kernel.
#pragma once

#include <emmintrin.h>
#include <smmintrin.h> // usable in *.sse41.cpp only; the compiler refuses its functions elsewhere
#include <stdint.h>

#ifdef __FAST_MATH__
#error "the order of operations is part of the kernels' contract: no -ffast-math"
#endif

#define TARN_INLINE __attribute__((always_inline)) inline

namespace tarn::TARN_ISA {

typedef double Double2 __attribute__((vector_size(16)));
typedef float Float4 __attribute__((vector_size(16)));
typedef int64_t Long2 __attribute__((vector_size(16)));
typedef uint64_t ULong2 __attribute__((vector_size(16)));
typedef int32_t Int4 __attribute__((vector_size(16)));
typedef uint32_t UInt4 __attribute__((vector_size(16)));

// Constants as bit patterns: 0x3FE0000000000000_d is 0.5, 0x3F000000_s is 0.5f.
constexpr double operator""_d(unsigned long long pattern) { return __builtin_bit_cast(double, (uint64_t)pattern); }
constexpr float operator""_s(unsigned long long pattern) { return __builtin_bit_cast(float, (uint32_t)pattern); }

// Adding it rounds to an integer, which then stands in the low bits.
constexpr double shifter = 0x4338000000000000_d; // 1.5 * 2^52
constexpr float shifterf = 0x4B400000_s;         // 1.5 * 2^23

// The vector of an element type, and the integer of its size.
template <class T> struct Lanes;
template <> struct Lanes<double> {
  using Vector = Double2;
  using Bits = uint64_t;
  static constexpr int count = 2;
};
template <> struct Lanes<float> {
  using Vector = Float4;
  using Bits = uint32_t;
  static constexpr int count = 4;
};
template <class T> using VectorOf = typename Lanes<T>::Vector;

static TARN_INLINE Double2 load(const double* p) { return _mm_loadu_pd(p); }
static TARN_INLINE Float4 load(const float* p) { return _mm_loadu_ps(p); }
static TARN_INLINE void store(double* p, Double2 v) { _mm_storeu_pd(p, v); }
static TARN_INLINE void store(float* p, Float4 v) { _mm_storeu_ps(p, v); }
static TARN_INLINE void store_aligned(double* p, Double2 v) { _mm_store_pd(p, v); }
static TARN_INLINE void store_aligned(float* p, Float4 v) { _mm_store_ps(p, v); }

static TARN_INLINE Long2 bits(Double2 v) { return (Long2)v; }
static TARN_INLINE Int4 bits(Float4 v) { return (Int4)v; }
static TARN_INLINE Double2 from_bits(Long2 v) { return (Double2)v; }
static TARN_INLINE Float4 from_bits(Int4 v) { return (Float4)v; }

// The high words of four doubles, lane by lane.
static TARN_INLINE Int4 high_words(Double2 a, Double2 b) {
  return (Int4)_mm_shuffle_ps((Float4)a, (Float4)b, _MM_SHUFFLE(3, 1, 3, 1));
}
// x + offset < limit in wrapping signed arithmetic. Written as ~(x + offset) > ~limit, since the processor has only
// this compare and the compiler would invert the result of another.
static TARN_INLINE Int4 offset_less(Int4 x, uint32_t offset, uint32_t limit) {
  return (Int4)(~offset - (UInt4)x) > (int32_t)~limit;
}
// One bit per 32-bit lane of a compare's result.
static TARN_INLINE int lane_mask(Int4 compared) { return _mm_movemask_ps((Float4)compared); }

// The low bits of each 64-bit lane, at least 16 of them, as table indices.
static TARN_INLINE unsigned low_word_0(Double2 v) { return (unsigned)_mm_cvtsi128_si32((__m128i)v); }
static TARN_INLINE unsigned low_word_1(Double2 v) { return (unsigned)_mm_extract_epi16((__m128i)v, 4); }
// The low 16 bits of a 32-bit lane.
template <int lane> static TARN_INLINE unsigned low_word(Float4 v) {
  if constexpr (lane == 0) return (unsigned)_mm_cvtsi128_si32((__m128i)v);
  return (unsigned)_mm_extract_epi16((__m128i)v, 2 * lane);
}

static TARN_INLINE Double2 splat(double v) { return Double2{v, v}; }
static TARN_INLINE Float4 splat(float v) { return Float4{v, v, v, v}; }
static TARN_INLINE Double2 pair(double a, double b) { return Double2{a, b}; }
static TARN_INLINE Double2 low_lanes(Double2 a, Double2 b) { return _mm_unpacklo_pd(a, b); }
static TARN_INLINE Double2 high_lanes(Double2 a, Double2 b) { return _mm_unpackhi_pd(a, b); }

// The hardware's 12-bit reciprocal of two doubles, through single precision.
static TARN_INLINE Double2 reciprocal_estimate(Double2 v) { return _mm_cvtps_pd(_mm_rcp_ps(_mm_cvtpd_ps(v))); }

// Two signed 32-bit integers, in lanes 0 and 2, as doubles; four as floats.
static TARN_INLINE Double2 to_double(Int4 even_lanes) {
  return _mm_cvtepi32_pd(_mm_shuffle_epi32((__m128i)even_lanes, _MM_SHUFFLE(3, 3, 2, 0)));
}
static TARN_INLINE Float4 to_float(Int4 v) { return _mm_cvtepi32_ps((__m128i)v); }

static TARN_INLINE Double2 select(Long2 mask, Double2 if_set, Double2 if_clear) {
  return (Double2)(((Long2)if_set & mask) | ((Long2)if_clear & ~mask));
}
static TARN_INLINE Float4 select(Int4 mask, Float4 if_set, Float4 if_clear) {
  return (Float4)(((Int4)if_set & mask) | ((Int4)if_clear & ~mask));
}

static TARN_INLINE Double2 magnitude(Double2 v) { return (Double2)((Long2)v & INT64_MAX); }
static TARN_INLINE Float4 magnitude(Float4 v) { return (Float4)((Int4)v & INT32_MAX); }
static TARN_INLINE Double2 with_sign_of(Double2 v, Double2 sign) {
  return (Double2)(((Long2)v & INT64_MAX) | ((Long2)sign & INT64_MIN));
}
static TARN_INLINE Float4 with_sign_of(Float4 v, Float4 sign) {
  return (Float4)(((Int4)v & INT32_MAX) | ((Int4)sign & INT32_MIN));
}
// The same for a v that is not of the other sign already.
static TARN_INLINE Double2 or_sign_of(Double2 v, Double2 sign) {
  return (Double2)((Long2)v | ((Long2)sign & INT64_MIN));
}
static TARN_INLINE Float4 or_sign_of(Float4 v, Float4 sign) { return (Float4)((Int4)v | ((Int4)sign & INT32_MIN)); }

// All bits of a lane where its sign is set.
static TARN_INLINE Long2 sign_mask(Double2 v) {
  return (Long2)_mm_shuffle_epi32(_mm_srai_epi32((__m128i)v, 31), _MM_SHUFFLE(3, 3, 1, 1));
}
static TARN_INLINE Int4 sign_mask(Float4 v) { return (Int4)v >> 31; }

// A scalar value that the compiler cannot see through: for expressions that are evaluated for their flags.
static TARN_INLINE double opaque(double v) {
  asm volatile("" : "+x"(v));
  return v;
}
static TARN_INLINE float opaque(float v) {
  asm volatile("" : "+x"(v));
  return v;
}

// v * 1, a multiplication that the compiler would drop: it quiets a NaN, and makes a denormal a zero while the mode
// flushes. For results that no arithmetic has passed.
static TARN_INLINE double canonical(double v) {
  double one = 1;
  asm("" : "+x"(one));
  return v * one;
}
static TARN_INLINE float canonical(float v) {
  float one = 1;
  asm("" : "+x"(one));
  return v * one;
}
static TARN_INLINE Double2 canonical(Double2 v) {
  Double2 one = splat(1.0);
  asm("" : "+x"(one));
  return v * one;
}
static TARN_INLINE Float4 canonical(Float4 v) {
  Float4 one = splat(1.0f);
  asm("" : "+x"(one));
  return v * one;
}

// Bit patterns of scalars.
static TARN_INLINE uint64_t bits(double v) { return __builtin_bit_cast(uint64_t, v); }
static TARN_INLINE uint32_t bits(float v) { return __builtin_bit_cast(uint32_t, v); }
static TARN_INLINE double from_bits(uint64_t v) { return __builtin_bit_cast(double, v); }
static TARN_INLINE float from_bits(uint32_t v) { return __builtin_bit_cast(float, v); }
static TARN_INLINE uint32_t high_word(double v) { return (uint32_t)(bits(v) >> 32); }

}
