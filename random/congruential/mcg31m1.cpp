// MCG31M1: x = a x mod 2^31 - 1.
#include "random/streams/maps.h"
#include "random/streams/stream.h"

using namespace tarn::random;

namespace {

constexpr uint32_t kModulus = 0x7FFFFFFF;
constexpr uint32_t kMultiplier = 1132489760;
constexpr double kInverseModulus = 0x1.00000002p-31; // nearest to 1 / (2^31 - 1)
static_assert(__builtin_bit_cast(uint64_t, kInverseModulus) == 0x3E00000000200000);

struct State {
  uint32_t x, a;
};

uint32_t multiply(uint32_t x, uint32_t y) {
  const uint64_t p = static_cast<uint64_t>(x) * y;
  const uint32_t sum = static_cast<uint32_t>(p & kModulus) + static_cast<uint32_t>(p >> 31);
  return sum >= kModulus ? sum - kModulus : sum;
}

// Two values in the low halves of 64-bit lanes.
ULong2 multiply(ULong2 x, ULong2 y) {
  const ULong2 p = (ULong2)_mm_mul_epu32((__m128i)x, (__m128i)y);
  const ULong2 sum = (p & kModulus) + (p >> 31);
  const Int4 modulus = (Int4)ULong2{kModulus, kModulus};
  const Int4 less = (Int4)sum - modulus; // negative in the low half where nothing is to be subtracted
  return (ULong2)(less + ((less >> 31) & modulus));
}

template <class Real> struct Scaled {
  typename Loose<Real>::type* r;
  double scale, offset;
  Scaled(void* to, double a, double b)
      : r(static_cast<typename Loose<Real>::type*>(to)), scale((b - a) * kInverseModulus), offset(a) {}
  Double2 value(ULong2 x) const {
    constexpr uint64_t two52 = 0x4330000000000000;
    return ((Double2)(x | two52) - 4503599627370496.0) * scale + offset;
  }
  void put4(int64_t k, ULong2 low, ULong2 high) const {
    if constexpr (sizeof(Real) == sizeof(double)) {
      store2(r + k, value(low));
      store2(r + k + 2, value(high));
    } else {
      store4(r + k, value(low), value(high));
    }
  }
  void put1(int64_t k, uint32_t x) const {
    r[k] = static_cast<Real>(static_cast<double>(static_cast<int32_t>(x)) * scale + offset);
  }
};

struct Raw : Words {
  using Words::Words;
  void put4(int64_t k, ULong2 low, ULong2 high) const {
    _mm_storeu_ps(reinterpret_cast<float*>(r + k), _mm_shuffle_ps((Float4)low, (Float4)high, _MM_SHUFFLE(2, 0, 2, 0)));
  }
};

// Sixteen lanes, each moved on by a^16. The first value is written before the length is looked at.
template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  constexpr int kLanes = 16;
  State& state = state_of<State>(stream);
  uint32_t x = state.x;
  const uint32_t a = state.a;
  int64_t k = 0;
  if (n >= 2 * kLanes) {
    uint32_t power = a;
    for (int doubling = 1; doubling < kLanes; doubling *= 2) power = multiply(power, power);
    const ULong2 step = {power, power};
    ULong2 lanes[kLanes / 2];
    for (ULong2& pair : lanes) {
      const uint32_t next = multiply(a, x);
      pair = ULong2{x, next};
      x = multiply(a, next);
    }
    for (; k + kLanes <= n; k += kLanes)
      for (int j = 0; j < kLanes / 2; j += 2) {
        map.put4(k + 2 * j, lanes[j], lanes[j + 1]);
        lanes[j] = multiply(lanes[j], step);
        lanes[j + 1] = multiply(lanes[j + 1], step);
      }
    x = static_cast<uint32_t>(lanes[0][0]);
    if (k == n) {
      state.x = x;
      return TARN_RANDOM_OK;
    }
  }
  do {
    map.put1(k, x);
    x = multiply(a, x);
  } while (++k < n);
  state.x = x;
  return TARN_RANDOM_OK;
}

void seed(State& state, int32_t n, const uint32_t* seeds) {
  state.x = n > 0 ? seeds[0] % kModulus : 1;
  if (state.x == 0) state.x = 1;
  state.a = kMultiplier;
}

void advance(State& state, uint64_t count) {
  state.x = static_cast<uint32_t>(static_cast<uint64_t>(__kestiPowMod2P31M1(state.a, count)) * state.x % kModulus);
}

}

TARN_EXPORT uint32_t __kestiPowMod2P31M1(uint32_t base, uint64_t exponent) {
  uint32_t result = 1;
  for (; exponent != 0; exponent >>= 1) {
    if (exponent & 1) result = multiply(result, base);
    base = multiply(base, base);
  }
  return result;
}

TARN_EXPORT int32_t __kestBRngMCG31M1InitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  State& state = state_of<State>(stream);
  switch (method) {
  case kSeed: seed(state, n, static_cast<const uint32_t*>(params)); return TARN_RANDOM_OK;
  case kLeapfrog:
    advance(state, static_cast<uint64_t>(static_cast<int64_t>(*static_cast<const int32_t*>(params))));
    state.a = __kestiPowMod2P31M1(state.a, static_cast<uint64_t>(static_cast<int64_t>(n)));
    return TARN_RANDOM_OK;
  case kSkipAhead: advance(state, *static_cast<const uint64_t*>(params)); return TARN_RANDOM_OK;
  default: return no_such_method(method);
  }
}

TARN_OUTPUTS(MCG31M1, generate, Raw, Scaled<double>, Scaled<float>)
