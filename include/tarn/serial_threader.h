/* A threader table that runs everything on the calling thread: the simplest correct table, and the reference for
 * others. Header only. */
#ifndef TARN_SERIAL_THREADER_H
#define TARN_SERIAL_THREADER_H

#include "tarn/threader.h"

#ifdef __cplusplus
extern "C" {
#endif

static inline void tarn_serial_for(int64_t count, int32_t thread_count, void* context, tarn_loop_body body) {
  int64_t i;
  (void)thread_count;
  for (i = 0; i < count; ++i) body(i, 0, 1, context);
}

/* Once on each of thread_count threads, one after the other; 0 chooses one. */
static inline void tarn_serial_region(int32_t thread_count, void* context, tarn_region_body body) {
  int32_t thread, threads = thread_count > 0 ? thread_count : 1;
  for (thread = 0; thread < threads; ++thread) body(thread, 0, threads, context);
}

static inline void tarn_serial_ordered(int64_t iteration, int32_t thread_id, int32_t thread_count, void* context,
                                       tarn_loop_body section) {
  section(iteration, thread_id, thread_count, context); /* iterations come in order as it is */
}

static inline int32_t tarn_serial_max_threads(void) { return 1; }

static inline const tarn_threader* tarn_serial_threader(void) {
  static const tarn_threader table = {tarn_serial_for, tarn_serial_for, tarn_serial_region, tarn_serial_ordered,
                                      tarn_serial_max_threads};
  return &table;
}

#ifdef __cplusplus
}
#endif
#endif
