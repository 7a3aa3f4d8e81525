// SFMT19937: the SIMD-oriented Mersenne twister, a recurrence on blocks of four words.
#include "random/mersenne/jump_state.h"
#include "random/streams/maps.h"
#include "random/streams/stream.h"

#include <string.h>

using namespace tarn::random;

const uint32_t __kest_sfmt19937_poly[6711] = {
#include "random/mersenne/sfmt19937_poly.inc"
};

namespace {

constexpr int kBlocks = 156, kRing = 4 * kBlocks, kLag = 122;
constexpr int kDegree = 19968, kTerms = 6711;

struct State {
  uint32_t x[kRing];
  int32_t index;     // place of the next block's first word; kRing when the ring is used up
  uint32_t carry[3]; // words of a block that was given out in part: carry[carry_pos .. carry_count)
  int32_t carry_pos, carry_count;
};

using Jump = JumpState<State>;
static_assert(sizeof(Jump::Work) == 2536);

// The previous block comes last, since it is ready last.
UInt4 next(UInt4 here, UInt4 far, UInt4 before2, UInt4 before1) {
  const UInt4 mask = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};
  const UInt4 here_up = (UInt4)_mm_slli_si128((__m128i)here, 1),
              before2_down = (UInt4)_mm_srli_si128((__m128i)before2, 1);
  UInt4 rest = here ^ here_up ^ ((far >> 11) & mask) ^ before2_down;
  asm("" : "+x"(rest)); // else the compiler reorders the sum, and the chain from block to block doubles
  return rest ^ before1 << 18;
}

// Makes blocks [0, count) of the ring anew, in place; put(k, words) for each.
template <class Put> void regenerate(uint32_t x[kRing], int count, Put put) {
  UInt4 before2 = load4(x + kRing - 8), before1 = load4(x + kRing - 4);
  auto range = [&](int from, int to, int far) {
    for (int k = from; k < to; k++) {
      const UInt4 w = next(load4(x + 4 * k), load4(x + 4 * (k + far)), before2, before1);
      store4(x + 4 * k, w);
      put(4 * k, w);
      before2 = before1;
      before1 = w;
    }
  };
  constexpr int kTurn = kBlocks - kLag;
  range(0, count < kTurn ? count : kTurn, kLag);
  range(kTurn, count, -kTurn);
}

template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  State& state = state_of<State>(stream);
  int64_t k = 0;
  while (k < n && state.carry_pos < state.carry_count) map.put1(k++, state.carry[state.carry_pos++]);
  // Whole blocks: the rest of the ring, whole rings, and the start of one more.
  const int64_t whole = (n - k) / 4 * 4;
  int64_t end = k + (whole > 0 ? whole : 0);
  auto give = [&](int64_t count) {
    put_words(map, k, state.x + state.index, count);
    state.index += static_cast<int32_t>(count);
    k += count;
  };
  while (k < end) {
    if (state.index == kRing && end - k >= kRing) {
      regenerate(state.x, kBlocks, [&](int i, UInt4 w) { map.put4(k + i, w); });
      k += kRing;
      continue;
    }
    if (state.index == kRing) {
      regenerate(state.x, kBlocks, [](int, UInt4) {});
      state.index = 0;
    }
    give(end - k < kRing - state.index ? end - k : kRing - state.index);
  }
  if (k < n) { // part of one more block
    if (state.index == kRing) {
      regenerate(state.x, kBlocks, [](int, UInt4) {});
      state.index = 0;
    }
    const int32_t taken = static_cast<int32_t>(n - k), left = 4 - taken;
    put_words(map, k, state.x + state.index, taken);
    memcpy(state.carry, state.x + state.index + taken, sizeof(uint32_t) * static_cast<size_t>(left));
    state.carry_pos = 0;
    state.carry_count = left;
    state.index += 4;
  }
  return TARN_RANDOM_OK;
}

// ---- Seeding by an array, and period certification

uint32_t f1(uint32_t x) { return (x ^ x >> 27) * 1664525u; }
uint32_t f2(uint32_t x) { return (x ^ x >> 27) * 1566083941u; }

void certify_period(uint32_t x[kRing]) {
  static const uint32_t parity[4] = {1, 0, 0, 0x13C9E684};
  uint32_t sum = 0;
  for (int k = 0; k < 4; k++) sum ^= x[k] & parity[k];
  if (__builtin_parity(sum)) return;
  x[0] ^= 1; // the lowest set bit of the parity words
}

void seed(State& state, int32_t n, const uint32_t* seeds) {
  static const uint32_t one = 1;
  const uint32_t* key = n > 0 ? seeds : &one;
  const int length = n > 0 ? n : 1;
  constexpr int kMid = 306, kFar = 317, kBack = 623;
  uint32_t* x = state.x;
  for (int k = 0; k < kRing; k++) x[k] = 0x8B8B8B8B;
  uint32_t r = f1(x[0] ^ x[kMid] ^ x[kBack]);
  x[kMid] += r;
  r += static_cast<uint32_t>(length);
  x[kFar] += r;
  x[0] = r;
  const int count = (length + 1 > kRing ? length + 1 : kRing) - 1;
  int i = 1;
  for (int j = 0; j < count; j++) {
    r = f1(x[i] ^ x[(i + kMid) % kRing] ^ x[(i + kBack) % kRing]);
    x[(i + kMid) % kRing] += r;
    r += (j < length ? key[j] : 0) + static_cast<uint32_t>(i);
    x[(i + kFar) % kRing] += r;
    x[i] = r;
    i = (i + 1) % kRing;
  }
  for (int j = 0; j < kRing; j++) {
    r = f2(x[i] + x[(i + kMid) % kRing] + x[(i + kBack) % kRing]);
    x[(i + kMid) % kRing] ^= r;
    r -= static_cast<uint32_t>(i);
    x[(i + kFar) % kRing] ^= r;
    x[i] = r;
    i = (i + 1) % kRing;
  }
  state.index = kRing;
  certify_period(x);
  state.carry_pos = state.carry_count = 0;
}

// ---- Jump

void update_s(void* work) {
  State& state = Jump::at(work);
  const int i = state.index % kRing;
  auto block = [&](int k) { return load4(state.x + (k < kRing ? k : k - kRing)); };
  store4(state.x + i, next(block(i), block(i + 4 * kLag), block(i + kRing - 8), block(i + kRing - 4)));
  state.index = i + 4;
}

// The first words of a block have been skipped too: the rest of it goes to the carry.
void carry_rest(State& state, const uint32_t* block, int32_t taken) {
  const int32_t left = 4 - taken;
  memcpy(state.carry, block + taken, sizeof(uint32_t) * static_cast<size_t>(left));
  state.carry_pos = 0;
  state.carry_count = left;
}

void copy_state2(void* state, const void* work, int32_t remainder) {
  State& to = Jump::at(state);
  const State& from = Jump::at(work);
  Jump::copy_ring_back(to, from);
  to.index = kRing;
  if (remainder != 0) carry_rest(to, to.x + kRing - 4, remainder);
}

int32_t process_idx(void* stream, uint64_t* nskip, int32_t* remainder) {
  State& state = Jump::at(stream);
  const uint64_t left = static_cast<uint64_t>(state.carry_count - state.carry_pos);
  if (*nskip <= left) {
    state.carry_pos += static_cast<int32_t>(*nskip);
    return 0;
  }
  const uint64_t rest = *nskip - left, room = static_cast<uint64_t>(kRing - state.index);
  if (rest > room) {
    const uint64_t beyond = rest - room; // index is a multiple of 4, as is the ring
    state.carry_pos = state.carry_count;
    state.index = kRing;
    *remainder = static_cast<int32_t>(beyond & 3);
    *nskip = (beyond >> 2) + (*remainder != 0);
    return 1;
  }
  state.index += static_cast<int32_t>(rest);
  state.carry_pos = state.carry_count;
  if (const int32_t taken = state.index & 3) {
    carry_rest(state, state.x + state.index - taken, taken);
    state.index += 4 - taken;
  }
  return 0;
}

constexpr int64_t kWindowFrom = 19968;

int32_t skip_ahead(tarn_stream* stream, uint64_t nskip) {
  // Counts of 2^63 and more are negative here and take Horner's form, which is slower and gives the same state.
  const auto jump = static_cast<int64_t>(nskip) < kWindowFrom ? __kest_SkipAheadHorner : __kest_SkipAheadSWin;
  return jump(stream, Jump::zero, Jump::add, Jump::copy_to_work, update_s, copy_state2, process_idx, nskip, kRing,
              kDegree, sizeof(Jump::Work), kTerms, __kest_sfmt19937_poly);
}

}

TARN_EXPORT int32_t __kestBRngSFMT19937InitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  switch (method) {
  case kSeed: seed(state_of<State>(stream), n, static_cast<const uint32_t*>(params)); return TARN_RANDOM_OK;
  case kSkipAhead: return skip_ahead(stream, *static_cast<const uint64_t*>(params));
  default: return no_such_method(method);
  }
}

TARN_OUTPUTS(SFMT19937, generate, Words, AboutMiddle<Reading::Signed>, AboutMiddleFloat<Reading::Signed>)
