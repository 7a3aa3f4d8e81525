// The exported array primitives: checks, then the kernels.
#include "service/service.h"
#include "stats/primitives/copy_fill.h"
#include "stats/primitives/radix_sort.h"
#include "tarn/stats.h"

using namespace tarn::stats::primitives;

namespace {

constexpr int32_t null_pointer = -8, bad_size = -6;

template <class T> const uint8_t* bytes(const T* at) { return reinterpret_cast<const uint8_t*>(at); }
template <class T> uint8_t* bytes(T* at) { return reinterpret_cast<uint8_t*>(at); }

template <class T> int32_t copy_entry(const T* source, T* destination, int32_t length) {
  if (!source || !destination) return null_pointer;
  if (length < 1) return bad_size;
  tarn_dft_mc3_ownsCopy_8u(bytes(source), bytes(destination), int64_t(length) * int64_t(sizeof(T)));
  return 0;
}

template <class T> int32_t zero_entry(T* destination, int32_t length) {
  if (!destination) return null_pointer;
  if (length < 1) return bad_size;
  tarn_dft_mc3_ownsZero_8u(bytes(destination), int64_t(length) * int64_t(sizeof(T)));
  return 0;
}

template <class T> int32_t set_entry(T value, T* destination, int32_t length) {
  if (!destination) return null_pointer;
  if (length < 1) return bad_size;
  fill(bytes(destination), int64_t(length) * int64_t(sizeof(T)), pattern_of(value));
  return 0;
}

template <class T, bool Descending> int32_t sort_entry(T* array, void* scratch, int32_t length) {
  if (!array || !scratch) return null_pointer;
  if (length < 1) return bad_size;
  using Key = typename Keys<T, Descending>::Key;
  if constexpr (sizeof(T) == 1) {
    counting_sort<Descending>(array, length);
  } else {
    radix_sort<T, Descending>(reinterpret_cast<Key*>(array), static_cast<Key*>(scratch), length);
  }
  return 0;
}

template <class T, bool Descending>
int32_t sort_index_entry(const T* keys, int32_t stride, int32_t* output, int32_t* scratch, int32_t length) {
  if (!keys || !output || !scratch) return null_pointer;
  if (length < 1 || stride < int32_t(sizeof(T))) return bad_size;
  radix_sort_index<T, Descending>(bytes(keys), stride, output, scratch, length);
  return 0;
}

}

TARN_EXPORT void tarn_dft_mc3_ownsCopy_8u(const uint8_t* source, uint8_t* destination, int64_t count) {
  copy(source, destination, count);
}
TARN_EXPORT void tarn_dft_mc3_ownsZero_8u(uint8_t* destination, int64_t count) {
  fill(destination, count, _mm_setzero_si128());
}

#define TARN_COPY_ZERO(suffix, type)                                                                                   \
  TARN_EXPORT int32_t tarn_dft_mc3_pelsCopy_##suffix(const type* source, type* destination, int32_t length) {          \
    return copy_entry(source, destination, length);                                                                    \
  }                                                                                                                    \
  TARN_EXPORT int32_t tarn_dft_mc3_pelsZero_##suffix(type* destination, int32_t length) {                              \
    return zero_entry(destination, length);                                                                            \
  }
#define TARN_SET(suffix, type)                                                                                         \
  TARN_EXPORT int32_t tarn_dft_mc3_pelsSet_##suffix(type value, type* destination, int32_t length) {                   \
    return set_entry(value, destination, length);                                                                      \
  }
#define TARN_FILL(suffix, type)                                                                                        \
  TARN_EXPORT void tarn_dft_mc3_ownsSet_##suffix##_M7(type value, type* destination, int64_t length) {                 \
    fill(bytes(destination), length* int64_t(sizeof(type)), pattern_of(value));                                        \
  }                                                                                                                    \
  TARN_EXPORT void tarn_dft_mc3_ownsSet_##suffix(type value, type* destination, int64_t length) {                      \
    tarn_dft_mc3_ownsSet_##suffix##_M7(value, destination, length);                                                    \
  }
#define TARN_RADIX_SORT(suffix, type, scratch_type)                                                                    \
  TARN_EXPORT int32_t tarn_dft_mc3_pelsSortRadixAscend_##suffix##_I(type* array, scratch_type* scratch,                \
                                                                    int32_t length) {                                  \
    return sort_entry<type, false>(array, scratch, length);                                                            \
  }                                                                                                                    \
  TARN_EXPORT int32_t tarn_dft_mc3_pelsSortRadixDescend_##suffix##_I(type* array, scratch_type* scratch,               \
                                                                     int32_t length) {                                 \
    return sort_entry<type, true>(array, scratch, length);                                                             \
  }
#define TARN_RADIX_SORT_INDEX(suffix, type)                                                                            \
  TARN_EXPORT int32_t tarn_dft_mc3_pelsSortRadixIndexAscend_##suffix(                                                  \
      const type* keys, int32_t stride_bytes, int32_t* index_output, int32_t* index_scratch, int32_t length) {         \
    return sort_index_entry<type, false>(keys, stride_bytes, index_output, index_scratch, length);                     \
  }                                                                                                                    \
  TARN_EXPORT int32_t tarn_dft_mc3_pelsSortRadixIndexDescend_##suffix(                                                 \
      const type* keys, int32_t stride_bytes, int32_t* index_output, int32_t* index_scratch, int32_t length) {         \
    return sort_index_entry<type, true>(keys, stride_bytes, index_output, index_scratch, length);                      \
  }
#include "stats/primitives/primitives.def"

TARN_EXPORT void tarn_dft_mc3_ownsSet_64sc_M7(const pel64sc* value, pel64sc* destination, int64_t length) {
  fill(bytes(destination), length * int64_t(sizeof(pel64sc)), pattern_of(*value));
}
TARN_EXPORT void tarn_dft_mc3_ownsSet_64sc(const pel64sc* value, pel64sc* destination, int64_t length) {
  tarn_dft_mc3_ownsSet_64sc_M7(value, destination, length);
}
