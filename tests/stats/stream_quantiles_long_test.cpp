// The sketch on long streams.
#include "stats/streams_of_data.h"

namespace {

using namespace tarn::test;

// A million and ten million elements, with the memory that the sketch takes.
TEST(StreamLong, RankErrorAndMemory) {
  for (Shape shape : {Shape::random, Shape::sorted, Shape::reversed, Shape::organ_pipe, Shape::constant}) {
    for (int64_t n : {1000000, 10000000}) {
      for (double epsilon : {0.01, 0.001}) {
        const Outcome outcome = run_stream<double, int32_t>(shape, n, epsilon, 65536);
        EXPECT_LE(outcome.worst, 1) << int(shape) << " " << n << " " << epsilon;
        std::printf("shape %d n %8lld epsilon %.3f: rank error %.3f epsilon N, sketch %lld bytes of %lld\n", int(shape),
                    (long long)n, epsilon, outcome.worst, (long long)outcome.bytes, (long long)(8 * n));
      }
    }
  }
}

}
