#include "support/failing_allocator.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <dlfcn.h>

namespace {

struct Plan {
  bool active = false, all_after = false, happened = false;
  int64_t fail_at = -1, seen = 0;
};
thread_local Plan plan;
std::atomic<int64_t> taken{0};

using Memalign = int (*)(void**, size_t, size_t);
Memalign next_memalign() {
  static const Memalign next = reinterpret_cast<Memalign>(dlsym(RTLD_NEXT, "posix_memalign"));
  return next;
}

}

extern "C" int posix_memalign(void** block, size_t alignment, size_t size) noexcept {
  if (plan.active) {
    const int64_t number = plan.seen++;
    if (plan.fail_at >= 0 && (number == plan.fail_at || (plan.all_after && number > plan.fail_at))) {
      plan.happened = true;
      return ENOMEM;
    }
  }
  const int status = next_memalign()(block, alignment, size);
  if (status == 0) taken.fetch_add(1, std::memory_order_relaxed);
  return status;
}

namespace tarn::test {

AllocationFailure::AllocationFailure(int64_t fail_at, bool all_after) { plan = {true, all_after, false, fail_at, 0}; }
AllocationFailure::~AllocationFailure() { plan = {}; }
int64_t AllocationFailure::seen() const { return plan.seen; }
bool AllocationFailure::happened() const { return plan.happened; }
int64_t blocks_taken() { return taken.load(std::memory_order_relaxed); }

}
