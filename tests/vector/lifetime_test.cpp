// Cells come with threads and go with them, and with the library. The library is loaded by hand, again and again.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>
#include <vector>

#include "tarn/vector.h"

namespace {

struct Library {
  void* handle;
  decltype(&__lumeGetMode) get_mode;
  decltype(&__lumeSetMode) set_mode;
  decltype(&__lumeGetErrStatus) get_status;
  decltype(&__lumeSetErrorCallBack) set_callback;
  decltype(&__lumeSetInterfInputVectorPointer) set_pointer;
  void (*ln)(int32_t, const double*, double*);

  Library() {
    handle = dlopen(TARN_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (!handle) throw std::runtime_error(dlerror());
    find(get_mode, "__lumeGetMode");
    find(set_mode, "__lumeSetMode");
    find(get_status, "__lumeGetErrStatus");
    find(set_callback, "__lumeSetErrorCallBack");
    find(set_pointer, "__lumeSetInterfInputVectorPointer");
    find(ln, "__lumedLn");
  }
  void close() { dlclose(handle); }

private:
  template <class F> void find(F& f, const char* name) { f = reinterpret_cast<F>(dlsym(handle, name)); }
};

thread_local int64_t calls = 0;
int32_t count_calls(ErrorContext*) {
  ++calls;
  return 0;
}

// All four cells of the calling thread.
void use_everything(const Library& tarn) {
  double a[20], r[20];
  for (double& v : a) v = -1;
  tarn.set_mode(0x200);
  tarn.set_callback(count_calls);
  tarn.set_pointer(a);
  calls = 0;
  tarn.ln(20, a, r);
  EXPECT_EQ(calls, 20);
  EXPECT_EQ(tarn.get_status(), 1);
  tarn.set_pointer(nullptr);
}

size_t bytes_in_use() { return mallinfo2().uordblks; }

TEST(Lifetime, HundredThousandReports) {
  Library tarn;
  std::vector<double> a(1000, -1.0), r(1000);
  tarn.set_mode(0x200);
  tarn.set_callback(count_calls);
  calls = 0;
  tarn.ln(1000, a.data(), r.data());
  const size_t before = bytes_in_use();
  for (int i = 0; i < 99; ++i) tarn.ln(1000, a.data(), r.data());
  EXPECT_EQ(calls, 100000);
  EXPECT_EQ(bytes_in_use(), before);
  tarn.set_callback(nullptr);
  tarn.close();
}

TEST(Lifetime, ThousandThreads) {
  Library tarn;
  use_everything(tarn);
  for (int i = 0; i < 20; ++i) std::thread([&] { use_everything(tarn); }).join(); // stacks and arenas settle
  const size_t before = bytes_in_use();
  for (int i = 0; i < 1000; ++i) std::thread([&] { use_everything(tarn); }).join();
  EXPECT_LE(bytes_in_use(), before + 1024) << "cells of ended threads stay";
  tarn.close();
}

TEST(Lifetime, ManyThreadsAtOnce) {
  Library tarn;
  std::vector<std::thread> threads;
  for (int i = 0; i < 64; ++i)
    threads.emplace_back([&] {
      for (int k = 0; k < 50; ++k) use_everything(tarn);
    });
  for (std::thread& thread : threads) thread.join();
  tarn.close();
}

TEST(Lifetime, ThousandLoads) {
  const auto round = [] {
    Library tarn;
    use_everything(tarn); // the loading thread's cells are there when the library goes
    std::thread([&] { use_everything(tarn); }).join();
    tarn.close();
  };
  for (int i = 0; i < 20; ++i) round();
  const size_t before = bytes_in_use();
  for (int i = 0; i < 1000; ++i) round(); // more rounds than a process has keys
  EXPECT_LE(bytes_in_use(), before + 4096) << "something stays at each unload";
  pthread_key_t key;
  ASSERT_EQ(pthread_key_create(&key, nullptr), 0) << "keys are used up";
  pthread_key_delete(key);
}

TEST(Lifetime, ForkAfterTheLibraryIsGone) {
  Library tarn;
  use_everything(tarn);
  tarn.close();
  ASSERT_EQ(dlopen(TARN_LIBRARY, RTLD_NOLOAD | RTLD_NOW), nullptr);
  const pid_t child = fork(); // calls nothing of the library's
  if (child == 0) _exit(7);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
}

TEST(Lifetime, CellsOfRunningThreadsGoWithTheLibrary) {
  for (int i = 0; i < 30; ++i) {
    Library tarn;
    pthread_barrier_t used, closed;
    pthread_barrier_init(&used, nullptr, 2);
    pthread_barrier_init(&closed, nullptr, 2);
    std::thread thread([&] {
      use_everything(tarn);
      pthread_barrier_wait(&used);
      pthread_barrier_wait(&closed); // ends after the library is gone: no destructor of it may run
    });
    pthread_barrier_wait(&used);
    tarn.close();
    pthread_barrier_wait(&closed);
    thread.join();
  }
}

}
