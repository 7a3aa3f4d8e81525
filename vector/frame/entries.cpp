// The entries of every function, expanded from the roll: each jumps through one slot of its table.
#include "service/service.h"
#include "tarn/vector.h"
#include "vector/frame/shapes.h"

// Suffixes of the entries of classes LA and EP.
#define TARN_LA_s _21
#define TARN_LA_d _50
#define TARN_LA_c _21
#define TARN_LA_z _50
#define TARN_EP_s _11
#define TARN_EP_d _26
#define TARN_EP_c _11
#define TARN_EP_z _26

#define TARN_ENTRY(entry, table, slot, params, names)                                                                  \
  TARN_EXPORT void entry params { reinterpret_cast<void(*) params>(table[slot]) names; }
#define TARN_PASTE(a, b) TARN_PASTE_(a, b)
#define TARN_PASTE_(a, b) a##b

#define TARN_ENTRIES(t, tName, params, names)                                                                          \
  TARN_ENTRY(TARN_PASTE(__lume##tName, TARN_LA_##t), tarn_lume_kernel_##tName##_ttab, 0, params, names)                \
  TARN_ENTRY(__lume##tName##_HA, tarn_lume_kernel_##tName##_ttab, 1, params, names)                                    \
  TARN_ENTRY(__lume##tName, tarn_lume_kernel_##tName##_ttab, 1, params, names)                                         \
  TARN_ENTRY(TARN_PASTE(__lume##tName, TARN_EP_##t), tarn_lume_kernel_##tName##_ttab, 2, params, names)

#define TARN_VECTOR(t, Name, shape, ...)                                                                               \
  TARN_ENTRIES(t, t##Name, TARN_PARAMS_##shape(TARN_TYPE_##t), TARN_NAMES_##shape)                                     \
  TARN_ENTRIES(t, t##Name##I, TARN_PARAMS_I_##shape(TARN_TYPE_##t), TARN_NAMES_I_##shape)
#define TARN_PACK(t, Name, ...) TARN_ENTRIES(t, t##Name, TARN_PARAMS_##Name(TARN_TYPE_##t), TARN_NAMES_##Name)
#include "vector/functions.def"
