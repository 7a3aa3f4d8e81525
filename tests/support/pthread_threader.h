// A threader table over plain POSIX threads, for the tests: every thread asked for is started, so that ThreadSanitizer
// sees each access by its true thread.
#pragma once

#include "tarn/threader.h"

namespace tarn::test {

const tarn_threader* pthread_threader();

// What threader_max_threads answers from now on; 1 at the start.
void set_max_threads(int32_t count);

// Threads started for regions and loops since the last call of this function.
int64_t take_threads_started();

}
