#include "bench/vector/vector_loop.h"

#include <immintrin.h>

namespace tarn::bench {

Loop loop_avx2(void* address, char type, int inputs, int outputs) {
  return loop_over<__m256, __m256d>(address, type, inputs, outputs);
}

}
