// Copying bytes and filling them with a repeated 16-byte pattern, the two kernels behind Copy, Set and Zero.
#pragma once

#include <emmintrin.h>
#include <stdint.h>

namespace tarn::stats::primitives {

// Large transfers that would only push the caller's data out of the cache go around it.
constexpr int64_t fill_around_cache_from = 0x80001;
constexpr int64_t copy_around_cache_from = 0x100000;
constexpr int64_t copy_strip = 0x40000;  // read into the cache as a whole before it is written, so that reads and
constexpr int64_t touch_stride = 0x1000; // writes do not alternate; one read a page wakes the prefetcher

// destination and source must not overlap. No alignment is asked; counts below 1 do nothing.
void copy(const uint8_t* source, uint8_t* destination, int64_t bytes);

// Repeats the pattern from the first byte on.
void fill(uint8_t* destination, int64_t bytes, __m128i pattern);

// The pattern of an element of 1, 2, 4, 8 or 16 bytes.
template <class T> __m128i pattern_of(const T& value) {
  static_assert(16 % sizeof(T) == 0);
  alignas(16) uint8_t bytes[16];
  for (unsigned at = 0; at < 16; at += sizeof(T)) __builtin_memcpy(bytes + at, &value, sizeof(T));
  return _mm_load_si128(reinterpret_cast<const __m128i*>(bytes));
}

}
