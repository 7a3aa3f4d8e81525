// Highway's functions for its SSE4 target, which is the baseline of this file's flags.
#include "bench/vector/peers.h"

#include <hwy/contrib/math/math-inl.h>
#include <hwy/highway.h>

namespace tarn::bench {

namespace hn = hwy::HWY_NAMESPACE;

static_assert(HWY_TARGET == HWY_SSE4, "the flags of this file choose Highway's SSE4 code");

namespace {

#define TARN_HIGHWAY(Name, function_name)                                                                              \
  template <class T> void highway_##Name(const Arrays& x) {                                                            \
    const hn::ScalableTag<T> d;                                                                                        \
    const auto width = static_cast<int64_t>(hn::Lanes(d));                                                             \
    const T* in = static_cast<const T*>(x.in[0]);                                                                      \
    T* out = static_cast<T*>(x.out[0]);                                                                                \
    int64_t i = 0;                                                                                                     \
    for (; i + width <= x.n; i += width) hn::StoreU(hn::function_name(d, hn::LoadU(d, in + i)), d, out + i);           \
    const hn::CappedTag<T, 1> one;                                                                                     \
    for (; i < x.n; ++i) hn::StoreU(hn::function_name(one, hn::LoadU(one, in + i)), one, out + i);                     \
  }
#include "bench/vector/peers.def"

}

Loop highway_loop(const std::string& function, char type) {
#define TARN_HIGHWAY(Name, function_name)                                                                              \
  if (function == #Name) return type == 's' ? highway_##Name<float> : highway_##Name<double>;
#include "bench/vector/peers.def"
  return nullptr;
}

}
