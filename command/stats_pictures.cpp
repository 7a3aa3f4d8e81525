#include "command/stats_pictures.h"
#include "command/svg.h"

#include <algorithm>
#include <cmath>

namespace tarn::command {

using namespace svg;

namespace {

// Bars of equal width, their number by Freedman and Diaconis (1981), between 5 and 60.
std::vector<int> bars_of(const std::vector<double>& values, Range range) {
  std::vector<double> finite;
  std::copy_if(values.begin(), values.end(), std::back_inserter(finite), [](double x) { return std::isfinite(x); });
  if (finite.empty()) return std::vector<int>(5);
  std::sort(finite.begin(), finite.end());
  const size_t n = finite.size();
  const double spread = range.part(finite[3 * (n - 1) / 4]) - range.part(finite[(n - 1) / 4]);
  const double width = 2 * spread / std::cbrt(static_cast<double>(n)); // as a part of the range
  const double wanted = width > 0 ? 1 / width : 10;
  std::vector<int> bars(static_cast<size_t>(std::clamp(wanted, 5.0, 60.0)));
  for (const double x : finite) {
    const double place = range.part(x) * static_cast<double>(bars.size());
    ++bars[std::min(bars.size() - 1, static_cast<size_t>(place))];
  }
  return bars;
}

std::string histogram(const Sample& variable, double x, double y, double width, double height) {
  const Range range = range_of(variable.values);
  const std::vector<int> bars = bars_of(variable.values, range);
  const int tallest = std::max(1, *std::max_element(bars.begin(), bars.end()));
  const double step = width / static_cast<double>(bars.size());
  std::string svg;
  for (size_t i = 0; i < bars.size(); ++i) {
    const double tall = height * bars[i] / tallest;
    svg += format("<rect x=\"%.2f\" y=\"%.2f\" width=\"%.2f\" height=\"%.2f\" fill=\"#4477aa\"/>\n",
                  x + static_cast<double>(i) * step, y + height - tall, std::max(0.5, step - 1), tall);
  }
  return svg + frame(x, y, width, height);
}

}

std::string draw_histograms(const std::vector<Sample>& variables, const std::string& note) {
  constexpr double width = 260, height = 150, gap = 50;
  const size_t across = std::min<size_t>(variables.size(), 3), down = (variables.size() + across - 1) / across;
  std::string svg =
      start(gap + static_cast<double>(across) * (width + gap), 40 + static_cast<double>(down) * (height + gap));
  for (size_t i = 0; i < variables.size(); ++i) {
    const size_t column = i % across, row = i / across;
    const double x = gap + static_cast<double>(column) * (width + gap);
    const double y = 30 + static_cast<double>(row) * (height + gap);
    const Range range = range_of(variables[i].values);
    svg += histogram(variables[i], x, y, width, height) + text(x + width / 2, y - 6, "middle", variables[i].name);
    svg += text(x, y + height + 14, "start", format("%.4g", range.low));
    svg += text(x + width, y + height + 14, "end", format("%.4g", range.high));
  }
  return svg + text(10, 28 + static_cast<double>(down) * (height + gap), "start", note) + "</svg>\n";
}

std::string draw_scatter_matrix(const std::vector<Sample>& variables, const std::string& note) {
  constexpr double cell = 130, gap = 12, margin = 30;
  const double side = margin * 2 + static_cast<double>(variables.size()) * (cell + gap);
  std::string svg = start(side, side + 10);
  for (size_t row = 0; row < variables.size(); ++row) {
    for (size_t column = 0; column < variables.size(); ++column) {
      const double x = margin + static_cast<double>(column) * (cell + gap);
      const double y = margin + static_cast<double>(row) * (cell + gap);
      if (row == column) {
        svg += histogram(variables[row], x, y, cell, cell) + text(x + cell / 2, y - 3, "middle", variables[row].name);
        continue;
      }
      const Range across = range_of(variables[column].values), up = range_of(variables[row].values);
      for (size_t i = 0; i < variables[row].values.size(); ++i) {
        const double a = variables[column].values[i], b = variables[row].values[i];
        if (!std::isfinite(a) || !std::isfinite(b)) continue;
        svg += format("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"1.4\" fill=\"#ee6677\" fill-opacity=\"0.6\"/>\n",
                      x + 3 + (cell - 6) * across.part(a), y + cell - 3 - (cell - 6) * up.part(b));
      }
      svg += frame(x, y, cell, cell);
    }
  }
  return svg + text(10, side, "start", note) + "</svg>\n";
}

}
