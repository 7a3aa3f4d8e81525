#include "random/persistence/image.h"

#include <sys/stat.h>

using namespace tarn::random;

namespace {

// Where an image comes from. The two sources differ in the status of a malformed image, and in that a file knows how
// much of it is left.
struct FileSource {
  FILE* file;
  static constexpr int32_t kBadFormat = TARN_RANDOM_BAD_FILE_FORMAT, kBadVersion = TARN_RANDOM_BAD_FILE_VERSION;
  int32_t read(void* to, int64_t bytes) { return __kestLoadFromFile(to, 1, bytes, file); }
  // Asked before a block is taken, so that a small file cannot ask for a large one. Pipes cannot tell.
  bool has(int64_t bytes) const {
    struct stat info;
    if (fstat(fileno(file), &info) != 0 || !S_ISREG(info.st_mode)) return true;
    return bytes <= info.st_size - ftell(file);
  }
};

struct MemorySource {
  tarn_cursor cursor;
  static constexpr int32_t kBadFormat = TARN_RANDOM_BAD_MEMORY_IMAGE, kBadVersion = TARN_RANDOM_BAD_MEMORY_IMAGE;
  int32_t read(void* to, int64_t bytes) { return __kestLoadFromMemory(to, 1, bytes, &cursor); }
  static bool has(int64_t) { return true; }
};

struct Image {
  Signature signature;
  uint32_t header_bytes, state_bytes, chunk_count;
  int32_t brng;
};

template <class Source> int32_t read_header(Source& source, Image& image) {
  int32_t status = source.read(&image.signature, sizeof image.signature);
  if (status != TARN_RANDOM_OK) return status;
  if (image.signature.bytes[0] == kVersion) {
    HeaderRest rest;
    status = source.read(&rest, sizeof rest);
    if (status != TARN_RANDOM_OK) return status;
    image.header_bytes = rest.header_bytes;
    image.state_bytes = rest.state_bytes;
    image.chunk_count = rest.chunk_count;
    image.brng = rest.brng;
  } else {
    OldHeaderRest rest;
    status = source.read(&rest, sizeof rest);
    if (status != TARN_RANDOM_OK) return status;
    image.header_bytes = kHeaderBytes; // an old header has no length, and passes for one of the present length
    image.state_bytes = rest.state_bytes;
    image.chunk_count = rest.chunk_count;
    image.brng = rest.brng;
  }
  const uint8_t* b = image.signature.bytes;
  const bool version_first = b[1] == 'R' && b[2] == 'N' && b[3] == 'G';
  const bool version_last = b[0] == 'R' && b[1] == 'N' && b[2] == 'G';
  if (!version_first && !version_last) return Source::kBadFormat;
  if (b[0] > kVersion && b[3] > kVersion) return Source::kBadVersion;
  return TARN_RANDOM_OK;
}

// Chunks of version 0 have no key. An image whose version stands last has no chunk format at all.
template <class Source> int32_t read_chunks(Source& source, const Image& image, tarn_stream* stream) {
  for (uint32_t k = 0; k < image.chunk_count; k++) {
    int32_t id;
    uint64_t key[2] = {};
    uint32_t size;
    int32_t status = source.read(&id, sizeof id);
    if (status != TARN_RANDOM_OK) return status;
    const uint8_t version = image.signature.bytes[0];
    if (version > kVersion) return TARN_RANDOM_FILE_READ;
    if (version > 0) status = source.read(key, sizeof key);
    if (status == TARN_RANDOM_OK) status = source.read(&size, sizeof size);
    if (status != TARN_RANDOM_OK) return status;
    if (!source.has(size)) return TARN_RANDOM_FILE_READ;
    void* data = tarn_serv_allocate(size, kRecordAlignment);
    if (!data) return TARN_RANDOM_NO_MEMORY;
    status = source.read(data, size);
    // With a key that the shared table knows, the chunk takes the table's block, and this one stays where it is.
    if (status == TARN_RANDOM_OK) status = __kestAddChunk(stream, id, key, data, static_cast<int32_t>(size));
    if (status != TARN_RANDOM_OK) {
      tarn_serv_deallocate(data);
      return status;
    }
  }
  return TARN_RANDOM_OK;
}

constexpr int32_t kTrng = 0xE00000, kArs5 = 0xF00000;

int32_t check_processor(int32_t brng) {
  if (brng == kTrng && !__kestCPUisRDRAND()) return TARN_RANDOM_NO_HARDWARE_RANDOM;
  if (brng == kArs5 && !__kestCPUisAES()) return TARN_RANDOM_NO_AES;
  return TARN_RANDOM_OK;
}

// A stream that was begun stays in *out, whatever the status.
template <class Source> int32_t load(tarn_stream** out, Source& source) {
  Image image;
  int32_t status = read_header(source, image);
  if (status != TARN_RANDOM_OK) return status;
  int32_t row, member;
  const tarn_brng_properties* table = __kestGetBrngBaseOffset(image.brng, &row, &member);
  // An image may hold any identifier: also negative rows, and the rows without a generator, which pass the registry's
  // own check.
  if (row < 0 || __kestIsBrngValid(table, row, member) != TARN_RANDOM_OK) return Source::kBadFormat;
  const int64_t state_bytes = table[row].StreamStateSize - int64_t{sizeof(tarn_stream)};
  if (state_bytes < 0 || state_bytes != image.state_bytes || image.header_bytes < kHeaderBytes)
    return Source::kBadFormat;
  status = __kestAllocateStream(out, table, image.brng, row, member);
  if (status == TARN_RANDOM_OK) status = source.read(*out + 1, state_bytes);
  if (status == TARN_RANDOM_OK) status = check_processor(image.brng);
  if (status == TARN_RANDOM_OK) status = read_chunks(source, image, *out);
  return status;
}

int32_t finish(tarn_stream** out, int32_t status) {
  if (status != TARN_RANDOM_OK && *out) __kestDeleteStream(out);
  return status;
}

}

TARN_EXPORT int32_t __kestLoadStreamF(tarn_stream** out, const char* path, int32_t length) {
  *out = nullptr;
  ImageFile image(path, length, "rb");
  if (image.status() != TARN_RANDOM_OK) return image.status();
  FileSource source = {image.file()};
  const int32_t status = load(out, source);
  return finish(out, image.close(status));
}

TARN_EXPORT int32_t __kestLoadStreamM(tarn_stream** out, const void* block) {
  *out = nullptr;
  MemorySource source = {{const_cast<void*>(block), 0}};
  return finish(out, load(out, source));
}
