// Byte movers between blocks and a file or a piece of memory.
#include "random/streams/stream.h"

#include <string.h>

TARN_EXPORT int32_t __kestSaveToFile(const void* buffer, int64_t size, int64_t count, FILE* file) {
  if (size == 0 || count == 0) return TARN_RANDOM_OK;
  const size_t written = fwrite(buffer, static_cast<size_t>(size), static_cast<size_t>(count), file);
  return written == static_cast<size_t>(count) ? TARN_RANDOM_OK : TARN_RANDOM_FILE_WRITE;
}

TARN_EXPORT int32_t __kestLoadFromFile(void* buffer, int64_t size, int64_t count, FILE* file) {
  if (size == 0 || count == 0) return TARN_RANDOM_OK;
  const size_t got = fread(buffer, static_cast<size_t>(size), static_cast<size_t>(count), file);
  return got == static_cast<size_t>(count) ? TARN_RANDOM_OK : TARN_RANDOM_FILE_READ;
}

TARN_EXPORT int32_t __kestSaveToMemory(const void* buffer, int64_t size, int64_t count, tarn_cursor* cursor) {
  if (size * count > 0)
    memcpy(static_cast<char*>(cursor->base) + cursor->position, buffer, static_cast<size_t>(size * count));
  cursor->position += static_cast<int32_t>(size * count);
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestLoadFromMemory(void* buffer, int64_t size, int64_t count, tarn_cursor* cursor) {
  if (size * count > 0)
    memcpy(buffer, static_cast<const char*>(cursor->base) + cursor->position, static_cast<size_t>(size * count));
  cursor->position += static_cast<int32_t>(size * count);
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestSkipLoadingFromFile(int32_t count, FILE* file) { return fseek(file, count, SEEK_CUR); }

TARN_EXPORT int32_t __kestSkipLoadingFromMemory(int32_t count, tarn_cursor* cursor) {
  cursor->position += count;
  return TARN_RANDOM_OK;
}
