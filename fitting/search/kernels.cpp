#include "fitting/search/kernels.h"

#include "fitting/search/batches.h"

namespace tarn::fitting {

#define TARN_NAMED "fitting/search/named_kernels.h"
#define TARN_INFIX DF
#include "fitting/each_precision.h"

#define TARN_FIND_KERNELS(t, Real)                                                                                     \
  template <> SearchKernel<Real> search_kernel<Real>(SearchMethod method) {                                            \
    return t::__Search1DDispatch[static_cast<int>(method)];                                                            \
  }                                                                                                                    \
  template <> SearchKernel<Real> search_kernel<Real>(SearchMethod method, CellForm form) {                             \
    const int number = static_cast<int>(method);                                                                       \
    switch (form) {                                                                                                    \
    case CellForm::Cells32: return t::__Search1D32Dispatch[number];                                                    \
    case CellForm::Cells64: return t::__Search1D64Dispatch[number];                                                    \
    default: return t::__Search1D64PackDispatch[number];                                                               \
    }                                                                                                                  \
  }                                                                                                                    \
  template <> BatchSearch<Real> batch_search<Real>(SearchMethod method) {                                              \
    return t::__SearchDispatch[static_cast<int>(method)];                                                              \
  }
TARN_DF_TWINS(TARN_FIND_KERNELS)

}
