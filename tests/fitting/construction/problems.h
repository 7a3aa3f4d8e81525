// The problems that the tests of construction go through.
#pragma once

#include "fitting/construction/splines.h"

#include <random>

namespace tarn::test {

constexpr Kind all_kinds[] = {Kind::linear, Kind::standard, Kind::subbotin, Kind::akima,        Kind::bessel,
                              Kind::hyman,  Kind::hermite,  Kind::natural,  Kind::default_cubic};

inline std::vector<int64_t> conditions_of(Kind kind) {
  switch (kind) {
  case Kind::linear: return {0};
  case Kind::standard: return {128};
  case Kind::subbotin: return {12, 36, 24, 48};
  case Kind::natural:
  case Kind::default_cubic: return {2, 1, 12, 36, 24, 48, 64};
  default: return {0, 2, 1, 12, 36, 24, 48, 64};
  }
}

// Values of the kinds' smallest partitions.
inline size_t fewest(Kind kind, int64_t condition) {
  if (kind == Kind::akima) return 5;
  if (kind == Kind::bessel || kind == Kind::hyman) return 4;
  if (kind == Kind::hermite || kind == Kind::default_cubic) return 3;
  // Two points without free ends; three without a knot have no unique spline.
  return kind == Kind::natural ? (condition == 1 ? 3 : condition == 2 ? 4 : 2) : 2;
}

template <class Real>
Problem<Real> make_problem(Kind kind, int64_t condition, bool uniform, size_t n, int64_t functions = 1) {
  std::mt19937 random(unsigned(n * 100 + size_t(condition) * 10 + size_t(kind)));
  std::uniform_real_distribution<double> gap(0.3, 2.0), value(-1, 1);
  Problem<Real> p;
  p.kind = kind;
  p.uniform = uniform;
  p.functions = functions;
  double at = -3;
  for (size_t i = 0; i < n; ++i, at += uniform ? 0.7 : gap(random)) p.x.push_back(Real(at));
  for (int64_t j = 0; j < functions; ++j) {
    for (size_t i = 0; i < n; ++i)
      p.y.push_back(Real(std::sin(0.4 * double(i)) + 0.5 * value(random) + (i > n / 2 && i < n / 2 + 8 ? 2 : 0)));
    // Some flat stretches, for the rules that look at equal slopes and extremes.
    if (n > 30)
      for (size_t i = 20; i < 28; ++i) p.y[size_t(j) * n + i] = Real(0.25);
    if (condition == 64) p.y[size_t(j) * n + n - 1] = p.y[size_t(j) * n];
  }
  p.bc_type = condition;
  if (condition >= 4) p.bc = {Real(0.625), Real(-1.25)};
  if (kind == Kind::hermite || kind == Kind::default_cubic) {
    p.ic_type = kind == Kind::hermite ? TARN_DF_IC_1ST : TARN_DF_IC_2ND;
    for (size_t i = 1; i + 1 < n; ++i) p.ic.push_back(Real(value(random)));
  }
  if (kind == Kind::subbotin) p.ic_type = TARN_DF_IC_SUBGRID;
  return p;
}

template <class Real> std::string describe(const Problem<Real>& p) {
  return std::string(name_of(p.kind)) + (p.uniform ? ", uniform" : "") + ", condition " + std::to_string(p.bc_type) +
         ", n = " + std::to_string(p.nx()) + ", functions " + std::to_string(p.functions);
}

// All kinds under all their conditions on both kinds of partition.
template <class Real, class Body>
void for_each_problem(const std::vector<size_t>& sizes, int64_t functions, Body body) {
  for (Kind kind : all_kinds)
    for (int64_t condition : conditions_of(kind))
      for (bool uniform : {false, true})
        for (size_t n : sizes)
          if (n >= fewest(kind, condition)) body(make_problem<Real>(kind, condition, uniform, n, functions));
}

}
