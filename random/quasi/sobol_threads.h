// One call of the Sobol generator spread over the caller's threads: each task makes all the points of 32 coordinates.
#pragma once

#include "random/quasi/points.h"

#include "tarn/threader.h"

namespace tarn::random {

constexpr int64_t kGroup = 32; // coordinates of a task

// Whether a call of `count` points is worth threads: the more coordinates, the fewer points it takes.
bool worth_threads(int64_t dimen, int64_t count);

using ThreadLimit = int32_t (*)();
using ThreadFor = void (*)(int64_t count, int32_t thread_count, void* context, tarn_loop_body body);

template <class Map> struct GroupTask {
  Points points;
  int64_t at, count;
  const Map* map;

  // x is read and written by groups, so that tasks touch disjoint words; index is a private copy.
  static void run(int64_t group, int32_t, int32_t, void* context) {
    const GroupTask& task = *static_cast<const GroupTask*>(context);
    const int64_t dimen = task.points.state->dimen, first = group * kGroup;
    uint32_t index = task.points.state->index;
    if (dimen - first >= kGroup) {
      coordinates_in_registers<kGroup / 4>(task.points, index, first, kGroup - 4, task.at, task.count, *task.map);
      return;
    }
    uint32_t* x = task.points.x + first;
    int64_t to = task.at + first;
    for (int64_t k = 0; k < task.count; k++, to += dimen) {
      const uint32_t* add = task.points.row(Points::step_row(index++)) + first;
      put_words(*task.map, to, x, dimen - first);
      for (int64_t d = 0; d < dimen - first; d++) x[d] ^= add[d];
    }
  }
};

// False, with nothing done, where the call is too small or there is one thread.
template <class Map> bool points_by_threads(const Points& p, int64_t at, int64_t count, const Map& map) {
  const int64_t dimen = p.state->dimen;
  if (!worth_threads(dimen, count)) return false;
  const auto limit =
      reinterpret_cast<ThreadLimit>(tarn_serv_load_thread_fun("tarn_kest_serv_threader_get_num_threads_limit"));
  const int32_t threads = limit();
  if (threads <= 1) return false;
  const auto loop = reinterpret_cast<ThreadFor>(tarn_serv_load_thread_fun("tarn_kest_serv_threader_for"));
  GroupTask<Map> task = {p, at, count, &map};
  loop((dimen + kGroup - 1) / kGroup, threads, &task, GroupTask<Map>::run);
  p.state->index += static_cast<uint32_t>(count);
  return true;
}

}
