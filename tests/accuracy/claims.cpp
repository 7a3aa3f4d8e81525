#include "accuracy/claims.h"

#include "command/failure.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

namespace tarn::accuracy {

namespace fs = std::filesystem;

std::vector<Claim> read_claims(const std::string& folder) {
  static const std::regex form(R"(^TARN_CLAIM\((\w+), (LA|HA|EP), ([^,]+), ([^,]+), ([^,)]+)\))");
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (entry.path().extension() == ".h" && entry.path().filename() != "claims.h") files.push_back(entry.path());
  std::sort(files.begin(), files.end());

  std::vector<Claim> claims;
  for (const fs::path& file : files) {
    std::ifstream text(file);
    for (std::string line; std::getline(text, line);) {
      if (!line.starts_with("TARN_CLAIM(")) continue;
      std::smatch part;
      std::array<double, 3> number{};
      bool good = std::regex_search(line, part, form);
      for (size_t i = 0; good && i < 3; ++i) {
        const std::string word = part[static_cast<int>(i) + 3];
        char* end = nullptr;
        number[i] = std::strtod(word.c_str(), &end);
        good = *end == 0;
      }
      if (!good) throw command::Failure(file.string() + ": cannot read " + line);
      claims.push_back({part[1], part[2], fs::relative(file, folder), number[0], number[1], number[2]});
    }
  }
  return claims;
}

}
