// The tables of every function, expanded from the roll: kernels and cost figures in the order LA, HA, EP.
#include <stdint.h>

#include "vector/frame/sharing.h"

namespace {

// Callers see an array of three pointers, and the ABI lets them take a global array of 16 bytes or more to stand at a
// multiple of 16.
// One record, since the cost table stands directly behind the kernels and two objects do not stay adjacent.
struct FunctionTable {
  void (*kernels[3])();
  float cost[3];
  uint32_t zero;
};
static_assert(sizeof(FunctionTable) == 40);

}

#define TARN_DECLARE(context, kernel) TARN_CALL(TARN_DECLARE_NAMED, TARN_BARE context, TARN_BARE kernel)
#define TARN_DECLARE_NAMED(tName, variant, cls, ...) extern "C" void TARN_KERNEL_NAME(tName, variant, cls)();
#define TARN_ADDRESS(context, kernel) TARN_CALL(TARN_ADDRESS_NAMED, TARN_BARE context, TARN_BARE kernel)
#define TARN_ADDRESS_NAMED(tName, variant, cls, ...) TARN_KERNEL_NAME(tName, variant, cls),

#define TARN_TABLE(tName, sharing, ...)                                                                                \
  TARN_EACH(TARN_DECLARE, (tName), TARN_KERNELS(sharing))                                                              \
  extern "C" __attribute__((visibility("default"), aligned(16)))                                                       \
  const FunctionTable tarn_lume_kernel_##tName##_ttab = {                                                              \
      {TARN_EACH(TARN_ADDRESS, (tName), TARN_SLOTS(sharing))}, {__VA_ARGS__}, 0};                                      \
  asm(".globl tarn_lume_kernel_" #tName "_ctab\n"                                                                      \
      ".type tarn_lume_kernel_" #tName "_ctab, @object\n"                                                              \
      ".set tarn_lume_kernel_" #tName "_ctab, tarn_lume_kernel_" #tName "_ttab + 24\n"                                 \
      ".size tarn_lume_kernel_" #tName "_ctab, 16\n");

#define TARN_VECTOR(t, Name, shape, frame, loop, sharing, ...)                                                         \
  TARN_TABLE(t##Name, sharing, __VA_ARGS__)                                                                            \
  TARN_TABLE(t##Name##I, sharing, __VA_ARGS__)
#define TARN_PACK(t, Name, ...) TARN_TABLE(t##Name, one((E7, HA, 1, 1)), __VA_ARGS__)
#include "vector/functions.def"
