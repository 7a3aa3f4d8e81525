// Splines of random pieces, and their values and integrals in extended precision: what evaluators and integrators are
// held against. The pieces need not fit together.
#pragma once

#include <algorithm>
#include <cmath>
#include <random>

#include "fitting/cells/fitting_task.h"

namespace tarn::test {

enum class Spline { Linear, Quadratic, Cubic, Subbotin, SubbotinUneven, SubbotinEven, Sixth, StepLeft, StepRight };
inline constexpr Spline all_splines[] = {Spline::Linear,   Spline::Quadratic,      Spline::Cubic,
                                         Spline::Subbotin, Spline::SubbotinUneven, Spline::SubbotinEven,
                                         Spline::Sixth,    Spline::StepLeft,       Spline::StepRight};

struct Extended { // a value, and the size of what was added up to it
  long double value = 0, size = 0;
  void add(long double term, long double term_size) { value += term, size += term_size; }
};

template <class Real> class RandomSpline {
public:
  RandomSpline(Spline spline, int64_t points, int64_t x_hint, bool wide, int64_t functions, int64_t y_hint = 16)
      : kind(spline), n(points), ny(functions),
        task(partition(points, x_hint), points, x_hint, wide, functions, samples(points, functions, y_hint), y_hint) {
    order = kind == Spline::Linear                                  ? 2
            : kind == Spline::Cubic                                 ? 4
            : kind == Spline::Sixth                                 ? 6
            : kind == Spline::StepLeft || kind == Spline::StepRight ? 0
                                                                    : 3;
    subbotin = kind == Spline::Subbotin || kind == Spline::SubbotinUneven || kind == Spline::SubbotinEven;
    const int64_t type = subbotin ? 1 : kind == Spline::StepLeft ? 8 : kind == Spline::StepRight ? 7 : 0;
    cells = subbotin ? n : n - 1;
    std::mt19937_64 random(41);
    std::uniform_real_distribution<double> unit(-1, 1);
    task.coefficients.resize(static_cast<size_t>(std::max<int64_t>(1, ny * cells * order)));
    for (Real& c : task.coefficients) c = Real(unit(random));
    int64_t ic_type = 0;
    if (kind == Spline::SubbotinUneven) {
      ic_type = 8;
      for (int64_t i = 0; i <= n; ++i)
        ic.push_back(i == 0 ? point(0) : i == n ? point(n - 1) : point(i - 1) + Real(0.3) * (point(i) - point(i - 1)));
    } else if (kind == Spline::SubbotinEven) {
      ic_type = 12;
      ic = {point(0), point(n - 1)};
    }
    task.status = Api<Real>::edit_spline(task, order, type, 0, nullptr, ic_type, ic.empty() ? nullptr : ic.data(),
                                         order == 0 ? nullptr : task.coefficients.data(), 16);
  }

  Real point(int64_t i) const {
    const std::vector<Real>& x = task.x;
    if (task_uniform()) return i == n - 1 ? x[1] : x[0] + Real(i) * ((x[1] - x[0]) / Real(n - 1));
    return x[static_cast<size_t>(i)];
  }
  Real left_end() const { return point(0); }
  Real right_end() const { return point(n - 1); }

  // Sites inside, outside and on points.
  std::vector<Real> sites(int64_t count) const {
    std::mt19937_64 random(17);
    std::uniform_real_distribution<double> unit(-0.1, 1.1);
    std::vector<Real> t;
    for (int64_t s = 0; s < count; ++s) {
      const double at = unit(random);
      t.push_back(s % 10 == 3 ? point(s % n) : Real(left_end() + at * double(right_end() - left_end())));
    }
    return t;
  }

  int64_t cell(Real t) const {
    if (t < left_end()) return 0;
    if (t > right_end()) return n;
    if (t == right_end()) return n - 1;
    if (task_uniform())
      return std::min(n - 1, int64_t(Real(t - task.x[0]) * (Real(n - 1) / (task.x[1] - task.x[0]))) + 1);
    return std::upper_bound(task.x.begin(), task.x.end(), t) - task.x.begin();
  }

  Extended value(int64_t f, Real t, int64_t derivative) const {
    Extended result;
    const int64_t c = cell(t);
    if (order == 0) {
      if (derivative > 0) return result;
      const int64_t i = kind == Spline::StepLeft ? std::max<int64_t>(c - 1, 0) : std::min(c, n - 1);
      result.add(y(f, i), 0);
      return result;
    }
    const int64_t p = piece(c, t);
    const long double u = (long double)t - point(p);
    for (int64_t j = derivative; j < order; ++j) {
      long double factor = coefficient(f, p, j);
      for (int64_t k = 0; k < derivative; ++k) factor *= (long double)(j - k);
      const long double term = factor * std::pow(u, (long double)(j - derivative));
      result.add(term, std::abs(term));
    }
    return result;
  }

  Extended integral(int64_t f, Real a, Real b) const {
    Extended result;
    if (b < a) {
      result = integral(f, b, a);
      result.value = -result.value;
      return result;
    }
    const int64_t first = step_piece(cell(a), a), last = step_piece(cell(b), b);
    for (int64_t p = first; p <= last; ++p) {
      const long double low = p == first ? a : begin(p), high = p == last ? b : begin(p + 1);
      if (order == 0) {
        const long double height = y(f, kind == Spline::StepLeft ? p : p + 1);
        result.add(height * (high - low), std::abs(height) * (std::abs(high) + std::abs(low)));
        continue;
      }
      for (int64_t j = 0; j < order; ++j) {
        const long double c = coefficient(f, p, j) / (long double)(j + 1), power = (long double)(j + 1);
        const long double at_high = c * std::pow(high - point(p), power), at_low = c * std::pow(low - point(p), power);
        result.add(at_high - at_low, std::abs(at_high) + std::abs(at_low));
      }
      // Points of a uniform partition are rounded: they move the piece under the spline's height.
      if (task_uniform()) result.add(0, std::abs(coefficient(f, p, 0)) * std::max(std::abs(low), std::abs(high)) / 4);
    }
    return result;
  }

  Spline kind;
  int64_t n, ny, order, cells;
  bool subbotin;
  std::vector<Real> ic;
  FittingTask<Real> task;

private:
  bool task_uniform() const { return task.x.size() == 2 && n > 2; }

  static std::vector<Real> partition(int64_t points, int64_t x_hint) {
    if (x_hint == 4) return {Real(-1.5), Real(2.25)};
    std::mt19937_64 random(23);
    std::uniform_real_distribution<double> unit(0.1, 1);
    std::vector<Real> x = {Real(-1.5)};
    for (int64_t i = 1; i < points; ++i) x.push_back(x.back() + Real(3.75 * unit(random) / double(points)));
    return x;
  }
  static std::vector<Real> samples(int64_t points, int64_t functions, int64_t y_hint) {
    std::vector<Real> values(static_cast<size_t>(points * functions));
    for (int64_t f = 0; f < functions; ++f)
      for (int64_t i = 0; i < points; ++i)
        values[static_cast<size_t>(y_hint == 32 ? i * functions + f : f * points + i)] =
            Real(std::sin(double(3 * i + f)));
    return values;
  }
  long double y(int64_t f, int64_t i) const { return Real(std::sin(double(3 * i + f))); }
  long double coefficient(int64_t f, int64_t p, int64_t j) const {
    return task.coefficients[static_cast<size_t>((f * cells + p) * order + j)];
  }
  Real knot(int64_t i) const {
    if (i == 0 || i == n) return point(i == 0 ? 0 : n - 1);
    if (kind == Spline::SubbotinUneven) return ic[static_cast<size_t>(i)];
    if (kind == Spline::SubbotinEven) return ic[0] + Real(i) * ((ic[1] - ic[0]) / Real(n));
    return point(i - 1) + Real(0.5) * (point(i) - point(i - 1));
  }
  int64_t piece(int64_t c, Real t) const {
    if (subbotin) return c < 1 ? 0 : c >= n ? n - 1 : t < knot(c) ? c - 1 : c;
    return std::min(std::max<int64_t>(c - 1, 0), n - 2);
  }
  int64_t step_piece(int64_t c, Real t) const { return piece(c, t); }
  Real begin(int64_t p) const { return subbotin ? knot(p) : point(p); }
};

}
