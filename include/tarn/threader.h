/* The threader table: how a caller lends its threads to Tarn.
 *
 * Tarn starts no thread. A statistics or data-fitting call that can use several is handed this table of five functions
 * and shares its work through them; a table that runs everything on the calling thread is a correct table.
 *
 * A body has no result: a failure travels through the context. Bodies may enter the same table again.
 * A thread count of 0 leaves the choice to the table; what a body receives as thread_count is the table's choice. */
#ifndef TARN_THREADER_H
#define TARN_THREADER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One iteration of a loop, on thread thread_id (0 to thread_count - 1). */
typedef void (*tarn_loop_body)(int64_t iteration, int32_t thread_id, int32_t thread_count, void* context);

/* One thread's share of a region. The second argument is always 0. */
typedef void (*tarn_region_body)(int32_t thread_id, int32_t zero, int32_t thread_count, void* context);

typedef struct tarn_threader {
  /* Runs body for iterations 0 to count - 1 over at most thread_count threads; returns when all have ended. */
  void (*threader_for)(int64_t count, int32_t thread_count, void* context, tarn_loop_body body);
  /* The same; its bodies may call threader_ordered. */
  void (*threader_for_ordered)(int64_t count, int32_t thread_count, void* context, tarn_loop_body body);
  /* Runs body once on each of thread_count threads; returns when all have ended. */
  void (*threader_region)(int32_t thread_count, void* context, tarn_region_body body);
  /* From a body of threader_for_ordered: runs section in the order of the iterations, one at a time. */
  void (*threader_ordered)(int64_t iteration, int32_t thread_id, int32_t thread_count, void* context,
                           tarn_loop_body section);
  /* The number of threads that may be used now. */
  int32_t (*threader_max_threads)(void);
} tarn_threader;

#ifdef __cplusplus
}
#endif
#endif
