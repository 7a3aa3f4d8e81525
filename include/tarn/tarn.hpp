// Tarn for C++20: a thin layer, header only, over the C interface.
//
// The vector functions take spans and carry their plain names: tarn::Exp(a, r), tarn::Fmod(a, b, r),
// tarn::Modf(a, r1, r2), in double and single precision. A result span may be an argument span. What the C interface
// leaves to its caller is done here: the accuracy of the thread's mode is honoured, spans of different lengths are
// refused, and spans longer than a kernel's 32-bit count are cut.
//
// Each function returns false when it refused its spans: then nothing was computed, and the refusal was reported as the
// thread's mode says, with status -1 and the number of the first span whose length is not that of the first. Elements
// that go wrong are reported element by element, as tarn/vector.h tells; in spans cut by this layer with their number in
// the whole, modulo 2^32. All functions may be called from any number of threads at once.
#ifndef TARN_HPP
#define TARN_HPP

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "tarn/vector.h"

namespace tarn {

enum class Accuracy : int32_t {
  low,    // LA: at most 4 ulp
  high,   // HA: at most 1 ulp
  fast,   // EP: about half of the digits
  of_mode // what the thread's mode says
};

namespace detail {

template <class T> void refuse(int32_t argument, const char* name) {
  if constexpr (std::is_same_v<T, float>)
    tarn_lume_kernel_sError(-1, argument, nullptr, nullptr, nullptr, nullptr, name);
  else
    tarn_lume_kernel_dError(-1, argument, nullptr, nullptr, nullptr, nullptr, name);
}

// Hands the kernel of the accuracy to `call`, piece by piece.
template <class Kernel, class Call, class First, class... Rest>
bool over_pieces(const tarn_kernel (&table)[3], Accuracy accuracy, const char* name, Call call, First first,
                 Rest... rest) {
  int32_t argument = 1, refused = 0;
  ((++argument, refused = refused == 0 && rest.size() != first.size() ? argument : refused), ...);
  if (refused != 0) {
    refuse<std::remove_const_t<typename First::element_type>>(refused, name);
    return false;
  }
  int32_t slot = accuracy == Accuracy::of_mode ? tarn_lume_kernel_GetTTableIndex() : static_cast<int32_t>(accuracy);
  if (slot < 0 || slot > 2) slot = 1; // a mode can be set to an accuracy that does not exist
  Kernel* kernel = reinterpret_cast<Kernel*>(table[slot]);
  constexpr std::size_t longest = std::size_t{1} << 30;
  const bool cut = first.size() > longest;
  if (cut) __lumeSetInterfInputVectorPointer(first.data());
  for (std::size_t i = 0; i < first.size(); i += longest) {
    const std::size_t left = first.size() - i;
    call(kernel, static_cast<int32_t>(left < longest ? left : longest), i);
  }
  if (cut) __lumeSetInterfInputVectorPointer(nullptr);
  return true;
}

}

}

#include "tarn/vector_functions.hpp"

#endif
