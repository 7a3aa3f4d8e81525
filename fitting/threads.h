// The caller's threader table, which may be null, and the status of work that several threads share.
#pragma once

#include <stdint.h>

#include "tarn/threader.h"

namespace tarn::fitting {

inline int64_t max_threads(const tarn_threader* threader) {
  const int64_t threads = threader ? threader->threader_max_threads() : 1;
  return threads > 1 ? threads : 1;
}

inline void run_loop(const tarn_threader* threader, int64_t items, int64_t threads, void* context,
                     tarn_loop_body body) {
  if (threader) {
    threader->threader_for(items, static_cast<int32_t>(threads), context, body);
  } else {
    for (int64_t item = 0; item < items; ++item) body(item, 0, 1, context);
  }
}

// The status of the first failing item of work, whichever thread meets it: item and status in one word.
struct FirstFailure {
  uint64_t word = UINT64_MAX;
};
// Whether an item of this number or a lower one has failed: what comes after it need not be done.
inline bool failed_before(const FirstFailure& failure, int64_t item) {
  return static_cast<uint64_t>(item) >= __atomic_load_n(&failure.word, __ATOMIC_RELAXED) >> 32;
}
inline void record_failure(FirstFailure& failure, int64_t item, int32_t status) {
  const uint64_t word = static_cast<uint64_t>(item) << 32 | static_cast<uint32_t>(status);
  uint64_t seen = __atomic_load_n(&failure.word, __ATOMIC_RELAXED);
  while (word < seen &&
         !__atomic_compare_exchange_n(&failure.word, &seen, word, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
  }
}
inline int32_t status_of(const FirstFailure& failure) {
  return failure.word == UINT64_MAX ? 0 : static_cast<int32_t>(static_cast<uint32_t>(failure.word));
}

}
