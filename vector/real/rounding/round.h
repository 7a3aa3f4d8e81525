// Ceil, Floor, Trunc, Rint, NearbyInt, Round: one hardware rounding each, told apart by its immediate. NaNs pass
// through the instruction, and nothing is reported.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/lanes.h"

namespace tarn::TARN_ISA {

template <int immediate> static TARN_INLINE Double2 rounded(Double2 x) { return _mm_round_pd(x, immediate); }
template <int immediate> static TARN_INLINE Float4 rounded(Float4 x) { return _mm_round_ps(x, immediate); }

template <class T, int immediate> struct Rounded {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> x) { return rounded<immediate>(x); }
};
constexpr int to_nearest = 0, down = 1, up = 2, toward_zero = 3;
constexpr int as_mxcsr_says = 4, as_mxcsr_says_silently = 0xC;

using dCeil_HA = Rounded<double, up>;
using sCeil_HA = Rounded<float, up>;
using dFloor_HA = Rounded<double, down>;
using sFloor_HA = Rounded<float, down>;
using dTrunc_HA = Rounded<double, toward_zero>;
using sTrunc_HA = Rounded<float, toward_zero>;
using dRint_HA = Rounded<double, as_mxcsr_says>;
using sRint_HA = Rounded<float, as_mxcsr_says>;
using dNearbyInt_HA = Rounded<double, as_mxcsr_says_silently>;
using sNearbyInt_HA = Rounded<float, as_mxcsr_says_silently>;

// Half away from zero: the even neighbour is moved up where it lies exactly one half below.
template <class T> struct HalfAway {
  static TARN_INLINE VectorOf<T> fast(VectorOf<T> x) {
    const VectorOf<T> m = magnitude(x);
    const VectorOf<T> q = rounded<to_nearest>(m);
    const VectorOf<T> one_where_half = select(m - q == (T)0.5, splat((T)1), VectorOf<T>{});
    return or_sign_of(q + one_where_half, x);
  }
};
using dRound_HA = HalfAway<double>;
using sRound_HA = HalfAway<float>;

TARN_CLAIM(dCeil, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sCeil, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dFloor, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sFloor, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dTrunc, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sTrunc, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dRint, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sRint, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dNearbyInt, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sNearbyInt, HA, 0, -3.5e38, 3.5e38)
TARN_CLAIM(dRound, HA, 0, -1.8e308, 1.8e308)
TARN_CLAIM(sRound, HA, 0, -3.5e38, 3.5e38)

}
