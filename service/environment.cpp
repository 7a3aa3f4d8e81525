#include "service/service.h"

#include <stdlib.h>
#include <string.h>

extern "C" int32_t tarn_serv_getenv(const char* name, char* buffer, int32_t buffer_size) {
  const char* value = getenv(name);
  if (!value || buffer_size <= 0) return -1;
  const size_t length = strnlen(value, static_cast<size_t>(buffer_size));
  if (length >= static_cast<size_t>(buffer_size)) return -1;
  memcpy(buffer, value, length + 1);
  return static_cast<int32_t>(length);
}
