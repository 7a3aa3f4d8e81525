// Quasi-random points: definition, seeds of every class, skip and coordinate selection, threads.
#include "random/streams.h"

#include <gtest/gtest.h>

#include <thread>

using namespace tarn::test;

// The threads that this program lends to the library.
namespace {
int32_t thread_limit = 1;
int64_t loops = 0;
}

extern "C" __attribute__((visibility("default"))) int32_t tarn_kest_serv_threader_get_num_threads_limit(void) {
  return thread_limit;
}

extern "C" __attribute__((visibility("default"))) void
tarn_kest_serv_threader_for(int64_t count, int32_t thread_count, void* context,
                            void (*body)(int64_t, int32_t, int32_t, void*)) {
  loops++;
  std::vector<std::thread> threads;
  for (int32_t t = 0; t < thread_count; t++)
    threads.emplace_back([=] {
      for (int64_t k = t; k < count; k += thread_count) body(k, t, thread_count, context);
    });
  for (std::thread& thread : threads) thread.join();
}

namespace {

struct Polynomial {
  uint32_t mask;
  std::vector<uint32_t> initial;
};

// Coordinates 2 to 8 as published.
const std::vector<Polynomial>& published() {
  static const std::vector<Polynomial> all = {
      {3, {1}},           {7, {1, 1}},        {11, {1, 3, 7}},      {13, {1, 1, 5}},
      {19, {1, 3, 1, 1}}, {25, {1, 1, 3, 7}}, {37, {1, 3, 3, 9, 9}}};
  return all;
}

std::vector<uint32_t> plain_directions(uint32_t mask, std::vector<uint32_t> m) {
  const int s = 31 - __builtin_clz(mask);
  for (int k = s; k < 32; k++) {
    uint32_t next = m[k - s];
    for (int i = 0; i < s; i++)
      if (mask >> i & 1) next ^= m[k - s + i] << (s - i);
    m.push_back(next);
  }
  for (int k = 0; k < 32; k++) m[k] <<= 31 - k;
  return m;
}

// Point `index` by its definition.
uint32_t plain_point(const std::vector<uint32_t>& v, uint32_t index) {
  uint32_t x = 0;
  for (int k = 0; k < 32; k++)
    if ((index ^ index >> 1) >> k & 1) x ^= v[k];
  return x;
}

TEST(Sobol, DirectionNumbers) {
  auto stream = make(0x600000, {8});
  const auto r = words(stream, 8 * 3000);
  std::vector<std::vector<uint32_t>> v(8);
  for (int k = 0; k < 32; k++) v[0].push_back(1u << (31 - k));
  for (int d = 1; d < 8; d++) v[d] = plain_directions(published()[d - 1].mask, published()[d - 1].initial);
  for (uint32_t i = 0; i < 3000; i++)
    for (int d = 0; d < 8; d++) ASSERT_EQ(r[8 * i + d], plain_point(v[d], i + 1)) << i << " " << d;
  EXPECT_EQ(words(make(0x600000), 3), (std::vector<uint32_t>{0x80000000, 0xC0000000, 0x40000000}));
}

// In every coordinate the first 2^k points, with the origin, fall one into each interval of length 2^-k; for Sobol and
// Niederreiter alike.
TEST(Quasi, EveryCoordinateIsStratified) {
  for (auto [brng, dimen] : {std::pair{0x600000, 40u}, {0x700000, 318u}}) {
    for (int log : {6, 9}) {
      const uint32_t points = (1u << log) - 1;
      const auto r = words(make(brng, {dimen}), static_cast<int32_t>(points * dimen));
      for (uint32_t d = 0; d < dimen; d++) {
        std::vector<bool> hit(points + 1);
        hit[0] = true;
        for (uint32_t i = 0; i < points; i++) hit[r[i * dimen + d] >> (32 - log)] = true;
        // The Niederreiter coordinate of degree e fills intervals of length 2^-(multiple of e) only.
        const auto filled = std::count(hit.begin(), hit.end(), true);
        if (brng == 0x600000 || d < 2)
          ASSERT_EQ(filled, points + 1) << d;
        else
          ASSERT_GT(filled, 1) << d;
      }
    }
  }
}

// The first generator matrices of Niederreiter's sequence: the van der Corput sequence for x, and Pascal's triangle
// modulo 2 for x + 1 (which is Faure's second coordinate in base 2).
TEST(Niederr, FirstMatrices) {
  auto stream = make(0x700000, {2});
  std::vector<uint32_t> corput(32), pascal(32);
  for (int k = 0; k < 32; k++) {
    corput[k] = 1u << (31 - k);
    for (int j = 0; j <= k; j++)
      if ((j & ~k) == 0) pascal[k] |= 1u << (31 - j);
  }
  const auto r = words(stream, 2 * 1000);
  for (uint32_t i = 0; i < 1000; i++) {
    ASSERT_EQ(r[2 * i], plain_point(corput, i + 1));
    ASSERT_EQ(r[2 * i + 1], plain_point(pascal, i + 1));
  }
}

// For coordinate d with polynomial degree e the sequence is a (0, 1)-sequence in base 2^e digits: the first 2^(e m)
// points fill the intervals of length 2^-(e m) once each.
TEST(Niederr, StratifiedByDegree) {
  const int degree[] = {1, 1, 2, 3, 3, 4, 4, 4, 5, 5, 5, 5, 5, 5, 6, 6, 6, 6, 6, 6, 6, 6, 6, 7};
  const uint32_t dimen = 24;
  const auto r = words(make(0x700000, {dimen}), 4095 * 24);
  for (uint32_t d = 0; d < dimen; d++) {
    const int bits = 12 / degree[d] * degree[d];
    const uint32_t points = 1u << bits;
    std::vector<bool> hit(points);
    hit[0] = true;
    for (uint32_t i = 0; i + 1 < points; i++) hit[r[i * dimen + d] >> (32 - bits)] = true;
    EXPECT_EQ(std::count(hit.begin(), hit.end(), true), points) << d;
  }
}

TEST(Quasi, SeedsOfTheBuiltInForms) {
  for (auto [brng, most] : {std::pair{0x600000, 40u}, {0x700000, 318u}}) {
    auto dimen = [&, b = brng](std::vector<uint32_t> seeds) { return state(make(b, seeds))[1]; };
    EXPECT_EQ(dimen({}), 1u);
    EXPECT_EQ(dimen({most}), most);
    EXPECT_EQ(dimen({most + 1}), 1u);
    EXPECT_EQ(dimen({0}), 1u);
    EXPECT_EQ(dimen({0xFFFFFFFF}), 1u);
    EXPECT_EQ(dimen({0, 1, 1, 3}), 1u);
    EXPECT_EQ(dimen({7, 1}), 7u);             // too short
    EXPECT_EQ(dimen({7, 1, 99, 1, 1}), 7u);   // unknown class
    EXPECT_EQ(dimen({7, 2, 1, 1, 1}), 7u);    // not asked for
    EXPECT_EQ(dimen({400, 1, 4, 1, 1}), 1u);  // too short, and above the limit
    EXPECT_EQ(dimen({5, 1, 3, 7, 7, 7}), 5u); // class 3 with too few words
  }
}

std::vector<uint32_t> user(uint32_t dimen, uint32_t kind) { return {dimen, 1, kind}; }

TEST(Sobol, UserClassesGiveTheBuiltInNumbersBack) {
  const auto expected = words(make(0x600000, {8}), 4000);
  std::vector<uint32_t> polynomials = user(8, 1), initial = user(8, 2), both = user(8, 3), from_first = user(8, 11),
                        table = user(8, 4);
  for (const Polynomial& p : published()) polynomials.push_back(p.mask), both.push_back(p.mask);
  from_first.push_back(3);
  for (const Polynomial& p : published()) from_first.push_back(p.mask);
  for (auto* seeds : {&initial, &both, &from_first}) seeds->push_back(6);
  from_first.insert(from_first.end(), {1, 0, 0, 0, 0, 0});
  for (const Polynomial& p : published())
    for (auto* seeds : {&initial, &both, &from_first})
      for (size_t k = 0; k < 6; k++) seeds->push_back(k < p.initial.size() ? p.initial[k] : 0);
  for (int d = 0; d < 8; d++)
    for (int k = 0; k < 32; k++)
      table.push_back(d == 0 ? 1u << (31 - k)
                             : plain_directions(published()[d - 1].mask, published()[d - 1].initial)[k]);
  EXPECT_EQ(words(make(0x600000, polynomials), 4000), expected);
  EXPECT_EQ(words(make(0x600000, initial), 4000), expected);
  EXPECT_EQ(words(make(0x600000, both), 4000), expected);
  EXPECT_EQ(words(make(0x600000, table), 4000), expected);
  const auto first = words(make(0x600000, from_first), 4000);
  for (size_t k = 0; k < 4000; k++)
    if (k % 8 != 0) {
      ASSERT_EQ(first[k], expected[k]);
    }
  EXPECT_NE(first[8], 0u);
  // classes 3, 11 and 4 live in chunks
  EXPECT_EQ(__kestGetNumChunks(make(0x600000, polynomials).get()), 0);
  for (const auto& seeds : {both, from_first, table}) EXPECT_EQ(__kestGetNumChunks(make(0x600000, seeds).get()), 2);
  for (auto* seeds : {&both, &from_first, &table}) { // one word less is too short
    seeds->pop_back();
    EXPECT_EQ(__kestGetNumChunks(make(0x600000, *seeds).get()), 0);
  }
  std::vector<uint32_t> high = user(3, 1);
  high.push_back(7), high.push_back(1 << 9);
  tarn_stream* stream = nullptr;
  EXPECT_EQ(__kestNewStreamEx(&stream, 0x600000, 5, high.data()), -3);
  __kestDeleteStream(&stream);
}

TEST(Niederr, UserClassesGiveTheBuiltInNumbersBack) {
  const auto expected = words(make(0x700000, {5}), 3000);
  std::vector<uint32_t> polynomials = user(5, 1), short_one;
  polynomials.insert(polynomials.end(), {2, 3, 7, 11, 13});
  EXPECT_EQ(words(make(0x700000, polynomials), 3000), expected);
  // 400 coordinates: in a chunk; the first five as built in
  for (uint32_t kind : {1u, 4u}) {
    std::vector<uint32_t> seeds = user(400, kind);
    for (uint32_t d = 0; d < 400; d++) {
      if (kind == 1) {
        seeds.push_back(polynomials[3 + d % 5]);
        continue;
      }
      auto narrowed = make(0x700000, {5}); // direction numbers as differences of points
      std::vector<uint32_t> v;
      for (int k = 0; k < 32; k++) {
        auto at = make(0x700000, {5});
        const uint64_t power = uint64_t{1} << k;
        if (power > 1) __kestSkipAheadStream(at.get(), static_cast<int64_t>(5 * (power - 1)));
        const uint32_t here = words(at, 5)[d % 5]; // Gray code of 2^k: bits k and k - 1
        v.push_back(k == 0 ? here : here ^ v.back());
      }
      seeds.insert(seeds.end(), v.begin(), v.end());
    }
    auto stream = make(0x700000, seeds);
    ASSERT_EQ(__kestGetNumChunks(stream.get()), 1);
    EXPECT_EQ(stream->chunks->id, 10);
    EXPECT_EQ(stream->chunks->size, 132u * 400);
    const auto r = words(stream, 400 * 600);
    for (size_t i = 0; i < 600; i++)
      for (size_t d = 0; d < 400; d++) ASSERT_EQ(r[400 * i + d], expected[5 * i + d % 5]) << kind;
  }
}

TEST(Sobol, ChunksOfCopies) {
  std::vector<uint32_t> seeds = user(100, 4);
  for (int k = 0; k < 3200; k++) seeds.push_back(1u << (k % 32));
  auto stream = make(0x600000, seeds);
  ASSERT_EQ(__kestGetNumChunks(stream.get()), 2);
  const tarn_chunk* table = stream->chunks->next;
  EXPECT_EQ(table->id, 9);
  EXPECT_EQ(table->size, 4u * ((64 - 400 % 64) * 32 + 6400));
  EXPECT_EQ(stream->chunks->id, 13);
  EXPECT_EQ(stream->chunks->size, 400u);
  auto other = copy(stream);
  EXPECT_EQ(__kestSearchChunk(other.get(), 9), __kestSearchChunk(stream.get(), 9));
  EXPECT_NE(__kestSearchChunk(other.get(), 13), __kestSearchChunk(stream.get(), 13));
  tarn_shared_block* entry;
  ASSERT_EQ(__kestFindGlobRODataTableEntry(&entry, table->key), 0);
  EXPECT_EQ(entry->refs, 2u);
  const auto expected = words(stream, 999);
  EXPECT_EQ(words(other, 999), expected);
}

// The point of a Niederreiter stream of very many coordinates has to be among what a copied state brings along, wherever
// it is kept: around the number of words that are copied, and around the room of the record.
TEST(Niederr, StatesOfManyCoordinatesAreCopiedWhole) {
  for (uint32_t dimen : {10493u, 10494u, 10495u, 21064u, 21065u}) {
    std::vector<uint32_t> seeds = user(dimen, 4);
    uint32_t w = 1;
    for (uint32_t k = 0; k < 32 * dimen; k++) seeds.push_back(w = w * 69069 + 1);
    const auto n = static_cast<int32_t>(dimen);
    auto stream = make(0x700000, seeds), other = copy(stream);
    words(stream, 5 * n + 7);
    words(other, 2 * n);
    ASSERT_EQ(__kestCopyStreamState(other.get(), stream.get()), 0);
    std::vector<uint32_t> expected; // the rest of point 6, and the start of point 7
    for (uint32_t index : {6u, 7u})
      for (uint32_t d = 0; d < dimen; d++)
        expected.push_back(plain_point({&seeds[3 + 32 * d], &seeds[3 + 32 * d] + 32}, index));
    expected.erase(expected.begin(), expected.begin() + 7);
    EXPECT_EQ(words(other, 2 * n - 7), expected) << dimen;
    EXPECT_EQ(words(copy(stream), 2 * n - 7), expected) << dimen;
  }
}

// Every number of coordinates has its own way through the loops.
TEST(Quasi, EveryDimensionEqualsThePlainWalk) {
  for (auto [brng, limit, dimensions] : {std::tuple{0x600000, 40u, 40u}, std::tuple{0x700000, 318u, 110u}})
    for (uint32_t dimen = 1; dimen <= dimensions; dimen++) {
      auto stream = make(brng, {dimen});
      const uint32_t* numbers = state(stream) + 4 + limit; // after the head and the point, 33 words a coordinate
      std::vector<uint32_t> x(dimen), expected;
      const size_t points = 5000 / dimen + 3;
      for (uint32_t d = 0; d < dimen; d++) x[d] = numbers[33 * d];
      for (uint32_t index = 1; index <= points; index++)
        for (uint32_t d = 0; d < dimen; d++) {
          expected.push_back(x[d]);
          x[d] ^= numbers[33 * d + static_cast<uint32_t>(__builtin_ctz(~index))];
        }
      ASSERT_EQ(words(stream, static_cast<int32_t>(expected.size())), expected) << brng << " " << dimen;
      ASSERT_EQ(std::vector<uint32_t>(state(stream) + 4, state(stream) + 4 + dimen), x) << brng << " " << dimen;
    }
}

// Tables of the caller's, in the record and in chunks: calls that begin and end inside points, skips, copies of the state
// and images at any place, for numbers of coordinates around the groups of the loops.
TEST(Quasi, AnyWalkThroughTheCallersTable) {
  uint32_t w = 5;
  const auto below = [&](uint32_t n) { return (w = w * 1664525 + 1013904223, (w >> 8) % n); };
  std::vector<uint32_t> dimensions = {95, 96, 99, 127, 128, 130, 318, 319, 320, 500};
  for (uint32_t dimen = 1; dimen <= 70; dimen++) dimensions.push_back(dimen);
  for (int32_t brng : {0x600000, 0x700000})
    for (uint32_t dimen : dimensions) {
      std::vector<uint32_t> seeds = user(dimen, 4);
      for (uint32_t k = 0; k < 32 * dimen; k++) seeds.push_back(below(0x10000) << 16 | below(0x10000));
      std::vector<std::vector<uint32_t>> v(dimen);
      for (uint32_t d = 0; d < dimen; d++) v[d].assign(&seeds[3 + 32 * d], &seeds[3 + 32 * d] + 32);
      auto stream = make(brng, seeds);
      uint64_t at = 0; // scalars given out
      for (int turn = 0; turn < 24; turn++) {
        if (const uint32_t what = below(6); what == 0) {
          const uint64_t count = below(2) ? below(2 * dimen + 3) : uint64_t{below(1 << 22)} * dimen + below(dimen);
          ASSERT_EQ(__kestSkipAheadStream(stream.get(), static_cast<int64_t>(count)), 0);
          at += count;
        } else if (what == 1) {
          auto other = make(brng, seeds);
          words(other, static_cast<int32_t>(below(2 * dimen)));
          ASSERT_EQ(__kestCopyStreamState(other.get(), stream.get()), 0);
          stream = std::move(other);
        } else if (what == 2) {
          stream = copy(stream);
        }
        const uint32_t n = below(3) == 0 ? below(5) : below(9 * dimen + 30);
        const auto r = words(stream, static_cast<int32_t>(n));
        for (uint32_t k = 0; k < n; k++, at++)
          ASSERT_EQ(r[k], plain_point(v[at % dimen], static_cast<uint32_t>(at / dimen + 1)))
              << brng << " " << dimen << " scalar " << at;
      }
    }
}

TEST(Quasi, PartialPoints) {
  for (int32_t brng : {0x600000, 0x700000}) {
    auto stream = make(brng, {3}), whole = copy(stream);
    const auto expected = words(whole, 12);
    words(stream, 7);
    EXPECT_EQ(state(stream)[3], 2u);
    EXPECT_EQ(words(stream, 5), std::vector<uint32_t>(expected.begin() + 7, expected.end()));
    auto fresh = make(brng, {3});
    EXPECT_EQ(__kestSkipAheadStream(fresh.get(), 1), 0);
    EXPECT_EQ(state(fresh)[3], 2u);
    EXPECT_EQ(__kestSkipAheadStream(fresh.get(), 9), 0);
    EXPECT_EQ(state(fresh)[3], 2u);
    EXPECT_EQ(state(fresh)[0], 4u);
    EXPECT_EQ(words(fresh, 2), std::vector<uint32_t>(expected.begin() + 10, expected.end()));
  }
}

TEST(Quasi, EndOfTheSequence) {
  auto stream = make(0x600000, {4});
  EXPECT_EQ(__kestSkipAheadStream(stream.get(), int64_t{4} * 0xFFFFFFFE), -1003);
  EXPECT_EQ(__kestSkipAheadStream(stream.get(), int64_t{4} * 0xFFFFFFFF), -1003);
  ASSERT_EQ(__kestSkipAheadStream(stream.get(), int64_t{4} * (0xFFFFFFFE - 10)), 0);
  const uint32_t index = state(stream)[0];
  EXPECT_EQ(index, 0xFFFFFFFE - 9);
  uint32_t r[12] = {};
  EXPECT_EQ(__kestiBRngSobol(stream.get(), 11, r), -1012); // scalars are counted against points
  EXPECT_EQ(r[0], 0u);
  EXPECT_EQ(__kestiBRngSobol(stream.get(), 10, r), 0);
}

TEST(Quasi, CoordinateSelection) {
  for (int32_t brng : {0x600000, 0x700000}) {
    auto stream = make(brng, {5});
    const auto sequence = words(copy(stream), 5 * 200);
    EXPECT_EQ(__kestLeapfrogStream(stream.get(), 0, 4), -1002);
    EXPECT_EQ(__kestLeapfrogStream(stream.get(), 5, 0x7FFFFFFF), -1002);
    EXPECT_EQ(__kestLeapfrogStream(stream.get(), -1, 0x7FFFFFFF), -1002);
    words(stream, 7); // coordinates 0 and 1 of the second point are out
    auto given = copy(stream), open = copy(stream);
    auto expect = [&](const StreamPtr& s, size_t point, size_t k) {
      const auto r = words(s, 20);
      for (size_t i = 0; i < 20; i++) ASSERT_EQ(r[i], sequence[5 * (point + i) + k]);
    };
    ASSERT_EQ(__kestLeapfrogStream(given.get(), 1, 0x7FFFFFFF), 0);
    expect(given, 2, 1);
    ASSERT_EQ(__kestLeapfrogStream(open.get(), 3, 0x7FFFFFFF), 0);
    expect(open, 1, 3);
    ASSERT_EQ(__kestLeapfrogStream(open.get(), 3, 0x7FFFFFFF), 0); // again: nothing
    expect(open, 21, 3);
    ASSERT_EQ(__kestLeapfrogStream(open.get(), 2, 0x7FFFFFFF), 0); // another one: from the next point
    expect(open, 42, 2);
    ASSERT_EQ(__kestSkipAheadStream(open.get(), 5 * 7), 0);
    expect(open, 69, 2);
  }
}

TEST(Sobol, Threads) {
  for (auto [dimen, points, threaded] : {std::tuple{40, 400, false},
                                         {100, 9000, false},
                                         {260, 8191, false},
                                         {250, 8192, true},
                                         {500, 256, true},
                                         {499, 256, false},
                                         {1000, 64, true},
                                         {65, 0x20000, true},
                                         {65, 0x20000 - 1, false},
                                         {4000, 8, true},
                                         {3999, 8, false}}) {
    std::vector<uint32_t> seeds = user(static_cast<uint32_t>(dimen), 4);
    uint32_t w = 1;
    for (int k = 0; k < 32 * dimen; k++) {
      w = w * 69069 + 1;
      seeds.push_back(w ^ w >> 7);
    }
    const int n = dimen * points + 3;
    auto serial = make(0x600000, seeds), parallel = copy(serial), values = copy(serial);
    thread_limit = 1;
    const auto expected = words(serial, n);
    thread_limit = 3;
    loops = 0;
    EXPECT_EQ(words(parallel, n), expected) << dimen << " " << points;
    EXPECT_EQ(loops, threaded ? 1 : 0) << dimen << " " << points;
    EXPECT_EQ(state(parallel)[0], state(serial)[0]);
    EXPECT_EQ(state(parallel)[3], state(serial)[3]);
    // Threads use all bits of a word, the serial loops the upper 31; the tail of 3 is always serial.
    const auto got = doubles(values, n, -1, 2);
    for (int k = 0; k < n; k++)
      ASSERT_EQ(got[k], threaded && k < n - 3 ? expected[k] * (3.0 * 0x1p-32) + -1
                                              : static_cast<int32_t>(expected[k] >> 1) * (3.0 * 0x1p-31) + -1)
          << k;
    thread_limit = 1;
  }
}

}
