// A per-thread cell: made on first use, freed when its thread ends, its key deleted when the library unloads.
// glibc gives back a key's value faster than a compiler's thread-local variable of a dlopen'ed library is found, and
// the cells of ended threads go with their key's destructor.
#pragma once

#include <errno.h>
#include <pthread.h>
#include <stdint.h>

#include "service/service.h"

namespace tarn::vector {

struct TlsKeyRecord {
  uint64_t key; // a pthread_key_t, in 64 bits
  void (*destructor)(void*);
  uint32_t lock;
  uint32_t flags; // bit 0: the key exists
};

// Takes a TlsKeyRecord; run when the library unloads.
inline void tarn_tls_destroy(void* argument) {
  TlsKeyRecord* record = static_cast<TlsKeyRecord*>(argument);
  if (record->flags & 1) {
    __atomic_store_n(&record->flags, 0u, __ATOMIC_RELAXED);
    pthread_key_delete(static_cast<pthread_key_t>(record->key));
  }
}

template <class Value> struct Cell {
  Value value; // zero at the start
};

__attribute__((noinline, cold)) inline void make_key(TlsKeyRecord* record, void (*destructor)(void*)) {
  tarn_serv_lock(&record->lock);
  if (!(record->flags & 1)) {
    pthread_key_t key = 0;
    if (pthread_key_create(&key, destructor)) tarn_serv_exit(3); // without a key of its own it would write to another's
    record->key = key;
    record->destructor = destructor;
    __atomic_store_n(&record->flags, record->flags | 1u, __ATOMIC_RELEASE);
    tarn_serv_core_register_cleanup(tarn_tls_destroy, record);
  }
  tarn_serv_unlock(&record->lock);
}

template <class Value> __attribute__((noinline, cold)) Cell<Value>* make_cell(TlsKeyRecord* record, int64_t size) {
  Cell<Value>* cell = static_cast<Cell<Value>*>(tarn_serv_malloc(size, 64)); // a cache line of its own
  if (!cell) tarn_serv_exit(3);
  cell->value = Value{};
  // Other failures than of memory mean that the process ends on another thread, which has taken the key away.
  if (pthread_setspecific(static_cast<pthread_key_t>(record->key), cell) == ENOMEM) tarn_serv_exit(3);
  return cell;
}

template <class Value>
__attribute__((always_inline)) inline Value& cell_of(TlsKeyRecord* record, void (*destructor)(void*), int64_t size) {
  if (!(__atomic_load_n(&record->flags, __ATOMIC_ACQUIRE) & 1)) make_key(record, destructor);
  Cell<Value>* cell = static_cast<Cell<Value>*>(pthread_getspecific(static_cast<pthread_key_t>(record->key)));
  if (__builtin_expect(!cell, 0)) cell = make_cell<Value>(record, size);
  return cell->value;
}

}
