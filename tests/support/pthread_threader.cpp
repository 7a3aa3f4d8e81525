#include "support/pthread_threader.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace tarn::test {
namespace {

std::atomic<int32_t> max_threads{1};
std::atomic<int64_t> started{0};

int32_t chosen(int32_t asked) { return asked > 0 ? asked : max_threads.load(); }

template <class Body> void on_threads(int32_t count, Body body) {
  std::vector<std::thread> threads;
  for (int32_t id = 0; id < count; ++id) threads.emplace_back(body, id);
  started += count;
  for (std::thread& thread : threads) thread.join();
}

// The turn of ordered sections: one loop at a time is enough for the tests.
std::mutex turn_lock;
std::condition_variable turn_changed;
int64_t turn = 0;

void loop(int64_t count, int32_t asked, void* context, tarn_loop_body body) {
  const int32_t threads = static_cast<int32_t>(std::min<int64_t>(chosen(asked), count));
  std::atomic<int64_t> next{0};
  on_threads(threads, [&](int32_t id) {
    for (int64_t i; (i = next++) < count;) body(i, id, threads, context);
  });
}

void ordered_loop(int64_t count, int32_t asked, void* context, tarn_loop_body body) {
  turn = 0;
  loop(count, asked, context, body);
}

void ordered(int64_t iteration, int32_t id, int32_t threads, void* context, tarn_loop_body section) {
  std::unique_lock lock(turn_lock);
  turn_changed.wait(lock, [&] { return turn == iteration; });
  section(iteration, id, threads, context);
  ++turn;
  turn_changed.notify_all();
}

void region(int32_t asked, void* context, tarn_region_body body) {
  const int32_t threads = chosen(asked);
  on_threads(threads, [&](int32_t id) { body(id, 0, threads, context); });
}

int32_t answer_max_threads() { return max_threads; }

const tarn_threader table = {loop, ordered_loop, region, ordered, answer_max_threads};

}

const tarn_threader* pthread_threader() { return &table; }
void set_max_threads(int32_t count) { max_threads = count; }
int64_t take_threads_started() { return started.exchange(0); }

}
