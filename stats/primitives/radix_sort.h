// Least-significant-digit radix sort of integers and IEEE floats, as values and by index.
//
// An order-preserving map turns every element into an unsigned key (Knuth, The Art of Computer Programming vol. 3,
// 5.2.5; the map of floats by the sign bit is Herf's, Radix Tricks, 2001). One pass counts all digits at once, then
// each digit costs one stable scatter between the array and the scratch. A digit in which all keys agree orders
// nothing, and its scatter is left out.
//
// Eight-byte keys are first sorted by their upper digits alone, which in most data tells all but a few elements apart;
// what they leave together is put in order on the way back. Only data that the upper digits cannot tell apart pay for
// the lower ones.
#pragma once

#include <limits.h>
#include <stdint.h>

#include "stats/primitives/copy_fill.h"

namespace tarn::stats::primitives {

struct Digit {
  int shift, bits;
};

// The digits of a key of N bytes. Eleven bits keep the 2048 open ends of a scatter within the reach of the second-level
// cache and its translation buffer.
template <int Bytes> struct Digits;
template <> struct Digits<1> { static constexpr Digit plan[] = {{0, 8}}; };
template <> struct Digits<2> { static constexpr Digit plan[] = {{0, 8}, {8, 8}}; };
template <> struct Digits<4> { static constexpr Digit plan[] = {{0, 11}, {11, 11}, {22, 10}}; };
template <> struct Digits<8> {
  static constexpr Digit plan[] = {{0, 11}, {11, 11}, {22, 10}, {32, 11}, {43, 11}, {54, 10}};
};

template <int Bytes> struct UnsignedOf;
// Keys are read and written where floats stand, so they may alias.
template <> struct UnsignedOf<1> { typedef uint8_t type; };
template <> struct UnsignedOf<2> { typedef uint16_t __attribute__((may_alias)) type; };
template <> struct UnsignedOf<4> { typedef uint32_t __attribute__((may_alias)) type; };
template <> struct UnsignedOf<8> { typedef uint64_t __attribute__((may_alias)) type; };

// Elements as keys: encode(x) < encode(y) as unsigned integers when x stands before y.
template <class T, bool Descending> struct Keys {
  using Key = typename UnsignedOf<sizeof(T)>::type;
  static constexpr int width = sizeof(T) * 8;
  static constexpr Key top = static_cast<Key>(Key(1) << (width - 1));
  static constexpr bool is_float = __is_same(T, float) || __is_same(T, double);
  static constexpr bool is_signed = T(-1) < T(0);

  static Key encode(Key bits) {
    if constexpr (is_float) {
      using Signed = __typeof__(Key() + 0u);
      const Signed all_if_negative = Signed(0) - Signed(bits >> (width - 1));
      bits ^= static_cast<Key>(all_if_negative | top); // negative: all bits; else the sign bit
    } else if constexpr (is_signed) {
      bits ^= top;
    }
    return Descending ? static_cast<Key>(~bits) : bits;
  }
  static Key decode(Key key) {
    if constexpr (Descending) key = static_cast<Key>(~key);
    if constexpr (is_float) {
      using Signed = __typeof__(Key() + 0u);
      const Signed all_if_clear = Signed(key >> (width - 1)) - Signed(1);
      return key ^ static_cast<Key>(all_if_clear | top);
    } else if constexpr (is_signed) {
      return key ^ top;
    }
    return key;
  }
  static constexpr auto& plan = Digits<sizeof(T)>::plan;
  static constexpr int passes = sizeof(plan) / sizeof(plan[0]);
  static constexpr int histogram_words() {
    int words = 0;
    for (Digit digit : plan) words += 1 << digit.bits;
    return words;
  }
  static constexpr int histogram_start(int pass) {
    int start = 0;
    for (int before = 0; before < pass; ++before) start += 1 << plan[before].bits;
    return start;
  }
};

template <int Shift, int Bits, class Key> inline uint32_t digit_of(Key key) {
  return static_cast<uint32_t>(key >> Shift) & ((1u << Bits) - 1);
}

template <class K, int Pass = 0> inline void count_digits(typename K::Key key, uint32_t* histograms) {
  if constexpr (Pass < K::passes) {
    ++histograms[K::histogram_start(Pass) + digit_of<K::plan[Pass].shift, K::plan[Pass].bits>(key)];
    count_digits<K, Pass + 1>(key, histograms);
  }
}

// Counts become the places of each digit's first element. All histograms advance in one loop, their chains of additions
// side by side.
template <class K> void prefix_sums(uint32_t* histograms) {
  uint32_t sums[K::passes] = {};
  constexpr int longest = 1 << K::plan[0].bits;
  for (int value = 0; value < longest; ++value) {
    for (int pass = 0; pass < K::passes; ++pass) {
      if (value >> K::plan[pass].bits) continue;
      uint32_t& word = histograms[K::histogram_start(pass) + value];
      const uint32_t count = word;
      word = sums[pass];
      sums[pass] += count;
    }
  }
}

// Which scatters are needed: those of a digit that differs somewhere. Their number must have the parity of all passes,
// so that the last one ends in the array; a copying pass is put in where it has not.
template <class K> int needed_passes(const uint32_t* histograms, typename K::Key first, uint32_t n, bool* needed) {
  int count = 0;
  for (int pass = 0; pass < K::passes; ++pass) {
    const Digit digit = K::plan[pass];
    const uint32_t value = static_cast<uint32_t>(first >> digit.shift) & ((1u << digit.bits) - 1);
    needed[pass] = histograms[K::histogram_start(pass) + value] != n;
    count += needed[pass];
  }
  if (count > 0 && (K::passes - count) % 2 != 0) {
    int pass = 0;
    while (needed[pass]) ++pass;
    needed[pass] = true;
    ++count;
  }
  return count;
}

template <class K, int Pass, bool Encode, bool Decode>
__attribute__((noinline)) void scatter(const typename K::Key* from, typename K::Key* to, uint32_t* place, uint32_t n) {
  using Key = typename K::Key;
  constexpr Digit digit = K::plan[Pass];
  const auto put = [&](Key key) {
    if constexpr (Encode) key = K::encode(key);
    uint32_t& next = place[digit_of<digit.shift, digit.bits>(key)];
    to[next] = Decode ? K::decode(key) : key;
    ++next;
  };
  uint32_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const Key a = from[i], b = from[i + 1], c = from[i + 2], d = from[i + 3];
    put(a);
    put(b);
    put(c);
    put(d);
  }
  for (; i < n; ++i) put(from[i]);
}

template <class K, int Pass, bool Encode>
void scatter_pass(const typename K::Key* from, typename K::Key* to, uint32_t* histograms, uint32_t n, bool last) {
  uint32_t* place = histograms + K::histogram_start(Pass);
  if (last) {
    scatter<K, Pass, Encode, true>(from, to, place, n);
  } else {
    scatter<K, Pass, Encode, false>(from, to, place, n);
  }
}

template <class K, int Pass = 0>
void scatter_all(typename K::Key* from, typename K::Key* to, uint32_t* histograms, uint32_t n, const bool* needed,
                 int left, bool encoded) {
  if constexpr (Pass < K::passes) {
    if (needed[Pass]) {
      --left;
      if (encoded) {
        scatter_pass<K, Pass, false>(from, to, histograms, n, left == 0);
      } else {
        scatter_pass<K, Pass, true>(from, to, histograms, n, left == 0);
      }
      scatter_all<K, Pass + 1>(to, from, histograms, n, needed, left, true);
    } else {
      scatter_all<K, Pass + 1>(from, to, histograms, n, needed, left, encoded);
    }
  }
}

inline void clear_histograms(uint32_t* histograms, int words) {
  fill(reinterpret_cast<uint8_t*>(histograms), int64_t(words) * 4, _mm_setzero_si128());
}

// For arrays too short to pay for the histograms.
constexpr int32_t insertion_below = 32;
template <class K> void insertion_sort(typename K::Key* keys, int32_t n) {
  using Key = typename K::Key;
  for (int32_t i = 0; i < n; ++i) keys[i] = K::encode(keys[i]);
  for (int32_t i = 1; i < n; ++i) {
    const Key key = keys[i];
    int32_t at = i;
    for (; at > 0 && keys[at - 1] > key; --at) keys[at] = keys[at - 1];
    keys[at] = key;
  }
  for (int32_t i = 0; i < n; ++i) keys[i] = K::decode(keys[i]);
}

// All digits, from the least significant. An even number of passes starts from the array and maps the elements in its
// first scatter, unless they are keys already; an odd number starts from the scratch, where the counting pass leaves
// the keys.
template <class K, bool Encoded> void sort_all_digits(typename K::Key* array, typename K::Key* scratch, uint32_t n) {
  using Key = typename K::Key;
  alignas(64) uint32_t histograms[K::histogram_words()];
  clear_histograms(histograms, K::histogram_words());
  const auto key_of = [&](uint32_t i) { return Encoded ? array[i] : K::encode(array[i]); };
  const Key first = key_of(0);
  constexpr bool even = K::passes % 2 == 0;
  for (uint32_t i = 0; i < n; ++i) {
    const Key key = key_of(i);
    if constexpr (!even) scratch[i] = key;
    count_digits<K>(key, histograms);
  }
  bool needed[K::passes];
  const int left = needed_passes<K>(histograms, first, n, needed);
  prefix_sums<K>(histograms);
  if (Encoded && left == 0) {
    for (uint32_t i = 0; i < n; ++i) array[i] = K::decode(array[i]);
  } else if constexpr (even) {
    scatter_all<K>(array, scratch, histograms, n, needed, left, Encoded);
  } else {
    scatter_all<K>(scratch, array, histograms, n, needed, left, true);
  }
}

// The upper half of eight-byte keys as keys of their own. Digits of eight bits: a pass more, but 256 open ends stay in
// the first-level cache and its translation buffer even while other programs use the same core.
template <class T, bool Descending> struct UpperHalf : Keys<T, Descending> {
  using Base = Keys<T, Descending>;
  static constexpr Digit plan[] = {{32, 8}, {40, 8}, {48, 8}, {56, 8}};
  static constexpr int passes = 4;
  static constexpr int histogram_words() { return passes << 8; }
  static constexpr int histogram_start(int pass) { return pass << 8; }
  static typename Base::Key decode(typename Base::Key key) { return key; } // done on the last way over the keys
};

enum class UpperHalfSort { done, not_worth_it, gave_up };

// Sorts the keys by the upper half, then goes over the runs of equal upper halves, puts each in order and turns it back
// into elements. Not worth it, with nothing changed, when all upper halves are equal. Gives up when different keys share an upper half
// too often; the array then holds all the keys.
template <class T, bool Descending>
UpperHalfSort sort_upper_half(typename Keys<T, Descending>::Key* array, typename Keys<T, Descending>::Key* scratch,
                              uint32_t n) {
  using K = UpperHalf<T, Descending>;
  using Key = typename K::Key;
  alignas(64) uint32_t histograms[K::histogram_words()];
  clear_histograms(histograms, K::histogram_words());
  for (uint32_t i = 0; i < n; ++i) count_digits<K>(K::encode(array[i]), histograms);
  bool needed[K::passes];
  const int left = needed_passes<K>(histograms, K::encode(array[0]), n, needed);
  if (left == 0) return UpperHalfSort::not_worth_it;
  prefix_sums<K>(histograms);
  scatter_all<K>(array, scratch, histograms, n, needed, left, false); // an even number, so it ends in the array

  constexpr uint32_t short_run = 16, longest_run = 64; // for insertion
  uint32_t in_long_runs = 0;
  for (uint32_t start = 0; start < n;) {
    const Key first = array[start];
    uint32_t end = start + 1;
    Key differing = 0;
    for (; end < n && (array[end] ^ first) >> 32 == 0; ++end) differing |= array[end] ^ first;
    if (differing != 0) {
      const uint32_t length = end - start;
      if (length > short_run) in_long_runs += length;
      if (length > longest_run || in_long_runs > n / 16) {
        for (uint32_t i = 0; i < start; ++i) array[i] = K::encode(array[i]);
        return UpperHalfSort::gave_up;
      }
      for (uint32_t i = start + 1; i < end; ++i) {
        const Key key = array[i];
        uint32_t at = i;
        for (; at > start && array[at - 1] > key; --at) array[at] = array[at - 1];
        array[at] = key;
      }
    }
    for (; start < end; ++start) array[start] = Keys<T, Descending>::decode(array[start]);
  }
  return UpperHalfSort::done;
}

template <class T, bool Descending>
void radix_sort(typename Keys<T, Descending>::Key* array, typename Keys<T, Descending>::Key* scratch, int32_t length) {
  using K = Keys<T, Descending>;
  if (length < insertion_below) return insertion_sort<K>(array, length);
  const uint32_t n = static_cast<uint32_t>(length);
  if constexpr (sizeof(T) == 8) {
    const UpperHalfSort outcome = sort_upper_half<T, Descending>(array, scratch, n);
    if (outcome == UpperHalfSort::done) return;
    if (outcome == UpperHalfSort::gave_up) return sort_all_digits<K, true>(array, scratch, n);
  }
  sort_all_digits<K, false>(array, scratch, n);
}

// One byte: nothing to scatter, the counts say all.
template <bool Descending> void counting_sort(uint8_t* array, int32_t length) {
  uint32_t counts[256];
  clear_histograms(counts, 256);
  for (int32_t i = 0; i < length; ++i) ++counts[array[i]];
  for (int value = 0; value < 256; ++value) {
    const uint8_t element = static_cast<uint8_t>(Descending ? 255 - value : value);
    const uint32_t run = counts[element];
    if (run >= 16) {
      fill(array, run, _mm_set1_epi8(static_cast<char>(element)));
      array += run;
    } else {
      for (uint32_t i = 0; i < run; ++i) *array++ = element;
    }
  }
}

// The key of element i, wherever it stands; keys are read, never written.
template <class K> inline typename K::Key key_at(const uint8_t* keys, int64_t stride, int64_t i) {
  typename K::Key bits;
  __builtin_memcpy(&bits, keys + i * stride, sizeof bits);
  return K::encode(bits);
}

template <class K, int Pass>
void scatter_indices(const uint8_t* keys, int64_t stride, int32_t* output, int32_t* scratch, uint32_t* histograms,
                     int32_t n) {
  if constexpr (Pass < K::passes) {
    constexpr bool to_output = (K::passes - Pass) % 2 != 0; // the last pass writes the output
    int32_t* to = to_output ? output : scratch;
    const int32_t* from = to_output ? scratch : output;
    uint32_t* place = histograms + K::histogram_start(Pass);
    for (int32_t i = 0; i < n; ++i) {
      const int32_t index = Pass == 0 ? i : from[i];
      to[place[digit_of<K::plan[Pass].shift, K::plan[Pass].bits>(key_at<K>(keys, stride, index))]++] = index;
    }
    scatter_indices<K, Pass + 1>(keys, stride, output, scratch, histograms, n);
  }
}

template <class T, bool Descending>
void radix_sort_index(const uint8_t* keys, int64_t stride, int32_t* output, int32_t* scratch, int32_t n) {
  using K = Keys<T, Descending>;
  alignas(64) uint32_t histograms[K::histogram_words()];
  clear_histograms(histograms, K::histogram_words());
  for (int32_t i = 0; i < n; ++i) count_digits<K>(key_at<K>(keys, stride, i), histograms);
  prefix_sums<K>(histograms);
  scatter_indices<K, 0>(keys, stride, output, scratch, histograms, n);
}

}
