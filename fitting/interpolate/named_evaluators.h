// The evaluators of one precision under their names, and their tables by number. Included once in the namespace of each
// precision, where Real is defined and TARN_KERNEL(Name) makes a name; so there is no guard.

extern "C" {
#define TARN_EVALUATOR_FORM(Name, body, Cell, suffix)                                                                  \
  TARN_VISIBLE int32_t TARN_KERNEL(Name##SplineEval##suffix)(                                                          \
      const Evaluation<Real>& e, int64_t function, int64_t count, const Real* site, const void* cell, Real* out) {     \
    return body(e, function, count, site, static_cast<const Cell*>(cell), out);                                        \
  }
#define TARN_EVALUATOR(number, Name, Kind)                                                                             \
  TARN_EVALUATOR_FORM(Name, evaluate<Interpolant::Kind>, int32_t, 32)                                                  \
  TARN_EVALUATOR_FORM(Name, evaluate<Interpolant::Kind>, int64_t, 64)                                                  \
  TARN_EVALUATOR_FORM(Name, evaluate_with_callbacks<Interpolant::Kind>, int32_t, 32CB)                                 \
  TARN_EVALUATOR_FORM(Name, evaluate_with_callbacks<Interpolant::Kind>, int64_t, 64CB)
#include "fitting/interpolate/evaluators.def"
}

#define TARN_EVALUATOR(number, Name, Kind) TARN_KERNEL(Name##SplineEval32),
constexpr Evaluator<Real> __Interpolate1D32Dispatch[] = {
#include "fitting/interpolate/evaluators.def"
};
#define TARN_EVALUATOR(number, Name, Kind) TARN_KERNEL(Name##SplineEval64),
constexpr Evaluator<Real> __Interpolate1D64Dispatch[] = {
#include "fitting/interpolate/evaluators.def"
};
#define TARN_EVALUATOR(number, Name, Kind) TARN_KERNEL(Name##SplineEval32CB),
constexpr Evaluator<Real> __Interpolate1D32DispatchCB[] = {
#include "fitting/interpolate/evaluators.def"
};
#define TARN_EVALUATOR(number, Name, Kind) TARN_KERNEL(Name##SplineEval64CB),
constexpr Evaluator<Real> __Interpolate1D64DispatchCB[] = {
#include "fitting/interpolate/evaluators.def"
};

// The rows of the list stand at the numbers of the interpolants.
#define TARN_EVALUATOR(number, Name, Kind)                                                                             \
  static_assert(static_cast<int>(Interpolant::Kind) == number &&                                                       \
                __Interpolate1D32Dispatch[number] == TARN_KERNEL(Name##SplineEval32));
#include "fitting/interpolate/evaluators.def"
#undef TARN_EVALUATOR_FORM
