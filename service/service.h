// The thin layer over the platform on which every other room stands: memory, locks, environment, messages, cleanup at
// unload, thread functions, processor queries. Nothing here knows what it is used for.
#pragma once

#include <pthread.h>

#include "tarn/service.h"

#define TARN_EXPORT extern "C" __attribute__((visibility("default")))

extern "C" {

// Blocks that live no longer than the library: what is still there when it unloads is freed then.
// Size rounded up to the alignment; null on failure.
void* tarn_serv_malloc(int64_t size, int64_t alignment);
void tarn_serv_free(void* block);

// Copies count bytes when they fit into destination_size; returns 0, or -1 with nothing copied.
int32_t tarn_serv_memcpy_s(void* destination, int64_t destination_size, const void* source, int64_t count);

// A 32-bit lock word, 0 when free. Not recursive.
void tarn_serv_lock(uint32_t* word);
void tarn_serv_unlock(uint32_t* word);

// The value of an environment variable, copied with its NUL. Returns its length; 0 when the variable is empty, -1 when
// it is absent or does not fit. Reads the live environment.
int32_t tarn_serv_getenv(const char* name, char* buffer, int32_t buffer_size);

[[noreturn]] void tarn_serv_exit(int32_t code);

// One line on standard error: the text of the message with its arguments (see print.cpp for each message's types).
void tarn_serv_print(int32_t channel, int32_t message, int32_t argument_count, ...);

// Calls function(argument) when the library unloads, last registered first. The same pair counts once.
// Returns 0, or -1 when the list is full.
int32_t tarn_serv_core_register_cleanup(void (*function)(void*), void* argument);

// 1 when the processor has the vector AES instructions, else 0.
int32_t tarn_serv_cpuisicx(void);
}

namespace tarn::service {
// Frees every block of tarn_serv_malloc; called once, after the registered cleanups.
void free_library_blocks();

// Called with the lock taken. From the first call on a thread that forks holds the lock while it does: the child then
// does not find it taken by a thread that it does not have, nor half changed what it guards. For locks that are held
// for more than a moment or guard more than a word, and inside which no other is taken.
template <uint32_t& word> void hold_over_fork() {
  static bool registered = false;
  if (registered) return;
  registered = true;
  const auto release = [] { tarn_serv_unlock(&word); };
  pthread_atfork([] { tarn_serv_lock(&word); }, release, release); // ends with the library when it unloads
}
}
