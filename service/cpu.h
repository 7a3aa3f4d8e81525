// The cpuid instruction, and the features that the library asks for at run time.
#pragma once

#include <stdint.h>

namespace tarn::service {

struct CpuidRegisters {
  uint32_t eax, ebx, ecx, edx;
};

inline CpuidRegisters cpuid(uint32_t leaf, uint32_t subleaf = 0) {
  CpuidRegisters r;
  asm volatile("cpuid" : "=a"(r.eax), "=b"(r.ebx), "=c"(r.ecx), "=d"(r.edx) : "a"(leaf), "c"(subleaf));
  return r;
}

inline bool cpu_has_aes() { return cpuid(1).ecx >> 25 & 1; }
inline bool cpu_has_rdrand() { return cpuid(1).ecx >> 30 & 1; }
inline bool cpu_has_vector_aes() { return cpuid(0).eax >= 7 && (cpuid(7).ecx >> 9 & 1); }

// Size of the last-level cache as the system reports it, 0 when it does not know. Asked once, then remembered.
int64_t last_level_cache_bytes();

}
