// What every generator and every chunk owner needs of a stream.
#pragma once

#include "service/service.h"
#pragma GCC visibility push(default) // what the public header declares is exported, data too
#include "tarn/random.h"
#pragma GCC visibility pop

namespace tarn::random {

constexpr int64_t kRecordAlignment = 128; // pairs of cache lines

// Chunk identifiers of this subsystem.
enum ChunkId : int32_t { kSobolDirections = 9, kNiederrDirections = 10, kSobolPoint = 13 };

// Methods of InitStream.
enum Method : int32_t { kSeed = 0, kLeapfrog = 1, kSkipAhead = 2, kSkipAheadEx = 3 };

template <class State> State& state_of(tarn_stream* stream) { return *reinterpret_cast<State*>(stream + 1); }

// The row of a stream's generator.
inline const tarn_brng_properties& properties_of(const tarn_stream* stream) {
  int32_t row, member;
  const tarn_brng_properties* table = __kestGetBrngBaseOffset(stream->brng, &row, &member);
  return table[row];
}

inline int32_t member_of(const tarn_stream* stream) {
  int32_t row, member;
  __kestGetBrngBaseOffset(stream->brng, &row, &member);
  return member;
}

// What a generator without some method answers.
inline int32_t no_such_method(int32_t method) {
  switch (method) {
  case kLeapfrog: return TARN_RANDOM_NO_LEAPFROG;
  case kSkipAhead: return TARN_RANDOM_NO_SKIP;
  case kSkipAheadEx: return TARN_RANDOM_NO_SKIP_EX;
  default: return TARN_RANDOM_BAD_METHOD;
  }
}

}

// The three outputs of a generator whose loop is a template over the map of words to values. DoubleMap and FloatMap are
// made from the destination and the limits.
#define TARN_OUTPUTS(Name, loop, WordMap, DoubleMap, FloatMap)                                                         \
  TARN_EXPORT int32_t __kestiBRng##Name(tarn_stream* stream, int32_t n, void* r) {                                     \
    return loop(stream, n, WordMap(r));                                                                                \
  }                                                                                                                    \
  TARN_EXPORT int32_t __kestdBRng##Name(tarn_stream* stream, int32_t n, double* r, double a, double b) {               \
    return loop(stream, n, DoubleMap(r, a, b));                                                                        \
  }                                                                                                                    \
  TARN_EXPORT int32_t __kestsBRng##Name(tarn_stream* stream, int32_t n, float* r, float a, float b) {                  \
    return loop(stream, n, FloatMap(r, a, b));                                                                         \
  }
