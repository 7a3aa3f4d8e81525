#include "service/service.h"

#include <stdlib.h>
#include <string.h>

namespace {

// The only place where the library takes memory: a test that makes posix_memalign fail reaches every such path.
void* aligned_block(int64_t size, int64_t alignment) {
  if (size < 0 || alignment <= 0 || size > INT64_MAX - alignment) return nullptr;
  int64_t rounded = (size + alignment - 1) / alignment * alignment;
  if (rounded == 0) rounded = alignment;
  void* block = nullptr;
  return posix_memalign(&block, static_cast<size_t>(alignment), static_cast<size_t>(rounded)) == 0 ? block : nullptr;
}

// A block of tarn_serv_malloc has this header in front, one alignment unit before the caller's bytes.
struct LibraryBlock {
  LibraryBlock *next, *previous;
  void* start;
};
LibraryBlock list = {&list, &list, nullptr};
uint32_t list_lock = 0;

}

TARN_EXPORT void* tarn_serv_allocate(int64_t size, int64_t alignment) { return aligned_block(size, alignment); }
TARN_EXPORT void tarn_serv_deallocate(void* block) { free(block); }

extern "C" void* tarn_serv_malloc(int64_t size, int64_t alignment) {
  if (alignment < static_cast<int64_t>(sizeof(LibraryBlock)) || size < 0 || size > INT64_MAX - alignment)
    return nullptr;
  char* start = static_cast<char*>(aligned_block(size + alignment, alignment));
  if (!start) return nullptr;
  LibraryBlock* block = reinterpret_cast<LibraryBlock*>(start + alignment) - 1;
  block->start = start;
  tarn_serv_lock(&list_lock);
  tarn::service::hold_over_fork<list_lock>();
  block->next = list.next;
  block->previous = &list;
  list.next->previous = block;
  list.next = block;
  tarn_serv_unlock(&list_lock);
  return start + alignment;
}

extern "C" void tarn_serv_free(void* memory) {
  if (!memory) return;
  LibraryBlock* block = static_cast<LibraryBlock*>(memory) - 1;
  tarn_serv_lock(&list_lock);
  block->next->previous = block->previous;
  block->previous->next = block->next;
  tarn_serv_unlock(&list_lock);
  free(block->start);
}

void tarn::service::free_library_blocks() {
  while (list.next != &list) tarn_serv_free(list.next + 1);
}

extern "C" int32_t tarn_serv_memcpy_s(void* destination, int64_t destination_size, const void* source, int64_t count) {
  if (count < 0 || count > destination_size) return -1;
  memcpy(destination, source, static_cast<size_t>(count));
  return 0;
}
