// Exp and Ln: special values, and the formulas against the same operations written one scalar at a time.
#include <gtest/gtest.h>
#include <immintrin.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "vector/real/exponential/exp_data.h"
#include "vector/real/exponential/ln_data.h"
#include "vector/roll.h"
#include "vector/special_values.h"

using namespace tarn::test;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
constexpr double denormal = std::numeric_limits<double>::denorm_min();

double down(double x) { return std::nextafter(x, -inf); }
double up(double x) { return std::nextafter(x, inf); }
float downf(float x) { return std::nextafterf(x, -HUGE_VALF); }
float upf(float x) { return std::nextafterf(x, HUGE_VALF); }

TEST(Exp, SpecialValuesDouble) {
  const double overflow = 709.782712893384, underflow = -745.1332191019411;
  expect_rows<double>("dExp", {
                                  {nan, nan, 0},
                                  {inf, inf, 0},
                                  {-inf, 0.0, 0},
                                  {overflow, 1.797693134862273e+308, 0, 2},
                                  {up(overflow), inf, 3},
                                  {1e300, inf, 3},
                                  {underflow, denormal, 4},
                                  {down(underflow), 0.0, 4},
                                  {-1e300, 0.0, 4},
                                  {-720.0, 2.0322308024e-313, 4, 2}, // denormal
                                  {0.0, 1.0, 0},
                                  {-0.0, 1.0, 0},
                                  {denormal, 1.0, 0},
                                  {0x1p-53, 1.0, 0},
                                  {-0x1p-53, 1 - 0x1p-53, 0},
                              });
}

TEST(Exp, SpecialValuesSingle) {
  const float overflow = std::bit_cast<float>(0x42B17217), underflow = std::bit_cast<float>(0xC2CFF1B4);
  expect_rows<float>("sExp", {
                                 {float(nan), float(nan), 0},
                                 {float(inf), float(inf), 0},
                                 {-float(inf), 0.0f, 0},
                                 {overflow, 3.4027984e+38f, 0, 4},
                                 {upf(overflow), float(inf), 3},
                                 {1e30f, float(inf), 3},
                                 {underflow, 1e-45f, 4},
                                 {downf(underflow), 0.0f, 4},
                                 {-1e30f, 0.0f, 4},
                                 {-95.0f, 5.5210825e-42f, 4, 1},
                                 {0.0f, 1.0f, 0},
                                 {-0.0f, 1.0f, 0},
                                 {1e-45f, 1.0f, 0},
                             });
}

TEST(Exp, VectorAndRareRouteMeetAtTheGate) {
  // 708.3956 has the gate's high word and is served by the formula; 708.4 is rare. Both are finite and unreported.
  for (const double x : {708.3956, 708.4})
    for (int slot = 0; slot < 3; ++slot) {
      const Outcome<double> got = outcome<double>("dExp", slot, x, Route::block);
      EXPECT_EQ(got.status, 0);
      EXPECT_NEAR(got.r / std::exp(x), 1, slot == EP ? 1e-8 : 4e-16) << class_names[slot];
    }
}

TEST(Exp, TinyArgumentsAreOnePlusX) {
  for (const double x : {0x1p-52, -0x1p-52, 0x1.8p-53, 1e-20, -1e-300})
    for (int slot = 0; slot < 3; ++slot) {
      const Outcome<double> got = outcome<double>("dExp", slot, x, Route::block);
      EXPECT_EQ(got.status, 0);
      EXPECT_NEAR(got.r, 1 + x, slot == HA ? 0 : slot == LA ? 0x1p-52 : 0x1p-30);
    }
}

TEST(Exp, NoerrSettlesOverflowsInTheBlock) {
  for (const char* name : {"dExp", "sExp"})
    for (int slot = 0; slot < 3; ++slot) {
      const Function& f = function(name);
      const uint32_t kept = __lumeSetMode(0x2000);
      __lumeSetErrStatus(77);
      _mm_setcsr(0x1F80);
      if (f.type == 'd') {
        double a[16], r[16];
        for (int i = 0; i < 16; ++i) a[i] = i % 2 ? 710.0 : -800.0;
        call_plain<double>(f, f.plain[slot], {16, a, a, r, r});
        for (int i = 0; i < 16; ++i) EXPECT_EQ(r[i], i % 2 ? inf : 0.0) << class_names[slot];
      } else {
        float a[16], r[16];
        for (int i = 0; i < 16; ++i) a[i] = i % 2 ? 90.0f : -200.0f;
        call_plain<float>(f, f.plain[slot], {16, a, a, r, r});
        for (int i = 0; i < 16; ++i) EXPECT_EQ(r[i], i % 2 ? float(inf) : 0.0f) << class_names[slot];
      }
      EXPECT_FALSE(_mm_getcsr() & 0x18) << name << ": no rare routine, so no overflow or underflow flag";
      EXPECT_EQ(__lumeGetErrStatus(), 77);
      // A lone element goes through the rare routine, and still nothing is stored.
      if (f.type == 'd') {
        double a = 710, r = 0;
        call_plain<double>(f, f.plain[slot], {1, &a, &a, &r, &r});
        EXPECT_EQ(r, inf);
      } else {
        float a = 90, r = 0;
        call_plain<float>(f, f.plain[slot], {1, &a, &a, &r, &r});
        EXPECT_EQ(r, float(inf));
      }
      EXPECT_TRUE(_mm_getcsr() & 0x08) << name << ": the rare routine raises the overflow flag";
      EXPECT_EQ(__lumeGetErrStatus(), 77);
      _mm_setcsr(0x1F80);
      __lumeSetMode(kept);
    }
  __lumeClearErrStatus();
}

TEST(Exp, RareResultsRaiseTheirFlags) {
  for (int slot = 0; slot < 3; ++slot) {
    _mm_setcsr(0x1F80);
    outcome<double>("dExp", slot, 800.0, Route::tail);
    EXPECT_TRUE(_mm_getcsr() & 0x08) << "overflow";
    _mm_setcsr(0x1F80);
    outcome<double>("dExp", slot, -800.0, Route::tail);
    EXPECT_TRUE(_mm_getcsr() & 0x10) << "underflow";
    _mm_setcsr(0x1F80);
  }
}

TEST(Ln, SpecialValuesDouble) {
  expect_rows<double>("dLn", {
                                 {nan, nan, 0},
                                 {inf, inf, 0},
                                 {-inf, nan, 1},
                                 {0.0, -inf, 2},
                                 {-0.0, -inf, 2},
                                 {-1.0, nan, 1},
                                 {-denormal, nan, 1},
                                 {-1e300, nan, 1},
                                 {denormal, -744.4400719213812, 0, 1},
                                 {1e-310, -713.8013788281542, 0, 1},
                                 {2.2250738585072014e-308, -708.3964185322641, 0, 1},
                                 {1.7976931348623157e+308, 709.782712893384, 0, 1},
                             });
}

TEST(Ln, SpecialValuesSingle) {
  expect_rows<float>("sLn", {
                                {float(nan), float(nan), 0},
                                {float(inf), float(inf), 0},
                                {-float(inf), float(nan), 1},
                                {0.0f, -float(inf), 2},
                                {-0.0f, -float(inf), 2},
                                {-1.0f, float(nan), 1},
                                {-1e-45f, float(nan), 1},
                                {1e-45f, -103.27893f, 0, 1},
                                {1e-40f, -92.10341f, 0, 1},
                                {1.17549435e-38f, -87.33655f, 0, 1},
                                {3.4028235e+38f, 88.72284f, 0, 1},
                            });
}

TEST(Ln, OfOneIsPlusZero) {
  for (int slot : {LA, HA})
    for (const Route route : routes) {
      EXPECT_EQ(std::bit_cast<uint64_t>(outcome<double>("dLn", slot, 1.0, route).r), 0u) << class_names[slot];
      EXPECT_EQ(std::bit_cast<uint32_t>(outcome<float>("sLn", slot, 1.0f, route).r), 0u) << class_names[slot];
    }
}

TEST(Ln, NextToOneFromBelowNothingCancels) {
  for (double x = 1 - 0x1p-53; x > 0.5; x = 1 - (1 - x) * 1.7)
    for (int slot : {LA, HA}) EXPECT_NEAR(outcome<double>("dLn", slot, x, Route::block).r / std::log(x), 1, 4e-16) << x;
  EXPECT_NEAR(outcome<double>("dLn", EP, 0.9999, Route::block).r / std::log(0.9999), 1, 1e-6);
}

TEST(Ln, OddNaNsOfEP) {
  // The scalar routine gives the negative quiet NaN for negatives, bit for bit.
  for (const double x : {-1.0, -inf, -denormal})
    for (const Route route : routes)
      EXPECT_EQ(std::bit_cast<uint64_t>(outcome<double>("dLn", EP, x, route).r), 0xFFF8000000000000u) << x;
}

TEST(Ln, DenormalsUnderTheFlushMode) {
  const uint32_t kept = __lumeSetMode(0x280200);
  for (int slot = 0; slot < 3; ++slot) {
    __lumeClearErrStatus();
    double a = 1e-310, r = 0;
    call_plain<double>(function("dLn"), function("dLn").plain[slot], {1, &a, &a, &r, &r});
    if (slot == EP) {
      EXPECT_NEAR(r, -713.8013788281542, 1e-6) << "EP does not read the mode";
      EXPECT_EQ(__lumeGetErrStatus(), 0);
    } else {
      EXPECT_EQ(r, -inf) << "the denormal is read as zero";
      EXPECT_EQ(__lumeGetErrStatus(), 2);
    }
    float af = 1e-40f, rf = 0;
    __lumeClearErrStatus();
    call_plain<float>(function("sLn"), function("sLn").plain[slot], {1, &af, &af, &rf, &rf});
    EXPECT_EQ(rf, -float(inf));
    EXPECT_EQ(__lumeGetErrStatus(), 2);
  }
  __lumeSetMode((kept & 0x3C0000) ? kept : kept | 0x40000);
  __lumeClearErrStatus();
}

TEST(Ln, ABlockOfEPWithANaNKeepsTheOthersBits) {
  double plain[8], mixed[8], a[8] = {1.5, 0.3, 1e200, 7, 1e-200, 1.49, 1.51, 3};
  const Function& f = function("dLn");
  call_plain<double>(f, f.plain[EP], {8, a, a, plain, plain});
  for (int bad = 0; bad < 8; ++bad) {
    double b[8];
    std::copy_n(a, 8, b);
    b[bad] = nan;
    call_plain<double>(f, f.plain[EP], {8, b, b, mixed, mixed});
    for (int i = 0; i < 8; ++i) EXPECT_TRUE(i == bad ? std::isnan(mixed[i]) : mixed[i] == plain[i]) << bad << ' ' << i;
  }
}

TEST(Vectors, ANaNInTheLastPlaceReportsNothing) {
  for (const char* name : {"dExp", "dLn"})
    for (int slot = 0; slot < 3; ++slot)
      for (int n : {1, 7, 16, 33}) {
        std::vector<double> a(static_cast<size_t>(n), 1.5), r(a);
        a.back() = nan;
        const uint32_t kept = __lumeSetMode(0x200);
        __lumeClearErrStatus();
        errno = 0;
        const Function& f = function(name);
        call_plain<double>(f, f.plain[slot], {n, a.data(), a.data(), r.data(), r.data()});
        EXPECT_TRUE(std::isnan(r.back()));
        EXPECT_EQ(__lumeGetErrStatus(), 0);
        EXPECT_EQ(errno, 0);
        __lumeSetMode(kept);
      }
}

TEST(Vectors, ErrnoOfTheDefaultMode) {
  const uint32_t kept = __lumeSetMode(0x1A00);
  const std::tuple<const char*, double, int> rows[] = {
      {"dExp", nan, 0},       {"dExp", inf, 0},       {"dExp", -inf, 0}, {"dExp", 800, ERANGE},
      {"dExp", -800, ERANGE}, {"dExp", -720, ERANGE}, {"dLn", nan, 0},   {"dLn", inf, 0},
      {"dLn", -inf, EDOM},    {"dLn", 0, ERANGE},     {"dLn", -1, EDOM}, {"dLn", 1e-310, 0}};
  for (const auto& [name, x, expected] : rows)
    for (int slot = 0; slot < 3; ++slot) {
      double r;
      errno = 0;
      const Function& f = function(name);
      call_plain<double>(f, f.plain[slot], {1, &x, &x, &r, &r});
      EXPECT_EQ(errno, expected) << name << '(' << x << ')';
    }
  __lumeSetMode(kept);
  asm volatile("fninit"); // the EXCEPT route has raised x87 flags
}

// ---- The tables against their published rows ----

TEST(Tables, GivenRows) {
  using namespace tarn::data;
  EXPECT_EQ(exp2_64[0], 1.0);
  EXPECT_EQ(exp2_64[1], 0.0);
  EXPECT_EQ(exp2_128f[2], 1.00542986f);
  EXPECT_EQ(exp2_128f[3], 3.71830531e-08f);
  EXPECT_EQ(ln_1024_over_c[0], -708.3964185305813);
  EXPECT_EQ(ln_1024_over_c[1], -1.6828200473689525e-09);
  EXPECT_EQ(_BT_Tbl[0], 1.0);
  EXPECT_EQ(_BT_Tbl[1], 0.0);
  EXPECT_EQ(_BT_Tbl[2], 0.9980506896972656);
  EXPECT_EQ(_BT_Tbl[3], 0.0019512126806811802);
  EXPECT_EQ(_BT_Tbl[2 * 0x180], 0.5714285373687744);
  EXPECT_EQ(_BT_Tbl[2 * 0x180 + 1], -0.13353133301987608);
  EXPECT_EQ(_BT_Tbl[1024], 0.5);
  EXPECT_EQ(_BT_Tbl[1025], 0.0);
}

// ---- The formulas, one scalar operation after another ----

double bits_to_double(uint64_t b) { return std::bit_cast<double>(b); }
float bits_to_float(uint32_t b) { return std::bit_cast<float>(b); }
uint64_t bits_of(double x) { return std::bit_cast<uint64_t>(x); }
uint32_t bits_of(float x) { return std::bit_cast<uint32_t>(x); }
constexpr double S = 6755399441055744.0;
constexpr float Sf = 12582912.0f;

double exp_ha(double x) {
  const double t = x * 92.33248261689366 + S, n = t - S;
  const int j = static_cast<int>(bits_of(t) & 0x3F);
  const double r = (x - n * 0.010830424696223417) - n * 2.572804622327669e-14;
  const double poly =
      0.4999999999994775 + r * (0.1666666666667797 + r * (0.04166672368662385 + r * 0.00833333416441411));
  const double p = r + r * r * poly;
  const double hi = tarn::data::exp2_64[2 * j], lo = tarn::data::exp2_64[2 * j + 1];
  const double y = hi + (lo + hi * p);
  return bits_to_double(bits_of(y) + ((bits_of(t) & ~uint64_t{0x3F}) << 46));
}
double exp_la(double x) {
  const double n = std::nearbyint(x * 1477.3197218702985), t = x * 1477.3197218702985 + S;
  const double r = (x - n * 0.0006769015431018488) - n * 4.137227896298129e-13;
  const double P = 1 + r * (1 + r * (0.5000000035796539 + r * 0.16666666666666669));
  const double y = tarn::data::exp2_1024[bits_of(t) & 0x3FF] * P;
  return bits_to_double(bits_of(y) + ((bits_of(t) & ~uint64_t{0x3FF}) << 42));
}
double exp_ep(double x) {
  const double t = x * 184.6649652337873 + S, n = t - S, r = x - n * 0.0054152123481245725;
  const double y = tarn::data::exp2_128[bits_of(t) & 0x7F] * (1 + r * (1 + r * 0.49999908361121337));
  return bits_to_double(bits_of(y) + ((bits_of(t) & ~uint64_t{0x7F}) << 45));
}
float expf_ha(float x) {
  const float t = x * bits_to_float(0x4338AA3B) + Sf, n = t - Sf;
  const int j = static_cast<int>(bits_of(t) & 0x7F);
  const float scale = bits_to_float(((bits_of(t) + 0x3F80) << 16) & 0x7F800000);
  const float r = (x - n * bits_to_float(0x3BB18000)) - n * bits_to_float(0xB5DE8083);
  const float p = r + r * r * 0.5f;
  const float hi = tarn::data::exp2_128f[2 * j], lo = tarn::data::exp2_128f[2 * j + 1];
  return scale * (hi + (lo + hi * p));
}
float expf_la(float x) {
  const float t = x * 1.44269502f + Sf, n = t - Sf;
  const float r = (x - n * 0.693145752f) - n * 1.42860677e-06f;
  const float P =
      1 + r * (0.999999881f + r * (0.49999392f + r * (0.166674316f + r * (0.0418735221f + r * 0.00829171948f))));
  return bits_to_float(bits_of(P) + (bits_of(t) << 23));
}
float expf_ep(float x) {
  const float y = x * 1.44269502f, t = y + Sf, f = y - (t - Sf);
  const float P = 1 + f * (0.693178296f + f * (0.242028862f + f * 0.0555040054f));
  return bits_to_float(bits_of(P) + (bits_of(t) << 23));
}

double reciprocal_estimate(double m) {
  return static_cast<double>(_mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(static_cast<float>(m)))));
}
double ln_series(double r) {
  return r * r *
         (-0.49999999999988803 + 0.33333333333308374 * r + r * r * (-0.2500003054940248 + 0.2000003665949424 * r));
}
struct LnParts {
  double E, c, r;
};
LnParts ln_parts(double x) {
  const double m = bits_to_double((bits_of(x) & 0x000FFFFFFFFFFFFF) | 0x3F50000000000000);
  const double c = std::nearbyint(reciprocal_estimate(m));
  const double mh = bits_to_double(bits_of(m) & 0xFFFFFFFFFC000000), ml = m - mh;
  return {static_cast<double>(bits_of(x) >> 52), c, (c * mh - 1) + c * ml};
}
double ln_ha(double x) {
  const auto [E, c, r] = ln_parts(x);
  const size_t row = 2 * static_cast<size_t>(c - 512);
  const double A = tarn::data::ln_1024_over_c[row] + E * bits_to_double(0x3FE62E42FEFA0000);
  const double B = tarn::data::ln_1024_over_c[row + 1] + E * bits_to_double(0x3D7CF79ABC9E0000);
  const double s = r + A, e = r - (s - A);
  return s + (ln_series(r) + (B + e));
}
double ln_la(double x) {
  const auto [E, c, r] = ln_parts(x);
  const double k = E - (c > 724 ? 1023 : 1022);
  return k * 0.6931471805599453 +
         (tarn::data::ln_1024_over_c_nearest[static_cast<size_t>(c) - 512] + (r + ln_series(r)));
}
double ln_ep(double x) {
  const uint32_t h = static_cast<uint32_t>(bits_of(x) >> 32);
  const size_t slot = ((((h & 0xFFC00) + 0x400) >> 10) & ~1u);
  const double m = bits_to_double((bits_of(x) & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000);
  const double r = m * tarn::data::_BT_Tbl[slot] - 1;
  const double k = static_cast<int32_t>(h - 0x3FE7FC00) >> 20;
  return (k * 0.6931471805598903 + tarn::data::_BT_Tbl[slot + 1]) + (r - 0.5 * r * r);
}

float lnf(float x, std::initializer_list<float> coefficients, bool two_parts) {
  const int32_t d = static_cast<int32_t>(bits_of(x)) - 0x3F2AAAAB;
  const float k = static_cast<float>(d >> 23);
  const float r = bits_to_float(static_cast<uint32_t>((d & 0x007FFFFF) + 0x3F2AAAAB)) - 1;
  float P = 0;
  bool first = true;
  for (auto c = std::rbegin(coefficients); c != std::rend(coefficients); ++c) {
    P = first ? *c : *c + r * P;
    first = false;
  }
  const float poly = r + r * r * P;
  return two_parts ? (poly + k * 1.42860677e-06f) + k * 0.693145752f : poly + k * 0.693147182f;
}
float lnf_ha(float x) {
  return lnf(x,
             {-0.5f, 0.333332151f, -0.249997973f, 0.200104058f, -0.16680488f, 0.140058696f, -0.121842608f, 0.139844373f,
              -0.12891686f},
             true);
}
float lnf_la(float x) {
  return lnf(x, {-0.5f, 0.333365649f, -0.250046641f, 0.198225036f, -0.164624572f, 0.169648811f, -0.151772052f}, false);
}
float lnf_ep(float x) { return lnf(x, {-0.5f, 0.332896233f, -0.267402589f, 0.219883725f}, false); }

template <class T> using Scalar = T (*)(T);
template <class T>
void expect_formula(const char* name, int slot, Scalar<T> formula, std::function<T(std::mt19937_64&)> draw) {
  const Function& f = function(name);
  std::mt19937_64 random(7);
  constexpr int n = 100000;
  std::vector<T> a(n), r(n);
  for (T& x : a) x = draw(random);
  call_plain<T>(f, f.plain[slot], {n, a.data(), a.data(), r.data(), r.data()});
  for (size_t i = 0; i < n; ++i)
    ASSERT_TRUE(same(r[i], formula(a[i])))
        << name << ' ' << class_names[slot] << '(' << a[i] << "): " << r[i] << " against " << formula(a[i]);
}

TEST(Formulas, GiveTheBitsOfTheirOperations) {
  const auto exp_argument = [](std::mt19937_64& random) {
    return std::uniform_real_distribution<double>(-708, 708)(random);
  };
  const auto expf_argument = [](std::mt19937_64& random) {
    return std::uniform_real_distribution<float>(-87, 87)(random);
  };
  const auto normal = [](std::mt19937_64& random) {
    if (random() % 4 == 0) return std::uniform_real_distribution<double>(0.5, 2)(random);
    return bits_to_double(0x0010000000000000 + random() % 0x7FE0000000000000);
  };
  const auto normalf = [](std::mt19937_64& random) {
    if (random() % 4 == 0) return std::uniform_real_distribution<float>(0.5, 2)(random);
    return bits_to_float(0x00800000 + static_cast<uint32_t>(random() % 0x7F000000));
  };
  expect_formula<double>("dExp", LA, exp_la, exp_argument);
  expect_formula<double>("dExp", HA, exp_ha, exp_argument);
  expect_formula<double>("dExp", EP, exp_ep, exp_argument);
  expect_formula<float>("sExp", LA, expf_la, expf_argument);
  expect_formula<float>("sExp", HA, expf_ha, expf_argument);
  expect_formula<float>("sExp", EP, expf_ep, expf_argument);
  expect_formula<double>("dLn", LA, ln_la, normal);
  expect_formula<double>("dLn", HA, ln_ha, normal);
  expect_formula<double>("dLn", EP, ln_ep, normal);
  expect_formula<float>("sLn", LA, lnf_la, normalf);
  expect_formula<float>("sLn", HA, lnf_ha, normalf);
  expect_formula<float>("sLn", EP, lnf_ep, normalf);
}

}
