#include "stats/primitives/copy_fill.h"

#include "service/cpu.h"

namespace tarn::stats::primitives {
namespace {

__m128i load(const uint8_t* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }
void store(uint8_t* at, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(at), value); }

template <bool AroundCache> void store_aligned(uint8_t* at, __m128i value) {
  if constexpr (AroundCache) {
    _mm_stream_si128(reinterpret_cast<__m128i*>(at), value);
  } else {
    _mm_store_si128(reinterpret_cast<__m128i*>(at), value);
  }
}

bool worth_going_around(int64_t bytes, int64_t threshold) {
  if (bytes < threshold) return false;
  const int64_t cache = tarn::service::last_level_cache_bytes();
  return cache > 0 && bytes >= cache / 2;
}

int64_t bytes_to_alignment(const uint8_t* at) { return -reinterpret_cast<intptr_t>(at) & 15; }

// Fewer than 16 bytes, by stores of 8, 4, 2 and 1. next(at) gives the source of the bytes from offset `at` on.
template <class Source> void small(uint8_t* destination, int64_t bytes, Source next) {
  int64_t at = 0;
  if (bytes & 8) __builtin_memcpy(destination, next(0), 8), at = 8;
  if (bytes & 4) __builtin_memcpy(destination + at, next(at), 4), at += 4;
  if (bytes & 2) __builtin_memcpy(destination + at, next(at), 2), at += 2;
  if (bytes & 1) __builtin_memcpy(destination + at, next(at), 1);
}

// From an aligned destination; a multiple of 16 bytes.
template <bool AroundCache> void copy_vectors(const uint8_t* source, uint8_t* destination, int64_t bytes) {
  int64_t at = 0;
  for (; at + 64 <= bytes; at += 64) {
    const __m128i a = load(source + at), b = load(source + at + 16);
    const __m128i c = load(source + at + 32), d = load(source + at + 48);
    store_aligned<AroundCache>(destination + at, a);
    store_aligned<AroundCache>(destination + at + 16, b);
    store_aligned<AroundCache>(destination + at + 32, c);
    store_aligned<AroundCache>(destination + at + 48, d);
  }
  for (; at < bytes; at += 16) store_aligned<AroundCache>(destination + at, load(source + at));
}

void copy_strips(const uint8_t* source, uint8_t* destination, int64_t bytes) {
  for (int64_t start = 0; start < bytes; start += copy_strip) {
    const int64_t length = bytes - start < copy_strip ? bytes - start : copy_strip;
    for (int64_t at = 0; at < length; at += touch_stride)
      static_cast<void>(*static_cast<const volatile uint8_t*>(source + start + at));
    copy_vectors<true>(source + start, destination + start, length);
  }
  _mm_sfence();
}

template <bool AroundCache> void fill_vectors(uint8_t* destination, int64_t bytes, __m128i pattern) {
  int64_t at = 0;
  for (; at + 64 <= bytes; at += 64) {
    store_aligned<AroundCache>(destination + at, pattern);
    store_aligned<AroundCache>(destination + at + 16, pattern);
    store_aligned<AroundCache>(destination + at + 32, pattern);
    store_aligned<AroundCache>(destination + at + 48, pattern);
  }
  for (; at < bytes; at += 16) store_aligned<AroundCache>(destination + at, pattern);
  if (AroundCache) _mm_sfence();
}

}

// The first and the last 16 bytes are stored unaligned, so that what is left between them is aligned vectors.
void copy(const uint8_t* source, uint8_t* destination, int64_t bytes) {
  if (bytes < 16) {
    if (bytes > 0) small(destination, bytes, [&](int64_t at) { return source + at; });
    return;
  }
  const bool around = worth_going_around(bytes, copy_around_cache_from);
  const __m128i last = load(source + bytes - 16);
  store(destination, load(source));
  const int64_t head = bytes_to_alignment(destination), middle = (bytes - head) & ~int64_t(15);
  if (around) {
    copy_strips(source + head, destination + head, middle);
  } else {
    copy_vectors<false>(source + head, destination + head, middle);
  }
  store(destination + bytes - 16, last);
}

void fill(uint8_t* destination, int64_t bytes, __m128i pattern) {
  alignas(16) uint8_t twice[32]; // a read at offset k gives the pattern as it stands k bytes further on
  store(twice, pattern);
  store(twice + 16, pattern);
  if (bytes < 16) {
    if (bytes > 0) small(destination, bytes, [&](int64_t at) { return twice + at; });
    return;
  }
  store(destination, pattern);
  const int64_t head = bytes_to_alignment(destination), middle = (bytes - head) & ~int64_t(15);
  if (worth_going_around(bytes, fill_around_cache_from)) {
    fill_vectors<true>(destination + head, middle, load(twice + head));
  } else {
    fill_vectors<false>(destination + head, middle, load(twice + head));
  }
  store(destination + bytes - 16, load(twice + (bytes & 15)));
}

}
