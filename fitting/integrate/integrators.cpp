#include "fitting/integrate/integrators.h"

namespace tarn::fitting {

#define TARN_NAMED "fitting/integrate/named_integrators.h"
#define TARN_INFIX _
#include "fitting/each_precision.h"

#define TARN_FIND_INTEGRATOR(t, Real)                                                                                  \
  template <> Integrator<Real> integrator<Real>(Interpolant kind, bool callbacks) {                                    \
    return (callbacks ? t::__Integrate1DDispatchCB : t::__Integrate1DDispatch)[static_cast<int>(kind)];                \
  }
TARN_DF_TWINS(TARN_FIND_INTEGRATOR)

}
