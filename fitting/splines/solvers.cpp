// The tridiagonal solvers under their names. A status is 0, or 1 when a pivot is 0.
#include "fitting/splines/tridiagonal.h"
#include "service/service.h"
#include "tarn/fitting_splines.h"

namespace tarn::fitting {
namespace {

template <class Real>
void solve_directly(int64_t n, int64_t count, Real* sub, Real* diag, Real* super, Real* rhs, int64_t stride,
                    int64_t* status) {
  *status =
      n > 0 && !(count > 0 ? eliminate<true>(n, sub, diag, super, rhs) : eliminate<false>(n, sub, diag, super, rhs));
  if (n <= 0 || *status) return;
  for (int64_t r = 0; r < count; ++r) {
    if (r > 0) reduce(n, sub, diag, super, rhs + r * stride);
    substitute_back(n, sub, super, rhs + r * stride);
  }
}

template <class Real> void factor(int64_t n, Real* sub, Real* diag, Real* super, int64_t* status) {
  *status = n > 0 && !eliminate<false, Real>(n, sub, diag, super, nullptr);
}

template <class Real>
void solve_factored(int64_t n, int64_t count, const Real* sub, const Real* diag, const Real* super, Real* rhs,
                    int64_t stride, int64_t* status) {
  for (int64_t r = 0; r < count && n > 0; ++r) {
    reduce(n, sub, diag, super, rhs + r * stride);
    substitute_back(n, sub, super, rhs + r * stride);
  }
  *status = 0;
}

}
}

#define TARN_SOLVERS(t, Real)                                                                                          \
  TARN_EXPORT void t##dtsvb_4dfl(const int64_t* n, const int64_t* nrhs, Real* sub, Real* diag, Real* super, Real* rhs, \
                                 const int64_t* ldrhs, int64_t* status) {                                              \
    tarn::fitting::solve_directly(*n, *nrhs, sub, diag, super, rhs, *ldrhs, status);                                   \
  }                                                                                                                    \
  TARN_EXPORT void t##dttrfb_4dfl(const int64_t* n, Real* sub, Real* diag, Real* super, int64_t* status) {             \
    tarn::fitting::factor(*n, sub, diag, super, status);                                                               \
  }                                                                                                                    \
  TARN_EXPORT void t##dttrsb_4dfl(const char* /*trans: always N*/, const int64_t* n, const int64_t* nrhs,              \
                                  const Real* sub, const Real* diag, const Real* super, Real* rhs,                     \
                                  const int64_t* ldrhs, int64_t* status) {                                             \
    tarn::fitting::solve_factored(*n, *nrhs, sub, diag, super, rhs, *ldrhs, status);                                   \
  }
TARN_SOLVERS(d, double)
TARN_SOLVERS(s, float)
