#include "random/streams/shared_blocks.h"

#include <x86intrin.h>

namespace {

constexpr uint32_t kCapacity = 128;
tarn_shared_block entries[kCapacity];
uint32_t count = 0;
uint32_t lock_word = 0;

struct Locked {
  Locked() { GlobRODataTableLock(); }
  ~Locked() { GlobRODataTableUnLock(); }
};

// Under the lock. Null for a key of zeros, which never stands in the table.
tarn_shared_block* find(const uint64_t key[2]) {
  if (!tarn::random::has_key(key)) return nullptr;
  for (uint32_t k = 0; k < count; k++)
    if (entries[k].key0 == key[0] && entries[k].key1 == key[1]) return &entries[k];
  return nullptr;
}

// Under the lock; null when the table is full.
tarn_shared_block* append(const uint64_t key[2], void* data) {
  if (count >= kCapacity) return nullptr;
  entries[count] = {key[0], key[1], 1, data};
  __atomic_store_n(&count, count + 1, __ATOMIC_RELAXED);
  return &entries[count - 1];
}

}

TARN_EXPORT void GlobRODataTableLock(void) {
  uint32_t expected = 0;
  while (!__atomic_compare_exchange_n(&lock_word, &expected, 1u, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED))
    expected = 0;
}

TARN_EXPORT void GlobRODataTableUnLock(void) { __atomic_store_n(&lock_word, 0u, __ATOMIC_RELEASE); }

namespace tarn::random {

bool is_shared(const uint64_t key[2]) {
  if (!has_key(key)) return false;
  Locked locked;
  return find(key) != nullptr;
}

uint32_t shared_block_count() { return __atomic_load_n(&count, __ATOMIC_RELAXED); }

void share(tarn_chunk* chunk) {
  if (!has_key(chunk->key)) return;
  if (is_shared(chunk->key)) {
    __kestRegisterGlobRODataReference(chunk, chunk->key);
    return;
  }
  if (shared_block_count() >= kSharedBlocksForChunks) {
    chunk->key[0] = chunk->key[1] = 0;
    return;
  }
  Locked locked;
  // Others may have filled the table meanwhile. A key that stands in no table must not be met again in one.
  if (!append(chunk->key, chunk->data)) chunk->key[0] = chunk->key[1] = 0;
}

void unshare(const uint64_t key[2]) {
  Locked locked;
  for (uint32_t k = 0; k < count; k++) {
    tarn_shared_block& entry = entries[k];
    if (entry.key0 != key[0] || entry.key1 != key[1] || --entry.refs != 0) continue;
    tarn_serv_deallocate(entry.data);
    __atomic_store_n(&count, count - 1, __ATOMIC_RELAXED);
    entry = entries[count];
    k--; // the entry moved here has not been looked at
  }
}

}

using namespace tarn::random;

TARN_EXPORT int32_t __kestFindGlobRODataTableEntry(tarn_shared_block** out, const uint64_t key[2]) {
  if (!key || !has_key(key)) return TARN_RANDOM_ENTRY_NOT_FOUND;
  Locked locked;
  tarn_shared_block* entry = find(key);
  if (!entry) return TARN_RANDOM_ENTRY_NOT_FOUND;
  *out = entry;
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestCreateGlobRODataTableEntry(tarn_shared_block** out, const uint64_t key[2], void* data) {
  Locked locked;
  tarn_shared_block* entry = append(key, data);
  if (!entry) return TARN_RANDOM_TABLE_FULL;
  *out = entry;
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestRegisterGlobRODataReference(tarn_chunk* chunk, const uint64_t key[2]) {
  Locked locked;
  if (tarn_shared_block* entry = find(key)) {
    entry->refs++;
    chunk->data = entry->data;
  }
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestUnregisterGlobRODataReference(const uint64_t key[2]) {
  if (key && is_shared(key)) unshare(key);
  return TARN_RANDOM_OK;
}

TARN_EXPORT int32_t __kestGenerateNewGlobalRODataTableEntryId(uint64_t key[2], uint64_t second) {
  key[1] = second;
  do key[0] = __rdtsc();
  while (is_shared(key));
  return TARN_RANDOM_OK;
}
