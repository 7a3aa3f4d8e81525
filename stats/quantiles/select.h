// Two neighbouring order statistics of an unsorted array, without sorting it.
//
// After Floyd and Rivest (Expected time bounds for selection, CACM 18, 1975): a sorted random sample gives two elements
// that most likely enclose the wanted ranks; one pass counts what lies below them and gathers what lies between, which
// is a small part, and quickselect finishes there. The pass has no branch that depends on the data. Elements are
// compared by the keys of the radix sort, so both routes order zeros and NaNs alike.
#pragma once

#include "stats/primitives/radix_sort.h"
#include "stats/quantiles/quicksort.h"
#include "stats/task.h"

namespace tarn::stats {

template <class Real> struct NeighbourPair {
  Real lower, upper; // of rank i, and of rank i + 1 or again i when that is the last
};

template <class Real> using RealKeys = primitives::Keys<Real, false>;

template <class Real> inline typename RealKeys<Real>::Key key_of(Real x) {
  typename RealKeys<Real>::Key bits;
  __builtin_memcpy(&bits, &x, sizeof bits);
  return RealKeys<Real>::encode(bits);
}
template <class Real> inline Real real_of(typename RealKeys<Real>::Key key) {
  key = RealKeys<Real>::decode(key);
  Real x;
  __builtin_memcpy(&x, &key, sizeof x);
  return x;
}

// An array of keys for the algorithms of quicksort.h.
template <class Real> struct KeyArray {
  typename RealKeys<Real>::Key* base;
  typename RealKeys<Real>::Key& operator[](int64_t i) const { return base[i]; }
};

constexpr int64_t sample_size = 1024, sample_above = 8192;

// buffer: n keys of room. x is only read.
template <class Real>
NeighbourPair<Real> select_pair(const Real* x, int64_t n, int64_t rank, typename RealKeys<Real>::Key* buffer) {
  using Key = typename RealKeys<Real>::Key;
  const int64_t next = minimum(rank + 1, n - 1);
  const auto finish = [&](int64_t count, int64_t below) {
    const KeyArray<Real> keys = {buffer};
    const Key lower = quickselect(keys, count, rank - below);
    Key upper = lower;
    if (next > rank) { // the least of what selection left behind the lower one
      upper = buffer[next - below];
      for (int64_t i = next - below; i < count; ++i) upper = buffer[i] < upper ? buffer[i] : upper;
    }
    return NeighbourPair<Real>{real_of<Real>(lower), real_of<Real>(upper)};
  };

  if (n >= sample_above) {
    Key sample[sample_size];
    uint64_t state = 0x9E3779B97F4A7C15; // a fixed sequence: the same data take the same steps every time
    for (Key& element : sample) {
      state = state * 6364136223846793005 + 1442695040888963407;
      element = key_of(x[static_cast<int64_t>((static_cast<unsigned __int128>(state) * uint64_t(n)) >> 64)]);
    }
    quicksort(KeyArray<Real>{sample}, sample_size);
    const int64_t place = static_cast<int64_t>(double(rank) / double(n) * sample_size);
    for (int64_t margin = 48; margin < sample_size; margin *= 4) { // three standard deviations at the median
      const Key low = place < margin ? Key(0) : sample[place - margin];
      const Key high = place + margin >= sample_size ? static_cast<Key>(~Key(0)) : sample[place + margin];
      const Key span = static_cast<Key>(high - low);
      int64_t count = 0, below = 0;
      for (int64_t i = 0; i < n; ++i) {
        const Key key = key_of(x[i]), above_low = static_cast<Key>(key - low);
        buffer[count] = key;
        count += above_low <= span;
        below += key < low;
      }
      if (rank >= below && next < below + count) {
        if (span == 0) return {real_of<Real>(low), real_of<Real>(low)};
        return finish(count, below);
      }
    }
  }
  for (int64_t i = 0; i < n; ++i) buffer[i] = key_of(x[i]);
  return finish(n, 0);
}

}
