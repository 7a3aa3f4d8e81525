// Chunks: blocks of data that distributions and quasi-random generators hang off a stream.
#include "random/streams/shared_blocks.h"

#include <string.h>

using namespace tarn::random;

namespace {

tarn_chunk* new_chunk(int32_t id, uint32_t size, void* data, const uint64_t* key) {
  auto* chunk = static_cast<tarn_chunk*>(tarn_serv_allocate(sizeof(tarn_chunk), kRecordAlignment));
  if (chunk) *chunk = {id, size, data, nullptr, {key ? key[0] : 0, key ? key[1] : 0}};
  return chunk;
}

void push(tarn_stream* stream, tarn_chunk* chunk) {
  chunk->next = stream->chunks;
  stream->chunks = chunk;
}

// Data under a key that the table knows belong to the table, all other data to the chunk.
void release(tarn_chunk* chunk) {
  if (is_shared(chunk->key))
    unshare(chunk->key);
  else
    tarn_serv_deallocate(chunk->data);
  tarn_serv_deallocate(chunk);
}

}

TARN_EXPORT int32_t __kestAddChunk(tarn_stream* stream, int32_t id, const uint64_t key[2], void* data, int32_t size) {
  tarn_chunk* chunk = new_chunk(id, static_cast<uint32_t>(size), data, key);
  if (!chunk) return TARN_RANDOM_NO_MEMORY;
  share(chunk);
  push(stream, chunk);
  return TARN_RANDOM_OK;
}

TARN_EXPORT void* __kestSearchChunk(const tarn_stream* stream, int32_t id) {
  for (const tarn_chunk* chunk = stream->chunks; chunk; chunk = chunk->next)
    if (chunk->id == id) return chunk->data;
  return nullptr;
}

TARN_EXPORT int32_t __kestGetNumChunks(const tarn_stream* stream) {
  int32_t count = 0;
  for (const tarn_chunk* chunk = stream->chunks; chunk; chunk = chunk->next) count++;
  return count;
}

TARN_EXPORT int32_t __kestDeleteChunks(tarn_stream* stream) {
  for (tarn_chunk* chunk = stream->chunks; chunk;) {
    tarn_chunk* next = chunk->next;
    release(chunk);
    chunk = next;
  }
  stream->chunks = nullptr;
  return TARN_RANDOM_OK;
}

// The head afterwards is the last chunk kept, by contract: callers hold at most one chunk of another kind on the list.
TARN_EXPORT int32_t __kestDeleteChunksById(tarn_stream* stream, int32_t id) {
  tarn_chunk* kept = nullptr;
  for (tarn_chunk* chunk = stream->chunks; chunk;) {
    tarn_chunk* next = chunk->next;
    if (chunk->id == id) {
      if (kept) kept->next = next;
      release(chunk);
    } else {
      kept = chunk;
    }
    chunk = next;
  }
  stream->chunks = kept;
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestCopyChunks(tarn_stream* dst, const tarn_stream* src) {
  for (const tarn_chunk* from = src->chunks; from; from = from->next) {
    const bool own = !is_shared(from->key) && from->data;
    void* data = own ? tarn_serv_allocate(from->size, kRecordAlignment) : nullptr;
    if (data) memcpy(data, from->data, from->size);
    tarn_chunk* chunk = data || !own ? new_chunk(from->id, from->size, data, from->key) : nullptr;
    if (!chunk) { // a block taken for this very chunk is not given back: a known loss when memory runs out
      __kestDeleteChunks(dst);
      return TARN_RANDOM_NO_MEMORY;
    }
    share(chunk);
    push(dst, chunk);
  }
  return TARN_RANDOM_OK;
}
