// The saved image of a stream: a header, the state from its first word to the end of the record, and the chunks. All
// fields are little-endian. Writers make version 2; readers take the older forms too.
#pragma once

#include "random/streams/stream.h"

namespace tarn::random {

constexpr uint8_t kVersion = 2;

struct Signature {
  uint8_t bytes[4]; // the version and "RNG", or, in the oldest images, "RNG" and the version
};

struct HeaderRest { // version 2, after the signature
  uint16_t header_bytes, reserved0;
  uint32_t state_bytes;
  uint16_t chunk_count, reserved1;
  int32_t brng;
};

struct OldHeaderRest { // versions 0 and 1
  uint16_t reserved, state_bytes, chunk_count, reserved1;
  int32_t brng;
};
static_assert(sizeof(Signature) == 4 && sizeof(HeaderRest) == 16 && sizeof(OldHeaderRest) == 12);

constexpr uint16_t kHeaderBytes = sizeof(Signature) + sizeof(HeaderRest);
constexpr int32_t kChunkHeaderBytes = 24; // id, key, size

// A path of `length` bytes, or a NUL-terminated one, opened as a file.
struct ImageFile {
  ImageFile(const char* path, int32_t length, const char* mode);
  ~ImageFile();
  ImageFile(const ImageFile&) = delete;
  ImageFile& operator=(const ImageFile&) = delete;
  int32_t status() const { return status_; }
  FILE* file() const { return file_; }
  // Closes the file; a failure takes the place of the status given.
  int32_t close(int32_t status);

  char* copy_ = nullptr;
  FILE* file_ = nullptr;
  int32_t status_ = TARN_RANDOM_OK;
};

}
