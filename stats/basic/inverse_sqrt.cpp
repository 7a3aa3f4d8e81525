#include "stats/basic/inverse_sqrt.h"

#include "tarn/vector.h"

namespace tarn::stats {
namespace {

// The kernel runs without flush to zero and without denormals as zeros, whatever the caller's mode says.
constexpr uint32_t keep_denormals = 0x140000;

template <class Real> void run(tarn_kernel slot, int64_t n, Real* a) {
  using InverseSqrt = void (*)(int32_t n, const Real* a, Real* r);
  const uint32_t mode = tarn_lume_kernel_SetMode(keep_denormals);
  reinterpret_cast<InverseSqrt>(slot)(static_cast<int32_t>(n), a, a);
  tarn_lume_kernel_SetMode(mode);
}

}

void inverse_sqrt(int64_t n, double* a) { run(tarn_lume_kernel_dInvSqrt_ttab[0], n, a); }
void inverse_sqrt(int64_t n, float* a) { run(tarn_lume_kernel_sInvSqrt_ttab[0], n, a); }

}
