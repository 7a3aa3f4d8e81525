/* The part of Tarn's service layer that callers reach: the allocator whose blocks they may hand to a stream, and the
 * look-up of thread functions by name. All three functions may be called from any thread. */
#ifndef TARN_SERVICE_H
#define TARN_SERVICE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A block of size bytes at a multiple of alignment (a power of two, at least 8). The size is rounded up to a multiple
 * of the alignment, and to one multiple when it is 0. Null when there is no memory or an argument is negative. */
void* tarn_serv_allocate(int64_t size, int64_t alignment);

/* Frees what tarn_serv_allocate gave; null is allowed. */
void tarn_serv_deallocate(void* block);

/* The thread function of that name among the process's global symbols, looked up at each call. A program lends its
 * threads to the quasi-random generators by defining
 *   int32_t tarn_kest_serv_threader_get_num_threads_limit(void);
 *   void    tarn_kest_serv_threader_for(int64_t count, int32_t thread_count, void* context, tarn_loop_body body);
 * Where a program defines neither, Tarn's own serial functions stand in: a limit of 1 and a plain loop.
 * Null for any other name that the process does not define. */
void* tarn_serv_load_thread_fun(const char* name);

#ifdef __cplusplus
}
#endif
#endif
