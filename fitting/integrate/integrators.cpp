#include "fitting/integrate/integrators.h"

namespace tarn::fitting {

#define TARN_VISIBLE __attribute__((visibility("default")))
namespace d {
using Real = double;
#define TARN_KERNEL(Name) tarn_df_kernel_d_##Name
#include "fitting/integrate/named_integrators.h"
#undef TARN_KERNEL
}
namespace s {
using Real = float;
#define TARN_KERNEL(Name) tarn_df_kernel_s_##Name
#include "fitting/integrate/named_integrators.h"
#undef TARN_KERNEL
}

#define TARN_FIND_INTEGRATOR(t, Real)                                                                                  \
  template <> Integrator<Real> integrator<Real>(Interpolant kind, bool callbacks) {                                    \
    return (callbacks ? t::__Integrate1DDispatchCB : t::__Integrate1DDispatch)[static_cast<int>(kind)];                \
  }
TARN_DF_TWINS(TARN_FIND_INTEGRATOR)

}
