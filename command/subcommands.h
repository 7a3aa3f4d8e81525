// The subcommands of `tarn`, one file each. A subcommand adds itself to the program: its options, its help text and
// the callback that does the work. The callback throws Failure when it cannot.
#pragma once

#include <CLI/CLI.hpp>

namespace tarn::command {

void add_eval(CLI::App& program);
void add_fit(CLI::App& program);
void add_list(CLI::App& program);
void add_random(CLI::App& program);
void add_stats(CLI::App& program);

}
