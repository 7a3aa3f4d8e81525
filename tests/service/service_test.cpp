#include "service/linear_algebra.h"
#include "service/service.h"
#include "support/failing_allocator.h"
#include "tarn/threader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

bool aligned(const void* p, uintptr_t a) { return reinterpret_cast<uintptr_t>(p) % a == 0; }

// What a call writes to standard error.
template <class Call> std::string captured_stderr(Call call) {
  testing::internal::CaptureStderr();
  call();
  return testing::internal::GetCapturedStderr();
}

TEST(Memory, AllocateRoundsUpAndAligns) {
  for (int64_t alignment : {8, 64, 128, 4096})
    for (int64_t size : {0, 1, 127, 128, 129, 100000}) {
      char* block = static_cast<char*>(tarn_serv_allocate(size, alignment));
      ASSERT_NE(block, nullptr);
      EXPECT_TRUE(aligned(block, static_cast<uintptr_t>(alignment)));
      const int64_t rounded = size == 0 ? alignment : (size + alignment - 1) / alignment * alignment;
      memset(block, 0x5A, static_cast<size_t>(rounded)); // AddressSanitizer holds the size
      tarn_serv_deallocate(block);
    }
}

TEST(Memory, AllocateRefusesWhatCannotBe) {
  EXPECT_EQ(tarn_serv_allocate(-1, 128), nullptr);
  EXPECT_EQ(tarn_serv_allocate(64, 0), nullptr);
  EXPECT_EQ(tarn_serv_allocate(64, -8), nullptr);
  EXPECT_EQ(tarn_serv_allocate(INT64_MAX, 128), nullptr);
  EXPECT_EQ(tarn_serv_malloc(-1, 64), nullptr);
  EXPECT_EQ(tarn_serv_malloc(INT64_MAX, 64), nullptr);
  tarn_serv_deallocate(nullptr);
  tarn_serv_free(nullptr);
}

// A sum that wraps round would give a block that is shorter than asked for.
TEST(Memory, NoBlockIsShorterThanAskedFor) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr int top = 20; // their allocators end the process over what cannot be
#else
  constexpr int top = 63;
#endif
  std::vector<int64_t> sizes = {-1, INT64_MIN};
  for (int k = 0; k < top; ++k)
    for (int64_t d : {-1, 0, 1}) sizes.push_back((int64_t(1) << k) + d);
  if (top == 63)
    for (int64_t d = 0; d < 300; ++d) sizes.push_back(INT64_MAX - d);
  for (int shift = 0; shift < top; ++shift)
    for (int64_t odd : {0, 1}) {
      const int64_t alignment = (int64_t(1) << shift) + odd;
      const bool power = (alignment & (alignment - 1)) == 0;
      if (top == 20 && (!power || alignment < 8)) continue;
      for (int64_t size : sizes) {
        void* block = tarn_serv_allocate(size, alignment);
        if (block) {
          EXPECT_TRUE(power && alignment >= 8 && size >= 0) << size << " at " << alignment;
          EXPECT_TRUE(aligned(block, static_cast<uintptr_t>(alignment)));
          EXPECT_GE(malloc_usable_size(block), static_cast<size_t>(std::max(size, alignment)));
        } else {
          EXPECT_FALSE(power && alignment >= 8 && size >= 0 && std::max(size, alignment) < 1 << 20)
              << size << " at " << alignment;
        }
        tarn_serv_deallocate(block);
        block = tarn_serv_malloc(size, alignment);
        if (block) {
          EXPECT_TRUE(power && alignment >= 32 && size >= 0) << size << " at " << alignment;
          EXPECT_TRUE(aligned(block, static_cast<uintptr_t>(alignment)));
        } else {
          EXPECT_FALSE(power && alignment >= 32 && size >= 0 && std::max(size, alignment) < 1 << 20)
              << size << " at " << alignment;
        }
        tarn_serv_free(block);
      }
    }
}

TEST(Memory, FailureGivesNull) {
  tarn::test::AllocationFailure failure(1);
  void* first = tarn_serv_allocate(10, 128);
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(tarn_serv_malloc(10, 64), nullptr);
  EXPECT_TRUE(failure.happened());
  void* third = tarn_serv_malloc(10, 64);
  EXPECT_NE(third, nullptr);
  EXPECT_TRUE(aligned(third, 64));
  EXPECT_EQ(failure.seen(), 3);
  tarn_serv_free(third);
  tarn_serv_deallocate(first);
}

TEST(Memory, LibraryBlocksAreFreedAtUnload) {
  std::vector<void*> blocks;
  for (int i = 0; i < 5; ++i) blocks.push_back(tarn_serv_malloc(16, 64));
  tarn_serv_free(blocks[2]);
  tarn_serv_free(blocks[0]);
  tarn::service::free_library_blocks(); // LeakSanitizer sees what stays behind, AddressSanitizer a second free
}

TEST(Memory, BoundedCopy) {
  char to[4] = {1, 2, 3, 4};
  const char from[8] = {9, 8, 7, 6, 5, 4, 3, 2};
  EXPECT_EQ(tarn_serv_memcpy_s(to, 4, from, 5), -1);
  EXPECT_EQ(tarn_serv_memcpy_s(to, 4, from, -1), -1);
  EXPECT_EQ(to[0], 1);
  EXPECT_EQ(tarn_serv_memcpy_s(to, 4, from, 4), 0);
  EXPECT_EQ(memcmp(to, from, 4), 0);
}

TEST(Locks, OneHolderAtATime) {
  uint32_t word = 0;
  int64_t counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        tarn_serv_lock(&word);
        ++counter;
        tarn_serv_unlock(&word);
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(counter, 80000);
  EXPECT_EQ(word, 0u);
}

// Forks while another thread is busy with work(), again and again; each child does the work as well.
template <class Work> void fork_beside(Work work) {
  work(); // the fork that comes before the first use has nothing to wait for
  std::atomic<bool> over{false};
  std::thread busy([&] {
    while (!over) work();
  });
  bool fine = true;
  for (int i = 0; i < 100 && fine; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20); // a lock whose holder stayed in the parent is never given back
      work();
      _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    fine = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    EXPECT_TRUE(fine) << "fork " << i;
  }
  over = true;
  busy.join();
}

#if !defined(__SANITIZE_ADDRESS__) // whose own allocator may be locked in the child
TEST(Locks, AChildOfForkAllocates) {
  fork_beside([] {
    void* blocks[50];
    for (void*& block : blocks) block = tarn_serv_malloc(16, 64);
    for (void* block : blocks) tarn_serv_free(block);
  });
}
#endif

TEST(Locks, AChildOfForkMultiplies) {
  fork_beside([] {
    constexpr int32_t n = 64;
    static const std::vector<double> a(n * n, 1.0);
    double c[n * n]; // on the stack: not every allocator may be used after a fork beside another thread
    const double one = 1, zero = 0;
    tarn_blas_dgemm("N", "N", &n, &n, &n, &one, a.data(), &n, a.data(), &n, &zero, c, &n);
    if (c[0] != n || c[n * n - 1] != n) _exit(1);
  });
}

TEST(Environment, NoRoomIsNoValue) {
  char buffer[8] = "kept";
  setenv("TARN_TEST_VALUE", "1234567890", 1);
  for (int32_t size : {0, -1, INT32_MIN}) EXPECT_EQ(tarn_serv_getenv("TARN_TEST_VALUE", buffer, size), -1);
  setenv("TARN_TEST_VALUE", "", 1);
  for (int32_t size : {0, -1, INT32_MIN}) EXPECT_EQ(tarn_serv_getenv("TARN_TEST_VALUE", buffer, size), -1);
  EXPECT_STREQ(buffer, "kept");
  EXPECT_EQ(tarn_serv_getenv("TARN_TEST_VALUE", buffer, 1), 0);
  EXPECT_STREQ(buffer, "");
}

TEST(Environment, LengthAbsentEmptyAndTooLong) {
  char buffer[8];
  unsetenv("TARN_TEST_VALUE");
  EXPECT_EQ(tarn_serv_getenv("TARN_TEST_VALUE", buffer, 8), -1);
  setenv("TARN_TEST_VALUE", "", 1);
  EXPECT_EQ(tarn_serv_getenv("TARN_TEST_VALUE", buffer, 8), 0);
  setenv("TARN_TEST_VALUE", "1234567", 1);
  EXPECT_EQ(tarn_serv_getenv("TARN_TEST_VALUE", buffer, 8), 7);
  EXPECT_STREQ(buffer, "1234567");
  setenv("TARN_TEST_VALUE", "12345678", 1);
  EXPECT_EQ(tarn_serv_getenv("TARN_TEST_VALUE", buffer, 8), -1);
}

TEST(Print, EveryMessageIsOneLineWithItsArguments) {
  for (int message = 0x2EC; message <= 0x2FE; ++message) {
    std::string text;
    if (message == 0x2EC)
      text = captured_stderr([&] { tarn_serv_print(1, message, 2, "vdExp", 3); });
    else if (message <= 0x2F2)
      text = captured_stderr([&] { tarn_serv_print(1, message, 1, "vdExp"); });
    else
      text = captured_stderr([&] { tarn_serv_print(1, message, 2, 41, 0.1); });
    EXPECT_EQ(text.find('\n'), text.size() - 1) << text;
    if (message <= 0x2F2)
      EXPECT_NE(text.find(" vdExp:"), std::string::npos) << text;
    else {
      EXPECT_NE(text.find(" 41:"), std::string::npos) << text;
      EXPECT_EQ(std::strtod(text.c_str() + text.find("= ") + 2, nullptr), 0.1) << text;
    }
  }
  EXPECT_EQ(captured_stderr([] { tarn_serv_print(1, 0x2EB, 0); }), "");
  EXPECT_EQ(captured_stderr([] { tarn_serv_print(1, 0x2FF, 0); }), "");
}

TEST(Print, ALongNameIsCutAndTheLineEnds) {
  for (size_t length : {190, 220, 221, 222, 255, 256, 257, 5000}) {
    const std::string name(length, 'x');
    const std::string text = captured_stderr([&] { tarn_serv_print(1, 0x2ED, 1, name.c_str()); });
    EXPECT_EQ(text.find('\n'), text.size() - 1) << length;
    EXPECT_EQ(text, ("tarn: " + name + ": a pointer was refused\n").substr(0, text.size() - 1) + "\n");
    EXPECT_TRUE(text.size() == 255 || text.size() == length + 30) << text.size();
  }
  EXPECT_EQ(captured_stderr([] { tarn_serv_print(1, 0x2EE, 1, "%s%n%d"); }),
            "tarn: %s%n%d: argument outside the domain\n");
}

TEST(Print, TooFewArgumentsPrintNothing) {
  for (int message = 0x2EC; message <= 0x2FE; ++message)
    for (int32_t count : {INT32_MIN, -1, 0})
      EXPECT_EQ(captured_stderr([&] { tarn_serv_print(1, message, count); }), "");
  EXPECT_EQ(captured_stderr([] { tarn_serv_print(1, 0x2EC, 1, "vdExp"); }), "");
  EXPECT_EQ(captured_stderr([] { tarn_serv_print(1, 0x2F3, 1, 41); }), "");
  for (int32_t message : {INT32_MIN, -1, 0, INT32_MAX})
    EXPECT_EQ(captured_stderr([&] { tarn_serv_print(1, message, 0); }), "");
}

TEST(Cleanup, TheSamePairCountsOnceAndTheListIsBounded) {
  const auto nothing = [](void*) {};
  static char arguments[64];
  EXPECT_EQ(tarn_serv_core_register_cleanup(nothing, arguments), 0);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(tarn_serv_core_register_cleanup(nothing, arguments), 0);
  int refused = 0;
  for (char& argument : arguments) refused += tarn_serv_core_register_cleanup(nothing, &argument) != 0;
  EXPECT_GT(refused, 0);
}

TEST(Exit, EndsTheProcessWithTheCode) { EXPECT_EXIT(tarn_serv_exit(3), testing::ExitedWithCode(3), ""); }

TEST(Threads, SerialFunctionsStandIn) {
  auto limit =
      reinterpret_cast<int32_t (*)()>(tarn_serv_load_thread_fun("tarn_kest_serv_threader_get_num_threads_limit"));
  auto loop = reinterpret_cast<void (*)(int64_t, int32_t, void*, tarn_loop_body)>(
      tarn_serv_load_thread_fun("tarn_kest_serv_threader_for"));
  ASSERT_NE(limit, nullptr);
  ASSERT_NE(loop, nullptr);
  EXPECT_EQ(limit(), 1);
  std::vector<int64_t> order;
  loop(5, 0, &order, [](int64_t i, int32_t id, int32_t count, void* context) {
    EXPECT_EQ(id, 0);
    EXPECT_EQ(count, 1);
    static_cast<std::vector<int64_t>*>(context)->push_back(i);
  });
  EXPECT_EQ(order, (std::vector<int64_t>{0, 1, 2, 3, 4}));
  EXPECT_EQ(tarn_serv_load_thread_fun("tarn_no_such_function"), nullptr);
}

TEST(Cpu, AnswersAreBooleans) {
  const int32_t answer = tarn_serv_cpuisicx();
  EXPECT_TRUE(answer == 0 || answer == 1);
}

}
