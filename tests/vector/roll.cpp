#include "vector/roll.h"

#include <stdexcept>

#include "vector/frame/sharing.h"

namespace tarn::test {

namespace {

#define TEXT(x) TEXT_(x)
#define TEXT_(x) #x
#define BLOCK(context, kernel) TARN_CALL(BLOCK_, TARN_BARE kernel)
#define BLOCK_(variant, cls, B, BI, ...) B,
#define STRIDED_BLOCK(context, kernel) TARN_CALL(STRIDED_BLOCK_, TARN_BARE kernel)
#define STRIDED_BLOCK_(variant, cls, B, BI, ...) BI,
#define KERNEL_NAME(context, kernel) TARN_CALL(KERNEL_NAME_, context, TARN_BARE kernel)
#define KERNEL_NAME_(tName, variant, cls, B, BI, ...) #tName "_" #variant #cls,

// A kernel that names frame and loop itself goes before its row.
#define FRAME(context, kernel) TARN_CALL(FRAME_, TARN_BARE context, TARN_BARE kernel)
#define FRAME_(frame, loop, variant, cls, B, BI, ...) FIRST(__VA_OPT__(__VA_ARGS__, ) frame, none),
#define LOOP(context, kernel) TARN_CALL(LOOP_, TARN_BARE context, TARN_BARE kernel)
#define LOOP_(frame, loop, variant, cls, B, BI, ...) SECOND(__VA_OPT__(__VA_ARGS__, ) frame, loop, none),
#define FIRST(a, ...) TEXT(a)
#define SECOND(a, b, ...) TEXT(b)

#define LA_ENTRY_s(f) __lume##f##_21
#define LA_ENTRY_d(f) __lume##f##_50
#define LA_ENTRY_c(f) __lume##f##_21
#define LA_ENTRY_z(f) __lume##f##_50
#define EP_ENTRY_s(f) __lume##f##_11
#define EP_ENTRY_d(f) __lume##f##_26
#define EP_ENTRY_c(f) __lume##f##_11
#define EP_ENTRY_z(f) __lume##f##_26
#define ENTRIES(t, f)                                                                                                  \
  {                                                                                                                    \
    reinterpret_cast<Entry>(LA_ENTRY_##t(f)), reinterpret_cast<Entry>(__lume##f##_HA),                                 \
        reinterpret_cast<Entry>(__lume##f), reinterpret_cast<Entry>(EP_ENTRY_##t(f))                                   \
  }

#define TARN_VECTOR(t, Name, shape, frame, loop, sharing, ...)                                                         \
  {(#t)[0],                                                                                                            \
   #Name,                                                                                                              \
   Shape::shape,                                                                                                       \
   tarn_lume_kernel_##t##Name##_ttab,                                                                                  \
   tarn_lume_kernel_##t##Name##I_ttab,                                                                                 \
   &tarn_lume_kernel_##t##Name##_ctab,                                                                                 \
   &tarn_lume_kernel_##t##Name##I_ctab,                                                                                \
   ENTRIES(t, t##Name),                                                                                                \
   ENTRIES(t, t##Name##I),                                                                                             \
   {TARN_EACH(BLOCK, (), TARN_SLOTS(sharing))},                                                                        \
   {TARN_EACH(STRIDED_BLOCK, (), TARN_SLOTS(sharing))},                                                                \
   {TARN_EACH(FRAME, (frame, loop), TARN_SLOTS(sharing))},                                                             \
   {TARN_EACH(LOOP, (frame, loop), TARN_SLOTS(sharing))},                                                              \
   {TARN_EACH(KERNEL_NAME, t##Name, TARN_SLOTS(sharing))}},

}

const std::vector<Function>& roll() {
  static const std::vector<Function> functions = {
#include "vector/functions.def"
  };
  return functions;
}

const Function& function(const std::string& full_name) {
  for (const Function& f : roll())
    if (f.full_name() == full_name) return f;
  throw std::out_of_range(full_name);
}

}
