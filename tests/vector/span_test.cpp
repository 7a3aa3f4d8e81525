// The C++ layer: what it does beyond handing spans on.
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tarn/tarn.hpp"

namespace {

std::vector<double> some_numbers(size_t n) {
  std::vector<double> x(n);
  for (size_t i = 0; i < n; ++i) x[i] = 0.01 * double(i) + 0.37;
  return x;
}

template <class T> bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && !memcmp(a.data(), b.data(), a.size() * sizeof(T));
}

struct WithMode : testing::Test {
  uint32_t kept = __lumeGetMode();
  void SetUp() override { __lumeClearErrStatus(); }
  void TearDown() override {
    __lumeSetMode(kept);
    __lumeClearErrorCallBack();
  }
};
using Spans = WithMode;

TEST_F(Spans, EachAccuracyIsItsEntry) {
  const std::vector<double> x = some_numbers(101);
  std::vector<double> expected(101), r(101);
  const std::array<std::pair<tarn::Accuracy, void (*)(int32_t, const double*, double*)>, 3> entries = {
      {{tarn::Accuracy::low, __lumedExp_50},
       {tarn::Accuracy::high, __lumedExp_HA},
       {tarn::Accuracy::fast, __lumedExp_26}}};
  for (const auto& [accuracy, entry] : entries) {
    entry(101, x.data(), expected.data());
    EXPECT_TRUE(tarn::Exp(x, r, accuracy));
    EXPECT_TRUE(same_bits(r, expected)) << int(accuracy);
  }
}

TEST_F(Spans, TheModeDecidesWhereNothingElseDoes) {
  const std::vector<double> x = some_numbers(101);
  std::vector<double> fast(101), r(101);
  __lumedLn_26(101, x.data(), fast.data());
  __lumeSetMode(3);
  tarn::Ln(x, r);
  EXPECT_TRUE(same_bits(r, fast));
  __lumeSetMode(0xF); // no such accuracy: HA serves
  __lumedLn_HA(101, x.data(), fast.data());
  tarn::Ln(x, r);
  EXPECT_TRUE(same_bits(r, fast));
}

TEST_F(Spans, TwoArgumentsTwoResultsAndScalars) {
  const std::vector<double> x = some_numbers(37), y(37, 0.25);
  std::vector<double> r(37), q(37), expected(37), expected_q(37);
  __lumedFmod(37, x.data(), y.data(), expected.data());
  EXPECT_TRUE(tarn::Fmod(x, y, r));
  EXPECT_TRUE(same_bits(r, expected));
  __lumedModf(37, x.data(), expected.data(), expected_q.data());
  EXPECT_TRUE(tarn::Modf(x, r, q));
  EXPECT_TRUE(same_bits(r, expected) && same_bits(q, expected_q));
  __lumedLinearFrac(37, x.data(), y.data(), 2, 1, 3, -5, expected.data());
  EXPECT_TRUE(tarn::LinearFrac(x, y, 2, 1, 3, -5, r));
  EXPECT_TRUE(same_bits(r, expected));
}

TEST_F(Spans, InPlaceAndSinglePrecision) {
  std::vector<float> x(33), expected(33);
  for (size_t i = 0; i < x.size(); ++i) x[i] = float(i) + 0.5f;
  __lumesSqrt(33, x.data(), expected.data());
  EXPECT_TRUE(tarn::Sqrt(std::span<const float>(x), x));
  EXPECT_TRUE(same_bits(x, expected));
}

TEST_F(Spans, OtherLengthsAreRefusedWithTheirPosition) {
  static ErrorContext seen;
  seen = {};
  __lumeSetErrorCallBack([](ErrorContext* context) -> int32_t {
    seen = *context;
    return 0;
  });
  const std::vector<double> x = some_numbers(8), y = some_numbers(8);
  std::vector<double> r(7, -1.0);
  EXPECT_FALSE(tarn::Add(x, y, r));
  EXPECT_EQ(r, std::vector<double>(7, -1.0));
  EXPECT_EQ(seen.code, -1);
  EXPECT_EQ(seen.index, 3);
  EXPECT_EQ(std::string(seen.funcName), "vdAdd");
  EXPECT_EQ(__lumeGetErrStatus(), -1);
  EXPECT_FALSE(tarn::Add(x, std::span<const double>(y).first(3), std::span<double>(r).first(5)));
  EXPECT_EQ(seen.index, 2); // the first that differs
  std::vector<float> f(3);
  EXPECT_FALSE(tarn::Exp(std::span<const float>(f).first(2), f));
  EXPECT_EQ(std::string(seen.funcName), "vsExp");
}

TEST_F(Spans, EmptySpansAreServed) {
  EXPECT_TRUE(tarn::Exp(std::span<const double>(), std::span<double>()));
  EXPECT_EQ(__lumeGetErrStatus(), 0);
}

}
