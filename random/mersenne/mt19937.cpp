// MT19937: the Mersenne twister.
#include "random/mersenne/jump_state.h"
#include "random/mersenne/twister.h"
#include "random/streams/stream.h"

using namespace tarn::random;

const uint32_t __kest_mt19937_poly[135] = {
#include "random/mersenne/mt19937_poly.inc"
};

namespace {

constexpr int kRing = 624;
constexpr uint32_t kMatrix = 0x9908B0DF;
constexpr int kDegree = 19937, kTerms = 135;
using Ring = Twister<kRing, 397, 31>;

struct State {
  uint32_t x[kRing];
  int32_t index; // place of the next word; kRing when the ring is used up
};

using Jump = JumpState<State>;
static_assert(sizeof(Jump::Work) == 2520);

void update_s(void* work) {
  State& state = Jump::at(work);
  const int index = state.index % kRing;
  Ring::step(state.x, index, kMatrix);
  state.index = index + 1;
}

void copy_state2(void* state, const void* work, int32_t) {
  State& to = Jump::at(state);
  const State& from = Jump::at(work);
  Jump::copy_ring_back(to, from);
}

int32_t process_idx(void* stream, uint64_t* nskip, int32_t* remainder) {
  State& state = Jump::at(stream);
  *remainder = 0;
  const uint64_t room = static_cast<uint64_t>(kRing - state.index);
  if (*nskip <= room) {
    state.index += static_cast<int32_t>(*nskip);
    return 0;
  }
  *nskip -= room;
  state.index = kRing;
  return 1;
}

constexpr uint64_t kJumpFrom = 0x100000; // below, running the recurrence is faster

int32_t skip_ahead(tarn_stream* stream, uint64_t nskip) {
  if (nskip >= kJumpFrom)
    return __kest_SkipAheadSWin(stream, Jump::zero, Jump::add, Jump::copy_to_work, update_s, copy_state2, process_idx,
                                nskip, kRing, kDegree, sizeof(Jump::Work), kTerms, __kest_mt19937_poly);
  State& state = state_of<State>(stream);
  uint64_t left = static_cast<uint64_t>(kRing - state.index);
  for (; nskip > left; left = kRing) {
    nskip -= left;
    Ring::regenerate(state.x, kMatrix);
    state.index = 0;
  }
  state.index += static_cast<int32_t>(nskip);
  return TARN_RANDOM_OK;
}

template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  State& state = state_of<State>(stream);
  auto temper = [](auto y) {
    y ^= y >> 11;
    y ^= (y << 7) & 0x9D2C5680u;
    y ^= (y << 15) & 0xEFC60000u;
    return y ^ y >> 18;
  };
  Ring::generate(state.x, state.index, kMatrix, n, map, temper);
  return TARN_RANDOM_OK;
}

// a + (b - a) u in single precision throughout.
struct FromLowerSingle : LinearFloat<Reading::Unsigned> {
  FromLowerSingle(void* to, float a, float b) : LinearFloat<Reading::Unsigned>(to, (b - a) * 0x1p-32f, a) {}
};

}

TARN_EXPORT int32_t __kestBRngMT19937InitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  State& state = state_of<State>(stream);
  switch (method) {
  case kSeed:
    Ring::seed(state.x, n, static_cast<const uint32_t*>(params));
    state.index = kRing;
    return TARN_RANDOM_OK;
  case kSkipAhead: return skip_ahead(stream, *static_cast<const uint64_t*>(params));
  default: return no_such_method(method);
  }
}

TARN_OUTPUTS(MT19937, generate, Words, FromLower<double>, FromLowerSingle)
