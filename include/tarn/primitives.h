/* Array primitives: copy, zero, set, and radix sorts, one function per element type.
 *
 * Suffixes: a width in bits, then u unsigned, s signed, f IEEE float, and c for a pair (re, im) that counts as one
 * element. Lengths are counts of elements.
 *
 * Result of every pels function: 0; -8 for a null pointer; -6 for a length below 1 (so 0 is an error, not a no-op).
 * The checks stand in that order. All functions are reentrant and take any alignment unless said otherwise. */
#ifndef TARN_PRIMITIVES_H
#define TARN_PRIMITIVES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
  int16_t re, im;
} pel16sc;
typedef struct {
  int32_t re, im;
} pel32sc;
typedef struct {
  float re, im;
} pel32fc;
typedef struct {
  int64_t re, im;
} pel64sc;
typedef struct {
  double re, im;
} pel64fc;

/* Copies length elements. Source and destination must not overlap. Arrays of a megabyte and more that would take half
 * of the last-level cache or more are written around it. */
int32_t tarn_dft_mc3_pelsCopy_8u(const uint8_t* source, uint8_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_16s(const int16_t* source, int16_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_16sc(const pel16sc* source, pel16sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_32s(const int32_t* source, int32_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_32sc(const pel32sc* source, pel32sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_32f(const float* source, float* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_32fc(const pel32fc* source, pel32fc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_64s(const int64_t* source, int64_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_64sc(const pel64sc* source, pel64sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_64f(const double* source, double* destination, int32_t length);
int32_t tarn_dft_mc3_pelsCopy_64fc(const pel64fc* source, pel64fc* destination, int32_t length);

/* Sets length elements to zero. */
int32_t tarn_dft_mc3_pelsZero_8u(uint8_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_16s(int16_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_16sc(pel16sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_32s(int32_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_32sc(pel32sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_32f(float* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_32fc(pel32fc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_64s(int64_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_64sc(pel64sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_64f(double* destination, int32_t length);
int32_t tarn_dft_mc3_pelsZero_64fc(pel64fc* destination, int32_t length);

/* Sets length elements to the value. */
int32_t tarn_dft_mc3_pelsSet_8u(uint8_t value, uint8_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_16s(int16_t value, int16_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_16sc(pel16sc value, pel16sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_32s(int32_t value, int32_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_32sc(pel32sc value, pel32sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_32f(float value, float* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_32fc(pel32fc value, pel32fc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_64s(int64_t value, int64_t* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_64sc(pel64sc value, pel64sc* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_64f(double value, double* destination, int32_t length);
int32_t tarn_dft_mc3_pelsSet_64fc(pel64fc value, pel64fc* destination, int32_t length);

/* Sort in place, by a radix sort that takes the least significant digit first (Knuth, The Art of Computer Programming,
 * vol. 3, 5.2.5). The scratch has the length of the array and its alignment; only the sort of bytes leaves it alone.
 * Floats are ordered by their bit patterns: -0.0 before +0.0, NaNs outside the infinity of their sign. */
int32_t tarn_dft_mc3_pelsSortRadixAscend_8u_I(uint8_t* array, void* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixAscend_16s_I(int16_t* array, int16_t* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixAscend_16u_I(uint16_t* array, uint16_t* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixAscend_32s_I(int32_t* array, int32_t* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixAscend_32u_I(uint32_t* array, uint32_t* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixAscend_32f_I(float* array, float* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixAscend_64f_I(double* array, double* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixDescend_8u_I(uint8_t* array, void* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixDescend_16s_I(int16_t* array, int16_t* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixDescend_16u_I(uint16_t* array, uint16_t* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixDescend_32s_I(int32_t* array, int32_t* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixDescend_32u_I(uint32_t* array, uint32_t* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixDescend_32f_I(float* array, float* scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixDescend_64f_I(double* array, double* scratch, int32_t length);

/* Sort by index: index_output receives the numbers 0 to length - 1 in the order of the keys, equal keys in their own
 * order. Keys stand stride_bytes apart, at any alignment, and are not changed; a stride below the size of a key gives
 * -6. index_scratch has the length of index_output. */
int32_t tarn_dft_mc3_pelsSortRadixIndexAscend_8u(const uint8_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                 int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexAscend_16s(const int16_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                  int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexAscend_16u(const uint16_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                  int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexAscend_32s(const int32_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                  int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexAscend_32u(const uint32_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                  int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexAscend_32f(const float* keys, int32_t stride_bytes, int32_t* index_output,
                                                  int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexDescend_8u(const uint8_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                  int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexDescend_16s(const int16_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                   int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexDescend_16u(const uint16_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                   int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexDescend_32s(const int32_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                   int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexDescend_32u(const uint32_t* keys, int32_t stride_bytes, int32_t* index_output,
                                                   int32_t* index_scratch, int32_t length);
int32_t tarn_dft_mc3_pelsSortRadixIndexDescend_32f(const float* keys, int32_t stride_bytes, int32_t* index_output,
                                                   int32_t* index_scratch, int32_t length);

/* The kernels behind them, for 64-bit counts and without checks; a count below 1 does nothing. Copy and Zero count
 * bytes, Set counts elements. The _M7 forms are the kernels themselves. */
void tarn_dft_mc3_ownsCopy_8u(const uint8_t* source, uint8_t* destination, int64_t bytes);
void tarn_dft_mc3_ownsZero_8u(uint8_t* destination, int64_t bytes);
void tarn_dft_mc3_ownsSet_8u(uint8_t value, uint8_t* destination, int64_t length);
void tarn_dft_mc3_ownsSet_16u(uint16_t value, uint16_t* destination, int64_t length);
void tarn_dft_mc3_ownsSet_32s(int32_t value, int32_t* destination, int64_t length);
void tarn_dft_mc3_ownsSet_64s(int64_t value, int64_t* destination, int64_t length);
void tarn_dft_mc3_ownsSet_64sc(const pel64sc* value, pel64sc* destination, int64_t length);
void tarn_dft_mc3_ownsSet_8u_M7(uint8_t value, uint8_t* destination, int64_t length);
void tarn_dft_mc3_ownsSet_16u_M7(uint16_t value, uint16_t* destination, int64_t length);
void tarn_dft_mc3_ownsSet_32s_M7(int32_t value, int32_t* destination, int64_t length);
void tarn_dft_mc3_ownsSet_64s_M7(int64_t value, int64_t* destination, int64_t length);
void tarn_dft_mc3_ownsSet_64sc_M7(const pel64sc* value, pel64sc* destination, int64_t length);

#ifdef __cplusplus
}
#endif
#endif
