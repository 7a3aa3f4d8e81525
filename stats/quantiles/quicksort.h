// Quicksort and selection with the median of three as pivot (Singleton, CACM algorithm 347, 1969; Sedgewick, CACM 21,
// 1978). They allocate nothing, so they stand in where the radix sort's 32-bit count or its scratch does not reach.
// With NaNs among floats the scans still end within the array, but the order is not defined.
#pragma once

#include <stdint.h>

namespace tarn::stats {

// Elements Step apart; Step 0 takes the stride at run time.
template <class T, int64_t Step> struct Strided {
  T* base;
  int64_t stride;
  T& operator[](int64_t i) const { return base[Step != 0 ? i * Step : i * stride]; }
};

constexpr int64_t insertion_span = 7; // ranges with r - l below this go to insertion sort

template <class A> inline void swap_elements(const A& a, int64_t i, int64_t j) {
  const auto kept = a[i];
  a[i] = a[j];
  a[j] = kept;
}

// Puts a pivot at its final place in [l, r], r - l >= 2, and returns the place.
template <class A> int64_t partition(const A& a, int64_t l, int64_t r) {
  swap_elements(a, l + (r - l) / 2, l + 1);
  if (a[l] > a[r]) swap_elements(a, l, r);
  if (a[l + 1] > a[r]) swap_elements(a, l + 1, r);
  if (a[l] > a[l + 1]) swap_elements(a, l, l + 1);
  const auto pivot = a[l + 1];
  int64_t i = l + 1, j = r;
  for (;;) { // a[r] stops the scan upwards, the pivot itself the scan downwards
    while (a[++i] < pivot) {
    }
    while (a[--j] > pivot) {
    }
    if (j < i) break;
    swap_elements(a, i, j);
  }
  a[l + 1] = a[j];
  a[j] = pivot;
  return j;
}

template <class A> void insertion_sort_range(const A& a, int64_t l, int64_t r) {
  for (int64_t i = l + 1; i <= r; ++i) {
    const auto element = a[i];
    int64_t at = i;
    for (; at > l && a[at - 1] > element; --at) a[at] = a[at - 1];
    a[at] = element;
  }
}

template <class A> void quicksort(const A& a, int64_t n) {
  struct Range {
    int64_t l, r;
  } waiting[64]; // the larger part waits, so each range is at most half of the one below it
  int depth = 0;
  int64_t l = 0, r = n - 1;
  for (;;) {
    if (r - l < insertion_span) {
      insertion_sort_range(a, l, r);
      if (depth == 0) return;
      --depth;
      l = waiting[depth].l;
      r = waiting[depth].r;
      continue;
    }
    const int64_t middle = partition(a, l, r);
    if (middle - l < r - middle) {
      waiting[depth++] = {middle + 1, r};
      r = middle - 1;
    } else {
      waiting[depth++] = {l, middle - 1};
      l = middle + 1;
    }
  }
}

// The element of rank k; what stands before it is not above it, what stands behind is not below.
template <class A> auto quickselect(const A& a, int64_t n, int64_t k) {
  int64_t l = 0, r = n - 1;
  while (r > l + 1) {
    const int64_t middle = partition(a, l, r);
    if (middle >= k) r = middle - 1;
    if (middle <= k) l = middle + 1;
  }
  if (r == l + 1 && a[l] > a[r]) swap_elements(a, l, r);
  return a[k];
}

}
