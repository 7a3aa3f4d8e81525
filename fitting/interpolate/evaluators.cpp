#include "fitting/interpolate/evaluators.h"

namespace tarn::fitting {

#define TARN_VISIBLE __attribute__((visibility("default")))
namespace d {
using Real = double;
#define TARN_KERNEL(Name) tarn_df_kernel_d_##Name
#include "fitting/interpolate/named_evaluators.h"
#undef TARN_KERNEL
}
namespace s {
using Real = float;
#define TARN_KERNEL(Name) tarn_df_kernel_s_##Name
#include "fitting/interpolate/named_evaluators.h"
#undef TARN_KERNEL
}

#define TARN_FIND_EVALUATOR(t, Real)                                                                                   \
  template <> Evaluator<Real> evaluator<Real>(Interpolant kind, bool wide_cells, bool callbacks) {                     \
    const int number = static_cast<int>(kind);                                                                         \
    if (callbacks) return (wide_cells ? t::__Interpolate1D64DispatchCB : t::__Interpolate1D32DispatchCB)[number];      \
    return (wide_cells ? t::__Interpolate1D64Dispatch : t::__Interpolate1D32Dispatch)[number];                         \
  }
TARN_DF_TWINS(TARN_FIND_EVALUATOR)

}
