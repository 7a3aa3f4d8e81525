// Where a function is looked at: points spread over every exponent, over the range of the claim, and dense where
// formulas change hands or results vanish.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace tarn::accuracy {

template <class T> class Points {
public:
  // `from` and `to` bound the claim's range; the stream of points depends on nothing but the arguments.
  Points(uint64_t seed, double from, double to);

  T next();                            // a finite argument
  T partner(T first);                  // a second argument to go with the first
  T near(T x);                         // a neighbour of x, near or less so
  double scalar();                     // a value that is given once per call
  static T offset(T x, int64_t steps); // x moved by that many representable numbers

private:
  static double clamp(double x);
  double uniform() { return static_cast<double>(random() >> 11) * 0x1p-53; }
  int64_t below(int64_t n) { return static_cast<int64_t>(random() % static_cast<uint64_t>(n)); }
  T with_exponent(int exponent);
  T any_exponent();
  T from_breakpoints();
  T from_multiples();
  T from_range();
  std::mt19937_64 random;
  double low, high;
  int64_t count = 0, exponent_count = 0;
};

}
