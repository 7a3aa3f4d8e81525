#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "tarn/primitives.h"

namespace {

template <class T> struct MoveFunctions {
  using type = T;
  const char* name;
  int32_t (*copy)(const T*, T*, int32_t);
  int32_t (*zero)(T*, int32_t);
  int32_t (*set)(T, T*, int32_t);
};

// Calls test(functions of a suffix) for each suffix of Copy, Zero and Set.
template <class Test> void for_each_move(Test test) {
#define ROW(suffix, type)                                                                                              \
  test(MoveFunctions<type>{#suffix, tarn_dft_mc3_pelsCopy_##suffix, tarn_dft_mc3_pelsZero_##suffix,                    \
                           tarn_dft_mc3_pelsSet_##suffix});
  ROW(8u, uint8_t)
  ROW(16s, int16_t)
  ROW(16sc, pel16sc)
  ROW(32s, int32_t)
  ROW(32sc, pel32sc)
  ROW(32f, float)
  ROW(32fc, pel32fc)
  ROW(64s, int64_t)
  ROW(64sc, pel64sc)
  ROW(64f, double)
  ROW(64fc, pel64fc)
#undef ROW
}

template <class T> T value_of_bytes() { // every byte distinct, so that a rotated pattern shows
  T value;
  for (size_t i = 0; i < sizeof(T); ++i) reinterpret_cast<uint8_t*>(&value)[i] = static_cast<uint8_t>(0x11 + 7 * i);
  return value;
}

TEST(Moves, StatusesInOrder) {
  for_each_move([](auto f) {
    using T = typename decltype(f)::type;
    T a[2] = {}, b[2] = {};
    EXPECT_EQ(f.copy(nullptr, b, 1), -8) << f.name;
    EXPECT_EQ(f.copy(a, nullptr, 0), -8) << f.name;
    EXPECT_EQ(f.copy(a, b, 0), -6) << f.name;
    EXPECT_EQ(f.copy(a, b, -1), -6) << f.name;
    EXPECT_EQ(f.zero(nullptr, 0), -8) << f.name;
    EXPECT_EQ(f.zero(a, 0), -6) << f.name;
    EXPECT_EQ(f.set(T{}, nullptr, 0), -8) << f.name;
    EXPECT_EQ(f.set(T{}, a, 0), -6) << f.name;
    EXPECT_EQ(f.set(T{}, a, std::numeric_limits<int32_t>::min()), -6) << f.name;
  });
}

// Every length and every byte alignment around the small, head and tail routes, with the neighbours watched.
TEST(Moves, EveryLengthAndAlignment) {
  for_each_move([](auto f) {
    using T = typename decltype(f)::type;
    constexpr size_t guard = 16;
    const T value = value_of_bytes<T>();
    std::vector<uint8_t> from(guard + 200 * sizeof(T) + 16), to(2 * guard + 200 * sizeof(T) + 16), expected;
    for (size_t i = 0; i < from.size(); ++i) from[i] = static_cast<uint8_t>(i * 37 + 1);
    for (int32_t length : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 23, 31, 32, 33, 63, 64, 65, 100, 129, 200}) {
      for (size_t shift = 0; shift < 16; ++shift) {
        const size_t bytes = length * sizeof(T);
        T* target = reinterpret_cast<T*>(to.data() + guard + shift);
        const T* source = reinterpret_cast<const T*>(from.data() + (shift * 5) % 16);

        std::fill(to.begin(), to.end(), 0xEE);
        expected = to;
        std::memcpy(expected.data() + guard + shift, source, bytes);
        ASSERT_EQ(f.copy(source, target, length), 0);
        ASSERT_EQ(to, expected) << f.name << " copy " << length << " shift " << shift;

        std::fill(to.begin(), to.end(), 0xEE);
        expected = to;
        std::memset(expected.data() + guard + shift, 0, bytes);
        ASSERT_EQ(f.zero(target, length), 0);
        ASSERT_EQ(to, expected) << f.name << " zero " << length << " shift " << shift;

        std::fill(to.begin(), to.end(), 0xEE);
        expected = to;
        for (int32_t i = 0; i < length; ++i)
          std::memcpy(expected.data() + guard + shift + i * sizeof(T), &value, sizeof(T));
        ASSERT_EQ(f.set(value, target, length), 0);
        ASSERT_EQ(to, expected) << f.name << " set " << length << " shift " << shift;
      }
    }
  });
}

// Sizes on both sides of the points where stores begin to go around the cache.
TEST(Moves, AroundTheCache) {
  int64_t cache = 0;
  for (int level : {_SC_LEVEL4_CACHE_SIZE, _SC_LEVEL3_CACHE_SIZE, _SC_LEVEL2_CACHE_SIZE})
    if (cache <= 0) cache = sysconf(level);
  std::vector<int64_t> sizes;
  for (int64_t edge : {int64_t(0x80000), int64_t(0x100000), cache / 2})
    for (int64_t d : {-65, -1, 0, 1, 63}) sizes.push_back(edge + d);
  sizes.push_back(std::max<int64_t>(cache / 2, 0x100000) + 3 * 0x40000 + 12345); // several strips and a part
  const int64_t most = *std::max_element(sizes.begin(), sizes.end());
  std::vector<uint8_t> from(most + 64), to(most + 96);
  std::mt19937_64 random(3);
  for (size_t i = 0; i + 8 <= from.size(); i += 8) {
    const uint64_t word = random();
    std::memcpy(from.data() + i, &word, 8);
  }
  for (int64_t bytes : sizes) {
    if (bytes < 1) continue;
    for (int shift : {0, 5}) {
      uint8_t* target = to.data() + 16 + shift;
      to[15 + shift] = 0xEE;
      target[bytes] = 0xEE;
      tarn_dft_mc3_ownsCopy_8u(from.data() + 3, target, bytes);
      ASSERT_EQ(std::memcmp(target, from.data() + 3, bytes), 0) << bytes;
      tarn_dft_mc3_ownsZero_8u(target, bytes);
      ASSERT_EQ(std::count(target, target + bytes, 0), bytes) << bytes;
      tarn_dft_mc3_ownsSet_8u(0x5A, target, bytes);
      ASSERT_EQ(std::count(target, target + bytes, 0x5A), bytes) << bytes;
      const int32_t word = 0x01020304;
      tarn_dft_mc3_ownsSet_32s(word, reinterpret_cast<int32_t*>(target), bytes / 4);
      int64_t wrong = 0;
      for (int64_t i = 0; i < bytes / 4; ++i) wrong += std::memcmp(target + 4 * i, &word, 4) != 0;
      ASSERT_EQ(wrong, 0) << bytes;
      ASSERT_EQ(to[15 + shift], 0xEE);
      ASSERT_EQ(target[bytes], 0xEE);
    }
  }
}

template <class T, class Value> void check_fill(void (*fill)(Value, T*, int64_t), Value argument, T value) {
  T array[40];
  for (int64_t length : {-3, 0, 1, 7, 38}) {
    std::memset(array, 0xEE, sizeof array);
    fill(argument, array + 1, length);
    for (int64_t i = -1; i < 39; ++i) {
      T expected;
      std::memset(&expected, 0xEE, sizeof(T));
      if (i >= 0 && i < length) expected = value;
      ASSERT_EQ(std::memcmp(&array[i + 1], &expected, sizeof(T)), 0) << length << " at " << i;
    }
  }
}

TEST(Moves, FillKernelsAndForwarders) {
  check_fill<uint8_t, uint8_t>(tarn_dft_mc3_ownsSet_8u, 0x12, 0x12);
  check_fill<uint8_t, uint8_t>(tarn_dft_mc3_ownsSet_8u_M7, 0x12, 0x12);
  check_fill<uint16_t, uint16_t>(tarn_dft_mc3_ownsSet_16u, 0x1234, 0x1234);
  check_fill<uint16_t, uint16_t>(tarn_dft_mc3_ownsSet_16u_M7, 0x1234, 0x1234);
  check_fill<int32_t, int32_t>(tarn_dft_mc3_ownsSet_32s, -5, -5);
  check_fill<int32_t, int32_t>(tarn_dft_mc3_ownsSet_32s_M7, -5, -5);
  check_fill<int64_t, int64_t>(tarn_dft_mc3_ownsSet_64s, -5, -5);
  check_fill<int64_t, int64_t>(tarn_dft_mc3_ownsSet_64s_M7, -5, -5);
  const pel64sc pair = {1, -2};
  check_fill<pel64sc, const pel64sc*>(tarn_dft_mc3_ownsSet_64sc, &pair, pair);
  check_fill<pel64sc, const pel64sc*>(tarn_dft_mc3_ownsSet_64sc_M7, &pair, pair);
  uint8_t byte = 0xEE;
  tarn_dft_mc3_ownsCopy_8u(&byte, &byte, 0);
  tarn_dft_mc3_ownsZero_8u(&byte, 0);
  EXPECT_EQ(byte, 0xEE);
}

// ---- Sorting ----

template <class T> struct SortFunctions {
  using type = T;
  const char* name;
  bool descending;
  int32_t (*sort)(T*, void*, int32_t);
  int32_t (*index)(const T*, int32_t, int32_t*, int32_t*, int32_t);
};

template <class T, class S, int32_t (*f)(T*, S*, int32_t)> int32_t any_scratch(T* array, void* scratch, int32_t n) {
  return f(array, static_cast<S*>(scratch), n);
}

template <class Test> void for_each_sort(Test test) {
#define ROW(suffix, type, scratch)                                                                                     \
  test(SortFunctions<type>{#suffix, false, any_scratch<type, scratch, tarn_dft_mc3_pelsSortRadixAscend_##suffix##_I>,  \
                           INDEX(Ascend, suffix)});                                                                    \
  test(SortFunctions<type>{#suffix, true, any_scratch<type, scratch, tarn_dft_mc3_pelsSortRadixDescend_##suffix##_I>,  \
                           INDEX(Descend, suffix)});
#define INDEX(order, suffix) tarn_dft_mc3_pelsSortRadixIndex##order##_##suffix
  ROW(8u, uint8_t, void)
  ROW(16s, int16_t, int16_t)
  ROW(16u, uint16_t, uint16_t)
  ROW(32s, int32_t, int32_t)
  ROW(32u, uint32_t, uint32_t)
  ROW(32f, float, float)
#undef INDEX
#define INDEX(order, suffix) nullptr
  ROW(64f, double, double)
#undef INDEX
#undef ROW
}

// Before in the order of the sorts. Floats: the total order of IEEE 754, which is that of the bit patterns.
template <class T> bool before(const T& a, const T& b) {
  if constexpr (std::is_floating_point_v<T>) {
    using Bits = std::conditional_t<sizeof(T) == 4, int32_t, int64_t>;
    Bits x, y;
    std::memcpy(&x, &a, sizeof x);
    std::memcpy(&y, &b, sizeof y);
    constexpr Bits magnitude = std::numeric_limits<Bits>::max();
    const Bits kx = x < 0 ? x ^ magnitude : x, ky = y < 0 ? y ^ magnitude : y;
    return kx < ky;
  } else {
    return a < b;
  }
}

enum class Shape { bits, normal, few, equal, ascending, descending, one_digit, close, pairs };

template <class T> std::vector<T> keys(Shape shape, int32_t n, uint64_t seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  std::vector<T> a(n);
  for (int32_t i = 0; i < n; ++i) {
    const uint64_t word = random();
    switch (shape) {
    case Shape::bits: std::memcpy(&a[i], &word, sizeof(T)); break;
    case Shape::normal: a[i] = static_cast<T>(std::is_floating_point_v<T> ? normal(random) : (word >> 60) + 3.); break;
    case Shape::few: a[i] = static_cast<T>(word % 5); break;
    case Shape::equal: a[i] = static_cast<T>(7); break;
    case Shape::ascending: a[i] = static_cast<T>(i); break;
    case Shape::descending: a[i] = static_cast<T>(n - i); break;
    case Shape::close: { // equal upper halves in groups of every size
      uint64_t bits = 0x4000000000000000 + ((word >> 40) % 40 * ((word >> 40) % 40) << 32) + uint32_t(word);
      std::memcpy(&a[i], &bits, sizeof(T));
      break;
    }
    case Shape::pairs: { // a few to each upper half
      uint64_t bits = 0xBFF0000000000000 + ((word >> 40) % uint64_t(n) << 32) + uint32_t(word);
      std::memcpy(&a[i], &bits, sizeof(T));
      break;
    }
    case Shape::one_digit: { // keys that differ in one digit only, so that most scatters are left out
      uint64_t bits = 0x3F50123456789ABC;
      const int shifts[] = {0, 11, 22, 32, 43, 54};
      const int shift = shifts[seed % 6] % (8 * sizeof(T));
      bits ^= (word & 3) << shift;
      std::memcpy(&a[i], &bits, sizeof(T));
      break;
    }
    }
  }
  return a;
}

template <class T> void put_specials(std::vector<T>& a) {
  if constexpr (std::is_floating_point_v<T>) {
    using L = std::numeric_limits<T>;
    const T specials[] = {T(0),           -T(0),           L::infinity(),   -L::infinity(),
                          L::quiet_NaN(), -L::quiet_NaN(), L::denorm_min(), -L::denorm_min(),
                          L::max(),       L::lowest()};
    for (size_t i = 0; i < std::size(specials) && i < a.size(); ++i) a[(i * 7919) % a.size()] = specials[i];
  }
}

TEST(RadixSort, StatusesInOrder) {
  for_each_sort([](auto f) {
    using T = typename decltype(f)::type;
    T array[2] = {}, scratch[2] = {};
    int32_t output[2], indices[2];
    EXPECT_EQ(f.sort(nullptr, scratch, 0), -8) << f.name;
    EXPECT_EQ(f.sort(array, nullptr, 0), -8) << f.name;
    EXPECT_EQ(f.sort(array, scratch, 0), -6) << f.name;
    EXPECT_EQ(f.sort(array, scratch, -1), -6) << f.name;
    if (!f.index) return;
    const int32_t size = sizeof(T);
    EXPECT_EQ(f.index(nullptr, size, output, indices, 0), -8) << f.name;
    EXPECT_EQ(f.index(array, size, nullptr, indices, 0), -8) << f.name;
    EXPECT_EQ(f.index(array, size, output, nullptr, 0), -8) << f.name;
    EXPECT_EQ(f.index(array, size, output, indices, 0), -6) << f.name;
    EXPECT_EQ(f.index(array, size - 1, output, indices, 2), -6) << f.name;
    EXPECT_EQ(f.index(array, size, output, indices, 2), 0) << f.name;
  });
}

TEST(RadixSort, AgreesWithStableSort) {
  for_each_sort([](auto f) {
    using T = typename decltype(f)::type;
    for (Shape shape : {Shape::bits, Shape::normal, Shape::few, Shape::equal, Shape::ascending, Shape::descending,
                        Shape::one_digit, Shape::close, Shape::pairs}) {
      for (int32_t n : {1, 2, 3, 15, 16, 17, 31, 32, 33, 100, 255, 1000, 1001, 5000}) {
        for (uint64_t seed = 0; seed < (shape == Shape::one_digit ? 6u : 1u); ++seed) {
          std::vector<T> a = keys<T>(shape, n, seed);
          if (shape == Shape::normal) put_specials(a);
          std::vector<T> expected = a, scratch(n), original = a;
          auto in_order = [&](const T& x, const T& y) { return f.descending ? before(y, x) : before(x, y); };
          std::stable_sort(expected.begin(), expected.end(), in_order);
          ASSERT_EQ(f.sort(a.data(), scratch.data(), n), 0);
          ASSERT_EQ(std::memcmp(a.data(), expected.data(), n * sizeof(T)), 0)
              << f.name << " n " << n << " shape " << int(shape) << " descending " << f.descending;
          if (!f.index) continue;
          std::vector<int32_t> order(n), output(n, -1), indices(n);
          std::iota(order.begin(), order.end(), 0);
          std::stable_sort(order.begin(), order.end(),
                           [&](int32_t i, int32_t j) { return in_order(original[i], original[j]); });
          ASSERT_EQ(f.index(original.data(), sizeof(T), output.data(), indices.data(), n), 0);
          ASSERT_EQ(output, order) << f.name << " n " << n << " shape " << int(shape);
        }
      }
    }
  });
}

TEST(RadixSort, IndexTakesAnyStride) {
  for_each_sort([](auto f) {
    using T = typename decltype(f)::type;
    if (!f.index) return;
    const int32_t n = 777;
    const std::vector<T> a = keys<T>(Shape::bits, n, 9);
    std::vector<int32_t> contiguous(n), strided(n), scratch(n);
    ASSERT_EQ(f.index(a.data(), sizeof(T), contiguous.data(), scratch.data(), n), 0);
    for (int32_t stride : {int32_t(sizeof(T)) + 1, 24}) {
      std::vector<uint8_t> bytes(n * stride + 8, 0xEE);
      for (int32_t i = 0; i < n; ++i) std::memcpy(bytes.data() + 1 + i * stride, &a[i], sizeof(T));
      const std::vector<uint8_t> untouched = bytes;
      ASSERT_EQ(f.index(reinterpret_cast<const T*>(bytes.data() + 1), stride, strided.data(), scratch.data(), n), 0);
      EXPECT_EQ(strided, contiguous) << f.name << " stride " << stride;
      EXPECT_EQ(bytes, untouched);
    }
  });
}

TEST(RadixSort, LargeArrays) {
  const int32_t n = 1000000;
  std::vector<double> a = keys<double>(Shape::normal, n, 5), scratch(n), expected = a;
  std::sort(expected.begin(), expected.end());
  ASSERT_EQ(tarn_dft_mc3_pelsSortRadixAscend_64f_I(a.data(), scratch.data(), n), 0);
  EXPECT_EQ(a, expected);
  std::vector<float> b = keys<float>(Shape::bits, n, 6), scratch_b(n), expected_b = b;
  std::stable_sort(expected_b.begin(), expected_b.end(), [](float x, float y) { return before(y, x); });
  ASSERT_EQ(tarn_dft_mc3_pelsSortRadixDescend_32f_I(b.data(), scratch_b.data(), n), 0);
  EXPECT_EQ(std::memcmp(b.data(), expected_b.data(), n * sizeof(float)), 0);
}

TEST(RadixSort, ZerosAndNansByTheirBits) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  double a[] = {nan, 0.0, inf, -0.0, -nan, -inf}, scratch[6];
  ASSERT_EQ(tarn_dft_mc3_pelsSortRadixAscend_64f_I(a, scratch, 6), 0);
  EXPECT_TRUE(std::isnan(a[0]) && std::signbit(a[0]));
  EXPECT_EQ(a[1], -inf);
  EXPECT_TRUE(a[2] == 0 && std::signbit(a[2]));
  EXPECT_TRUE(a[3] == 0 && !std::signbit(a[3]));
  EXPECT_EQ(a[4], inf);
  EXPECT_TRUE(std::isnan(a[5]) && !std::signbit(a[5]));
}

}
