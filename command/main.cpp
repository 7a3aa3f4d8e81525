// tarn: the library at the command line. This file only gathers the subcommands and words the failures.
#include "command/subcommands.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <string_view>

namespace {

enum ExitCode { Done = 0, CouldNot = 1, BadUsage = 2 };

// One line, whatever the text holds.
int fail(std::string_view what, ExitCode code) noexcept {
  while (!what.empty() && (what.back() == '\n' || what.back() == ' ')) what.remove_suffix(1);
  std::fputs("tarn: ", stderr);
  for (const char c : what) std::fputc(c == '\n' || c == '\r' ? ' ' : c, stderr);
  std::fputc('\n', stderr);
  return code;
}

bool has_subcommand(const CLI::App& program, const std::string& name) {
  const auto subcommands = program.get_subcommands([](const CLI::App*) { return true; });
  return std::any_of(subcommands.begin(), subcommands.end(),
                     [&](const CLI::App* subcommand) { return subcommand->get_name() == name; });
}

// Whether what was printed through the stream of the standard library arrived.
int told() noexcept {
  return std::cout.flush() ? Done
                           : fail(std::string("cannot write standard output: ") + std::strerror(errno), CouldNot);
}

int run(int argc, char** argv) {
  CLI::App program("tarn: vector math, random streams, statistics and data fitting at the command line\n"
                   "Each subcommand has a help page with examples: tarn eval --help");
  program.name("tarn");
  program.set_version_flag("--version", "tarn " TARN_VERSION);
  program.require_subcommand(0, 1);
  tarn::command::add_eval(program);
  tarn::command::add_fit(program);
  tarn::command::add_list(program);
  tarn::command::add_random(program);
  tarn::command::add_stats(program);

  const bool named = argc > 1 && argv[1][0] != '-';
  errno = 0;
  try {
    program.parse(argc, argv);
    if (program.get_subcommands().empty()) std::cout << program.help();
    return told();
  } catch (const CLI::Success& help_or_version) {
    errno = 0;
    program.exit(help_or_version);
    return told();
  } catch (const CLI::ParseError& error) {
    if (named && !has_subcommand(program, argv[1]))
      return fail(std::string("no subcommand named ") + argv[1] + " (try: tarn --help)", BadUsage);
    return fail(error.what(), BadUsage);
  }
}

}

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {
    return fail("out of memory", CouldNot);
  } catch (const std::exception& failure) { // most of them Failure
    return fail(failure.what(), CouldNot);
  }
}
