// Abstract streams: a circular buffer and a caller's function.
#include "random/streams.h"
#include "support/failing_allocator.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tarn::test;

namespace {

// The caller's side: counts up, and records what it was asked.
struct Caller {
  uint32_t next = 0;
  int32_t give = 0; // 0: all that may be renewed; otherwise at most so many
  int32_t answer = INT32_MIN;
  std::vector<std::vector<int32_t>> calls;
} caller;

template <class Value>
int32_t update(tarn_stream*, int32_t* n, Value* buffer, int32_t* nmin, int32_t* nmax, int32_t* idx) {
  caller.calls.push_back({*n, *nmin, *nmax, *idx});
  if (caller.answer != INT32_MIN) return caller.answer;
  const int32_t count = caller.give > 0 ? std::min(caller.give, *nmax) : *nmax;
  for (int32_t k = 0; k < count; k++) buffer[(*idx + k) % *n] = static_cast<Value>(caller.next++);
  return count;
}

class Abstract : public testing::Test {
protected:
  void SetUp() override { caller = {}; }
};

std::vector<uint32_t> counting(uint32_t from, uint32_t n) {
  std::vector<uint32_t> r;
  for (uint32_t k = 0; k < n; k++) r.push_back(from + k);
  return r;
}

TEST_F(Abstract, Makers) {
  uint32_t words4[4];
  double d4[4];
  float s4[4];
  auto* const marker = reinterpret_cast<tarn_stream*>(64);
  tarn_stream* out = marker;
  EXPECT_EQ(__kestiNewAbstractStream(&out, 0, words4, update<uint32_t>), -3);
  EXPECT_EQ(__kestiNewAbstractStream(&out, 4, nullptr, update<uint32_t>), -3);
  EXPECT_EQ(__kestiNewAbstractStream(&out, 4, words4, nullptr), -3);
  EXPECT_EQ(__kestdNewAbstractStream(&out, 4, d4, 1, 1, update<double>), -3);
  EXPECT_EQ(__kestdNewAbstractStream(&out, 4, d4, NAN, 1, update<double>), -3);
  EXPECT_EQ(__kestdNewAbstractStream(&out, 0, d4, 0, 1, update<double>), -3);
  EXPECT_EQ(__kestsNewAbstractStream(&out, 4, s4, 0, NAN, update<float>), -3);
  EXPECT_EQ(__kestsNewAbstractStream(&out, 4, s4, 2, 1, update<float>), -3);
  EXPECT_EQ(out, marker);
  EXPECT_EQ(for_each_allocation_failure([&](int64_t k) {
              tarn_stream* made = marker;
              EXPECT_EQ(__kestdNewAbstractStream(&made, 4, d4, 0, 1, update<double>), k == 0 ? -4 : 0);
              EXPECT_EQ(made == nullptr, k == 0);
              if (made) __kestDeleteStream(&made);
            }),
            1);
}

TEST_F(Abstract, RecordLayout) {
  double d4[4];
  tarn_stream* out;
  ASSERT_EQ(__kestdNewAbstractStream(&out, 4, d4, -1, 2, update<double>), 0);
  StreamPtr stream(out);
  const auto* at = reinterpret_cast<const char*>(out);
  double a, b;
  void* buffer;
  std::memcpy(&a, at + 32, 8), std::memcpy(&b, at + 40, 8), std::memcpy(&buffer, at + 48, 8);
  EXPECT_EQ(out->brng, 0xB00000);
  EXPECT_EQ(state(stream)[0], 4u);
  EXPECT_EQ(state(stream)[1], 0u);
  EXPECT_EQ(state(stream)[2], 4u);
  EXPECT_EQ(a, -1);
  EXPECT_EQ(b, 2);
  EXPECT_EQ(buffer, d4);
}

// The bytes of a record between its fields go into images; they must not be what the stack held.
[[gnu::noinline]] void fill_stack() {
  volatile unsigned char block[16384];
  for (volatile unsigned char& byte : block) byte = 0xA5;
}

TEST_F(Abstract, RecordsHaveNoBytesOfTheStack) {
  uint32_t w[4];
  double d[4];
  float s[4];
  tarn_stream* out[3];
  fill_stack();
  ASSERT_EQ(__kestiNewAbstractStream(&out[0], 4, w, update<uint32_t>), 0);
  fill_stack();
  ASSERT_EQ(__kestdNewAbstractStream(&out[1], 4, d, 0, 1, update<double>), 0);
  fill_stack();
  ASSERT_EQ(__kestsNewAbstractStream(&out[2], 4, s, 0, 1, update<float>), 0);
  const int between[] = {28, 28, 36};
  for (int k = 0; k < 3; k++) {
    StreamPtr stream(out[k]);
    std::vector<unsigned char> image(static_cast<size_t>(__kestGetStreamSize(out[k])));
    ASSERT_EQ(__kestSaveStreamM(out[k], image.data()), 0);
    const auto at = image.begin() + 4 + between[k]; // an image's header is 4 bytes longer than a record's
    EXPECT_EQ(std::vector<unsigned char>(at, at + 4), std::vector<unsigned char>(4)) << k;
  }
}

TEST_F(Abstract, RenewsAndWraps) {
  uint32_t buffer[5];
  tarn_stream* out;
  ASSERT_EQ(__kestiNewAbstractStream(&out, 5, buffer, update<uint32_t>), 0);
  StreamPtr stream(out);
  EXPECT_EQ(words(stream, 3), counting(0, 3)); // calls update at once
  ASSERT_EQ(caller.calls.size(), 1u);
  EXPECT_EQ(caller.calls[0], (std::vector<int32_t>{5, 3, 5, 0}));
  EXPECT_EQ(words(stream, 2), counting(3, 2));
  EXPECT_EQ(caller.calls.size(), 1u);
  EXPECT_EQ(words(stream, 12), counting(5, 12)); // longer than the buffer
  EXPECT_EQ(caller.calls.size(), 4u);
  EXPECT_EQ(caller.calls[1], (std::vector<int32_t>{5, 5, 5, 0}));
  caller.give = 2; // fewer than asked for
  EXPECT_EQ(words(stream, 9), counting(17, 9));
  EXPECT_EQ(words(stream, 0), counting(0, 0));
  auto other = copy(stream); // shares the buffer, with its own place in it
  EXPECT_EQ(words(stream, 1), counting(26, 1));
  EXPECT_EQ(words(other, 1), counting(28, 1)); // it finds its buffer used up as well
}

// Renewals of any size, of less than was asked for too, never let an old number through.
TEST_F(Abstract, RenewalsOfAnySize) {
  static std::vector<uint32_t> buffer;
  static uint32_t given, random;
  static const auto below = [](uint32_t n) { return (random = random * 1664525 + 1013904223, (random >> 8) % n); };
  random = 1;
  const tarn_i_update renew = [](tarn_stream*, int32_t* n, uint32_t* r, int32_t* nmin, int32_t* nmax, int32_t* idx) {
    const auto most = static_cast<uint32_t>(*nmax);
    EXPECT_TRUE(*nmin >= 1 && *nmin <= *nmax && *nmax <= *n);
    const uint32_t count = 1 + below(most), length = static_cast<uint32_t>(*n);
    for (uint32_t k = 0; k < most; k++)
      r[(static_cast<uint32_t>(*idx) + k) % length] = k < count ? given++ : 0xFFFFFFFF; // what is not new is spoilt
    *n = *nmin = *nmax = *idx = -1;                                                     // these are the function's own
    return static_cast<int32_t>(count);
  };
  for (uint32_t length : {1u, 2u, 3u, 7u, 64u, 65u}) {
    buffer.assign(length, 0xFFFFFFFF);
    given = 0;
    tarn_stream* out;
    ASSERT_EQ(__kestiNewAbstractStream(&out, static_cast<int32_t>(length), buffer.data(), renew), 0);
    StreamPtr stream(out);
    for (uint32_t call = 0, taken = 0; call < 300; call++) {
      const uint32_t n = below(call % 3 == 0 ? 3 : 3 * length + 3);
      ASSERT_EQ(words(stream, static_cast<int32_t>(n)), counting(taken, n)) << length << " call " << call;
      taken += n;
      if (call % 16 == 0) stream = copy(stream);
    }
  }
}

TEST_F(Abstract, FailingUpdates) {
  uint32_t buffer[5] = {};
  tarn_stream* out;
  ASSERT_EQ(__kestiNewAbstractStream(&out, 5, buffer, update<uint32_t>), 0);
  StreamPtr stream(out);
  words(stream, 2);
  const std::vector<uint32_t> before(state(stream), state(stream) + 3);
  uint32_t r[9] = {};
  for (auto [answer, status] : {std::pair{-1, -1120}, {6, -1120}, {0, -1121}}) {
    caller.answer = answer;
    EXPECT_EQ(__kestiBRngiAbstract(stream.get(), 9, r), status);
    EXPECT_EQ(r[2], 4u); // what was there came out
    EXPECT_EQ(std::vector<uint32_t>(state(stream), state(stream) + 3), before);
  }
  void* null = nullptr;
  std::memcpy(reinterpret_cast<char*>(out) + 32, &null, sizeof null);
  EXPECT_EQ(__kestiBRngiAbstract(stream.get(), 1, r), -5);
}

TEST_F(Abstract, MappingAndWrongForms) {
  double d[3];
  float s[3];
  uint32_t w[3];
  tarn_stream* out;
  ASSERT_EQ(__kestdNewAbstractStream(&out, 3, d, 0, 8, update<double>), 0);
  StreamPtr dstream(out);
  for (int k = 0; double x : doubles(dstream, 6, -1, 1)) EXPECT_EQ(x, (k++ - 0.0) * (2.0 / 8) + -1);
  caller = {};
  ASSERT_EQ(__kestsNewAbstractStream(&out, 3, s, 1, 4, update<float>), 0);
  StreamPtr sstream(out);
  for (int k = 0; float x : singles(sstream, 6, -1, 1))
    EXPECT_EQ(x, (static_cast<float>(k++) - 1.0f) * (2.0f / 3.0f) + -1.0f);
  ASSERT_EQ(__kestiNewAbstractStream(&out, 3, w, update<uint32_t>), 0);
  StreamPtr wstream(out);
  double dr = 7;
  float sr = 7;
  uint32_t wr = 7;
  EXPECT_EQ(__kestiBRngdAbstract(dstream.get(), 1, &wr), -1122);
  EXPECT_EQ(__kestsBRngdAbstract(dstream.get(), 1, &sr, 0, 1), -1122);
  EXPECT_EQ(__kestiBRngsAbstract(sstream.get(), 1, &wr), -1122);
  EXPECT_EQ(__kestdBRngsAbstract(sstream.get(), 1, &dr, 0, 1), -1122);
  EXPECT_EQ(__kestdBRngiAbstract(wstream.get(), 1, &dr, 0, 1), -1122);
  EXPECT_EQ(__kestsBRngiAbstract(wstream.get(), 1, &sr, 0, 1), -1122);
  EXPECT_TRUE(dr == 7 && sr == 7 && wr == 7);
  EXPECT_EQ(__kestLeapfrogStream(wstream.get(), 0, 2), -1002);
  EXPECT_EQ(__kestSkipAheadStream(dstream.get(), 2), -1003);
  const uint64_t limb = 1;
  EXPECT_EQ(__kestSkipAheadStreamEx(sstream.get(), 1, &limb), -1004);
  EXPECT_EQ(properties(wstream).InitStream(7, wstream.get(), 1, &limb), -2);
}

}
