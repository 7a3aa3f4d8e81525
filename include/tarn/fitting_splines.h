/* Spline construction: from a task's partition and values to the coefficients of every cell. Step 3 of tarn/fitting.h.
 *
 * Notation: n = nx; h[i] = x[i+1] - x[i]; m[i] = (y[i+1] - y[i]) / h[i], the slopes; d[i] the derivative at x[i]. On a
 * uniform partition x holds the two ends and h = (x[1] - x[0]) / (n - 1).
 *
 * Coefficients: cell i of a function holds splineOrder values c0, c1, ... from element i * splineOrder on; there the
 * spline is c0 + c1 u + c2 u^2 + ... with u = t - x[i]. A cubic follows from the derivatives at its points:
 *   c0 = y[i],  c1 = d[i],  c2 = (3 m[i] - 2 d[i] - d[i+1]) / h[i],  c3 = (d[i] + d[i+1] - 2 m[i]) / h[i]^2.
 * The functions of a task are independent of each other, with bc and ic in common.
 *
 * All constructors take the task, a word that is not read, the method, which has to be 0 where it is looked at, and the
 * threader table, of which threader_for and threader_max_threads are used (null: the calling thread alone). They read
 * the task and change no field of it. Results do not depend, to the last bit, on the table, on how the values are stored
 * or on how many functions there are.
 *
 * Boundary conditions (bcType), the values of bc in the order left, right:
 *   FREE_END (1)       the second derivative is 0
 *   NOT_A_KNOT (2)     one cubic over the two outermost cells. On a uniform partition a rule of its own, which is not
 *                      the limit of that: d[0] = (y[2] - y[0]) / (2 h) - 2 d[1]. It gives back no polynomial, not even
 *                      a line; who wants not-a-knot in the usual sense gives the points one by one.
 *   12, 36, 24, 48     first or second derivative at each end: 4 or 16 at the left plus 8 or 32 at the right
 *   PERIODIC (64)      the ends are one point
 *   NONE (0)           nothing is said; local kinds only
 *   FIRST_MIDDLE (128) the standard quadratic spline's value at the middle of its first cell, bc[0]
 *
 * Statuses, in the order of the checks: NULL_TASK; METHOD (linear, quadratic and natural kinds); NX; Y_HINT; those of
 * the conditions as told at each kind; last NULL_X, NULL_Y, NULL_COEFF of a half-made task; ALLOCATION of scratch, after
 * which the coefficients may be written in part. BC_TYPE: a condition that the kind does not take. NULL_BC: one that
 * needs values, without them; the periodic one needs them when splineType is 0 or 3.
 *
 * Accuracy: c0 is y[i]. The other coefficients are held by the tests to 30 epsilon of the largest one of their power in
 * the spline, 6 on uniform partitions (more with many points for the quadratic kinds). Lengths below the square root of the smallest normal number
 * make c3 overflow. */
#ifndef TARN_FITTING_SPLINES_H
#define TARN_FITTING_SPLINES_H

#include "tarn/fitting_task.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The polygon: c0 = y[i], c1 = m[i]. At least 2 points. With PERIODIC the first and last values of each function have to
 * be equal, to the last bit, or NOT_PERIODIC is given before anything is written; this is the one kind that compares
 * them. Other conditions are not read.
 * From nx * ny = 128 on the work is shared in items of 1,024 cells by 4 functions. */
int32_t tarn_df_kernel_dDFLinearSpline1D(DFTask* task, int64_t ignored, int64_t method, const tarn_threader* threader);
int32_t tarn_df_kernel_sDFLinearSpline1D(DFTask* task, int64_t ignored, int64_t method, const tarn_threader* threader);

/* Quadratic splines with one continuous derivative, of two types; another splineType gives METHOD.
 *
 * TARN_DF_TYPE_DEFAULT: the knots are the partition points. bcType has to be FIRST_MIDDLE. The values s[i] at the
 * middles of the cells follow from s[0] = bc[0], each from the one before: an error in one value alternates through all
 * cells to the right and does not fade.
 *
 * TARN_DF_TYPE_SUBBOTIN: the pieces join at nx + 1 knots t with x[i-1] < t[i] < x[i] between, t[0] = x[0] and
 * t[nx] = x[nx-1]; so there are nx pieces, that of x[i] in powers of t - x[i]. bcType is one of 12, 36, 24, 48; icType
 * must have TARN_DF_IC_SUBGRID (else IC_TYPE). With ic null the inner knots are the middles of the cells; else ic holds
 * all knots, or, with TARN_DF_IC_UNIFORM_SUBGRID, the two ends of equally spaced ones; knots that do not lie as said
 * give IC. (Yu. N. Subbotin, Proc. Steklov Inst. Math. 88, 1967.)
 *
 * Both run on the calling thread. */
int32_t tarn_df_kernel_dDFQuadraticSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                            const tarn_threader* threader);
int32_t tarn_df_kernel_sDFQuadraticSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                            const tarn_threader* threader);

/* Akima's cubic (J. ACM 17, 1970), at least 5 points. With w1 = |m[i+1] - m[i]| and w2 = |m[i-1] - m[i-2]|
 *   d[i] = (w1 m[i-1] + w2 m[i]) / (w1 + w2),  or (m[i-1] + m[i]) / 2 where w1 + w2 < 1e-10.
 * Next to the ends the slopes beyond are those of a line through the two outermost ones, or of the period; with NONE the
 * same extension gives the derivatives at the ends themselves. The threshold is absolute: data with slopes below 1e-10
 * get the plain mean, so scale them.
 * Here and for the three kinds below conditions are NONE, FREE_END, NOT_A_KNOT, 12, 36, 24, 48, PERIODIC, and from
 * nx * ny = 512 on the work is shared in items of 2,048 cells by 4 functions. */
int32_t tarn_df_kernel_dDFAkimaCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                             const tarn_threader* threader);
int32_t tarn_df_kernel_sDFAkimaCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                             const tarn_threader* threader);

/* Bessel's cubic, at least 4 points: d[i] is that of the parabola through the points i - 1, i, i + 1. With NONE the
 * derivatives at the ends are the slopes of the outermost cells. (C. de Boor, A Practical Guide to Splines, 1978.) */
int32_t tarn_df_kernel_dDFBesselCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                              const tarn_threader* threader);
int32_t tarn_df_kernel_sDFBesselCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                              const tarn_threader* threader);

/* Hyman's monotone cubic (SIAM J. Sci. Stat. Comput. 4, 1983), at least 4 points: Bessel's derivative where the slopes on
 * both sides have one sign, its size at most three times the smaller of theirs, and 0 elsewhere. Where the data rise or
 * fall over some points, so does the spline between them. Derivatives at the ends are as the condition says, without
 * that bound: only NONE keeps the outermost cells monotone whatever the data. */
int32_t tarn_df_kernel_dDFHymanCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                             const tarn_threader* threader);
int32_t tarn_df_kernel_sDFHymanCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                             const tarn_threader* threader);

/* Hermite's cubic, at least 3 points: ic has the derivatives at the points 1 to nx - 2 (null: IC), whatever icType says;
 * the ends are as for Bessel's, and of a periodic spline both bc[0]. */
int32_t tarn_df_kernel_dDFHermiteCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);
int32_t tarn_df_kernel_sDFHermiteCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);

/* The cubic with two continuous derivatives, at least 2 points, 3 with FREE_END. Conditions are FREE_END (the spline
 * that is "natural" in the narrow sense), NOT_A_KNOT, 12, 36, 24, 48, PERIODIC. The derivatives solve a tridiagonal system,
 *   h[i] d[i-1] + 2 (h[i-1] + h[i]) d[i] + h[i-1] d[i+1] = 3 (h[i] m[i-1] + h[i-1] m[i]),
 * factored once for all functions; the cyclic one of a periodic spline by a correction of rank one. Two points with
 * NOT_A_KNOT or PERIODIC get the line through them. SOLVER: the system is singular, as with three points and NOT_A_KNOT,
 * where both ends say the same.
 * With ny > 1, T = min(threads, ny) > 1, nx >= 300, and nx >= 600 or T >= 8, T workers share the functions. */
int32_t tarn_df_kernel_dDFNaturalCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);
int32_t tarn_df_kernel_sDFNaturalCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);

/* The cubic with given second derivatives, at least 3 points: ic has them for the points 1 to nx - 2 (null: IC), those at
 * the ends are such that the condition holds (as for the natural kind; PERIODIC: both bc[0]). It interpolates; its first
 * derivative is continuous only if the given values are those of such a spline. On the calling thread. */
int32_t tarn_df_kernel_dDFDefaultCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);
int32_t tarn_df_kernel_sDFDefaultCubicSpline1D(DFTask* task, int64_t ignored, int64_t method,
                                               const tarn_threader* threader);

/* The tridiagonal solvers behind them, for diagonally dominant matrices: no pivoting. sub and super hold n - 1 values
 * below and above the diagonal; right-hand side r starts at rhs + r * ldrhs and becomes the solution. *status is 0, or 1
 * when a pivot is 0; then rhs is not solved. Rows are eliminated from both ends at once (H. A. van der Vorst, Parallel
 * Computing 5, 1987), so the factors are not those of other libraries. Factoring and solving in two steps gives the same
 * bits as the direct solution, which overwrites the matrix by its factors. trans is not read: no transposed solution. */
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
