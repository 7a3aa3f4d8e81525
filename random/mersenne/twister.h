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

  // The whole ring made anew, in place. The words before the turn that do not fill a vector are made one by one: so far
  // words beyond it are read as they were stored, in the same vectors, which is what a processor can forward.
  static void regenerate(uint32_t x[N], uint32_t a) {
    range<0, N - M, M>(x, a);
    range<N - M, N - 1, M - N>(x, a);
    step(x, N - 1, a);
  }

  // Words from .. to - 1, whose far words stand `far` places on.
  template <int from, int to, int far> static void range(uint32_t x[N], uint32_t a) {
    constexpr int kWhole = from + (to - from) / 4 * 4;
    const UInt4 matrix = all4(a);
#pragma GCC unroll 2
    for (int64_t k = from; k < kWhole; k += 4)
      store4(x + k, next(load4(x + k), load4(x + k + 1), load4(x + k + far), matrix));
    for (int k = kWhole; k < to; k++) x[k] = next(x[k], x[k + 1], x[k + far], a);
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

  // Tempering in a pass of its own: together with the recurrence or the conversion it would need more registers than
  // there are.
  template <class Temper> static void temper_words(uint32_t* to, const uint32_t* words, int64_t count, Temper temper) {
    const Words out(to);
    const int64_t whole = count & ~int64_t{3};
#pragma GCC unroll 2
    for (int64_t i = 0; i < whole; i += 4) out.put4(i, temper(load4(words + i)));
    for (int64_t i = whole; i < count; i++) out.put1(i, temper(words[i]));
  }

  // n outputs from a ring: what is left in it, whole regenerations, and the start of one more. They are tempered in their
  // place, if words are wanted, or in a buffer of several rings, to be converted from there. temper(word or four words).
  template <class Map, class Temper>
  static void generate(uint32_t ring[N], int32_t& stored_index, uint32_t a, int64_t n, Map map, Temper temper) {
    int64_t index = stored_index;
    constexpr bool kInPlace = __is_same(Map, Words);
    constexpr int64_t kBuffer = N * (N < 512 ? 512 / N : 1);
    uint32_t buffer[kInPlace ? 1 : kBuffer];
    for (int64_t k = 0; k < n;) {
      const int64_t end = kInPlace || n - k < kBuffer ? n : k + kBuffer;
      int64_t at = k;
      while (at < end) {
        if (index == N) {
          regenerate(ring, a);
          index = 0;
        }
        const int64_t count = end - at < N - index ? end - at : N - index;
        uint32_t* to;
        if constexpr (kInPlace)
          to = reinterpret_cast<uint32_t*>(map.r + at);
        else
          to = buffer + (at - k);
        if (count == N && index == 0)
          temper_words(to, ring, N, temper);
        else
          temper_words(to, ring + index, count, temper);
        index += count;
        at += count;
      }
      if constexpr (!kInPlace) put_words(map, k, buffer, end - k);
      k = end;
    }
    stored_index = static_cast<int32_t>(index);
  }
};

}
