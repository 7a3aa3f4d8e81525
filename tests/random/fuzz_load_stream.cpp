// Fuzz target: loading a stream from a file of any bytes. What loads must be fit to be measured, copied, saved, loaded
// back from memory and deleted. Built with Clang and TARN_FUZZ=ON; fuzz_seeds writes real images to a folder.
//   fuzz_load_stream CORPUS -max_total_time=1800
//
// By the rule of shared blocks, a block that was read under a key that the process knows already stays with nobody. The
// target reads the chunks of each image by itself, says how many such blocks there must be, traps if there are more or
// fewer, and frees them; so the leak check holds for everything else.
#include "tarn/random.h"
#include "tarn/service.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

std::set<void*> blocks; // what the library holds

void require(bool condition) {
  if (!condition) __builtin_trap();
}

struct Key {
  uint64_t words[2];
  bool operator<(const Key& other) const { return std::memcmp(this, &other, sizeof *this) < 0; }
  bool none() const { return words[0] == 0 && words[1] == 0; }
};

struct Chunks {
  size_t left_over = 0;        // blocks whose key stood in the table when they were read
  std::map<Key, size_t> sizes; // of the keys in the table
  bool two_sizes = false;      // under one key: nothing in the format forbids it, and saving must not be tried
};

// The chunks that can be read in full, of an image that was accepted up to its state.
Chunks read_chunks(const unsigned char* data, size_t size) {
  constexpr size_t table_limit = 127;
  Chunks result;
  auto number = [&](size_t at, size_t bytes) {
    uint64_t value = 0;
    std::memcpy(&value, data + at, bytes);
    return value;
  };
  if (size < 16 || data[0] > 2) return result;
  const bool current = data[0] == 2;
  if (current && size < 20) return result;
  const uint64_t count = number(current ? 12 : 8, 2);
  size_t at = current ? 20 + number(8, 4) : 16 + number(6, 2);
  const size_t key_bytes = data[0] == 0 ? 0 : 16;
  for (uint64_t k = 0; k < count; k++) {
    if (size < at || size - at < 8 + key_bytes) break;
    Key key = {};
    std::memcpy(&key, data + at + 4, key_bytes);
    const size_t bytes = number(at + 4 + key_bytes, 4);
    at += 8 + key_bytes;
    if (size - at < bytes) break;
    at += bytes;
    if (key.none()) continue;
    if (const auto known = result.sizes.find(key); known != result.sizes.end()) {
      result.left_over++;
      result.two_sizes = result.two_sizes || known->second != bytes;
    } else if (result.sizes.size() < table_limit) {
      result.sizes[key] = bytes;
    }
  }
  return result;
}

size_t chunks_in_table(const tarn_stream* stream) {
  size_t count = 0;
  tarn_shared_block* entry = nullptr;
  for (const tarn_chunk* chunk = stream->chunks; chunk; chunk = chunk->next)
    count += __kestFindGlobRODataTableEntry(&entry, chunk->key) == 0;
  return count;
}

}

// The library's way to memory, by the linker's --wrap.
extern "C" int __real_posix_memalign(void** out, size_t alignment, size_t size);
extern "C" void __real_free(void* block);
extern "C" int __wrap_posix_memalign(void** out, size_t alignment, size_t size) {
  const int status = __real_posix_memalign(out, alignment, size);
  if (status == 0) blocks.insert(*out);
  return status;
}
extern "C" void __wrap_free(void* block) {
  blocks.erase(block);
  __real_free(block);
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  static const std::string path = std::filesystem::temp_directory_path() / ("tarn_fuzz_" + std::to_string(getpid()));
  FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return 0;
  std::fwrite(data, 1, size, file);
  std::fclose(file);

  tarn_stream* stream = nullptr;
  const int32_t status = __kestLoadStreamF(&stream, path.c_str(), -1);
  Chunks chunks;
  if (status == 0 || status == TARN_RANDOM_FILE_READ) chunks = read_chunks(data, size);
  size_t left_over = chunks.left_over;
  require((status == 0) == (stream != nullptr));
  if (stream) {
    tarn_stream* copy = nullptr;
    require(__kestCopyStream(&copy, stream) == 0);
    require(__kestGetStreamSize(copy) == __kestGetStreamSize(stream));
    __kestDeleteStream(&copy);
    if (!chunks.two_sizes) {
      std::vector<unsigned char> image(static_cast<size_t>(__kestGetStreamSize(stream)));
      require(__kestSaveStreamM(stream, image.data()) == 0);
      left_over += chunks_in_table(stream);
      require(__kestLoadStreamM(&copy, image.data()) == 0);
      require(__kestGetStreamSize(copy) == __kestGetStreamSize(stream));
      __kestDeleteStream(&copy);
    }
    __kestDeleteStream(&stream);
  }

  tarn_shared_block* entry = nullptr;
  for (const auto& [key, bytes] : chunks.sizes)
    require(__kestFindGlobRODataTableEntry(&entry, key.words) == TARN_RANDOM_ENTRY_NOT_FOUND);
  require(blocks.size() == left_over);
  for (void* block : blocks) __real_free(block);
  blocks.clear();
  return 0;
}
