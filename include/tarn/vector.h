/* Tarn's vector math: elementary and special functions over arrays, real and complex, at three accuracies.
 *
 * Accuracy classes: LA (low, at most 4 ulp), HA (high, at most 1 ulp), EP (enhanced performance, about half of the
 * digits). The measured maxima stand in docs/accuracy.md. Element types: s float, d double, c and z complex of them.
 *
 * Every function <t><Name> has four entries of one signature, and, but for the Pack and Unpack families, a strided twin
 * <t><Name>I with as many again:
 *     __lume<t><Name>_HA, __lume<t><Name>          class HA
 *     __lume<t><Name>_50 (d, z), _21 (s, c)        class LA
 *     __lume<t><Name>_26 (d, z), _11 (s, c)        class EP
 * None of them looks at the accuracy field of the mode; a caller that honours it asks
 * tarn_lume_kernel_GetTTableIndex for the slot of the table tarn_lume_kernel_<t><Name>_ttab.
 *
 * Counts and strides are signed 32-bit and count elements. Arrays may have any byte alignment; a result array may be
 * the same as an argument array of its type. Arguments are trusted: a negative count, a null array or a partial overlap
 * is the caller's mistake. An element that goes wrong gets a defined result (NaN, infinity, zero) and is reported as
 * the thread's mode says; see SetMode. A kernel leaves both floating-point control words as it found them and merges
 * the exception flags that it raised.
 *
 * A strided kernel reports element k with the base pointers, so what a report reads, and writes back where a callback
 * changed it, is array element k, not the strided one.
 *
 * All functions may be called from any number of threads at once; mode, status, callback and vector pointer are each
 * thread's own. */
#ifndef TARN_VECTOR_H
#define TARN_VECTOR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Complex elements; passed and laid out as float _Complex and double _Complex are. */
typedef struct {
  float re, im;
} tarn_c32;
typedef struct {
  double re, im;
} tarn_c64;

/* What a user's callback is told of an element that went wrong. Values of single precision are widened.
 * A callback that changes res1 or res2 and returns 0 changes the caller's result. */
typedef struct {
  int32_t code;        /* 1 domain, 2 singularity, 3 overflow, 4 underflow; -1, -2 refused argument or pointer */
  int32_t index;       /* the element's number in the caller's vector */
  double arg1, arg2;   /* a function of one argument, or with one result, gives the same value twice */
  double res1, res2;   /* arguments and results are unset for -1 and -2 */
  char funcName[64];   /* such as vdExp; at most 47 characters */
  int32_t funcNameLen; /* the number of characters in it */
  int32_t reserved;
  double arg1Im, arg2Im; /* imaginary parts, set for complex functions only */
  double res1Im, res2Im;
} ErrorContext;

/* Runs on the thread that called the function, with no lock held, and may call SetMode. A result other than 0 ends the
 * report: nothing is written back and no other route runs. */
typedef int32_t (*ErrorCallback)(ErrorContext*);

/* ---- The thread's mode ----
 *
 * bits 0-3    accuracy: 1 LA, 2 HA, 3 EP
 * bits 4-7    a consistency request that the environment can set; carried, and read by no kernel
 * bits 8-15   reports, one bit a route: 0x100 IGNORE (alone: store the status, nothing else), 0x200 ERRNO,
 *             0x400 STDERR, 0x800 EXCEPT (the x87 exception of the status is raised), 0x1000 CALLBACK,
 *             0x2000 NOERR (alone: not even the status is stored)
 * bits 18-21  denormals: 0x280000 flushes results and reads arguments as zero in the kernels that follow the mode
 * bits 24-27  traps that the EXCEPT route lets through: 0x1000000 invalid, 0x2000000 divide by zero,
 *             0x4000000 overflow, 0x8000000 underflow
 *
 * A thread's first use of its mode reads the environment variable TARN_VM_MODE, a comma-separated list of LUME_LA,
 * LUME_HA, LUME_EP, LUME_DEFAULT_PRECISION, LUME_FLOAT_CONSISTENT, LUME_DOUBLE_CONSISTEN, LUME_RESTORE,
 * LUME_ERRMODE_{IGNORE,ERRNO,STDERR,EXCEPT,CALLBACK,NOERR,DEFAULT} and
 * LUME_TRAP_{INVALID,DIVBYZERO,OVERFLOW,UNDERFLOW}. One bad word makes the whole value count as absent. The default is
 * 0x1A02: HA; ERRNO, EXCEPT and CALLBACK.
 *
 * Each operation exists under two names that do the same. */

uint32_t __lumeGetMode(void);
uint32_t tarn_lume_kernel_GetMode(void);

/* Replaces each field whose bits in word are not all 0, and returns the mode before. A field given as 0 stays: so the
 * error field and the traps cannot be cleared, only changed. Bits 4-7 never change. */
uint32_t __lumeSetMode(uint32_t word);
uint32_t tarn_lume_kernel_SetMode(uint32_t word);

/* ---- The thread's status: the last report of any function, 0 at the start; no function clears it ---- */

int32_t __lumeGetErrStatus(void);
int32_t tarn_lume_kernel_GetErrStatus(void);
/* These return the status before. */
int32_t __lumeSetErrStatus(int32_t status);
int32_t tarn_lume_kernel_SetErrStatus(int32_t status);
int32_t __lumeClearErrStatus(void);
int32_t tarn_lume_kernel_ClearErrStatus(void);

/* ---- The thread's callback. Setting one sets the CALLBACK bit of the mode, clearing it clears the bit, unless it is
 *      the only bit of its field. Set and Clear return the callback before. ---- */

ErrorCallback __lumeGetErrorCallBack(void);
ErrorCallback tarn_lume_kernel_GetErrorCallBack(void);
ErrorCallback __lumeSetErrorCallBack(ErrorCallback cb);
ErrorCallback tarn_lume_kernel_SetErrorCallBack(ErrorCallback cb);
ErrorCallback __lumeClearErrorCallBack(void);
ErrorCallback tarn_lume_kernel_ClearErrorCallBack(void);

/* Registers the start of the caller's whole vector, so that reports from a slice of it carry the element's number in
 * the whole; null ends that. Returns its argument. */
const void* __lumeSetInterfInputVectorPointer(const void* start);
const void* tarn_lume_kernel_SetInterfInputVectorPointer(const void* start);

/* The words of TARN_VM_MODE OR-ed together, or -1 when it is absent, empty, too long (above 255 characters) or bad. */
int64_t tarn_lume_kernel_ReadEnvVarMode(void);

/* The table slot of the thread's accuracy, or of a mode word's: 0 LA, 1 HA, 2 EP. */
int32_t tarn_lume_kernel_GetTTableIndex(void);
int32_t tarn_lume_kernel_GetTTableIndexM(const void* ignored, uint32_t word);

/* Reports element `index` of a function called `name`; what every kernel calls. A function of one argument passes its
 * array twice, one with a single result likewise. For the codes -1 and -2 the arrays are not touched. */
void tarn_lume_kernel_sError(int32_t code, int32_t index, const float* arg1, const float* arg2, float* res1,
                             float* res2, const char* name);
void tarn_lume_kernel_dError(int32_t code, int32_t index, const double* arg1, const double* arg2, double* res1,
                             double* res2, const char* name);
void tarn_lume_kernel_cError(int32_t code, int32_t index, const tarn_c32* arg1, const tarn_c32* arg2, tarn_c32* res1,
                             tarn_c32* res2, const char* name);
void tarn_lume_kernel_zError(int32_t code, int32_t index, const tarn_c64* arg1, const tarn_c64* arg2, tarn_c64* res1,
                             tarn_c64* res2, const char* name);

/* The number by which a loader tells this set of kernels from its siblings: 4. */
int32_t dll_cpu_version(void);

/* ---- Tables: per function and form the kernels and the cost figures of the classes, in the order LA, HA, EP ---- */

typedef void (*tarn_kernel)(void);
typedef struct {
  float cost[3]; /* relative time per element, for splitting work over threads */
  uint32_t zero;
} tarn_cost_table;

#ifdef __cplusplus
}
#endif

#include "tarn/vector_functions.h"

#endif
