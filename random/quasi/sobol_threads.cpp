#include "random/quasi/sobol_threads.h"

namespace tarn::random {

bool worth_threads(int64_t dimen, int64_t count) {
  constexpr int64_t kManyPoints = 0x20000;
  if (dimen <= 32) return false;
  if (dimen < 64) return dimen % 32 == 0 && count >= kManyPoints;
  // From this many points on threads are used at once; with fewer, only from that many coordinates on.
  static const struct {
    int64_t points, coordinates;
  } steps[] = {{kManyPoints, 250}, {8192, 500}, {256, 1000}, {64, 2000}, {32, 4000}, {8, 16000}, {2, 32000}};
  for (const auto& step : steps) {
    if (count >= step.points) return true;
    if (dimen < step.coordinates) return false;
  }
  return true;
}

}
