/* The data-fitting task: its record, its creation and deletion, its editors and queries. See tarn/fitting.h. */
#ifndef TARN_FITTING_TASK_H
#define TARN_FITTING_TASK_H

#include <stdint.h>

#include "tarn/threader.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Partition hints. */
#define TARN_DF_PARTITION_UNKNOWN 0       /* searches use the bin table */
#define TARN_DF_PARTITION_GENERAL 1       /* likewise */
#define TARN_DF_PARTITION_QUASI_UNIFORM 2 /* selects the quasi-uniform search */
#define TARN_DF_PARTITION_UNIFORM 4       /* x holds only the left and the right end */

/* Storage hints of functions and coefficients. */
#define TARN_DF_STORAGE_DEFAULT 0      /* as rows */
#define TARN_DF_STORAGE_ROWS 16        /* function by function, each with nx values */
#define TARN_DF_STORAGE_COLUMNS 32     /* interleaved: value i of function j at i*ny + j */
#define TARN_DF_STORAGE_FIRST_ONLY 128 /* the first function's pointer; the others come by tarn_df_kernel_dEditIdxPtr */

/* Spline orders: the number of coefficients of a cell. */
#define TARN_DF_ORDER_NONE 0 /* step and look-up interpolants, and splines known to call-backs alone */
#define TARN_DF_ORDER_LINEAR 2
#define TARN_DF_ORDER_QUADRATIC 3
#define TARN_DF_ORDER_CUBIC 4

/* Spline types. */
#define TARN_DF_TYPE_DEFAULT 0    /* the plain type of the order */
#define TARN_DF_TYPE_SUBBOTIN 1   /* quadratic; alone has nx cells instead of nx - 1 */
#define TARN_DF_TYPE_NATURAL 2    /* 2, 3, 4, 5 and 9: cubics, which constructors and evaluators do not tell apart */
#define TARN_DF_TYPE_HERMITE 3    /* (but for one check of the periodic condition, where the types 0 and 3 need bc) */
#define TARN_DF_TYPE_BESSEL 4     /* */
#define TARN_DF_TYPE_AKIMA 5      /* */
#define TARN_DF_TYPE_LOOKUP 6     /* order 0 */
#define TARN_DF_TYPE_STEP_RIGHT 7 /* order 0: the value at the right end of a cell */
#define TARN_DF_TYPE_STEP_LEFT 8  /* order 0: the value at its left end */
#define TARN_DF_TYPE_HYMAN 9

/* Boundary conditions. bc holds two values, left and right, except where it is not needed. */
#define TARN_DF_BC_NONE 0
#define TARN_DF_BC_FREE_END 1
#define TARN_DF_BC_NOT_A_KNOT 2
#define TARN_DF_BC_1ST_LEFT 4
#define TARN_DF_BC_1ST_RIGHT 8
#define TARN_DF_BC_2ND_LEFT 16
#define TARN_DF_BC_2ND_RIGHT 32
#define TARN_DF_BC_PERIODIC 64
#define TARN_DF_BC_FIRST_MIDDLE 128 /* the value at the middle of the first cell, for the standard quadratic */

/* Internal conditions. */
#define TARN_DF_IC_NONE 0
#define TARN_DF_IC_1ST 1             /* first derivatives at the points 1 to nx - 2, of the Hermite kind */
#define TARN_DF_IC_2ND 2             /* second derivatives there, of the default kind */
#define TARN_DF_IC_UNIFORM_SUBGRID 4 /* with the next one: ic holds the two ends of a uniform subgrid */
#define TARN_DF_IC_SUBGRID 8         /* the nx + 1 knots of a Subbotin spline; ic null: the middles of the cells */

/* Parameters of the editors and queries. */
#define TARN_DF_X 1
#define TARN_DF_Y 2
#define TARN_DF_IC 3
#define TARN_DF_BC 4
#define TARN_DF_COEFF 5
#define TARN_DF_NX 14
#define TARN_DF_X_HINT 15
#define TARN_DF_NY 16
#define TARN_DF_Y_HINT 17
#define TARN_DF_SPLINE_ORDER 18
#define TARN_DF_SPLINE_TYPE 19
#define TARN_DF_IC_TYPE 20
#define TARN_DF_BC_TYPE 21
#define TARN_DF_COEFF_HINT 22
#define TARN_DF_OPTION 23

/* Statuses of all data-fitting functions. */
#define TARN_DF_OK 0
#define TARN_DF_ERROR_NULL_TASK -1000
#define TARN_DF_ERROR_ALLOCATION -1001
#define TARN_DF_ERROR_METHOD -1002 /* a method other than 0 */
#define TARN_DF_ERROR_NX -1004     /* nx below 2, or below the minimum of the spline */
#define TARN_DF_ERROR_NULL_X -1005
#define TARN_DF_ERROR_X_HINT -1006
#define TARN_DF_ERROR_NY -1007
#define TARN_DF_ERROR_NULL_Y -1008
#define TARN_DF_ERROR_Y_HINT -1009 /* unknown, or an indexed operation meets interleaved functions */
#define TARN_DF_ERROR_SPLINE_ORDER -1010
#define TARN_DF_ERROR_SPLINE_TYPE -1011 /* invalid, or order and type make no spline */
#define TARN_DF_ERROR_IC_TYPE -1012
#define TARN_DF_ERROR_IC -1013 /* ic null where it is needed, or at odds with the partition */
#define TARN_DF_ERROR_BC_TYPE -1014
#define TARN_DF_ERROR_NULL_BC -1015
#define TARN_DF_ERROR_NULL_COEFF -1016
#define TARN_DF_ERROR_COEFF_HINT -1017
#define TARN_DF_ERROR_NOT_PERIODIC -1018 /* a periodic function whose first and last values differ */
#define TARN_DF_ERROR_PARAMETER_ID -1019
#define TARN_DF_ERROR_INDEX -1020
#define TARN_DF_ERROR_LOOKUP_SITE -1022        /* a look-up site that is no partition point */
#define TARN_DF_ERROR_LOOKUP_ORDER_COUNT -1024 /* look-up with other than one derivative order */
#define TARN_DF_ERROR_LOOKUP_ORDER -1025       /* look-up with the value not selected */
#define TARN_DF_ERROR_DATA_HINT -1026
#define TARN_DF_ERROR_INTERPOLATION_RESULT_HINT -1028
#define TARN_DF_ERROR_INTEGRATION_RESULT_HINT -1034
#define TARN_DF_ERROR_OPTION -1036      /* parameter 23 neither 0 nor 1 */
#define TARN_DF_ERROR_NULL_OUTPUT -1037 /* the output pointer of a query */
#define TARN_DF_ERROR_SOLVER -1500      /* the tridiagonal solver met a pivot of zero */

/* The record, one layout for both precisions; reals are double or float by the task's precision. Numbers in brackets
 * are parameters of the editors and queries. */
typedef struct DFTask {
  int32_t wideInterface;  /* the caller's integers behind pointers: 0: 32 bits; otherwise 64 bits */
  int8_t recordMark;      /* 4 */
  int32_t isDouble;       /* 1 double, 0 single precision */
  int32_t taskKind;       /* 1; editors and queries leave a record of another kind alone */
  int64_t nx;             /* partition points, at least 2 [14] */
  const void* x;          /* the partition, ascending; two values under the uniform hint [1] */
  int64_t xHint;          /* TARN_DF_PARTITION_* [15] */
  int64_t ny;             /* functions [16] */
  void** y;               /* where each function's values start; the array is the task's, the values the caller's [2] */
  int64_t yHint;          /* TARN_DF_STORAGE_* [17] */
  int64_t splineOrder;    /* TARN_DF_ORDER_* [18] */
  int64_t splineType;     /* TARN_DF_TYPE_* [19] */
  int64_t icType;         /* TARN_DF_IC_* [20] */
  const void* ic;         /* internal condition values, shared by all functions [3] */
  int64_t bcType;         /* TARN_DF_BC_*, sums of them [21] */
  const void* bc;         /* boundary condition values, shared by all functions [4] */
  void** coeff;           /* where each function's coefficients start; array the task's, storage the caller's [5] */
  int64_t coeffHint;      /* TARN_DF_STORAGE_* [22] */
  int32_t optionFlag;     /* kept for the caller, 0 or 1 [23] */
  int64_t binCount;       /* bins in use */
  int64_t (*binTable)[2]; /* per bin the partition indices, low and high, between which its points lie */
  union {
    double d;
    float s;
  } binScale; /* binCount by the length of the partition */
} DFTask;

/* The bin table's size in entries. */
#define TARN_DF_BIN_ENTRIES 1026

/* Makes a task over nx points of a partition and ny functions sampled on it.
 *   task           receives the task; untouched when a check or the record's own allocation fails
 *   x, xHint       the partition; under TARN_DF_PARTITION_UNIFORM its two ends
 *   ny, y, yHint   the functions, y being the address of the first one's values whatever the storage; ny of 0 with a
 *                  null y makes a task that searches only, or gets its functions later
 *   wideInterface  0: derivative orders, cells and queried integers are 32 bits wide; otherwise 64
 * Checked in this order: NX, NULL_X, X_HINT, NULL_Y (ny not 0), NY (ny 0 with a y), Y_HINT, ALLOCATION. When an
 * allocation after the record's own fails, the task holds a half-made record that tarn_df_kernel_DeleteTask frees. */
int32_t tarn_df_kernel_dNewTask1D(DFTask** task, int64_t nx, const double* x, int64_t xHint, int64_t ny,
                                  const double* y, int64_t yHint, int32_t wideInterface);
int32_t tarn_df_kernel_sNewTask1D(DFTask** task, int64_t nx, const float* x, int64_t xHint, int64_t ny, const float* y,
                                  int64_t yHint, int32_t wideInterface);

/* Frees the task and all that it owns, and sets the place to null. NULL_TASK when place or task is null. */
int32_t tarn_df_kernel_DeleteTask(DFTask** task);

/* Sets the spline: order and type; boundary condition with its values; internal condition with its values; storage of
 * the coefficients, which for function j starts at coeff + j * cells * splineOrder, with nx - 1 cells, or nx when the
 * type is TARN_DF_TYPE_SUBBOTIN. Under TARN_DF_STORAGE_FIRST_ONLY only the first function's storage is set. A null
 * coeff leaves the storage as it is.
 * In this order: NULL_TASK, SPLINE_ORDER, SPLINE_TYPE (negative), both stored; NULL_BC for conditions other than
 * NONE, FREE_END, NOT_A_KNOT, PERIODIC, both stored; IC (a type without values), IC_TYPE (values without a type), both
 * stored; NY (no functions to lay out), ALLOCATION; coeffHint stored, whatever its value. What was stored before a
 * failing check stays. */
int32_t tarn_df_kernel_dEditPPSpline1D(DFTask* task, int64_t splineOrder, int64_t splineType, int64_t bcType,
                                       const double* bc, int64_t icType, const double* ic, double* coeff,
                                       int64_t coeffHint);
int32_t tarn_df_kernel_sEditPPSpline1D(DFTask* task, int64_t splineOrder, int64_t splineType, int64_t bcType,
                                       const float* bc, int64_t icType, const float* ic, float* coeff,
                                       int64_t coeffHint);

/* Replaces a pointer, parameters 1 to 5. A new x leaves the bin table as it is (see tarn_df_kernel_iEditVal); new y
 * and coeff are laid out anew from the present nx, ny, hints, order and type.
 * NULL_TASK, PARAMETER_ID; a null pointer gives NULL_X, NULL_Y, IC, NULL_BC, NULL_COEFF; coeff with ny of 0 gives NY;
 * ALLOCATION, after which the task has no such array. */
int32_t tarn_df_kernel_dEditPtr(DFTask* task, int64_t id, const double* ptr);
int32_t tarn_df_kernel_sEditPtr(DFTask* task, int64_t id, const float* ptr);

/* Replaces the pointer of one function, 0 to ny - 1: its values (id 2) or its coefficients (id 5).
 * NULL_TASK, PARAMETER_ID, Y_HINT (interleaved values), INDEX, NULL_Y or NULL_COEFF (also when the task has none yet).
 */
int32_t tarn_df_kernel_dEditIdxPtr(DFTask* task, int64_t id, int64_t index, const double* ptr);
int32_t tarn_df_kernel_sEditIdxPtr(DFTask* task, int64_t id, int64_t index, const float* ptr);

/* Sets an integer, parameters 14 to 23. Setting xHint to TARN_DF_PARTITION_GENERAL also fills the bin table anew from
 * the present x and nx, and nothing else does: after changing nx or x, set this hint. After changing ny, nx or yHint
 * give y and coeff again, whose arrays of pointers keep the size they were made with. Spline types are 0 to 5 and 9.
 * NULL_TASK, PARAMETER_ID; a value that is not valid gives the parameter's own status. */
int32_t tarn_df_kernel_iEditVal(DFTask* task, int64_t id, int64_t value);

/* Gives a pointer: x, the first function's values, ic, bc, the first function's coefficients; null when there is none.
 * NULL_TASK, NULL_OUTPUT, PARAMETER_ID. */
int32_t tarn_df_kernel_dQueryPtr(DFTask* task, int64_t id, double** out);
int32_t tarn_df_kernel_sQueryPtr(DFTask* task, int64_t id, float** out);

/* Gives the pointer of one function's values (id 2) or coefficients (id 5). The index ny passes too and gives null.
 * NULL_TASK, NULL_OUTPUT, INDEX, PARAMETER_ID, Y_HINT (interleaved values). */
int32_t tarn_df_kernel_dQueryIdxPtr(DFTask* task, int64_t id, int64_t index, double** out);
int32_t tarn_df_kernel_sQueryIdxPtr(DFTask* task, int64_t id, int64_t index, float** out);

/* Gives an integer, parameters 14 to 23, to an int32_t (its low 32 bits) when wideInterface is 0, else to an int64_t.
 * NULL_TASK, NULL_OUTPUT, PARAMETER_ID. */
int32_t tarn_df_kernel_iQueryVal(DFTask* task, int64_t id, void* out);

#ifdef __cplusplus
}
#endif
#endif
