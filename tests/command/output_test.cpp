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

// A caller may have closed standard output: a file that then gets its descriptor would receive what was meant for it.
TEST_F(Outputs, NeverTakeTheDescriptorOfStandardOutput) {
  const pid_t child = fork();
  if (child == 0) {
    close(STDOUT_FILENO);
    try {
      Output standard("-"), file(folder / "file");
      standard.write("for standard output");
      file.write("for the file");
      file.commit();
      standard.commit();
    } catch (const Failure&) {
      _exit(9);
    }
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 9);
  EXPECT_EQ(content(folder / "file"), "for the file");
}

TEST_F(Outputs, OfTheSameNameAreRefused) {
  std::ofstream(folder / "file") << "before";
  fs::create_symlink("file", folder / "link");
  const std::string file = folder / "file", link = folder / "link", other = folder / "." / "file";
  EXPECT_THROW(check_distinct({"-", "", "-"}), Failure);
  EXPECT_THROW(check_distinct({file, "-", file}), Failure);
  EXPECT_THROW(check_distinct({file, link}), Failure);
  EXPECT_THROW(check_distinct({other, file}), Failure);
  EXPECT_THROW(check_distinct({folder / "absent", folder / "absent"}), Failure);
  EXPECT_NO_THROW(check_distinct({"-", file, folder / "absent", "", ""}));
  EXPECT_NO_THROW(check_distinct({"/dev/null", "/dev/null"}));
}

TEST(Texts, BecomeWellFormed) {
  const std::string good = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBD";
  EXPECT_EQ(as_utf8(good), good);
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_EQ(as_utf8("\xB0"
                    "C"),
            mark + "C"); // a degree sign of Latin-1
  EXPECT_EQ(as_utf8("x\xE2\x82"), "x" + mark + mark);
  EXPECT_EQ(as_utf8("\xC0\xAF"), mark + mark);
  EXPECT_EQ(as_utf8("\xED\xA0\x80"), mark + mark + mark);
  EXPECT_EQ(as_utf8("\xF4\x90\x80\x80"), mark + mark + mark + mark);
  EXPECT_EQ(as_utf8("\xEF\xBF\xBE"), mark);
  EXPECT_EQ(in_one_line("a\nb\tc\x1B\x7F\xC3\xA9"), "a b c  \xC3\xA9");
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
