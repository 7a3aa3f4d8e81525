// The four per-thread cells of the vector math (mode, status, callback, start of the caller's vector) and what is
// done with them. Kernels use the functions declared here; the exported names are made in service.cpp.
#pragma once

#include <stdint.h>

#include "tarn/vector.h"

namespace tarn::vector {

// Fields of the ModeWord.
enum ModeField : uint32_t {
  accuracy_field = 0xF,
  error_field = 0xFF00,
  denormal_field = 0x3C0000,
  trap_field = 0xF000000,
};
enum ErrorRoute : uint32_t {
  route_ignore = 0x100,
  route_errno = 0x200,
  route_stderr = 0x400,
  route_except = 0x800,
  route_callback = 0x1000,
  route_noerr = 0x2000,
};
constexpr uint32_t flush_denormals = 0x280000;
constexpr uint32_t default_mode = 0x1A02;

uint32_t get_mode();
uint32_t set_mode(uint32_t word);
int32_t get_status();
int32_t set_status(int32_t status);
ErrorCallback get_callback();
ErrorCallback set_callback(ErrorCallback callback);
const void* get_input_start();
const void* set_input_start(const void* start);

}
