// 128-bit counters of four words, least significant first: skipping ahead by addition, and the output loop of a cipher.
#pragma once

#include "random/streams/maps.h"

namespace tarn::random {

__extension__ typedef unsigned __int128 Counter;

inline void add_to_counter(uint32_t counter[4], Counter count) {
  Counter value = 0;
  for (int i = 3; i >= 0; i--) value = value << 32 | counter[i];
  value += count;
  for (int i = 0; i < 4; i++, value >>= 32) counter[i] = static_cast<uint32_t>(value);
}

// Moves a counter stream on by a count of up to three limbs; further ones have no place in a 128-bit counter of blocks
// of four words. State has counter, block and left; next_block makes the block of the counter and moves the counter on.
template <class State> void skip_words(State& s, int32_t limbs, const uint64_t* count, void (*next_block)(State&)) {
  uint64_t d[3] = {};
  for (int32_t i = 0; i < limbs && i < 3; i++) d[i] = count[i];
  if (d[1] == 0 && d[2] == 0 && d[0] <= s.left) {
    s.left -= static_cast<uint32_t>(d[0]);
    return;
  }
  // d - left words beyond the block, of which the last lies in the block (d - left - 1) / 4 from the counter on
  auto subtract = [&](uint64_t amount) {
    const bool borrow = d[0] < amount;
    d[0] -= amount;
    if (borrow && d[1]-- == 0) d[2]--;
  };
  subtract(s.left);
  const uint32_t left = static_cast<uint32_t>(-d[0]) & 3;
  subtract(1);
  const uint64_t low = d[0] >> 2 | d[1] << 62, high = d[1] >> 2 | d[2] << 62;
  add_to_counter(s.counter, static_cast<Counter>(high) << 64 | low);
  next_block(s);
  s.left = left;
}

// n outputs: the words left in the block, whole groups of blocks, and the start of one more block. A Cipher is made from
// the state and has kGroup, the words of a group, and groups(counter, to, count), which moves the counter on.
template <class Cipher, class State, class Map>
void generate_blocks(State& state, int64_t n, Map map, void (*next_block)(State&)) {
  State s = state; // the output may be anywhere, but not here
  int64_t k = 0;
  for (; k < n && s.left > 0; s.left--) map.put1(k++, s.block[4 - s.left]);
  const Cipher cipher(s);
  constexpr bool kInPlace = __is_same(Map, Words); // else by way of a buffer
  constexpr int64_t kGroup = Cipher::kGroup, kBuffer = 512 / kGroup * kGroup;
  uint32_t buffer[kInPlace ? 1 : kBuffer];
  for (int64_t count; (count = (n - k) / kGroup * kGroup) > 0; k += count) {
    if constexpr (kInPlace) {
      cipher.groups(s.counter, Words(map.r + k), count / kGroup);
    } else {
      if (count > kBuffer) count = kBuffer;
      cipher.groups(s.counter, Words(buffer), count / kGroup);
      for (int64_t i = 0; i < count; i += 4) map.put4(k + i, load4(buffer + i));
    }
  }
  while (k < n) {
    next_block(s);
    for (s.left = 4; k < n && s.left > 0; s.left--) map.put1(k++, s.block[4 - s.left]);
  }
  state = s;
}

}
