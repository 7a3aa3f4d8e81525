// The BLAS routines that the library uses, in their published form: every scalar by reference, matrices by columns.
// The x forms are the ones for a body that runs on the caller's threads.
#pragma once

#include <stdint.h>

// ROW(letter, name, parameters, arguments) for each routine, with Real for the element type.
#define TARN_BLAS_ROUTINES(ROW, t, Real)                                                                               \
  ROW(t, syr,                                                                                                          \
      (const char* uplo, const int32_t* n, const Real* alpha, const Real* x, const int32_t* incx, Real* a,             \
       const int32_t* lda),                                                                                            \
      (uplo, n, alpha, x, incx, a, lda))                                                                               \
  ROW(t, syrk,                                                                                                         \
      (const char* uplo, const char* trans, const int32_t* n, const int32_t* k, const Real* alpha, const Real* a,      \
       const int32_t* lda, const Real* beta, Real* c, const int32_t* ldc),                                             \
      (uplo, trans, n, k, alpha, a, lda, beta, c, ldc))                                                                \
  ROW(t, gemm,                                                                                                         \
      (const char* transa, const char* transb, const int32_t* m, const int32_t* n, const int32_t* k,                   \
       const Real* alpha, const Real* a, const int32_t* lda, const Real* b, const int32_t* ldb, const Real* beta,      \
       Real* c, const int32_t* ldc),                                                                                   \
      (transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc))

// tarn_blas_dsyr, tarn_blas_xdsyr, tarn_blas_ssyr and so on; and, for templates over the element type, the same under
// one name: blas::syr, blas::xsyr.
#define TARN_DECLARE_BLAS(t, name, parameters, arguments)                                                              \
  extern "C" void tarn_blas_##t##name parameters;                                                                      \
  extern "C" void tarn_blas_x##t##name parameters;                                                                     \
  namespace tarn::service::blas {                                                                                      \
  inline void name parameters { tarn_blas_##t##name arguments; }                                                       \
  inline void x##name parameters { tarn_blas_x##t##name arguments; }                                                   \
  }
TARN_BLAS_ROUTINES(TARN_DECLARE_BLAS, d, double)
TARN_BLAS_ROUTINES(TARN_DECLARE_BLAS, s, float)
#undef TARN_DECLARE_BLAS
