// The roll as the tests see it: one record per type and function, and one way to call any kernel.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tarn/vector.h"

namespace tarn::test {

enum class Shape { In1Out1, In2Out1, In1Out2, Powx, LinearFrac };

using Entry = void (*)();

struct Function {
  char type; // s, d, c or z
  std::string name;
  Shape shape;
  const tarn_kernel *plain, *strided; // tables: LA, HA, EP
  const tarn_cost_table *plain_cost, *strided_cost;
  std::array<Entry, 4> plain_entries, strided_entries; // LA, HA, the plain name (HA), EP
  std::array<int, 3> block, strided_block;             // by slot
  std::array<std::string, 3> frames, loops;            // by slot, as the roll names them
  std::array<std::string, 3> kernel_names;             // by slot, such as dExp_Y8LA

  std::string full_name() const { return type + name; }
  int inputs() const { return shape == Shape::In2Out1 || shape == Shape::LinearFrac ? 2 : 1; }
  int outputs() const { return shape == Shape::In1Out2 ? 2 : 1; }
};

// Every function of the roll but Pack and Unpack.
const std::vector<Function>& roll();
const Function& function(const std::string& full_name);

constexpr const char* class_names[] = {"LA", "HA", "EP"};
constexpr int LA = 0, HA = 1, EP = 2;

// Scalars of Powx (b) and LinearFrac.
template <class T> struct Scalars {
  T b = 2;
  T scalea = 2, shifta = 1, scaleb = 3, shiftb = -1;
};

// The arrays of a call. Absent ones are null; strides count elements and are used by strided kernels only.
template <class T> struct Call {
  int32_t n;
  const T *a, *b;
  T *r, *q;
  int32_t inca = 1, incb = 1, incr = 1, incq = 1;
  Scalars<T> scalars = {};
};

template <class T> void call_plain(const Function& f, Entry kernel, const Call<T>& c) {
  const Scalars<T>& s = c.scalars;
  switch (f.shape) {
  case Shape::In1Out1: return reinterpret_cast<void (*)(int32_t, const T*, T*)>(kernel)(c.n, c.a, c.r);
  case Shape::In2Out1: return reinterpret_cast<void (*)(int32_t, const T*, const T*, T*)>(kernel)(c.n, c.a, c.b, c.r);
  case Shape::In1Out2: return reinterpret_cast<void (*)(int32_t, const T*, T*, T*)>(kernel)(c.n, c.a, c.r, c.q);
  case Shape::Powx: return reinterpret_cast<void (*)(int32_t, const T*, T, T*)>(kernel)(c.n, c.a, s.b, c.r);
  case Shape::LinearFrac:
    return reinterpret_cast<void (*)(int32_t, const T*, const T*, T, T, T, T, T*)>(kernel)(
        c.n, c.a, c.b, s.scalea, s.shifta, s.scaleb, s.shiftb, c.r);
  }
}

template <class T> void call_strided(const Function& f, Entry kernel, const Call<T>& c) {
  const Scalars<T>& s = c.scalars;
  using I = int32_t;
  switch (f.shape) {
  case Shape::In1Out1: return reinterpret_cast<void (*)(I, const T*, I, T*, I)>(kernel)(c.n, c.a, c.inca, c.r, c.incr);
  case Shape::In2Out1:
    return reinterpret_cast<void (*)(I, const T*, I, const T*, I, T*, I)>(kernel)(c.n, c.a, c.inca, c.b, c.incb, c.r,
                                                                                  c.incr);
  case Shape::In1Out2:
    return reinterpret_cast<void (*)(I, const T*, I, T*, I, T*, I)>(kernel)(c.n, c.a, c.inca, c.r, c.incr, c.q, c.incq);
  case Shape::Powx:
    return reinterpret_cast<void (*)(I, const T*, I, T, T*, I)>(kernel)(c.n, c.a, c.inca, s.b, c.r, c.incr);
  case Shape::LinearFrac:
    return reinterpret_cast<void (*)(I, const T*, I, const T*, I, T, T, T, T, T*, I)>(kernel)(
        c.n, c.a, c.inca, c.b, c.incb, s.scalea, s.shifta, s.scaleb, s.shiftb, c.r, c.incr);
  }
}

// Calls body(function, slot, T{}) for every function and class, with T float or double.
template <class Body> void for_each_kernel(Body body) {
  for (const Function& f : roll())
    for (int slot = 0; slot < 3; ++slot) {
      if (f.type == 'd') body(f, slot, double{});
      if (f.type == 's') body(f, slot, float{});
    }
}

// Same value: equal bits, or both NaN (which NaN of two operands comes out is no promise).
template <class T> bool same(T x, T y) {
  if (x != x) return y != y;
  return __builtin_memcmp(&x, &y, sizeof(T)) == 0;
}

}
