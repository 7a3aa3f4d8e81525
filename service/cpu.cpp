#include "service/cpu.h"
#include "service/service.h"

#include <unistd.h>

extern "C" int32_t tarn_serv_cpuisicx(void) { return tarn::service::cpu_has_vector_aes(); }

namespace tarn::service {

int64_t last_level_cache_bytes() {
  static int64_t remembered = -1; // threads that come first together store the same value
  int64_t size = __atomic_load_n(&remembered, __ATOMIC_RELAXED);
  if (size >= 0) return size;
  const int levels[] = {_SC_LEVEL4_CACHE_SIZE, _SC_LEVEL3_CACHE_SIZE, _SC_LEVEL2_CACHE_SIZE};
  for (int level : levels) {
    size = sysconf(level);
    if (size > 0) break;
  }
  if (size < 0) size = 0;
  __atomic_store_n(&remembered, size, __ATOMIC_RELAXED);
  return size;
}

}
