#include "accuracy/points.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <type_traits>

namespace tarn::accuracy {

namespace {

template <class T> using Bits = std::conditional_t<sizeof(T) == 4, int32_t, int64_t>;
template <class T> constexpr int digits = std::numeric_limits<T>::digits;
template <class T> constexpr int lowest_exponent = std::numeric_limits<T>::min_exponent - digits<T>; // of denormals
template <class T> constexpr int exponents = std::numeric_limits<T>::max_exponent - lowest_exponent<T>;

}

template <class T>
Points<T>::Points(uint64_t seed, double from, double to) : random(seed), low(clamp(from)), high(clamp(to)) {
  exponent_count = below(2 * exponents<T>); // a short stream of points sees another part of them than the next one
}

template <class T> double Points<T>::clamp(double x) {
  const double most = std::numeric_limits<T>::max();
  return std::clamp(x, -most, most);
}

template <class T> T Points<T>::offset(T x, int64_t steps) {
  // On the line of all numbers in their order; denormals, both zeros and the largest number included.
  const auto bits = std::bit_cast<Bits<T>>(x);
  int64_t place = bits >= 0 ? bits : static_cast<int64_t>(std::numeric_limits<Bits<T>>::min()) - bits;
  const int64_t most = std::bit_cast<Bits<T>>(std::numeric_limits<T>::max());
  place = std::clamp(place + steps, -most, most);
  const T magnitude = std::bit_cast<T>(static_cast<Bits<T>>(std::abs(place)));
  return place < 0 ? -magnitude : magnitude;
}

template <class T> T Points<T>::with_exponent(int exponent) {
  return static_cast<T>(std::ldexp(static_cast<T>(0.5 + uniform() / 2), exponent));
}

// Every exponent in turn, denormals included, both signs.
template <class T> T Points<T>::any_exponent() {
  const int64_t stratum = exponent_count++ % (2 * exponents<T>);
  const T x = with_exponent(lowest_exponent<T> + 1 + static_cast<int>(stratum / 2));
  return stratum % 2 ? -x : x;
}

// Near the ends of the claim and the places where formulas like to change.
template <class T> T Points<T>::from_breakpoints() {
  const double places[] = {0,    1,   -1,      0.5,      -0.5,      2,          -2,  0.25, -0.25, 2.0 / 3, 4.0 / 3,
                           0.75, 1.5, M_SQRT2, -M_SQRT2, M_SQRT1_2, -M_SQRT1_2, M_E, 4,    8,     low,     high};
  return near(static_cast<T>(places[below(static_cast<int64_t>(std::size(places)))]));
}

// Near multiples of constants by which arguments are reduced or at which results vanish.
template <class T> T Points<T>::from_multiples() {
  const double steps[] = {0.5, M_PI_2, M_LN2 / 2, M_LN2 / 256, 1.0 / 1024, 45.0};
  const double step = steps[below(static_cast<int64_t>(std::size(steps)))];
  const double most = std::min(std::max(std::abs(low), std::abs(high)) / step, 0x1p52);
  const double k = std::floor(std::exp2(uniform() * std::log2(std::max(most, 2.0))));
  const auto x = static_cast<T>((random() % 2 ? -k : k) * step);
  return offset(x, below(17) - 8);
}

// Evenly over the range of the claim, or evenly in the logarithm of its distance from zero.
template <class T> T Points<T>::from_range() {
  const double span = high / 2 - low / 2;
  if (span < 0x1p100 && random() % 2) return static_cast<T>(clamp(low + uniform() * 2 * span));
  const double most = std::log2(std::max({std::abs(low), std::abs(high), 1e-30}));
  const double least = std::max<double>(lowest_exponent<T>, -40.0);
  const double size = std::exp2(least + uniform() * (most - least));
  const double x = low >= 0 || (high > 0 && random() % 2) ? size : -size;
  return static_cast<T>(clamp(std::clamp(x, low, high)));
}

template <class T> T Points<T>::near(T x) {
  const int64_t scale = int64_t{1} << below(digits<T> - 1);
  return offset(x, below(2 * scale + 1) - scale);
}

template <class T> T Points<T>::next() {
  switch (count++ % 8) {
  case 0: return any_exponent();
  case 1: return from_breakpoints();
  case 2: return from_multiples();
  default: return from_range();
  }
}

template <class T> T Points<T>::partner(T first) {
  switch (below(8)) {
  case 0: return any_exponent();
  case 1: return from_breakpoints();
  case 2: return near(first);
  case 3: return -near(first);
  case 4: {
    int exponent = 0;
    std::frexp(first, &exponent);
    exponent += static_cast<int>(below(2 * digits<T> + 1)) - digits<T>;
    const T x = with_exponent(std::clamp(exponent, lowest_exponent<T> + 1, std::numeric_limits<T>::max_exponent));
    return random() % 2 ? -x : x;
  }
  default: return from_range();
  }
}

template <class T> double Points<T>::scalar() {
  const double simple[] = {0, 0.5, 1, 1.5, 2, 3, -1, -0.5, 1.0 / 3, 10};
  if (random() % 2) return static_cast<T>(simple[below(static_cast<int64_t>(std::size(simple)))]);
  const double size = std::exp2(uniform() * 10 - 5);
  return static_cast<T>(random() % 2 ? -size : size);
}

template class Points<float>;
template class Points<double>;

}
