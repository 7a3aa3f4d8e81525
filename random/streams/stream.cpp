// The life of a stream.
#include "random/streams/stream.h"

#include <string.h>

using namespace tarn::random;

namespace {

constexpr int32_t kFirstAbstract = 0xA00000, kLastAbstract = 0xC00000;

bool is_abstract(int32_t brng) { return brng >= kFirstAbstract && brng <= kLastAbstract && (brng & 0xFFFFF) == 0; }

}

TARN_EXPORT int32_t __kestAllocateStream(tarn_stream** out, const tarn_brng_properties* table, int32_t brng,
                                         int32_t row, int32_t) {
  auto* stream = static_cast<tarn_stream*>(tarn_serv_allocate(table[row].StreamStateSize, kRecordAlignment));
  *out = stream;
  if (!stream) return TARN_RANDOM_NO_MEMORY;
  // What a generator leaves of its record goes into images too, so it must be nobody's old data.
  memset(static_cast<void*>(stream), 0, static_cast<size_t>(table[row].StreamStateSize));
  *stream = {brng, {1, 0, 0, 0}, nullptr};
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestNewStreamEx(tarn_stream** out, int32_t brng, int32_t n, const uint32_t* seeds) {
  if (is_abstract(brng)) return TARN_RANDOM_BAD_GENERATOR;
  int32_t row, member;
  const tarn_brng_properties* table = __kestGetBrngBaseOffset(brng, &row, &member);
  int32_t status = __kestIsBrngValid(table, row, member);
  if (status == TARN_RANDOM_OK) status = __kestAllocateStream(out, table, brng, row, member);
  if (status != TARN_RANDOM_OK) return status;
  return table[row].InitStream(kSeed, *out, n, seeds);
}

TARN_EXPORT int32_t __kestCopyStream(tarn_stream** out, const tarn_stream* src) {
  int32_t row, member;
  const tarn_brng_properties* table = __kestGetBrngBaseOffset(src->brng, &row, &member);
  int32_t status = __kestIsBrngValid(table, row, member);
  if (status == TARN_RANDOM_OK) status = __kestAllocateStream(out, table, src->brng, row, member);
  if (status != TARN_RANDOM_OK) return status;
  memcpy(static_cast<void*>(*out), src, static_cast<size_t>(table[row].StreamStateSize));
  (*out)->chunks = nullptr;
  return __kestCopyChunks(*out, src);
}

TARN_EXPORT int32_t __kestCopyStreamState(tarn_stream* dst, const tarn_stream* src) {
  if (dst == src) return TARN_RANDOM_OK;
  const tarn_brng_properties& row = properties_of(src);
  const uint32_t bytes = static_cast<uint32_t>(row.WordSize) * static_cast<uint32_t>(row.NSeeds);
  memcpy(reinterpret_cast<char*>(dst) + sizeof(tarn_stream), reinterpret_cast<const char*>(src) + sizeof(tarn_stream),
         bytes);
  __kestDeleteChunks(dst);
  return __kestCopyChunks(dst, src);
}

TARN_EXPORT int32_t __kestDeleteStream(tarn_stream** stream) {
  __kestDeleteChunks(*stream);
  tarn_serv_deallocate(*stream);
  *stream = nullptr;
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestLeapfrogStream(tarn_stream* stream, int32_t k, int32_t nstreams) {
  if (nstreams < 0) return TARN_RANDOM_BAD_STREAM_COUNT;
  return properties_of(stream).InitStream(kLeapfrog, stream, nstreams, &k);
}

TARN_EXPORT int32_t __kestSkipAheadStream(tarn_stream* stream, int64_t nskip) {
  return properties_of(stream).InitStream(kSkipAhead, stream, 2, &nskip);
}

TARN_EXPORT int32_t __kestSkipAheadStreamEx(tarn_stream* stream, int32_t n, const uint64_t* words) {
  return properties_of(stream).InitStream(kSkipAheadEx, stream, n, words);
}

TARN_EXPORT int32_t __kestGetStreamStateBrng(const tarn_stream* stream) { return stream->brng; }
