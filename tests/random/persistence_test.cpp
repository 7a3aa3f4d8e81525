// Saved images: byte for byte, every form that readers take, every failure.
#include "random/streams.h"
#include "support/failing_allocator.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <unistd.h>

extern "C" {
__attribute__((weak)) void __lsan_disable();
__attribute__((weak)) void __lsan_enable();
}

using namespace tarn::test;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes image_of(const StreamPtr& stream) {
  Bytes image(static_cast<size_t>(__kestGetStreamSize(stream.get())) + 1, 0xA5);
  EXPECT_EQ(__kestSaveStreamM(stream.get(), image.data()), 0);
  EXPECT_EQ(image.back(), 0xA5);
  image.pop_back();
  return image;
}

struct TemporaryFile {
  std::string path;
  TemporaryFile() {
    path = testing::TempDir() + "tarn_image_" + std::string(6, 'X'); // mkstemp puts its own letters for these
    close(mkstemp(path.data()));
  }
  ~TemporaryFile() { std::remove(path.c_str()); }
  void write(const Bytes& bytes) const {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  Bytes read() const {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
  }
};

// The statuses of loading an image from memory and from a file; streams that come out must give `expected` words.
struct Loaded {
  int32_t memory, file;
  StreamPtr from_memory, from_file;
};

Loaded load(const Bytes& image, bool memory = true) {
  Loaded loaded{0, 0, nullptr, nullptr};
  tarn_stream* stream = reinterpret_cast<tarn_stream*>(64);
  if (memory) {
    loaded.memory = __kestLoadStreamM(&stream, image.data());
    loaded.from_memory.reset(stream);
    EXPECT_EQ(stream == nullptr, loaded.memory != 0);
  }
  TemporaryFile file;
  file.write(image);
  stream = reinterpret_cast<tarn_stream*>(64);
  loaded.file = __kestLoadStreamF(&stream, file.path.c_str(), -1);
  loaded.from_file.reset(stream);
  EXPECT_EQ(stream == nullptr, loaded.file != 0);
  return loaded;
}

void* filled_block(int64_t size, int value) {
  void* block = tarn_serv_allocate(size, 128);
  std::memset(block, value, static_cast<size_t>(size));
  return block;
}

TEST(Image, BytesOfASmallStream) {
  auto stream = make(0x100000, {0x01020304});
  const Bytes expected = {2, 'R', 'N', 'G', 20,   0, 0, 0, 8, 0, 0,    0,    0,    0,
                          0, 0,   0,   0,   0x10, 0, 4, 3, 2, 1, 0x20, 0x6C, 0x80, 0x43};
  EXPECT_EQ(image_of(stream), expected);
  EXPECT_EQ(__kestGetStreamSize(stream.get()), 28);
}

TEST(Image, RoundTripOfEveryGenerator) {
  for (const Named& g : generators()) {
    auto stream = make(g.brng, g.seeds);
    words(stream, 77);
    __kestAddChunk(stream.get(), 2, nullptr, filled_block(24, 3), 24);
    const Bytes image = image_of(stream);
    TemporaryFile file;
    ASSERT_EQ(__kestSaveStreamF(stream.get(), file.path.c_str(), static_cast<int32_t>(file.path.size())), 0);
    EXPECT_EQ(file.read(), image);
    Loaded loaded = load(image);
    ASSERT_EQ(loaded.memory, 0) << g.name;
    ASSERT_EQ(loaded.file, 0) << g.name;
    EXPECT_EQ(loaded.from_memory->brng, g.brng);
    EXPECT_EQ(__kestGetNumChunks(loaded.from_file.get()), 1);
    EXPECT_EQ(image_of(loaded.from_memory), image);
    const auto expected = words(stream, 900);
    EXPECT_EQ(words(loaded.from_memory, 900), expected) << g.name;
    EXPECT_EQ(words(loaded.from_file, 900), expected) << g.name;
  }
}

TEST(Image, PathOfGivenLength) {
  auto stream = make(0x100000, {5});
  TemporaryFile file;
  const std::string longer = file.path + "tail";
  const auto length = static_cast<int32_t>(file.path.size());
  ASSERT_EQ(__kestSaveStreamF(stream.get(), longer.c_str(), length), 0);
  EXPECT_EQ(file.read(), image_of(stream));
  tarn_stream* loaded = nullptr;
  ASSERT_EQ(__kestLoadStreamF(&loaded, longer.c_str(), length), 0);
  __kestDeleteStream(&loaded);
}

// Old images made from a new one: the state stays, header and chunks change.
Bytes old_image(const Bytes& image, Bytes signature, size_t state_bytes, uint16_t chunks, const Bytes& tail) {
  Bytes old = std::move(signature);
  const uint16_t size = static_cast<uint16_t>(state_bytes);
  old.insert(old.end(), {0, 0, static_cast<unsigned char>(size), static_cast<unsigned char>(size >> 8),
                         static_cast<unsigned char>(chunks), 0, 0, 0});
  old.insert(old.end(), image.begin() + 16, image.begin() + 20);
  old.insert(old.end(), image.begin() + 20, image.begin() + 20 + static_cast<long>(state_bytes));
  old.insert(old.end(), tail.begin(), tail.end());
  return old;
}

TEST(Image, OlderVersions) {
  auto stream = make(0x800000, {5});
  const Bytes image = image_of(stream);
  const auto expected = words(stream, 50);
  const size_t state_bytes = 2504;
  Bytes with_key = {7, 0, 0, 0};
  with_key.insert(with_key.end(), 16, 0);
  with_key.insert(with_key.end(), {3, 0, 0, 0, 'a', 'b', 'c'});
  const Bytes without_key = {7, 0, 0, 0, 3, 0, 0, 0, 'a', 'b', 'c'};
  for (const Bytes& old : {old_image(image, {1, 'R', 'N', 'G'}, state_bytes, 1, with_key),
                           old_image(image, {0, 'R', 'N', 'G'}, state_bytes, 1, without_key)}) {
    Loaded loaded = load(old);
    ASSERT_EQ(loaded.memory, 0);
    ASSERT_EQ(loaded.file, 0);
    EXPECT_EQ(words(loaded.from_file, 50), expected);
    ASSERT_NE(__kestSearchChunk(loaded.from_file.get(), 7), nullptr);
    EXPECT_EQ(std::memcmp(__kestSearchChunk(loaded.from_memory.get(), 7), "abc", 3), 0);
  }
  // With the version last: readable without chunks only.
  Loaded last = load(old_image(image, {'R', 'N', 'G', 1}, state_bytes, 0, {}));
  EXPECT_EQ(last.memory, 0);
  EXPECT_EQ(last.file, 0);
  Loaded last_with_chunk = load(old_image(image, {'R', 'N', 'G', 2}, state_bytes, 1, with_key));
  EXPECT_EQ(last_with_chunk.memory, -1103);
  EXPECT_EQ(last_with_chunk.file, -1103);
  Loaded too_new = load(old_image(image, {'R', 'N', 'G', 3}, state_bytes, 0, {}));
  EXPECT_EQ(too_new.memory, -1200);
  EXPECT_EQ(too_new.file, -1111);
}

TEST(Image, MalformedHeaders) {
  const Bytes image = image_of(make(0x100000, {5}));
  struct Change {
    size_t at;
    unsigned char value;
    int32_t memory, file;
  };
  for (const Change& change : {Change{0, 3, -1200, -1111},
                               {1, 'r', -1200, -1110},
                               {3, 'g', -1200, -1110},
                               {8, 9, -1200, -1110},
                               {8, 7, -1200, -1110},
                               {4, 19, -1200, -1110},
                               {4, 21, 0, 0},
                               {18, 0xF0, -1200, -1110},
                               {16, 1, -1200, -1110},
                               {19, 0x80, -1200, -1110},
                               {6, 0xFF, 0, 0},
                               {14, 0xFF, 0, 0}}) {
    Bytes changed = image;
    changed[change.at] = change.value;
    Loaded loaded = load(changed);
    EXPECT_EQ(loaded.memory, change.memory) << change.at;
    EXPECT_EQ(loaded.file, change.file) << change.at;
    if (loaded.memory == 0) {
      EXPECT_EQ(words(loaded.from_memory, 3), words(make(0x100000, {5}), 3));
    }
  }
  // The rows without a generator would need minus 16 bytes of state.
  Bytes empty_row = image;
  const uint32_t minus16 = 0xFFFFFFF0;
  std::memcpy(empty_row.data() + 8, &minus16, 4);
  std::memset(empty_row.data() + 16, 0, 4);
  empty_row[16] = 0x18, empty_row[17] = 1; // old number 280
  EXPECT_EQ(load(empty_row).memory, -1200);
  EXPECT_EQ(load(empty_row).file, -1110);
}

TEST(Image, EveryTruncationIsAShortRead) {
  auto stream = make(0x1000000, {5});
  __kestAddChunk(stream.get(), 2, nullptr, filled_block(8, 1), 8);
  const Bytes image = image_of(stream);
  for (size_t n = 0; n < image.size(); n++)
    EXPECT_EQ(load(Bytes(image.begin(), image.begin() + static_cast<long>(n)), false).file, -1103) << n;
  Bytes huge = image; // a chunk that claims 4 GB
  std::memset(huge.data() + huge.size() - 12, 0xFF, 4);
  const int64_t before = blocks_taken();
  EXPECT_EQ(load(huge, false).file, -1103);
  EXPECT_LE(blocks_taken() - before, 2);
}

TEST(Image, SharedBlockOfAKnownKey) {
  const uint64_t key[2] = {11, 22};
  auto stream = make(0x100000, {5});
  void* data = filled_block(16, 7);
  __kestAddChunk(stream.get(), 9, key, data, 16);
  const Bytes image = image_of(stream);
  tarn_stream* loaded = nullptr;
  if (__lsan_disable) __lsan_disable(); // the block that was read stays with nobody, by the rule of shared blocks
  ASSERT_EQ(__kestLoadStreamM(&loaded, image.data()), 0);
  if (__lsan_enable) __lsan_enable();
  EXPECT_EQ(__kestSearchChunk(loaded, 9), data);
  __kestDeleteStream(&loaded);
  stream.reset();
  ASSERT_EQ(__kestLoadStreamM(&loaded, image.data()), 0); // now nobody knows the key
  EXPECT_EQ(std::memcmp(__kestSearchChunk(loaded, 9), image.data() + image.size() - 16, 16), 0);
  tarn_shared_block* entry;
  EXPECT_EQ(__kestFindGlobRODataTableEntry(&entry, key), 0);
  __kestDeleteStream(&loaded);
}

TEST(Image, FilesThatFail) {
  auto stream = make(0xD00000, {5});
  tarn_stream* loaded = stream.get();
  EXPECT_EQ(__kestSaveStreamF(stream.get(), "/nonexistent/x", -1), -1101);
  EXPECT_EQ(__kestLoadStreamF(&loaded, "/nonexistent/x", -1), -1101);
  EXPECT_EQ(loaded, nullptr);
  EXPECT_EQ(__kestSaveStreamF(stream.get(), "/dev/full", -1), -1100); // seen when the buffer is flushed
  auto big = make(0x700000, {5});
  EXPECT_EQ(__kestSaveStreamF(big.get(), "/dev/full", -1), -1102);
}

TEST(Image, MemoryRunsOut) {
  auto stream = make(0x100000, {5});
  __kestAddChunk(stream.get(), 2, nullptr, filled_block(8, 1), 8);
  TemporaryFile file;
  const auto length = static_cast<int32_t>(file.path.size());
  EXPECT_EQ(for_each_allocation_failure([&](int64_t k) {
              EXPECT_EQ(__kestSaveStreamF(stream.get(), file.path.c_str(), length), k == 0 ? -4 : 0);
            }),
            1);
  EXPECT_EQ(for_each_allocation_failure([&](int64_t k) {
              tarn_stream* loaded = nullptr;
              EXPECT_EQ(__kestLoadStreamF(&loaded, file.path.c_str(), length), k < 4 ? -4 : 0);
              EXPECT_EQ(loaded == nullptr, k < 4);
              if (loaded) __kestDeleteStream(&loaded);
            }),
            4);
  const Bytes image = image_of(stream);
  EXPECT_EQ(for_each_allocation_failure([&](int64_t k) { // the record, a block and its chunk
              tarn_stream* loaded = nullptr;
              EXPECT_EQ(__kestLoadStreamM(&loaded, image.data()), k < 3 ? -4 : 0);
              EXPECT_EQ(loaded == nullptr, k < 3);
              if (loaded) __kestDeleteStream(&loaded);
            }),
            3);
}

// What a generator does not use of its record is saved too, and must not be what the memory held before.
TEST(Image, HoldsNoOldMemory) {
  for (const Named& g : generators()) {
    const auto size = static_cast<size_t>(properties(make(g.brng, g.seeds)).StreamStateSize);
    void* old[8]; // so that the next records come from where these letters stood
    for (void*& one : old) one = filled_block(static_cast<int64_t>(size), 0xA5);
    for (void* one : old) tarn_serv_deallocate(one);
    const Bytes first = image_of(make(g.brng, g.seeds));
    for (void*& one : old) one = filled_block(static_cast<int64_t>(size), 0x5A);
    for (void* one : old) tarn_serv_deallocate(one);
    EXPECT_EQ(image_of(make(g.brng, g.seeds)), first) << g.name;
  }
}

TEST(Movers, FilesAndMemory) {
  char block[16] = {};
  tarn_cursor cursor = {block, 2};
  EXPECT_EQ(__kestSaveToMemory("abcdef", 2, 3, &cursor), 0);
  EXPECT_EQ(cursor.position, 8);
  EXPECT_STREQ(block + 2, "abcdef");
  cursor.position = 0;
  EXPECT_EQ(__kestSkipLoadingFromMemory(3, &cursor), 0);
  char got[4] = {};
  EXPECT_EQ(__kestLoadFromMemory(got, 1, 3, &cursor), 0);
  EXPECT_STREQ(got, "bcd");
  EXPECT_EQ(cursor.position, 6);
  TemporaryFile file;
  FILE* stdio = std::fopen(file.path.c_str(), "w+b");
  EXPECT_EQ(__kestSaveToFile("abcdef", 3, 2, stdio), 0);
  std::rewind(stdio);
  EXPECT_EQ(__kestSkipLoadingFromFile(2, stdio), 0);
  EXPECT_EQ(__kestLoadFromFile(got, 1, 3, stdio), 0);
  EXPECT_STREQ(got, "cde");
  EXPECT_EQ(__kestLoadFromFile(got, 1, 3, stdio), -1103);
  std::fclose(stdio);
  FILE* full = std::fopen("/dev/full", "wb");
  std::setbuf(full, nullptr);
  EXPECT_EQ(__kestSaveToFile("abc", 1, 3, full), -1102);
  std::fclose(full);
}

}
