// One element through every route of a kernel: in a block, in a tail, strided; and what was reported of it.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "vector/roll.h"

namespace tarn::test {

enum class Route { block, tail, strided };
constexpr Route routes[] = {Route::block, Route::tail, Route::strided};
constexpr const char* route_names[] = {"block", "tail", "strided"};

template <class T> struct Outcome {
  T r, q;
  int32_t status; // of the one report; 0 when there was none
  int reports;
};

namespace detail {
inline thread_local int count = 0;
inline thread_local int32_t code = 0;
inline int32_t count_report(ErrorContext* context) {
  ++count;
  code = context->code;
  return 0;
}
}

// f(a, b) in one class; the other elements of the call are harmless.
template <class T> Outcome<T> outcome2(const Function& f, int slot, T a, T b, Route route) {
  constexpr int n = 67, place = 17;
  std::vector<T> as(2 * n, T(0.75)), bs(2 * n, T(0.75)), r(2 * n), q(2 * n);
  const uint32_t kept = __lumeSetMode(0x1000);
  const ErrorCallback before = __lumeSetErrorCallBack(detail::count_report);
  detail::count = 0;
  detail::code = 0;
  Outcome<T> out{};
  const size_t at = route == Route::block ? place : route == Route::tail ? 0 : 2 * place;
  as[at] = a;
  bs[at] = b;
  if (route == Route::strided)
    call_strided<T>(f, f.strided[slot], {n, as.data(), bs.data(), r.data(), q.data(), 2, 2, 2, 2});
  else
    call_plain<T>(f, f.plain[slot], {route == Route::tail ? 1 : n, as.data(), bs.data(), r.data(), q.data()});
  out = {r[at], q[at], detail::code, detail::count};
  __lumeSetErrorCallBack(before);
  __lumeSetMode(kept);
  return out;
}
template <class T> Outcome<T> outcome(const char* name, int slot, T a, Route route) {
  return outcome2<T>(function(name), slot, a, T(0.75), route);
}

// Distance in units in the last place of the expected value; infinities and zeros must agree, signs of zeros too.
template <class T> double ulps(T got, T expected) {
  if (expected != expected) return got != got ? 0 : HUGE_VAL;
  if (got == expected) return std::signbit(got) == std::signbit(expected) ? 0 : HUGE_VAL;
  if (std::isinf(got) || std::isinf(expected) || expected == 0) return HUGE_VAL;
  int exponent;
  std::frexp(expected, &exponent);
  const int lowest = std::numeric_limits<T>::min_exponent;
  const int digits = std::numeric_limits<T>::digits;
  return std::fabs(std::ldexp(static_cast<double>(got) - static_cast<double>(expected),
                              digits - (exponent < lowest ? lowest : exponent)));
}

// A row of two arguments; one with one argument leaves the second harmless.
template <class T> struct Row2 {
  T a, b, r;
  int32_t status;
  double ulps = 0; // allowed in LA and HA; EP is held to half the digits where this is not 0
};
template <class T> struct Row {
  T a, r;
  int32_t status;
  double ulps = 0;
};

// Every row in every class and route: value with its sign, status, and that nothing else is reported.
template <class T> void expect_rows2(const char* name, std::initializer_list<Row2<T>> rows) {
  const Function& f = function(name);
  for (const Row2<T>& row : rows)
    for (int slot = 0; slot < 3; ++slot)
      for (const Route route : routes) {
        const Outcome<T> got = outcome2<T>(f, slot, row.a, row.b, route);
        const double allowed = slot == EP && row.ulps > 0 ? (sizeof(T) == 8 ? 0x1p29 : 0x1p13) : row.ulps;
        std::ostringstream what;
        what << f.full_name() << ' ' << class_names[slot] << ' ' << route_names[static_cast<int>(route)] << '(' << row.a
             << ", " << row.b << ')';
        EXPECT_LE(ulps(got.r, row.r), allowed) << what.str() << " = " << got.r << ", not " << row.r;
        EXPECT_EQ(got.status, row.status) << what.str();
        EXPECT_EQ(got.reports, row.status != 0) << what.str();
      }
}
template <class T> void expect_rows(const char* name, std::initializer_list<Row<T>> rows) {
  for (const Row<T>& row : rows) expect_rows2<T>(name, {{row.a, T(0.75), row.r, row.status, row.ulps}});
}

}
