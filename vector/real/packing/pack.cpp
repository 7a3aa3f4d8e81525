// Pack and Unpack: elements moved by stride, by index and by mask. No arithmetic, so no control word is touched and
// nothing is reported; elements travel as bits, and a signaling NaN stays one.
#include <stdint.h>

#include "service/service.h"
#include "tarn/vector.h"
#include "vector/frame/shapes.h"
#include "vector/frame/sharing.h"

namespace tarn::vector {

namespace {

// An element, or an index, at any byte address.
template <class T> __attribute__((always_inline)) inline void move(T* to, const T* from) {
  __builtin_memcpy(to, from, sizeof(T));
}
template <class W> __attribute__((always_inline)) inline W integer_at(const void* array, W i) {
  W v;
  __builtin_memcpy(&v, static_cast<const char*>(array) + i * static_cast<int64_t>(sizeof(W)), sizeof v);
  return v;
}

// Two a round: the loads of the second need not wait for the first.
template <class W, class Body> __attribute__((always_inline)) inline void two_a_round(W n, Body body) {
  W i = 0;
  for (; n - i >= 2; i += 2) body(i), body(i + 1);
  if (i < n) body(i);
}

struct PackI {
  template <class W, class T> static void run(W n, const T* a, int64_t inca, T* y) {
    const int64_t step = static_cast<W>(inca);
    two_a_round<W>(n, [=](int64_t i) { move(y + i, a + i * step); });
  }
};
struct UnpackI {
  template <class W, class T> static void run(W n, const T* a, T* y, int64_t incy) {
    const int64_t step = static_cast<W>(incy);
    two_a_round<W>(n, [=](int64_t i) { move(y + i * step, a + i); });
  }
};
struct PackV {
  template <class W, class T> static void run(W n, const T* a, const void* ia, T* y) {
    two_a_round<W>(n, [=](W i) { move(y + i, a + integer_at<W>(ia, i)); });
  }
};
struct UnpackV {
  template <class W, class T> static void run(W n, const T* a, T* y, const void* iy) {
    two_a_round<W>(n, [=](W i) { move(y + integer_at<W>(iy, i), a + i); });
  }
};
// The next place to write is past the elements kept so far, and nothing beyond them may be touched: a branch an
// element.
struct PackM {
  template <class W, class T> static void run(W n, const T* a, const void* ma, T* y) {
    for (W i = 0; i < n; ++i)
      if (integer_at<W>(ma, i) != 0) move(y++, a + i);
  }
};
struct UnpackM {
  template <class W, class T> static void run(W n, const T* a, T* y, const void* my) {
    for (W i = 0; i < n; ++i)
      if (integer_at<W>(my, i) != 0) move(y + i, a++);
  }
};

// n, stride, indices and masks are 32-bit when the width flag is 1, and 64-bit otherwise.
template <class Operation, class... Arguments>
__attribute__((always_inline)) inline void of_width(int32_t width, int64_t n, Arguments... arguments) {
  if (width == 1)
    Operation::run(static_cast<int32_t>(n), arguments...);
  else
    Operation::run(n, arguments...);
}

}

}

#define TARN_PASS_PackI (width, n, a, inca, y)
#define TARN_PASS_PackV (width, n, a, ia, y)
#define TARN_PASS_PackM (width, n, a, ma, y)
#define TARN_PASS_UnpackI (width, n, a, y, incy)
#define TARN_PASS_UnpackV (width, n, a, y, iy)
#define TARN_PASS_UnpackM (width, n, a, y, my)

#define TARN_DOC(...)
#define TARN_PACK(t, Name, ...)                                                                                        \
  TARN_EXPORT void TARN_KERNEL_NAME(t##Name, E7, HA) TARN_PARAMS_##Name(TARN_TYPE_##t) {                               \
    tarn::vector::of_width<tarn::vector::Name> TARN_PASS_##Name;                                                       \
  }
#include "vector/real/packing/packing.def"
