#include "stats/quantiles/sketch.h"

#include "stats/quantiles/natural_log.h"
#include "stats/quantiles/variables.h"

namespace tarn::stats {
namespace {

template <class Real> SketchRow<Real> row_of(const SketchStage<Real>& stage, int64_t level, int64_t count) {
  const int64_t at = level * (stage.block_size + 1);
  return {stage.values + at, stage.rank_min + at, stage.rank_max + at, count};
}

// Entries that a full row keeps: 0, 2, 4, ...
inline int64_t kept_of(int64_t count) { return (count + 1) / 2; }

template <class Real> void put(SketchRow<Real>& to, Real value, int64_t rank_min, int64_t rank_max) {
  to.values[to.count] = value;
  to.rank_min[to.count] = rank_min;
  to.rank_max[to.count] = rank_max;
  ++to.count;
}

template <class Real> void compress(const SketchRow<Real>& from, SketchRow<Real>& to) {
  to.count = 0;
  for (int64_t i = 0; i < from.count; i += 2) put(to, from.values[i], from.rank_min[i], from.rank_max[i]);
}

// Merges two rows; older goes first on a tie. An entry's ranks grow by the least rank of the last entry taken from the
// other row and by the greatest rank that the next entry there leaves open.
template <class Real> void merge(const SketchRow<Real>& older, const SketchRow<Real>& newer, SketchRow<Real>& to) {
  int64_t i = 0, j = 0;
  to.count = 0;
  const auto take = [&](const SketchRow<Real>& own, int64_t at, const SketchRow<Real>& other, int64_t next) {
    const int64_t below = next > 0 ? other.rank_min[next - 1] : 0;
    const int64_t above = next < other.count ? other.rank_max[next] - 1
                          : other.count > 0  ? other.rank_max[other.count - 1]
                                             : 0;
    put(to, own.values[at], own.rank_min[at] + below, own.rank_max[at] + above);
  };
  while (i < older.count || j < newer.count) {
    const bool from_newer = i == older.count || (j < newer.count && newer.values[j] < older.values[i]);
    if (from_newer) {
      take(newer, j, older, i);
      ++j;
    } else {
      take(older, i, newer, j);
      ++i;
    }
  }
}

// A full buffer goes up: compressed, then merged and compressed again at each level that holds a summary.
template <class Real> int32_t carry(SketchStage<Real>& stage) {
  const int64_t b = stage.block_size, room = b + 1;
  char* memory = allocate<char>((24 * b + 24) * (stage.level_count + 1));
  if (!memory) return TARN_SS_ERROR_ALLOCATION;
  int64_t* ranks = reinterpret_cast<int64_t*>(memory);
  SketchRow<Real> carried = {reinterpret_cast<Real*>(ranks + 4 * room), ranks, ranks + room, 0};
  SketchRow<Real> merged = {carried.values + room, ranks + 2 * room, ranks + 3 * room, 0};
  compress(row_of(stage, 0, b), carried);
  int64_t level = 1;
  for (; level < stage.level_count && stage.level_occupied[level]; ++level) {
    merge(row_of(stage, level, kept_of(b)), carried, merged);
    stage.level_occupied[level] = 0;
    compress(merged, carried);
  }
  SketchRow<Real> to = row_of(stage, level, 0);
  for (int64_t i = 0; i < carried.count; ++i) put(to, carried.values[i], carried.rank_min[i], carried.rank_max[i]);
  stage.level_occupied[level] = 1;
  stage.level_top = maximum(stage.level_top, level);
  stage.buffer_fill = 0;
  tarn_serv_deallocate(memory);
  return TARN_SS_OK;
}

// Without memory for the radix sort the buffer is sorted all the same.
template <class Real> void sort_buffer(Real* values, int64_t count) {
  Real* scratch = allocate<Real>(count);
  if (scratch) {
    sort_reals(values, scratch, count);
  } else {
    quicksort(Strided<Real, 1>{values, 1}, count);
  }
  tarn_serv_deallocate(scratch);
}

// 2^exponent as a 32-bit integer, the shift taken modulo 32.
inline int32_t power_of_two(int64_t exponent) { return static_cast<int32_t>(1u << (exponent & 31)); }

}

template <class Real> StageSizes stage_sizes(int64_t stage, Real epsilon) {
  // Rounded to the precision of epsilon, so that 0.01 in float counts as a hundredth.
  const double e = double(1 / epsilon);
  const auto end_of = [&](int64_t exponent) {
    return static_cast<int64_t>((double(power_of_two(exponent)) - 1) * e); // beyond stage 28 the power has wrapped
  };
  StageSizes sizes = {end_of(stage + 2) - end_of(stage + 1), 0, 0};
  if (sizes.capacity < 1) return sizes;
  const double g = natural_log(double(Real(sizes.capacity) * epsilon)) * 1.4426950408889634;
  sizes.block_size = maximum(1, static_cast<int64_t>(e * g)); // an epsilon just below 1 would ask for none
  sizes.level_count = static_cast<int64_t>(g + 2.0);
  return sizes;
}

template <class Real> int32_t open_stage(SketchHeader<Real>& header, Real epsilon) {
  const StageSizes sizes = stage_sizes(header.stage_count, epsilon);
  const int64_t b = sizes.block_size, rows = sizes.level_count + 1;
  if (sizes.capacity < 1) return TARN_SS_ERROR_ALLOCATION;
  int64_t bytes = 0;
  if (__builtin_mul_overflow((8 * b + 8) * 3, rows, &bytes)) return TARN_SS_ERROR_ALLOCATION;
  SketchStage<Real>* stages = allocate<SketchStage<Real>>(header.stage_count + 1);
  int64_t* words = reinterpret_cast<int64_t*>(allocate<char>(bytes + 8 * rows));
  if (!stages || !words) {
    tarn_serv_deallocate(stages);
    tarn_serv_deallocate(words);
    return TARN_SS_ERROR_ALLOCATION;
  }
  for (int64_t k = 0; k < header.stage_count; ++k) stages[k] = header.stages[k];
  for (int64_t level = 0; level < rows; ++level) words[level] = 0;
  int64_t* ranks = words + rows;
  const int64_t entries = rows * (b + 1);
  stages[header.stage_count] = {
      0, b, sizes.level_count, 0, 0, words, reinterpret_cast<Real*>(ranks + 2 * entries), ranks, ranks + entries};
  tarn_serv_deallocate(header.stages);
  header.stages = stages;
  header.stage_last = header.stage_count++;
  return TARN_SS_OK;
}

template <class Real> int32_t add_to_sketch(SketchHeader<Real>& header, const Real* x, int64_t step, int64_t count) {
  SketchStage<Real>& stage = header.stages[header.stage_last];
  const int64_t b = stage.block_size;
  while (count > 0) {
    const int64_t fill = stage.buffer_fill, taken = minimum(count, b - fill);
    const SketchRow<Real> buffer = row_of(stage, 0, fill);
    for (int64_t i = 0; i < taken; ++i) {
      buffer.values[fill + i] = x[i * step];
      buffer.rank_min[fill + i] = buffer.rank_max[fill + i] = fill + i + 1;
    }
    sort_buffer(buffer.values, fill + taken);
    stage.buffer_fill = fill + taken;
    stage.seen += taken;
    x += taken * step;
    count -= taken;
    if (stage.buffer_fill < b) return TARN_SS_OK;
    const int32_t status = carry(stage);
    if (status != TARN_SS_OK) return status;
  }
  return TARN_SS_OK;
}

template <class Real>
int32_t query_sketch(const SketchHeader<Real>& header, const Real* orders, int64_t order_count, Real* out) {
  int64_t entries = 0, seen = 0;
  const auto each_row = [&](auto body) {
    for (int64_t k = 0; k < header.stage_count; ++k) {
      const SketchStage<Real>& stage = header.stages[k];
      body(row_of(stage, 0, stage.buffer_fill));
      for (int64_t level = 1; level <= stage.level_top; ++level)
        if (stage.level_occupied[level]) body(row_of(stage, level, kept_of(stage.block_size)));
    }
  };
  each_row([&](const SketchRow<Real>& row) { entries += row.count; });
  for (int64_t k = 0; k < header.stage_count; ++k) seen += header.stages[k].seen;
  if (entries == 0) return TARN_SS_OK;

  // Two rows of all entries, merged into in turn.
  int64_t* memory = allocate<int64_t>(6 * entries);
  if (!memory) return TARN_SS_ERROR_ALLOCATION;
  Real* values = reinterpret_cast<Real*>(memory + 4 * entries);
  SketchRow<Real> all = {values, memory, memory + entries, 0};
  SketchRow<Real> next = {values + entries, memory + 2 * entries, memory + 3 * entries, 0};
  each_row([&](const SketchRow<Real>& row) {
    merge(all, row, next);
    const SketchRow<Real> kept = all;
    all = next;
    next = kept;
  });
  for (int64_t k = 0; k < order_count; ++k) {
    const double target = double(seen) * double(orders[k]);
    int64_t least = 2 * seen, best = 0;
    for (int64_t i = 0; i < all.count; ++i) {
      const double off = double(all.rank_min[i] + all.rank_max[i]) * 0.5 - target;
      const int64_t distance = static_cast<int64_t>(off < 0 ? -off : off);
      if (distance < least) {
        least = distance;
        best = i;
      }
    }
    out[k] = all.values[best];
  }
  tarn_serv_deallocate(memory);
  return TARN_SS_OK;
}

template <class Real> void free_stages(SketchHeader<Real>& header) {
  for (int64_t k = 0; k < header.stage_count; ++k) tarn_serv_deallocate(header.stages[k].level_occupied);
  tarn_serv_deallocate(header.stages);
}

#define TARN_INSTANTIATE(Real)                                                                                         \
  template StageSizes stage_sizes<Real>(int64_t, Real);                                                                \
  template int32_t open_stage<Real>(SketchHeader<Real>&, Real);                                                        \
  template int32_t add_to_sketch<Real>(SketchHeader<Real>&, const Real*, int64_t, int64_t);                            \
  template int32_t query_sketch<Real>(const SketchHeader<Real>&, const Real*, int64_t, Real*);                         \
  template void free_stages<Real>(SketchHeader<Real>&);
TARN_INSTANTIATE(double)
TARN_INSTANTIATE(float)

}
