// The two halves of tarn_bench_fitting.
#pragma once

namespace tarn::bench {

void construction_benchmarks(); // cycles per knot
void evaluation_benchmarks();   // search, interpolation, integration: cycles per site or pair of limits

}
