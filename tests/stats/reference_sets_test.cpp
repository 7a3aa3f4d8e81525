// The nine univariate sets of NIST's Statistical Reference Datasets with the certified means and standard deviations as
// published: numerical accuracy 1 to 4, which are defined by a rule, Michelson's velocities of light of 1879, and four
// sets from files.
//
// Counted are correct digits, -log10 of the relative error, at most 15; held against GSL and against two passes in
// extended precision, which is how R does it.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <gsl/gsl_statistics_double.h>
#include <gtest/gtest.h>

#include "tarn/stats.h"

namespace {

struct ReferenceSet {
  const char* name;
  std::vector<double> x;
  double mean, sd;
};

// 1.1 and 1.3 in turn around a first 1.2, moved by an offset of decimal text so that each value is rounded once.
std::vector<double> alternating(const std::string& integer_part, const char* first, const char* second,
                                const char* third) {
  std::vector<double> x = {std::stod(integer_part + first)};
  for (int i = 0; i < 500; ++i) {
    x.push_back(std::stod(integer_part + second));
    x.push_back(std::stod(integer_part + third));
  }
  return x;
}

// Kilometres per second less 299,000, in the five series of twenty.
const int michelson[100] = {850,  740, 900, 1070, 930, 850, 950, 980, 980, 880, 1000, 980, 930, 650, 760, 810, 1000,
                            1000, 960, 960, 960,  940, 960, 940, 880, 800, 850, 880,  900, 840, 830, 790, 810, 880,
                            880,  830, 800, 790,  760, 800, 880, 880, 880, 860, 720,  720, 620, 860, 970, 950, 880,
                            910,  850, 870, 840,  840, 850, 840, 840, 840, 890, 810,  810, 820, 800, 770, 760, 740,
                            750,  760, 910, 920,  890, 860, 880, 720, 840, 850, 850,  780, 890, 840, 780, 810, 760,
                            810,  790, 810, 820,  850, 870, 870, 810, 740, 810, 940,  950, 800, 810, 870};

std::vector<double> from_file(const std::string& name) {
  std::ifstream file(TARN_REFERENCE_SETS "/" + name + ".txt");
  std::vector<double> x;
  for (double value; file >> value;) x.push_back(value);
  return x;
}

std::vector<ReferenceSet> sets() {
  std::vector<double> light;
  for (int speed : michelson) light.push_back((299000 + speed) / 1000.0); // rounded once, as the text would be
  return {{"NumAcc1", {10000001, 10000003, 10000002}, 10000002, 1},
          {"NumAcc2", alternating("1", ".2", ".1", ".3"), 1.2, 0.1},
          {"NumAcc3", alternating("1000000", ".2", ".1", ".3"), 1000000.2, 0.1},
          {"NumAcc4", alternating("10000000", ".2", ".1", ".3"), 10000000.2, 0.1},
          {"Michelso", light, 299.8524, 0.0790105478190518},
          {"Lew", from_file("Lew"), -177.435, 277.332168044316},
          {"Lottery", from_file("Lottery"), 518.958715596330, 291.699727470969},
          {"Mavro", from_file("Mavro"), 2.001856, 0.000429123454003053},
          {"PiDigits", from_file("PiDigits"), 4.5348, 2.86733906028871}};
}

double correct_digits(double value, double certified) {
  const double error = std::fabs(value - certified) / std::fabs(certified);
  return error == 0 ? 15 : std::min(15.0, -std::log10(error));
}

struct Estimate {
  double mean, sd;
};

Estimate by_tarn(const std::vector<double>& x, uint64_t method, double users_mean) {
  const int64_t n = int64_t(x.size()), p = 1, storage = TARN_SS_STORAGE_ROWS;
  double mean = users_mean, raw2 = 0, variance = 0;
  void* task = nullptr;
  EXPECT_EQ(__kestdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1), 0);
  __kestdSSEditMoments(task, &mean, &raw2, nullptr, nullptr, &variance, nullptr, nullptr);
  EXPECT_EQ(_kestdSSBasic(task, TARN_SS_CENTRAL_MOMENT_2, method, nullptr), 0);
  __kestSSDeleteTask(&task);
  return {mean, std::sqrt(variance)};
}

Estimate in_extended_precision(const std::vector<double>& x) {
  long double mean = 0, squares = 0;
  for (double value : x) mean += value;
  mean /= static_cast<long double>(x.size());
  for (double value : x) squares += (value - mean) * (value - mean);
  return {double(mean), double(std::sqrt(squares / static_cast<long double>(x.size() - 1)))};
}

TEST(ReferenceSets, AsManyDigitsAsTheBestPeer) {
  for (const ReferenceSet& set : sets()) {
    const Estimate extended = in_extended_precision(set.x);
    const Estimate gsl = {gsl_stats_mean(set.x.data(), 1, set.x.size()), gsl_stats_sd(set.x.data(), 1, set.x.size())};
    const Estimate one_pass = by_tarn(set.x, TARN_SS_METHOD_ONE_PASS, 0);
    const Estimate user_mean = by_tarn(set.x, TARN_SS_METHOD_USER_MEAN, one_pass.mean);
    const auto mean = [&](const Estimate& e) { return correct_digits(e.mean, set.mean); };
    const auto sd = [&](const Estimate& e) { return correct_digits(e.sd, set.sd); };
    std::printf("%-9s mean: one pass %.1f, GSL %.1f, extended %.1f; sd: one pass %.1f, user's mean %.1f, GSL %.1f, "
                "extended %.1f\n",
                set.name, mean(one_pass), mean(gsl), mean(extended), sd(one_pass), sd(user_mean), sd(gsl),
                sd(extended));
    constexpr double shown = 0.05; // digits as they are published, to a tenth
    EXPECT_GE(mean(one_pass), std::max(mean(gsl), mean(extended)) - shown) << set.name;
    EXPECT_GE(sd(one_pass), std::max(sd(gsl), sd(extended)) - shown) << set.name;
    EXPECT_GE(sd(user_mean), std::max(sd(gsl), sd(extended)) - shown) << set.name;
  }
}

// That the sets are the published ones: their certified values come out, to what the data's own rounding leaves.
TEST(ReferenceSets, HaveTheCertifiedValues) {
  for (const ReferenceSet& set : sets()) {
    const Estimate exact = in_extended_precision(set.x);
    EXPECT_GE(correct_digits(exact.mean, set.mean), 14.9) << set.name;
    const std::string name = set.name;
    EXPECT_GE(correct_digits(exact.sd, set.sd), name == "NumAcc4" ? 8 : name == "NumAcc3" ? 9 : 13) << set.name;
  }
}

}
