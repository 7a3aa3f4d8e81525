// From the running state to the caller's arrays: factors, derived estimates and matrices in their storages.
#pragma once

#include "stats/basic/inverse_sqrt.h"
#include "stats/basic/request.h"
#include "stats/basic/state.h"
#include "stats/matrix.h"
#include "stats/square_root.h"

namespace tarn::stats {

template <class Real> Real* array_of(const SSTask* task, int estimate) {
  return reals<Real>(task->*estimates[estimate].array);
}
template <class Real> void put(const SSTask* task, const Request& request, int estimate, int64_t j, Real value) {
  if (request.demands(estimate)) array_of<Real>(task, estimate)[j] = value;
}

// From central sums to central moments; order 2 is unbiased for unit weights. Nothing weighed leaves the sums, zeros.
template <class Real> Real central_factor(int order, Real W, Real V) {
  if (W == 0) return 1;
  return order == 2 ? W / (W * W - V) : 1 / W;
}

template <class Real> struct CentralMoments { Real second, third, fourth; };

template <class Real>
void put_derived(const SSTask* task, const Request& request, int64_t j, Real mean, const CentralMoments<Real>& c) {
  put(task, request, estimate_kurtosis, j, c.fourth / (c.second * c.second) - Real(3.0));
  // The cube of the variance would leave the range of a float for deviations of ten millions, or of a ten-millionth.
  put(task, request, estimate_skewness, j, c.third / (c.second * square_root(c.second)));
  put(task, request, estimate_variation, j, square_root(c.second) / mean);
}

// All estimates of variable j that the state holds. Reads before it writes: the state's arrays may be the caller's.
template <class Real>
void put_moments(const SSTask* task, const Request& request, const State<Real>& state, Real W, Real V, int64_t j) {
  Real m[4] = {}, c[3] = {};
  for (int k = 0; k < 4; ++k)
    if (state.raw[k]) m[k] = state.raw[k][j];
  for (int k = 0; k < 3; ++k)
    if (state.central[k]) c[k] = state.central[k][j];

  CentralMoments<Real> central;
  if (request.family == Family::fast) {
    const Real m1 = m[0], c2 = m[1] - m1 * m1;
    const Real c3 = m[2] - 3 * m[1] * m1 + 2 * m1 * m1 * m1;
    const Real c4 = m[3] - 4 * m[2] * m1 + 6 * m[1] * m1 * m1 - 3 * m1 * m1 * m1 * m1;
    c[0] = c2 * W;
    c[1] = c3 * W;
    c[2] = c4 * W;
    central = {W == 0 ? c2 : c2 * (W * W / (W * W - V)), c3, c4};
  } else {
    central = {c[0] * central_factor(2, W, V), c[1] * central_factor(3, W, V), c[2] * central_factor(4, W, V)};
  }
  for (int k = 0; k < 4; ++k) {
    const bool callers_mean = k == 0 && request.family == Family::two_pass;
    if (!callers_mean) put(task, request, estimate_mean + k, j, m[k]);
    put(task, request, estimate_sum + k, j, m[k] * W);
  }
  for (int k = 0; k < 3; ++k) put(task, request, estimate_central_sum_2 + k, j, c[k]);
  put(task, request, estimate_central_moment_2, j, central.second);
  put(task, request, estimate_central_moment_3, j, central.third);
  put(task, request, estimate_central_moment_4, j, central.fourth);
  put_derived(task, request, j, m[0], central);
}

// A conversion: sums become moments where both are demanded, the rest takes the moments as they stand.
template <class Real> void convert_moments(const SSTask* task, const Request& request, Real W, Real V, int64_t j) {
  const auto convert = [&](int sum, int moment, Real factor) {
    if (request.demands(sum) && request.demands(moment))
      array_of<Real>(task, moment)[j] = array_of<Real>(task, sum)[j] * factor;
  };
  for (int k = 0; k < 4; ++k) {
    if (request.demands(estimate_sum + k) && request.demands(estimate_mean + k))
      array_of<Real>(task, estimate_mean + k)[j] = array_of<Real>(task, estimate_sum + k)[j] / W;
  }
  for (int k = 0; k < 3; ++k)
    convert(estimate_central_sum_2 + k, estimate_central_moment_2 + k, central_factor(k + 2, W, V));
  const auto moment = [&](int estimate) { return request.demands(estimate) ? array_of<Real>(task, estimate)[j] : 0; };
  put_derived<Real>(
      task, request, j, moment(estimate_mean),
      {moment(estimate_central_moment_2), moment(estimate_central_moment_3), moment(estimate_central_moment_4)});
}

// ---- Matrices ----

template <class Real> Matrix<Real> matrix_of(const SSTask* task, int estimate, int64_t p) {
  const void* word = estimate == estimate_covariance    ? task->covariance_storage
                     : estimate == estimate_correlation ? task->correlation_storage
                                                        : task->cross_product_storage;
  return {array_of<Real>(task, estimate), matrix_storage(read_integer(task, word)), p};
}

// products: full, its elements (i, j) with j <= i. It may itself be one of the outputs, so the output that overwrites
// it comes last of those that read it. roots: p reals of scratch.
template <class Real>
void put_matrices(const SSTask* task, const Request& request, const Real* products, int64_t p, Real W, Real V,
                  Real* roots) {
  const Real factor = W == 0 ? Real(1) : 1 / (W - V / W);
  const auto each_pair = [&](auto body) {
    for (int64_t i = 0; i < p; ++i) {
      if (!selected(task, i)) continue;
      for (int64_t j = 0; j <= i; ++j)
        if (selected(task, j)) body(i, j, products[i * p + j]);
    }
  };
  if (request.demands(estimate_correlation)) {
    int64_t count = 0; // the roots of the selected variables side by side, then each in its place
    for (int64_t j = 0; j < p; ++j)
      if (selected(task, j)) roots[count++] = products[j * p + j];
    inverse_sqrt(count, roots);
    for (int64_t j = p - 1; j >= 0; --j)
      if (selected(task, j)) roots[j] = roots[--count];
    const Matrix<Real> to = matrix_of<Real>(task, estimate_correlation, p);
    each_pair([&](int64_t i, int64_t j, Real m) { to.set(i, j, i == j ? factor * m : m * roots[i] * roots[j]); });
  }
  if (request.demands(estimate_covariance)) {
    const Matrix<Real> to = matrix_of<Real>(task, estimate_covariance, p);
    each_pair([&](int64_t i, int64_t j, Real m) { to.set(i, j, factor * m); });
  }
  if (request.demands(estimate_cross_product) && !request.convert) {
    const Matrix<Real> to = matrix_of<Real>(task, estimate_cross_product, p);
    each_pair([&](int64_t i, int64_t j, Real m) { to.set(i, j, m); });
  }
}

}
