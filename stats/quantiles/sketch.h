// The sketch of a stream of observations of one variable.
//
// Zhang and Wang, A Fast Algorithm for Approximate Quantiles in High Speed Data Streams, SSDBM 2007: a buffer of b
// observations is sorted and every second entry kept; two such summaries of one level are merged and halved again, as
// a binary counter carries. Every entry has the least and the greatest rank that it can have among the observations
// summarised. Stages of doubled capacity follow one another, so that the length need not be known.
#pragma once

#include "stats/task.h"

namespace tarn::stats {

// A sorted row of entries.
template <class Real> struct SketchRow {
  Real* values;
  int64_t *rank_min, *rank_max;
  int64_t count;
};

// Row 0 is the input buffer, row l above it a summary of 2^(l - 1) full buffers.
template <class Real> struct SketchStage {
  int64_t seen;            // observations taken by this stage
  int64_t block_size;      // b
  int64_t level_count;     // L
  int64_t level_top;       // levels in use
  int64_t buffer_fill;     // entries in row 0
  int64_t* level_occupied; // L + 1 words; the start of the stage's one allocation
  Real* values;            // L + 1 rows of b + 1
  int64_t *rank_min, *rank_max;
};
static_assert(sizeof(SketchStage<double>) == 9 * 8 && sizeof(SketchStage<float>) == 9 * 8);

template <class Real> struct SketchHeader {
  int64_t stage_count;
  int64_t stage_last; // -1 at the start
  int64_t variable_active;
  SketchStage<Real>* stages;
};
static_assert(sizeof(SketchHeader<double>) == 4 * 8);

// Sizes of stage k for a rank error of epsilon.
struct StageSizes {
  int64_t capacity, block_size, level_count;
};
template <class Real> StageSizes stage_sizes(int64_t stage, Real epsilon);

// Opens the next stage. -4000 when memory fails or the stage is beyond what a 32-bit power of two can size; the stages
// are then as they were.
template <class Real> int32_t open_stage(SketchHeader<Real>& header, Real epsilon);

// Takes count observations, step apart, into the last stage, which has room for them.
template <class Real> int32_t add_to_sketch(SketchHeader<Real>& header, const Real* x, int64_t step, int64_t count);

// The values of the given orders over all that the sketch has seen. Nothing is written for an empty sketch.
template <class Real>
int32_t query_sketch(const SketchHeader<Real>& header, const Real* orders, int64_t order_count, Real* out);

template <class Real> void free_stages(SketchHeader<Real>& header);

}
