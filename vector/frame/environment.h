// The environment variable that sets a thread's first mode.
#pragma once

#include <stdint.h>

namespace tarn::vector {

// The OR of the words in TARN_VM_MODE, or -1 when the variable is absent, empty, longer than 255 characters or holds a
// word that is not known.
int64_t read_mode_variable();

}
