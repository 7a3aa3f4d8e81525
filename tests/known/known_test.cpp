// Holds the library to files of known answers, in every class, in a block and alone.
//
//   tarn_known FILE...        one line an assertion: function, arguments, result, status; # starts a comment
//
// A result counts as right within 1 ulp in HA, 4 in LA, and 26 bits (d) or 11 (s) in EP; dLn EP within 21 bits, as its
// formula has it. Infinities, zeros and their signs, NaNs and statuses must agree.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>

#include "vector/roll.h"

using namespace tarn::test;

namespace {

int32_t seen_status;
int32_t note_status(ErrorContext* context) {
  seen_status = context->code;
  return 0;
}

template <class T> double allowed(const Function& f, int slot) {
  if (slot == LA) return 4;
  if (slot == HA) return 1;
  if (f.full_name() == "dLn") return 0x1p32;
  return sizeof(T) == 8 ? 0x1p27 : 0x1p13;
}

// The distance from the exact value in units in the last place of the type.
template <class T> double distance(T got, long double exact) {
  if (std::isnan(exact)) return std::isnan(got) ? 0 : HUGE_VAL;
  const T rounded = static_cast<T>(exact);
  if (std::isinf(rounded) || std::isinf(got) || rounded == 0)
    return got == rounded && std::signbit(got) == std::signbit(rounded) ? 0 : HUGE_VAL;
  int exponent;
  std::frexp(exact, &exponent);
  exponent = std::max(exponent, std::numeric_limits<T>::min_exponent);
  return static_cast<double>(std::fabs(std::ldexp(got - exact, std::numeric_limits<T>::digits - exponent)));
}

template <class T> bool holds(const Function& f, T a, T b, long double exact, int32_t status, std::string& why) {
  constexpr int n = 33, place = 5;
  for (int slot = 0; slot < 3; ++slot)
    for (const int count : {1, n}) {
      std::vector<T> as(n, T(1.25)), bs(n, T(0.75)), r(n), q(n);
      const size_t at = count == 1 ? 0 : place;
      as[at] = a, bs[at] = b;
      seen_status = 0;
      call_plain<T>(f, f.plain[slot], {count, as.data(), bs.data(), r.data(), q.data()});
      const double off = distance(r[at], exact);
      if (off <= allowed<T>(f, slot) && seen_status == status) continue;
      std::ostringstream text;
      text.precision(17);
      text << class_names[slot] << " gives " << r[at] << ", " << off << " ulp off, status " << seen_status;
      why = text.str();
      return false;
    }
  return true;
}

}

int main(int argc, char** argv) {
  __lumeSetMode(0x1000);
  __lumeSetErrorCallBack(note_status);
  int passed = 0, failed = 0;
  for (int k = 1; k < argc; ++k) {
    std::ifstream file(argv[k]);
    if (!file) ++failed, std::cout << "cannot read " << argv[k] << '\n';
    int number = 0;
    for (std::string line; std::getline(file, line);) {
      ++number;
      if (line.empty() || line[0] == '#') continue;
      std::istringstream words(line);
      std::string name, word;
      words >> name;
      std::vector<long double> values;
      while (words >> word) values.push_back(std::strtold(word.c_str(), nullptr));
      std::string why = "the line makes no sense";
      bool good = false;
      try {
        const Function& f = function(name);
        if (static_cast<int>(values.size()) == f.inputs() + 2) {
          const long double a = values[0], b = f.inputs() == 2 ? values[1] : 0.75L, exact = values[values.size() - 2];
          const int32_t status = static_cast<int32_t>(values.back());
          good = f.type == 'd' ? holds<double>(f, static_cast<double>(a), static_cast<double>(b), exact, status, why)
                               : holds<float>(f, static_cast<float>(a), static_cast<float>(b), exact, status, why);
        }
      } catch (const std::out_of_range&) {
        why = "no such function";
      }
      good ? ++passed : ++failed;
      if (!good) std::cout << "FAILED " << argv[k] << ':' << number << ": " << line << ": " << why << '\n';
    }
  }
  std::cout << passed << " passed, " << failed << " failed\n";
  return failed || !passed;
}
