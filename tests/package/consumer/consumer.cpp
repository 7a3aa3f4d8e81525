// A stranger's C++ program.
#include <tarn/service.h>
#include <tarn/threader.h>

#include <cstdint>
#include <cstdio>

int main() {
  void* block = tarn_serv_allocate(100, 64);
  if (!block || reinterpret_cast<std::uintptr_t>(block) % 64) return 1;
  tarn_serv_deallocate(block);
  std::puts("ok");
}
