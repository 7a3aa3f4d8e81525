/* A stranger's C program: every public C header on its own, and one call. */
#include <tarn/service.h>
#include <tarn/threader.h>

#include <stdint.h>
#include <stdio.h>

int main(void) {
  void* block = tarn_serv_allocate(100, 64);
  if (!block || (uintptr_t)block % 64) return 1;
  tarn_serv_deallocate(block);
  puts("ok");
  return 0;
}
