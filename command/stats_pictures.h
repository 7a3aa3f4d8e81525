// Pictures of a data set as SVG: a histogram of each variable, and every variable against every other.
#pragma once

#include <string>
#include <vector>

namespace tarn::command {

struct Sample {
  std::string name;
  std::vector<double> values; // NaN where missing; the same rows for all variables
};

// `note` stands under the picture, for instance that only a sample of the rows is shown.
std::string draw_histograms(const std::vector<Sample>& variables, const std::string& note);
std::string draw_scatter_matrix(const std::vector<Sample>& variables, const std::string& note);

}
