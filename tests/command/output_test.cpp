#include "command/failure.h"
#include "command/output.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tarn::command;
namespace fs = std::filesystem;

namespace {

class Outputs : public testing::Test {
protected:
  void SetUp() override { fs::create_directories(folder); }
  void TearDown() override { fs::remove_all(folder); }
  static std::string content(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }
  int64_t files() const { return std::distance(fs::directory_iterator(folder), fs::directory_iterator()); }
  const fs::path folder = fs::path(testing::TempDir()) / ("tarn_output_" + std::to_string(getpid()));
};

}

TEST_F(Outputs, AppearWholeOnCommit) {
  {
    Output output(folder / "result");
    output.write("one\n");
    EXPECT_FALSE(fs::exists(folder / "result"));
    output.commit();
    EXPECT_EQ(content(folder / "result"), "one\n");
  }
  EXPECT_EQ(files(), 1);
}

TEST_F(Outputs, LeaveNothingWithoutCommit) {
  std::ofstream(folder / "result") << "before";
  {
    Output output(folder / "result");
    output.write(std::string(1 << 20, 'x'));
  }
  EXPECT_EQ(content(folder / "result"), "before");
  EXPECT_EQ(files(), 1);
}

TEST_F(Outputs, KeepTheModeAndFollowLinks) {
  std::ofstream(folder / "target") << "before";
  fs::permissions(folder / "target", fs::perms(0640));
  fs::create_symlink("target", folder / "link");
  Output output(folder / "link");
  output.write("after");
  output.commit();
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(content(folder / "target"), "after");
  EXPECT_EQ(fs::status(folder / "target").permissions(), fs::perms(0640));
}

TEST_F(Outputs, GoWithASignal) {
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    Output output(folder / "result");
    raise(SIGTERM);
    _exit(0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
  EXPECT_EQ(files(), 0);
}

TEST_F(Outputs, DevicesAreWrittenDirectly) {
  Output null("/dev/null");
  null.write("gone");
  null.commit();
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  Output full("/dev/full");
  full.write("no room");
  EXPECT_THROW(full.commit(), Failure);
}

TEST_F(Outputs, RefuseWhereNoFileCanBe) {
  EXPECT_THROW(Output("/nonexistent/result"), Failure);
  EXPECT_THROW(Output{folder}, Failure);
}

TEST_F(Outputs, CsvQuotesItsHeader) {
  RowWriter rows({folder / "table", "csv"}, Real::Double, {"x", "a, \"b\""});
  rows.number(0.1);
  rows.missing();
  rows.end_row();
  rows.commit();
  EXPECT_EQ(content(folder / "table"), "x,\"a, \"\"b\"\"\"\n0.1,NA\n");
}

TEST_F(Outputs, TextAndBinary) {
  RowWriter rows({folder / "text", "text"}, Real::Single, {"x", "y"});
  rows.number(0.1F);
  rows.number(-INFINITY);
  rows.end_row();
  rows.commit();
  EXPECT_EQ(content(folder / "text"), "0.1\t-inf\n");

  RowWriter binary({folder / "binary", "binary"}, Real::Single, {"x", "y"});
  binary.number(1.5);
  binary.missing();
  binary.end_row();
  binary.commit();
  float values[2];
  const std::string bytes = content(folder / "binary");
  ASSERT_EQ(bytes.size(), sizeof values);
  std::memcpy(values, bytes.data(), sizeof values);
  EXPECT_EQ(values[0], 1.5F);
  EXPECT_TRUE(std::isnan(values[1]));
}

TEST(WrittenNumbers, ReadBackToTheSameBits) {
  std::mt19937_64 bits(1);
  for (int i = 0; i < 100000; ++i) {
    const double number = std::bit_cast<double>(bits());
    const float single = std::bit_cast<float>(static_cast<uint32_t>(bits()));
    std::string text;
    double back = 0;
    append_number(text, number, Real::Double);
    ASSERT_TRUE(parse_number(text, Real::Double, back)) << text;
    if (!std::isnan(number)) {
      ASSERT_EQ(std::bit_cast<uint64_t>(back), std::bit_cast<uint64_t>(number)) << text;
    }
    text.clear();
    append_number(text, single, Real::Single);
    ASSERT_TRUE(parse_number(text, Real::Single, back)) << text;
    if (!std::isnan(single)) {
      ASSERT_EQ(std::bit_cast<uint32_t>(static_cast<float>(back)), std::bit_cast<uint32_t>(single)) << text;
    }
  }
}
