// tarn fit from outside: its values, derivatives and integrals on data whose splines are known, its pictures and its
// refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <vector>

#include "support/program.h"

using tarn::test::ProgramOutcome;
namespace fs = std::filesystem;

namespace {

class Fit : public tarn::test::ProgramTest {
protected:
  ProgramOutcome run(const std::string& arguments, std::string_view input = "") const {
    return tarn("fit " + arguments, input);
  }
  // The numbers of text output, row by row; comments are left out.
  std::vector<std::vector<double>> rows(const std::string& arguments) const {
    const ProgramOutcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 0) << arguments << ": " << outcome.err;
    std::vector<std::vector<double>> table;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("#")) continue;
      std::istringstream cells(line);
      table.emplace_back();
      for (double value; cells >> value;) table.back().push_back(value);
    }
    return table;
  }
  void expect_rows(const std::string& arguments, const std::vector<std::vector<double>>& expected) const {
    const auto table = rows(arguments);
    ASSERT_EQ(table.size(), expected.size()) << arguments;
    for (size_t i = 0; i < table.size(); ++i) {
      ASSERT_EQ(table[i].size(), expected[i].size()) << arguments;
      for (size_t j = 0; j < table[i].size(); ++j) EXPECT_NEAR(table[i][j], expected[i][j], 1e-12) << arguments;
    }
  }
  // A refusal: one line of words, another exit code than 0, and no file where one was to be.
  void refuses(const std::string& arguments, const std::string& message) const {
    const ProgramOutcome outcome = run(arguments + " -o result.txt --picture result.svg");
    EXPECT_NE(outcome.code, 0) << arguments;
    EXPECT_EQ(outcome.out, "") << arguments;
    EXPECT_NE(outcome.err.find(message), std::string::npos) << arguments << ": " << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    for (const auto& entry : fs::directory_iterator(folder))
      EXPECT_FALSE(entry.path().filename().string().starts_with("result")) << arguments << ": " << entry.path();
  }
};

double cube(double t) { return t * t * t - 2 * t; }

std::string cubic_csv() {
  std::ostringstream csv;
  csv.precision(17);
  csv << "t,\"f, cubic\",line,slope\n";
  for (const double t : {4.0, 0.0, 1.0, 2.5, 3.0, 5.5, 7.0}) // in no order
    csv << t << ',' << cube(t) << ',' << 2 * t + 1 << ',' << 3 * t * t - 2 << '\n';
  return csv.str();
}

TEST_F(Fit, CubicsAreReproduced) {
  write("c.csv", cubic_csv());
  const std::string sites = " --at 0,0.5,3.7,7,-1,8.5 --derivatives 0,1,2,3,4";
  std::vector<std::vector<double>> expected;
  for (const double t : {0.0, 0.5, 3.7, 7.0, -1.0, 8.5}) expected.push_back({t, cube(t), 3 * t * t - 2, 6 * t, 6, 0});
  // Ends and what is inside given as the cubic has them.
  const std::string file = "c.csv --x t --y 'f, cubic' ";
  for (const std::string& spline :
       {std::string("--kind natural --boundary first=-2,145"), std::string("--kind natural --boundary second=0,42"),
        std::string("--kind natural --boundary first-second=-2,42"),
        std::string("--kind natural --boundary second-first=0,145"),
        std::string("--kind hermite --inner slope --boundary first=-2,145")}) {
    const auto table = rows(file + spline + sites);
    ASSERT_EQ(table.size(), expected.size()) << spline;
    for (size_t i = 0; i < table.size(); ++i)
      for (size_t j = 0; j < 6; ++j)
        EXPECT_NEAR(table[i][j], expected[i][j], 1e-10 * (1 + std::fabs(expected[i][j]))) << spline;
    const auto integral = rows(file + spline + " --integrate 0.5:6.25 --integrate 6.25:0.5");
    const auto antiderivative = [](double t) { return t * t * t * t / 4 - t * t; };
    ASSERT_EQ(integral.size(), 2u);
    EXPECT_NEAR(integral[0][2], antiderivative(6.25) - antiderivative(0.5), 1e-10);
    EXPECT_EQ(integral[1][2], -integral[0][2]);
  }
}

TEST_F(Fit, EveryKindGoesThroughTheData) {
  write("c.csv", cubic_csv());
  const char* kinds[] = {"linear", "quadratic", "subbotin",  "natural", "akima",
                         "bessel", "hyman",     "step-left", "look-up"};
  for (const std::string kind : kinds)
    expect_rows("c.csv --x t --y line --kind " + kind + " --at 0,1,2.5,3,4,5.5",
                {{0, 1}, {1, 3}, {2.5, 6}, {3, 7}, {4, 9}, {5.5, 12}});
  expect_rows("c.csv --x t --y line --kind step-right --at 0,0.5,7", {{0, 3}, {0.5, 3}, {7, 15}});
  expect_rows("c.csv --x t --y line --kind step-left --integrate 0.5:2", {{0.5, 2, 0.5 * 1 + 3}});
  expect_rows("c.csv --x 1 --y 3 --at 8", {{0, 1}, {1, 3}, {2, 5}, {3, 7}, {4, 9}, {5, 11}, {6, 13}, {7, 15}});
  expect_rows("c.csv --x t --y line --at 2,", {{2, 5}});
  // Boundary conditions that a straight line meets, whatever they are.
  for (const std::string boundary :
       {"free", "not-a-knot", "first=2,2", "second=0,0", "first-second=2,0", "second-first=0,2"})
    for (const std::string kind : {"natural", "akima", "bessel", "hyman"})
      expect_rows("c.csv --x t --y line --kind " + kind + " --boundary " + boundary +
                      " --at 0.25,6.5 --derivatives 0,1",
                  {{0.25, 1.5, 2}, {6.5, 14, 2}});
}

TEST_F(Fit, SeveralFunctionsFormatsAndGaps) {
  write("c.csv", "t,a,b\n0,1,10\n1,2,NA\n2,3,30\n3,,1\n4,5,50\n");
  const ProgramOutcome text = run("c.csv --x t --y a --y b --kind linear --at 1,3 --derivatives 1,0 --integrate 0:4");
  EXPECT_EQ(text.code, 0);
  EXPECT_EQ(text.out,
            "1\t2\t1\t20\t10\n3\t4\t1\t40\t10\n# integral of a from 0 to 4: 12\n# integral of b from 0 to 4: 120\n");
  EXPECT_EQ(text.err, "tarn: 2 rows left out for missing cells\n");
  const ProgramOutcome csv =
      run("c.csv --x t --y a --y b --kind linear --at 1,3 --derivatives 0,1 --to csv -o values.csv");
  EXPECT_EQ(csv.out, "");
  EXPECT_EQ(read(folder / "values.csv"), "t,a,a',b,b'\n1,2,1,20,10\n3,4,1,40,10\n");
  EXPECT_EQ(run("c.csv --x t --y b --kind linear --integrate 0:4 --to csv").out, "from,to,integral of b\n0,4,81\n");
  EXPECT_EQ(run("--x 1 --y 2 --kind linear --from csv --header no --at 0.5, -", "0,0\n1,2\n").out, "0.5\t1\n");
}

TEST_F(Fit, Periodic) {
  std::ostringstream csv;
  csv.precision(17);
  for (int i = 0; i <= 16; ++i) csv << i << ',' << (i % 16 == 0 ? 0 : std::sin(i * M_PI / 8)) << '\n';
  write("sine.csv", csv.str());
  const auto ends = rows("sine.csv --x 1 --y 2 --kind natural --boundary periodic --at 0,16 --derivatives 0,1,2");
  ASSERT_EQ(ends.size(), 2u);
  for (size_t j = 1; j < 4; ++j) EXPECT_NEAR(ends[0][j], ends[1][j], 1e-12);
  EXPECT_NEAR(ends[0][2], M_PI / 8, 1e-3);
  for (const std::string kind : {"akima", "bessel", "hyman"}) {
    const auto slopes = rows("sine.csv --x 1 --y 2 --kind " + kind + " --boundary periodic --at 0,16 --derivatives 1");
    EXPECT_NEAR(slopes[0][1], slopes[1][1], 1e-12) << kind;
  }
}

TEST_F(Fit, Pictures) {
  write("c.csv", cubic_csv());
  EXPECT_EQ(run("c.csv --x t --y line --y 'f, cubic' --kind hyman --integrate 1:3 --picture f.svg").code, 0);
  const std::string svg = read(folder / "f.svg");
  EXPECT_TRUE(svg.starts_with("<svg"));
  EXPECT_TRUE(svg.ends_with("</svg>\n"));
  size_t circles = 0, curves = 0;
  for (size_t at = 0; (at = svg.find("<circle", at)) != svg.npos; ++at) ++circles;
  for (size_t at = 0; (at = svg.find("<polyline", at)) != svg.npos; ++at) ++curves;
  EXPECT_EQ(circles, 2 * 7 + 2u); // the data of both, and a mark beside each name
  EXPECT_EQ(curves, 2u);
  EXPECT_EQ(run("c.csv --x t --y line --kind look-up --picture points.svg").code, 0);
  EXPECT_EQ(read(folder / "points.svg").find("<polyline"), std::string::npos);
}

TEST_F(Fit, HostileDataAndNames) {
  write("h.csv", "x,\"a<&>\n\x01\xFF\"\n-1e308,1e308\n0,-1e308\n1e308,3\n1.5e308,3\n");
  EXPECT_EQ(run("h.csv --x x --y 2 --kind step-left --picture h.svg").code, 0);
  const std::string svg = read(folder / "h.svg");
  EXPECT_NE(svg.find(">a&lt;&amp;&gt;  \xEF\xBF\xBD<"), std::string::npos);
  for (const char* word : {"nan", "inf"}) EXPECT_EQ(svg.find(word), std::string::npos) << word;
  // The width of the data overflows; their sites do not.
  const auto table = rows("h.csv --x x --y 2 --kind step-right --at 3");
  ASSERT_EQ(table.size(), 3u);
  EXPECT_EQ(table[0][0], -1e308);
  EXPECT_NEAR(table[1][0] / 1e308, 0.25, 1e-15);
  EXPECT_EQ(table[2][0], 1.5e308);
  // The words behind the values stay a comment, whatever the name holds.
  write("n.csv", "x,\"two\nlines\"\n0,1\n1,1\n");
  EXPECT_EQ(run("n.csv --x x --y 2 --kind linear --at 0,1 --integrate 0:1").out,
            "0\t1\n1\t1\n# integral of two lines from 0 to 1: 1\n");
  EXPECT_EQ(run("--x x --y 2 --kind linear --at 0, --derivatives 0,1 n.csv").out, "0\t1\t0\n");
}

TEST_F(Fit, Refusals) {
  write("c.csv", cubic_csv());
  write("few.csv", "t,y\n0,1\n1,2\n2,NA\n");
  write("twice.csv", "t,y\n0,1\n1,2\n0,3\n");
  write("infinite.csv", "t,y\n0,1\n1,inf\n2,3\n");
  write("words.csv", "t,y\n0,1\n1,two\n");
  write("open.csv", "t,y\n0,1\n1,2\n2,3\n3,4\n");
  write("empty.csv", "");
  refuses("absent.csv --x t --y y --at 5", "cannot open absent.csv");
  refuses("empty.csv --x t --y y --at 5", "empty.csv");
  refuses("c.csv --x t --y nothing --at 5", "no column \"nothing\"");
  refuses("words.csv --x t --y y --at 5", "line 3: \"two\" is not a number");
  refuses("infinite.csv --x t --y y --at 5", "line 3: inf is not a finite number");
  refuses("twice.csv --x t --y y --at 5", "lines 2 and 4: x is 0 in both");
  refuses("few.csv --x t --y y --at 5", "natural needs at least 3 points, and there are 2");
  refuses("few.csv --x t --y y --kind akima --at 5", "akima needs at least 5 points, and there are 2");
  refuses("c.csv --x t --y line --kind spline --at 5", "--kind");
  refuses("c.csv --x t --at 5", "--y is required");
  refuses("c.csv --x t --y line --derivatives 1", "--at");
  refuses("c.csv --x t --y line --at 1", "--at takes a count from 2");
  refuses("c.csv --x t --y line --at 1,,2", "\"\" is not a finite number (--at)");
  refuses("c.csv --x t --y line --at one", "\"one\" is not a finite number (--at)");
  refuses("c.csv --x t --y line --at 5 --derivatives 11", "--derivatives");
  refuses("c.csv --x t --y line --integrate 1", "\"1\" is not a range");
  refuses("c.csv --x t --y line --integrate 1:nan", "\"nan\" is not a finite number");
  refuses("c.csv --x t --y line --at 5 --integrate 0:1 --to csv", "csv output is one table");
  refuses("c.csv --x t --y line --boundary tight --at 5", "no boundary condition named \"tight\"");
  refuses("c.csv --x t --y line --boundary first=1 --at 5", "takes 2 values");
  refuses("c.csv --x t --y line --boundary first=1,x --at 5", "\"x\" is not a finite number (--boundary)");
  refuses("c.csv --x t --y line --kind subbotin --boundary free --at 5", "takes no boundary condition free");
  refuses("c.csv --x t --y line --kind quadratic --boundary free --at 5", "takes no boundary condition free");
  refuses("open.csv --x t --y y --boundary periodic --at 5", "y is not periodic: it starts with 1 and ends with 4");
  refuses("c.csv --x t --y line --kind hermite --at 5", "name their column with --inner");
  refuses("c.csv --x t --y line --kind akima --inner slope --at 5", "--inner is for");
  refuses("c.csv --x t --y line --kind look-up --at 0.5,1", "a look-up knows only the points");
  refuses("c.csv --x t --y line --kind look-up --at 1,2.5 --derivatives 1", "a look-up has no derivatives");
  refuses("c.csv --x t --y line --kind look-up --integrate 0:1", "a look-up has no integral");
  const ProgramOutcome unwritable = run("c.csv --x t --y line --at 5 -o result.txt --picture absent/p.svg");
  EXPECT_NE(unwritable.code, 0);
  EXPECT_NE(unwritable.err.find("absent/p.svg"), std::string::npos) << unwritable.err;
  EXPECT_FALSE(fs::exists(folder / "result.txt"));
  const ProgramOutcome same = run("c.csv --x t --y line --at 5 -o same --picture same");
  EXPECT_NE(same.code, 0);
  EXPECT_EQ(same.err, "tarn: two outputs have the same name, same\n");
  EXPECT_FALSE(fs::exists(folder / "same"));
  EXPECT_EQ(run("c.csv --x t --y line --picture -").code, 0);
  EXPECT_NE(run("c.csv --x t --y line --at 5 --picture -").code, 0);
  for (const char* option : {"--at ''", "--picture ''"})
    EXPECT_NE(run(std::string("c.csv --x t --y line ") + option).code, 0) << option;
  const ProgramOutcome nothing = run("c.csv --x t --y line");
  EXPECT_NE(nothing.code, 0);
  EXPECT_EQ(nothing.err, "tarn: nothing is asked for: give --at, --integrate or --picture\n");
}

}
