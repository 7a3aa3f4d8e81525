#include "service/cpu.h"
#include "service/service.h"

extern "C" int32_t tarn_serv_cpuisicx(void) { return tarn::service::cpu_has_vector_aes(); }
