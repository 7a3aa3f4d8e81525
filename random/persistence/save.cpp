#include "random/persistence/image.h"

#include <string.h>

using namespace tarn::random;

namespace {

// write(data, bytes) returns a status. The status of a chunk's last write stands for all of them.
template <class Write> int32_t save(const tarn_stream* stream, Write write) {
  const int32_t state_bytes = properties_of(stream).StreamStateSize - static_cast<int32_t>(sizeof(tarn_stream));
  const Signature signature = {{kVersion, 'R', 'N', 'G'}};
  const HeaderRest header = {
      kHeaderBytes, 0, static_cast<uint32_t>(state_bytes), static_cast<uint16_t>(__kestGetNumChunks(stream)), 0,
      stream->brng};
  char head[kHeaderBytes];
  memcpy(head, &signature, sizeof signature);
  memcpy(head + sizeof signature, &header, sizeof header);
  int32_t status = write(head, sizeof head);
  if (status == TARN_RANDOM_OK) status = write(stream + 1, state_bytes);
  if (status != TARN_RANDOM_OK) return status;
  for (const tarn_chunk* chunk = stream->chunks; chunk; chunk = chunk->next) {
    write(&chunk->id, sizeof chunk->id);
    write(chunk->key, sizeof chunk->key);
    write(&chunk->size, sizeof chunk->size);
    if (chunk->data) {
      status = write(chunk->data, chunk->size);
    } else { // a chunk may have a size and no data
      static const char zeros[256] = {};
      for (int64_t left = chunk->size; left > 0; left -= sizeof zeros)
        status = write(zeros, left < int64_t{sizeof zeros} ? left : int64_t{sizeof zeros});
    }
  }
  return status;
}

}

TARN_EXPORT int32_t __kestSaveStreamF(const tarn_stream* stream, const char* path, int32_t length) {
  ImageFile image(path, length, "wb");
  if (image.status() != TARN_RANDOM_OK) return image.status();
  return image.close(
      save(stream, [&](const void* data, int64_t bytes) { return __kestSaveToFile(data, 1, bytes, image.file()); }));
}

TARN_EXPORT int32_t __kestSaveStreamM(const tarn_stream* stream, void* block) {
  tarn_cursor cursor = {block, 0};
  return save(stream, [&](const void* data, int64_t bytes) { return __kestSaveToMemory(data, 1, bytes, &cursor); });
}

TARN_EXPORT int32_t __kestGetStreamSize(const tarn_stream* stream) {
  int32_t size = properties_of(stream).StreamStateSize + kHeaderBytes - static_cast<int32_t>(sizeof(tarn_stream));
  for (const tarn_chunk* chunk = stream->chunks; chunk; chunk = chunk->next)
    size += static_cast<int32_t>(chunk->size) + kChunkHeaderBytes;
  return size;
}
