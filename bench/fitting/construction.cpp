#include "bench/fitting/benchmarks.h"

namespace tarn::bench {

void construction_benchmarks() {}

}
