// The twisted recurrence x[k + N] = x[k + M] xor ((upper bits of x[k] | lower R bits of x[k + 1]) >> 1) xor (a if that
// was odd), and the array seeding, shared by MT19937 and MT2203. The ring is made anew as a whole.
#pragma once

#include "random/streams/maps.h"

#include <string.h>

namespace tarn::random {

template <int N, int M, int R> struct Twister {
  static constexpr uint32_t kLower = (uint32_t{1} << R) - 1, kUpper = ~kLower;

  static uint32_t next(uint32_t here, uint32_t after, uint32_t far, uint32_t a) {
    const uint32_t y = (here & kUpper) | (after & kLower);
    return far ^ y >> 1 ^ (-(y & 1) & a);
  }

  static UInt4 next(UInt4 here, UInt4 after, UInt4 far, UInt4 a) {
    const UInt4 y = (here & kUpper) | (after & kLower);
    return far ^ y >> 1 ^ ((UInt4)((Int4)(y << 31) >> 31) & a);
  }

  // One step in a ring.
  static void step(uint32_t ring[N], int at, uint32_t a) {
    const int after = at + 1 < N ? at + 1 : 0, far = at + M < N ? at + M : at + M - N;
    ring[at] = next(ring[at], ring[after], ring[far], a);
  }

  static void regenerate(uint32_t ring[N], uint32_t a) {
    uint32_t line[N + N + 4];
    memcpy(line, ring, N * sizeof(uint32_t));
    run(line, N, a, [](int, UInt4) {});
    memcpy(ring, line + N, N * sizeof(uint32_t));
  }

  // Continues a line of words: from line[0 .. N) makes line[N .. N + count), and up to three words beyond, and hands
  // them over four at a time.
  template <class Use> static void run(uint32_t* line, int count, uint32_t a, Use use) {
    const UInt4 matrix = all4(a);
    for (int k = 0; k < count; k += 4) {
      const UInt4 w = next(load4(line + k), load4(line + k + 1), load4(line + k + M), matrix);
      store4(line + N + k, w);
      use(k, w);
    }
  }

  static void seed(uint32_t x[N], int32_t n, const uint32_t* seeds) {
    static const uint32_t one = 1;
    const uint32_t* key = n > 0 ? seeds : &one;
    const int length = n > 0 ? n : 1;
    x[0] = 19650218;
    for (uint32_t i = 1; i < N; i++) x[i] = 1812433253u * (x[i - 1] ^ x[i - 1] >> 30) + i;
    int i = 1, j = 0;
    auto wrap = [&] {
      if (++i < N) return;
      x[0] = x[N - 1];
      i = 1;
    };
    for (int k = length > N ? length : N; k > 0; k--) {
      x[i] = (x[i] ^ (x[i - 1] ^ x[i - 1] >> 30) * 1664525u) + key[j] + static_cast<uint32_t>(j);
      wrap();
      if (++j == length) j = 0;
    }
    for (int k = N - 1; k > 0; k--) {
      x[i] = (x[i] ^ (x[i - 1] ^ x[i - 1] >> 30) * 1566083941u) - static_cast<uint32_t>(i);
      wrap();
    }
    x[0] = 0x80000000;
  }

  // n outputs from a ring: what is left in it, whole regenerations several at a time, and the start of one more.
  // temper(word or four words).
  template <int Batch, class Map, class Temper>
  static void generate(uint32_t ring[N], int32_t& index, uint32_t a, int64_t n, const Map& map, Temper temper) {
    static_assert(Batch * N % 4 == 0, "a batch is whole vectors");
    auto put = [&](int64_t k, const uint32_t* words, int64_t count) {
      int64_t i = 0;
      for (; i + 4 <= count; i += 4) map.put4(k + i, temper(load4(words + i)));
      for (; i < count; i++) map.put1(k + i, temper(words[i]));
    };
    if (n <= 0) return;
    const int64_t left = N - index;
    if (n <= left) {
      put(0, ring + index, n);
      index += static_cast<int32_t>(n);
      return;
    }
    put(0, ring + index, left);
    int64_t k = left;
    constexpr int kOffset = (4 - N % 4) % 4; // stores of new words fall on multiples of four
    alignas(16) uint32_t buffer[kOffset + N + Batch * N + 4];
    uint32_t* line = buffer + kOffset;
    memcpy(line, ring, N * sizeof(uint32_t));
    for (; n - k >= Batch * N; k += Batch * N) {
      run(line, Batch * N, a, [&](int i, UInt4 w) { map.put4(k + i, temper(w)); });
      memcpy(line, line + Batch * N, N * sizeof(uint32_t));
    }
    index = N;
    while (k < n) {
      run(line, N, a, [](int, UInt4) {});
      memmove(line, line + N, N * sizeof(uint32_t));
      index = n - k < N ? static_cast<int32_t>(n - k) : N;
      put(k, line, index);
      k += index;
    }
    memcpy(ring, line, N * sizeof(uint32_t));
  }
};

}
