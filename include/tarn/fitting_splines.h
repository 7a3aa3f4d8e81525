/* Spline construction: the second step of tarn/fitting.h. */
#ifndef TARN_FITTING_SPLINES_H
#define TARN_FITTING_SPLINES_H

#include "tarn/fitting_task.h"

#ifdef __cplusplus
extern "C" {
#endif

int32_t tarn_df_kernel_dDFLinearSpline1D(DFTask* task, int64_t ignored, int64_t method, const tarn_threader* threader);
int32_t tarn_df_kernel_sDFLinearSpline1D(DFTask* task, int64_t ignored, int64_t method, const tarn_threader* threader);
int32_t tarn_df_kernel_dDFQuadraticSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                            const tarn_threader* threader);
int32_t tarn_df_kernel_sDFQuadraticSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                            const tarn_threader* threader);
int32_t tarn_df_kernel_dDFAkimaCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                             const tarn_threader* threader);
int32_t tarn_df_kernel_sDFAkimaCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                             const tarn_threader* threader);
int32_t tarn_df_kernel_dDFBesselCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                              const tarn_threader* threader);
int32_t tarn_df_kernel_sDFBesselCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                              const tarn_threader* threader);
int32_t tarn_df_kernel_dDFHymanCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                             const tarn_threader* threader);
int32_t tarn_df_kernel_sDFHymanCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                             const tarn_threader* threader);
int32_t tarn_df_kernel_dDFHermiteCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);
int32_t tarn_df_kernel_sDFHermiteCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);
int32_t tarn_df_kernel_dDFNaturalCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);
int32_t tarn_df_kernel_sDFNaturalCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);
int32_t tarn_df_kernel_dDFDefaultCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);
int32_t tarn_df_kernel_sDFDefaultCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);

void ddtsvb_4dfl(const int64_t* n, const int64_t* nrhs, double* sub, double* diag, double* super, double* rhs,
                 const int64_t* ldrhs, int64_t* status);
void sdtsvb_4dfl(const int64_t* n, const int64_t* nrhs, float* sub, float* diag, float* super, float* rhs,
                 const int64_t* ldrhs, int64_t* status);
void ddttrfb_4dfl(const int64_t* n, double* sub, double* diag, double* super, int64_t* status);
void sdttrfb_4dfl(const int64_t* n, float* sub, float* diag, float* super, int64_t* status);
void ddttrsb_4dfl(const char* trans, const int64_t* n, const int64_t* nrhs, const double* sub, const double* diag,
                  const double* super, double* rhs, const int64_t* ldrhs, int64_t* status);
void sdttrsb_4dfl(const char* trans, const int64_t* n, const int64_t* nrhs, const float* sub, const float* diag,
                  const float* super, float* rhs, const int64_t* ldrhs, int64_t* status);

#ifdef __cplusplus
}
#endif

#endif
