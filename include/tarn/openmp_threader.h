/* The threader table over OpenMP, in libtarn_openmp. The number of threads follows omp_get_max_threads(), so
 * OMP_NUM_THREADS and omp_set_num_threads() govern it. Loops hand out iterations one at a time. Inside a parallel
 * region OpenMP may give fewer threads than asked for; a region then runs the bodies that are left one after the other,
 * so that each of the thread numbers is run. */
#ifndef TARN_OPENMP_THREADER_H
#define TARN_OPENMP_THREADER_H

#include "tarn/threader.h"

#ifdef __cplusplus
extern "C" {
#endif

const tarn_threader* tarn_openmp_threader(void);

#ifdef __cplusplus
}
#endif
#endif
