// The tarn program from outside: arguments, streams, files, exit codes.
#include <gtest/gtest.h>

#include "support/program.h"
#include "tarn/vector.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

using tarn::test::ProgramOutcome;
namespace fs = std::filesystem;

namespace {

class Program : public tarn::test::ProgramTest {
protected:
  void refuses(const std::string& arguments, std::string_view input, const std::string& message) const {
    const int64_t before = files();
    const ProgramOutcome run = tarn(arguments, input);
    EXPECT_NE(run.code, 0) << arguments;
    EXPECT_EQ(run.err, "tarn: " + message + "\n") << arguments;
    EXPECT_EQ(run.out, "") << arguments;
    EXPECT_EQ(files(), before) << arguments;
  }
};

std::string numbers(const std::vector<double>& values) {
  std::ostringstream text;
  text.precision(17);
  for (double value : values) text << value << "\n";
  return text.str();
}

std::vector<double> parsed(const std::string& text) {
  std::istringstream stream(text);
  std::vector<double> values;
  for (std::string word; stream >> word;) values.push_back(std::strtod(word.c_str(), nullptr));
  return values;
}

std::vector<double> arguments_from(double first, double step, int count) {
  std::vector<double> values;
  for (int i = 0; i < count; ++i) values.push_back(first + step * i);
  return values;
}

}

TEST_F(Program, EvalGivesTheLibrarysBits) {
  const std::vector<double> x = arguments_from(-20.0, 0.37, 1000);
  std::vector<double> expected(x.size());
  const auto n = static_cast<int32_t>(x.size());
  __lumedExp_HA(n, x.data(), expected.data());
  EXPECT_EQ(parsed(tarn("eval Exp", numbers(x)).out), expected);
  __lumedExp_50(n, x.data(), expected.data());
  const std::vector<double> low = parsed(tarn("eval Exp --class LA", numbers(x)).out);
  EXPECT_EQ(low, expected);
  EXPECT_EQ(parsed(tarn("eval Exp", numbers(x), "TARN_VM_MODE=LUME_LA").out), low);
  __lumedExp_26(n, x.data(), expected.data());
  EXPECT_EQ(parsed(tarn("eval Exp --class EP", numbers(x), "TARN_VM_MODE=LUME_LA").out), expected);
}

TEST_F(Program, EvalInSingle) {
  std::vector<float> x, expected;
  for (int i = 0; i < 500; ++i) x.push_back(0.01F * static_cast<float>(i + 1));
  expected.resize(x.size());
  __lumesLn_HA(static_cast<int32_t>(x.size()), x.data(), expected.data());
  write("in.f32", {reinterpret_cast<const char*>(x.data()), x.size() * sizeof(float)});
  EXPECT_EQ(tarn("eval Ln --type s --to binary -o out.f32 in.f32").code, 0);
  const std::string bytes = read(folder / "out.f32");
  ASSERT_EQ(bytes.size(), expected.size() * sizeof(float));
  EXPECT_EQ(std::memcmp(bytes.data(), expected.data(), bytes.size()), 0);
}

TEST_F(Program, MissingCellsStayMissing) {
  write("air.csv", "Ozone,Wind\n41,7.4\nNA,8\n,9\n1,10\n");
  EXPECT_EQ(tarn("eval Ln --column Ozone air.csv").out, "3.713572066704308\nNA\nNA\n0\n");
  EXPECT_EQ(tarn("eval Ln --column Ozone --to csv air.csv").out,
            "Ozone,Ln(Ozone)\n41,3.713572066704308\nNA,NA\nNA,NA\n1,0\n");
  EXPECT_EQ(tarn("eval Ln", "NA NA").out, "NA\nNA\n");
}

TEST_F(Program, EveryShape) {
  EXPECT_EQ(tarn("eval Add", "1 2\n3 4").out, "3\n7\n");
  EXPECT_EQ(tarn("eval Modf", "1.5 -2.25").out, "1\t0.5\n-2\t-0.25\n");
  EXPECT_EQ(tarn("eval LinearFrac --scalar -2 --scalar 1 --scalar 1 --scalar 0x1p-1", "3 1.5\n0 0").out, "-2.5\n2\n");
  write("two.csv", "x,y\n7,2\n,1\n1,0\n");
  const ProgramOutcome csv = tarn("eval Div --column y --column x --to csv two.csv");
  EXPECT_EQ(csv.out, "y,x,\"Div(y, x)\"\n2,7,0.2857142857142857\n1,NA,NA\n0,1,0\n");
  const ProgramOutcome div = tarn("eval Div two.csv");
  EXPECT_EQ(div.out, "3.5\nNA\ninf\n");
  EXPECT_EQ(div.err, "tarn: two.csv, line 4: Div(1, 0): singularity; result inf\n");
  EXPECT_EQ(tarn("eval Modf --to csv", "1.5").out, "a,Modf(a)[1],Modf(a)[2]\n1.5,1,0.5\n");
  refuses("eval Add", "1 2 3\n", "standard input has 3 columns where 2 are needed; choose with --column");
  refuses("eval Add", "1\n", "standard input has 1 column where 2 are needed; choose with --column");
  refuses("eval LinearFrac --scalar 1", "1 2\n", "--scalar: 1 given, 4 needed");
}

TEST_F(Program, ReportsNameTheLine) {
  write("x.csv", "x\n1\n\nNA\n-1\n0\n");
  const ProgramOutcome run = tarn("eval Ln x.csv");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "0\nNA\nnan\n-inf\n");
  EXPECT_EQ(run.err, "tarn: x.csv, line 5: Ln(-1): argument outside the domain; result nan\n"
                     "tarn: x.csv, line 6: Ln(0): singularity; result -inf\n");
  EXPECT_EQ(tarn("eval Exp", "1000 -1000").err, "tarn: standard input, line 1: Exp(1000): overflow; result inf\n"
                                                "tarn: standard input, line 1: Exp(-1000): underflow; result 0\n");
}

TEST_F(Program, ReportsAreCountedBeyondTheLimit) {
  EXPECT_EQ(tarn("eval Ln --reports 1", "-1 -2 -3").err,
            "tarn: standard input, line 1: Ln(-1): argument outside the domain; result nan\n"
            "tarn: 3 reports in all\n");
  EXPECT_EQ(tarn("eval Ln --reports 0", "-1 -2 -3").err, "tarn: 3 reports in all\n");
}

TEST_F(Program, TheModesErrorRoutesHold) {
  EXPECT_EQ(tarn("eval Ln", "-1", "TARN_VM_MODE=LUME_ERRMODE_NOERR").err, "");
  EXPECT_EQ(tarn("eval Ln", "-1", "TARN_VM_MODE=LUME_ERRMODE_IGNORE").err, "");
  EXPECT_EQ(tarn("eval Ln", "-1", "TARN_VM_MODE=LUME_ERRMODE_ERRNO").err,
            "tarn: standard input: last report: argument outside the domain\n");
  const ProgramOutcome printed = tarn("eval Ln", "-1", "TARN_VM_MODE=LUME_ERRMODE_STDERR");
  EXPECT_NE(printed.err.find("vdLn"), std::string::npos) << "the library's own message";
}

TEST_F(Program, SlicesGiveTheSameResultsAndReports) {
  constexpr int count = 200'000;
  std::vector<double> x = arguments_from(0.5, 0.001, count);
  std::string reports;
  for (int i = 777; i < count; i += 19'000) {
    x[static_cast<size_t>(i)] = -i;
    reports += "tarn: in.txt, line " + std::to_string(i + 1) + ": Ln(-" + std::to_string(i) +
               "): argument outside the domain; result nan\n";
  }
  write("in.txt", numbers(x));
  const ProgramOutcome one = tarn("eval Ln --threads 1 in.txt"), four = tarn("eval Ln --threads 4 in.txt"),
                       low = tarn("eval Ln --threads 4 in.txt", "", "TARN_VM_MODE=LUME_LA");
  EXPECT_EQ(one.err, reports);
  EXPECT_EQ(four.err, reports);
  EXPECT_TRUE(one.out == four.out);
  EXPECT_FALSE(one.out == low.out) << "the threads follow the caller's mode";
  EXPECT_TRUE(low.out == tarn("eval Ln --class LA --threads 1 in.txt").out);
}

TEST_F(Program, StrictWritesNothing) {
  const ProgramOutcome run = tarn("eval Ln --strict -o out.txt", "1 -1");
  EXPECT_EQ(run.code, 1);
  EXPECT_FALSE(fs::exists(folder / "out.txt"));
  EXPECT_EQ(tarn("eval Ln --strict -o out.txt", "1 2").code, 0);
  EXPECT_TRUE(fs::exists(folder / "out.txt"));
}

TEST_F(Program, RefusesInOneLine) {
  refuses("frob", "", "no subcommand named frob (try: tarn --help)");
  refuses("eval Exq", "1", "no function named Exq; did you mean Exp? (tarn list shows all)");
  refuses("eval exp", "1", "no function named exp; did you mean Exp? (tarn list shows all)");
  refuses("eval Qwertyuiop", "1", "no function named Qwertyuiop (tarn list shows all)");
  refuses("eval Exp --class XX", "1", "--class: XX not in {LA,HA,EP}");
  refuses("eval Exp --type q", "1", "--type: q not in {d,s}");
  refuses("eval Exp absent.txt", "", "cannot open absent.txt: No such file or directory");
  refuses("eval Exp .", "", "cannot read .: Is a directory");
  refuses("eval Exp", "", "standard input holds no numbers");
  refuses("eval Exp", "1 two", "standard input, line 1: \"two\" is not a number of type d");
  refuses("eval Exp -o out.txt", "1\n1e999", "standard input, line 2: \"1e999\" is not a number of type d");
  refuses("eval Exp --type s", "1e39", "standard input, line 1: \"1e39\" is not a number of type s");
  refuses("eval Exp -o absent/out.txt", "1", "cannot write absent/out.txt: No such file or directory");
  refuses("eval Exp -o .", "1", "cannot write .: Is a directory");
  refuses("eval Exp -o /dev/full", "1", "cannot write /dev/full: No space left on device");
  refuses("eval Exp -o ''", "1", "--output: nothing is named");
  refuses("eval Exp --scalar 2", "1", "--scalar: 1 given, 0 needed");
  refuses("eval Exp --scalar x", "1", "--scalar: \"x\" is not a number of type d");
  refuses("eval", "", "function is required");
  refuses("eval Exp --frobnicate", "1", "The following argument was not expected: --frobnicate");
  refuses("list Exq", "", "no function named Exq; did you mean Exp? (tarn list shows all)");
}

TEST_F(Program, FullDiskIsNoticed) {
  for (const char* command :
       {"eval Exp", "list", "list Exp", "stats", "random uniform", "--help", "--version", "eval --help", ""}) {
    const ProgramOutcome full = tarn(command, "1", "", "/dev/full");
    EXPECT_EQ(full.code, 1) << command;
    EXPECT_EQ(full.err, "tarn: cannot write standard output: No space left on device\n") << command;
  }
}

TEST_F(Program, ListAndHelpTell) {
  const ProgramOutcome list = tarn("list");
  EXPECT_EQ(list.code, 0);
  for (const char* word : {"Exp", "Ln", "d s"}) EXPECT_NE(list.out.find(word), std::string::npos) << word;
  EXPECT_NE(tarn("list Ln").out.find("type s"), std::string::npos);
  for (const char* page : {"--help", "eval --help", "list --help"}) EXPECT_EQ(tarn(page).code, 0) << page;
  EXPECT_NE(tarn("eval --help").out.find("tarn eval Ln --column Ozone"), std::string::npos);
  EXPECT_NE(tarn("").out.find("eval"), std::string::npos);
}
