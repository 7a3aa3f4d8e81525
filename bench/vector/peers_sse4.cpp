#include "bench/vector/vector_loop.h"

#include <cmath>
#include <smmintrin.h>

namespace tarn::bench {

Loop loop_sse4(void* address, char type, int inputs, int outputs) {
  return loop_over<__m128, __m128d>(address, type, inputs, outputs);
}

namespace {

#define TARN_PLAIN(Name, ...)                                                                                          \
  template <class T> void plain_##Name(const Arrays& x) {                                                              \
    const T* __restrict in0 = static_cast<const T*>(x.in[0]);                                                          \
    [[maybe_unused]] const T* __restrict in1 = static_cast<const T*>(x.in[1]);                                         \
    T* __restrict out = static_cast<T*>(x.out[0]);                                                                     \
    for (int64_t i = 0; i < x.n; ++i) {                                                                                \
      const T a = in0[i];                                                                                              \
      [[maybe_unused]] const T b = in1[i];                                                                             \
      out[i] = __VA_ARGS__;                                                                                            \
    }                                                                                                                  \
  }
#include "bench/vector/peers.def"

}

Loop plain_loop(const std::string& function, char type) {
#define TARN_PLAIN(Name, ...)                                                                                          \
  if (function == #Name) return type == 's' ? plain_##Name<float> : plain_##Name<double>;
#include "bench/vector/peers.def"
  return nullptr;
}

}
