// The two floating-point control words around a kernel. Entering and leaving stand in one function, the loop between
// them in another that is not inlined: the compiler is free to move arithmetic across these instructions.
#pragma once

#include <stdint.h>

#include "vector/frame/lanes.h"
#include "vector/frame/mode.h"

namespace tarn::TARN_ISA {

struct ControlWords {
  uint16_t x87;
  bool x87_changed;
  bool mxcsr_changed;
  uint32_t mxcsr;
};

constexpr uint32_t mxcsr_all_masked = 0x1F80;
constexpr uint32_t mxcsr_flush = 0x8040; // flush to zero, denormals are zero
constexpr uint32_t mxcsr_rounding = 0x6000;

static TARN_INLINE uint16_t read_x87() {
  uint16_t word;
  asm volatile("fnstcw %0" : "=m"(word));
  return word;
}
static TARN_INLINE void load_x87(uint16_t word) { asm volatile("fldcw %0" ::"m"(word) : "memory"); }
static TARN_INLINE uint32_t read_mxcsr() {
  uint32_t word;
  asm volatile("stmxcsr %0" : "=m"(word));
  return word;
}
static TARN_INLINE void load_mxcsr(uint32_t word) { asm volatile("ldmxcsr %0" ::"m"(word) : "memory"); }

static TARN_INLINE void change_x87(ControlWords& kept, uint16_t word) {
  asm volatile("fnclex");
  load_x87(word);
  kept.x87_changed = true;
}
static TARN_INLINE void change_mxcsr(ControlWords& kept, uint32_t word) {
  load_mxcsr(word);
  kept.mxcsr_changed = true;
}

static TARN_INLINE ControlWords keep() { return {read_x87(), false, false, read_mxcsr()}; }
static TARN_INLINE void mask_x87(ControlWords& kept) {
  if (__builtin_expect((kept.x87 & 0x3F) != 0x3F, 0)) change_x87(kept, kept.x87 | 0x3F);
}
static TARN_INLINE void mask_mxcsr(ControlWords& kept) {
  if (__builtin_expect((kept.mxcsr & mxcsr_all_masked) != mxcsr_all_masked, 0))
    change_mxcsr(kept, kept.mxcsr | mxcsr_all_masked);
}

// The ways in. Each returns the mode word as far as its kernels read it.
//   aware      follows the denormal field of the mode, rounds to nearest
//   rounding   the same, with the caller's rounding mode: for the functions whose result depends on it
//   fixed      masks only; flushing is as the caller set it
//   extended   masks; the x87 unit in 53-bit precision, round to nearest
//   extended64 the same in 64-bit precision
struct Aware {
  static TARN_INLINE uint32_t enter(ControlWords& kept, uint32_t keep_bits = 0) {
    mask_x87(kept);
    const uint32_t mode = vector::get_mode();
    const bool flush = (mode & vector::denormal_field) == vector::flush_denormals;
    const uint32_t target = mxcsr_all_masked | (flush ? mxcsr_flush : 0) | (kept.mxcsr & keep_bits);
    if (__builtin_expect((kept.mxcsr & 0xFFC0) != target, 0)) change_mxcsr(kept, (kept.mxcsr & 0xFFFF003F) | target);
    return mode;
  }
};
struct Rounding {
  static TARN_INLINE uint32_t enter(ControlWords& kept) { return Aware::enter(kept, mxcsr_rounding); }
};
struct Fixed {
  static TARN_INLINE uint32_t enter(ControlWords& kept) {
    mask_x87(kept);
    mask_mxcsr(kept);
    return 0;
  }
};
template <uint16_t control> struct ExtendedWith {
  static TARN_INLINE uint32_t enter(ControlWords& kept) {
    if ((kept.x87 & 0xF3F) != control) change_x87(kept, static_cast<uint16_t>((kept.x87 & 0xF0C0) + control));
    mask_mxcsr(kept);
    return 0;
  }
};
using Extended = ExtendedWith<0x23F>;
using Extended64 = ExtendedWith<0x33F>;

// Out again: the caller's words, with the exception flags that were raised meanwhile.
static TARN_INLINE void leave(const ControlWords& kept) {
  if (__builtin_expect(kept.x87_changed, 0)) load_x87(kept.x87);
  if (__builtin_expect(kept.mxcsr_changed, 0)) load_mxcsr(kept.mxcsr | (read_mxcsr() & 0x3F));
}

}
