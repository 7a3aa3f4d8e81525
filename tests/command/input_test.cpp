#include "command/failure.h"
#include "command/input.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <unistd.h>

using namespace tarn::command;

namespace {

class InputFile {
public:
  explicit InputFile(std::string_view content, const std::string& ending = ".txt")
      : path(testing::TempDir() + "tarn_input_" + std::to_string(getpid()) + ending) {
    std::ofstream(path, std::ios::binary) << content;
  }
  ~InputFile() { std::remove(path.c_str()); }
  const std::string path;
};

Table read(std::string_view content, int wanted, InputOptions options = {}, const std::string& ending = ".txt") {
  const InputFile file(content, ending);
  options.path = file.path;
  return read_table(options, wanted);
}

// The message, without the name of the file.
std::string failure(std::string_view content, int wanted, InputOptions options = {},
                    const std::string& ending = ".txt") {
  const InputFile file(content, ending);
  options.path = file.path;
  try {
    read_table(options, wanted);
  } catch (const Failure& failure) {
    std::string what = failure.what();
    if (const size_t name = what.find(file.path); name != what.npos) what.erase(name, file.path.size());
    return what;
  }
  return "no failure";
}

InputOptions columns(std::vector<std::string> names) {
  InputOptions options;
  options.columns = std::move(names);
  return options;
}

using Values = std::vector<double>;
using Lines = std::vector<int64_t>;

}

TEST(Numbers, Forms) {
  double value = 0;
  const auto reads = [&](std::string_view text, double expected, Real real = Real::Double) {
    EXPECT_TRUE(parse_number(text, real, value)) << text;
    EXPECT_EQ(value, expected) << text;
  };
  reads("1", 1);
  reads("+1.5e3", 1500);
  reads("-.5", -.5);
  reads("5.", 5);
  reads("0x1.8p3", 12);
  reads("-0x1p-1074", -0x1p-1074);
  reads("inf", INFINITY);
  reads("-Infinity", -INFINITY);
  reads("1e-400", 0);
  reads("5e-324", 0x1p-1074);
  reads("1e-46", 0, Real::Single);
  reads("1.7976931348623157e308", std::numeric_limits<double>::max());
  EXPECT_TRUE(parse_number("nan", Real::Double, value));
  EXPECT_TRUE(std::isnan(value));
  for (const char* text : {"", "-", "+-1", "--1", "1x", "0x", "1e", "1,5", "one", "1 2", "1e400", "-1e400", "0x1p1024",
                           "0x-1", "-0x-1", "0x+1", "0xinf", "0xnan"})
    EXPECT_FALSE(parse_number(text, Real::Double, value)) << text;
  EXPECT_FALSE(parse_number("1e39", Real::Single, value));
}

TEST(Numbers, AreRoundedOnce) {
  // Halfway between two floats but for the last digit: through a double it would round to even, downwards.
  double value = 0;
  ASSERT_TRUE(parse_number("1.00000005960464477540", Real::Single, value));
  EXPECT_EQ(value, 0x1.000002p0);
  ASSERT_TRUE(parse_number("1.0000000596046447", Real::Single, value));
  EXPECT_EQ(value, 1.0);
}

TEST(Text, EveryNumberInOrder) {
  const Table table = read("# readings\n1 2\t3\n\n  4 # last\n5", 1);
  ASSERT_EQ(table.columns.size(), 1U);
  EXPECT_EQ(table.columns[0].values, (Values{1, 2, 3, 4, 5}));
  EXPECT_EQ(table.lines, (Lines{2, 2, 2, 4, 5}));
}

TEST(Text, AByteOrderMarkIsNoPartOfTheFirstNumber) {
  EXPECT_EQ(read("\xEF\xBB\xBF"
                 "1 2\n",
                 1)
                .columns[0]
                .values,
            (Values{1, 2}));
  EXPECT_EQ(read("\xEF\xBB\xBF# readings, two\n1 2\n", 2).columns[1].values, (Values{2}));
}

TEST(Text, Rows) {
  const Table table = read("1 2\n3 NA\r\n", 2);
  ASSERT_EQ(table.columns.size(), 2U);
  EXPECT_EQ(table.columns[0].values, (Values{1, 3}));
  EXPECT_FALSE(table.columns[1].missing[0]);
  EXPECT_TRUE(table.columns[1].missing[1]);
  EXPECT_TRUE(std::isnan(table.columns[1].values[1]));
}

TEST(Text, AColumnByNumber) {
  const Table table = read("1 2\n3 4\n", 1, columns({"2"}));
  EXPECT_EQ(table.columns[0].values, (Values{2, 4}));
}

TEST(Csv, HeaderColumnsAndGaps) {
  const char* air = "Ozone,Solar.R,Wind\n41,190,7.4\nNA,118,8\n,149,12.6\n";
  const Table table = read(air, 1, columns({"Ozone"}), ".csv");
  EXPECT_EQ(table.columns[0].name, "Ozone");
  ASSERT_EQ(table.rows(), 3);
  EXPECT_EQ(table.columns[0].values[0], 41);
  EXPECT_EQ(table.columns[0].missing, (std::vector<bool>{false, true, true}));
  EXPECT_EQ(table.lines, (Lines{2, 3, 4}));

  const Table two = read(air, 2, columns({"3", "Solar.R"}), ".csv");
  EXPECT_EQ(two.columns[0].values, (Values{7.4, 8, 12.6}));
  EXPECT_EQ(two.columns[1].values, (Values{190, 118, 149}));
  EXPECT_EQ(read(air, 0, {}, ".csv").columns.size(), 3U);
}

TEST(Csv, QuotedCells) {
  const Table table =
      read("\xEF\xBB\xBF\"name, \"\"full\"\"\",x\r\n\"a\nb\",1\r\n \"c\" ,\"2\"\r\n", 1, columns({"x"}), ".csv");
  EXPECT_EQ(table.columns[0].values, (Values{1, 2}));
  EXPECT_EQ(table.lines, (Lines{2, 4})); // the line break inside the quotes counts
  EXPECT_EQ(read("\"name, \"\"full\"\"\"\n1\n", 1, {}, ".csv").columns[0].name, "name, \"full\"");
}

TEST(Csv, WithoutHeaderAndOtherDelimiters) {
  EXPECT_EQ(read("1,2\n3,4\n", 2, {}, ".csv").rows(), 2);
  InputOptions options;
  options.header = "yes";
  EXPECT_EQ(read("1,2\n3,4\n", 2, options, ".csv").columns[1].name, "2");
  options.header = "auto";
  options.delimiter = ";";
  EXPECT_EQ(read("a;b\n3;4\n", 2, options, ".csv").columns[1].values, (Values{4}));
  options.delimiter = "tab";
  EXPECT_EQ(read("a\tb\n3\t\n", 2, options, ".csv").columns[1].missing[0], true);
}

// What starts like a number is no name: a first row of data must not vanish as a header.
TEST(Csv, OnlyNamesMakeAHeader) {
  EXPECT_EQ(failure("1e999\n1\n", 1, {}, ".csv"), ", line 1: \"1e999\" is not a number of type d");
  InputOptions options;
  options.delimiter = ";";
  EXPECT_EQ(failure("1,5;2\n3;4\n", 2, options, ".csv"), ", line 1: \"1,5\" is not a number of type d");
  EXPECT_EQ(read("2024-05-31,1\n2024-06-01,2\n", 1, columns({"2"}), ".csv").columns[0].values, (Values{1, 2}));
  EXPECT_EQ(read("country,2019,2020\nA,1,2\n", 1, columns({"2020"}), ".csv").columns[0].values, (Values{2}));
  EXPECT_EQ(read("2nd,x\n1,2\n", 2, {}, ".csv").columns[0].name, "2nd");
}

TEST(Csv, ANameThatStandsTwiceIsRefused) {
  EXPECT_EQ(failure("a,b,a\n1,2,3\n", 1, columns({"a"}), ".csv"), ": 2 columns are named \"a\"; choose by number");
  EXPECT_EQ(read("a,b,a\n1,2,3\n", 1, columns({"3"}), ".csv").columns[0].values, (Values{3}));
  EXPECT_EQ(read("3,b,c\n1,2,4\n", 1, columns({"3"}), ".csv").columns[0].values, (Values{1})) << "names come first";
}

TEST(Csv, BlanksThatAreDelimiters) {
  const Table tabs = read("a\tb\n1\t2\n\t\n\n \t4\n", 2, {}, ".tsv"); // the delimiter by the file's name
  EXPECT_EQ(tabs.lines, (Lines{2, 3, 5}));
  EXPECT_EQ(tabs.columns[0].missing, (std::vector<bool>{false, true, true}));
  InputOptions options;
  options.delimiter = " ";
  EXPECT_EQ(read("1  \"3\"\n", 3, options, ".csv").columns[1].missing[0], true);
  options.delimiter = ",";
  EXPECT_EQ(read("1,2\n", 2, options, ".tsv").columns[1].values, (Values{2}));
}

TEST(Csv, IsRecognised) {
  EXPECT_EQ(read("a,b\n1,2\n", 2, {}, ".dat").columns[1].name, "b");
  EXPECT_EQ(read("a\n1\n", 1, columns({"a"}), ".dat").columns[0].values, (Values{1}));
  InputOptions options;
  options.header = "yes";
  EXPECT_EQ(read("7\n1\n", 1, options, ".dat").columns[0].name, "7");
}

TEST(Binary, BothTypes) {
  const double doubles[] = {1.5, -2, 3, 4};
  const std::string_view bytes(reinterpret_cast<const char*>(doubles), sizeof doubles);
  EXPECT_EQ(read(bytes, 1, {}, ".bin").columns[0].values, (Values{1.5, -2, 3, 4}));
  EXPECT_EQ(read(bytes, 2, {}, ".bin").columns[1].values, (Values{-2, 4}));
  InputOptions options = columns({"3"});
  options.width = 4;
  EXPECT_EQ(read(bytes, 1, options, ".bin").columns[0].values, (Values{3}));
  const float floats[] = {1.5F, -2};
  options = {};
  options.real = Real::Single;
  EXPECT_EQ(read({reinterpret_cast<const char*>(floats), sizeof floats}, 1, options, ".f32").columns[0].values,
            (Values{1.5, -2}));
  EXPECT_EQ(failure(bytes.substr(0, 9), 1, {}, ".bin"), ": 9 bytes are no whole number of rows of 8 bytes");
}

// The name of a file tells what its values are, whatever type they are wanted in.
TEST(Binary, TheFilesNameTellsTheValues) {
  const float floats[] = {1.5F, -2, 3};
  const double doubles[] = {0.1, -2};
  const std::string_view four(reinterpret_cast<const char*>(floats), sizeof floats),
      eight(reinterpret_cast<const char*>(doubles), sizeof doubles);
  EXPECT_EQ(read(four, 1, {}, ".f32").columns[0].values, (Values{1.5, -2, 3}));
  InputOptions single;
  single.real = Real::Single;
  EXPECT_EQ(read(eight, 1, single, ".f64").columns[0].values, (Values{0.1F, -2}));
  EXPECT_EQ(read(four, 1, single, ".bin").columns[0].values, (Values{1.5, -2, 3}));
  const double large[] = {1, 1e39};
  EXPECT_EQ(failure({reinterpret_cast<const char*>(large), sizeof large}, 1, single, ".f64"),
            ", row 2: a value too large for type s");
}

TEST(Refusals, NameTheLine) {
  EXPECT_EQ(failure("1\n2\nthree\n", 1), ", line 3: \"three\" is not a number of type d");
  EXPECT_EQ(failure("1\n1e999\n", 1), ", line 2: \"1e999\" is not a number of type d");
  EXPECT_EQ(failure({"1\n\0\x1B[3\n", 7}, 1), ", line 2: \"??[3\" is not a number of type d");
  EXPECT_EQ(failure("a,b\n1,2\n3\n", 1, columns({"a"}), ".csv"), ", line 3: 1 cells where the first row has 2");
  EXPECT_EQ(failure("a,b\n1,\"2\n3\n", 1, columns({"a"}), ".csv"), ", line 2: a quoted cell without an end");
  EXPECT_EQ(failure("a,b\n1,\"2\"x\n", 1, columns({"a"}), ".csv"), ", line 2: text behind the closing quote of a cell");
}

TEST(Refusals, ColumnsAndEmptiness) {
  EXPECT_EQ(failure("a,b\n1,2\n", 1, columns({"c"}), ".csv"), ": no column \"c\" among its 2");
  EXPECT_EQ(failure("a,b\n1,2\n", 1, columns({"3"}), ".csv"), ": no column \"3\" among its 2");
  EXPECT_EQ(failure("a,b\n1,2\n", 1, columns({"0"}), ".csv"), ": no column \"0\" among its 2");
  EXPECT_EQ(failure("a,b\n1,2\n", 1, {}, ".csv"), " has 2 columns where 1 is needed; choose with --column: a, b");
  EXPECT_EQ(failure("a,b\n1,2\n", 2, columns({"a"}), ".csv"), "--column: 1 given, 2 needed");
  for (const char* ending : {".txt", ".csv", ".bin"}) EXPECT_EQ(failure("", 1, {}, ending), " holds no numbers");
  EXPECT_EQ(failure("a,b\n", 2, {}, ".csv"), " holds no numbers");
  EXPECT_EQ(failure("# nothing\n\n", 1), " holds no numbers");
}

TEST(Refusals, Files) {
  InputOptions options;
  options.path = "/nonexistent/file";
  EXPECT_THROW(read_table(options, 1), Failure);
  options.path = "/";
  EXPECT_THROW(read_table(options, 1), Failure);
}
