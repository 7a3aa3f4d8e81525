#include "service/service.h"
#include "tarn/threader.h"

#include <dlfcn.h>
#include <string.h>

namespace {

int32_t serial_thread_limit() { return 1; }

void serial_for(int64_t count, int32_t, void* context, tarn_loop_body body) {
  for (int64_t i = 0; i < count; ++i) body(i, 0, 1, context);
}

}

TARN_EXPORT void* tarn_serv_load_thread_fun(const char* name) {
  if (void* found = dlsym(RTLD_DEFAULT, name)) return found;
  if (!strcmp(name, "tarn_kest_serv_threader_get_num_threads_limit"))
    return reinterpret_cast<void*>(&serial_thread_limit);
  if (!strcmp(name, "tarn_kest_serv_threader_for")) return reinterpret_cast<void*>(&serial_for);
  return nullptr;
}
