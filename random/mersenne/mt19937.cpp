// MT19937: the Mersenne twister.
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

// A whole stream, and a work state of the jump, which is laid out alike.
struct Work {
  tarn_stream head;
  State state;
};
static_assert(sizeof(Work) == 2520);
State& at(void* work) { return static_cast<Work*>(work)->state; }
const State& at(const void* work) { return static_cast<const Work*>(work)->state; }

void zero_state(void* work) { at(work) = {}; }

void copy_state1(void* work, const void* state) { at(work) = at(state); }

// Adds the rings word by word in the order of age, each from its own index.
void add_state(void* first, const void* second) {
  State& to = at(first);
  const State& from = at(second);
  int i = to.index % kRing, j = from.index % kRing;
  for (int left = kRing; left > 0;) {
    int run = kRing - (i > j ? i : j);
    if (run > left) run = left;
    for (int k = 0; k < run; k++) to.x[i + k] ^= from.x[j + k];
    left -= run;
    i = i + run == kRing ? 0 : i + run;
    j = j + run == kRing ? 0 : j + run;
  }
}

void update_s(void* work) {
  State& state = at(work);
  const int index = state.index % kRing;
  Ring::step(state.x, index, kMatrix);
  state.index = index + 1;
}

void copy_state2(void* state, const void* work, int32_t) {
  State& to = at(state);
  const State& from = at(work);
  const int index = from.index % kRing;
  memcpy(to.x, from.x + index, sizeof(uint32_t) * static_cast<size_t>(kRing - index));
  memcpy(to.x + kRing - index, from.x, sizeof(uint32_t) * static_cast<size_t>(index));
}

int32_t process_idx(void* stream, uint64_t* nskip, int32_t* remainder) {
  State& state = at(stream);
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
    return __kest_SkipAheadSWin(stream, zero_state, add_state, copy_state1, update_s, copy_state2, process_idx, nskip,
                                kRing, kDegree, sizeof(Work), kTerms, __kest_mt19937_poly);
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
