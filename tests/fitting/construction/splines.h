// Splines for the tests: what is asked of a constructor, its coefficients, and what a spline should be, computed in
// long double from the published formulas without a look at the library's.
#pragma once

#include "fitting/api.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace tarn::test {

enum class Kind { linear, standard, subbotin, akima, bessel, hyman, hermite, natural, default_cubic };

inline const char* name_of(Kind kind) {
  static const char* const names[] = {"linear", "standard", "subbotin", "akima",  "bessel",
                                      "hyman",  "hermite",  "natural",  "default"};
  return names[int(kind)];
}

inline int64_t order_of(Kind kind) {
  return kind == Kind::linear ? 2 : kind == Kind::standard || kind == Kind::subbotin ? 3 : 4;
}
inline int64_t type_of(Kind kind) {
  switch (kind) {
  case Kind::subbotin: return TARN_DF_TYPE_SUBBOTIN;
  case Kind::akima: return TARN_DF_TYPE_AKIMA;
  case Kind::bessel: return TARN_DF_TYPE_BESSEL;
  case Kind::hyman: return TARN_DF_TYPE_HYMAN;
  case Kind::hermite: return TARN_DF_TYPE_HERMITE;
  case Kind::natural: return TARN_DF_TYPE_NATURAL;
  default: return TARN_DF_TYPE_DEFAULT;
  }
}
template <class Real> Constructor constructor_of(Kind kind) {
  using A = Api<Real>;
  static constexpr Constructor all[] = {A::linear, A::quadratic, A::quadratic, A::akima,        A::bessel,
                                        A::hyman,  A::hermite,   A::natural,   A::default_cubic};
  return all[int(kind)];
}

// One function and the conditions of its spline; x holds all points of a uniform partition too.
template <class Real> struct Problem {
  Kind kind = Kind::natural;
  bool uniform = false;
  std::vector<Real> x, y; // y: functions one after the other
  int64_t bc_type = 0;
  std::vector<Real> bc;
  int64_t ic_type = 0;
  std::vector<Real> ic;
  int64_t functions = 1;
  int64_t nx() const { return int64_t(x.size()); }
  int64_t cells() const { return kind == Kind::subbotin ? nx() : nx() - 1; }
  int64_t block() const { return cells() * order_of(kind); }
};

// A task for a problem, its values laid out as the hint says.
template <class Real> class Made {
public:
  Made(const Problem<Real>& problem, int64_t storage = TARN_DF_STORAGE_ROWS) : p(problem) {
    const int64_t n = p.nx(), m = p.functions;
    ends = {p.x.front(), p.x.back()};
    values = p.y;
    if (storage == TARN_DF_STORAGE_COLUMNS)
      for (int64_t j = 0; j < m; ++j)
        for (int64_t i = 0; i < n; ++i) values[size_t(i * m + j)] = p.y[size_t(j * n + i)];
    coeff.assign(size_t(p.block() * m), Real(-77));
    using A = Api<Real>;
    made = A::new_task(&task, n, p.uniform ? ends.data() : p.x.data(),
                       p.uniform ? TARN_DF_PARTITION_UNIFORM : TARN_DF_PARTITION_UNKNOWN, m, values.data(), storage, 1);
    if (made) return;
    if (storage == TARN_DF_STORAGE_FIRST_ONLY)
      for (int64_t j = 1; j < m; ++j) A::edit_pointer_at(task, TARN_DF_Y, j, values.data() + j * n);
    // The fields are set one by one, since the editor refuses some of what the constructors have to judge.
    task->splineOrder = order_of(p.kind);
    task->splineType = type_of(p.kind);
    task->bcType = p.bc_type;
    task->bc = p.bc.empty() ? nullptr : p.bc.data();
    task->icType = p.ic_type;
    task->ic = p.ic.empty() ? nullptr : p.ic.data();
    made = A::edit_pointer(task, TARN_DF_COEFF, coeff.data());
  }
  ~Made() {
    if (task) tarn_df_kernel_DeleteTask(&task);
  }
  Made(const Made&) = delete;
  Made& operator=(const Made&) = delete;

  int32_t construct(const tarn_threader* threader = nullptr) {
    return made ? made : constructor_of<Real>(p.kind)(task, 0, 0, threader);
  }
  // Coefficient k of cell i of function j.
  Real operator()(int64_t j, int64_t i, int64_t k) const {
    return coeff[size_t(j * p.block() + i * order_of(p.kind) + k)];
  }
  // The value of the piece, or a derivative of it, at u from the cell's left point.
  long double at(int64_t j, int64_t i, long double u, int derivative = 0) const {
    long double sum = 0;
    for (int64_t k = order_of(p.kind) - 1; k >= derivative; --k) {
      long double factor = 1;
      for (int64_t f = k; f > k - derivative; --f) factor *= static_cast<long double>(f);
      sum = sum * u + factor * static_cast<long double>((*this)(j, i, k));
    }
    return sum;
  }

  Problem<Real> p;
  DFTask* task = nullptr;
  int32_t made = 0;
  std::vector<Real> ends, values, coeff;
};

using Long = long double;
using Longs = std::vector<Long>;

// A x = b by elimination with pivoting; A by rows.
inline Longs solve_dense(std::vector<Longs> a, Longs b) {
  const size_t n = b.size();
  for (size_t c = 0; c < n; ++c) {
    size_t best = c;
    for (size_t r = c; r < n; ++r)
      if (std::fabs(a[r][c]) > std::fabs(a[best][c])) best = r;
    std::swap(a[c], a[best]);
    std::swap(b[c], b[best]);
    for (size_t r = c + 1; r < n; ++r) {
      const Long f = a[r][c] / a[c][c];
      if (f == 0) continue;
      for (size_t k = c; k < n; ++k) a[r][k] -= f * a[c][k];
      b[r] -= f * b[c];
    }
  }
  for (size_t c = n; c-- > 0;) {
    for (size_t k = c + 1; k < n; ++k) b[c] -= a[c][k] * b[k];
    b[c] /= a[c][c];
  }
  return b;
}

struct Reference {
  Kind kind;
  bool uniform;
  Longs x, y, h, m;
  int64_t bc_type;
  Longs bc, ic;
  size_t n;

  template <class Real>
  Reference(const Problem<Real>& p, int64_t j)
      : kind(p.kind), uniform(p.uniform), bc_type(p.bc_type), bc(p.bc.begin(), p.bc.end()),
        ic(p.ic.begin(), p.ic.end()), n(p.x.size()) {
    for (size_t i = 0; i < n; ++i) {
      const Long first = p.x.front(), last = p.x.back();
      x.push_back(p.uniform ? first + (last - first) * Long(i) / Long(n - 1) : Long(p.x[i]));
      y.push_back(p.y[size_t(j) * n + i]);
    }
    for (size_t i = 0; i + 1 < n; ++i) {
      h.push_back(x[i + 1] - x[i]);
      m.push_back((y[i + 1] - y[i]) / h[i]);
    }
  }

  bool left_1st() const { return bc_type & TARN_DF_BC_1ST_LEFT; }
  bool right_1st() const { return bc_type & TARN_DF_BC_1ST_RIGHT; }

  // All coefficients, cell by cell.
  Longs coefficients() const {
    if (kind == Kind::linear) return lines();
    if (kind == Kind::standard) return parabolas();
    if (kind == Kind::subbotin) return subbotin();
    if (kind == Kind::default_cubic) return from_second_derivatives();
    return cubics(kind == Kind::natural ? natural() : local());
  }

  Longs lines() const {
    Longs c;
    for (size_t i = 0; i + 1 < n; ++i) c.insert(c.end(), {y[i], m[i]});
    return c;
  }
  // Value, derivative and curvature follow one after the other: the next derivative is 2 m - d.
  Longs parabolas() const {
    Longs c;
    Long d = (4 * bc[0] - 3 * y[0] - y[1]) / h[0]; // of the parabola through (0, y0), (h/2, bc), (h, y1)
    for (size_t i = 0; i + 1 < n; ++i) {
      c.insert(c.end(), {y[i], d, (m[i] - d) / h[i]});
      d = 2 * m[i] - d;
    }
    return c;
  }
  Longs knots() const {
    Longs t{x[0]};
    for (size_t i = 1; i < n; ++i) t.push_back((x[i - 1] + x[i]) / 2);
    t.push_back(x[n - 1]);
    return t;
  }
  // Unknown derivative and half curvature of every piece; continuity of value and derivative at every inner knot.
  Longs subbotin(Longs t = {}) const {
    if (t.empty()) t = knots();
    std::vector<Longs> a;
    Longs b;
    const auto row = [&](std::vector<std::pair<size_t, Long>> entries, Long rhs) {
      Longs line(2 * n, 0);
      for (auto [column, v] : entries) line[column] += v;
      a.push_back(line);
      b.push_back(rhs);
    };
    for (size_t i = 1; i < n; ++i) {
      const Long u = t[i] - x[i - 1], v = t[i] - x[i];
      row({{2 * (i - 1), u}, {2 * (i - 1) + 1, u * u}, {2 * i, -v}, {2 * i + 1, -v * v}}, y[i] - y[i - 1]);
      row({{2 * (i - 1), 1}, {2 * (i - 1) + 1, 2 * u}, {2 * i, -1}, {2 * i + 1, -2 * v}}, 0);
    }
    left_1st() ? row({{0, 1}}, bc[0]) : row({{1, 2}}, bc[0]);
    right_1st() ? row({{2 * n - 2, 1}}, bc[1]) : row({{2 * n - 1, 2}}, bc[1]);
    const Longs solution = solve_dense(a, b);
    Longs c;
    for (size_t i = 0; i < n; ++i) c.insert(c.end(), {y[i], solution[2 * i], solution[2 * i + 1]});
    return c;
  }
  Longs cubics(const Longs& d) const {
    Longs c;
    for (size_t i = 0; i + 1 < n; ++i)
      c.insert(c.end(),
               {y[i], d[i], (3 * m[i] - 2 * d[i] - d[i + 1]) / h[i], (d[i] + d[i + 1] - 2 * m[i]) / (h[i] * h[i])});
    return c;
  }
  Longs from_second_derivatives() const {
    Longs s(n);
    for (size_t i = 1; i + 1 < n; ++i) s[i] = ic[i - 1];
    const size_t l = n - 1;
    switch (bc_type) {
    case 1: break;
    case 2: // the line through the two next ones, or a parabola throughout
      s[0] = n == 3 ? s[1] : s[1] + (s[1] - s[2]) / h[1] * h[0];
      s[l] = n == 3 ? s[1] : s[l - 1] + (s[l - 1] - s[l - 2]) / h[l - 2] * h[l - 1];
      break;
    case 64: s[0] = s[l] = bc[0]; break;
    default:
      s[0] = left_1st() ? 6 / (2 * h[0]) * (m[0] - bc[0] - s[1] * h[0] / 6) : bc[0];
      s[l] = right_1st() ? 6 / (2 * h[l - 1]) * (bc[1] - m[l - 1] - s[l - 1] * h[l - 1] / 6) : bc[1];
    }
    Longs c;
    for (size_t i = 0; i + 1 < n; ++i)
      c.insert(c.end(), {y[i], m[i] - h[i] * (2 * s[i] + s[i + 1]) / 6, s[i] / 2, (s[i + 1] - s[i]) / (6 * h[i])});
    return c;
  }
  // Second derivatives at the two sides of each inner point are equal; conditions at the ends.
  Longs natural() const {
    std::vector<Longs> a(n, Longs(n, 0));
    Longs b(n, 0);
    for (size_t i = 1; i + 1 < n; ++i) {
      a[i][i - 1] = 1 / h[i - 1];
      a[i][i] = 2 / h[i - 1] + 2 / h[i];
      a[i][i + 1] = 1 / h[i];
      b[i] = 3 * m[i - 1] / h[i - 1] + 3 * m[i] / h[i];
    }
    const size_t l = n - 1;
    if (bc_type == 64) {
      a[0][0] = 2 / h[0] + 2 / h[l - 1], a[0][1] += 1 / h[0], a[0][l - 1] += 1 / h[l - 1];
      b[0] = 3 * m[0] / h[0] + 3 * m[l - 1] / h[l - 1];
      a[l][l] = 1, a[l][0] = -1;
    } else if (bc_type == 2 && uniform) { // the stated rule
      a[0][0] = 1, a[0][1] = 2, b[0] = (y[2] - y[0]) / (2 * h[0]);
      a[l][l] = 1, a[l][l - 1] = 2, b[l] = (y[l] - y[l - 2]) / (2 * h[0]);
    } else if (bc_type == 2) { // third derivatives of the outermost two cells are equal
      const auto third = [&](size_t r, size_t i, Long sign) {
        const Long f = sign / (h[i] * h[i]);
        a[r][i] += f, a[r][i + 1] += f, b[r] += 2 * m[i] * f;
      };
      third(0, 0, 1), third(0, 1, -1), third(l, l - 2, 1), third(l, l - 1, -1);
    } else {
      const Long left = bc_type == 1 ? 0 : bc[0], right = bc_type == 1 ? 0 : bc[1];
      if (left_1st()) {
        a[0][0] = 1, b[0] = left;
      } else { // S'' at the left end
        a[0][0] = -4 / h[0], a[0][1] = -2 / h[0], b[0] = left - 6 * m[0] / h[0];
      }
      if (right_1st()) {
        a[l][l] = 1, b[l] = right;
      } else {
        a[l][l] = 4 / h[l - 1], a[l][l - 1] = 2 / h[l - 1], b[l] = right + 6 * m[l - 1] / h[l - 1];
      }
    }
    return solve_dense(a, b);
  }

  static Long akima_rule(Long m1, Long m2, Long m3, Long m4) {
    const Long w1 = std::fabs(m4 - m3), w2 = std::fabs(m2 - m1);
    return w1 + w2 < 1e-10L ? (m2 + m3) / 2 : (w1 * m2 + w2 * m3) / (w1 + w2);
  }
  Long three_point(size_t before, size_t after) const {
    return (h[before] * m[after] + h[after] * m[before]) / (h[before] + h[after]);
  }
  Longs local() const {
    const size_t l = n - 1;
    Longs d(n, 0);
    if (kind == Kind::akima) {
      Longs s{0, 0}; // slopes with two more at either side
      s.insert(s.end(), m.begin(), m.end());
      s.insert(s.end(), 2, 0);
      const size_t k = s.size();
      if (bc_type == 64) {
        s[1] = m[l - 1], s[0] = m[l - 2], s[k - 2] = m[0], s[k - 1] = m[1];
      } else {
        s[1] = 2 * s[2] - s[3], s[0] = 2 * s[1] - s[2];
        s[k - 2] = 2 * s[k - 3] - s[k - 4], s[k - 1] = 2 * s[k - 2] - s[k - 3];
      }
      for (size_t i = 0; i < n; ++i) d[i] = akima_rule(s[i], s[i + 1], s[i + 2], s[i + 3]);
    } else {
      for (size_t i = 1; i < l; ++i) {
        d[i] = kind == Kind::hermite ? ic[i - 1] : three_point(i - 1, i);
        if (kind == Kind::hyman) {
          const Long bound = 3 * std::fmin(std::fabs(m[i - 1]), std::fabs(m[i]));
          d[i] = m[i - 1] * m[i] > 0 ? std::copysign(std::fmin(std::fabs(d[i]), bound), d[i]) : 0;
        }
      }
      d[0] = m[0], d[l] = m[l - 1]; // nothing set
      if (bc_type == 64) d[0] = d[l] = kind == Kind::hermite ? bc[0] : three_point(l - 1, 0);
    }
    switch (bc_type) {
    case 0:
    case 64: break;
    case 1: d[0] = (3 * m[0] - d[1]) / 2, d[l] = (3 * m[l - 1] - d[l - 1]) / 2; break;
    case 2:
      if (uniform) {
        d[0] = (y[2] - y[0]) / (2 * h[0]) - 2 * d[1], d[l] = (y[l] - y[l - 2]) / (2 * h[0]) - 2 * d[l - 1];
      } else { // the cubic of cell 0 goes on in cell 1, were it twice differentiable in between
        d[0] = not_a_knot(h[0], h[1], m[0], m[1], d[1]);
        d[l] = not_a_knot(h[l - 1], h[l - 2], m[l - 1], m[l - 2], d[l - 1]);
      }
      break;
    default: // S'' = (6 m - 4 d - 2 d') / h at the left, its negative mirrored at the right
      d[0] = left_1st() ? bc[0] : (6 * m[0] - 2 * d[1] - bc[0] * h[0]) / 4;
      d[l] = right_1st() ? bc[1] : (6 * m[l - 1] - 2 * d[l - 1] + bc[1] * h[l - 1]) / 4;
    }
    return d;
  }
  static Long not_a_knot(Long h0, Long h1, Long m0, Long m1, Long d1) {
    return ((h0 * h0 * m1 + (3 * h0 + 2 * h1) * h1 * m0) / (h0 + h1) - (h0 + h1) * d1) / h1;
  }
};

}
