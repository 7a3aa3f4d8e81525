// The tarn program run from outside, in a folder of its own: what it prints, its exit code and the files it leaves.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace tarn::test {

namespace fs = std::filesystem;

struct ProgramOutcome {
  int code; // of the exit, or -1
  std::string out, err;
};

class ProgramTest : public testing::Test {
protected:
  void SetUp() override { fs::create_directories(folder); }
  void TearDown() override { fs::remove_all(folder); }

  std::string write(const std::string& name, std::string_view content) const {
    std::ofstream(folder / name, std::ios::binary) << content;
    return folder / name;
  }
  static std::string read(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }
  int64_t files() const { return std::distance(fs::directory_iterator(folder), fs::directory_iterator()); }

  // Runs `tarn <arguments>` in the folder, under a shell, with the environment assignments before it.
  ProgramOutcome tarn(const std::string& arguments, std::string_view input = "", const std::string& environment = "",
                      const std::string& output = "stdout") const {
    write("stdin", input);
    const std::string command = "cd " + folder.string() + " && env -u TARN_VM_MODE " + environment +
                                " " TARN_PROGRAM " " + arguments + " <stdin >" + output + " 2>stderr";
    const int status = std::system(command.c_str());
    const ProgramOutcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(folder / "stdout"),
                                 read(folder / "stderr")};
    for (const char* name : {"stdin", "stdout", "stderr"}) fs::remove(folder / name);
    return outcome;
  }

  const fs::path folder = fs::path(testing::TempDir()) / ("tarn_program_" + std::to_string(getpid()));
};

}
