// The exported operations on a thread's mode, status, callback and vector pointer: each under two names, one for the
// caller's front layer and one for kernels.
#include "service/service.h"
#include "vector/frame/environment.h"
#include "vector/frame/mode.h"

using namespace tarn::vector;

#define TARN_PAIR(result, Op, parameters, body)                                                                        \
  TARN_EXPORT result __lume##Op parameters body TARN_EXPORT result tarn_lume_kernel_##Op parameters body

TARN_PAIR(uint32_t, GetMode, (void), { return get_mode(); })
TARN_PAIR(uint32_t, SetMode, (uint32_t word), { return set_mode(word); })
TARN_PAIR(int32_t, GetErrStatus, (void), { return get_status(); })
TARN_PAIR(int32_t, SetErrStatus, (int32_t status), { return set_status(status); })
TARN_PAIR(int32_t, ClearErrStatus, (void), { return set_status(0); })
TARN_PAIR(ErrorCallback, GetErrorCallBack, (void), { return get_callback(); })
TARN_PAIR(ErrorCallback, SetErrorCallBack, (ErrorCallback callback), { return set_callback(callback); })
TARN_PAIR(ErrorCallback, ClearErrorCallBack, (void), { return set_callback(nullptr); })
TARN_PAIR(const void*, SetInterfInputVectorPointer, (const void* start), { return set_input_start(start); })

TARN_EXPORT int64_t tarn_lume_kernel_ReadEnvVarMode(void) { return read_mode_variable(); }

namespace {
int32_t slot_of(uint32_t mode) { return static_cast<int32_t>(mode & accuracy_field) - 1; }
}
TARN_EXPORT int32_t tarn_lume_kernel_GetTTableIndex(void) { return slot_of(get_mode()); }
TARN_EXPORT int32_t tarn_lume_kernel_GetTTableIndexM(const void*, uint32_t word) { return slot_of(word); }

// The number by which a loader tells this set of kernels from its siblings.
TARN_EXPORT int32_t dll_cpu_version(void) { return 4; }
