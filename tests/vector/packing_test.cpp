// Pack and Unpack: four types, both widths, all entries.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "tarn/vector.h"
#include "vector/guarded.h"

using tarn::test::Guarded;

namespace {

using Entry = void (*)();

// The twelve tables with entries of a type, by operation.
struct Operation {
  const tarn_kernel* table;
  Entry entries[4];
};
#define OPERATION(t, Name, la, ep)                                                                                     \
  {                                                                                                                    \
    tarn_lume_kernel_##t##Name##_ttab, {                                                                               \
      reinterpret_cast<Entry>(__lume##t##Name##la), reinterpret_cast<Entry>(__lume##t##Name##_HA),                     \
          reinterpret_cast<Entry>(__lume##t##Name), reinterpret_cast<Entry>(__lume##t##Name##ep)                       \
    }                                                                                                                  \
  }
#define OPERATIONS(t, la, ep)                                                                                          \
  static inline const Operation packI = OPERATION(t, PackI, la, ep), packV = OPERATION(t, PackV, la, ep),              \
                                packM = OPERATION(t, PackM, la, ep), unpackI = OPERATION(t, UnpackI, la, ep),          \
                                unpackV = OPERATION(t, UnpackV, la, ep), unpackM = OPERATION(t, UnpackM, la, ep)
struct S {
  using T = float;
  OPERATIONS(s, _21, _11);
};
struct D {
  using T = double;
  OPERATIONS(d, _50, _26);
};
struct C {
  using T = tarn_c32;
  OPERATIONS(c, _21, _11);
};
struct Z {
  using T = tarn_c64;
  OPERATIONS(z, _50, _26);
};

// Kernels of an operation with the width flag that goes with W: the slots for both widths, the entries for 32 bits.
template <class W> std::vector<Entry> kernels(const Operation& operation) {
  std::vector<Entry> list(operation.table, operation.table + 3);
  if (sizeof(W) == 4) list.insert(list.end(), operation.entries, operation.entries + 4);
  return list;
}

template <class Type> class Packing : public testing::Test {
public:
  using T = typename Type::T;
  static std::vector<T> random_elements(size_t n, unsigned seed) {
    std::mt19937_64 random(seed);
    std::vector<T> v(n);
    unsigned char* bytes = reinterpret_cast<unsigned char*>(v.data()); // any bits, signaling NaNs among them
    for (size_t i = 0; i < n * sizeof(T); ++i) bytes[i] = static_cast<unsigned char>(random());
    return v;
  }
  static bool equal(const T& x, const T& y) { return memcmp(&x, &y, sizeof(T)) == 0; }

  template <class W> static void strides() {
    const auto a = random_elements(200, 1);
    for (W n : {0, 1, 2, 3, 8, 21})
      for (W inc : {1, 2, 5, -3, 0})
        for (Entry kernel : kernels<W>(Type::packI)) {
          const size_t count = static_cast<size_t>(n);
          Guarded<T> y(count, Guarded<T>::at_end);
          const T* start = inc < 0 ? a.data() + 100 : a.data();
          reinterpret_cast<void (*)(W, const T*, W, T*, int32_t)>(kernel)(n, start, inc, y.data(), sizeof(W) == 4);
          for (W i = 0; i < n; ++i) EXPECT_TRUE(equal(y.data()[i], start[i * inc]));
        }
    for (W n : {0, 1, 2, 3, 8, 21})
      for (W inc : {1, 2, 5, -3})
        for (Entry kernel : kernels<W>(Type::unpackI)) {
          auto y = random_elements(200, 2), before = y;
          T* start = inc < 0 ? y.data() + 100 : y.data();
          reinterpret_cast<void (*)(W, const T*, T*, W, int32_t)>(kernel)(n, a.data(), start, inc, sizeof(W) == 4);
          for (W i = 0; i < n; ++i) before[static_cast<size_t>(start - y.data() + i * inc)] = a[static_cast<size_t>(i)];
          EXPECT_EQ(memcmp(y.data(), before.data(), 200 * sizeof(T)), 0);
        }
  }

  template <class W> static void indices() {
    const auto a = random_elements(100, 3);
    std::mt19937 random(4);
    for (size_t n : {size_t{0}, size_t{1}, size_t{2}, size_t{7}, size_t{50}}) {
      std::vector<W> at(n);
      for (W& i : at) i = static_cast<W>(random() % 100);
      for (Entry kernel : kernels<W>(Type::packV)) {
        Guarded<T> y(n, Guarded<T>::at_end);
        reinterpret_cast<void (*)(W, const T*, const W*, T*, int32_t)>(kernel)(static_cast<W>(n), a.data(), at.data(),
                                                                               y.data(), sizeof(W) == 4);
        for (size_t i = 0; i < n; ++i) EXPECT_TRUE(equal(y.data()[i], a[static_cast<size_t>(at[i])]));
      }
      for (Entry kernel : kernels<W>(Type::unpackV)) {
        auto y = random_elements(100, 5), expected = y;
        reinterpret_cast<void (*)(W, const T*, T*, const W*, int32_t)>(kernel)(static_cast<W>(n), a.data(), y.data(),
                                                                               at.data(), sizeof(W) == 4);
        for (size_t i = 0; i < n; ++i) expected[static_cast<size_t>(at[i])] = a[i]; // the last of equal indices wins
        EXPECT_EQ(memcmp(y.data(), expected.data(), 100 * sizeof(T)), 0);
      }
    }
  }

  template <class W> static void masks() {
    const auto a = random_elements(100, 6);
    std::mt19937 random(7);
    for (size_t n : {size_t{0}, size_t{1}, size_t{2}, size_t{9}, size_t{64}})
      for (unsigned density : {0u, 1u, 2u, 4u}) {
        std::vector<W> mask(n);
        size_t kept = 0;
        for (W& m : mask) {
          m = random() % 4 < density ? static_cast<W>(random() % 2 ? 1 : -7) : 0; // any value but 0 keeps
          kept += m != 0;
        }
        for (Entry kernel : kernels<W>(Type::packM)) {
          Guarded<T> y(kept, Guarded<T>::at_end); // nothing behind the last kept element is written
          reinterpret_cast<void (*)(W, const T*, const W*, T*, int32_t)>(kernel)(static_cast<W>(n), a.data(),
                                                                                 mask.data(), y.data(), sizeof(W) == 4);
          size_t k = 0;
          for (size_t i = 0; i < n; ++i)
            if (mask[i] != 0) {
              EXPECT_TRUE(equal(y.data()[k++], a[i]));
            }
        }
        for (Entry kernel : kernels<W>(Type::unpackM)) {
          Guarded<T> source(kept, Guarded<T>::at_end); // nor read
          std::copy_n(a.data(), kept, source.data());
          auto y = random_elements(100, 8), expected = y;
          reinterpret_cast<void (*)(W, const T*, T*, const W*, int32_t)>(kernel)(static_cast<W>(n), source.data(),
                                                                                 y.data(), mask.data(), sizeof(W) == 4);
          size_t k = 0;
          for (size_t i = 0; i < n; ++i)
            if (mask[i] != 0) expected[i] = a[k++];
          EXPECT_EQ(memcmp(y.data(), expected.data(), 100 * sizeof(T)), 0);
        }
      }
  }
};
using Types = testing::Types<S, D, C, Z>;
TYPED_TEST_SUITE(Packing, Types);

TYPED_TEST(Packing, ByStride) {
  TestFixture::template strides<int32_t>();
  TestFixture::template strides<int64_t>();
}
TYPED_TEST(Packing, ByIndex) {
  TestFixture::template indices<int32_t>();
  TestFixture::template indices<int64_t>();
}
TYPED_TEST(Packing, ByMask) {
  TestFixture::template masks<int32_t>();
  TestFixture::template masks<int64_t>();
}

// Through an entry the width is 32 bits whatever the caller says.
TEST(PackingEntries, SetTheWidth) {
  const double a[4] = {1, 2, 3, 4};
  const int32_t at[4] = {3, 2, 1, 0};
  double y[4];
  for (int32_t width : {0, 1, 2, 64}) {
    __lumedPackV(4, a, at, y, width);
    EXPECT_EQ(y[0], 4);
    EXPECT_EQ(y[3], 1);
  }
}

// With width 1 the upper half of a register has no meaning.
TEST(PackingEntries, LookAtTheLowHalfOfWords) {
  const double a[4] = {1, 2, 3, 4};
  double y[4] = {};
  __lumedPackI(int64_t{0x7700000002}, a, int64_t{0x1100000003}, y, 1);
  EXPECT_EQ(y[0], 1);
  EXPECT_EQ(y[1], 4);
  EXPECT_EQ(y[2], 0);
}

TEST(PackingEntries, AnyByteAddress) {
  alignas(16) char from[200], to[200];
  for (int i = 0; i < 200; ++i) from[i] = static_cast<char>(i);
  for (int shift = 0; shift < 16; ++shift) {
    memset(to, 0, sizeof to);
    __lumezPackI(5, reinterpret_cast<tarn_c64*>(from + shift), 2, reinterpret_cast<tarn_c64*>(to + 15 - shift), 1);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(memcmp(to + 15 - shift + 16 * i, from + shift + 32 * i, 16), 0);
  }
}

}
