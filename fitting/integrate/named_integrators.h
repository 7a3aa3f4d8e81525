// The integrators of one precision under their names, and their tables by number. Included once in the namespace of
// each precision, where Real is defined and TARN_KERNEL(Name) makes a name; so there is no guard.

extern "C" {
#define TARN_INTEGRATOR(number, Name, Kind)                                                                            \
  TARN_VISIBLE int32_t TARN_KERNEL(Integrate##Name)(const Integration<Real>& call, const Limits<Real>& limits,         \
                                                    Real*) {                                                           \
    return integrate<Interpolant::Kind>(call, limits);                                                                 \
  }                                                                                                                    \
  TARN_VISIBLE int32_t TARN_KERNEL(Integrate##Name##CB)(const Integration<Real>& call, const Limits<Real>& limits,     \
                                                        Real* scratch) {                                               \
    return integrate_with_callbacks<Interpolant::Kind>(call, limits, scratch);                                         \
  }
#include "fitting/integrate/integrators.def"
}

#define TARN_INTEGRATOR(number, Name, Kind) TARN_KERNEL(Integrate##Name),
constexpr Integrator<Real> __Integrate1DDispatch[] = {
#include "fitting/integrate/integrators.def"
};
#define TARN_INTEGRATOR(number, Name, Kind) TARN_KERNEL(Integrate##Name##CB),
constexpr Integrator<Real> __Integrate1DDispatchCB[] = {
#include "fitting/integrate/integrators.def"
};

// The rows of the list stand at the numbers of the interpolants.
#define TARN_INTEGRATOR(number, Name, Kind)                                                                            \
  static_assert(static_cast<int>(Interpolant::Kind) == number &&                                                       \
                __Integrate1DDispatch[number] == TARN_KERNEL(Integrate##Name));
#include "fitting/integrate/integrators.def"
