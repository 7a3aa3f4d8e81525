/* Summary statistics over data sets of many variables.
 *
 * A task is a record of pointers: to the data, to the counts that describe them and to the arrays that receive results.
 * It owns none of them, and reads counts through their pointers at each call, so a caller can change the observation
 * count, or the data behind the pointer, between calls and so pass a long data set block by block.
 *
 *   1. __kestdSSNewTask with the dimension, the observation count, the data and how they are stored;
 *   2. editors for the arrays that are to receive results;
 *   3. compute entries with a mask of estimates and a method;
 *   4. __kestSSDeleteTask.
 *
 * Each function stands in double and single precision, d and s in its name; in the single form all reals are float.
 * Results are int32_t statuses: 0, or one of TARN_SS_ERROR_* below. Only the first fault is reported, and no result has
 * been touched when a check fails.
 *
 * Threads: a task belongs to one thread at a time; distinct tasks are independent. The library starts no thread, the
 * compute entries share their work through the caller's threader table (tarn/threader.h; tarn/serial_threader.h has one
 * that needs no threads). */
#ifndef TARN_STATS_H
#define TARN_STATS_H

#include <stdint.h>

#include "tarn/primitives.h"
#include "tarn/threader.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Storage of the data: the n observations of a variable side by side (variable j, observation i at j*n + i), or the p
 * values of an observation side by side (at i*p + j). With p = 1 both are the same. */
#define TARN_SS_STORAGE_ROWS 0x10000
#define TARN_SS_STORAGE_COLUMNS 0x20000

/* Storage of symmetric matrices: p x p, both triangles; or p(p+1)/2 elements by rows, of the lower triangle ((i,0) to
 * (i,i)) or of the upper one ((i,i) to (i,p-1)). */
#define TARN_SS_MATRIX_FULL 0
#define TARN_SS_MATRIX_L_PACKED 1
#define TARN_SS_MATRIX_U_PACKED 2

/* Estimates, a mask. */
#define TARN_SS_MEAN UINT64_C(0x1)
#define TARN_SS_RAW_MOMENT_2 UINT64_C(0x2)
#define TARN_SS_RAW_MOMENT_3 UINT64_C(0x4)
#define TARN_SS_RAW_MOMENT_4 UINT64_C(0x8)
#define TARN_SS_CENTRAL_MOMENT_2 UINT64_C(0x10)
#define TARN_SS_CENTRAL_MOMENT_3 UINT64_C(0x20)
#define TARN_SS_CENTRAL_MOMENT_4 UINT64_C(0x40)
#define TARN_SS_KURTOSIS UINT64_C(0x80)
#define TARN_SS_SKEWNESS UINT64_C(0x100)
#define TARN_SS_VARIATION UINT64_C(0x200)
#define TARN_SS_MINIMUM UINT64_C(0x400)
#define TARN_SS_MAXIMUM UINT64_C(0x800)
#define TARN_SS_COVARIANCE UINT64_C(0x1000)
#define TARN_SS_CORRELATION UINT64_C(0x2000)
#define TARN_SS_QUANTILES UINT64_C(0x10000)
#define TARN_SS_ORDER_STATISTICS UINT64_C(0x20000)
#define TARN_SS_SUM UINT64_C(0x2000000)
#define TARN_SS_RAW_SUM_2 UINT64_C(0x4000000)
#define TARN_SS_RAW_SUM_3 UINT64_C(0x8000000)
#define TARN_SS_RAW_SUM_4 UINT64_C(0x10000000)
#define TARN_SS_CENTRAL_SUM_2 UINT64_C(0x20000000)
#define TARN_SS_CENTRAL_SUM_3 UINT64_C(0x40000000)
#define TARN_SS_CENTRAL_SUM_4 UINT64_C(0x80000000)
#define TARN_SS_CROSS_PRODUCT UINT64_C(0x100000000)

/* Methods. */
#define TARN_SS_METHOD_FAST UINT64_C(0x1)
#define TARN_SS_METHOD_ONE_PASS UINT64_C(0x2)
#define TARN_SS_METHOD_STREAM_QUERY UINT64_C(0x40)  /* stream quantiles: take the data in, then write the quantiles */
#define TARN_SS_METHOD_STREAM_UPDATE UINT64_C(0x80) /* stream quantiles: take the data in */
#define TARN_SS_METHOD_USER_MEAN UINT64_C(0x100)
#define TARN_SS_METHOD_FROM_MOMENTS UINT64_C(0x200)
#define TARN_SS_METHOD_FROM_SUMS UINT64_C(0x400)
#define TARN_SS_METHOD_SORT UINT64_C(0x100000)

/* Statuses that are not about one field. A null array gives the status of its field (see __kestdSSEditTask). */
#define TARN_SS_OK 0
#define TARN_SS_ERROR_PARAMETER_ID -3 /* id out of range, or of the other editor's family */
#define TARN_SS_ERROR_ALLOCATION -4000
#define TARN_SS_ERROR_DIMENSION -4001       /* dimension below 1 */
#define TARN_SS_ERROR_OBSERVATIONS -4002    /* observation count invalid */
#define TARN_SS_ERROR_STORAGE -4003         /* a storage word with an unknown value */
#define TARN_SS_ERROR_VARIABLE_MASK -4004   /* a variable that the stream did not start with */
#define TARN_SS_ERROR_WEIGHT_SUMS -4020     /* a conversion without the sum of weights */
#define TARN_SS_ERROR_QUANTILE_ORDERS -4022 /* order count below 0, or an order outside 0..1 */
#define TARN_SS_ERROR_METHOD -4029          /* the method mask holds no method that the entry serves */
#define TARN_SS_ERROR_NULL_TASK -4031
#define TARN_SS_ERROR_NULL_DATA -4032
#define TARN_SS_ERROR_NULL_STORAGE -4044
#define TARN_SS_ERROR_STREAM_EPSILON -4067 /* epsilon not above 0, or above 1 */
#define TARN_SS_ERROR_STREAM_ORDERS -4069  /* as -4022, for the stream quantiles */
#define TARN_SS_ERROR_SORT_IN_PLACE -4085  /* a sort in place takes no variable mask */

/* "Integer" behind a pointer is int32_t when integer_width is 0 and int64_t when it is 1; "real" is double or float by
 * the entry's letter. The numbers in brackets are the ids of the editors. */
typedef struct SSTask {
  int32_t integer_width;             /* 0: the integers behind the pointers are 32-bit; 1: 64-bit */
  int32_t task_format;               /* 2 */
  int32_t task_type;                 /* 1 double, 0 float */
  void* dimension;                   /* integer: p, the number of variables [id 1] */
  void* observation_count;           /* integer: n, of the current block [id 2] */
  void* variable_mask;               /* p 32-bit words, null takes all; two words apart for 64-bit integers [id 5] */
  void* observations;                /* the data matrix [id 3] */
  void* weights;                     /* n reals, or null for weight 1 [id 6] */
  void* weight_sums;                 /* 2 reals carried from call to call: sums of w and of w squared [id 23] */
  void* observation_storage;         /* integer: TARN_SS_STORAGE_* [id 4] */
  void* parametrized_matrix;         /* output of the correlation parametrization [id 60] */
  void* parametrized_storage;        /* integer: TARN_SS_MATRIX_* [id 61] */
  void* mean;                        /* p reals [id 7] */
  void* raw_moment_2;                /* p reals [id 8] */
  void* raw_moment_3;                /* p reals [id 9] */
  void* raw_moment_4;                /* p reals [id 10] */
  void* central_moment_2;            /* p reals [id 11] */
  void* central_moment_3;            /* p reals [id 12] */
  void* central_moment_4;            /* p reals [id 13] */
  void* sum;                         /* p reals [id 67] */
  void* raw_sum_2;                   /* p reals [id 68] */
  void* raw_sum_3;                   /* p reals [id 69] */
  void* raw_sum_4;                   /* p reals [id 70] */
  void* central_sum_2;               /* p reals [id 71] */
  void* central_sum_3;               /* p reals [id 72] */
  void* central_sum_4;               /* p reals [id 73] */
  void* kurtosis;                    /* p reals [id 14] */
  void* skewness;                    /* p reals [id 15] */
  void* variation;                   /* p reals [id 18] */
  void* minimum;                     /* p reals, read and written [id 16] */
  void* maximum;                     /* p reals, read and written [id 17] */
  void* covariance_storage;          /* integer: TARN_SS_MATRIX_* [id 20] */
  void* covariance;                  /* matrix [id 19] */
  void* correlation_storage;         /* integer: TARN_SS_MATRIX_* [id 22] */
  void* correlation;                 /* matrix, variances on its diagonal [id 21] */
  void* cross_product_storage;       /* integer: TARN_SS_MATRIX_* [id 75] */
  void* cross_product;               /* matrix [id 74] */
  void* group_indices;               /* n integers [id 28] */
  void* group_selector;              /* an integer 0 or 1 per group [id 32] */
  void* group_means;                 /* p reals per selected group [id 33] */
  void* group_covariance;            /* one matrix per selected group [id 35] */
  void* group_covariance_storage;    /* integer: TARN_SS_MATRIX_* [id 34] */
  void* pooled_mean;                 /* p reals [id 30] */
  void* pooled_covariance;           /* matrix [id 31] */
  void* pooled_covariance_storage;   /* integer: TARN_SS_MATRIX_* [id 29] */
  void* quantile_order_count;        /* integer [id 24] */
  void* quantile_orders;             /* reals in 0..1 [id 25] */
  void* quantiles;                   /* quantile_order_count reals per variable [id 26] */
  void* order_statistics;            /* matrix of sorted observations [id 27] */
  void* order_statistics_storage;    /* integer: TARN_SS_STORAGE_* [id 44] */
  void* stream_order_count;          /* integer [id 64] */
  void* stream_orders;               /* reals in 0..1 [id 65] */
  void* stream_quantiles;            /* stream_order_count reals per variable [id 66] */
  void* stream_state;                /* library-owned sketch */
  void* stream_param_count;          /* integer, must read 1 [id 62] */
  void* stream_params;               /* one real: the rank error epsilon [id 63] */
  void* mean_abs_deviation;          /* p reals [id 77] */
  void* median_abs_deviation;        /* p reals [id 76] */
  void* robust_param_count;          /* integer [id 37] */
  void* robust_params;               /* reals [id 38] */
  void* robust_mean;                 /* p reals [id 39] */
  void* robust_covariance;           /* matrix [id 40] */
  void* robust_covariance_storage;   /* integer: TARN_SS_MATRIX_* [id 36] */
  void* outlier_param_count;         /* integer [id 41] */
  void* outlier_params;              /* reals [id 42] */
  void* outlier_weights;             /* n reals [id 43] */
  void* partial_indices;             /* p integers [id 45] */
  void* partial_covariance;          /* matrix [id 46] */
  void* partial_covariance_storage;  /* integer: TARN_SS_MATRIX_* [id 47] */
  void* partial_correlation;         /* matrix [id 48] */
  void* partial_correlation_storage; /* integer: TARN_SS_MATRIX_* [id 49] */
  void* missing_param_count;         /* integer [id 50] */
  void* missing_params;              /* reals [id 51] */
  void* initial_estimate_count;      /* integer [id 52] */
  void* initial_estimates;           /* reals [id 53] */
  void* prior_count;                 /* integer [id 58] */
  void* prior;                       /* reals [id 59] */
  void* simulated_count;             /* integer [id 54] */
  void* simulated_data;              /* reals [id 55] */
  void* estimate_count;              /* integer [id 56] */
  void* estimates;                   /* reals [id 57] */
  void* distance_first;              /* integer */
  void* distance_last;               /* integer */
  void* distance_mean;               /* p reals */
  void* distance_inverse;            /* p x p reals */
  void* distance_out;                /* reals */
  void* distance_reserved;           /* not read */
  void* distance_scratch;            /* work array */
  void* distance_scratch_size;       /* integer: its bytes */
  int32_t cleanup_count;             /* hooks registered, 0 or 1 */
  void (*cleanup_hook)(void* task);  /* called with the task when it is deleted */
  void* sorted_observations;         /* may be the observations themselves [id 78] */
  void* sorted_storage;              /* integer: TARN_SS_STORAGE_* [id 79] */
  void* saved_mean;                  /* library-owned: means of the last user-mean run */
} SSTask;

/* Makes a task. Checks, in this order: dimension null or below 1 (-4001); then only with observations: storage null
 * (-4044), a word that is neither storage (-4003), observation_count null or below 1 (-4002). Memory: -4000.
 * weights and variable_mask may be null. integer_width is the value of the record's field, 0 or 1. */
int32_t __kestdSSNewTask(void** task_out, const void* dimension, const void* observation_count,
                         const void* observation_storage, const double* observations, const double* weights,
                         const void* variable_mask, int32_t integer_width);
int32_t __kestsSSNewTask(void** task_out, const void* dimension, const void* observation_count,
                         const void* observation_storage, const float* observations, const float* weights,
                         const void* variable_mask, int32_t integer_width);

/* Frees the task, what the library keeps for it, and writes null through the pointer. Null task_pointer: -4031. */
int32_t __kestSSDeleteTask(void** task_pointer);

/* Sets the field of an id: the d and s forms those that point at reals (3, 6 to 19, 21, 23, 25 to 27, ...), the i form
 * those that point at integers (1, 2, 4, 5, 20, 22, 24, ...). Null task: -4031. An id of neither, or of the other form:
 * -3. A null value gives the field's own status and leaves it as it was. Nothing else is checked. */
int32_t __kestdSSEditTask(void* task, int32_t id, const double* value);
int32_t __kestsSSEditTask(void* task, int32_t id, const float* value);
int32_t __kestiSSEditTask(void* task, int32_t id, const void* value);

/* Set several fields at once. A null argument leaves its field alone. Null task: -4031. */
int32_t __kestdSSEditMoments(void* task, const double* mean, const double* r2, const double* r3, const double* r4,
                             const double* c2, const double* c3, const double* c4);
int32_t __kestsSSEditMoments(void* task, const float* mean, const float* r2, const float* r3, const float* r4,
                             const float* c2, const float* c3, const float* c4);
int32_t __kestdSSEditSums(void* task, const double* sum, const double* r2, const double* r3, const double* r4,
                          const double* c2, const double* c3, const double* c4);
int32_t __kestsSSEditSums(void* task, const float* sum, const float* r2, const float* r3, const float* r4,
                          const float* c2, const float* c3, const float* c4);
int32_t __kestdSSEditCovCor(void* task, const double* mean, const double* covariance, const void* covariance_storage,
                            const double* correlation, const void* correlation_storage);
int32_t __kestsSSEditCovCor(void* task, const float* mean, const float* covariance, const void* covariance_storage,
                            const float* correlation, const void* correlation_storage);
int32_t __kestdSSEditCP(void* task, const double* mean, const double* sum, const double* cross_product,
                        const void* cross_product_storage);
int32_t __kestsSSEditCP(void* task, const float* mean, const float* sum, const float* cross_product,
                        const void* cross_product_storage);
int32_t __kestdSSEditPartialCovCor(void* task, const void* partial_indices, const double* covariance,
                                   const void* covariance_storage, const double* correlation,
                                   const void* correlation_storage, const double* partial_covariance,
                                   const void* partial_covariance_storage, const double* partial_correlation,
                                   const void* partial_correlation_storage);
int32_t __kestsSSEditPartialCovCor(void* task, const void* partial_indices, const float* covariance,
                                   const void* covariance_storage, const float* correlation,
                                   const void* correlation_storage, const float* partial_covariance,
                                   const void* partial_covariance_storage, const float* partial_correlation,
                                   const void* partial_correlation_storage);
int32_t __kestdSSEditQuantiles(void* task, const void* quantile_order_count, const double* quantile_orders,
                               const double* quantiles, const double* order_statistics,
                               const void* order_statistics_storage);
int32_t __kestsSSEditQuantiles(void* task, const void* quantile_order_count, const float* quantile_orders,
                               const float* quantiles, const float* order_statistics,
                               const void* order_statistics_storage);
int32_t __kestdSSEditStreamQuantiles(void* task, const void* stream_order_count, const double* stream_orders,
                                     const double* stream_quantiles, const void* stream_param_count,
                                     const double* stream_params);
int32_t __kestsSSEditStreamQuantiles(void* task, const void* stream_order_count, const float* stream_orders,
                                     const float* stream_quantiles, const void* stream_param_count,
                                     const float* stream_params);
int32_t __kestdSSEditPooledCovariance(void* task, const void* group_indices, const double* pooled_mean,
                                      const double* pooled_covariance, const void* group_selector,
                                      const double* group_means, const double* group_covariance);
int32_t __kestsSSEditPooledCovariance(void* task, const void* group_indices, const float* pooled_mean,
                                      const float* pooled_covariance, const void* group_selector,
                                      const float* group_means, const float* group_covariance);
int32_t __kestdSSEditMissingVals(void* task, const void* missing_param_count, const double* missing_params,
                                 const void* initial_estimate_count, const double* initial_estimates,
                                 const void* prior_count, const double* prior, const void* simulated_count,
                                 const double* simulated_data, const void* estimate_count, const double* estimates);
int32_t __kestsSSEditMissingVals(void* task, const void* missing_param_count, const float* missing_params,
                                 const void* initial_estimate_count, const float* initial_estimates,
                                 const void* prior_count, const float* prior, const void* simulated_count,
                                 const float* simulated_data, const void* estimate_count, const float* estimates);
int32_t __kestdSSEditOutDetect(void* task, const void* outlier_param_count, const double* outlier_params,
                               const double* outlier_weights);
int32_t __kestsSSEditOutDetect(void* task, const void* outlier_param_count, const float* outlier_params,
                               const float* outlier_weights);
int32_t __kestdSSEditRCov(void* task, const void* robust_covariance_storage, const void* robust_param_count,
                          const double* robust_params, const double* robust_mean, const double* robust_covariance);
int32_t __kestsSSEditRCov(void* task, const void* robust_covariance_storage, const void* robust_param_count,
                          const float* robust_params, const float* robust_mean, const float* robust_covariance);
int32_t __kestdSSEditMtxParametrz(void* task, const double* correlation, const void* correlation_storage,
                                  const double* parametrized_matrix, const void* parametrized_storage);
int32_t __kestsSSEditMtxParametrz(void* task, const float* correlation, const void* correlation_storage,
                                  const float* parametrized_matrix, const void* parametrized_storage);

/* Moments and sums up to order 4, kurtosis, skewness, variation, covariance, correlation, cross products.
 *
 * Estimates: those of the list above but quantiles, order statistics and extremes. A request fills all arrays that it
 * is computed from, and these must be there: a central moment asks for the mean and the lower raw moments too. Null
 * arrays are reported in the order mean, raw moments, central moments, covariance, correlation, kurtosis, skewness,
 * variation, sum, raw sums, central sums, cross product.
 *
 * Methods, exactly one of: FAST, from raw power sums, the least arithmetic; ONE_PASS, from central sums about a running
 * mean, for data with a mean far from zero; USER_MEAN, about the mean that the caller gives; or none of them and
 * FROM_MOMENTS or FROM_SUMS, which read no data and convert sums and cross products into moments, covariance,
 * correlation, kurtosis, skewness and variation.
 *
 * Weights count as frequencies in sums and moments; central moment 2 and covariance are unbiased for unit weights
 * (divided by W - V/W, W the sum of weights and V of their squares). Correlation carries variances on its diagonal.
 *
 * Continuation: with weight_sums given and a positive sum in it, the result arrays are taken as the state of earlier
 * blocks and the call goes on from there. Write 0 to it to start afresh. Without weight_sums each call starts afresh.
 * A variable that variable_mask leaves out keeps its elements in all result arrays. By ONE_PASS, central sums 3 and 4
 * go on from the lower central sums: ask for these, or for the raw moments, along with them. By USER_MEAN the variance
 * and covariance of a first block of one observation are undefined and stay so: ask for central sum 2 and cross products
 * along with them.
 *
 * Checks: the method (-4029), the arrays, the count (-4002), the data (-4032), their storage (-4044, -4003); for a
 * conversion weight_sums (-4020). Memory: -4000.
 *
 * Central moments of blocks and threads are merged by the formulas of Chan, Golub and LeVeque (1979), for orders 3 and
 * 4 Terriberry (2007) and Pebay (2008), with weights. */
int32_t _kestdSSBasic(void* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader);
int32_t _kestsSSBasic(void* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader);

/* Minimum and maximum of each variable, against what the result arrays hold already: they are state, and a caller seeds
 * them (with the first observation or infinities) for the first block. Method FAST or ONE_PASS. Runs on the calling
 * thread. Checks: storage (-4044, -4003), minimum (-4015), maximum (-4016), method (-4029). A comparison keeps the
 * array's value on a tie, and a NaN in the data changes nothing. */
int32_t _kestdSSMinmax(void* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader);
int32_t _kestsSSMinmax(void* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader);

/* Exact quantiles and sorted observations. The quantile of order q is, with a = q(n - 1), i its integral part and f its
 * fraction, (1 - f) x(i) + f x(i + 1), x(i) the element of rank i from 0 (definition 7 of Hyndman and Fan, 1996).
 * Quantiles of variable v stand at v * quantile_order_count. Method FAST.
 * Checks: storage (-4003); quantiles (-4023), orders (-4021), their count or a value (-4022); order statistics (-4024),
 * their storage (-4044, -4003); method (-4029). When memory fails the entry returns 0 and writes nothing. */
int32_t _kestdSSQuantiles(void* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader);
int32_t _kestsSSQuantiles(void* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader);

/* Sorts the observations of each variable into sorted_observations, or in place when that is the data itself. Method
 * SORT; the estimate mask is not read. Floats are ordered by their bit patterns (tarn/primitives.h).
 * Checks: output (-4084), its storage (-4044); in place: equal storages (-4044), no mask (-4085); both storage words
 * (-4003); method (-4029); memory (-4000). */
int32_t _kestdSSSort(void* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader);
int32_t _kestsSSSort(void* task, uint64_t estimate_mask, uint64_t method_mask, const tarn_threader* threader);

/* Quantiles of a stream of blocks of unknown length within a rank error of epsilon N, N the number of observations so
 * far, from a sketch of O(log^2(epsilon N) / epsilon) elements per variable (Zhang and Wang, A Fast Algorithm for
 * Approximate Quantiles in High Speed Data Streams, SSDBM 2007). STREAM_UPDATE takes a block in, STREAM_QUERY takes it
 * in and then writes the quantiles; with n = 0 it only answers. The sketch lives until the task is deleted; a query
 * leaves it as it was. The variables that the first call selected have their quantiles one behind the other.
 * Checks: n (-4002); with n above 0 the data (-4032) and storage (-4044, -4003); stream_quantiles (-4070),
 * stream_orders (-4068), their count (-4069), stream_param_count null (-4064) or not 1 (-4066), an order outside 0..1
 * (-4069), stream_params (-4065); method (-4029); epsilon (-4067); a masked variable that the first call left out
 * (-4004); memory (-4000). */
int32_t _kestdSSStreamQuantiles(void* task, uint64_t estimate_mask, uint64_t method_mask,
                                const tarn_threader* threader);
int32_t _kestsSSStreamQuantiles(void* task, uint64_t estimate_mask, uint64_t method_mask,
                                const tarn_threader* threader);

/* Frees the sketch of the stream quantiles; the next stream call starts a new one. */
void __kestSQuantilesFreeBuffers(void* task);

/* Quicksort (median of three, insertion sort below 8) of n elements, side by side or stride elements apart. The order
 * of NaNs is not defined. */
void __kestdQSort(int64_t n, double* array);
void __kestsQSort(int64_t n, float* array);
void __kestdQSortStep(int64_t n, double* array, int64_t stride);
void __kestsQSortStep(int64_t n, float* array, int64_t stride);

/* The element of rank k, from 0; leaves the array partly ordered, with nothing above the element in front of it and
 * nothing below it behind. */
double __kestdQSortSelect(int64_t n, double* array, int64_t k);
float __kestsQSortSelect(int64_t n, float* array, int64_t k);

#ifdef __cplusplus
}
#endif
#endif
