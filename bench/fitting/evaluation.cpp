#include "bench/fitting/benchmarks.h"

namespace tarn::bench {

void evaluation_benchmarks() {}

}
