// The cross-product matrix: p x p by columns, of which the upper triangle is kept (element of rows i <= j at j*p + i).
#pragma once

#include "stats/basic/power_sums.h"

namespace tarn::stats {

// The observations whose products are added: sum over i of w_i (x_i - c) (x_i - c)^T, with c = 0 for a null centre.
template <class Real> struct Products {
  Block<Real> block;
  bool columns;
  const Real* centre;
  bool together; // other threads are at the same work
};

// How many observations a thread handles at a time, so that a block stays in the cache.
template <class Real> int64_t product_block(int64_t p, bool weighted);

// Reals of scratch that add_cross_products needs for blocks of that length.
template <class Real> int64_t product_scratch(int64_t p, bool weighted);

template <class Real> void add_cross_products(const Products<Real>& products, Real* matrix, Real* scratch);

// Adds factor * v v^T. With an infinite or undefined factor or vector the matrix becomes so too.
template <class Real> void add_rank_one(int64_t p, Real factor, const Real* v, Real* matrix);

}
