#include "service/linear_algebra.h"

#include "service/service.h"

// The names under which a BLAS library has the routines. The serial build hands out its work buffers without a lock (its
// configuration names no locking), so two threads in it at once spoil each other's products: one call at a time, for the
// forms used in thread bodies and for the plain ones, which two callers' threads may enter as well.
static uint32_t blas_lock = 0;

#define TARN_FORWARD_BLAS(t, name, parameters, arguments)                                                              \
  extern "C" void t##name##_ parameters;                                                                               \
  extern "C" void tarn_blas_##t##name parameters {                                                                     \
    tarn_serv_lock(&blas_lock);                                                                                        \
    tarn::service::hold_over_fork<blas_lock>();                                                                        \
    t##name##_ arguments;                                                                                              \
    tarn_serv_unlock(&blas_lock);                                                                                      \
  }                                                                                                                    \
  extern "C" void tarn_blas_x##t##name parameters { tarn_blas_##t##name arguments; }
TARN_BLAS_ROUTINES(TARN_FORWARD_BLAS, d, double)
TARN_BLAS_ROUTINES(TARN_FORWARD_BLAS, s, float)
