#include "service/linear_algebra.h"

// The names under which a BLAS library has the routines. The serial build keeps no state between calls but its work
// buffers, which it hands out under a lock of its own, so the forms for thread bodies need no lock around them.
#define TARN_FORWARD_BLAS(t, name, parameters, arguments)                                                              \
  extern "C" void t##name##_ parameters;                                                                               \
  extern "C" void tarn_blas_##t##name parameters { t##name##_ arguments; }                                             \
  extern "C" void tarn_blas_x##t##name parameters { t##name##_ arguments; }
TARN_BLAS_ROUTINES(TARN_FORWARD_BLAS, d, double)
TARN_BLAS_ROUTINES(TARN_FORWARD_BLAS, s, float)
