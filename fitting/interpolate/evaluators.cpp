#include "fitting/interpolate/evaluators.h"

namespace tarn::fitting {

#define TARN_NAMED "fitting/interpolate/named_evaluators.h"
#define TARN_INFIX _
#include "fitting/each_precision.h"

#define TARN_FIND_EVALUATOR(t, Real)                                                                                   \
  template <> Evaluator<Real> evaluator<Real>(Interpolant kind, bool wide_cells, bool callbacks) {                     \
    const int number = static_cast<int>(kind);                                                                         \
    if (callbacks) return (wide_cells ? t::__Interpolate1D64DispatchCB : t::__Interpolate1D32DispatchCB)[number];      \
    return (wide_cells ? t::__Interpolate1D64Dispatch : t::__Interpolate1D32Dispatch)[number];                         \
  }
TARN_DF_TWINS(TARN_FIND_EVALUATOR)

}
