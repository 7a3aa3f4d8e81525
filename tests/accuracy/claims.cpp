#include "accuracy/claims.h"

#include "command/failure.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace tarn::accuracy {

namespace fs = std::filesystem;

std::vector<Claim> read_claims(const std::string& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (entry.path().extension() == ".h" && entry.path().filename() != "claims.h") files.push_back(entry.path());
  std::sort(files.begin(), files.end());

  std::vector<Claim> claims;
  for (const fs::path& file : files) {
    std::ifstream text(file);
    for (std::string line; std::getline(text, line);) {
      if (!line.starts_with("TARN_CLAIM(")) continue;
      std::array<char, 64> name{}, class_name{};
      double ulp = 0, from = 0, to = 0;
      int end = 0;
      if (std::sscanf(line.c_str(), "TARN_CLAIM(%63[A-Za-z0-9], %2[A-Z], %lf, %lf, %lf)%n", name.data(),
                      class_name.data(), &ulp, &from, &to, &end) != 5 ||
          end == 0)
        throw command::Failure(file.string() + ": cannot read " + line);
      claims.push_back({name.data(), class_name.data(), fs::relative(file, folder), ulp, from, to});
    }
  }
  return claims;
}

}
