// Loops over a peer's function of vectors; included by a file per instruction set, which names its vectors.
#pragma once

#include "bench/vector/peers.h"

namespace tarn::bench {

namespace {

template <class V> struct PairOf { V first, second; };

// V is the vector, T the element. The tail is done on a buffer, as a caller of these functions has to.
template <class V, class T, int Inputs, int Outputs> void vector_loop(void* address, const Arrays& x) {
  constexpr int64_t width = sizeof(V) / sizeof(T);
  const auto once = [address](const T* a, const T* b, T* r1, T* r2) {
    V u, v;
    __builtin_memcpy(&u, a, sizeof u);
    if constexpr (Inputs == 2) __builtin_memcpy(&v, b, sizeof v);
    if constexpr (Outputs == 2) {
      const PairOf<V> y = reinterpret_cast<PairOf<V> (*)(V)>(address)(u);
      __builtin_memcpy(r1, &y.first, sizeof y.first);
      __builtin_memcpy(r2, &y.second, sizeof y.second);
    } else {
      V y;
      if constexpr (Inputs == 2) {
        y = reinterpret_cast<V (*)(V, V)>(address)(u, v);
      } else {
        y = reinterpret_cast<V (*)(V)>(address)(u);
      }
      __builtin_memcpy(r1, &y, sizeof y);
    }
  };
  const T* a = static_cast<const T*>(x.in[0]);
  const T* b = Inputs == 2 ? static_cast<const T*>(x.in[1]) : a;
  T* r1 = static_cast<T*>(x.out[0]);
  T* r2 = Outputs == 2 ? static_cast<T*>(x.out[1]) : r1;
  int64_t i = 0;
  for (; i + width <= x.n; i += width) once(a + i, b + i, r1 + i, r2 + i);
  if (i == x.n) return;
  T a_end[width], b_end[width], r1_end[width], r2_end[width];
  for (int64_t k = 0; k < width; ++k) {
    a_end[k] = a[i + k < x.n ? i + k : i];
    b_end[k] = b[i + k < x.n ? i + k : i];
  }
  once(a_end, b_end, r1_end, Outputs == 2 ? r2_end : r1_end);
  for (int64_t k = 0; i + k < x.n; ++k) {
    r1[i + k] = r1_end[k];
    if constexpr (Outputs == 2) r2[i + k] = r2_end[k];
  }
}

template <class VF, class VD> Loop loop_over(void* address, char type, int inputs, int outputs) {
  const auto pick = [&](auto one, auto two, auto results) -> Loop {
    const auto run = outputs == 2 ? results : inputs == 2 ? two : one;
    return [run, address](const Arrays& x) { run(address, x); };
  };
  return type == 's'
             ? pick(&vector_loop<VF, float, 1, 1>, &vector_loop<VF, float, 2, 1>, &vector_loop<VF, float, 1, 2>)
             : pick(&vector_loop<VD, double, 1, 1>, &vector_loop<VD, double, 2, 1>, &vector_loop<VD, double, 1, 2>);
}

}

}
