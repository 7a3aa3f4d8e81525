// tarn list: the functions, their types and what accuracy was measured for them.
#include "command/failure.h"
#include "command/functions.h"
#include "command/output.h"
#include "command/subcommands.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>

namespace tarn::command {

namespace {

// Largest errors in the three classes of one type, such as "0.51 / 0.77 / 8.9e+06"; nothing was measured: "-".
std::string errors(std::string_view name, char type) {
  const Function* function = find_function(name, type);
  if (!function) return "";
  std::string text;
  for (std::string_view accuracy : class_names) {
    const Measured* found = find_measured(*function, accuracy);
    char number[32] = "-";
    if (found) std::snprintf(number, sizeof number, found->max_ulp < 1000 ? "%.2f" : "%.1e", found->max_ulp);
    text += (text.empty() ? "" : " / ") + std::string(number);
  }
  return text;
}

std::string types(std::string_view name) {
  std::string text;
  for (const Function& function : functions())
    if (function.name == name) text += (text.empty() ? "" : " ") + std::string(1, function.type);
  return text;
}

std::string arguments(const Function& function) {
  std::string text = function.inputs == 2 ? "a, b" : "a";
  if (function.scalars == 1) text += ", scalar";
  if (function.scalars > 1) text += ", " + std::to_string(function.scalars) + " scalars";
  return text + (function.outputs == 2 ? " -> r1, r2" : " -> r");
}

void list_all() {
  std::printf("%-12s %-22s %-6s %-26s %-26s %s\n", "function", "arguments", "types", "d: max ulp LA / HA / EP",
              "s: max ulp LA / HA / EP", "");
  for (const Description& description : descriptions()) {
    const auto all = functions();
    const auto first =
        std::find_if(all.begin(), all.end(), [&](const Function& f) { return f.name == description.name; });
    if (first == all.end()) continue; // Pack and Unpack move elements, which is no function of numbers
    std::printf("%-12s %-22s %-6s %-26s %-26s %s\n", first->name.data(), arguments(*first).c_str(),
                types(first->name).c_str(), errors(first->name, 'd').c_str(), errors(first->name, 's').c_str(),
                description.summary.data());
  }
  std::printf("\nLargest errors found by the accuracy harness, in units in the last place; docs/accuracy.md says how.\n"
              "tarn list FUNCTION tells more of one.\n");
}

std::string_view sharing_text(std::string_view sharing) {
  if (sharing.starts_with("one")) return "one kernel serves LA, HA and EP";
  if (sharing.starts_with("la_ha")) return "LA and HA share a kernel";
  if (sharing.starts_with("la_ep")) return "LA and EP share a kernel";
  return "each class has its own kernel";
}

void list_one(const std::string& name) {
  const auto known = descriptions();
  const auto description =
      std::find_if(known.begin(), known.end(), [&](const Description& d) { return d.name == name; });
  if (description == known.end() || types(name).empty()) throw Failure(unknown_function(name));
  std::printf("%s: %s\n%s\n", name.c_str(), description->summary.data(), description->details.data());
  for (const Function& function : functions()) {
    if (function.name != name) continue;
    std::printf("\ntype %c: %s; %s\n", function.type, arguments(function).c_str(),
                sharing_text(function.sharing).data());
    for (size_t i = 0; i < 3; ++i) {
      std::printf("  %s  relative cost %.4g", class_names[i].data(), static_cast<double>(function.costs[i]));
      if (const Measured* found = find_measured(function, class_names[i]))
        std::printf(", max error %.4g ulp at %s, mean %.3g ulp", found->max_ulp, found->at.data(), found->mean_ulp);
      std::printf("\n");
    }
  }
}

}

void add_list(CLI::App& program) {
  CLI::App* list = program.add_subcommand("list", "Show the vector functions, their types, classes and accuracy");
  auto name = std::make_shared<std::string>();
  list->add_option("function", *name, "One of them, in detail");
  list->footer("\nExamples:\n  tarn list\n  tarn list Exp");
  list->callback([name] {
    name->empty() ? list_all() : list_one(*name);
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
      throw Failure(std::string("cannot write standard output: ") + std::strerror(errno));
  });
}

}
