// What the processor offers.
#include "random/streams/stream.h"

#include <cpuid.h>

namespace {

// Bits of ecx of leaf 1.
enum : int { kAes = 25, kRdrand = 30 };

// cpuid is slow and traps under virtual machines, so it is asked once; threads that race store the same word.
constexpr uint64_t kAsked = uint64_t{1} << 32;
uint64_t features = 0;

int32_t has(int bit) {
  uint64_t known = __atomic_load_n(&features, __ATOMIC_RELAXED);
  if (known == 0) {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    __get_cpuid(1, &eax, &ebx, &ecx, &edx);
    known = kAsked | ecx;
    __atomic_store_n(&features, known, __ATOMIC_RELAXED);
  }
  return known >> bit & 1;
}

}

TARN_EXPORT int32_t __kestCPUisAES(void) { return has(kAes); }
TARN_EXPORT int32_t __kestCPUisRDRAND(void) { return has(kRdrand); }
TARN_EXPORT int32_t __kestCPUisVAES(void) { return tarn_serv_cpuisicx(); }
