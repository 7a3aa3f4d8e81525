// Mode, status, callback and vector pointer of a thread.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "tarn/vector.h"

namespace {

// What a new thread, which reads the variable again, takes for its first mode.
uint32_t first_mode(const char* value) {
  if (value)
    setenv("TARN_VM_MODE", value, 1);
  else
    unsetenv("TARN_VM_MODE");
  uint32_t mode = 0;
  std::thread([&] { mode = __lumeGetMode(); }).join();
  unsetenv("TARN_VM_MODE");
  return mode;
}
int64_t words(const std::string& value) {
  setenv("TARN_VM_MODE", value.c_str(), 1);
  const int64_t result = tarn_lume_kernel_ReadEnvVarMode();
  unsetenv("TARN_VM_MODE");
  return result;
}

TEST(ModeVariable, EveryWord) {
  const std::pair<const char*, int64_t> rows[] = {
      {"LUME_LA", 0x1},
      {"LUME_HA", 0x2},
      {"LUME_EP", 0x3},
      {"LUME_DEFAULT_PRECISION", 0x0},
      {"LUME_FLOAT_CONSISTENT", 0x10},
      {"LUME_DOUBLE_CONSISTEN", 0x20},
      {"LUME_RESTORE", 0x30},
      {"LUME_ERRMODE_IGNORE", 0x100},
      {"LUME_ERRMODE_ERRNO", 0x200},
      {"LUME_ERRMODE_STDERR", 0x400},
      {"LUME_ERRMODE_EXCEPT", 0x800},
      {"LUME_ERRMODE_CALLBACK", 0x1000},
      {"LUME_ERRMODE_NOERR", 0x2000},
      {"LUME_ERRMODE_DEFAULT", 0x1A00},
      {"LUME_TRAP_INVALID", 0x1000000},
      {"LUME_TRAP_DIVBYZERO", 0x2000000},
      {"LUME_TRAP_OVERFLOW", 0x4000000},
      {"LUME_TRAP_UNDERFLOW", 0x8000000},
  };
  for (const auto& [word, value] : rows) {
    EXPECT_EQ(words(word), value) << word;
    EXPECT_EQ(words(std::string(word) + ",LUME_LA"), value | 1) << word;
    EXPECT_EQ(words(std::string(word) + "X"), -1) << word;
  }
}

TEST(ModeVariable, WhatIsRefused) {
  for (const char* value :
       {"", "LA", "LUME_LA,", ",LUME_LA", "LUME_LA,,LUME_HA", "LUME_", "LUME_DOUBLE_CONSISTENT", "LUME_la", " LUME_LA",
        "LUME_LA ", "LUME_LA, LUME_HA", "LUME_LA;LUME_HA", "LUME_HA,LUME_NONSENSE", "LUMELA"})
    EXPECT_EQ(words(value), -1) << '"' << value << '"';
  unsetenv("TARN_VM_MODE");
  EXPECT_EQ(tarn_lume_kernel_ReadEnvVarMode(), -1) << "absent";
}

TEST(ModeVariable, LengthLimit) {
  std::string value = "LUME_LA"; // 7 + 31 * 8 = 255 characters
  while (value.size() + 8 <= 255) value += ",LUME_HA";
  ASSERT_EQ(value.size(), 255u);
  EXPECT_EQ(words(value), 3);
  EXPECT_EQ(words("LUME_HA,LUME_HA," + value), -1) << "does not fit the buffer";
}

TEST(ModeVariable, FirstModeOfAThread) {
  EXPECT_EQ(first_mode(nullptr), 0x1A02u);
  EXPECT_EQ(first_mode("LUME_DOUBLE_CONSISTENT"), 0x1A02u);
  EXPECT_EQ(first_mode("LUME_DOUBLE_CONSISTEN"), 0x1A22u);
  EXPECT_EQ(first_mode("LUME_LA,"), 0x1A02u);
  EXPECT_EQ(first_mode("LA"), 0x1A02u);
  EXPECT_EQ(first_mode("LUME_LA"), 0x1A01u);
  EXPECT_EQ(first_mode("LUME_LA,LUME_HA"), 0x1A03u);
  EXPECT_EQ(first_mode("LUME_DEFAULT_PRECISION"), 0x1A02u);
  EXPECT_EQ(first_mode("LUME_ERRMODE_IGNORE"), 0x0102u);
  EXPECT_EQ(first_mode("LUME_EP,LUME_ERRMODE_NOERR,LUME_TRAP_OVERFLOW"), 0x4002003u);
}

TEST(ModeVariable, ReadOncePerThread) {
  std::thread([] {
    EXPECT_EQ(__lumeGetMode(), 0x1A02u);
    setenv("TARN_VM_MODE", "LUME_EP", 1);
    EXPECT_EQ(__lumeGetMode(), 0x1A02u);
    EXPECT_EQ(tarn_lume_kernel_GetMode(), 0x1A02u);
    unsetenv("TARN_VM_MODE");
  }).join();
}

TEST(ModeVariable, EveryFirstUseReadsIt) {
  setenv("TARN_VM_MODE", "LUME_EP", 1);
  std::thread([] { EXPECT_EQ(__lumeSetMode(0), 0x1A03u); }).join();
  std::thread([] { EXPECT_EQ(tarn_lume_kernel_GetTTableIndex(), 2); }).join();
  std::thread([] {
    __lumeSetErrorCallBack([](ErrorContext*) { return 0; });
    EXPECT_EQ(__lumeGetMode(), 0x1A03u);
  }).join();
  unsetenv("TARN_VM_MODE");
}

// Both names of an operation, on the same cells.
struct Names {
  uint32_t (*get_mode)();
  uint32_t (*set_mode)(uint32_t);
  int32_t (*get_status)();
  int32_t (*set_status)(int32_t);
  int32_t (*clear_status)();
  ErrorCallback (*get_callback)();
  ErrorCallback (*set_callback)(ErrorCallback);
  ErrorCallback (*clear_callback)();
  const void* (*set_pointer)(const void*);
};
const Names front = {__lumeGetMode,
                     __lumeSetMode,
                     __lumeGetErrStatus,
                     __lumeSetErrStatus,
                     __lumeClearErrStatus,
                     __lumeGetErrorCallBack,
                     __lumeSetErrorCallBack,
                     __lumeClearErrorCallBack,
                     __lumeSetInterfInputVectorPointer};
const Names inner = {tarn_lume_kernel_GetMode,
                     tarn_lume_kernel_SetMode,
                     tarn_lume_kernel_GetErrStatus,
                     tarn_lume_kernel_SetErrStatus,
                     tarn_lume_kernel_ClearErrStatus,
                     tarn_lume_kernel_GetErrorCallBack,
                     tarn_lume_kernel_SetErrorCallBack,
                     tarn_lume_kernel_ClearErrorCallBack,
                     tarn_lume_kernel_SetInterfInputVectorPointer};

int32_t some_callback(ErrorContext*) { return 0; }
int32_t other_callback(ErrorContext*) { return 0; }

class BothNames : public testing::TestWithParam<std::pair<Names, Names>> {
protected:
  // Each test in a thread of its own, whose cells are new.
  template <class Body> static void fresh(Body body) { std::thread(body).join(); }
};

TEST_P(BothNames, FieldsOfTheMode) {
  fresh([] {
    const auto& [x, y] = GetParam();
    EXPECT_EQ(x.set_mode(0), 0x1A02u);
    EXPECT_EQ(y.get_mode(), 0x1A02u);
    EXPECT_EQ(x.set_mode(0x1), 0x1A02u);
    EXPECT_EQ(y.get_mode(), 0x1A01u) << "accuracy alone";
    EXPECT_EQ(x.set_mode(0x280000), 0x1A01u);
    EXPECT_EQ(y.set_mode(0x2000), 0x281A01u);
    EXPECT_EQ(x.get_mode(), 0x282001u) << "the error field alone";
    x.set_mode(0x140000);
    EXPECT_EQ(y.get_mode(), 0x142001u) << "a field is replaced, not OR-ed";
    x.set_mode(0x5000000);
    EXPECT_EQ(y.get_mode(), 0x5142001u);
    x.set_mode(0x2000000);
    EXPECT_EQ(y.get_mode(), 0x2142001u);
    x.set_mode(0xF0C300F0);
    EXPECT_EQ(y.get_mode(), 0x2142001u) << "bits 4-7, 16, 17, 22, 23, 28-31 never change";
    x.set_mode(0xFFFFFFFF);
    EXPECT_EQ(y.get_mode(), 0x0F3CFF0Fu);
  });
}

TEST_P(BothNames, StatusIsTheLastStored) {
  fresh([] {
    const auto& [x, y] = GetParam();
    EXPECT_EQ(x.get_status(), 0);
    EXPECT_EQ(x.set_status(3), 0);
    EXPECT_EQ(y.get_status(), 3);
    EXPECT_EQ(y.set_status(-2), 3);
    EXPECT_EQ(x.clear_status(), -2);
    EXPECT_EQ(y.get_status(), 0);
  });
}

TEST_P(BothNames, CallbackAndItsBit) {
  fresh([] {
    const auto& [x, y] = GetParam();
    EXPECT_EQ(x.get_callback(), nullptr);
    x.set_mode(0x200);
    EXPECT_EQ(x.set_callback(some_callback), nullptr);
    EXPECT_EQ(y.get_mode(), 0x1202u);
    EXPECT_EQ(y.get_callback(), some_callback);
    EXPECT_EQ(y.set_callback(other_callback), some_callback);
    EXPECT_EQ(x.clear_callback(), other_callback);
    EXPECT_EQ(y.get_mode(), 0x202u);
    EXPECT_EQ(y.get_callback(), nullptr);
    x.set_callback(some_callback);
    x.set_callback(nullptr);
    EXPECT_EQ(y.get_mode(), 0x202u);
  });
}

TEST_P(BothNames, TheCallbackBitStaysWhereItIsTheOnlyRoute) {
  fresh([] {
    const auto& [x, y] = GetParam();
    x.set_mode(0x1000);
    x.set_callback(some_callback);
    EXPECT_EQ(y.clear_callback(), some_callback);
    EXPECT_EQ(y.get_mode(), 0x1002u);
  });
}

TEST_P(BothNames, VectorPointerReturnsItsArgument) {
  fresh([] {
    const auto& [x, y] = GetParam();
    int here = 0;
    EXPECT_EQ(x.set_pointer(&here), &here);
    EXPECT_EQ(y.set_pointer(nullptr), nullptr);
  });
}

INSTANTIATE_TEST_SUITE_P(FrontAndKernel, BothNames,
                         testing::Values(std::pair(front, front), std::pair(inner, inner), std::pair(front, inner),
                                         std::pair(inner, front)));

TEST(Names, AreTwoFunctions) {
  EXPECT_NE(front.get_mode, inner.get_mode);
  EXPECT_NE(front.set_mode, inner.set_mode);
  EXPECT_NE(front.get_status, inner.get_status);
  EXPECT_NE(front.set_status, inner.set_status);
  EXPECT_NE(front.clear_status, inner.clear_status);
  EXPECT_NE(front.get_callback, inner.get_callback);
  EXPECT_NE(front.set_callback, inner.set_callback);
  EXPECT_NE(front.clear_callback, inner.clear_callback);
  EXPECT_NE(front.set_pointer, inner.set_pointer);
}

TEST(TableIndex, FollowsTheAccuracy) {
  std::thread([] {
    for (uint32_t accuracy : {1u, 2u, 3u, 9u}) {
      __lumeSetMode(accuracy);
      EXPECT_EQ(tarn_lume_kernel_GetTTableIndex(), static_cast<int32_t>(accuracy) - 1);
      EXPECT_EQ(tarn_lume_kernel_GetTTableIndexM(nullptr, 0xFFFF0 | accuracy), static_cast<int32_t>(accuracy) - 1);
    }
    EXPECT_EQ(tarn_lume_kernel_GetTTableIndexM("ignored", 0), -1);
  }).join();
}

TEST(CpuVersion, IsFour) { EXPECT_EQ(dll_cpu_version(), 4); }

TEST(Cells, AreEachThreadsOwn) {
  __lumeSetMode(0x3);
  __lumeSetErrStatus(2);
  std::thread([] {
    EXPECT_EQ(__lumeGetMode(), 0x1A02u);
    EXPECT_EQ(__lumeGetErrStatus(), 0);
    __lumeSetMode(0x1);
    __lumeSetErrStatus(4);
  }).join();
  EXPECT_EQ(__lumeGetMode() & 0xF, 3u);
  EXPECT_EQ(__lumeGetErrStatus(), 2);
  __lumeSetMode(0x2);
  __lumeClearErrStatus();
}

}
