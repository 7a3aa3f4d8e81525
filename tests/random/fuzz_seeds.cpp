// Writes an image of every generator, with and without chunks, to a folder: the seeds of fuzz_load_stream.
#include "random/streams.h"

using namespace tarn::test;

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  for (const Named& g : generators()) {
    auto stream = make(g.brng, g.seeds);
    words(stream, 77);
    for (int chunks = 0; chunks < 3; chunks++) {
      const std::string path = std::string(argv[1]) + "/" + g.name + std::to_string(chunks);
      if (__kestSaveStreamF(stream.get(), path.c_str(), -1) != 0) return 1;
      const uint64_t key[2] = {static_cast<uint64_t>(chunks), 5};
      void* data = tarn_serv_allocate(40, 128);
      std::memset(data, chunks, 40);
      __kestAddChunk(stream.get(), chunks + 1, key, data, 40);
    }
  }
}
