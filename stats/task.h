// Reading a task: its integers of either width, its arrays, and which variables it takes.
#pragma once

#include <stdint.h>

#include "service/service.h"
#include "tarn/stats.h"

namespace tarn::stats {

constexpr int64_t alignment = 128; // of every block the statistics take

inline int64_t read_integer(const SSTask* task, const void* pointer, int64_t index = 0) {
  return task->integer_width == 1 ? static_cast<const int64_t*>(pointer)[index]
                                  : static_cast<const int32_t*>(pointer)[index];
}

// The mask is read in 32-bit words always; behind a 64-bit task they are the low halves of its integers.
inline bool selected(const SSTask* task, int64_t variable) {
  if (!task->variable_mask) return true;
  return static_cast<const int32_t*>(task->variable_mask)[task->integer_width == 1 ? 2 * variable : variable] != 0;
}

template <class Real> Real* reals(void* pointer) { return static_cast<Real*>(pointer); }

template <class T> T* allocate(int64_t count) {
  if (count < 0 || count > INT64_MAX / int64_t(sizeof(T)) - alignment) return nullptr;
  return static_cast<T*>(tarn_serv_allocate(count * int64_t(sizeof(T)), alignment));
}

// Storage words of the data, by their bits; rows win when both are set.
constexpr int64_t any_storage = TARN_SS_STORAGE_ROWS | TARN_SS_STORAGE_COLUMNS;
inline bool is_storage(int64_t word) { return (word & any_storage) != 0; }
inline bool stores_rows(int64_t word) { return (word & TARN_SS_STORAGE_ROWS) != 0; }

// Where the elements of variable j stand: base + i * step for observation i.
template <class Real> struct Column {
  Real* base;
  int64_t step;
};
template <class Real> Column<Real> column(Real* data, bool rows, int64_t j, int64_t n, int64_t p) {
  return rows ? Column<Real>{data + j * n, 1} : Column<Real>{data + j, p};
}

inline int64_t minimum(int64_t a, int64_t b) { return a < b ? a : b; }
inline int64_t maximum(int64_t a, int64_t b) { return a > b ? a : b; }

}
