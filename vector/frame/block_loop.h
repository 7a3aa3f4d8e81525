// The loop of every function with rare cases. A formula gives
//   Vector  fast(Vector x)             one vector, straight through; the order of its operations is the contract
//   Int4    gate(Int4 x)               lanes that fast cannot serve, from the high words of doubles or the bits of
//   floats int     rare(const T* x, T* y)     scalar, knows every special value, returns the status T       filler
//   stands in for lanes past the end; harmless
// A formula with a long chain gives fast in two steps, fast(x) = finish(prepare(x)): the loop takes a block through the
// first step and then through the second, so that the processor finds more chains to overlap than its window would
// hold. Two arguments or two results stand in the same places: fast(x, y), fast(x, r, q), gate(x, y), rare(x, y, r),
// rare(x, r, q). A formula with  bool settle(x, y)  replaces, under NOERR, lanes whose answer is a constant, and
// returns what is left.
//
// Special values cost nothing where there are none: a block's gates are OR-ed into one test. A loop works on its own
// copy of arrays and formula and hands the rare routes its caller's: an address that escapes would make the compiler load
// the array pointers again after every store.
#pragma once

#include "vector/frame/arrays.h"
#include "vector/frame/control_words.h"

namespace tarn::TARN_ISA {

static TARN_INLINE void report_element(int32_t status, int32_t index, const double* a, const double* b, double* r,
                                       double* q, const char* name) {
  tarn_lume_kernel_dError(status, index, a, b, r, q, name);
}
static TARN_INLINE void report_element(int32_t status, int32_t index, const float* a, const float* b, float* r,
                                       float* q, const char* name) {
  tarn_lume_kernel_sError(status, index, a, b, r, q, name);
}

// The vectors of one group of lanes.
template <class T> struct Group { VectorOf<T> a, b, r, q; };

template <class F, class X> static TARN_INLINE void compute(const F& f, Group<typename X::Element>& g) {
  if constexpr (X::two_inputs)
    g.r = f.fast(g.a, g.b);
  else if constexpr (X::two_results)
    f.fast(g.a, g.r, g.q);
  else if constexpr (requires { f.prepare(g.a); })
    g.r = f.finish(f.prepare(g.a));
  else
    g.r = f.fast(g.a);
}

template <class X> static TARN_INLINE void load_group(const X& x, int64_t i, Group<typename X::Element>& g) {
  g.a = x.a.vector(i);
  if constexpr (X::two_inputs) g.b = x.b.vector(i);
}
template <class X> static TARN_INLINE void store_group(const X& x, int64_t i, const Group<typename X::Element>& g) {
  if constexpr (X::two_results) x.q.put(i, g.q); // with one array for both results the first one wins
  x.r.put(i, g.r);
}

// What the gate looks at: four floats' bits, or the high words of the doubles of two groups.
static TARN_INLINE Int4 gate_words(Float4 v, Float4) { return bits(v); }
static TARN_INLINE Int4 gate_words(Double2 v, Double2 w) { return high_words(v, w); }

template <class F, class X>
static TARN_INLINE Int4 gate_of(const F& f, const Group<typename X::Element>& g, const Group<typename X::Element>& h) {
  if constexpr (X::two_inputs)
    return f.gate(gate_words(g.a, h.a), gate_words(g.b, h.b));
  else
    return f.gate(gate_words(g.a, h.a));
}

// The lanes of one group that are rare, one bit each.
template <class F, class X> static TARN_INLINE int rare_lanes(const F& f, const Group<typename X::Element>& g) {
  return lane_mask(gate_of<F, X>(f, g, g)) & ((1 << Lanes<typename X::Element>::count) - 1);
}

// Whether any of the B elements from i on is rare.
template <int B, class F, class X> static TARN_INLINE bool block_is_rare(const F& f, const X& x, int64_t i) {
  using T = typename X::Element;
  constexpr int W = Lanes<T>::count, step = 4; // four 32-bit words a compare
  Int4 any{};
#pragma GCC unroll 16
  for (int v = 0; v < B; v += step) {
    Group<T> g, h;
    load_group(x, i + v, g);
    if constexpr (W == 2)
      load_group(x, i + v + W, h);
    else
      h = g;
    any |= gate_of<F, X>(f, g, h);
  }
  return _mm_movemask_epi8((__m128i)any) != 0;
}

// The rare lanes of one group, whose fast results stand in g.
template <class F, class X>
__attribute__((noinline, cold)) void rare_group(const F& f, const X& x, int64_t i, int lanes,
                                                Group<typename X::Element>* g, const char* name) {
  using T = typename X::Element;
  constexpr int W = Lanes<T>::count;
  alignas(64) T a[W], b[W], r[W], q[W];
  store(a, g->a);
  store(r, g->r);
  if constexpr (X::two_inputs) store(b, g->b);
  if constexpr (X::two_results) store(q, g->q);
  for (int lane = 0; lane < W; ++lane) {
    if (!(lanes >> lane & 1)) continue;
    int status;
    if constexpr (X::two_inputs)
      status = f.rare(&a[lane], &b[lane], &r[lane]);
    else if constexpr (X::two_results)
      status = f.rare(&a[lane], &r[lane], &q[lane]);
    else
      status = f.rare(&a[lane], &r[lane]);
    if (status == 0) continue;
    // The report sees the arrays, and what its callback leaves there is the lane's result.
    const int32_t element = (int32_t)i + lane;
    if constexpr (X::two_results) {
      x.q.set(element, q[lane]);
      x.r.set(element, r[lane]);
      report_element(status, element, x.a.base, x.a.base, x.r.base, x.q.base, name);
      q[lane] = x.q.get(element);
    } else {
      x.r.set(element, r[lane]);
      const T* second = x.a.base;
      if constexpr (X::two_inputs) second = x.b.base;
      report_element(status, element, x.a.base, second, x.r.base, x.r.base, name);
    }
    r[lane] = x.r.get(element);
  }
  g->r = load(r);
  if constexpr (X::two_results) g->q = load(q);
}

// A block with rare lanes: all its arguments are read and all its results stand in registers or on the stack until the
// last report is made, so that a report sees the block as it was.
template <int B, class F, class X>
__attribute__((noinline, cold)) void rare_block(const F& f, const X& x, int64_t i, uint32_t mode, const char* name) {
  using T = typename X::Element;
  constexpr int W = Lanes<T>::count;
  Group<T> groups[B / W];
  for (int v = 0; v < B / W; ++v) load_group(x, i + v * W, groups[v]);
  for (Group<T>& g : groups) compute<F, X>(f, g);
  for (int v = 0; v < B / W; ++v) {
    Group<T>& g = groups[v];
    int lanes = rare_lanes<F, X>(f, g);
    if constexpr (requires { f.settle(g.a, g.r, lanes); })
      if ((mode & vector::error_field) == vector::route_noerr) lanes = f.settle(g.a, g.r, lanes);
    if (lanes) rare_group(f, x, i + v * W, lanes, &g, name);
  }
  for (int v = 0; v < B / W; ++v) store_group(x, i + v * W, groups[v]);
}

// Up to a vector's width of elements at the end.
template <class A> static TARN_INLINE auto part_vector(const A& array, int64_t i, int64_t count, auto filler) {
  using T = typename A::Element;
  if constexpr (Lanes<T>::count == 2)
    return VectorOf<T>{array.get(i), filler};
  else
    return VectorOf<T>{array.get(i), count > 1 ? array.get(i + 1) : filler, count > 2 ? array.get(i + 2) : filler,
                       filler};
}
template <class A>
static TARN_INLINE void put_part(const A& array, int64_t i, int64_t count, VectorOf<typename A::Element> v) {
  array.set(i, v[0]);
  if constexpr (Lanes<typename A::Element>::count == 4) {
    if (count > 1) array.set(i + 1, v[1]);
    if (count > 2) array.set(i + 2, v[2]);
  }
}

template <class F, class X>
static TARN_INLINE void tail(const F& f, const X& x, const Call<F, X>& call, int64_t i, int64_t n, const char* name) {
  using T = typename X::Element;
  constexpr int W = Lanes<T>::count;
  Group<T> g;
  for (; i + W <= n; i += W) {
    load_group(x, i, g);
    compute<F, X>(f, g);
    if (const int lanes = rare_lanes<F, X>(f, g); __builtin_expect(lanes != 0, 0))
      rare_group(call.f, call.x, i, lanes, &g, name);
    store_group(x, i, g);
  }
  if (const int64_t count = n - i; count > 0) {
    g.a = part_vector(x.a, i, count, F::filler);
    if constexpr (X::two_inputs) g.b = part_vector(x.b, i, count, F::filler);
    compute<F, X>(f, g);
    const int lanes = rare_lanes<F, X>(f, g) & ((1 << count) - 1);
    if (__builtin_expect(lanes != 0, 0)) rare_group(call.f, call.x, i, lanes, &g, name);
    if constexpr (X::two_results) put_part(x.q, i, count, g.q);
    put_part(x.r, i, count, g.r);
  }
}

template <int B> struct BlockLoop {
  template <class F, class X>
  static __attribute__((noinline)) void run(const Call<F, X>& call, int64_t n, uint32_t mode, const char* name) {
    const F f = call.f;
    const X x = call.x;
    using T = typename X::Element;
    constexpr int W = Lanes<T>::count;
    int64_t i = 0;
    for (; n - i >= B; i += B) {
      if (__builtin_expect(block_is_rare<B>(f, x, i), 0)) {
        rare_block<B>(call.f, call.x, i, mode, name);
        continue;
      }
      if constexpr (requires { f.prepare(VectorOf<T>{}); }) {
        decltype(f.prepare(VectorOf<T>{})) prepared[B / W];
#pragma GCC unroll 16
        for (int v = 0; v < B / W; ++v) prepared[v] = f.prepare(x.a.vector(i + v * W));
#pragma GCC unroll 16
        for (int v = 0; v < B / W; ++v) x.r.put(i + v * W, f.finish(prepared[v]));
      } else {
#pragma GCC unroll 16
        for (int v = 0; v < B; v += W) {
          Group<T> g;
          load_group(x, i + v, g);
          compute<F, X>(f, g);
          store_group(x, i + v, g);
        }
      }
    }
    tail(f, x, call, i, n, name);
  }
};

}
