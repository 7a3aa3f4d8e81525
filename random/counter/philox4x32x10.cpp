// PHILOX4X32X10: ten rounds of multiplications on a 128-bit counter, under a key of two words.
#include "random/counter/counter.h"
#include "random/streams/maps.h"
#include "random/streams/stream.h"

using namespace tarn::random;

namespace {

constexpr uint32_t kP = 0xD2511F53, kQ = 0xCD9E8D57, kWeyl0 = 0x9E3779B9, kWeyl1 = 0xBB67AE85;
constexpr int kRounds = 10;

struct State {
  uint32_t key[2], counter[4];
  uint32_t left; // last words of the block that are still to be given out
  uint32_t block[4];
};

// Two blocks in the low halves of 64-bit lanes. The upper halves are left to fill with anything: a multiplication reads
// the low half only, so a product is a new word as it stands.
struct Pair {
  ULong2 c[4];
};

ULong2 times(ULong2 x, uint32_t factor) { return (ULong2)_mm_mul_epu32((__m128i)x, (__m128i)ULong2{factor, factor}); }

template <int count> void encrypt(Pair (&pair)[count], const uint32_t key[2]) {
  uint32_t k0 = key[0], k1 = key[1];
  for (int round = 0; round < kRounds; round++) {
    const ULong2 key0 = {k0, k0}, key1 = {k1, k1};
    for (Pair& p : pair) {
      const ULong2 a = times(p.c[0], kP), b = times(p.c[2], kQ);
      p.c[0] = b >> 32 ^ p.c[1] ^ key0;
      p.c[1] = b;
      p.c[2] = a >> 32 ^ p.c[3] ^ key1;
      p.c[3] = a;
    }
    k0 += kWeyl0;
    k1 += kWeyl1;
  }
}

void unpack(const Pair& p, UInt4& first, UInt4& second) {
  const __m128i c01 = _mm_unpacklo_epi32((__m128i)p.c[0], (__m128i)p.c[1]);
  const __m128i c23 = _mm_unpacklo_epi32((__m128i)p.c[2], (__m128i)p.c[3]);
  const __m128i d01 = _mm_unpackhi_epi32((__m128i)p.c[0], (__m128i)p.c[1]);
  const __m128i d23 = _mm_unpackhi_epi32((__m128i)p.c[2], (__m128i)p.c[3]);
  first = (UInt4)_mm_unpacklo_epi64(c01, c23);
  second = (UInt4)_mm_unpacklo_epi64(d01, d23);
}

// The counters `ahead` and ahead + 1 places on.
void set_counters(Pair& pair, const uint32_t counter[4], uint64_t ahead) {
  uint32_t even[4], odd[4];
  for (int i = 0; i < 4; i++) even[i] = odd[i] = counter[i];
  add_to_counter(even, ahead);
  add_to_counter(odd, ahead + 1);
  for (int i = 0; i < 4; i++) pair.c[i] = ULong2{even[i], odd[i]};
}

void next_block(State& s) {
  Pair pair[1];
  for (int i = 0; i < 4; i++) pair[0].c[i] = ULong2{s.counter[i], s.counter[i]};
  encrypt(pair, s.key);
  UInt4 first, second;
  unpack(pair[0], first, second);
  store4(s.block, first);
  add_to_counter(s.counter, 1);
}

// Several blocks side by side; the lowest counter word runs through the lanes, and where it wraps, the carry is made
// for each block.
struct Cipher {
  static constexpr int kPairs = 3, kGroup = 8 * kPairs;
  const uint32_t* key;
  explicit Cipher(const State& s) : key(s.key) {}
  void groups(uint32_t counter[4], Words to, int64_t count) const {
    for (int64_t k = 0; count > 0; count--, k += kGroup) {
      Pair pair[kPairs];
      if (counter[0] <= 0xFFFFFFFF - 2 * kPairs) {
        const ULong2 low = {counter[0], uint64_t{counter[0]} + 1};
        for (int j = 0; j < kPairs; j++) {
          pair[j].c[0] = low + 2 * static_cast<uint64_t>(j);
          for (int i = 1; i < 4; i++) pair[j].c[i] = ULong2{counter[i], counter[i]};
        }
      } else {
        for (int j = 0; j < kPairs; j++) set_counters(pair[j], counter, 2 * static_cast<uint64_t>(j));
      }
      encrypt(pair, key);
      for (int j = 0; j < kPairs; j++) {
        UInt4 first, second;
        unpack(pair[j], first, second);
        to.put4(k + 8 * j, first);
        to.put4(k + 8 * j + 4, second);
      }
      add_to_counter(counter, 2 * kPairs);
    }
  }
};

template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  generate_blocks<Cipher>(state_of<State>(stream), n, map, next_block);
  return TARN_RANDOM_OK;
}

void seed(State& s, int32_t n, const uint32_t* seeds) {
  s = {};
  for (int32_t i = 0; i < n && i < 6; i++) (i < 2 ? s.key[i] : s.counter[i - 2]) = seeds[i];
}

// Factors in single precision from the limits.
struct AboutMiddleSingle : LinearFloat<Reading::Signed> {
  AboutMiddleSingle(void* to, float a, float b)
      : LinearFloat<Reading::Signed>(to, (b - a) * 0x1p-32f, (a + b) * 0.5f) {}
};

}

TARN_EXPORT int32_t __kestBRngPHILOX4X32X10InitStream(int32_t method, tarn_stream* stream, int32_t n,
                                                      const void* params) {
  State& state = state_of<State>(stream);
  switch (method) {
  case kSeed: seed(state, n, static_cast<const uint32_t*>(params)); return TARN_RANDOM_OK;
  case kSkipAhead: skip_words(state, 1, static_cast<const uint64_t*>(params), next_block); return TARN_RANDOM_OK;
  case kSkipAheadEx: skip_words(state, n, static_cast<const uint64_t*>(params), next_block); return TARN_RANDOM_OK;
  default: return no_such_method(method);
  }
}

TARN_OUTPUTS(PHILOX4X32X10, generate, Words, AboutMiddle<Reading::Signed>, AboutMiddleSingle)
