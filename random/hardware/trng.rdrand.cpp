// TRNG: the processor's random instruction. A stream holds nothing but how often a failing read is repeated.
#include "random/streams/maps.h"
#include "random/streams/stream.h"

#include <x86intrin.h>

using namespace tarn::random;

namespace {

struct State {
  uint32_t method; // always 0
  uint32_t retries;
};

constexpr uint32_t kDefaultRetries = 10;

bool read(unsigned long long& value) { return _rdrand64_step(&value) != 0; }
bool read(unsigned& value) { return _rdrand32_step(&value) != 0; }

// The count is tested again after a success, so a value that comes on the last permitted attempt is lost.
template <class Value> bool read(const State& state, Value& value) {
  uint32_t repeated = 0;
  while (!read(value) && repeated < state.retries) repeated++;
  return repeated < state.retries;
}

// The top bit is folded into the lowest one, so that the signed conversion rounds as an unsigned one would.
double to_double(uint64_t v) {
  if (v >> 63 == 0) return static_cast<double>(static_cast<int64_t>(v));
  const double half = static_cast<double>(static_cast<int64_t>(v >> 1 | (v & 1)));
  return half + half;
}

// put(k, word): two words from each 64-bit value, low half first, and a 32-bit read for an odd last one.
template <class Put> int32_t words(const State& state, int32_t n, Put put) {
  int32_t k = 0;
  for (; n - k >= 2; k += 2) { // k + 2 would overflow at the largest n
    unsigned long long value;
    if (!read(state, value)) return TARN_RANDOM_HARDWARE_RANDOM_FAILED;
    put(k, static_cast<uint32_t>(value));
    put(k + 1, static_cast<uint32_t>(value >> 32));
  }
  if (k < n) {
    unsigned value;
    if (!read(state, value)) return TARN_RANDOM_HARDWARE_RANDOM_FAILED;
    put(k, value);
  }
  return TARN_RANDOM_OK;
}

}

TARN_EXPORT int32_t _viTRNGRdRand(tarn_stream* stream, int32_t n, uint32_t* r) {
  LooseWord* to = reinterpret_cast<LooseWord*>(r);
  return words(state_of<State>(stream), n, [to](int32_t k, uint32_t w) { to[k] = w; });
}

TARN_EXPORT int32_t _vsTRNGRdRand(tarn_stream* stream, int32_t n, float* r, float a, float b) {
  const float scale = (b - a) * 0x1p-32f;
  LooseFloat* to = reinterpret_cast<LooseFloat*>(r);
  return words(state_of<State>(stream), n, [=](int32_t k, uint32_t w) { to[k] = static_cast<float>(w) * scale + a; });
}

TARN_EXPORT int32_t _vdTRNGRdRand(tarn_stream* stream, int32_t n, double* r, double a, double b) {
  const State& state = state_of<State>(stream);
  const double scale = (b - a) * 0x1p-64;
  LooseDouble* to = reinterpret_cast<LooseDouble*>(r);
  for (int32_t k = 0; k < n; k++) {
    unsigned long long value;
    if (!read(state, value)) return TARN_RANDOM_HARDWARE_RANDOM_FAILED;
    to[k] = to_double(value) * scale + a;
  }
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestiBRngTRNG(tarn_stream* stream, int32_t n, void* r) {
  return __kestCPUisRDRAND() ? _viTRNGRdRand(stream, n, static_cast<uint32_t*>(r)) : TARN_RANDOM_NO_HARDWARE_RANDOM;
}

TARN_EXPORT int32_t __kestsBRngTRNG(tarn_stream* stream, int32_t n, float* r, float a, float b) {
  return __kestCPUisRDRAND() ? _vsTRNGRdRand(stream, n, r, a, b) : TARN_RANDOM_NO_HARDWARE_RANDOM;
}

TARN_EXPORT int32_t __kestdBRngTRNG(tarn_stream* stream, int32_t n, double* r, double a, double b) {
  return __kestCPUisRDRAND() ? _vdTRNGRdRand(stream, n, r, a, b) : TARN_RANDOM_NO_HARDWARE_RANDOM;
}

TARN_EXPORT int32_t __kestBRngTRNGInitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params) {
  if (method != kSeed) return no_such_method(method);
  const auto* seeds = static_cast<const uint32_t*>(params);
  state_of<State>(stream) = {0, n >= 2 && seeds[1] != 0 ? seeds[1] : kDefaultRetries};
  return TARN_RANDOM_OK;
}
