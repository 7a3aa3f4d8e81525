// Fuzz target: loading a stream from a file of any bytes. What loads must be fit to be measured, copied and deleted.
// Built with Clang and TARN_FUZZ=ON; seeds: fuzz_seeds writes real images to a folder.
//   fuzz_load_stream CORPUS -max_total_time=1800 -detect_leaks=0
// Leaks are not looked for: a block under a key that the process knows stays with nobody, by the rule of shared blocks.
#include "tarn/random.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  static const std::string path = std::filesystem::temp_directory_path() / ("tarn_fuzz_" + std::to_string(getpid()));
  FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return 0;
  std::fwrite(data, 1, size, file);
  std::fclose(file);
  tarn_stream* stream = nullptr;
  if (__kestLoadStreamF(&stream, path.c_str(), -1) == 0) {
    __kestGetStreamSize(stream);
    tarn_stream* copy = nullptr;
    if (__kestCopyStream(&copy, stream) == 0) __kestDeleteStream(&copy);
    __kestDeleteStream(&stream);
  } else if (stream) {
    __builtin_trap(); // a failed load leaves no stream
  }
  return 0;
}
