// How a subcommand gives up: one line on standard error, `tarn: <what>`, and an exit code other than 0.
#pragma once

#include <stdexcept>

namespace tarn::command {

struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}
