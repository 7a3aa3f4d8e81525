/* The entries and tables of every vector function. Made by tools/regenerate from vector/functions.def;
 * tarn/vector.h tells what all of them share. */
#ifndef TARN_VECTOR_FUNCTIONS_H
#define TARN_VECTOR_FUNCTIONS_H

#include "tarn/vector.h"

/* clang-format off */
#ifdef __cplusplus
extern "C" {
#endif

/* Add: r = a + b.
 * Reports nothing; correctly rounded. */
void __lumedAdd_50(int32_t n, const double* a, const double* b, double* r);
void __lumedAdd_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedAdd(int32_t n, const double* a, const double* b, double* r);
void __lumedAdd_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dAdd_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dAdd_ctab;
void __lumedAddI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedAddI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedAddI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedAddI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dAddI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dAddI_ctab;
void __lumesAdd_21(int32_t n, const float* a, const float* b, float* r);
void __lumesAdd_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesAdd(int32_t n, const float* a, const float* b, float* r);
void __lumesAdd_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sAdd_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sAdd_ctab;
void __lumesAddI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesAddI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesAddI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesAddI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sAddI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sAddI_ctab;

/* Sub: r = a - b.
 * Reports nothing; correctly rounded. */
void __lumedSub_50(int32_t n, const double* a, const double* b, double* r);
void __lumedSub_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedSub(int32_t n, const double* a, const double* b, double* r);
void __lumedSub_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dSub_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dSub_ctab;
void __lumedSubI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedSubI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedSubI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedSubI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dSubI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dSubI_ctab;
void __lumesSub_21(int32_t n, const float* a, const float* b, float* r);
void __lumesSub_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesSub(int32_t n, const float* a, const float* b, float* r);
void __lumesSub_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sSub_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sSub_ctab;
void __lumesSubI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesSubI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesSubI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesSubI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sSubI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sSubI_ctab;

/* Mul: r = a b.
 * Reports nothing; correctly rounded. */
void __lumedMul_50(int32_t n, const double* a, const double* b, double* r);
void __lumedMul_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedMul(int32_t n, const double* a, const double* b, double* r);
void __lumedMul_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dMul_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dMul_ctab;
void __lumedMulI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMulI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMulI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMulI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dMulI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dMulI_ctab;
void __lumesMul_21(int32_t n, const float* a, const float* b, float* r);
void __lumesMul_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesMul(int32_t n, const float* a, const float* b, float* r);
void __lumesMul_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sMul_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sMul_ctab;
void __lumesMulI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMulI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMulI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMulI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sMulI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sMulI_ctab;

/* Sqr: r = a a.
 * Reports nothing; correctly rounded. */
void __lumedSqr_50(int32_t n, const double* a, double* r);
void __lumedSqr_HA(int32_t n, const double* a, double* r);
void __lumedSqr(int32_t n, const double* a, double* r);
void __lumedSqr_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dSqr_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dSqr_ctab;
void __lumedSqrI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedSqrI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedSqrI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedSqrI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dSqrI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dSqrI_ctab;
void __lumesSqr_21(int32_t n, const float* a, float* r);
void __lumesSqr_HA(int32_t n, const float* a, float* r);
void __lumesSqr(int32_t n, const float* a, float* r);
void __lumesSqr_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sSqr_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sSqr_ctab;
void __lumesSqrI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesSqrI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesSqrI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesSqrI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sSqrI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sSqrI_ctab;

/* Abs: r = |a|.
 * Clears the sign, of NaNs too. Reports nothing; exact. */
void __lumedAbs_50(int32_t n, const double* a, double* r);
void __lumedAbs_HA(int32_t n, const double* a, double* r);
void __lumedAbs(int32_t n, const double* a, double* r);
void __lumedAbs_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dAbs_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dAbs_ctab;
void __lumedAbsI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedAbsI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedAbsI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedAbsI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dAbsI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dAbsI_ctab;
void __lumesAbs_21(int32_t n, const float* a, float* r);
void __lumesAbs_HA(int32_t n, const float* a, float* r);
void __lumesAbs(int32_t n, const float* a, float* r);
void __lumesAbs_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sAbs_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sAbs_ctab;
void __lumesAbsI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesAbsI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesAbsI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesAbsI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sAbsI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sAbsI_ctab;

/* CopySign: r = |a| with the sign of b.
 * Works on the bits, NaNs included. Reports nothing; exact. */
void __lumedCopySign_50(int32_t n, const double* a, const double* b, double* r);
void __lumedCopySign_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedCopySign(int32_t n, const double* a, const double* b, double* r);
void __lumedCopySign_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dCopySign_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dCopySign_ctab;
void __lumedCopySignI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedCopySignI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedCopySignI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedCopySignI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dCopySignI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dCopySignI_ctab;
void __lumesCopySign_21(int32_t n, const float* a, const float* b, float* r);
void __lumesCopySign_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesCopySign(int32_t n, const float* a, const float* b, float* r);
void __lumesCopySign_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sCopySign_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sCopySign_ctab;
void __lumesCopySignI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesCopySignI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesCopySignI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesCopySignI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sCopySignI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sCopySignI_ctab;

/* Fdim: r = a - b where a > b, else +0.
 * A NaN for a NaN. Reports nothing; correctly rounded. */
void __lumedFdim_50(int32_t n, const double* a, const double* b, double* r);
void __lumedFdim_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedFdim(int32_t n, const double* a, const double* b, double* r);
void __lumedFdim_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dFdim_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFdim_ctab;
void __lumedFdimI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFdimI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFdimI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFdimI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dFdimI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFdimI_ctab;
void __lumesFdim_21(int32_t n, const float* a, const float* b, float* r);
void __lumesFdim_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesFdim(int32_t n, const float* a, const float* b, float* r);
void __lumesFdim_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sFdim_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFdim_ctab;
void __lumesFdimI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFdimI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFdimI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFdimI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sFdimI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFdimI_ctab;

/* Div: r = a / b.
 * Status: 2 wherever b is zero, with an infinity, or a NaN for a zero or NaN above it. Correctly rounded in LA and
 * HA. */
void __lumedDiv_50(int32_t n, const double* a, const double* b, double* r);
void __lumedDiv_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedDiv(int32_t n, const double* a, const double* b, double* r);
void __lumedDiv_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dDiv_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dDiv_ctab;
void __lumedDivI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedDivI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedDivI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedDivI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dDivI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dDivI_ctab;
void __lumesDiv_21(int32_t n, const float* a, const float* b, float* r);
void __lumesDiv_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesDiv(int32_t n, const float* a, const float* b, float* r);
void __lumesDiv_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sDiv_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sDiv_ctab;
void __lumesDivI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesDivI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesDivI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesDivI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sDivI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sDivI_ctab;

/* Inv: r = 1 / a.
 * Status: 2 with an infinity of its sign for a zero. Correctly rounded in LA and HA. */
void __lumedInv_50(int32_t n, const double* a, double* r);
void __lumedInv_HA(int32_t n, const double* a, double* r);
void __lumedInv(int32_t n, const double* a, double* r);
void __lumedInv_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dInv_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dInv_ctab;
void __lumedInvI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dInvI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dInvI_ctab;
void __lumesInv_21(int32_t n, const float* a, float* r);
void __lumesInv_HA(int32_t n, const float* a, float* r);
void __lumesInv(int32_t n, const float* a, float* r);
void __lumesInv_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sInv_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sInv_ctab;
void __lumesInvI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sInvI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sInvI_ctab;

/* Fmax: r = the greater of a and b.
 * A NaN loses against a number. Reports nothing; exact. */
void __lumedFmax_50(int32_t n, const double* a, const double* b, double* r);
void __lumedFmax_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedFmax(int32_t n, const double* a, const double* b, double* r);
void __lumedFmax_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dFmax_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFmax_ctab;
void __lumedFmaxI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFmaxI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFmaxI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFmaxI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dFmaxI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFmaxI_ctab;
void __lumesFmax_21(int32_t n, const float* a, const float* b, float* r);
void __lumesFmax_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesFmax(int32_t n, const float* a, const float* b, float* r);
void __lumesFmax_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sFmax_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFmax_ctab;
void __lumesFmaxI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFmaxI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFmaxI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFmaxI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sFmaxI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFmaxI_ctab;

/* Fmin: r = the lesser of a and b.
 * A NaN loses against a number. Reports nothing; exact. */
void __lumedFmin_50(int32_t n, const double* a, const double* b, double* r);
void __lumedFmin_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedFmin(int32_t n, const double* a, const double* b, double* r);
void __lumedFmin_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dFmin_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFmin_ctab;
void __lumedFminI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFminI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFminI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFminI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dFminI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFminI_ctab;
void __lumesFmin_21(int32_t n, const float* a, const float* b, float* r);
void __lumesFmin_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesFmin(int32_t n, const float* a, const float* b, float* r);
void __lumesFmin_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sFmin_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFmin_ctab;
void __lumesFminI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFminI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFminI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFminI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sFminI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFminI_ctab;

/* MaxMag: r = that of a and b with the greater magnitude.
 * With equal magnitudes Fmax of the two. A NaN loses against a number. Reports nothing; exact. */
void __lumedMaxMag_50(int32_t n, const double* a, const double* b, double* r);
void __lumedMaxMag_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedMaxMag(int32_t n, const double* a, const double* b, double* r);
void __lumedMaxMag_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dMaxMag_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dMaxMag_ctab;
void __lumedMaxMagI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMaxMagI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMaxMagI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMaxMagI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dMaxMagI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dMaxMagI_ctab;
void __lumesMaxMag_21(int32_t n, const float* a, const float* b, float* r);
void __lumesMaxMag_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesMaxMag(int32_t n, const float* a, const float* b, float* r);
void __lumesMaxMag_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sMaxMag_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sMaxMag_ctab;
void __lumesMaxMagI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMaxMagI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMaxMagI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMaxMagI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sMaxMagI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sMaxMagI_ctab;

/* MinMag: r = that of a and b with the lesser magnitude.
 * With equal magnitudes Fmin of the two. A NaN loses against a number. Reports nothing; exact. */
void __lumedMinMag_50(int32_t n, const double* a, const double* b, double* r);
void __lumedMinMag_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedMinMag(int32_t n, const double* a, const double* b, double* r);
void __lumedMinMag_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dMinMag_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dMinMag_ctab;
void __lumedMinMagI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMinMagI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMinMagI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedMinMagI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dMinMagI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dMinMagI_ctab;
void __lumesMinMag_21(int32_t n, const float* a, const float* b, float* r);
void __lumesMinMag_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesMinMag(int32_t n, const float* a, const float* b, float* r);
void __lumesMinMag_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sMinMag_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sMinMag_ctab;
void __lumesMinMagI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMinMagI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMinMagI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesMinMagI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sMinMagI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sMinMagI_ctab;

/* Fmod: r = a - b trunc(a/b).
 * The result has the sign of a. Status: 2 with a NaN where b is zero or a infinite. Exact. */
void __lumedFmod_50(int32_t n, const double* a, const double* b, double* r);
void __lumedFmod_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedFmod(int32_t n, const double* a, const double* b, double* r);
void __lumedFmod_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dFmod_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFmod_ctab;
void __lumedFmodI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFmodI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFmodI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedFmodI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dFmodI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFmodI_ctab;
void __lumesFmod_21(int32_t n, const float* a, const float* b, float* r);
void __lumesFmod_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesFmod(int32_t n, const float* a, const float* b, float* r);
void __lumesFmod_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sFmod_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFmod_ctab;
void __lumesFmodI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFmodI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFmodI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesFmodI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sFmodI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFmodI_ctab;

/* Remainder: r = a - b n with n the integer nearest to a/b, even in a tie.
 * Status: 2 with a NaN where b is zero or a infinite. Exact. */
void __lumedRemainder_50(int32_t n, const double* a, const double* b, double* r);
void __lumedRemainder_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedRemainder(int32_t n, const double* a, const double* b, double* r);
void __lumedRemainder_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dRemainder_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dRemainder_ctab;
void __lumedRemainderI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedRemainderI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedRemainderI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedRemainderI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dRemainderI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dRemainderI_ctab;
void __lumesRemainder_21(int32_t n, const float* a, const float* b, float* r);
void __lumesRemainder_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesRemainder(int32_t n, const float* a, const float* b, float* r);
void __lumesRemainder_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sRemainder_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sRemainder_ctab;
void __lumesRemainderI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesRemainderI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesRemainderI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesRemainderI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sRemainderI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sRemainderI_ctab;

/* NextAfter: r = the number next to a in the direction of b.
 * Statuses: 3 where an infinity is reached; 4 where the result is a denormal or a zero next to one. Exact. */
void __lumedNextAfter_50(int32_t n, const double* a, const double* b, double* r);
void __lumedNextAfter_HA(int32_t n, const double* a, const double* b, double* r);
void __lumedNextAfter(int32_t n, const double* a, const double* b, double* r);
void __lumedNextAfter_26(int32_t n, const double* a, const double* b, double* r);
extern const tarn_kernel tarn_lume_kernel_dNextAfter_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dNextAfter_ctab;
void __lumedNextAfterI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedNextAfterI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedNextAfterI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
void __lumedNextAfterI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dNextAfterI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dNextAfterI_ctab;
void __lumesNextAfter_21(int32_t n, const float* a, const float* b, float* r);
void __lumesNextAfter_HA(int32_t n, const float* a, const float* b, float* r);
void __lumesNextAfter(int32_t n, const float* a, const float* b, float* r);
void __lumesNextAfter_11(int32_t n, const float* a, const float* b, float* r);
extern const tarn_kernel tarn_lume_kernel_sNextAfter_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sNextAfter_ctab;
void __lumesNextAfterI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesNextAfterI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesNextAfterI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
void __lumesNextAfterI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sNextAfterI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sNextAfterI_ctab;

/* LinearFrac: r = (scalea a + shifta) / (scaleb b + shiftb).
 * Each operation is rounded once. An array whose scale is zero is not looked at. Reports nothing. */
void __lumedLinearFrac_50(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
void __lumedLinearFrac_HA(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
void __lumedLinearFrac(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
void __lumedLinearFrac_26(int32_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
extern const tarn_kernel tarn_lume_kernel_dLinearFrac_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dLinearFrac_ctab;
void __lumedLinearFracI_50(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);
void __lumedLinearFracI_HA(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);
void __lumedLinearFracI(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);
void __lumedLinearFracI_26(int32_t n, const double* a, int32_t inca, const double* b, int32_t incb, double scalea, double shifta, double scaleb, double shiftb, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dLinearFracI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dLinearFracI_ctab;
void __lumesLinearFrac_21(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
void __lumesLinearFrac_HA(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
void __lumesLinearFrac(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
void __lumesLinearFrac_11(int32_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
extern const tarn_kernel tarn_lume_kernel_sLinearFrac_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sLinearFrac_ctab;
void __lumesLinearFracI_21(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
void __lumesLinearFracI_HA(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
void __lumesLinearFracI(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
void __lumesLinearFracI_11(int32_t n, const float* a, int32_t inca, const float* b, int32_t incb, float scalea, float shifta, float scaleb, float shiftb, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sLinearFracI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sLinearFracI_ctab;

/* Ceil: r = the least integer not below a.
 * Reports nothing; exact. */
void __lumedCeil_50(int32_t n, const double* a, double* r);
void __lumedCeil_HA(int32_t n, const double* a, double* r);
void __lumedCeil(int32_t n, const double* a, double* r);
void __lumedCeil_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dCeil_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dCeil_ctab;
void __lumedCeilI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedCeilI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedCeilI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedCeilI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dCeilI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dCeilI_ctab;
void __lumesCeil_21(int32_t n, const float* a, float* r);
void __lumesCeil_HA(int32_t n, const float* a, float* r);
void __lumesCeil(int32_t n, const float* a, float* r);
void __lumesCeil_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sCeil_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sCeil_ctab;
void __lumesCeilI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesCeilI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesCeilI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesCeilI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sCeilI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sCeilI_ctab;

/* Floor: r = the greatest integer not above a.
 * Reports nothing; exact. */
void __lumedFloor_50(int32_t n, const double* a, double* r);
void __lumedFloor_HA(int32_t n, const double* a, double* r);
void __lumedFloor(int32_t n, const double* a, double* r);
void __lumedFloor_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dFloor_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFloor_ctab;
void __lumedFloorI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedFloorI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedFloorI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedFloorI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dFloorI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFloorI_ctab;
void __lumesFloor_21(int32_t n, const float* a, float* r);
void __lumesFloor_HA(int32_t n, const float* a, float* r);
void __lumesFloor(int32_t n, const float* a, float* r);
void __lumesFloor_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sFloor_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFloor_ctab;
void __lumesFloorI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesFloorI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesFloorI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesFloorI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sFloorI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFloorI_ctab;

/* Trunc: r = a without its fraction.
 * Reports nothing; exact. */
void __lumedTrunc_50(int32_t n, const double* a, double* r);
void __lumedTrunc_HA(int32_t n, const double* a, double* r);
void __lumedTrunc(int32_t n, const double* a, double* r);
void __lumedTrunc_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dTrunc_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dTrunc_ctab;
void __lumedTruncI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedTruncI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedTruncI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedTruncI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dTruncI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dTruncI_ctab;
void __lumesTrunc_21(int32_t n, const float* a, float* r);
void __lumesTrunc_HA(int32_t n, const float* a, float* r);
void __lumesTrunc(int32_t n, const float* a, float* r);
void __lumesTrunc_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sTrunc_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sTrunc_ctab;
void __lumesTruncI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesTruncI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesTruncI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesTruncI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sTruncI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sTruncI_ctab;

/* Rint: r = a rounded to an integer as the caller's rounding mode says.
 * Raises the inexact flag where a is none. Reports nothing; exact. */
void __lumedRint_50(int32_t n, const double* a, double* r);
void __lumedRint_HA(int32_t n, const double* a, double* r);
void __lumedRint(int32_t n, const double* a, double* r);
void __lumedRint_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dRint_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dRint_ctab;
void __lumedRintI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedRintI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedRintI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedRintI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dRintI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dRintI_ctab;
void __lumesRint_21(int32_t n, const float* a, float* r);
void __lumesRint_HA(int32_t n, const float* a, float* r);
void __lumesRint(int32_t n, const float* a, float* r);
void __lumesRint_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sRint_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sRint_ctab;
void __lumesRintI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesRintI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesRintI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesRintI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sRintI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sRintI_ctab;

/* NearbyInt: r = a rounded to an integer as the caller's rounding mode says.
 * Raises no inexact flag. Reports nothing; exact. */
void __lumedNearbyInt_50(int32_t n, const double* a, double* r);
void __lumedNearbyInt_HA(int32_t n, const double* a, double* r);
void __lumedNearbyInt(int32_t n, const double* a, double* r);
void __lumedNearbyInt_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dNearbyInt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dNearbyInt_ctab;
void __lumedNearbyIntI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedNearbyIntI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedNearbyIntI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedNearbyIntI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dNearbyIntI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dNearbyIntI_ctab;
void __lumesNearbyInt_21(int32_t n, const float* a, float* r);
void __lumesNearbyInt_HA(int32_t n, const float* a, float* r);
void __lumesNearbyInt(int32_t n, const float* a, float* r);
void __lumesNearbyInt_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sNearbyInt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sNearbyInt_ctab;
void __lumesNearbyIntI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesNearbyIntI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesNearbyIntI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesNearbyIntI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sNearbyIntI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sNearbyIntI_ctab;

/* Round: r = a rounded to the nearest integer, halves away from zero.
 * Reports nothing; exact. */
void __lumedRound_50(int32_t n, const double* a, double* r);
void __lumedRound_HA(int32_t n, const double* a, double* r);
void __lumedRound(int32_t n, const double* a, double* r);
void __lumedRound_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dRound_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dRound_ctab;
void __lumedRoundI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedRoundI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedRoundI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedRoundI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dRoundI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dRoundI_ctab;
void __lumesRound_21(int32_t n, const float* a, float* r);
void __lumesRound_HA(int32_t n, const float* a, float* r);
void __lumesRound(int32_t n, const float* a, float* r);
void __lumesRound_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sRound_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sRound_ctab;
void __lumesRoundI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesRoundI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesRoundI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesRoundI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sRoundI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sRoundI_ctab;

/* Frac: r = a - trunc(a), of a's sign.
 * A zero of its sign for an infinity. Reports nothing; exact. */
void __lumedFrac_50(int32_t n, const double* a, double* r);
void __lumedFrac_HA(int32_t n, const double* a, double* r);
void __lumedFrac(int32_t n, const double* a, double* r);
void __lumedFrac_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dFrac_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFrac_ctab;
void __lumedFracI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedFracI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedFracI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedFracI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dFracI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dFracI_ctab;
void __lumesFrac_21(int32_t n, const float* a, float* r);
void __lumesFrac_HA(int32_t n, const float* a, float* r);
void __lumesFrac(int32_t n, const float* a, float* r);
void __lumesFrac_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sFrac_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFrac_ctab;
void __lumesFracI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesFracI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesFracI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesFracI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sFracI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sFracI_ctab;

/* Modf: r1 = trunc(a), r2 = a - trunc(a), both of a's sign.
 * An infinity gives itself and a zero. Reports nothing; exact. */
void __lumedModf_50(int32_t n, const double* a, double* r1, double* r2);
void __lumedModf_HA(int32_t n, const double* a, double* r1, double* r2);
void __lumedModf(int32_t n, const double* a, double* r1, double* r2);
void __lumedModf_26(int32_t n, const double* a, double* r1, double* r2);
extern const tarn_kernel tarn_lume_kernel_dModf_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dModf_ctab;
void __lumedModfI_50(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);
void __lumedModfI_HA(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);
void __lumedModfI(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);
void __lumedModfI_26(int32_t n, const double* a, int32_t inca, double* r1, int32_t incr1, double* r2, int32_t incr2);
extern const tarn_kernel tarn_lume_kernel_dModfI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dModfI_ctab;
void __lumesModf_21(int32_t n, const float* a, float* r1, float* r2);
void __lumesModf_HA(int32_t n, const float* a, float* r1, float* r2);
void __lumesModf(int32_t n, const float* a, float* r1, float* r2);
void __lumesModf_11(int32_t n, const float* a, float* r1, float* r2);
extern const tarn_kernel tarn_lume_kernel_sModf_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sModf_ctab;
void __lumesModfI_21(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
void __lumesModfI_HA(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
void __lumesModfI(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
void __lumesModfI_11(int32_t n, const float* a, int32_t inca, float* r1, int32_t incr1, float* r2, int32_t incr2);
extern const tarn_kernel tarn_lume_kernel_sModfI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sModfI_ctab;

/* Logb: r = the exponent of a: floor(log2 |a|).
 * Status: 1 with -infinity for a zero. Infinity for infinities, the absolute value for a NaN. Exact. */
void __lumedLogb_50(int32_t n, const double* a, double* r);
void __lumedLogb_HA(int32_t n, const double* a, double* r);
void __lumedLogb(int32_t n, const double* a, double* r);
void __lumedLogb_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dLogb_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dLogb_ctab;
void __lumedLogbI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedLogbI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedLogbI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedLogbI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dLogbI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dLogbI_ctab;
void __lumesLogb_21(int32_t n, const float* a, float* r);
void __lumesLogb_HA(int32_t n, const float* a, float* r);
void __lumesLogb(int32_t n, const float* a, float* r);
void __lumesLogb_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sLogb_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sLogb_ctab;
void __lumesLogbI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesLogbI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesLogbI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesLogbI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sLogbI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sLogbI_ctab;

/* Sqrt: r = the square root of a.
 * Status: 1 with NaN for a negative argument; -0 gives -0. */
void __lumedSqrt_50(int32_t n, const double* a, double* r);
void __lumedSqrt_HA(int32_t n, const double* a, double* r);
void __lumedSqrt(int32_t n, const double* a, double* r);
void __lumedSqrt_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dSqrt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dSqrt_ctab;
void __lumedSqrtI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedSqrtI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedSqrtI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedSqrtI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dSqrtI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dSqrtI_ctab;
void __lumesSqrt_21(int32_t n, const float* a, float* r);
void __lumesSqrt_HA(int32_t n, const float* a, float* r);
void __lumesSqrt(int32_t n, const float* a, float* r);
void __lumesSqrt_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sSqrt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sSqrt_ctab;
void __lumesSqrtI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesSqrtI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesSqrtI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesSqrtI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sSqrtI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sSqrtI_ctab;

/* InvSqrt: r = 1 / the square root of a.
 * Statuses: 1 with NaN for a negative argument; 2 with an infinity of its sign for a zero. */
void __lumedInvSqrt_50(int32_t n, const double* a, double* r);
void __lumedInvSqrt_HA(int32_t n, const double* a, double* r);
void __lumedInvSqrt(int32_t n, const double* a, double* r);
void __lumedInvSqrt_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dInvSqrt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dInvSqrt_ctab;
void __lumedInvSqrtI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvSqrtI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvSqrtI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvSqrtI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dInvSqrtI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dInvSqrtI_ctab;
void __lumesInvSqrt_21(int32_t n, const float* a, float* r);
void __lumesInvSqrt_HA(int32_t n, const float* a, float* r);
void __lumesInvSqrt(int32_t n, const float* a, float* r);
void __lumesInvSqrt_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sInvSqrt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sInvSqrt_ctab;
void __lumesInvSqrtI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvSqrtI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvSqrtI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvSqrtI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sInvSqrtI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sInvSqrtI_ctab;

/* Cbrt: r = the cube root of a.
 * Reports nothing. */
void __lumedCbrt_50(int32_t n, const double* a, double* r);
void __lumedCbrt_HA(int32_t n, const double* a, double* r);
void __lumedCbrt(int32_t n, const double* a, double* r);
void __lumedCbrt_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dCbrt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dCbrt_ctab;
void __lumedCbrtI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedCbrtI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedCbrtI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedCbrtI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dCbrtI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dCbrtI_ctab;
void __lumesCbrt_21(int32_t n, const float* a, float* r);
void __lumesCbrt_HA(int32_t n, const float* a, float* r);
void __lumesCbrt(int32_t n, const float* a, float* r);
void __lumesCbrt_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sCbrt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sCbrt_ctab;
void __lumesCbrtI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesCbrtI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesCbrtI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesCbrtI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sCbrtI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sCbrtI_ctab;

/* InvCbrt: r = 1 / the cube root of a.
 * Status: 2 with an infinity of its sign for a zero. */
void __lumedInvCbrt_50(int32_t n, const double* a, double* r);
void __lumedInvCbrt_HA(int32_t n, const double* a, double* r);
void __lumedInvCbrt(int32_t n, const double* a, double* r);
void __lumedInvCbrt_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dInvCbrt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dInvCbrt_ctab;
void __lumedInvCbrtI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvCbrtI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvCbrtI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedInvCbrtI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dInvCbrtI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dInvCbrtI_ctab;
void __lumesInvCbrt_21(int32_t n, const float* a, float* r);
void __lumesInvCbrt_HA(int32_t n, const float* a, float* r);
void __lumesInvCbrt(int32_t n, const float* a, float* r);
void __lumesInvCbrt_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sInvCbrt_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sInvCbrt_ctab;
void __lumesInvCbrtI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvCbrtI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvCbrtI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesInvCbrtI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sInvCbrtI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sInvCbrtI_ctab;

/* Exp: r = e^a.
 * Statuses: 3 with infinity above ln of the largest number; 4 with a denormal or zero below ln of the smallest
 * normal one. Method: table of powers of two and a short polynomial (P. T. P. Tang, ACM TOMS 15, 1989). */
void __lumedExp_50(int32_t n, const double* a, double* r);
void __lumedExp_HA(int32_t n, const double* a, double* r);
void __lumedExp(int32_t n, const double* a, double* r);
void __lumedExp_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dExp_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dExp_ctab;
void __lumedExpI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedExpI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedExpI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedExpI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dExpI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dExpI_ctab;
void __lumesExp_21(int32_t n, const float* a, float* r);
void __lumesExp_HA(int32_t n, const float* a, float* r);
void __lumesExp(int32_t n, const float* a, float* r);
void __lumesExp_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sExp_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sExp_ctab;
void __lumesExpI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesExpI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesExpI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesExpI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sExpI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sExpI_ctab;

/* Ln: r = ln a.
 * Statuses: 1 with NaN for a negative argument; 2 with -infinity for a zero. Method: reciprocal of the leading bits
 * and a table of its logarithm (P. T. P. Tang, ACM TOMS 16, 1990). */
void __lumedLn_50(int32_t n, const double* a, double* r);
void __lumedLn_HA(int32_t n, const double* a, double* r);
void __lumedLn(int32_t n, const double* a, double* r);
void __lumedLn_26(int32_t n, const double* a, double* r);
extern const tarn_kernel tarn_lume_kernel_dLn_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dLn_ctab;
void __lumedLnI_50(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedLnI_HA(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedLnI(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
void __lumedLnI_26(int32_t n, const double* a, int32_t inca, double* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_dLnI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dLnI_ctab;
void __lumesLn_21(int32_t n, const float* a, float* r);
void __lumesLn_HA(int32_t n, const float* a, float* r);
void __lumesLn(int32_t n, const float* a, float* r);
void __lumesLn_11(int32_t n, const float* a, float* r);
extern const tarn_kernel tarn_lume_kernel_sLn_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sLn_ctab;
void __lumesLnI_21(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesLnI_HA(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesLnI(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
void __lumesLnI_11(int32_t n, const float* a, int32_t inca, float* r, int32_t incr);
extern const tarn_kernel tarn_lume_kernel_sLnI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sLnI_ctab;

/* PackI: y[i] = a[i inca].
 * Reports nothing. */
void __lumesPackI_21(int64_t n, const float* a, int64_t inca, float* y, int32_t width);
void __lumesPackI_HA(int64_t n, const float* a, int64_t inca, float* y, int32_t width);
void __lumesPackI(int64_t n, const float* a, int64_t inca, float* y, int32_t width);
void __lumesPackI_11(int64_t n, const float* a, int64_t inca, float* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_sPackI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sPackI_ctab;
void __lumedPackI_50(int64_t n, const double* a, int64_t inca, double* y, int32_t width);
void __lumedPackI_HA(int64_t n, const double* a, int64_t inca, double* y, int32_t width);
void __lumedPackI(int64_t n, const double* a, int64_t inca, double* y, int32_t width);
void __lumedPackI_26(int64_t n, const double* a, int64_t inca, double* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_dPackI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dPackI_ctab;
void __lumecPackI_21(int64_t n, const tarn_c32* a, int64_t inca, tarn_c32* y, int32_t width);
void __lumecPackI_HA(int64_t n, const tarn_c32* a, int64_t inca, tarn_c32* y, int32_t width);
void __lumecPackI(int64_t n, const tarn_c32* a, int64_t inca, tarn_c32* y, int32_t width);
void __lumecPackI_11(int64_t n, const tarn_c32* a, int64_t inca, tarn_c32* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_cPackI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_cPackI_ctab;
void __lumezPackI_50(int64_t n, const tarn_c64* a, int64_t inca, tarn_c64* y, int32_t width);
void __lumezPackI_HA(int64_t n, const tarn_c64* a, int64_t inca, tarn_c64* y, int32_t width);
void __lumezPackI(int64_t n, const tarn_c64* a, int64_t inca, tarn_c64* y, int32_t width);
void __lumezPackI_26(int64_t n, const tarn_c64* a, int64_t inca, tarn_c64* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_zPackI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_zPackI_ctab;

/* PackV: y[i] = a[ia[i]].
 * Indices count from 0. Reports nothing. */
void __lumesPackV_21(int64_t n, const float* a, const void* ia, float* y, int32_t width);
void __lumesPackV_HA(int64_t n, const float* a, const void* ia, float* y, int32_t width);
void __lumesPackV(int64_t n, const float* a, const void* ia, float* y, int32_t width);
void __lumesPackV_11(int64_t n, const float* a, const void* ia, float* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_sPackV_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sPackV_ctab;
void __lumedPackV_50(int64_t n, const double* a, const void* ia, double* y, int32_t width);
void __lumedPackV_HA(int64_t n, const double* a, const void* ia, double* y, int32_t width);
void __lumedPackV(int64_t n, const double* a, const void* ia, double* y, int32_t width);
void __lumedPackV_26(int64_t n, const double* a, const void* ia, double* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_dPackV_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dPackV_ctab;
void __lumecPackV_21(int64_t n, const tarn_c32* a, const void* ia, tarn_c32* y, int32_t width);
void __lumecPackV_HA(int64_t n, const tarn_c32* a, const void* ia, tarn_c32* y, int32_t width);
void __lumecPackV(int64_t n, const tarn_c32* a, const void* ia, tarn_c32* y, int32_t width);
void __lumecPackV_11(int64_t n, const tarn_c32* a, const void* ia, tarn_c32* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_cPackV_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_cPackV_ctab;
void __lumezPackV_50(int64_t n, const tarn_c64* a, const void* ia, tarn_c64* y, int32_t width);
void __lumezPackV_HA(int64_t n, const tarn_c64* a, const void* ia, tarn_c64* y, int32_t width);
void __lumezPackV(int64_t n, const tarn_c64* a, const void* ia, tarn_c64* y, int32_t width);
void __lumezPackV_26(int64_t n, const tarn_c64* a, const void* ia, tarn_c64* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_zPackV_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_zPackV_ctab;

/* PackM: y = the a[i] with ma[i] not 0, in order.
 * Reports nothing. */
void __lumesPackM_21(int64_t n, const float* a, const void* ma, float* y, int32_t width);
void __lumesPackM_HA(int64_t n, const float* a, const void* ma, float* y, int32_t width);
void __lumesPackM(int64_t n, const float* a, const void* ma, float* y, int32_t width);
void __lumesPackM_11(int64_t n, const float* a, const void* ma, float* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_sPackM_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sPackM_ctab;
void __lumedPackM_50(int64_t n, const double* a, const void* ma, double* y, int32_t width);
void __lumedPackM_HA(int64_t n, const double* a, const void* ma, double* y, int32_t width);
void __lumedPackM(int64_t n, const double* a, const void* ma, double* y, int32_t width);
void __lumedPackM_26(int64_t n, const double* a, const void* ma, double* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_dPackM_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dPackM_ctab;
void __lumecPackM_21(int64_t n, const tarn_c32* a, const void* ma, tarn_c32* y, int32_t width);
void __lumecPackM_HA(int64_t n, const tarn_c32* a, const void* ma, tarn_c32* y, int32_t width);
void __lumecPackM(int64_t n, const tarn_c32* a, const void* ma, tarn_c32* y, int32_t width);
void __lumecPackM_11(int64_t n, const tarn_c32* a, const void* ma, tarn_c32* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_cPackM_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_cPackM_ctab;
void __lumezPackM_50(int64_t n, const tarn_c64* a, const void* ma, tarn_c64* y, int32_t width);
void __lumezPackM_HA(int64_t n, const tarn_c64* a, const void* ma, tarn_c64* y, int32_t width);
void __lumezPackM(int64_t n, const tarn_c64* a, const void* ma, tarn_c64* y, int32_t width);
void __lumezPackM_26(int64_t n, const tarn_c64* a, const void* ma, tarn_c64* y, int32_t width);
extern const tarn_kernel tarn_lume_kernel_zPackM_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_zPackM_ctab;

/* UnpackI: y[i incy] = a[i].
 * Reports nothing. */
void __lumesUnpackI_21(int64_t n, const float* a, float* y, int64_t incy, int32_t width);
void __lumesUnpackI_HA(int64_t n, const float* a, float* y, int64_t incy, int32_t width);
void __lumesUnpackI(int64_t n, const float* a, float* y, int64_t incy, int32_t width);
void __lumesUnpackI_11(int64_t n, const float* a, float* y, int64_t incy, int32_t width);
extern const tarn_kernel tarn_lume_kernel_sUnpackI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sUnpackI_ctab;
void __lumedUnpackI_50(int64_t n, const double* a, double* y, int64_t incy, int32_t width);
void __lumedUnpackI_HA(int64_t n, const double* a, double* y, int64_t incy, int32_t width);
void __lumedUnpackI(int64_t n, const double* a, double* y, int64_t incy, int32_t width);
void __lumedUnpackI_26(int64_t n, const double* a, double* y, int64_t incy, int32_t width);
extern const tarn_kernel tarn_lume_kernel_dUnpackI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dUnpackI_ctab;
void __lumecUnpackI_21(int64_t n, const tarn_c32* a, tarn_c32* y, int64_t incy, int32_t width);
void __lumecUnpackI_HA(int64_t n, const tarn_c32* a, tarn_c32* y, int64_t incy, int32_t width);
void __lumecUnpackI(int64_t n, const tarn_c32* a, tarn_c32* y, int64_t incy, int32_t width);
void __lumecUnpackI_11(int64_t n, const tarn_c32* a, tarn_c32* y, int64_t incy, int32_t width);
extern const tarn_kernel tarn_lume_kernel_cUnpackI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_cUnpackI_ctab;
void __lumezUnpackI_50(int64_t n, const tarn_c64* a, tarn_c64* y, int64_t incy, int32_t width);
void __lumezUnpackI_HA(int64_t n, const tarn_c64* a, tarn_c64* y, int64_t incy, int32_t width);
void __lumezUnpackI(int64_t n, const tarn_c64* a, tarn_c64* y, int64_t incy, int32_t width);
void __lumezUnpackI_26(int64_t n, const tarn_c64* a, tarn_c64* y, int64_t incy, int32_t width);
extern const tarn_kernel tarn_lume_kernel_zUnpackI_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_zUnpackI_ctab;

/* UnpackV: y[iy[i]] = a[i].
 * Indices count from 0. Reports nothing. */
void __lumesUnpackV_21(int64_t n, const float* a, float* y, const void* iy, int32_t width);
void __lumesUnpackV_HA(int64_t n, const float* a, float* y, const void* iy, int32_t width);
void __lumesUnpackV(int64_t n, const float* a, float* y, const void* iy, int32_t width);
void __lumesUnpackV_11(int64_t n, const float* a, float* y, const void* iy, int32_t width);
extern const tarn_kernel tarn_lume_kernel_sUnpackV_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sUnpackV_ctab;
void __lumedUnpackV_50(int64_t n, const double* a, double* y, const void* iy, int32_t width);
void __lumedUnpackV_HA(int64_t n, const double* a, double* y, const void* iy, int32_t width);
void __lumedUnpackV(int64_t n, const double* a, double* y, const void* iy, int32_t width);
void __lumedUnpackV_26(int64_t n, const double* a, double* y, const void* iy, int32_t width);
extern const tarn_kernel tarn_lume_kernel_dUnpackV_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dUnpackV_ctab;
void __lumecUnpackV_21(int64_t n, const tarn_c32* a, tarn_c32* y, const void* iy, int32_t width);
void __lumecUnpackV_HA(int64_t n, const tarn_c32* a, tarn_c32* y, const void* iy, int32_t width);
void __lumecUnpackV(int64_t n, const tarn_c32* a, tarn_c32* y, const void* iy, int32_t width);
void __lumecUnpackV_11(int64_t n, const tarn_c32* a, tarn_c32* y, const void* iy, int32_t width);
extern const tarn_kernel tarn_lume_kernel_cUnpackV_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_cUnpackV_ctab;
void __lumezUnpackV_50(int64_t n, const tarn_c64* a, tarn_c64* y, const void* iy, int32_t width);
void __lumezUnpackV_HA(int64_t n, const tarn_c64* a, tarn_c64* y, const void* iy, int32_t width);
void __lumezUnpackV(int64_t n, const tarn_c64* a, tarn_c64* y, const void* iy, int32_t width);
void __lumezUnpackV_26(int64_t n, const tarn_c64* a, tarn_c64* y, const void* iy, int32_t width);
extern const tarn_kernel tarn_lume_kernel_zUnpackV_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_zUnpackV_ctab;

/* UnpackM: y[i] = the next a where my[i] is not 0; other y[i] stay.
 * Reports nothing. */
void __lumesUnpackM_21(int64_t n, const float* a, float* y, const void* my, int32_t width);
void __lumesUnpackM_HA(int64_t n, const float* a, float* y, const void* my, int32_t width);
void __lumesUnpackM(int64_t n, const float* a, float* y, const void* my, int32_t width);
void __lumesUnpackM_11(int64_t n, const float* a, float* y, const void* my, int32_t width);
extern const tarn_kernel tarn_lume_kernel_sUnpackM_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_sUnpackM_ctab;
void __lumedUnpackM_50(int64_t n, const double* a, double* y, const void* my, int32_t width);
void __lumedUnpackM_HA(int64_t n, const double* a, double* y, const void* my, int32_t width);
void __lumedUnpackM(int64_t n, const double* a, double* y, const void* my, int32_t width);
void __lumedUnpackM_26(int64_t n, const double* a, double* y, const void* my, int32_t width);
extern const tarn_kernel tarn_lume_kernel_dUnpackM_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_dUnpackM_ctab;
void __lumecUnpackM_21(int64_t n, const tarn_c32* a, tarn_c32* y, const void* my, int32_t width);
void __lumecUnpackM_HA(int64_t n, const tarn_c32* a, tarn_c32* y, const void* my, int32_t width);
void __lumecUnpackM(int64_t n, const tarn_c32* a, tarn_c32* y, const void* my, int32_t width);
void __lumecUnpackM_11(int64_t n, const tarn_c32* a, tarn_c32* y, const void* my, int32_t width);
extern const tarn_kernel tarn_lume_kernel_cUnpackM_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_cUnpackM_ctab;
void __lumezUnpackM_50(int64_t n, const tarn_c64* a, tarn_c64* y, const void* my, int32_t width);
void __lumezUnpackM_HA(int64_t n, const tarn_c64* a, tarn_c64* y, const void* my, int32_t width);
void __lumezUnpackM(int64_t n, const tarn_c64* a, tarn_c64* y, const void* my, int32_t width);
void __lumezUnpackM_26(int64_t n, const tarn_c64* a, tarn_c64* y, const void* my, int32_t width);
extern const tarn_kernel tarn_lume_kernel_zUnpackM_ttab[3];
extern const tarn_cost_table tarn_lume_kernel_zUnpackM_ctab;

#ifdef __cplusplus
}
#endif
/* clang-format on */

#endif
