// Add, Sub, Mul, Sqr, Abs, CopySign, Fdim: one or two operations, no rare cases, nothing reported. Overflow and NaN
// pass through as the hardware gives them.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"

namespace tarn::TARN_ISA {

template <class T> struct Add {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> a, VectorOf<T> b) { return a + b; }
};
template <class T> struct Sub {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> a, VectorOf<T> b) { return a - b; }
};
template <class T> struct Mul {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> a, VectorOf<T> b) { return a * b; }
};
template <class T> struct Sqr {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> x) { return x * x; }
};
template <class T> struct Abs {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> x) { return magnitude(x); }
};
template <class T> struct CopySign {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> a, VectorOf<T> b) { return with_sign_of(a, b); }
};
// a - b where a is the greater, else +0. With a NaN neither is: the difference is that NaN, the first argument's before
// the second's.
template <class T> struct Fdim {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> a, VectorOf<T> b) { return select(a <= b, VectorOf<T>{}, a - b); }
};

using dAdd_HA = Add<double>;
using sAdd_HA = Add<float>;
using dSub_HA = Sub<double>;
using sSub_HA = Sub<float>;
using dMul_HA = Mul<double>;
using sMul_HA = Mul<float>;
using dSqr_HA = Sqr<double>;
using sSqr_HA = Sqr<float>;
using dAbs_HA = Abs<double>;
using sAbs_HA = Abs<float>;
using dCopySign_HA = CopySign<double>;
using sCopySign_HA = CopySign<float>;
using dFdim_HA = Fdim<double>;
using sFdim_HA = Fdim<float>;
TARN_CLAIM(dAdd, HA, 0.5, -1.8e308, 1.8e308)
TARN_CLAIM(sAdd, HA, 0.5, -3.5e38, 3.5e38)
TARN_CLAIM(dSub, HA, 0.5, -1.8e308, 1.8e308)
TARN_CLAIM(sSub, HA, 0.5, -3.5e38, 3.5e38)
TARN_CLAIM(dMul, HA, 0.5, -1.8e308, 1.8e308)
TARN_CLAIM(sMul, HA, 0.5, -3.5e38, 3.5e38)
TARN_CLAIM(dSqr, HA, 0.5, -1.8e308, 1.8e308)
TARN_CLAIM(sSqr, HA, 0.5, -3.5e38, 3.5e38)
TARN_CLAIM(dAbs, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sAbs, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dCopySign, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sCopySign, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dFdim, HA, 0.5, -1.8e308, 1.8e308)
TARN_CLAIM(sFdim, HA, 0.5, -3.5e38, 3.5e38)

}
