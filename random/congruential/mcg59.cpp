// MCG59: x = a x mod 2^59.
#include "random/streams/maps.h"
#include "random/streams/stream.h"

using namespace tarn::random;

namespace {

constexpr uint64_t kMask = 0x7FFFFFFFFFFFFFF;
constexpr uint64_t kMultiplier = 302875106592253; // 13^13
constexpr double kTwoToMinus59 = 0x1p-59;

struct State {
  uint64_t x, a;
};

struct Raw {
  LooseLong* r;
  explicit Raw(void* to) : r(static_cast<LooseLong*>(to)) {}
  void put1(int64_t k, uint64_t x) const { r[k] = x; }
};

template <class Real> struct Scaled {
  typename Loose<Real>::type* r;
  double scale, offset;
  Scaled(void* to, double a, double b)
      : r(static_cast<typename Loose<Real>::type*>(to)), scale((b - a) * kTwoToMinus59), offset(a) {}
  // double(x) of a 59-bit integer: both halves are exact, so their sum rounds once, as one conversion would.
  void put2(int64_t k, ULong2 x) const {
    constexpr uint64_t two52 = 0x4330000000000000; // 2^52, unit 1
    constexpr uint64_t two84 = 0x4530000000000000; // 2^84, unit 2^32
    const Double2 low = (Double2)((x & 0xFFFFFFFF) | two52);
    const Double2 high = (Double2)((x >> 32) | two84) - (0x1p84 + 0x1p52);
    const Double2 y = (high + low) * scale + offset;
    if constexpr (sizeof(Real) == sizeof(double))
      store2(r + k, y);
    else
      _mm_storel_epi64(reinterpret_cast<__m128i*>(r + k), _mm_castps_si128(_mm_cvtpd_ps(y)));
  }
  void put1(int64_t k, uint64_t x) const {
    r[k] = static_cast<Real>(static_cast<double>(static_cast<int64_t>(x)) * scale + offset);
  }
};

// Eight running values, each moved on by a^8. They wrap at 64 bits; the low 59 are right all the same. Numbers are made
// from a buffer of words: moving each value from a general to a vector register would take longer.
template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  constexpr int kLanes = 8;
  State& state = state_of<State>(stream);
  uint64_t x = state.x;
  const uint64_t a = state.a;
  int64_t k = 0;
  if (n >= 16) {
    const uint64_t a2 = a * a, a4 = a2 * a2, step = a4 * a4;
    uint64_t lane[kLanes];
    for (uint64_t& value : lane) {
      value = x;
      x *= a;
    }
    constexpr bool kInPlace = __is_same(Map, Raw);
    constexpr int64_t kRun = 64;
    const int64_t whole = n / kLanes * kLanes;
    while (k < whole) {
      uint64_t buffer[kInPlace ? 1 : kRun];
      const int64_t run = kInPlace || whole - k < kRun ? whole - k : kRun;
      LooseLong* to = buffer;
      if constexpr (kInPlace) to = map.r + k;
      for (int64_t t = 0; t < run; t += kLanes)
        for (int j = 0; j < kLanes; j++) {
          to[t + j] = lane[j] & kMask;
          lane[j] *= step;
        }
      if constexpr (!kInPlace)
        for (int64_t t = 0; t < run; t += 2)
          map.put2(k + t, (ULong2)_mm_loadu_si128(reinterpret_cast<const __m128i*>(buffer + t)));
      k += run;
    }
    x = lane[0];
  }
  for (; k < n; k++) {
    map.put1(k, x & kMask);
    x *= a;
  }
  state.x = x & kMask;
  return TARN_RANDOM_OK;
}

void seed(State& state, int32_t n, const uint32_t* seeds) {
  uint64_t x = 0;
  if (n >= 1) x = seeds[0];
  if (n >= 2) x = (x | static_cast<uint64_t>(seeds[1]) << 32) & kMask;
  state.x = x != 0 ? x : 1;
  state.a = kMultiplier;
}

void advance(State& state, uint64_t count) { state.x = state.x * __kestiPowMod2P59(state.a, count) & kMask; }

}

TARN_EXPORT uint64_t __kestiPowMod2P59(uint64_t base, uint64_t exponent) {
  uint64_t result = 1;
  for (; exponent != 0; exponent >>= 1) {
    if (exponent & 1) result = result * base & kMask;
    base *= base;
  }
  return result;
}

TARN_EXPORT int32_t __kestBRngMCG59InitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  State& state = state_of<State>(stream);
  switch (method) {
  case kSeed: seed(state, n, static_cast<const uint32_t*>(params)); return TARN_RANDOM_OK;
  case kLeapfrog:
    advance(state, static_cast<uint64_t>(static_cast<int64_t>(*static_cast<const int32_t*>(params))));
    state.a = __kestiPowMod2P59(state.a, static_cast<uint64_t>(static_cast<int64_t>(n))) & kMask;
    return TARN_RANDOM_OK;
  case kSkipAhead: advance(state, *static_cast<const uint64_t*>(params)); return TARN_RANDOM_OK;
  default: return no_such_method(method);
  }
}

TARN_OUTPUTS(MCG59, generate, Raw, Scaled<double>, Scaled<float>)
