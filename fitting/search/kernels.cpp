#include "fitting/search/kernels.h"

namespace tarn::fitting {

#define TARN_NAMED "fitting/search/named_kernels.h"
#define TARN_INFIX DF
#include "fitting/each_precision.h"

#define TARN_FIND_KERNELS(t, Real)                                                                                     \
  template <> SearchKernel<Real> search_kernel<Real>(SearchMethod method) {                                            \
    return t::__Search1DDispatch[static_cast<int>(method)];                                                            \
  }                                                                                                                    \
  template <> SearchKernel<Real> search_kernel_32<Real>(SearchMethod method) {                                         \
    return t::__Search1D32Dispatch[static_cast<int>(method)];                                                          \
  }                                                                                                                    \
  template <> SearchKernel<Real> search_kernel_64<Real>(SearchMethod method) {                                         \
    return t::__Search1D64Dispatch[static_cast<int>(method)];                                                          \
  }                                                                                                                    \
  template <> SearchKernel<Real> search_kernel_64_pack<Real>(SearchMethod method) {                                    \
    return t::__Search1D64PackDispatch[static_cast<int>(method)];                                                      \
  }
TARN_DF_TWINS(TARN_FIND_KERNELS)

}
