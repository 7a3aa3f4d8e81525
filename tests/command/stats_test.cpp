// tarn stats from outside: its figures against sums taken here, its formats, gaps, weights, blocks and refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <vector>

#include "command/table_blocks.h"
#include "support/program.h"

using tarn::test::ProgramOutcome;

namespace {

class Stats : public tarn::test::ProgramTest {
protected:
  ProgramOutcome run(const std::string& arguments) const { return tarn("stats " + arguments); }
  // The figures of CSV output by "statistic,variable,with".
  std::map<std::string, std::string> figures(const std::string& arguments) const {
    const ProgramOutcome outcome = run(arguments + " --to csv");
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    std::map<std::string, std::string> map;
    std::istringstream lines(outcome.out);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "statistic,variable,with,value");
    while (std::getline(lines, line)) map[line.substr(0, line.rfind(','))] = line.substr(line.rfind(',') + 1);
    return map;
  }
};

constexpr const char* small = "a,b,w\n1,2,1\n2,NA,1\n4,3,2\n,7,1\n5,8,0\n";

TEST_F(Stats, FiguresOfASmallTableWithGaps) {
  write("t.csv", small);
  auto f = figures("t.csv --column a --column b");
  EXPECT_EQ(f["n,a,"], "4");
  EXPECT_EQ(f["missing,a,"], "1");
  EXPECT_EQ(f["mean,a,"], "3");
  EXPECT_NEAR(std::stod(f["variance,a,"]), 10.0 / 3, 1e-14);
  EXPECT_EQ(f["min,a,"], "1");
  EXPECT_EQ(f["max,a,"], "5");
  EXPECT_EQ(f["q0.5,a,"], "3");
  EXPECT_EQ(f["mean,b,"], "5");
  // Rows 1, 3 and 5 are complete: a = 1 4 5, b = 2 3 8.
  const double a[] = {1, 4, 5}, b[] = {2, 3, 8}, ma = 10.0 / 3, mb = 13.0 / 3;
  double ab = 0, aa = 0, bb = 0;
  for (int i = 0; i < 3; ++i) {
    ab += (a[i] - ma) * (b[i] - mb);
    aa += (a[i] - ma) * (a[i] - ma);
    bb += (b[i] - mb) * (b[i] - mb);
  }
  EXPECT_NEAR(std::stod(f["covariance,a,b"]), ab / 2, 1e-13);
  EXPECT_NEAR(std::stod(f["correlation,a,b"]), ab / std::sqrt(aa * bb), 1e-13);
  EXPECT_EQ(f["correlation,a,a"], "1");
}

TEST_F(Stats, WeightsByNameAndNumber) {
  write("t.csv", small);
  for (const char* arguments : {"t.csv --weights w", "t.csv --weights 3", "t.csv --column a --column b --weights w"}) {
    auto f = figures(arguments);
    EXPECT_NEAR(std::stod(f["mean,a,"]), (1 + 2 + 2 * 4) / 4.0, 1e-14) << arguments;
    EXPECT_EQ(f.count("mean,w,"), 0u) << arguments;
  }
}

TEST_F(Stats, LongInputPassesInBlocks) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal(3, 2);
  std::ostringstream csv;
  csv << "\"x, first\",y\n";
  std::vector<double> x;
  for (int i = 0; i < 4000; ++i) {
    x.push_back(std::round(1000 * normal(random)) / 1000);
    csv << x.back() << ',' << (i % 10 == 3 ? std::string("NA") : std::to_string(i)) << '\n';
  }
  write("t.csv", csv.str());
  auto whole = figures("t.csv"), blocks = figures("t.csv --block 2000 --epsilon 0.01");
  ASSERT_EQ(whole.size(), blocks.size());
  for (const auto& [name, value] : whole) {
    if (name.starts_with("q")) continue;
    EXPECT_NEAR(std::stod(blocks[name]), std::stod(value), 1e-9 * (1 + std::fabs(std::stod(value)))) << name;
  }
  std::sort(x.begin(), x.end());
  const double median = std::stod(blocks["q0.5,\"x, first\","]);
  const auto place = std::lower_bound(x.begin(), x.end(), median) - x.begin();
  EXPECT_NEAR(double(place), 2000, 0.01 * 4000 + 1);
}

TEST_F(Stats, TextAndJson) {
  write("t.csv", small);
  const ProgramOutcome text = run("t.csv");
  EXPECT_EQ(text.code, 0);
  EXPECT_NE(text.out.find("covariance (3 complete rows)"), std::string::npos);
  EXPECT_NE(text.out.find("missing"), std::string::npos);
  const ProgramOutcome json = run("t.csv --to json --column a");
  EXPECT_NE(json.out.find("{\"name\": \"a\", \"n\": 4, \"missing\": 1, \"mean\": 3,"), std::string::npos) << json.out;
  EXPECT_EQ(json.out.find("covariance"), std::string::npos);
}

TEST_F(Stats, PicturesAndRefusals) {
  write("t.csv", small);
  EXPECT_EQ(run("t.csv --histogram h.svg --scatter s.svg").code, 0);
  EXPECT_TRUE(read(folder / "h.svg").starts_with("<svg"));
  EXPECT_TRUE(read(folder / "s.svg").ends_with("</svg>\n"));
  const auto refuses = [&](const std::string& arguments, const std::string& message) {
    const ProgramOutcome outcome = run(arguments);
    EXPECT_NE(outcome.code, 0) << arguments;
    EXPECT_EQ(outcome.out, "") << arguments;
    EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  };
  refuses("absent.csv", "cannot open absent.csv");
  refuses("t.csv --weights v", "no column \"v\" for the weights");
  write("negative.csv", "a,w\n1,1\n2,-1\n");
  refuses("negative.csv --weights w", "line 3: a weight must be a number of 0 or above");
  write("words.csv", "a,b\n1,2\n3,four\n");
  refuses("words.csv", "line 3: \"four\" is not a number");
  refuses("words.csv --block 64 --column b", "line 3: \"four\" is not a number");
  write("empty.csv", "");
  refuses("empty.csv", "holds no numbers");
  refuses("t.csv --quantiles 1.5", "--quantiles");
  refuses("t.csv --quantiles nan", "--quantiles");
  refuses("t.csv --epsilon nan", "--epsilon");
  refuses("t.csv --weights ''", "--weights: nothing is named");
  refuses("t.csv --histogram -", "two outputs have the same name, standard output");
  refuses("t.csv --histogram p.svg --scatter p.svg", "two outputs have the same name, p.svg");
  refuses("t.csv --histogram p.svg -o absent/t", "cannot write absent/t");
  EXPECT_EQ(tarn("stats t.csv --histogram p.svg", "", "", "/dev/full").code, 1);
  EXPECT_FALSE(std::filesystem::exists(folder / "p.svg")) << "a picture without its table";
}

TEST_F(Stats, OptionsBeforeTheFile) {
  write("t.csv", small);
  EXPECT_EQ(run("--quantiles 0.1,0.5 t.csv").out, run("t.csv --quantiles 0.1 --quantiles 0.5").out);
  EXPECT_EQ(run("--block 1TB t.csv").out, run("t.csv").out) << "a block costs no more than the file";
}

// Every order has its own name, every column the number it has in the file.
TEST_F(Stats, NamesAreNotShared) {
  write("t.csv", small);
  auto f = figures("t.csv --column a --quantiles 0.9999999,1,0.123456789");
  EXPECT_EQ(f.count("q0.9999999,a,") + f.count("q1,a,") + f.count("q0.123456789,a,"), 3u);
  write("n.txt", "1 2 3\n4 5 6\n");
  EXPECT_EQ(figures("n.txt --column 3")["mean,column 3,"], "4.5");
  EXPECT_EQ(figures("n.txt --column 3 --column 1 --weights 2")["max,column 1,"], "4");
  write("w.csv", "3,a,b\n1,2,5\n4,5,5\n"); // a name comes before a number
  EXPECT_EQ(figures("w.csv --weights 3")["mean,a,"], "4.4");
  write("d.csv", "w,a,w\n1,2,5\n4,5,5\n");
  EXPECT_NE(run("d.csv --weights w").err.find("2 columns are named \"w\""), std::string::npos);
}

TEST_F(Stats, ColumnsOfTheTextStayApart) {
  write("t.csv", "a,b\n-1.23456e100,-1.23456e-300\n-1.23456e100,-1.23456e-300\n");
  std::istringstream lines(run("t.csv --moments-only --quantiles 0.123456789012345").out);
  std::vector<size_t> words;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream stream(line);
    words.push_back(0);
    for (std::string word; stream >> word;) ++words.back();
  }
  EXPECT_EQ(words, (std::vector<size_t>{11, 11, 11}));
}

TEST_F(Stats, PicturesOfHostileData) {
  write("h.csv", "\"a<&>\n\x01\xFF\",b,c,d,e\n1e308,5,nan,inf,1e300\n-1e308,5,nan,-inf,1e300\n1,5,nan,3,1e300\n");
  write("one.csv", "a,b\n1,2\n");
  for (const char* file : {"h.csv", "one.csv"}) {
    ASSERT_EQ(run(std::string(file) + " --histogram h.svg --scatter s.svg").code, 0) << file;
    for (const char* picture : {"h.svg", "s.svg"}) {
      const std::string svg = read(folder / picture);
      EXPECT_EQ(svg.find("nan"), svg.npos) << file << ' ' << picture;
      EXPECT_EQ(svg.find("inf"), svg.npos) << file << ' ' << picture;
      EXPECT_EQ(svg.find('\x01'), svg.npos) << file << ' ' << picture;
      EXPECT_EQ(svg.find('\xFF'), svg.npos) << file << ' ' << picture;
    }
  }
  const std::string json = run("h.csv --to json").out;
  EXPECT_NE(json.find("a<&>\\u000a\\u0001\xEF\xBF\xBD\""), json.npos) << json;
}

// Where a block ends must not show: in figures, in refusals, in the lines that they name.
TEST_F(Stats, BlocksDoNotShow) {
  std::string rows, gap(200, '\n');
  for (int i = 0; i < 60; ++i) rows += std::to_string(i % 7) + ",5\" pipe," + std::to_string(i) + "\n";
  const auto same = [&](const std::string& name, const std::string& content, const std::string& arguments) {
    write(name, content);
    const ProgramOutcome whole = run(name + " --to csv " + arguments),
                         blocks = run(name + " --to csv --block 128 " + arguments);
    EXPECT_EQ(blocks.code, whole.code) << name;
    EXPECT_EQ(blocks.err, whole.err) << name;
    const auto counts = [](const std::string& out) { return out.substr(0, out.find("mean")); };
    EXPECT_EQ(counts(blocks.out), counts(whole.out)) << name;
    return whole;
  };
  EXPECT_EQ(same("quotes.csv", "a,b,c\n" + rows, "--column a --column c").code, 0); // a quote inside a plain cell
  EXPECT_EQ(same("gap.csv", "a,b,c\n" + rows + gap + rows, "--column a").code, 0);  // a whole block of empty lines
  const std::string comments = "# one, two\n# three\n# four, five, six and seven\n# eight\n";
  EXPECT_EQ(
      same("comments.txt", comments + comments + comments + "1 2\n3 4\n" + comments + comments + "5 6\n", "").code, 0);
  EXPECT_EQ(same("header.csv", "\"" + std::string(100, 'a') + "\",b\n1,22222222222222222222222222222\n3,4\n", "").code,
            0);
  EXPECT_EQ(same("ragged.txt", std::string(400, '\n') + "1 2\n" + std::string(400, '\n') + "1 2 3\n", "").err,
            "tarn: ragged.txt, line 802: 3 cells where the first row has 2\n");
  std::string columns;
  for (int i = 0; i < 100; ++i) columns += "1 2\n";
  EXPECT_EQ(same("short.txt", columns + "1\n", "").err,
            "tarn: short.txt, line 101: 1 cells where the first row has 2\n");
  EXPECT_EQ(same("late.csv", "a,b,c\n" + rows + "x,1,1\n", "--column a").err,
            "tarn: late.csv, line 62: \"x\" is not a number of type d\n");
}

// The blocks of a table are the table: every row once, with its line.
TEST_F(Stats, BlocksAreTheTable) {
  std::string csv = "name,\"two\nlines\",z\n";
  for (int i = 0; i < 500; ++i)
    csv += "\"" + std::to_string(i) + "\"," + std::to_string(i * 2) + "," + std::to_string(i * 3) +
           (i % 7 ? "\n" : "\n\n");
  tarn::command::InputOptions options;
  options.path = write("b.csv", csv);
  const tarn::command::Table whole = tarn::command::read_table(options, 0);
  for (int64_t bytes : {64, 100, 1000, 1 << 20}) {
    tarn::command::TableBlocks blocks(options, bytes);
    tarn::command::Table block;
    size_t row = 0;
    while (blocks.next(block)) {
      ASSERT_EQ(block.columns.size(), 3u);
      EXPECT_EQ(block.columns[1].name, "two\nlines");
      for (size_t i = 0; i < block.lines.size(); ++i, ++row) {
        ASSERT_LT(row, whole.lines.size());
        EXPECT_EQ(block.lines[i], whole.lines[row]) << bytes;
        for (size_t c = 0; c < 3; ++c) EXPECT_EQ(block.columns[c].values[i], whole.columns[c].values[row]);
      }
    }
    EXPECT_EQ(row, whole.lines.size()) << bytes;
  }
}

}
