// The options that subcommands share. Apart from input.h and output.h, since CLI11's header takes seconds to compile.
#pragma once

#include "command/input.h"
#include "command/output.h"

#include <CLI/CLI.hpp>

namespace tarn::command {

// The members of InputOptions, all but `real`, on a subcommand.
void add_input_options(CLI::App& subcommand, InputOptions& options);

// Checks of an option's text.
CLI::Validator not_empty();
CLI::Validator finite();

// --output and --to.
void add_output_options(CLI::App& subcommand, OutputOptions& options);

}
