// Arithmetic, rounding and roots: every special value, and the exact functions against the C library.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>

#include "vector/roll.h"
#include "vector/special_values.h"

using namespace tarn::test;

namespace {

template <class T> using L = std::numeric_limits<T>;
template <class T> constexpr T inf = L<T>::infinity();
template <class T> constexpr T nan_of = L<T>::quiet_NaN();
template <class T> constexpr T tiny = L<T>::denorm_min();

template <class T> const char* prefixed(const char* name) {
  static thread_local std::string full;
  full = (sizeof(T) == 8 ? "d" : "s") + std::string(name);
  return full.c_str();
}
template <class T> void rows(const char* name, std::initializer_list<Row<T>> list) {
  expect_rows<T>(prefixed<T>(name), list);
}
template <class T> void rows2(const char* name, std::initializer_list<Row2<T>> list) {
  expect_rows2<T>(prefixed<T>(name), list);
}

template <class T> class Arithmetic : public testing::Test {};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Arithmetic, Reals);

// ---- Against an oracle, over arguments of every kind ----

template <class T> T any_number(std::mt19937_64& random) {
  using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
  const T specials[] = {0,
                        -T{0},
                        1,
                        -1,
                        inf<T>,
                        -inf<T>,
                        nan_of<T>,
                        L<T>::max(),
                        L<T>::lowest(),
                        L<T>::min(),
                        tiny<T>,
                        -tiny<T>,
                        T(0.5),
                        T(-0.5),
                        T(1.5),
                        T(2.5),
                        T(-2.5),
                        T(1 / L<T>::epsilon()),
                        T(2147483647.0)};
  switch (random() % 6) {
  case 0: return specials[random() % std::size(specials)];
  case 1: return std::bit_cast<T>(static_cast<Bits>(random()));
  case 2: return T(int(random() % 4001) - 2000) / 2;
  case 3: return std::ldexp(T(random() % 1000), int(random() % 120) - 60);
  default: return std::uniform_real_distribution<T>(-100, 100)(random);
  }
}
template <class T> bool equal_bits(T x, T y) { return x != x ? y != y : std::memcmp(&x, &y, sizeof(T)) == 0; }

template <class T> void against1(const char* name, std::function<T(T)> oracle) {
  const Function& f = function(prefixed<T>(name));
  std::mt19937_64 random(11);
  constexpr size_t n = 60000;
  std::vector<T> a(n), r(n);
  for (T& v : a) v = any_number<T>(random);
  const uint32_t kept = __lumeSetMode(0x2000);
  for (int slot = 0; slot < 3; ++slot) {
    call_plain<T>(f, f.plain[slot], {n, a.data(), a.data(), r.data(), r.data()});
    for (size_t i = 0; i < n; ++i)
      ASSERT_TRUE(equal_bits(r[i], oracle(a[i]))) << f.full_name() << '(' << a[i] << ") = " << r[i];
  }
  __lumeSetMode(kept);
}
template <class T> void against2(const char* name, std::function<T(T, T)> oracle, bool near_quotients = false) {
  const Function& f = function(prefixed<T>(name));
  std::mt19937_64 random(12);
  constexpr size_t n = 100000;
  std::vector<T> a(n), b(n), r(n);
  for (size_t i = 0; i < n; ++i) {
    a[i] = any_number<T>(random);
    b[i] = any_number<T>(random);
    if (near_quotients && i % 3 == 0) { // quotients at and next to integers and halves
      b[i] = std::uniform_real_distribution<T>(T(0.1), 10)(random);
      a[i] = b[i] * T(random() % 2000) / 2;
      for (int steps = int(random() % 3); steps > 0; --steps)
        a[i] = std::nextafter(a[i], random() % 2 ? inf<T> : -inf<T>);
    }
  }
  const uint32_t kept = __lumeSetMode(0x2000);
  for (int slot = 0; slot < 3; ++slot) {
    call_plain<T>(f, f.plain[slot], {n, a.data(), b.data(), r.data(), r.data()});
    for (size_t i = 0; i < n; ++i)
      ASSERT_TRUE(equal_bits(r[i], oracle(a[i], b[i])))
          << f.full_name() << '(' << a[i] << ", " << b[i] << ") = " << r[i] << ", not " << oracle(a[i], b[i]);
  }
  __lumeSetMode(kept);
}

TYPED_TEST(Arithmetic, ExactFunctionsAgainstTheCLibrary) {
  using T = TypeParam;
  against2<T>("Add", [](T a, T b) { return a + b; });
  against2<T>("Sub", [](T a, T b) { return a - b; });
  against2<T>("Mul", [](T a, T b) { return a * b; });
  against1<T>("Sqr", [](T a) { return a * a; });
  against1<T>("Abs", [](T a) { return std::fabs(a); });
  against2<T>("CopySign", [](T a, T b) { return std::copysign(a, b); });
  against2<T>("Fdim", [](T a, T b) { return a != a || b != b ? nan_of<T> : a > b ? a - b : T{0}; });
  against2<T>(
      "Fmod", [](T a, T b) { return std::fmod(a, b); }, true);
  against2<T>(
      "Remainder",
      [](T a, T b) {
        const T r = std::remainder(a, b);
        return r == 0 ? std::copysign(r, a) : r; // the C library's zero has the wrong sign for denormal divisors
      },
      true);
  against2<T>("NextAfter", [](T a, T b) { return std::nextafter(a, b); });
  against1<T>("Logb", [](T a) { return std::logb(a); });
  against1<T>("Ceil", [](T a) { return std::ceil(a); });
  against1<T>("Floor", [](T a) { return std::floor(a); });
  against1<T>("Trunc", [](T a) { return std::trunc(a); });
  against1<T>("Round", [](T a) { return std::round(a); });
  against1<T>("Rint", [](T a) { return std::rint(a); });
  against1<T>("NearbyInt", [](T a) { return std::nearbyint(a); });
  against1<T>("Frac", [](T a) {
    T whole;
    return std::isnan(a) ? a : std::modf(a, &whole);
  });
  against2<T>("MaxMag", [](T a, T b) {
    if (a != a || b != b) return a != a ? b : a;
    if (std::fabs(a) != std::fabs(b)) return std::fabs(a) > std::fabs(b) ? a : b;
    return a > b ? a : b;
  });
  against2<T>("MinMag", [](T a, T b) {
    if (a != a || b != b) return a != a ? b : a;
    if (std::fabs(a) != std::fabs(b)) return std::fabs(a) < std::fabs(b) ? a : b;
    return a < b ? a : b;
  });
  against2<T>("Fmax", [](T a, T b) { return a != a ? b : b != b || a > b ? a : b; });
  against2<T>("Fmin", [](T a, T b) { return a != a ? b : b != b || a < b ? a : b; });
}

TYPED_TEST(Arithmetic, DivAndInvAreCorrectlyRounded) {
  using T = TypeParam;
  const Function &div = function(prefixed<T>("Div")), &inv = function(prefixed<T>("Inv"));
  std::mt19937_64 random(13);
  constexpr size_t n = 60000;
  std::vector<T> a(n), b(n), q(n), i(n);
  for (size_t k = 0; k < n; ++k) a[k] = any_number<T>(random), b[k] = any_number<T>(random);
  const uint32_t kept = __lumeSetMode(0x2000);
  for (int slot : {LA, HA}) {
    call_plain<T>(div, div.plain[slot], {n, a.data(), b.data(), q.data(), q.data()});
    call_plain<T>(inv, inv.plain[slot], {n, b.data(), b.data(), i.data(), i.data()});
    for (size_t k = 0; k < n; ++k) {
      ASSERT_TRUE(equal_bits(q[k], a[k] / b[k])) << a[k] << '/' << b[k];
      ASSERT_TRUE(equal_bits(i[k], 1 / b[k])) << b[k];
    }
  }
  // EP: 11 and 26 bits, the special values exactly.
  call_plain<T>(div, div.plain[EP], {n, a.data(), b.data(), q.data(), q.data()});
  call_plain<T>(inv, inv.plain[EP], {n, b.data(), b.data(), i.data(), i.data()});
  for (size_t k = 0; k < n; ++k) {
    ASSERT_LE(ulps(q[k], a[k] / b[k]), sizeof(T) == 8 ? 0 : 4) << a[k] << '/' << b[k] << " = " << q[k];
    ASSERT_LE(ulps(i[k], 1 / b[k]), sizeof(T) == 8 ? 0 : 4) << "1/" << b[k] << " = " << i[k];
  }
  __lumeSetMode(kept);
}

// Where the reciprocal estimate would be zero or infinite, EP must not use it.
TEST(ArithmeticSingle, EPDivisionAtTheEndsOfTheRange) {
  for (float b = 0x1p-149f; b < inf<float>; b = b * 2 == b ? inf<float> : b * 2)
    for (const float factor : {1.0f, 1.5f, 1.9999999f})
      for (const float a : {1.0f, 3.0f, 0x1p-149f, 0x1p-126f, 0x1.8p127f, 0x1p-64f, 0x1p64f}) {
        const float divisor = b * factor;
        if (std::isinf(divisor)) continue;
        for (const Route route : routes) {
          const Outcome<float> q = outcome2<float>(function("sDiv"), EP, a, divisor, route);
          EXPECT_LE(ulps(q.r, a / divisor), 4) << a << '/' << divisor << " = " << q.r;
          const Outcome<float> i = outcome2<float>(function("sInv"), EP, divisor, divisor, route);
          EXPECT_LE(ulps(i.r, 1 / divisor), 4) << "1/" << divisor << " = " << i.r;
        }
      }
}

// ---- Special values, by the rows of the functions' tables ----

TYPED_TEST(Arithmetic, DivSpecialValues) {
  using T = TypeParam;
  rows2<T>("Div", {{0, 0, nan_of<T>, 2},
                   {1, 0, inf<T>, 2},
                   {1, -T{0}, -inf<T>, 2},
                   {-1, 0, -inf<T>, 2},
                   {nan_of<T>, 0, nan_of<T>, 2},
                   {inf<T>, 0, inf<T>, 2},
                   {1, inf<T>, 0, 0},
                   {-1, inf<T>, -T{0}, 0},
                   {inf<T>, inf<T>, nan_of<T>, 0},
                   {nan_of<T>, 1, nan_of<T>, 0},
                   {1, nan_of<T>, nan_of<T>, 0},
                   {0, 5, 0, 0},
                   {tiny<T>, tiny<T>, 1, 0},
                   {L<T>::max(), T(0.5), inf<T>, 0},
                   {6, 3, 2, 0, 1}});
}
TYPED_TEST(Arithmetic, InvSpecialValues) {
  using T = TypeParam;
  rows<T>("Inv", {{0, inf<T>, 2},
                  {-T{0}, -inf<T>, 2},
                  {inf<T>, 0, 0},
                  {-inf<T>, -T{0}, 0},
                  {nan_of<T>, nan_of<T>, 0},
                  {tiny<T>, inf<T>, 0},
                  {4, T(0.25), 0, 1},
                  {L<T>::max(), 1 / L<T>::max(), 0}});
}
TYPED_TEST(Arithmetic, SqrtSpecialValues) {
  using T = TypeParam;
  rows<T>("Sqrt", {{0, 0, 0},
                   {-T{0}, -T{0}, 0},
                   {-1, nan_of<T>, 1},
                   {-tiny<T>, nan_of<T>, 1},
                   {-inf<T>, nan_of<T>, 1},
                   {inf<T>, inf<T>, 0},
                   {nan_of<T>, nan_of<T>, 0},
                   {4, 2, 0, 1},
                   {9, 3, 0, 1},
                   {tiny<T>, std::sqrt(tiny<T>), 0, 1},
                   {L<T>::min(), std::sqrt(L<T>::min()), 0, 1},
                   {L<T>::max(), std::sqrt(L<T>::max()), 0, 1}});
}
TEST(ArithmeticDouble, RareSqrtIsCorrectlyRounded) {
  // Numbers from 2^1022 on and denormals take the rare routine in every class.
  std::mt19937_64 random(14);
  int wrong = 0;
  const int count = 4000;
  for (int i = 0; i < count; ++i) {
    const uint64_t pattern =
        i % 2 ? 0x7FD0000000000000 + random() % 0x0020000000000000 : 1 + random() % 0x000FFFFFFFFFFFFF;
    const double x = std::bit_cast<double>(pattern);
    const double got = outcome<double>("dSqrt", i % 3, x, Route::tail).r;
    EXPECT_LE(ulps(got, std::sqrt(x)), 1) << x;
    wrong += got != std::sqrt(x);
  }
  EXPECT_LE(wrong, count / 1000) << "of " << count;
  EXPECT_EQ(outcome<double>("dSqrt", HA, L<double>::max(), Route::tail).r, std::sqrt(L<double>::max()));
}
TYPED_TEST(Arithmetic, InvSqrtSpecialValues) {
  using T = TypeParam;
  rows<T>("InvSqrt", {{0, inf<T>, 2},
                      {-T{0}, -inf<T>, 2},
                      {-1, nan_of<T>, 1},
                      {-tiny<T>, nan_of<T>, 1},
                      {-inf<T>, nan_of<T>, 1},
                      {inf<T>, 0, 0},
                      {nan_of<T>, nan_of<T>, 0},
                      {4, T(0.5), 0, 1},
                      {tiny<T>, T(1 / std::sqrt(static_cast<long double>(tiny<T>))), 0, 1},
                      {L<T>::max(), T(1 / std::sqrt(static_cast<long double>(L<T>::max()))), 0, 1}});
}
TYPED_TEST(Arithmetic, CbrtSpecialValues) {
  using T = TypeParam;
  rows<T>("Cbrt", {{0, 0, 0},
                   {-T{0}, -T{0}, 0},
                   {inf<T>, inf<T>, 0},
                   {-inf<T>, -inf<T>, 0},
                   {nan_of<T>, nan_of<T>, 0},
                   {27, 3, 0, 2},
                   {-8, -2, 0, 2},
                   {tiny<T>, T(std::cbrt(static_cast<long double>(tiny<T>))), 0, 2},
                   {-L<T>::max(), T(std::cbrt(static_cast<long double>(-L<T>::max()))), 0, 2},
                   {L<T>::min() / 3, T(std::cbrt(static_cast<long double>(L<T>::min() / 3))), 0, 2}});
  rows<T>("InvCbrt", {{0, inf<T>, 2},
                      {-T{0}, -inf<T>, 2},
                      {inf<T>, 0, 0},
                      {-inf<T>, -T{0}, 0},
                      {nan_of<T>, nan_of<T>, 0},
                      {27, T(1) / 3, 0, 2},
                      {-8, T(-0.5), 0, 2},
                      {tiny<T>, T(1 / std::cbrt(static_cast<long double>(tiny<T>))), 0, 2},
                      {-L<T>::max(), T(1 / std::cbrt(static_cast<long double>(-L<T>::max()))), 0, 2}});
}

TYPED_TEST(Arithmetic, RoundingSpecialValues) {
  using T = TypeParam;
  rows<T>("Round", {{T(0.5), 1, 0},
                    {T(-0.5), -1, 0},
                    {T(1.5), 2, 0},
                    {T(2.5), 3, 0},
                    {T(-2.5), -3, 0},
                    {T(-0.3), -T{0}, 0},
                    {nan_of<T>, nan_of<T>, 0},
                    {inf<T>, inf<T>, 0},
                    {-T{0}, -T{0}, 0}});
  rows<T>("Ceil",
          {{T(1.1), 2, 0}, {T(-1.9), -1, 0}, {T(-0.5), -T{0}, 0}, {nan_of<T>, nan_of<T>, 0}, {-inf<T>, -inf<T>, 0}});
  rows<T>("Floor", {{T(1.9), 1, 0}, {T(-1.1), -2, 0}, {T(0.5), 0, 0}, {nan_of<T>, nan_of<T>, 0}, {inf<T>, inf<T>, 0}});
  rows<T>("Trunc",
          {{T(1.9), 1, 0}, {T(-1.9), -1, 0}, {T(-0.5), -T{0}, 0}, {nan_of<T>, nan_of<T>, 0}, {inf<T>, inf<T>, 0}});
  rows<T>("Rint", {{T(2.5), 2, 0}, {T(3.5), 4, 0}, {T(-0.5), -T{0}, 0}, {nan_of<T>, nan_of<T>, 0}});
  rows<T>("NearbyInt", {{T(2.5), 2, 0}, {T(3.5), 4, 0}, {T(-0.5), -T{0}, 0}, {nan_of<T>, nan_of<T>, 0}});
  rows<T>("Frac", {{T(-3.25), T(-0.25), 0},
                   {T(-3), -T{0}, 0},
                   {3, 0, 0},
                   {inf<T>, 0, 0},
                   {-inf<T>, -T{0}, 0},
                   {nan_of<T>, nan_of<T>, 0},
                   {T(0.75), T(0.75), 0},
                   {-tiny<T>, -tiny<T>, 0},
                   {L<T>::max(), 0, 0},
                   {-T{0}, -T{0}, 0}});
}

TYPED_TEST(Arithmetic, RintAndNearbyIntFollowTheCallersRounding) {
  using T = TypeParam;
  const std::pair<unsigned, T> modes[] = {{0x0000, 2}, {0x2000, 2}, {0x4000, 3}, {0x6000, 2}};
  for (const auto& [rounding, of_two_and_a_half] : modes)
    for (const char* name : {"Rint", "NearbyInt"}) {
      const Function& f = function(prefixed<T>(name));
      for (int n : {1, 40}) {
        std::vector<T> a(static_cast<size_t>(n), T(2.5)), r(a);
        _mm_setcsr(0x1F80 | rounding);
        call_plain<T>(f, f.plain[HA], {n, a.data(), a.data(), r.data(), r.data()});
        const unsigned flags = _mm_getcsr();
        _mm_setcsr(0x1F80);
        for (T v : r) EXPECT_EQ(v, of_two_and_a_half) << name << " in mode " << rounding;
        EXPECT_EQ(flags & 0x20, name[0] == 'R' ? 0x20u : 0u) << name << ": inexact flag";
        EXPECT_EQ(flags & 0x6000, rounding);
      }
      // An integer raises nothing.
      T whole = 7, result;
      call_plain<T>(f, f.plain[HA], {1, &whole, &whole, &result, &result});
      EXPECT_EQ(_mm_getcsr() & 0x3F, 0u) << name;
    }
}

TYPED_TEST(Arithmetic, ModfSpecialValues) {
  using T = TypeParam;
  struct {
    T x, whole, fraction;
  } const table[] = {{T(-0.5), -T{0}, T(-0.5)},
                     {T(3.25), 3, T(0.25)},
                     {T(-3.25), -3, T(-0.25)},
                     {T(-3), -3, -T{0}},
                     {inf<T>, inf<T>, 0},
                     {-inf<T>, -inf<T>, -T{0}},
                     {nan_of<T>, nan_of<T>, nan_of<T>},
                     {-T{0}, -T{0}, -T{0}},
                     {L<T>::max(), L<T>::max(), 0},
                     {-tiny<T>, -T{0}, -tiny<T>}};
  for (const auto& row : table)
    for (int slot = 0; slot < 3; ++slot)
      for (const Route route : routes) {
        const Outcome<T> got = outcome2<T>(function(prefixed<T>("Modf")), slot, row.x, row.x, route);
        EXPECT_TRUE(equal_bits(got.r, row.whole) && equal_bits(got.q, row.fraction))
            << row.x << ": " << got.r << ", " << got.q;
        EXPECT_EQ(got.reports, 0);
      }
}

TYPED_TEST(Arithmetic, FmodSpecialValues) {
  using T = TypeParam;
  const T huge = L<T>::max();
  rows2<T>("Fmod", {{5, 3, 2, 0},
                    {-5, 3, -2, 0},
                    {5, -3, 2, 0},
                    {-5, -3, -2, 0},
                    {5, 0, nan_of<T>, 2},
                    {5, -T{0}, nan_of<T>, 2},
                    {0, 0, nan_of<T>, 2},
                    {inf<T>, 3, nan_of<T>, 2},
                    {-inf<T>, 3, nan_of<T>, 2},
                    {inf<T>, inf<T>, nan_of<T>, 2},
                    {5, inf<T>, 5, 0},
                    {-5, -inf<T>, -5, 0},
                    {nan_of<T>, 3, nan_of<T>, 0},
                    {3, nan_of<T>, nan_of<T>, 0},
                    {nan_of<T>, 0, nan_of<T>, 0},
                    {0, 3, 0, 0},
                    {-T{0}, 3, -T{0}, 0},
                    {6, 3, 0, 0},
                    {-6, 3, -T{0}, 0},
                    {T(2.75), 1, T(0.75), 0},
                    {T(-2.75), 1, T(-0.75), 0},
                    {huge, 1, 0, 0},
                    {-huge, 1, -T{0}, 0},
                    {huge, huge, 0, 0},
                    {tiny<T>, huge, tiny<T>, 0},
                    {huge, tiny<T>, 0, 0},
                    {huge, 3 * tiny<T>, std::fmod(huge, 3 * tiny<T>), 0},
                    {5 * tiny<T>, 3 * tiny<T>, 2 * tiny<T>, 0},
                    {L<T>::min(), 3 * tiny<T>, std::fmod(L<T>::min(), 3 * tiny<T>), 0},
                    {huge, T(0.6) * huge, std::fmod(huge, T(0.6) * huge), 0}});
}
TEST(ArithmeticDouble, FmodByTwoTo31LessOne) {
  // The special step below 2^52, and the long division above it.
  std::mt19937_64 random(15);
  for (int i = 0; i < 3000; ++i) {
    const double x = std::ldexp(double(random() >> 11), int(random() % 20) - 15) * (i % 2 ? 1 : -1);
    for (const double b : {2147483647.0, -2147483647.0, 2147483648.0, 2147483646.0})
      EXPECT_TRUE(equal_bits(outcome2<double>(function("dFmod"), HA, x, b, Route::tail).r, std::fmod(x, b))) << x;
  }
  for (const double x :
       {2147483647.0, 2147483646.0, 2147483648.0, 2147483647.0 * 1048576, 0x1.fffffffffffffp51, 0x1p52, 0x1.8p60})
    EXPECT_EQ(outcome2<double>(function("dFmod"), HA, x, 2147483647.0, Route::block).r, std::fmod(x, 2147483647.0))
        << x;
}
TYPED_TEST(Arithmetic, RemainderSpecialValues) {
  using T = TypeParam;
  const T huge = L<T>::max();
  rows2<T>("Remainder", {{5, 3, -1, 0},
                         {-5, 3, 1, 0},
                         {5, -3, -1, 0},
                         {3, 2, -1, 0},
                         {5, 2, 1, 0},
                         {7, 2, -1, 0},
                         {5, 0, nan_of<T>, 2},
                         {0, 0, nan_of<T>, 2},
                         {inf<T>, 3, nan_of<T>, 2},
                         {5, inf<T>, 5, 0},
                         {-5, inf<T>, -5, 0},
                         {nan_of<T>, 3, nan_of<T>, 0},
                         {3, nan_of<T>, nan_of<T>, 0},
                         {6, 3, 0, 0},
                         {-6, 3, -T{0}, 0},
                         {-T{0}, 3, -T{0}, 0},
                         {huge, tiny<T>, 0, 0},
                         {3 * tiny<T>, 2 * tiny<T>, -tiny<T>, 0},
                         {5 * tiny<T>, 2 * tiny<T>, tiny<T>, 0},
                         {huge, T(0.6) * huge, std::remainder(huge, T(0.6) * huge), 0},
                         {T(0.6) * huge, huge, std::remainder(T(0.6) * huge, huge), 0}});
}
TYPED_TEST(Arithmetic, CompareSpecialValues) {
  using T = TypeParam;
  for (const char* name : {"Fmax", "Fmin", "MaxMag", "MinMag"})
    rows2<T>(name, {{nan_of<T>, 1, 1, 0},
                    {1, nan_of<T>, 1, 0},
                    {nan_of<T>, nan_of<T>, nan_of<T>, 0},
                    {nan_of<T>, -inf<T>, -inf<T>, 0},
                    {inf<T>, nan_of<T>, inf<T>, 0}});
  rows2<T>("Fmax", {{1, 2, 2, 0}, {-1, -2, -1, 0}, {inf<T>, 1, inf<T>, 0}, {-inf<T>, 1, 1, 0}});
  rows2<T>("Fmin", {{1, 2, 1, 0}, {-1, -2, -2, 0}, {inf<T>, 1, 1, 0}, {-inf<T>, 1, -inf<T>, 0}});
  rows2<T>("MaxMag", {{1, -2, -2, 0},
                      {3, -2, 3, 0},
                      {2, -2, 2, 0},
                      {-2, 2, 2, 0},
                      {-inf<T>, 5, -inf<T>, 0},
                      {-inf<T>, inf<T>, inf<T>, 0}});
  rows2<T>("MinMag", {{1, -2, 1, 0},
                      {3, -2, -2, 0},
                      {2, -2, -2, 0},
                      {-2, 2, -2, 0},
                      {-inf<T>, 5, 5, 0},
                      {-inf<T>, inf<T>, -inf<T>, 0}});
  rows2<T>("Fdim", {{3, 1, 2, 0},
                    {1, 3, 0, 0},
                    {inf<T>, inf<T>, 0, 0},
                    {inf<T>, 1, inf<T>, 0},
                    {nan_of<T>, 1, nan_of<T>, 0},
                    {1, nan_of<T>, nan_of<T>, 0},
                    {-1, -1, 0, 0},
                    {L<T>::max(), -L<T>::max(), inf<T>, 0}});
}
TYPED_TEST(Arithmetic, NextAfterSpecialValues) {
  using T = TypeParam;
  const T huge = L<T>::max(), least = L<T>::min();
  const T one_up = 1 + L<T>::epsilon(), one_down = 1 - L<T>::epsilon() / 2;
  rows2<T>("NextAfter", {{0, 1, tiny<T>, 4},
                         {0, -1, -tiny<T>, 4},
                         {-T{0}, 1, tiny<T>, 4},
                         {huge, inf<T>, inf<T>, 3},
                         {-huge, -inf<T>, -inf<T>, 3},
                         {nan_of<T>, 1, nan_of<T>, 0},
                         {1, nan_of<T>, nan_of<T>, 0},
                         {1, 1, 1, 0},
                         {0, -T{0}, -T{0}, 0},
                         {-T{0}, 0, 0, 0},
                         {inf<T>, inf<T>, inf<T>, 0},
                         {inf<T>, 0, huge, 0},
                         {-inf<T>, 0, -huge, 0},
                         {1, 2, one_up, 0},
                         {1, 0, one_down, 0},
                         {-1, -2, -one_up, 0},
                         {-1, 0, -one_down, 0},
                         {least, 0, least - tiny<T>, 4},
                         {tiny<T>, 1, 2 * tiny<T>, 4},
                         {tiny<T>, 0, 0, 4},
                         {-tiny<T>, 0, -T{0}, 4},
                         {least - tiny<T>, 1, least, 0},
                         {2, 1, 2 - L<T>::epsilon(), 0},
                         {huge, 0, std::nextafter(huge, T{0}), 0}});
}
TYPED_TEST(Arithmetic, LogbSpecialValues) {
  using T = TypeParam;
  const T lowest = T(L<T>::min_exponent - L<T>::digits);
  rows<T>("Logb", {{0, -inf<T>, 1},
                   {-T{0}, -inf<T>, 1},
                   {inf<T>, inf<T>, 0},
                   {-inf<T>, inf<T>, 0},
                   {nan_of<T>, nan_of<T>, 0},
                   {1, 0, 0},
                   {-8, 3, 0},
                   {T(0.75), -1, 0},
                   {tiny<T>, lowest, 0},
                   {-3 * tiny<T>, lowest + 1, 0},
                   {L<T>::max(), T(L<T>::max_exponent - 1), 0},
                   {L<T>::min(), T(L<T>::min_exponent - 1), 0}});
  const Outcome<T> negative_nan = outcome2<T>(function(prefixed<T>("Logb")), HA, -nan_of<T>, T(1), Route::block);
  EXPECT_TRUE(std::isnan(negative_nan.r) && !std::signbit(negative_nan.r)) << "the absolute value of a NaN";
}
TYPED_TEST(Arithmetic, AbsAndCopySignWorkOnBits) {
  using T = TypeParam;
  using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
  const Bits sign = Bits{1} << (8 * sizeof(T) - 1);
  const Bits signaling = std::bit_cast<Bits>(inf<T>) | 1; // stays a signaling NaN
  for (const Route route : routes) {
    const auto abs_of = [&](Bits x) {
      return std::bit_cast<Bits>(outcome2<T>(function(prefixed<T>("Abs")), HA, std::bit_cast<T>(x), T(1), route).r);
    };
    EXPECT_EQ(abs_of(sign), 0u) << "-0";
    EXPECT_EQ(abs_of(signaling | sign), signaling);
    EXPECT_EQ(abs_of(std::bit_cast<Bits>(nan_of<T>) | sign), std::bit_cast<Bits>(nan_of<T>));
    const auto copied =
        outcome2<T>(function(prefixed<T>("CopySign")), HA, std::bit_cast<T>(signaling), T(-0.0), route).r;
    EXPECT_EQ(std::bit_cast<Bits>(copied), signaling | sign);
  }
}

TYPED_TEST(Arithmetic, LightFunctionsMergeTheirFlags) {
  using T = TypeParam;
  const Function& add = function(prefixed<T>("Add"));
  std::vector<T> a(33, L<T>::max()), r(33);
  for (int n : {1, 33}) {
    _mm_setcsr(0x1F80);
    call_plain<T>(add, add.plain[HA], {n, a.data(), a.data(), r.data(), r.data()});
    EXPECT_EQ(_mm_getcsr() & 0x3F, 0x28u) << "overflow and inexact";
    _mm_setcsr(0x1F80);
  }
}
TYPED_TEST(Arithmetic, FixedKernelsKeepTheCallersFlushing) {
  using T = TypeParam;
  const Function& add = function(prefixed<T>("Add"));
  std::vector<T> a(20, tiny<T>), r(20);
  const uint32_t kept = __lumeSetMode(0x280000); // not followed by a fixed kernel
  call_plain<T>(add, add.plain[HA], {20, a.data(), a.data(), r.data(), r.data()});
  EXPECT_EQ(r[19], 2 * tiny<T>);
  __lumeSetMode((kept & 0x3C0000) ? kept : kept | 0x40000);
  _mm_setcsr(0x1F80 | 0x8040);
  call_plain<T>(add, add.plain[HA], {20, a.data(), a.data(), r.data(), r.data()});
  _mm_setcsr(0x1F80);
  EXPECT_EQ(r[19], 0);
}

TYPED_TEST(Arithmetic, LinearFrac) {
  using T = TypeParam;
  const Function& f = function(prefixed<T>("LinearFrac"));
  std::mt19937_64 random(16);
  constexpr int n = 1003;
  std::vector<T> a(n), b(n), r(n), s(n);
  for (size_t i = 0; i < n; ++i) a[i] = any_number<T>(random), b[i] = any_number<T>(random);
  for (const Scalars<T>& c : {Scalars<T>{0, 2, 1, 3, -1},
                              {0, T(1e-3), T(0.1), T(-0.7), 5},
                              {0, 0, 4, 3, 1},
                              {0, 2, 1, 0, 7},
                              {0, 0, 1, 0, 3},
                              {0, 1, 0, 0, 0}})
    for (int slot = 0; slot < 3; ++slot) {
      Call<T> call{n, a.data(), b.data(), r.data(), r.data(), 1, 1, 1, 1, c};
      call_plain(f, f.plain[slot], call);
      call.r = s.data();
      call_strided(f, f.strided[slot], call);
      for (size_t i = 0; i < n; ++i) {
        const T numerator = c.scalea == 0 ? c.shifta : c.scalea * a[i] + c.shifta;
        const T denominator = c.scaleb == 0 ? c.shiftb : c.scaleb * b[i] + c.shiftb;
        ASSERT_TRUE(equal_bits(r[i], numerator / denominator)) << a[i] << ", " << b[i] << ": " << r[i];
        ASSERT_TRUE(equal_bits(s[i], r[i]));
      }
    }
  __lumeSetErrStatus(55);
  T one = 1, zero = 0, result;
  call_plain<T>(f, f.plain[HA], {1, &one, &zero, &result, &result, 1, 1, 1, 1, {0, 1, 0, 1, 0}});
  EXPECT_EQ(result, inf<T>);
  EXPECT_EQ(__lumeGetErrStatus(), 55) << "nothing is reported";
  __lumeClearErrStatus();
}

}
