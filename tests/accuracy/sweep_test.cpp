// The harness itself, on functions whose error is known.
#include "accuracy/sweep.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tarn;
using namespace tarn::accuracy;

namespace {

const tarn_kernel no_kernels[3] = {};

template <class T, T (*f)(T)> void apply(tarn_kernel, int32_t n, const command::Arguments& x) {
  for (int32_t i = 0; i < n; ++i) static_cast<T*>(x.out[0])[i] = f(static_cast<const T*>(x.in[0])[i]);
}

template <class T, T (*f)(T)> Sweep measure(const char* name, double from, double to, int threads = 2) {
  const char type = sizeof(T) == 4 ? 's' : 'd';
  const command::Function function = {type, name,         "In1Out1",  1,       1,
                                      0,    &apply<T, f>, no_kernels, nullptr, "one((E7, HA, 8, 8))"};
  const std::string key = type + std::string(name);
  SweepOptions options;
  options.points = 100'000;
  options.threads = threads;
  return sweep(function, *find_reference(name), {{key, "HA", "here", 0.5, from, to}}, options);
}

double root(double x) { return std::sqrt(x); }
float rootf(float x) { return std::sqrt(x); }
double root_and_one_ulp(double x) { return x > 0 ? std::nextafter(std::sqrt(x), INFINITY) : std::sqrt(x); }
double root_but_at_zero(double x) { return x == 0 ? NAN : std::sqrt(x); }
double root_of_negatives(double x) { return std::sqrt(std::abs(x)); }
double square(double x) { return x * x; }
double flushed_square(double x) { return std::abs(x * x) < 0x1p-1022 ? 0 : x * x; }
double inverse(double x) { return 1 / x; }
double unsigned_inverse(double x) { return std::abs(1 / x); }
double largest_for_infinity(double x) { return std::isinf(x * x) ? 0x1.fffffffffffffp1023 : x * x; }

}

TEST(Harness, CorrectlyRoundedIsAtMostHalf) {
  const Sweep d = measure<double, root>("Sqrt", 0, 1e308);
  EXPECT_TRUE(d.faults.empty());
  EXPECT_TRUE(d.findings[0].holds());
  EXPECT_GT(d.findings[0].max_ulp, 0.499);
  EXPECT_GT(d.findings[0].worst_bits, 52.9);
  EXPECT_TRUE((measure<float, rootf>("Sqrt", 0, 1e38).findings[0].holds()));
}

TEST(Harness, OneUnitIsSeen) {
  const Finding finding = measure<double, root_and_one_ulp>("Sqrt", 0, 1e308).findings[0];
  EXPECT_FALSE(finding.holds());
  EXPECT_GT(finding.max_ulp, 1.49);
  EXPECT_LE(finding.max_ulp, 1.5);
  EXPECT_NEAR(finding.mean_ulp, 1, 0.1);
}

TEST(Harness, NanAndNumbersAreNotMistaken) {
  const Sweep nan = measure<double, root_but_at_zero>("Sqrt", 0, 1e308);
  ASSERT_FALSE(nan.faults.empty());
  EXPECT_NE(nan.faults[0].find("gave nan where the exact value is"), std::string::npos) << nan.faults[0];
  const Sweep number = measure<double, root_of_negatives>("Sqrt", 0, 1e308);
  ASSERT_FALSE(number.faults.empty());
  EXPECT_NE(number.faults[0].find("where the exact value is nan"), std::string::npos) << number.faults[0];
}

TEST(Harness, EndsOfTheRange) {
  EXPECT_TRUE((measure<double, square>("Sqr", -1e308, 1e308).findings[0].holds()));
  // A lost denormal counts in units of the smallest one; a number in place of infinity in those of the largest.
  EXPECT_GT((measure<double, flushed_square>("Sqr", -1e308, 1e308).findings[0].max_ulp), 0x1p40);
  const double beyond = measure<double, largest_for_infinity>("Sqr", -1e308, 1e308).findings[0].max_ulp;
  EXPECT_EQ(beyond, 1);
  EXPECT_TRUE((measure<double, inverse>("Inv", -1e308, 1e308).findings[0].holds()));
  EXPECT_FALSE((measure<double, unsigned_inverse>("Inv", -1e308, 1e308).findings[0].holds()));
}

TEST(Harness, ThreadsDoNotShow) {
  const Finding one = measure<double, root>("Sqrt", 0, 1e308, 1).findings[0],
                three = measure<double, root>("Sqrt", 0, 1e308, 3).findings[0];
  EXPECT_EQ(one.max_ulp, three.max_ulp);
  EXPECT_EQ(one.at[0], three.at[0]);
  EXPECT_EQ(one.points, three.points);
}
