// Defines the kernels of a family: included, after the family's formulas, by kernels.sse3.cpp and kernels.sse41.cpp,
// which then include the family's .def. Each file emits the variants of its own instruction set.
#pragma once

#include "service/service.h"
#include "vector/frame/block_loop.h"
#include "vector/frame/light_loop.h"
#include "vector/frame/shapes.h"
#include "vector/frame/sharing.h"

namespace tarn::TARN_ISA {

// A loop that belongs to its formula.
template <int B> struct OwnLoop {
  template <class F, class X>
  static __attribute__((noinline)) void run(const Call<F, X>& call, int64_t n, uint32_t mode, const char* name) {
    call.f.template loop<B>(call.x, n, mode, name);
  }
};

template <class Frame, class Loop, class F, class X>
static TARN_INLINE void run_kernel(const F& f, const X& x, int32_t n, const char* name) {
  const Call<F, X> call = {f, x};
  ControlWords kept = keep();
  const uint32_t mode = Frame::enter(kept);
  Loop::run(call, n, mode, name);
  leave(kept);
}

}

#define TARN_FRAME_aware Aware
#define TARN_FRAME_rounding Rounding
#define TARN_FRAME_fixed Fixed
#define TARN_FRAME_extended Extended
#define TARN_LOOP_block BlockLoop
#define TARN_LOOP_light LightLoop
#define TARN_LOOP_own OwnLoop

#define TARN_DEFINE(t, Name, shape, frame, loop, variant, cls, B, BI)                                                  \
  TARN_EXPORT void TARN_KERNEL_NAME(t##Name, variant, cls) TARN_PARAMS_##shape(TARN_TYPE_##t) {                        \
    using namespace tarn::TARN_ISA;                                                                                    \
    run_kernel<TARN_FRAME_##frame, TARN_LOOP_##loop<B>>(TARN_FORMULA_##shape(t##Name##_##cls),                         \
                                                        TARN_ARRAYS_##shape(TARN_TYPE_##t), n, "v" #t #Name);          \
  }                                                                                                                    \
  TARN_EXPORT void TARN_KERNEL_NAME(t##Name##I, variant, cls) TARN_PARAMS_I_##shape(TARN_TYPE_##t) {                   \
    using namespace tarn::TARN_ISA;                                                                                    \
    run_kernel<TARN_FRAME_##frame, TARN_LOOP_##loop<BI>>(TARN_FORMULA_##shape(t##Name##_##cls),                        \
                                                         TARN_ARRAYS_I_##shape(TARN_TYPE_##t), n, "v" #t #Name "I");   \
  }
#define TARN_NOT_HERE(...)
#ifdef __SSE4_1__
#define TARN_EMIT_Y8 TARN_DEFINE
#define TARN_EMIT_E7 TARN_NOT_HERE
#define TARN_EMIT_EX TARN_NOT_HERE
#define TARN_EMIT_U8 TARN_NOT_HERE
#else
#define TARN_EMIT_Y8 TARN_NOT_HERE
#define TARN_EMIT_E7 TARN_DEFINE
#define TARN_EMIT_EX TARN_DEFINE
#define TARN_EMIT_U8 TARN_DEFINE
#endif

// A kernel that names frame and loop itself goes before its row.
#define TARN_FRAME_AND_LOOP(frame, loop, ...) TARN_FIRST_TWO(__VA_OPT__(__VA_ARGS__, ) frame, loop)
#define TARN_FIRST_TWO(...) TARN_FIRST_TWO_(__VA_ARGS__, none)
#define TARN_FIRST_TWO_(a, b, ...) a, b
#define TARN_EMIT_KERNEL(context, kernel) TARN_CALL(TARN_EMIT_NAMED, TARN_BARE context, TARN_BARE kernel)
#define TARN_EMIT_NAMED(t, Name, shape, frame, loop, variant, cls, B, BI, ...)                                         \
  TARN_CALL_AGAIN(TARN_EMIT_##variant, t, Name, shape, TARN_FRAME_AND_LOOP(frame, loop __VA_OPT__(, ) __VA_ARGS__),    \
                  variant, cls, B, BI)
#define TARN_EMIT_ROW(t, Name, shape, frame, loop, sharing, ...)                                                       \
  TARN_EACH(TARN_EMIT_KERNEL, (t, Name, shape, frame, loop), TARN_KERNELS(sharing))
// A file that defines TARN_EMIT_ONE_TYPE as d or s emits the rows of that type; the other file is compiled with other
// options.
#define TARN_PASTE2(a, b) TARN_PASTE2_(a, b)
#define TARN_PASTE2_(a, b) a##b
#ifdef TARN_EMIT_ONE_TYPE
#define TARN_ONE_TYPE_dd TARN_EMIT_ROW
#define TARN_ONE_TYPE_ss TARN_EMIT_ROW
#define TARN_ONE_TYPE_ds TARN_NOT_HERE
#define TARN_ONE_TYPE_sd TARN_NOT_HERE
#define TARN_VECTOR(t, ...) TARN_PASTE2(TARN_ONE_TYPE_##t, TARN_EMIT_ONE_TYPE)(t, __VA_ARGS__)
#else
#define TARN_VECTOR TARN_EMIT_ROW
#endif
#define TARN_DOC(...)
#define TARN_ESTIMATE(...)
