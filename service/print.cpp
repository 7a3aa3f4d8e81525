#include "service/service.h"

#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>

namespace {

// Message 0x2EC comes first. Arguments: a name and a position, a name, or an index and a value.
constexpr int32_t first_message = 0x2EC;
const char* const texts[] = {
    "tarn: %s: argument %d was refused\n",                  // 0x2EC
    "tarn: %s: a pointer was refused\n",                    // 0x2ED
    "tarn: %s: argument outside the domain\n",              // 0x2EE
    "tarn: %s: argument at a pole\n",                       // 0x2EF
    "tarn: %s: the result overflows\n",                     // 0x2F0
    "tarn: %s: the result underflows\n",                    // 0x2F1
    "tarn: %s: failed with a status that has no meaning\n", // 0x2F2
    "tarn:   element %d: argument = %.17g\n",               // 0x2F3
    "tarn:   element %d: result = %.17g\n",                 // 0x2F4
    "tarn:   element %d: argument = %.17g\n",               // 0x2F5
    "tarn:   element %d: first result = %.17g\n",           // 0x2F6
    "tarn:   element %d: second result = %.17g\n",          // 0x2F7
    "tarn:   element %d: first argument = %.17g\n",         // 0x2F8
    "tarn:   element %d: second argument = %.17g\n",        // 0x2F9
    "tarn:   element %d: result = %.17g\n",                 // 0x2FA
    "tarn:   element %d: first argument = %.17g\n",         // 0x2FB
    "tarn:   element %d: second argument = %.17g\n",        // 0x2FC
    "tarn:   element %d: first result = %.17g\n",           // 0x2FD
    "tarn:   element %d: second result = %.17g\n",          // 0x2FE
};

}

extern "C" void tarn_serv_print(int32_t, int32_t message, int32_t argument_count, ...) {
  constexpr int32_t rows = sizeof texts / sizeof *texts;
  if (message < first_message || message >= first_message + rows) return;
  const int32_t row = message - first_message;
  const int32_t needed = row >= 1 && row <= 6 ? 1 : 2; // the rows with nothing but a name
  if (argument_count < needed) return;
  const int caller_errno = errno; // a report on standard error is no failure of the caller's
  char line[256];
  va_list arguments;
  va_start(arguments, argument_count);
  int length = vsnprintf(line, sizeof line, texts[row], arguments);
  va_end(arguments);
  if (length > static_cast<int>(sizeof line) - 1) { // a long name is cut, and the line still ends
    length = sizeof line - 1;
    line[length - 1] = '\n';
  }
  for (int done = 0; done < length;) {
    const ssize_t wrote = write(STDERR_FILENO, line + done, static_cast<size_t>(length - done));
    if (wrote < 0 && errno != EINTR) break;
    if (wrote > 0) done += static_cast<int>(wrote);
  }
  errno = caller_errno;
}
