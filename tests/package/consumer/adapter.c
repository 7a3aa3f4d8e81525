/* A stranger's program that lends its threads through a ready table. */
#include HEADER

static void count(int64_t iteration, int32_t thread_id, int32_t thread_count, void* context) {
  (void)thread_count;
  ((int64_t*)context)[thread_id] += iteration;
}

int main(void) {
  int64_t sums[2] = {0, 0};
  TABLE()->threader_for(100, 2, sums, count);
  return sums[0] + sums[1] == 4950 ? 0 : 1;
}
