/* The entries and tables of every vector function. Made by tools/regenerate from vector/functions.def;
 * include tarn/vector.h, which tells what all of them share. */
#ifndef TARN_VECTOR_FUNCTIONS_H
#define TARN_VECTOR_FUNCTIONS_H

/* clang-format off */
#ifdef __cplusplus
extern "C" {
#endif

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
