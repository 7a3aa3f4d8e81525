// The arrays of a kernel call, walked element by element: side by side, or each with its stride.
#pragma once

#include <stddef.h>

#include "vector/frame/lanes.h"

namespace tarn::TARN_ISA {

// An element at any byte address.
template <class T> static TARN_INLINE T get(const T* p) {
  T v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}
template <class T> static TARN_INLINE void set(T* p, T v) { __builtin_memcpy(p, &v, sizeof v); }

template <class T> struct WithoutConst { using type = T; };
template <class T> struct WithoutConst<const T> { using type = T; };

// Walks an array of T (const or not) without gaps.
template <class T> struct Unit {
  T* base;
  using Element = typename WithoutConst<T>::type;
  static constexpr bool strided = false;
  TARN_INLINE Element get(int64_t i) const { return TARN_ISA::get<Element>(base + i); }
  TARN_INLINE void set(int64_t i, Element v) const { TARN_ISA::set<Element>(base + i, v); }
  TARN_INLINE VectorOf<Element> vector(int64_t i) const { return load(base + i); }
  TARN_INLINE void put(int64_t i, VectorOf<Element> v) const { store(base + i, v); }
};

// Walks it with a stride, by scalar loads and stores.
template <class T> struct Strided {
  T* base;
  ptrdiff_t step;
  using Element = typename WithoutConst<T>::type;
  static constexpr bool strided = true;
  TARN_INLINE Element get(int64_t i) const { return TARN_ISA::get<Element>(base + i * step); }
  TARN_INLINE void set(int64_t i, Element v) const { TARN_ISA::set<Element>(base + i * step, v); }
  TARN_INLINE VectorOf<Element> vector(int64_t i) const {
    if constexpr (sizeof(T) == 8)
      return VectorOf<Element>{get(i), get(i + 1)};
    else
      return VectorOf<Element>{get(i), get(i + 1), get(i + 2), get(i + 3)};
  }
  TARN_INLINE void put(int64_t i, VectorOf<Element> v) const {
    for (int lane = 0; lane < Lanes<Element>::count; ++lane) set(i + lane, v[lane]);
  }
};

// The arrays of one call: inputs a, b and results r, q; b and q may be absent.
struct None {};
template <class A, class R, class B = None, class Q = None> struct Arrays {
  A a;
  R r;
  [[no_unique_address]] B b{};
  [[no_unique_address]] Q q{};
  using Element = typename A::Element;
  static constexpr bool two_inputs = !__is_same(B, None);
  static constexpr bool two_results = !__is_same(Q, None);
};

// What a kernel hands its loop.
template <class F, class X> struct Call {
  F f; // the formula, with the scalar arguments
  X x;
};

}
