// The vector functions as the command, the accuracy harness and the benchmarks know them: expanded from the roll,
// called through the public header.
#pragma once

#include "tarn/vector.h"

#include <span>
#include <string>
#include <string_view>

namespace tarn::command {

enum class Class { LA, HA, EP };
constexpr std::string_view class_names[] = {"LA", "HA", "EP"};

// The arrays and scalars of one call, of the element type; unused places are null.
struct Arguments {
  const void* in[2];
  void* out[2];
  const double* scalars;
};

struct Function {
  char type;              // s d c z
  std::string_view name;  // Exp
  std::string_view shape; // In1Out1
  int inputs, outputs;    // arrays
  int scalars;            // values given once
  void (*call)(tarn_kernel kernel, int32_t n, const Arguments& arguments);
  const tarn_kernel* kernels; // by class
  const float* costs;         // by class
  std::string_view sharing;   // the row's kernels: one(...), la_ha(...), la_ep(...), three(...)
};

struct Description {
  std::string_view name, summary, details;
};

// What the accuracy harness found: the largest and the mean error in units in the last place, and where the largest is.
struct Measured {
  std::string_view type_and_name, class_name; // dExp, HA
  double max_ulp, mean_ulp;
  std::string_view at;
};

// The class that the kernel of a slot carries in its name: a kernel that serves several slots has one of theirs.
Class kernel_class(const Function& function, Class slot);

std::span<const Function> functions();       // in the order of the roll, without Pack and Unpack
std::span<const Description> descriptions(); // Pack and Unpack too
std::span<const Measured> measured();
const Function* find_function(std::string_view name, char type);
const Measured* find_measured(const Function& function, std::string_view class_name);

// "unknown function ...", with the nearest name that there is.
std::string unknown_function(std::string_view name);

}
