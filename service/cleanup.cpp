#include "service/service.h"

#include <stdlib.h>

namespace {

struct Cleanup {
  void (*function)(void*);
  void* argument;
};
Cleanup cleanups[32];
int32_t cleanup_count = 0;
uint32_t cleanup_lock = 0;

__attribute__((destructor)) void run_cleanups() {
  for (int32_t i = cleanup_count; i-- > 0;) cleanups[i].function(cleanups[i].argument);
  cleanup_count = 0;
  tarn::service::free_library_blocks();
}

}

extern "C" int32_t tarn_serv_core_register_cleanup(void (*function)(void*), void* argument) {
  tarn_serv_lock(&cleanup_lock);
  int32_t status = 0;
  int32_t i = 0;
  while (i < cleanup_count && (cleanups[i].function != function || cleanups[i].argument != argument)) ++i;
  if (i == static_cast<int32_t>(sizeof cleanups / sizeof *cleanups))
    status = -1;
  else if (i == cleanup_count)
    cleanups[cleanup_count++] = {function, argument};
  tarn_serv_unlock(&cleanup_lock);
  return status;
}

extern "C" void tarn_serv_exit(int32_t code) { exit(code); }
