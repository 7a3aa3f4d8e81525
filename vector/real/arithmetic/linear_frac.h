// LinearFrac: (scalea*a + shifta) / (scaleb*b + shiftb), each operation rounded once. Where a scale is zero its array
// is not looked at. The divider is used throughout: on processors of today it is faster than a refined reciprocal
// estimate, serves the whole range, and gives the same bits everywhere.
#pragma once

#include "vector/frame/claims.h"
#include "vector/frame/light_loop.h"

namespace tarn::TARN_ISA {

template <class T> struct LinearFrac {
  T scalea, shifta, scaleb, shiftb;

  // The quotient with the terms that there are.
  template <bool has_a, bool has_b> struct Terms {
    T scalea, shifta, scaleb, shiftb;
    TARN_INLINE VectorOf<T> fast(VectorOf<T> a, VectorOf<T> b) const {
      VectorOf<T> numerator = splat(shifta), denominator = splat(shiftb);
      if constexpr (has_a) numerator = scalea * a + shifta;
      if constexpr (has_b) denominator = scaleb * b + shiftb;
      return numerator / denominator;
    }
  };
  template <int B, bool has_a, bool has_b, class X> TARN_INLINE void run(const X& x, int64_t n) const {
    LightLoop<B>::run(Call<Terms<has_a, has_b>, X>{{scalea, shifta, scaleb, shiftb}, x}, n, 0, nullptr);
  }
  template <int B, class X> void loop(const X& x, int64_t n, uint32_t, const char*) const {
    if (scaleb == 0)
      scalea == 0 ? run<B, false, false>(x, n) : run<B, true, false>(x, n);
    else
      scalea == 0 ? run<B, false, true>(x, n) : run<B, true, true>(x, n);
  }
};
using dLinearFrac_HA = LinearFrac<double>;
using sLinearFrac_HA = LinearFrac<float>;
// Against the quotient of the rounded numerator and the rounded denominator.
TARN_CLAIM(dLinearFrac, HA, 0.5, -1.8e308, 1.8e308)
TARN_CLAIM(sLinearFrac, HA, 0.5, -3.5e38, 3.5e38)

}
