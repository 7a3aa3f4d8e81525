// tarn random from outside: the library's own numbers, skipping, leapfrogging, saved images, formats and refusals.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "support/program.h"
#include "tarn/random.h"

using tarn::test::ProgramOutcome;

namespace {

class Random : public tarn::test::ProgramTest {
protected:
  ProgramOutcome run(const std::string& arguments) const { return tarn("random " + arguments); }
  std::vector<double> numbers(const std::string& arguments) const {
    const ProgramOutcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    std::istringstream text(outcome.out);
    std::vector<double> values;
    for (double v; text >> v;) values.push_back(v);
    return values;
  }
  void expect_refusal(const std::string& arguments) const {
    const ProgramOutcome outcome = run(arguments);
    EXPECT_NE(outcome.code, 0) << arguments;
    EXPECT_EQ(outcome.out, "") << arguments;
    EXPECT_FALSE(outcome.err.empty()) << arguments;
  }
};

std::vector<double> from_library(int32_t brng, uint32_t seed, int32_t n) {
  tarn_stream* stream = nullptr;
  EXPECT_EQ(__kestNewStreamEx(&stream, brng, 1, &seed), 0);
  std::vector<double> values(static_cast<size_t>(n));
  EXPECT_EQ(__kestdBRngMT19937(stream, n, values.data(), 0, 1), 0);
  __kestDeleteStream(&stream);
  return values;
}

TEST_F(Random, UniformGivesTheLibrarysNumbers) {
  EXPECT_EQ(numbers("uniform -g MT19937 -s 42 -n 1000"), from_library(8 << 20, 42, 1000));
  const std::vector<double> scaled = numbers("uniform -g MT19937 -s 42 -n 100 -a -2 -b 3");
  for (const double v : scaled) EXPECT_TRUE(v >= -2 && v < 3) << v;
}

TEST_F(Random, SkipAndLeapfrogTakePartsOfTheSequence) {
  const std::vector<double> all = numbers("uniform -g MRG32K3A -s 7 -n 300");
  EXPECT_EQ(numbers("uniform -g MRG32K3A -s 7 -n 50 --skip 200"),
            std::vector<double>(all.begin() + 200, all.begin() + 250));
  const std::vector<double> every_third = numbers("uniform -g MCG31M1 -s 7 -n 50 --leapfrog 1 3");
  const std::vector<double> whole = numbers("uniform -g MCG31M1 -s 7 -n 150");
  ASSERT_EQ(every_third.size(), 50u);
  for (size_t i = 0; i < 50; ++i) EXPECT_EQ(every_third[i], whole[3 * i + 1]);
}

TEST_F(Random, AnImageContinuesTheStream) {
  const std::vector<double> all = numbers("uniform -g PHILOX4X32X10 -s 5 -n 100");
  const std::vector<double> head = numbers("uniform -g PHILOX4X32X10 -s 5 -n 60 --save image");
  const std::vector<double> tail = numbers("uniform --load image -n 40");
  EXPECT_EQ(head, std::vector<double>(all.begin(), all.begin() + 60));
  EXPECT_EQ(tail, std::vector<double>(all.begin() + 60, all.end()));
}

TEST_F(Random, BinaryHoldsTheSameNumbers) {
  const std::vector<double> text = numbers("uniform -s 9 -n 64");
  ASSERT_EQ(run("uniform -s 9 -n 64 --to binary -o numbers.f64").code, 0);
  const std::string bytes = read(folder / "numbers.f64");
  ASSERT_EQ(bytes.size(), 64 * sizeof(double));
  EXPECT_EQ(memcmp(bytes.data(), text.data(), bytes.size()), 0);
}

TEST_F(Random, BitsAreTheGeneratorsWords) {
  ASSERT_EQ(run("bits -g MT19937 -s 42 -n 100 --to binary -o words").code, 0);
  const std::string bytes = read(folder / "words");
  tarn_stream* stream = nullptr;
  const uint32_t seed = 42;
  ASSERT_EQ(__kestNewStreamEx(&stream, 8 << 20, 1, &seed), 0);
  std::vector<uint32_t> words(100);
  ASSERT_EQ(__kestiBRngMT19937(stream, 100, words.data()), 0);
  __kestDeleteStream(&stream);
  ASSERT_EQ(bytes.size(), 400u);
  EXPECT_EQ(memcmp(bytes.data(), words.data(), 400), 0);
}

TEST_F(Random, RefusesWhatItCannotDo) {
  expect_refusal("uniform -g NOSUCH");
  expect_refusal("uniform -n -5 -o /dev/full");
  expect_refusal("uniform --load missing-image");
  expect_refusal("uniform --leapfrog 1");
  expect_refusal("uniform -g MT19937 --leapfrog 1 3"); // has no leapfrog
  expect_refusal("uniform -n 5 -o no/such/folder/file");
  for (const char* arguments : {"-n 5 -a nan", "-n 5 -b inf", "-n 5 -a 2 -b 1", "-n 5 -a 1 -b 1", "-n 5 -t s -b 1e39",
                                "-n 5 -a -1e308 -b 1e308", "-n 1e3", "-n 18446744073709551616 -o /dev/full",
                                "--skip -1", "-g MCG59 --leapfrog -1 2", "-g MCG59 --leapfrog 0 0", "--save ''",
                                "--load ''", "--save same -o same", "--save - -n 1", "--save absent/image -n 1"})
    expect_refusal(std::string("uniform ") + arguments);
  EXPECT_NE(run("uniform -n 18446744073709551616 -o /dev/full").err.find("is not a whole number"), std::string::npos);
  EXPECT_EQ(files(), 0);
  expect_refusal("");
}

// The image is written when the numbers are, and not without them.
TEST_F(Random, NumbersThatAreLostLeaveNoImage) {
  EXPECT_EQ(tarn("random uniform -n 3 --save image", "", "", "/dev/full").code, 1);
  EXPECT_EQ(files(), 0);
}

TEST_F(Random, ABrokenImageIsRefused) {
  ASSERT_EQ(run("uniform -n 3 --save image").code, 0);
  const std::string image = read(folder / "image");
  for (const size_t length : {size_t{0}, size_t{7}, image.size() / 2, image.size() - 1}) {
    std::ofstream(folder / "image", std::ios::binary) << image.substr(0, length);
    expect_refusal("uniform --load image");
  }
}

}
