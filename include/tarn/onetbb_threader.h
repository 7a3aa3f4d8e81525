/* The threader table over oneTBB, in libtarn_onetbb. The number of threads is that of the task arena of the calling
 * thread, so tbb::global_control and tbb::task_arena govern it. */
#ifndef TARN_ONETBB_THREADER_H
#define TARN_ONETBB_THREADER_H

#include "tarn/threader.h"

#ifdef __cplusplus
extern "C" {
#endif

const tarn_threader* tarn_onetbb_threader(void);

#ifdef __cplusplus
}
#endif
#endif
