// Pictures of a fit as SVG: the data and the curve through them.
#pragma once

#include <string>
#include <vector>

namespace tarn::command {

struct FittedCurve {
  std::string name;
  std::vector<double> data;  // at data_x
  std::vector<double> curve; // at curve_x
};

struct FitPicture {
  std::string x_name, title;
  std::vector<double> data_x, curve_x;
  std::vector<FittedCurve> curves;
  double shaded_low = 0, shaded_high = 0; // the range of an integral, where they differ
};

std::string draw_fit(const FitPicture& picture);

}
