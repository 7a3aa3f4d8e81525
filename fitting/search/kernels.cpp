#include "fitting/search/kernels.h"

namespace tarn::fitting {

#define TARN_VISIBLE __attribute__((visibility("default")))
namespace d {
using Real = double;
#define TARN_KERNEL(Name) tarn_df_kernel_dDF##Name
#include "fitting/search/named_kernels.h"
#undef TARN_KERNEL
}
namespace s {
using Real = float;
#define TARN_KERNEL(Name) tarn_df_kernel_sDF##Name
#include "fitting/search/named_kernels.h"
#undef TARN_KERNEL
}

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
