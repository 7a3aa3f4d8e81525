#include "service/service.h"

#include <sched.h>

extern "C" void tarn_serv_lock(uint32_t* word) {
  while (__atomic_exchange_n(word, 1u, __ATOMIC_ACQUIRE)) {
    // Spin on a plain read, which leaves the cache line shared; yield, since the holder may be on this very core.
    for (int spin = 0; __atomic_load_n(word, __ATOMIC_RELAXED); ++spin) {
      if (spin < 64)
        __builtin_ia32_pause();
      else
        sched_yield();
    }
  }
}

extern "C" void tarn_serv_unlock(uint32_t* word) { __atomic_store_n(word, 0u, __ATOMIC_RELEASE); }
