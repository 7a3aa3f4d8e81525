// Mode, status, callback and the pointer to the caller's vector.
#include "vector/frame/mode.h"

#include <string.h>

#include "vector/frame/cells.h"
#include "vector/frame/environment.h"

namespace tarn::vector {

namespace {

void Mode_cleanup(void* cell) { tarn_serv_free(cell); }
void ErrStatus_cleanup(void* cell) { tarn_serv_free(cell); }
void CallBack_cleanup(void* cell) { tarn_serv_free(cell); }
void InputVecorPointer_cleanup(void* cell) { tarn_serv_free(cell); }

TlsKeyRecord Mode_key, ErrStatus_key, CallBack_key, InputVecorPointer_key;

uint32_t& mode_cell() { return cell_of<uint32_t>(&Mode_key, Mode_cleanup, 8); }
int32_t& status_cell() { return cell_of<int32_t>(&ErrStatus_key, ErrStatus_cleanup, 8); }
ErrorCallback& callback_cell() { return cell_of<ErrorCallback>(&CallBack_key, CallBack_cleanup, 16); }
const void*& input_start_cell() { return cell_of<const void*>(&InputVecorPointer_key, InputVecorPointer_cleanup, 16); }

// The first use of the mode in a thread reads the environment.
__attribute__((noinline, cold)) uint32_t first_mode() {
  const int64_t words = read_mode_variable();
  if (words == -1) return default_mode;
  uint32_t mode = static_cast<uint32_t>(words);
  if (!(mode & accuracy_field)) mode |= 2;
  if (!(mode & error_field)) mode |= default_mode & error_field;
  return mode;
}

uint32_t& resolved_mode() {
  uint32_t& mode = mode_cell();
  if (__builtin_expect(mode == 0, 0)) mode = first_mode();
  return mode;
}

}

uint32_t get_mode() { return resolved_mode(); }

uint32_t set_mode(uint32_t word) {
  uint32_t& mode = resolved_mode();
  const uint32_t previous = mode;
  constexpr uint32_t fields[] = {accuracy_field, error_field, denormal_field, trap_field};
  for (uint32_t field : fields)
    if (word & field) mode = (mode & ~field) | (word & field);
  return previous;
}

int32_t get_status() { return status_cell(); }

int32_t set_status(int32_t status) {
  int32_t& cell = status_cell();
  const int32_t previous = cell;
  cell = status;
  return previous;
}

ErrorCallback get_callback() { return callback_cell(); }

ErrorCallback set_callback(ErrorCallback callback) {
  ErrorCallback& cell = callback_cell();
  const ErrorCallback previous = cell;
  cell = callback;
  // A field of 0 leaves the mode as it is: the bit stays where it was the only route. Reports treat it as no callback.
  const uint32_t mode = get_mode();
  set_mode(callback ? mode | route_callback : mode & ~static_cast<uint32_t>(route_callback));
  return previous;
}

const void* get_input_start() { return input_start_cell(); }
const void* set_input_start(const void* start) { return input_start_cell() = start; }

}
