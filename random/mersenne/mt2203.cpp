// MT2203: 6024 Mersenne twisters of period 2^2203 - 1, one for each row of the parameter table.
#include "random/mersenne/twister.h"
#include "random/streams/stream.h"

using namespace tarn::random;

const uint32_t __kest_mt2203_table[6024][3] = {
#include "random/mersenne/mt2203_table.inc"
};

namespace {

constexpr int kRing = 69;
using Ring = Twister<kRing, 34, 5>;

struct State {
  uint32_t x[kRing];
  int32_t index;    // place of the next word; kRing when the ring is used up
  uint32_t a, b, c; // the member's matrix word and tempering masks
};

template <class Map> int32_t generate(tarn_stream* stream, int32_t n, Map map) {
  State& state = state_of<State>(stream);
  const uint32_t b = state.b, c = state.c;
  auto temper = [b, c](auto y) {
    y ^= y >> 12;
    y ^= (y << 7) & b;
    y ^= (y << 15) & c;
    return y ^ y >> 18;
  };
  Ring::generate(state.x, state.index, state.a, n, map, temper);
  return TARN_RANDOM_OK;
}

}

TARN_EXPORT int32_t __kestBRngMT2203InitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  if (method != kSeed) return no_such_method(method);
  State& state = state_of<State>(stream);
  Ring::seed(state.x, n, static_cast<const uint32_t*>(params));
  state.index = kRing;
  const uint32_t* row = __kest_mt2203_table[member_of(stream)];
  state.a = row[0];
  state.b = row[1];
  state.c = row[2];
  return TARN_RANDOM_OK;
}

TARN_OUTPUTS(MT2203, generate, Words, AboutMiddle<Reading::Centred>, AboutMiddleFloat<Reading::Centred>)
