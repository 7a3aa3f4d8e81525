#include "command/options.h"

#include <cmath>

namespace tarn::command {

CLI::Validator not_empty() {
  return {[](std::string& text) { return std::string(text.empty() ? "nothing is named" : ""); }, "", "not_empty"};
}

CLI::Validator finite() {
  return {[](std::string& text) {
            double value = 0;
            return CLI::detail::lexical_cast(text, value) && std::isfinite(value) ? std::string()
                                                                                  : text + " is not a finite number";
          },
          "", "finite"};
}

void add_input_options(CLI::App& subcommand, InputOptions& options) {
  subcommand.add_option("file", options.path, "Where the numbers are; - or nothing: standard input");
  subcommand
      .add_option("--from", options.format,
                  "Input format: text (numbers between blanks, # comments), csv, binary (little-endian values: "
                  "floats in .f32, doubles in .f64, else of the type). auto: by the file's name (.csv .tsv .bin .f64 "
                  ".f32), else by its first line")
      ->check(CLI::IsMember({"auto", "text", "csv", "binary"}));
  subcommand.add_option("--column", options.columns, "A column, by its header's name or its number from 1; repeatable")
      ->allow_extra_args(false);
  subcommand
      .add_option("--delimiter", options.delimiter,
                  "What stands between CSV cells: one character, or tab; auto: a tab in .tsv, else a comma")
      ->check([](const std::string& text) {
        const bool character = text.size() == 1 && std::string("\"\r\n").find(text) == std::string::npos;
        return character || text == "tab" || text == "auto" ? "" : "one character other than a quote, or tab";
      });
  subcommand.add_option("--header", options.header, "Whether CSV starts with names: auto, yes, no")
      ->check(CLI::IsMember({"auto", "yes", "no"}));
  subcommand.add_option("--width", options.width, "Values per row of binary input")->check(CLI::Range(1, 1 << 20));
}

void add_output_options(CLI::App& subcommand, OutputOptions& options) {
  subcommand.add_option("-o,--output", options.path, "File to write, whole or not at all; - : standard output")
      ->check(not_empty());
  subcommand.add_option("--to", options.format, "Output format: text, csv (with a header), binary")
      ->check(CLI::IsMember({"text", "csv", "binary"}));
}

}
