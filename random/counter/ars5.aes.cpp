// ARS5: five AES encryption rounds on a 128-bit counter, with round keys from a Weyl sequence.
#include "random/counter/counter.h"
#include "random/streams/maps.h"
#include "random/streams/stream.h"

#include <wmmintrin.h>

using namespace tarn::random;

namespace {

struct State {
  uint32_t key[4], counter[4];
  uint32_t left; // last words of the block that are still to be given out
  uint32_t block[4];
};

// Under the round keys of a state.
struct Cipher {
  static constexpr int kBlocks = 8, kGroup = 4 * kBlocks;
  __m128i key[6];
  explicit Cipher(const State& s) {
    key[0] = (__m128i)load4(s.key);
    const __m128i weyl = (__m128i)ULong2{0x9E3779B97F4A7C15, 0xBB67AE8584CAA73B};
    for (int i = 1; i < 6; i++) key[i] = _mm_add_epi64(key[i - 1], weyl);
  }
  template <int count> void encrypt(__m128i (&block)[count]) const {
    for (__m128i& b : block) b = _mm_xor_si128(b, key[0]);
    for (int i = 1; i < 5; i++)
      for (__m128i& b : block) b = _mm_aesenc_si128(b, key[i]);
    for (__m128i& b : block) b = _mm_aesenclast_si128(b, key[5]);
  }
  void groups(uint32_t counter[4], Words to, int64_t count) const {
    while (count > 0) {
      // As many groups as the low half of the counter allows without a carry, or one that carries.
      const ULong2 start = (ULong2)load4(counter);
      const uint64_t low = start[0], high = start[1], room = ~low / kBlocks;
      const int64_t now = room < static_cast<uint64_t>(count) ? static_cast<int64_t>(room) : count;
      __m128i block[kBlocks], base = (__m128i)start;
      int64_t k = 0;
      for (int64_t t = 0; t < now; t++, k += kGroup) {
        for (int j = 0; j < kBlocks; j++) block[j] = _mm_add_epi64(base, _mm_set_epi64x(0, j));
        base = _mm_add_epi64(base, _mm_set_epi64x(0, kBlocks));
        encrypt(block);
        for (int j = 0; j < kBlocks; j++) to.put4(k + 4 * j, (UInt4)block[j]);
      }
      if (now == 0) {
        for (uint64_t j = 0; j < kBlocks; j++) block[j] = (__m128i)ULong2{low + j, high + (low + j < low)};
        encrypt(block);
        for (int j = 0; j < kBlocks; j++) to.put4(4 * j, (UInt4)block[j]);
      }
      const int64_t done = now > 0 ? now : 1;
      add_to_counter(counter, static_cast<Counter>(done) * kBlocks);
      to = Words(to.r + done * kGroup);
      count -= done;
    }
  }
};

void next_block(State& s) {
  __m128i block[1] = {(__m128i)load4(s.counter)};
  Cipher(s).encrypt(block);
  store4(s.block, (UInt4)block[0]);
  add_to_counter(s.counter, 1);
}

template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  if (!__kestCPUisAES()) return TARN_RANDOM_NO_AES;
  generate_blocks<Cipher>(state_of<State>(stream), n, map, next_block);
  return TARN_RANDOM_OK;
}

void seed(State& s, int32_t n, const uint32_t* seeds) {
  s = {};
  for (int32_t i = 0; i < n && i < 8; i++) (i < 4 ? s.key[i] : s.counter[i - 4]) = seeds[i];
}

// The scale is made in double and rounded once, the midpoint in single.
struct AboutMiddleSingle : LinearFloat<Reading::Signed> {
  AboutMiddleSingle(void* to, float a, float b)
      : LinearFloat<Reading::Signed>(to, static_cast<float>((static_cast<double>(b) - a) * kTwoToMinus32),
                                     (a + b) * 0.5f) {}
};

}

TARN_EXPORT int32_t __kestBRngARS5InitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  State& state = state_of<State>(stream);
  if ((method == kSkipAhead || method == kSkipAheadEx) && !__kestCPUisAES()) return TARN_RANDOM_NO_AES;
  switch (method) {
  case kSeed: seed(state, n, static_cast<const uint32_t*>(params)); return TARN_RANDOM_OK;
  case kSkipAhead: skip_words(state, 1, static_cast<const uint64_t*>(params), next_block); return TARN_RANDOM_OK;
  case kSkipAheadEx: skip_words(state, n, static_cast<const uint64_t*>(params), next_block); return TARN_RANDOM_OK;
  default: return no_such_method(method);
  }
}

TARN_OUTPUTS(ARS5, generate, Words, AboutMiddle<Reading::Signed>, AboutMiddleSingle)
