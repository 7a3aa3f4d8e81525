// Maps of 32-bit words to output values: one object holds the destination and the factors of a call; put4 writes four
// consecutive values and put1 one. Destinations may stand at any byte address.
#pragma once

#include <emmintrin.h>
#include <stdint.h>

namespace tarn::random {

typedef uint32_t UInt4 __attribute__((vector_size(16)));
typedef int32_t Int4 __attribute__((vector_size(16)));
typedef uint64_t ULong2 __attribute__((vector_size(16)));
typedef double Double2 __attribute__((vector_size(16)));
typedef float Float4 __attribute__((vector_size(16)));

// Elements of a caller's array at any address.
typedef uint32_t LooseWord __attribute__((aligned(1), may_alias));
typedef uint64_t LooseLong __attribute__((aligned(1), may_alias));
typedef double LooseDouble __attribute__((aligned(1), may_alias));
typedef float LooseFloat __attribute__((aligned(1), may_alias));

template <class Value> struct Loose { typedef Value type __attribute__((aligned(1), may_alias)); };

inline UInt4 load4(const void* from) { return (UInt4)_mm_loadu_si128(static_cast<const __m128i*>(from)); }
inline void store4(void* to, UInt4 w) { _mm_storeu_si128(static_cast<__m128i*>(to), (__m128i)w); }
inline UInt4 all4(uint32_t w) { return UInt4{w, w, w, w}; }

// How a word becomes a double t: as unsigned, as unsigned less 2^31, as signed.
enum class Reading { Unsigned, Centred, Signed };

// Exact. Signed words convert as they are; unsigned ones go into the low half of the double 2^52, which is taken off.
template <Reading reading> inline void widen(UInt4 w, Double2& low, Double2& high) {
  if constexpr (reading == Reading::Unsigned) {
    const __m128i exponent = _mm_set1_epi32(0x43300000);
    low = (Double2)_mm_unpacklo_epi32((__m128i)w, exponent) - 0x1p52;
    high = (Double2)_mm_unpackhi_epi32((__m128i)w, exponent) - 0x1p52;
  } else {
    if (reading == Reading::Centred) w ^= all4(0x80000000);
    low = (Double2)_mm_cvtepi32_pd((__m128i)w);
    high = (Double2)_mm_cvtepi32_pd(_mm_shuffle_epi32((__m128i)w, _MM_SHUFFLE(3, 2, 3, 2)));
  }
}

template <Reading reading> inline double widen(uint32_t w) {
  if (reading == Reading::Unsigned) return static_cast<double>(w);
  if (reading == Reading::Centred) w ^= 0x80000000;
  return static_cast<double>(static_cast<int32_t>(w));
}

inline void store2(LooseDouble* to, Double2 x) { _mm_storeu_pd(reinterpret_cast<double*>(to), x); }
inline void store4(LooseFloat* to, Double2 low, Double2 high) {
  _mm_storeu_ps(reinterpret_cast<float*>(to), _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high)));
}

struct Words {
  LooseWord* r;
  explicit Words(void* to) : r(static_cast<LooseWord*>(to)) {}
  void put4(int64_t k, UInt4 w) const { store4(r + k, w); }
  void put1(int64_t k, uint32_t w) const { r[k] = w; }
  void put(int64_t k, UInt4 w) const { put4(k, w); }
  void put(int64_t k, uint32_t w) const { put1(k, w); }
};

// t * scale + offset in double, stored as Real.
template <Reading reading, class Real> struct LinearDouble {
  typename Loose<Real>::type* r;
  double scale, offset;
  LinearDouble(void* to, double scale_, double offset_)
      : r(static_cast<typename Loose<Real>::type*>(to)), scale(scale_), offset(offset_) {}
  void put4(int64_t k, UInt4 w) const {
    Double2 low, high;
    widen<reading>(w, low, high);
    low = low * scale + offset;
    high = high * scale + offset;
    if constexpr (sizeof(Real) == sizeof(double)) {
      store2(r + k, low);
      store2(r + k + 2, high);
    } else {
      store4(r + k, low, high);
    }
  }
  void put1(int64_t k, uint32_t w) const { r[k] = static_cast<Real>(widen<reading>(w) * scale + offset); }
};

// a + (b - a) u with u = w 2^-32, and the form about the midpoint that saves the unsigned conversion.
constexpr double kTwoToMinus32 = 0x1p-32;

template <class Real> struct FromLower : LinearDouble<Reading::Unsigned, Real> {
  FromLower(void* to, double a, double b) : LinearDouble<Reading::Unsigned, Real>(to, (b - a) * kTwoToMinus32, a) {}
};

template <Reading reading> struct AboutMiddle : LinearDouble<reading, double> {
  AboutMiddle(void* to, double a, double b)
      : LinearDouble<reading, double>(to, (b - a) * kTwoToMinus32, (a + b) * 0.5) {}
};

// Single precision throughout: float(t) * scale + offset.
template <Reading reading> struct LinearFloat {
  LooseFloat* r;
  float scale, offset;
  LinearFloat(void* to, float scale_, float offset_)
      : r(static_cast<LooseFloat*>(to)), scale(scale_), offset(offset_) {}
  void put4(int64_t k, UInt4 w) const {
    Float4 t;
    if constexpr (reading == Reading::Unsigned) // both parts are exact, so the sum is the word rounded once
      t = (Float4)_mm_cvtepi32_ps((__m128i)(w >> 8)) * 256.0f + (Float4)_mm_cvtepi32_ps((__m128i)(w & 255));
    else
      t = (Float4)_mm_cvtepi32_ps((__m128i)(reading == Reading::Centred ? w ^ all4(0x80000000) : w));
    _mm_storeu_ps(reinterpret_cast<float*>(r + k), t * scale + offset);
  }
  void put1(int64_t k, uint32_t w) const {
    float t;
    if constexpr (reading == Reading::Unsigned)
      t = static_cast<float>(static_cast<int32_t>(w >> 8)) * 256.0f + static_cast<float>(static_cast<int32_t>(w & 255));
    else
      t = static_cast<float>(static_cast<int32_t>(reading == Reading::Centred ? w ^ 0x80000000 : w));
    r[k] = t * scale + offset;
  }
};

// Factors made in double from the widened limits and rounded once each.
template <Reading reading> struct AboutMiddleFloat : LinearFloat<reading> {
  AboutMiddleFloat(void* to, float a, float b)
      : LinearFloat<reading>(to, static_cast<float>((static_cast<double>(b) - a) * kTwoToMinus32),
                             static_cast<float>((static_cast<double>(a) + b) * 0.5)) {}
};

// Puts words that stand in memory.
template <class Map> inline void put_words(Map map, int64_t k, const uint32_t* words, int64_t count) {
  int64_t i = 0;
  for (; i + 4 <= count; i += 4) map.put4(k + i, load4(words + i));
  for (; i < count; i++) map.put1(k + i, words[i]);
}

}
