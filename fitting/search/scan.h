// The searches that know where to start. On an ascending partition each finds the least index whose point lies above
// the site. The first steps go point by point, since the start is near as a rule; from there on the steps double, so
// that a start far off costs a logarithm.
//
// Comparisons are written so that a NaN takes the same branch at every point.
#pragma once

#include <stdint.h>

namespace tarn::fitting {

constexpr int64_t single_steps = 8;

// The least index in [from, to) whose point lies above the site, or `to`.
template <class Real, class Index> Index bisect(const Real* x, Index from, Index to, Real site) {
  while (from < to) {
    const Index middle = from + (to - from) / 2;
    if (x[middle] > site) {
      to = middle;
    } else {
      from = middle + 1;
    }
  }
  return from;
}

// From index `at` up: stops at the first point above the site, or at n.
template <class Real, class Index> Index scan_right(const Real* x, Index n, Index at, Real site) {
  for (Index end = n - at < Index(single_steps) ? n : at + Index(single_steps); at < end; ++at)
    if (x[at] > site) return at;
  for (Index step = single_steps; at < n; step += step) {
    if (step >= n - at) return bisect(x, at, n, site);
    if (x[at + step] > site) return bisect(x, at, Index(at + step), site);
    at += step + 1;
  }
  return n;
}

// From index `at` down: as long as the point before lies above the site.
template <class Real, class Index> Index scan_left(const Real* x, Index at, Real site) {
  for (Index end = at < Index(single_steps) ? 0 : at - Index(single_steps); at > end; --at)
    if (!(x[at - 1] > site)) return at;
  for (Index step = single_steps; at > 0; step += step) {
    if (step >= at) return bisect(x, Index(0), at, site);
    if (!(x[at - 1 - step] > site)) return bisect(x, Index(at - step), at, site);
    at -= step + 1;
  }
  return 0;
}

}
