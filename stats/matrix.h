// Symmetric matrices in their three storages.
#pragma once

#include "stats/task.h"

namespace tarn::stats {

enum class MatrixStorage { full, lower, upper };

inline MatrixStorage matrix_storage(int64_t word) {
  if (word & TARN_SS_MATRIX_U_PACKED) return MatrixStorage::upper;
  return word & TARN_SS_MATRIX_L_PACKED ? MatrixStorage::lower : MatrixStorage::full;
}

// Where element (i, j), j <= i, of a p x p matrix stands.
inline int64_t matrix_index(MatrixStorage storage, int64_t p, int64_t i, int64_t j) {
  switch (storage) {
  case MatrixStorage::lower: return i * (i + 1) / 2 + j;
  case MatrixStorage::upper: return j * p - j * (j - 1) / 2 + (i - j);
  default: return i * p + j;
  }
}

template <class Real> struct Matrix {
  Real* elements;
  MatrixStorage storage;
  int64_t p;

  Real at(int64_t i, int64_t j) const { return elements[matrix_index(storage, p, i, j)]; }
  void set(int64_t i, int64_t j, Real value) const {
    elements[matrix_index(storage, p, i, j)] = value;
    if (storage == MatrixStorage::full) elements[j * p + i] = value;
  }
};

}
