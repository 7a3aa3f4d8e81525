// Arrays between two pages that cannot be touched: an access outside ends the test.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tarn::test {

// count elements that end right before a guard page, or start right behind one.
template <class T> class Guarded {
public:
  enum Side { at_end, at_start };
  Guarded(size_t count, Side side) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE)), bytes = count * sizeof(T);
    inside_ = (bytes + page - 1) / page * page + page;
    whole_ = inside_ + 2 * page;
    base_ = static_cast<char*>(mmap(nullptr, whole_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base_, page, PROT_NONE);
    mprotect(base_ + page + inside_, page, PROT_NONE);
    data_ = reinterpret_cast<T*>(side == at_end ? base_ + page + inside_ - bytes : base_ + page);
  }
  ~Guarded() { munmap(base_, whole_); }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;
  T* data() const { return data_; }

private:
  char* base_;
  size_t inside_, whole_;
  T* data_;
};

}
