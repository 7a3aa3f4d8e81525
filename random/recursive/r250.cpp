// R250: w[n] = w[n - 250] xor w[n - 147].
#include "random/streams/maps.h"
#include "random/streams/stream.h"

#include <string.h>

using namespace tarn::random;

namespace {

constexpr int kRing = 250, kLag = 103;

struct State {
  uint32_t w[kRing];
  int32_t i, j; // places of the two words of the next step
};

struct FromLowerFloat : FromLower<float> {
  FromLowerFloat(void* to, float a, float b) : FromLower<float>(to, a, b) {}
};

uint32_t step(State& s) {
  const uint32_t v = s.w[s.i] ^ s.w[s.j];
  s.w[s.i] = v;
  s.i = s.i + 1 == kRing ? 0 : s.i + 1;
  s.j = s.j + 1 == kRing ? 0 : s.j + 1;
  return v;
}

// to[t] = first[t] xor second[t]; the sources may be words that this very call has stored. Stores are aligned where they
// can be: of those that cross a cache line, a loop of nothing but stores and loads would feel every one.
void combine(LooseWord* to, const LooseWord* first, const LooseWord* second, int64_t count) {
  int64_t t = 0;
  const auto one = [&] { to[t] = first[t] ^ second[t], t++; };
  for (auto odd = -reinterpret_cast<uintptr_t>(to) / sizeof(uint32_t) % 4; odd > 0 && t < count; odd--) one();
  for (; t + 4 <= count; t += 4) store4(to + t, load4(first + t) ^ load4(second + t));
  while (t < count) one();
}

// Long calls touch the ring at both ends only. Words are made in the caller's array, from the last 250 words in order;
// numbers in a buffer that starts with them.
constexpr int kRun = 1000;
template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  State& state = state_of<State>(stream);
  if (n < kRing) {
    for (int32_t k = 0; k < n; k++) map.put1(k, step(state));
    return TARN_RANDOM_OK;
  }
  constexpr bool kInPlace = __is_same(Map, Words);
  uint32_t w[kRing + (kInPlace ? 0 : kRun)];
  memcpy(w, state.w + state.i, sizeof(uint32_t) * static_cast<size_t>(kRing - state.i));
  memcpy(w + kRing - state.i, state.w, sizeof(uint32_t) * static_cast<size_t>(state.i));
  if constexpr (kInPlace) {
    LooseWord* r = map.r;
    combine(r, w, w + kLag, kRing - kLag);
    combine(r + (kRing - kLag), w + (kRing - kLag), r, kLag);
    combine(r + kRing, r, r + kLag, n - kRing);
    memcpy(state.w, r + n - kRing, sizeof state.w);
  } else {
    int64_t run;
    for (int64_t k = 0; k < n; k += run) {
      run = n - k < kRun ? n - k : kRun;
      const int64_t whole = run & ~int64_t{3};
      for (int64_t t = 0; t < whole; t += 4) {
        const UInt4 v = load4(w + t) ^ load4(w + t + kLag);
        store4(w + kRing + t, v);
        map.put4(k + t, v);
      }
      for (int64_t t = whole; t < run; t++) map.put1(k + t, w[kRing + t] = w[t] ^ w[t + kLag]);
      memmove(w, w + run, sizeof(uint32_t) * kRing);
    }
    memcpy(state.w, w, sizeof state.w);
  }
  state.i = 0;
  state.j = kLag;
  return TARN_RANDOM_OK;
}

void seed(State& state, int32_t n, const uint32_t* seeds) {
  if (n >= kRing) {
    memcpy(state.w, seeds, sizeof state.w);
  } else {
    uint32_t word = n < 1 || seeds[0] == 0 ? 1 : seeds[0];
    for (uint32_t& w : state.w) w = word *= 69069;
    // A triangle of bits makes 32 of the words independent.
    for (int t = 0; t < 32; t++) {
      const uint32_t bit = uint32_t{1} << (31 - t);
      uint32_t& w = state.w[7 * t + 3];
      w = (w & (bit - 1)) | bit;
    }
  }
  state.i = 0;
  state.j = kLag;
}

}

TARN_EXPORT int32_t __kestBRngR250InitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  if (method != kSeed) return no_such_method(method);
  seed(state_of<State>(stream), n, static_cast<const uint32_t*>(params));
  return TARN_RANDOM_OK;
}

TARN_OUTPUTS(R250, generate, Words, FromLower<double>, FromLowerFloat)
