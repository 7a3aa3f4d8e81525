// Boundary conditions of the local cubic kinds: the derivative at an end from what lies next to it.
//
// The two ends are mirror images: reflecting the axis changes the sign of slopes and derivatives alike, so one formula
// serves both; only the second derivative keeps its sign and therefore enters with opposite ones.
#pragma once

#include "fitting/task.h"

namespace tarn::fitting {

enum Side { left, right };

// An end of the partition. Index 0 is its outermost cell, 1 the next one; the far ones are those of the other end, which
// follow beyond the seam of a periodic function.
template <class Real> struct End {
  bool uniform;
  Real length[2], slope[2], far_length, far_slope[2];
  Real chord, seam; // uniform: the slope over the two outermost cells, and over the outermost one and its far one
  Real next;        // the derivative at the point next to the end
  Real given;       // the value that bc has for this end, 0 when it has none
};

// The columns of the dispatch tables that a boundary code stands for; -1: none.
enum Column { not_a_knot, free_end, both_1st, left_1st_right_2nd, left_2nd_right_1st, both_2nd, periodic, not_set };
constexpr int64_t column_count = 7; // of the global kinds; the local ones also take "not set"

// The columns in which bc has a value for each end.
inline bool has_end_values(int64_t column) { return column >= both_1st && column <= both_2nd; }

inline int64_t column_of(int64_t bc_type) {
  switch (bc_type) {
  case TARN_DF_BC_NOT_A_KNOT: return not_a_knot;
  case TARN_DF_BC_FREE_END: return free_end;
  case TARN_DF_BC_1ST_LEFT + TARN_DF_BC_1ST_RIGHT: return both_1st;
  case TARN_DF_BC_1ST_LEFT + TARN_DF_BC_2ND_RIGHT: return left_1st_right_2nd;
  case TARN_DF_BC_2ND_LEFT + TARN_DF_BC_1ST_RIGHT: return left_2nd_right_1st;
  case TARN_DF_BC_2ND_LEFT + TARN_DF_BC_2ND_RIGHT: return both_2nd;
  case TARN_DF_BC_PERIODIC: return periodic;
  default: return -1;
  }
}

template <class Real> struct Boundary {
  // On a general partition: one cubic over the two outermost cells, were the second derivative continuous between them
  // (C. de Boor, A Practical Guide to Splines, 1978, ch. IV). The uniform form is a rule of its own, not the limit of
  // the general one.
  static Real at_not_a_knot(const End<Real>& e) {
    if (e.uniform) return e.chord - 2 * e.next;
    const Real h0 = e.length[0], h1 = e.length[1], both = h0 + h1;
    return ((h0 * h0 * e.slope[1] + (h0 + 2 * both) * h1 * e.slope[0]) / both - both * e.next) / h1;
  }
  static Real at_free_end(const End<Real>& e) { return Real(1.5) * e.slope[0] - Real(0.5) * e.next; }
  static Real at_1st(const End<Real>& e) { return e.given; }
  template <Side side> static Real at_2nd(const End<Real>& e) {
    const Real bend = Real(0.25) * e.length[0] * e.given;
    const Real straight = Real(1.5) * e.slope[0];
    return (side == left ? straight - bend : straight + bend) - Real(0.5) * e.next;
  }
};

}
