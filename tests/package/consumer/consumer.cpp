// A stranger's C++ program.
#include <tarn/service.h>
#include <tarn/tarn.hpp>
#include <tarn/threader.h>

#include <cstdint>
#include <cstdio>

int main() {
  void* block = tarn_serv_allocate(100, 64);
  if (!block || reinterpret_cast<std::uintptr_t>(block) % 64) return 1;
  tarn_serv_deallocate(block);

  // Through the table, by the mode, as a caller that honours it does.
  using Kernel = void(std::int32_t, const float*, float*);
  const float x[2] = {1, 4};
  float y[2];
  reinterpret_cast<Kernel*>(tarn_lume_kernel_sLn_ttab[tarn_lume_kernel_GetTTableIndex()])(2, x, y);
  if (y[0] != 0 || y[1] < 1.386294F || y[1] > 1.386295F || !(tarn_lume_kernel_sLn_ctab.cost[0] > 0)) return 2;

  float z[2];
  if (!tarn::Ln(x, z) || z[1] != y[1] || tarn::Ln(x, std::span(z).first(1))) return 3;
  std::puts("ok");
}
