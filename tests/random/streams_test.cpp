// Streams, registry, chunks and the shared table; memory running out at every allocation.
#include "random/streams.h"
#include "support/failing_allocator.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <unistd.h>

extern "C" {
__attribute__((weak)) void __lsan_disable();
__attribute__((weak)) void __lsan_enable();
}

using namespace tarn::test;

namespace {

tarn_shared_block* find(uint64_t a, uint64_t b) {
  const uint64_t key[2] = {a, b};
  tarn_shared_block* entry = nullptr;
  return __kestFindGlobRODataTableEntry(&entry, key) == 0 ? entry : nullptr;
}

void* block(int64_t size = 16) { return tarn_serv_allocate(size, 128); }

TEST(Registry, Rows) {
  // record, NSeeds, zero, word, bits of the sixteen rows
  const int32_t expected[16][5] = {
      {24, 1, 0, 4, 31},     {1024, 252, 1, 4, 32},   {40, 6, 1, 4, 32},        {32, 1, 0, 8, 59},
      {48, 4, 1, 16, 24},    {11712, 2604, 0, 4, 32}, {84288, 10498, 0, 4, 32}, {2520, 625, 1, 4, 32},
      {312, 70, 1, 4, 32},   {48, 0, 1, 4, 32},       {64, 0, 1, 4, 32},        {56, 0, 1, 4, 32},
      {2536, 625, 1, 4, 32}, {24, 1, 1, 4, 32},       {72, 8, 1, 4, 32},        {64, 8, 1, 4, 32}};
  for (int row = 0; row < 16; row++) {
    tarn_brng_properties p;
    ASSERT_EQ(__kestGetBrngProperties((row + 1) << 20, &p), 0);
    const int32_t got[5] = {p.StreamStateSize, p.NSeeds, p.IncludesZero, p.WordSize, p.NBits};
    EXPECT_TRUE(std::equal(got, got + 5, expected[row])) << row;
    EXPECT_EQ(p.empty, 0);
    EXPECT_EQ(std::memcmp(&p, &__RegBrngsNew[row], sizeof p), 0);
  }
  const int32_t old_rows[] = {0, 1, 2, 3, 4, 276, 277, 278}, new_rows[] = {0, 1, 2, 3, 4, 4, 5, 6};
  for (int k = 0; k < 8; k++)
    EXPECT_EQ(std::memcmp(&__RegBrngs[old_rows[k]], &__RegBrngsNew[new_rows[k]], sizeof(tarn_brng_properties)), 0);
  tarn_brng_properties p, zero{};
  EXPECT_EQ(__kestGetBrngProperties(280, &p), 0); // empty rows that pass the check
  EXPECT_EQ(std::memcmp(&p, &zero, sizeof p), 0);
  EXPECT_EQ(__kestGetBrngProperties(281, &p), -1000);
  EXPECT_EQ(__kestGetBrngProperties(0x900000 + 6023, &p), 0);
  EXPECT_EQ(__kestGetBrngProperties(0x900000 + 6024, &p), -1000);
  EXPECT_EQ(__kestGetBrngProperties(0x500000 + 273, &p), -1000);
  EXPECT_EQ(__kestGetBrngProperties(0x800001, &p), -1000);
}

TEST(Registry, Identifiers) {
  int32_t row, member;
  EXPECT_EQ(__kestGetBrngBaseOffset(4, &row, &member), __RegBrngs);
  EXPECT_EQ(row, 4);
  EXPECT_EQ(member, 0);
  __kestGetBrngBaseOffset(276, &row, &member);
  EXPECT_EQ(row, 4);
  EXPECT_EQ(member, 272);
  __kestGetBrngBaseOffset(277, &row, &member);
  EXPECT_EQ(row, 277);
  EXPECT_EQ(member, 0);
  EXPECT_EQ(__kestGetBrngBaseOffset(0x500005, &row, &member), __RegBrngsNew);
  EXPECT_EQ(row, 4);
  EXPECT_EQ(member, 5);
  EXPECT_EQ(__kestIsBrngValid(__RegBrngs, -5, 0), 0); // both tests are signed
}

TEST(Registry, RefusedStreamsLeaveTheOutArgument) {
  auto* const marker = reinterpret_cast<tarn_stream*>(64);
  for (int32_t brng : {0xA00000, 0xB00000, 0xC00000, 0x1F00000, 0x900000 + 6024, 281, 0x800001}) {
    tarn_stream* stream = marker;
    const int64_t before = blocks_taken();
    EXPECT_EQ(__kestNewStreamEx(&stream, brng, 0, nullptr), -1000) << brng;
    EXPECT_EQ(stream, marker);
    EXPECT_EQ(blocks_taken(), before);
  }
}

int32_t registered_init(int32_t, tarn_stream*, int32_t, const void*) { return -77; }

TEST(Registry, Register) {
  tarn_brng_properties p{}, bad;
  p.StreamStateSize = 24;
  p.NSeeds = 1;
  p.WordSize = 4;
  p.NBits = 32;
  p.InitStream = registered_init;
  p.dBRng = __kestdBRngMCG31M1;
  p.sBRng = __kestsBRngMCG31M1;
  p.iBRng = __kestiBRngMCG31M1;
  tarn_brng_properties broken = p;
  broken.StreamStateSize = -1, broken.WordSize = 12, broken.NSeeds = 0, broken.NBits = 0, broken.iBRng = nullptr;
  EXPECT_EQ(__kestRegisterBrng(&broken), -1008);
  broken.StreamStateSize = 0;
  EXPECT_EQ(__kestRegisterBrng(&broken), -1009);
  broken.WordSize = 16;
  EXPECT_EQ(__kestRegisterBrng(&broken), -1010);
  broken.NSeeds = 1;
  EXPECT_EQ(__kestRegisterBrng(&broken), -1011);
  broken.NBits = 1;
  EXPECT_EQ(__kestRegisterBrng(&broken), -5);
  for (int k = 0; k < 4; k++) {
    bad = p;
    if (k == 0) bad.InitStream = nullptr;
    if (k == 1) bad.dBRng = nullptr;
    if (k == 2) bad.sBRng = nullptr;
    if (k == 3) bad.iBRng = nullptr;
    EXPECT_EQ(__kestRegisterBrng(&bad), -5);
  }
  EXPECT_EQ(__kestGetNumRegBrngs(), 16);
  const int32_t brng = __kestRegisterBrng(&p);
  EXPECT_EQ(brng, 0x1100000);
  EXPECT_EQ(__kestGetNumRegBrngs(), 17);
  tarn_stream* stream = nullptr;
  EXPECT_EQ(__kestNewStreamEx(&stream, brng, 0, nullptr), -77); // its status, with the stream left to the caller
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(stream->brng, brng);
  __kestDeleteStream(&stream);
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(__kestNewStreamEx(&stream, brng + 1, 0, nullptr), -1000); // one member
}

TEST(Stream, HeaderAndCopies) {
  auto stream = make(10, {5, 6});
  EXPECT_EQ(__kestGetStreamStateBrng(stream.get()), 10);
  const uint8_t format[4] = {1, 0, 0, 0};
  EXPECT_EQ(std::memcmp(stream->format, format, 4), 0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(stream.get()) % 128, 0u);
  auto other = copy(stream);
  EXPECT_EQ(other->brng, 10);
  EXPECT_EQ(words(other, 50), words(stream, 50));

  ASSERT_EQ(__kestAddChunk(stream.get(), 3, nullptr, block(), 16), 0);
  EXPECT_EQ(__kestCopyStreamState(stream.get(), stream.get()), 0);
  EXPECT_EQ(__kestGetNumChunks(stream.get()), 1);
  auto destination = make(0x100000, {5}); // identifiers are not compared
  auto source = make(0x200000, {9});
  auto philox = make(0x1000000, {1, 2, 3}), target = make(0x1000000, {7, 8, 9});
  words(philox, 2);
  ASSERT_EQ(__kestCopyStreamState(target.get(), philox.get()), 0);
  EXPECT_EQ(state(target)[6], 2u);               // left
  EXPECT_EQ(state(target)[7], state(philox)[7]); // and one word of the block
  EXPECT_NE(state(target)[10], state(philox)[10]);
}

TEST(Chunks, ListAndIds) {
  auto stream = make(0x100000, {5});
  for (int32_t id : {1, 2, 3}) ASSERT_EQ(__kestAddChunk(stream.get(), id, nullptr, block(), 16), 0);
  EXPECT_EQ(__kestGetNumChunks(stream.get()), 3);
  EXPECT_EQ(stream->chunks->id, 3); // the newest at the head
  EXPECT_EQ(__kestSearchChunk(stream.get(), 9), nullptr);
  EXPECT_EQ(__kestSearchChunk(stream.get(), 2), stream->chunks->next->data);
  auto reversed = copy(stream);
  EXPECT_EQ(reversed->chunks->id, 1);
  EXPECT_NE(__kestSearchChunk(reversed.get(), 2), __kestSearchChunk(stream.get(), 2));
  EXPECT_EQ(copy(reversed)->chunks->id, 3);
  ASSERT_EQ(__kestAddChunk(stream.get(), 4, nullptr, nullptr, 0), 0); // no data at all
  EXPECT_EQ(__kestSearchChunk(stream.get(), 4), nullptr);
  EXPECT_EQ(__kestGetNumChunks(copy(stream).get()), 4);
  EXPECT_EQ(__kestDeleteChunks(stream.get()), 0);
  EXPECT_EQ(__kestGetNumChunks(stream.get()), 0);
}

TEST(Chunks, DeletionByIdKeepsTheLastOne) {
  auto list = [](std::vector<int32_t> ids) { // from the head
    auto stream = make(0x100000, {5});
    for (auto id = ids.rbegin(); id != ids.rend(); ++id) __kestAddChunk(stream.get(), *id, nullptr, block(), 16);
    return stream;
  };
  auto none = list({6, 6});
  __kestDeleteChunksById(none.get(), 6);
  EXPECT_EQ(none->chunks, nullptr);
  auto one = list({6, 3, 6});
  __kestDeleteChunksById(one.get(), 6);
  ASSERT_EQ(__kestGetNumChunks(one.get()), 1);
  EXPECT_EQ(one->chunks->id, 3);
  auto two = list({1, 6, 2});
  tarn_chunk* lost = two->chunks;
  __kestDeleteChunksById(two.get(), 6);
  ASSERT_EQ(__kestGetNumChunks(two.get()), 1);
  EXPECT_EQ(two->chunks->id, 2);
  EXPECT_EQ(lost->next, two->chunks); // dropped, not released
  tarn_serv_deallocate(lost->data);
  tarn_serv_deallocate(lost);
}

TEST(SharedBlocks, ReferencesAreCounted) {
  const uint64_t key[2] = {77, 88};
  auto a = make(0x100000, {5}), b = make(0x100000, {6});
  void* data = block();
  ASSERT_EQ(__kestAddChunk(a.get(), 9, key, data, 16), 0);
  ASSERT_NE(find(77, 88), nullptr);
  EXPECT_EQ(find(77, 88)->refs, 1u);
  EXPECT_EQ(find(77, 88)->data, data);
  void* mine = block();
  ASSERT_EQ(__kestAddChunk(b.get(), 9, key, mine, 16), 0);
  EXPECT_EQ(__kestSearchChunk(b.get(), 9), data); // the table's, not the one handed over
  tarn_serv_deallocate(mine);
  auto c = copy(a);
  EXPECT_EQ(find(77, 88)->refs, 3u);
  EXPECT_EQ(__kestSearchChunk(c.get(), 9), data);
  a.reset(), b.reset();
  EXPECT_EQ(find(77, 88)->refs, 1u);
  c.reset();
  EXPECT_EQ(find(77, 88), nullptr);
}

TEST(SharedBlocks, StatusesAndVanishedKeys) {
  tarn_shared_block* entry = nullptr;
  const uint64_t zero[2] = {0, 0}, key[2] = {5, 0}, other[2] = {0, 6};
  EXPECT_EQ(__kestFindGlobRODataTableEntry(&entry, nullptr), -3000);
  EXPECT_EQ(__kestFindGlobRODataTableEntry(&entry, zero), -3000);
  EXPECT_EQ(__kestFindGlobRODataTableEntry(&entry, key), -3000);
  ASSERT_EQ(__kestCreateGlobRODataTableEntry(&entry, key, block()), 0);
  EXPECT_EQ(entry->refs, 1u);
  tarn_chunk chunk{};
  EXPECT_EQ(__kestRegisterGlobRODataReference(&chunk, key), 0);
  EXPECT_EQ(chunk.data, entry->data);
  EXPECT_EQ(__kestRegisterGlobRODataReference(&chunk, other), 0);
  EXPECT_EQ(find(5, 0)->refs, 2u);
  EXPECT_EQ(__kestUnregisterGlobRODataReference(key), 0);
  EXPECT_EQ(__kestUnregisterGlobRODataReference(key), 0);
  EXPECT_EQ(find(5, 0), nullptr);
  EXPECT_EQ(__kestUnregisterGlobRODataReference(key), 0);
  // A chunk whose key has left the table frees its own data (a leak checker would tell).
  auto stream = make(0x100000, {5});
  ASSERT_EQ(__kestAddChunk(stream.get(), 9, key, block(), 16), 0);
  find(5, 0)->data = nullptr;
  __kestUnregisterGlobRODataReference(key);
  stream.reset();
  uint64_t made[2];
  EXPECT_EQ(__kestGenerateNewGlobalRODataTableEntryId(made, 42), 0);
  EXPECT_EQ(made[1], 42u);
  EXPECT_EQ(find(made[0], made[1]), nullptr);
}

TEST(SharedBlocks, FullTable) {
  std::vector<uint64_t> keys;
  auto create = [&](uint64_t k) {
    tarn_shared_block* entry;
    const uint64_t key[2] = {1000 + k, 1};
    const int32_t status = __kestCreateGlobRODataTableEntry(&entry, key, nullptr);
    if (status == 0) keys.push_back(key[0]);
    return status;
  };
  for (uint64_t k = 0; k < 127; k++) ASSERT_EQ(create(k), 0);
  auto stream = make(0x100000, {5});
  const uint64_t key[2] = {3, 3};
  ASSERT_EQ(__kestAddChunk(stream.get(), 9, key, block(), 16), 0);
  EXPECT_EQ(stream->chunks->key[0] | stream->chunks->key[1], 0u); // private
  EXPECT_EQ(find(3, 3), nullptr);
  ASSERT_EQ(create(127), 0); // the table itself holds one more
  EXPECT_EQ(create(128), -3001);
  while (!keys.empty()) {
    const uint64_t last[2] = {keys.back(), 1};
    __kestUnregisterGlobRODataReference(last);
    keys.pop_back();
    for (uint64_t k : keys) ASSERT_NE(find(k, 1), nullptr);
  }
}

std::vector<char> image_of(const StreamPtr& stream) {
  std::vector<char> image(static_cast<size_t>(__kestGetStreamSize(stream.get())));
  __kestSaveStreamM(stream.get(), image.data());
  return image;
}

StreamPtr load(const std::vector<char>& image) {
  tarn_stream* stream = nullptr;
  __kestLoadStreamM(&stream, image.data());
  return StreamPtr(stream);
}

// Eight threads make, copy, save, load and delete streams that share blocks. Each thread loads under keys of its own,
// which nobody holds any more then, so no block may be lost.
TEST(SharedBlocks, Threads) {
  const uint64_t key[2] = {123, 456};
  auto base = make(0x100000, {5});
  void* data = block();
  std::memset(data, 0x5A, 16);
  ASSERT_EQ(__kestAddChunk(base.get(), 9, key, data, 16), 0);
  const std::vector<char> base_image = image_of(base);
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; t++)
    threads.emplace_back([&, t] {
      const std::string path = testing::TempDir() + "tarn_threads_" + std::to_string(getpid()) + std::to_string(t);
      for (int k = 0; k < 200; k++) {
        auto one = copy(base), two = copy(one);
        if (__kestSearchChunk(two.get(), 9) != data) ADD_FAILURE();
        if (image_of(two) != base_image) ADD_FAILURE();
        auto own = make(0x600000, {static_cast<uint32_t>(1 + (k + t) % 40)});
        const uint64_t mine[2] = {static_cast<uint64_t>(t + 1), static_cast<uint64_t>(k)};
        void* content = block();
        std::memset(content, t + 1, 16);
        __kestAddChunk(own.get(), 9, mine, content, 16);
        auto again = copy(own);
        words(own, 10);
        const std::vector<char> image = image_of(again);
        if (__kestSaveStreamF(again.get(), path.c_str(), -1) != 0) ADD_FAILURE();
        own.reset();
        again.reset();
        auto from_memory = load(image), shared = copy(from_memory);
        if (!shared || __kestSearchChunk(shared.get(), 9) != __kestSearchChunk(from_memory.get(), 9)) ADD_FAILURE();
        if (image_of(shared) != image) ADD_FAILURE();
        from_memory.reset();
        shared.reset();
        tarn_stream* from_file = nullptr;
        if (__kestLoadStreamF(&from_file, path.c_str(), -1) != 0) ADD_FAILURE();
        if (image_of(StreamPtr(from_file)) != image) ADD_FAILURE();
      }
      std::remove(path.c_str());
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(find(123, 456)->refs, 1u);
  for (uint64_t t = 1; t <= 8; t++)
    for (uint64_t k = 0; k < 200; k++) EXPECT_EQ(find(t, k), nullptr);
}

// Loading under a key that others hold: the table's block is taken, and the block that was read stays with nobody.
TEST(SharedBlocks, ThreadsLoadUnderAKnownKey) {
  const uint64_t key[2] = {321, 654};
  auto base = make(0x100000, {5});
  void* data = block();
  std::memset(data, 0x5A, 16);
  ASSERT_EQ(__kestAddChunk(base.get(), 9, key, data, 16), 0);
  const std::vector<char> image = image_of(base);
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; t++)
    threads.emplace_back([&] {
      for (int k = 0; k < 50; k++) {
        if (__lsan_disable) __lsan_disable();
        auto loaded = load(image);
        if (__lsan_enable) __lsan_enable();
        auto again = copy(loaded);
        if (__kestSearchChunk(again.get(), 9) != data) ADD_FAILURE();
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(find(321, 654)->refs, 1u);
}

// ---- Memory

TEST(Memory, EveryAllocationOfMakersAndCopies) {
  const auto sites = for_each_allocation_failure([](int64_t k) {
    tarn_stream* stream = reinterpret_cast<tarn_stream*>(64);
    const int32_t status = __kestNewStreamEx(&stream, 0x800000, 0, nullptr);
    EXPECT_EQ(status, k == 0 ? -4 : 0);
    if (k == 0)
      EXPECT_EQ(stream, nullptr);
    else
      __kestDeleteStream(&stream);
  });
  EXPECT_EQ(sites, 1);
  auto stream = make(0x100000, {5});
  void* data = block();
  EXPECT_EQ(for_each_allocation_failure([&](int64_t k) {
              EXPECT_EQ(__kestAddChunk(stream.get(), 1, nullptr, data, 16), k == 0 ? -4 : 0);
              EXPECT_EQ(__kestGetNumChunks(stream.get()), k == 0 ? 0 : 1);
            }),
            1);
  const uint64_t key[2] = {4, 4};
  ASSERT_EQ(__kestAddChunk(stream.get(), 2, key, block(), 16), 0);
  EXPECT_EQ(for_each_allocation_failure([&](int64_t k) {
              tarn_stream* out = nullptr;
              // A block taken for the chunk that failed is not given back: the one known loss.
              if (__lsan_disable) __lsan_disable();
              const int32_t status = __kestCopyStream(&out, stream.get());
              if (__lsan_enable) __lsan_enable();
              EXPECT_EQ(status, k < 4 ? -4 : 0); // the record; a record and data and a record for the chunks
              EXPECT_EQ(out == nullptr, k == 0);
              if (out && status) {
                EXPECT_EQ(out->chunks, nullptr);
              }
              if (out) __kestDeleteStream(&out);
            }),
            4);
  EXPECT_EQ(find(4, 4)->refs, 1u);
}

TEST(Memory, EveryAllocationOfACopiedState) {
  auto source = make(0x100000, {5}), destination = make(0x100000, {6});
  ASSERT_EQ(__kestAddChunk(source.get(), 1, nullptr, block(), 16), 0);
  ASSERT_EQ(__kestAddChunk(destination.get(), 7, nullptr, block(), 16), 0);
  EXPECT_EQ(for_each_allocation_failure([&](int64_t k) { // a block and its chunk
              if (__lsan_disable) __lsan_disable();
              const int32_t status = __kestCopyStreamState(destination.get(), source.get());
              if (__lsan_enable) __lsan_enable();
              EXPECT_EQ(status, k < 2 ? -4 : 0);
              EXPECT_EQ(__kestGetNumChunks(destination.get()), k < 2 ? 0 : 1);
              EXPECT_EQ(state(destination)[0], 5u); // the state was copied before
            }),
            2);
}

TEST(Memory, EveryAllocationOfJumps) {
  for (int32_t brng : {0x800000, 0xD00000})
    for (int64_t count : {int64_t{1500}, int64_t{1} << 40}) {
      const auto base = make(brng, {3});
      auto expected = copy(base);
      __kestSkipAheadStream(expected.get(), count);
      const auto sequence = words(expected, 20);
      const auto sites = for_each_allocation_failure([&](int64_t) {
        auto stream = make(brng, {3});
        if (!stream) return;
        const int32_t status = __kestSkipAheadStream(stream.get(), count);
        if (status == 0)
          EXPECT_EQ(words(stream, 20), sequence);
        else
          EXPECT_EQ(status, -4);
      });
      EXPECT_EQ(sites, count > 1500 ? 6 : brng == 0x800000 ? 1 : 3) << brng; // the first is the stream's own
    }
}

TEST(Memory, EveryAllocationOfQuasiRandomChunks) {
  std::vector<uint32_t> sobol = {400, 1, 4}, niederr = {400, 1, 4};
  for (int k = 0; k < 32 * 400; k++) sobol.push_back(1u << (k % 32)), niederr.push_back(1u << (k % 32));
  for (auto [brng, seeds, expected] : {std::tuple{0x600000, sobol, 5}, std::tuple{0x700000, niederr, 3}})
    EXPECT_EQ(for_each_allocation_failure([&, b = brng, &s = seeds](int64_t) {
                tarn_stream* stream = nullptr;
                const int32_t status = __kestNewStreamEx(&stream, b, static_cast<int32_t>(s.size()), s.data());
                EXPECT_TRUE(status == 0 || status == -4);
                uint32_t r[4];
                // What is left is a stream that works and can be deleted.
                if (stream) {
                  EXPECT_EQ((b == 0x600000 ? __kestiBRngSobol : __kestiBRngNiederr)(stream, 4, r), 0);
                }
                if (stream) __kestDeleteStream(&stream);
              }),
              expected);
}

}
