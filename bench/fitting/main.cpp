// tarn_bench_fitting: splines made, searched, evaluated and integrated, beside GSL and Boost.
#include "bench/fitting/benchmarks.h"
#include "bench/frame.h"

int main(int argc, char** argv) {
  return tarn::bench::run_benchmarks(argc, argv, [] {
    tarn::bench::construction_benchmarks();
    tarn::bench::evaluation_benchmarks();
  });
}
