// The square root instruction; the compiler's builtin would call the mathematics library for the sake of errno.
#pragma once

#include <emmintrin.h>

namespace tarn::stats {

inline double square_root(double x) {
  const __m128d v = _mm_set_sd(x);
  return _mm_cvtsd_f64(_mm_sqrt_sd(v, v));
}
inline float square_root(float x) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x))); }

}
