#include "accuracy/references.h"

#include <algorithm>
#include <cmath>

namespace tarn::accuracy {

namespace {

constexpr mpfr_rnd_t N = MPFR_RNDN;

// Rounds x to the element type, denormals and overflow included.
[[maybe_unused]] void nearest(mpfr_ptr x, Real f) {
  f == Real::Single ? mpfr_set_flt(x, mpfr_get_flt(x, N), N) : mpfr_set_d(x, mpfr_get_d(x, N), N);
}

constexpr Reference references[] = {
#define TARN_REFERENCE(Name, thin, ...)                                                                                \
  {#Name, thin,                                                                                                        \
   []([[maybe_unused]] mpfr_ptr r, [[maybe_unused]] mpfr_ptr r2, [[maybe_unused]] mpfr_srcptr a,                       \
      [[maybe_unused]] mpfr_srcptr b, [[maybe_unused]] const mpfr_t* s, [[maybe_unused]] Real f) {                     \
     [[maybe_unused]] int sign;                                                                                        \
     static_cast<void>(__VA_ARGS__);                                                                                   \
   }},
#include "accuracy/references.def"
};

}

const Reference* find_reference(std::string_view name) {
  const auto found =
      std::find_if(std::begin(references), std::end(references), [&](const Reference& r) { return r.name == name; });
  return found == std::end(references) ? nullptr : &*found;
}

}
