// What the jump does to a state of any Mersenne generator: a ring of words with a place in it. A work state of the jump is
// laid out like a stream.
#pragma once

#include "random/streams/stream.h"

#include <string.h>

namespace tarn::random {

// State has x[] and index, the place of the oldest word; index is the size of the ring where the ring is used up.
template <class State> struct JumpState {
  static constexpr int kRing = sizeof(State::x) / sizeof(uint32_t);

  struct Work {
    tarn_stream head;
    State state;
  };
  static State& at(void* work) { return static_cast<Work*>(work)->state; }
  static const State& at(const void* work) { return static_cast<const Work*>(work)->state; }

  static void zero(void* work) { at(work) = {}; }

  static void copy_to_work(void* work, const void* stream) { at(work) = at(stream); }

  // Adds the rings word by word in the order of age, each from its own index.
  static void add(void* first, const void* second) {
    State& to = at(first);
    const State& from = at(second);
    int i = to.index % kRing, j = from.index % kRing;
    for (int left = kRing; left > 0;) {
      int run = kRing - (i > j ? i : j);
      if (run > left) run = left;
      for (int k = 0; k < run; k++) to.x[i + k] ^= from.x[j + k];
      left -= run;
      i = i + run == kRing ? 0 : i + run;
      j = j + run == kRing ? 0 : j + run;
    }
  }

  // The ring alone, its oldest word first.
  static void copy_ring_back(State& to, const State& from) {
    const int index = from.index % kRing;
    memcpy(to.x, from.x + index, sizeof(uint32_t) * static_cast<size_t>(kRing - index));
    memcpy(to.x + kRing - index, from.x, sizeof(uint32_t) * static_cast<size_t>(index));
  }
};

}
