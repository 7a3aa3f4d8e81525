// The cubic kinds whose derivative at a point follows from a few neighbours: Akima, Bessel, Hyman and Hermite, one pass
// over the partition in blocks that stay in the first-level cache.
#pragma once

#include "fitting/splines/boundaries.h"
#include "fitting/splines/grid.h"
#include "fitting/splines/threading.h"

namespace tarn::fitting {

constexpr int64_t block_cells = 256; // worked through at once
constexpr int64_t threaded_values = 512, item_cells = 2048, item_functions = 4;

// Reciprocals of cell lengths come from one division for two vectors of cells, whose first cell has an index that such
// a group divides. A cell thus has the same reciprocal in whichever block it is read; so blocks begin between groups,
// and reach one group to either side, which is more than the two cells that their derivatives read.
template <class Real> constexpr int64_t group_cells = 2 * lanes<Vector<Real>, Real>;

// What is known around a block of cells of one function: values, cell lengths, slopes, derivatives, asked for by the
// index of their cell or point in the partition. Reaches a group to either side, as far as the partition goes.
template <class Real> struct Block {
  static constexpr int64_t room = block_cells + 2 * group_cells<Real> + 4; // vectors may begin inside and end beyond
  alignas(16) Real value[room], inverse[room], slope[room], derivative[room];
};

template <class Real, bool uniform> struct Window {
  Block<Real>* block;
  int64_t origin;      // the cell or point at index 0 of the block
  const Real* values;  // the function's own, or gathered in the block
  int64_t values_from; // the point of values[0]
  const Real* given;   // derivatives at the inner points, of the Hermite kind
  Grid<Real, uniform> grid;

  template <class V> V value(int64_t i) const { return load<V>(values + (i - values_from)); }
  template <class V> V slope(int64_t i) const { return load<V>(block->slope + (i - origin)); }
  template <class V> V derivative(int64_t i) const { return load<V>(block->derivative + (i - origin)); }
  template <class V> V length(int64_t i) const { return grid.template length<V>(i); }
  template <class V> V inverse(int64_t i) const {
    return uniform ? grid.template inverse<V>(i) : load<V>(block->inverse + (i - origin));
  }
  template <class V> void set_derivative(int64_t i, V v) const { store(block->derivative + (i - origin), v); }
  // (y[i+1] - y[i-1]) / (2 h) on a uniform partition
  template <class V> V central_difference(int64_t i) const {
    return (value<V>(i + 1) - value<V>(i - 1)) * broadcast<V>(Real(0.5)) * inverse<V>(i);
  }
  template <class V> void set_inverse(int64_t i, V v) const { store(block->inverse + (i - origin), v); }
  template <class V> void set_slope(int64_t i, V v) const { store(block->slope + (i - origin), v); }
};

// 1 / a and 1 / b of pairs of lengths, with a watch on products so far from 1 that they or their reciprocals near the
// ends of the range: where one was met, the pairs are to be divided again, each length of such a pair on its own.
template <class V> struct Reciprocals { V of_a, of_b; };
template <class Real, class V> struct Division {
  static constexpr Real far = sizeof(Real) == 8 ? Real(0x1p1000) : Real(0x1p120);
  V farthest = {};
  Reciprocals<V> of_pair(V a, V b) {
    const V product = a * b, reciprocal = broadcast<V>(Real(1)) / product;
    farthest = larger(larger(product, reciprocal), farthest);
    return {reciprocal * b, reciprocal * a};
  }
  bool failed() const { return any(farthest > broadcast<V>(far)); }
  static Reciprocals<V> of_far_pair(V a, V b) {
    Division pair;
    const Reciprocals<V> shared = pair.of_pair(a, b);
    const V one = broadcast<V>(Real(1));
    const auto beyond = pair.farthest > broadcast<V>(far);
    return {select(beyond, one / a, shared.of_a), select(beyond, one / b, shared.of_b)};
  }
};

// The derivative at the middle one of three points, of the parabola through them.
template <class V> V parabola(V left_length, V left_slope, V right_length, V right_slope) {
  return (left_length * right_slope + right_length * left_slope) / (left_length + right_length);
}

// H. Akima, "A new method of interpolation and smooth curve fitting based on local procedures", J. ACM 17 (1970).
struct Akima {
  static constexpr int64_t min_points = 5;
  static constexpr bool takes_derivatives = false;
  template <class Real, class V> static V rule(V before_left, V left_slope, V right_slope, V after_right) {
    const V left_weight = magnitude(after_right - right_slope), right_weight = magnitude(left_slope - before_left);
    V sum = left_weight + right_weight, weighted = left_weight * left_slope + right_weight * right_slope;
    const auto flat = sum < broadcast<V>(Real(1e-10));
    if (any(flat)) { // seldom
      weighted = select(flat, left_slope + right_slope, weighted);
      sum = select(flat, broadcast<V>(Real(2)), sum);
    }
    return weighted / sum;
  }
  template <class V, class Real, bool uniform> static V derivative(const Window<Real, uniform>& at, int64_t i) {
    return rule<Real>(at.template slope<V>(i - 2), at.template slope<V>(i - 1), at.template slope<V>(i),
                      at.template slope<V>(i + 1));
  }
  // With the slopes extended linearly beyond the end, the rule gives this.
  template <class Real> static Real at_not_set(const End<Real>& e) { return (3 * e.slope[0] - e.slope[1]) / 2; }
  template <class Real> static Real at_seam(const End<Real>& e, Side side) {
    return side == left ? rule<Real>(e.far_slope[1], e.far_slope[0], e.slope[0], e.slope[1])
                        : rule<Real>(e.slope[1], e.slope[0], e.far_slope[0], e.far_slope[1]);
  }
};

// The three-point rule, which also bears Bessel's name: C. de Boor, A Practical Guide to Splines (1978), ch. IV.
struct Bessel {
  static constexpr int64_t min_points = 4;
  static constexpr bool takes_derivatives = false;
  template <class V, class Real, bool uniform> static V derivative(const Window<Real, uniform>& at, int64_t i) {
    if constexpr (uniform) {
      return at.template central_difference<V>(i);
    } else {
      return parabola(at.template length<V>(i - 1), at.template slope<V>(i - 1), at.template length<V>(i),
                      at.template slope<V>(i));
    }
  }
  // Nothing is known of the other side: the slope of the end's cell.
  template <class Real> static Real at_not_set(const End<Real>& e) { return e.slope[0]; }
  template <class Real> static Real at_seam(const End<Real>& e, Side side) {
    if (e.uniform) return e.seam;
    return side == left ? parabola(e.far_length, e.far_slope[0], e.length[0], e.slope[0])
                        : parabola(e.length[0], e.slope[0], e.far_length, e.far_slope[0]);
  }
};

// The three-point rule held within bounds that keep monotone data monotone: J. M. Hyman, "Accurate monotonicity
// preserving cubic interpolation", SIAM J. Sci. Stat. Comput. 4 (1983).
struct Hyman : Bessel {
  template <class V, class Real, bool uniform> static V derivative(const Window<Real, uniform>& at, int64_t i) {
    const V left_slope = at.template slope<V>(i - 1), right_slope = at.template slope<V>(i);
    const V three = broadcast<V>(Real(3)), low = smaller(left_slope, right_slope),
            high = larger(left_slope, right_slope);
    // Of rising data 0 to three times the lesser slope, of falling data likewise; at an extreme nothing but 0 remains.
    const V most = larger(three * low, V{}), least = smaller(three * high, V{});
    return smaller(larger(Bessel::derivative<V>(at, i), least), most);
  }
};

// Derivatives at the inner points come from the caller.
struct Hermite {
  static constexpr int64_t min_points = 3;
  static constexpr bool takes_derivatives = true;
  template <class V, class Real, bool uniform> static V derivative(const Window<Real, uniform>& at, int64_t i) {
    return load<V>(at.given + (i - 1));
  }
  template <class Real> static Real at_not_set(const End<Real>& e) { return e.slope[0]; }
  template <class Real> static Real at_seam(const End<Real>& e, Side) { return e.given; }
};

// One routine of a boundary table: the derivative at its end.
template <class Real> using EndRoutine = Real (*)(const End<Real>&);

// What a call does at the two ends.
template <class Real> struct LocalEnds {
  int64_t column;
  EndRoutine<Real> at_left, at_right;
};

// A call on a task: what is common to all its blocks.
template <class Kind, class Real, bool interleaved, bool uniform> struct LocalCubic {
  LocalCubic(const DFTask* of, const LocalEnds<Real>& how) : task(of), grid(of), n(of->nx), ends(how) {}

  // Cells first to end - 1 of function j.
  void write(int64_t j, int64_t first, int64_t end, Block<Real>* block) const {
    for (int64_t from = first; from < end; from += block_cells)
      write_block(j, from, minimum(from + block_cells, end), block);
  }

  using Around = Window<Real, uniform>;
  const DFTask* task;
  Grid<Real, uniform> grid;
  int64_t n;
  LocalEnds<Real> ends;

  void write_block(int64_t j, int64_t first, int64_t end, Block<Real>* block) const {
    const Values<Real, interleaved> y(task, j);
    constexpr int64_t group = group_cells<Real>;
    const int64_t low = maximum(first - group, 0), high = minimum(end + group, n - 1); // cells that are read
    Around at = {block, first - group, y.base, 0, reals<Real>(task->ic), grid};
    if constexpr (interleaved) {
      at.values = block->value;
      at.values_from = low;
      for (int64_t i = low; i <= high; ++i) block->value[i - low] = y[i];
    }
    find_slopes(at, low, high);
    if (low == 0) extend_slopes(at, y, left);
    if (high == n - 1) extend_slopes(at, y, right);
    for_lanes<Real>(maximum(first, 1), minimum(end, n - 2) + 1, [&](auto lane, int64_t i) {
      at.set_derivative(i, Kind::template derivative<decltype(lane)>(at, i));
    });
    if (first == 0) at.set_derivative(0, ends.at_left(end_of(at, y, left)));
    if (end == n - 1) at.set_derivative(n - 1, ends.at_right(end_of(at, y, right)));
    Real* cells = coefficients<Real>(task, j);
    for_lanes<Real>(first, end, [&](auto lane, int64_t i) {
      using V = decltype(lane);
      write_cubic(cells + i * TARN_DF_ORDER_CUBIC, at.template value<V>(i), at.template slope<V>(i),
                  at.template inverse<V>(i), at.template derivative<V>(i), at.template derivative<V>(i + 1));
    });
  }

  void find_slopes(const Around& at, int64_t low, int64_t high) const {
    if constexpr (uniform) {
      for_lanes<Real>(low, high, [at](auto lane, int64_t i) {
        using V = decltype(lane);
        set_slope(at, i, at.template inverse<V>(i));
      });
    } else { // in groups; the cells at the end of the partition that fill none are divided one by one
      using V = Vector<Real>;
      constexpr int64_t group = group_cells<Real>, half = group / 2;
      const int64_t end = low + (high - low) / group * group;
      const auto divide = [&](auto reciprocals) {
        for (int64_t i = low; i < end; i += group) {
          const auto inverse = reciprocals(at.template length<V>(i), at.template length<V>(i + half));
          set_slope(at, i, inverse.of_a);
          set_slope(at, i + half, inverse.of_b);
        }
      };
      Division<Real, V> division;
      divide([&](V a, V b) { return division.of_pair(a, b); });
      if (division.failed()) divide([](V a, V b) { return Division<Real, V>::of_far_pair(a, b); });
      for (int64_t i = end; i < high; ++i) set_slope(at, i, grid.template inverse<Real>(i));
    }
  }

  template <class V> static void set_slope(const Around& at, int64_t i, V inverse) {
    if constexpr (!uniform) at.set_inverse(i, inverse);
    at.set_slope(i, (at.template value<V>(i + 1) - at.template value<V>(i)) * inverse);
  }

  // The same for a single cell.
  Real inverse(int64_t i) const {
    constexpr int64_t group = group_cells<Real>;
    if (uniform || i / group * group + group > n - 1) return grid.template inverse<Real>(i);
    return Division<Real, Real>::of_far_pair(grid.template length<Real>(i), grid.template length<Real>(i ^ group / 2))
        .of_a;
  }

  Real slope(const Values<Real, interleaved>& y, int64_t i) const { return (y[i + 1] - y[i]) * inverse(i); }

  // One slope more beyond each end, for the points next to the ends: on the line through the two outermost ones, or
  // that of the other end of a period.
  void extend_slopes(const Around& at, const Values<Real, interleaved>& y, Side side) const {
    const int64_t beyond = side == left ? -1 : n - 1, outermost = side == left ? 0 : n - 2;
    const int64_t second = side == left ? 1 : n - 3, far = side == left ? n - 2 : 0;
    at.set_slope(beyond, ends.column == periodic
                             ? slope(y, far)
                             : 2 * at.template slope<Real>(outermost) - at.template slope<Real>(second));
  }

  // The cells beyond the seam lie outside the block.
  End<Real> end_of(const Around& at, const Values<Real, interleaved>& y, Side side) const {
    const int64_t outermost = side == left ? 0 : n - 2, second = side == left ? 1 : n - 3;
    const int64_t far = side == left ? n - 2 : 0, far_second = side == left ? n - 3 : 1;
    End<Real> end = {};
    end.uniform = uniform;
    end.length[0] = at.template length<Real>(outermost);
    end.length[1] = at.template length<Real>(second);
    end.slope[0] = at.template slope<Real>(outermost);
    end.slope[1] = at.template slope<Real>(second);
    end.far_length = grid.template length<Real>(far);
    end.far_slope[0] = slope(y, far);
    end.far_slope[1] = slope(y, far_second);
    const Real half = Real(0.5) * grid.template inverse<Real>(0);
    end.chord = (side == left ? y[2] - y[0] : y[n - 1] - y[n - 3]) * half;
    end.seam = (y[1] - y[0] + y[n - 1] - y[n - 2]) * half;
    end.next = at.template derivative<Real>(side == left ? 1 : n - 2);
    const Real* bc = reals<Real>(task->bc);
    if (ends.column == periodic) {
      end.given = bc ? bc[0] : 0;
    } else if (has_end_values(ends.column)) {
      end.given = bc[side == left ? 0 : 1];
    }
    return end;
  }
};

// The work of a call in items; each thread has a block of its own.
template <class Real> struct LocalWork {
  const DFTask* task;
  LocalEnds<Real> ends;
  Items items;
  Block<Real>* blocks;
};

template <class Kind, class Real, bool interleaved, bool uniform>
void write_item(const LocalWork<Real>& work, int64_t number, int32_t thread) {
  const LocalCubic<Kind, Real, interleaved, uniform> spline(work.task, work.ends);
  const Item item = work.items[number];
  for (int64_t j = item.first_function; j < item.end_function; ++j)
    spline.write(j, item.first_cell, item.end_cell, work.blocks + thread);
}

// Small tasks are not shared; one thread alone works on its stack.
template <class Kind, class Real, bool interleaved, bool uniform>
int32_t local_cubic(const DFTask* task, const LocalEnds<Real>& ends, const tarn_threader* threader,
                    tarn_loop_body body) {
  const int64_t n = task->nx, functions = function_count(task);
  if (n < divided_up(threaded_values, functions)) {
    const LocalCubic<Kind, Real, interleaved, uniform> spline(task, ends);
    Block<Real> block;
    for (int64_t j = 0; j < functions; ++j) spline.write(j, 0, n - 1, &block);
    return TARN_DF_OK;
  }
  // The boundary's own cells do not count when blocks are cut.
  const int64_t cell_blocks = maximum(divided_up(n - Kind::min_points, item_cells), 1);
  const int64_t groups = divided_up(functions, item_functions);
  const Items items = {n - 1, functions, cell_blocks, groups, item_cells, item_functions};
  const int64_t threads = threads_for(threader, items.count());
  Block<Real> own;
  LocalWork<Real> work = {task, ends, items, threads == 1 ? &own : allocate<Block<Real>>(threads)};
  if (!work.blocks) return TARN_DF_ERROR_ALLOCATION;
  run_loop(threader, items.count(), threads, &work, body);
  if (work.blocks != &own) tarn_serv_deallocate(work.blocks);
  return TARN_DF_OK;
}

}
