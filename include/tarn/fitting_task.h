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

#ifdef __cplusplus
}
#endif
#endif
