#include "command/functions.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace tarn::command {

namespace {

// How each shape is called.
template <class T> struct In1Out1 {
  static constexpr int inputs = 1, outputs = 1, scalars = 0;
  static void call(tarn_kernel kernel, int32_t n, const Arguments& x) {
    using Kernel = void(int32_t, const T*, T*);
    reinterpret_cast<Kernel*>(kernel)(n, static_cast<const T*>(x.in[0]), static_cast<T*>(x.out[0]));
  }
};
template <class T> struct In2Out1 {
  static constexpr int inputs = 2, outputs = 1, scalars = 0;
  static void call(tarn_kernel kernel, int32_t n, const Arguments& x) {
    using Kernel = void(int32_t, const T*, const T*, T*);
    reinterpret_cast<Kernel*>(kernel)(n, static_cast<const T*>(x.in[0]), static_cast<const T*>(x.in[1]),
                                      static_cast<T*>(x.out[0]));
  }
};
template <class T> struct In1Out2 {
  static constexpr int inputs = 1, outputs = 2, scalars = 0;
  static void call(tarn_kernel kernel, int32_t n, const Arguments& x) {
    using Kernel = void(int32_t, const T*, T*, T*);
    reinterpret_cast<Kernel*>(kernel)(n, static_cast<const T*>(x.in[0]), static_cast<T*>(x.out[0]),
                                      static_cast<T*>(x.out[1]));
  }
};
template <class T> struct Powx {
  static constexpr int inputs = 1, outputs = 1, scalars = 1;
  static void call(tarn_kernel kernel, int32_t n, const Arguments& x) {
    using Kernel = void(int32_t, const T*, T, T*);
    reinterpret_cast<Kernel*>(kernel)(n, static_cast<const T*>(x.in[0]), static_cast<T>(x.scalars[0]),
                                      static_cast<T*>(x.out[0]));
  }
};
template <class T> struct LinearFrac {
  static constexpr int inputs = 2, outputs = 1, scalars = 4;
  static void call(tarn_kernel kernel, int32_t n, const Arguments& x) {
    using Kernel = void(int32_t, const T*, const T*, T, T, T, T, T*);
    const double* s = x.scalars;
    reinterpret_cast<Kernel*>(kernel)(n, static_cast<const T*>(x.in[0]), static_cast<const T*>(x.in[1]),
                                      static_cast<T>(s[0]), static_cast<T>(s[1]), static_cast<T>(s[2]),
                                      static_cast<T>(s[3]), static_cast<T*>(x.out[0]));
  }
};

#define TARN_TYPE_s float
#define TARN_TYPE_d double
#define TARN_TEXT(text) #text

constexpr Function roll[] = {
#define TARN_VECTOR(t, Name, shape, frame, loop, kernels, ...)                                                         \
  {TARN_TEXT(t)[0],                                                                                                    \
   #Name,                                                                                                              \
   #shape,                                                                                                             \
   shape<TARN_TYPE_##t>::inputs,                                                                                       \
   shape<TARN_TYPE_##t>::outputs,                                                                                      \
   shape<TARN_TYPE_##t>::scalars,                                                                                      \
   &shape<TARN_TYPE_##t>::call,                                                                                        \
   tarn_lume_kernel_##t##Name##_ttab,                                                                                  \
   tarn_lume_kernel_##t##Name##_ctab.cost,                                                                             \
   #kernels},
#define TARN_PACK(...)
#define TARN_DOC(...)
#include "vector/functions.def"
};

constexpr Description texts[] = {
#define TARN_VECTOR(...)
#define TARN_PACK(...)
#define TARN_DOC(Name, summary, details) {#Name, summary, details},
#include "vector/functions.def"
};

const std::vector<Measured> measurements = {
#define TARN_MEASURED(tName, cls, max, mean, at) {#tName, #cls, max, mean, at},
#include "vector/measured_accuracy.def"
};

// Edits that turn one name into the other, letters compared without their case.
size_t distance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t replaced = diagonal + ((a[i] | 0x20) != (b[j] | 0x20));
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}

Class kernel_class(const Function& function, Class slot) {
  const std::string_view row = function.sharing;
  // Which of the row's kernels serves the slot, and then the second word of that kernel.
  size_t kernel = 0;
  if (row.starts_with("three")) kernel = static_cast<size_t>(slot);
  if (row.starts_with("la_ha")) kernel = slot == Class::EP;
  if (row.starts_with("la_ep")) kernel = slot == Class::HA;
  size_t at = row.find('(');
  for (size_t i = 0; i <= kernel; ++i) at = row.find('(', at + 1);
  const std::string_view rest = row.substr(row.find(',', at));
  const size_t word = rest.find_first_not_of(", ");
  for (size_t i = 0; i < 3; ++i)
    if (rest.substr(word, 2) == class_names[i]) return static_cast<Class>(i);
  throw std::logic_error("a row of the roll without a class: " + std::string(row));
}

std::span<const Function> functions() { return roll; }
std::span<const Description> descriptions() { return texts; }
std::span<const Measured> measured() { return measurements; }

const Function* find_function(std::string_view name, char type) {
  const auto found = std::find_if(std::begin(roll), std::end(roll),
                                  [&](const Function& f) { return f.name == name && f.type == type; });
  return found == std::end(roll) ? nullptr : &*found;
}

const Measured* find_measured(const Function& function, std::string_view class_name) {
  const std::string key = function.type + std::string(function.name);
  const auto found = std::find_if(measurements.begin(), measurements.end(), [&](const Measured& m) {
    return m.type_and_name == key && m.class_name == class_name;
  });
  return found == measurements.end() ? nullptr : &*found;
}

std::string unknown_function(std::string_view name) {
  std::string_view nearest;
  size_t nearest_distance = 3;
  for (const Function& function : roll) {
    if (const size_t d = distance(name, function.name); d < nearest_distance) {
      nearest = function.name;
      nearest_distance = d;
    }
  }
  std::string text = "no function named " + std::string(name);
  if (!nearest.empty()) text += "; did you mean " + std::string(nearest) + "?";
  return text + " (tarn list shows all)";
}

}
