/* A stranger's C program: a few of the public headers, and calls into the library. */
#include <tarn/service.h>
#include <tarn/threader.h>
#include <tarn/vector.h>

#include <stdint.h>
#include <stdio.h>

int main(void) {
  void* block = tarn_serv_allocate(100, 64);
  if (!block || (uintptr_t)block % 64) return 1;
  tarn_serv_deallocate(block);

  const double x[3] = {0, 1, -1};
  double y[3];
  __lumedExp(3, x, y);
  if (y[0] != 1 || y[1] < 2.718281 || y[1] > 2.718282) return 2;
  __lumeClearErrStatus();
  __lumedLn_26(3, x, y);
  if (__lumeGetErrStatus() != 1 || y[2] == y[2]) return 3;
  puts("ok");
  return 0;
}
