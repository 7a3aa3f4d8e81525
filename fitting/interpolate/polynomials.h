// Values and derivatives of polynomials of few terms, by Horner's rule: of one site, or of as many as a vector has lanes.
// Both take the same steps in the same order, so a result does not depend on where in a block its site stands.
#pragma once

#include <emmintrin.h>

#include "fitting/lanes.h"

namespace tarn::fitting {

// j! / (j - order)!
constexpr int falling_factorial(int j, int order) { return order == 0 ? 1 : j * falling_factorial(j - 1, order - 1); }

// The derivative of this order at u of c[0] + c[1] u + ... ; V is a real or a vector of them.
template <int Terms, int Order, class Real, class V> inline V horner(const V* c, V u) {
  static_assert(Order < Terms);
  V sum = c[Terms - 1] * Real(falling_factorial(Terms - 1, Order));
#pragma GCC unroll 4
  for (int j = Terms - 2; j >= Order; --j) sum = sum * u + c[j] * Real(falling_factorial(j, Order));
  return sum;
}

// The same for any number of terms.
template <class Real> Real horner(const Real* c, int64_t terms, int64_t order, Real u) {
  Real sum = 0;
  for (int64_t j = terms - 1; j >= order; --j) {
    Real factor = 1;
    for (int64_t k = 0; k < order; ++k) factor *= Real(j - k);
    sum = sum * u + c[j] * factor;
  }
  return sum;
}

// Coefficient k of each lane's piece into lane vectors.
template <int Terms> inline void gather(const double* const (&piece)[2], Vector<double>* c) {
#pragma GCC unroll 2
  for (int k = 0; k + 1 < Terms; k += 2) {
    const __m128d a = load<Vector<double>>(piece[0] + k), b = load<Vector<double>>(piece[1] + k);
    c[k] = _mm_unpacklo_pd(a, b);
    c[k + 1] = _mm_unpackhi_pd(a, b);
  }
  if constexpr (Terms % 2 == 1) c[Terms - 1] = Vector<double>{piece[0][Terms - 1], piece[1][Terms - 1]};
}
template <int Terms> inline void gather(const float* const (&piece)[4], Vector<float>* c) {
  if constexpr (Terms == 4) {
    __m128 rows[4] = {load<Vector<float>>(piece[0]), load<Vector<float>>(piece[1]), load<Vector<float>>(piece[2]),
                      load<Vector<float>>(piece[3])};
    _MM_TRANSPOSE4_PS(rows[0], rows[1], rows[2], rows[3]);
    for (int k = 0; k < 4; ++k) c[k] = rows[k];
  } else {
    for (int k = 0; k < Terms; ++k) c[k] = Vector<float>{piece[0][k], piece[1][k], piece[2][k], piece[3][k]};
  }
}

}
