// The loop of functions without rare cases: results are brought to a 16-byte boundary first, then eight doubles or
// sixteen floats a round. A formula gives  Vector fast(Vector x)  or  fast(Vector x, Vector y).
#pragma once

#include "vector/frame/block_loop.h"

namespace tarn::TARN_ISA {

template <int B> struct LightLoop {
  template <class F, class X>
  static __attribute__((noinline)) void run(const Call<F, X>& call, int64_t n, uint32_t, const char*) {
    const F f = call.f;
    const X x = call.x;
    using T = typename X::Element;
    constexpr int W = Lanes<T>::count;
    int64_t i = 0;
    const auto one = [=](int64_t k) {
      Group<T> g;
      g.a = splat(x.a.get(k)); // in all lanes, so that none raises a flag of its own
      if constexpr (X::two_inputs) g.b = splat(x.b.get(k));
      compute<F, X>(f, g);
      if constexpr (X::two_results) x.q.set(k, g.q[0]);
      x.r.set(k, g.r[0]);
    };
    if constexpr (!X::two_results && !decltype(x.r)::strided) {
      const uintptr_t address = reinterpret_cast<uintptr_t>(x.r.base);
      if (n >= B && address % sizeof(T) == 0) {
        for (; (address / sizeof(T) + static_cast<uint64_t>(i)) % W != 0; ++i) one(i);
        for (; n - i >= B; i += B)
#pragma GCC unroll 16
          for (int v = 0; v < B; v += W) {
            Group<T> g;
            load_group(x, i + v, g);
            compute<F, X>(f, g);
            store_aligned(x.r.base + i + v, g.r);
          }
      }
    } else {
      for (; n - i >= B; i += B)
#pragma GCC unroll 16
        for (int v = 0; v < B; v += W) {
          Group<T> g;
          load_group(x, i + v, g);
          compute<F, X>(f, g);
          store_group(x, i + v, g);
        }
    }
    for (; i < n; ++i) one(i);
  }
};

}
