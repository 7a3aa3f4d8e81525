/* Cell search, interpolation and integration of a spline: the third step of tarn/fitting.h.
 *
 * Every function here only reads the task, and keeps nothing between calls: any number of them may run on one task at
 * once. Where a task is wide (wideInterface, lowest bit), the caller's cell numbers and derivative orders are int64_t,
 * else int32_t; with nx of 2^31 - 1 and more cell numbers are int64_t always.
 *
 * A cell number tells where a site t lies on the partition x[0] to x[nx-1]:
 *
 *   0       t < x[0]
 *   i       x[i-1] <= t < x[i], for i from 1 to nx - 1
 *   nx - 1  t = x[nx-1]
 *   nx      t > x[nx-1]
 *
 * The threader (tarn/threader.h) may be null: then everything runs on the calling thread. Results do not depend on it,
 * to the last bit, nor on the layout of functions or results, nor on how many sites a call has. */
#ifndef TARN_FITTING_EVALUATION_H
#define TARN_FITTING_EVALUATION_H

#include "tarn/fitting_task.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Hints on sites and on limits of integration; any other value tells nothing. */
#define TARN_DF_SITES_UNIFORM 4 /* two values, the first and the last of equally spaced ones */
#define TARN_DF_SITES_SORTED 64 /* in ascending order */

/* A data hint is an array of at least five reals, or null. Its element TARN_DF_DATA_KIND is 0 (nothing known) or 1 (the
 * sites crowd about one partition point, whose index is element TARN_DF_DATA_PEAK, 0 to nx). */
#define TARN_DF_DATA_KIND 1
#define TARN_DF_DATA_PEAK 4

/* What interpolation is to do, a mask. TARN_DF_CELLS_GIVEN stands alone: it computes results, from the caller's cells. */
#define TARN_DF_COMPUTE 1
#define TARN_DF_WRITE_CELLS 2
#define TARN_DF_CELLS_GIVEN 4

/* Where results of interpolation stand: function f of ny, site s of nsite, k-th of nder selected orders. */
#define TARN_DF_RESULTS_FUNCTION_SITE_ORDER 16  /* (f * nsite + s) * nder + k; 0 and 128 are the same */
#define TARN_DF_RESULTS_FUNCTION_ORDER_SITE 32  /* (f * nder + k) * nsite + s */
#define TARN_DF_RESULTS_SITE_FUNCTION_ORDER 256 /* (s * ny + f) * nder + k */
#define TARN_DF_RESULTS_SITE_ORDER_FUNCTION 512 /* (s * nder + k) * ny + f */

/* Where integrals stand. */
#define TARN_DF_INTEGRALS_BY_PAIR 0      /* pair * ny + function; 32 is the same */
#define TARN_DF_INTEGRALS_BY_FUNCTION 16 /* function * nlim + pair; 128 is the same */

/* A search of the caller's own, in place of Tarn's. It is given *n sites (128 at most in tarn_df_kernel_dDFSearch1D,
 * 320 elsewhere) and writes all n cells, always 64 bits wide, and all n flags: a flag other than 0 says that the cell
 * is final, 0 that it is a guess, which Tarn refines. It returns a negative status to end the call,
 * TARN_DF_CELLS_ARE_FINAL when all cells are final whatever the flags say, anything else otherwise. */
#define TARN_DF_CELLS_ARE_FINAL 1000
typedef int32_t (*tarn_df_dsearch_cb)(const int64_t* n, const double* site, int64_t* cell, int32_t* flag, void* param);
typedef int32_t (*tarn_df_ssearch_cb)(const int64_t* n, const float* site, int64_t* cell, int32_t* flag, void* param);

/* An interpolant of the caller's own, for the sites left of the partition (cell 0), right of it (cell nx), or inside.
 * It is given *n sites of one block, with their cells, once for each function, and writes the results of each: one real
 * a site, or with nder selected orders nder reals side by side. It may be called from several threads at once. A
 * negative result ends the call with that status. */
typedef int32_t (*tarn_df_deval_cb)(const int64_t* n, const int64_t* cell, const double* site, double* r, void* param,
                                    void* null_word);
typedef int32_t (*tarn_df_seval_cb)(const int64_t* n, const int64_t* cell, const float* site, float* r, void* param,
                                    void* null_word);

/* Integrals of the caller's own, over what lies left of the partition, right of it, or inside. It is given *n pairs of
 * limits, in ascending order within a pair and cut to the part that it owns, with their cells; pairs without such a
 * part are left out. It writes one integral for each pair, once for each function. Threads and statuses as above. */
typedef int32_t (*tarn_df_dintegr_cb)(const int64_t* n, const int64_t* left_cell, const double* left_limit,
                                      const int64_t* right_cell, const double* right_limit, double* r, void* param,
                                      void* null_word);
typedef int32_t (*tarn_df_sintegr_cb)(const int64_t* n, const int64_t* left_cell, const float* left_limit,
                                      const int64_t* right_cell, const float* right_limit, float* r, void* param,
                                      void* null_word);

/* Cell search. Writes the cells of nsite sites; with nsite of 0 or less it writes nothing. The method is chosen by the
 * first of these that holds: a search of the caller's own; a uniform partition (one multiplication a site); a
 * quasi-uniform one (a guess, then a scan); sorted sites (a cursor); a data hint with a peak (a scan from there); else
 * the bin table and a bisection in the bin. All but the first find the cell of every finite site on an ascending
 * partition. On a uniform partition, whose inner points are not stored, cell i starts where
 * (t - x[0]) * ((nx - 1) / (x[1] - x[0])), rounded, reaches i - 1. Sites called sorted that are not get a wrong cell.
 * Sites that are NaN get some cell from 0 to nx.
 *
 * With sitehint TARN_DF_SITES_UNIFORM, site i is site[0] + i * ((site[1] - site[0]) / (nsite - 1)); nsite of 1 then
 * divides by zero.
 *
 * Statuses: TARN_DF_ERROR_NULL_TASK; TARN_DF_ERROR_DATA_HINT, looked at only where the methods before it do not hold;
 * TARN_DF_ERROR_ALLOCATION, only for more than 4,096 uniform sites; a negative one of the call-back, which is called
 * from the calling thread alone. */
int32_t tarn_df_kernel_dDFSearch1D(DFTask* task, int64_t ignored, int64_t nsite, const double* site, int64_t sitehint,
                                   const double* datahint, void* cell, tarn_df_dsearch_cb cb, void* cb_param,
                                   const tarn_threader* threader);
int32_t tarn_df_kernel_sDFSearch1D(DFTask* task, int64_t ignored, int64_t nsite, const float* site, int64_t sitehint,
                                   const float* datahint, void* cell, tarn_df_ssearch_cb cb, void* cb_param,
                                   const tarn_threader* threader);

/* Interpolation: values and derivatives of the task's spline at nsite sites for all of its functions.
 *
 * Element k of dorder, where not 0, selects the derivative of order k; with none selected, or ndorder below 1, the value
 * alone is computed. Orders from the spline's own on give 0. Sites outside the partition take its first or last
 * polynomial, continued. Polynomials are evaluated by Horner's rule in powers of t - x[i]: the error is at most a few
 * units in the last place of the largest term.
 *
 * Step functions: left gives y[c-1] and right y[c] for a site of cell c, with the index kept inside 0 to nx - 1.
 * Look-up: the site has to be a partition point, on a uniform partition to within 2^-40.
 *
 * Statuses, in the order of the checks: TARN_DF_ERROR_NULL_TASK; TARN_DF_ERROR_SPLINE_TYPE (no evaluator for order and
 * type; order 0 with a type other than 6, 7, 8 needs all three call-backs); TARN_DF_ERROR_DATA_HINT;
 * TARN_DF_ERROR_INTERPOLATION_RESULT_HINT; TARN_DF_ERROR_NULL_COEFF, or TARN_DF_ERROR_NULL_Y for step and look-up;
 * TARN_DF_ERROR_ALLOCATION; negative ones of call-backs; of look-up TARN_DF_ERROR_LOOKUP_ORDER_COUNT,
 * TARN_DF_ERROR_LOOKUP_ORDER, TARN_DF_ERROR_LOOKUP_SITE. After a failure r and cell hold what was done before it. */
int32_t tarn_df_kernel_dDFInterpolate1D(DFTask* task, int64_t type, int64_t method, int64_t nsite, const double* site,
                                        int64_t sitehint, int64_t ndorder, const void* dorder, const double* datahint,
                                        double* r, int64_t rhint, void* cell, tarn_df_deval_cb left, void* left_param,
                                        tarn_df_deval_cb right, void* right_param, tarn_df_deval_cb inside,
                                        void* inside_param, tarn_df_dsearch_cb search, void* search_param,
                                        const tarn_threader* threader);
int32_t tarn_df_kernel_sDFInterpolate1D(DFTask* task, int64_t type, int64_t method, int64_t nsite, const float* site,
                                        int64_t sitehint, int64_t ndorder, const void* dorder, const float* datahint,
                                        float* r, int64_t rhint, void* cell, tarn_df_seval_cb left, void* left_param,
                                        tarn_df_seval_cb right, void* right_param, tarn_df_seval_cb inside,
                                        void* inside_param, tarn_df_ssearch_cb search, void* search_param,
                                        const tarn_threader* threader);

/* Integration: the definite integrals of the task's spline, for all of its functions, between nlim pairs of limits.
 *
 * Left limits above right ones give the negated integral. Limits outside the partition continue its first or last
 * polynomial, step functions their first or last step. Each integral is the sum of closed forms over the cells between
 * its limits, from the left to the right. Left and right limits have each their own hint and data hint, as the sites of
 * the search.
 *
 * Statuses, in the order of the checks: TARN_DF_ERROR_NULL_TASK; TARN_DF_ERROR_SPLINE_TYPE (no integrator: look-up
 * has none); TARN_DF_ERROR_DATA_HINT; TARN_DF_ERROR_INTEGRATION_RESULT_HINT; TARN_DF_ERROR_NULL_COEFF, or
 * TARN_DF_ERROR_NULL_Y for step functions; TARN_DF_ERROR_ALLOCATION, only with call-backs and more than 15 threads;
 * negative ones of call-backs. After a failure r holds what was done before it. */
int32_t tarn_df_kernel_dDFIntegrate1D(DFTask* task, int64_t method, int64_t nlim, const double* left_limit,
                                      int64_t left_hint, const double* right_limit, int64_t right_hint,
                                      const double* left_datahint, const double* right_datahint, double* r,
                                      int64_t rhint, tarn_df_dintegr_cb left, void* left_param,
                                      tarn_df_dintegr_cb right, void* right_param, tarn_df_dintegr_cb inside,
                                      void* inside_param, tarn_df_dsearch_cb search, void* search_param,
                                      const tarn_threader* threader);
int32_t tarn_df_kernel_sDFIntegrate1D(DFTask* task, int64_t method, int64_t nlim, const float* left_limit,
                                      int64_t left_hint, const float* right_limit, int64_t right_hint,
                                      const float* left_datahint, const float* right_datahint, float* r, int64_t rhint,
                                      tarn_df_sintegr_cb left, void* left_param, tarn_df_sintegr_cb right,
                                      void* right_param, tarn_df_sintegr_cb inside, void* inside_param,
                                      tarn_df_ssearch_cb search, void* search_param, const tarn_threader* threader);

#ifdef __cplusplus
}
#endif
#endif
